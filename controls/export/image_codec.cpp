// The export's image format table.
#include "export/image_codec.h"

namespace uc::exporting {

const ImageFormat* FormatForCode(int code) {
    static const ImageFormat formats[] = {
        {1, L"jpg", L".jpg", L"image/jpeg"},
        {2, L"bmp", L".bmp", L"image/bmp"},
        {3, L"gif", L".gif", L"image/gif"},
        {4, L"dcm", L".dcm", nullptr},
    };
    return code >= 1 && code <= 4 ? &formats[code - 1] : nullptr;
}

}  // namespace uc::exporting
