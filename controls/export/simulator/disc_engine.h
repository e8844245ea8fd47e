// The simulated writer and its medium: media kinds and states, tracks and sessions kept in an image file, faults.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "export/simulator/block_file.h"
#include "export/simulator/disc_config.h"
#include "export/simulator/iso_image.h"
#include "export/starburn_api.h"

namespace uc::disc {

// Outcome of one device operation, shaped like the library's: an exception number, a system error
// number, a text, and the SCSI sense the drive would have answered.
struct DeviceStatus {
    EXCEPTION_NUMBER exception = EN_SUCCESS;
    std::uint32_t systemError = 0;
    std::string text;
    std::uint8_t senseKey = 0, asc = 0, ascq = 0;

    bool Ok() const { return exception == EN_SUCCESS; }
    static DeviceStatus Fail(EXCEPTION_NUMBER e, std::string why) { return {e, 0, std::move(why)}; }
    static DeviceStatus Sense(std::uint8_t key, std::uint8_t asc, std::uint8_t ascq, std::string why) {
        return {EN_SCSI_CDB_FAILED, 0, std::move(why), key, asc, ascq};
    }
};

struct TrackRecord {
    std::uint32_t start = 0;
    std::uint32_t blocks = 0;
    bool damaged = false;  // the write stopped part-way
};

// The medium lives in an image file holding every session at its own address, as a drive reads the disc;
// after each closed session the first session's descriptor blocks (16 on) carry a copy of the newest
// session's, so any ISO reader opening the file sees the latest tree, which includes the earlier files.
// What the file cannot show (media kind, tracks, closed or not) is kept in "<image>.medium" beside it.
// Tracks start on 16-block boundaries; CD tracks are padded to 300 blocks, as drives require.
class DiscEngine {
public:
    // `index` selects the device: device 0 uses the configured image, device k "<image stem>-k<ext>".
    DiscEngine(DiscConfig config, int index = 0);

    const DiscConfig& Config() const { return m_config; }
    std::string ImagePath() const { return m_image; }
    // Why the medium's state file could not be read (the medium is then treated as blank), or empty.
    const std::string& StateProblem() const { return m_stateProblem; }

    DISC_TYPE InsertedType() const;
    bool HasMedium() const;
    DeviceStatus TestUnitReady();
    DeviceStatus DiscInformation(STARBURN_DISC_INFORMATION& info) const;
    DeviceStatus TrackInformation(long track, STARBURN_TRACK_INFORMATION& info) const;
    DeviceStatus LastTrack(long& number) const;
    std::uint32_t NextWritableAddress() const;
    std::uint32_t FreeBlocks() const;
    std::uint32_t TrackStart(long track) const;

    DeviceStatus SetSpeeds(std::uint32_t readKBps, std::uint32_t writeKBps);
    void Speeds(std::uint32_t& read, std::uint32_t& maxRead, std::uint32_t& write, std::uint32_t& maxWrite) const;
    bool BupEnabled() const { return m_bup; }
    DeviceStatus SetBup(bool enabled);
    DeviceStatus SendOpc() const;
    DeviceStatus Blank();
    // Writes the built image as one track at the next writable address. `progress` gets blocks written
    // and the track's size. The session's descriptors are held back until CloseSession.
    DeviceStatus WriteTrack(IsoImage& image, bool nextSessionAllowed,
                            const std::function<void(std::uint64_t written, std::uint64_t total)>& progress);
    DeviceStatus CloseSession();
    DeviceStatus Eject();
    DeviceStatus Load();

    // Reads recorded blocks (for importing a session); false for blocks never written.
    bool ReadBlocks(std::uint32_t lba, std::uint32_t count, std::uint8_t* out);

private:
    bool LoadState();
    bool SaveState(std::string& error) const;
    DeviceStatus NotReady() const;
    std::uint32_t Capacity() const;
    bool Closed() const { return m_closed && !FactsOf(m_medium).overwritable; }

    DiscConfig m_config;
    std::string m_image;
    std::string m_stateProblem;
    Medium m_medium;
    bool m_closed = false;
    bool m_sessionOpen = false;  // a track written, its session not closed yet
    bool m_nextSessionAllowed = true;
    std::vector<TrackRecord> m_tracks;
    std::vector<std::uint8_t> m_pendingDescriptors;  // the open session's descriptor blocks
    int m_notReady = 0;
    bool m_trayOpen = false;
    bool m_bup = true;
    std::uint32_t m_readKBps = 0, m_writeKBps = 0;
};

}  // namespace uc::disc
