// GDI+ encoder lookup of the statics library: the encoder's class id for a MIME type, and saving with it.
#pragma once

#include <string>

#include "platform/export.h"
#include "skin/win/gdiplus.h"

namespace uc {

// The class id of GDI+'s encoder for `mime` ("image/png", "image/jpeg", "image/bmp"); false when there is none.
UC_API bool GetEncoderClsid(const wchar_t* mime, CLSID* clsid);
// Saves `image` to `path` with the encoder of `mime`; false when there is no such encoder or saving fails.
UC_API bool SaveImage(Gdiplus::Image& image, const std::wstring& path, const wchar_t* mime);

}  // namespace uc
