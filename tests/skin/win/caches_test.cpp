// FontRepository and ImageRepository: one object per key, failures cached, colour keys only for Windows bitmaps.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <vector>

#include "gdiplus_session.h"
#include "platform/text.h"
#include "skin/win/font_repository.h"
#include "skin/win/image_repository.h"
#include "support/temp_dir.h"

using namespace Gdiplus;

namespace {

TEST(FontRepository, OneFontPerSizeAndCaseSensitiveName) {
    FontRepository::Destroy();
    CFont* a = FontRepository::GetFont(FontDescriptor(L"Tahoma", 16));
    ASSERT_NE(a, nullptr);
    EXPECT_NE(a->GetSafeHandle(), nullptr);
    EXPECT_EQ(FontRepository::GetFont(FontDescriptor(L"Tahoma", 16)), a);
    CFont* lower = FontRepository::GetFont(FontDescriptor(L"tahoma", 16));
    EXPECT_NE(lower, a) << "face names differing in case are different keys";
    EXPECT_NE(FontRepository::GetFont(FontDescriptor(L"Tahoma", 17)), a);
    EXPECT_EQ(FontRepository::CachedCount(), 3u);

    LOGFONTW lf{};
    ASSERT_GT(a->GetLogFont(&lf), 0);
    EXPECT_EQ(lf.lfWeight, 700);
    EXPECT_EQ(lf.lfQuality, ANTIALIASED_QUALITY);
    EXPECT_EQ(lf.lfHeight, 16);

    FontRepository::Destroy();
    EXPECT_EQ(FontRepository::CachedCount(), 0u);
    EXPECT_NE(FontRepository::GetFont(FontDescriptor(L"Tahoma", 16)), nullptr) << "fills again after Destroy";
    FontRepository::Destroy();
}

TEST(FontRepository, LogFontTableAndLongNames) {
    LOGFONTW lf = FontRepository::MakeLogFont(FontDescriptor(L"Arial", -12));
    EXPECT_EQ(lf.lfHeight, -12) << "negative sizes pass unchanged";
    EXPECT_EQ(lf.lfWidth, 0);
    EXPECT_EQ(lf.lfEscapement, 0);
    EXPECT_EQ(lf.lfOrientation, 0);
    EXPECT_EQ(lf.lfWeight, 700);
    EXPECT_EQ(lf.lfItalic, 0);
    EXPECT_EQ(lf.lfUnderline, 0);
    EXPECT_EQ(lf.lfStrikeOut, 0);
    EXPECT_EQ(lf.lfCharSet, 1);
    EXPECT_EQ(lf.lfOutPrecision, 0);
    EXPECT_EQ(lf.lfClipPrecision, 0);
    EXPECT_EQ(lf.lfQuality, 4);
    EXPECT_EQ(lf.lfPitchAndFamily, 0);
    EXPECT_STREQ(lf.lfFaceName, L"Arial");

    const std::wstring longName(40, L'x');
    lf = FontRepository::MakeLogFont(FontDescriptor(longName, 10));
    EXPECT_EQ(std::wstring(lf.lfFaceName), std::wstring(31, L'x'));
    lf = FontRepository::MakeLogFont(FontDescriptor(std::wstring(31, L'y'), 10));
    EXPECT_EQ(std::wstring(lf.lfFaceName).size(), 31u) << "31 characters fit whole";
    lf = FontRepository::MakeLogFont(FontDescriptor(L"", 10));
    EXPECT_EQ(lf.lfFaceName[0], L'\0');
    // A font with an overlong name is still created (GDI picks a substitute) and cached under the full name.
    FontRepository::Destroy();
    CFont* f = FontRepository::GetFont(FontDescriptor(longName, 10));
    EXPECT_EQ(FontRepository::GetFont(FontDescriptor(longName, 10)), f);
    FontRepository::Destroy();
}

// Writes a 32 x 32 32-bit icon file whose pixels are all `argb`.
void WriteIcon(const std::wstring& path, std::uint32_t argb) {
    std::vector<unsigned char> bytes;
    auto put16 = [&](unsigned v) { bytes.push_back(v & 0xFF), bytes.push_back((v >> 8) & 0xFF); };
    auto put32 = [&](std::uint32_t v) { put16(v & 0xFFFF), put16(v >> 16); };
    const std::uint32_t pixels = 32 * 32 * 4, mask = 32 * 4, image = 40 + pixels + mask;
    put16(0), put16(1), put16(1);                                           // ICONDIR
    bytes.push_back(32), bytes.push_back(32), bytes.push_back(0), bytes.push_back(0);
    put16(1), put16(32), put32(image), put32(6 + 16);                       // ICONDIRENTRY
    put32(40), put32(32), put32(64), put16(1), put16(32), put32(0), put32(pixels), put32(0), put32(0), put32(0),
        put32(0);                                                           // BITMAPINFOHEADER, height doubled
    for (int i = 0; i < 32 * 32; ++i) put32(argb);
    for (std::uint32_t i = 0; i < mask; ++i) bytes.push_back(0);
    std::ofstream(uc::ToFsPath(path), std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

class ImageRepositoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        uc::test::EnsureGdiplus();
        ImageRepository::Destroy();
        // 4 x 4: magenta everywhere but one white pixel at (0,0).
        Bitmap bmp(4, 4, PixelFormat24bppRGB);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4; ++x) bmp.SetPixel(x, y, Color(255, 255, 0, 255));
        bmp.SetPixel(0, 0, Color(255, 255, 255, 255));
        ASSERT_TRUE(uc::test::SaveAs(bmp, m_dir.file(L"key.BMP"), L"image/bmp"));
        ASSERT_TRUE(uc::test::SaveAs(bmp, m_dir.file(L"second.bmp"), L"image/bmp"));
        ASSERT_TRUE(uc::test::SaveAs(bmp, m_dir.file(L"plain.png"), L"image/png"));
    }
    void TearDown() override { ImageRepository::Destroy(); }
    uc::test::TempDir m_dir;
};

constexpr unsigned long kMagenta = 0xFFFF00FF;

TEST_F(ImageRepositoryTest, BitmapFilesOfAnyCaseGetTheColourKey) {
    for (const wchar_t* name : {L"key.BMP", L"second.bmp"}) {
        Bitmap* b = ImageRepository::GetImage(m_dir.file(name), kMagenta);
        ASSERT_NE(b, nullptr) << name;
        ASSERT_EQ(b->GetLastStatus(), Ok);
        EXPECT_EQ(b->GetWidth(), 4u);
        EXPECT_EQ(b->GetPixelFormat(), static_cast<PixelFormat>(PixelFormat32bppARGB));
        EXPECT_EQ(uc::test::PixelAt(*b, 2, 2) >> 24, 0u) << name << ": the key colour is transparent";
        EXPECT_EQ(uc::test::PixelAt(*b, 0, 0), 0xFFFFFFFFu) << name << ": other colours stay";
    }
    // Without a colour the bitmap is loaded as it is.
    Bitmap* raw = ImageRepository::GetImage(m_dir.file(L"second.bmp") + L"", ImageRepository::kNoTransparency);
    EXPECT_EQ(raw, ImageRepository::GetImage(m_dir.file(L"second.bmp"), kMagenta)) << "same path, same entry";
}

TEST_F(ImageRepositoryTest, PathsAreExactKeysAndTheFirstColourCounts) {
    const std::wstring path = m_dir.file(L"second.bmp");
    Bitmap* first = ImageRepository::GetImage(path.c_str(), ImageRepository::kNoTransparency);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(uc::test::PixelAt(*first, 2, 2) >> 24, 0xFFu);
    EXPECT_EQ(ImageRepository::GetImage(path, kMagenta), first) << "a later colour changes nothing";
    EXPECT_EQ(uc::test::PixelAt(*first, 2, 2) >> 24, 0xFFu);

    // The same file under a path differing in letter case is a second entry, keyed by its own request.
    std::wstring upper = path;
    upper.replace(upper.size() - 10, 10, L"SECOND.bmp");
    Bitmap* other = ImageRepository::GetImage(upper, kMagenta);
    ASSERT_NE(other, nullptr);
    EXPECT_NE(other, first);
    EXPECT_EQ(uc::test::PixelAt(*other, 2, 2) >> 24, 0u);
    EXPECT_EQ(ImageRepository::CachedCount(), 2u);
}

TEST_F(ImageRepositoryTest, PngKeepsItsAlphaAndIconsLoadAt32) {
    Bitmap* png = ImageRepository::GetImage(m_dir.file(L"plain.png"), kMagenta);
    ASSERT_NE(png, nullptr);
    EXPECT_EQ(uc::test::PixelAt(*png, 2, 2), kMagenta) << "the colour is ignored for other formats";

    WriteIcon(m_dir.file(L"icon.ICO"), 0xFF00FF00);
    Bitmap* ico = ImageRepository::GetImage(m_dir.file(L"icon.ICO"), ImageRepository::kNoTransparency);
    ASSERT_NE(ico, nullptr);
    EXPECT_EQ(ico->GetWidth(), 32u);
    EXPECT_EQ(ico->GetHeight(), 32u);
    EXPECT_EQ(uc::test::PixelAt(*ico, 16, 16) & 0xFFFFFF, 0x00FF00u);
}

TEST_F(ImageRepositoryTest, FailuresAreCachedAndEmptyPathsAreNot) {
    EXPECT_EQ(ImageRepository::GetImage(L"", kMagenta), nullptr);
    EXPECT_EQ(ImageRepository::GetImage(static_cast<const wchar_t*>(nullptr), kMagenta), nullptr);
    EXPECT_EQ(ImageRepository::CachedCount(), 0u);

    EXPECT_EQ(ImageRepository::GetImage(m_dir.file(L"missing.ico"), kMagenta), nullptr);
    EXPECT_EQ(ImageRepository::CachedCount(), 1u) << "a missing icon caches null";
    Bitmap* bad = ImageRepository::GetImage(m_dir.file(L"missing.png"), kMagenta);
    ASSERT_NE(bad, nullptr);
    EXPECT_NE(bad->GetLastStatus(), Ok);
    m_dir.write(L"missing.png", "not a picture");
    EXPECT_EQ(ImageRepository::GetImage(m_dir.file(L"missing.png"), kMagenta), bad) << "not retried";
    const std::wstring garbage = m_dir.write(L"garbage.bmp", "BM garbage");
    Bitmap* g = ImageRepository::GetImage(garbage, kMagenta);  // whatever GDI+ makes of it, it is kept
    EXPECT_EQ(ImageRepository::GetImage(garbage, ImageRepository::kNoTransparency), g);
    EXPECT_EQ(ImageRepository::CachedCount(), 3u);
}

}  // namespace
