// The simulated writer and its medium.
#include "export/simulator/disc_engine.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "export/simulator/file_tree.h"
#include "export/simulator/image_pump.h"
#include "export/simulator/iso_format.h"

namespace uc::disc {

namespace fs = std::filesystem;

namespace {
constexpr std::uint32_t kTrackAlignment = 16;
constexpr std::uint32_t kMinimumCdTrack = 300;
constexpr std::size_t kChunk = 1u << 20;

std::string DeviceImage(const std::string& image, int index) {
    if (index == 0) return image;
    const fs::path p = PathFromUtf8(image);
    return PathUtf8(p.parent_path() / PathFromUtf8(PathUtf8(p.stem()) + "-" + std::to_string(index) + PathUtf8(p.extension())));
}

bool AllZero(const std::uint8_t* p, std::size_t n) {
    return n == 0 || (p[0] == 0 && std::memcmp(p, p + 1, n - 1) == 0);
}
}  // namespace

DiscEngine::DiscEngine(DiscConfig config, int index)
    : m_config(std::move(config)), m_image(DeviceImage(m_config.image, index)), m_medium(m_config.medium),
      m_notReady(m_config.notReady), m_bup(m_config.bufferUnderrunProtection) {
    const MediumFacts& facts = FactsOf(m_medium);
    m_readKBps = m_writeKBps = facts.maxWriteKBps;
    if (!LoadState()) {
        m_tracks.clear();
        m_closed = m_sessionOpen = false;
    }
}

std::uint32_t DiscEngine::Capacity() const {
    return m_config.capacity > 0 ? static_cast<std::uint32_t>(m_config.capacity) : FactsOf(m_medium).capacity;
}

bool DiscEngine::LoadState() {
    std::error_code ec;
    const fs::path image = PathFromUtf8(m_image);
    const fs::path state = PathFromUtf8(m_image + ".medium");
    if (m_medium == Medium::None) return true;
    if (!fs::exists(state, ec)) {
        // A plain image given as a disc that was written before.
        const std::uint64_t size = fs::exists(image, ec) ? fs::file_size(image, ec) : 0;
        if (m_config.state != InitialState::Blank && size >= 17 * kBlockSize && !ec) {
            m_tracks.push_back({0, static_cast<std::uint32_t>((size + kBlockSize - 1) / kBlockSize), false});
            m_closed = m_config.state == InitialState::Closed;
        }
        return true;
    }
    std::ifstream in(state);
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        ++number;
        std::istringstream fields(line);
        std::string key;
        fields >> key;
        if (key.empty() || key[0] == '#') continue;
        if (key == "medium") {
            std::string name;
            fields >> name;
            if (!MediumFromName(name, m_medium)) break;
        } else if (key == "closed") {
            fields >> m_closed;
        } else if (key == "open") {
            fields >> m_sessionOpen;
        } else if (key == "next-session") {
            fields >> m_nextSessionAllowed;
        } else if (key == "track") {
            TrackRecord t;
            fields >> t.start >> t.blocks >> t.damaged;
            if (!fields || (!m_tracks.empty() && t.start < m_tracks.back().start + m_tracks.back().blocks)) break;
            m_tracks.push_back(t);
            continue;
        } else {
            break;
        }
        if (!fields) break;
    }
    if (!in.eof()) {
        m_stateProblem = PathUtf8(state) + " line " + std::to_string(number) + " is damaged";
        m_medium = m_config.medium;
        return false;
    }
    return true;
}

bool DiscEngine::SaveState(std::string& error) const {
    const fs::path state = PathFromUtf8(m_image + ".medium");
    const fs::path temporary = PathFromUtf8(m_image + ".medium.new");
    {
        std::ofstream out(temporary, std::ios::trunc);
        out << "# simulated medium in " << PathUtf8(PathFromUtf8(m_image).filename()) << "\n";
        out << "medium " << FactsOf(m_medium).name << "\nclosed " << m_closed << "\nopen " << m_sessionOpen
            << "\nnext-session " << m_nextSessionAllowed << "\n";
        for (const TrackRecord& t : m_tracks) out << "track " << t.start << ' ' << t.blocks << ' ' << t.damaged << "\n";
        out.flush();
        if (!out) {
            error = "cannot write " + PathUtf8(temporary);
            return false;
        }
    }
    std::error_code ec;
    fs::rename(temporary, state, ec);
    if (ec) {
        error = "cannot replace " + PathUtf8(state) + ": " + ec.message();
        return false;
    }
    return true;
}

DISC_TYPE DiscEngine::InsertedType() const {
    return HasMedium() ? static_cast<DISC_TYPE>(m_medium) : DISC_TYPE_NO_MEDIA;
}

bool DiscEngine::HasMedium() const { return m_medium != Medium::None && !m_config.noMedium && !m_trayOpen; }

DeviceStatus DiscEngine::NotReady() const {
    return DeviceStatus::Sense(0x02, 0x3A, 0x00, "medium not present");
}

DeviceStatus DiscEngine::TestUnitReady() {
    if (!HasMedium()) return NotReady();
    if (m_notReady > 0) {
        --m_notReady;
        return DeviceStatus::Sense(0x02, 0x04, 0x01, "logical unit is in process of becoming ready");
    }
    return {};
}

std::uint32_t DiscEngine::NextWritableAddress() const {
    if (m_tracks.empty()) return 0;
    const TrackRecord& last = m_tracks.back();
    const std::uint64_t end = static_cast<std::uint64_t>(last.start) + last.blocks;
    return static_cast<std::uint32_t>((end + kTrackAlignment - 1) / kTrackAlignment * kTrackAlignment);
}

std::uint32_t DiscEngine::FreeBlocks() const {
    if (!HasMedium() || !FactsOf(m_medium).writable || Closed()) return 0;
    const std::uint32_t capacity = Capacity();
    const std::uint32_t nwa = NextWritableAddress();
    std::uint32_t free = nwa >= capacity ? 0 : capacity - nwa;
    if (m_config.freeBlocks >= 0) free = std::min<std::uint32_t>(free, static_cast<std::uint32_t>(m_config.freeBlocks));
    return free;
}

std::uint32_t DiscEngine::TrackStart(long track) const {
    return track >= 1 && static_cast<std::size_t>(track) <= m_tracks.size() ? m_tracks[track - 1].start : 0;
}

DeviceStatus DiscEngine::DiscInformation(STARBURN_DISC_INFORMATION& info) const {
    std::memset(&info, 0, sizeof info);
    if (!HasMedium()) return NotReady();
    const MediumFacts& facts = FactsOf(m_medium);
    info.m__BOOLEAN__IsValid = TRUE;
    info.m__UCHAR__DiscStatus = m_tracks.empty() ? DISC_STATUS_EMPTY : m_closed ? DISC_STATUS_COMPLETE : DISC_STATUS_INCOMPLETE;
    info.m__UCHAR__LastSessionStatus = m_sessionOpen ? LAST_SESSION_INCOMPLETE
                                       : m_closed   ? LAST_SESSION_COMPLETE
                                                    : LAST_SESSION_EMPTY;
    info.m__BOOLEAN__IsErasable = facts.erasable ? TRUE : FALSE;
    info.m__UCHAR__FirstTrackNumber = 1;
    info.m__UCHAR__NumberOfSessions = static_cast<UCHAR>(std::min<std::size_t>(m_tracks.size(), 255));
    info.m__UCHAR__LastSessionFirstTrack = info.m__UCHAR__LastSessionLastTrack =
        static_cast<UCHAR>(std::min<std::size_t>(std::max<std::size_t>(m_tracks.size(), 1), 255));
    info.m__UCHAR__DiscType = 0x00;  // CD-DA or CD-ROM (data)
    return {};
}

DeviceStatus DiscEngine::TrackInformation(long track, STARBURN_TRACK_INFORMATION& info) const {
    std::memset(&info, 0, sizeof info);
    if (!HasMedium()) return NotReady();
    info.m__BOOLEAN__IsValid = TRUE;
    info.m__UCHAR__DataMode = 1;
    info.m__UCHAR__TrackMode = 4;  // data, recorded uninterrupted
    if (track == TRACK_NUMBER_INVISIBLE || track == static_cast<long>(m_tracks.size()) + 1) {
        const std::uint32_t free = FreeBlocks();
        info.m__UCHAR__TrackNumber = static_cast<UCHAR>(std::min<std::size_t>(m_tracks.size() + 1, 255));
        info.m__UCHAR__SessionNumber = info.m__UCHAR__TrackNumber;
        info.m__BOOLEAN__IsBlank = TRUE;
        info.m__LONG__TrackStartAddress = static_cast<LONG>(NextWritableAddress());
        info.m__BOOLEAN__IsNextWritableAddressValid = free > 0 ? TRUE : FALSE;
        info.m__LONG__NextWritableAddress = static_cast<LONG>(NextWritableAddress());
        info.m__LONG__FreeLBs = static_cast<LONG>(free);
        return {};
    }
    if (track < 1 || static_cast<std::size_t>(track) > m_tracks.size())
        return DeviceStatus::Fail(EN_INVALID_INPUT_PARAMETER, "there is no track " + std::to_string(track));
    const TrackRecord& t = m_tracks[track - 1];
    info.m__UCHAR__TrackNumber = static_cast<UCHAR>(track);
    info.m__UCHAR__SessionNumber = static_cast<UCHAR>(track);
    info.m__BOOLEAN__IsDamage = t.damaged ? TRUE : FALSE;
    info.m__LONG__TrackStartAddress = static_cast<LONG>(t.start);
    info.m__LONG__NextWritableAddress = static_cast<LONG>(t.start + t.blocks);
    return {};
}

DeviceStatus DiscEngine::LastTrack(long& number) const {
    number = 0;
    if (!HasMedium()) return NotReady();
    number = static_cast<long>(m_tracks.size());
    return {};
}

DeviceStatus DiscEngine::SetSpeeds(std::uint32_t readKBps, std::uint32_t writeKBps) {
    if (!HasMedium()) return NotReady();
    if (m_config.failSpeeds) return DeviceStatus::Sense(0x05, 0x24, 0x00, "invalid field in CDB (SET CD SPEED)");
    const std::uint32_t top = FactsOf(m_medium).maxWriteKBps;
    m_readKBps = std::min(readKBps, std::max(top, 1u) * 2);
    m_writeKBps = std::min(writeKBps, top);
    return {};
}

void DiscEngine::Speeds(std::uint32_t& read, std::uint32_t& maxRead, std::uint32_t& write, std::uint32_t& maxWrite) const {
    const std::uint32_t top = FactsOf(m_medium).maxWriteKBps;
    read = m_readKBps;
    maxRead = std::max(top, 1u) * 2;
    write = m_writeKBps;
    maxWrite = top;
}

DeviceStatus DiscEngine::SetBup(bool enabled) {
    if (enabled && !m_config.bufferUnderrunProtection)
        return DeviceStatus::Sense(0x05, 0x24, 0x00, "buffer underrun protection is not supported");
    m_bup = enabled;
    return {};
}

DeviceStatus DiscEngine::SendOpc() const {
    if (!HasMedium()) return NotReady();
    if (m_config.failOpc) return DeviceStatus::Sense(0x03, 0x73, 0x01, "power calibration area almost full");
    return {};
}

DeviceStatus DiscEngine::Blank() {
    if (!HasMedium()) return NotReady();
    if (!FactsOf(m_medium).erasable)
        return DeviceStatus::Fail(EN_INVALID_STATE, std::string("a ") + FactsOf(m_medium).name + " medium cannot be erased");
    if (m_config.failErase) return DeviceStatus::Sense(0x03, 0x51, 0x00, "erase failure");
    BlockFile file;
    if (!file.Open(PathFromUtf8(m_image), BlockFile::Mode::ReadWrite) || !file.Truncate(0))
        return {EN_SYSTEM_CALL_FAILED, file.LastErrorNumber(), file.LastError()};
    m_tracks.clear();
    m_closed = m_sessionOpen = false;
    m_nextSessionAllowed = true;
    m_pendingDescriptors.clear();
    std::string error;
    if (!SaveState(error)) return DeviceStatus::Fail(EN_SYSTEM_CALL_FAILED, error);
    return {};
}

DeviceStatus DiscEngine::WriteTrack(IsoImage& image, bool nextSessionAllowed,
                                    const std::function<void(std::uint64_t, std::uint64_t)>& progress) {
    if (!HasMedium()) return NotReady();
    const MediumFacts& facts = FactsOf(m_medium);
    if (!facts.writable)
        return DeviceStatus::Sense(0x05, 0x30, 0x05, std::string("a ") + facts.name + " medium cannot be written");
    if (Closed()) return DeviceStatus::Sense(0x05, 0x72, 0x03, "the disc is closed; no session can be added");
    if (!image.IsBuilt()) return DeviceStatus::Fail(EN_INVALID_STATE, "the file tree has not been built into an image");
    const std::uint32_t nwa = NextWritableAddress();
    if (image.StartLba() != nwa)
        return DeviceStatus::Fail(EN_INVALID_INPUT_PARAMETER, "the image was built for block " +
                                                                  std::to_string(image.StartLba()) +
                                                                  " but the next writable address is " + std::to_string(nwa));
    std::uint32_t blocks = image.Blocks();
    if (facts.cd) blocks = std::max(blocks, kMinimumCdTrack);
    if (blocks > FreeBlocks())
        return DeviceStatus::Fail(EN_FILE_TOO_BIG, "the track needs " + std::to_string(blocks) + " blocks but the medium has " +
                                                       std::to_string(FreeBlocks()) + " free");
    std::uint64_t failAt = UINT64_MAX;  // block of the track where the write error strikes
    if (m_config.writeErrorBlock >= 0) failAt = static_cast<std::uint64_t>(m_config.writeErrorBlock);
    if (m_config.writeErrorPercent >= 0) failAt = static_cast<std::uint64_t>(blocks) * m_config.writeErrorPercent / 100;

    BlockFile file;
    if (!file.Open(PathFromUtf8(m_image), BlockFile::Mode::ReadWrite))
        return {EN_SYSTEM_CALL_FAILED, file.LastErrorNumber(), file.LastError()};
    std::uint64_t fileSize = 0;
    if (!file.Size(fileSize)) return {EN_SYSTEM_CALL_FAILED, file.LastErrorNumber(), file.LastError()};
    const std::uint64_t base = static_cast<std::uint64_t>(nwa) * kBlockSize;
    if (fileSize > base && !file.Truncate(base)) return {EN_SYSTEM_CALL_FAILED, file.LastErrorNumber(), file.LastError()};
    fileSize = std::min(fileSize, base);

    m_pendingDescriptors.assign(static_cast<std::size_t>(image.DescriptorEnd() - kSystemAreaBlocks) * kBlockSize, 0);
    const std::uint64_t descriptorsBegin = static_cast<std::uint64_t>(kSystemAreaBlocks) * kBlockSize;
    const std::uint64_t descriptorsEnd = static_cast<std::uint64_t>(image.DescriptorEnd()) * kBlockSize;
    const std::uint64_t total = static_cast<std::uint64_t>(blocks) * kBlockSize;
    std::uint64_t written = 0;
    DeviceStatus failure;
    StreamError streamError;
    const bool read = PumpImage(image, total, kChunk, [&](std::uint8_t* chunk, std::size_t want) {
        // Hold the descriptor blocks back: the session only becomes readable when it is closed.
        const std::uint64_t from = std::max(written, descriptorsBegin), to = std::min(written + want, descriptorsEnd);
        if (from < to) {
            std::memcpy(&m_pendingDescriptors[from - descriptorsBegin], &chunk[from - written], to - from);
            std::memset(&chunk[from - written], 0, to - from);
        }
        std::size_t usable = want;
        if (failAt != UINT64_MAX && (written + want) / kBlockSize > failAt) {
            usable = static_cast<std::size_t>(failAt * kBlockSize - written);
            failure = DeviceStatus::Sense(0x03, 0x0C, 0x00, "write error at block " + std::to_string(nwa + failAt));
        }
        // Zeros beyond the end of the file are left as a hole (sparse image), so large empty areas cost no disk.
        const std::uint64_t at = base + written;
        if (usable > 0 && !(at >= fileSize && AllZero(chunk, usable))) {
            if (!file.WriteAt(at, chunk, usable)) {
                failure = {EN_SYSTEM_CALL_FAILED, file.LastErrorNumber(), file.LastError()};
                return false;
            }
            fileSize = std::max(fileSize, at + usable);
        }
        written += usable;
        if (progress) progress(written / kBlockSize, blocks);
        return failure.Ok();
    }, streamError);
    if (!read && failure.Ok()) failure = {EN_SYSTEM_CALL_FAILED, streamError.systemError, streamError.why};
    if (failure.Ok() && fileSize < base + total && !file.Truncate(base + total))
        failure = {EN_SYSTEM_CALL_FAILED, file.LastErrorNumber(), file.LastError()};
    if (failure.Ok() && !file.Flush()) failure = {EN_SYSTEM_CALL_FAILED, file.LastErrorNumber(), file.LastError()};
    file.Close();
    if (written > 0 || failure.Ok()) {
        m_tracks.push_back({nwa, static_cast<std::uint32_t>(failure.Ok() ? blocks : (written + kBlockSize - 1) / kBlockSize),
                            !failure.Ok()});
        m_sessionOpen = true;
        m_nextSessionAllowed = nextSessionAllowed;
    }
    if (!failure.Ok()) m_pendingDescriptors.clear();
    std::string error;
    if (!SaveState(error) && failure.Ok()) failure = DeviceStatus::Fail(EN_SYSTEM_CALL_FAILED, error);
    return failure;
}

DeviceStatus DiscEngine::CloseSession() {
    if (!HasMedium()) return NotReady();
    if (!m_sessionOpen) return DeviceStatus::Fail(EN_INVALID_STATE, "no session is open");
    if (m_config.failClose) return DeviceStatus::Sense(0x03, 0x73, 0x00, "close session failed (CD control error)");
    if (m_tracks.back().damaged || m_pendingDescriptors.empty())
        return DeviceStatus::Sense(0x03, 0x0C, 0x00, "the last track is damaged; its session cannot be closed");
    BlockFile file;
    if (!file.Open(PathFromUtf8(m_image), BlockFile::Mode::ReadWrite))
        return {EN_SYSTEM_CALL_FAILED, file.LastErrorNumber(), file.LastError()};
    const std::uint64_t start = static_cast<std::uint64_t>(m_tracks.back().start + kSystemAreaBlocks) * kBlockSize;
    if (!file.WriteAt(start, m_pendingDescriptors.data(), m_pendingDescriptors.size()) ||
        (start != kSystemAreaBlocks * kBlockSize &&
         !file.WriteAt(kSystemAreaBlocks * kBlockSize, m_pendingDescriptors.data(), m_pendingDescriptors.size())) ||
        !file.Flush())
        return {EN_SYSTEM_CALL_FAILED, file.LastErrorNumber(), file.LastError()};
    m_pendingDescriptors.clear();
    m_sessionOpen = false;
    m_closed = !m_nextSessionAllowed;
    std::string error;
    if (!SaveState(error)) return DeviceStatus::Fail(EN_SYSTEM_CALL_FAILED, error);
    return {};
}

DeviceStatus DiscEngine::Eject() {
    if (m_config.failEject) return DeviceStatus::Sense(0x02, 0x53, 0x02, "medium removal prevented");
    m_trayOpen = true;
    return {};
}

DeviceStatus DiscEngine::Load() {
    m_trayOpen = false;
    return {};
}

bool DiscEngine::ReadBlocks(std::uint32_t lba, std::uint32_t count, std::uint8_t* out) {
    if (!HasMedium() || count == 0) return false;
    // Only recorded blocks can be read.
    bool recorded = false;
    for (const TrackRecord& t : m_tracks)
        if (lba >= t.start && static_cast<std::uint64_t>(lba) + count <= static_cast<std::uint64_t>(t.start) + t.blocks)
            recorded = true;
    if (!recorded) return false;
    BlockFile file;
    std::size_t got = 0;
    const std::size_t bytes = static_cast<std::size_t>(count) * kBlockSize;
    if (!file.Open(PathFromUtf8(m_image), BlockFile::Mode::Read) ||
        !file.ReadAt(static_cast<std::uint64_t>(lba) * kBlockSize, out, bytes, got))
        return false;
    std::memset(out + got, 0, bytes - got);  // a sparse tail reads as zeros
    return true;
}

}  // namespace uc::disc
