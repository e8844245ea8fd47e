// What the file queue needs from an image library: re-encoding to another format and blacking out rectangles.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "export/privacy_layout.h"
#include "platform/export.h"

namespace uc::exporting {

// Image formats of the export by their code: 1 JPEG, 2 BMP, 3 GIF, 4 DICOM; other codes mean no conversion.
struct ImageFormat {
    int code;
    const wchar_t* extension;        // compared with a file's lower-case extension
    const wchar_t* targetExtension;  // given to the converted file
    const wchar_t* mimeType;         // encoder; null for DICOM (written by the store callback)
};
// The format of a code, or null for codes that convert nothing.
UC_API const ImageFormat* FormatForCode(int code);

class UC_API IImageCodec {
public:
    virtual ~IImageCodec() = default;
    // Reads `source` and writes it to `target` with the encoder of `mimeType`. On failure nothing is left at
    // `target` and `error` says why.
    virtual bool Reencode(const std::wstring& source, const std::wstring& target, const wchar_t* mimeType,
                          std::wstring& error) = 0;
    // Reads `source`, asks `zones` for the rectangles to fill for its size, fills them opaque black and writes
    // the result to `target` with the encoder of the source's own format. On failure nothing is left at `target`.
    using ZonesForSize = std::function<std::vector<ZoneRect>(int width, int height)>;
    virtual bool Blackout(const std::wstring& source, const std::wstring& target, const ZonesForSize& zones,
                          std::wstring& error) = 0;
};

// The platform's codec: GDI+ on Windows. Elsewhere there is no image encoder; its operations fail and say so.
UC_API std::shared_ptr<IImageCodec> PlatformImageCodec();

// Size of the primary screen (what full-screen layouts are centred on): GetSystemMetrics on Windows; elsewhere
// 800 x 600 unless $UC_SCREEN_SIZE gives "WIDTHxHEIGHT".
UC_API void PrimaryScreenSize(int& width, int& height);

}  // namespace uc::exporting
