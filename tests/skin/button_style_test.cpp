// tButtonStyle: defaults, copies and comparisons, merging loads, difference stores, multi-stop lists, SetAlpha.
#include <gtest/gtest.h>

#include <cfloat>
#include <functional>
#include <string>

#include "skin/button_style.h"

namespace {

zelXMLNode Parse(zelXMLFile& file, const std::wstring& xml) {
    EXPECT_TRUE(file.loadXML(xml)) << file.getLastError();
    return file.getRootElement();
}

// Loads `body` (the inside of a "style" element) over `s`.
void LoadInto(tButtonStyle& s, const std::wstring& body) {
    zelXMLFile f;
    ASSERT_TRUE(s.Load(Parse(f, L"<style>" + body + L"</style>")));
}

// Stores `s` (against `base`) into a fresh document and returns the "style" element.
zelXMLNode StoreToNew(zelXMLFile& file, const tButtonStyle& s, const tButtonStyle* base = nullptr) {
    EXPECT_TRUE(file.newDocument(L"style"));
    EXPECT_TRUE(s.Store(file.getRootElement(), base));
    return file.getRootElement();
}

std::wstring ChildNames(const zelXMLNode& n) {
    std::wstring names;
    for (zelXMLNode c = n.getFirstChild(); c.isValid(); ++c) names += c.getName() + L" ";
    return names;
}

TEST(ButtonStyle, DefaultsThatOtherCodeReliesOnAndResetOfEveryGroup) {
    tButtonStyle s;
    EXPECT_EQ(s.id, -1);
    EXPECT_EQ(s.brushType, 1);
    EXPECT_EQ(s.font, FontDescriptor(L"Tahoma", 16));
    EXPECT_EQ(s.background, 0xC8000000u | uc::skin::DesktopColour()) << "the desktop colour at alpha 200";
    EXPECT_EQ(s.colours[3].brightness, 1.5f);
    EXPECT_EQ(s.colours[4].brightness, 2.0f) << "slot 4 has defaults of its own";
    // The default ramp: secondary, secondary, primary, secondary of every slot, slot 4 included.
    ASSERT_EQ(s.multiStopBrush.stops.size(), 4u);
    for (int i = 0; i < 4; ++i)
        for (int slot = 0; slot < 5; ++slot)
            EXPECT_EQ(s.multiStopBrush.stops[i].colours[slot],
                      i == 2 ? s.colours[slot].facePrimary : s.colours[slot].faceSecondary);
    tButtonStyle changed = s;
    changed.flags = 9;
    changed.multiStopBrush.stops.clear();
    changed.colours[4].border = 1;
    changed.pathBrush.gamma = 1;
    changed.Reset();
    EXPECT_EQ(changed, s);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(tButtonStyle::StateIndex(tButtonStyle::StateName(i)), i);
    EXPECT_EQ(tButtonStyle::StateName(4), L"") << "slot 4 has no name";
    EXPECT_EQ(tButtonStyle::StateIndex(L"Enabled"), -1) << "case-sensitive";
}

TEST(ButtonStyle, CopiesAndComparisonsCoverEveryField) {
    const tButtonStyle a;
    const std::vector<void (*)(tButtonStyle&)> changes = {
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
        tButtonStyle copy(b), assigned;
        assigned = b;
        EXPECT_EQ(copy, b) << "change " << i;
        EXPECT_EQ(assigned, b) << "change " << i;
    }
}

TEST(ButtonStyle, LoadMergesGroupsInAnyOrderAndLaterDuplicatesWin) {
    zelXMLFile f;
    tButtonStyle s;
    ASSERT_TRUE(s.Load(Parse(f, L"<style id=\"3\" name=\"x\"/>")));
    tButtonStyle expect;
    expect.id = 3;
    expect.name = L"x";
    EXPECT_EQ(s, expect) << "identity only: the Reset style";
    EXPECT_FALSE(s.Load(zelXMLNode())) << "an invalid element fails";
    EXPECT_EQ(s, expect) << "and leaves the style unchanged";

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
    EXPECT_EQ(s.basename, L"");
    EXPECT_EQ(s.iconLocation, 0);
    EXPECT_EQ(s.shape, 6);
}

TEST(ButtonStyle, BrushRecordsReadTheirAttributesAndKeepAbsentFlags) {
    tButtonStyle s;
    s.linearBrush.shapeBell = 1;
    s.linearBrush.gamma = 1;
    LoadInto(s, L"<color><brush id=\"1\" focus=\"0.5\" shapeTriangle=\"0\"/></color>");
    EXPECT_EQ(s.linearBrush.rotate, 90.0f);
    EXPECT_EQ(s.linearBrush.focus, 0.5f);
    EXPECT_EQ(s.linearBrush.shapeBell, 1) << "absent flags keep their values";
    EXPECT_EQ(s.linearBrush.gamma, 1);
    EXPECT_EQ(s.linearBrush.shapeTriangle, 0);
    LoadInto(s, L"<color><brush id=\"1\" rotate=\"30\" scale=\"0.25\" shapeBell=\"0\" gamma=\"0\"/></color>");
    EXPECT_EQ(s.linearBrush.rotate, 30.0f);
    EXPECT_EQ(s.linearBrush.scale, 0.25f);
    EXPECT_EQ(s.linearBrush.shapeBell, 0);
    EXPECT_EQ(s.linearBrush.gamma, 0);

    s.solidBrush.fill = 0;
    LoadInto(s, L"<color><brush id=\"0\"/></color>");
    EXPECT_EQ(s.brushType, 0);
    EXPECT_EQ(s.solidBrush.fill, 0) << "absent fill keeps its value";
    LoadInto(s, L"<color><brush id=\"3\" rotate=\"45\" focus=\"0.1\" focusx=\"0.25\" focusy=\"0.3\" scale=\"0.75\" shapeBell=\"1\" "
                L"shapeTriangle=\"0\"/></color>");
    EXPECT_EQ(s.pathBrush.rotate, 45.0f);
    EXPECT_EQ(s.pathBrush.focus, 0.1f);
    EXPECT_EQ(s.pathBrush.focusx, 0.25f);
    EXPECT_EQ(s.pathBrush.focusy, 0.3f);
    EXPECT_EQ(s.pathBrush.scale, 0.75f);
    EXPECT_EQ(s.pathBrush.shapeBell, 1);
    EXPECT_EQ(s.pathBrush.shapeTriangle, 0);

    // An id out of range sets the type and reads nothing else; a brush without "id" is the linear one.
    tButtonStyle expect = s;
    LoadInto(s, L"<color><brush id=\"9\" fill=\"1\" rotate=\"1\" position=\"0\"/></color>");
    expect.brushType = 9;
    EXPECT_EQ(s, expect);
    LoadInto(s, L"<color><brush rotate=\"31\"/></color>");
    EXPECT_EQ(s.brushType, 1);
    EXPECT_EQ(s.linearBrush.rotate, 31.0f);
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
    tButtonStyle s;
    const tButtonStyle fresh;
    LoadInto(s, LR"(<color><brush id="2" rotate="0" position="0, 0.5 ,1"
        enabled="255 255 0 0,255 0 255 0,255 0 0 255,255 1 1 1" clicked="1 2 3 4,bad,300 0 0 -1"/></color>)");
    EXPECT_EQ(s.multiStopBrush.rotate, 0.0f);
    ASSERT_EQ(s.multiStopBrush.stops.size(), 3u) << "the number of stops comes from the position list";
    EXPECT_EQ(s.multiStopBrush.stops[1].position, 0.5f);
    EXPECT_EQ(s.multiStopBrush.stops[0].colours[0], 0xFFFF0000u);
    EXPECT_EQ(s.multiStopBrush.stops[2].colours[0], 0xFF0000FFu) << "a fourth colour has no stop";
    EXPECT_EQ(s.multiStopBrush.stops[0].colours[2], 0x01020304u);
    EXPECT_EQ(s.multiStopBrush.stops[1].colours[2], fresh.multiStopBrush.stops[1].colours[2])
        << "a colour that is not four numbers leaves the stop's colour";
    EXPECT_EQ(s.multiStopBrush.stops[2].colours[2], 0x2C0000FFu) << "numbers keep their low byte";
    EXPECT_EQ(s.multiStopBrush.stops[0].colours[1], fresh.multiStopBrush.stops[0].colours[1])
        << "an absent state list keeps the colours";

    LoadInto(s, LR"(<color><brush id="2" position="0,0.2,0.4,0.6,0.8,1" enabled="1 1 1 1"/></color>)");
    ASSERT_EQ(s.multiStopBrush.stops.size(), 6u);
    EXPECT_EQ(s.multiStopBrush.stops[5].colours[4], 0u) << "new stops start all zero";
    EXPECT_EQ(s.multiStopBrush.rotate, 90.0f) << "rotate defaults to 90";
    LoadInto(s, LR"(<color><brush id="2" position=""/></color>)");
    EXPECT_TRUE(s.multiStopBrush.stops.empty()) << "an empty position list means no stops";
    tButtonStyle none;
    LoadInto(none, LR"(<color><brush id="2" rotate="10" enabled="1 1 1 1"/></color>)");
    EXPECT_TRUE(none.multiStopBrush.stops.empty()) << "no position list: no stops, as a stop-less brush is stored";
    LoadInto(s, LR"(<color><brush id="2" position="x,nan,0.7"/></color>)");
    ASSERT_EQ(s.multiStopBrush.stops.size(), 3u);
    EXPECT_EQ(s.multiStopBrush.stops[1].position, 0.0f) << "garbage positions read as 0";
    EXPECT_EQ(s.multiStopBrush.stops[2].position, 0.7f);

    // 200 stops: each list is cut to the 199 characters of the reader's buffer.
    std::wstring positions, colours;
    for (int i = 0; i < 200; ++i) {
        positions += i ? L",0.50" : L"0.50";
        colours += i ? L",200 10 20 30" : L"200 10 20 30";
    }
    LoadInto(s, L"<color><brush id=\"2\" position=\"" + positions + L"\" enabled=\"" + colours + L"\"/></color>");
    ASSERT_EQ(s.multiStopBrush.stops.size(), 40u) << "199 characters hold exactly 40 entries of \"0.50\"";
    EXPECT_EQ(s.multiStopBrush.stops[14].colours[0], 0xC80A141Eu) << "15 whole colours fit";
    EXPECT_EQ(s.multiStopBrush.stops[15].colours[0], 0u) << "the 16th is cut to \"200 \" and not read";
}

TEST(ButtonStyle, StoreWritesEverythingWithoutBaseAndReadsBackEqual) {
    tButtonStyle s;
    s.id = 5;
    s.name = L"five";
    s.radius = 3.14159;
    zelXMLFile f;
    const zelXMLNode el = StoreToNew(f, s);
    EXPECT_FALSE(el.hasAttribute(L"basename")) << "an empty basename is not written";
    EXPECT_EQ(ChildNames(el), L"shape font icon color ");
    EXPECT_EQ(el.getChildByName(L"shape").getAttribute(L"radius"), L"3.14");
    // Slots in index order, then background, then the brush of the current type only.
    const zelXMLNode color = el.getChildByName(L"color");
    EXPECT_EQ(ChildNames(color), L"enabled disabled clicked pressed background brush ");
    EXPECT_EQ(color.getChildByName(L"brush").getAttribute(L"rotate"), L"90");
    EXPECT_FALSE(color.getChildByName(L"brush").hasAttribute(L"fill"));
    tButtonStyle back;
    ASSERT_TRUE(back.Load(el));
    tButtonStyle expect = s;
    expect.radius = 3.14;
    expect.borderRatio = static_cast<double>(0.18f);
    EXPECT_EQ(back, expect);
    EXPECT_FALSE(s.Store(zelXMLNode(), nullptr));

    // The multi-stop format; without stops only "rotate".
    s.brushType = 2;
    s.multiStopBrush.stops.assign(2, RibbonItem());
    s.multiStopBrush.stops[0].colours[0] = 0xFF102030;
    s.multiStopBrush.stops[1].position = 0.666f;
    s.multiStopBrush.stops[1].colours[3] = 0x01FFFFFF;
    zelXMLNode brush = StoreToNew(f, s).getChildByName(L"color").getChildByName(L"brush");
    EXPECT_EQ(brush.getAttribute(L"position"), L"0.00,0.67");
    EXPECT_EQ(brush.getAttribute(L"enabled"), L"255 16 32 48,0 0 0 0");
    EXPECT_EQ(brush.getAttribute(L"pressed"), L"0 0 0 0,1 255 255 255");
    s.multiStopBrush.stops.clear();
    brush = StoreToNew(f, s).getChildByName(L"color").getChildByName(L"brush");
    EXPECT_TRUE(brush.hasAttribute(L"rotate"));
    EXPECT_FALSE(brush.hasAttribute(L"position"));
    EXPECT_FALSE(brush.hasAttribute(L"enabled"));
}

TEST(ButtonStyle, StoreAgainstBaseWritesOnlyTheGroupsThatDiffer) {
    tButtonStyle base;
    base.id = 0;
    base.name = L"base";
    // Each change, and the children of "style" and of its "color" the difference writes.
    const struct {
        std::function<void(tButtonStyle&)> change;
        const wchar_t* groups;
        const wchar_t* colours;
    } cases[] = {
        {[](tButtonStyle&) {}, L"", nullptr},
        {[](tButtonStyle& s) { s.borderRatio = 0.5; }, L"shape ", nullptr},
        {[](tButtonStyle& s) { s.radius = 4; }, L"shape ", nullptr},
        {[](tButtonStyle& s) { s.font.name = L"Arial"; }, L"font ", nullptr},
        {[](tButtonStyle& s) { s.shadowText = 0; }, L"font ", nullptr},
        {[](tButtonStyle& s) { s.scaleText = 1; }, L"font ", nullptr},
        {[](tButtonStyle& s) { s.iconLocation = 2; }, L"icon ", nullptr},
        {[](tButtonStyle& s) { s.colours[2].border = 0xFF000000; }, L"color ", L"clicked "},
        {[](tButtonStyle& s) { s.colours[0].textColour = 1; }, L"color ", L"enabled "},  // no XML form, but the slot differs
        {[](tButtonStyle& s) { s.colours[4].facePrimary = 0; }, L"color ", L""},          // compared, never written
        {[](tButtonStyle& s) { s.background = 0; }, L"color ", L"background "},
        {[](tButtonStyle& s) { s.pathBrush.focus = 0.3f; }, L"", nullptr},                // not the current record
        {[](tButtonStyle& s) { s.linearBrush.rotate = 10.0f; }, L"color ", L"brush "},
        {[](tButtonStyle& s) { s.brushType = 0; }, L"color ", L"brush "},
    };
    zelXMLFile f;
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        tButtonStyle s = base;
        s.id = 1;
        s.name = L"derived";
        s.basename = L"base";
        cases[i].change(s);
        const zelXMLNode el = StoreToNew(f, s, &base);
        EXPECT_EQ(el.getAttribute(L"basename"), L"base");
        EXPECT_EQ(ChildNames(el), cases[i].groups) << "case " << i;
        if (cases[i].colours) {
            EXPECT_EQ(ChildNames(el.getChildByName(L"color")), cases[i].colours) << "case " << i;
        }
    }
}

TEST(ButtonStyle, SetAlphaSparesSlotFourAndBackground) {
    tButtonStyle s;
    s.SetAlpha(255);
    for (int i = 0; i < 4; ++i)
        for (std::uint32_t c : {s.colours[i].border, s.colours[i].facePrimary, s.colours[i].faceSecondary, s.colours[i].textColour})
            EXPECT_EQ(c >> 24, 255u) << i;
    EXPECT_EQ(s.colours[0].facePrimary, 0xFF0000A6u) << "only the alpha byte changes";
    EXPECT_EQ(s.colours[4].border >> 24, 200u);
    EXPECT_EQ(s.background >> 24, 200u);
    for (const RibbonItem& r : s.multiStopBrush.stops)
        for (std::uint32_t c : r.colours) EXPECT_EQ(c >> 24, 255u);
}

}  // namespace
