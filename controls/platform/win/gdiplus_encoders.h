// GDI+ encoder lookup (the console's statics helper): by MIME type, and by an image's own file format.
#pragma once

#include <string>

#include "skin/win/gdiplus.h"

#include "platform/export.h"

// Index of the encoder for `mimeType` ("image/jpeg") with its class id in `clsid`, or -1 when there is none.
// GDI+ must be started.
UC_API int GetEncoderClsid(const wchar_t* mimeType, CLSID* clsid);

namespace uc {
// Encoder of the file format `format` (an image's GetRawFormat); false when GDI+ has none for it.
UC_API bool GetEncoderForFormat(const GUID& format, CLSID* clsid);

// Saves `image` to `path` with the encoder of `mime`; false when there is no such encoder or saving fails.
UC_API bool SaveImage(Gdiplus::Image& image, const std::wstring& path, const wchar_t* mime);

// Starts GDI+ for the guard's life (start-ups are counted, so it nests inside an application's own start-up).
class UC_API GdiplusSession {
public:
    GdiplusSession();
    ~GdiplusSession();
    GdiplusSession(const GdiplusSession&) = delete;
    GdiplusSession& operator=(const GdiplusSession&) = delete;
    bool ok() const { return m_ok; }

private:
    ULONG_PTR m_token = 0;
    bool m_ok = false;
};
}  // namespace uc
