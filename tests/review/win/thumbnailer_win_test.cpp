// CThumbNailer on Windows: thumbnails of pictures, raw copies that never outlive the call, the research
// placeholder, unreadable files, and two threads thumbnailing the same raw file.
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <thread>

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

    // A picture of w x h pixels in the format of `mime`.
    std::wstring Picture(const std::wstring& name, int w, int h, const wchar_t* mime = L"image/png") {
        Gdiplus::Bitmap b(w, h, PixelFormat32bppARGB);
        Gdiplus::Graphics(&b).Clear(Gdiplus::Color(255, 20, 90, 200));
        const std::wstring path = dir.file(name);
        fs::create_directories(uc::ToFsPath(path).parent_path());
        EXPECT_TRUE(uc::test::SaveAs(b, path, mime)) << uc::ToUtf8(path);
        return path;
    }

    // The size of the thumbnail of `path` fitted into w x h; 0 x 0 for none.
    static SIZE Thumb(const std::wstring& path, int w, int h) {
        const uc::UniqueHBitmap b(CThumbNailer::GetThumbnail(path, SIZE{w, h}));
        BITMAP info{};
        if (!b || !::GetObjectW(b.get(), sizeof info, &info)) return {0, 0};
        return {info.bmWidth, std::abs(info.bmHeight)};
    }

    // Entries in the folder, to catch leftover copies.
    std::ptrdiff_t Entries() const { return std::distance(fs::directory_iterator(uc::ToFsPath(dir.path())), {}); }

    uc::test::TempDir dir;
};

TEST_F(Thumbnails, PicturesFitTheSizeWithTheirAspectKept) {
    struct Case {
        const wchar_t* name;
        const wchar_t* mime;
        int w, h;
        SIZE size, expected;
    } cases[] = {{L"wide.png", L"image/png", 300, 150, {128, 128}, {128, 64}},
                 {L"tall.jpg", L"image/jpeg", 120, 480, {128, 128}, {32, 128}},
                 {L"small.bmp", L"image/bmp", 40, 20, {128, 128}, {40, 20}},  // never enlarged
                 {L"noextension", L"image/png", 200, 200, {64, 32}, {32, 32}}};
    for (const Case& c : cases) {
        // Where the shell has no handler (Wine), GDI+ scales to exactly the fitted size.
        const SIZE d = Thumb(Picture(c.name, c.w, c.h, c.mime), c.size.cx, c.size.cy);
        EXPECT_EQ(d.cx, c.expected.cx) << uc::ToUtf8(c.name);
        EXPECT_EQ(d.cy, c.expected.cy) << uc::ToUtf8(c.name);
    }
}

TEST_F(Thumbnails, RawFilesGoThroughACopyThatIsGoneAfterwardsAndNeverReplaceAnotherFile) {
    const std::wstring vol = Picture(L"volume.VOL", 256, 128), raw = Picture(L"frame.raw", 64, 64);
    const std::ptrdiff_t before = Entries();
    EXPECT_EQ(Thumb(vol, 128, 128).cx, 128);
    EXPECT_EQ(Thumb(raw, 128, 128).cx, 64);
    // A read-only raw file gives a read-only copy, which must still be removed.
    ASSERT_TRUE(::SetFileAttributesW(vol.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(Thumb(vol, 96, 96).cx, 96);
    EXPECT_EQ(Entries(), before);
    ::SetFileAttributesW(vol.c_str(), FILE_ATTRIBUTE_NORMAL);

    // A folder, then a read-only file, in the copy's place: the raw file is read directly, neither is touched.
    fs::create_directory(uc::ToFsPath(vol + L".png"));
    EXPECT_EQ(Thumb(vol, 50, 50).cx, 50);
    EXPECT_TRUE(fs::is_directory(uc::ToFsPath(vol + L".png")));
    fs::remove(uc::ToFsPath(vol + L".png"));
    const std::wstring theirs = dir.write(L"volume.VOL.png", "someone else's file");
    ASSERT_TRUE(::SetFileAttributesW(theirs.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(Thumb(vol, 50, 50).cx, 50);
    EXPECT_EQ(dir.read(L"volume.VOL.png"), "someone else's file");
    ::SetFileAttributesW(theirs.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Thumbnails, ResearchFilesShowThePlaceholder) {
    zelPath::setPath(zelPath::Images, dir.file(L"images"));
    const std::wstring scan = dir.write(L"scan.B32", std::string(1000, '\x7f'));
    EXPECT_EQ(Thumb(scan, 64, 64).cx, 0) << "no placeholder yet";
    Picture(L"images/misc/matlab.png", 90, 60);
    const SIZE d = Thumb(scan, 45, 45);
    EXPECT_EQ(d.cx, 45);
    EXPECT_EQ(d.cy, 30);
    std::unique_ptr<Gdiplus::Bitmap> full(CThumbNailer::GetGdiThumbnail(scan));
    ASSERT_TRUE(full);
    EXPECT_EQ(full->GetWidth(), 90u) << "the placeholder itself, not reduced";
}

TEST_F(Thumbnails, UnreadableFilesGiveNullAndAFailedGdiBitmap) {
    const std::wstring png = Picture(L"whole.png", 64, 64);
    const std::wstring cases[] = {dir.write(L"empty.png", ""), dir.write(L"README", "no dot, no picture"),
                                  dir.file(L"missing.jpg"), dir.write(L"cut.png", dir.read(L"whole.png").substr(0, 40)),
                                  dir.write(L"empty.raw", "")};
    const std::ptrdiff_t before = Entries();
    for (const std::wstring& path : cases) {
        EXPECT_EQ(Thumb(path, 32, 32).cx, 0) << uc::ToUtf8(path);
        std::unique_ptr<Gdiplus::Bitmap> gdi(CThumbNailer::GetGdiThumbnail(path));
        ASSERT_TRUE(gdi) << "a failed bitmap, not null";
        EXPECT_NE(gdi->GetLastStatus(), Gdiplus::Ok) << uc::ToUtf8(path);
    }
    EXPECT_EQ(Entries(), before) << "no copy left behind";
    EXPECT_EQ(Thumb(png, 0, 10).cx, 0);
}

TEST_F(Thumbnails, TwoThreadsOnTheSameRawFileBothGetItsPicture) {
    const std::wstring vol = Picture(L"shared.vol", 80, 40);
    const std::ptrdiff_t before = Entries();
    int got[2] = {0, 0};
    auto work = [&](int t) {
        for (int i = 0; i < 15; ++i) got[t] += Thumb(vol, 40, 40).cx == 40;
    };
    std::thread a(work, 0), b(work, 1);
    a.join();
    b.join();
    EXPECT_EQ(got[0] + got[1], 30);
    EXPECT_EQ(Entries(), before);
}

}  // namespace
