// EwfLibrary: resolves the write filter's exports by name and turns a missing one into an EWF-style failure.
#include "system/ewf_library.h"

namespace uc::ewf {

EwfLibrary::EwfLibrary(const std::wstring& name) : m_library(name) {
    m_library.Resolve("EwfMgrGetProtectedVolumeList", m_getProtectedVolumeList);
    m_library.Resolve("EwfMgrVolumeNameListIsEmpty", m_volumeNameListIsEmpty);
    m_library.Resolve("EwfMgrVolumeNameEntryPop", m_volumeNameEntryPop);
    m_library.Resolve("EwfMgrVolumeNameListDelete", m_volumeNameListDelete);
    m_library.Resolve("EwfMgrGetDriveLetterFromVolumeName", m_getDriveLetter);
    m_library.Resolve("EwfMgrOpenProtected", m_openProtected);
    m_library.Resolve("EwfMgrClose", m_close);
    m_library.Resolve("EwfMgrGetProtectedVolumeConfig", m_getProtectedVolumeConfig);
    m_library.Resolve("EwfMgrOpenOverlayStore", m_openOverlayStore);
    m_library.Resolve("EwfMgrGetOverlayStoreConfig", m_getOverlayStoreConfig);
    m_library.Resolve("EwfMgrEnable", m_enable);
    m_library.Resolve("EwfMgrDisable", m_disable);
    m_library.Resolve("EwfMgrCommit", m_commit);
    m_library.Resolve("EwfMgrRestore", m_restore);
    m_library.Resolve("EwfMgrClearCommand", m_clearCommand);
}

void EwfLibrary::Missing() const { SetLastError(m_library.IsLoaded() ? ErrorProcNotFound : ErrorModNotFound); }

EWF_VOLUME_NAME_ENTRY* EwfLibrary::GetProtectedVolumeList() const {
    if (!m_getProtectedVolumeList || !m_volumeNameListIsEmpty || !m_volumeNameEntryPop || !m_volumeNameListDelete) {
        Missing();
        return nullptr;
    }
    return m_getProtectedVolumeList();
}

bool EwfLibrary::VolumeNameListIsEmpty(EWF_VOLUME_NAME_ENTRY* list) const {
    return !m_volumeNameListIsEmpty || m_volumeNameListIsEmpty(list) != 0;
}

void EwfLibrary::VolumeNameEntryPop(EWF_VOLUME_NAME_ENTRY** list) const {
    if (m_volumeNameEntryPop) m_volumeNameEntryPop(list);
}

void EwfLibrary::VolumeNameListDelete(EWF_VOLUME_NAME_ENTRY* list) const {
    if (m_volumeNameListDelete) m_volumeNameListDelete(list);
}

WChar EwfLibrary::GetDriveLetterFromVolumeName(const WChar* volumeName) const {
    if (!m_getDriveLetter) {
        Missing();
        return static_cast<WChar>(0xFFFF);
    }
    return m_getDriveLetter(volumeName);
}

Handle EwfLibrary::OpenProtected(const WChar* volumeName) const {
    if (!m_openProtected) {
        Missing();
        return InvalidHandle();
    }
    return m_openProtected(volumeName);
}

Bool EwfLibrary::Close(Handle device) const {
    if (!m_close) {
        Missing();
        return 0;
    }
    return m_close(device);
}

EWF_VOLUME_CONFIG* EwfLibrary::GetProtectedVolumeConfig(Handle device) const {
    if (!m_getProtectedVolumeConfig) {
        Missing();
        return nullptr;
    }
    return m_getProtectedVolumeConfig(device);
}

Handle EwfLibrary::OpenOverlayStore(Bool openForAsyncIo) const {
    if (!m_openOverlayStore) {
        Missing();
        return InvalidHandle();
    }
    return m_openOverlayStore(openForAsyncIo);
}

EWF_OVERLAY_STORE_CONFIG* EwfLibrary::GetOverlayStoreConfig(Handle store) const {
    if (!m_getOverlayStoreConfig) {
        Missing();
        return nullptr;
    }
    return m_getOverlayStoreConfig(store);
}

Bool EwfLibrary::Command(VolumeCommandFn fn, Handle device) const {
    if (!fn) {
        Missing();
        return 0;
    }
    return fn(device);
}

Bool EwfLibrary::Enable(Handle device) const { return Command(m_enable, device); }
Bool EwfLibrary::Commit(Handle device) const { return Command(m_commit, device); }
Bool EwfLibrary::Restore(Handle device) const { return Command(m_restore, device); }
Bool EwfLibrary::ClearCommand(Handle device) const { return Command(m_clearCommand, device); }

Bool EwfLibrary::Disable(Handle device, Bool commit) const {
    if (!m_disable) {
        Missing();
        return 0;
    }
    return m_disable(device, commit);
}

}  // namespace uc::ewf
