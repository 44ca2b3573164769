#include <gtest/gtest.h>

#include "platform/path.h"
#include "platform/volume.h"

namespace sysmend {
namespace {

TEST(PathTest, ComponentHelpersFollowFoundationRules) {
    EXPECT_EQ(path::lastPathComponent("/a/b.txt"), "b.txt");
    EXPECT_EQ(path::lastPathComponent("/a/b/"), "b");
    EXPECT_EQ(path::lastPathComponent("/"), "/");
    EXPECT_EQ(path::deletingLastPathComponent("/a"), "/");
    EXPECT_EQ(path::deletingLastPathComponent("/a/b/"), "/a");
    EXPECT_EQ(path::pathExtension("/x/Foo.app/"), "app");
    EXPECT_EQ(path::pathExtension("/x/.hidden"), "");
    EXPECT_EQ(path::pathExtension("/x.d/file"), "");
    EXPECT_EQ(path::deletingPathExtension("/Applications/Foo Bar.app"), "/Applications/Foo Bar");
    EXPECT_EQ(path::appending("/Users/a/", "/Library"), "/Users/a/Library");
    EXPECT_EQ(path::appending("/Users/a", "Library/Safari/"), "/Users/a/Library/Safari");
    EXPECT_EQ(path::appending("/", "Applications"), "/Applications");
    EXPECT_EQ(path::standardized("/a//b/./c/../d/"), "/a/b/d");
    EXPECT_EQ(path::components("/Users/a"), (std::vector<std::string>{"/", "Users", "a"}));
    EXPECT_EQ(path::trimmedWhitespace(" \tcom.x.y \t"), "com.x.y");
    EXPECT_EQ(path::trimmedWhitespace("\ncom.x\n"), "\ncom.x\n");
}

TEST(VolumeTest, MapsVolumePathsBothWays) {
    Volume v("/tmp/vol/", "/Users/alice");
    EXPECT_EQ(v.root(), "/tmp/vol");
    EXPECT_EQ(v.hostPath("/Applications/Foo.app"), "/tmp/vol/Applications/Foo.app");
    EXPECT_EQ(v.hostPath("/"), "/tmp/vol");
    EXPECT_EQ(v.volumePath("/tmp/vol/Users/alice"), "/Users/alice");
    EXPECT_EQ(v.volumePath("/tmp/vol"), "/");
    EXPECT_EQ(v.volumePath("/tmp/volume/x"), std::nullopt);
    EXPECT_EQ(v.hostPath("/Users/a/../../../etc/passwd"), "/tmp/vol/etc/passwd");
    EXPECT_EQ(v.hostPath("relative/../../x"), "/tmp/vol/x");

    Volume live("/", "/home/x");
    EXPECT_TRUE(live.isLiveSystem());
    EXPECT_EQ(live.hostPath("/etc"), "/etc");
}

}  // namespace
}  // namespace sysmend
