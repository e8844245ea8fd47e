// The ADL back-end: adapter and display walk, DDC block-access transfers, display names.
#include "display/win/ati_i2c_driver.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <tuple>

namespace adl = uc::display::adl;
namespace ddc = uc::display::ddc;

namespace {
// ADL hands its arrays over in memory from this callback; the driver releases them with free().
void* UC_VENDOR_STDCALL AdlAlloc(int size) { return size > 0 ? std::malloc(static_cast<std::size_t>(size)) : nullptr; }

// More adapter records than any machine has; a library reporting more is not believed.
constexpr int kMaxAdapters = 1024;
constexpr int kMaxDisplays = 1024;

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
using DisplayArray = std::unique_ptr<adl::DisplayInfo, FreeDeleter>;

// The display records of one adapter (count 0 and null when ADL has none or fails).
DisplayArray Displays(adl::DisplayInfoGetFn get, int adapter, int& count) {
    adl::DisplayInfo* info = nullptr;
    count = 0;
    const int result = get(adapter, &count, &info, 0);
    DisplayArray owned(info);
    if (result != adl::Ok || !info || count < 0 || count > kMaxDisplays) count = 0;
    return owned;
}
}  // namespace

ATII2CDriver::ATII2CDriver() : ATII2CDriver(adl::LibraryName, adl::FallbackLibraryName) {}

ATII2CDriver::ATII2CDriver(const std::wstring& library, const std::wstring& fallbackLibrary) {
    if (!m_library.Load(library)) m_library.Load(fallbackLibrary);
    if (!m_library.IsLoaded()) return;
    m_library.Resolve("ADL_Main_Control_Create", m_create);
    m_library.Resolve("ADL_Main_Control_Destroy", m_destroy);
    m_library.Resolve("ADL_Adapter_NumberOfAdapters_Get", m_adapterCount);
    m_library.Resolve("ADL_Adapter_AdapterInfo_Get", m_adapterInfo);
    m_library.Resolve("ADL_Display_DisplayInfo_Get", m_displayInfo);
    m_library.Resolve("ADL_Display_DDCBlockAccess_Get", m_blockAccess);
    if (m_create) m_create(AdlAlloc, 1);  // 1: connected adapters only
}

ATII2CDriver::~ATII2CDriver() {
    if (m_destroy) m_destroy();
}

unsigned ATII2CDriver::Enumerate() {
    m_devices.clear();
    if (!m_adapterCount || !m_adapterInfo || !m_displayInfo) return 0;
    int count = 0;
    if (m_adapterCount(&count) != adl::Ok || count < 1 || count > kMaxAdapters) return 0;
    std::vector<adl::AdapterInfo> adapters(static_cast<std::size_t>(count));
    std::memset(adapters.data(), 0, adapters.size() * sizeof(adl::AdapterInfo));
    if (m_adapterInfo(adapters.data(), static_cast<int>(adapters.size() * sizeof(adl::AdapterInfo))) != adl::Ok) return 0;
    // ADL lists one record per adapter index; several can stand for one physical adapter.
    std::set<std::tuple<int, int, int>> seen;
    for (const adl::AdapterInfo& adapter : adapters) {
        if (!seen.insert({adapter.iBusNumber, adapter.iDeviceNumber, adapter.iFunctionNumber}).second) continue;
        int displayCount = 0;
        const DisplayArray displays = Displays(m_displayInfo, adapter.iAdapterIndex, displayCount);
        for (int i = 0; i < displayCount; ++i) {
            const adl::DisplayInfo& display = displays.get()[i];
            const int wanted = adl::DisplayConnected | adl::DisplayMapped;
            if ((display.iDisplayInfoValue & wanted) != wanted) continue;
            m_devices.emplace_back(adapter.iAdapterIndex, display.displayID.iDisplayLogicalIndex);
            if (!Probe(DeviceCount() - 1)) m_devices.pop_back();
        }
    }
    return DeviceCount();
}

bool ATII2CDriver::GetName(unsigned device, std::string& name) {
    if (device >= m_devices.size() || !m_displayInfo) return false;
    const auto [adapter, logical] = m_devices[device];
    int count = 0;
    const DisplayArray displays = Displays(m_displayInfo, adapter, count);
    if (logical < 0 || logical >= count) return false;
    const char* text = displays.get()[logical].strDisplayName;
    name.assign(text, strnlen(text, adl::MaxPath));
    return true;
}

bool ATII2CDriver::WriteMessage(unsigned device, const ddc::Message& message) {
    if (!m_blockAccess) return false;
    char send[sizeof message.bytes];
    std::memcpy(send, message.bytes, message.size);
    int receiveLength = 0;
    return m_blockAccess(m_devices[device].first, m_devices[device].second, 0, 0, message.size, send, &receiveLength,
                         nullptr) == adl::Ok;
}

bool ATII2CDriver::ReadReply(unsigned device, std::uint8_t* buffer, std::size_t size) {
    if (!m_blockAccess) return false;
    char send[1] = {static_cast<char>(ddc::ReadAddress)};
    int receiveLength = static_cast<int>(size);
    return m_blockAccess(m_devices[device].first, m_devices[device].second, 0, 0, 1, send, &receiveLength,
                         reinterpret_cast<char*>(buffer)) == adl::Ok;
}
