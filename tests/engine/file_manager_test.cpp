#include "tools/file_manager.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>

#include "platform/volume.h"

namespace sysmend {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

class RemovePathTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char tmpl[] = "/tmp/sysmend-remove-XXXXXX";
        ASSERT_NE(::mkdtemp(tmpl), nullptr);
        tmp_ = tmpl;
        std::filesystem::create_directories(host("/Users/u"));
        std::filesystem::create_directories(outside());
        volume_.emplace(Volume(tmp_ + "/vol", "/Users/u"));
    }

    void TearDown() override {
        setRemovalHook(nullptr);
        volume_.reset();
        std::error_code ec;
        std::filesystem::remove_all(tmp_, ec);
    }

    std::string host(const std::string& volumePath) const { return tmp_ + "/vol" + volumePath; }
    // A folder beside the volume that no removal may ever touch.
    std::string outside(const std::string& rest = "") const { return tmp_ + "/outside" + rest; }

    static void makeFile(const std::string& hostPath) {
        std::filesystem::create_directories(std::filesystem::path(hostPath).parent_path());
        std::ofstream(hostPath) << "data";
    }

    static bool exists(const std::string& hostPath) {
        struct stat st {};
        return ::lstat(hostPath.c_str(), &st) == 0;
    }

    std::string tmp_;
    std::optional<ScopedVolume> volume_;
};

TEST_F(RemovePathTest, RemovesFilesAndWholeFolders) {
    makeFile(host("/Users/u/a.txt"));
    makeFile(host("/Users/u/Library/Caches/com.x/data/.hidden"));
    makeFile(host("/Users/u/Library/Caches/com.x/Café ☕.plist"));
    std::filesystem::create_directories(host("/Users/u/Library/Caches/com.x/empty/deeper"));
    makeFile(host("/Users/u/Library/Caches/keep"));

    FileError error{EIO, "/stale", "stale", {{"/stale", EIO}}};
    EXPECT_TRUE(removePath("/Users/u/a.txt", &error));
    EXPECT_EQ(error.code, 0);
    EXPECT_TRUE(error.path.empty());
    EXPECT_TRUE(error.failures.empty());
    EXPECT_FALSE(exists(host("/Users/u/a.txt")));

    EXPECT_TRUE(removePath("/Users/u/Library/Caches/com.x/", &error)) << error.message;
    EXPECT_FALSE(exists(host("/Users/u/Library/Caches/com.x")));
    EXPECT_TRUE(exists(host("/Users/u/Library/Caches/keep")));
}

TEST_F(RemovePathTest, RemovesLinksWithoutFollowingThem) {
    makeFile(outside("/target/precious"));
    ::symlink(outside("/target").c_str(), host("/Users/u/link").c_str());
    ::symlink(outside("/target").c_str(), host("/Users/u/slashed").c_str());
    makeFile(host("/Users/u/tree/sub/file"));
    ::symlink(outside("/target").c_str(), host("/Users/u/tree/sub/escape").c_str());
    ::symlink(outside("/target/precious").c_str(), host("/Users/u/tree/to-file").c_str());
    ::symlink("/nowhere", host("/Users/u/tree/dangling").c_str());

    EXPECT_TRUE(removePath("/Users/u/link"));
    EXPECT_TRUE(removePath("/Users/u/slashed/"));
    EXPECT_TRUE(removePath("/Users/u/tree"));
    EXPECT_FALSE(exists(host("/Users/u/link")));
    EXPECT_FALSE(exists(host("/Users/u/slashed")));
    EXPECT_FALSE(exists(host("/Users/u/tree")));
    EXPECT_TRUE(exists(outside("/target/precious")));

    // On an inspected volume an absolute link resolves against the host's root: a path
    // through it is refused rather than followed.
    ::symlink(outside("/target").c_str(), host("/Users/u/Library").c_str());
    FileError error;
    EXPECT_FALSE(removePath("/Users/u/Library/precious", &error));
    EXPECT_EQ(error.code, ELOOP);
    EXPECT_TRUE(exists(outside("/target/precious")));
}

TEST_F(RemovePathTest, MissingPathAndVolumeRootFail) {
    FileError error;
    EXPECT_FALSE(removePath("/Users/u/nope", &error));
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_EQ(error.path, "/Users/u/nope");
    EXPECT_THAT(error.failures, ElementsAre(Pair("/Users/u/nope", ENOENT)));
    EXPECT_FALSE(error.message.empty());
    EXPECT_FALSE(removePath("/Users/nobody/x", &error));
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_FALSE(removePath("/Users/u/nope"));

    for (const char* root : {"/", "", "/Users/..", "/../.."}) {
        EXPECT_FALSE(removePath(root, &error)) << root;
        EXPECT_EQ(error.code, EPERM) << root;
    }
    EXPECT_TRUE(exists(host("/Users/u")));
}

TEST_F(RemovePathTest, FailingEntriesStayWithTheirFoldersWhileSiblingsGo) {
    makeFile(host("/Users/u/tree/a/locked.txt"));
    makeFile(host("/Users/u/tree/a/x.txt"));
    makeFile(host("/Users/u/tree/a/deep/y.txt"));
    makeFile(host("/Users/u/tree/b/z.txt"));
    makeFile(host("/Users/u/tree/c.txt"));
    makeFile(host("/Users/u/tree/shut/w.txt"));
    setRemovalHook([](RemovalStep step, const std::string& path) {
        if (step == RemovalStep::Unlink && path == "/Users/u/tree/a/locked.txt")
            return EACCES;
        if (step == RemovalStep::Open && path == "/Users/u/tree/shut")
            return EACCES;
        return 0;
    });

    FileError error;
    EXPECT_FALSE(removePath("/Users/u/tree", &error));
    EXPECT_THAT(error.failures, UnorderedElementsAre(Pair("/Users/u/tree/a/locked.txt", EACCES),
                                                     Pair("/Users/u/tree/a", ENOTEMPTY),
                                                     Pair("/Users/u/tree/shut", EACCES),
                                                     Pair("/Users/u/tree", ENOTEMPTY)));
    ASSERT_FALSE(error.failures.empty());
    EXPECT_EQ(error.failures.back().first, "/Users/u/tree");
    EXPECT_EQ(error.path, error.failures.front().first);
    EXPECT_EQ(error.code, error.failures.front().second);

    EXPECT_TRUE(exists(host("/Users/u/tree/a/locked.txt")));
    EXPECT_TRUE(exists(host("/Users/u/tree/shut/w.txt")));
    EXPECT_FALSE(exists(host("/Users/u/tree/a/x.txt")));
    EXPECT_FALSE(exists(host("/Users/u/tree/a/deep")));
    EXPECT_FALSE(exists(host("/Users/u/tree/b")));
    EXPECT_FALSE(exists(host("/Users/u/tree/c.txt")));
}

TEST_F(RemovePathTest, ReadOnlyFolderIsLeftAsItIs) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "permissions do not stop root";
    makeFile(host("/Users/u/tree/ro/f"));
    makeFile(host("/Users/u/tree/other.txt"));
    ::chmod(host("/Users/u/tree/ro").c_str(), 0555);

    FileError error;
    EXPECT_FALSE(removePath("/Users/u/tree", &error));
    EXPECT_THAT(error.failures,
                ElementsAre(Pair("/Users/u/tree/ro/f", EACCES), Pair("/Users/u/tree/ro", ENOTEMPTY),
                            Pair("/Users/u/tree", ENOTEMPTY)));
    EXPECT_FALSE(exists(host("/Users/u/tree/other.txt")));
    struct stat st {};
    ASSERT_EQ(::lstat(host("/Users/u/tree/ro").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0555u) << "permissions must never be forced";
    ::chmod(host("/Users/u/tree/ro").c_str(), 0755);
}

// The race of CVE-2022-21658: a folder replaced between being listed and being entered.
TEST_F(RemovePathTest, FolderSwappedBeforeEnteringIsLeftAlone) {
    makeFile(outside("/target/precious"));
    makeFile(outside("/planted/precious"));
    makeFile(host("/Users/u/one/sub/inner"));
    makeFile(host("/Users/u/two/sub/inner"));
    setRemovalHook([this](RemovalStep step, const std::string& path) {
        if (step != RemovalStep::Open)
            return 0;
        if (path == "/Users/u/one/sub") {
            std::rename(host(path).c_str(), (tmp_ + "/moved-one").c_str());
            ::symlink(outside("/target").c_str(), host(path).c_str());
        } else if (path == "/Users/u/two/sub") {
            std::rename(host(path).c_str(), (tmp_ + "/moved-two").c_str());
            std::rename(outside("/planted").c_str(), host(path).c_str());
        }
        return 0;
    });

    FileError error;
    EXPECT_FALSE(removePath("/Users/u/one", &error));
    EXPECT_THAT(error.failures, Contains(Pair("/Users/u/one/sub", ESTALE)));
    EXPECT_TRUE(exists(outside("/target/precious")));

    EXPECT_FALSE(removePath("/Users/u/two", &error));
    EXPECT_THAT(error.failures, Contains(Pair("/Users/u/two/sub", ESTALE)));
    EXPECT_TRUE(exists(host("/Users/u/two/sub/precious")));
}

// A branch deeper than the window of open folders is moved away while the walk is at its
// bottom: climbing back through ".." would land in the attacker's folder.
TEST_F(RemovePathTest, BranchMovedAwayMidWalkIsAbandoned) {
    std::string deepest = "/Users/u/tree";
    for (int i = 0; i < 40; ++i)
        deepest += "/d";
    makeFile(host(deepest + "/f"));
    makeFile(outside("/keep"));
    setRemovalHook([&](RemovalStep step, const std::string& path) {
        if (step == RemovalStep::Unlink && path == deepest + "/f") {
            std::rename(host("/Users/u/tree/d/d").c_str(), outside("/d").c_str());
        }
        return 0;
    });

    FileError error;
    EXPECT_FALSE(removePath("/Users/u/tree", &error));
    EXPECT_THAT(error.failures,
                ElementsAre(Pair("/Users/u/tree/d/d", ESTALE), Pair("/Users/u/tree/d", ESTALE),
                            Pair("/Users/u/tree", ESTALE)));
    EXPECT_TRUE(exists(outside("/keep")));
    EXPECT_TRUE(exists(outside("/d")));
}

// Builds a chain of `depth` folders named "d" with a side folder every 1,000 levels (so that
// levels closed on the way down must be listed again), never using a path longer than a name.
void makeChain(const std::string& top, int depth) {
    std::filesystem::create_directories(top);
    int fd = ::open(top.c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < depth && fd >= 0; ++i) {
        if (i % 1000 == 0) {
            ::mkdirat(fd, "side", 0755);
            ::close(::openat(fd, "side/f", O_CREAT | O_WRONLY, 0644));
        }
        ::mkdirat(fd, "d", 0755);
        int next = ::openat(fd, "d", O_RDONLY | O_DIRECTORY);
        ::close(fd);
        fd = next;
    }
    ASSERT_GE(fd, 0);
    ::close(fd);
}

TEST_F(RemovePathTest, DeepTreeIsRemovedWithinTheDescriptorLimit) {
    makeChain(host("/Users/u/deep"), 5000);

    // The limit applies to a child process so that this one keeps its own.
    pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        rlimit limit{256, 256};
        if (::setrlimit(RLIMIT_NOFILE, &limit) != 0)
            ::_exit(2);
        bool removed = removePath("/Users/u/deep") && !exists(host("/Users/u/deep"));
        ::_exit(removed ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    // The tree is too deep for std::filesystem to clean up after a failure.
    if (exists(host("/Users/u/deep")))
        removePath("/Users/u/deep");
}

// A real race rather than a staged one: while removals run, another thread keeps swapping a
// folder inside the target for a link to an outside folder and back. Whatever interleaving
// happens, nothing outside may ever go. Bounded to a couple of seconds.
TEST_F(RemovePathTest, ConcurrentSwapsForLinksNeverReachOutside) {
    for (int i = 0; i < 50; ++i)
        makeFile(outside("/keep" + std::to_string(i)));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    int rounds = 0;
    while (std::chrono::steady_clock::now() < deadline) {
        const std::string target = host("/Users/u/t");
        for (int i = 0; i < 20; ++i)
            makeFile(target + "/a/b" + std::to_string(i) + "/f");
        std::atomic<bool> done{false};
        std::thread swapper([&] {
            const std::string folder = target + "/a";
            const std::string parked = target + "/parked";
            while (!done) {
                if (::rename(folder.c_str(), parked.c_str()) == 0) {
                    ::symlink(outside().c_str(), folder.c_str());
                    ::unlink(folder.c_str());
                    ::rename(parked.c_str(), folder.c_str());
                }
            }
        });
        removePath("/Users/u/t");
        done = true;
        swapper.join();
        // Clean up whatever the race left, without following anything.
        if (exists(target))
            removePath("/Users/u/t");
        for (int i = 0; i < 50; ++i)
            ASSERT_TRUE(exists(outside("/keep" + std::to_string(i)))) << "round " << rounds;
        ++rounds;
    }
    EXPECT_GT(rounds, 0);
}

}  // namespace
}  // namespace sysmend
