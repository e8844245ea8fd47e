// A simulated "atiadlxx.dll": the ADL start-up, adapter and display queries and DDC block access.
#include <algorithm>
#include <cstring>
#include <map>
#include <tuple>

#include "display/ddc_protocol.h"
#include "display/simulator/win/sim_library.h"
#include "display/vendor_records.h"

namespace uc::display::sim {
SimLibrary& Library() {
    static SimLibrary library("amd");
    return library;
}
}  // namespace uc::display::sim

namespace {
namespace adl = uc::display::adl;
namespace ddc = uc::display::ddc;
using uc::display::sim::Library;
using uc::display::sim::MonitorConfig;
using uc::display::sim::SimulatedMonitor;

adl::MallocCallback g_malloc = nullptr;

struct Adapter {
    int index, bus, device, function;
};
struct Display {
    SimulatedMonitor* monitor;
    int adapter;  // the adapter record it hangs on
    int logical;
};

const Adapter* FindAdapter(const std::vector<Adapter>& adapters, int index);

// The adapter records and displays the configuration describes.
struct Layout {
    std::vector<Adapter> adapters;  // as configured, plus one per monitor that names none or an undeclared one
    std::vector<Display> displays;  // logical indices count per physical adapter unless given
};

Layout Build() {
    Layout l;
    for (const auto& a : Library().Config().adapters) l.adapters.push_back({a.index, a.bus, a.device, a.function});
    int next = 0;
    for (const auto& m : Library().Monitors()) {
        int index = m->Config().adapter;
        if (index < 0) {
            while (FindAdapter(l.adapters, next)) ++next;
            index = next;
        }
        if (!FindAdapter(l.adapters, index)) l.adapters.push_back({index, index + 1, 0, 0});
        l.displays.push_back({m.get(), index, -1});
    }
    std::map<std::tuple<int, int, int>, int> nextLogical;
    for (Display& d : l.displays) {
        const Adapter* a = FindAdapter(l.adapters, d.adapter);
        int& counter = nextLogical[{a->bus, a->device, a->function}];
        const int given = d.monitor->Config().display;
        d.logical = given >= 0 ? given : counter;
        counter = std::max(counter, d.logical + 1);
    }
    return l;
}

const Adapter* FindAdapter(const std::vector<Adapter>& adapters, int index) {
    for (const Adapter& a : adapters)
        if (a.index == index) return &a;
    return nullptr;
}

[[maybe_unused]] bool SamePhysical(const Adapter& a, const Adapter& b) {
    return a.bus == b.bus && a.device == b.device && a.function == b.function;
}

[[maybe_unused]] void Copy(char* to, const std::string& text) {
    std::strncpy(to, text.c_str(), adl::MaxPath - 1);
    to[adl::MaxPath - 1] = 0;
}

}  // namespace

#define ADL_EXPORT extern "C" __declspec(dllexport)

ADL_EXPORT int UC_VENDOR_CDECL ADL_Main_Control_Create(adl::MallocCallback callback, int) {
    if (!callback) return adl::ErrNullPointer;
    g_malloc = callback;
    return adl::Ok;
}

ADL_EXPORT int UC_VENDOR_CDECL ADL_Main_Control_Destroy() {
    g_malloc = nullptr;
    return adl::Ok;
}

ADL_EXPORT int UC_VENDOR_CDECL ADL_Adapter_NumberOfAdapters_Get(int* count) {
    if (!g_malloc) return adl::ErrNotInit;
    if (!count) return adl::ErrNullPointer;
    std::lock_guard<std::mutex> lock(Library().Mutex());
    *count = static_cast<int>(Build().adapters.size());
    return adl::Ok;
}

#ifndef UC_ADL_SIM_PARTIAL
// The partial build stands for an old or broken library that lacks the functions below.

ADL_EXPORT int UC_VENDOR_CDECL ADL_Adapter_AdapterInfo_Get(adl::AdapterInfo* info, int inputSize) {
    if (!g_malloc) return adl::ErrNotInit;
    if (!info) return adl::ErrNullPointer;
    std::lock_guard<std::mutex> lock(Library().Mutex());
    const std::vector<Adapter> adapters = Build().adapters;
    if (inputSize < static_cast<int>(adapters.size() * sizeof(adl::AdapterInfo))) return adl::ErrInvalidParam;
    for (std::size_t i = 0; i < adapters.size(); ++i) {
        adl::AdapterInfo& r = info[i];
        std::memset(&r, 0, sizeof r);
        r.iSize = sizeof r;
        r.iAdapterIndex = adapters[i].index;
        r.iBusNumber = adapters[i].bus;
        r.iDeviceNumber = adapters[i].device;
        r.iFunctionNumber = adapters[i].function;
        r.iVendorID = 1002;
        Copy(r.strAdapterName, "UC SIM Radeon");
        Copy(r.strDisplayName, "\\\\.\\DISPLAY" + std::to_string(i + 1));
        r.iPresent = 1;
        r.iExist = 1;
    }
    return adl::Ok;
}

ADL_EXPORT int UC_VENDOR_CDECL ADL_Display_DisplayInfo_Get(int adapterIndex, int* count, adl::DisplayInfo** info, int) {
    if (!g_malloc) return adl::ErrNotInit;
    if (!count || !info) return adl::ErrNullPointer;
    std::lock_guard<std::mutex> lock(Library().Mutex());
    const Layout layout = Build();
    const Adapter* adapter = FindAdapter(layout.adapters, adapterIndex);
    if (!adapter) return adl::ErrInvalidAdlIndex;
    // Every adapter record of a physical adapter reports that adapter's displays, ordered by logical index.
    std::vector<Display> mine;
    for (const Display& d : layout.displays) {
        if (SamePhysical(*FindAdapter(layout.adapters, d.adapter), *adapter)) mine.push_back(d);
    }
    std::sort(mine.begin(), mine.end(), [](const Display& a, const Display& b) { return a.logical < b.logical; });
    *count = static_cast<int>(mine.size());
    *info = nullptr;
    if (mine.empty()) return adl::Ok;
    auto* records = static_cast<adl::DisplayInfo*>(g_malloc(static_cast<int>(mine.size() * sizeof(adl::DisplayInfo))));
    if (!records) return adl::Err;
    for (std::size_t i = 0; i < mine.size(); ++i) {
        adl::DisplayInfo& r = records[i];
        std::memset(&r, 0, sizeof r);
        const MonitorConfig& c = mine[i].monitor->Config();
        r.displayID.iDisplayLogicalIndex = mine[i].logical;
        r.displayID.iDisplayPhysicalIndex = mine[i].logical;
        r.displayID.iDisplayLogicalAdapterIndex = mine[i].adapter;
        r.displayID.iDisplayPhysicalAdapterIndex = mine[i].adapter;
        Copy(r.strDisplayName, c.name);
        Copy(r.strDisplayManufacturerName, "UCS");
        r.iDisplayInfoMask = adl::DisplayConnected | adl::DisplayMapped;
        r.iDisplayInfoValue = (c.connected ? adl::DisplayConnected : 0) | (c.mapped ? adl::DisplayMapped : 0);
    }
    *info = records;
    return adl::Ok;
}

ADL_EXPORT int UC_VENDOR_CDECL ADL_Display_DDCBlockAccess_Get(int adapterIndex, int displayIndex, int, int, int sendLength,
                                                              char* send, int* receiveLength, char* receive) {
    if (!g_malloc) return adl::ErrNotInit;
    if (!send || sendLength < 1 || sendLength > 64) return adl::ErrInvalidParam;
    std::lock_guard<std::mutex> lock(Library().Mutex());
    const Layout layout = Build();
    const Adapter* adapter = FindAdapter(layout.adapters, adapterIndex);
    if (!adapter) return adl::ErrInvalidAdlIndex;
    SimulatedMonitor* monitor = nullptr;
    for (const Display& d : layout.displays)
        if (SamePhysical(*FindAdapter(layout.adapters, d.adapter), *adapter) && d.logical == displayIndex) monitor = d.monitor;
    if (!monitor || !monitor->Config().connected) return adl::ErrInvalidDisplayIndex;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(send);
    if (bytes[0] == ddc::WriteAddress) return monitor->Write(ddc::WriteAddress, bytes + 1, sendLength - 1u) ? adl::Ok : adl::Err;
    if (bytes[0] == ddc::ReadAddress && sendLength == 1) {
        if (!receiveLength || !receive || *receiveLength < 1 || *receiveLength > 256) return adl::ErrInvalidParam;
        return monitor->Read(ddc::ReadAddress, reinterpret_cast<std::uint8_t*>(receive), static_cast<std::size_t>(*receiveLength))
                   ? adl::Ok
                   : adl::Err;
    }
    return adl::ErrInvalidParam;
}

#endif
