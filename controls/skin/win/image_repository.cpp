// ImageRepository: loading, colour-key transparency for Windows bitmaps, and the path-keyed cache.
#include "skin/win/image_repository.h"

#include <cwctype>
#include <map>
#include <memory>

#include "platform/win/handles.h"

using namespace Gdiplus;

namespace {

std::map<std::wstring, std::unique_ptr<Bitmap>>& Images() {
    static std::map<std::wstring, std::unique_ptr<Bitmap>> images;
    return images;
}

// The text from the last dot of the file name, in lower case; empty when the name has no dot.
std::wstring LowerExtension(const std::wstring& path) {
    const std::size_t slash = path.find_last_of(L"\\/");
    const std::size_t dot = path.find_last_of(L'.');
    if (dot == std::wstring::npos || (slash != std::wstring::npos && dot < slash)) return L"";
    std::wstring ext = path.substr(dot);
    for (wchar_t& c : ext) c = static_cast<wchar_t>(std::towlower(c));
    return ext;
}

std::unique_ptr<Bitmap> LoadIconBitmap(const std::wstring& path) {
    uc::UniqueHIcon icon(static_cast<HICON>(::LoadImageW(nullptr, path.c_str(), IMAGE_ICON, 32, 32, LR_LOADFROMFILE)));
    if (!icon) return nullptr;
    return std::unique_ptr<Bitmap>(Bitmap::FromHICON(icon.get()));  // GDI+ copies the pixels
}

// Redraws `loaded` onto a 32-bit ARGB bitmap with `key` made transparent; null when GDI+ cannot copy it.
std::unique_ptr<Bitmap> KeyOut(std::unique_ptr<Bitmap> loaded, unsigned long key) {
    const INT w = static_cast<INT>(loaded->GetWidth());
    const INT h = static_cast<INT>(loaded->GetHeight());
    auto canvas = std::make_unique<Bitmap>(w, h, PixelFormat32bppARGB);
    {
        Graphics g(canvas.get());
        ImageAttributes attributes;
        attributes.SetColorKey(Color(key), Color(key), ColorAdjustTypeDefault);
        g.DrawImage(loaded.get(), Rect(0, 0, w, h), 0, 0, w, h, UnitPixel, &attributes);
    }
    loaded.reset();
    return std::unique_ptr<Bitmap>(canvas->Clone(Rect(0, 0, w, h), canvas->GetPixelFormat()));
}

}  // namespace

Bitmap* ImageRepository::GetImage(const std::wstring& path, unsigned long transparentColour) {
    if (path.empty()) return nullptr;
    auto& images = Images();
    if (auto it = images.find(path); it != images.end()) return it->second.get();

    const std::wstring ext = LowerExtension(path);
    std::unique_ptr<Bitmap> bitmap;
    if (ext == L".ico")
        bitmap = LoadIconBitmap(path);
    else
        bitmap = std::make_unique<Bitmap>(path.c_str(), FALSE);
    // A file GDI+ could not read keeps its error status; there is nothing to key out of it.
    if (bitmap && ext == L".bmp" && transparentColour != kNoTransparency && bitmap->GetLastStatus() == Ok)
        bitmap = KeyOut(std::move(bitmap), transparentColour);

    Bitmap* result = bitmap.get();
    images.emplace(path, std::move(bitmap));
    return result;
}

Bitmap* ImageRepository::GetImage(const wchar_t* path, unsigned long transparentColour) {
    return path ? GetImage(std::wstring(path), transparentColour) : nullptr;
}

void ImageRepository::Destroy() { Images().clear(); }

std::size_t ImageRepository::CachedCount() { return Images().size(); }
