// CThumbNailer: preview pictures of exported and archived files for the image-review windows, and the research
// data file vocabulary.
#pragma once

#include <string>

#include "platform/export.h"

#ifdef _WIN32
#include "skin/win/gdiplus.h"
#endif

// How a file gets its thumbnail.
enum class ThumbnailRoute {
    Placeholder,  // research data: the placeholder picture "misc/matlab.png" from the image folder
    RawCopy,      // "vol" or "raw": a copy named <file>.png, thumbnailed and deleted again
    Direct,       // anything else: the file itself
};

class UC_API CThumbNailer {
public:
    CThumbNailer() = delete;

    // Whether the text from the last '.' of `path` (dot included), lower-cased, is a research data extension
    // (".rf", ".bpr", ".b8", ".b32", ".mpr", ".m", ".drf", ".pw", ".crf", ".col", ".cvv", ".ecg", ".el",
    // ".elo", ".epr"; exact match). A path without a dot is not.
    static bool IsResearchFile(const std::wstring& path);
    // That text without its dot, upper-cased (".b32" gives "B32"): the displayed type of a research file.
    // For a path without a dot, the whole path upper-cased.
    static std::wstring GetResearchExtension(const std::wstring& path);

    // The route GetThumbnail takes for `path`; raw files are recognised by the lower-cased text after the last
    // '.' ("vol", "raw"); a path without a dot is never a raw file.
    static ThumbnailRoute Route(const std::wstring& path);
    // Name of the temporary copy of a raw file: the full path with ".png" appended.
    static std::wstring RawCopyPath(const std::wstring& path);
    // Full path of the research placeholder picture (utilsExam::GetImage("misc/matlab.png")).
    static std::wstring PlaceholderPath();

#ifdef _WIN32
    // A thumbnail of at most `size`, owned by the caller (DeleteObject), or null when nothing can read the file.
    // The shell's thumbnail (IExtractImage) is asked first; where the shell has no handler for the file (Wine
    // has few, a stripped-down Windows may have none), GDI+ decodes it (by content, whatever its extension) and
    // scales it to fit `size` with its aspect kept, never enlarging it. A raw file is copied to RawCopyPath
    // (overwriting an earlier copy) and the copy is deleted before return whatever happens; when the copy cannot
    // be made (a read-only folder) GDI+ decodes the raw file itself. COM is initialised for the call if needed.
    static HBITMAP GetThumbnail(const std::wstring& path, const SIZE& size);
    // A GDI+ bitmap of the file itself at full size, or of the placeholder for research files; the caller
    // deletes it. A file GDI+ cannot read gives a bitmap in a failed state (GetLastStatus() != Ok), not null.
    // GDI+ must be started by the application.
    static Gdiplus::Bitmap* GetGdiThumbnail(std::wstring path);
#endif
};
