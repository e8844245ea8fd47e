// GDI+ start-up for the Windows skin tests, pixel reads and encoder lookup.
#include "gdiplus_session.h"

#include "platform/win/gdiplus_encoders.h"

namespace uc::test {

void EnsureGdiplus() {
    static ULONG_PTR token = [] {
        ULONG_PTR t = 0;
        Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&t, &input, nullptr);
        return t;
    }();
    (void)token;
}

std::uint32_t PixelAt(Gdiplus::Bitmap& bitmap, int x, int y) {
    Gdiplus::Color c;
    bitmap.GetPixel(x, y, &c);
    return c.GetValue();
}

bool SaveAs(Gdiplus::Bitmap& bitmap, const std::wstring& path, const wchar_t* mime) {
    return uc::SaveImage(bitmap, path, mime);
}

}  // namespace uc::test
