// Application and system profiles: sections with backslashes, defaults, numbers stored as text, file layout.
#include <gtest/gtest.h>

#include "platform/ini_file.h"
#include "platform/profile.h"
#include "support/temp_dir.h"

namespace {

#ifndef _WIN32
class ProfileTest : public testing::Test {
protected:
    void SetUp() override {
        uc::SetProfileLocation(dir.file(L"profile.ini"));
        uc::SetSystemProfileLocation(dir.file(L"win.ini"));
    }
    uc::test::TempDir dir;
};

TEST_F(ProfileTest, IntsAndStringsRoundTripPerSection) {
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Status", L"UPSPort", -1), -1);
    EXPECT_TRUE(vex_utils::WriteProfileInt(L"Settings\\Status", L"UPSPort", 3));
    EXPECT_TRUE(vex_utils::WriteProfileInt(L"Settings\\Display", L"UPSPort", 9));
    EXPECT_TRUE(vex_utils::WriteProfileStringW(L"Settings\\Status", L"Name", L"Caf\u00E9 = bar"));
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Status", L"UPSPort", -1), 3);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"settings\\status", L"upsport", -1), 3) << "names match without case";
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Display", L"UPSPort", -1), 9);
    EXPECT_EQ(vex_utils::GetProfileStringW(L"Settings\\Status", L"Name", L""), L"Caf\u00E9 = bar");
    // A stored text that is not a whole number reads as the default.
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Status", L"Name", 5), 5);
    EXPECT_TRUE(vex_utils::WriteProfileInt(L"Settings\\Status", L"UPSPort", -40));
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Status", L"UPSPort", 0), -40);
    EXPECT_FALSE(vex_utils::WriteProfileInt(L"Settings", L"", 1));
}

TEST_F(ProfileTest, SystemProfileIsSeparate) {
    EXPECT_EQ(uc::GetSystemProfileInt(L"System", L"_IsUpdating", 0), 0);
    EXPECT_TRUE(uc::WriteSystemProfileString(L"System", L"_IsUpdating", L"1"));
    EXPECT_EQ(uc::GetSystemProfileInt(L"System", L"_IsUpdating", 0), 1);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"System", L"_IsUpdating", 0), 0);
}
#endif

TEST(IniDocument, EditsKeepUnrelatedLinesAndOrder) {
    uc::IniDocument ini;
    ini.Parse(L"; header comment\r\n[A]\r\nx = 1\r\n\r\n[B]\ny=2\nnot an entry\n");
    EXPECT_EQ(ini.Get(L"A", L"x").value_or(L"?"), L"1");
    EXPECT_EQ(ini.Get(L"b", L"Y").value_or(L"?"), L"2");
    EXPECT_FALSE(ini.Get(L"A", L"y").has_value());
    ini.Set(L"A", L"z", L"3");
    ini.Set(L"B", L"y", L"two\nlines");
    ini.Set(L"C", L"k", L"");
    // Line breaks stay as read; added lines take the first one.
    EXPECT_EQ(ini.Serialize(),
              L"; header comment\r\n[A]\r\nx = 1\r\nz=3\r\n\r\n[B]\ny=two lines\nnot an entry\n[C]\r\nk=\r\n");
    EXPECT_EQ(ini.Get(L"C", L"k").value_or(L"?"), L"");
    // Reading and writing round-trip exactly: extra CRs, a missing last break; values never keep a CR.
    for (const wchar_t* text : {L"[A]\nv=x\r\r\r\n\r\r\nw=\r", L"a\r\n\n"}) {
        ini.Parse(text);
        ini.Parse(ini.Serialize());
        EXPECT_EQ(ini.Serialize(), text);
    }
    ini.Parse(L"[A]\nv=x\r\r\r\n\r\r\nw=\r");
    EXPECT_EQ(ini.Get(L"A", L"v").value_or(L"?") + L"|" + ini.Get(L"a", L"W").value_or(L"?"), L"x|");
}

}  // namespace
