// The export's image codec on Windows: GDI+ decoders and encoders, black zones written straight into the pixels.
#include <windows.h>

#include <cstdint>
#include <cstring>
#include <algorithm>
#include <memory>
#include <vector>

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

// Saves, then reads the file back: an encoder that reports success but writes an unreadable or wrongly sized
// file (Wine's GIF encoder given 32-bit pixels writes only a header) must not pass for a good export.
// Whatever a failed save left behind is removed.
bool Save(Image& image, const std::wstring& target, const CLSID& encoder, std::wstring& error) {
    const Status status = image.Save(target.c_str(), &encoder, nullptr);
    if (status != Ok) {
        error = L"saving failed (" + StatusText(status) + L")";
    } else {
        Bitmap written(target.c_str());
        if (written.GetLastStatus() == Ok && written.GetWidth() == image.GetWidth() &&
            written.GetHeight() == image.GetHeight())
            return true;
        error = L"the encoder wrote a file that cannot be read back";
    }
    DeleteFileAt(target);
    return false;
}

// The 6 x 6 x 6 colour cube (steps of 0x33) as an 8-bit palette: what truecolour images are reduced to for
// GIF. Black and white and the web-safe colours come through exactly.
std::vector<std::uint8_t> CubePalette() {
    std::vector<std::uint8_t> buffer(sizeof(ColorPalette) + 255 * sizeof(ARGB));
    auto* palette = reinterpret_cast<ColorPalette*>(buffer.data());
    palette->Flags = 0;
    palette->Count = 216;
    for (UINT i = 0; i < 216; ++i)
        palette->Entries[i] = Color::MakeARGB(255, BYTE(i / 36 * 0x33), BYTE(i / 6 % 6 * 0x33), BYTE(i % 6 * 0x33));
    return buffer;
}

// An 8-bit indexed copy of `source` on the colour cube (nearest step per channel); null on failure.
std::unique_ptr<Bitmap> ToCube(Bitmap& source) {
    const INT width = static_cast<INT>(source.GetWidth()), height = static_cast<INT>(source.GetHeight());
    auto out = std::make_unique<Bitmap>(width, height, PixelFormat8bppIndexed);
    std::vector<std::uint8_t> palette = CubePalette();
    if (out->GetLastStatus() != Ok || out->SetPalette(reinterpret_cast<ColorPalette*>(palette.data())) != Ok)
        return nullptr;
    out->SetResolution(source.GetHorizontalResolution(), source.GetVerticalResolution());
    const Rect all(0, 0, width, height);
    BitmapData in{}, indices{};
    if (source.LockBits(&all, ImageLockModeRead, PixelFormat32bppARGB, &in) != Ok) return nullptr;
    if (out->LockBits(&all, ImageLockModeWrite, PixelFormat8bppIndexed, &indices) != Ok) {
        source.UnlockBits(&in);
        return nullptr;
    }
    const auto step = [](std::uint32_t channel) { return (channel + 0x19) / 0x33; };
    for (INT y = 0; y < height; ++y) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(static_cast<const std::uint8_t*>(in.Scan0) +
                                                                 std::ptrdiff_t(y) * in.Stride);
        auto* dst = static_cast<std::uint8_t*>(indices.Scan0) + std::ptrdiff_t(y) * indices.Stride;
        for (INT x = 0; x < width; ++x) {
            const std::uint32_t p = row[x];
            dst[x] = static_cast<std::uint8_t>(step(p >> 16 & 0xFF) * 36 + step(p >> 8 & 0xFF) * 6 + step(p & 0xFF));
        }
    }
    out->UnlockBits(&indices);
    source.UnlockBits(&in);
    return out;
}

bool IsGif(const CLSID& encoder) {
    CLSID gif;
    return GetEncoderClsid(L"image/gif", &gif) >= 0 && IsEqualGUID(gif, encoder);
}

// Saves `image`; GIF is written from 8-bit indices (reduced to the colour cube when the image has more colours).
bool SaveImage(Bitmap& image, const std::wstring& target, const CLSID& encoder, std::wstring& error) {
    if (!IsGif(encoder) || image.GetPixelFormat() == PixelFormat8bppIndexed) return Save(image, target, encoder, error);
    std::unique_ptr<Bitmap> indexed = ToCube(image);
    if (!indexed) {
        error = L"the image cannot be reduced to 256 colours";
        return false;
    }
    return Save(*indexed, target, encoder, error);
}

// Index of opaque black in an 8-bit bitmap's palette, added when there is room, else the darkest entry.
int BlackIndex(Bitmap& bitmap) {
    const INT size = bitmap.GetPaletteSize();
    if (size <= 0) return -1;
    std::vector<std::uint8_t> buffer(std::max<std::size_t>(size, sizeof(ColorPalette) + 255 * sizeof(ARGB)));
    auto* palette = reinterpret_cast<ColorPalette*>(buffer.data());
    if (bitmap.GetPalette(palette, size) != Ok) return -1;
    int darkest = 0, darkestSum = 1 << 30;
    for (UINT i = 0; i < palette->Count; ++i) {
        const ARGB c = palette->Entries[i];
        if (c == 0xFF000000u) return static_cast<int>(i);
        const int sum = int(c >> 16 & 0xFF) + int(c >> 8 & 0xFF) + int(c & 0xFF) + (c >> 24 != 0xFF ? 1000 : 0);
        if (sum < darkestSum) {
            darkestSum = sum;
            darkest = static_cast<int>(i);
        }
    }
    if (palette->Count < 256) {
        palette->Entries[palette->Count++] = 0xFF000000u;
        if (bitmap.SetPalette(palette) == Ok) return static_cast<int>(palette->Count - 1);
    }
    return darkest;
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
        return bitmap && SaveImage(*bitmap, target, encoder, error);
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
        const PixelFormat sourceFormat = loaded->GetPixelFormat();
        if (sourceFormat == PixelFormat8bppIndexed) return BlackoutIndexed(*loaded, target, encoder, zones, error);
        // Other indexed images are written back in 32 bits; the rest keep their pixel format.
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
        return SaveImage(out, target, encoder, error);
    }

    // 8-bit images (GIF) keep their palette and indices; the zones take the palette's black.
    static bool BlackoutIndexed(Bitmap& loaded, const std::wstring& target, const CLSID& encoder,
                                const ZonesForSize& zones, std::wstring& error) {
        const INT width = static_cast<INT>(loaded.GetWidth()), height = static_cast<INT>(loaded.GetHeight());
        const Rect all(0, 0, width, height);
        std::unique_ptr<Bitmap> out(loaded.Clone(all, PixelFormat8bppIndexed));
        if (!out || out->GetLastStatus() != Ok) return Fail(error, L"the image cannot be copied");
        const int black = BlackIndex(*out);
        if (black < 0) return Fail(error, L"the image's palette cannot be read");
        BitmapData indices{};
        if (out->LockBits(&all, ImageLockModeRead | ImageLockModeWrite, PixelFormat8bppIndexed, &indices) != Ok)
            return Fail(error, L"the pixels cannot be written");
        for (const ZoneRect& zone : zones(width, height))
            for (INT y = zone.y; y < zone.y + zone.height; ++y)
                std::memset(static_cast<std::uint8_t*>(indices.Scan0) + std::ptrdiff_t(y) * indices.Stride + zone.x,
                            black, std::size_t(zone.width));
        out->UnlockBits(&indices);
        return Save(*out, target, encoder, error);
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
