#include "platform/walker.h"

#include <dirent.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "sample/fake_volume.h"

namespace sysmend {
namespace {

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

    // "path kind" lines, with the home folder left out and [pkg] after packages.
    std::vector<std::string> walk(unsigned options,
                                  const std::function<bool(const std::string&)>& skip = {}) {
        std::vector<std::string> out;
        DirectoryEnumerator walker("/Users/u/", options);
        while (auto entry = walker.next()) {
            std::string rel = entry->path.substr(std::string("/Users/u/").size());
            std::ostringstream line;
            line << rel << ' ' << entry->kind << (entry->isPackage ? " [pkg]" : "");
            out.push_back(line.str());
            if (skip && skip(rel))
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

TEST_F(WalkerTest, WalksPreOrderWithoutFollowingLinks) {
    EXPECT_THAT(walk(0),
                ElementsAre(".cache Directory", ".cache/x File", "B.txt File", "Docs Directory",
                            "Docs/Sub Directory", "Docs/Sub/b.txt File", "Docs/a.txt File",
                            "Foo.app Directory [pkg]", "Foo.app/Contents Directory",
                            "Foo.app/Contents/Info.plist File", "Kit.framework Directory",
                            "Kit.framework/Kit File", "a File", "link-to-Docs Symlink"));
}

TEST_F(WalkerTest, OptionsSkipHiddenNamesPackagesAndSubfolders) {
    // 6: what the browser and application scans ask for. Frameworks are not packages.
    EXPECT_THAT(
        walk(DirectoryEnumerator::SkipsPackageDescendants | DirectoryEnumerator::SkipsHiddenFiles),
        ElementsAre("B.txt File", "Docs Directory", "Docs/Sub Directory", "Docs/Sub/b.txt File",
                    "Docs/a.txt File", "Foo.app Directory [pkg]", "Kit.framework Directory",
                    "Kit.framework/Kit File", "a File", "link-to-Docs Symlink"));
    // 2 alone keeps hidden entries.
    EXPECT_THAT(walk(DirectoryEnumerator::SkipsPackageDescendants),
                ::testing::Contains(".cache/x File"));
    EXPECT_THAT(
        walk(DirectoryEnumerator::SkipsSubdirectoryDescendants),
        ElementsAre(".cache Directory", "B.txt File", "Docs Directory", "Foo.app Directory [pkg]",
                    "Kit.framework Directory", "a File", "link-to-Docs Symlink"));
}

TEST_F(WalkerTest, SkipDescendantsLeavesOutOnlyThatFolder) {
    auto walked = walk(DirectoryEnumerator::SkipsHiddenFiles,
                       [](const std::string& rel) { return rel == "Docs/Sub" || rel == "a"; });
    EXPECT_THAT(walked,
                ElementsAre("B.txt File", "Docs Directory", "Docs/Sub Directory", "Docs/a.txt File",
                            "Foo.app Directory [pkg]", "Foo.app/Contents Directory",
                            "Foo.app/Contents/Info.plist File", "Kit.framework Directory",
                            "Kit.framework/Kit File", "a File", "link-to-Docs Symlink"));
}

TEST_F(WalkerTest, MissingStartYieldsNothingAndNoDescriptorIsHeld) {
    DirectoryEnumerator missing("/Users/u/missing");
    EXPECT_EQ(missing.next(), std::nullopt);

    auto openDescriptors = [] {
        int count = 0;
        DIR* dir = ::opendir("/proc/self/fd");
        while (::readdir(dir) != nullptr)
            ++count;
        ::closedir(dir);
        return count;
    };
    const int before = openDescriptors();
    DirectoryEnumerator walker("/Users/u");
    for (int i = 0; i < 6; ++i)
        ASSERT_TRUE(walker.next());  // down in Docs/Sub
    EXPECT_EQ(openDescriptors(), before);
}

// Runs `body` as an unprivileged user when the tests run as root, for whom no folder is
// unreadable. Gives what `body` returned.
std::string runWithoutPrivileges(const std::function<std::string()>& body) {
    if (::geteuid() != 0)
        return body();
    int fds[2];
    if (::pipe(fds) != 0)
        return "pipe failed";
    pid_t pid = ::fork();
    if (pid == 0) {
        ::close(fds[0]);
        if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0) {
            ::_exit(2);
        }
        std::string out = body();
        ssize_t written = ::write(fds[1], out.data(), out.size());
        ::_exit(written == static_cast<ssize_t>(out.size()) ? 0 : 3);
    }
    ::close(fds[1]);
    std::string out;
    char buf[4096];
    for (ssize_t n; (n = ::read(fds[0], buf, sizeof buf)) > 0;)
        out.append(buf, n);
    ::close(fds[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return "child failed";
    return out;
}

TEST_F(WalkerTest, UnreadableFolderIsYieldedAndTheWalkGoesOn) {
    fake_.write("/Users/u/Docs/Locked/inside", "");
    ASSERT_EQ(::chmod(fake_.root().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(fake_.host("/Users/u/Docs/Locked").c_str(), 0), 0);

    std::string walked = runWithoutPrivileges([] {
        std::string out;
        DirectoryEnumerator walker("/Users/u/Docs");
        while (auto entry = walker.next())
            out += entry->path + "\n";
        return out;
    });
    EXPECT_EQ(walked,
              "/Users/u/Docs/Locked\n/Users/u/Docs/Sub\n/Users/u/Docs/Sub/b.txt\n"
              "/Users/u/Docs/a.txt\n");
    ::chmod(fake_.host("/Users/u/Docs/Locked").c_str(), 0755);
}

}  // namespace
}  // namespace sysmend
