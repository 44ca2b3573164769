#include "platform/keyed_archive.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>

namespace sysmend::keyed_archive {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Uid;
using plist::Value;

Value dict(std::initializer_list<std::pair<std::string, Value>> entries) {
    Dictionary d;
    for (const auto& [key, value] : entries)
        d.set(key, value);
    return d;
}

Value archiveOf(Array objects, std::uint64_t root = 1) {
    return dict({{"$archiver", "NSKeyedArchiver"},
                 {"$objects", std::move(objects)},
                 {"$top", dict({{"root", Uid{root}}})},
                 {"$version", 100000}});
}

Value classNamed(const std::string& name) {
    return dict({{"$classname", name}, {"$classes", Array{name, "NSObject"}}});
}

Value arrayObject(Array references, std::uint64_t classUid) {
    return dict({{"NS.objects", std::move(references)}, {"$class", Uid{classUid}}});
}

std::string decodeError(const Value& archive, const DecodeLimits& limits = {}) {
    std::string error;
    const auto value = decodePlist(archive, limits, &error);
    EXPECT_FALSE(value) << describe(*value);
    return error;
}

Date referenceDate(std::int64_t seconds) {
    return Date(std::chrono::seconds(978307200 + seconds));
}

TEST(KeyedArchive, EncodedValuesDecodeToThemselves) {
    const Value nested = dict({
        {"strings", Array{"plain", "", "ünïcödé ✓", "$null", "plain"}},
        {"numbers", Array{0, -1, std::int64_t{1} << 40, 2.5, -0.0}},
        {"flags", Array{true, false}},
        {"bytes", Data{0x00, 0xff, 0x10}},
        {"when", referenceDate(729452449)},
        {"nothing", Array{Value(), "after nil"}},
        {"empty", Array{Value(Array{}), Value(Dictionary{})}},
        {"deep", Array{Array{Array{dict({{"k", Array{"v"}}})}}}},
    });
    for (const Value& root : {nested, Value("just a string"), Value(42), Value()}) {
        std::string error;
        const auto decoded = decode(encode(root), {}, &error);
        ASSERT_TRUE(decoded) << error;
        EXPECT_EQ(*decoded, root);
    }
}

TEST(KeyedArchive, ReadsAndWritesArchivesAsMacOSDoes) {
    const std::string folder = SYSMEND_TEST_DATA "/plist/keyedarchive/";
    // What NSKeyedArchiver writes for @[@{@"launch": @[@"com.foo.plist"], @"name": @"Foo"}], as
    // `plutil -convert xml1` shows it.
    const auto apple = plist::readFile(folder + "one-threat-database.plist");
    ASSERT_TRUE(apple);
    const Value database = Array{dict({{"launch", Array{"com.foo.plist"}}, {"name", "Foo"}})};
    std::string error;
    const auto fromBinary = decode(plist::serialize(*apple, plist::Format::Binary), {}, &error);
    ASSERT_TRUE(fromBinary) << error;
    EXPECT_EQ(*fromBinary, database);
    EXPECT_EQ(encodeToPlist(database), *apple);

    const auto values = plist::readFile(folder + "NSKeyedArchiver.plist");
    ASSERT_TRUE(values);
    EXPECT_EQ(decodePlist(*values), dict({{"MyArray", Array{}},
                                          {"MyBool", true},
                                          {"MyData", Data{'D', 'A', 'T', 'A', '\n'}},
                                          {"MyDate", referenceDate(729452449)},
                                          {"MyDictionary", Dictionary{}},
                                          {"MyFloat", 2.7},
                                          {"MyInteger", 98},
                                          {"MyString", "Some string"}}));

    // The login-items store holds classes of the system's own (whose objects refer back to
    // each other): refused by name.
    const auto loginItems = plist::readFile(folder + "backgrounditems.btm");
    ASSERT_TRUE(loginItems);
    EXPECT_EQ(decodeError(*loginItems), "unsupported class BackgroundItems");

    // Mutable and subclassed containers decode as their base class.
    const Value archive = archiveOf({
        "$null",
        dict({{"NS.keys", Array{Uid{2}}}, {"NS.objects", Array{Uid{3}}}, {"$class", Uid{6}}}),
        "key",
        dict({{"NS.string", "mutable text"}, {"$class", Uid{4}}}),
        dict({{"$classname", "NSMutableString"},
              {"$classes", Array{"NSMutableString", "NSString", "NSObject"}}}),
        "unused",
        dict({{"$classname", "MyDictionary"},
              {"$classes", Array{"MyDictionary", "NSMutableDictionary", "NSDictionary"}}}),
    });
    EXPECT_EQ(decodePlist(archive), dict({{"key", "mutable text"}}));
}

TEST(KeyedArchive, HostileGraphsAreRefused) {
    // o[i] = [o[i-1]] for i in 2..n+1, o[1] = [] ; class at index n+2.
    auto chain = [](std::size_t n, Array objects = {"$null"}) {
        const std::uint64_t first = objects.size();
        const std::uint64_t classUid = first + n + 1;
        objects.push_back(arrayObject({}, classUid));
        for (std::size_t i = 1; i <= n; ++i)
            objects.push_back(arrayObject({Uid{first + i - 1}}, classUid));
        objects.push_back(classNamed("NSArray"));
        return objects;
    };

    EXPECT_EQ(decodeError(archiveOf({"$null", arrayObject({Uid{1}}, 2), classNamed("NSArray")})),
              "reference cycle through object 1");
    EXPECT_EQ(decodeError(archiveOf({"$null", arrayObject({Uid{9}}, 2), classNamed("NSArray")})),
              "reference 9 is out of range (3 objects)");
    EXPECT_EQ(decodeError(archiveOf(chain(300), 301)), "objects nested deeper than 256");

    // Two chains of 200, the second ending in the first, decoded first-chain first: the
    // recursion never goes past 200 but the result would nest 400 deep.
    Array twice = chain(200);
    const std::uint64_t firstTop = 201;
    const std::uint64_t secondBottom = twice.size();
    twice = chain(200, std::move(twice));
    twice[secondBottom] = arrayObject({Uid{firstTop}}, twice.size() - 1);
    twice.push_back(arrayObject({Uid{firstTop}, Uid{twice.size() - 2}}, twice.size() - 1));
    EXPECT_EQ(decodeError(archiveOf(twice, twice.size() - 1)), "objects nested deeper than 256");
}

TEST(KeyedArchive, SharedObjectsAreDecodedOnceAndExpansionIsCapped) {
    // o[i] = [o[i-1], o[i-1]]: 2^levels leaves when read as a tree.
    auto bomb = [](std::size_t levels) {
        Array objects{"$null", "leaf", classNamed("NSArray")};
        for (std::size_t i = 0; i < levels; ++i) {
            const std::uint64_t below = i == 0 ? 1 : objects.size() - 1;
            objects.push_back(arrayObject({Uid{below}, Uid{below}}, 2));
        }
        return archiveOf(objects, objects.size() - 1);
    };

    const auto small = decodePlist(bomb(16));
    ASSERT_TRUE(small);
    const Array& halves = *small->asArray();
    EXPECT_EQ(halves[0].asArray(), halves[1].asArray());  // one object, shared

    EXPECT_EQ(decodeError(bomb(64)), "the archive expands to more than 67108864 values and bytes");
    DecodeLimits tight;
    tight.maxExpandedSize = 1000;
    EXPECT_NE(decodeError(bomb(16), tight).find("expands to more than 1000"), std::string::npos);
}

TEST(KeyedArchive, MalformedArchivesAreRefusedWithAReason) {
    const Value nsArray = classNamed("NSArray");
    const struct {
        Value archive;
        std::string error;
    } cases[] = {
        {dict({{"root", 1}}), "not a keyed archive ($archiver is not NSKeyedArchiver)"},
        {dict({{"$archiver", "NSKeyedArchiver"}}), "the keyed archive has no $objects array"},
        {archiveOf({"$null", arrayObject({2}, 2), nsArray}), "an object reference is not a UID"},
        {archiveOf({"$null", Array{}}), "object 1 is not an archived object"},
        {archiveOf({"$null", dict({{"NS.objects", Array{}}})}), "object 1 has no class"},
        {archiveOf({"$null", dict({{"$class", Uid{2}}}), nsArray}),
         "object 1 lacks a valid NS.objects"},
        {archiveOf({"$null", arrayObject({}, 2), classNamed("NSUUID")}),
         "unsupported class NSUUID"},
        {archiveOf({"$null",
                    dict({{"NS.keys", Array{Uid{3}}}, {"NS.objects", Array{}}, {"$class", Uid{2}}}),
                    classNamed("NSDictionary"), "k"}),
         "object 1 has unequal counts of keys and values"},
        {archiveOf(
             {"$null",
              dict({{"NS.keys", Array{Uid{3}}}, {"NS.objects", Array{Uid{3}}}, {"$class", Uid{2}}}),
              classNamed("NSDictionary"), 7}),
         "object 1 has a key that is not a string"},
        {archiveOf(
             {"$null", dict({{"NS.time", "soon"}, {"$class", Uid{2}}}), classNamed("NSDate")}),
         "object 1 is not a valid date"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(decodeError(c.archive), c.error) << describe(c.archive);

    std::string error;
    const std::string notAList = "not a property list";
    EXPECT_FALSE(decode({reinterpret_cast<const std::uint8_t*>(notAList.data()), notAList.size()},
                        {}, &error));
    EXPECT_FALSE(error.empty());
}

TEST(KeyedArchive, EncodingStoresSharedValuesOnceAndRefusesUids) {
    const Value shared = Array{"x", "y"};
    const Value root = Array{shared, shared, "x"};
    const Value archive = encodeToPlist(root);
    // $null, root, shared array, "x", "y", NSArray class: the second reference and the
    // repeated string add nothing.
    EXPECT_EQ(archive.find("$objects")->asArray()->size(), 6u);
    EXPECT_EQ(decodePlist(archive), root);

    EXPECT_THROW(encode(Array{Uid{1}}), std::invalid_argument);
}

}  // namespace
}  // namespace sysmend::keyed_archive
