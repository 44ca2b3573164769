#include "appviewer/code_signature.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "appviewer/der_entitlements.h"
#include "platform/path.h"
#include "platform/values.h"
#include "platform/volume.h"

namespace sysmend {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint32_t kFatMagic = 0xcafebabe;
constexpr std::uint32_t kFatMagic64 = 0xcafebabf;
constexpr std::uint32_t kMachMagic = 0xfeedface;
constexpr std::uint32_t kMachMagic64 = 0xfeedfacf;
constexpr std::uint32_t kMachCigam = 0xcefaedfe;  // kMachMagic written big-endian
constexpr std::uint32_t kMachCigam64 = 0xcffaedfe;
constexpr std::uint32_t kLoadCodeSignature = 0x1d;
constexpr std::uint32_t kSuperBlobMagic = 0xfade0cc0;
constexpr std::uint32_t kXmlEntitlementsMagic = 0xfade7171;
constexpr std::uint32_t kDerEntitlementsMagic = 0xfade7172;
constexpr std::uint32_t kXmlEntitlementsSlot = 5;
constexpr std::uint32_t kDerEntitlementsSlot = 7;

// Caps far above what signing tools write, so that hostile counts cannot make the reader
// read or allocate much.
constexpr std::uint32_t kMaxFatArchitectures = 64;
constexpr std::uint32_t kMaxLoadCommandBytes = 4 << 20;
constexpr std::uint32_t kMaxBlobIndexEntries = 1024;
constexpr std::uint32_t kMaxEntitlementsBytes = 1 << 20;

constexpr std::size_t kMachHeaderSize = 28;
constexpr std::size_t kMachHeaderSize64 = 32;

std::uint32_t be32(const std::uint8_t* p) {
    return std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 | std::uint32_t{p[2]} << 8 | p[3];
}

std::uint32_t le32(const std::uint8_t* p) {
    return std::uint32_t{p[3]} << 24 | std::uint32_t{p[2]} << 16 | std::uint32_t{p[1]} << 8 | p[0];
}

std::uint64_t be64(const std::uint8_t* p) {
    return std::uint64_t{be32(p)} << 32 | be32(p + 4);
}

struct Range {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

// Random access to the bytes of a buffer or a file.
class Source {
  public:
    virtual ~Source() = default;
    virtual std::uint64_t size() const = 0;
    // The bytes [offset, offset + length), valid until the next read; nullopt when the range
    // is not wholly inside the source or cannot be read.
    virtual std::optional<Bytes> read(std::uint64_t offset, std::size_t length) = 0;

  protected:
    bool contains(std::uint64_t offset, std::size_t length) const {
        return offset <= size() && length <= size() - offset;
    }
};

class MemorySource final : public Source {
  public:
    explicit MemorySource(Bytes bytes) : bytes_(bytes) {}
    std::uint64_t size() const override { return bytes_.size(); }
    std::optional<Bytes> read(std::uint64_t offset, std::size_t length) override {
        if (!contains(offset, length))
            return std::nullopt;
        return bytes_.subspan(offset, length);
    }

  private:
    Bytes bytes_;
};

class FileSource final : public Source {
  public:
    FileSource(int fd, std::uint64_t size) : fd_(fd), size_(size) {}
    std::uint64_t size() const override { return size_; }
    std::optional<Bytes> read(std::uint64_t offset, std::size_t length) override {
        if (!contains(offset, length))
            return std::nullopt;
        buffer_.resize(length);
        std::size_t done = 0;
        while (done < length) {
            const ssize_t n = ::pread(fd_, buffer_.data() + done, length - done,
                                      static_cast<off_t>(offset + done));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return std::nullopt;  // the file shrank or cannot be read
            done += static_cast<std::size_t>(n);
        }
        return Bytes(buffer_);
    }

  private:
    int fd_;
    std::uint64_t size_;
    Data buffer_;
};

// The range of the code signature of the Mach-O image in `slice`, from its LC_CODE_SIGNATURE
// command (the first one, should there be more).
std::optional<Range> codeSignatureRange(Source& source, Range slice) {
    if (slice.size < kMachHeaderSize)
        return std::nullopt;
    const auto header = source.read(slice.offset, kMachHeaderSize);
    if (!header)
        return std::nullopt;
    bool bigEndian = false;
    std::size_t headerSize = kMachHeaderSize;
    switch (le32(header->data())) {
        case kMachMagic:
            break;
        case kMachMagic64:
            headerSize = kMachHeaderSize64;
            break;
        case kMachCigam:
            bigEndian = true;
            break;
        case kMachCigam64:
            bigEndian = true;
            headerSize = kMachHeaderSize64;
            break;
        default:
            return std::nullopt;
    }
    const auto u32 = [bigEndian](const std::uint8_t* p) { return bigEndian ? be32(p) : le32(p); };
    const std::uint32_t commandCount = u32(header->data() + 16);
    const std::uint32_t commandBytes = u32(header->data() + 20);
    if (slice.size < headerSize || commandBytes > slice.size - headerSize ||
        commandBytes > kMaxLoadCommandBytes || commandCount > commandBytes / 8) {
        return std::nullopt;
    }
    const auto commands = source.read(slice.offset + headerSize, commandBytes);
    if (!commands)
        return std::nullopt;
    std::size_t pos = 0;
    for (std::uint32_t i = 0; i < commandCount; ++i) {
        if (commands->size() - pos < 8)
            return std::nullopt;
        const std::uint8_t* command = commands->data() + pos;
        const std::uint32_t commandSize = u32(command + 4);
        if (commandSize < 8 || commandSize > commands->size() - pos)
            return std::nullopt;
        if (u32(command) == kLoadCodeSignature) {
            if (commandSize < 16)
                return std::nullopt;
            const std::uint32_t dataOffset = u32(command + 8);
            const std::uint32_t dataSize = u32(command + 12);
            if (dataOffset > slice.size || dataSize > slice.size - dataOffset)
                return std::nullopt;
            return Range{slice.offset + dataOffset, dataSize};
        }
        pos += commandSize;
    }
    return std::nullopt;
}

// The content of the blob at `offset` in the SuperBlob, when it carries `magic` and lies
// wholly inside the SuperBlob.
std::optional<Bytes> blobContent(Source& source, Range superBlob, std::uint32_t offset,
                                 std::uint32_t magic) {
    if (offset > superBlob.size || superBlob.size - offset < 8)
        return std::nullopt;
    const auto header = source.read(superBlob.offset + offset, 8);
    if (!header || be32(header->data()) != magic)
        return std::nullopt;
    const std::uint32_t length = be32(header->data() + 4);
    if (length < 8 || length > superBlob.size - offset || length - 8 > kMaxEntitlementsBytes) {
        return std::nullopt;
    }
    return source.read(superBlob.offset + offset + 8, length - 8);
}

std::optional<plist::Value> entitlementsFromSignature(Source& source, Range signature) {
    if (signature.size < 12)
        return std::nullopt;
    const auto header = source.read(signature.offset, 12);
    if (!header || be32(header->data()) != kSuperBlobMagic)
        return std::nullopt;
    const std::uint32_t length = be32(header->data() + 4);
    const std::uint32_t count = be32(header->data() + 8);
    if (length < 12 || length > signature.size || count > kMaxBlobIndexEntries ||
        count > (length - 12) / 8) {
        return std::nullopt;
    }
    const auto index = source.read(signature.offset + 12, std::size_t{count} * 8);
    if (!index)
        return std::nullopt;
    std::optional<std::uint32_t> xmlOffset;
    std::optional<std::uint32_t> derOffset;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint8_t* entry = index->data() + std::size_t{i} * 8;
        const std::uint32_t slot = be32(entry);
        if (slot == kXmlEntitlementsSlot && !xmlOffset)
            xmlOffset = be32(entry + 4);
        if (slot == kDerEntitlementsSlot && !derOffset)
            derOffset = be32(entry + 4);
    }

    const Range superBlob{signature.offset, length};
    if (xmlOffset) {
        if (const auto xml = blobContent(source, superBlob, *xmlOffset, kXmlEntitlementsMagic)) {
            auto value = plist::parse(*xml);
            if (value && value->asDictionary())
                return value;
        }
    }
    if (derOffset) {
        if (const auto der = blobContent(source, superBlob, *derOffset, kDerEntitlementsMagic)) {
            return decodeDerEntitlements(*der);
        }
    }
    return std::nullopt;
}

std::optional<plist::Value> entitlementsFromSlice(Source& source, Range slice) {
    const auto signature = codeSignatureRange(source, slice);
    if (!signature)
        return std::nullopt;
    return entitlementsFromSignature(source, *signature);
}

std::optional<plist::Value> entitlements(Source& source) {
    const auto head = source.read(0, 8);
    if (!head)
        return std::nullopt;
    const std::uint32_t magic = be32(head->data());
    if (magic != kFatMagic && magic != kFatMagic64)
        return entitlementsFromSlice(source, {0, source.size()});

    const std::uint32_t count = be32(head->data() + 4);
    const std::size_t entrySize = magic == kFatMagic64 ? 32 : 20;
    if (count > kMaxFatArchitectures)
        return std::nullopt;
    const auto table = source.read(8, count * entrySize);
    if (!table)
        return std::nullopt;
    // Copied out first: reading a slice reuses the source's buffer that the table lies in.
    std::vector<Range> slices;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* entry = table->data() + i * entrySize;
        slices.push_back(magic == kFatMagic64 ? Range{be64(entry + 8), be64(entry + 16)}
                                              : Range{be32(entry + 8), be32(entry + 12)});
    }
    for (const Range& slice : slices) {
        // A slice outside the file is skipped: another one may still be good.
        if (slice.offset > source.size() || slice.size > source.size() - slice.offset)
            continue;
        if (auto found = entitlementsFromSlice(source, slice))
            return found;
    }
    return std::nullopt;
}

class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }

  private:
    int fd_;
};

}  // namespace

std::optional<plist::Value> entitlementsFromMachO(std::span<const std::uint8_t> bytes) {
    MemorySource source(bytes);
    return entitlements(source);
}

std::optional<plist::Value> entitlementsFromFile(const std::string& hostPath) {
    // O_NONBLOCK so that a FIFO planted under the executable's name cannot hang the scan.
    const FileDescriptor file(
        ::open(hostPath.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    FileSource source(file.get(), static_cast<std::uint64_t>(status.st_size));
    return entitlements(source);
}

std::optional<plist::Value> getSandboxDic(std::string_view bundleVolumePath) {
    const Volume& volume = Volume::current();
    const std::string contents = path::appending(bundleVolumePath, "Contents");
    const auto info = plist::readFile(volume.hostPath(path::appending(contents, "Info.plist")));
    const plist::Value* executable = info ? info->find("CFBundleExecutable") : nullptr;
    // Without the key the executable bears the bundle's name, as the system looks for it.
    const std::string* named = executable ? executable->asString() : nullptr;
    const std::string name =
        executable ? (named ? *named : std::string())
                   : path::deletingPathExtension(path::lastPathComponent(bundleVolumePath));
    // The name must not lead out of Contents/MacOS.
    if (name.empty() || name.find('/') != std::string::npos || name == "..")
        return std::nullopt;
    const std::string executablePath = path::appending(path::appending(contents, "MacOS"), name);
    auto found = entitlementsFromFile(volume.hostPath(executablePath));
    if (!found)
        return std::nullopt;
    plist::Dictionary information;
    information.set("entitlements-dict", std::move(*found));
    return plist::Value(std::move(information));
}

}  // namespace sysmend
