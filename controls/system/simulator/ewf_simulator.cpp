// The simulated write filter's model: state file reading and writing, EWF records, boot commands and restarts.
#include "system/simulator/ewf_simulator.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <limits>

#include "platform/text.h"
#include "system/ewf_text.h"

namespace uc::ewf::sim {
namespace {

constexpr ULong ErrorDiskFull = 112;
constexpr std::size_t MaxVolumes = 26;  // one per drive letter
constexpr std::uint16_t MaxLevelsLimit = 9;

struct Named {
    int value;
    const wchar_t* name;
};
constexpr Named kTypes[] = {{EWF_DISK, L"disk"}, {EWF_RAM, L"ram"}, {EWF_RAM_REG, L"ram_reg"}};
constexpr Named kStates[] = {{EWF_ENABLED, L"enabled"}, {EWF_DISABLED, L"disabled"}};
constexpr Named kCommands[] = {{EWF_NO_CMD, L"none"},  {EWF_ENABLE, L"enable"},  {EWF_DISABLE, L"disable"},
                               {EWF_SET_LEVEL, L"restore"}, {EWF_COMMIT, L"commit"}};

std::wstring Lower(std::wstring s) {
    for (wchar_t& c : s) c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
    return s;
}

template <std::size_t N>
const wchar_t* NameOf(const Named (&table)[N], int value) {
    for (const Named& n : table)
        if (n.value == value) return n.name;
    return L"?";
}

template <std::size_t N>
std::optional<int> ValueOf(const Named (&table)[N], const std::wstring& text) {
    const std::wstring t = Lower(text);
    for (const Named& n : table)
        if (t == n.name) return n.value;
    return std::nullopt;
}

template <std::size_t N>
std::wstring Choices(const Named (&table)[N]) {
    std::wstring out;
    for (std::size_t i = 0; i < N; ++i) out += (i ? (i + 1 == N ? L" or " : L", ") : L"") + std::wstring(table[i].name);
    return out;
}

// Whole unsigned decimal numbers up to `limit`.
bool ParseUnsigned(const std::wstring& text, std::uint64_t limit, std::uint64_t& value) {
    if (text.empty() || text.size() > 20) return false;
    std::uint64_t v = 0;
    for (wchar_t c : text) {
        if (c < L'0' || c > L'9') return false;
        const std::uint64_t digit = static_cast<std::uint64_t>(c - L'0');
        if (v > (limit - digit) / 10) return false;
        v = v * 10 + digit;
    }
    value = v;
    return true;
}

// Reads the optional values of one section into typed fields, collecting the first error.
class Reader {
public:
    Reader(const IniDocument& doc, std::wstring section, std::wstring& error)
        : m_doc(doc), m_section(std::move(section)), m_error(error) {}

    bool Has(const wchar_t* key) const { return m_doc.Get(m_section, key).has_value(); }

    template <class T>
    void Number(const wchar_t* key, T& field, std::uint64_t limit = std::numeric_limits<T>::max()) {
        auto text = m_doc.Get(m_section, key);
        if (!text || !m_error.empty()) return;
        std::uint64_t v = 0;
        if (!ParseUnsigned(*text, limit, v))
            Fail(key, *text, L"a whole number from 0 to " + std::to_wstring(limit));
        else
            field = static_cast<T>(v);
    }
    void Text(const wchar_t* key, std::wstring& field) {
        if (auto text = m_doc.Get(m_section, key)) field = *text;
    }
    void Flag(const wchar_t* key, bool& field) {
        std::uint32_t v = field ? 1 : 0;
        Number(key, v, 1);
        field = v != 0;
    }
    template <class E, std::size_t N>
    void Choice(const wchar_t* key, E& field, const Named (&table)[N]) {
        auto text = m_doc.Get(m_section, key);
        if (!text || !m_error.empty()) return;
        if (auto v = ValueOf(table, *text))
            field = static_cast<E>(*v);
        else
            Fail(key, *text, Choices(table));
    }
    void Letter(const wchar_t* key, wchar_t& field) {
        auto text = m_doc.Get(m_section, key);
        if (!text || !m_error.empty()) return;
        std::wstring t = *text;
        if (t.size() == 2 && t[1] == L':') t.pop_back();
        const wchar_t c = t.size() == 1 ? static_cast<wchar_t>(std::towupper(static_cast<wint_t>(t[0]))) : 0;
        if (c < L'A' || c > L'Z')
            Fail(key, *text, L"a drive letter A to Z");
        else
            field = c;
    }
    void Commands(const wchar_t* key, std::vector<EWF_COMMAND>& field) {
        auto text = m_doc.Get(m_section, key);
        if (!text || !m_error.empty()) return;
        field.clear();
        std::size_t pos = 0;
        while (pos <= text->size()) {
            std::size_t comma = text->find(L',', pos);
            std::wstring item = text->substr(pos, comma == std::wstring::npos ? std::wstring::npos : comma - pos);
            item.erase(0, item.find_first_not_of(L" \t"));
            item.erase(item.find_last_not_of(L" \t") + 1);
            if (item == L"clear") item = L"none";
            if (!item.empty()) {
                auto v = ValueOf(kCommands, item);
                if (!v) {
                    Fail(key, item, L"enable, disable, commit, restore or clear");
                    return;
                }
                field.push_back(static_cast<EWF_COMMAND>(*v));
            }
            if (comma == std::wstring::npos) break;
            pos = comma + 1;
        }
    }
    void Fail(const std::wstring& key, const std::wstring& value, const std::wstring& expected) {
        if (m_error.empty()) m_error = L"[" + m_section + L"] " + key + L"='" + value + L"' is not " + expected;
    }

private:
    const IniDocument& m_doc;
    std::wstring m_section;
    std::wstring& m_error;
};

std::wstring VolumeSection(std::size_t index) { return L"volume" + std::to_wstring(index + 1); }

SimVolume DefaultVolume(std::size_t index) {
    SimVolume v;
    const std::wstring n = std::to_wstring(index + 1);
    v.name = L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolume" + n;
    v.device = L"\\Device\\HarddiskVolume" + n;
    v.letter = static_cast<wchar_t>(L'C' + std::min<std::size_t>(index, 23));
    return v;
}

// Copies `text` into a fixed-size EWF field, always leaving a terminating null.
void CopyName(WChar* field, std::size_t capacity, const std::wstring& text) {
    const EwfString s = ToEwfString(text);
    const std::size_t n = std::min(s.size(), capacity - 1);
    std::copy(s.begin(), s.begin() + static_cast<std::ptrdiff_t>(n), field);
    field[n] = 0;
}

void FillVolumeDesc(EWF_VOLUME_DESC& desc, const SimVolume& v) {
    CopyName(desc.DeviceName, MaxDeviceNameLength, v.device);
    // A stable identifier derived from the device name (FNV-1a), so two volumes never share one.
    std::uint64_t h = 1469598103934665603ull;
    for (wchar_t c : v.device) h = (h ^ static_cast<std::uint64_t>(c)) * 1099511628211ull;
    for (std::size_t i = 0; i < VolumeIdSize; ++i) desc.VolumeID[i] = static_cast<UChar>(h >> ((i % 8) * 8)) ^ static_cast<UChar>(i);
}

bool IsRefused(const SimFaults& f, EWF_COMMAND c) { return std::find(f.refused.begin(), f.refused.end(), c) != f.refused.end(); }

}  // namespace

const wchar_t* TypeName(EWF_TYPE type) { return NameOf(kTypes, type); }
const wchar_t* StateName(EWF_STATE state) { return NameOf(kStates, state); }
const wchar_t* CommandName(EWF_COMMAND command) { return NameOf(kCommands, command); }
std::optional<EWF_COMMAND> ParseCommandName(const std::wstring& text) {
    if (Lower(text) == L"clear") return EWF_NO_CMD;
    if (auto v = ValueOf(kCommands, text)) return static_cast<EWF_COMMAND>(*v);
    return std::nullopt;
}

WriteFilterSimulator::WriteFilterSimulator() { m_volumes.push_back(DefaultVolume(0)); }

bool WriteFilterSimulator::Parse(const std::wstring& text, std::wstring& error) {
    error.clear();
    IniDocument doc;
    doc.Parse(text);
    SimStore store;
    SimFaults faults;
    std::vector<SimVolume> volumes;

    Reader s(doc, L"store", error);
    s.Number(L"segments", store.segments);
    s.Number(L"segment_size", store.segmentSize, 1u << 30);

    // Volumes are [volume1], [volume2], ... up to the first number without a section of its own.
    for (std::size_t i = 0; i < MaxVolumes && error.empty(); ++i) {
        Reader r(doc, VolumeSection(i), error);
        static const wchar_t* const kKeys[] = {L"name",      L"device",    L"letter", L"type",  L"state",
                                               L"command",   L"commit_on_disable", L"used", L"committed",
                                               L"max_levels", L"level"};
        if (std::none_of(std::begin(kKeys), std::end(kKeys), [&](const wchar_t* k) { return r.Has(k); })) break;
        SimVolume v = DefaultVolume(i);
        r.Text(L"name", v.name);
        r.Text(L"device", v.device);
        r.Letter(L"letter", v.letter);
        r.Choice(L"type", v.type, kTypes);
        r.Choice(L"state", v.state, kStates);
        r.Choice(L"command", v.command, kCommands);
        r.Flag(L"commit_on_disable", v.commitOnDisable);
        r.Number(L"used", v.used);
        r.Number(L"committed", v.committed);
        r.Number(L"max_levels", v.maxLevels, MaxLevelsLimit);
        r.Number(L"level", v.level, MaxLevelsLimit);
        if (!error.empty()) break;
        auto badName = [](const std::wstring& n) {
            // Names cross the library boundary null-terminated and live on one line of the file.
            return n.empty() || std::any_of(n.begin(), n.end(), [](wchar_t c) { return c < 0x20 || c == 0x7F; });
        };
        if (badName(v.name) || badName(v.device)) {
            const bool name = badName(v.name);
            r.Fail(name ? L"name" : L"device", name ? v.name : v.device, L"a volume name (no control characters)");
        } else if (v.device.size() >= MaxDeviceNameLength) {
            r.Fail(L"device", v.device, L"shorter than 256 characters");
        } else if (v.maxLevels == 0 || v.level == 0 || v.level > v.maxLevels) {
            r.Fail(L"level", std::to_wstring(v.level), L"from 1 to max_levels (" + std::to_wstring(v.maxLevels) + L")");
        } else {
            for (const SimVolume& other : volumes)
                if (Lower(other.name) == Lower(v.name) || Lower(other.device) == Lower(v.device))
                    r.Fail(L"name", v.name, L"unique among the volumes");
        }
        volumes.push_back(std::move(v));
    }

    Reader f(doc, L"faults", error);
    f.Number(L"list_error", faults.listError);
    f.Number(L"open_fail", faults.openFailVolume, MaxVolumes);
    f.Number(L"open_error", faults.openError);
    f.Number(L"config_fail", faults.configFailVolume, MaxVolumes);
    f.Number(L"config_error", faults.configError);
    f.Number(L"letter_fail", faults.letterFailVolume, MaxVolumes);
    f.Number(L"store_error", faults.storeError);
    f.Commands(L"refuse", faults.refused);
    f.Number(L"refuse_error", faults.refuseError);

    if (error.empty()) {
        std::uint64_t used = 0;
        for (const SimVolume& v : volumes)
            if (v.type == EWF_DISK) used += v.used;
        if (used > store.segments)
            error = L"[store] segments=" + std::to_wstring(store.segments) + L" is less than the disk overlays use (" +
                    std::to_wstring(used) + L")";
    }
    if (!error.empty()) return false;
    m_volumes = std::move(volumes);
    m_store = store;
    m_faults = std::move(faults);
    m_document = std::move(doc);
    return true;
}

void WriteFilterSimulator::StoreState(IniDocument& doc) const {
    doc.Set(L"store", L"segments", std::to_wstring(m_store.segments));
    doc.Set(L"store", L"segment_size", std::to_wstring(m_store.segmentSize));
    for (std::size_t i = 0; i < m_volumes.size(); ++i) {
        const SimVolume& v = m_volumes[i];
        const std::wstring s = VolumeSection(i);
        doc.Set(s, L"name", v.name);
        doc.Set(s, L"device", v.device);
        doc.Set(s, L"letter", std::wstring(1, v.letter));
        doc.Set(s, L"type", TypeName(v.type));
        doc.Set(s, L"state", StateName(v.state));
        doc.Set(s, L"command", CommandName(v.command));
        doc.Set(s, L"commit_on_disable", v.commitOnDisable ? L"1" : L"0");
        doc.Set(s, L"used", std::to_wstring(v.used));
        doc.Set(s, L"committed", std::to_wstring(v.committed));
        doc.Set(s, L"level", std::to_wstring(v.level));
        doc.Set(s, L"max_levels", std::to_wstring(v.maxLevels));
    }
}

std::wstring WriteFilterSimulator::Serialize() const {
    IniDocument doc = m_document;
    StoreState(doc);
    return doc.Serialize();
}

bool WriteFilterSimulator::ListVolumes(std::vector<std::wstring>& names, ULong& error) const {
    if (m_faults.listError) {
        error = m_faults.listError;
        return false;
    }
    names.clear();
    for (const SimVolume& v : m_volumes) names.push_back(v.name);
    return true;
}

std::optional<std::size_t> WriteFilterSimulator::OpenVolume(const std::wstring& name, ULong& error) const {
    const std::wstring wanted = Lower(name);
    for (std::size_t i = 0; i < m_volumes.size(); ++i) {
        if (Lower(m_volumes[i].name) != wanted && Lower(m_volumes[i].device) != wanted) continue;
        if (m_faults.openFailVolume == static_cast<int>(i + 1)) {
            error = m_faults.openError;
            return std::nullopt;
        }
        return i;
    }
    error = ErrorFileNotFound;
    return std::nullopt;
}

std::optional<std::size_t> WriteFilterSimulator::FindDevice(const std::wstring& device) const {
    const std::wstring wanted = Lower(device);
    for (std::size_t i = 0; i < m_volumes.size(); ++i)
        if (Lower(m_volumes[i].device) == wanted) return i;
    return std::nullopt;
}

wchar_t WriteFilterSimulator::DriveLetter(const std::wstring& name, ULong& error) const {
    const std::wstring wanted = Lower(name);
    for (std::size_t i = 0; i < m_volumes.size(); ++i) {
        if (Lower(m_volumes[i].name) != wanted) continue;
        if (m_faults.letterFailVolume != static_cast<int>(i + 1)) return m_volumes[i].letter;
        break;
    }
    error = ErrorFileNotFound;
    return static_cast<wchar_t>(0xFFFF);
}

EWF_VOLUME_CONFIG* WriteFilterSimulator::NewVolumeConfig(std::size_t volume, void* (*alloc)(std::size_t), ULong& error) const {
    if (volume >= m_volumes.size()) {
        error = ErrorInvalidHandle;
        return nullptr;
    }
    if (m_faults.configFailVolume == static_cast<int>(volume + 1)) {
        error = m_faults.configError;
        return nullptr;
    }
    const SimVolume& v = m_volumes[volume];
    const std::size_t bytes = sizeof(EWF_VOLUME_CONFIG) + (v.maxLevels - 1u) * sizeof(EWF_LEVEL_DESC);
    auto* c = static_cast<EWF_VOLUME_CONFIG*>(alloc(bytes));
    if (!c) {
        error = ErrorNotEnoughMemory;
        return nullptr;
    }
    std::memset(static_cast<void*>(c), 0, bytes);
    c->Type = v.type;
    c->State = v.state;
    c->BootCommand = v.command;
    c->MaxLevels = v.maxLevels;
    c->ClumpSize = 512;
    // EWF reports level 0 for a disabled overlay.
    c->CurrentLevel = v.state == EWF_ENABLED ? v.level : 0;
    const LongLong data = static_cast<LongLong>(v.used) * m_store.segmentSize;
    if (v.type == EWF_DISK) {
        c->DiskOverlay.DiskMapSize = static_cast<LongLong>(v.used) * 16;
        c->DiskOverlay.DiskDataSize = data;
    } else {
        c->RamOverlay.RamDataSize = data;
    }
    FillVolumeDesc(c->VolumeDesc, v);
    for (std::uint16_t l = 0; l < v.maxLevels; ++l) {
        EWF_LEVEL_DESC& d = c->LevelDescArray[l];
        CopyName(d.LevelName, MaxLevelNameLength, L"Level " + std::to_wstring(l + 1));
        if (l + 1u == v.level && v.state == EWF_ENABLED) d.LevelDataSize = data;
    }
    return c;
}

bool WriteFilterSimulator::OpenStore(ULong& error) const {
    if (m_faults.storeError) {
        error = m_faults.storeError;
        return false;
    }
    return true;
}

std::uint32_t WriteFilterSimulator::FreeSegments() const {
    std::uint64_t used = 0;
    for (const SimVolume& v : m_volumes)
        if (v.type == EWF_DISK) used += v.used;
    return used >= m_store.segments ? 0u : static_cast<std::uint32_t>(m_store.segments - used);
}

EWF_OVERLAY_STORE_CONFIG* WriteFilterSimulator::NewStoreConfig(void* (*alloc)(std::size_t), ULong& error) const {
    if (!OpenStore(error)) return nullptr;
    const std::size_t count = m_volumes.size();
    const std::size_t bytes = sizeof(EWF_OVERLAY_STORE_CONFIG) + (count > 1 ? count - 1 : 0) * sizeof(EWF_VOLUME_DESC);
    auto* c = static_cast<EWF_OVERLAY_STORE_CONFIG*>(alloc(bytes));
    if (!c) {
        error = ErrorNotEnoughMemory;
        return nullptr;
    }
    std::memset(static_cast<void*>(c), 0, bytes);
    c->FormatVersion = 1;
    c->VolumeSize = static_cast<LongLong>(m_store.segments) * m_store.segmentSize;
    c->NumSegments = m_store.segments;
    c->FreeSegments = FreeSegments();
    c->SegmentSize = m_store.segmentSize;
    c->MaxVolumes = static_cast<ULong>(MaxVolumes);
    c->NumVolumes = static_cast<ULong>(count);
    std::uint16_t levels = 1;
    for (std::size_t i = 0; i < count; ++i) {
        FillVolumeDesc(c->VolumeDescArray[i], m_volumes[i]);
        levels = std::max(levels, m_volumes[i].maxLevels);
    }
    c->MaxLevels = levels;
    return c;
}

bool WriteFilterSimulator::Command(std::size_t volume, EWF_COMMAND command, bool commitFirst, ULong& error) {
    if (volume >= m_volumes.size()) {
        error = ErrorInvalidHandle;
        return false;
    }
    if (IsRefused(m_faults, command)) {
        error = m_faults.refuseError;
        return false;
    }
    SimVolume& v = m_volumes[volume];
    // A registry-described RAM overlay keeps no store to discard into: it can only be disabled by committing.
    if (command == EWF_DISABLE && !commitFirst && v.type == EWF_RAM_REG) {
        error = ErrorNotSupported;
        return false;
    }
    v.command = command;
    v.commitOnDisable = command == EWF_DISABLE && commitFirst;
    return true;
}

bool WriteFilterSimulator::Write(std::size_t volume, std::uint32_t segments, ULong& error) {
    if (volume >= m_volumes.size()) {
        error = ErrorInvalidHandle;
        return false;
    }
    SimVolume& v = m_volumes[volume];
    if (v.state == EWF_DISABLED) {
        v.committed = static_cast<std::uint32_t>(std::min<std::uint64_t>(std::uint64_t{v.committed} + segments, UINT32_MAX));
        return true;
    }
    if (v.type == EWF_DISK && segments > FreeSegments()) {
        error = ErrorDiskFull;
        return false;
    }
    if (std::uint64_t{v.used} + segments > UINT32_MAX) {
        error = ErrorDiskFull;
        return false;
    }
    v.used += segments;
    return true;
}

void WriteFilterSimulator::Restart() {
    for (SimVolume& v : m_volumes) {
        auto commitOverlay = [&] {
            v.committed = static_cast<std::uint32_t>(std::min<std::uint64_t>(std::uint64_t{v.committed} + v.used, UINT32_MAX));
            v.used = 0;
            v.level = 1;
        };
        switch (v.command) {
        case EWF_ENABLE:
            // Enabling starts an empty overlay; an overlay already enabled is left as it is.
            if (v.state != EWF_ENABLED) {
                v.state = EWF_ENABLED;
                v.used = 0;
                v.level = 1;
            }
            break;
        case EWF_DISABLE:
            if (v.commitOnDisable) commitOverlay();
            v.state = EWF_DISABLED;
            v.used = 0;
            v.level = 1;
            break;
        case EWF_COMMIT:
            if (v.state == EWF_ENABLED) commitOverlay();
            break;
        case EWF_SET_LEVEL:
            // Restore: the current level's changes are discarded and the level below becomes current.
            v.used = 0;
            if (v.level > 1) --v.level;
            break;
        default:
            break;
        }
        // RAM overlays do not survive a restart; a disk overlay does.
        if (v.type != EWF_DISK) v.used = 0;
        v.command = EWF_NO_CMD;
        v.commitOnDisable = false;
    }
}

}  // namespace uc::ewf::sim
