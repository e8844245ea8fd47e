// A simulated Enhanced Write Filter: protected volumes, an overlay store of segments, pending boot commands, faults.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/export.h"
#include "platform/ini_file.h"
#include "system/ewf_api.h"

namespace uc::ewf::sim {

struct SimVolume {
    std::wstring name;    // the name the volume list gives ("\\?\GLOBALROOT\Device\HarddiskVolume1")
    std::wstring device;  // the device name of the configuration record ("\Device\HarddiskVolume1")
    wchar_t letter = L'C';
    EWF_TYPE type = EWF_DISK;
    EWF_STATE state = EWF_ENABLED;
    EWF_COMMAND command = EWF_NO_CMD;  // pending boot command, applied at the next restart
    bool commitOnDisable = false;      // the pending disable commits the overlay first
    std::uint32_t used = 0;            // overlay data of this volume, in store segments
    std::uint32_t committed = 0;       // segments written through to the volume itself
    std::uint16_t level = 1;           // current overlay level while enabled
    std::uint16_t maxLevels = 1;
};

struct SimStore {
    std::uint32_t segments = 1000;
    std::uint32_t segmentSize = 65536;
};

// Faults on demand. Volume numbers count from 1 in the order of the list; 0 switches a fault off.
struct SimFaults {
    ULong listError = 0;                   // the volume list cannot be read, with this error
    int openFailVolume = 0;                // this volume cannot be opened
    ULong openError = ErrorFileNotFound;
    int configFailVolume = 0;              // this volume's configuration record cannot be read
    ULong configError = ErrorGenFailure;
    int letterFailVolume = 0;              // the drive letter of this volume is unknown (-1)
    ULong storeError = 0;                  // the overlay store cannot be opened, with this error
    std::vector<EWF_COMMAND> refused;      // commands the filter refuses (EWF_NO_CMD stands for clear)
    ULong refuseError = ErrorAccessDenied;
};

// The filter's whole state with the operations of the management library, without I/O. Volumes are
// addressed by their index in the list. Failing operations return false/nullopt and set `error`.
class UC_API WriteFilterSimulator {
public:
    // One disk-overlay volume C: with an empty 1,000-segment store.
    WriteFilterSimulator();

    // Reads the state file's text. Keys not given keep their defaults; a malformed value fails with a
    // message naming the section and key. Comments and unknown lines are kept for `Serialize`.
    bool Parse(const std::wstring& text, std::wstring& error);
    std::wstring Serialize() const;

    std::vector<SimVolume>& Volumes() { return m_volumes; }
    const std::vector<SimVolume>& Volumes() const { return m_volumes; }
    SimStore& Store() { return m_store; }
    const SimStore& Store() const { return m_store; }
    SimFaults& Faults() { return m_faults; }
    const SimFaults& Faults() const { return m_faults; }

    // EwfMgrGetProtectedVolumeList: the volume names in list order.
    bool ListVolumes(std::vector<std::wstring>& names, ULong& error) const;
    // EwfMgrOpenProtected: the index of the volume with this list name (or device name).
    std::optional<std::size_t> OpenVolume(const std::wstring& name, ULong& error) const;
    // Index of a volume by its device name (how open handles find their volume again).
    std::optional<std::size_t> FindDevice(const std::wstring& device) const;
    // EwfMgrGetDriveLetterFromVolumeName: the letter, or 0xFFFF when unknown.
    wchar_t DriveLetter(const std::wstring& name, ULong& error) const;
    // EwfMgrGetProtectedVolumeConfig: the record in memory from `alloc` (null on failure).
    EWF_VOLUME_CONFIG* NewVolumeConfig(std::size_t volume, void* (*alloc)(std::size_t), ULong& error) const;
    // EwfMgrOpenOverlayStore / EwfMgrGetOverlayStoreConfig.
    bool OpenStore(ULong& error) const;
    EWF_OVERLAY_STORE_CONFIG* NewStoreConfig(void* (*alloc)(std::size_t), ULong& error) const;
    std::uint32_t FreeSegments() const;

    // Boot commands: EWF_ENABLE, EWF_DISABLE (commit flag), EWF_COMMIT, EWF_SET_LEVEL (restore), and
    // EWF_NO_CMD to clear what is pending. A later command replaces the pending one.
    bool Command(std::size_t volume, EWF_COMMAND command, bool commitFirst, ULong& error);
    // Data written to the volume: into the overlay while the filter is enabled (a disk overlay is bounded
    // by the store's free segments), straight to the volume while it is disabled.
    bool Write(std::size_t volume, std::uint32_t segments, ULong& error);
    // A restart: every volume applies its pending command and forgets it; RAM overlays are lost.
    void Restart();

private:
    void StoreState(IniDocument& doc) const;

    std::vector<SimVolume> m_volumes;
    SimStore m_store;
    SimFaults m_faults;
    IniDocument m_document;  // the parsed file, so comments survive a save
};

// Names used in the state file.
UC_API const wchar_t* TypeName(EWF_TYPE type);
UC_API const wchar_t* StateName(EWF_STATE state);
UC_API const wchar_t* CommandName(EWF_COMMAND command);
UC_API std::optional<EWF_COMMAND> ParseCommandName(const std::wstring& text);

}  // namespace uc::ewf::sim
