// The XML property-list format: a reader for what Foundation and people write (old DOCTYPEs,
// comments, CDATA, entity references, any indentation) and a writer of Foundation's layout.
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/plist_formats.h"

namespace sysmend::plist::detail {
namespace {

struct XmlError {
    std::string reason;
};

bool isXmlSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && isXmlSpace(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && isXmlSpace(s.back()))
        s.remove_suffix(1);
    return s;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const char x = (a[i] >= 'A' && a[i] <= 'Z') ? a[i] + 32 : a[i];
        if (x != b[i])
            return false;
    }
    return true;
}

// Decimal or 0x-prefixed hexadecimal, optionally signed. Values between INT64_MAX and
// UINT64_MAX (unsigned 64-bit numbers) wrap.
std::optional<std::int64_t> parseInteger(std::string_view text) {
    std::string_view s = trimmed(text);
    bool negative = false;
    if (!s.empty() && (s[0] == '+' || s[0] == '-')) {
        negative = s[0] == '-';
        s.remove_prefix(1);
    }
    int base = 10;
    if (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
        base = 16;
        s.remove_prefix(2);
    }
    std::uint64_t magnitude = 0;
    const auto result = std::from_chars(s.data(), s.data() + s.size(), magnitude, base);
    if (s.empty() || result.ec != std::errc() || result.ptr != s.data() + s.size()) {
        return std::nullopt;
    }
    if (negative) {
        if (magnitude > std::uint64_t{1} << 63)
            return std::nullopt;
        return static_cast<std::int64_t>(0 - magnitude);
    }
    return static_cast<std::int64_t>(magnitude);
}

std::optional<double> parseReal(std::string_view text) {
    std::string_view s = trimmed(text);
    bool negative = false;
    if (!s.empty() && (s[0] == '+' || s[0] == '-')) {
        negative = s[0] == '-';
        s.remove_prefix(1);
    }
    if (equalsIgnoringCase(s, "nan"))
        return std::numeric_limits<double>::quiet_NaN();
    double value = 0;
    if (equalsIgnoringCase(s, "inf") || equalsIgnoringCase(s, "infinity")) {
        value = std::numeric_limits<double>::infinity();
    } else {
        // A second sign ("+-1") would be taken by from_chars; refuse it.
        if (!s.empty() && (s[0] == '+' || s[0] == '-'))
            return std::nullopt;
        const auto result = std::from_chars(s.data(), s.data() + s.size(), value);
        if (s.empty() || result.ptr != s.data() + s.size())
            return std::nullopt;
        // Out-of-range text yields its closest value, as strtod would (without strtod's
        // dependence on the locale's decimal point): zero or infinity.
        if (result.ec == std::errc::result_out_of_range) {
            const std::size_t e = s.find_first_of("eE");
            const bool tiny = e != std::string_view::npos && e + 1 < s.size() && s[e + 1] == '-';
            value = tiny ? 0.0 : std::numeric_limits<double>::infinity();
        } else if (result.ec != std::errc()) {
            return std::nullopt;
        }
    }
    return negative ? -value : value;
}

// "2024-05-01T12:30:00Z"; the time and the zone letter may be left out (UTC is assumed).
std::optional<Date> parseDate(std::string_view text) {
    const std::string_view s = trimmed(text);
    std::size_t i = 0;
    auto number = [&](std::size_t maxDigits, int& out) {
        const std::size_t start = i;
        out = 0;
        while (i < s.size() && i - start < maxDigits && s[i] >= '0' && s[i] <= '9') {
            out = out * 10 + (s[i++] - '0');
        }
        return i > start;
    };
    auto literal = [&](char c) {
        if (i < s.size() && s[i] == c) {
            ++i;
            return true;
        }
        return false;
    };
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (!number(5, year) || !literal('-') || !number(2, month) || !literal('-') ||
        !number(2, day)) {
        return std::nullopt;
    }
    if (literal('T') && !(number(2, hour) && literal(':') && number(2, minute) && literal(':') &&
                          number(2, second))) {
        return std::nullopt;
    }
    literal('Z');
    using namespace std::chrono;
    const year_month_day ymd{std::chrono::year(year), std::chrono::month(month),
                             std::chrono::day(day)};
    if (i != s.size() || !ymd.ok() || hour > 23 || minute > 59 || second > 60) {
        return std::nullopt;
    }
    const std::int64_t unixSeconds =
        std::int64_t{sys_days(ymd).time_since_epoch().count()} * 86400 + hour * 3600 + minute * 60 +
        second;
    return dateFromReferenceSeconds(static_cast<double>(unixSeconds - 978307200));
}

// Foundation's decoder skips anything outside the alphabet (line breaks, indentation) and
// stops at the first '='.
Data decodeBase64(std::string_view text) {
    static const auto kTable = [] {
        std::array<std::int8_t, 256> table{};
        table.fill(-1);
        const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (int i = 0; i < 64; ++i)
            table[static_cast<unsigned char>(alphabet[i])] = i;
        return table;
    }();
    Data out;
    out.reserve(text.size() * 3 / 4);
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        if (c == '=')
            break;
        const int v = kTable[static_cast<unsigned char>(c)];
        if (v < 0)
            continue;
        bits = (bits << 6) | static_cast<std::uint32_t>(v);
        if (++count == 4) {
            out.push_back(static_cast<std::uint8_t>(bits >> 16));
            out.push_back(static_cast<std::uint8_t>(bits >> 8));
            out.push_back(static_cast<std::uint8_t>(bits));
            bits = 0;
            count = 0;
        }
    }
    if (count == 2)
        out.push_back(static_cast<std::uint8_t>(bits >> 4));
    if (count == 3) {
        out.push_back(static_cast<std::uint8_t>(bits >> 10));
        out.push_back(static_cast<std::uint8_t>(bits >> 2));
    }
    return out;
}

class XmlReader {
  public:
    XmlReader(std::string_view text, const ReadLimits& limits)
        : p_(text.data()), end_(text.data() + text.size()), limits_(limits) {}

    Value read() {
        skipMarkup();
        if (p_ >= end_ || *p_ != '<')
            throw XmlError{"not a property list"};
        const Tag root = openTag();
        if (root.name != "plist")
            return value(root, 1);
        if (root.empty)
            throw XmlError{"empty <plist>"};
        skipMarkup();
        Value result = value(openTag(), 1);
        skipMarkup();
        closeTag("plist");
        // Whatever follows </plist> is not looked at, as Foundation does not.
        return result;
    }

  private:
    struct Tag {
        std::string_view name;
        bool empty = false;  // <name/>
    };

    bool startsWith(std::string_view prefix) const {
        return static_cast<std::size_t>(end_ - p_) >= prefix.size() &&
               std::memcmp(p_, prefix.data(), prefix.size()) == 0;
    }

    void skipPast(std::string_view terminator, const char* what) {
        const std::string_view rest(p_, end_ - p_);
        const std::size_t at = rest.find(terminator);
        if (at == std::string_view::npos)
            throw XmlError{std::string("unterminated ") + what};
        p_ += at + terminator.size();
    }

    // Whitespace, comments, processing instructions and DOCTYPEs (with an internal subset).
    void skipMarkup() {
        for (;;) {
            while (p_ < end_ && isXmlSpace(*p_))
                ++p_;
            if (startsWith("<!--")) {
                skipPast("-->", "comment");
            } else if (startsWith("<?")) {
                skipPast("?>", "processing instruction");
            } else if (startsWith("<!DOCTYPE")) {
                skipDoctype();
            } else {
                return;
            }
        }
    }

    void skipDoctype() {
        int brackets = 0;
        char quote = 0;
        for (p_ += 2; p_ < end_; ++p_) {
            const char c = *p_;
            if (quote != 0) {
                if (c == quote)
                    quote = 0;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '[') {
                ++brackets;
            } else if (c == ']') {
                --brackets;
            } else if (c == '>' && brackets <= 0) {
                ++p_;
                return;
            }
        }
        throw XmlError{"unterminated DOCTYPE"};
    }

    static bool isNameChar(char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '-' || c == '.' || c == ':';
    }

    // An opening tag; its attributes (plist version="1.0") are skipped.
    Tag openTag() {
        if (p_ >= end_)
            throw XmlError{"unexpected end of document"};
        if (*p_ != '<')
            throw XmlError{"unexpected text where an element belongs"};
        if (startsWith("</"))
            throw XmlError{"unexpected closing tag"};
        const char* start = ++p_;
        while (p_ < end_ && isNameChar(*p_))
            ++p_;
        Tag tag{std::string_view(start, p_ - start)};
        char quote = 0;
        for (; p_ < end_; ++p_) {
            if (quote != 0) {
                if (*p_ == quote)
                    quote = 0;
            } else if (*p_ == '"' || *p_ == '\'') {
                quote = *p_;
            } else if (*p_ == '>') {
                tag.empty = p_[-1] == '/' && p_ - 1 >= start + tag.name.size();
                ++p_;
                return tag;
            }
        }
        throw XmlError{"unterminated tag"};
    }

    void closeTag(std::string_view name) {
        if (!startsWith("</"))
            throw XmlError{"expected </" + std::string(name) + ">"};
        p_ += 2;
        const char* start = p_;
        while (p_ < end_ && isNameChar(*p_))
            ++p_;
        if (std::string_view(start, p_ - start) != name) {
            throw XmlError{"expected </" + std::string(name) + ">"};
        }
        while (p_ < end_ && isXmlSpace(*p_))
            ++p_;
        if (p_ >= end_ || *p_ != '>')
            throw XmlError{"unterminated closing tag"};
        ++p_;
    }

    // Character data up to </name>, with references resolved and CDATA sections kept as
    // they stand. Comments inside the text are dropped.
    std::string text(const Tag& tag) {
        std::string out;
        if (tag.empty)
            return out;
        for (;;) {
            const char* run = p_;
            while (p_ < end_ && *p_ != '<' && *p_ != '&')
                ++p_;
            appendValidUtf8(out, std::string_view(run, p_ - run));
            if (p_ >= end_)
                throw XmlError{"unterminated <" + std::string(tag.name) + ">"};
            if (*p_ == '&') {
                reference(out);
            } else if (startsWith("<![CDATA[")) {
                p_ += 9;
                const char* start = p_;
                skipPast("]]>", "CDATA section");
                appendValidUtf8(out, std::string_view(start, p_ - 3 - start));
            } else if (startsWith("<!--")) {
                skipPast("-->", "comment");
            } else {
                closeTag(tag.name);
                return out;
            }
        }
    }

    void reference(std::string& out) {
        const std::string_view rest(p_ + 1, end_ - p_ - 1);
        const std::size_t semicolon = rest.substr(0, 12).find(';');
        if (semicolon == std::string_view::npos)
            throw XmlError{"unterminated entity reference"};
        const std::string_view name = rest.substr(0, semicolon);
        p_ += semicolon + 2;
        static constexpr std::pair<std::string_view, char> kNamed[] = {
            {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
        for (const auto& [entity, c] : kNamed) {
            if (name == entity) {
                out += c;
                return;
            }
        }
        if (name.size() > 1 && name[0] == '#') {
            const bool hex = name[1] == 'x' || name[1] == 'X';
            const std::string_view digits = name.substr(hex ? 2 : 1);
            std::uint32_t code = 0;
            const auto result =
                std::from_chars(digits.data(), digits.data() + digits.size(), code, hex ? 16 : 10);
            if (!digits.empty() && result.ec == std::errc() &&
                result.ptr == digits.data() + digits.size() && code != 0) {
                appendUtf8(out, code);  // surrogates and values past U+10FFFF become U+FFFD
                return;
            }
        }
        throw XmlError{"unknown entity reference &" + std::string(name) + ";"};
    }

    void count() {
        if (++objects_ > limits_.maxObjects)
            throw XmlError{"too many elements"};
    }

    Value value(const Tag& tag, std::size_t depth) {
        count();
        const std::string_view name = tag.name;
        if (name == "dict")
            return dictionary(tag, depth);
        if (name == "array")
            return array(tag, depth);
        if (name == "string")
            return Value(text(tag));
        if (name == "true" || name == "false") {
            if (!text(tag).empty())
                throw XmlError{"text inside <" + std::string(name) + ">"};
            return Value(name == "true");
        }
        if (name == "integer") {
            const auto i = parseInteger(text(tag));
            if (!i)
                throw XmlError{"malformed <integer>"};
            return Value(*i);
        }
        if (name == "real") {
            const auto d = parseReal(text(tag));
            if (!d)
                throw XmlError{"malformed <real>"};
            return Value(*d);
        }
        if (name == "date") {
            const auto d = parseDate(text(tag));
            if (!d)
                throw XmlError{"malformed <date>"};
            return Value(*d);
        }
        if (name == "data")
            return Value(decodeBase64(text(tag)));
        throw XmlError{"unexpected element <" + std::string(name) + ">"};
    }

    void enter(std::size_t depth) const {
        if (depth > limits_.maxDepth)
            throw XmlError{"nested too deeply"};
    }

    Value array(const Tag& tag, std::size_t depth) {
        enter(depth);
        Array elements;
        if (tag.empty)
            return Value(std::move(elements));
        for (;;) {
            skipMarkup();
            if (startsWith("</"))
                break;
            elements.push_back(value(openTag(), depth + 1));
        }
        closeTag("array");
        return Value(std::move(elements));
    }

    Value dictionary(const Tag& tag, std::size_t depth) {
        enter(depth);
        Dictionary entries;
        if (tag.empty)
            return Value(std::move(entries));
        for (;;) {
            skipMarkup();
            if (startsWith("</"))
                break;
            const Tag keyTag = openTag();
            if (keyTag.name != "key")
                throw XmlError{"expected <key> in <dict>"};
            std::string key = text(keyTag);
            skipMarkup();
            if (startsWith("</"))
                throw XmlError{"key without a value"};
            entries.set(std::move(key), value(openTag(), depth + 1));
        }
        closeTag("dict");
        // Keyed archives written as XML hold their references as {CF$UID = n}. A UID above
        // INT64_MAX comes back from <integer> wrapped, and the cast unwraps it.
        if (entries.size() == 1) {
            const Value* uid = entries.find("CF$UID");
            if (uid != nullptr && uid->asInteger()) {
                return Value(Uid{static_cast<std::uint64_t>(*uid->asInteger())});
            }
        }
        return Value(std::move(entries));
    }

    const char* p_;
    const char* end_;
    const ReadLimits& limits_;
    std::size_t objects_ = 0;
};

class XmlWriter {
  public:
    explicit XmlWriter(Data& out) : out_(out) {}

    void document(const Value& value) {
        append(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n");
        write(value, 0);
        append("</plist>\n");
    }

  private:
    void append(std::string_view s) { out_.insert(out_.end(), s.begin(), s.end()); }

    void indent(std::size_t depth) { out_.insert(out_.end(), depth, '\t'); }

    void escaped(std::string_view s) {
        std::string valid;
        appendValidUtf8(valid, s);
        for (const char c : valid) {
            switch (c) {
                case '&':
                    append("&amp;");
                    break;
                case '<':
                    append("&lt;");
                    break;
                case '>':
                    append("&gt;");
                    break;
                default:
                    out_.push_back(static_cast<std::uint8_t>(c));
            }
        }
    }

    void element(std::size_t depth, std::string_view name, std::string_view content) {
        indent(depth);
        append("<");
        append(name);
        append(">");
        append(content);
        append("</");
        append(name);
        append(">\n");
    }

    void real(std::size_t depth, double d) {
        if (std::isnan(d))
            return element(depth, "real", "nan");
        if (std::isinf(d))
            return element(depth, "real", d > 0 ? "+infinity" : "-infinity");
        char buffer[32];
        const auto result = std::to_chars(buffer, buffer + sizeof buffer, d);
        element(depth, "real", std::string_view(buffer, result.ptr - buffer));
    }

    // Base64 in lines of at most 76 characters, the indentation (a tab counted as eight)
    // included, each line indented like the <data> element itself.
    void data(std::size_t depth, const Data& bytes) {
        static const char kAlphabet[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        const std::size_t tabs = std::min<std::size_t>(depth, 8);
        const std::size_t lineLength = 76 - 8 * tabs;
        indent(depth);
        append("<data>\n");
        std::string line;
        auto flush = [&] {
            indent(depth);
            append(line);
            append("\n");
            line.clear();
        };
        for (std::size_t i = 0; i < bytes.size(); i += 3) {
            const std::size_t n = std::min<std::size_t>(3, bytes.size() - i);
            const std::uint32_t bits =
                bytes[i] << 16 | (n > 1 ? bytes[i + 1] << 8 : 0) | (n > 2 ? bytes[i + 2] : 0);
            line += kAlphabet[bits >> 18];
            line += kAlphabet[(bits >> 12) & 63];
            line += n > 1 ? kAlphabet[(bits >> 6) & 63] : '=';
            line += n > 2 ? kAlphabet[bits & 63] : '=';
            if (line.size() >= lineLength)
                flush();
        }
        if (!line.empty())
            flush();
        indent(depth);
        append("</data>\n");
    }

    void write(const Value& value, std::size_t depth) {
        switch (value.type()) {
            case Type::Null:
                return element(depth, "string", "");
            case Type::Boolean:
                indent(depth);
                return append(*value.asBool() ? "<true/>\n" : "<false/>\n");
            case Type::Integer:
                return element(depth, "integer", std::to_string(*value.asInteger()));
            case Type::Real:
                return real(depth, *value.asReal());
            case Type::String:
                indent(depth);
                append("<string>");
                escaped(*value.asString());
                return append("</string>\n");
            case Type::Data:
                return data(depth, *value.asData());
            case Type::Date:
                return element(depth, "date", iso8601(*value.asDate()));
            case Type::Uid: {
                indent(depth);
                append("<dict>\n");
                indent(depth + 1);
                append("<key>CF$UID</key>\n");
                element(depth + 1, "integer", std::to_string(value.asUid()->value));
                indent(depth);
                return append("</dict>\n");
            }
            case Type::Array: {
                const Array& elements = *value.asArray();
                indent(depth);
                if (elements.empty())
                    return append("<array/>\n");
                append("<array>\n");
                for (const Value& element : elements)
                    write(element, depth + 1);
                indent(depth);
                return append("</array>\n");
            }
            case Type::Dictionary: {
                const Dictionary& entries = *value.asDictionary();
                indent(depth);
                if (entries.empty())
                    return append("<dict/>\n");
                append("<dict>\n");
                for (const auto& [key, element] : entries) {
                    indent(depth + 1);
                    append("<key>");
                    escaped(key);
                    append("</key>\n");
                    write(element, depth + 1);
                }
                indent(depth);
                return append("</dict>\n");
            }
        }
    }

    Data& out_;
};

}  // namespace

std::optional<Value> parseXml(std::string_view text, const ReadLimits& limits, std::string* error) {
    try {
        return XmlReader(text, limits).read();
    } catch (const XmlError& e) {
        return fail(error, e.reason);
    }
}

void writeXml(const Value& value, Data& out) {
    XmlWriter(out).document(value);
}

}  // namespace sysmend::plist::detail
