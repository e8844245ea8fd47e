// CEWFMgr: the protected volumes of the Enhanced Write Filter and the commands EWF applies at the next restart.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/export.h"
#include "system/ewf_api.h"

namespace uc::ewf {
class EwfLibrary;
}

// Finds the protected volumes once (`Init`), keeps an open handle to each and forwards the write-filter
// commands for one volume handle at a time. The management library is loaded at run time; without it `Init`
// answers 0 and every other call gives its answer for a missing volume. For use from one thread.
class UC_API CEWFMgr {
public:
    // Loads the management library by its usual name (`uc::ewf::DefaultLibraryName()`).
    CEWFMgr();
    // Loads another library (a path or name), e.g. the simulated filter.
    explicit CEWFMgr(const std::wstring& libraryName);
    // Copies share the volume handles as they stand (they are not duplicated) and the loaded library;
    // whichever copy is destroyed first closes the shared handles.
    CEWFMgr(const CEWFMgr& other);
    CEWFMgr& operator=(const CEWFMgr& other);
    virtual ~CEWFMgr();

    // 1 when the protected volumes were listed (possibly none), else 0. A second call appends them again.
    int Init();
    int GetVolumeCount() const;
    // Null when `index` is out of range.
    uc::ewf::Handle GetVolumeHandle(int index) const;
    // The device name from the volume's configuration record, read afresh; empty for a bad index.
    std::wstring GetVolumeName(int index) const;
    // The volume's configuration record, or null. The caller owns it and frees it with LocalFree
    // (`uc::ewf::FreeRecord` on every platform).
    EWF_VOLUME_CONFIG* GetVolumeConfig(int index) const;
    // The overlay store's record, or null when the store cannot be opened. Owned by the caller as above.
    EWF_OVERLAY_STORE_CONFIG* GetStoreOverlay() const;
    // Free segments × 100 / segments of the overlay store; -1.0 when the store cannot be read or
    // reports no segments at all.
    double GetFreeSpacePercent() const;

    // Boot commands for the next restart. EWF's own result (non-zero on success); a null handle gives 0
    // without calling EWF.
    int Enable(uc::ewf::Handle volume);
    int Disable(uc::ewf::Handle volume);  // disables without committing the overlay
    int Commit(uc::ewf::Handle volume);
    int Restore(uc::ewf::Handle volume);
    int ClearCommand(uc::ewf::Handle volume);

    // Whether the management library was found, and the system's reason when it was not.
    bool IsLibraryLoaded() const;
    std::wstring LibraryError() const;
    // The loaded library, for the simulated filter's extra exports.
    const uc::ewf::EwfLibrary& Library() const { return *m_library; }

private:
    // 0 on success, else the Windows error code of the failing EWF call.
    unsigned long GetProtectedVolumes();
    // Closes every handle in the list; the list itself is left as it is.
    void Clear();

    std::vector<uc::ewf::Handle> m_volumes;
    std::shared_ptr<const uc::ewf::EwfLibrary> m_library;
};
