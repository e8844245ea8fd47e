// tButtonStyle: defaults, copies and comparisons, merging loads, difference stores, multi-stop lists, SetAlpha.
#include <gtest/gtest.h>

#include <string>

#include "skin/button_style.h"

namespace {

zelXMLNode Parse(zelXMLFile& file, const std::wstring& xml) {
    EXPECT_TRUE(file.loadXML(xml)) << file.getLastError();
    return file.getRootElement();
}

// Stores `s` (against `base`) into a fresh document and returns the "style" element.
zelXMLNode StoreToNew(zelXMLFile& file, const tButtonStyle& s, const tButtonStyle* base = nullptr) {
    EXPECT_TRUE(file.newDocument(L"style"));
    EXPECT_TRUE(s.Store(file.getRootElement(), base));
    return file.getRootElement();
}

int CountChildren(const zelXMLNode& n) {
    int count = 0;
    for (zelXMLNode c = n.getFirstChild(); c.isValid(); ++c) ++count;
    return count;
}

TEST(ButtonStyle, ResetValues) {
    tButtonStyle s;
    EXPECT_EQ(s.id, -1);
    EXPECT_TRUE(s.name.empty());
    EXPECT_TRUE(s.basename.empty());
    EXPECT_EQ(s.flags, 0);
    EXPECT_EQ(s.shadowText, 1);
    EXPECT_EQ(s.scaleText, 0);
    EXPECT_EQ(s.shape, 0);
    EXPECT_EQ(s.radius, 10.0);
    EXPECT_EQ(s.borderRatio, 0.18);
    EXPECT_EQ(s.font, FontDescriptor(L"Tahoma", 16));
    EXPECT_EQ(s.iconLocation, 0);
    EXPECT_EQ(s.brushType, 1);
    EXPECT_EQ(s.background >> 24, 200u) << "background takes the desktop colour at alpha 200";
    EXPECT_EQ(s.background & 0xFFFFFFu, uc::skin::DesktopColour());

    const std::uint32_t expect[5][4] = {{0xC87B7BC0, 0xC80000A6, 0xC8B7B8E1, 0xC8FDFDFD},
                                        {0xC8808080, 0xC8808080, 0xC8CCCCCC, 0xC8404040},
                                        {0xC8C0C0C0, 0xC8D5D5FF, 0xC8C6CAD2, 0xC8020202},
                                        {0xC8A48080, 0xC8404040, 0xC8C0C0C0, 0xC8020202},
                                        {0xC8A48080, 0xC8404040, 0xC8C0C0C0, 0xC8020202}};
    const float bright[5][2] = {{1.0f, 1.0f}, {0.1f, 0.2f}, {1.8f, 1.0f}, {1.5f, 1.0f}, {2.0f, 1.0f}};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(s.colours[i].border, expect[i][0]) << i;
        EXPECT_EQ(s.colours[i].facePrimary, expect[i][1]) << i;
        EXPECT_EQ(s.colours[i].faceSecondary, expect[i][2]) << i;
        EXPECT_EQ(s.colours[i].textColour, expect[i][3]) << i;
        EXPECT_EQ(s.colours[i].brightness, bright[i][0]) << i;
        EXPECT_EQ(s.colours[i].brightness2, bright[i][1]) << i;
    }

    EXPECT_EQ(s.solidBrush.fill, 1);
    EXPECT_EQ(s.linearBrush.rotate, 90.0f);
    EXPECT_EQ(s.linearBrush.focus, 0.0f);
    EXPECT_EQ(s.linearBrush.scale, 1.0f);
    EXPECT_EQ(s.linearBrush.shapeBell, 0);
    EXPECT_EQ(s.linearBrush.gamma, 0);
    EXPECT_EQ(s.linearBrush.shapeTriangle, 1);
    EXPECT_EQ(s.pathBrush.rotate, 0.0f);
    EXPECT_EQ(s.pathBrush.focus, 1.0f);
    EXPECT_EQ(s.pathBrush.focusx, 0.5f);
    EXPECT_EQ(s.pathBrush.focusy, 0.5f);
    EXPECT_EQ(s.pathBrush.scale, 1.0f);
    EXPECT_EQ(s.pathBrush.gamma, 0);
    EXPECT_EQ(s.pathBrush.shapeBell, 0);
    EXPECT_EQ(s.pathBrush.shapeTriangle, 1);

    // The default ramp: secondary, secondary, primary, secondary of every slot, slot 4 included.
    ASSERT_EQ(s.multiStopBrush.stops.size(), 4u);
    EXPECT_EQ(s.multiStopBrush.rotate, 90.0f);
    const float pos[4] = {0.0f, 0.3f, 0.35f, 1.0f};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(s.multiStopBrush.stops[i].position, pos[i]);
        for (int slot = 0; slot < 5; ++slot)
            EXPECT_EQ(s.multiStopBrush.stops[i].colours[slot],
                      i == 2 ? s.colours[slot].facePrimary : s.colours[slot].faceSecondary);
    }

    // Reset after changes brings every group back.
    tButtonStyle changed = s;
    changed.flags = 9;
    changed.multiStopBrush.stops.clear();
    changed.colours[4].border = 1;
    changed.Reset();
    EXPECT_EQ(changed, s);
}

TEST(ButtonStyle, StateTables) {
    EXPECT_EQ(tButtonStyle::StateName(0), L"enabled");
    EXPECT_EQ(tButtonStyle::StateName(1), L"disabled");
    EXPECT_EQ(tButtonStyle::StateName(2), L"clicked");
    EXPECT_EQ(tButtonStyle::StateName(3), L"pressed");
    EXPECT_EQ(tButtonStyle::StateName(4), L"") << "slot 4 has no name";
    EXPECT_EQ(tButtonStyle::StateName(-1), L"");
    for (int i = 0; i < 4; ++i) EXPECT_EQ(tButtonStyle::StateIndex(tButtonStyle::StateName(i)), i);
    EXPECT_EQ(tButtonStyle::StateIndex(L"Enabled"), -1) << "case-sensitive";
    EXPECT_EQ(tButtonStyle::StateIndex(L""), -1);
}

TEST(ButtonStyle, CopiesAndComparisonsCoverEveryField) {
    const tButtonStyle a;
    std::vector<void (*)(tButtonStyle&)> changes = {
        [](tButtonStyle& s) { s.id = 4; },
        [](tButtonStyle& s) { s.name = L"n"; },
        [](tButtonStyle& s) { s.basename = L"b"; },
        [](tButtonStyle& s) { s.flags = 1; },
        [](tButtonStyle& s) { s.shadowText = 0; },
        [](tButtonStyle& s) { s.scaleText = 1; },
        [](tButtonStyle& s) { s.shape = 6; },
        [](tButtonStyle& s) { s.radius = 10.5; },
        [](tButtonStyle& s) { s.borderRatio = 0.2; },
        [](tButtonStyle& s) { s.font.size = 3; },
        [](tButtonStyle& s) { s.iconLocation = 2; },
        [](tButtonStyle& s) { s.brushType = 3; },
        [](tButtonStyle& s) { s.solidBrush.fill = 0; },
        [](tButtonStyle& s) { s.linearBrush.gamma = 1; },
        [](tButtonStyle& s) { s.linearBrush.scale = 0.5f; },
        [](tButtonStyle& s) { s.multiStopBrush.rotate = 0.0f; },
        [](tButtonStyle& s) { s.multiStopBrush.stops[3].colours[4] = 7; },
        [](tButtonStyle& s) { s.multiStopBrush.stops[1].position = 0.31f; },
        [](tButtonStyle& s) { s.multiStopBrush.stops.pop_back(); },
        [](tButtonStyle& s) { s.pathBrush.focusy = 0.1f; },
        [](tButtonStyle& s) { s.pathBrush.gamma = 1; },
        [](tButtonStyle& s) { s.background ^= 1; },
        [](tButtonStyle& s) { s.colours[4].brightness2 = 3.0f; },
        [](tButtonStyle& s) { s.colours[0].textColour = 0; },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        tButtonStyle b;
        changes[i](b);
        EXPECT_NE(a, b) << "change " << i;
        tButtonStyle copy(b);
        EXPECT_EQ(copy, b) << "change " << i;
        tButtonStyle assigned;
        assigned = b;
        EXPECT_EQ(assigned, b) << "change " << i;
    }
    tButtonStyle self;
    self.name = L"x";
    self = *&self;
    EXPECT_EQ(self.name, L"x");
}

TEST(ButtonStyle, LoadOfIdAndNameOnlyGivesTheResetStyle) {
    zelXMLFile f;
    tButtonStyle s;
    ASSERT_TRUE(s.Load(Parse(f, L"<style id=\"3\" name=\"x\"/>")));
    tButtonStyle expect;
    expect.id = 3;
    expect.name = L"x";
    EXPECT_EQ(s, expect);
    EXPECT_FALSE(s.Load(zelXMLNode())) << "an invalid element fails";
    EXPECT_EQ(s, expect) << "and leaves the style unchanged";
}

TEST(ButtonStyle, LoadMergesGroupsInAnyOrderAndLaterDuplicatesWin) {
    zelXMLFile f;
    tButtonStyle s;
    s.iconLocation = 5;
    s.colours[1].border = 0x11223344;
    ASSERT_TRUE(s.Load(Parse(f, LR"(<style id="7" name="n" basename="b">
        <color>
          <enabled><facePrimary r="1" g="2" b="3" a="4"/></enabled>
          <unknown r="9"/>
          <background r="10" g="20" b="30"/>
          <enabled><border r="5" g="6" b="7" a="255"/></enabled>
        </color>
        <font name="Arial" size="12" scaleText="1"/>
        <whatever/>
        <shape shape="2" radius="4.5" borderRatio="0.25"/>
        <shape shape="6"/>
      </style>)")));
    EXPECT_EQ(s.id, 7);
    EXPECT_EQ(s.basename, L"b");
    EXPECT_EQ(s.shape, 6) << "the later shape element wins";
    EXPECT_EQ(s.radius, 10.0) << "and its absent attributes take their defaults";
    EXPECT_EQ(s.borderRatio, static_cast<double>(0.18f)) << "the border ratio is read in single precision";
    EXPECT_EQ(s.font, FontDescriptor(L"Arial", 12));
    EXPECT_EQ(s.shadowText, 1);
    EXPECT_EQ(s.scaleText, 1);
    EXPECT_EQ(s.iconLocation, 5) << "no icon element: kept";
    EXPECT_EQ(s.colours[0].facePrimary, 0x04010203u);
    EXPECT_EQ(s.colours[0].border, 0xFF050607u) << "both enabled elements merge";
    EXPECT_EQ(s.colours[0].faceSecondary, 0xC8B7B8E1u);
    EXPECT_EQ(s.colours[1].border, 0x11223344u) << "slots not named keep their values";
    EXPECT_EQ(s.background, 0xC80A141Eu);
    EXPECT_EQ(s.brushType, 1) << "no brush element: kept";

    // Without "id" or "name" the identity takes its defaults rather than keeping the old values.
    ASSERT_TRUE(s.Load(Parse(f, L"<style><icon/></style>")));
    EXPECT_EQ(s.id, -1);
    EXPECT_EQ(s.name, L"");
    EXPECT_EQ(s.basename, L"");
    EXPECT_EQ(s.iconLocation, 0);
    EXPECT_EQ(s.shape, 6);
}

TEST(ButtonStyle, BrushRecordsLoadDefaultsAndKeptFlags) {
    zelXMLFile f;
    tButtonStyle s;
    s.linearBrush.shapeBell = 1;
    s.linearBrush.gamma = 1;
    ASSERT_TRUE(s.Load(Parse(f, L"<style><color><brush id=\"1\" focus=\"0.5\" shapeTriangle=\"0\"/></color></style>")));
    EXPECT_EQ(s.brushType, 1);
    EXPECT_EQ(s.linearBrush.rotate, 90.0f);
    EXPECT_EQ(s.linearBrush.focus, 0.5f);
    EXPECT_EQ(s.linearBrush.scale, 1.0f);
    EXPECT_EQ(s.linearBrush.shapeBell, 1) << "absent flags keep their values";
    EXPECT_EQ(s.linearBrush.gamma, 1);
    EXPECT_EQ(s.linearBrush.shapeTriangle, 0);

    s.solidBrush.fill = 0;
    ASSERT_TRUE(s.Load(Parse(f, L"<style><color><brush id=\"0\"/></color></style>")));
    EXPECT_EQ(s.brushType, 0);
    EXPECT_EQ(s.solidBrush.fill, 0) << "absent fill keeps its value";

    ASSERT_TRUE(s.Load(Parse(
        f, L"<style><color><brush id=\"3\" rotate=\"45\" focusx=\"0.25\" scale=\"0.75\" shapeBell=\"1\"/></color></style>")));
    EXPECT_EQ(s.brushType, 3);
    EXPECT_EQ(s.pathBrush.rotate, 45.0f);
    EXPECT_EQ(s.pathBrush.focus, 1.0f);
    EXPECT_EQ(s.pathBrush.focusx, 0.25f);
    EXPECT_EQ(s.pathBrush.focusy, 0.5f);
    EXPECT_EQ(s.pathBrush.scale, 0.75f);
    EXPECT_EQ(s.pathBrush.shapeBell, 1);
    EXPECT_EQ(s.pathBrush.shapeTriangle, 1);

    // An id out of range sets the type and reads nothing else.
    const tButtonStyle before = s;
    ASSERT_TRUE(s.Load(Parse(f, L"<style><color><brush id=\"9\" fill=\"0\" rotate=\"1\" position=\"0\"/></color></style>")));
    EXPECT_EQ(s.brushType, 9);
    tButtonStyle expect = before;
    expect.brushType = 9;
    expect.id = -1;
    expect.name.clear();
    EXPECT_EQ(s, expect);
    // A brush without "id" is the linear one.
    ASSERT_TRUE(s.Load(Parse(f, L"<style><color><brush rotate=\"30\"/></color></style>")));
    EXPECT_EQ(s.brushType, 1);
    EXPECT_EQ(s.linearBrush.rotate, 30.0f);
}

TEST(ButtonStyle, GarbageNumbersFallBackToDefaults) {
    zelXMLFile f;
    tButtonStyle s;
    s.shape = 3;
    ASSERT_TRUE(s.Load(Parse(f, LR"(<style id="12x" name="g">
        <shape shape="two" radius="nan" borderRatio="1e300"/>
        <font name="F" size="huge" shadowText="" />
        <icon location="99999999999"/>
        <color><brush id="1" rotate="4.5" focus="inf" scale="-1e400"/></color>
      </style>)")));
    EXPECT_EQ(s.id, -1);
    EXPECT_EQ(s.shape, 0);
    EXPECT_EQ(s.radius, 10.0) << "a radius that is not finite takes the default";
    EXPECT_EQ(s.borderRatio, static_cast<double>(FLT_MAX)) << "narrowing to single precision saturates";
    EXPECT_EQ(s.font.size, 16);
    EXPECT_EQ(s.shadowText, 1);
    EXPECT_EQ(s.iconLocation, 0);
    EXPECT_EQ(s.linearBrush.rotate, 90.0f) << "rotate is a whole number";
    EXPECT_EQ(s.linearBrush.focus, 0.0f);
    EXPECT_EQ(s.linearBrush.scale, 1.0f);
}

TEST(ButtonStyle, MultiStopListsAndTheirLimits) {
    zelXMLFile f;
    tButtonStyle s;
    ASSERT_TRUE(s.Load(Parse(f, LR"(<style><color><brush id="2" rotate="0" position="0, 0.5 ,1"
        enabled="255 255 0 0,255 0 255 0,255 0 0 255,255 1 1 1" clicked="1 2 3 4,bad,300 0 0 -1"/></color></style>)")));
    EXPECT_EQ(s.brushType, 2);
    EXPECT_EQ(s.multiStopBrush.rotate, 0.0f);
    ASSERT_EQ(s.multiStopBrush.stops.size(), 3u) << "the number of stops comes from the position list";
    EXPECT_EQ(s.multiStopBrush.stops[1].position, 0.5f);
    EXPECT_EQ(s.multiStopBrush.stops[2].position, 1.0f);
    EXPECT_EQ(s.multiStopBrush.stops[0].colours[0], 0xFFFF0000u);
    EXPECT_EQ(s.multiStopBrush.stops[2].colours[0], 0xFF0000FFu) << "a fourth colour has no stop";
    EXPECT_EQ(s.multiStopBrush.stops[0].colours[2], 0x01020304u);
    EXPECT_EQ(s.multiStopBrush.stops[1].colours[2], tButtonStyle().multiStopBrush.stops[1].colours[2])
        << "a colour that is not four numbers leaves the stop's colour";
    EXPECT_EQ(s.multiStopBrush.stops[2].colours[2], 0x2C0000FFu) << "numbers keep their low byte";
    EXPECT_EQ(s.multiStopBrush.stops[0].colours[1], tButtonStyle().multiStopBrush.stops[0].colours[1])
        << "an absent state list keeps the colours";

    // More stops than the ones before: new stops start all zero.
    ASSERT_TRUE(s.Load(Parse(f, LR"(<style><color><brush id="2" position="0,0.2,0.4,0.6,0.8,1" enabled="1 1 1 1"/></color></style>)")));
    ASSERT_EQ(s.multiStopBrush.stops.size(), 6u);
    EXPECT_EQ(s.multiStopBrush.stops[5].colours[0], 0u);
    EXPECT_EQ(s.multiStopBrush.stops[5].colours[4], 0u);
    EXPECT_EQ(s.multiStopBrush.stops[0].colours[0], 0x01010101u);
    EXPECT_EQ(s.multiStopBrush.rotate, 90.0f) << "rotate defaults to 90";

    // An empty position list means no stops; garbage positions read as 0.
    ASSERT_TRUE(s.Load(Parse(f, LR"(<style><color><brush id="2" position=""/></color></style>)")));
    EXPECT_TRUE(s.multiStopBrush.stops.empty());
    tButtonStyle fresh;
    ASSERT_TRUE(fresh.Load(Parse(f, LR"(<style><color><brush id="2" rotate="10" enabled="1 1 1 1"/></color></style>)")));
    EXPECT_TRUE(fresh.multiStopBrush.stops.empty()) << "no position list: no stops, as a stop-less brush is stored";
    ASSERT_TRUE(s.Load(Parse(f, LR"(<style><color><brush id="2" position="x,nan,0.7"/></color></style>)")));
    ASSERT_EQ(s.multiStopBrush.stops.size(), 3u);
    EXPECT_EQ(s.multiStopBrush.stops[0].position, 0.0f);
    EXPECT_EQ(s.multiStopBrush.stops[1].position, 0.0f);
    EXPECT_EQ(s.multiStopBrush.stops[2].position, 0.7f);

    // 200 stops: each list is cut to the 199 characters of the reader's buffer.
    std::wstring positions, colours;
    for (int i = 0; i < 200; ++i) {
        if (i) positions += L',', colours += L',';
        positions += L"0.50";
        colours += L"200 10 20 30";
    }
    ASSERT_TRUE(s.Load(Parse(f, L"<style><color><brush id=\"2\" position=\"" + positions + L"\" enabled=\"" + colours +
                                    L"\"/></color></style>")));
    ASSERT_EQ(s.multiStopBrush.stops.size(), 40u) << "199 characters hold exactly 40 entries of \"0.50\"";
    EXPECT_EQ(s.multiStopBrush.stops[39].position, 0.5f);
    EXPECT_EQ(s.multiStopBrush.stops[14].colours[0], 0xC80A141Eu) << "15 whole colours fit";
    EXPECT_EQ(s.multiStopBrush.stops[15].colours[0], 0u) << "the 16th is cut to \"200 \" and not read";
}

TEST(ButtonStyle, StoreWritesEverythingWithoutBase) {
    tButtonStyle s;
    s.id = 5;
    s.name = L"five";
    s.radius = 3.14159;
    zelXMLFile f;
    zelXMLNode el = StoreToNew(f, s);
    EXPECT_EQ(el.getAttribute(L"id"), L"5");
    EXPECT_EQ(el.getAttribute(L"name"), L"five");
    EXPECT_FALSE(el.hasAttribute(L"basename")) << "an empty basename is not written";
    EXPECT_EQ(el.getChildByName(L"shape").getAttribute(L"radius"), L"3.14");
    EXPECT_EQ(el.getChildByName(L"shape").getAttribute(L"borderRatio"), L"0.18");
    EXPECT_EQ(el.getChildByName(L"font").getAttribute(L"shadowText"), L"1");
    EXPECT_EQ(el.getChildByName(L"icon").getAttribute(L"location"), L"0");
    const zelXMLNode color = el.getChildByName(L"color");
    // Slots in index order, then background, then the brush of the current type.
    std::wstring order;
    for (zelXMLNode c = color.getFirstChild(); c.isValid(); ++c) order += c.getName() + L" ";
    EXPECT_EQ(order, L"enabled disabled clicked pressed background brush ");
    const zelXMLNode brush = color.getChildByName(L"brush");
    EXPECT_EQ(brush.getAttribute(L"id"), L"1");
    EXPECT_EQ(brush.getAttribute(L"rotate"), L"90");
    EXPECT_EQ(brush.getAttribute(L"focus"), L"0.00");
    EXPECT_EQ(brush.getAttribute(L"shapeTriangle"), L"1");
    EXPECT_FALSE(brush.hasAttribute(L"fill")) << "only the current brush type is written";

    // Whole round trip.
    tButtonStyle back;
    ASSERT_TRUE(back.Load(el));
    tButtonStyle expect = s;
    expect.radius = 3.14;
    expect.borderRatio = static_cast<double>(0.18f);
    EXPECT_EQ(back, expect);

    EXPECT_FALSE(s.Store(zelXMLNode(), nullptr));
}

TEST(ButtonStyle, StoreMultiStopFormat) {
    tButtonStyle s;
    s.brushType = 2;
    s.multiStopBrush.stops.assign(2, RibbonItem());
    s.multiStopBrush.stops[0].position = 0.0f;
    s.multiStopBrush.stops[0].colours[0] = 0xFF102030;
    s.multiStopBrush.stops[1].position = 0.666f;
    s.multiStopBrush.stops[1].colours[3] = 0x01FFFFFF;
    zelXMLFile f;
    const zelXMLNode brush = StoreToNew(f, s).getChildByName(L"color").getChildByName(L"brush");
    EXPECT_EQ(brush.getAttribute(L"id"), L"2");
    EXPECT_EQ(brush.getAttribute(L"position"), L"0.00,0.67");
    EXPECT_EQ(brush.getAttribute(L"enabled"), L"255 16 32 48,0 0 0 0");
    EXPECT_EQ(brush.getAttribute(L"pressed"), L"0 0 0 0,1 255 255 255");
    EXPECT_EQ(brush.getAttribute(L"disabled"), L"0 0 0 0,0 0 0 0");

    s.multiStopBrush.stops.clear();
    const zelXMLNode empty = StoreToNew(f, s).getChildByName(L"color").getChildByName(L"brush");
    EXPECT_EQ(empty.getAttribute(L"rotate"), L"90");
    EXPECT_FALSE(empty.hasAttribute(L"position")) << "no stops: only rotate";
    EXPECT_FALSE(empty.hasAttribute(L"enabled"));
}

TEST(ButtonStyle, StoreAgainstBaseWritesOnlyDifferences) {
    tButtonStyle base;
    base.id = 0;
    base.name = L"base";
    tButtonStyle s = base;
    s.id = 1;
    s.name = L"derived";
    s.basename = L"base";
    zelXMLFile f;

    zelXMLNode el = StoreToNew(f, s, &s);
    EXPECT_EQ(CountChildren(el), 0) << "against itself: identity only";
    EXPECT_EQ(el.getAttribute(L"basename"), L"base");

    // Each group is written whole when anything in it differs.
    s.borderRatio = 0.5;
    s.scaleText = 1;
    el = StoreToNew(f, s, &base);
    EXPECT_EQ(el.getChildByName(L"shape").getAttribute(L"shape"), L"0");
    EXPECT_EQ(el.getChildByName(L"shape").getAttribute(L"radius"), L"10.00");
    EXPECT_EQ(el.getChildByName(L"font").getAttribute(L"name"), L"Tahoma");
    EXPECT_FALSE(el.getChildByName(L"icon").isValid());
    EXPECT_FALSE(el.getChildByName(L"color").isValid()) << "no colour differs: no color element";

    // One slot differing writes that slot only.
    s.colours[2].border = 0xFF000000;
    el = StoreToNew(f, s, &base);
    zelXMLNode color = el.getChildByName(L"color");
    ASSERT_TRUE(color.isValid());
    EXPECT_EQ(CountChildren(color), 1);
    EXPECT_TRUE(color.getChildByName(L"clicked").isValid());

    // A caption colour has no XML form, but it makes its slot differ and the slot is written.
    s = base;
    s.colours[0].textColour = 1;
    color = StoreToNew(f, s, &base).getChildByName(L"color");
    EXPECT_TRUE(color.getChildByName(L"enabled").isValid());

    // Slot 4 is compared but cannot be written: an empty color element.
    s = base;
    s.colours[4].facePrimary = 0;
    color = StoreToNew(f, s, &base).getChildByName(L"color");
    ASSERT_TRUE(color.isValid());
    EXPECT_EQ(CountChildren(color), 0);

    // The brush: written when its type differs, or when the record of the current type does; others ignored.
    s = base;
    s.pathBrush.focus = 0.3f;
    EXPECT_FALSE(StoreToNew(f, s, &base).getChildByName(L"color").isValid()) << "path record is not current";
    s.linearBrush.rotate = 10.0f;
    color = StoreToNew(f, s, &base).getChildByName(L"color");
    EXPECT_EQ(CountChildren(color), 1);
    EXPECT_EQ(color.getChildByName(L"brush").getAttribute(L"rotate"), L"10");
    s = base;
    s.brushType = 0;
    color = StoreToNew(f, s, &base).getChildByName(L"color");
    EXPECT_EQ(color.getChildByName(L"brush").getAttribute(L"fill"), L"1");
    s.brushType = 7;
    const zelXMLNode odd = StoreToNew(f, s, &base).getChildByName(L"color").getChildByName(L"brush");
    EXPECT_EQ(odd.getAttribute(L"id"), L"7");
    EXPECT_FALSE(odd.hasAttribute(L"rotate"));

    s = base;
    s.background = 0;
    color = StoreToNew(f, s, &base).getChildByName(L"color");
    EXPECT_EQ(CountChildren(color), 1);
    EXPECT_EQ(color.getChildByName(L"background").getAttribute(L"a"), L"0");
}

TEST(ButtonStyle, SetAlphaSparesSlotFourAndBackground) {
    tButtonStyle s;
    s.SetAlpha(255);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(s.colours[i].border >> 24, 255u);
        EXPECT_EQ(s.colours[i].facePrimary >> 24, 255u);
        EXPECT_EQ(s.colours[i].faceSecondary >> 24, 255u);
        EXPECT_EQ(s.colours[i].textColour >> 24, 255u);
    }
    EXPECT_EQ(s.colours[0].facePrimary, 0xFF0000A6u) << "only the alpha byte changes";
    EXPECT_EQ(s.colours[4].border >> 24, 200u);
    EXPECT_EQ(s.colours[4].textColour >> 24, 200u);
    EXPECT_EQ(s.background >> 24, 200u);
    for (const RibbonItem& r : s.multiStopBrush.stops)
        for (std::uint32_t c : r.colours) EXPECT_EQ(c >> 24, 255u);
    s.SetAlpha(0);
    EXPECT_EQ(s.colours[3].faceSecondary, 0x00C0C0C0u);
}

}  // namespace
