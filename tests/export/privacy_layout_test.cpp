// The privacy layout: reading zones, full-screen offsets, and clipping zones to the image.
#include <gtest/gtest.h>

#include <climits>

#include "export/privacy_layout.h"
#include "platform/xml.h"
#include "support/temp_dir.h"

namespace {
using namespace uc::exporting;

PrivacyLayout Read(const std::wstring& xml) {
    zelXMLFile file;
    EXPECT_TRUE(file.loadXML(xml)) << file.getLastError();
    PrivacyLayout layout;
    EXPECT_TRUE(ReadPrivacyLayout(file.getRootElement(), layout));
    return layout;
}

TEST(PrivacyLayout, ReadsZonesAsElementsOrAttributes) {
    const PrivacyLayout layout = Read(
        L"<layout><fullscreen>1</fullscreen><zones>"
        L"<zone><xpos>10</xpos><ypos>20</ypos><width>300</width><height>40</height></zone>"
        L"<zone xpos='-5' ypos='0' width='50' height='8'/>"
        L"<zone><xpos>1</xpos><ypos>2</ypos><width>3</width></zone>"
        L"<zone xpos='1' ypos='2' width='12px' height='4'/>"
        L"</zones></layout>");
    EXPECT_TRUE(layout.fullscreen);
    ASSERT_EQ(layout.zones.size(), 2u);
    EXPECT_EQ(layout.zones[0], (ZoneRect{10, 20, 300, 40}));
    EXPECT_EQ(layout.zones[1], (ZoneRect{-5, 0, 50, 8}));
    ASSERT_EQ(layout.rejected.size(), 2u);
    EXPECT_NE(layout.rejected[0].find(L"\"height\""), std::wstring::npos);
    EXPECT_NE(layout.rejected[1].find(L"\"width\""), std::wstring::npos);
}

TEST(PrivacyLayout, OnlyFullscreenOneMovesTheZones) {
    EXPECT_TRUE(Read(L"<layout fullscreen='1'/>").fullscreen);
    EXPECT_FALSE(Read(L"<layout fullscreen='true'/>").fullscreen);
    EXPECT_FALSE(Read(L"<layout><fullscreen>2</fullscreen></layout>").fullscreen);
    EXPECT_FALSE(Read(L"<layout/>").fullscreen);
    EXPECT_TRUE(Read(L"<layout/>").zones.empty());
}

TEST(PrivacyLayout, FullScreenOffsetsCentreAnd800x600ScreenAtOneFifth) {
    struct Case {
        bool fullscreen;
        int w, h, x, y;
    } cases[] = {
        {true, 1024, 768, 112, 33}, {true, 800, 600, 0, 0},    {true, 1280, 1024, 240, 84},
        {true, 1025, 604, 112, 0},  {false, 1024, 768, 0, 0},
    };
    for (const Case& c : cases) {
        const ZoneOffset o = OffsetFor(c.fullscreen, c.w, c.h);
        EXPECT_EQ(o.x, c.x) << c.w << "x" << c.h;
        EXPECT_EQ(o.y, c.y) << c.w << "x" << c.h;
    }
}

TEST(PrivacyLayout, ZonesAreMovedAndClippedToTheImage) {
    PrivacyLayout layout;
    layout.fullscreen = true;
    layout.zones = {{0, 0, 100, 10},        // moved by (112, 33)
                    {-200, 0, 250, 10},     // sticks out left: clipped
                    {700, 550, 500, 500},   // sticks out right and below: clipped
                    {5000, 0, 10, 10},      // wholly outside
                    {0, 0, 0, 10},          // empty
                    {INT_MAX, INT_MAX, INT_MAX, INT_MAX},
                    {INT_MIN, INT_MIN, INT_MAX, INT_MAX}};
    std::vector<std::wstring> dropped;
    const auto rects = ZonesOnImage(layout, 1024, 768, 1024, 768, &dropped);
    ASSERT_EQ(rects.size(), 4u);
    EXPECT_EQ(rects[0], (ZoneRect{112, 33, 100, 10}));
    EXPECT_EQ(rects[1], (ZoneRect{0, 33, 162, 10}));
    EXPECT_EQ(rects[2], (ZoneRect{812, 583, 212, 185}));
    EXPECT_EQ(rects[3], (ZoneRect{0, 0, 111, 32}));  // far up-left, but long enough to reach the image
    ASSERT_EQ(dropped.size(), 3u);
    EXPECT_NE(dropped[0].find(L"outside the 1024 x 768 image"), std::wstring::npos);
    EXPECT_NE(dropped[1].find(L"empty"), std::wstring::npos);
}

TEST(PrivacyLayout, MissingOrMalformedFilesAreReported) {
    uc::test::TempDir dir;
    PrivacyLayout layout;
    std::wstring error;
    EXPECT_FALSE(LoadPrivacyLayout(dir.file(L"absent.xml"), layout, error));
    EXPECT_FALSE(error.empty());
    error.clear();
    EXPECT_FALSE(LoadPrivacyLayout(dir.write(L"bad.xml", "<layout><zones>"), layout, error));
    EXPECT_FALSE(error.empty());
    EXPECT_TRUE(LoadPrivacyLayout(dir.write(L"ok.xml", "<layout><zones><z xpos='1' ypos='2' width='3' height='4'/>"
                                                       "</zones></layout>"),
                                  layout, error));
    EXPECT_EQ(layout.zones.size(), 1u);
}

}  // namespace
