// The NVAPI back-end: display handles, GPU and output resolution, NV_I2C_INFO writes and reads, EDID names.
#include "display/win/nvidia_i2c_driver.h"

#include <cstring>

#include "display/edid.h"

namespace nv = uc::display::nvapi;
namespace ddc = uc::display::ddc;

namespace {
// More displays than any machine drives; stops a library that never ends its enumeration.
constexpr std::uint32_t kMaxDisplays = 256;

template <class Fn>
void Query(nv::QueryInterfaceFn query, nv::FunctionId id, Fn& out) {
    out = reinterpret_cast<Fn>(query(id));
}
}  // namespace

NvidiaI2CDriver::NvidiaI2CDriver() : NvidiaI2CDriver(nv::LibraryName) {}

NvidiaI2CDriver::NvidiaI2CDriver(const std::wstring& library) : m_library(library) {
    const auto query = m_library.Resolve<nv::QueryInterfaceFn>("nvapi_QueryInterface");
    if (!query) return;
    Query(query, nv::IdInitialize, m_initialize);
    Query(query, nv::IdUnload, m_unload);
    Query(query, nv::IdGetInterfaceVersionString, m_versionString);
    Query(query, nv::IdEnumNvidiaDisplayHandle, m_enumDisplay);
    Query(query, nv::IdGetPhysicalGPUsFromDisplay, m_gpusFromDisplay);
    Query(query, nv::IdGetAssociatedDisplayOutputId, m_outputId);
    Query(query, nv::IdGpuGetEdid, m_getEdid);
    Query(query, nv::IdI2cWrite, m_i2cWrite);
    Query(query, nv::IdI2cRead, m_i2cRead);
    if (m_initialize) m_initialize();
}

NvidiaI2CDriver::~NvidiaI2CDriver() {
    if (m_unload) m_unload();
}

bool NvidiaI2CDriver::IsInitialized() const {
    char text[nv::ShortStringSize] = {};
    return m_versionString && m_versionString(text) == nv::Ok;
}

unsigned NvidiaI2CDriver::Enumerate() {
    m_devices.clear();
    if (!m_enumDisplay) return 0;
    std::vector<nv::DisplayHandle> candidates;
    for (std::uint32_t i = 0; i < kMaxDisplays; ++i) {
        nv::DisplayHandle handle = nullptr;
        if (m_enumDisplay(i, &handle) != nv::Ok) break;
        candidates.push_back(handle);
    }
    for (nv::DisplayHandle handle : candidates) {
        m_devices.push_back(handle);
        if (!Probe(DeviceCount() - 1)) m_devices.pop_back();
    }
    return DeviceCount();
}

bool NvidiaI2CDriver::Target(unsigned device, nv::PhysicalGpuHandle& gpu, std::uint32_t& outputId) const {
    if (!m_gpusFromDisplay || !m_outputId) return false;
    nv::PhysicalGpuHandle gpus[nv::MaxPhysicalGpus] = {};
    std::uint32_t count = 0;
    if (m_gpusFromDisplay(m_devices[device], gpus, &count) != nv::Ok || count == 0) return false;
    if (m_outputId(m_devices[device], &outputId) != nv::Ok) return false;
    gpu = gpus[0];
    return true;
}

bool NvidiaI2CDriver::WriteMessage(unsigned device, const ddc::Message& message) {
    nv::PhysicalGpuHandle gpu = nullptr;
    std::uint32_t outputId = 0;
    if (!m_i2cWrite || !Target(device, gpu, outputId)) return false;
    // NVAPI sends the device address, then the "register" 0x51, then the data: the message after 0x51.
    std::uint8_t reg = ddc::HostSource;
    std::uint8_t payload[sizeof message.bytes];
    std::memcpy(payload, message.Payload(), message.PayloadSize());
    nv::I2cInfo info{};
    info.version = nv::I2cInfoVersion1;
    info.displayMask = outputId;
    info.isDdcPort = 1;
    info.i2cDevAddress = ddc::WriteAddress;
    info.i2cRegAddress = &reg;
    info.regAddrSize = 1;
    info.data = payload;
    info.size = static_cast<std::uint32_t>(message.PayloadSize());
    info.i2cSpeed = nv::I2cSpeed;
    return m_i2cWrite(gpu, &info) == nv::Ok;
}

bool NvidiaI2CDriver::ReadReply(unsigned device, std::uint8_t* buffer, std::size_t size) {
    nv::PhysicalGpuHandle gpu = nullptr;
    std::uint32_t outputId = 0;
    if (!m_i2cRead || !Target(device, gpu, outputId)) return false;
    nv::I2cInfo info{};
    info.version = nv::I2cInfoVersion1;
    info.displayMask = outputId;
    info.isDdcPort = 1;
    info.i2cDevAddress = ddc::ReadAddress;
    info.i2cRegAddress = nullptr;
    info.regAddrSize = 0;
    info.data = buffer;
    info.size = static_cast<std::uint32_t>(size);
    info.i2cSpeed = nv::I2cSpeed;
    return m_i2cRead(gpu, &info) == nv::Ok;
}

bool NvidiaI2CDriver::GetName(unsigned device, std::string& name) {
    if (device >= m_devices.size() || !m_getEdid) return false;
    nv::PhysicalGpuHandle gpu = nullptr;
    std::uint32_t outputId = 0;
    if (!Target(device, gpu, outputId)) return false;
    nv::Edid edid{};
    edid.version = nv::EdidVersion1;
    if (m_getEdid(gpu, outputId, &edid) != nv::Ok) return false;
    return uc::display::MonitorNameFromEdid(edid.data, sizeof edid.data, name);
}
