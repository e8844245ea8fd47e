// The display tests' profile sandbox.
#include "display_test_support.h"

#include <atomic>

#ifdef _WIN32
#include <windows.h>
#endif

namespace uc::test {

bool ScreenTakesGammaRamps() {
#ifdef _WIN32
    HDC dc = ::GetDC(nullptr);
    WORD ramp[3][256];
    const bool ok = dc && ::GetDeviceGammaRamp(dc, ramp) && ::SetDeviceGammaRamp(dc, ramp);
    if (dc) ::ReleaseDC(nullptr, dc);
    return ok;
#else
    return false;
#endif
}

DisplayProfileSandbox::DisplayProfileSandbox() : m_previous(GetProfileLocation()) {
#ifdef _WIN32
    static std::atomic<int> counter{0};
    m_location = L"Software\\utils_controls-test\\display-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
                 std::to_wstring(counter++);
#else
    m_location = m_dir.file(L"profile.ini");
#endif
    SetProfileLocation(m_location);
}

DisplayProfileSandbox::~DisplayProfileSandbox() {
    SetProfileLocation(m_previous);
#ifdef _WIN32
    ::RegDeleteTreeW(HKEY_CURRENT_USER, m_location.c_str());
#endif
}

}  // namespace uc::test
