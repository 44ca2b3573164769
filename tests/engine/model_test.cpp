#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "app/na_category_obj.h"
#include "model/na_fileobj.h"
#include "model/na_group_obj.h"
#include "model/tool_records.h"
#include "platform/metadata.h"
#include "sample/fake_volume.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

std::shared_ptr<NAFileobj> item(const std::string& name, std::int64_t size = 0) {
    auto file = std::make_shared<NAFileobj>();
    file->setFileName(name);
    file->setFileSize(size);
    file->setIsChecked(1);
    return file;
}

std::shared_ptr<NAGroupObj> group(const std::string& title) {
    auto g = std::make_shared<NAGroupObj>(title, ImageRef::none());
    g->setIsChecked(1);
    return g;
}

// Gives `parent` a child array that the test keeps alive, as a tool keeps its arrays.
std::shared_ptr<NAFileobjArray> nest(NAFileobj& parent, const NAFileobjArray& children) {
    auto list = std::make_shared<NAFileobjArray>();
    parent.setChilren(list);
    parent.addChilrens(children);
    return list;
}

TEST(FileCheckTest, ChildrenDecideTheirParentAndGroup) {
    auto g = group("G");
    auto p = item("p");
    auto a = item("a"), b = item("b"), c = item("c");
    auto kids = nest(*p, {a, b, c});
    g->addFileObj(p);

    a->setIsChecked(0);
    EXPECT_EQ(toString(*g), "G[-1]{p[-1]{a[0] b[1] c[1]}}");
    b->setIsChecked(0);
    c->setIsChecked(0);
    EXPECT_EQ(toString(*g), "G[0]{p[0]{a[0] b[0] c[0]}}");
    b->setIsChecked(1);
    EXPECT_EQ(toString(*g), "G[-1]{p[-1]{a[0] b[1] c[0]}}");

    // A mark pushed down, -1 included, reaches every descendant.
    auto x = item("x");
    auto grandKids = nest(*c, {x});
    p->setIsChecked(-1);
    EXPECT_EQ(toString(*g), "G[-1]{p[-1]{a[-1] b[-1] c[-1]{x[-1]}}}");
    p->setIsChecked(1);
    EXPECT_EQ(toString(*g), "G[1]{p[1]{a[1] b[1] c[1]{x[1]}}}");

    // A nested item finds its group through its nearest grouped ancestor.
    EXPECT_EQ(x->group(), g);
    x->setIsChecked(0);
    EXPECT_EQ(toString(*g), "G[-1]{p[-1]{a[1] b[1] c[0]{x[0]}}}");
    auto orphan = item("o");
    auto orphanKids = nest(*orphan, {item("y")});
    EXPECT_EQ(orphanKids->front()->group(), nullptr);
}

TEST(FileCheckTest, ParentWithoutChildrenKeepsItsMark) {
    auto p = item("p");
    auto a = item("a");
    auto kids = nest(*p, {a});

    kids->clear();
    a->setIsChecked(0);
    EXPECT_EQ(p->isChecked(), 1);

    kids.reset();  // nobody keeps the array: the parent has no children any more
    EXPECT_EQ(p->chilren(), nullptr);
    a->setIsChecked(0);
    EXPECT_EQ(p->isChecked(), 1);

    // Adding to a parent without an array links the child but appends nothing.
    auto b = item("b");
    p->addChilren(b);
    EXPECT_EQ(b->superObj(), p);
    EXPECT_EQ(p->chilren(), nullptr);
}

TEST(GroupCheckTest, GroupClickReachesContentsCacheAndChildren) {
    auto g = group("G");
    auto a = item("a"), b = item("b"), hidden = item("h"), x = item("x");
    auto kids = nest(*hidden, {x});
    g->addFileObjs({a, b});
    hidden->setGroup(g);
    g->cache_contents().push_back(hidden);

    g->setIsChecked(0);
    EXPECT_EQ(toString(*g), "G[0]{a[0] b[0] cache{h[0]{x[0]}}}");
    g->setIsChecked(-1);
    EXPECT_EQ(toString(*g), "G[-1]{a[-1] b[-1] cache{h[-1]{x[-1]}}}");
    g->setIsChecked(1);

    // Parked items count for the group like shown ones.
    hidden->setIsChecked(0);
    EXPECT_EQ(toString(*g), "G[-1]{a[1] b[1] cache{h[0]{x[0]}}}");
    a->setIsChecked(0);
    b->setIsChecked(0);
    EXPECT_EQ(toString(*g), "G[0]{a[0] b[0] cache{h[0]{x[0]}}}");
}

TEST(GroupCheckTest, GroupClickEndsConsistentThoughANestedItemRecomputesItMidway) {
    // On the way down, b's child recomputes the group (its nearest grouped ancestor's) and so
    // its parent before a has followed the click; both still end as the click left them.
    auto top = group("P");
    auto g = group("G");
    auto b = item("b"), x = item("x"), a = item("a");
    auto kids = nest(*b, {x});
    g->addFileObjs({b, a});
    top->addGroupObj(g);

    g->setIsChecked(0);
    EXPECT_EQ(toString(*top), "P[0]{G[0]{b[0]{x[0]} a[0]}}");
    top->setIsChecked(1);
    EXPECT_EQ(toString(*top), "P[1]{G[1]{b[1]{x[1]} a[1]}}");
}

TEST(GroupCheckTest, ParentGroupFollowsWhicheverRecomputationCameLast) {
    auto top = group("P");
    auto own = item("f");
    auto s1 = group("S1"), s2 = group("S2"), empty = group("E");
    auto a = item("a"), b = item("b");
    top->addFileObj(own);
    s1->addFileObj(a);
    s2->addFileObj(b);
    top->addGroupObjs({s1, s2, empty});

    // An empty sub-group is skipped, whatever its own mark.
    empty->setIsChecked(0);
    EXPECT_EQ(toString(*top), "P[1]{f[1] S1[1]{a[1]} S2[1]{b[1]} E[0]{}}");

    // From a sub-group's file: the non-empty sub-groups decide, not the parent's own file.
    a->setIsChecked(0);
    EXPECT_EQ(toString(*top), "P[-1]{f[1] S1[0]{a[0]} S2[1]{b[1]} E[0]{}}");
    // From the parent's own file: its contents decide, not the sub-groups.
    own->setIsChecked(1);
    EXPECT_EQ(top->isChecked(), 1);
    b->setIsChecked(0);
    EXPECT_EQ(top->isChecked(), 0);

    top->setIsChecked(1);
    EXPECT_EQ(toString(*top), "P[1]{f[1] S1[1]{a[1]} S2[1]{b[1]} E[1]{}}");
}

// Counts every mark written to the group, the click included.
class CountingGroup : public NAGroupObj {
  public:
    using NAGroupObj::NAGroupObj;
    void setIsChecked(std::int64_t isChecked) override {
        ++writes;
        NAGroupObj::setIsChecked(isChecked);
    }
    int writes = 0;
};

TEST(GroupCheckTest, GroupWideClickRecomputesEachGroupOnce) {
    auto top = std::make_shared<CountingGroup>();
    auto big = std::make_shared<CountingGroup>();
    top->addGroupObj(big);
    constexpr int kItems = 100000;
    for (int i = 0; i < kItems; ++i)
        big->addFileObj(item("i"));

    big->setIsChecked(0);
    EXPECT_EQ(big->writes, 1);
    EXPECT_EQ(top->writes, 1);
    EXPECT_EQ(top->isChecked(), 0);
    for (const auto& file : big->contents())
        ASSERT_EQ(file->isChecked(), 0);

    big->contents().back()->setIsChecked(1);
    EXPECT_EQ(big->writes, 2);
    EXPECT_EQ(top->writes, 2);
    EXPECT_EQ(top->isChecked(), -1);
}

TEST(GroupSizeTest, RunningSizeAndCategoryTotal) {
    auto g = group("G");
    auto a = item("a", 10), b = item("b", 20), stranger = item("s", 5);
    g->addFileObjs({a, b});
    g->addGroupObj(group("sub"));
    EXPECT_EQ(g->size(), 30);

    g->removeFileObj(a);
    EXPECT_EQ(g->size(), 20);
    EXPECT_EQ(a->group(), g);  // the link stays
    g->removeFileObj(stranger);
    EXPECT_EQ(g->size(), 15);
    EXPECT_EQ(toString(*g), "G[1]{b[1] sub[1]{}}");

    // A group that lists nothing keeps its mark when a file that still names it changes.
    g->removeFileObj(b);
    b->setIsChecked(0);
    EXPECT_EQ(g->isChecked(), 1);

    NACategoryObj category("Crashes", ImageRef::named("crashes"));
    EXPECT_EQ(category.select_all_btn_title(), "Deselect All");
    EXPECT_EQ(category.size(), 0);
    category.contents() = {item("x", 7), item("y", 8)};
    EXPECT_EQ(category.size(), 15);
    category.groups().push_back(g);
    EXPECT_EQ(category.size(), -5);  // groups win over contents once there are any
}

TEST(BrowserObjTest, CountsEntriesOnceAndOwnsChildren) {
    auto site = std::make_shared<NABrowserObj>();
    site->setDomain("example.com");
    EXPECT_EQ(site->fileName(), "example.com");
    EXPECT_EQ(site->information(), "");
    EXPECT_EQ(site->size(), 0);

    auto entry = [](std::int64_t count) {
        auto e = std::make_shared<NABrowserObj>();
        e->setSomeItems_count(count);
        return e;
    };
    site->setChilren(std::make_shared<NAFileobjArray>());  // the site keeps the only reference
    site->addChilrens({entry(3), entry(4)});
    EXPECT_EQ(site->someItems_count(), 7);
    site->addChilren(entry(5));
    EXPECT_EQ(site->size(), 7);
    ASSERT_NE(site->chilren(), nullptr);
    EXPECT_EQ(site->chilren()->size(), 3u);
}

TEST(FileInitTest, FromMetadataItem) {
    EXPECT_EQ(NAFileobj::initWithURl("/Applications/Foo.app"), nullptr);

    struct RestoreProvider {
        MetadataProvider previous;
        ~RestoreProvider() { setMetadataProvider(std::move(previous)); }
    };
    const Date created = Date(std::chrono::seconds(1700000000));
    RestoreProvider restore{
        setMetadataProvider([created](std::string_view p) -> std::optional<MetadataItem> {
            MetadataItem found;
            if (p == "/nopath") {
                found.displayName = "x";
            } else if (p == "/named") {
                found.displayName = "Shown";
                found.path = "/named.app";
            } else {
                found.path = std::string(p);
                found.fsSize = 42;
                found.contentCreationDate = created;
            }
            return found;
        })};

    EXPECT_EQ(NAFileobj::initWithURl("/nopath"), nullptr);
    EXPECT_EQ(NAFileobj::initWithURl("/named")->fileName(), "Shown");
    auto app = NAFileobj::initWithURl("/Applications/Foo Bar.app");
    ASSERT_NE(app, nullptr);
    EXPECT_EQ(app->fileName(), "Foo Bar");
    EXPECT_EQ(app->filePath(), "/Applications/Foo Bar.app");
    EXPECT_EQ(app->fileSize(), 42);
    EXPECT_EQ(app->createTime(), created);
    EXPECT_EQ(app->fileIcon(), ImageRef::fileIcon("/Applications/Foo Bar.app"));
    EXPECT_TRUE(app->isNeedChangeGroupOrSuperState());
}

TEST(FileInitTest, FromPathOnVolume) {
    sample::FakeVolume vol("a");
    ScopedVolume scoped(vol.volume());
    const std::string path =
        vol.write("/Users/a/Library/Logs/report.crash", std::string(5000, 'x'));

    NAFileobj sized(path);
    EXPECT_EQ(sized.fileName(), "");
    EXPECT_EQ(sized.filePath(), path);
    EXPECT_EQ(sized.fileSize(), sizeAtPath(path, 1));
    EXPECT_GT(sized.fileSize(), 0);

    NATreatObj named(path, false);
    EXPECT_EQ(named.fileName(), "report");
    EXPECT_EQ(named.fileSize(), 0);
    EXPECT_EQ(NATreatObj(path, true).fileSize(), sized.fileSize());
}

}  // namespace
}  // namespace sysmend
