#include <gtest/gtest.h>
#include <pthread.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

#include "platform/plist.h"

namespace sysmend::plist {
namespace {

const std::string kData = std::string(SYSMEND_TEST_DATA) + "/plist/";

std::span<const std::uint8_t> bytesOf(std::string_view s) {
    return {reinterpret_cast<const std::uint8_t*>(s.data()), s.size()};
}

Value parseText(std::string_view text) {
    std::string error;
    auto value = parse(bytesOf(text), {}, &error);
    EXPECT_TRUE(value) << error << "\n" << text;
    return value.value_or(Value());
}

Value readFixture(const std::string& name) {
    std::string error;
    auto value = readFile(kData + name, {}, &error);
    EXPECT_TRUE(value) << name << ": " << error;
    return value.value_or(Value());
}

// Follows a path of dictionary keys and array indices ("Sockets/Listeners/0").
const Value& at(const Value& root, std::string_view path) {
    static const Value missing;
    const Value* v = &root;
    while (!path.empty() && v != &missing) {
        const std::size_t slash = path.find('/');
        const std::string_view part = path.substr(0, slash);
        path = slash == std::string_view::npos ? "" : path.substr(slash + 1);
        if (const Array* a = v->asArray()) {
            const std::size_t i = std::stoul(std::string(part));
            v = i < a->size() ? &(*a)[i] : &missing;
        } else {
            const Value* found = v->find(part);
            v = found ? found : &missing;
        }
    }
    return *v;
}

std::string str(const Value& v) {
    return v.asString() ? *v.asString() : "<not a string: " + describe(v) + ">";
}

Date referenceDate(double seconds) {
    return Date(std::chrono::seconds(978307200)) +
           std::chrono::duration_cast<Date::duration>(std::chrono::duration<double>(seconds));
}

// Assembles a binary list from raw objects (marker and payload each), with one-byte offsets
// and references, so tests can state exactly the bytes a hostile writer would.
Data bplist(const std::vector<Data>& objects, std::uint64_t top = 0) {
    Data out = {'b', 'p', 'l', 'i', 's', 't', '0', '0'};
    Data offsets;
    for (const Data& object : objects) {
        offsets.push_back(static_cast<std::uint8_t>(out.size()));
        out.insert(out.end(), object.begin(), object.end());
    }
    const std::size_t table = out.size();
    out.insert(out.end(), offsets.begin(), offsets.end());
    Data trailer(32, 0);
    trailer[6] = 1;
    trailer[7] = 1;
    trailer[15] = static_cast<std::uint8_t>(objects.size());
    trailer[23] = static_cast<std::uint8_t>(top);
    trailer[31] = static_cast<std::uint8_t>(table);
    out.insert(out.end(), trailer.begin(), trailer.end());
    return out;
}

ReadLimits limitsWith(std::size_t ReadLimits::*field, std::size_t value) {
    ReadLimits limits;
    limits.*field = value;
    return limits;
}

std::optional<Value> parseBytes(const Data& bytes, std::string* error = nullptr,
                                const ReadLimits& limits = {}) {
    return parse(bytes, limits, error);
}

TEST(PlistFixtureTest, ReadsLaunchdJobsAsWritten) {
    const Value mdns = readFixture("launchd/LaunchDaemonInfo.plist");
    EXPECT_EQ(str(at(mdns, "Label")), "com.apple.mDNSResponder");
    // This key is indented with spaces among tab-indented ones.
    EXPECT_EQ(at(mdns, "MachServices/com.apple.mDNSResponder.dnsproxy"), Value(true));
    EXPECT_EQ(at(mdns, "Sockets/Listeners/SockPathMode"), Value(438));
    EXPECT_EQ(str(at(mdns, "ProgramArguments/0")), "/usr/sbin/mDNSResponder");

    const Value dnsextd = readFixture("launchd/LaunchDaemonInfo.dnsextd.plist");
    EXPECT_EQ(at(dnsextd, "Disabled"), Value(true));
    EXPECT_EQ(at(dnsextd, "OnDemand"), Value(false));

    const Value lulu = readFixture("launchd/com.objective-see.lulu.plist");
    EXPECT_EQ(str(at(lulu, "Label")), "com.objective-see.lulu");
    ASSERT_TRUE(lulu.asDictionary());
    EXPECT_EQ(lulu.asDictionary()->entries().front().first, "MachServices");  // file order kept

    const Value job = readFixture("launchd/launchd.plist");
    EXPECT_EQ(str(at(job, "Program")), "/Test");
    EXPECT_EQ(at(job, "Nice"), Value(-5));
    EXPECT_EQ(at(job, "StartCalendarInterval/1/Hour"), Value(13));
    EXPECT_EQ(str(at(job, "WatchPaths/1")), "/tmp/exist");

    EXPECT_EQ(str(at(readFixture("launchd/launchd.noprogram.plist"), "Label")), "foo");
    EXPECT_EQ(str(at(readFixture("launchd/test_launchd.plist"), "Label")),
              "com.apple.mDNSResponder");
    EXPECT_TRUE(at(readFixture("launchd/io.osquery.agent.plist"), "Label").asString());
}

TEST(PlistFixtureTest, ReadsInfoPlists) {
    const Value booth = readFixture("infoplist/test_info.plist");
    EXPECT_EQ(str(at(booth, "CFBundleIdentifier")), "com.apple.PhotoBooth");
    EXPECT_EQ(str(at(booth, "CFBundleDocumentTypes/0/CFBundleTypeOSTypes/0")), "PBLb");
    EXPECT_EQ(str(at(booth, "DTSDKName")), "");
    EXPECT_TRUE(at(booth, "NSSupportsSuddenTermination").boolValue());  // the string "YES"

    const Value lulu = readFixture("infoplist/LuLu.app/Contents/Info.plist");
    EXPECT_EQ(str(at(lulu, "CFBundleExecutable")), "LuLu");
    EXPECT_NE(str(at(lulu, "NSHumanReadableCopyright")).find("\u00a9"), std::string::npos);
}

TEST(PlistFixtureTest, ReadsFirewallFilesInBothFormats) {
    const Value xml = readFixture("alf/test_alf.plist");
    EXPECT_EQ(at(xml, "globalstate").integerValue(), 0);
    EXPECT_EQ(str(at(xml, "exceptions/1/path")), "/usr/sbin/mDNSResponder");

    const Value binary = readFixture("alf/test_alf_nested_path.plist");
    EXPECT_EQ(at(binary, "globalstate").integerValue(), 1);
    EXPECT_EQ(str(at(binary, "version")), "1.6");
    EXPECT_EQ(str(at(binary, "firewall/Remote Login - SSH/proc")), "sshd-keygen-wrapper");
    EXPECT_EQ(str(at(binary, "explicitauths/6/id")), "com.apple.ksh");
    // The alias is itself an XML list, holding base64 data across several lines.
    const Data* alias = at(binary, "applications/0/alias").asData();
    ASSERT_TRUE(alias);
    const auto inner = parse(*alias);
    ASSERT_TRUE(inner);
    ASSERT_TRUE(inner->asData());
    EXPECT_EQ(inner->asData()->size(), 480u);
}

TEST(PlistFixtureTest, ReadsKeyedArchivesWithUids) {
    const Value archive = readFixture("keyedarchive/NSKeyedArchiver.plist");
    EXPECT_EQ(str(at(archive, "$archiver")), "NSKeyedArchiver");
    EXPECT_EQ(at(archive, "$top/root"), Value(Uid{1}));
    EXPECT_EQ(at(archive, "$objects/1/NS.keys/7"), Value(Uid{10}));
    EXPECT_EQ(at(archive, "$objects/13"), Value(true));
    EXPECT_EQ(at(archive, "$objects/14/NS.data"), Value(Data{'D', 'A', 'T', 'A', '\n'}));
    EXPECT_EQ(at(archive, "$objects/16/NS.time"), Value(729452449.0));
    EXPECT_EQ(at(archive, "$objects/20"), Value(2.7));
    EXPECT_EQ(at(archive, "$objects/21"), Value(98));

    const Value items = readFixture("keyedarchive/backgrounditems.btm");
    EXPECT_EQ(at(items, "$objects/7/bookmark"), Value(Uid{0}));
    const Data* bookmark = at(items, "$objects/14").asData();
    ASSERT_TRUE(bookmark);
    EXPECT_EQ(std::string(bookmark->begin(), bookmark->begin() + 4), "book");
}

TEST(PlistFixtureTest, SharedObjectBombDecodesOnceAndShares) {
    std::string error;
    const auto bomb = readFile(kData + "shared-object-bomb.bplist", {}, &error);
    ASSERT_TRUE(bomb) << error;
    // 24 levels of arrays whose two elements are the same shared array: nothing was expanded.
    const Value* level = &*bomb;
    int depth = 0;
    while (const Array* a = level->asArray()) {
        ASSERT_EQ(a->size(), 2u);
        EXPECT_EQ((*a)[0].asArray(), (*a)[1].asArray());
        level = &(*a)[0];
        ++depth;
    }
    EXPECT_EQ(depth, 24);
    EXPECT_EQ(*level, Value(1));
    // Written back, each shared array is still one object.
    EXPECT_LT(serialize(*bomb, Format::Binary).size(), 512u);
    EXPECT_LT(describe(*bomb).size(), 70u * 1024);
}

TEST(PlistXmlTest, AcceptsWhatHandWrittenListsContain) {
    const Value v = parseText(R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist SYSTEM "file://localhost/System/Library/DTDs/PropertyList.dtd" [
  <!ENTITY unused "x>y">
]>
<!-- a comment before the root -->
<plist version="1.0">
<dict>
    <key>text</key>	<string>a &amp; b &lt;c&gt; &quot;d&quot; &apos;e&apos; &#233;&#x1F600;</string>
    <!-- comment between entries -->
    <key>cdata</key><string><![CDATA[<not a tag> & raw]]></string>
    <key>hex</key><integer> 0x1F </integer>
    <key>negative</key><integer>-9223372036854775808</integer>
    <key>unsigned</key><integer>18446744073709551615</integer>
    <key>real</key><real>-1.5e3</real>
    <key>infinity</key><real>+infinity</real>
    <key>date</key><date>2001-01-01T00:00:01Z</date>
    <key>data</key><data>
        AAEC
        /w==
    </data>
    <key>empty</key><string/>
    <key>uid</key><dict><key>CF$UID</key><integer>7</integer></dict>
    <key>list</key><array><true/><false></false><dict/><array/></array>
</dict>
</plist>
trailing text is not looked at)");
    EXPECT_EQ(str(at(v, "text")), "a & b <c> \"d\" 'e' \u00e9\U0001F600");
    EXPECT_EQ(str(at(v, "cdata")), "<not a tag> & raw");
    EXPECT_EQ(at(v, "hex"), Value(31));
    EXPECT_EQ(at(v, "negative"), Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(at(v, "unsigned"), Value(-1));
    EXPECT_EQ(at(v, "real"), Value(-1500.0));
    EXPECT_EQ(at(v, "infinity"), Value(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(at(v, "date"), Value(referenceDate(1)));
    EXPECT_EQ(at(v, "data"), Value(Data{0, 1, 2, 0xFF}));
    EXPECT_EQ(at(v, "empty"), Value(""));
    EXPECT_EQ(at(v, "uid"), Value(Uid{7}));
    EXPECT_EQ(at(v, "list"), Value(Array{true, false, Dictionary{}, Array{}}));

    // No <plist> wrapper; UTF-8 and UTF-16 byte-order marks.
    EXPECT_EQ(parseText("<array><integer>1</integer></array>"), Value(Array{1}));
    EXPECT_EQ(parseText("\xEF\xBB\xBF<string>x</string>"), Value("x"));
    const std::string utf16("\xFF\xFE<\0s\0t\0r\0i\0n\0g\0>\0\xE9\0<\0/\0s\0t\0r\0i\0n\0g\0>\0",
                            38);
    EXPECT_EQ(parseText(utf16), Value("\u00e9"));
}

TEST(PlistXmlTest, RejectsMalformedDocuments) {
    const char* cases[] = {
        "",
        "{ Label = foo; }",
        "<plist><dict><key>a</key></dict></plist>",             // key without value
        "<plist><dict><string>a</string></dict></plist>",       // value without key
        "<plist><dict><key>a</key><string>b</string></plist>",  // unclosed dict
        "<plist><array><string>a</array></plist>",              // mismatched tag
        "<plist><array>text<true/></array></plist>",            // text in a container
        "<plist><integer>12ab</integer></plist>",
        "<plist><integer>-9223372036854775809</integer></plist>",
        "<plist><real>1.2.3</real></plist>",
        "<plist><date>2001-02-30T00:00:00Z</date></plist>",
        "<plist><string>&bogus;</string></plist>",
        "<plist><string>&#0;</string></plist>",
        "<plist><true>x</true></plist>",
        "<plist><foo/></plist>",
        "<plist></plist>",
        "<plist><string>unterminated",
        "<plist><!-- unterminated comment <string/></plist>",
    };
    for (const char* text : cases) {
        std::string error;
        EXPECT_FALSE(parse(bytesOf(text), {}, &error)) << text;
        EXPECT_FALSE(error.empty()) << text;
    }
}

TEST(PlistXmlTest, EnforcesLimits) {
    std::string error;
    EXPECT_FALSE(parse(bytesOf("<array><array><true/></array></array>"),
                       limitsWith(&ReadLimits::maxDepth, 1), &error));
    EXPECT_EQ(error, "nested too deeply");
    EXPECT_FALSE(parse(bytesOf("<array><true/><true/><true/></array>"),
                       limitsWith(&ReadLimits::maxObjects, 3)));
    EXPECT_TRUE(
        parse(bytesOf("<array><true/><true/></array>"), limitsWith(&ReadLimits::maxObjects, 3)));
    EXPECT_FALSE(
        parse(bytesOf("<string>12345</string>"), limitsWith(&ReadLimits::maxBytes, 10), &error));
    EXPECT_EQ(error, "larger than 10 bytes");
}

TEST(PlistXmlTest, WritesFoundationLayout) {
    Dictionary inner;
    inner.set("data", Data{'h', 'i'});
    inner.set("empty", Array{});
    Dictionary root;
    root.set("Label", "a & <b>");
    root.set("list", Array{1, 2.5, true, Uid{3}});
    root.set("inner", std::move(inner));
    root.set("when", referenceDate(0));
    const Data xml = serialize(Value(std::move(root)), Format::Xml);
    std::ifstream expected(kData + "foundation-layout.plist", std::ios::binary);
    EXPECT_EQ(std::string(xml.begin(), xml.end()),
              std::string(std::istreambuf_iterator<char>(expected), {}));
}

Value everyKind() {
    Dictionary nested;
    nested.set("zero", 0);
    nested.set("e\u0301t\u00e9 \U0001F600", "caf\u00e9 \u65e5\u672c");
    using limits64 = std::numeric_limits<std::int64_t>;
    const auto uid = [](std::uint64_t n) { return Value(Uid{n}); };
    Array elements;
    for (const Array& group : {
             Array{false, true, -1, 255, 256, 65536, limits64::max(), limits64::min()},
             Array{0.1, -0.0, std::nan(""), std::numeric_limits<double>::infinity()},
             Array{referenceDate(-86400 * 365.0), referenceDate(729452449)},
             Array{uid(0), uid(70000), uid(std::numeric_limits<std::uint64_t>::max())},
             Array{Data(), "", "<&>", std::move(nested), Array(), Dictionary()},
         }) {
        elements.insert(elements.end(), group.begin(), group.end());
    }
    Data bytes(1000);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7);
    elements.push_back(std::move(bytes));
    Dictionary many;  // more than a count nibble and a one-byte reference can hold
    for (int i = 0; i < 300; ++i)
        many.set("k" + std::to_string(i), Array(i % 20, Value(i)));
    elements.push_back(std::move(many));
    return Value(std::move(elements));
}

TEST(PlistRoundTripTest, EveryKindSurvivesBothFormats) {
    const Value original = everyKind();
    for (const Format format : {Format::Binary, Format::Xml}) {
        std::string error;
        const auto back = parse(serialize(original, format), {}, &error);
        ASSERT_TRUE(back) << error;
        EXPECT_EQ(*back, original) << (format == Format::Xml ? "xml" : "binary");
    }
}

TEST(PlistRoundTripTest, RealFilesSurviveBothFormats) {
    for (const char* name :
         {"launchd/launchd.plist", "alf/test_alf_nested_path.plist",
          "keyedarchive/backgrounditems.btm", "infoplist/LuLu.app/Contents/Info.plist"}) {
        const Value original = readFixture(name);
        for (const Format format : {Format::Binary, Format::Xml}) {
            EXPECT_EQ(parse(serialize(original, format)), original) << name;
        }
    }
}

TEST(PlistBinaryTest, ReadsEveryMarker) {
    const Value v = *parseBytes(bplist({
        {0xAD, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13},  // array of objects 1..13
        {0x10, 0xFF},                                       // 1-byte integer: unsigned
        {0x11, 0xFF, 0xFE},
        {0x12, 0xFF, 0xFF, 0xFF, 0xFF},
        {0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE},  // 8 bytes: signed
        {0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 42},
        {0x22, 0x3F, 0xC0, 0, 0},              // float 1.5
        {0x33, 0x40, 0x24, 0, 0, 0, 0, 0, 0},  // date: 10 s after 2001
        {0x62, 0xD8, 0x3D, 0xDE, 0x00},        // UTF-16 pair: U+1F600
        {0x62, 0xDC, 0x00, 0x00, 0x41},        // lone low surrogate, "A"
        {0x53, 'a', 0xFF, 'b'},                // not ASCII after all
        {0x81, 0x01, 0x00},                    // UID 256
        {0xC1, 1},                             // a set, read as an array
        {0x4F, 0x10, 0x02, 0xAB, 0xCD},        // data, count after marker
    }));
    EXPECT_EQ(v, Value(Array{255, 65534, std::int64_t{0xFFFFFFFF}, -2, 42, 1.5, referenceDate(10),
                             "\U0001F600", "\uFFFDA", "a\uFFFDb", Uid{256}, Array{255},
                             Data{0xAB, 0xCD}}));
}

TEST(PlistBinaryTest, RejectsHostileStructure) {
    const Data valid = bplist({{0xA1, 1}, {0x09}});
    ASSERT_TRUE(parseBytes(valid));

    auto corrupt = [&](std::size_t fromEnd, std::uint8_t byte) {
        Data bytes = valid;
        bytes[bytes.size() - fromEnd] = byte;
        return bytes;
    };
    const std::vector<std::pair<const char*, Data>> cases = {
        {"truncated", Data(valid.begin(), valid.end() - 1)},
        {"short", Data(valid.begin(), valid.begin() + 20)},
        {"offset size 0", corrupt(32 - 6, 0)},
        {"reference size 9", corrupt(32 - 7, 9)},
        {"no objects", corrupt(32 - 15, 0)},
        {"top object out of range", corrupt(32 - 23, 2)},
        {"offset table past the trailer", corrupt(1, 0xF0)},
        {"offset past the objects", corrupt(32 + 1, 0xF0)},
        {"self-containing array", bplist({{0xA1, 0}})},
        {"cycle through a dictionary", bplist({{0xD1, 1, 2}, {0x51, 'k'}, {0xA1, 0}})},
        {"reference out of range", bplist({{0xA1, 7}})},
        {"non-string key", bplist({{0xD1, 1, 1}, {0x10, 1}})},
        {"string past the end", bplist({{0x5F, 0x10, 0xFF, 'a'}})},
        {"huge count", bplist({{0xAF, 0x13, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}})},
        {"null marker", bplist({{0x00}})},
        {"unknown marker", bplist({{0x70}})},
        {"NaN date", bplist({{0x33, 0x7F, 0xF8, 0, 0, 0, 0, 0, 0}})},
        {"version", Data{'b', 'p', 'l', 'i', 's', 't', '1', '5'}},
    };
    for (const auto& [what, bytes] : cases) {
        std::string error;
        EXPECT_FALSE(parseBytes(bytes, &error)) << what;
        EXPECT_FALSE(error.empty()) << what;
    }

    // One long string referenced many times is counted each time.
    Data wide = {0xAF, 0x10, 200};
    wide.insert(wide.end(), 200, 1);
    std::string error;
    EXPECT_FALSE(
        parseBytes(bplist({wide, {0x5F, 0x10, 20,  'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x',
                                  'x',  'x',  'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'}}),
                   &error, limitsWith(&ReadLimits::maxDecodedBytes, 1000)));
    EXPECT_EQ(error, "decodes to too much text and data");

    std::vector<Data> chain;
    for (int i = 0; i < 20; ++i)
        chain.push_back({0xA1, static_cast<std::uint8_t>(i + 1)});
    chain.push_back({0x09});
    EXPECT_FALSE(parseBytes(bplist(chain), &error, limitsWith(&ReadLimits::maxDepth, 10)));
    EXPECT_EQ(error, "nested too deeply");
    EXPECT_TRUE(parseBytes(bplist(chain), &error, limitsWith(&ReadLimits::maxDepth, 20)));
}

TEST(PlistValueTest, NumberReadingsFollowFoundation) {
    const std::pair<Value, bool> bools[] = {
        {"YES", true},  {" \tyes", true}, {"true", true}, {"Tx", true}, {"1", true},
        {"-7", true},   {"007", true},    {"NO", false},  {"0", false}, {"0.5", false},
        {"", false},    {"x1", false},    {0, false},     {2, true},    {0.25, true},
        {false, false}, {Data{1}, false},
    };
    for (const auto& [value, expected] : bools) {
        EXPECT_EQ(value.boolValue(), expected) << describe(value);
    }
    const std::pair<Value, std::int64_t> integers[] = {
        {" 42abc", 42},
        {"-17", -17},
        {"+5", 5},
        {"abc", 0},
        {"99999999999999999999", std::numeric_limits<std::int64_t>::max()},
        {"-99999999999999999999", std::numeric_limits<std::int64_t>::min()},
        {2.9, 2},
        {-2.9, -2},
        {1e30, std::numeric_limits<std::int64_t>::max()},
        {true, 1},
        {Array{}, 0},
    };
    for (const auto& [value, expected] : integers) {
        EXPECT_EQ(value.integerValue(), expected) << describe(value);
    }
}

TEST(PlistValueTest, DictionaryKeepsOrderAndUniqueKeysAtAnySize) {
    Dictionary d;
    for (int i = 0; i < 100; ++i)
        d.set("key" + std::to_string(i), i);
    d.set("key5", "replaced");
    EXPECT_EQ(d.size(), 100u);
    EXPECT_EQ(d.entries()[5].first, "key5");
    EXPECT_EQ(*d.find("key5"), Value("replaced"));
    EXPECT_TRUE(d.erase("key0"));
    EXPECT_FALSE(d.erase("key0"));
    EXPECT_EQ(d.find("key0"), nullptr);
    EXPECT_EQ(*d.find("key99"), Value(99));
    EXPECT_EQ(d.entries().front().first, "key1");

    Dictionary reversed;
    for (auto it = d.entries().rbegin(); it != d.entries().rend(); ++it) {
        reversed.set(it->first, it->second);
    }
    EXPECT_EQ(reversed, d);
    reversed.set("key1", 0);
    EXPECT_FALSE(reversed == d);
}

TEST(PlistValueTest, CopiesShareUntilWritten) {
    Value original(Array{1, Dictionary{}});
    Value copy = original;
    copy.mutableArray()->push_back(3);
    (*copy.mutableArray())[1].mutableDictionary()->set("k", "v");
    EXPECT_EQ(original, Value(Array{1, Dictionary{}}));
    EXPECT_EQ(copy.asArray()->size(), 3u);
    EXPECT_EQ(at(copy, "1/k"), Value("v"));
    EXPECT_EQ(Value(1).mutableArray(), nullptr);
}

class PlistFileTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/sysmend-plist-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string folder_;
};

TEST_F(PlistFileTest, WritesAtomicallyAndKeepsPermissions) {
    const std::string path = folder_ + "/com.example.plist";
    const Value first(Dictionary{});
    ASSERT_TRUE(writeFileAtomically(path, first, Format::Xml));
    EXPECT_EQ(readFile(path), first);
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);

    const Value second = everyKind();
    std::string error;
    ASSERT_TRUE(writeFileAtomically(path, second, Format::Binary, &error)) << error;
    EXPECT_EQ(readFile(path), second);
    struct stat st {};
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    // Only the file itself is left: no temporary beside it.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), 1);

    EXPECT_FALSE(writeFileAtomically(folder_ + "/missing/x.plist", first, Format::Xml, &error));
    EXPECT_FALSE(error.empty());
}

TEST_F(PlistFileTest, ReadRefusesWhatIsNotASmallRegularFile) {
    std::string error;
    EXPECT_FALSE(readFile(folder_ + "/absent.plist", {}, &error));
    EXPECT_NE(error.find("cannot open"), std::string::npos);

    const std::string fifo = folder_ + "/fifo.plist";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(readFile(fifo, {}, &error));  // returns instead of waiting for a writer
    EXPECT_EQ(error, "not a regular file");

    const std::string big = folder_ + "/big.plist";
    std::ofstream(big) << "<string>" << std::string(100, 'x') << "</string>";
    EXPECT_FALSE(readFile(big, limitsWith(&ReadLimits::maxBytes, 64), &error));
    EXPECT_EQ(error, "larger than 64 bytes");
    EXPECT_TRUE(readFile(big));
}

// Scans run on pool threads with small stacks; a hostile list nested 100,000 deep must be
// refused there too, in both formats, not overflow the stack.
TEST(PlistHostileTest, DeepNestingIsRefusedOnASmallStack) {
    std::string xml;
    for (int i = 0; i < 100000; ++i)
        xml += "<array>";
    Data binary = {'b', 'p', 'l', 'i', 's', 't', '0', '0'};
    const std::uint32_t count = 100001;
    std::vector<std::uint32_t> offsets;
    auto put32 = [](Data& d, std::uint32_t v) {
        for (int shift = 24; shift >= 0; shift -= 8)
            d.push_back(static_cast<std::uint8_t>(v >> shift));
    };
    for (std::uint32_t i = 0; i + 1 < count; ++i) {
        offsets.push_back(static_cast<std::uint32_t>(binary.size()));
        binary.push_back(0xA1);  // an array of one element: the next object
        put32(binary, i + 1);
    }
    offsets.push_back(static_cast<std::uint32_t>(binary.size()));
    binary.push_back(0x09);  // true
    const auto tableOffset = static_cast<std::uint32_t>(binary.size());
    for (std::uint32_t o : offsets)
        put32(binary, o);
    Data trailer(6, 0);
    trailer.push_back(4);  // offset size
    trailer.push_back(4);  // reference size
    for (std::uint64_t v : {std::uint64_t{count}, std::uint64_t{0}, std::uint64_t{tableOffset}})
        for (int shift = 56; shift >= 0; shift -= 8)
            trailer.push_back(static_cast<std::uint8_t>(v >> shift));
    binary.insert(binary.end(), trailer.begin(), trailer.end());

    struct Job {
        const std::string* xml;
        const Data* binary;
        bool xmlRefused = false, binaryRefused = false;
    } job{&xml, &binary};
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstacksize(&attr, 512 * 1024);
    pthread_t thread;
    ASSERT_EQ(pthread_create(
                  &thread, &attr,
                  [](void* arg) -> void* {
                      auto* j = static_cast<Job*>(arg);
                      j->xmlRefused = !parse(std::span(
                          reinterpret_cast<const std::uint8_t*>(j->xml->data()), j->xml->size()));
                      j->binaryRefused = !parse(*j->binary);
                      return nullptr;
                  },
                  &job),
              0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attr);
    EXPECT_TRUE(job.xmlRefused);
    EXPECT_TRUE(job.binaryRefused);
}

}  // namespace
}  // namespace sysmend::plist
