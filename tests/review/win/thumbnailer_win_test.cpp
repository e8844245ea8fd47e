// CThumbNailer on Windows: thumbnails of pictures, raw copies that never outlive the call, the research
// placeholder, unreadable files, and two threads thumbnailing the same raw file.
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "platform/paths.h"
#include "platform/text.h"
#include "platform/win/handles.h"
#include "review/thumbnailer.h"
#include "skin/win/gdiplus_session.h"
#include "support/temp_dir.h"

namespace {
namespace fs = std::filesystem;

class Thumbnails : public testing::Test {
protected:
    void SetUp() override { uc::test::EnsureGdiplus(); }
    void TearDown() override { zelPath::reset(); }

    // A picture of w x h pixels in the format of `mime`, two colours so that scaling has something to show.
    std::wstring Picture(const std::wstring& name, int w, int h, const wchar_t* mime = L"image/png") {
        Gdiplus::Bitmap b(w, h, PixelFormat32bppARGB);
        {
            Gdiplus::Graphics g(&b);
            g.Clear(Gdiplus::Color(255, 20, 90, 200));
            Gdiplus::SolidBrush brush(Gdiplus::Color(255, 240, 200, 30));
            g.FillRectangle(&brush, 0, 0, w / 2, h);
        }
        const std::wstring path = dir.file(name);
        fs::create_directories(uc::ToFsPath(path).parent_path());
        EXPECT_TRUE(uc::test::SaveAs(b, path, mime)) << uc::ToUtf8(path);
        return path;
    }

    // Names in the folder, to catch leftovers.
    std::vector<std::wstring> Listing() const {
        std::vector<std::wstring> names;
        for (const auto& e : fs::directory_iterator(uc::ToFsPath(dir.path()))) names.push_back(e.path().filename().wstring());
        std::sort(names.begin(), names.end());
        return names;
    }

    uc::test::TempDir dir;
};

SIZE Dimensions(HBITMAP b) {
    BITMAP info{};
    if (!b || !::GetObjectW(b, sizeof info, &info)) return {0, 0};
    return {info.bmWidth, std::abs(info.bmHeight)};
}

TEST_F(Thumbnails, PicturesFitTheSizeWithTheirAspectKept) {
    struct Case {
        const wchar_t* name;
        const wchar_t* mime;
        int w, h;
        SIZE size, expected;
    } cases[] = {{L"wide.png", L"image/png", 300, 150, {128, 128}, {128, 64}},
                 {L"tall.jpg", L"image/jpeg", 120, 480, {128, 128}, {32, 128}},
                 {L"small.bmp", L"image/bmp", 40, 20, {128, 128}, {40, 20}},
                 {L"noextension", L"image/png", 200, 200, {64, 32}, {32, 32}}};
    for (const Case& c : cases) {
        const std::wstring path = Picture(c.name, c.w, c.h, c.mime);
        const uc::UniqueHBitmap thumb(CThumbNailer::GetThumbnail(path, c.size));
        ASSERT_TRUE(thumb) << uc::ToUtf8(c.name);
        const SIZE d = Dimensions(thumb.get());
        EXPECT_LE(d.cx, c.size.cx);
        EXPECT_LE(d.cy, c.size.cy);
        // Where the shell has no handler (Wine), GDI+ scales to exactly the fitted size.
        EXPECT_NEAR(d.cx * c.h, d.cy * c.w, std::max(c.w, c.h)) << uc::ToUtf8(c.name) << " aspect kept";
        EXPECT_EQ(d.cx, c.expected.cx) << uc::ToUtf8(c.name);
        EXPECT_EQ(d.cy, c.expected.cy) << uc::ToUtf8(c.name);
    }
}

TEST_F(Thumbnails, RawFilesAreThumbnailedThroughACopyThatIsGoneAfterwards) {
    const std::wstring vol = Picture(L"volume.VOL", 256, 128);
    const std::wstring raw = Picture(L"frame.raw", 64, 64);
    const std::vector<std::wstring> before = Listing();
    for (const std::wstring& path : {vol, raw}) {
        const uc::UniqueHBitmap thumb(CThumbNailer::GetThumbnail(path, SIZE{128, 128}));
        EXPECT_TRUE(thumb) << uc::ToUtf8(path);
        EXPECT_FALSE(fs::exists(uc::ToFsPath(CThumbNailer::RawCopyPath(path))));
    }
    EXPECT_EQ(Listing(), before);
    // A read-only raw file gives a read-only copy, which must still be removed.
    ASSERT_TRUE(::SetFileAttributesW(vol.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(uc::UniqueHBitmap(CThumbNailer::GetThumbnail(vol, SIZE{96, 96})));
    EXPECT_EQ(Listing(), before);
    ::SetFileAttributesW(vol.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Thumbnails, ARawFileWhoseCopyCannotBeWrittenIsReadDirectlyAndWhatBlockedItStays) {
    const std::wstring vol = Picture(L"blocked.vol", 100, 50);
    // A folder, then a read-only file, in the copy's place: the copy fails and neither is ours to delete.
    fs::create_directory(uc::ToFsPath(CThumbNailer::RawCopyPath(vol)));
    EXPECT_EQ(Dimensions(uc::UniqueHBitmap(CThumbNailer::GetThumbnail(vol, SIZE{50, 50})).get()).cx, 50);
    EXPECT_TRUE(fs::is_directory(uc::ToFsPath(CThumbNailer::RawCopyPath(vol))));
    fs::remove(uc::ToFsPath(CThumbNailer::RawCopyPath(vol)));

    const std::wstring theirs = dir.write(L"blocked.vol.png", "someone else's file");
    ASSERT_TRUE(::SetFileAttributesW(theirs.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(uc::UniqueHBitmap(CThumbNailer::GetThumbnail(vol, SIZE{50, 50})));
    EXPECT_EQ(dir.read(L"blocked.vol.png"), "someone else's file");
    ::SetFileAttributesW(theirs.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Thumbnails, ResearchFilesShowThePlaceholder) {
    zelPath::setPath(zelPath::Images, dir.file(L"images"));
    const std::wstring scan = dir.write(L"scan.B32", std::string(1000, '\x7f'));
    EXPECT_FALSE(uc::UniqueHBitmap(CThumbNailer::GetThumbnail(scan, SIZE{64, 64}))) << "no placeholder yet";
    Picture(L"images/misc/matlab.png", 90, 60);
    const uc::UniqueHBitmap thumb(CThumbNailer::GetThumbnail(scan, SIZE{45, 45}));
    const SIZE d = Dimensions(thumb.get());
    EXPECT_EQ(d.cx, 45);
    EXPECT_EQ(d.cy, 30);

    std::unique_ptr<Gdiplus::Bitmap> full(CThumbNailer::GetGdiThumbnail(scan));
    ASSERT_TRUE(full);
    EXPECT_EQ(full->GetLastStatus(), Gdiplus::Ok);
    EXPECT_EQ(full->GetWidth(), 90u) << "the placeholder itself, not reduced";
}

TEST_F(Thumbnails, UnreadableFilesGiveNullAndAFailedGdiBitmap) {
    const std::wstring png = Picture(L"whole.png", 64, 64);
    const std::string bytes = dir.read(L"whole.png");
    const std::wstring cases[] = {dir.write(L"empty.png", ""), dir.write(L"notes.txt", "plain text, no picture"),
                                  dir.write(L"README", "no dot at all"), dir.file(L"missing.jpg"),
                                  dir.write(L"cut.png", bytes.substr(0, 40)), dir.write(L"empty.raw", "")};
    const std::vector<std::wstring> before = Listing();
    for (const std::wstring& path : cases) {
        EXPECT_FALSE(uc::UniqueHBitmap(CThumbNailer::GetThumbnail(path, SIZE{32, 32}))) << uc::ToUtf8(path);
        std::unique_ptr<Gdiplus::Bitmap> gdi(CThumbNailer::GetGdiThumbnail(path));
        ASSERT_TRUE(gdi) << "a failed bitmap, not null";
        EXPECT_NE(gdi->GetLastStatus(), Gdiplus::Ok) << uc::ToUtf8(path);
    }
    EXPECT_EQ(Listing(), before) << "no copy left behind";
    EXPECT_FALSE(uc::UniqueHBitmap(CThumbNailer::GetThumbnail(png, SIZE{0, 10})));
    std::unique_ptr<Gdiplus::Bitmap> gdi(CThumbNailer::GetGdiThumbnail(png));
    EXPECT_EQ(gdi->GetWidth(), 64u);
}

TEST_F(Thumbnails, TwoThreadsOnTheSameRawFileBothGetItsPicture) {
    const std::wstring vol = Picture(L"shared.vol", 80, 40);
    const std::vector<std::wstring> before = Listing();
    int got[2] = {0, 0};
    auto work = [&](int t) {
        for (int i = 0; i < 15; ++i)
            if (uc::UniqueHBitmap(CThumbNailer::GetThumbnail(vol, SIZE{40, 40}))) ++got[t];
    };
    std::thread a(work, 0), b(work, 1);
    a.join();
    b.join();
    EXPECT_EQ(got[0], 15);
    EXPECT_EQ(got[1], 15);
    EXPECT_EQ(Listing(), before);
}

}  // namespace
