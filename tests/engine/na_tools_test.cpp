#include "tools/na_tools.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "sample/fake_volume.h"

namespace sysmend {
namespace {

// Both formatters pick the unit on the exact count; the binary one ends in a blank and has
// no terabytes. Counts just below a boundary print as it: the single-precision copy rounds up.
TEST(SizeTextTest, UnitsArePickedOnTheExactCount) {
    auto both = [](std::int64_t size) { return recal_size(size) + "|" + recal_size1024(size); };
    EXPECT_EQ(both(0), "0 Byte|0 Byte ");
    EXPECT_EQ(both(999), "999 Byte|999 Byte ");
    EXPECT_EQ(both(1000), "1.0 KB|1000 Byte ");
    EXPECT_EQ(both(1023), "1.0 KB|1023 Byte ");
    EXPECT_EQ(both(1024), "1.0 KB|1.0 KB ");
    EXPECT_EQ(both(1'048'576), "1.0 MB|1.00 MB ");
    EXPECT_EQ(both(1'500'000), "1.5 MB|1.43 MB ");
    EXPECT_EQ(both(999'999'999), "1000.0 MB|953.67 MB ");
    EXPECT_EQ(both(1'073'741'823), "1.07 GB|1024.00 MB ");
    EXPECT_EQ(both(1'073'741'824), "1.07 GB|1.00 GB ");
    EXPECT_EQ(both(999'999'999'999), "1000.00 GB|931.32 GB ");
    EXPECT_EQ(both(1'000'000'000'000), "1.00 TB|inf TB");
    EXPECT_EQ(both(-1), "0 KB|0 KB");
}

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

// Sums what is below `hostRoot` without following links, counting hard links per path.
std::int64_t expectedSize(const std::string& hostRoot, bool allocated) {
    std::int64_t total = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(hostRoot)) {
        struct stat st {};
        if (::lstat(entry.path().c_str(), &st) == 0 && !S_ISDIR(st.st_mode))
            total += allocated ? st.st_blocks * 512 : st.st_size;
    }
    return total;
}

class FileToolsTest : public ::testing::Test {
  protected:
    sample::FakeVolume fake_{"u"};
    ScopedVolume scope_{fake_.volume()};
};

TEST_F(FileToolsTest, SizeAtPathCountsFilesAndLinksButNeverFollowsLinks) {
    fake_.write("/Users/u/big.bin", std::string(1 << 20, 'x'));
    fake_.symlink("/Users/u/link", "big.bin");
    fake_.mkdir("/Users/u/empty");

    EXPECT_EQ(sizeAtPath("/Users/u/missing", 0), 0);
    EXPECT_EQ(sizeAtPath("/Users/u/empty", 0), 0);
    EXPECT_EQ(sizeAtPath("/Users/u/empty", 1), 0);
    EXPECT_EQ(sizeAtPath("/Users/u/big.bin", 0), 1 << 20);
    EXPECT_EQ(sizeAtPath("/Users/u/link", 0), 7);  // the link's own text, "big.bin"
    EXPECT_EQ(sizeAtPath("/Users/u", 0), (1 << 20) + 7);
    EXPECT_EQ(fileSize("/Users/u/link"), 7);
    EXPECT_EQ(fileSize("/Users/u/missing"), 0);
}

TEST_F(FileToolsTest, SizeAtPathOfATreeMatchesAnIndependentSum) {
    std::string deep = "/Users/u/tree";
    for (int level = 0; level < 100; ++level) {
        deep += "/d" + std::to_string(level);
        if (level % 10 == 0)
            fake_.write(deep + "/f.dat", std::string(level * 1000 + 1, 'y'));
    }
    for (int i = 0; i < 30; ++i)
        fake_.write("/Users/u/tree/wide/f" + std::to_string(i), std::string(i * 513, 'z'));
    fake_.write("/Users/u/tree/.hidden", "secret");
    fake_.write("/Users/u/tree/Foo.app/Contents/MacOS/Foo", std::string(5000, 'a'));
    fake_.write("/Users/u/outside/large", std::string(100'000, 'o'));
    fake_.symlink("/Users/u/tree/to-outside", "../outside");
    std::filesystem::create_hard_link(fake_.host("/Users/u/tree/wide/f29"),
                                      fake_.host("/Users/u/tree/hardlink"));

    const auto descriptors = openDescriptors();
    for (int option : {0, 1}) {
        SCOPED_TRACE(option);
        EXPECT_EQ(sizeAtPath("/Users/u/tree", option),
                  expectedSize(fake_.host("/Users/u/tree"), option != 0));
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(FileToolsTest, FileTypeTypesFoldersOnDiskAndEverythingElseByExtension) {
    fake_.mkdir("/Users/u/Docs");
    fake_.mkdir("/Applications/Foo.app/Contents");
    fake_.mkdir("/Users/u/photos.png");
    fake_.write("/Users/u/notes", "text");

    EXPECT_EQ(fileType("/"), "public.volume");
    EXPECT_EQ(fileType("/Users/u/Docs"), "public.folder");
    EXPECT_EQ(fileType("/Users/u/photos.png"), "public.folder");
    EXPECT_EQ(fileType("/Applications/Foo.app"), "com.apple.application-bundle");
    EXPECT_EQ(fileType("/Users/u/notes"), "public.data");
    EXPECT_EQ(fileType("/Users/u/gone.jpg"), "public.jpeg");
    EXPECT_EQ(fileType("/Users/u/gone.zzq").substr(0, 5), "dyn.a");

    // A path is tested for what is on disk; the given type only counts without a path.
    EXPECT_FALSE(isPicFile("/Users/u/photos.png", "public.png"));
    EXPECT_TRUE(isPicFile("/Users/u/gone.JPG"));
    EXPECT_TRUE(isPicFile(std::nullopt, "public.png"));
    EXPECT_TRUE(isArchiveFile(std::nullopt, "org.gnu.gnu-zip-tar-archive"));
    EXPECT_FALSE(isArchiveFile("/Users/u/Installer.dmg"));
    EXPECT_TRUE(isMessageFile("/Users/u/m.emlx"));
    EXPECT_TRUE(isMailBox("/Users/u/old.mbox"));
    EXPECT_TRUE(isMovieFile("/Users/u/clip.mkv"));
    EXPECT_TRUE(isAudioFile("/Users/u/song.flac"));
    EXPECT_FALSE(isAudioFile("/Users/u/clip.mov"));

    // Folder means exactly the folder type: a volume conforms to it and still is not one.
    EXPECT_TRUE(isFolder("/Users/u//Docs/"));
    EXPECT_FALSE(isFolder("/"));
    EXPECT_FALSE(isFolder(std::nullopt, "public.volume"));
    EXPECT_FALSE(isFolder("/Applications/Foo.app"));
}

TEST_F(FileToolsTest, LastAssessTimeIsTheStatusChangeTime) {
    const Date before = std::chrono::system_clock::now();
    EXPECT_GE(lastAssessTime("/Users/u/missing"), before);

    std::string host = fake_.host(fake_.write("/Users/u/old.txt", "x"));
    const timespec times[2] = {{1'000'000, 0}, {1'000'000, 0}};  // 1970: far from the ctime
    ASSERT_EQ(::utimensat(AT_FDCWD, host.c_str(), times, 0), 0);
    struct stat st {};
    ASSERT_EQ(::lstat(host.c_str(), &st), 0);
    auto ctime =
        std::chrono::seconds(st.st_ctim.tv_sec) + std::chrono::nanoseconds(st.st_ctim.tv_nsec);
    EXPECT_EQ(lastAssessTime("/Users/u/old.txt").time_since_epoch(), ctime);
}

}  // namespace
}  // namespace sysmend
