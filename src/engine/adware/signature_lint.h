// Checks a signature source (resources/signatures/threats.json) for strings that can never
// match, or that would match too much, before it is built into the database. The checks read
// the source as JSON and touch no disk; `sysmend-cli signatures lint` prints them and
// `signatures build` refuses a source with errors.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace sysmend {

struct SignatureProblem {
    enum class Severity { Error, Warning };
    Severity severity = Severity::Error;
    std::optional<std::size_t> entry;  // index in the source; none for the document itself
    std::string name;                  // the entry's "name", "" without one
    std::string message;               // what is wrong, naming the list and the string

    bool operator==(const SignatureProblem&) const = default;
};

// "error: entry 4 ("Foo"): ..." on one line.
std::ostream& operator<<(std::ostream& out, const SignatureProblem& problem);

// Every problem of the source, entries in order. Errors: the top level is no array; an entry
// is no object, has no string "name", or has a key besides "name", the six lists and "sources";
// a list is no array or holds a non-string; an empty string; a string met twice in the same
// list (within one entry or across entries); an "app" or "extensions" string under
// kMinimumSubstringLength characters (they match as substrings of paths and names); a "path"
// string that is not absolute or lies in a home folder ("/Users/...", "~"), which can never
// match. Warnings: a "launch" string without a file extension (launchd loads only ".plist"
// files, though the launch pass compares every name in the job folders); an "extensions"
// string that differs only in case from another (matching is case-sensitive, so one of them
// is likely a typo); an entry without "sources".
inline constexpr std::size_t kMinimumSubstringLength = 6;
std::vector<SignatureProblem> lintSignatureSource(const nlohmann::ordered_json& source);

}  // namespace sysmend
