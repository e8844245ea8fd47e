// GDI+ encoder lookup and a scoped GDI+ start-up.
#include "platform/win/gdiplus_encoders.h"

#include <cwchar>
#include <vector>

namespace {
// The installed encoders; empty when GDI+ lists none.
std::vector<unsigned char> Encoders(UINT& count) {
    UINT size = 0;
    count = 0;
    if (Gdiplus::GetImageEncodersSize(&count, &size) != Gdiplus::Ok || size == 0) return {};
    std::vector<unsigned char> buffer(size);
    if (Gdiplus::GetImageEncoders(count, size, reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data())) != Gdiplus::Ok)
        return {};
    return buffer;
}
}  // namespace

int GetEncoderClsid(const wchar_t* mimeType, CLSID* clsid) {
    if (!mimeType || !clsid) return -1;
    UINT count = 0;
    std::vector<unsigned char> buffer = Encoders(count);
    const auto* codecs = reinterpret_cast<const Gdiplus::ImageCodecInfo*>(buffer.data());
    for (UINT i = 0; i < count && !buffer.empty(); ++i)
        if (codecs[i].MimeType && std::wcscmp(codecs[i].MimeType, mimeType) == 0) {
            *clsid = codecs[i].Clsid;
            return static_cast<int>(i);
        }
    return -1;
}

namespace uc {

bool GetEncoderForFormat(const GUID& format, CLSID* clsid) {
    UINT count = 0;
    std::vector<unsigned char> buffer = Encoders(count);
    const auto* codecs = reinterpret_cast<const Gdiplus::ImageCodecInfo*>(buffer.data());
    for (UINT i = 0; i < count && !buffer.empty(); ++i)
        if (IsEqualGUID(codecs[i].FormatID, format)) {
            *clsid = codecs[i].Clsid;
            return true;
        }
    return false;
}

GdiplusSession::GdiplusSession() {
    Gdiplus::GdiplusStartupInput input;
    m_ok = Gdiplus::GdiplusStartup(&m_token, &input, nullptr) == Gdiplus::Ok;
}

GdiplusSession::~GdiplusSession() {
    if (m_ok) Gdiplus::GdiplusShutdown(m_token);
}

bool SaveImage(Gdiplus::Image& image, const std::wstring& path, const wchar_t* mime) {
    CLSID clsid;
    return GetEncoderClsid(mime, &clsid) >= 0 && image.Save(path.c_str(), &clsid, nullptr) == Gdiplus::Ok;
}

}  // namespace uc
