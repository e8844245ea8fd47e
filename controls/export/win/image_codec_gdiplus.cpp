// The export's image codec on Windows: GDI+ decoders and encoders, black zones written straight into the pixels.
#include <windows.h>

#include <cstdint>
#include <cstring>
#include <memory>

#include "export/export_files.h"
#include "export/image_codec.h"
#include "platform/text.h"
#include "platform/win/gdiplus_encoders.h"

using namespace Gdiplus;

namespace uc::exporting {
namespace {

std::wstring StatusText(Status status) { return Format(L"GDI+ status %d", static_cast<int>(status)); }

// Loads `path`; null with `error` when GDI+ cannot read it.
std::unique_ptr<Bitmap> Load(const std::wstring& path, std::wstring& error) {
    if (!FileIsPresent(path)) {
        error = L"the file is missing";
        return nullptr;
    }
    auto bitmap = std::make_unique<Bitmap>(path.c_str());
    const Status status = bitmap->GetLastStatus();
    if (status != Ok || bitmap->GetWidth() == 0 || bitmap->GetHeight() == 0) {
        error = L"GDI+ cannot read it (" + StatusText(status) + L")";
        return nullptr;
    }
    return bitmap;
}

// Saves and removes whatever a failed save left behind.
bool Save(Image& image, const std::wstring& target, const CLSID& encoder, std::wstring& error) {
    const Status status = image.Save(target.c_str(), &encoder, nullptr);
    if (status == Ok) return true;
    error = L"saving failed (" + StatusText(status) + L")";
    DeleteFileAt(target);
    return false;
}

class GdiplusImageCodec final : public IImageCodec {
public:
    bool Reencode(const std::wstring& source, const std::wstring& target, const wchar_t* mimeType,
                  std::wstring& error) override {
        GdiplusSession session;
        if (!session.ok()) return Fail(error, L"GDI+ cannot start");
        CLSID encoder;
        if (GetEncoderClsid(mimeType, &encoder) < 0) return Fail(error, std::wstring(L"no encoder for ") + mimeType);
        std::unique_ptr<Bitmap> bitmap = Load(source, error);
        return bitmap && Save(*bitmap, target, encoder, error);
    }

    bool Blackout(const std::wstring& source, const std::wstring& target, const ZonesForSize& zones,
                  std::wstring& error) override {
        GdiplusSession session;
        if (!session.ok()) return Fail(error, L"GDI+ cannot start");
        std::unique_ptr<Bitmap> loaded = Load(source, error);
        if (!loaded) return false;
        GUID format;
        CLSID encoder;
        if (loaded->GetRawFormat(&format) != Ok || !GetEncoderForFormat(format, &encoder))
            return Fail(error, L"GDI+ has no encoder for the image's own format");

        const INT width = static_cast<INT>(loaded->GetWidth());
        const INT height = static_cast<INT>(loaded->GetHeight());
        // Indexed images are written back in 32 bits (their encoder picks a palette); others keep their format.
        const PixelFormat sourceFormat = loaded->GetPixelFormat();
        const PixelFormat outFormat = IsIndexedPixelFormat(sourceFormat) || sourceFormat == PixelFormatUndefined
                                          ? PixelFormat32bppARGB
                                          : sourceFormat;
        Bitmap out(width, height, outFormat);
        if (out.GetLastStatus() != Ok) return Fail(error, L"no memory for a " + Format(L"%d x %d", width, height) + L" copy");
        out.SetResolution(loaded->GetHorizontalResolution(), loaded->GetVerticalResolution());

        // Pixels are copied one to one (no scaling by resolution), then the zones are filled opaque black.
        const Rect all(0, 0, width, height);
        BitmapData in{}, written{};
        if (loaded->LockBits(&all, ImageLockModeRead, PixelFormat32bppARGB, &in) != Ok)
            return Fail(error, L"the pixels cannot be read");
        if (out.LockBits(&all, ImageLockModeWrite, PixelFormat32bppARGB, &written) != Ok) {
            loaded->UnlockBits(&in);
            return Fail(error, L"the copy's pixels cannot be written");
        }
        for (INT y = 0; y < height; ++y)
            std::memcpy(static_cast<std::uint8_t*>(written.Scan0) + std::ptrdiff_t(y) * written.Stride,
                        static_cast<const std::uint8_t*>(in.Scan0) + std::ptrdiff_t(y) * in.Stride,
                        std::size_t(width) * 4);
        for (const ZoneRect& zone : zones(width, height))
            for (INT y = zone.y; y < zone.y + zone.height; ++y) {
                auto* row = reinterpret_cast<std::uint32_t*>(static_cast<std::uint8_t*>(written.Scan0) +
                                                             std::ptrdiff_t(y) * written.Stride);
                for (INT x = zone.x; x < zone.x + zone.width; ++x) row[x] = 0xFF000000u;
            }
        out.UnlockBits(&written);
        loaded->UnlockBits(&in);
        loaded.reset();  // GDI+ keeps the source file open while the bitmap lives
        return Save(out, target, encoder, error);
    }

private:
    static bool Fail(std::wstring& error, const std::wstring& why) {
        error = why;
        return false;
    }
};

}  // namespace

std::shared_ptr<IImageCodec> PlatformImageCodec() { return std::make_shared<GdiplusImageCodec>(); }

void PrimaryScreenSize(int& width, int& height) {
    width = ::GetSystemMetrics(SM_CXSCREEN);
    height = ::GetSystemMetrics(SM_CYSCREEN);
    if (width <= 0 || height <= 0) {
        width = 800;
        height = 600;
    }
}

}  // namespace uc::exporting
