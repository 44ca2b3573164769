// signatures build SRC.json OUT.cx: makes the encrypted signature database from its JSON
// source (what the build does for the shipped resource).
// signatures dump FILE.cx: decrypts and decodes a signature database and prints it as JSON.
// signatures lint SRC.json: prints, one a line, the problems of a source (strings that can
// never match or would match too much); exit status 1 when any is an error. build refuses a
// source that lint finds errors in, printing them the same way.
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
#include "adware/signature_lint.h"
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

// The source as JSON, or nullopt after saying why on standard error.
std::optional<nlohmann::ordered_json> readSource(Invocation& inv, const char* action,
                                                 const std::string& sourcePath) {
    std::string error;
    const std::optional<std::string> text = readFile(sourcePath, error);
    if (!text) {
        inv.err << "sysmend-cli: signatures " << action << ": " << error << "\n";
        return std::nullopt;
    }
    auto source = nlohmann::ordered_json::parse(*text, nullptr, false);
    if (source.is_discarded()) {
        inv.err << "sysmend-cli: signatures " << action << ": " << sourcePath
                << ": not valid JSON\n";
        return std::nullopt;
    }
    return source;
}

// Prints every problem to `out`; true when one of them is an error.
bool printProblems(std::ostream& out, const std::string& sourcePath,
                   const std::vector<SignatureProblem>& problems) {
    bool errors = false;
    for (const SignatureProblem& problem : problems) {
        out << "sysmend-cli: signatures: " << sourcePath << ": " << problem << "\n";
        errors = errors || problem.severity == SignatureProblem::Severity::Error;
    }
    return errors;
}

int lint(Invocation& inv) {
    if (inv.args.size() != 1)
        throw UsageError("signatures lint needs one SRC.json");
    const std::optional<nlohmann::ordered_json> source = readSource(inv, "lint", inv.args[0]);
    if (!source)
        return 1;
    return printProblems(inv.out, inv.args[0], lintSignatureSource(*source)) ? 1 : 0;
}

int build(Invocation& inv) {
    if (inv.args.size() != 2)
        throw UsageError("signatures build needs SRC.json and OUT.cx");
    const std::string& sourcePath = inv.args[0];
    const std::string& outputPath = inv.args[1];
    const std::optional<nlohmann::ordered_json> source = readSource(inv, "build", sourcePath);
    if (!source)
        return 1;
    std::vector<SignatureProblem> errors = lintSignatureSource(*source);
    std::erase_if(errors, [](const SignatureProblem& problem) {
        return problem.severity != SignatureProblem::Severity::Error;
    });
    if (printProblems(inv.err, sourcePath, errors))
        return 1;
    std::string error;
    const std::optional<plist::Value> database = signatureDatabaseFromSource(*source, &error);
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
        throw UsageError("signatures needs build, dump or lint");
    const std::string action = inv.args.front();
    inv.args.erase(inv.args.begin());
    if (action == "build")
        return build(inv);
    if (action == "dump")
        return dump(inv);
    if (action == "lint")
        return lint(inv);
    throw UsageError("signatures: unknown action " + action + " (build, dump or lint)");
}

const CommandRegistrar kSignatures(
    {"signatures",
     "signatures build SRC.json OUT.cx | dump FILE.cx | lint SRC.json   make, print or check a "
     "signature database",
     &runSignatures});

}  // namespace
}  // namespace sysmend::cli
