// The display tests' profile sandbox and simulated-monitor helpers.
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

std::vector<std::shared_ptr<dsim::SimulatedMonitor>> MakeMonitors(const std::string& text) {
    dsim::SimulationConfig config;
    std::string error;
    EXPECT_TRUE(dsim::ParseSimulationConfig(text, config, error)) << error;
    std::vector<std::shared_ptr<dsim::SimulatedMonitor>> monitors;
    for (const dsim::MonitorConfig& m : config.monitors) monitors.push_back(std::make_shared<dsim::SimulatedMonitor>(m));
    return monitors;
}

std::unique_ptr<I2cBusDriver> MakeBusDriver(const std::vector<std::shared_ptr<dsim::SimulatedMonitor>>& monitors,
                                            uc::Clock& clock) {
    auto driver = std::make_unique<I2cBusDriver>(std::make_unique<dsim::SimulatedI2cProvider>(monitors));
    driver->SetClock(clock);
    return driver;
}

Lines Log(const dsim::SimulatedMonitor& monitor) {
    Lines lines;
    for (const dsim::Transfer& t : monitor.Transfers()) lines.push_back(dsim::FormatTransfer(t));
    return lines;
}

std::string Vcp(I2CDriver& driver, unsigned device, std::uint8_t code) {
    std::uint8_t maximum = 0xA5, current = 0x5A;
    if (driver.GetVCP(device, code, maximum, current)) return std::to_string(current) + "/" + std::to_string(maximum);
    EXPECT_EQ(maximum * 256 + current, 0xA55A) << "a refused reply leaves the outputs alone";
    return "refused";
}

void ExpectExactExchanges(DdcBusDriver& driver, PauseRecorder& clock, const std::function<Lines()>& transfers) {
    clock.Clear();
    ASSERT_TRUE(driver.SetVCP(0, 0x10, 50));
    ASSERT_TRUE(driver.SaveCurrentSettings(0));
    EXPECT_EQ(Vcp(driver, 0, 0x12), "70/100");
    // Ten bytes are read; the checksum byte stays on the display's side.
    EXPECT_EQ(transfers(), (Lines{"W 6E 51 84 03 10 00 32 9A", "W 6E 51 81 0C B2", "W 6E 51 82 01 12 AE",
                                  "R 6F 6E 88 02 00 12 00 00 64 00 46"}));
    EXPECT_EQ(clock.Taken(), (Pauses{50, 200, 40, 30}));
    std::uint8_t packet[10];
    driver.GetLastPacket(packet);
    EXPECT_EQ(Bytes(packet, packet + 10), (Bytes{0x6E, 0x88, 0x02, 0x00, 0x12, 0x00, 0x00, 0x64, 0x00, 0x46}));
    std::string name;
    EXPECT_FALSE(driver.GetName(1, name));
    EXPECT_FALSE(driver.SetVCP(1, 0x10, 1));
}

}  // namespace uc::test
