// Keyed archives in Apple's format (what NSKeyedArchiver writes and NSKeyedUnarchiver reads):
// a binary property list {"$archiver": "NSKeyedArchiver", "$version": 100000,
// "$top": {"root": UID}, "$objects": ["$null", ...]} whose objects refer to each other by UID.
//
// The subset understood is plain data: arrays, dictionaries, strings, integers, reals,
// booleans, data and dates. Containers are objects whose "$class" names one of NSArray,
// NSMutableArray, NSDictionary, NSMutableDictionary, NSString, NSMutableString, NSData,
// NSMutableData or NSDate; a subclass of one of them (a later name in "$classes") is read as
// that class. Any other class is an error naming it: its fields mean nothing without the
// class, and the objects such classes form may refer back to themselves, which a plain value
// cannot hold. Only the "root" entry of "$top" is read; "$version" is not checked.
//
// Decoding is hostile-input safe: a UID out of range, a reference cycle, nesting beyond a cap
// and a graph that would expand beyond a cap when read as a tree are errors. Each object is
// decoded once and shared by every reference to it (copying a container is O(1)), so a small
// archive that refers to the same objects over and over decodes in linear time; the expansion
// cap then keeps whoever walks the result as a tree (a printer, a JSON writer) from a bomb.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/plist.h"
#include "platform/values.h"

namespace sysmend::keyed_archive {

struct DecodeLimits {
    plist::ReadLimits read;      // for the property list that carries the archive
    std::size_t maxDepth = 256;  // nesting of containers
    // Size of the result written out as a tree: one per value, plus the bytes of its strings
    // and data, counted once for every place the value appears.
    std::size_t maxExpandedSize = 64 * 1024 * 1024;
};

// The root object. A root of "$null" (nil) gives a Null value; a nil inside an array or
// dictionary becomes Null too. On failure returns nullopt and, when error is given, a one-line
// reason. Thread-safe: no shared state.
std::optional<plist::Value> decode(std::span<const std::uint8_t> bytes,
                                   const DecodeLimits& limits = {}, std::string* error = nullptr);

// The same, for an archive already read as a property list.
std::optional<plist::Value> decodePlist(const plist::Value& archive,
                                        const DecodeLimits& limits = {},
                                        std::string* error = nullptr);

// The archive of root as a property-list value, laid out as Apple's archiver does it: objects
// numbered in the order they are first met, depth first (a dictionary's keys before its
// values), each class after its first object; immutable class names (NSArray, NSDictionary,
// NSDate); strings and numbers inline, equal strings stored once; a container shared inside
// root stored once. Null is written as nil. Throws std::invalid_argument for a plist::Uid,
// which has no archived form.
plist::Value encodeToPlist(const plist::Value& root);

// encodeToPlist written as a binary property list.
Data encode(const plist::Value& root);

}  // namespace sysmend::keyed_archive
