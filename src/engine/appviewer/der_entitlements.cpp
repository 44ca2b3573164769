#include "appviewer/der_entitlements.h"

#include <string>
#include <utility>

namespace sysmend {
namespace {

constexpr std::uint8_t kBoolean = 0x01;
constexpr std::uint8_t kInteger = 0x02;
constexpr std::uint8_t kUtf8String = 0x0c;
constexpr std::uint8_t kSequence = 0x30;
constexpr std::uint8_t kSet = 0x31;
constexpr std::uint8_t kEntitlements = 0x70;  // [APPLICATION 16], constructed
constexpr std::uint8_t kDictionary = 0xb0;    // [CONTEXT 16], constructed
constexpr int kMaxDepth = 64;

using Bytes = std::span<const std::uint8_t>;

struct Element {
    std::uint8_t tag = 0;
    Bytes content;
};

// Takes one element off the front of `in`; nullopt when its header is malformed or its
// content runs past the end.
std::optional<Element> next(Bytes& in) {
    if (in.size() < 2)
        return std::nullopt;
    const std::uint8_t tag = in[0];
    if ((tag & 0x1f) == 0x1f)
        return std::nullopt;  // multi-byte tag numbers never occur here
    std::size_t header = 2;
    std::size_t length = in[1];
    if (length & 0x80) {
        const std::size_t count = length & 0x7f;
        // A count of 0 is BER's indefinite length, which DER forbids.
        if (count == 0 || count > 4 || in.size() < header + count)
            return std::nullopt;
        length = 0;
        for (std::size_t i = 0; i < count; ++i)
            length = (length << 8) | in[header + i];
        header += count;
    }
    if (length > in.size() - header)
        return std::nullopt;
    Element element{tag, in.subspan(header, length)};
    in = in.subspan(header + length);
    return element;
}

std::optional<plist::Value> decodeValue(const Element& element, int depth);

std::optional<plist::Value> decodeDictionary(Bytes in, int depth) {
    plist::Dictionary dictionary;
    while (!in.empty()) {
        auto entry = next(in);
        if (!entry || entry->tag != kSequence)
            return std::nullopt;
        auto key = next(entry->content);
        if (!key || key->tag != kUtf8String)
            return std::nullopt;
        auto value = next(entry->content);
        if (!value || !entry->content.empty())
            return std::nullopt;
        auto decoded = decodeValue(*value, depth + 1);
        if (!decoded)
            return std::nullopt;
        dictionary.set(std::string(key->content.begin(), key->content.end()), std::move(*decoded));
    }
    return plist::Value(std::move(dictionary));
}

std::optional<plist::Value> decodeInteger(Bytes content) {
    if (content.empty() || content.size() > 8)
        return std::nullopt;
    // Two's complement: start from all ones for a negative number so it sign-extends.
    std::uint64_t bits = (content[0] & 0x80) ? ~std::uint64_t{0} : 0;
    for (std::uint8_t byte : content)
        bits = (bits << 8) | byte;
    return plist::Value(static_cast<std::int64_t>(bits));
}

std::optional<plist::Value> decodeValue(const Element& element, int depth) {
    if (depth > kMaxDepth)
        return std::nullopt;
    switch (element.tag) {
        case kBoolean:
            if (element.content.size() != 1)
                return std::nullopt;
            return plist::Value(element.content[0] != 0);
        case kInteger:
            return decodeInteger(element.content);
        case kUtf8String:
            return plist::Value(std::string(element.content.begin(), element.content.end()));
        case kSequence: {
            plist::Array array;
            Bytes in = element.content;
            while (!in.empty()) {
                auto item = next(in);
                if (!item)
                    return std::nullopt;
                auto decoded = decodeValue(*item, depth + 1);
                if (!decoded)
                    return std::nullopt;
                array.push_back(std::move(*decoded));
            }
            return plist::Value(std::move(array));
        }
        case kDictionary:
        case kSet:
            return decodeDictionary(element.content, depth);
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<plist::Value> decodeDerEntitlements(std::span<const std::uint8_t> der) {
    auto outer = next(der);
    if (!outer || outer->tag != kEntitlements)
        return std::nullopt;
    auto version = next(outer->content);
    if (!version || version->tag != kInteger)
        return std::nullopt;
    auto dictionary = next(outer->content);
    if (!dictionary || (dictionary->tag != kDictionary && dictionary->tag != kSet)) {
        return std::nullopt;
    }
    return decodeDictionary(dictionary->content, 1);
}

}  // namespace sysmend
