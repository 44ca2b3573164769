// Entry points (format detection, files) and the text and date helpers both formats share.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "platform/plist.h"
#include "platform/plist_formats.h"

namespace sysmend::plist {
namespace detail {

std::nullopt_t fail(std::string* error, std::string_view reason) {
    if (error != nullptr)
        *error = reason;
    return std::nullopt;
}

void appendUtf8(std::string& out, char32_t c) {
    if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF)
        c = 0xFFFD;
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

std::string utf8FromUtf16(std::span<const std::uint8_t> bytes, bool bigEndian) {
    const std::size_t count = bytes.size() / 2;
    auto unit = [&](std::size_t i) -> char32_t {
        const std::uint8_t a = bytes[2 * i];
        const std::uint8_t b = bytes[2 * i + 1];
        return bigEndian ? (a << 8 | b) : (b << 8 | a);
    };
    std::string out;
    out.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const char32_t u = unit(i);
        if (u >= 0xD800 && u <= 0xDBFF && i + 1 < count) {
            const char32_t low = unit(i + 1);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                appendUtf8(out, 0x10000 + ((u - 0xD800) << 10) + (low - 0xDC00));
                ++i;
                continue;
            }
        }
        appendUtf8(out, u);  // a lone surrogate becomes U+FFFD there
    }
    return out;
}

void appendValidUtf8(std::string& out, std::string_view text) {
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const auto* end = p + text.size();
    while (p < end) {
        const auto* run = p;
        while (p < end && *p < 0x80)
            ++p;
        out.append(reinterpret_cast<const char*>(run), p - run);
        if (p == end)
            break;
        // The well-formed sequences of Unicode's table 3-7: the second byte's range depends
        // on the first so that overlong forms and surrogates are refused.
        const unsigned char lead = *p;
        std::size_t length = 0;
        unsigned char low = 0x80, high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            if (lead == 0xE0)
                low = 0xA0;
            if (lead == 0xED)
                high = 0x9F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            if (lead == 0xF0)
                low = 0x90;
            if (lead == 0xF4)
                high = 0x8F;
        }
        bool valid = length != 0 && static_cast<std::size_t>(end - p) >= length && p[1] >= low &&
                     p[1] <= high;
        for (std::size_t i = 2; valid && i < length; ++i)
            valid = (p[i] & 0xC0) == 0x80;
        if (valid) {
            out.append(reinterpret_cast<const char*>(p), length);
            p += length;
        } else {
            appendUtf8(out, 0xFFFD);
            ++p;
        }
    }
}

// Seconds from 1970-01-01 to 2001-01-01.
constexpr std::int64_t kReferenceEpoch = 978307200;

// The dates kept: a little inside the clock's range, so that rounding a kept date down to
// its day or second cannot overflow. 9.2e18 ticks are some 290 years when a tick is 1 ns.
constexpr Date kEarliest{Date::duration(-9'200'000'000'000'000'000)};
constexpr Date kLatest{Date::duration(9'200'000'000'000'000'000)};

std::optional<Date> dateFromReferenceSeconds(double seconds) {
    if (std::isnan(seconds))
        return std::nullopt;
    using Ticks = Date::duration;
    const double ticks = (seconds + kReferenceEpoch) * Ticks::period::den / Ticks::period::num;
    if (ticks >= static_cast<double>(kLatest.time_since_epoch().count()))
        return kLatest;
    if (ticks <= static_cast<double>(kEarliest.time_since_epoch().count()))
        return kEarliest;
    return Date(Ticks(std::llround(ticks)));
}

double referenceSecondsFromDate(Date date) {
    date = std::clamp(date, kEarliest, kLatest);
    const auto whole = std::chrono::floor<std::chrono::seconds>(date);
    const std::chrono::duration<double> fraction = date - whole;
    return static_cast<double>(whole.time_since_epoch().count() - kReferenceEpoch) +
           fraction.count();
}

std::string iso8601(Date date) {
    using namespace std::chrono;
    date = std::clamp(date, kEarliest, kLatest);
    const auto day = floor<days>(date);
    const year_month_day ymd(day);
    const hh_mm_ss time(floor<seconds>(date) - day);
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02uT%02d:%02d:%02dZ", int(ymd.year()),
                  unsigned(ymd.month()), unsigned(ymd.day()), int(time.hours().count()),
                  int(time.minutes().count()), int(time.seconds().count()));
    return buffer;
}

}  // namespace detail

namespace {

bool startsWith(std::span<const std::uint8_t> bytes, std::string_view prefix) {
    return bytes.size() >= prefix.size() &&
           std::memcmp(bytes.data(), prefix.data(), prefix.size()) == 0;
}

std::string errnoText(const char* what) {
    return std::string(what) + ": " + std::strerror(errno);
}

}  // namespace

std::optional<Value> parse(std::span<const std::uint8_t> bytes, const ReadLimits& limits,
                           std::string* error) {
    if (bytes.size() > limits.maxBytes) {
        return detail::fail(error, "larger than " + std::to_string(limits.maxBytes) + " bytes");
    }
    if (startsWith(bytes, "bplist")) {
        if (!startsWith(bytes, "bplist00")) {
            return detail::fail(error, "unsupported binary property list version");
        }
        return detail::parseBinary(bytes, limits, error);
    }
    if (startsWith(bytes, "\xFE\xFF") || startsWith(bytes, "\xFF\xFE")) {
        const std::string text = detail::utf8FromUtf16(bytes.subspan(2), bytes[0] == 0xFE);
        return detail::parseXml(text, limits, error);
    }
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    return detail::parseXml(text, limits, error);
}

std::optional<Value> readFile(const std::string& hostPath, const ReadLimits& limits,
                              std::string* error) {
    // O_NONBLOCK so that opening a FIFO planted under a .plist name cannot hang the scan.
    const int fd = ::open(hostPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return detail::fail(error, errnoText("cannot open"));
    struct stat st {};
    std::string reason;
    Data bytes;
    if (::fstat(fd, &st) != 0) {
        reason = errnoText("cannot stat");
    } else if (!S_ISREG(st.st_mode)) {
        reason = "not a regular file";
    } else if (static_cast<std::uint64_t>(st.st_size) > limits.maxBytes) {
        reason = "larger than " + std::to_string(limits.maxBytes) + " bytes";
    } else {
        bytes.resize(static_cast<std::size_t>(st.st_size));
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0) {
                reason = errnoText("cannot read");
                break;
            }
            if (n == 0)
                break;  // shrank while we read: parse what is there
            done += static_cast<std::size_t>(n);
        }
        bytes.resize(done);
    }
    ::close(fd);
    if (!reason.empty())
        return detail::fail(error, reason);
    return parse(bytes, limits, error);
}

Data serialize(const Value& value, Format format) {
    Data out;
    if (format == Format::Xml) {
        detail::writeXml(value, out);
    } else {
        detail::writeBinary(value, out);
    }
    return out;
}

bool writeFileAtomically(const std::string& hostPath, const Value& value, Format format,
                         std::string* error) {
    const Data bytes = serialize(value, format);
    const std::size_t slash = hostPath.rfind('/');
    const std::string folder = slash == std::string::npos ? "."
                               : slash == 0               ? "/"
                                                          : hostPath.substr(0, slash);
    const std::string name = hostPath.substr(slash == std::string::npos ? 0 : slash + 1);
    std::string temporary = folder + "/." + name + ".XXXXXX";
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        detail::fail(error, errnoText("cannot create a temporary file"));
        return false;
    }
    struct stat st {};
    const mode_t mode =
        ::stat(hostPath.c_str(), &st) == 0 && S_ISREG(st.st_mode) ? st.st_mode & 07777 : 0644;

    std::string reason;
    std::size_t done = 0;
    while (reason.empty() && done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            reason = errnoText("cannot write");
        if (n > 0)
            done += static_cast<std::size_t>(n);
    }
    if (reason.empty() && ::fchmod(fd, mode) != 0)
        reason = errnoText("cannot set permissions");
    if (reason.empty() && ::fsync(fd) != 0)
        reason = errnoText("cannot sync");
    if (::close(fd) != 0 && reason.empty())
        reason = errnoText("cannot close");
    if (reason.empty() && ::rename(temporary.c_str(), hostPath.c_str()) != 0) {
        reason = errnoText("cannot rename");
    }
    if (!reason.empty()) {
        ::unlink(temporary.c_str());
        detail::fail(error, reason);
        return false;
    }
    // Make the rename itself durable; a failure here leaves a correct file, so it is ignored.
    const int folderFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderFd >= 0) {
        ::fsync(folderFd);
        ::close(folderFd);
    }
    return true;
}

}  // namespace sysmend::plist
