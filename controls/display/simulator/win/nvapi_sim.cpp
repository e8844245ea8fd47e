// A simulated "nvapi.dll"/"nvapi64.dll": nvapi_QueryInterface and the NVAPI functions the display driver uses.
#include <cstdint>
#include <cstring>

#include "display/ddc_protocol.h"
#include "display/simulator/win/sim_library.h"
#include "display/vendor_records.h"

namespace uc::display::sim {
SimLibrary& Library() {
    static SimLibrary library("nvidia");
    return library;
}
}  // namespace uc::display::sim

namespace {
namespace nv = uc::display::nvapi;
namespace ddc = uc::display::ddc;
using uc::display::sim::Library;
using uc::display::sim::SimulatedMonitor;

bool g_initialized = false;

// Display handle of monitor i, the single GPU's handle, and output ids one bit per monitor.
constexpr std::uintptr_t kDisplayBase = 0x1000;
nv::PhysicalGpuHandle const kGpu = reinterpret_cast<nv::PhysicalGpuHandle>(std::uintptr_t{0x80000});

SimulatedMonitor* FromDisplay(nv::DisplayHandle handle, std::size_t* index = nullptr) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    if (value < kDisplayBase || (value - kDisplayBase) % 0x10 != 0) return nullptr;
    const std::size_t i = (value - kDisplayBase) / 0x10;
    auto& monitors = Library().Monitors();
    if (i >= monitors.size() || !monitors[i]->Config().connected) return nullptr;
    if (index) *index = i;
    return monitors[i].get();
}

SimulatedMonitor* FromOutput(nv::PhysicalGpuHandle gpu, std::uint32_t mask) {
    if (gpu != kGpu) return nullptr;
    auto& monitors = Library().Monitors();
    for (std::size_t i = 0; i < monitors.size() && i < 32; ++i)
        if (mask == (1u << i) && monitors[i]->Config().connected) return monitors[i].get();
    return nullptr;
}

nv::Status UC_VENDOR_CDECL Initialize() {
    g_initialized = true;
    return nv::Ok;
}

nv::Status UC_VENDOR_CDECL Unload() {
    g_initialized = false;
    return nv::Ok;
}

nv::Status UC_VENDOR_CDECL GetInterfaceVersionString(char text[nv::ShortStringSize]) {
    if (!g_initialized) return nv::NotInitialized;
    if (!text) return nv::InvalidArgument;
    std::strncpy(text, "NVAPI simulated by utils_controls", nv::ShortStringSize - 1);
    text[nv::ShortStringSize - 1] = 0;
    return nv::Ok;
}

nv::Status UC_VENDOR_CDECL EnumNvidiaDisplayHandle(std::uint32_t index, nv::DisplayHandle* display) {
    if (!g_initialized) return nv::NotInitialized;
    if (!display) return nv::InvalidArgument;
    std::lock_guard<std::mutex> lock(Library().Mutex());
    // Only active displays are enumerated.
    std::uint32_t seen = 0;
    auto& monitors = Library().Monitors();
    for (std::size_t i = 0; i < monitors.size(); ++i) {
        if (!monitors[i]->Config().connected) continue;
        if (seen++ == index) {
            *display = reinterpret_cast<nv::DisplayHandle>(kDisplayBase + 0x10 * i);
            return nv::Ok;
        }
    }
    return nv::EndEnumeration;
}

nv::Status UC_VENDOR_CDECL GetPhysicalGPUsFromDisplay(nv::DisplayHandle display, nv::PhysicalGpuHandle gpus[nv::MaxPhysicalGpus],
                                                      std::uint32_t* count) {
    if (!g_initialized) return nv::NotInitialized;
    if (!gpus || !count) return nv::InvalidArgument;
    std::lock_guard<std::mutex> lock(Library().Mutex());
    if (!FromDisplay(display)) return nv::InvalidHandle;
    gpus[0] = kGpu;
    *count = 1;
    return nv::Ok;
}

nv::Status UC_VENDOR_CDECL GetAssociatedDisplayOutputId(nv::DisplayHandle display, std::uint32_t* outputId) {
    if (!g_initialized) return nv::NotInitialized;
    if (!outputId) return nv::InvalidArgument;
    std::lock_guard<std::mutex> lock(Library().Mutex());
    std::size_t index = 0;
    if (!FromDisplay(display, &index) || index >= 32) return nv::InvalidHandle;
    *outputId = 1u << index;
    return nv::Ok;
}

nv::Status UC_VENDOR_CDECL GpuGetEdid(nv::PhysicalGpuHandle gpu, std::uint32_t outputId, nv::Edid* edid) {
    if (!g_initialized) return nv::NotInitialized;
    if (!edid) return nv::InvalidArgument;
    if (edid->version != nv::EdidVersion1) return nv::IncompatibleStructVersion;
    std::lock_guard<std::mutex> lock(Library().Mutex());
    SimulatedMonitor* monitor = FromOutput(gpu, outputId);
    if (!monitor) return nv::InvalidArgument;
    if (monitor->Config().faults.noEdid) return nv::Error;
    std::memcpy(edid->data, monitor->Edid(), sizeof edid->data);
    return nv::Ok;
}

// Common checks of an I2C request; the monitor it addresses, or the status to return.
nv::Status Check(nv::PhysicalGpuHandle gpu, const nv::I2cInfo* info, SimulatedMonitor*& monitor) {
    if (!g_initialized) return nv::NotInitialized;
    if (!info) return nv::InvalidArgument;
    if (info->version != nv::I2cInfoVersion1) return nv::IncompatibleStructVersion;
    if (info->isDdcPort != 1 || (info->size > 0 && !info->data)) return nv::InvalidArgument;
    monitor = FromOutput(gpu, info->displayMask);
    return monitor ? nv::Ok : nv::InvalidArgument;
}

nv::Status UC_VENDOR_CDECL I2cWrite(nv::PhysicalGpuHandle gpu, nv::I2cInfo* info) {
    std::lock_guard<std::mutex> lock(Library().Mutex());
    SimulatedMonitor* monitor = nullptr;
    if (const nv::Status s = Check(gpu, info, monitor); s != nv::Ok) return s;
    if (info->i2cDevAddress != ddc::WriteAddress || info->regAddrSize > 4 ||
        (info->regAddrSize > 0 && !info->i2cRegAddress) || info->size > 64)
        return nv::InvalidArgument;
    // On the wire the register bytes simply precede the data.
    std::uint8_t bytes[68];
    std::memcpy(bytes, info->i2cRegAddress, info->regAddrSize);
    std::memcpy(bytes + info->regAddrSize, info->data, info->size);
    return monitor->Write(ddc::WriteAddress, bytes, info->regAddrSize + info->size) ? nv::Ok : nv::Error;
}

nv::Status UC_VENDOR_CDECL I2cRead(nv::PhysicalGpuHandle gpu, nv::I2cInfo* info) {
    std::lock_guard<std::mutex> lock(Library().Mutex());
    SimulatedMonitor* monitor = nullptr;
    if (const nv::Status s = Check(gpu, info, monitor); s != nv::Ok) return s;
    if (info->i2cDevAddress != ddc::ReadAddress || info->regAddrSize != 0 || info->size > 256) return nv::InvalidArgument;
    return monitor->Read(ddc::ReadAddress, info->data, info->size) ? nv::Ok : nv::Error;
}

struct Entry {
    std::uint32_t id;
    const char* name;  // as "[nvapi] missing = ..." names it
    void* function;
};

const Entry kEntries[] = {
    {nv::IdInitialize, "Initialize", reinterpret_cast<void*>(&Initialize)},
    {nv::IdUnload, "Unload", reinterpret_cast<void*>(&Unload)},
    {nv::IdGetInterfaceVersionString, "GetInterfaceVersionString", reinterpret_cast<void*>(&GetInterfaceVersionString)},
    {nv::IdEnumNvidiaDisplayHandle, "EnumNvidiaDisplayHandle", reinterpret_cast<void*>(&EnumNvidiaDisplayHandle)},
    {nv::IdGetPhysicalGPUsFromDisplay, "GetPhysicalGPUsFromDisplay", reinterpret_cast<void*>(&GetPhysicalGPUsFromDisplay)},
    {nv::IdGetAssociatedDisplayOutputId, "GetAssociatedDisplayOutputId",
     reinterpret_cast<void*>(&GetAssociatedDisplayOutputId)},
    {nv::IdGpuGetEdid, "GPU_GetEDID", reinterpret_cast<void*>(&GpuGetEdid)},
    {nv::IdI2cWrite, "I2CWrite", reinterpret_cast<void*>(&I2cWrite)},
    {nv::IdI2cRead, "I2CRead", reinterpret_cast<void*>(&I2cRead)},
};

}  // namespace

extern "C" __declspec(dllexport) void* UC_VENDOR_CDECL nvapi_QueryInterface(std::uint32_t id) {
    std::lock_guard<std::mutex> lock(Library().Mutex());
    for (const Entry& e : kEntries)
        if (e.id == id) return Library().Config().missingFunctions.count(e.name) ? nullptr : e.function;
    return nullptr;
}
