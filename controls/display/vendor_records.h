// NVAPI and ADL records, identifiers and function types as the vendors publish them, declared locally.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#define UC_VENDOR_CDECL __cdecl
#define UC_VENDOR_STDCALL __stdcall
#else
#define UC_VENDOR_CDECL
#define UC_VENDOR_STDCALL
#endif

namespace uc::display::nvapi {

using Status = int;  // NvAPI_Status: 0 is NVAPI_OK
constexpr Status Ok = 0;
constexpr Status Error = -1;
constexpr Status NotInitialized = -4;
constexpr Status InvalidArgument = -5;
constexpr Status EndEnumeration = -7;
constexpr Status InvalidHandle = -8;
constexpr Status IncompatibleStructVersion = -9;
constexpr Status NoImplementation = -3;

using DisplayHandle = void*;      // NvDisplayHandle
using PhysicalGpuHandle = void*;  // NvPhysicalGpuHandle
constexpr unsigned MaxPhysicalGpus = 64;
constexpr std::size_t ShortStringSize = 64;  // NvAPI_ShortString

// NV_I2C_INFO version 1. The pointers make it 32 bytes on 32-bit builds and 48 on 64-bit ones.
struct I2cInfo {
    std::uint32_t version;
    std::uint32_t displayMask;
    std::uint8_t isDdcPort;
    std::uint8_t i2cDevAddress;
    std::uint8_t* i2cRegAddress;
    std::uint32_t regAddrSize;
    std::uint8_t* data;
    std::uint32_t size;
    std::uint32_t i2cSpeed;
};
static_assert(sizeof(I2cInfo) == (sizeof(void*) == 4 ? 32 : 48), "NV_I2C_INFO layout");
static_assert(offsetof(I2cInfo, i2cRegAddress) == (sizeof(void*) == 4 ? 12 : 16), "NV_I2C_INFO layout");

// NV_EDID version 1: a version word and 256 EDID bytes.
struct Edid {
    std::uint32_t version;
    std::uint8_t data[256];
};
static_assert(sizeof(Edid) == 260, "NV_EDID v1 layout");

// MAKE_NVAPI_VERSION: the structure's size in the low word, its version in the high word.
constexpr std::uint32_t MakeVersion(std::size_t size, unsigned version) {
    return static_cast<std::uint32_t>(size) | (static_cast<std::uint32_t>(version) << 16);
}
constexpr std::uint32_t I2cInfoVersion1 = MakeVersion(sizeof(I2cInfo), 1);  // 0x00010020 on 32-bit builds
constexpr std::uint32_t EdidVersion1 = MakeVersion(sizeof(Edid), 1);        // 0x00010104
static_assert(sizeof(void*) != 4 || I2cInfoVersion1 == 0x00010020, "NV_I2C_INFO_VER on 32-bit builds");
static_assert(EdidVersion1 == 0x00010104, "NV_EDID_VER1");

constexpr std::uint32_t I2cSpeed = 35;  // the field's value NVIDIA's DDC examples use

// Identifiers nvapi_QueryInterface resolves.
enum FunctionId : std::uint32_t {
    IdInitialize = 0x0150E828,
    IdUnload = 0xD22BDD7E,
    IdGetInterfaceVersionString = 0x01053FA5,
    IdEnumNvidiaDisplayHandle = 0x9ABDD40D,
    IdGetPhysicalGPUsFromDisplay = 0x34EF9506,
    IdGetAssociatedDisplayOutputId = 0xD995937E,
    IdGpuGetEdid = 0x37D32E69,
    IdI2cWrite = 0xE812EB07,
    IdI2cRead = 0x2FDE12C5,
};

using QueryInterfaceFn = void*(UC_VENDOR_CDECL*)(std::uint32_t id);
using InitializeFn = Status(UC_VENDOR_CDECL*)();
using UnloadFn = Status(UC_VENDOR_CDECL*)();
using GetInterfaceVersionStringFn = Status(UC_VENDOR_CDECL*)(char text[ShortStringSize]);
using EnumNvidiaDisplayHandleFn = Status(UC_VENDOR_CDECL*)(std::uint32_t index, DisplayHandle* display);
using GetPhysicalGPUsFromDisplayFn = Status(UC_VENDOR_CDECL*)(DisplayHandle display, PhysicalGpuHandle gpus[MaxPhysicalGpus],
                                                              std::uint32_t* count);
using GetAssociatedDisplayOutputIdFn = Status(UC_VENDOR_CDECL*)(DisplayHandle display, std::uint32_t* outputId);
using GpuGetEdidFn = Status(UC_VENDOR_CDECL*)(PhysicalGpuHandle gpu, std::uint32_t outputId, Edid* edid);
using I2cTransferFn = Status(UC_VENDOR_CDECL*)(PhysicalGpuHandle gpu, I2cInfo* info);

// The library each target loads, as NVIDIA's own loader does.
#if defined(_WIN64) || (!defined(_WIN32) && defined(__LP64__))
constexpr const wchar_t* LibraryName = L"nvapi64.dll";
#else
constexpr const wchar_t* LibraryName = L"nvapi.dll";
#endif

}  // namespace uc::display::nvapi

namespace uc::display::adl {

constexpr int Ok = 0;
constexpr int Err = -1;
constexpr int ErrNotInit = -2;
constexpr int ErrInvalidParam = -3;
constexpr int ErrInvalidAdlIndex = -5;
constexpr int ErrInvalidDisplayIndex = -7;
constexpr int ErrNullPointer = -9;

constexpr std::size_t MaxPath = 256;  // ADL_MAX_PATH
constexpr int DisplayConnected = 0x1;  // ADL_DISPLAY_DISPLAYINFO_DISPLAYCONNECTED
constexpr int DisplayMapped = 0x2;     // ADL_DISPLAY_DISPLAYINFO_DISPLAYMAPPED

// AdapterInfo as the Windows builds of ADL lay it out: 1,572 bytes on 32- and 64-bit builds alike.
struct AdapterInfo {
    int iSize;
    int iAdapterIndex;
    char strUDID[MaxPath];
    int iBusNumber;
    int iDeviceNumber;
    int iFunctionNumber;
    int iVendorID;
    char strAdapterName[MaxPath];
    char strDisplayName[MaxPath];
    int iPresent;
    int iExist;
    char strDriverPath[MaxPath];
    char strDriverPathExt[MaxPath];
    char strPNPString[MaxPath];
    int iOSDisplayIndex;
};
static_assert(sizeof(AdapterInfo) == 1572, "ADL AdapterInfo layout");

struct DisplayId {
    int iDisplayLogicalIndex;
    int iDisplayPhysicalIndex;
    int iDisplayLogicalAdapterIndex;
    int iDisplayPhysicalAdapterIndex;
};

struct DisplayInfo {
    DisplayId displayID;
    int iDisplayControllerIndex;
    char strDisplayName[MaxPath];
    char strDisplayManufacturerName[MaxPath];
    int iDisplayType;
    int iDisplayOutputType;
    int iDisplayConnector;
    int iDisplayInfoMask;
    int iDisplayInfoValue;
};
static_assert(sizeof(DisplayInfo) == 552, "ADLDisplayInfo layout");

// ADL allocates the arrays it returns through this callback (stdcall) and the caller frees them.
using MallocCallback = void*(UC_VENDOR_STDCALL*)(int size);
using MainControlCreateFn = int(UC_VENDOR_CDECL*)(MallocCallback callback, int enumConnectedAdapters);
using MainControlDestroyFn = int(UC_VENDOR_CDECL*)();
using NumberOfAdaptersGetFn = int(UC_VENDOR_CDECL*)(int* count);
using AdapterInfoGetFn = int(UC_VENDOR_CDECL*)(AdapterInfo* info, int inputSize);
using DisplayInfoGetFn = int(UC_VENDOR_CDECL*)(int adapterIndex, int* count, DisplayInfo** info, int forceDetect);
using DdcBlockAccessGetFn = int(UC_VENDOR_CDECL*)(int adapterIndex, int displayIndex, int option, int commandIndex,
                                                  int sendLength, char* send, int* receiveLength, char* receive);

constexpr const wchar_t* LibraryName = L"atiadlxx.dll";
constexpr const wchar_t* FallbackLibraryName = L"atiadlxy.dll";

}  // namespace uc::display::adl
