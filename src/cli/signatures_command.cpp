// signatures build SRC.json OUT.cx: makes the encrypted signature database from its JSON
// source (what the build does for the shipped resource).
// signatures dump FILE.cx: decrypts and decodes a signature database and prints it as JSON.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "adware/signature_database.h"
#include "adware/signature_loader.h"
#include "cli.h"
#include "platform/named_exception.h"

namespace sysmend::cli {
namespace {

std::optional<std::string> readFile(const std::string& path, std::string& error) {
    std::ifstream in(path, std::ios::binary);
    std::string text;
    if (in)
        text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (!in || in.bad()) {
        error = "cannot read " + path + ": " + std::strerror(errno);
        return std::nullopt;
    }
    return text;
}

bool writeAll(int fd, const Data& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

// Through a temporary file in the same folder and rename(2): a build that is interrupted, or a
// reader at the same moment, never sees half a database.
bool writeAtomically(const std::string& path, const Data& bytes, std::string& error) {
    std::string temporary = path + ".XXXXXX";
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) {
        error = "cannot write " + path + ": " + std::strerror(errno);
        return false;
    }
    const bool written = ::fchmod(fd, 0644) == 0 && writeAll(fd, bytes) && ::fsync(fd) == 0;
    const int savedErrno = errno;
    ::close(fd);
    if (!written || ::rename(temporary.c_str(), path.c_str()) != 0) {
        error = "cannot write " + path + ": " + std::strerror(written ? errno : savedErrno);
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

int build(Invocation& inv) {
    if (inv.args.size() != 2)
        throw UsageError("signatures build needs SRC.json and OUT.cx");
    const std::string& sourcePath = inv.args[0];
    const std::string& outputPath = inv.args[1];
    std::string error;
    const std::optional<std::string> text = readFile(sourcePath, error);
    if (!text) {
        inv.err << "sysmend-cli: signatures build: " << error << "\n";
        return 1;
    }
    const auto source = nlohmann::ordered_json::parse(*text, nullptr, false);
    if (source.is_discarded()) {
        inv.err << "sysmend-cli: signatures build: " << sourcePath << ": not valid JSON\n";
        return 1;
    }
    const std::optional<plist::Value> database = signatureDatabaseFromSource(source, &error);
    if (!database) {
        inv.err << "sysmend-cli: signatures build: " << sourcePath << ": " << error << "\n";
        return 1;
    }
    if (!writeAtomically(outputPath, encryptSignatureDatabase(*database), error)) {
        inv.err << "sysmend-cli: signatures build: " << error << "\n";
        return 1;
    }
    return 0;
}

int dump(Invocation& inv) {
    if (inv.args.size() != 1)
        throw UsageError("signatures dump needs one FILE.cx");
    std::string error;
    const std::optional<std::string> contents = readFile(inv.args[0], error);
    if (!contents) {
        inv.err << "sysmend-cli: signatures dump: " << error << "\n";
        return 1;
    }
    try {
        const plist::Value database = decodeSignatureFile(Data(contents->begin(), contents->end()));
        inv.out << signatureDatabaseToJson(database).dump(2, ' ', false,
                                                          nlohmann::json::error_handler_t::replace)
                << "\n";
    } catch (const NamedException& e) {
        inv.err << "sysmend-cli: signatures dump: " << inv.args[0] << ": " << e.what() << "\n";
        return 1;
    }
    return 0;
}

int runSignatures(Invocation& inv) {
    rejectUnknownOptions(inv.args);
    if (inv.args.empty())
        throw UsageError("signatures needs build or dump");
    const std::string action = inv.args.front();
    inv.args.erase(inv.args.begin());
    if (action == "build")
        return build(inv);
    if (action == "dump")
        return dump(inv);
    throw UsageError("signatures: unknown action " + action + " (build or dump)");
}

const CommandRegistrar kSignatures(
    {"signatures",
     "signatures build SRC.json OUT.cx | dump FILE.cx   make or print a signature database",
     &runSignatures});

}  // namespace
}  // namespace sysmend::cli
