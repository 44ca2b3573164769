#include "adware/signature_loader.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <sstream>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "adware/nsdata_aes.h"
#include "adware/signature_database.h"
#include "adware/signature_lint.h"
#include "platform/keyed_archive.h"
#include "platform/named_exception.h"
#include "sample/fake_volume.h"
#include "support/run_command.h"

namespace sysmend {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;

Value threat(const std::string& name, Array launch) {
    Dictionary entry;
    entry.set("name", name);
    entry.set("launch", std::move(launch));
    return entry;
}

std::string text(const Data& bytes) {
    return std::string(bytes.begin(), bytes.end());
}

// Each test gets its own resource folder, and leaves the loader as it found it.
class SignatureLoader : public ::testing::Test {
  protected:
    SignatureLoader() { setResourceFolder(folder_.root()); }
    ~SignatureLoader() override {
        setResourceFolder("");
        setSignatureFile("");
    }

    void writeResource(const Data& contents) { folder_.write("/.cx", text(contents)); }

    sample::FakeVolume folder_;
};

TEST_F(SignatureLoader, MissingResourceIsAnEmptyDatabase) {
    EXPECT_EQ(loadSignatureDatabase(), Value(Array{}));
    setSignatureFile(folder_.host("/elsewhere.cx"));
    EXPECT_EQ(loadSignatureDatabase(), Value(Array{}));
}

TEST_F(SignatureLoader, LoadsTheEntriesInOrder) {
    const Value database =
        Array{threat("Zeta", {"z.plist"}), threat("Alpha", {"a.plist", "b.plist"}), Dictionary{}};
    writeResource(encryptSignatureDatabase(database));
    xxffucckxx loader;
    EXPECT_EQ(loader.var, *xxs_su->key);
    EXPECT_EQ(loader.var1, database);

    // The CLI's --signatures names the file itself, whatever it is called.
    folder_.write("/custom", text(encryptSignatureDatabase(Array{threat("Only", {})})));
    setSignatureFile(folder_.host("/custom"));
    EXPECT_EQ(loadSignatureDatabase(), Value(Array{threat("Only", {})}));
}

TEST_F(SignatureLoader, AResourceThatDoesNotDecryptAndDecodeRaises) {
    const Data archive = keyed_archive::encode(Array{threat("Foo", {"foo.plist"})});
    const Data good = encryptSignatureDatabase(Array{threat("Foo", {"foo.plist"})});
    const Data notAnArchive = *stringToData(plist::serialize(Array{"x"}, plist::Format::Binary),
                                            "net.qvarlo.signature_data");
    const struct {
        const char* what;
        Data contents;
    } cases[] = {
        {"another key", *stringToData(archive, "net.qvarlo.signature_datb")},
        {"truncated to a length not a multiple of 16", Data(good.begin(), good.end() - 5)},
        {"last block cut off", Data(good.begin(), good.end() - 16)},
        {"an archive never encrypted", archive},
        {"a property list that is not an archive", notAnArchive},
        {"empty", Data{}},
    };
    for (const auto& c : cases) {
        writeResource(c.contents);
        try {
            loadSignatureDatabase();
            ADD_FAILURE() << c.what << ": no exception";
        } catch (const NamedException& e) {
            EXPECT_EQ(e.name(), "error-code-1000") << c.what;
            EXPECT_EQ(e.reason(), "has bug") << c.what;
        }
    }
}

TEST_F(SignatureLoader, InitializeFillsTheTableOnce) {
    xxffucckxx::initialize();
    xxs_su_table* const table = xxs_su;
    const xxs_su_table contents = *table;
    xxffucckxx::initialize();
    xxffucckxx loader;
    EXPECT_EQ(xxs_su, table);
    EXPECT_EQ(xxs_su->decrypt, contents.decrypt);
    EXPECT_EQ(xxs_su->storedString, contents.storedString);
    EXPECT_EQ(xxs_su->load, contents.load);
    EXPECT_EQ(xxs_su->key, contents.key);
    EXPECT_EQ(xs_g().size(), 25u);
}

TEST_F(SignatureLoader, ShippedDatabaseIsFoundInTheBuildTree) {
    // Nothing set: the lookup a program run from the build tree makes.
    setResourceFolder("");
    const char* saved = std::getenv("SYSMEND_RESOURCES");
    const std::string savedValue = saved ? saved : "";
    ::unsetenv("SYSMEND_RESOURCES");
    const Value database = loadSignatureDatabase();
    if (saved)
        ::setenv("SYSMEND_RESOURCES", savedValue.c_str(), 1);

    ASSERT_NE(database.asArray(), nullptr);
    EXPECT_EQ(database.asArray()->size(), 215u) << "resource folder: " << resourceFolder();
    for (const Value& entry : *database.asArray()) {
        EXPECT_TRUE(entry.find("name") && entry.find("name")->asString());
        EXPECT_FALSE(entry.find("sources"));
    }
}

TEST(SignatureSource, ShapeErrorsNameTheEntryAndKey) {
    const struct {
        const char* source;
        const char* error;
    } cases[] = {
        {R"({"name": "x"})", "the top level is not an array of threats"},
        {R"([{"name": "ok"}, 7])", "entry 1: not an object"},
        {R"([{"launch": []}])", "entry 0: no \"name\""},
        {R"([{"name": ["x"]}])", "entry 0: \"name\" must be a string"},
        {R"([{"name": "A"}, {"name": "B", "launch": "one.plist"}])",
         "entry 1 (\"B\"): \"launch\" must be an array of strings"},
        {R"([{"name": "A", "path": ["/ok", 3]}])",
         "entry 0 (\"A\"): \"path\" must be an array of strings"},
        {R"([{"name": "A\nB", "lunch": []}])", "entry 0 (\"A\\nB\"): unknown key \"lunch\""},
    };
    for (const auto& c : cases) {
        std::string error;
        EXPECT_FALSE(signatureDatabaseFromSource(nlohmann::ordered_json::parse(c.source), &error))
            << c.source;
        EXPECT_EQ(error, c.error);
    }
}

TEST(SignatureLintTest, NamesEachProblemWithItsEntry) {
    const auto lint = [](const char* source) {
        std::vector<std::string> lines;
        for (const SignatureProblem& problem :
             lintSignatureSource(nlohmann::ordered_json::parse(source))) {
            std::ostringstream line;
            line << problem;
            lines.push_back(line.str());
        }
        return lines;
    };
    using Lines = std::vector<std::string>;
    EXPECT_EQ(lint(R"({"name": "A"})"), Lines{"error: the top level is not an array of threats"});
    EXPECT_EQ(lint(R"([{"name": "Fine", "sources": [], "launch": ["com.fine.plist"],
                       "path": ["/Library/Fine"], "app": ["Fine.app"], "extensions": ["FineExt"]}])"),
              Lines{});
    EXPECT_EQ(
        lint(R"([{"sources": [], "app": ["Tiny", "", 7]},
                 {"name": "B", "path": ["Library/B", "/Users/bob/B", "~/B", "/Library/B"]},
                 {"name": "C", "sources": [], "path": ["/Library/B"], "launch": ["C", "c.plist", "c.plist"],
                  "extensions": ["ShadyExt", "shadyext"], "preferences": "p.xml", "lunch": []}])"),
        (Lines{
            R"(error: entry 0 (""): no "name" string)",
            R"(error: entry 0 (""): "app" string 0 "Tiny" is shorter than 6 characters, too short to match only what it names)",
            R"(error: entry 0 (""): "app" string 1 "" is empty)",
            R"(error: entry 0 (""): "app" string 2 is not a string)",
            R"(warning: entry 1 ("B"): no "sources")",
            R"(error: entry 1 ("B"): "path" string 0 "Library/B" is not an absolute path)",
            R"(error: entry 1 ("B"): "path" string 1 "/Users/bob/B" lies in a home folder, which no absolute path names on every Mac)",
            R"(error: entry 1 ("B"): "path" string 2 "~/B" is not an absolute path)",
            R"(error: entry 2 ("C"): "path" string 0 "/Library/B" is already in entry 1 ("B"))",
            R"(warning: entry 2 ("C"): "launch" string 0 "C" has no file extension (launchd job files end in ".plist"))",
            R"(error: entry 2 ("C"): "launch" string 2 "c.plist" is already in entry 2 ("C"))",
            R"(warning: entry 2 ("C"): "extensions" string 1 "shadyext" differs only in case from "ShadyExt" in entry 2)",
            R"(error: entry 2 ("C"): "preferences" is not an array)",
            R"(error: entry 2 ("C"): unknown key "lunch")",
        }));
}

class SignaturesCommand : public ::testing::Test {
  protected:
    sample::FakeVolume folder_;
};

TEST_F(SignaturesCommand, BuildThenDumpGivesBackTheSourceWithoutSources) {
    const std::string source = R"([
  {"name": "Zeta Ads", "sources": ["https://example.com"], "path": ["/Library/Zeta"],
   "launch": ["com.zeta.plist"]},
  {"name": "Ünïcode ✓", "extensions": [], "preferences": ["p"], "launchContent": ["l"],
   "app": ["Zeta.app"], "sources": {"any": "shape"}}
])";
    folder_.write("/threats.json", source);
    const std::string out = folder_.host("/out.cx");

    auto built = testing::runCommand(
        {SYSMEND_CLI, "signatures", "build", folder_.host("/threats.json"), out, "--json"});
    ASSERT_EQ(built.status, 0) << built.err;
    auto dumped = testing::runCommand({SYSMEND_CLI, "signatures", "dump", out});
    ASSERT_EQ(dumped.status, 0) << dumped.err;

    auto expected = nlohmann::ordered_json::parse(source);
    for (auto& entry : expected)
        entry.erase("sources");
    EXPECT_EQ(nlohmann::ordered_json::parse(dumped.out).dump(), expected.dump());
}

TEST_F(SignaturesCommand, FailuresExitWithOneLine) {
    folder_.write("/bad.json", R"([{"name": "A"}, {"name": "B", "launch": [1]}])");
    folder_.write("/broken.json", "[{");
    folder_.write("/short.json", R"([{"name": "A", "app": ["A.app"], "sources": []}])");
    folder_.write("/garbage.cx", std::string(48, 'x'));
    const std::string out = folder_.host("/out.cx");
    const struct {
        std::vector<std::string> argv;
        int status;
        const char* mention;
    } cases[] = {
        {{"build", folder_.host("/bad.json"), out}, 1, "entry 1 (\"B\"): \"launch\""},
        {{"build", folder_.host("/broken.json"), out}, 1, "not valid JSON"},
        {{"build", folder_.host("/missing.json"), out}, 1, "cannot read"},
        {{"dump", folder_.host("/garbage.cx")}, 1, "error-code-1000: has bug"},
        {{"dump", folder_.host("/missing.cx")}, 1, "cannot read"},
        {{"build", folder_.host("/bad.json")}, 2, "needs"},
        {{"frobnicate"}, 2, "unknown action"},
        {{"build", folder_.host("/short.json"), out}, 1, "error: entry 0 (\"A\"): \"app\""},
        {{}, 2, "build, dump or lint"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> argv{SYSMEND_CLI, "signatures"};
        argv.insert(argv.end(), c.argv.begin(), c.argv.end());
        const auto r = testing::runCommand(argv);
        EXPECT_EQ(r.status, c.status) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_NE(r.err.find(c.mention), std::string::npos) << r.err;
    }
    EXPECT_NE(::access(out.c_str(), F_OK), 0);  // nothing written, not even half a file

    // lint reports on standard output; errors make its status 1.
    const auto linted =
        testing::runCommand({SYSMEND_CLI, "signatures", "lint", folder_.host("/short.json")});
    EXPECT_EQ(linted.status, 1);
    EXPECT_NE(linted.out.find("\"A.app\" is shorter than 6"), std::string::npos) << linted.out;
}

}  // namespace
}  // namespace sysmend
