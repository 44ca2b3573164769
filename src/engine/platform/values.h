// Plain value types shared by every engine subsystem.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

namespace sysmend {

// A point in time (NSDate). Sub-second precision is kept to the clock's resolution.
using Date = std::chrono::system_clock::time_point;

// Raw bytes (NSData).
using Data = std::vector<std::uint8_t>;

}  // namespace sysmend
