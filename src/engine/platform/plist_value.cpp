// Value and Dictionary: storage, equality, Foundation-style number readings and the printer.
#include <bit>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <ostream>
#include <type_traits>

#include "platform/plist.h"
#include "platform/plist_formats.h"

namespace sysmend::plist {
namespace {

// Below this many entries a linear scan beats hashing, and small dictionaries (nearly all of
// them) carry no index at all.
constexpr std::size_t kLinearLimit = 16;

std::size_t hashKey(std::string_view key) {
    return std::hash<std::string_view>{}(key);
}

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// NSString's boolValue: leading whitespace skipped, then "Y", "y", "T", "t" or a number
// whose first significant digit is not zero; trailing text is ignored.
bool stringBoolValue(std::string_view s) {
    std::size_t i = 0;
    while (i < s.size() && isSpace(s[i]))
        ++i;
    if (i == s.size())
        return false;
    if (s[i] == 'Y' || s[i] == 'y' || s[i] == 'T' || s[i] == 't')
        return true;
    if (s[i] == '+' || s[i] == '-')
        ++i;
    while (i < s.size() && s[i] == '0')
        ++i;
    return i < s.size() && s[i] >= '1' && s[i] <= '9';
}

// NSString's integerValue: the leading decimal integer after whitespace, saturating.
std::int64_t stringIntegerValue(std::string_view s) {
    std::size_t i = 0;
    while (i < s.size() && isSpace(s[i]))
        ++i;
    bool negative = false;
    if (i < s.size() && (s[i] == '+' || s[i] == '-'))
        negative = s[i++] == '-';
    // Accumulate negatively so that INT64_MIN is reachable without overflow.
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    std::int64_t value = 0;
    for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i) {
        const int digit = s[i] - '0';
        if (value < (kMin + digit) / 10) {
            value = kMin;
            break;
        }
        value = value * 10 - digit;
    }
    if (negative)
        return value;
    return value == kMin ? std::numeric_limits<std::int64_t>::max() : -value;
}

std::int64_t saturatingInteger(double d) {
    if (std::isnan(d))
        return 0;
    if (d >= 9223372036854775807.0)
        return std::numeric_limits<std::int64_t>::max();
    if (d <= -9223372036854775808.0)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(d);
}

class Printer {
  public:
    std::string take() { return std::move(out_); }

    void print(const Value& value) {
        if (out_.size() > kBudget) {
            if (!cut_)
                out_ += "...";
            cut_ = true;
            return;
        }
        switch (value.type()) {
            case Type::Null:
                out_ += "null";
                break;
            case Type::Boolean:
                out_ += *value.asBool() ? "true" : "false";
                break;
            case Type::Integer:
                out_ += std::to_string(*value.asInteger());
                break;
            case Type::Real:
                printReal(*value.asReal());
                break;
            case Type::String:
                printString(*value.asString());
                break;
            case Type::Data:
                printData(*value.asData());
                break;
            case Type::Date:
                out_ += detail::iso8601(*value.asDate());
                break;
            case Type::Uid:
                out_ += "uid(" + std::to_string(value.asUid()->value) + ")";
                break;
            case Type::Array: {
                out_ += '(';
                const char* separator = "";
                for (const Value& element : *value.asArray()) {
                    out_ += separator;
                    print(element);
                    separator = ", ";
                }
                out_ += ')';
                break;
            }
            case Type::Dictionary: {
                out_ += '{';
                const char* separator = "";
                for (const auto& [key, element] : *value.asDictionary()) {
                    out_ += separator;
                    printString(key);
                    out_ += " = ";
                    print(element);
                    separator = "; ";
                }
                out_ += '}';
                break;
            }
        }
    }

  private:
    static constexpr std::size_t kBudget = 64 * 1024;

    void printReal(double d) {
        char buffer[32];
        const auto result = std::to_chars(buffer, buffer + sizeof buffer, d);
        out_.append(buffer, result.ptr);
    }

    void printString(const std::string& s) {
        out_ += '"';
        for (const char c : s) {
            if (c == '"' || c == '\\') {
                out_ += '\\';
                out_ += c;
            } else if (static_cast<unsigned char>(c) < 0x20) {
                static const char kHex[] = "0123456789abcdef";
                out_ += "\\x";
                out_ += kHex[(c >> 4) & 0xf];
                out_ += kHex[c & 0xf];
            } else {
                out_ += c;
            }
        }
        out_ += '"';
    }

    void printData(const Data& data) {
        static const char kHex[] = "0123456789abcdef";
        out_ += '<';
        for (const std::uint8_t byte : data) {
            if (out_.size() > kBudget) {
                out_ += "...";
                break;
            }
            out_ += kHex[byte >> 4];
            out_ += kHex[byte & 0xf];
        }
        out_ += '>';
    }

    std::string out_;
    bool cut_ = false;
};

}  // namespace

// --- Dictionary ---

std::size_t Dictionary::slotOf(std::string_view key) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = hashKey(key) & mask;; i = (i + 1) & mask) {
        const std::uint32_t slot = slots_[i];
        if (slot == 0 || entries_[slot - 1].first == key)
            return i;
    }
}

void Dictionary::rebuildIndex() {
    slots_.clear();
    if (entries_.size() <= kLinearLimit)
        return;
    // Load factor at most 1/4 after a rebuild; set() rebuilds when it passes 1/2.
    slots_.assign(std::bit_ceil(entries_.size() * 4), 0);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        slots_[slotOf(entries_[i].first)] = static_cast<std::uint32_t>(i + 1);
    }
}

const Value* Dictionary::find(std::string_view key) const {
    if (slots_.empty()) {
        for (const auto& entry : entries_) {
            if (entry.first == key)
                return &entry.second;
        }
        return nullptr;
    }
    const std::uint32_t slot = slots_[slotOf(key)];
    return slot == 0 ? nullptr : &entries_[slot - 1].second;
}

Value* Dictionary::find(std::string_view key) {
    return const_cast<Value*>(std::as_const(*this).find(key));
}

void Dictionary::set(std::string key, Value value) {
    if (Value* existing = find(key)) {
        *existing = std::move(value);
        return;
    }
    entries_.emplace_back(std::move(key), std::move(value));
    if (entries_.size() <= kLinearLimit)
        return;
    if (slots_.size() < entries_.size() * 2) {
        rebuildIndex();
    } else {
        slots_[slotOf(entries_.back().first)] = static_cast<std::uint32_t>(entries_.size());
    }
}

bool Dictionary::erase(std::string_view key) {
    for (auto it = entries_.begin(); it != entries_.end(); ++it) {
        if (it->first == key) {
            entries_.erase(it);
            rebuildIndex();
            return true;
        }
    }
    return false;
}

bool Dictionary::operator==(const Dictionary& other) const {
    if (size() != other.size())
        return false;
    for (const auto& [key, value] : entries_) {
        const Value* theirs = other.find(key);
        if (theirs == nullptr || !(*theirs == value))
            return false;
    }
    return true;
}

// --- Value ---

Value::Value(bool b) : storage_(b) {}
Value::Value(double d) : storage_(d) {}
Value::Value(const char* s) : storage_(std::string(s)) {}
Value::Value(std::string s) : storage_(std::move(s)) {}
Value::Value(Data d) : storage_(std::move(d)) {}
Value::Value(Date d) : storage_(d) {}
// Containers are allocated non-const so that the mutable accessors may write to them once
// they hold the only reference.
Value::Value(Array a)
    : storage_(std::shared_ptr<const Array>(std::make_shared<Array>(std::move(a)))) {}
Value::Value(Dictionary d)
    : storage_(std::shared_ptr<const Dictionary>(std::make_shared<Dictionary>(std::move(d)))) {}
Value::Value(Uid u) : storage_(u) {}

Type Value::type() const {
    // The order of the alternatives in Storage follows the Type enumeration.
    static_assert(
        std::is_same_v<std::variant_alternative_t<8, Storage>, std::shared_ptr<const Dictionary>>);
    return static_cast<Type>(storage_.index());
}

std::optional<bool> Value::asBool() const {
    if (const auto* b = std::get_if<bool>(&storage_))
        return *b;
    return std::nullopt;
}

std::optional<std::int64_t> Value::asInteger() const {
    if (const auto* i = std::get_if<std::int64_t>(&storage_))
        return *i;
    return std::nullopt;
}

std::optional<double> Value::asReal() const {
    if (const auto* d = std::get_if<double>(&storage_))
        return *d;
    return std::nullopt;
}

const std::string* Value::asString() const {
    return std::get_if<std::string>(&storage_);
}

const Data* Value::asData() const {
    return std::get_if<Data>(&storage_);
}

std::optional<Date> Value::asDate() const {
    if (const auto* d = std::get_if<Date>(&storage_))
        return *d;
    return std::nullopt;
}

const Array* Value::asArray() const {
    const auto* p = std::get_if<std::shared_ptr<const Array>>(&storage_);
    return p ? p->get() : nullptr;
}

const Dictionary* Value::asDictionary() const {
    const auto* p = std::get_if<std::shared_ptr<const Dictionary>>(&storage_);
    return p ? p->get() : nullptr;
}

std::optional<Uid> Value::asUid() const {
    if (const auto* u = std::get_if<Uid>(&storage_))
        return *u;
    return std::nullopt;
}

template <typename Container>
static Container* unshare(std::shared_ptr<const Container>* p) {
    if (p == nullptr)
        return nullptr;
    if (p->use_count() != 1)
        *p = std::make_shared<Container>(**p);
    return const_cast<Container*>(p->get());
}

Array* Value::mutableArray() {
    return unshare(std::get_if<std::shared_ptr<const Array>>(&storage_));
}

Dictionary* Value::mutableDictionary() {
    return unshare(std::get_if<std::shared_ptr<const Dictionary>>(&storage_));
}

const Value* Value::find(std::string_view key) const {
    const Dictionary* d = asDictionary();
    return d ? d->find(key) : nullptr;
}

bool Value::boolValue() const {
    switch (type()) {
        case Type::Boolean:
            return *asBool();
        case Type::Integer:
            return *asInteger() != 0;
        case Type::Real:
            return *asReal() != 0.0;
        case Type::String:
            return stringBoolValue(*asString());
        default:
            return false;
    }
}

std::int64_t Value::integerValue() const {
    switch (type()) {
        case Type::Boolean:
            return *asBool() ? 1 : 0;
        case Type::Integer:
            return *asInteger();
        case Type::Real:
            return saturatingInteger(*asReal());
        case Type::String:
            return stringIntegerValue(*asString());
        default:
            return 0;
    }
}

bool Value::operator==(const Value& other) const {
    if (storage_.index() != other.storage_.index())
        return false;
    return std::visit(
        [&other](const auto& mine) {
            using T = std::decay_t<decltype(mine)>;
            const T& theirs = std::get<T>(other.storage_);
            if constexpr (std::is_same_v<T, std::shared_ptr<const Array>> ||
                          std::is_same_v<T, std::shared_ptr<const Dictionary>>) {
                return mine == theirs || *mine == *theirs;
            } else if constexpr (std::is_same_v<T, double>) {
                // A NaN read back from a file is the same value.
                return mine == theirs || (std::isnan(mine) && std::isnan(theirs));
            } else {
                return mine == theirs;
            }
        },
        storage_);
}

std::string describe(const Value& value) {
    Printer printer;
    printer.print(value);
    return printer.take();
}

void PrintTo(const Value& value, std::ostream* os) {
    *os << describe(value);
}

}  // namespace sysmend::plist
