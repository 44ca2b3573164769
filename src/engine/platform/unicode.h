// Unicode-aware comparison of names, with ICU: file names on a Mac volume come in either
// normal form (HFS+ stores decomposed names, APFS keeps what it was given), and titles come from
// Info.plists in whatever form their authors typed.
#pragma once

#include <string>
#include <string_view>

namespace sysmend::unicode {

// A key under which two texts are equal when they differ only in case or in normal form
// (canonical equivalence): full Unicode case folding between two canonical decompositions,
// composed again (NFC) so that a key found inside another key starts and ends on whole
// characters. "Élan", "élan" and "e\u0301lan" have one key. Bytes that are not UTF-8 are taken
// as U+FFFD each, so such a name can still match on its readable part.
std::string caselessKey(std::string_view utf8);

}  // namespace sysmend::unicode
