// ColorState and FontDescriptor: XML form, defaults, byte cutting, order and copies.
#include <gtest/gtest.h>

#include <set>

#include "skin/descriptors.h"

namespace {

zelXMLNode Parse(zelXMLFile& file, const wchar_t* xml) {
    EXPECT_TRUE(file.loadXML(xml)) << file.getLastError().c_str();
    return file.getRootElement();
}

TEST(ColorState, LoadColorDefaultsAlphaAndCutsToBytes) {
    zelXMLFile f;
    unsigned long c = 0x12345678;
    ColorState::LoadColor(Parse(f, L"<c r=\"255\" g=\"0\" b=\"0\"/>"), c);
    EXPECT_EQ(c, 0xC8FF0000ul);
    ColorState::LoadColor(Parse(f, L"<c a=\"300\" r=\"-1\" g=\"256\" b=\"x\"/>"), c);
    EXPECT_EQ(c, 0x2CFF0000ul) << "300 keeps its low byte 44, -1 becomes 255, 256 becomes 0, garbage takes 0";
    c = 0xDEADBEEF;
    ColorState::LoadColor(zelXMLNode(), c);
    EXPECT_EQ(c, 0xDEADBEEFul) << "an invalid node leaves the colour";
}

TEST(ColorState, StoreAndReloadIsBitExact) {
    zelXMLFile f;
    ASSERT_TRUE(f.newDocument(L"state"));
    zelXMLNode el = f.getRootElement().createElement(L"border");
    ColorState::StoreColor(el, 0x80102030ul);
    EXPECT_EQ(el.getAttribute(L"a"), L"128");
    EXPECT_EQ(el.getAttribute(L"r"), L"16");
    EXPECT_EQ(el.getAttribute(L"g"), L"32");
    EXPECT_EQ(el.getAttribute(L"b"), L"48");
    unsigned long back = 0;
    ColorState::LoadColor(el, back);
    EXPECT_EQ(back, 0x80102030ul);

    ColorState s;
    s.border = 0xFF000001;
    s.facePrimary = 0x01020304;
    s.faceSecondary = 0xFFFFFFFF;
    s.textColour = 0x11111111;
    s.brightness = 1.5f;
    zelXMLFile out;
    ASSERT_TRUE(out.newDocument(L"normal"));
    s.Store(out.getRootElement());
    // The file format spells the second face colour "faceSeconday".
    EXPECT_TRUE(out.getRootElement().getChildByName(L"faceSeconday").isValid());
    EXPECT_FALSE(out.getRootElement().getChildByName(L"faceSecondary").isValid());
    ColorState loaded;
    loaded.Load(out.getRootElement());
    EXPECT_EQ(loaded.border, s.border);
    EXPECT_EQ(loaded.facePrimary, s.facePrimary);
    EXPECT_EQ(loaded.faceSecondary, s.faceSecondary);
    EXPECT_EQ(loaded.textColour, 0u) << "caption colour has no XML form";
    EXPECT_EQ(loaded.brightness, 0.0f);
}

TEST(ColorState, PartialLoadMergesAndComparisonCoversEveryField) {
    ColorState s;
    s.facePrimary = 1;
    s.faceSecondary = 2;
    s.border = 3;
    zelXMLFile f;
    s.Load(Parse(f, L"<normal><border r=\"1\" g=\"2\" b=\"3\" a=\"4\"/></normal>"));
    EXPECT_EQ(s.facePrimary, 1u);
    EXPECT_EQ(s.faceSecondary, 2u);
    EXPECT_EQ(s.border, 0x04010203u);

    ColorState a, b;
    EXPECT_EQ(a, b);
    for (int field = 0; field < 6; ++field) {
        ColorState c = a;
        switch (field) {
        case 0: c.border = 1; break;
        case 1: c.facePrimary = 1; break;
        case 2: c.faceSecondary = 1; break;
        case 3: c.textColour = 1; break;
        case 4: c.brightness = 0.5f; break;
        case 5: c.brightness2 = 0.5f; break;
        }
        EXPECT_NE(a, c) << "field " << field;
        ColorState copy(c);
        EXPECT_EQ(copy, c);
        b = c;
        EXPECT_EQ(b, c);
    }
}

TEST(FontDescriptor, DefaultsLoadStoreAndOrder) {
    FontDescriptor d;
    EXPECT_EQ(d.name, L"Tahoma");
    EXPECT_EQ(d.size, 16);
    zelXMLFile f;
    d.Load(Parse(f, L"<font/>"));
    EXPECT_EQ(d, FontDescriptor(L"", 16)) << "a font element without attributes clears the name";
    d.Load(Parse(f, L"<font name=\"Arial\" size=\"-11\"/>"));
    EXPECT_EQ(d, FontDescriptor(L"Arial", -11));
    d.Reset();
    EXPECT_EQ(d, FontDescriptor());

    zelXMLFile out;
    ASSERT_TRUE(out.newDocument(L"font"));
    FontDescriptor(L"Segoe UI", 13).Store(out.getRootElement());
    EXPECT_EQ(out.getRootElement().getAttribute(L"name"), L"Segoe UI");
    EXPECT_EQ(out.getRootElement().getAttribute(L"size"), L"13");

    EXPECT_LT(FontDescriptor(L"Tahoma", 10), FontDescriptor(L"Arial", 12));
    EXPECT_LT(FontDescriptor(L"Arial", 12), FontDescriptor(L"Tahoma", 12));
    EXPECT_LT(FontDescriptor(L"Z", -5), FontDescriptor(L"A", 3)) << "sizes compare signed";
    EXPECT_LT(FontDescriptor(L"Tahoma", 12), FontDescriptor(L"tahoma", 12)) << "names compare case-sensitively";
    // As a map key order: strict and consistent, equal descriptors collapse.
    std::set<FontDescriptor> keys{{L"b", 1}, {L"a", 1}, {L"a", 1}, {L"\uFFFD", 1}, {L"a", 0}};
    EXPECT_EQ(keys.size(), 4u);
    EXPECT_EQ(keys.begin()->size, 0);
}

}  // namespace
