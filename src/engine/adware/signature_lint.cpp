#include "adware/signature_lint.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <utility>

#include "platform/path.h"

namespace sysmend {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<std::string_view, 6> kListKeys{"launch", "launchContent", "path",
                                                    "app",    "extensions",    "preferences"};

std::string jsonQuoted(const std::string& text) {
    return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string asciiLowercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
        return static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
    });
    return text;
}

// Why one string of a list can never match, or matches too much; nullopt when it is fine.
std::optional<std::string> badString(std::string_view list, const std::string& text) {
    if (text.empty())
        return "is empty";
    if ((list == "app" || list == "extensions") && text.size() < kMinimumSubstringLength)
        return "is shorter than " + std::to_string(kMinimumSubstringLength) +
               " characters, too short to match only what it names";
    if (list == "path" && text.front() != '/')
        return "is not an absolute path";
    if (list == "path" && (text.rfind("/Users/", 0) == 0 || text.rfind("~", 0) == 0))
        return "lies in a home folder, which no absolute path names on every Mac";
    return std::nullopt;
}

class Linter {
  public:
    std::vector<SignatureProblem> run(const Json& source) {
        if (!source.is_array()) {
            add(SignatureProblem::Severity::Error, std::nullopt, "",
                "the top level is not an array of threats");
            return std::move(problems_);
        }
        for (std::size_t index = 0; index < source.size(); ++index)
            entry(index, source[index]);
        return std::move(problems_);
    }

  private:
    void add(SignatureProblem::Severity severity, std::optional<std::size_t> index,
             std::string name, std::string message) {
        problems_.push_back({severity, index, std::move(name), std::move(message)});
    }

    void entry(std::size_t index, const Json& entry) {
        const auto error = [&](const std::string& name, std::string message) {
            add(SignatureProblem::Severity::Error, index, name, std::move(message));
        };
        if (!entry.is_object())
            return error("", "not an object");
        const auto nameField = entry.find("name");
        const std::string name =
            nameField != entry.end() && nameField->is_string() ? nameField->get<std::string>() : "";
        if (nameField == entry.end() || !nameField->is_string() || name.empty())
            error(name, "no \"name\" string");
        if (!entry.contains("sources"))
            add(SignatureProblem::Severity::Warning, index, name, "no \"sources\"");

        for (const auto& [key, value] : entry.items()) {
            if (key == "name" || key == "sources")
                continue;
            if (std::find(kListKeys.begin(), kListKeys.end(), key) == kListKeys.end()) {
                error(name, "unknown key " + jsonQuoted(key));
                continue;
            }
            if (!value.is_array()) {
                error(name, jsonQuoted(key) + " is not an array");
                continue;
            }
            for (std::size_t i = 0; i < value.size(); ++i) {
                const std::string where = jsonQuoted(key) + " string " + std::to_string(i);
                if (!value[i].is_string()) {
                    error(name, where + " is not a string");
                    continue;
                }
                const std::string text = value[i].get<std::string>();
                if (std::optional<std::string> why = badString(key, text))
                    error(name, where + " " + jsonQuoted(text) + " " + *why);
                // The launch pass compares the name of every entry of the job folders, so such
                // a string can match; but launchd loads only ".plist" files.
                if (key == "launch" && !text.empty() && path::pathExtension(text).empty())
                    add(SignatureProblem::Severity::Warning, index, name,
                        where + " " + jsonQuoted(text) +
                            " has no file extension (launchd job files end in \".plist\")");
                auto [seen, fresh] = seen_[key].try_emplace(text, Place{index, name, text});
                if (!fresh) {
                    error(name, where + " " + jsonQuoted(text) + " is already in entry " +
                                    std::to_string(seen->second.index) + " (" +
                                    jsonQuoted(seen->second.name) + ")");
                    continue;
                }
                if (key != "extensions" || text.empty())
                    continue;
                auto [folded, unique] =
                    extensionsByCase_.try_emplace(asciiLowercased(text), Place{index, name, text});
                if (!unique)
                    add(SignatureProblem::Severity::Warning, index, name,
                        where + " " + jsonQuoted(text) + " differs only in case from " +
                            jsonQuoted(folded->second.text) + " in entry " +
                            std::to_string(folded->second.index));
            }
        }
    }

    struct Place {
        std::size_t index;
        std::string name;
        std::string text;
    };
    std::vector<SignatureProblem> problems_;
    std::map<std::string, std::map<std::string, Place>, std::less<>> seen_;  // list -> string
    std::map<std::string, Place> extensionsByCase_;
};

}  // namespace

std::ostream& operator<<(std::ostream& out, const SignatureProblem& problem) {
    out << (problem.severity == SignatureProblem::Severity::Error ? "error: " : "warning: ");
    if (problem.entry)
        out << "entry " << *problem.entry << " (" << jsonQuoted(problem.name) << "): ";
    return out << problem.message;
}

std::vector<SignatureProblem> lintSignatureSource(const nlohmann::ordered_json& source) {
    return Linter().run(source);
}

}  // namespace sysmend
