// The write filter's management library loaded at run time, with every function the manager uses resolved by name.
#pragma once

#include <string>

#include "platform/dynamic_library.h"
#include "platform/export.h"
#include "system/ewf_api.h"

namespace uc::ewf {

// Calls into the loaded library. A function the library lacks fails the way EWF reports failures (null,
// FALSE or INVALID_HANDLE_VALUE) with last error ERROR_PROC_NOT_FOUND; an absent library with
// ERROR_MOD_NOT_FOUND. Nothing here throws or crashes on a partial library.
class UC_API EwfLibrary {
public:
    explicit EwfLibrary(const std::wstring& name);
    EwfLibrary(const EwfLibrary&) = delete;
    EwfLibrary& operator=(const EwfLibrary&) = delete;

    bool IsLoaded() const { return m_library.IsLoaded(); }
    const std::wstring& Name() const { return m_library.Name(); }
    const std::wstring& LoadError() const { return m_library.LastError(); }
    // Extra exports (the simulated filter's) for tools and tests.
    void* ResolveAddress(const char* symbol) const { return m_library.ResolveAddress(symbol); }

    // The volume list can only be walked when all four list functions are present (a missing pop would
    // loop for ever), so the list is refused unless they all are.
    EWF_VOLUME_NAME_ENTRY* GetProtectedVolumeList() const;
    bool VolumeNameListIsEmpty(EWF_VOLUME_NAME_ENTRY* list) const;
    void VolumeNameEntryPop(EWF_VOLUME_NAME_ENTRY** list) const;
    void VolumeNameListDelete(EWF_VOLUME_NAME_ENTRY* list) const;
    WChar GetDriveLetterFromVolumeName(const WChar* volumeName) const;
    Handle OpenProtected(const WChar* volumeName) const;
    Bool Close(Handle device) const;
    EWF_VOLUME_CONFIG* GetProtectedVolumeConfig(Handle device) const;
    Handle OpenOverlayStore(Bool openForAsyncIo) const;
    EWF_OVERLAY_STORE_CONFIG* GetOverlayStoreConfig(Handle store) const;
    Bool Enable(Handle device) const;
    Bool Disable(Handle device, Bool commit) const;
    Bool Commit(Handle device) const;
    Bool Restore(Handle device) const;
    Bool ClearCommand(Handle device) const;

private:
    // Sets the error a missing function reports.
    void Missing() const;
    Bool Command(VolumeCommandFn fn, Handle device) const;

    DynamicLibrary m_library;
    GetProtectedVolumeListFn m_getProtectedVolumeList = nullptr;
    VolumeNameListIsEmptyFn m_volumeNameListIsEmpty = nullptr;
    VolumeNameEntryPopFn m_volumeNameEntryPop = nullptr;
    VolumeNameListDeleteFn m_volumeNameListDelete = nullptr;
    GetDriveLetterFromVolumeNameFn m_getDriveLetter = nullptr;
    OpenProtectedFn m_openProtected = nullptr;
    CloseFn m_close = nullptr;
    GetProtectedVolumeConfigFn m_getProtectedVolumeConfig = nullptr;
    OpenOverlayStoreFn m_openOverlayStore = nullptr;
    GetOverlayStoreConfigFn m_getOverlayStoreConfig = nullptr;
    VolumeCommandFn m_enable = nullptr;
    DisableFn m_disable = nullptr;
    VolumeCommandFn m_commit = nullptr;
    VolumeCommandFn m_restore = nullptr;
    VolumeCommandFn m_clearCommand = nullptr;
};

}  // namespace uc::ewf
