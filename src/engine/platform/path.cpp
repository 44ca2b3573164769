#include "platform/path.h"

#include <algorithm>
#include <cctype>

namespace sysmend::path {
namespace {

std::string_view withoutTrailingSlashes(std::string_view p) {
    while (p.size() > 1 && p.back() == '/')
        p.remove_suffix(1);
    return p;
}

}  // namespace

std::string lastPathComponent(std::string_view p) {
    p = withoutTrailingSlashes(p);
    if (p == "/")
        return "/";
    auto slash = p.rfind('/');
    return std::string(slash == std::string_view::npos ? p : p.substr(slash + 1));
}

std::string deletingLastPathComponent(std::string_view p) {
    p = withoutTrailingSlashes(p);
    if (p == "/")
        return "/";
    auto slash = p.rfind('/');
    if (slash == std::string_view::npos)
        return "";
    if (slash == 0)
        return "/";
    return std::string(withoutTrailingSlashes(p.substr(0, slash)));
}

std::string pathExtension(std::string_view p) {
    std::string name = lastPathComponent(p);
    auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == name.size())
        return "";
    return name.substr(dot + 1);
}

std::string deletingPathExtension(std::string_view p) {
    std::string ext = pathExtension(p);
    std::string_view trimmed = withoutTrailingSlashes(p);
    if (ext.empty())
        return std::string(trimmed);
    return std::string(trimmed.substr(0, trimmed.size() - ext.size() - 1));
}

std::string appending(std::string_view base, std::string_view component) {
    while (!component.empty() && component.front() == '/')
        component.remove_prefix(1);
    std::string out(withoutTrailingSlashes(base));
    if (!component.empty()) {
        if (!out.empty() && out.back() != '/')
            out.push_back('/');
        out.append(component);
    }
    std::string_view trimmed = withoutTrailingSlashes(out);
    out.resize(trimmed.size());
    return out;
}

std::string standardized(std::string_view p) {
    if (p.empty())
        return "";
    bool absolute = p.front() == '/';
    std::vector<std::string_view> parts;
    std::size_t i = 0;
    while (i <= p.size()) {
        std::size_t j = p.find('/', i);
        if (j == std::string_view::npos)
            j = p.size();
        std::string_view part = p.substr(i, j - i);
        if (part == "..") {
            if (!parts.empty() && parts.back() != "..") {
                parts.pop_back();
            } else if (!absolute) {
                parts.push_back(part);
            }
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        i = j + 1;
    }
    std::string out = absolute ? "/" : "";
    for (std::size_t k = 0; k < parts.size(); ++k) {
        if (k > 0)
            out.push_back('/');
        out.append(parts[k]);
    }
    return out;
}

std::vector<std::string> components(std::string_view p) {
    std::vector<std::string> out;
    if (p.empty())
        return out;
    if (p.front() == '/')
        out.emplace_back("/");
    std::size_t i = 0;
    while (i < p.size()) {
        std::size_t j = p.find('/', i);
        if (j == std::string_view::npos)
            j = p.size();
        if (j > i)
            out.emplace_back(p.substr(i, j - i));
        i = j + 1;
    }
    if (p.size() > 1 && p.back() == '/')
        out.emplace_back("/");
    return out;
}

std::string lowercased(std::string_view s) {
    std::string out(s);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

std::string trimmedWhitespace(std::string_view s) {
    auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!s.empty() && blank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && blank(s.back()))
        s.remove_suffix(1);
    return std::string(s);
}

}  // namespace sysmend::path
