// The scripted disc-writing library and recording presenter of the burner's tests.
#include "scripted_disc.h"

#include <filesystem>

#include "platform/text.h"

namespace uc::test {
using namespace uc::exporting;

DiscResult ScriptedDisc::Op(const std::string& name) {
    calls.push_back(name);
    DiscResult r;
    if (auto it = failures.find(name); it != failures.end()) {
        r.exception = it->second;
        r.status = 21;
        r.text = name + " failed on purpose";
    }
    return r;
}

std::vector<DeviceAddress> ScriptedDisc::FindDevices() { return {DeviceAddress{1, 0, 0, 0}}; }

DiscResult ScriptedDisc::CreateTree(DiscObject& tree) {
    DiscResult r = Op("ISO9660FileTree_Create");
    if (r.ok()) {
        m_nodes.push_back("");
        tree = &m_nodes.back();
        ++liveObjects;
    }
    return r;
}

DiscResult ScriptedDisc::CreateBurner(const DeviceAddress&, DiscObject& burner, WriteProgress progress) {
    DiscResult r = Op("CdvdBurnerGrabber_Create");
    if (r.ok()) {
        m_progress = std::move(progress);
        m_nodes.push_back("<burner>");
        burner = &m_nodes.back();
        ++liveObjects;
    }
    return r;
}

DeviceInformation ScriptedDisc::GetDeviceInformation(DiscObject) { return {"UTILS", "SCRIPTED", "1.0", 2097152}; }

DiscResult ScriptedDisc::ProbeSupportedWriteModes(DiscObject, WriteModes& m) {
    m = {trackAtOnce, true, false, false};
    return Op("CdvdBurnerGrabber_ProbeSupportedWriteModes");
}

DiscResult ScriptedDisc::GetBUP(DiscObject, bool& enabled, bool& supported) {
    enabled = false;
    supported = bupSupported;
    return Op("CdvdBurnerGrabber_GetBUP");
}

DiscResult ScriptedDisc::GetSpeeds(DiscObject, Speeds& s) {
    s = {7040, 7040, 5632, 8448};
    return Op("CdvdBurnerGrabber_GetSpeeds");
}

DiscResult ScriptedDisc::GetTrackInformation(DiscObject, long, TrackInformation& t) {
    t.blank = true;
    t.trackNumber = lastTrack + 1;
    t.nextWritableValid = true;
    t.nextWritableAddress = nextWritable;
    t.freeBlocks = freeBlocks;
    return Op("CdvdBurnerGrabber_GetTrackInformation");
}

DiscResult ScriptedDisc::GetDiscInformation(DiscObject, DiscInformation& d) {
    d = {erasable, discStatus, discStatus == 2 ? 3 : discStatus};
    return Op("CdvdBurnerGrabber_GetDiscInformation");
}

DiscResult ScriptedDisc::GetLastTrack(DiscObject, long& track) {
    track = lastTrack;
    return Op("CdvdBurnerGrabber_GetLastTrack");
}

std::string ScriptedDisc::PathOf(DiscObject node) const { return node ? *static_cast<const std::string*>(node) : ""; }

DiscResult ScriptedDisc::AddFromDisk(DiscObject, DiscObject parent, const std::string& path, const std::string& newName,
                                     DiscObject& child) {
    DiscResult r = Op("ISO9660JolietFileTree_Add");
    if (!r.ok()) return r;
    const std::string name = newName.empty() ? uc::ToUtf8(uc::FromFsPath(uc::ToFsPath(uc::FromUtf8(path)).filename()))
                                             : newName;
    m_nodes.push_back(PathOf(parent) + "/" + name);
    discPaths.push_back(m_nodes.back());
    sources[m_nodes.back()] = path;
    child = &m_nodes.back();
    return r;
}

DiscResult ScriptedDisc::AddFolder(DiscObject, DiscObject parent, const std::string& name, DiscObject& child) {
    DiscResult r = Op("ISO9660JolietFileTree_Add");
    if (!r.ok()) return r;
    m_nodes.push_back(PathOf(parent) + "/" + name);
    discPaths.push_back(m_nodes.back() + "/");
    child = &m_nodes.back();
    return r;
}

DiscResult ScriptedDisc::Erase(DiscObject) {
    DiscResult r = Op("CdvdBurnerGrabber_Erase");
    if (r.ok()) {
        discStatus = 0;
        lastTrack = 0;
    }
    return r;
}

DiscResult ScriptedDisc::BuildImage(DiscObject, long start, const std::string&, const std::string&, const std::string&) {
    builtAt = start;
    return Op("ISO9660FileTree_BuildImage");
}

std::int64_t ScriptedDisc::GetImageSize(DiscObject) {
    if (imageBytes) return imageBytes;
    std::int64_t blocks = 20;
    for (const auto& [disc, file] : sources) {
        std::error_code ec;
        const auto size = std::filesystem::file_size(uc::ToFsPath(uc::FromUtf8(file)), ec);
        blocks += ec ? 0 : static_cast<std::int64_t>((size + 2047) / 2048);
    }
    return blocks * 2048;
}

DiscResult ScriptedDisc::TrackAtOnceFromTree(DiscObject, DiscObject, bool) {
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_writing = true;
        m_cv.notify_all();
        if (holdWrite) m_cv.wait(lock, [this] { return m_released; });
    }
    if (m_progress) {
        m_progress(0, 200);
        m_progress(100, 200);
        m_progress(200, 200);
    }
    return Op("CdvdBurnerGrabber_TrackAtOnceFromTree");
}

void ScriptedDisc::Release() {
    std::lock_guard<std::mutex> g(m_mutex);
    m_released = true;
    m_cv.notify_all();
}

bool ScriptedDisc::WaitUntilWriting() {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_cv.wait_for(lock, std::chrono::seconds(30), [this] { return m_writing; });
}

void ScriptedDisc::Destroy(DiscObject& object) {
    if (object) --liveObjects;
    object = nullptr;
}

void RecordingPresenter::Add(const std::wstring& e) {
    std::lock_guard<std::mutex> g(m_mutex);
    events.push_back(e);
}

void RecordingPresenter::ShowPercent(int percent) {
    std::lock_guard<std::mutex> g(m_mutex);
    percents.push_back(percent);
}

Answer RecordingPresenter::Ask(const std::wstring& text, const std::wstring& caption, bool withCancel) {
    Add(L"ask " + text + L" | " + caption + (withCancel ? L" | yes/no/cancel" : L" | yes/no"));
    std::lock_guard<std::mutex> g(m_mutex);
    if (answers.empty()) return Answer::Cancel;
    const Answer a = answers.front();
    answers.pop_front();
    return a;
}

void RecordingPresenter::Tell(const std::wstring& text, const std::wstring& caption, BoxIcon icon) {
    Add(L"tell " + text + L" | " + caption + (icon == BoxIcon::Stop ? L" | stop" : icon == BoxIcon::Warning ? L" | warning" : L" | information"));
}

void RecordingPresenter::Post(void*, unsigned message, std::uintptr_t wParam, std::intptr_t) {
    Add(uc::Format(L"post 0x%04X %d", message, static_cast<int>(wParam)));
}

std::vector<std::wstring> RecordingPresenter::Events() {
    std::lock_guard<std::mutex> g(m_mutex);
    return events;
}

int RecordingPresenter::Find(const std::wstring& prefix) {
    std::lock_guard<std::mutex> g(m_mutex);
    for (std::size_t i = 0; i < events.size(); ++i)
        if (events[i].rfind(prefix, 0) == 0) return static_cast<int>(i);
    return -1;
}

}  // namespace uc::test
