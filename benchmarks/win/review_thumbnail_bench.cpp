// Thumbnails per second: 200 camera-size JPEGs (4000 x 3000) through CThumbNailer::GetThumbnail at 128 x 128,
// as the review windows ask for them. A plain timing program of the Windows builds; run it under Wine by hand.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "../support/run_marker.h"
#include "platform/text.h"
#include "platform/win/gdiplus_encoders.h"
#include "platform/win/handles.h"
#include "review/thumbnailer.h"

int wmain(int argc, wchar_t** argv) {
    uc::bench::WriteRunMarker();
    namespace fs = std::filesystem;
    const int count = argc > 1 ? std::max(1, _wtoi(argv[1])) : 200;
    const fs::path dir = fs::temp_directory_path() / "uc-thumbnail-bench";
    fs::create_directories(dir);
    ULONG_PTR token = 0;
    Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
    {
        // One photograph-like picture (gradients and stripes, so the JPEG is of a camera's size), copied.
        Gdiplus::Bitmap picture(4000, 3000, PixelFormat24bppRGB);
        {
            Gdiplus::Graphics g(&picture);
            Gdiplus::LinearGradientBrush sky(Gdiplus::Point(0, 0), Gdiplus::Point(4000, 3000),
                                             Gdiplus::Color(255, 30, 80, 160), Gdiplus::Color(255, 240, 200, 120));
            g.FillRectangle(&sky, 0, 0, 4000, 3000);
            Gdiplus::Pen pen(Gdiplus::Color(255, 20, 20, 20), 3);
            for (int x = 0; x < 4000; x += 37) g.DrawLine(&pen, x, 0, 4000 - x, 3000);
        }
        const std::wstring first = (dir / "photo0.jpg").wstring();
        if (!uc::SaveImage(picture, first, L"image/jpeg")) {
            std::fprintf(stderr, "no JPEG encoder\n");
            return 1;
        }
        for (int i = 1; i < count; ++i)
            fs::copy_file(first, dir / ("photo" + std::to_string(i) + ".jpg"), fs::copy_options::overwrite_existing);
    }
    const auto size = fs::file_size(dir / "photo0.jpg");
    int made = 0;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i) {
        const uc::UniqueHBitmap thumb(
            CThumbNailer::GetThumbnail((dir / ("photo" + std::to_string(i) + ".jpg")).wstring(), SIZE{128, 128}));
        if (thumb) ++made;
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%d of %d JPEGs (4000x3000, %.1f MB each) thumbnailed at 128x128 in %.2f s: %.2f per second\n", made,
                count, static_cast<double>(size) / 1e6, seconds, count / seconds);
    Gdiplus::GdiplusShutdown(token);
    std::error_code ec;
    fs::remove_all(dir, ec);
    return made == count ? 0 : 1;
}
