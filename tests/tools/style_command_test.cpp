// uctool "style": checking, normalising and (on Windows) drawing style files, the shipped sample, the page layout.
#include <gtest/gtest.h>

#include <set>

#include "platform/paths.h"
#include "platform/text.h"
#include "skin/style_repository.h"
#include "style_tool.h"
#include "support/temp_dir.h"
#include "support/tool_run.h"

namespace {

using Outcome = uc::test::ToolRun;
Outcome Style(const uctool::Args& args) { return uc::test::RunTool(L"style", args); }

std::wstring Sample() { return uc::JoinPath(uc::test::SourceDir(), L"samples/protocol/ButtonStyles.xml"); }

bool Has(const std::wstring& text, const std::wstring& part) { return text.find(part) != std::wstring::npos; }

TEST(StyleCommand, TheSampleLoadsWholeAndCoversEveryShapeAndBrush) {
    const Outcome r = Style({L"check", Sample(), L"--strict"});
    ASSERT_EQ(r.code, 0) << r.err << r.out;
    EXPECT_TRUE(Has(r.out, L"0 dropped"));
    EXPECT_TRUE(Has(r.out, L"derives from <- \"Primary\" <- \"Default\"")) << "a three-level chain";

    StyleRepository* repo = StyleRepository::GetInstance();
    std::set<int> shapes, brushes;
    bool stops = false, ramp = false, background = false, noFill = false;
    for (const tButtonStyle* s : repo->GetAllStyles()) {
        shapes.insert(s->shape);
        brushes.insert(s->brushType);
        if (s->brushType == 2) (s->multiStopBrush.stops.empty() ? ramp : stops) = true;
        if (s->brushType == 0 && !s->solidBrush.fill) noFill = true;
        if (s->background != tButtonStyle().background) background = true;
    }
    EXPECT_EQ(shapes, (std::set<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(brushes, (std::set<int>{0, 1, 2, 3}));
    EXPECT_TRUE(stops);
    EXPECT_TRUE(ramp);
    EXPECT_TRUE(noFill);
    EXPECT_TRUE(background);
    StyleRepository::DestroyInstance();
}

TEST(StyleCommand, CheckNamesEveryDroppedElementAndWhy) {
    uc::test::TempDir dir;
    const std::wstring file = dir.write(L"s.xml", R"(<Styles>
        <style id="1" name="one"/><style id="1" name="again"/>
        <style id="2" name="orphan" basename="nobody"/>
        <style id="3" name="x" basename="y"/><style id="4" name="y" basename="x"/>
        <item id="5" name="odd"/>
      </Styles>)");
    Outcome r = Style({L"check", file});
    EXPECT_EQ(r.code, 0) << "a readable file passes without --strict";
    EXPECT_TRUE(Has(r.out, L"\"again\" (id 1): id 1 is already taken")) << r.out;
    EXPECT_TRUE(Has(r.out, L"\"orphan\" (id 2): base \"nobody\" names no <style> element"));
    EXPECT_TRUE(Has(r.out, L"\"x\" (id 3): its base chain loops at"));
    EXPECT_TRUE(Has(r.out, L"\"y\" (id 4): its base chain loops at"));
    EXPECT_TRUE(Has(r.out, L"note: element 5 <item>"));
    EXPECT_TRUE(Has(r.out, L"6 elements, 2 styles loaded, 4 dropped"));
    EXPECT_EQ(Style({L"check", L"--strict", file}).code, 1);
    StyleRepository::DestroyInstance();
}

TEST(StyleCommand, UnreadableFilesAndBadUsage) {
    uc::test::TempDir dir;
    for (const char* bytes : {"", "<Styles><style", "\x01\x02 not xml"}) {
        const std::wstring file = dir.write(L"bad.xml", bytes);
        const Outcome r = Style({L"check", file});
        EXPECT_EQ(r.code, 1);
        EXPECT_TRUE(Has(r.err, L"cannot read")) << r.err;
        EXPECT_EQ(Style({L"normalise", file}).code, 1);
    }
    EXPECT_EQ(Style({L"check", dir.file(L"missing.xml")}).code, 1);
    EXPECT_EQ(Style({}).code, 2);
    EXPECT_EQ(Style({L"paint"}).code, 2);
    EXPECT_EQ(Style({L"check"}).code, 2);
    EXPECT_EQ(Style({L"gallery", Sample()}).code, 2) << "--out is required";
    EXPECT_EQ(Style({L"gallery", Sample(), L"--out", dir.file(L"g.png"), L"--size", L"3x3"}).code, 2);
    EXPECT_EQ(Style({L"gallery", Sample(), L"--out", dir.file(L"g.png"), L"--size", L"wide"}).code, 2);
    StyleRepository::DestroyInstance();
}

TEST(StyleCommand, NormaliseWritesDifferencesThatReadBackEqual) {
    uc::test::TempDir dir;
    const std::wstring out = dir.file(L"normal.xml");
    Outcome r = Style({L"normalise", Sample(), L"--out", out});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(Has(r.out, L"wrote 15 styles"));
    StyleRepository* repo = StyleRepository::GetInstance();
    ASSERT_TRUE(repo->LoadFile(Sample()));
    std::vector<tButtonStyle> original;
    for (const tButtonStyle* s : repo->GetAllStyles()) original.push_back(*s);
    ASSERT_TRUE(repo->LoadFile(out));
    std::vector<tButtonStyle> normalised;
    for (const tButtonStyle* s : repo->GetAllStyles()) normalised.push_back(*s);
    EXPECT_EQ(normalised, original);
    // A second pass changes nothing in the text.
    const std::string first = dir.read(L"normal.xml");
    ASSERT_EQ(Style({L"normalise", out}).code, 0);
    EXPECT_EQ(dir.read(L"normal.xml"), first);
    StyleRepository::DestroyInstance();
}

TEST(StyleCommand, GalleryIsDrawnOnlyWhereGdiplusIs) {
    uc::test::TempDir dir;
    const std::wstring png = dir.file(L"gallery.png");
    const Outcome r = Style({L"gallery", Sample(), L"--out", png, L"--size", L"90x30", L"--console-type", L"4", L"--left"});
#ifdef _WIN32
    ASSERT_EQ(r.code, 0) << r.err;
    const std::string bytes = dir.read(L"gallery.png");
    ASSERT_GT(bytes.size(), 1000u);
    EXPECT_EQ(bytes.substr(1, 3), "PNG");
#else
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(Has(r.err, L"GDI+"));
#endif
    StyleRepository::DestroyInstance();
}

TEST(StyleCommand, DescriptionsAndLayout) {
    using namespace uctool::style;
    EXPECT_EQ(HexColour(0xC80000A6), L"#C80000A6");
    EXPECT_EQ(ShapeName(5), L"hexagon");
    EXPECT_EQ(ShapeName(42), L"rounded rectangle") << "codes outside 1-7 draw the rounded rectangle";
    tButtonStyle s;
    s.brushType = 2;
    s.multiStopBrush.stops.clear();
    EXPECT_EQ(BrushSummary(s), L"multi-stop rotate 90, default ramp");
    s.brushType = 12;
    EXPECT_TRUE(Has(BrushSummary(s), L"no face fill"));
    StyleLoadEntry ok;
    ok.tag = L"style";
    EXPECT_EQ(DescribeProblem(ok), L"");

    const GalleryLayout layout(3, 100, 40);
    EXPECT_EQ(layout.cellWidth, 100 + 2 * GalleryLayout::kGap);
    EXPECT_EQ(layout.width, GalleryLayout::kLabelWidth + 5 * layout.cellWidth + GalleryLayout::kGap);
    EXPECT_EQ(layout.height, GalleryLayout::kHeaderHeight + 3 * layout.cellHeight + GalleryLayout::kGap);
    EXPECT_EQ(layout.FaceX(4) + layout.faceWidth + GalleryLayout::kGap, layout.width - GalleryLayout::kGap);
    EXPECT_GE(layout.cellHeight, 4 * GalleryLayout::kLineHeight) << "room for four label lines";
    EXPECT_EQ(GalleryLayout(0, 1, 1).faceWidth, 8) << "faces never shrink below 8 pixels";
}

}  // namespace
