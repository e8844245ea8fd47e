// The simulated "EWFAPI.dll": the write filter's management exports over WriteFilterSimulator and a state file.
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/ini_file.h"
#include "platform/text.h"
#include "system/ewf_api.h"
#include "system/ewf_text.h"
#include "system/simulator/ewf_sim_host.h"
#include "system/simulator/ewf_simulator.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#ifdef _WIN32
#define UC_EWF_EXPORT extern "C" __declspec(dllexport)
#else
#define UC_EWF_EXPORT extern "C" __attribute__((visibility("default")))
#endif

using namespace uc::ewf;
using uc::ewf::sim::WriteFilterSimulator;

namespace {

constexpr ULong ErrorFileCorrupt = 1392;

// The list EWF hands out when no volume is protected: not allocated, so popping or deleting it frees nothing.
EWF_VOLUME_NAME_ENTRY g_emptyList{nullptr, {0}};
void FreeEntry(EWF_VOLUME_NAME_ENTRY* entry) {
    if (entry != &g_emptyList) FreeRecord(entry);
}

// Every call loads the state, acts and saves what changed, so separate processes (the console, the service
// tool) see one filter, and a restart acted out by one is seen by all.
struct Shared {
    std::mutex mutex;
    std::optional<WriteFilterSimulator> memory;  // the state when no file is used
    struct Open {
        bool store = false;
        std::wstring device;  // volume handles find their volume again by device name
    };
    std::map<std::uintptr_t, Open> handles;
    std::uintptr_t nextHandle = 0x1000;
    std::wstring problem;  // why the state file could not be used
};
Shared& State() {
    // Never destroyed: a manager destroyed during the host's exit may still close its handles here.
    static Shared* s = [] {
        auto* shared = new Shared;
#if defined(__SANITIZE_ADDRESS__)
        __lsan_ignore_object(shared);  // kept on purpose, also after the module is unloaded
#endif
        return shared;
    }();
    return *s;
}
std::atomic<ULong> g_calls{0};

std::wstring StatePath() {
    std::wstring path = uc::ewf::sim::StatePathFromEnvironment();
    if (!path.empty()) return path;
    const std::wstring folder = uc::ewf::sim::ModuleFolder();
    if (folder.empty()) return {};
    const std::filesystem::path beside = uc::ToFsPath(folder) / L"EWFAPI.ini";
    std::error_code ec;
    return std::filesystem::exists(beside, ec) ? uc::FromFsPath(beside) : std::wstring();
}

// One call's view of the filter, holding the lock for the call.
class Session {
public:
    Session() : m_lock(State().mutex), m_path(StatePath()) {
        ++g_calls;
        Shared& s = State();
        if (m_path.empty()) {
            if (!s.memory) s.memory.emplace();
            m_sim = *s.memory;
            s.problem.clear();
            return;
        }
        uc::IniDocument doc;
        std::wstring error;
        if (doc.Load(m_path) && !m_sim.Parse(doc.Serialize(), error)) {
            s.problem = m_path + L": " + error;
            m_ok = false;
            return;
        }
        s.problem.clear();
    }
    // False (with the error set) when the state file is unusable.
    bool Ok() const {
        if (!m_ok) SetLastError(ErrorFileCorrupt);
        return m_ok;
    }
    WriteFilterSimulator& Sim() { return m_sim; }
    Shared& Handles() { return State(); }

    bool Save() {
        if (m_path.empty()) {
            State().memory = m_sim;
            return true;
        }
        uc::IniDocument doc;
        doc.Parse(m_sim.Serialize());
        return doc.Save(m_path);
    }

    // The volume behind an open volume handle.
    std::optional<std::size_t> Volume(Handle h) {
        auto it = State().handles.find(reinterpret_cast<std::uintptr_t>(h));
        if (!h || it == State().handles.end() || it->second.store) {
            SetLastError(ErrorInvalidHandle);
            return std::nullopt;
        }
        auto index = m_sim.FindDevice(it->second.device);
        if (!index) SetLastError(ErrorFileNotFound);
        return index;
    }
    bool IsStore(Handle h) {
        auto it = State().handles.find(reinterpret_cast<std::uintptr_t>(h));
        if (it != State().handles.end() && it->second.store) return true;
        SetLastError(ErrorInvalidHandle);
        return false;
    }
    Handle NewHandle(bool store, const std::wstring& device) {
        Shared& s = State();
        const std::uintptr_t id = s.nextHandle;
        s.nextHandle += 8;
        s.handles[id] = {store, device};
        return reinterpret_cast<Handle>(id);
    }

private:
    std::unique_lock<std::mutex> m_lock;
    std::wstring m_path;
    WriteFilterSimulator m_sim;
    bool m_ok = true;
};

Bool Fail(ULong error) {
    SetLastError(error);
    return 0;
}

Bool VolumeCommand(Handle h, EWF_COMMAND command, bool commitFirst) {
    Session s;
    if (!s.Ok()) return 0;
    auto volume = s.Volume(h);
    if (!volume) return 0;
    ULong error = 0;
    if (!s.Sim().Command(*volume, command, commitFirst, error)) return Fail(error);
    if (!s.Save()) return Fail(ErrorAccessDenied);
    return 1;
}

}  // namespace

UC_EWF_EXPORT EWF_VOLUME_NAME_ENTRY* UC_EWF_CALL EwfMgrGetProtectedVolumeList() {
    Session s;
    if (!s.Ok()) return nullptr;
    std::vector<std::wstring> names;
    ULong error = 0;
    if (!s.Sim().ListVolumes(names, error)) {
        SetLastError(error);
        return nullptr;
    }
    if (names.empty()) return &g_emptyList;
    EWF_VOLUME_NAME_ENTRY* head = nullptr;
    for (auto it = names.rbegin(); it != names.rend(); ++it) {
        const EwfString name = ToEwfString(*it);
        auto* entry = static_cast<EWF_VOLUME_NAME_ENTRY*>(
            AllocRecord(offsetof(EWF_VOLUME_NAME_ENTRY, Name) + (name.size() + 1) * sizeof(WChar)));
        if (!entry) {
            while (head) {
                EWF_VOLUME_NAME_ENTRY* next = head->Next;
                FreeRecord(head);
                head = next;
            }
            SetLastError(ErrorNotEnoughMemory);
            return nullptr;
        }
        entry->Next = head;
        std::copy(name.begin(), name.end(), entry->Name);
        entry->Name[name.size()] = 0;
        head = entry;
    }
    return head;
}

UC_EWF_EXPORT Bool UC_EWF_CALL EwfMgrVolumeNameListIsEmpty(EWF_VOLUME_NAME_ENTRY* list) {
    ++g_calls;
    return !list || list == &g_emptyList;
}

#ifndef UC_EWF_SIM_WITHOUT_POP
UC_EWF_EXPORT void UC_EWF_CALL EwfMgrVolumeNameEntryPop(EWF_VOLUME_NAME_ENTRY** list) {
    ++g_calls;
    if (!list || !*list) return;
    EWF_VOLUME_NAME_ENTRY* head = *list;
    *list = head->Next;
    FreeEntry(head);
}
#endif

UC_EWF_EXPORT void UC_EWF_CALL EwfMgrVolumeNameListDelete(EWF_VOLUME_NAME_ENTRY* list) {
    ++g_calls;
    while (list) {
        EWF_VOLUME_NAME_ENTRY* next = list->Next;
        FreeEntry(list);
        list = next;
    }
}

UC_EWF_EXPORT WChar UC_EWF_CALL EwfMgrGetDriveLetterFromVolumeName(const WChar* volumeName) {
    Session s;
    if (!s.Ok() || !volumeName) return static_cast<WChar>(0xFFFF);
    ULong error = 0;
    const wchar_t letter = s.Sim().DriveLetter(FromEwfString(volumeName), error);
    if (letter == static_cast<wchar_t>(0xFFFF)) SetLastError(error);
    return static_cast<WChar>(letter);
}

UC_EWF_EXPORT Handle UC_EWF_CALL EwfMgrOpenProtected(const WChar* volumeName) {
    Session s;
    if (!s.Ok()) return InvalidHandle();
    if (!volumeName) {
        SetLastError(ErrorInvalidParameter);
        return InvalidHandle();
    }
    ULong error = 0;
    auto volume = s.Sim().OpenVolume(FromEwfString(volumeName), error);
    if (!volume) {
        SetLastError(error);
        return InvalidHandle();
    }
    return s.NewHandle(false, s.Sim().Volumes()[*volume].device);
}

UC_EWF_EXPORT Bool UC_EWF_CALL EwfMgrClose(Handle h) {
    Session s;
    auto& handles = s.Handles().handles;
    auto it = handles.find(reinterpret_cast<std::uintptr_t>(h));
    if (!h || it == handles.end()) return Fail(ErrorInvalidHandle);
    handles.erase(it);
    return 1;
}

UC_EWF_EXPORT EWF_VOLUME_CONFIG* UC_EWF_CALL EwfMgrGetProtectedVolumeConfig(Handle h) {
    Session s;
    if (!s.Ok()) return nullptr;
    auto volume = s.Volume(h);
    if (!volume) return nullptr;
    ULong error = 0;
    EWF_VOLUME_CONFIG* config = s.Sim().NewVolumeConfig(*volume, &AllocRecord, error);
    if (!config) SetLastError(error);
    return config;
}

UC_EWF_EXPORT Handle UC_EWF_CALL EwfMgrOpenOverlayStore(Bool /*openForAsyncIo*/) {
    Session s;
    if (!s.Ok()) return InvalidHandle();
    ULong error = 0;
    if (!s.Sim().OpenStore(error)) {
        SetLastError(error);
        return InvalidHandle();
    }
    return s.NewHandle(true, {});
}

UC_EWF_EXPORT EWF_OVERLAY_STORE_CONFIG* UC_EWF_CALL EwfMgrGetOverlayStoreConfig(Handle h) {
    Session s;
    if (!s.Ok() || !s.IsStore(h)) return nullptr;
    ULong error = 0;
    EWF_OVERLAY_STORE_CONFIG* config = s.Sim().NewStoreConfig(&AllocRecord, error);
    if (!config) SetLastError(error);
    return config;
}

UC_EWF_EXPORT Bool UC_EWF_CALL EwfMgrEnable(Handle h) { return VolumeCommand(h, EWF_ENABLE, false); }
UC_EWF_EXPORT Bool UC_EWF_CALL EwfMgrDisable(Handle h, Bool commit) { return VolumeCommand(h, EWF_DISABLE, commit != 0); }
UC_EWF_EXPORT Bool UC_EWF_CALL EwfMgrCommit(Handle h) { return VolumeCommand(h, EWF_COMMIT, false); }
UC_EWF_EXPORT Bool UC_EWF_CALL EwfMgrRestore(Handle h) { return VolumeCommand(h, EWF_SET_LEVEL, false); }
#ifndef UC_EWF_SIM_WITHOUT_CLEAR_COMMAND
UC_EWF_EXPORT Bool UC_EWF_CALL EwfMgrClearCommand(Handle h) { return VolumeCommand(h, EWF_NO_CMD, false); }
#endif

// The simulation's own exports, for the service tool and the tests.

// Acts out a restart: every volume applies its pending boot command.
UC_EWF_EXPORT Bool UC_EWF_CALL EwfSimRestart() {
    Session s;
    if (!s.Ok()) return 0;
    s.Sim().Restart();
    return s.Save() ? 1 : Fail(ErrorAccessDenied);
}

// Writes `segments` of data to the volume behind an open handle (into the overlay while protected).
UC_EWF_EXPORT Bool UC_EWF_CALL EwfSimWrite(Handle h, ULong segments) {
    Session s;
    if (!s.Ok()) return 0;
    auto volume = s.Volume(h);
    if (!volume) return 0;
    ULong error = 0;
    if (!s.Sim().Write(*volume, segments, error)) return Fail(error);
    return s.Save() ? 1 : Fail(ErrorAccessDenied);
}

// Handles open in this process, and management calls made so far.
UC_EWF_EXPORT ULong UC_EWF_CALL EwfSimOpenHandles() {
    std::lock_guard<std::mutex> lock(State().mutex);
    return static_cast<ULong>(State().handles.size());
}
UC_EWF_EXPORT ULong UC_EWF_CALL EwfSimCalls() { return g_calls.load(); }

// Where the state lives and what is wrong with it, as text; returns the length the full text needs.
UC_EWF_EXPORT ULong UC_EWF_CALL EwfSimDescribe(WChar* buffer, ULong capacity) {
    std::wstring text;
    {
        Session s;  // loads the state, which records any problem
        const std::wstring path = StatePath();
        text = path.empty() ? L"state in memory" : L"state file " + path;
        if (!State().problem.empty()) text += L"; unusable: " + State().problem;
    }
    const EwfString out = ToEwfString(text);
    if (buffer && capacity > 0) {
        const std::size_t n = std::min<std::size_t>(out.size(), capacity - 1);
        std::copy(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(n), buffer);
        buffer[n] = 0;
    }
    return static_cast<ULong>(out.size());
}
