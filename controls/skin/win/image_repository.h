// ImageRepository: the process-wide cache of GDI+ bitmaps loaded from skin image files, by exact path.
#pragma once

#include <cstddef>
#include <string>

#include "platform/export.h"
#include "skin/win/gdiplus.h"

class UC_API ImageRepository {
public:
    ImageRepository() = delete;

    static constexpr unsigned long kNoTransparency = 0xFFFFFFFFul;

    // The bitmap of `path` (compared exactly, case-sensitive), loaded on first request: ".ico" files as a
    // 32 x 32 icon, anything else through GDI+. For ".bmp" (any letter case) pixels of `transparentColour`
    // (ARGB; kNoTransparency for none) become transparent. The colour of the first request for a path counts.
    // Failures are cached like successes: null for an icon that cannot be loaded, a bitmap with an error status
    // for a file GDI+ cannot read. An empty path yields null. GDI+ must be started by the application.
    static Gdiplus::Bitmap* GetImage(const std::wstring& path, unsigned long transparentColour);
    static Gdiplus::Bitmap* GetImage(const wchar_t* path, unsigned long transparentColour);
    // Deletes every cached bitmap.
    static void Destroy();

    static std::size_t CachedCount();
};
