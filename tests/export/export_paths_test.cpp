// Path rules of the export: separators, extensions, the blacked-out name, the safe export-folder name.
#include <gtest/gtest.h>

#include "export/export_paths.h"

namespace {
using namespace uc::exporting;
const std::wstring S(1, kSeparator);

TEST(ExportPaths, FolderArgumentsEndWithOneSeparator) {
    EXPECT_EQ(WithTrailingSeparator(L"a" + S + L"b"), L"a" + S + L"b" + S);
    EXPECT_EQ(WithTrailingSeparator(L"a" + S), L"a" + S);
    EXPECT_EQ(WithTrailingSeparator(L""), L"");
}

TEST(ExportPaths, ExtensionsAndNames) {
    struct Case {
        std::wstring path, lowerExtension, privatized, asBmp;
    } cases[] = {
        {L"x" + S + L"Name.JPG", L"jpg", L"x" + S + L"Namec.JPG", L"x" + S + L"Name.bmp"},
        {L"x.d" + S + L"name", L"", L"x.d" + S + L"namec", L"x.d" + S + L"name.bmp"},
        {L"a.b.jpeg", L"jpeg", L"a.bc.jpeg", L"a.b.bmp"},
        {L"name.", L"", L"namec.", L"name.bmp"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(LowerExtension(c.path), c.lowerExtension);
        EXPECT_EQ(PrivatizedName(c.path), c.privatized);
        EXPECT_EQ(ReplaceExtension(c.path, L".bmp"), c.asBmp);
    }
    EXPECT_EQ(FileName(L"a" + S + L"b.txt"), L"b.txt");
    EXPECT_EQ(FolderOf(L"a" + S + L"b.txt"), L"a" + S);
    EXPECT_EQ(FolderOf(L"b.txt"), L"");
}

TEST(ExportPaths, CaseIsIgnoredOnlyForLetters) {
    EXPECT_TRUE(EqualsNoCase(L"C:\\Data\\P1", L"c:\\DATA\\p1"));
    EXPECT_FALSE(EqualsNoCase(L"P1", L"P2"));
    EXPECT_FALSE(EqualsNoCase(L"P1", L"P1 "));
}

TEST(ExportPaths, ExportedFilesKeepTheirSharedFoldersName) {
    const std::wstring a = S + L"arc" + S;
    EXPECT_EQ(ExportBase({a + L"P1" + S + L"patient.xml", a + L"P1" + S + L"S1" + S + L"i.jpg"}), a);
    EXPECT_EQ(ExportBase({a + L"P1" + S + L"x", a + L"P2" + S + L"y"}), S);  // two patients: both names stay
    EXPECT_EQ(ExportBase({L"P1" + S + L"x"}), L"");
    EXPECT_EQ(ExportBase({}), L"");
    EXPECT_TRUE(IsImageFile(L"a.JPEG"));
    EXPECT_FALSE(IsImageFile(L"study.xml"));
}

TEST(ExportPaths, ExportFolderIsMadeSafeForTheDisc) {
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"Export\\{PATID}\\{SYSID}", L"Export"},
        {L"/Clinic: Cardio//2024/", L"Clinic_ Cardio\\2024"},
        {L"\\\\\\a\\\\\\b\\\\", L"a\\b"},
        {L"{PATID}{SYSID}", L""},
        {L"C:\\out", L"C_\\out"},
        {L"", L""},
    };
    for (const auto& [configured, safe] : cases) EXPECT_EQ(SafeExportFolder(configured), safe) << configured;
}

}  // namespace
