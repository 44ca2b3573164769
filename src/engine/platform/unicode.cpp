#include "platform/unicode.h"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

namespace sysmend::unicode {

std::string caselessKey(std::string_view utf8) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
    const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status))  // ICU's data is missing: fall back to the bytes as they are
        return std::string(utf8);
    icu::UnicodeString text = icu::UnicodeString::fromUTF8(
        icu::StringPiece(utf8.data(), static_cast<int32_t>(utf8.size())));
    // Folding can turn a composed character into one that needs decomposing again (U+0345).
    icu::UnicodeString folded = nfd->normalize(text, status).foldCase();
    icu::UnicodeString key = nfc->normalize(nfd->normalize(folded, status), status);
    std::string out;
    if (U_FAILURE(status))
        return std::string(utf8);
    key.toUTF8String(out);
    return out;
}

}  // namespace sysmend::unicode
