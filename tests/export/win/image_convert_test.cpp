// Conversion and blacking-out through GDI+ under Wine: runs the conversions listed by image_cases.py and records
// what they produced; image_cases.py then checks the pixels with a decoder that is not GDI+.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

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

TEST(ExportImages, ConvertsEveryListedCase) {
    const std::wstring folder = CasesFolder();
    if (folder.empty()) GTEST_SKIP() << "UC_TEST_DATA is not set (CTest prepares it)";
    std::wifstream cases(uc::ToFsPath(Below(folder, L"cases.txt")));
    ASSERT_TRUE(cases) << "run image_cases.py make first";
    std::ofstream results(uc::ToFsPath(Below(folder, L"results.txt")), std::ios::trunc);
    int count = 0, format = 0, privatize = 0;
    // id, source, format code, privatize, layout ("-": none), screen ("-": 800 x 600)
    for (std::wstring id, source, layout, screen; cases >> id >> source >> format >> privatize >> layout >> screen; ++count) {
        CFileQueue queue;
        if (layout != L"-") queue.SetLayoutFile(Below(folder, layout));
        queue.SetScreenSize(screen == L"1024x768" ? 1024 : 800, screen == L"1024x768" ? 768 : 600);
        const std::wstring out = Below(folder, L"out\\" + id);
        fs::create_directories(uc::ToFsPath(out));
        const std::wstring result = queue.ConvertImage(Below(folder, source), out, format, privatize);
        const bool present = uc::exporting::FileIsPresent(result);
        EXPECT_EQ(queue.GetConvertedName().size(), present ? 1u : 0u) << uc::ToUtf8(id);
        results << uc::ToUtf8(id) << "|" << uc::ToUtf8(result) << "|" << (present ? 1 : 0) << "\n";
    }
    EXPECT_GT(count, 0);
}

TEST(ExportImages, EncodersAreFoundByMimeTypeOnly) {
    uc::GdiplusSession session;
    ASSERT_TRUE(session.ok());
    CLSID clsid;
    for (const wchar_t* mime : {L"image/jpeg", L"image/bmp", L"image/gif"}) EXPECT_GE(GetEncoderClsid(mime, &clsid), 0);
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
