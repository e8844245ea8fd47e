// The DDC/CI monitor registry: driver order, Auto EcoView switching, the gamma-ramp fall-back, per-device values.
#include "display/ddc_control.h"

#include <cstring>

#include "platform/logger.h"
#include "platform/paths.h"

namespace {
constexpr std::uint8_t kEcoViewPage = 0xE1;
constexpr std::uint8_t kEcoViewPageOn = 0xE0;
constexpr std::uint8_t kEcoViewCode = 0xE2;

DDCDriverFactory& Factory() {
    static DDCDriverFactory factory = DDCDriverFactory::PlatformDefault();
    return factory;
}
uc::Clock*& PauseClock() {
    static uc::Clock* clock = nullptr;
    return clock;
}
uc::display::StrictMode& Strict() {
    static uc::display::StrictMode mode;
    return mode;
}
}  // namespace

std::vector<DDCControl*> DDCControl::m_devices;
DdcBusDriver* DDCControl::m_nvidiaDriver = nullptr;
DdcBusDriver* DDCControl::m_atiDriver = nullptr;
I2CDriver* DDCControl::m_winDriver = nullptr;
unsigned DDCControl::s_generation = 0;

DDCControl::~DDCControl() = default;

std::uint8_t DDCControl::AddressFromType(int type) {
    static const std::uint8_t codes[] = {0x10, 0x12, 0x14, 0x16, 0x18, 0x1A};
    return type >= 0 && type < 6 ? codes[type] : 0;
}

bool DDCControl::IsGammaRamp() const { return Alive() && m_driver == m_winDriver; }

bool DDCControl::EcoView(bool set, std::uint8_t& maximum, std::uint8_t& current) {
    if (!m_driver->SetVCP(m_index, kEcoViewPage, kEcoViewPageOn)) return false;
    // A failed middle step leaves the page selected: the next access selects it again anyway.
    const bool ok = set ? m_driver->SetVCP(m_index, kEcoViewCode, current)
                        : m_driver->GetVCP(m_index, kEcoViewCode, maximum, current);
    if (!ok) return false;
    return m_driver->SetVCP(m_index, kEcoViewPage, 0x00);
}

bool DDCControl::GetValue(DDCValueType type, std::uint8_t& maximum, std::uint8_t& current) {
    if (!Alive()) return false;
    if (type == AutoEcoView) return EcoView(false, maximum, current);
    const std::uint8_t code = AddressFromType(type);
    return code != 0 && m_driver->GetVCP(m_index, code, maximum, current);
}

bool DDCControl::SetValue(DDCValueType type, std::uint8_t value) {
    if (!Alive()) return false;
    if (type == AutoEcoView) {
        std::uint8_t unused = 0;
        return EcoView(true, unused, value);
    }
    const std::uint8_t code = AddressFromType(type);
    return code != 0 && m_driver->SetVCP(m_index, code, value);
}

bool DDCControl::GetName(std::string& name) { return Alive() && m_driver->GetName(m_index, name); }

bool DDCControl::SaveValues() { return Alive() && m_driver->SaveCurrentSettings(m_index); }

void DDCControl::ClearDevices() {
    for (DDCControl* device : m_devices) delete device;
    m_devices.clear();
}

void DDCControl::AddDevices(DdcBusDriver*& driver, const std::function<std::unique_ptr<DdcBusDriver>()>& make) {
    if (!driver && make) {
        driver = make().release();
        if (driver) {
            driver->SetStrictMode(Strict());
            if (PauseClock()) driver->SetClock(*PauseClock());
        }
    }
    if (!driver) return;
    const unsigned count = driver->Enumerate();
    for (unsigned i = 0; i < count; ++i) m_devices.push_back(new DDCControl(driver, i));
}

void DDCControl::LocateDevices(bool useGammaFallback) {
    ClearDevices();
    AddDevices(m_nvidiaDriver, Factory().nvidia);
    AddDevices(m_atiDriver, Factory().ati);
    // The console keeps the picture steady: the maker's automatic brightness would fight the user's setting.
    if (!utilsExam::DevMode()) {
        for (DDCControl* device : m_devices) {
            if (!device->SetValue(AutoEcoView, 0)) UC_LOG(1)(L"Could not set Auto EcoView status to off");
            std::uint8_t maximum = 0, current = 0;
            if (!device->GetValue(AutoEcoView, maximum, current)) {
                UC_LOG(1)(L"Could not read back Auto EcoView status");
            } else if (current != 0) {
                UC_LOG(1)(L"Auto EcoView not disabled");
            }
        }
    }
    if (!useGammaFallback || !m_devices.empty()) return;
    UC_LOG(2)(L"Could not locate DDC/CI devices, using gamma ramps");
    if (!m_winDriver && Factory().gamma) m_winDriver = Factory().gamma().release();
    if (m_winDriver) m_devices.push_back(new DDCControl(m_winDriver, 0));
}

void DDCControl::Destroy() {
    ClearDevices();
    ++s_generation;
    delete m_nvidiaDriver;
    m_nvidiaDriver = nullptr;
    delete m_atiDriver;
    m_atiDriver = nullptr;
    delete m_winDriver;
    m_winDriver = nullptr;
}

unsigned DDCControl::GetNumDevices() { return static_cast<unsigned>(m_devices.size()); }

DDCControl* DDCControl::GetDevice(unsigned index) { return index < m_devices.size() ? m_devices[index] : nullptr; }

void DDCControl::GetLastPacket(unsigned char* ati, unsigned char* nvidia) {
    if (m_atiDriver && ati) m_atiDriver->GetLastPacket(ati);
    if (m_nvidiaDriver && nvidia) m_nvidiaDriver->GetLastPacket(nvidia);
}

void DDCControl::IsInitialized(bool& ati, bool& nvidia) {
    ati = m_atiDriver && m_atiDriver->IsInitialized();
    nvidia = m_nvidiaDriver && m_nvidiaDriver->IsInitialized();
}

void DDCControl::SetStrictMode(const uc::display::StrictMode& mode) {
    Strict() = mode;
    if (m_nvidiaDriver) m_nvidiaDriver->SetStrictMode(mode);
    if (m_atiDriver) m_atiDriver->SetStrictMode(mode);
}

void DDCControl::SetClock(uc::Clock* clock) {
    PauseClock() = clock;
    uc::Clock& use = clock ? *clock : uc::Clock::System();
    if (m_nvidiaDriver) m_nvidiaDriver->SetClock(use);
    if (m_atiDriver) m_atiDriver->SetClock(use);
}

void DDCControl::SetDriverFactory(DDCDriverFactory factory) { Factory() = std::move(factory); }
