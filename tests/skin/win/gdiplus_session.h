// GDI+ started once for the test program, and small pixel helpers for painted bitmaps.
#pragma once

#include <cstdint>
#include <string>

#include "skin/win/gdiplus.h"

namespace uc::test {

// Starts GDI+ on first use; it stays up until the program ends.
void EnsureGdiplus();

// ARGB of one pixel.
std::uint32_t PixelAt(Gdiplus::Bitmap& bitmap, int x, int y);

// Saves `bitmap` with the encoder of `mime` ("image/bmp", "image/png"); false when there is none.
bool SaveAs(Gdiplus::Bitmap& bitmap, const std::wstring& path, const wchar_t* mime);

}  // namespace uc::test
