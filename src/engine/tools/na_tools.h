// File inspection and size texts shared by every tool. Paths are volume paths (see
// platform/volume.h); the functions read through Volume::current().
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/values.h"

namespace sysmend {

// Byte count as the lists show it, in decimal units: "999 Byte", "1.0 KB", "1.5 MB",
// "2.00 GB", "1.00 TB"; "0 KB" for a negative count. The unit is chosen on the exact count but
// the number printed is a single-precision copy of it, so 999,999,999 prints "1000.0 MB".
std::string recal_size(std::int64_t size);

// Binary units with a trailing blank: "1023 Byte ", "1.0 KB ", "1.00 MB ", "1.00 GB ", the
// number divided in single precision. Sizes of 10^12 bytes and more print "inf TB" (a division
// by zero that is kept on purpose); negative counts give "0 KB".
std::string recal_size1024(std::int64_t size);

// Bytes under a path, links never followed: a non-zero option sums allocated blocks
// (st_blocks * 512), option 0 logical sizes. A missing path is 0; a folder counts only its
// contents, packages included; a file with several hard links counts once per path. Unreadable
// folders add nothing. Any thread may call it.
std::int64_t sizeAtPath(std::string_view volumePath, int option);

// Both sums of sizeAtPath from one walk (allocated = option 1, logical = option 0). Large
// trees are walked by two threads.
struct SizePair {
    std::int64_t allocated = 0;
    std::int64_t logical = 0;
};
SizePair sizesAtPath(std::string_view volumePath);

// Logical size from lstat; 0 when the status cannot be read.
std::int64_t fileSize(std::string_view volumePath);

// Uniform type identifier of a path: the folder type for a plain folder ("public.volume" for
// "/"), otherwise the preferred type for the filename extension, whatever is on disk: a "dyn."
// type for an unknown extension, "public.data" without one, the application type for Foo.app.
// A missing path is typed by its extension too.
std::string fileType(std::string_view volumePath);

// The status-change time of the path (never the modification time), or now when the status
// cannot be read.
Date lastAssessTime(std::string_view volumePath);

// Kind tests. With a path, its type comes from fileType and `type` is ignored; without one
// (nullopt) `type` is tested. All test conformance except isFolder, which tests equality.
bool isPicFile(std::optional<std::string_view> volumePath, std::string_view type = {});
bool isMessageFile(std::optional<std::string_view> volumePath, std::string_view type = {});
bool isMovieFile(std::optional<std::string_view> volumePath, std::string_view type = {});
bool isAudioFile(std::optional<std::string_view> volumePath, std::string_view type = {});
bool isArchiveFile(std::optional<std::string_view> volumePath, std::string_view type = {});
bool isMailBox(std::optional<std::string_view> volumePath, std::string_view type = {});
bool isFolder(std::optional<std::string_view> volumePath, std::string_view type = {});

// Whether the path is a Finder alias: a symbolic link, or a regular file holding alias
// (bookmark) data, which starts "book" .... "mark". Linux keeps no alias flag; these are the
// files macOS sets it for. False when the path cannot be read.
bool isAliasFile(std::string_view volumePath);

// Whether the path's extension maps to a type that conforms to the application-bundle type.
// Only the name counts; the disk is not read.
bool isApplicationBundleName(std::string_view path);

// "%d" of the value.
std::string stringFromInt(int value);

}  // namespace sysmend
