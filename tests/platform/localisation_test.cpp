// Language file loading and lookups: escapes, overrides, formats, unknown keys.
#include <gtest/gtest.h>

#include "platform/localisation.h"
#include "support/temp_dir.h"

namespace {

TEST(Localisation, LoadsEntriesAndFormatsArguments) {
    uc::ClearLocalisedStrings();
    uc::test::TempDir dir;
    const std::wstring path = dir.write(L"en.lang",
                                        "\xEF\xBB\xBF# comment\n"
                                        "utilscontrols.burn.donemsg = Burned %d files to %s\r\n"
                                        "balloon.battery.fault.header=Battery\\tfault\\nCheck\n"
                                        "\n"
                                        "garbage line without equals\n"
                                        "=no key\n"
                                        "OK=Okay\n"
                                        "OK=Fine\n");
    ASSERT_TRUE(uc::LoadLanguageFile(path));
    EXPECT_EQ(uc::LanguageFileErrors(), 2);
    EXPECT_EQ(GetStr("utilscontrols.burn.donemsg", 3, L"DVD"), L"Burned 3 files to DVD");
    EXPECT_EQ(GetStr("balloon.battery.fault.header"), L"Battery\tfault\nCheck");
    EXPECT_EQ(TranslateStr(L"OK"), L"Fine") << "later lines override earlier ones";
    // Unknown keys and texts come back as given.
    EXPECT_EQ(GetStr("no.such.key"), L"no.such.key");
    EXPECT_EQ(TranslateStr(L"Cancel"), L"Cancel");
    EXPECT_EQ(TranslateStr(nullptr), L"");
    EXPECT_FALSE(uc::LoadLanguageFile(dir.file(L"missing.lang")));
    EXPECT_EQ(TranslateStr(L"OK"), L"Fine") << "a failed load keeps what was loaded";
    uc::ClearLocalisedStrings();
}

TEST(Localisation, ReadsUtf16LanguageFiles) {
    uc::ClearLocalisedStrings();
    uc::test::TempDir dir;
    std::string bytes = "\xFF\xFE";
    for (char16_t c : std::u16string(u"k=\u00C9t\u00E9\n")) {
        bytes += static_cast<char>(c & 0xFF);
        bytes += static_cast<char>(c >> 8);
    }
    ASSERT_TRUE(uc::LoadLanguageFile(dir.write(L"fr.lang", bytes)));
    EXPECT_EQ(GetStr("k"), L"\u00C9t\u00E9");
    uc::ClearLocalisedStrings();
}

}  // namespace
