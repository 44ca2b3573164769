// Internals shared by the property-list readers and writers (not for use outside plist*.cpp).
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/plist.h"

namespace sysmend::plist::detail {

std::optional<Value> parseXml(std::string_view text, const ReadLimits& limits, std::string* error);
std::optional<Value> parseBinary(std::span<const std::uint8_t> bytes, const ReadLimits& limits,
                                 std::string* error);

void writeXml(const Value& value, Data& out);
void writeBinary(const Value& value, Data& out);

// Sets *error (when given) and returns nullopt, so failures read `return fail(error, "...")`.
std::nullopt_t fail(std::string* error, std::string_view reason);

// Appends a code point as UTF-8; surrogates and values past U+10FFFF become U+FFFD.
void appendUtf8(std::string& out, char32_t codePoint);

// Converts UTF-16 code units (big-endian when bigEndian) to UTF-8, lone surrogates as U+FFFD.
std::string utf8FromUtf16(std::span<const std::uint8_t> bytes, bool bigEndian);

// Copies text, replacing every invalid UTF-8 sequence with U+FFFD.
void appendValidUtf8(std::string& out, std::string_view text);

// Dates are stored in files as seconds since 2001-01-01 00:00:00 UTC. Out-of-range values
// (including infinities) are clamped to the clock's range; NaN gives nullopt.
std::optional<Date> dateFromReferenceSeconds(double seconds);
double referenceSecondsFromDate(Date date);

// "2001-01-01T00:00:00Z", the form XML lists hold (whole seconds, UTC).
std::string iso8601(Date date);

}  // namespace sysmend::plist::detail
