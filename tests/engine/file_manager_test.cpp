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
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "sample/fake_volume.h"

namespace sysmend {
namespace {

namespace fs = std::filesystem;
using ::testing::UnorderedElementsAreArray;

class RemovePathTest : public ::testing::Test {
  protected:
    void TearDown() override { setRemovalHook(nullptr); }

    // A folder beside the volume that no removal may ever touch, holding target/precious and
    // planted/precious.
    std::string outside(const std::string& rest = "") const { return beside_.root() + "/o" + rest; }
    std::string host(const std::string& inHome) const { return vol_.host("/Users/u/" + inHome); }
    static bool exists(const std::string& hostPath) {
        struct stat st {};
        return ::lstat(hostPath.c_str(), &st) == 0;
    }
    // A path under the home folder, or under the outside folder when it starts with '@'.
    std::string where(const std::string& p) const {
        return p.starts_with('@') ? outside("/" + p.substr(1)) : host(p);
    }

    // Empties the home and outside folders, then makes each entry under the home folder:
    // "x/" a folder, "x -> t" a link to t ('@' for the outside folder), anything else a file.
    void build(const std::vector<std::string>& layout) {
        fs::remove_all(host(""));
        fs::remove_all(outside());
        beside_.write("/o/target/precious", "data");
        beside_.write("/o/planted/precious", "data");
        vol_.mkdir("/Users/u");
        for (const std::string& entry : layout) {
            if (auto arrow = entry.find(" -> "); arrow != std::string::npos) {
                std::string target = entry.substr(arrow + 4);
                vol_.symlink("/Users/u/" + entry.substr(0, arrow),
                             target[0] == '@' ? where(target) : target);
            } else if (entry.ends_with('/')) {
                vol_.mkdir("/Users/u/" + entry);
            } else {
                vol_.write("/Users/u/" + entry, "data");
            }
        }
    }

    // Builds `layout`, removes `target` and compares the failures ("path ERRNO", paths under
    // the home folder unless they start with '/'; the last one listed must come last) and what
    // is left: `after` names what must still be there, and with '!' what must be gone.
    void check(const std::vector<std::string>& layout, const std::string& target,
               const std::vector<std::string>& failures, const std::vector<std::string>& after,
               RemovalHook hook = nullptr, const std::string& readOnly = "") {
        SCOPED_TRACE(target);
        build(layout);
        if (!readOnly.empty())
            ::chmod(host(readOnly).c_str(), 0555);
        setRemovalHook(std::move(hook));
        FileError error{EIO, "/stale", "stale", {{"/stale", EIO}}};
        EXPECT_EQ(removePath(target, &error), failures.empty());
        setRemovalHook(nullptr);
        std::vector<std::string> got;
        for (const auto& [p, code] : error.failures) {
            got.push_back((p.starts_with("/Users/u/") ? p.substr(9) : p) + " " +
                          ::strerrorname_np(code));
        }
        EXPECT_THAT(got, UnorderedElementsAreArray(failures));
        if (failures.empty()) {
            EXPECT_EQ(error.code, 0);
            EXPECT_TRUE(error.path.empty() && error.message.empty());
        } else if (!got.empty()) {
            EXPECT_EQ(got.back(), failures.back());
            EXPECT_EQ(error.path, error.failures.front().first);
            EXPECT_EQ(error.code, error.failures.front().second);
            EXPECT_FALSE(error.message.empty());
        }
        for (const std::string& p : after)
            EXPECT_EQ(exists(where(p.substr(p.starts_with('!')))), !p.starts_with('!')) << p;
        EXPECT_TRUE(exists(outside("/target/precious")));
        if (!readOnly.empty()) {
            struct stat st {};
            ASSERT_EQ(::lstat(host(readOnly).c_str(), &st), 0);
            EXPECT_EQ(st.st_mode & 07777, 0555u) << "permissions must never be forced";
            ::chmod(host(readOnly).c_str(), 0755);
        }
    }

    sample::FakeVolume vol_{"u"};
    sample::FakeVolume beside_;
    ScopedVolume scoped_{vol_.volume()};
};

TEST_F(RemovePathTest, RemovesWhatWasSelectedAndNothingElse) {
    check({"a.txt", "b.txt"}, "/Users/u/a.txt", {}, {"!a.txt", "b.txt"});
    check({"C/x/.hidden", "C/x/Café ☕.plist", "C/x/empty/deeper/", "C/keep"}, "/Users/u/C/x/", {},
          {"!C/x", "C/keep"});
    // Links go, never what they point to, with or without a trailing slash.
    check({"link -> @target"}, "/Users/u/link", {}, {"!link", "@target/precious"});
    check({"slashed -> @target"}, "/Users/u/slashed/", {}, {"!slashed"});
    check({"tree/sub/f", "tree/sub/out -> @target", "tree/f -> @target/precious", "tree/x -> /no"},
          "/Users/u/tree", {}, {"!tree"});
    // On an inspected volume an absolute link resolves against the host's root: a path
    // through it is refused rather than followed.
    check({"Lib -> @target"}, "/Users/u/Lib/precious", {"Lib/precious ELOOP"}, {"Lib"});
    check({}, "/Users/u/nope", {"nope ENOENT"}, {});
    check({}, "/Users/nobody/x", {"/Users/nobody/x ENOENT"}, {});
    for (const char* root : {"/", "", "/Users/..", "/../.."})
        check({}, root, {"/ EPERM"}, {""});
    EXPECT_FALSE(removePath("/Users/u/nope"));  // without a FileError to fill
    EXPECT_TRUE(removePath(vol_.write("/Users/u/x", "")));
}

TEST_F(RemovePathTest, WhatCannotGoStaysWithItsFoldersWhileTheRestGoes) {
    check({"tree/a/locked", "tree/a/x", "tree/a/deep/y", "tree/b/z", "tree/c", "tree/shut/w"},
          "/Users/u/tree",
          {"tree/a/locked EACCES", "tree/a ENOTEMPTY", "tree/shut EACCES", "tree ENOTEMPTY"},
          {"!tree/a/x", "!tree/a/deep", "!tree/b", "!tree/c", "tree/a/locked", "tree/shut/w"},
          [](RemovalStep step, const std::string& p) {
              if (step == RemovalStep::Unlink && p == "/Users/u/tree/a/locked")
                  return EACCES;
              return step == RemovalStep::Open && p == "/Users/u/tree/shut" ? EACCES : 0;
          });
    // A read-only folder is left as it is.
    if (::geteuid() != 0) {  // permissions do not stop root
        check({"tree/ro/f", "tree/other"}, "/Users/u/tree",
              {"tree/ro/f EACCES", "tree/ro ENOTEMPTY", "tree ENOTEMPTY"},
              {"!tree/other", "tree/ro/f"}, nullptr, "tree/ro");
    }
}

TEST_F(RemovePathTest, FoldersSwappedMidWalkAreLeftAlone) {
    // On the way into `folder`, moves it away and puts `replace(hostPath)` in its place.
    auto swapOnOpen = [this](std::string folder, std::function<void(const std::string&)> replace) {
        return [=, this](RemovalStep step, const std::string& p) {
            if (step == RemovalStep::Open && p == folder) {
                fs::rename(vol_.host(p), outside("/moved"));
                replace(vol_.host(p));
            }
            return 0;
        };
    };
    // Replaced between being listed and being entered, by a link or by another folder.
    check({"one/sub/inner"}, "/Users/u/one", {"one/sub ESTALE", "one ENOTEMPTY"}, {},
          swapOnOpen("/Users/u/one/sub",
                     [&](auto& p) { fs::create_symlink(outside("/target"), p); }));
    check({"two/sub/inner"}, "/Users/u/two", {"two/sub ESTALE", "two ENOTEMPTY"},
          {"two/sub/precious"},
          swapOnOpen("/Users/u/two/sub", [&](auto& p) { fs::rename(outside("/planted"), p); }));
    // A branch deeper than the window of open folders moved away while the walk is at its
    // bottom: climbing back through ".." would land in the attacker's folder.
    std::string deepest = "/Users/u/tree";
    for (int i = 0; i < 40; ++i)
        deepest += "/d";
    check({deepest.substr(9) + "/f"}, "/Users/u/tree",
          {"tree/d/d ESTALE", "tree/d ESTALE", "tree ESTALE"}, {"@d"},
          [&](RemovalStep step, const std::string& p) {
              if (step == RemovalStep::Unlink && p == deepest + "/f")
                  fs::rename(host("tree/d/d"), outside("/d"));
              return 0;
          });
}

// Builds a chain of `depth` folders named "d" with a side folder every 1,000 levels (so that
// levels closed on the way down must be listed again), never using a path longer than a name.
void makeChain(const std::string& top, int depth) {
    fs::create_directories(top);
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
    makeChain(host("deep"), 5000);
    // The limit applies to a child process so that this one keeps its own.
    pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        rlimit limit{256, 256};
        if (::setrlimit(RLIMIT_NOFILE, &limit) != 0)
            ::_exit(2);
        ::_exit(removePath("/Users/u/deep") && !exists(host("deep")) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    if (exists(host("deep")))  // too deep for std::filesystem to clean up
        removePath("/Users/u/deep");
}

// A real race rather than a staged one: while removals run, another thread keeps swapping a
// folder inside the target for a link to the outside folder and back. Whatever interleaving
// happens, nothing outside may ever go. Bounded to a couple of seconds.
TEST_F(RemovePathTest, ConcurrentSwapsForLinksNeverReachOutside) {
    build({});
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    int rounds = 0;
    for (; std::chrono::steady_clock::now() < deadline; ++rounds) {
        for (int i = 0; i < 20; ++i)
            vol_.write("/Users/u/t/a/b" + std::to_string(i) + "/f", "");
        std::atomic<bool> done{false};
        std::thread swapper([&] {
            const std::string folder = host("t/a"), parked = host("t/parked");
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
        if (exists(host("t")))  // whatever the race left, removed without following anything
            removePath("/Users/u/t");
        ASSERT_TRUE(exists(outside("/target/precious")) && exists(outside("/planted/precious")))
            << "round " << rounds;
    }
    EXPECT_GT(rounds, 0);
}

}  // namespace
}  // namespace sysmend
