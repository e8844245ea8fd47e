// CThumbNailer on Windows: the shell's thumbnail, the temporary ".png" copy of raw files, and GDI+ decoding
// with aspect-kept scaling where the shell has no handler.
#include <algorithm>
#include <cmath>
#include <memory>

#include "platform/win/gdiplus_encoders.h"
#include "platform/win/handles.h"
#include "review/thumbnailer.h"
#include "review/win/shell_pidl.h"

namespace {

// The copy of a raw file under its ".png" name, removed on destruction whatever happened in between. A file
// already under that name that the copy failed to replace is not ours and stays.
class TemporaryCopy {
public:
    TemporaryCopy(const std::wstring& source, std::wstring copy) : m_copy(std::move(copy)) {
        const DWORD attributes = ::GetFileAttributesW(m_copy.c_str());
        const bool existed = attributes != INVALID_FILE_ATTRIBUTES;
        // CopyFileW refuses to replace a read-only file on Windows, but not everywhere (Wine running as root):
        // a read-only file or a folder under the copy's name is never replaced.
        if (existed && (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY))) return;
        m_made = ::CopyFileW(source.c_str(), m_copy.c_str(), FALSE) != 0;
        m_remove = m_made || !existed;
    }
    ~TemporaryCopy() {
        if (!m_remove) return;
        // The copy takes the source's attributes: a read-only raw file gives a read-only copy.
        ::SetFileAttributesW(m_copy.c_str(), FILE_ATTRIBUTE_NORMAL);
        ::DeleteFileW(m_copy.c_str());
    }
    TemporaryCopy(const TemporaryCopy&) = delete;
    TemporaryCopy& operator=(const TemporaryCopy&) = delete;
    bool made() const { return m_made; }

private:
    std::wstring m_copy;
    bool m_made = false;
    bool m_remove = false;
};

HBITMAP ShellThumbnail(const std::wstring& path, const SIZE& size) {
    const uc::ScopedCoInitialize com;
    if (!com.ok()) return nullptr;
    const CShellPidl item = CShellPidl::ILFromPath(path);
    return item.IsValid() ? item.GetThumbnail(size) : nullptr;
}

// GDI+ decodes the file by its content and draws it into a 32-bit bitmap that fits `size` with the picture's
// aspect kept; a picture already inside `size` keeps its own size.
HBITMAP GdiplusThumbnail(const std::wstring& path, const SIZE& size) {
    if (size.cx <= 0 || size.cy <= 0) return nullptr;
    const uc::GdiplusSession session;  // for this call; start-ups nest
    if (!session.ok()) return nullptr;
    Gdiplus::Bitmap source(path.c_str(), FALSE);
    if (source.GetLastStatus() != Gdiplus::Ok) return nullptr;
    const double w = source.GetWidth(), h = source.GetHeight();
    if (w <= 0 || h <= 0) return nullptr;
    const double scale = std::min({1.0, size.cx / w, size.cy / h});
    const INT tw = std::max(1, static_cast<INT>(std::lround(w * scale)));
    const INT th = std::max(1, static_cast<INT>(std::lround(h * scale)));

    Gdiplus::Bitmap thumb(tw, th, PixelFormat32bppARGB);
    {
        Gdiplus::Graphics g(&thumb);
        if (g.GetLastStatus() != Gdiplus::Ok) return nullptr;
        g.SetInterpolationMode(Gdiplus::InterpolationModeHighQualityBilinear);
        g.SetPixelOffsetMode(Gdiplus::PixelOffsetModeHalf);
        // A truncated file can decode its header and fail here.
        if (g.DrawImage(&source, Gdiplus::Rect(0, 0, tw, th), 0, 0, static_cast<INT>(w), static_cast<INT>(h),
                        Gdiplus::UnitPixel) != Gdiplus::Ok)
            return nullptr;
    }
    HBITMAP out = nullptr;
    if (thumb.GetHBITMAP(Gdiplus::Color(0, 0, 0, 0), &out) != Gdiplus::Ok) return nullptr;
    return out;
}

}  // namespace

HBITMAP CThumbNailer::GetThumbnail(const std::wstring& path, const SIZE& size) {
    switch (Route(path)) {
        case ThumbnailRoute::Placeholder: {
            const std::wstring placeholder = PlaceholderPath();
            if (HBITMAP shell = ShellThumbnail(placeholder, size)) return shell;
            return GdiplusThumbnail(placeholder, size);
        }
        case ThumbnailRoute::RawCopy: {
            const TemporaryCopy copy(path, RawCopyPath(path));
            if (copy.made())
                if (HBITMAP shell = ShellThumbnail(RawCopyPath(path), size)) return shell;
            // GDI+ reads the raw file itself: its content is what the copy would have shown.
            return GdiplusThumbnail(path, size);
        }
        case ThumbnailRoute::Direct:
            break;
    }
    if (HBITMAP shell = ShellThumbnail(path, size)) return shell;
    return GdiplusThumbnail(path, size);
}

Gdiplus::Bitmap* CThumbNailer::GetGdiThumbnail(std::wstring path) {
    if (IsResearchFile(path)) path = PlaceholderPath();
    return new Gdiplus::Bitmap(path.c_str(), FALSE);  // GDI+ allocates through GdipAlloc: null, never a throw
}
