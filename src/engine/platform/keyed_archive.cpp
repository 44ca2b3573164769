#include "platform/keyed_archive.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace sysmend::keyed_archive {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Type;
using plist::Uid;
using plist::Value;

constexpr std::string_view kArchiver = "NSKeyedArchiver";
constexpr std::int64_t kVersion = 100000;

// NSDate keeps seconds since 2001-01-01 00:00:00 UTC.
constexpr std::chrono::sys_seconds kReferenceDate{std::chrono::seconds{978307200}};
// Past about 8.2e9 seconds from 2001 the clock's nanosecond count overflows.
constexpr double kMaxDateSeconds = 8.0e9;

enum class Kind { List, Map, Text, Bytes, Time };

struct KnownClass {
    std::string_view name;
    Kind kind;
};
constexpr std::array<KnownClass, 9> kKnownClasses{{
    {"NSArray", Kind::List},
    {"NSMutableArray", Kind::List},
    {"NSDictionary", Kind::Map},
    {"NSMutableDictionary", Kind::Map},
    {"NSString", Kind::Text},
    {"NSMutableString", Kind::Text},
    {"NSData", Kind::Bytes},
    {"NSMutableData", Kind::Bytes},
    {"NSDate", Kind::Time},
}};

std::optional<Kind> kindOfClassName(std::string_view name) {
    for (const KnownClass& known : kKnownClasses) {
        if (known.name == name)
            return known.kind;
    }
    return std::nullopt;
}

struct DecodeError {
    std::string reason;
};

// Walks the object graph from the root. Containers are memoised by index, which is what makes
// shared references cost nothing and lets a reference to an object still being decoded be
// recognised as a cycle.
class Decoder {
  public:
    Decoder(const Array& objects, const DecodeLimits& limits)
        : objects_(objects),
          limits_(limits),
          state_(objects.size(), State::NotStarted),
          decoded_(objects.size()),
          measures_(objects.size()) {}

    Value root(const Value& reference) {
        Measure measure;
        return resolve(reference, 0, measure);
    }

  private:
    enum class State : std::uint8_t { NotStarted, InProgress, Done };

    // What a value takes when written out as a tree. Kept per decoded container because a
    // shared container's subtree is measured once but counts wherever it appears.
    struct Measure {
        std::size_t expanded = 0;
        std::size_t height = 0;  // levels of arrays and dictionaries (0 for a scalar)
    };

    // Adds to a running expanded size and stops at the cap (sums may be astronomically large).
    void grow(Measure& measure, std::size_t amount) const {
        if (amount > limits_.maxExpandedSize - measure.expanded) {
            throw DecodeError{"the archive expands to more than " +
                              std::to_string(limits_.maxExpandedSize) + " values and bytes"};
        }
        measure.expanded += amount;
    }

    // depth: the containers being decoded around this reference (bounds the recursion).
    Value resolve(const Value& reference, std::size_t depth, Measure& measure) {
        const std::optional<Uid> uid = reference.asUid();
        if (!uid)
            throw DecodeError{"an object reference is not a UID"};
        if (uid->value >= objects_.size()) {
            throw DecodeError{"reference " + std::to_string(uid->value) + " is out of range (" +
                              std::to_string(objects_.size()) + " objects)"};
        }
        const auto index = static_cast<std::size_t>(uid->value);
        if (index == 0) {  // "$null" whatever $objects[0] holds: the archiver's nil
            grow(measure, 1);
            return Value();
        }
        const Value& object = objects_[index];
        switch (object.type()) {
            case Type::String:
                grow(measure, 1 + object.asString()->size());
                return object;
            case Type::Data:
                grow(measure, 1 + object.asData()->size());
                return object;
            case Type::Boolean:
            case Type::Integer:
            case Type::Real:
            case Type::Date:
                grow(measure, 1);
                return object;
            case Type::Dictionary:
                break;
            default:
                throw DecodeError{"object " + std::to_string(index) + " is not an archived object"};
        }
        switch (state_[index]) {
            case State::Done:
                break;
            case State::InProgress:
                throw DecodeError{"reference cycle through object " + std::to_string(index)};
            case State::NotStarted:
                if (depth >= limits_.maxDepth) {
                    throw DecodeError{"objects nested deeper than " +
                                      std::to_string(limits_.maxDepth)};
                }
                state_[index] = State::InProgress;
                decoded_[index] =
                    instance(index, *object.asDictionary(), depth + 1, measures_[index]);
                // The recursion's depth alone does not bound the result's: a shared subtree
                // decoded earlier adds its whole height wherever it is referenced again.
                if (measures_[index].height > limits_.maxDepth) {
                    throw DecodeError{"objects nested deeper than " +
                                      std::to_string(limits_.maxDepth)};
                }
                state_[index] = State::Done;
                break;
        }
        const Measure& own = measures_[index];
        grow(measure, own.expanded);
        measure.height = std::max(measure.height, own.height + 1);
        return decoded_[index];
    }

    Kind classOf(std::size_t index, const Dictionary& object) const {
        const Value* reference = object.find("$class");
        const std::optional<Uid> uid = reference ? reference->asUid() : std::nullopt;
        const Value* classObject =
            uid && uid->value > 0 && uid->value < objects_.size() ? &objects_[uid->value] : nullptr;
        const Value* className = classObject ? classObject->find("$classname") : nullptr;
        if (!className || !className->asString())
            throw DecodeError{"object " + std::to_string(index) + " has no class"};
        if (const auto kind = kindOfClassName(*className->asString()))
            return *kind;
        // The archiver lists the superclasses so that a reader without the class can fall
        // back to one it has.
        if (const Value* chain = classObject->find("$classes"); chain && chain->asArray()) {
            for (const Value& name : *chain->asArray()) {
                const std::string* text = name.asString();
                if (const auto kind = text ? kindOfClassName(*text) : std::nullopt)
                    return *kind;
            }
        }
        throw DecodeError{"unsupported class " + *className->asString()};
    }

    const Value& field(std::size_t index, const Dictionary& object, std::string_view key,
                       Type type) const {
        const Value* value = object.find(key);
        if (!value || value->type() != type) {
            throw DecodeError{"object " + std::to_string(index) + " lacks a valid " +
                              std::string(key)};
        }
        return *value;
    }

    Value instance(std::size_t index, const Dictionary& object, std::size_t depth,
                   Measure& measure) {
        grow(measure, 1);
        switch (classOf(index, object)) {
            case Kind::Text: {
                const Value& text = field(index, object, "NS.string", Type::String);
                grow(measure, text.asString()->size());
                return text;
            }
            case Kind::Bytes: {
                const Value& bytes = field(index, object, "NS.data", Type::Data);
                grow(measure, bytes.asData()->size());
                return bytes;
            }
            case Kind::Time: {
                const Value* time = object.find("NS.time");
                const std::optional<double> seconds = time ? time->asReal() : std::nullopt;
                if (!seconds || !(std::fabs(*seconds) <= kMaxDateSeconds))
                    throw DecodeError{"object " + std::to_string(index) + " is not a valid date"};
                return Value(Date(kReferenceDate + std::chrono::duration_cast<Date::duration>(
                                                       std::chrono::duration<double>(*seconds))));
            }
            case Kind::List: {
                const Array& references =
                    *field(index, object, "NS.objects", Type::Array).asArray();
                measure.height = 1;
                Array elements;
                elements.reserve(references.size());
                for (const Value& reference : references)
                    elements.push_back(resolve(reference, depth, measure));
                return Value(std::move(elements));
            }
            case Kind::Map: {
                const Array& keys = *field(index, object, "NS.keys", Type::Array).asArray();
                const Array& values = *field(index, object, "NS.objects", Type::Array).asArray();
                if (keys.size() != values.size()) {
                    throw DecodeError{"object " + std::to_string(index) +
                                      " has unequal counts of keys and values"};
                }
                measure.height = 1;
                Dictionary entries;
                for (std::size_t i = 0; i < keys.size(); ++i) {
                    const Value key = resolve(keys[i], depth, measure);
                    if (!key.asString()) {
                        throw DecodeError{"object " + std::to_string(index) +
                                          " has a key that is not a string"};
                    }
                    entries.set(*key.asString(), resolve(values[i], depth, measure));
                }
                return Value(std::move(entries));
            }
        }
        throw DecodeError{"object " + std::to_string(index) + " has an unknown kind"};
    }

    const Array& objects_;
    const DecodeLimits& limits_;
    std::vector<State> state_;
    std::vector<Value> decoded_;
    std::vector<Measure> measures_;
};

class Encoder {
  public:
    Value archive(const Value& root) {
        const Uid top = reference(root);
        Dictionary topEntries;
        topEntries.set("root", top);
        Dictionary archiveEntries;
        archiveEntries.set("$archiver", std::string(kArchiver));
        archiveEntries.set("$objects", std::move(objects_));
        archiveEntries.set("$top", std::move(topEntries));
        archiveEntries.set("$version", kVersion);
        return Value(std::move(archiveEntries));
    }

  private:
    Uid append(Value object) {
        objects_.push_back(std::move(object));
        return Uid{objects_.size() - 1};
    }

    // The class object is written when the first instance is complete, as Apple's archiver
    // does, so it follows that instance's contents.
    Uid classReference(std::string_view name) {
        const auto found = classes_.find(std::string(name));
        if (found != classes_.end())
            return found->second;
        Dictionary entries;
        entries.set("$classes", Array{std::string(name), "NSObject"});
        entries.set("$classname", std::string(name));
        const Uid uid = append(std::move(entries));
        classes_.emplace(std::string(name), uid);
        return uid;
    }

    Uid reference(const Value& value) {
        switch (value.type()) {
            case Type::Null:
                return Uid{0};
            case Type::String: {
                const std::string& text = *value.asString();
                const auto found = strings_.find(text);
                if (found != strings_.end())
                    return found->second;
                const Uid uid = append(value);
                strings_.emplace(text, uid);
                return uid;
            }
            case Type::Boolean:
            case Type::Integer:
            case Type::Real:
            case Type::Data:
                return append(value);
            case Type::Date: {
                const Uid uid = append(Value());
                Dictionary entries;
                entries.set(
                    "NS.time",
                    std::chrono::duration<double>(*value.asDate() - kReferenceDate).count());
                entries.set("$class", classReference("NSDate"));
                objects_[uid.value] = Value(std::move(entries));
                return uid;
            }
            case Type::Array:
                return container(value, [&](Dictionary& entries) {
                    Array references;
                    for (const Value& element : *value.asArray())
                        references.push_back(reference(element));
                    entries.set("NS.objects", std::move(references));
                    return "NSArray";
                });
            case Type::Dictionary:
                return container(value, [&](Dictionary& entries) {
                    Array keys;
                    for (const auto& entry : *value.asDictionary())
                        keys.push_back(reference(entry.first));
                    Array values;
                    for (const auto& entry : *value.asDictionary())
                        values.push_back(reference(entry.second));
                    entries.set("NS.keys", std::move(keys));
                    entries.set("NS.objects", std::move(values));
                    return "NSDictionary";
                });
            case Type::Uid:
                break;
        }
        throw std::invalid_argument("a UID has no archived form");
    }

    // The number is taken before the contents are written, so a container comes before its
    // elements in $objects.
    template <typename Fill>
    Uid container(const Value& value, Fill fill) {
        const void* identity = value.asArray() ? static_cast<const void*>(value.asArray())
                                               : static_cast<const void*>(value.asDictionary());
        const auto found = containers_.find(identity);
        if (found != containers_.end())
            return found->second;
        const Uid uid = append(Value());
        Dictionary entries;
        const std::string_view className = fill(entries);
        entries.set("$class", classReference(className));
        objects_[uid.value] = Value(std::move(entries));
        containers_.emplace(identity, uid);
        return uid;
    }

    Array objects_{"$null"};
    std::unordered_map<std::string, Uid> strings_;
    std::unordered_map<std::string, Uid> classes_;
    std::unordered_map<const void*, Uid> containers_;
};

}  // namespace

std::optional<plist::Value> decode(std::span<const std::uint8_t> bytes, const DecodeLimits& limits,
                                   std::string* error) {
    const std::optional<Value> archive = plist::parse(bytes, limits.read, error);
    if (!archive)
        return std::nullopt;
    return decodePlist(*archive, limits, error);
}

std::optional<plist::Value> decodePlist(const plist::Value& archive, const DecodeLimits& limits,
                                        std::string* error) {
    auto fail = [error](std::string reason) -> std::optional<Value> {
        if (error != nullptr)
            *error = std::move(reason);
        return std::nullopt;
    };
    const Value* archiver = archive.find("$archiver");
    if (!archiver || !archiver->asString() || *archiver->asString() != kArchiver)
        return fail("not a keyed archive ($archiver is not NSKeyedArchiver)");
    const Value* objects = archive.find("$objects");
    if (!objects || !objects->asArray())
        return fail("the keyed archive has no $objects array");
    const Value* top = archive.find("$top");
    const Value* root = top ? top->find("root") : nullptr;
    if (!root)
        return fail("the keyed archive has no root object");
    try {
        return Decoder(*objects->asArray(), limits).root(*root);
    } catch (const DecodeError& e) {
        return fail(e.reason);
    }
}

plist::Value encodeToPlist(const plist::Value& root) {
    return Encoder().archive(root);
}

Data encode(const plist::Value& root) {
    return plist::serialize(encodeToPlist(root), plist::Format::Binary);
}

}  // namespace sysmend::keyed_archive
