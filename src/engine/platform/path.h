// Path-string helpers with NSString's path semantics, for volume paths ("/Users/a/x.app").
// They work on text only and never touch the disk.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sysmend::path {

// "/a/b.txt" -> "b.txt"; "/a/b/" -> "b"; "/" -> "/"; "" -> "".
std::string lastPathComponent(std::string_view p);

// "/a/b.txt" -> "/a"; "/a" -> "/"; "/" -> "/"; "a" -> "".
std::string deletingLastPathComponent(std::string_view p);

// "b.tar.gz" -> "gz"; "/a.b/c" -> ""; ".hidden" -> "" (a leading dot starts no extension).
std::string pathExtension(std::string_view p);

// "/a/b.txt" -> "/a/b"; "/a/.hidden" -> "/a/.hidden".
std::string deletingPathExtension(std::string_view p);

// Appends a component with exactly one separator between them, whatever slashes either side
// brings: ("/a/", "/b") -> "/a/b"; ("", "b") -> "b". A trailing slash is dropped (but "/").
std::string appending(std::string_view base, std::string_view component);

// "/a//b/./c/" -> "/a/b/c": removes empty and "." components and a trailing slash; ".." is
// resolved textually. "" stays "".
std::string standardized(std::string_view p);

// Components as NSString gives them: "/a/b" -> {"/", "a", "b"}; "a/b/" -> {"a", "b", "/"}.
std::vector<std::string> components(std::string_view p);

// ASCII lower-casing (names compared case-insensitively are ASCII in practice).
std::string lowercased(std::string_view s);

// Strips leading and trailing blanks and tabs (not newlines), as the whitespace set does.
std::string trimmedWhitespace(std::string_view s);

}  // namespace sysmend::path
