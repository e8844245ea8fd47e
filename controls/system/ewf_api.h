// Record layouts, constants and function types of the Enhanced Write Filter management library ("EWFAPI.dll").
#pragma once

// Declared here from Microsoft's published description of the EWF API, so the library is loaded at run time
// and a machine without it still starts. The layouts match the SDK's on both Windows targets; natively the same
// records are used by the simulated filter (WCHAR is a 16-bit char16_t there).
#include <cstddef>
#include <cstdint>

#include "platform/export.h"

#if defined(_WIN32) && !defined(_WIN64)
#define UC_EWF_CALL __stdcall
#else
#define UC_EWF_CALL
#endif

namespace uc::ewf {
#ifdef _WIN32
using WChar = wchar_t;
#else
using WChar = char16_t;
#endif
using Handle = void*;
using Bool = int;
using ULong = std::uint32_t;  // Windows ULONG is 32 bits on every target
using UShort = std::uint16_t;
using UChar = std::uint8_t;
using LongLong = std::int64_t;

// INVALID_HANDLE_VALUE, as EwfMgrOpenProtected and EwfMgrOpenOverlayStore report a failure.
inline Handle InvalidHandle() { return reinterpret_cast<Handle>(static_cast<std::intptr_t>(-1)); }

constexpr std::size_t MaxDeviceNameLength = 256;
constexpr std::size_t VolumeIdSize = 16;
constexpr std::size_t MaxLevelNameLength = 64;
constexpr std::size_t MaxPersistentData = 32;

// Windows error codes the manager and the simulated filter report.
constexpr ULong ErrorFileNotFound = 2;
constexpr ULong ErrorAccessDenied = 5;
constexpr ULong ErrorInvalidHandle = 6;
constexpr ULong ErrorNotEnoughMemory = 8;
constexpr ULong ErrorGenFailure = 31;
constexpr ULong ErrorNotSupported = 50;
constexpr ULong ErrorInvalidParameter = 87;
constexpr ULong ErrorModNotFound = 126;
constexpr ULong ErrorProcNotFound = 127;
constexpr ULong ErrorIoDevice = 1117;

struct FileTime {
    ULong dwLowDateTime;
    ULong dwHighDateTime;
};
}  // namespace uc::ewf

// The records keep the names and member names Microsoft documents, so code written against EWF reads the same.
enum EWF_TYPE : int { EWF_DISK = 0, EWF_RAM = 1, EWF_RAM_REG = 2 };
enum EWF_STATE : int { EWF_ENABLED = 0, EWF_DISABLED = 1 };
enum EWF_COMMAND : int { EWF_NO_CMD = 0, EWF_ENABLE = 1, EWF_DISABLE = 2, EWF_SET_LEVEL = 3, EWF_COMMIT = 4 };

struct EWF_LEVEL_DESC {
    uc::ewf::WChar LevelName[uc::ewf::MaxLevelNameLength];
    uc::ewf::FileTime LevelEndTime;
    uc::ewf::LongLong LevelDataSize;
};

struct EWF_VOLUME_DESC {
    uc::ewf::WChar DeviceName[uc::ewf::MaxDeviceNameLength];
    uc::ewf::UChar VolumeID[uc::ewf::VolumeIdSize];
};

struct EWF_VOLUME_CONFIG {
    EWF_TYPE Type;
    EWF_STATE State;
    EWF_COMMAND BootCommand;
    uc::ewf::UChar PersistentData[uc::ewf::MaxPersistentData];
    uc::ewf::UShort MaxLevels;
    uc::ewf::ULong ClumpSize;
    uc::ewf::UShort CurrentLevel;
    union {
        struct {
            uc::ewf::LongLong DiskMapSize;
            uc::ewf::LongLong DiskDataSize;
        } DiskOverlay;
        struct {
            uc::ewf::LongLong RamDataSize;
        } RamOverlay;
    };
    uc::ewf::ULong MemMapSize;
    EWF_VOLUME_DESC VolumeDesc;
    EWF_LEVEL_DESC LevelDescArray[1];  // MaxLevels entries follow in the same allocation
};

struct EWF_OVERLAY_STORE_CONFIG {
    uc::ewf::ULong FormatVersion;
    uc::ewf::LongLong VolumeSize;
    uc::ewf::ULong NumSegments;
    uc::ewf::ULong FreeSegments;
    uc::ewf::ULong SegmentSize;
    uc::ewf::ULong MaxVolumes;
    uc::ewf::ULong NumVolumes;
    uc::ewf::UShort MaxLevels;
    EWF_VOLUME_DESC VolumeDescArray[1];  // NumVolumes entries follow in the same allocation
};

struct EWF_VOLUME_NAME_ENTRY {
    EWF_VOLUME_NAME_ENTRY* Next;
    uc::ewf::WChar Name[1];  // null-terminated, continues past the declared size
};

// The layout is fixed by the library on the other side of the call: any drift here corrupts every read.
static_assert(sizeof(EWF_LEVEL_DESC) == 144);
static_assert(sizeof(EWF_VOLUME_DESC) == 528);
static_assert(offsetof(EWF_VOLUME_CONFIG, MaxLevels) == 44);
static_assert(offsetof(EWF_VOLUME_CONFIG, ClumpSize) == 48);
static_assert(offsetof(EWF_VOLUME_CONFIG, CurrentLevel) == 52);
static_assert(offsetof(EWF_VOLUME_CONFIG, DiskOverlay) == 56);
static_assert(offsetof(EWF_VOLUME_CONFIG, MemMapSize) == 72);
static_assert(offsetof(EWF_VOLUME_CONFIG, VolumeDesc) == 76);
static_assert(offsetof(EWF_VOLUME_CONFIG, LevelDescArray) == 608);
static_assert(sizeof(EWF_VOLUME_CONFIG) == 752);
static_assert(offsetof(EWF_OVERLAY_STORE_CONFIG, VolumeSize) == 8);
static_assert(offsetof(EWF_OVERLAY_STORE_CONFIG, MaxLevels) == 36);
static_assert(offsetof(EWF_OVERLAY_STORE_CONFIG, VolumeDescArray) == 38);
static_assert(offsetof(EWF_VOLUME_NAME_ENTRY, Name) == sizeof(void*));

namespace uc::ewf {
// Function types of the exports the manager resolves by name.
using GetProtectedVolumeListFn = EWF_VOLUME_NAME_ENTRY*(UC_EWF_CALL*)();
using VolumeNameListIsEmptyFn = Bool(UC_EWF_CALL*)(EWF_VOLUME_NAME_ENTRY*);
using VolumeNameEntryPopFn = void(UC_EWF_CALL*)(EWF_VOLUME_NAME_ENTRY**);
using VolumeNameListDeleteFn = void(UC_EWF_CALL*)(EWF_VOLUME_NAME_ENTRY*);
using GetDriveLetterFromVolumeNameFn = WChar(UC_EWF_CALL*)(const WChar*);
using OpenProtectedFn = Handle(UC_EWF_CALL*)(const WChar*);
using CloseFn = Bool(UC_EWF_CALL*)(Handle);
using GetProtectedVolumeConfigFn = EWF_VOLUME_CONFIG*(UC_EWF_CALL*)(Handle);
using OpenOverlayStoreFn = Handle(UC_EWF_CALL*)(Bool);
using GetOverlayStoreConfigFn = EWF_OVERLAY_STORE_CONFIG*(UC_EWF_CALL*)(Handle);
using VolumeCommandFn = Bool(UC_EWF_CALL*)(Handle);  // Enable, Commit, Restore, ClearCommand
using DisableFn = Bool(UC_EWF_CALL*)(Handle, Bool);

// The calling thread's last error (GetLastError on Windows; errno carries it natively).
UC_API ULong LastError();
UC_API void SetLastError(ULong code);
// Records handed across the library boundary: LocalAlloc/LocalFree on Windows, calloc/free natively.
UC_API void* AllocRecord(std::size_t bytes);
UC_API void FreeRecord(void* record);
// The name the manager loads by default: "EWFAPI.dll" on Windows, "libEWFAPI.so" natively.
UC_API const wchar_t* DefaultLibraryName();
}  // namespace uc::ewf
