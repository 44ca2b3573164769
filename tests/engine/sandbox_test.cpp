#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <vector>

#include "platform/file_url.h"
#include "sample/fake_volume.h"
#include "sandbox/app_sandbox_file_access.h"
#include "sandbox/app_sandbox_file_access_persist.h"
#include "sandbox/bookmarks.h"
#include "sandbox/open_save_panel_delegate.h"
#include "settings/user_defaults.h"

namespace sysmend {
namespace {

namespace fs = std::filesystem;
using Persist = AppSandboxFileAccessPersist;

// The portable backend, counting start/stop calls and able to report every bookmark stale.
class CountingBackend : public BookmarkBackend {
  public:
    std::optional<Data> create(const FileURL& url) override { return real_.create(url); }
    std::optional<FileURL> resolve(const Data& data, bool* isStale) override {
        auto url = real_.resolve(data, isStale);
        if (url && forceStale)
            *isStale = true;
        return url;
    }
    bool startAccessing(const FileURL& url) override {
        started.push_back(url);
        return true;
    }
    void stopAccessing(const FileURL& url) override { stopped.push_back(url); }

    bool forceStale = false;
    std::vector<FileURL> started;
    std::vector<FileURL> stopped;

  private:
    PortableBookmarkBackend real_;
};

// Answers every request with a fixed choice (nullopt = Cancel) and keeps the last request.
class FakePanel : public PermissionPanel {
  public:
    std::optional<FileURL> runPanel(const PermissionRequest& request) override {
        ++runs;
        directory = request.directory;
        delegate = request.delegate;
        message = request.message;
        return answer;
    }

    std::optional<FileURL> answer;
    int runs = 0;
    std::optional<FileURL> directory;
    std::optional<AppSandboxFileAccessOpenSavePanelDelegate> delegate;
    std::string message;
};

plist::Dictionary infoNamed(const char* key, const char* name) {
    plist::Dictionary info;
    info.set(key, name);
    return info;
}

class SandboxTest : public ::testing::Test {
  protected:
    SandboxTest() {
        vol_.mkdir("/Users/user/Library/Containers/x");
        access_.setPermissionPanel(&panel_);
    }

    FileURL url(std::string_view volumePath) { return FileURL::fileURLWithPath(volumePath); }
    bool hasEntry(std::string_view volumePath) {
        return defaults_.dataForKey(Persist::keyForBookmarkDataForURL(url(volumePath))).has_value();
    }
    void grant(std::string_view volumePath) { access_.persistPermissionPath(volumePath); }
    // Replaces a folder by a new, empty one under the same name. The old one is removed only
    // after the new one exists, so the new one cannot reuse its inode.
    void remakeFolder(std::string_view volumePath) {
        std::string host = vol_.host(volumePath);
        fs::rename(host, host + ".old");
        fs::create_directory(host);
        fs::remove_all(host + ".old");
    }

    sample::FakeVolume vol_{"user"};
    ScopedVolume scoped_{vol_.volume()};
    CountingBackend backend_;
    ScopedBookmarkBackend installed_{backend_};
    UserDefaults defaults_{vol_.host("/.prefs/grants.plist")};
    FakePanel panel_;
    AppSandboxFileAccess access_{defaults_, infoNamed("CFBundleName", "Sysmend")};
};

TEST_F(SandboxTest, AbsoluteStringsAreTheKeysAsFoundationSpellsThem) {
    EXPECT_EQ(Persist::keyForBookmarkDataForURL(url("/Users/user/Library")),
              "bd_file:///Users/user/Library/");
    EXPECT_EQ(Persist::keyForBookmarkDataForURL(url("/Users/user/Library/missing")),
              "bd_file:///Users/user/Library/missing");
    EXPECT_EQ(url("/").absoluteString(), "file:///");
    EXPECT_EQ(url("/Users/user/My Files/Résumé").absoluteString(),
              "file:///Users/user/My%20Files/R%C3%A9sum%C3%A9");
    EXPECT_EQ(url("/a%#?[]^`{}|\"<>\\b").absoluteString(),
              "file:///a%25%23%3F%5B%5D%5E%60%7B%7D%7C%22%3C%3E%5Cb");
    EXPECT_EQ(url("/:@!$&'()*+,;=~-._").absoluteString(), "file:///:@!$&'()*+,;=~-._");
    EXPECT_EQ(FileURL::fileURLWithPath("/x/", false).absoluteString(), "file:///x");
    EXPECT_EQ(url("/x/").absoluteString(), "file:///x/");
}

TEST_F(SandboxTest, UrlPathOperations) {
    FileURL library = url("/Users/user/Library");
    EXPECT_EQ(library.path(), "/Users/user/Library");
    EXPECT_EQ(library.pathComponents(),
              (std::vector<std::string>{"/", "Users", "user", "Library"}));
    EXPECT_EQ(library.URLByDeletingLastPathComponent(), url("/Users/user"));
    EXPECT_EQ(url("/Users").URLByDeletingLastPathComponent(), url("/"));
    EXPECT_EQ(url("/Users/./user//Library/x/../").URLByStandardizingPath().absoluteString(),
              "file:///Users/user/Library/");
}

TEST_F(SandboxTest, SymlinksResolveInsideTheVolume) {
    vol_.symlink("/Users/user/abs", "/Users/user/Library");  // would be the host's own /Users
    vol_.symlink("/Users/user/rel", "Library/Containers");
    vol_.symlink("/Users/user/chain", "rel/x");
    vol_.symlink("/Users/user/up", "../../..");
    vol_.symlink("/Users/user/loop", "loop");
    EXPECT_EQ(url("/Users/user/abs/Containers").URLByResolvingSymlinksInPath(),
              url("/Users/user/Library/Containers"));
    EXPECT_EQ(url("/Users/user/chain").URLByResolvingSymlinksInPath(),
              url("/Users/user/Library/Containers/x"));
    EXPECT_EQ(url("/Users/user/up/Users").URLByResolvingSymlinksInPath(), url("/Users"));
    EXPECT_EQ(url("/Users/user/loop/a").URLByResolvingSymlinksInPath(), url("/Users/user/loop/a"));
    EXPECT_EQ(url("/Users/user/abs/missing/deeper").URLByResolvingSymlinksInPath(),
              url("/Users/user/Library/missing/deeper"));
    EXPECT_EQ(url("/Users/user/nothing/here").URLByResolvingSymlinksInPath(),
              url("/Users/user/nothing/here"));
}

TEST_F(SandboxTest, NearestSavedAncestorCoversAPathButTheRootNever) {
    Persist::setBookmarkData({1}, url("/Users/user/Library"), defaults_);
    Persist::setBookmarkData({9}, url("/"), defaults_);
    EXPECT_EQ(Persist::bookmarkDataForURL(url("/Users/user/Library/Containers/x"), defaults_),
              Data{1});
    Persist::setBookmarkData({2}, url("/Users/user/Library/Containers"), defaults_);
    EXPECT_EQ(Persist::bookmarkDataForURL(url("/Users/user/Library/Containers/x"), defaults_),
              Data{2});
    EXPECT_EQ(Persist::bookmarkDataForURL(url("/Users/user"), defaults_), std::nullopt);
    EXPECT_EQ(Persist::bookmarkDataForURL(url("/"), defaults_), std::nullopt);

    Persist::removeBookmarkData(url("/Users/user/Library/Containers/x"), defaults_);
    Persist::removeBookmarkData(url("/Users/user/Library/Containers"), defaults_);
    EXPECT_EQ(Persist::bookmarkDataForURL(url("/Users/user/Library/Containers/x"), defaults_),
              Data{1});
}

TEST_F(SandboxTest, PanelEnablesOnlyTheRequestedFolderAndItsAncestors) {
    auto delegate =
        AppSandboxFileAccessOpenSavePanelDelegate::initWithFileURL(url("/Users/user/Library"));
    EXPECT_TRUE(delegate.shouldEnableURL(url("/")));
    EXPECT_TRUE(delegate.shouldEnableURL(url("/Users/user")));
    EXPECT_TRUE(delegate.shouldEnableURL(url("/Users/user/Library")));
    EXPECT_FALSE(delegate.shouldEnableURL(url("/Users/User")));
    EXPECT_FALSE(delegate.shouldEnableURL(url("/Users/user/Library/Caches")));
    EXPECT_FALSE(delegate.shouldEnableURL(url("/Users/user/Documents")));
}

TEST_F(SandboxTest, AskingForAMissingFolderStartsAtItsNearestExistingAncestor) {
    vol_.mkdir("/Users/Shared");
    EXPECT_EQ(access_.askPermissionForUrl(url("/Users/user/Missing/Deeper")), std::nullopt);
    ASSERT_EQ(panel_.runs, 1);
    EXPECT_EQ(panel_.directory, url("/Users/user"));
    EXPECT_EQ(panel_.message,
              "Sysmend needs to access this path to continue. Click Allow to continue.");
    for (const char* existing : {"/", "/Users", "/Users/user"})
        EXPECT_TRUE(panel_.delegate->shouldEnableURL(url(existing))) << existing;
    for (const char* existing : {"/Users/Shared", "/Users/user/Library"})
        EXPECT_FALSE(panel_.delegate->shouldEnableURL(url(existing))) << existing;

    access_.setPermissionPanel(nullptr);
    EXPECT_EQ(access_.askPermissionForUrl(url("/Users/user")), std::nullopt);
    EXPECT_EQ(panel_.runs, 1);
}

TEST_F(SandboxTest, MessageNamesTheApplication) {
    EXPECT_EQ(AppSandboxFileAccess(defaults_, infoNamed("CFBundleDisplayName", "MyApp")).message(),
              "MyApp needs to access this path to continue. Click Allow to continue.");
    plist::Dictionary both = infoNamed("CFBundleName", "Short");
    both.set("CFBundleDisplayName", "Display");
    EXPECT_EQ(AppSandboxFileAccess(defaults_, both).message().substr(0, 8), "Display ");
    EXPECT_EQ(AppSandboxFileAccess(defaults_, {}).message().substr(0, 7), "(null) ");
    EXPECT_EQ(access_.title(), "Allow Access");
    EXPECT_EQ(access_.prompt(), "Allow");
}

TEST_F(SandboxTest, AccessSavesAChosenGrantThenUsesItOnceAndForgetsIt) {
    FileURL library = url("/Users/user/Library");
    panel_.answer = library;
    int ran = 0;
    auto block = [&] { ++ran; };

    EXPECT_TRUE(access_.accessFileURL(library, block, true));
    EXPECT_EQ(panel_.runs, 1);
    EXPECT_TRUE(hasEntry("/Users/user/Library"));

    // A fresh grant under exactly this URL's key is used and then removed...
    EXPECT_TRUE(access_.accessFileURL(library, block, false));
    EXPECT_EQ(panel_.runs, 1);
    EXPECT_FALSE(hasEntry("/Users/user/Library"));

    // ...so the next call asks again.
    EXPECT_TRUE(access_.accessFilePath("/Users/user/Library", block, false));
    EXPECT_EQ(panel_.runs, 2);
    EXPECT_EQ(ran, 3);
    EXPECT_EQ(backend_.started, std::vector<FileURL>(3, library));
    EXPECT_TRUE(backend_.stopped.empty());
}

TEST_F(SandboxTest, AccessThroughAnAncestorsGrantKeepsIt) {
    grant("/Users/user/Library");
    vol_.symlink("/Users/user/link", "/Users/user/Library/Containers");
    bool ran = false;
    EXPECT_TRUE(access_.accessFilePath(
        "/Users/user/link/x", [&] { ran = true; }, false));
    EXPECT_TRUE(ran);
    EXPECT_EQ(panel_.runs, 0);
    EXPECT_TRUE(hasEntry("/Users/user/Library"));
    EXPECT_EQ(backend_.started, std::vector<FileURL>{url("/Users/user/Library")});
}

TEST_F(SandboxTest, RefusedAccessRunsNothingAndStoresNothing) {
    bool ran = false;
    EXPECT_FALSE(access_.accessFilePath(
        "/Users/user/Library", [&] { ran = true; }, true));
    EXPECT_EQ(panel_.runs, 1);
    EXPECT_FALSE(ran);
    EXPECT_TRUE(defaults_.keys().empty());
    EXPECT_TRUE(backend_.started.empty());
}

TEST_F(SandboxTest, StartAccessNeverAsks) {
    panel_.answer = url("/Users/user");
    EXPECT_FALSE(access_.startAceess(url("/Users/user"), true));
    EXPECT_EQ(panel_.runs, 0);
    EXPECT_TRUE(defaults_.keys().empty());

    grant("/Users/user");
    EXPECT_TRUE(access_.startAceess(url("/Users/user/Library"), true));
    EXPECT_EQ(panel_.runs, 0);
    EXPECT_TRUE(hasEntry("/Users/user"));
    EXPECT_EQ(backend_.started, std::vector<FileURL>{url("/Users/user")});
}

TEST_F(SandboxTest, StaleGrantIsUsedAndSavedAgainOnlyWhenPersisting) {
    grant("/Users/user/Library");
    std::string key = Persist::keyForBookmarkDataForURL(url("/Users/user/Library"));
    Data before = *defaults_.dataForKey(key);
    remakeFolder("/Users/user/Library");

    EXPECT_TRUE(access_.startAceess(url("/Users/user/Library"), false));
    EXPECT_EQ(defaults_.dataForKey(key), before);

    EXPECT_TRUE(access_.startAceess(url("/Users/user/Library"), true));
    Data after = *defaults_.dataForKey(key);
    EXPECT_NE(after, before);
    bool stale = true;
    EXPECT_EQ(PortableBookmarkBackend().resolve(after, &stale), url("/Users/user/Library"));
    EXPECT_FALSE(stale);
    EXPECT_EQ(backend_.started.size(), 2u);
}

TEST_F(SandboxTest, StaleGrantForExactlyTheRequestedFolderIsSavedAgainNotRemoved) {
    grant("/Users/user/Library");
    backend_.forceStale = true;
    EXPECT_TRUE(access_.accessFilePath(
        "/Users/user/Library", [] {}, true));
    EXPECT_EQ(panel_.runs, 0);
    EXPECT_TRUE(hasEntry("/Users/user/Library"));

    EXPECT_TRUE(access_.accessFilePath(
        "/Users/user/Library", [] {}, false));
    EXPECT_FALSE(hasEntry("/Users/user/Library"));
}

TEST_F(SandboxTest, GrantForAFolderThatIsGoneGivesNoAccess) {
    grant("/Users/user/Library/Containers");
    fs::remove_all(vol_.host("/Users/user/Library/Containers"));
    // The path below the grant's folder still finds the grant by walking up.
    EXPECT_FALSE(access_.startAceess(url("/Users/user/Library/Containers/x"), true));
    EXPECT_FALSE(access_.accessFilePath(
        "/Users/user/Library/Containers/x", [] {}, true));
    EXPECT_EQ(panel_.runs, 1);

    Data garbage{'n', 'o', 't', ' ', 'a', ' ', 'b', 'o', 'o', 'k', 'm', 'a', 'r', 'k'};
    Persist::setBookmarkData(garbage, url("/Users/user"), defaults_);
    EXPECT_FALSE(access_.startAceess(url("/Users/user"), true));
}

TEST_F(SandboxTest, StopAccessAlwaysSucceeds) {
    EXPECT_TRUE(access_.stopAccess(url("/Users/user/Library")));
    EXPECT_TRUE(backend_.stopped.empty());
    grant("/Users/user/Library");
    EXPECT_TRUE(access_.stopAccess(url("/Users/user/Library/Containers/x")));
    EXPECT_EQ(backend_.stopped, std::vector<FileURL>{url("/Users/user/Library")});
}

TEST_F(SandboxTest, GrantsSurviveARestart) {
    grant("/Users/user/Library");
    grant("/Users/user/Missing");  // no bookmark for a missing folder: nothing saved
    EXPECT_EQ(defaults_.keys(), std::vector<std::string>{"bd_file:///Users/user/Library/"});

    UserDefaults reread(defaults_.filePath());
    AppSandboxFileAccess later(reread, {});
    EXPECT_TRUE(later.startAceess(url("/Users/user/Library/Containers"), false));
}

}  // namespace
}  // namespace sysmend
