// The screen's gamma ramp through GDI, on the device context of the whole screen.
#include "display/win/win_i2c_driver.h"

#include <windows.h>

#include "platform/unique_handle.h"

namespace uc::display {

namespace {
// GetDC(NULL) is paired with ReleaseDC(NULL, ...), not DeleteDC.
struct ScreenDcTraits {
    using Type = HDC;
    static HDC Invalid() { return nullptr; }
    static void Close(HDC dc) { ::ReleaseDC(nullptr, dc); }
};
using ScreenDc = UniqueHandle<ScreenDcTraits>;

class ScreenOutput final : public GammaRampOutput {
public:
    bool Read(GammaRamp& ramp) override {
        ScreenDc dc(::GetDC(nullptr));
        return dc && ::GetDeviceGammaRamp(dc.get(), &ramp) != FALSE;
    }
    bool Write(const GammaRamp& ramp) override {
        ScreenDc dc(::GetDC(nullptr));
        GammaRamp copy = ramp;  // the API takes a non-const pointer
        return dc && ::SetDeviceGammaRamp(dc.get(), &copy) != FALSE;
    }
};
}  // namespace

std::unique_ptr<GammaRampOutput> ScreenGammaRampOutput() { return std::make_unique<ScreenOutput>(); }

}  // namespace uc::display
