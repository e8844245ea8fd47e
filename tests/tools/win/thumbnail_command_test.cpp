// uctool "thumbnail" (Windows build): one PNG per file in the output folder, failures counted in the exit code.
#include <gtest/gtest.h>

#include "platform/paths.h"
#include "skin/win/gdiplus_session.h"
#include "support/temp_dir.h"
#include "support/tool_run.h"

namespace {

using uc::test::RunTool;

bool Has(const std::wstring& text, const std::wstring& part) { return text.find(part) != std::wstring::npos; }

TEST(ThumbnailCommand, WritesOnePngPerFileAndCountsTheFailures) {
    uc::test::EnsureGdiplus();
    uc::test::TempDir dir;
    const std::wstring picture = dir.file(L"wide.png"), out = dir.file(L"out");
    Gdiplus::Bitmap wide(300, 150, PixelFormat32bppARGB);
    ASSERT_TRUE(uc::test::SaveAs(wide, picture, L"image/png"));

    uc::test::ToolRun r = RunTool(L"thumbnail", {picture, L"--out", out, L"--size", L"64x64"});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(Has(r.out, L"wide.png.thumb.png (64x32)")) << r.out;
    EXPECT_EQ(Gdiplus::Bitmap(uc::JoinPath(out, L"wide.png.thumb.png").c_str()).GetWidth(), 64u);

    r = RunTool(L"thumbnail", {picture, dir.file(L"missing.png"), L"--out", out});
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(Has(r.err, L"missing.png: no thumbnail")) << r.err;
    EXPECT_EQ(RunTool(L"thumbnail", {picture}).code, 2) << "no --out";
    EXPECT_EQ(RunTool(L"thumbnail", {picture, L"--out", out, L"--size", L"64"}).code, 2);
}

}  // namespace
