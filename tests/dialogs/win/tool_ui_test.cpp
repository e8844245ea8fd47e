// uctool ui --screenshot: every picture is written and shows what the dialog drew; bad usage is refused.
#include <gtest/gtest.h>

#include <windows.h>

#include "platform/win/gdiplus_encoders.h"
#include "skin/win/gdiplus.h"
#include "support/temp_dir.h"
#include "support/tool_run.h"

namespace {

TEST(ToolUi, ScreenshotsOfEveryDialog) {
    uc::test::TempDir dir;
    const uc::test::ToolRun run = uc::test::RunTool(L"ui", {L"--screenshot", dir.path()});
    ASSERT_EQ(run.code, 0) << run.err;
    uc::GdiplusSession gdiplus;
    for (const wchar_t* name : {L"console.png", L"message_box.png", L"please_wait.png", L"property_sheet.png",
                                L"tabbed_dialog.png"}) {
        Gdiplus::Bitmap picture(dir.file(name).c_str());
        ASSERT_EQ(picture.GetLastStatus(), Gdiplus::Ok) << dir.file(name);
        EXPECT_GT(picture.GetWidth(), 100u);
        EXPECT_NE(run.out.find(name), std::wstring::npos);
    }
    // The console dialog is drawn in its flat colour (60, 64, 72) below its title.
    Gdiplus::Bitmap console(dir.file(L"console.png").c_str());
    Gdiplus::Color c;
    console.GetPixel(static_cast<INT>(console.GetWidth()) - 20, static_cast<INT>(console.GetHeight()) / 2 + 20, &c);
    EXPECT_EQ(c.GetValue() & 0xFFFFFF, 0x3C4048u);
    // Its launchers are round buttons painted from their blue style: plain buttons and the background are grey.
    int blue = 0;
    for (UINT y = 0; y < console.GetHeight(); ++y)
        for (UINT x = 0; x < console.GetWidth(); ++x) {
            console.GetPixel(static_cast<INT>(x), static_cast<INT>(y), &c);
            blue += c.GetB() > c.GetR() + 60 ? 1 : 0;
        }
    EXPECT_GT(blue, 2000);
    // The please-wait box is 420 pixels wide.
    EXPECT_EQ(Gdiplus::Bitmap(dir.file(L"please_wait.png").c_str()).GetWidth(), 420u);
}

TEST(ToolUi, UnknownArgumentsAreBadUsage) {
    const uc::test::ToolRun run = uc::test::RunTool(L"ui", {L"--what"});
    EXPECT_EQ(run.code, 2);
    EXPECT_NE(run.err.find(L"usage: uctool ui"), std::wstring::npos);
}

}  // namespace
