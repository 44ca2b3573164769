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
using URLs = std::vector<FileURL>;

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
    URLs started, stopped;

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
        text = request.title + "|" + request.prompt + "|" + request.message;
        return answer;
    }

    std::optional<FileURL> answer, directory;
    int runs = 0;
    std::optional<AppSandboxFileAccessOpenSavePanelDelegate> delegate;
    std::string text;
};

plist::Dictionary infoNamed(const char* key, const char* name) {
    plist::Dictionary info;
    info.set(key, name);
    return info;
}

FileURL url(std::string_view volumePath) {
    return FileURL::fileURLWithPath(volumePath);
}

class SandboxTest : public ::testing::Test {
  protected:
    SandboxTest() {
        vol_.mkdir("/Users/user/Library/Containers/x");
        access_.setPermissionPanel(&panel_);
    }

    bool hasEntry(std::string_view volumePath) {
        return defaults_.dataForKey(Persist::keyForBookmarkDataForURL(url(volumePath))).has_value();
    }
    void grant(std::string_view volumePath) { access_.persistPermissionPath(volumePath); }
    std::optional<Data> saved(std::string_view volumePath) {
        return Persist::bookmarkDataForURL(url(volumePath), defaults_);
    }

    sample::FakeVolume vol_{"user"};
    ScopedVolume scoped_{vol_.volume()};
    CountingBackend backend_;
    ScopedBookmarkBackend installed_{backend_};
    UserDefaults defaults_{vol_.host("/.prefs/grants.plist")};
    FakePanel panel_;
    const AppSandboxFileAccess::AccessBlock noop_ = [] {};
    AppSandboxFileAccess access_{defaults_, infoNamed("CFBundleName", "Sysmend")};
};

TEST_F(SandboxTest, UrlsAreSpelledAsFoundationSpellsThem) {
    // An existing folder's URL ends in a slash, and the bookmark key is "bd_" + the URL.
    EXPECT_EQ(Persist::keyForBookmarkDataForURL(url("/Users/user/Library/missing")),
              "bd_file:///Users/user/Library/missing");
    for (auto [path, expected] : std::vector<std::pair<std::string, std::string>>{
             {"/", "file:///"},
             {"/x/", "file:///x/"},
             {"/Users/user/My Files/Résumé", "file:///Users/user/My%20Files/R%C3%A9sum%C3%A9"},
             {"/a%#?[]^`{}|\"<>\\b", "file:///a%25%23%3F%5B%5D%5E%60%7B%7D%7C%22%3C%3E%5Cb"},
             {"/:@!$&'()*+,;=~-._", "file:///:@!$&'()*+,;=~-._"}})
        EXPECT_EQ(url(path).absoluteString(), expected);
    EXPECT_EQ(FileURL::fileURLWithPath("/x/", false).absoluteString(), "file:///x");

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
    for (auto [path, expected] : std::vector<std::pair<std::string, std::string>>{
             {"/Users/user/abs/Containers", "/Users/user/Library/Containers"},
             {"/Users/user/chain", "/Users/user/Library/Containers/x"},
             {"/Users/user/up/Users", "/Users"},
             {"/Users/user/loop/a", "/Users/user/loop/a"},
             {"/Users/user/abs/missing/deeper", "/Users/user/Library/missing/deeper"},
             {"/Users/user/nothing/here", "/Users/user/nothing/here"}})
        EXPECT_EQ(url(path).URLByResolvingSymlinksInPath(), url(expected)) << path;
}

TEST_F(SandboxTest, NearestSavedAncestorCoversAPathButTheRootNever) {
    Persist::setBookmarkData({1}, url("/Users/user/Library"), defaults_);
    Persist::setBookmarkData({9}, url("/"), defaults_);
    EXPECT_EQ(saved("/Users/user/Library/Containers/x"), Data{1});
    Persist::setBookmarkData({2}, url("/Users/user/Library/Containers"), defaults_);
    EXPECT_EQ(saved("/Users/user/Library/Containers/x"), Data{2});
    EXPECT_EQ(saved("/Users/user"), std::nullopt);
    EXPECT_EQ(saved("/"), std::nullopt);

    Persist::removeBookmarkData(url("/Users/user/Library/Containers/x"), defaults_);
    Persist::removeBookmarkData(url("/Users/user/Library/Containers"), defaults_);
    EXPECT_EQ(saved("/Users/user/Library/Containers/x"), Data{1});
}

TEST_F(SandboxTest, PanelStartsAtTheNearestExistingFolderAndEnablesOnlyItAndItsAncestors) {
    vol_.mkdir("/Users/Shared");
    EXPECT_EQ(access_.askPermissionForUrl(url("/Users/user/Missing/Deeper")), std::nullopt);
    ASSERT_EQ(panel_.runs, 1);
    EXPECT_EQ(panel_.directory, url("/Users/user"));
    EXPECT_EQ(panel_.text,
              "Allow Access|Allow|Sysmend needs to access this path to continue. "
              "Click Allow to continue.");
    for (const char* p : {"/", "/Users", "/Users/user"})
        EXPECT_TRUE(panel_.delegate->shouldEnableURL(url(p))) << p;
    for (const char* p : {"/Users/User", "/Users/Shared", "/Users/user/Library"})
        EXPECT_FALSE(panel_.delegate->shouldEnableURL(url(p))) << p;

    access_.setPermissionPanel(nullptr);
    EXPECT_EQ(access_.askPermissionForUrl(url("/Users/user")), std::nullopt);
    EXPECT_EQ(panel_.runs, 1);

    // The message names the application by its display name first.
    EXPECT_EQ(AppSandboxFileAccess(defaults_, infoNamed("CFBundleDisplayName", "MyApp")).message(),
              "MyApp needs to access this path to continue. Click Allow to continue.");
    plist::Dictionary both = infoNamed("CFBundleName", "Short");
    both.set("CFBundleDisplayName", "Display");
    EXPECT_EQ(AppSandboxFileAccess(defaults_, both).message().substr(0, 8), "Display ");
    EXPECT_EQ(AppSandboxFileAccess(defaults_, {}).message().substr(0, 7), "(null) ");
}

TEST_F(SandboxTest, AChosenGrantIsSavedThenUsedOnceAndForgotten) {
    FileURL library = url("/Users/user/Library");
    int ran = 0;
    auto block = [&] { ++ran; };
    // Refused: nothing runs, nothing is stored.
    EXPECT_FALSE(access_.accessFileURL(library, block, true));
    EXPECT_TRUE(defaults_.keys().empty());

    panel_.answer = library;
    EXPECT_TRUE(access_.accessFileURL(library, block, true));
    EXPECT_EQ(panel_.runs, 2);
    EXPECT_TRUE(hasEntry("/Users/user/Library"));
    // A fresh grant under exactly this URL's key is used and then removed...
    EXPECT_TRUE(access_.accessFileURL(library, block, false));
    EXPECT_EQ(panel_.runs, 2);
    EXPECT_FALSE(hasEntry("/Users/user/Library"));
    // ...so the next call asks again.
    EXPECT_TRUE(access_.accessFilePath("/Users/user/Library", block, false));
    EXPECT_EQ(panel_.runs, 3);
    EXPECT_EQ(ran, 3);
    EXPECT_EQ(backend_.started, URLs(3, library));
    EXPECT_TRUE(backend_.stopped.empty());
}

TEST_F(SandboxTest, AnAncestorsGrantIsUsedThroughLinksAndKept) {
    // startAceess never asks.
    panel_.answer = url("/Users/user");
    EXPECT_FALSE(access_.startAceess(url("/Users/user"), true));
    EXPECT_TRUE(access_.stopAccess(url("/Users/user/Library")));
    EXPECT_TRUE(defaults_.keys().empty());

    grant("/Users/user/Library");
    vol_.symlink("/Users/user/link", "/Users/user/Library/Containers");
    bool ran = false;
    auto block = [&] { ran = true; };
    EXPECT_TRUE(access_.accessFilePath("/Users/user/link/x", block, false));
    EXPECT_TRUE(ran);
    EXPECT_TRUE(access_.startAceess(url("/Users/user/Library/Containers"), true));
    EXPECT_EQ(panel_.runs, 0);
    EXPECT_TRUE(hasEntry("/Users/user/Library"));
    EXPECT_EQ(backend_.started, URLs(2, url("/Users/user/Library")));
    EXPECT_TRUE(backend_.stopped.empty());
    EXPECT_TRUE(access_.stopAccess(url("/Users/user/Library/Containers/x")));
    EXPECT_EQ(backend_.stopped, URLs{url("/Users/user/Library")});
}

TEST_F(SandboxTest, StaleGrantIsUsedAndSavedAgainOnlyWhenPersisting) {
    grant("/Users/user/Library");
    std::string key = Persist::keyForBookmarkDataForURL(url("/Users/user/Library"));
    Data before = *defaults_.dataForKey(key);
    // A new, empty folder under the same name; the old one goes only after the new one
    // exists, so the new one cannot reuse its inode.
    std::string host = vol_.host("/Users/user/Library");
    fs::rename(host, host + ".old");
    fs::create_directory(host);
    fs::remove_all(host + ".old");

    EXPECT_TRUE(access_.startAceess(url("/Users/user/Library"), false));
    EXPECT_EQ(defaults_.dataForKey(key), before);
    EXPECT_TRUE(access_.startAceess(url("/Users/user/Library"), true));
    Data after = *defaults_.dataForKey(key);
    EXPECT_NE(after, before);
    bool stale = true;
    EXPECT_EQ(PortableBookmarkBackend().resolve(after, &stale), url("/Users/user/Library"));
    EXPECT_FALSE(stale);
    EXPECT_EQ(backend_.started.size(), 2u);

    // A stale grant for exactly the requested folder is saved again, not removed, when kept.
    backend_.forceStale = true;
    EXPECT_TRUE(access_.accessFilePath("/Users/user/Library", noop_, true));
    EXPECT_TRUE(hasEntry("/Users/user/Library"));
    EXPECT_TRUE(access_.accessFilePath("/Users/user/Library", noop_, false));
    EXPECT_FALSE(hasEntry("/Users/user/Library"));
    EXPECT_EQ(panel_.runs, 0);
}

TEST_F(SandboxTest, GrantForAFolderThatIsGoneOrUnreadableGivesNoAccess) {
    grant("/Users/user/Library/Containers");
    fs::remove_all(vol_.host("/Users/user/Library/Containers"));
    // The path below the grant's folder still finds the grant by walking up.
    EXPECT_FALSE(access_.startAceess(url("/Users/user/Library/Containers/x"), true));
    EXPECT_FALSE(access_.accessFilePath("/Users/user/Library/Containers/x", noop_, true));
    EXPECT_EQ(panel_.runs, 1);

    Persist::setBookmarkData({'n', 'o', 't', ' ', 'o', 'n', 'e'}, url("/Users/user"), defaults_);
    EXPECT_FALSE(access_.startAceess(url("/Users/user"), true));
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
