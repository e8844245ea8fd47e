// Centring, anchored re-layout, tab page areas and drive filtering.
#include <gtest/gtest.h>

#include "print.h"
#include "ui/drives.h"
#include "ui/geometry.h"

using namespace uc::ui;

TEST(Centring, MidpointHalvesTruncateTowardZero) {
    struct Case {
        Rect area;
        int w, h;
        Point expected;
    } cases[] = {
        {{0, 0, 1024, 768}, 400, 300, {312, 234}},
        {{100, 50, 1100, 850}, 301, 201, {450, 350}},     // 600 - 150, 450 - 100
        {{0, 0, 1024, 768}, 1100, 900, {-38, -66}},       // larger than the area: negative, not clamped
        {{-5, -5, 0, 0}, 0, 0, {-2, -2}},                 // -5/2 is -2 (toward zero), not -3
        {{-7, 0, 0, 3}, 3, 1, {-4, 1}},                   // -7/2 = -3, 3/2 = 1
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CenterOnMidpoint(c.area, c.w, c.h), c.expected)
            << c.area.left << "," << c.area.top << "," << c.area.right << "," << c.area.bottom << " " << c.w << "x" << c.h;
    }
}

TEST(Centring, CornerFormulaDiffersOnOddSizes) {
    const Rect area{1, 1, 4, 4};  // 3 x 3
    EXPECT_EQ(CenterOnMidpoint(area, 2, 2), (Point{1, 1}));  // 5/2 - 1
    EXPECT_EQ(CenterFromCorner(area, 2, 2), (Point{1, 1}));  // 1 + 1/2
    const Rect wide{0, 0, 5, 5};
    EXPECT_EQ(CenterOnMidpoint(wide, 2, 2), (Point{1, 1}));  // 2 - 1
    EXPECT_EQ(CenterFromCorner(wide, 2, 2), (Point{1, 1}));  // 3/2
    EXPECT_EQ(CenterOnMidpoint(Rect{0, 0, 5, 5}, 3, 3), (Point{1, 1}));  // 2 - 1
    EXPECT_EQ(CenterFromCorner(Rect{0, 0, 5, 5}, 3, 3), (Point{1, 1}));  // 2/2
    EXPECT_EQ(CenterOnMidpoint(Rect{1, 1, 6, 6}, 3, 3), (Point{2, 2}));  // 3 - 1
    EXPECT_EQ(CenterFromCorner(Rect{1, 1, 6, 6}, 4, 4), (Point{1, 1}));  // 1 + 1/2
    EXPECT_EQ(CenterOnMidpoint(Rect{1, 1, 6, 6}, 4, 4), (Point{1, 1}));  // 3 - 2
    EXPECT_EQ(CenterFromCorner(Rect{0, 0, 1024, 768}, 1100, 900), (Point{-38, -66}));
}

TEST(Relayout, EachEdgeFollowsItsAnchor) {
    const Rect r{10, 20, 110, 70};  // in a 200 x 100 client area
    struct Case {
        Anchors a;
        Rect expected;
    } cases[] = {
        {kAnchorTopLeft, {10, 20, 110, 70}},
        {kAnchorTopRight, {110, 20, 210, 70}},
        {kAnchorBottomLeft, {10, 70, 110, 120}},
        {kAnchorBottomRight, {110, 70, 210, 120}},
        {kAnchorFill, {10, 20, 210, 120}},
        {{Edge::Scale, Edge::Scale, Edge::Scale, Edge::Scale}, {15, 30, 165, 105}},
    };
    for (const Case& c : cases) EXPECT_EQ(Relayout(r, 200, 100, 300, 150, c.a), c.expected);
}

TEST(Relayout, ShrinkingAndDegenerateOriginals) {
    EXPECT_EQ(Relayout({10, 10, 190, 90}, 200, 100, 100, 50, kAnchorFill), (Rect{10, 10, 90, 40}));
    // A scaled side against a zero-sized original stays put instead of dividing by zero.
    const Anchors scale{Edge::Scale, Edge::Scale, Edge::Scale, Edge::Scale};
    EXPECT_EQ(Relayout({5, 5, 10, 10}, 0, 0, 300, 300, scale), (Rect{5, 5, 10, 10}));
    // Large coordinates scale without overflowing 32 bits.
    EXPECT_EQ(Relayout({0, 0, 60000, 60000}, 60000, 60000, 50000, 50000, scale), (Rect{0, 0, 50000, 50000}));
}

TEST(TabPages, AreaBelowTheItemsAndInset) {
    EXPECT_EQ(TabPageArea({0, 0, 300, 200}, 21), (Rect{2, 24, 296, 196}));
    EXPECT_EQ(TabPageArea({5, 7, 105, 57}, 0), (Rect{7, 10, 101, 53}));
}

TEST(Drives, TypesTwoToSixExceptTheSystemDrives) {
    struct Case {
        const wchar_t* root;
        unsigned type;
        bool offered;
    } cases[] = {
        {L"E:\\", 0, false}, {L"E:\\", 1, false}, {L"E:\\", 2, true},  {L"E:\\", 3, true},
        {L"E:\\", 4, true},  {L"E:\\", 5, true},  {L"E:\\", 6, true},  {L"E:\\", 7, false},
        {L"C:\\", 2, false}, {L"D:\\", 5, false}, {L"c:\\", 3, true},  // lower case is not the system drive's name
        {L"C:", 3, true},    {L"Z:\\", 4, true},
    };
    for (const Case& c : cases) EXPECT_EQ(IsOfferedDrive(c.root, c.type), c.offered) << c.type;
}
