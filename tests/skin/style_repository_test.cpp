// StyleRepository: loading with base chains of any depth, first-wins rules, bad files, lookups, updates and saves.
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
    StyleRepository* Load(const std::string& body) {
        m_dir.write(L"ButtonStyles.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Styles>\n" + body + "</Styles>\n");
        StyleRepository::DestroyInstance();
        return StyleRepository::GetInstance();
    }
    static const StyleLoadEntry& Entry(const std::wstring& name) {
        for (const StyleLoadEntry& e : StyleRepository::GetInstance()->GetLoadReport().entries)
            if (e.name == name) return e;
        static const StyleLoadEntry none;
        ADD_FAILURE() << "no entry named " << uc::ToUtf8(name);
        return none;
    }
    static std::vector<std::wstring> Chain(const std::wstring& name, std::size_t limit = 100) {
        return StyleRepository::GetInstance()->GetLoadReport().Chain(Entry(name), limit);
    }

    uc::test::TempDir m_dir;
};

TEST_F(StyleRepositoryTest, UnreadableFilesLeaveAnEmptyUsableRepositoryAndSayWhere) {
    const std::string cases[] = {"", "<?xml version=\"1.0\"?>\n<Styles><style id=\"1\" name=\"a\">",
                                 "<Styles/>\n<Styles><style id=\"1\" name=\"a\"/></Styles>",
                                 std::string("\xFF\xFE\x00\x01garbage", 12)};
    for (int i = -1; i < 4; ++i) {  // the missing file first
        if (i >= 0) m_dir.write(L"ButtonStyles.xml", cases[i]);
        zelLogger::Instance().ClearEntries();
        StyleRepository::DestroyInstance();
        StyleRepository* repo = StyleRepository::GetInstance();
        EXPECT_EQ(zelLogger::Instance().Count(L"Could not load styles from file"), 1u) << i;
        EXPECT_TRUE(repo->GetAllStyles().empty());
        EXPECT_EQ(repo->GetStyle(L"a"), nullptr);
        EXPECT_FALSE(repo->GetLoadReport().error.empty()) << i;
        EXPECT_EQ(StyleRepository::GetInstance(), repo) << "one instance, logged once";
        EXPECT_EQ(zelLogger::Instance().Count(L"Could not load styles from file"), 1u);
    }
    // The second root is refused where it stands, rather than its styles vanishing.
    m_dir.write(L"ButtonStyles.xml", cases[2]);
    StyleRepository::DestroyInstance();
    const StyleLoadReport& report = StyleRepository::GetInstance()->GetLoadReport();
    EXPECT_EQ(report.errorLine, 2);
    EXPECT_EQ(report.errorColumn, 1);
    zelLogger::Instance().ClearEntries();
    EXPECT_TRUE(Load("")->GetAllStyles().empty()) << "an empty root is a successful read of no styles";
    EXPECT_EQ(zelLogger::Instance().Count(L"Could not load styles from file"), 0u);
}

TEST_F(StyleRepositoryTest, FirstOfTwoEqualIdsWinsAndStillServesAsABase) {
    StyleRepository* repo = Load(R"(<style id="1" name="first"/><style id="1" name="second"><icon location="2"/></style>
        <button id="2" name="odd"/><style name="noid"/><style id="3" name="child" basename="second"/>)");
    EXPECT_EQ(repo->GetStyle(1)->name, L"first");
    EXPECT_EQ(Entry(L"second").outcome, Outcome::DuplicateId);
    ASSERT_TRUE(repo->GetStyle(3));
    EXPECT_EQ(repo->GetStyle(3)->iconLocation, 2) << "a dropped duplicate is still a base";
    EXPECT_EQ(repo->GetStyle(2)->name, L"odd") << "the element name of a root child does not matter";
    EXPECT_EQ(Entry(L"odd").tag, L"button");
    EXPECT_TRUE(repo->GetStyle(-1)) << "a style without id is kept under -1";
}

TEST_F(StyleRepositoryTest, DerivedStylesMergeOverTheirBaseToAnyDepth) {
    StyleRepository* repo = Load(R"(
      <style id="10" name="leaf" basename="middle"><icon location="3"/></style>
      <style id="0" name="root"><shape shape="6" radius="4" borderRatio="0.25"/><font name="Arial" size="20"/>
        <color><enabled><border r="1" g="2" b="3" a="4"/></enabled><brush id="3" focus="0.5"/></color></style>
      <style id="5" name="middle" basename="root"><font name="Verdana" size="12"/></style>
      <style id="6" name="other" basename="root"><color><brush id="0" fill="0"/></color></style>)");
    const tButtonStyle* leaf = repo->GetStyle(L"leaf");
    ASSERT_TRUE(leaf);
    EXPECT_EQ(leaf->basename, L"middle") << "only the nearest base is remembered";
    EXPECT_EQ(Chain(L"leaf"), (std::vector<std::wstring>{L"middle", L"root"}));
    EXPECT_EQ(Entry(L"leaf").depth, 2u);
    // Reading a chain once and reusing it gives exactly what reading each element in turn gives.
    tButtonStyle manual;
    zelXMLFile f;
    ASSERT_TRUE(f.open(m_dir.file(L"ButtonStyles.xml")));
    for (const wchar_t* name : {L"root", L"middle", L"leaf"}) manual.Load(f.findElementByAttribute(L"style", L"name", name));
    EXPECT_EQ(*leaf, manual);
    const tButtonStyle* other = repo->GetStyle(6);
    EXPECT_EQ(other->pathBrush.focus, 0.5f) << "the base's path record is carried along";
    EXPECT_EQ(other->font, FontDescriptor(L"Arial", 20)) << "not the sibling's font";
}

TEST_F(StyleRepositoryTest, BaseLookupTakesTheFirstStyleElementInDocumentOrder) {
    // "b" exists as a root child that is not a style, nested in another element, then twice as a root child.
    StyleRepository* repo = Load(R"(
      <button id="1" name="b"><shape shape="1"/></button>
      <group id="2" name="g"><style id="90" name="b"><shape shape="2"/></style></group>
      <style id="3" name="b"><shape shape="3"/></style>
      <style id="4" name="b" basename="b"><icon location="2"/></style>
      <style id="5" name="d" basename="b"><icon location="1"/></style>)");
    EXPECT_EQ(repo->GetStyle(5)->shape, 2);
    EXPECT_EQ(repo->GetStyle(4)->shape, 2) << "a later namesake derives from the first one";
    EXPECT_EQ(repo->GetStyle(3)->shape, 3);
    EXPECT_EQ(repo->GetStyle(90), nullptr) << "nested elements are bases only, not styles";
    EXPECT_EQ(repo->GetStyle(L"b")->id, 1) << "by name: lowest id";
}

TEST_F(StyleRepositoryTest, UnresolvedBasesAndLoopsDropTheStyleOthersLoad) {
    StyleRepository* repo = Load(R"(
      <style id="1" name="ok"/>
      <style id="2" name="orphan" basename="missing"/>
      <style id="3" name="child-of-orphan" basename="orphan"/>
      <style id="4" name="a" basename="b"/><style id="5" name="b" basename="c"/><style id="6" name="c" basename="a"/>
      <style id="7" name="self" basename="self"/>
      <style id="8" name="behind-loop" basename="a"/>
      <style id="9" name="CaseBase" basename="ok"/>
      <style id="10" name="wrongcase" basename="OK"/>)");
    EXPECT_TRUE(repo->GetStyle(1) && repo->GetStyle(9));
    for (int id : {2, 3, 4, 5, 6, 7, 8, 10}) EXPECT_EQ(repo->GetStyle(id), nullptr) << id;
    EXPECT_EQ(Entry(L"orphan").detail, L"missing");
    EXPECT_EQ(Entry(L"child-of-orphan").outcome, Outcome::UnresolvedBase);
    EXPECT_EQ(Chain(L"child-of-orphan"), (std::vector<std::wstring>{L"orphan", L"missing"}));
    EXPECT_EQ(Entry(L"wrongcase").outcome, Outcome::UnresolvedBase) << "names are case-sensitive";
    for (const wchar_t* n : {L"a", L"b", L"c", L"self", L"behind-loop"}) EXPECT_EQ(Entry(n).outcome, Outcome::BaseLoop) << n;
    // A loop's chain ends with the first name seen twice, which is also what the report blames.
    EXPECT_EQ(Chain(L"a"), (std::vector<std::wstring>{L"b", L"c", L"a", L"b"}));
    EXPECT_EQ(Entry(L"a").detail, L"b");
    EXPECT_EQ(Chain(L"behind-loop"), (std::vector<std::wstring>{L"a", L"b", L"c", L"a"}));
    EXPECT_EQ(Entry(L"behind-loop").detail, L"a");
    EXPECT_EQ(Chain(L"self"), (std::vector<std::wstring>{L"self", L"self"}));
    EXPECT_EQ(zelLogger::Instance().Count(L"base chain loops"), 5u) << "one log line per dropped style";
    bool sourced = false;
    for (const auto& e : zelLogger::Instance().Entries())
        if (e.text.find(L"loops") != std::wstring::npos) sourced = sourced || (e.file == "StyleRepository" && e.type == 1);
    EXPECT_TRUE(sourced) << "logged as a failure of this class";
}

TEST_F(StyleRepositoryTest, AChainThousandsDeepLoadsWithALinearReport) {
#ifdef _WIN32
    const int depth = 3000;  // MSXML under Wine is slow; the native run goes far deeper
#else
    const int depth = 20000;  // the quadratic loader needed minutes and gigabytes for this
#endif
    std::string body = "<style id=\"0\" name=\"s0\"><shape shape=\"5\"/></style>";
    for (int i = 1; i < depth; ++i)
        body += "<style id=\"" + std::to_string(i) + "\" name=\"s" + std::to_string(i) + "\" basename=\"s" +
                std::to_string(i - 1) + "\"><icon location=\"" + std::to_string(i % 3) + "\"/></style>";
    // The same chain closed into a loop at its far end, and a style deriving from the top of it.
    body += "<style id=\"-5\" name=\"t0\" basename=\"t" + std::to_string(depth - 1) + "\"/>";
    for (int i = 1; i < depth; ++i)
        body += "<style id=\"-" + std::to_string(i + 5) + "\" name=\"t" + std::to_string(i) + "\" basename=\"t" +
                std::to_string(i - 1) + "\"/>";
    StyleRepository* repo = Load(body);
    const std::wstring last = L"s" + std::to_wstring(depth - 1);
    ASSERT_TRUE(repo->GetStyle(last.c_str()));
    EXPECT_EQ(repo->GetStyle(last.c_str())->shape, 5) << "merged from the far end of the chain";
    EXPECT_EQ(repo->GetStyle(last.c_str())->iconLocation, (depth - 1) % 3);
    EXPECT_EQ(Entry(last).depth, static_cast<std::size_t>(depth - 1));
    EXPECT_EQ(Chain(last, 3), (std::vector<std::wstring>{L"s" + std::to_wstring(depth - 2), L"s" + std::to_wstring(depth - 3),
                                                          L"s" + std::to_wstring(depth - 4)}));
    EXPECT_EQ(Entry(L"t5").outcome, Outcome::BaseLoop);
    EXPECT_EQ(Entry(L"t5").depth, static_cast<std::size_t>(depth + 1));
    const StyleLoadReport& report = repo->GetLoadReport();
    EXPECT_LE(report.links.size(), 2u * report.entries.size()) << "chains share their links";
    EXPECT_EQ(repo->GetAllStyles().size(), static_cast<std::size_t>(depth));
}

TEST_F(StyleRepositoryTest, BadNumbersAndLongListsStayUsable) {
    std::string positions, colours;
    for (int i = 0; i < 200; ++i) {
        positions += (i ? "," : "") + std::to_string(i / 200.0).substr(0, 4);
        colours += std::string(i ? "," : "") + "255 1 2 3";
    }
    StyleRepository* repo = Load("<style id=\"1\" name=\"many\"><color><brush id=\"2\" position=\"" + positions +
                                 "\" enabled=\"" + colours + "\"/></color></style>" +
                                 R"(<style id="x" name="garbage"><shape radius="abc" shape="1e9"/><font size="--3"/></style>)");
    ASSERT_TRUE(repo->GetStyle(1));
    EXPECT_GT(repo->GetStyle(1)->multiStopBrush.stops.size(), 10u);
    EXPECT_LT(repo->GetStyle(1)->multiStopBrush.stops.size(), 200u);
    const tButtonStyle* g = repo->GetStyle(L"garbage");
    ASSERT_TRUE(g);
    EXPECT_EQ(g->id, -1);
    EXPECT_EQ(g->radius, 10.0);
    EXPECT_EQ(g->shape, 0);
    EXPECT_EQ(g->font.size, 16);
}

TEST_F(StyleRepositoryTest, LookupsByIdAndName) {
    StyleRepository* repo = Load(R"(<style id="7" name="dup"/><style id="3" name="dup"/><style id="9" name=""/><style id="8"/>
                   <style id="-4" name="Dup"/>)");
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
    StyleRepository* repo = Load(R"(<style id="0" name="zero"/><style id="1" name="one"/><style id="3" name="three"/>)");
    const tButtonStyle* one = repo->GetStyle(1);
    tButtonStyle s;
    s.name = L"new";
    s.id = 77;
    repo->UpdateStyle(s, true);
    EXPECT_EQ(s.id, 2) << "the lowest free id";
    EXPECT_EQ(s.basename, L"zero");
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
    repo = Load(R"(<style id="1" name="one"/>)");
    tButtonStyle t;
    t.basename = L"kept";
    repo->UpdateStyle(t, true);
    EXPECT_EQ(t.id, 0);
    EXPECT_EQ(t.basename, L"kept");
}

TEST_F(StyleRepositoryTest, SaveWritesDerivedStylesAsDifferencesAndReadsBackEqual) {
    StyleRepository* repo = Load(R"(
      <style id="0" name="base"><shape shape="5" radius="6" borderRatio="0.25"/>
        <color><brush id="2" rotate="45" position="0,0.5,1" enabled="255 1 2 3,255 4 5 6,255 7 8 9"/></color></style>
      <style id="1" name="same" basename="base"/>
      <style id="2" name="font" basename="base"><font name="Arial" size="11"/></style>
      <style id="3" name="deep" basename="font"><color><pressed><border r="9"/></pressed></color></style>)");
    std::vector<tButtonStyle> before;
    for (const tButtonStyle* s : repo->GetAllStyles()) before.push_back(*s);
    ASSERT_EQ(before.size(), 4u);
    ASSERT_TRUE(repo->Save());
    zelXMLFile saved;
    ASSERT_TRUE(saved.open(m_dir.file(L"ButtonStyles.xml")));
    const auto style = [&](const wchar_t* name) { return saved.findElementByAttribute(L"style", L"name", name); };
    EXPECT_FALSE(style(L"same").getFirstChild().isValid()) << "all values equal the base's: only id, name, basename";
    EXPECT_EQ(style(L"same").getAttribute(L"basename"), L"base");
    EXPECT_TRUE(style(L"font").getChildByName(L"font").isValid());
    EXPECT_FALSE(style(L"font").getChildByName(L"shape").isValid());
    EXPECT_FALSE(style(L"deep").getChildByName(L"font").isValid()) << "differences from its own base, not from the root";
    EXPECT_TRUE(style(L"base").getChildByName(L"color").isValid()) << "a base is written whole";
    std::vector<tButtonStyle> after;
    StyleRepository::DestroyInstance();
    for (const tButtonStyle* s : StyleRepository::GetInstance()->GetAllStyles()) after.push_back(*s);
    EXPECT_EQ(after, before);
}

TEST_F(StyleRepositoryTest, CopiesAreDeepAndLoadFileReplacesEverything) {
    StyleRepository* repo = Load(R"(<style id="1" name="one"/>)");
    StyleRepository copy(*repo);
    EXPECT_NE(copy.GetStyle(1), repo->GetStyle(1));
    tButtonStyle s = *copy.GetStyle(1);
    s.name = L"changed";
    copy.UpdateStyle(s, false);
    EXPECT_EQ(repo->GetStyle(1)->name, L"one");
    ASSERT_TRUE(repo->LoadFile(m_dir.write(L"other.xml", "<Styles><style id=\"2\" name=\"two\"/></Styles>")));
    EXPECT_EQ(repo->GetStyle(1), nullptr);
    EXPECT_TRUE(repo->GetStyle(L"two"));
    EXPECT_FALSE(repo->LoadFile(m_dir.file(L"none.xml")));
    EXPECT_TRUE(repo->GetAllStyles().empty()) << "a failed read leaves nothing behind";
    copy = *repo;
    EXPECT_TRUE(copy.GetAllStyles().empty());
}

}  // namespace
