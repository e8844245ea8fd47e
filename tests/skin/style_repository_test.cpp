// StyleRepository: loading with base chains, first-wins rules, bad files, lookups, updates and difference saves.
#include <gtest/gtest.h>

#include <string>

#include "platform/logger.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "skin/style_repository.h"
#include "support/temp_dir.h"

namespace {

using Outcome = StyleLoadEntry::Outcome;

// Each test gets its own protocol folder and a fresh repository.
class StyleRepositoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        zelPath::setPath(zelPath::Protocol, m_dir.path());
        StyleRepository::DestroyInstance();
        zelLogger::Instance().ClearEntries();
    }
    void TearDown() override {
        StyleRepository::DestroyInstance();
        zelPath::setPath(zelPath::Protocol, L"");
    }
    void WriteStyles(const std::string& body) {
        m_dir.write(L"ButtonStyles.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Styles>\n" + body + "</Styles>\n");
    }
    void WriteRaw(const std::string& bytes) { m_dir.write(L"ButtonStyles.xml", bytes); }
    StyleRepository* Fresh() {
        StyleRepository::DestroyInstance();
        return StyleRepository::GetInstance();
    }
    const StyleLoadEntry* EntryNamed(const std::wstring& name) {
        for (const StyleLoadEntry& e : StyleRepository::GetInstance()->GetLoadReport().entries)
            if (e.name == name) return &e;
        return nullptr;
    }

    uc::test::TempDir m_dir;
};

TEST_F(StyleRepositoryTest, UnreadableFilesLeaveAnEmptyUsableRepository) {
    const std::string cases[] = {"", "<?xml version=\"1.0\"?>\n<Styles><style id=\"1\" name=\"a\">", "not xml at all",
                                 std::string("\xFF\xFE\x00\x01garbage", 12)};
    // Missing file first, then each broken one.
    for (int i = -1; i < 4; ++i) {
        if (i >= 0) WriteRaw(cases[i]);
        zelLogger::Instance().ClearEntries();
        StyleRepository* repo = Fresh();
        ASSERT_NE(repo, nullptr);
        EXPECT_EQ(zelLogger::Instance().Count(L"Could not load styles from file"), 1u) << i;
        EXPECT_TRUE(repo->GetAllStyles().empty());
        EXPECT_EQ(repo->GetStyle(0), nullptr);
        EXPECT_EQ(repo->GetStyle(L"a"), nullptr);
        EXPECT_FALSE(repo->GetLoadReport().fileRead);
        EXPECT_FALSE(repo->GetLoadReport().error.empty()) << i;
        EXPECT_EQ(StyleRepository::GetInstance(), repo) << "one instance";
        EXPECT_EQ(zelLogger::Instance().Count(L"Could not load styles from file"), 1u) << "logged once, at creation";
    }
    // An empty root is a successful read of no styles; a later good file loads after DestroyInstance.
    WriteStyles("");
    zelLogger::Instance().ClearEntries();
    EXPECT_TRUE(Fresh()->GetAllStyles().empty());
    EXPECT_EQ(zelLogger::Instance().Count(L"Could not load styles from file"), 0u);
    WriteStyles("<style id=\"4\" name=\"x\"/>");
    EXPECT_TRUE(Fresh()->GetStyle(4));
}

TEST_F(StyleRepositoryTest, FirstOfTwoEqualIdsWinsAndAnyRootChildIsAStyle) {
    WriteStyles(R"(<style id="1" name="first"/><style id="1" name="second"/><button id="2" name="odd"/><style name="noid"/>)");
    StyleRepository* repo = Fresh();
    ASSERT_TRUE(repo->GetStyle(1));
    EXPECT_EQ(repo->GetStyle(1)->name, L"first");
    EXPECT_EQ(repo->GetStyle(L"second"), nullptr);
    EXPECT_EQ(EntryNamed(L"second")->outcome, Outcome::DuplicateId);
    ASSERT_TRUE(repo->GetStyle(2)) << "the element name of a root child does not matter";
    EXPECT_EQ(repo->GetStyle(2)->name, L"odd");
    EXPECT_EQ(EntryNamed(L"odd")->tag, L"button");
    EXPECT_TRUE(repo->GetStyle(-1)) << "a style without id is kept under -1";
    EXPECT_EQ(repo->GetAllStyles().size(), 3u);
}

TEST_F(StyleRepositoryTest, DerivedStylesMergeOverTheirBaseToAnyDepth) {
    WriteStyles(R"(
      <style id="10" name="leaf" basename="middle"><icon location="3"/></style>
      <style id="0" name="root"><shape shape="6" radius="4" borderRatio="0.25"/><font name="Arial" size="20"/>
        <color><enabled><border r="1" g="2" b="3" a="4"/></enabled><brush id="3" focus="0.5"/></color></style>
      <style id="5" name="middle" basename="root"><font name="Verdana" size="12"/></style>
      <style id="6" name="other" basename="root"><color><brush id="0" fill="0"/></color></style>)");
    StyleRepository* repo = Fresh();
    const tButtonStyle* leaf = repo->GetStyle(L"leaf");
    ASSERT_TRUE(leaf);
    EXPECT_EQ(leaf->id, 10);
    EXPECT_EQ(leaf->basename, L"middle") << "only the nearest base is remembered";
    EXPECT_EQ(leaf->iconLocation, 3);
    EXPECT_EQ(leaf->font, FontDescriptor(L"Verdana", 12)) << "from the middle";
    EXPECT_EQ(leaf->shape, 6) << "from the root";
    EXPECT_EQ(leaf->radius, 4.0);
    EXPECT_EQ(leaf->colours[0].border, 0x04010203u);
    EXPECT_EQ(leaf->brushType, 3);
    EXPECT_EQ(leaf->pathBrush.focus, 0.5f);
    EXPECT_EQ(repo->GetLoadReport().Chain(*EntryNamed(L"leaf")), (std::vector<std::wstring>{L"middle", L"root"}));

    // Reading a chain once and reusing it must give exactly what reading each element in turn gives.
    tButtonStyle manual;
    zelXMLFile f;
    ASSERT_TRUE(f.open(m_dir.file(L"ButtonStyles.xml")));
    manual.Load(f.findElementByAttribute(L"style", L"name", L"root"));
    manual.Load(f.findElementByAttribute(L"style", L"name", L"middle"));
    manual.Load(f.findElementByAttribute(L"style", L"name", L"leaf"));
    EXPECT_EQ(*leaf, manual);
    const tButtonStyle* other = repo->GetStyle(6);
    ASSERT_TRUE(other);
    EXPECT_EQ(other->brushType, 0);
    EXPECT_EQ(other->solidBrush.fill, 0);
    EXPECT_EQ(other->pathBrush.focus, 0.5f) << "the base's path record is carried along";
    EXPECT_EQ(other->font, FontDescriptor(L"Arial", 20)) << "not the sibling's font";
}

TEST_F(StyleRepositoryTest, BaseLookupTakesTheFirstStyleElementInDocumentOrder) {
    // The base "b" exists three times: nested inside another element first, then as two root children.
    // Only elements named "style" serve as bases, at any depth.
    WriteStyles(R"(
      <button id="1" name="b"><shape shape="1"/></button>
      <group id="2" name="g"><style id="90" name="b"><shape shape="2"/></style></group>
      <style id="3" name="b"><shape shape="3"/></style>
      <style id="4" name="b"><shape shape="4"/></style>
      <style id="5" name="d" basename="b"><icon location="1"/></style>)");
    StyleRepository* repo = Fresh();
    ASSERT_TRUE(repo->GetStyle(5));
    EXPECT_EQ(repo->GetStyle(5)->shape, 2);
    EXPECT_EQ(repo->GetStyle(90), nullptr) << "nested elements are bases only, not styles";
    EXPECT_EQ(repo->GetStyle(L"b")->id, 1) << "by name: lowest id";
}

TEST_F(StyleRepositoryTest, UnresolvedBasesAndLoopsDropTheStyleOthersLoad) {
    WriteStyles(R"(
      <style id="1" name="ok"/>
      <style id="2" name="orphan" basename="missing"/>
      <style id="3" name="child-of-orphan" basename="orphan"/>
      <style id="4" name="a" basename="b"/>
      <style id="5" name="b" basename="c"/>
      <style id="6" name="c" basename="a"/>
      <style id="7" name="self" basename="self"/>
      <style id="8" name="behind-loop" basename="a"/>
      <style id="9" name="CaseBase" basename="ok"/>
      <style id="10" name="wrongcase" basename="OK"/>)");
    StyleRepository* repo = Fresh();
    EXPECT_TRUE(repo->GetStyle(1));
    EXPECT_TRUE(repo->GetStyle(9));
    for (int id : {2, 3, 4, 5, 6, 7, 8, 10}) EXPECT_EQ(repo->GetStyle(id), nullptr) << id;
    EXPECT_EQ(EntryNamed(L"orphan")->outcome, Outcome::UnresolvedBase);
    EXPECT_EQ(EntryNamed(L"orphan")->detail, L"missing");
    EXPECT_EQ(EntryNamed(L"child-of-orphan")->outcome, Outcome::UnresolvedBase);
    EXPECT_EQ(EntryNamed(L"wrongcase")->outcome, Outcome::UnresolvedBase) << "names are case-sensitive";
    for (const wchar_t* n : {L"a", L"b", L"c", L"self", L"behind-loop"})
        EXPECT_EQ(EntryNamed(n)->outcome, Outcome::BaseLoop) << n;
    EXPECT_EQ(zelLogger::Instance().Count(L"base chain loops"), 5u) << "one log line per dropped style";
    EXPECT_EQ(zelLogger::Instance().Count(L"\"self\""), 1u);
    // The loop log comes from this class.
    bool sourced = false;
    for (const auto& e : zelLogger::Instance().Entries())
        if (e.text.find(L"loops") != std::wstring::npos) sourced = sourced || (e.file == "StyleRepository" && e.type == 1);
    EXPECT_TRUE(sourced);
}

TEST_F(StyleRepositoryTest, BadNumbersAndLongListsStayUsable) {
    std::string positions, colours;
    for (int i = 0; i < 200; ++i) {
        positions += (i ? "," : "") + std::to_string(i / 200.0).substr(0, 4);
        colours += std::string(i ? "," : "") + "255 1 2 3";
    }
    WriteStyles("<style id=\"1\" name=\"many\"><color><brush id=\"2\" position=\"" + positions + "\" enabled=\"" + colours +
                "\"/></color></style>" +
                R"(<style id="2" name="short"><color><brush id="2" position="0,1" enabled="1 1 1 1,2 2 2 2,3 3 3 3"/></color></style>
                   <style id="x" name="garbage"><shape radius="abc" shape="1e9"/><font size="--3"/></style>)");
    StyleRepository* repo = Fresh();
    ASSERT_TRUE(repo->GetStyle(1));
    EXPECT_GT(repo->GetStyle(1)->multiStopBrush.stops.size(), 10u);
    EXPECT_LT(repo->GetStyle(1)->multiStopBrush.stops.size(), 200u);
    ASSERT_TRUE(repo->GetStyle(2));
    EXPECT_EQ(repo->GetStyle(2)->multiStopBrush.stops.size(), 2u) << "extra colours are ignored";
    const tButtonStyle* g = repo->GetStyle(L"garbage");
    ASSERT_TRUE(g);
    EXPECT_EQ(g->id, -1);
    EXPECT_EQ(g->radius, 10.0);
    EXPECT_EQ(g->shape, 0);
    EXPECT_EQ(g->font.size, 16);
}

TEST_F(StyleRepositoryTest, LookupsByIdAndName) {
    WriteStyles(R"(<style id="7" name="dup"/><style id="3" name="dup"/><style id="9" name=""/><style id="8"/>
                   <style id="-4" name="Dup"/>)");
    StyleRepository* repo = Fresh();
    EXPECT_EQ(repo->GetStyle(L"dup")->id, 3) << "ascending id order, not document order";
    EXPECT_EQ(repo->GetStyle(L"Dup")->id, -4);
    EXPECT_EQ(repo->GetStyle(L"DUP"), nullptr);
    EXPECT_EQ(repo->GetStyle(L"")->id, 8) << "first style with an empty name";
    EXPECT_EQ(repo->GetStyle(static_cast<const wchar_t*>(nullptr)), nullptr);
    EXPECT_EQ(repo->GetStyle(100), nullptr);
    std::vector<int> ids;
    for (const tButtonStyle* s : repo->GetAllStyles()) ids.push_back(s->id);
    EXPECT_EQ(ids, (std::vector<int>{-4, 3, 7, 8, 9}));
}

TEST_F(StyleRepositoryTest, UpdateStyleAssignsFreeIdsDerivesFromStyleZeroAndKeepsPointers) {
    WriteStyles(R"(<style id="0" name="zero"/><style id="1" name="one"/><style id="3" name="three"/>)");
    StyleRepository* repo = Fresh();
    const tButtonStyle* one = repo->GetStyle(1);

    tButtonStyle s;
    s.name = L"new";
    s.id = 77;
    repo->UpdateStyle(s, true);
    EXPECT_EQ(s.id, 2) << "the lowest free id";
    EXPECT_EQ(s.basename, L"zero");
    ASSERT_TRUE(repo->GetStyle(2));
    EXPECT_EQ(repo->GetStyle(L"new")->id, 2);
    repo->UpdateStyle(s, true);
    EXPECT_EQ(s.id, 4);

    // An existing id is overwritten in place: a pointer handed out sees the new values, and name lookups follow.
    tButtonStyle changed = *one;
    changed.name = L"renamed";
    changed.shape = 5;
    repo->UpdateStyle(changed, false);
    EXPECT_EQ(repo->GetStyle(1), one);
    EXPECT_EQ(one->shape, 5);
    EXPECT_EQ(repo->GetStyle(L"one"), nullptr);
    EXPECT_EQ(repo->GetStyle(L"renamed"), one);

    // Without style 0 a new style keeps its basename.
    WriteStyles(R"(<style id="1" name="one"/>)");
    repo = Fresh();
    tButtonStyle t;
    t.basename = L"kept";
    repo->UpdateStyle(t, true);
    EXPECT_EQ(t.id, 0);
    EXPECT_EQ(t.basename, L"kept");
}

TEST_F(StyleRepositoryTest, SaveWritesDerivedStylesAsDifferencesAndReadsBackEqual) {
    WriteStyles(R"(
      <style id="0" name="base"><shape shape="5" radius="6" borderRatio="0.25"/>
        <color><brush id="2" rotate="45" position="0,0.5,1" enabled="255 1 2 3,255 4 5 6,255 7 8 9"/></color></style>
      <style id="1" name="same" basename="base"/>
      <style id="2" name="font" basename="base"><font name="Arial" size="11"/></style>
      <style id="3" name="deep" basename="font"><color><pressed><border r="9"/></pressed></color></style>)");
    StyleRepository* repo = Fresh();
    ASSERT_EQ(repo->GetAllStyles().size(), 4u);
    std::vector<tButtonStyle> before;
    for (const tButtonStyle* s : repo->GetAllStyles()) before.push_back(*s);

    ASSERT_TRUE(repo->Save());
    zelXMLFile saved;
    ASSERT_TRUE(saved.open(m_dir.file(L"ButtonStyles.xml")));
    EXPECT_EQ(saved.getRootElement().getName(), L"Styles");
    const zelXMLNode same = saved.findElementByAttribute(L"style", L"name", L"same");
    ASSERT_TRUE(same.isValid());
    EXPECT_FALSE(same.getFirstChild().isValid()) << "all values equal the base's: only id, name, basename";
    EXPECT_EQ(same.getAttribute(L"basename"), L"base");
    const zelXMLNode font = saved.findElementByAttribute(L"style", L"name", L"font");
    EXPECT_TRUE(font.getChildByName(L"font").isValid());
    EXPECT_FALSE(font.getChildByName(L"shape").isValid());
    EXPECT_FALSE(font.getChildByName(L"color").isValid());
    const zelXMLNode deep = saved.findElementByAttribute(L"style", L"name", L"deep");
    EXPECT_FALSE(deep.getChildByName(L"font").isValid()) << "differences from its own base, not from the root";
    EXPECT_TRUE(deep.getChildByName(L"color").getChildByName(L"pressed").isValid());
    EXPECT_TRUE(saved.findElementByAttribute(L"style", L"name", L"base").getChildByName(L"color").isValid())
        << "a base is written whole";

    std::vector<tButtonStyle> after;
    for (const tButtonStyle* s : Fresh()->GetAllStyles()) after.push_back(*s);
    EXPECT_EQ(after, before);
}

TEST_F(StyleRepositoryTest, CopiesAreDeepAndLoadFileReplacesEverything) {
    WriteStyles(R"(<style id="1" name="one"/>)");
    StyleRepository* repo = Fresh();
    StyleRepository copy(*repo);
    ASSERT_TRUE(copy.GetStyle(1));
    EXPECT_NE(copy.GetStyle(1), repo->GetStyle(1));
    tButtonStyle s = *copy.GetStyle(1);
    s.name = L"changed";
    copy.UpdateStyle(s, false);
    EXPECT_EQ(repo->GetStyle(1)->name, L"one");

    const std::wstring other = m_dir.write(L"other.xml", "<Styles><style id=\"2\" name=\"two\"/></Styles>");
    ASSERT_TRUE(repo->LoadFile(other));
    EXPECT_EQ(repo->GetStyle(1), nullptr);
    EXPECT_TRUE(repo->GetStyle(L"two"));
    EXPECT_FALSE(repo->LoadFile(m_dir.file(L"none.xml")));
    EXPECT_TRUE(repo->GetAllStyles().empty()) << "a failed read leaves nothing behind";
    copy = *repo;
    EXPECT_TRUE(copy.GetAllStyles().empty());
}

}  // namespace
