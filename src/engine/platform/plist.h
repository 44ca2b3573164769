// Property-list values, and a reader and writer for the XML and binary formats.
//
// Every file handed to the reader may have been written by the adware Sysmend looks for, so
// the reader is hostile-input safe: a size cap, a depth cap, a cap on the number of objects,
// binary offset tables validated before use, reference cycles rejected, and shared objects of
// a binary list decoded once and shared (never re-expanded), so a 139-byte "shared object
// bomb" decodes in linear time and memory.
//
// Containers are immutable once built and shared between copies (copying a Value is O(1));
// the mutating accessors copy a container first when it is shared (copy on write). So values
// may be read from several threads at once and copies changed independently; one Value must
// not be changed while another thread reads that same object.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/values.h"

namespace sysmend::plist {

// Declared before the types it names so that its enumerators shadow nothing.
enum class Type { Null, Boolean, Integer, Real, String, Data, Date, Array, Dictionary, Uid };

class Value;

// A binary property list's object reference (CF$UID), as keyed archives use them.
struct Uid {
    std::uint64_t value = 0;
    bool operator==(const Uid&) const = default;
};

// Ordered list of values.
using Array = std::vector<Value>;

// Dictionary that keeps its keys in the order they were read or inserted (the order a file
// holds them in). Keys are unique: setting an existing key replaces its value in place.
// Lookups stay O(1) on large dictionaries (a hostile file may hold a million keys); erase is
// O(n). Equality ignores the order of the keys, as NSDictionary's does.
class Dictionary {
  public:
    using Entry = std::pair<std::string, Value>;

    const Value* find(std::string_view key) const;
    Value* find(std::string_view key);
    bool contains(std::string_view key) const { return find(key) != nullptr; }
    void set(std::string key, Value value);
    bool erase(std::string_view key);
    void reserve(std::size_t count);

    std::size_t size() const;
    bool empty() const;
    const std::vector<Entry>& entries() const { return entries_; }
    std::vector<Entry>::const_iterator begin() const;
    std::vector<Entry>::const_iterator end() const;

    bool operator==(const Dictionary& other) const;

  private:
    std::size_t slotOf(std::string_view key) const;
    void rebuildIndex();

    std::vector<Entry> entries_;
    // Open-addressing hash index over entries_ (entry i stored as i + 1, 0 = free), built
    // only once the dictionary outgrows a linear scan.
    std::vector<std::uint32_t> slots_;
};

class Value {
  public:
    Value() = default;  // Null
    Value(bool b);
    // Any integer type (int, long, long long, size_t...), so that no call is ambiguous;
    // unsigned values above INT64_MAX wrap.
    template <std::integral I>
    requires(!std::same_as<I, bool>) Value(I i) : storage_(static_cast<std::int64_t>(i)) {}
    Value(double d);
    Value(const char* s);
    Value(std::string s);
    Value(Data d);
    Value(Date d);
    Value(Array a);
    Value(Dictionary d);
    Value(Uid u);

    Type type() const;
    bool isNull() const { return type() == Type::Null; }

    // Typed access: nullptr / nullopt when the value is of another type.
    std::optional<bool> asBool() const;
    std::optional<std::int64_t> asInteger() const;
    std::optional<double> asReal() const;
    const std::string* asString() const;
    const Data* asData() const;
    std::optional<Date> asDate() const;
    const Array* asArray() const;
    const Dictionary* asDictionary() const;
    std::optional<Uid> asUid() const;

    // Copy-on-write access for building and editing; nullptr when of another type.
    Array* mutableArray();
    Dictionary* mutableDictionary();

    // Dictionary lookup; nullptr when this is not a dictionary or the key is absent.
    const Value* find(std::string_view key) const;

    // NSNumber-like readings used by callers that take "boolValue"/"integerValue" of any
    // value: booleans, integers and reals convert; strings are parsed as Foundation does
    // ("YES"/"true"/non-zero number for bool, leading integer for integer); others give
    // false / 0.
    bool boolValue() const;
    std::int64_t integerValue() const;

    // Deep comparison; a container compared with itself (shared) is equal at once, but two
    // separately read copies of a shared-object bomb are compared as the trees they stand for.
    bool operator==(const Value& other) const;

  private:
    using Storage =
        std::variant<std::monostate, bool, std::int64_t, double, std::string, Data, Date,
                     std::shared_ptr<const Array>, std::shared_ptr<const Dictionary>, Uid>;
    Storage storage_;
};

enum class Format { Xml, Binary };

struct ReadLimits {
    std::size_t maxBytes = 16 * 1024 * 1024;   // larger inputs are rejected unread
    std::size_t maxDepth = 256;                // nesting of containers
    std::size_t maxObjects = 4 * 1024 * 1024;  // decoded objects (binary) or elements (XML)
    // String and data bytes produced: a binary list may reference one long string many times.
    std::size_t maxDecodedBytes = 64 * 1024 * 1024;
};

// Parses XML or binary property-list bytes (the format is detected; XML may be UTF-8 or
// UTF-16 with a byte-order mark). On failure returns nullopt and, when error is given, a
// one-line reason. Strings come out as valid UTF-8 (invalid sequences and lone surrogates
// become U+FFFD). Integers above INT64_MAX (unsigned in the file) wrap as integerValue does.
// Dates outside the clock's range (about the years 1678 to 2261) are clamped to it. Never
// yields Null. Thread-safe: no shared state.
std::optional<Value> parse(std::span<const std::uint8_t> bytes, const ReadLimits& limits = {},
                           std::string* error = nullptr);

// Reads and parses a whole file given by host path (symbolic links are followed, as
// Foundation does). A file larger than limits.maxBytes, or anything but a regular file (a
// FIFO would block), is rejected without being read.
std::optional<Value> readFile(const std::string& hostPath, const ReadLimits& limits = {},
                              std::string* error = nullptr);

// Serialises a value. XML output is what Foundation writes (the DOCTYPE header, tabs, UIDs as
// {CF$UID = n} dictionaries). Binary output writes each shared container once, so a value
// read from a binary list keeps its size; XML has no references and writes a shared container
// once per parent, so a value read from a hostile binary list can be huge as XML. Null, which
// no property list holds, is written as an empty string.
Data serialize(const Value& value, Format format);

// Writes a value to a file by host path through a temporary file in the same folder, fsync
// and rename(2), so readers see the old file or the new one, never half of one. The new file
// keeps the permissions of the file it replaces (0644 for a new one).
bool writeFileAtomically(const std::string& hostPath, const Value& value, Format format,
                         std::string* error = nullptr);

// Printer for test failures, in the old-style text form: {a = 1; b = ("x", <0a0b>)}. Output
// is cut at about 64 KiB, so a shared-object bomb prints in bounded time.
std::string describe(const Value& value);

// Lets GoogleTest print values with describe().
void PrintTo(const Value& value, std::ostream* os);

// Defined here, where Value is complete: the standard library needs it for vector<Entry>.
inline std::size_t Dictionary::size() const {
    return entries_.size();
}
inline bool Dictionary::empty() const {
    return entries_.empty();
}
inline void Dictionary::reserve(std::size_t count) {
    entries_.reserve(count);
}
inline std::vector<Dictionary::Entry>::const_iterator Dictionary::begin() const {
    return entries_.begin();
}
inline std::vector<Dictionary::Entry>::const_iterator Dictionary::end() const {
    return entries_.end();
}

}  // namespace sysmend::plist
