// CEWFMgr: lists and opens the protected volumes through the loaded EWF library and forwards boot commands.
#include "system/ewf_manager.h"

#include "platform/logger.h"
#include "system/ewf_library.h"
#include "system/ewf_text.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#define UC_EWF_KEEP_RECORD(p) __lsan_ignore_object(p)
#else
#define UC_EWF_KEEP_RECORD(p) ((void)(p))
#endif

using namespace uc::ewf;

namespace {
bool IsAllOnes(unsigned long value) { return value == ~0ul; }

std::shared_ptr<const EwfLibrary> LoadEwfLibrary(const std::wstring& name) {
    auto library = std::make_shared<const EwfLibrary>(name);
    if (!library->IsLoaded())
        UC_LOG(zelLogger::Fallback)(L"%s not loaded: %s\n", name.c_str(), library->LoadError().c_str());
    return library;
}
}  // namespace

CEWFMgr::CEWFMgr() : CEWFMgr(DefaultLibraryName()) {}

CEWFMgr::CEWFMgr(const std::wstring& libraryName) : m_library(LoadEwfLibrary(libraryName)) {}

CEWFMgr::CEWFMgr(const CEWFMgr& other) = default;
CEWFMgr& CEWFMgr::operator=(const CEWFMgr& other) = default;

CEWFMgr::~CEWFMgr() { Clear(); }

bool CEWFMgr::IsLibraryLoaded() const { return m_library->IsLoaded(); }
std::wstring CEWFMgr::LibraryError() const { return m_library->LoadError(); }

int CEWFMgr::Init() { return GetProtectedVolumes() == 0 ? 1 : 0; }

unsigned long CEWFMgr::GetProtectedVolumes() {
    const EwfLibrary& ewf = *m_library;
    EWF_VOLUME_NAME_ENTRY* list = ewf.GetProtectedVolumeList();
    if (!list) {
        const ULong error = LastError();
        UC_LOG(zelLogger::StateReport)(L"EwfMgrGetProtectedVolumeList failed LE = %u\n", error);
        return error;
    }
    while (!ewf.VolumeNameListIsEmpty(list)) {
        const WChar letter = ewf.GetDriveLetterFromVolumeName(list->Name);
        // EWF answers -1 for an unknown volume, but the 16-bit letter widened never equals all ones, so the
        // check below cannot fire: the letter serves the log line only and is never treated as an error.
        if (IsAllOnes(static_cast<unsigned long>(letter))) {
            const ULong error = LastError();
            UC_LOG(zelLogger::StateReport)(L"EwfMgrGetDriveLetterFromVolumeName failed LE = %u\n", error);
        }
        const std::wstring name = FromEwfString(list->Name);
        UC_LOG(zelLogger::StateReport)(L"Protected volume %c: = %s\n", static_cast<int>(letter), name.c_str());

        Handle volume = ewf.OpenProtected(list->Name);
        if (volume == InvalidHandle()) {
            const ULong error = LastError();
            UC_LOG(zelLogger::StateReport)(L"EwfMgrOpenProtected failed LE = %u\n", error);
            ewf.VolumeNameListDelete(list);
            return error;
        }
        EWF_VOLUME_CONFIG* config = ewf.GetProtectedVolumeConfig(volume);
        if (!config) {
            // The handle just opened is neither kept nor closed here.
            const ULong error = LastError();
            UC_LOG(zelLogger::StateReport)(L"EwfMgrGetProtectedVolumeConfig failed LE = %u\n", error);
            ewf.VolumeNameListDelete(list);
            return error;
        }
        const std::wstring device = FromEwfString(config->VolumeDesc.DeviceName, MaxDeviceNameLength);
        UC_LOG(zelLogger::StateReport)(L"Volume device name = %s\n", device.c_str());
        m_volumes.push_back(volume);
        FreeRecord(config);
        ewf.VolumeNameEntryPop(&list);
    }
    return 0;
}

void CEWFMgr::Clear() {
    for (Handle volume : m_volumes) m_library->Close(volume);
}

int CEWFMgr::GetVolumeCount() const { return static_cast<int>(m_volumes.size()); }

Handle CEWFMgr::GetVolumeHandle(int index) const {
    if (index < 0 || index >= GetVolumeCount()) return nullptr;
    return m_volumes[static_cast<std::size_t>(index)];
}

std::wstring CEWFMgr::GetVolumeName(int index) const {
    Handle volume = GetVolumeHandle(index);
    if (!volume) return {};
    EWF_VOLUME_CONFIG* config = m_library->GetProtectedVolumeConfig(volume);
    // A record that cannot be read names nothing (rather than reading through a null pointer).
    if (!config) return {};
    std::wstring name = FromEwfString(config->VolumeDesc.DeviceName, MaxDeviceNameLength);
    FreeRecord(config);
    return name;
}

EWF_VOLUME_CONFIG* CEWFMgr::GetVolumeConfig(int index) const {
    Handle volume = GetVolumeHandle(index);
    if (!volume) return nullptr;
    return m_library->GetProtectedVolumeConfig(volume);
}

EWF_OVERLAY_STORE_CONFIG* CEWFMgr::GetStoreOverlay() const {
    Handle store = m_library->OpenOverlayStore(0);
    // EWF documents INVALID_HANDLE_VALUE for a store that cannot be opened; null is refused as well.
    if (!store || store == InvalidHandle()) return nullptr;
    EWF_OVERLAY_STORE_CONFIG* config = m_library->GetOverlayStoreConfig(store);
    m_library->Close(store);
    return config;
}

double CEWFMgr::GetFreeSpacePercent() const {
    EWF_OVERLAY_STORE_CONFIG* config = GetStoreOverlay();
    if (!config) return -1.0;
    // The record is deliberately not freed here (callers of this manager have always relied on that).
    UC_EWF_KEEP_RECORD(config);
    const std::uint32_t segments = config->NumSegments;
    const std::uint32_t freeSegments = config->FreeSegments;
    // A store reporting no segments has no meaningful fill level; answered like an unreadable store.
    if (segments == 0) return -1.0;
    return static_cast<double>(freeSegments) * 100.0 / static_cast<double>(segments);
}

int CEWFMgr::Enable(Handle volume) { return volume ? m_library->Enable(volume) : 0; }
int CEWFMgr::Disable(Handle volume) { return volume ? m_library->Disable(volume, 0) : 0; }
int CEWFMgr::Commit(Handle volume) { return volume ? m_library->Commit(volume) : 0; }
int CEWFMgr::Restore(Handle volume) { return volume ? m_library->Restore(volume) : 0; }
int CEWFMgr::ClearCommand(Handle volume) { return volume ? m_library->ClearCommand(volume) : 0; }
