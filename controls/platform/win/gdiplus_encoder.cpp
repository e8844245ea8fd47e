// GDI+ encoder lookup through the codec table GDI+ publishes.
#include "platform/win/gdiplus_encoder.h"

#include <vector>

namespace uc {

bool GetEncoderClsid(const wchar_t* mime, CLSID* clsid) {
    if (!mime || !clsid) return false;
    UINT count = 0, size = 0;
    if (Gdiplus::GetImageEncodersSize(&count, &size) != Gdiplus::Ok || size == 0) return false;
    std::vector<unsigned char> buffer(size);
    auto* codecs = reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data());
    if (Gdiplus::GetImageEncoders(count, size, codecs) != Gdiplus::Ok) return false;
    for (UINT i = 0; i < count; ++i)
        if (codecs[i].MimeType && std::wstring(codecs[i].MimeType) == mime) {
            *clsid = codecs[i].Clsid;
            return true;
        }
    return false;
}

bool SaveImage(Gdiplus::Image& image, const std::wstring& path, const wchar_t* mime) {
    CLSID clsid;
    return GetEncoderClsid(mime, &clsid) && image.Save(path.c_str(), &clsid, nullptr) == Gdiplus::Ok;
}

}  // namespace uc
