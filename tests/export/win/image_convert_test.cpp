// Conversion and blacking-out through GDI+ under Wine: runs the conversions listed by image_cases.py and records
// what they produced; image_cases.py then checks the pixels with a decoder that is not GDI+.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "export/export_files.h"
#include "export/file_queue.h"
#include "export_test_support.h"
#include "platform/logger.h"
#include "platform/text.h"
#include "platform/win/gdiplus_encoders.h"

namespace {
namespace fs = std::filesystem;
using namespace uc::test;

// The folder image_cases.py prepared (set by CTest); the cases are skipped when run without it.
std::wstring CasesFolder() {
    const char* folder = std::getenv("UC_TEST_DATA");
    return folder && *folder ? uc::FromUtf8(folder) : L"";
}

std::vector<std::wstring> Split(const std::wstring& line) {
    std::vector<std::wstring> fields;
    std::wstringstream s(line);
    for (std::wstring field; std::getline(s, field, L'|');) fields.push_back(field);
    if (!line.empty() && line.back() == L'|') fields.emplace_back();
    return fields;
}

TEST(ExportImages, ConvertsEveryListedCase) {
    const std::wstring folder = CasesFolder();
    if (folder.empty()) GTEST_SKIP() << "UC_TEST_DATA is not set (CTest prepares it)";
    std::ifstream cases(uc::ToFsPath(Below(folder, L"cases.txt")));
    ASSERT_TRUE(cases) << "run image_cases.py make first";
    std::ofstream results(uc::ToFsPath(Below(folder, L"results.txt")), std::ios::trunc);
    int count = 0;
    for (std::string line; std::getline(cases, line);) {
        const std::vector<std::wstring> f = Split(uc::FromUtf8(line));
        ASSERT_EQ(f.size(), 6u) << line;
        int format = 0, privatize = 0;
        ASSERT_TRUE(uc::ParseInt(f[2], format) && uc::ParseInt(f[3], privatize)) << line;
        CFileQueue queue;
        if (!f[4].empty()) queue.SetLayoutFile(Below(folder, f[4]));
        queue.SetScreenSize(800, 600);
        if (f[5] == L"1024x768") queue.SetScreenSize(1024, 768);
        const std::wstring out = Below(folder, L"out\\" + f[0]);
        fs::create_directories(uc::ToFsPath(out));
        const std::wstring result = queue.ConvertImage(Below(folder, f[1]), out, format, privatize);
        const bool present = uc::exporting::FileIsPresent(result);
        EXPECT_EQ(queue.GetConvertedName().size(), present ? 1u : 0u) << line;
        results << uc::ToUtf8(f[0]) << "|" << uc::ToUtf8(result) << "|" << (present ? 1 : 0) << "\n";
        ++count;
    }
    EXPECT_GT(count, 0);
}

TEST(ExportImages, TheThreeEncodersAreFound) {
    uc::GdiplusSession session;
    ASSERT_TRUE(session.ok());
    CLSID clsid;
    for (const wchar_t* mime : {L"image/jpeg", L"image/bmp", L"image/gif"})
        EXPECT_GE(GetEncoderClsid(mime, &clsid), 0) << uc::ToUtf8(mime);
    EXPECT_EQ(GetEncoderClsid(L"image/x-none", &clsid), -1);
    EXPECT_EQ(GetEncoderClsid(nullptr, &clsid), -1);
}

TEST(ExportImages, AnImageGdiplusCannotReadIsReportedAndLeavesNothing) {
    TempDir dir;
    const std::wstring bad = dir.write(L"in\\bad.bmp", "BM this is not a bitmap");
    zelLogger::Instance().ClearEntries();
    CFileQueue queue;
    const std::wstring result = queue.ConvertImage(bad, dir.file(L"out"), 1, 0);
    EXPECT_EQ(result, dir.file(L"out\\bad.jpg"));
    EXPECT_FALSE(uc::exporting::FileIsPresent(result));
    EXPECT_TRUE(fs::is_empty(uc::ToFsPath(dir.file(L"out"))));
    EXPECT_EQ(zelLogger::Instance().Count(L"GDI+ cannot read it"), 1u);
}

}  // namespace
