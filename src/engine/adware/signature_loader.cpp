#include "adware/signature_loader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <mutex>

#include "adware/na_cipher.h"
#include "platform/keyed_archive.h"
#include "platform/named_exception.h"

#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

namespace sysmend {

xxs_su_table* xxs_su = nullptr;

namespace {

const std::string a = "net.qvarlo.signature_data";

// Slot 1's bytes, written out byte by byte like the resource name below.
constexpr std::array<unsigned char, 25> bytes{'q', 'v', 'a', 'r', 'l', 'o', '-', 's', 'y',
                                              's', 'm', 'e', 'n', 'd', '-', 't', 'a', 'b',
                                              'l', 'e', 's', '-', 'v', '0', '1'};

// The resource's name never stands in the binary as one string.
constexpr std::array<unsigned char, 3> kResourceNameBytes{'.', 'c', 'x'};

// Far above any real database; a larger file is not read into memory.
constexpr off_t kMaxResourceBytes = 64 * 1024 * 1024;

std::mutex gOverridesMutex;
std::string gResourceFolder;
std::string gSignatureFile;

bool isFolder(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string executableFolder() {
    std::string path;
#ifdef __APPLE__
    std::uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    path.resize(size);
    if (_NSGetExecutablePath(path.data(), &size) != 0)
        return "";
    path.resize(path.find('\0'));
    if (char* resolved = ::realpath(path.c_str(), nullptr)) {
        path = resolved;
        std::free(resolved);
    }
#else
    std::array<char, 4096> buffer{};
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size() - 1);
    if (length <= 0)
        return "";
    path.assign(buffer.data(), static_cast<std::size_t>(length));
#endif
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

std::string defaultResourceFolder() {
    const std::string exe = executableFolder();
    if (!exe.empty()) {
        for (const char* relative : {"/../Resources", "/../share/sysmend"}) {
            if (isFolder(exe + relative))
                return exe + relative;
        }
    }
#ifdef SYSMEND_BUILD_RESOURCES
    if (isFolder(SYSMEND_BUILD_RESOURCES))
        return SYSMEND_BUILD_RESOURCES;
#endif
    return "";
}

enum class ReadResult { Read, Unreadable, TooLarge };

ReadResult readWholeFile(const std::string& path, Data& out) {
    // O_NONBLOCK so that a FIFO in the resource's place cannot hang the loader.
    const int fd = path.empty() ? -1 : ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return ReadResult::Unreadable;
    struct stat st {};
    ReadResult result = ReadResult::Read;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        result = ReadResult::Unreadable;
    } else if (st.st_size > kMaxResourceBytes) {
        result = ReadResult::TooLarge;
    } else {
        out.resize(static_cast<std::size_t>(st.st_size));
        std::size_t done = 0;
        while (done < out.size()) {
            const ssize_t n = ::read(fd, out.data() + done, out.size() - done);
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0)
                result = ReadResult::Unreadable;
            if (n <= 0)
                break;  // or a file that shrank while being read: keep what it held
            done += static_cast<std::size_t>(n);
        }
        out.resize(done);
    }
    ::close(fd);
    return result;
}

// Steps 4 and 5 of loading: slot 0, then the keyed archive. Null stands for nil.
plist::Value decryptAndDecode(const Data& contents, const std::string& key) {
    const std::optional<Data> plain = xxs_su->decrypt(contents, key);
    if (!plain)
        return plist::Value();
    std::optional<plist::Value> root = keyed_archive::decode(*plain);
    return root ? std::move(*root) : plist::Value();
}

// Empty when there is no resource folder at all.
std::string resourcePath() {
    {
        std::lock_guard lock(gOverridesMutex);
        if (!gSignatureFile.empty())
            return gSignatureFile;
    }
    const std::string folder = resourceFolder();
    if (folder.empty())
        return "";
    const std::string name(kResourceNameBytes.begin(), kResourceNameBytes.end());
    return folder + "/" + name;
}

void fill() {
    xxs_su = new xxs_su_table{&m0, &m1, &_acx, &a};
}

}  // namespace

void xxffucckxx::initialize() {
    static std::once_flag once;
    std::call_once(once, fill);
}

xxffucckxx::xxffucckxx() {
    initialize();
    var = *xxs_su->key;
    var1 = xxs_su->load(var, this);
    if (var1.isNull())
        throw NamedException("error-code-1000", "has bug");
}

std::optional<Data> m0(const Data& data, const std::string& key) {
    // A bounded C-string copy into 33 zero bytes: the key ends at its first NUL and is cut
    // after 32 bytes; the cipher takes the first 32.
    std::array<std::uint8_t, kCCKeySizeAES256 + 1> keyBuffer{};
    const std::size_t keyLength = std::min({key.find('\0'), key.size(), kCCKeySizeAES256});
    std::copy_n(key.begin(), keyLength, keyBuffer.begin());

    Data out(data.size() + kCCBlockSizeAES128);
    std::size_t moved = 0;
    if (CCCrypt(kCCDecrypt, kCCAlgorithmAES, kCCOptionPKCS7Padding, keyBuffer.data(),
                kCCKeySizeAES256, nullptr, data.data(), data.size(), out.data(), out.size(),
                &moved) != kCCSuccess) {
        return std::nullopt;
    }
    out.resize(moved);
    return out;
}

std::string m1() {
    return std::string(bytes.begin(), bytes.end());
}

plist::Value _acx(const std::string& key, const xxffucckxx* /*caller*/) {
    Data contents;
    switch (readWholeFile(resourcePath(), contents)) {
        case ReadResult::Unreadable:
            return plist::Array{};
        case ReadResult::TooLarge:
            return plist::Value();
        case ReadResult::Read:
            break;
    }
    return decryptAndDecode(contents, key);
}

std::string xs_g() {
    xxffucckxx::initialize();
    return xxs_su->storedString();
}

plist::Value loadSignatureDatabase() {
    return xxffucckxx().var1;
}

plist::Value decodeSignatureFile(const Data& contents) {
    xxffucckxx::initialize();
    plist::Value database = decryptAndDecode(contents, *xxs_su->key);
    if (database.isNull())
        throw NamedException("error-code-1000", "has bug");
    return database;
}

std::string resourceFolder() {
    {
        std::lock_guard lock(gOverridesMutex);
        if (!gResourceFolder.empty())
            return gResourceFolder;
    }
    if (const char* fromEnvironment = std::getenv("SYSMEND_RESOURCES");
        fromEnvironment != nullptr && *fromEnvironment != '\0') {
        return fromEnvironment;
    }
    return defaultResourceFolder();
}

void setResourceFolder(std::string hostFolder) {
    std::lock_guard lock(gOverridesMutex);
    gResourceFolder = std::move(hostFolder);
}

void setSignatureFile(std::string hostPath) {
    std::lock_guard lock(gOverridesMutex);
    gSignatureFile = std::move(hostPath);
}

}  // namespace sysmend
