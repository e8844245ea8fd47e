// Natively there is no image encoder: conversions and blacking-out fail and say so; the screen size is configured.
#include <cstdlib>

#include "export/image_codec.h"
#include "platform/text.h"

namespace uc::exporting {
namespace {
class NoImageCodec final : public IImageCodec {
public:
    bool Reencode(const std::wstring&, const std::wstring&, const wchar_t*, std::wstring& error) override {
        error = L"no image encoder on this platform";
        return false;
    }
    bool Blackout(const std::wstring&, const std::wstring&, const ZonesForSize&, std::wstring& error) override {
        error = L"no image encoder on this platform";
        return false;
    }
};
}  // namespace

std::shared_ptr<IImageCodec> PlatformImageCodec() { return std::make_shared<NoImageCodec>(); }

void PrimaryScreenSize(int& width, int& height) {
    width = 800;
    height = 600;
    if (const char* env = std::getenv("UC_SCREEN_SIZE")) {
        const std::wstring text = FromUtf8(env);
        const std::size_t x = text.find(L'x');
        int w = 0, h = 0;
        if (x != std::wstring::npos && ParseInt(text.substr(0, x), w) && ParseInt(text.substr(x + 1), h) && w > 0 &&
            h > 0) {
            width = w;
            height = h;
        }
    }
}

}  // namespace uc::exporting
