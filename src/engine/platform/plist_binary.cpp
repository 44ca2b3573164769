// The binary property-list format "bplist00".
//
// Layout: the 8-byte magic, the objects, an offset table (one big-endian offset per object)
// and a 32-byte trailer giving the offset and reference sizes, the object count, the top
// object and where the offset table starts. Containers hold object references (indices into
// the offset table), so one object may be referenced many times and, in a hostile file,
// from itself: the reader validates every offset and reference, decodes each container once
// and shares it, and refuses a container that is reached again while it is being decoded.
#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <unordered_map>

#include "platform/plist_formats.h"

namespace sysmend::plist::detail {
namespace {

struct BinaryError {
    std::string reason;
};

constexpr std::size_t kTrailerSize = 32;

std::uint64_t readBigEndian(const std::uint8_t* p, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8 | p[i];
    return value;
}

class BinaryReader {
  public:
    BinaryReader(std::span<const std::uint8_t> bytes, const ReadLimits& limits)
        : bytes_(bytes), limits_(limits) {}

    Value read() {
        if (bytes_.size() < 8 + 1 + kTrailerSize)
            throw BinaryError{"too short"};
        objectsEnd_ = bytes_.size() - kTrailerSize;
        const std::uint8_t* trailer = bytes_.data() + objectsEnd_;
        offsetSize_ = trailer[6];
        refSize_ = trailer[7];
        count_ = readBigEndian(trailer + 8, 8);
        const std::uint64_t top = readBigEndian(trailer + 16, 8);
        tableOffset_ = readBigEndian(trailer + 24, 8);
        if (offsetSize_ < 1 || offsetSize_ > 8 || refSize_ < 1 || refSize_ > 8) {
            throw BinaryError{"bad offset or reference size in trailer"};
        }
        if (count_ == 0 || top >= count_)
            throw BinaryError{"bad object count in trailer"};
        if (count_ > std::min<std::uint64_t>(limits_.maxObjects, UINT32_MAX - kDone))
            throw BinaryError{"too many objects"};
        if (tableOffset_ < 9 || tableOffset_ >= objectsEnd_ ||
            count_ > (objectsEnd_ - tableOffset_) / offsetSize_) {
            throw BinaryError{"offset table out of bounds"};
        }
        state_.assign(count_, kUnseen);
        return object(top, 1);
    }

  private:
    // Per object: not met yet, being decoded (meeting it again is a cycle), or decoded, as
    // the position of the container in containers_ plus kDone.
    static constexpr std::uint32_t kUnseen = 0;
    static constexpr std::uint32_t kDecoding = 1;
    static constexpr std::uint32_t kDone = 2;

    std::span<const std::uint8_t> take(std::uint64_t position, std::uint64_t size) const {
        if (position > objectsEnd_ || size > objectsEnd_ - position) {
            throw BinaryError{"object runs past the end"};
        }
        return bytes_.subspan(position, size);
    }

    std::uint64_t offsetOf(std::uint64_t index) const {
        const std::uint64_t offset =
            readBigEndian(bytes_.data() + tableOffset_ + index * offsetSize_, offsetSize_);
        if (offset < 8 || offset >= tableOffset_)
            throw BinaryError{"object offset out of bounds"};
        return offset;
    }

    // The element count of a data, string or container object: the marker's low nibble, or
    // when that is 0xF an integer object that follows the marker.
    std::uint64_t length(std::uint8_t nibble, std::uint64_t& position) const {
        if (nibble != 0x0F)
            return nibble;
        const std::uint8_t marker = take(position, 1)[0];
        if ((marker & 0xF0) != 0x10 || (marker & 0x0F) > 3)
            throw BinaryError{"bad length"};
        const std::size_t size = std::size_t{1} << (marker & 0x0F);
        const std::uint64_t value = readBigEndian(take(position + 1, size).data(), size);
        position += 1 + size;
        return value;
    }

    void spend(std::uint64_t bytes) {
        if (bytes > limits_.maxDecodedBytes - decodedBytes_) {
            throw BinaryError{"decodes to too much text and data"};
        }
        decodedBytes_ += bytes;
    }

    double real(std::span<const std::uint8_t> bytes) const {
        if (bytes.size() == 4) {
            return std::bit_cast<float>(static_cast<std::uint32_t>(readBigEndian(bytes.data(), 4)));
        }
        return std::bit_cast<double>(readBigEndian(bytes.data(), 8));
    }

    Value object(std::uint64_t index, std::size_t depth) {
        if (index >= count_)
            throw BinaryError{"object reference out of range"};
        if (++produced_ > limits_.maxObjects)
            throw BinaryError{"too many objects"};
        if (state_[index] >= kDone)
            return containers_[state_[index] - kDone];
        if (state_[index] == kDecoding)
            throw BinaryError{"object contains itself"};

        std::uint64_t position = offsetOf(index);
        const std::uint8_t marker = take(position++, 1)[0];
        const std::uint8_t nibble = marker & 0x0F;
        switch (marker >> 4) {
            case 0x0:
                if (marker == 0x08)
                    return Value(false);
                if (marker == 0x09)
                    return Value(true);
                break;
            case 0x1: {
                if (nibble > 4)
                    break;
                const std::size_t size = std::size_t{1} << nibble;
                const auto bytes = take(position, size);
                // 16-byte integers hold unsigned 64-bit values in their low half; 8-byte ones
                // are signed; smaller ones unsigned.
                return Value(static_cast<std::int64_t>(readBigEndian(
                    bytes.data() + (size == 16 ? 8 : 0), std::min<std::size_t>(size, 8))));
            }
            case 0x2:
                if (nibble != 2 && nibble != 3)
                    break;
                return Value(real(take(position, std::size_t{1} << nibble)));
            case 0x3: {
                if (marker != 0x33)
                    break;
                const auto date = dateFromReferenceSeconds(real(take(position, 8)));
                if (!date)
                    throw BinaryError{"date is not a number"};
                return Value(*date);
            }
            case 0x4: {
                const std::uint64_t size = length(nibble, position);
                const auto bytes = take(position, size);
                spend(size);
                return Value(Data(bytes.begin(), bytes.end()));
            }
            case 0x5: {
                const std::uint64_t size = length(nibble, position);
                const auto bytes = take(position, size);
                spend(size);
                std::string text;
                appendValidUtf8(text, std::string_view(reinterpret_cast<const char*>(bytes.data()),
                                                       bytes.size()));
                return Value(std::move(text));
            }
            case 0x6: {
                const std::uint64_t units = length(nibble, position);
                if (units > objectsEnd_)
                    throw BinaryError{"object runs past the end"};
                const auto bytes = take(position, units * 2);
                spend(units * 2);
                return Value(utf8FromUtf16(bytes, true));
            }
            case 0x8: {
                if (nibble > 7)
                    break;
                return Value(Uid{readBigEndian(take(position, nibble + 1).data(), nibble + 1)});
            }
            case 0xA:
            case 0xC:  // a set, read as an array
            case 0xD: {
                const std::uint64_t count = length(nibble, position);  // moves position on
                return container(index, marker >> 4, count, position, depth);
            }
        }
        throw BinaryError{"unknown object type"};
    }

    Value container(std::uint64_t index, int kind, std::uint64_t count, std::uint64_t position,
                    std::size_t depth) {
        if (depth > limits_.maxDepth)
            throw BinaryError{"nested too deeply"};
        const std::uint64_t refs = kind == 0xD ? 2 : 1;
        if (count > objectsEnd_ / refSize_ / refs)
            throw BinaryError{"object runs past the end"};
        const std::uint8_t* p = take(position, count * refs * refSize_).data();
        auto ref = [&](std::uint64_t i) { return readBigEndian(p + i * refSize_, refSize_); };

        state_[index] = kDecoding;
        // Room for what the limits still allow, not for whatever count the file claims.
        const std::size_t room = std::min<std::uint64_t>(count, limits_.maxObjects - produced_);
        Value result;
        if (kind == 0xD) {
            Dictionary entries;
            entries.reserve(room);
            for (std::uint64_t i = 0; i < count; ++i) {
                Value key = object(ref(i), depth + 1);
                if (!key.asString())
                    throw BinaryError{"dictionary key is not a string"};
                entries.set(*key.asString(), object(ref(count + i), depth + 1));
            }
            result = Value(std::move(entries));
        } else {
            Array elements;
            elements.reserve(room);
            for (std::uint64_t i = 0; i < count; ++i)
                elements.push_back(object(ref(i), depth + 1));
            result = Value(std::move(elements));
        }
        state_[index] = static_cast<std::uint32_t>(containers_.size() + kDone);
        containers_.push_back(result);
        return result;
    }

    std::span<const std::uint8_t> bytes_;
    const ReadLimits& limits_;
    std::uint64_t objectsEnd_ = 0;
    std::uint64_t tableOffset_ = 0;
    std::uint64_t count_ = 0;
    std::size_t offsetSize_ = 0;
    std::size_t refSize_ = 0;
    std::vector<std::uint32_t> state_;
    // Decoded containers, found through state_: a second reference shares the first decoding.
    std::vector<Value> containers_;
    std::size_t produced_ = 0;
    std::size_t decodedBytes_ = 0;
};

std::size_t bytesFor(std::uint64_t value) {
    if (value <= 0xFF)
        return 1;
    if (value <= 0xFFFF)
        return 2;
    if (value <= 0xFFFFFFFF)
        return 4;
    return 8;
}

class BinaryWriter {
  public:
    explicit BinaryWriter(Data& out) : out_(out) {}

    void document(const Value& value) {
        add(value);
        refSize_ = bytesFor(objects_.size() - 1);
        append("bplist00");
        std::vector<std::uint64_t> offsets;
        offsets.reserve(objects_.size());
        for (std::size_t i = 0; i < objects_.size(); ++i) {
            offsets.push_back(out_.size());
            write(i);
        }
        const std::uint64_t tableOffset = out_.size();
        const std::size_t offsetSize = bytesFor(tableOffset);
        for (const std::uint64_t offset : offsets)
            bigEndian(offset, offsetSize);
        out_.insert(out_.end(), 6, 0);  // unused, sort version
        out_.push_back(static_cast<std::uint8_t>(offsetSize));
        out_.push_back(static_cast<std::uint8_t>(refSize_));
        bigEndian(objects_.size(), 8);
        bigEndian(0, 8);  // the top object is written first
        bigEndian(tableOffset, 8);
    }

  private:
    // An object to write: a value, or a dictionary key (keys are strings but not Values).
    struct Object {
        const Value* value = nullptr;
        const std::string* key = nullptr;
        std::vector<std::uint64_t> refs;  // containers: elements, or keys then values
    };

    // Numbers objects depth-first. Strings and containers met again (a container shared by
    // several parents, as a value read from a binary list may be) reuse their first number.
    std::uint64_t add(const Value& value) {
        const void* identity = value.asArray() ? static_cast<const void*>(value.asArray())
                               : value.asDictionary()
                                   ? static_cast<const void*>(value.asDictionary())
                                   : nullptr;
        if (identity != nullptr) {
            if (const auto it = containers_.find(identity); it != containers_.end()) {
                return it->second;
            }
        }
        if (const std::string* s = value.asString())
            return addString(*s, &value);
        const std::uint64_t index = objects_.size();
        objects_.push_back(Object{&value, nullptr, {}});
        if (identity == nullptr)
            return index;
        containers_.emplace(identity, index);
        std::vector<std::uint64_t> refs;
        if (const Array* elements = value.asArray()) {
            refs.reserve(elements->size());
            for (const Value& element : *elements)
                refs.push_back(add(element));
        } else {
            const Dictionary& entries = *value.asDictionary();
            refs.reserve(entries.size() * 2);
            for (const auto& entry : entries)
                refs.push_back(addString(entry.first, nullptr));
            for (const auto& entry : entries)
                refs.push_back(add(entry.second));
        }
        objects_[index].refs = std::move(refs);
        return index;
    }

    std::uint64_t addString(const std::string& s, const Value* value) {
        const auto [it, added] = strings_.emplace(s, objects_.size());
        if (added)
            objects_.push_back(Object{value, value ? nullptr : &s, {}});
        return it->second;
    }

    void append(std::string_view s) { out_.insert(out_.end(), s.begin(), s.end()); }

    void bigEndian(std::uint64_t value, std::size_t size) {
        for (std::size_t i = size; i-- > 0;)
            out_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }

    void integer(std::int64_t i) {
        if (i < 0) {
            out_.push_back(0x13);
            return bigEndian(static_cast<std::uint64_t>(i), 8);
        }
        const std::size_t size = bytesFor(static_cast<std::uint64_t>(i));
        out_.push_back(static_cast<std::uint8_t>(0x10 | std::countr_zero(size)));
        bigEndian(static_cast<std::uint64_t>(i), size);
    }

    void header(std::uint8_t kind, std::uint64_t count) {
        if (count < 15) {
            out_.push_back(static_cast<std::uint8_t>(kind << 4 | count));
        } else {
            out_.push_back(static_cast<std::uint8_t>(kind << 4 | 0x0F));
            integer(static_cast<std::int64_t>(count));
        }
    }

    void string(const std::string& s) {
        std::string text;
        appendValidUtf8(text, s);
        const bool ascii = std::all_of(text.begin(), text.end(),
                                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        if (ascii) {
            header(0x5, text.size());
            return append(text);
        }
        std::vector<std::uint16_t> units;
        for (std::size_t i = 0; i < text.size();) {
            const auto lead = static_cast<unsigned char>(text[i]);
            const std::size_t size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
            char32_t c = size == 1 ? lead : lead & (0x7F >> size);
            for (std::size_t k = 1; k < size; ++k)
                c = c << 6 | (text[i + k] & 0x3F);
            i += size;
            if (c >= 0x10000) {
                units.push_back(static_cast<std::uint16_t>(0xD800 + ((c - 0x10000) >> 10)));
                units.push_back(static_cast<std::uint16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
            } else {
                units.push_back(static_cast<std::uint16_t>(c));
            }
        }
        header(0x6, units.size());
        for (const std::uint16_t unit : units)
            bigEndian(unit, 2);
    }

    void write(std::size_t index) {
        const Object& object = objects_[index];
        if (object.key != nullptr)
            return string(*object.key);
        const Value& value = *object.value;
        switch (value.type()) {
            case Type::Null:
                return header(0x5, 0);
            case Type::Boolean:
                return out_.push_back(*value.asBool() ? 0x09 : 0x08);
            case Type::Integer:
                return integer(*value.asInteger());
            case Type::Real:
                out_.push_back(0x23);
                return bigEndian(std::bit_cast<std::uint64_t>(*value.asReal()), 8);
            case Type::Date:
                out_.push_back(0x33);
                return bigEndian(
                    std::bit_cast<std::uint64_t>(referenceSecondsFromDate(*value.asDate())), 8);
            case Type::String:
                return string(*value.asString());
            case Type::Data:
                header(0x4, value.asData()->size());
                out_.insert(out_.end(), value.asData()->begin(), value.asData()->end());
                return;
            case Type::Uid: {
                const std::uint64_t uid = value.asUid()->value;
                const std::size_t size = bytesFor(uid);
                out_.push_back(static_cast<std::uint8_t>(0x80 | (size - 1)));
                return bigEndian(uid, size);
            }
            case Type::Array:
            case Type::Dictionary:
                header(value.asArray() ? 0xA : 0xD,
                       value.asArray() ? object.refs.size() : object.refs.size() / 2);
                for (const std::uint64_t ref : object.refs)
                    bigEndian(ref, refSize_);
                return;
        }
    }

    Data& out_;
    std::vector<Object> objects_;
    std::unordered_map<const void*, std::uint64_t> containers_;
    std::unordered_map<std::string_view, std::uint64_t> strings_;
    std::size_t refSize_ = 1;
};

}  // namespace

std::optional<Value> parseBinary(std::span<const std::uint8_t> bytes, const ReadLimits& limits,
                                 std::string* error) {
    try {
        return BinaryReader(bytes, limits).read();
    } catch (const BinaryError& e) {
        return fail(error, e.reason);
    }
}

void writeBinary(const Value& value, Data& out) {
    BinaryWriter(out).document(value);
}

}  // namespace sysmend::plist::detail
