#include "sample/macho_builder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace sysmend::sample {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kFatMagic = 0xcafebabe;
constexpr std::uint32_t kMachMagic = 0xfeedface;
constexpr std::uint32_t kMachMagic64 = 0xfeedfacf;
constexpr std::uint32_t kExecutableFileType = 2;
constexpr std::uint32_t kLoadUuid = 0x1b;
constexpr std::uint32_t kLoadCodeSignature = 0x1d;
constexpr std::uint32_t kSliceAlignmentLog2 = 4;  // lipo page-aligns; 16 keeps seeds small

struct ArchInfo {
    std::uint32_t cpuType;
    std::uint32_t cpuSubtype;
    bool is64;
    bool bigEndian;
};

ArchInfo archInfo(Arch arch) {
    switch (arch) {
        case Arch::I386:
            return {7, 3, false, false};
        case Arch::X86_64:
            return {0x01000007, 3, true, false};
        case Arch::Arm64:
            return {0x0100000c, 0, true, false};
        case Arch::PowerPC:
            return {18, 0, false, true};
    }
    throw std::invalid_argument("unknown architecture");
}

void put32(Data& out, std::uint32_t value, bool bigEndian = true) {
    for (int i = 0; i < 4; ++i) {
        const int shift = bigEndian ? 24 - 8 * i : 8 * i;
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void append(Data& out, const Data& more) {
    out.insert(out.end(), more.begin(), more.end());
}

void padTo(Data& out, std::size_t alignment) {
    out.resize((out.size() + alignment - 1) / alignment * alignment);
}

Data blob(std::uint32_t magic, const Data& content) {
    Data out;
    put32(out, magic);
    put32(out, static_cast<std::uint32_t>(8 + content.size()));
    append(out, content);
    return out;
}

Data codeSignature(const MachOSpec& options) {
    std::vector<std::pair<std::uint32_t, Data>> slots;
    slots.emplace_back(0, blob(0xfade0c02, {}));            // code directory, left empty
    slots.emplace_back(2, blob(0xfade0c01, {0, 0, 0, 0}));  // requirements set of none
    const bool xml =
        options.blobs == EntitlementsBlobs::Xml || options.blobs == EntitlementsBlobs::Both;
    const bool der =
        options.blobs == EntitlementsBlobs::Der || options.blobs == EntitlementsBlobs::Both;
    if (xml) {
        slots.emplace_back(
            5, blob(0xfade7171, plist::serialize(options.entitlements, plist::Format::Xml)));
    }
    if (der)
        slots.emplace_back(7, blob(0xfade7172, encodeDerEntitlements(options.entitlements)));

    const std::size_t offset = 12 + 8 * slots.size();
    Data index;
    Data blobs;
    for (const auto& [slot, bytes] : slots) {
        put32(index, slot);
        put32(index, static_cast<std::uint32_t>(offset + blobs.size()));
        append(blobs, bytes);
    }
    Data out;
    put32(out, 0xfade0cc0);
    put32(out, static_cast<std::uint32_t>(offset + blobs.size()));
    put32(out, static_cast<std::uint32_t>(slots.size()));
    append(out, index);
    append(out, blobs);
    return out;
}

Data buildSlice(Arch arch, const MachOSpec& options) {
    const ArchInfo info = archInfo(arch);
    const bool big = info.bigEndian;
    const std::size_t headerSize = info.is64 ? 32 : 28;
    const std::uint32_t commandCount = options.codeSignature ? 2 : 1;
    const std::uint32_t commandBytes = options.codeSignature ? 24 + 16 : 24;

    Data out;
    put32(out, info.is64 ? kMachMagic64 : kMachMagic, big);
    put32(out, info.cpuType, big);
    put32(out, info.cpuSubtype, big);
    put32(out, kExecutableFileType, big);
    put32(out, commandCount, big);
    put32(out, commandBytes, big);
    put32(out, 0, big);  // flags
    if (info.is64)
        put32(out, 0, big);  // reserved
    // A command before the signature's, so that readers have to walk the list.
    put32(out, kLoadUuid, big);
    put32(out, 24, big);
    for (std::uint8_t i = 0; i < 16; ++i)
        out.push_back(i);
    if (!options.codeSignature)
        return out;

    const Data signature = codeSignature(options);
    const std::size_t signatureOffset = (headerSize + commandBytes + 15) / 16 * 16;
    put32(out, kLoadCodeSignature, big);
    put32(out, 16, big);
    put32(out, static_cast<std::uint32_t>(signatureOffset), big);
    put32(out, static_cast<std::uint32_t>(signature.size()), big);
    padTo(out, 16);
    append(out, signature);
    return out;
}

void putDerLength(Data& out, std::size_t length) {
    if (length < 0x80) {
        out.push_back(static_cast<std::uint8_t>(length));
        return;
    }
    Data bytes;
    for (; length > 0; length >>= 8)
        bytes.insert(bytes.begin(), static_cast<std::uint8_t>(length));
    out.push_back(static_cast<std::uint8_t>(0x80 | bytes.size()));
    append(out, bytes);
}

Data derElement(std::uint8_t tag, const Data& content) {
    Data out{tag};
    putDerLength(out, content.size());
    append(out, content);
    return out;
}

Data derString(const std::string& s) {
    return derElement(0x0c, Data(s.begin(), s.end()));
}

Data derInteger(std::int64_t value) {
    Data bytes;
    for (int shift = 56; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    // Minimal two's complement: drop a leading byte that only repeats the next byte's sign.
    while (bytes.size() > 1 &&
           ((bytes[0] == 0x00 && !(bytes[1] & 0x80)) || (bytes[0] == 0xff && (bytes[1] & 0x80)))) {
        bytes.erase(bytes.begin());
    }
    return derElement(0x02, bytes);
}

Data derValue(const plist::Value& value) {
    switch (value.type()) {
        case plist::Type::Boolean:
            return derElement(0x01, {static_cast<std::uint8_t>(*value.asBool() ? 0xff : 0x00)});
        case plist::Type::Integer:
            return derInteger(*value.asInteger());
        case plist::Type::String:
            return derString(*value.asString());
        case plist::Type::Array: {
            Data items;
            for (const plist::Value& item : *value.asArray())
                append(items, derValue(item));
            return derElement(0x30, items);
        }
        case plist::Type::Dictionary: {
            std::vector<const plist::Dictionary::Entry*> entries;
            for (const auto& entry : *value.asDictionary())
                entries.push_back(&entry);
            std::sort(entries.begin(), entries.end(),
                      [](const auto* a, const auto* b) { return a->first < b->first; });
            Data pairs;
            for (const auto* entry : entries) {
                Data pair = derString(entry->first);
                append(pair, derValue(entry->second));
                append(pairs, derElement(0x30, pair));
            }
            return derElement(0xb0, pairs);
        }
        default:
            throw std::invalid_argument("type without a DER entitlements encoding");
    }
}

}  // namespace

Data encodeDerEntitlements(const plist::Value& entitlements) {
    if (!entitlements.asDictionary())
        throw std::invalid_argument("entitlements must be a dictionary");
    Data content = derInteger(1);  // version
    append(content, derValue(entitlements));
    return derElement(0x70, content);
}

Data buildMachO(const MachOSpec& options) {
    if (options.architectures.size() == 1)
        return buildSlice(options.architectures.front(), options);

    const auto count = static_cast<std::uint32_t>(options.architectures.size());
    Data header;
    put32(header, kFatMagic);
    put32(header, count);
    Data slices;
    const std::size_t alignment = std::size_t{1} << kSliceAlignmentLog2;
    const std::size_t firstSlice =
        (8 + 20 * std::size_t{count} + alignment - 1) / alignment * alignment;
    for (Arch arch : options.architectures) {
        padTo(slices, alignment);
        const Data slice = buildSlice(arch, options);
        const ArchInfo info = archInfo(arch);
        put32(header, info.cpuType);
        put32(header, info.cpuSubtype);
        put32(header, static_cast<std::uint32_t>(firstSlice + slices.size()));
        put32(header, static_cast<std::uint32_t>(slice.size()));
        put32(header, kSliceAlignmentLog2);
        append(slices, slice);
    }
    header.resize(firstSlice);
    append(header, slices);
    return header;
}

std::string writeBundleExecutable(const std::string& bundleHostPath, const std::string& name,
                                  const Data& bytes) {
    const fs::path folder = fs::path(bundleHostPath) / "Contents" / "MacOS";
    fs::create_directories(folder);
    const fs::path file = folder / name;
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    if (!out)
        throw std::runtime_error("cannot write " + file.string());
    return file.string();
}

}  // namespace sysmend::sample
