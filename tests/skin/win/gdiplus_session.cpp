// GDI+ start-up for the Windows skin tests, pixel reads and encoder lookup.
#include "gdiplus_session.h"

#include <vector>

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
    UINT count = 0, size = 0;
    Gdiplus::GetImageEncodersSize(&count, &size);
    if (size == 0) return false;
    std::vector<unsigned char> buffer(size);
    auto* codecs = reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data());
    Gdiplus::GetImageEncoders(count, size, codecs);
    for (UINT i = 0; i < count; ++i)
        if (std::wstring(codecs[i].MimeType) == mime)
            return bitmap.Save(path.c_str(), &codecs[i].Clsid, nullptr) == Gdiplus::Ok;
    return false;
}

}  // namespace uc::test
