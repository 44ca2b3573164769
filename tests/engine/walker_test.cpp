#include "platform/walker.h"

#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "sample/fake_volume.h"

namespace sysmend {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WalkerTest : public ::testing::Test {
  protected:
    // Home "/Users/u" holding:
    //   .cache/x  B.txt  Docs/{a.txt, Sub/b.txt}  Foo.app/Contents/Info.plist
    //   Kit.framework/Kit  a  link-to-Docs -> Docs
    void SetUp() override {
        fake_.write("/Users/u/.cache/x", "");
        fake_.write("/Users/u/B.txt", "");
        fake_.write("/Users/u/Docs/a.txt", "");
        fake_.write("/Users/u/Docs/Sub/b.txt", "");
        fake_.write("/Users/u/Foo.app/Contents/Info.plist", "");
        fake_.write("/Users/u/Kit.framework/Kit", "");
        fake_.write("/Users/u/a", "");
        fake_.symlink("/Users/u/link-to-Docs", "Docs");
    }

    // The walk as one line: paths without the home folder, folders ending in '/' ('+' after
    // packages), links in '@'.
    std::string walk(unsigned options, const std::set<std::string>& skip = {}) {
        std::string out;
        DirectoryEnumerator walker("/Users/u/", options);
        while (auto entry = walker.next()) {
            std::string rel = entry->path.substr(std::string("/Users/u/").size());
            const char* kinds[] = {"/", "", "@", "?"};
            out += (out.empty() ? "" : " ") + rel + kinds[static_cast<int>(entry->kind)] +
                   (entry->isPackage ? "+" : "");
            if (skip.count(rel) != 0)
                walker.skipDescendants();
        }
        return out;
    }

    sample::FakeVolume fake_{"u"};
    ScopedVolume scope_{fake_.volume()};
};

TEST_F(WalkerTest, ListingIsSortedByBytesWithHiddenEntriesAndKinds) {
    bool ok = false;
    EXPECT_THAT(
        contentsOfDirectory("/Users/u", &ok),
        ElementsAre(DirEntry{".cache", EntryKind::Directory}, DirEntry{"B.txt", EntryKind::File},
                    DirEntry{"Docs", EntryKind::Directory},
                    DirEntry{"Foo.app", EntryKind::Directory},
                    DirEntry{"Kit.framework", EntryKind::Directory}, DirEntry{"a", EntryKind::File},
                    DirEntry{"link-to-Docs", EntryKind::Symlink}));
    EXPECT_TRUE(ok);
    // The named folder may itself be a link; it is listed like the folder it points to.
    EXPECT_EQ(contentsOfDirectory("/Users/u/link-to-Docs").size(), 2u);

    EXPECT_THAT(contentsOfDirectory("/Users/u/missing", &ok), IsEmpty());
    EXPECT_FALSE(ok);
    EXPECT_THAT(contentsOfDirectory("/Users/u/B.txt", &ok), IsEmpty());
    EXPECT_FALSE(ok);
}

TEST_F(WalkerTest, WalksPreOrderWithoutFollowingLinksAsTheOptionsSay) {
    using E = DirectoryEnumerator;
    EXPECT_EQ(walk(0),
              ".cache/ .cache/x B.txt Docs/ Docs/Sub/ Docs/Sub/b.txt Docs/a.txt Foo.app/+ "
              "Foo.app/Contents/ Foo.app/Contents/Info.plist Kit.framework/ Kit.framework/Kit a "
              "link-to-Docs@");
    // What the browser and application scans ask for. Frameworks are not packages.
    EXPECT_EQ(walk(E::SkipsPackageDescendants | E::SkipsHiddenFiles),
              "B.txt Docs/ Docs/Sub/ Docs/Sub/b.txt Docs/a.txt Foo.app/+ Kit.framework/ "
              "Kit.framework/Kit a link-to-Docs@");
    EXPECT_EQ(walk(E::SkipsPackageDescendants),
              ".cache/ .cache/x B.txt Docs/ Docs/Sub/ Docs/Sub/b.txt Docs/a.txt Foo.app/+ "
              "Kit.framework/ Kit.framework/Kit a link-to-Docs@");
    EXPECT_EQ(walk(E::SkipsSubdirectoryDescendants),
              ".cache/ B.txt Docs/ Foo.app/+ Kit.framework/ a link-to-Docs@");
    // Skipping leaves out only that folder's contents.
    EXPECT_EQ(walk(E::SkipsHiddenFiles, {"Docs/Sub", "a"}),
              "B.txt Docs/ Docs/Sub/ Docs/a.txt Foo.app/+ Foo.app/Contents/ "
              "Foo.app/Contents/Info.plist Kit.framework/ Kit.framework/Kit a link-to-Docs@");
}

TEST_F(WalkerTest, MissingStartYieldsNothingAndNoDescriptorIsHeld) {
    DirectoryEnumerator missing("/Users/u/missing");
    EXPECT_EQ(missing.next(), std::nullopt);

    auto openDescriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = openDescriptors();
    DirectoryEnumerator walker("/Users/u");
    for (int i = 0; i < 6; ++i)
        ASSERT_TRUE(walker.next());  // down in Docs/Sub
    EXPECT_EQ(openDescriptors(), before);
}

// Whether `body` holds for an unprivileged user: when the tests run as root, for whom no
// folder is unreadable, it runs in a child process that drops its privileges.
bool holdsWithoutPrivileges(const std::function<bool()>& body) {
    if (::geteuid() != 0)
        return body();
    pid_t pid = ::fork();
    if (pid == 0) {
        bool dropped = ::setgroups(0, nullptr) == 0 && ::setgid(65534) == 0 && ::setuid(65534) == 0;
        ::_exit(dropped && body() ? 0 : 1);
    }
    int status = 0;
    return ::waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(WalkerTest, UnreadableFolderIsYieldedAndTheWalkGoesOn) {
    fake_.write("/Users/u/Docs/Locked/inside", "");
    ASSERT_EQ(::chmod(fake_.root().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(fake_.host("/Users/u/Docs/Locked").c_str(), 0), 0);
    EXPECT_TRUE(holdsWithoutPrivileges([this] {
        return walk(DirectoryEnumerator::SkipsPackageDescendants) ==
               ".cache/ .cache/x B.txt Docs/ Docs/Locked/ Docs/Sub/ Docs/Sub/b.txt Docs/a.txt "
               "Foo.app/+ Kit.framework/ Kit.framework/Kit a link-to-Docs@";
    }));
    ::chmod(fake_.host("/Users/u/Docs/Locked").c_str(), 0755);
}

}  // namespace
}  // namespace sysmend
