// uctool "thumbnail": the review windows' thumbnails of files, written out as PNG pictures (Windows build).
#include <filesystem>
#include <ostream>

#include "command.h"
#include "platform/text.h"
#include "review/thumbnailer.h"

#ifdef _WIN32
#include "platform/win/gdiplus_encoders.h"
#include "platform/win/handles.h"
#endif

namespace uctool::thumbnail {
namespace {

const wchar_t* const kUsage =
    L"usage: uctool thumbnail FILE... --out DIR [--size WxH]\n"
    L"\n"
    L"Writes the thumbnail the image-review windows show for each FILE (default size 128x128) to\n"
    L"DIR/<file name>.thumb.png: the shell's thumbnail, else GDI+ decoding scaled with aspect kept; research\n"
    L"data files get the placeholder picture from the image folder, \"vol\" and \"raw\" files go through a\n"
    L"temporary \".png\" copy. Windows build only.\n"
    L"Exit code 0 when every file got a thumbnail, 1 when some did not, 2 on bad usage.";

int Run(const Args& all, std::wostream& out, std::wostream& err) {
    Args args = all;
    std::wstring target, sizeText;
    TakeOption(args, L"--out", target);
    TakeOption(args, L"--size", sizeText);
    int w = 128, h = 128;
    if (args.empty() || target.empty() || (!sizeText.empty() && !ParseSize(sizeText, w, h))) {
        err << kUsage << L"\n";
        return 2;
    }
#ifdef _WIN32
    std::error_code ec;
    std::filesystem::create_directories(uc::ToFsPath(target), ec);
    ULONG_PTR token = 0;
    Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&token, &input, nullptr) != Gdiplus::Ok) {
        err << L"uctool thumbnail: GDI+ did not start\n";
        return 1;
    }
    int failed = 0;
    for (const std::wstring& file : args) {
        const uc::UniqueHBitmap thumb(CThumbNailer::GetThumbnail(file, SIZE{w, h}));
        const std::wstring name = uc::FromFsPath(uc::ToFsPath(file).filename()) + L".thumb.png";
        const std::wstring path = uc::FromFsPath(uc::ToFsPath(target) / uc::ToFsPath(name));
        bool saved = false;
        BITMAP info{};
        if (thumb && ::GetObjectW(thumb.get(), sizeof info, &info)) {
            Gdiplus::Bitmap picture(thumb.get(), nullptr);
            saved = picture.GetLastStatus() == Gdiplus::Ok && uc::SaveImage(picture, path, L"image/png");
        }
        if (saved) {
            out << file << L" -> " << path << uc::Format(L" (%dx%d)\n", static_cast<int>(info.bmWidth),
                                                         static_cast<int>(std::abs(info.bmHeight)));
        } else {
            ++failed;
            err << file << (thumb ? L": cannot write \"" + path + L"\"\n" : std::wstring(L": no thumbnail\n"));
        }
    }
    Gdiplus::GdiplusShutdown(token);
    return failed == 0 ? 0 : 1;
#else
    (void)out;
    err << L"uctool thumbnail: thumbnails come from the Windows shell and GDI+; run the Windows build\n";
    return 1;
#endif
}

const bool registered = Register({L"thumbnail", L"thumbnails of files as the review windows show them (PNG)", kUsage, Run});

}  // namespace
}  // namespace uctool::thumbnail
