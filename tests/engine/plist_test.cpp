#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

#include "platform/plist.h"
#include "sample/fake_volume.h"

namespace sysmend::plist {
namespace {

const std::string kData = std::string(SYSMEND_TEST_DATA) + "/plist/";

std::span<const std::uint8_t> bytesOf(std::string_view s) {
    return {reinterpret_cast<const std::uint8_t*>(s.data()), s.size()};
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
        const std::string part(path.substr(0, slash));
        path = slash == std::string_view::npos ? "" : path.substr(slash + 1);
        if (const Array* a = v->asArray()) {
            v = std::stoul(part) < a->size() ? &(*a)[std::stoul(part)] : &missing;
        } else {
            v = v->find(part) ? v->find(part) : &missing;
        }
    }
    return *v;
}

Date referenceDate(double seconds) {
    return Date(std::chrono::seconds(978307200)) +
           std::chrono::duration_cast<Date::duration>(std::chrono::duration<double>(seconds));
}

void putBigEndian(Data& out, std::uint64_t value, int bytes) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        out.push_back(static_cast<std::uint8_t>(value >> shift));
}

// Assembles a binary list from raw objects (marker and payload each, references of `size`
// bytes), so tests can state exactly the bytes a hostile writer would.
Data bplist(const std::vector<Data>& objects, std::uint64_t top = 0, int size = 1) {
    Data out = {'b', 'p', 'l', 'i', 's', 't', '0', '0'}, offsets;
    for (const Data& object : objects) {
        putBigEndian(offsets, out.size(), size);
        out.insert(out.end(), object.begin(), object.end());
    }
    const std::size_t table = out.size();
    out.insert(out.end(), offsets.begin(), offsets.end());
    putBigEndian(out, 0, 6);
    putBigEndian(out, size * 0x101, 2);  // offset and reference sizes
    for (const std::uint64_t v : {std::uint64_t{objects.size()}, top, std::uint64_t{table}})
        putBigEndian(out, v, 8);
    return out;
}

ReadLimits limitsWith(std::size_t ReadLimits::*field, std::size_t value) {
    ReadLimits limits;
    limits.*field = value;
    return limits;
}

TEST(PlistFixtureTest, ReadsRealFilesAsWritten) {
    const char *mdns = "launchd/LaunchDaemonInfo.plist", *job = "launchd/launchd.plist",
               *booth = "infoplist/test_info.plist", *alf = "alf/test_alf_nested_path.plist",
               *archive = "keyedarchive/NSKeyedArchiver.plist";
    const struct {
        const char* file;
        const char* path;
        Value expected;
    } cases[] = {
        // This key is indented with spaces among tab-indented ones.
        {mdns, "MachServices/com.apple.mDNSResponder.dnsproxy", true},
        {mdns, "Sockets/Listeners/SockPathMode", 438},
        {mdns, "ProgramArguments/0", "/usr/sbin/mDNSResponder"},
        {"launchd/LaunchDaemonInfo.dnsextd.plist", "OnDemand", false},
        {job, "Nice", -5},
        {job, "StartCalendarInterval/1/Hour", 13},
        {"launchd/launchd.noprogram.plist", "Label", "foo"},
        {"launchd/test_launchd.plist", "Label", "com.apple.mDNSResponder"},
        {"launchd/io.osquery.agent.plist", "Label", "io.osquery.agent"},
        {booth, "CFBundleDocumentTypes/0/CFBundleTypeOSTypes/0", "PBLb"},
        {booth, "DTSDKName", ""},
        {"infoplist/LuLu.app/Contents/Info.plist", "NSHumanReadableCopyright",
         "Copyright \u00a9 2017 Objective-See. All rights reserved."},
        {"alf/test_alf.plist", "exceptions/1/path", "/usr/sbin/mDNSResponder"},
        {alf, "firewall/Remote Login - SSH/proc", "sshd-keygen-wrapper"},
        {alf, "explicitauths/6/id", "com.apple.ksh"},
        {archive, "$objects/1/NS.keys/7", Uid{10}},
        {archive, "$objects/14/NS.data", Data{'D', 'A', 'T', 'A', '\n'}},
        {archive, "$objects/16/NS.time", 729452449.0},
        {archive, "$objects/21", 98},
        {"keyedarchive/backgrounditems.btm", "$objects/7/bookmark", Uid{0}},
    };
    for (const auto& [file, path, expected] : cases) {
        const Value value = readFixture(file);
        EXPECT_EQ(at(value, path), expected) << file << ": " << path;
        for (const Format format : {Format::Binary, Format::Xml})
            EXPECT_EQ(parse(serialize(value, format)), value) << file;
    }

    const Value lulu = readFixture("launchd/com.objective-see.lulu.plist");
    ASSERT_TRUE(lulu.asDictionary());
    EXPECT_EQ(lulu.asDictionary()->entries().front().first, "MachServices");  // file order kept
    const Value items = readFixture("keyedarchive/backgrounditems.btm"), prefs = readFixture(alf);
    const Data* bookmark = at(items, "$objects/14").asData();
    ASSERT_TRUE(bookmark);
    EXPECT_EQ(std::string(bookmark->begin(), bookmark->begin() + 4), "book");
    // The alias is itself an XML list, holding base64 data across several lines.
    const Data* alias = at(prefs, "applications/0/alias").asData();
    ASSERT_TRUE(alias);
    const auto inner = parse(*alias);
    ASSERT_TRUE(inner && inner->asData());
    EXPECT_EQ(inner->asData()->size(), 480u);
}

TEST(PlistFixtureTest, SharedObjectBombDecodesOnceAndShares) {
    const Value bomb = readFixture("shared-object-bomb.bplist");
    // 24 levels of arrays whose two elements are the same shared array: nothing was expanded.
    const Value* level = &bomb;
    int depth = 0;
    for (; const Array* a = level->asArray(); ++depth, level = &(*a)[0]) {
        ASSERT_EQ(a->size(), 2u);
        EXPECT_EQ((*a)[0].asArray(), (*a)[1].asArray());
    }
    EXPECT_EQ(depth, 24);
    EXPECT_EQ(*level, Value(1));
    // Written back, each shared array is still one object.
    EXPECT_LT(serialize(bomb, Format::Binary).size(), 512u);
    EXPECT_LT(describe(bomb).size(), 70u * 1024);
}

TEST(PlistXmlTest, AcceptsWhatHandWrittenListsContain) {
    const Value v = readFixture("hand-written.plist");
    const std::pair<const char*, Value> cases[] = {
        {"text", "a & b <c> \"d\" 'e' \u00e9\U0001F600"},
        {"cdata", "<not a tag> & raw"},
        {"hex", 31},
        {"negative", std::numeric_limits<std::int64_t>::min()},
        {"unsigned", -1},
        {"real", -1500.0},
        {"infinity", std::numeric_limits<double>::infinity()},
        {"date", referenceDate(1)},
        {"data", Data{0, 1, 2, 0xFF}},
        {"empty", ""},
        {"uid", Uid{7}},
        {"list", Array{true, false, Dictionary{}, Array{}, Data{0xFF, 0xFF}}},
    };
    for (const auto& [key, expected] : cases)
        EXPECT_EQ(at(v, key), expected) << key;

    // No <plist> wrapper; UTF-8 and UTF-16 byte-order marks.
    const std::string utf16("\xFF\xFE<\0s\0t\0r\0i\0n\0g\0>\0\xE9\0<\0/\0s\0t\0r\0i\0n\0g\0>\0",
                            38);
    for (const auto& [text, expected] :
         {std::pair<std::string, Value>{"<array><integer>1</integer></array>", Array{1}},
          {"\xEF\xBB\xBF<string>x</string>", "x"},
          {utf16, "\u00e9"}}) {
        EXPECT_EQ(parse(bytesOf(text)), expected) << text;
    }
}

TEST(PlistXmlTest, RejectsMalformedDocuments) {
    // Key or value alone in a dict, unclosed or mismatched tags, text in a container, bad
    // numbers, dates and entities, unterminated strings and comments.
    for (const char* text :
         {"", "{ Label = foo; }", "<plist><dict><key>a</key></dict></plist>",
          "<plist><dict><string>a</string></dict></plist>",
          "<plist><dict><key>a</key><string>b</string></plist>",
          "<plist><array><string>a</array></plist>", "<plist><array>text<true/></array></plist>",
          "<plist><integer>12ab</integer></plist>",
          "<plist><integer>-9223372036854775809</integer></plist>",
          "<plist><real>1.2.3</real></plist>", "<plist><date>2001-02-30T00:00:00Z</date></plist>",
          "<plist><string>&bogus;</string></plist>", "<plist><string>&#0;</string></plist>",
          "<plist><true>x</true></plist>", "<plist><foo/></plist>", "<plist></plist>",
          "<plist><string>unterminated", "<plist><!-- unterminated comment <string/></plist>"}) {
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
    Data bytes(48);  // base64 lines at depth 4 are 44 characters (tabs counted as eight)
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 5);
    inner.set("deep", Array{Array{std::move(bytes)}});
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

// Every kind of value, at the edges of each encoding's sizes.
Value everyKind() {
    Dictionary nested, many;  // many: more than a count nibble and a one-byte reference hold
    nested.set("zero", 0);
    nested.set("e\u0301t\u00e9 \U0001F600", "caf\u00e9 \u65e5\u672c");
    for (int i = 0; i < 300; ++i)
        many.set("k" + std::to_string(i), Array(i % 20, Value(i)));
    using limits64 = std::numeric_limits<std::int64_t>;
    Data bytes(1000);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7);
    return Array{false,
                 true,
                 -1,
                 255,
                 256,
                 65536,
                 limits64::max(),
                 limits64::min(),
                 0.1,
                 -0.0,
                 std::nan(""),
                 std::numeric_limits<double>::infinity(),
                 referenceDate(-86400 * 365.0),
                 referenceDate(729452449),
                 Uid{0},
                 Uid{70000},
                 Uid{std::numeric_limits<std::uint64_t>::max()},
                 Data(),
                 "",
                 "<&>",
                 std::move(nested),
                 Array(),
                 Dictionary(),
                 std::move(bytes),
                 std::move(many)};
}

TEST(PlistBinaryTest, ReadsEveryMarker) {
    const auto v = parse(bplist(
        {
            {0x10, 0xFF},  // 1-byte integer: unsigned
            {0x11, 0xFF, 0xFE},
            {0x12, 0xFF, 0xFF, 0xFF, 0xFF},
            {0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE},  // 8 bytes: signed
            {0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 42},
            {0x22, 0x3F, 0xC0, 0, 0},                          // float 1.5
            {0x33, 0x40, 0x24, 0, 0, 0, 0, 0, 0},              // date: 10 s after 2001
            {0x62, 0xD8, 0x3D, 0xDE, 0x00},                    // UTF-16 pair: U+1F600
            {0x62, 0xDC, 0x00, 0x00, 0x41},                    // lone low surrogate, "A"
            {0x53, 'a', 0xFF, 'b'},                            // not ASCII after all
            {0x81, 0x01, 0x00},                                // UID 256
            {0xC1, 0},                                         // a set, read as an array
            {0x4F, 0x10, 0x02, 0xAB, 0xCD},                    // data, count after marker
            {0xAD, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},  // the top: objects 0..12
        },
        13));
    EXPECT_EQ(v, Value(Array{255, 65534, std::int64_t{0xFFFFFFFF}, -2, 42, 1.5, referenceDate(10),
                             "\U0001F600", "\uFFFDA", "a\uFFFDb", Uid{256}, Array{255},
                             Data{0xAB, 0xCD}}));
}

TEST(PlistBinaryTest, RejectsHostileStructure) {
    const Data valid = bplist({{0xA1, 1}, {0x09}});
    EXPECT_TRUE(parse(valid, limitsWith(&ReadLimits::maxObjects, 2)));
    EXPECT_FALSE(parse(valid, limitsWith(&ReadLimits::maxObjects, 1)));

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
        EXPECT_FALSE(parse(bytes, {}, &error)) << what;
        EXPECT_FALSE(error.empty()) << what;
    }

    // One long string referenced many times is counted each time.
    Data wide = {0xAF, 0x10, 200}, text = {0x5F, 0x10, 20};
    wide.resize(203, 1);
    text.resize(23, 'x');
    std::string error;
    EXPECT_FALSE(
        parse(bplist({wide, text}), limitsWith(&ReadLimits::maxDecodedBytes, 1000), &error));
    EXPECT_EQ(error, "decodes to too much text and data");

    std::vector<Data> chain;
    for (std::uint8_t i = 1; i <= 20; ++i)
        chain.push_back({0xA1, i});
    chain.push_back({0x09});
    EXPECT_FALSE(parse(bplist(chain), limitsWith(&ReadLimits::maxDepth, 10), &error));
    EXPECT_EQ(error, "nested too deeply");
    EXPECT_TRUE(parse(bplist(chain), limitsWith(&ReadLimits::maxDepth, 20)));
}

TEST(PlistValueTest, NumberReadingsFollowFoundation) {
    const std::pair<Value, bool> bools[] = {
        {"YES", true},  {" \tyes", true}, {"true", true}, {"Tx", true}, {"1", true},
        {"-7", true},   {"007", true},    {"NO", false},  {"0", false}, {"0.5", false},
        {"", false},    {"x1", false},    {0, false},     {2, true},    {0.25, true},
        {false, false}, {Data{1}, false}};
    for (const auto& [value, expected] : bools)
        EXPECT_EQ(value.boolValue(), expected) << describe(value);
    using limits64 = std::numeric_limits<std::int64_t>;
    const std::pair<Value, std::int64_t> integers[] = {{" 42abc", 42},
                                                       {"-17", -17},
                                                       {"+5", 5},
                                                       {"abc", 0},
                                                       {"99999999999999999999", limits64::max()},
                                                       {"-99999999999999999999", limits64::min()},
                                                       {2.9, 2},
                                                       {-2.9, -2},
                                                       {1e30, limits64::max()},
                                                       {true, 1},
                                                       {Array{}, 0}};
    for (const auto& [value, expected] : integers)
        EXPECT_EQ(value.integerValue(), expected) << describe(value);
}

TEST(PlistValueTest, DictionaryKeepsOrderAndUniqueKeysAtAnySize) {
    Dictionary d, reversed;
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

    for (auto it = d.entries().rbegin(); it != d.entries().rend(); ++it)
        reversed.set(it->first, it->second);
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

TEST(PlistFileTest, WritesBothFormatsAtomicallyAndKeepsPermissions) {
    const sample::FakeVolume scratch;  // only used as a temporary folder
    const std::string folder = scratch.host("/plists"), path = folder + "/com.example.plist";
    std::filesystem::create_directory(folder);
    const Value value = everyKind();
    std::string error;
    ASSERT_TRUE(writeFileAtomically(path, value, Format::Xml, &error)) << error;
    EXPECT_EQ(readFile(path), value);
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);

    ASSERT_TRUE(writeFileAtomically(path, value, Format::Binary, &error)) << error;
    EXPECT_EQ(readFile(path), value);
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
    // Only the file itself is left: no temporary beside it.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);

    EXPECT_FALSE(writeFileAtomically(folder + "/missing/x.plist", value, Format::Xml, &error));
    EXPECT_FALSE(error.empty());

    EXPECT_FALSE(readFile(folder + "/absent.plist", {}, &error));
    EXPECT_NE(error.find("cannot open"), std::string::npos);
    const std::string fifo = folder + "/fifo.plist";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(readFile(fifo, {}, &error));  // returns instead of waiting for a writer
    EXPECT_EQ(error, "not a regular file");
    EXPECT_FALSE(readFile(path, limitsWith(&ReadLimits::maxBytes, 64), &error));
    EXPECT_EQ(error, "larger than 64 bytes");
}

// Scans run on pool threads with small stacks; a hostile list nested 100,000 deep must be
// refused there too, in both formats, not overflow the stack.
TEST(PlistHostileTest, DeepNestingIsRefusedOnASmallStack) {
    std::string xml;
    std::vector<Data> objects;
    for (std::uint32_t i = 1; i <= 100000; ++i) {
        xml += "<array>";
        objects.push_back({0xA1});  // an array of one element: the next object
        putBigEndian(objects.back(), i, 4);
    }
    objects.push_back({0x09});
    struct Job {
        std::span<const std::uint8_t> xml;
        Data binary;
        bool xmlRefused = false, binaryRefused = false;
    } job{bytesOf(xml), bplist(objects, 0, 4)};
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstacksize(&attr, 512 * 1024);
    pthread_t thread;
    auto run = [](void* arg) -> void* {
        auto* j = static_cast<Job*>(arg);
        j->xmlRefused = !parse(j->xml);
        j->binaryRefused = !parse(j->binary);
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attr, run, &job), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attr);
    EXPECT_TRUE(job.xmlRefused);
    EXPECT_TRUE(job.binaryRefused);
}

}  // namespace
}  // namespace sysmend::plist
