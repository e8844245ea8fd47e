// A scripted disc-writing library and a recording presenter for the burner's tests: every call is recorded,
// any operation can be made to fail, and the tree is kept as disc paths.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "export/burn_presenter.h"
#include "export/disc_operations.h"
#include "platform/text.h"

namespace uc::test {
namespace ex = uc::exporting;

class ScriptedDisc : public ex::IDiscOperations {
public:
    // The medium.
    bool erasable = false, trackAtOnce = true;
    int discStatus = 0, discType = 5;
    long lastTrack = 0, freeBlocks = 100000, nextWritable = 0, level = 3;
    std::int64_t imageBytes = 0;  // 0: the added files in whole blocks, plus 20 blocks
    std::map<std::string, long> failures;  // operation (the library's name without "StarBurn_") -> exception
    bool holdWrite = false;               // the track write waits for Release()

    std::vector<std::string> calls;              // operation names in order
    std::vector<std::string> discPaths;          // "/folder/name" of every node added, folders with a final "/"
    std::map<std::string, std::string> sources;  // disc path -> file on disk
    long builtAt = -1;
    int liveObjects = 0;  // created and not yet destroyed

    void Release() { Signal(m_released); }
    bool WaitUntilWriting() {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_cv.wait_for(lock, std::chrono::seconds(30), [this] { return m_writing; });
    }

    bool Available() const override { return true; }
    std::wstring Problem() const override { return {}; }
    std::vector<ex::DeviceAddress> FindDevices() override { return {ex::DeviceAddress{1, 0, 0, 0}}; }
    std::string DeviceName(const ex::DeviceAddress&) override { return "\\\\.\\CdRom0"; }
    ex::DiscResult CreateTree(ex::DiscObject& tree) override { return Create("ISO9660FileTree_Create", "", tree); }
    ex::DiscResult CreateBurner(const ex::DeviceAddress&, ex::DiscObject& burner, ex::WriteProgress progress) override {
        m_progress = std::move(progress);
        return Create("CdvdBurnerGrabber_Create", "<burner>", burner);
    }
    ex::DeviceInformation GetDeviceInformation(ex::DiscObject) override { return {"UTILS", "SCRIPTED", "1.0", 2097152}; }
    ex::DiscResult ProbeSupportedWriteModes(ex::DiscObject, ex::WriteModes& m) override {
        m = {trackAtOnce, true, false, false};
        return Op("CdvdBurnerGrabber_ProbeSupportedWriteModes");
    }
    ex::DiscResult TestUnitReady(ex::DiscObject) override { return Op("CdvdBurnerGrabber_TestUnitReady"); }
    ex::DiscResult GetBUP(ex::DiscObject, bool& enabled, bool& supported) override {
        enabled = false;
        supported = true;
        return Op("CdvdBurnerGrabber_GetBUP");
    }
    ex::DiscResult SetBUP(ex::DiscObject, bool) override { return Op("CdvdBurnerGrabber_SetBUP"); }
    ex::DiscResult SetSpeeds(ex::DiscObject, unsigned long, unsigned long) override { return Op("CdvdBurnerGrabber_SetSpeeds"); }
    ex::DiscResult GetSpeeds(ex::DiscObject, ex::Speeds& s) override {
        s = {7040, 7040, 5632, 8448};
        return Op("CdvdBurnerGrabber_GetSpeeds");
    }
    ex::DiscResult GetTrackInformation(ex::DiscObject, long, ex::TrackInformation& t) override {
        t = {true, lastTrack + 1, true, nextWritable, freeBlocks};
        return Op("CdvdBurnerGrabber_GetTrackInformation");
    }
    ex::DiscResult GetDiscInformation(ex::DiscObject, ex::DiscInformation& d) override {
        d = {erasable, discStatus, discStatus == 2 ? 3 : discStatus};
        return Op("CdvdBurnerGrabber_GetDiscInformation");
    }
    int GetInsertedDiscType(ex::DiscObject) override { return discType; }
    ex::DiscResult GetLastTrack(ex::DiscObject, long& track) override {
        track = lastTrack;
        return Op("CdvdBurnerGrabber_GetLastTrack");
    }
    ex::DiscResult ImportTrack(ex::DiscObject, ex::DiscObject, long) override { return Op("ISO9660JolietFileTree_ImportTrack"); }
    ex::DiscObject GetRoot(ex::DiscObject tree) override { return tree; }
    ex::DiscResult AddFromDisk(ex::DiscObject, ex::DiscObject parent, const std::string& path, const std::string& newName,
                               ex::DiscObject& child) override {
        const std::string name = newName.empty() ? ToUtf8(FromFsPath(ToFsPath(FromUtf8(path)).filename())) : newName;
        ex::DiscResult r = Add(parent, name, "", child);
        if (r.ok()) sources[m_nodes.back()] = path;
        return r;
    }
    ex::DiscResult AddFolder(ex::DiscObject, ex::DiscObject parent, const std::string& name, ex::DiscObject& child) override {
        return Add(parent, name, "/", child);
    }
    long GetLevel(ex::DiscObject) override { return level; }
    ex::DiscResult Erase(ex::DiscObject) override {
        ex::DiscResult r = Op("CdvdBurnerGrabber_Erase");
        if (r.ok()) discStatus = 0, lastTrack = 0;
        return r;
    }
    ex::DiscResult BuildImage(ex::DiscObject, long start, const std::string&, const std::string&, const std::string&) override {
        builtAt = start;
        return Op("ISO9660FileTree_BuildImage");
    }
    std::int64_t GetImageSize(ex::DiscObject) override {
        std::int64_t blocks = 20;
        std::error_code ec;
        for (const auto& [disc, file] : sources) {
            const auto bytes = std::filesystem::file_size(ToFsPath(FromUtf8(file)), ec);
            blocks += ec ? 0 : static_cast<std::int64_t>((bytes + 2047) / 2048);
        }
        return imageBytes ? imageBytes : blocks * 2048;
    }
    ex::DiscResult SendOPC(ex::DiscObject) override { return Op("CdvdBurnerGrabber_SendOPC"); }
    ex::DiscResult TrackAtOnceFromTree(ex::DiscObject, ex::DiscObject, bool) override {
        Signal(m_writing);
        if (holdWrite) {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_cv.wait(lock, [this] { return m_released; });
        }
        for (int blocks : {0, 100, 200})
            if (m_progress) m_progress(blocks, 200);
        return Op("CdvdBurnerGrabber_TrackAtOnceFromTree");
    }
    ex::DiscResult CloseSession(ex::DiscObject) override { return Op("CdvdBurnerGrabber_CloseSession"); }
    ex::DiscResult Eject(ex::DiscObject) override { return Op("CdvdBurnerGrabber_Eject"); }
    void Destroy(ex::DiscObject& object) override {
        liveObjects -= object ? 1 : 0;
        object = nullptr;
    }

private:
    ex::DiscResult Op(const std::string& name) {
        calls.push_back(name);
        const auto it = failures.find(name);
        if (it == failures.end()) return {};
        return {it->second, 21, name + " failed on purpose"};
    }
    ex::DiscResult Create(const char* op, const char* path, ex::DiscObject& object) {
        ex::DiscResult r = Op(op);
        if (r.ok()) m_nodes.push_back(path), object = &m_nodes.back(), ++liveObjects;
        return r;
    }
    // A node's disc path is the string it points to.
    ex::DiscResult Add(ex::DiscObject parent, const std::string& name, const char* mark, ex::DiscObject& child) {
        ex::DiscResult r = Op("ISO9660JolietFileTree_Add");
        if (!r.ok()) return r;
        m_nodes.push_back((parent ? *static_cast<const std::string*>(parent) : "") + "/" + name);
        discPaths.push_back(m_nodes.back() + mark);
        child = &m_nodes.back();
        return r;
    }
    void Signal(bool& flag) {
        std::lock_guard<std::mutex> g(m_mutex);
        flag = true;
        m_cv.notify_all();
    }
    std::deque<std::string> m_nodes;  // stable addresses
    ex::WriteProgress m_progress;
    std::mutex m_mutex;
    std::condition_variable m_cv;
    bool m_writing = false, m_released = false;
};

// Records what a burn shows, asks and posts ("step TEXT", "ask TEXT | CAPTION | yes/no", "post 0x8004 1", ...);
// answers questions from a script, Cancel when it runs out.
class RecordingPresenter : public ex::IBurnPresenter {
public:
    std::deque<ex::Answer> answers;
    std::vector<int> percents;

    void CreateProgress(const std::wstring& title) override { Add(L"progress " + title); }
    void DestroyProgress() override { Add(L"progress closed"); }
    void ShowStep(const std::wstring& text) override { Add(L"step " + text); }
    void ShowPercent(int percent) override {
        std::lock_guard<std::mutex> g(m_mutex);
        percents.push_back(percent);
    }
    void ShowMinimizeButton(bool show) override { Add(show ? L"minimize shown" : L"minimize hidden"); }
    ex::Answer Ask(const std::wstring& text, const std::wstring& caption, bool withCancel) override {
        Add(L"ask " + text + L" | " + caption + (withCancel ? L" | yes/no/cancel" : L" | yes/no"));
        std::lock_guard<std::mutex> g(m_mutex);
        const ex::Answer a = answers.empty() ? ex::Answer::Cancel : answers.front();
        if (!answers.empty()) answers.pop_front();
        return a;
    }
    void Tell(const std::wstring& text, const std::wstring& caption, ex::BoxIcon icon) override {
        const wchar_t* names[] = {L"information", L"warning", L"stop"};
        Add(L"tell " + text + L" | " + caption + L" | " + names[static_cast<int>(icon)]);
    }
    void Post(void*, unsigned message, std::uintptr_t wParam, std::intptr_t) override {
        Add(Format(L"post 0x%04X %d", message, static_cast<int>(wParam)));
    }
    std::vector<std::wstring> Events() {
        std::lock_guard<std::mutex> g(m_mutex);
        return m_events;
    }
    // Position of the first event starting with `prefix`, or -1.
    int Find(const std::wstring& prefix) {
        const std::vector<std::wstring> events = Events();
        for (std::size_t i = 0; i < events.size(); ++i)
            if (events[i].rfind(prefix, 0) == 0) return static_cast<int>(i);
        return -1;
    }

private:
    void Add(const std::wstring& e) {
        std::lock_guard<std::mutex> g(m_mutex);
        m_events.push_back(e);
    }
    std::mutex m_mutex;
    std::vector<std::wstring> m_events;
};

// Whether every one of `wanted` starts an entry of `seen`, in this order.
template <class S>
::testing::AssertionResult InOrder(const std::vector<S>& seen, const std::vector<S>& wanted) {
    auto at = seen.begin();
    for (const S& w : wanted) {
        at = std::find_if(at, seen.end(), [&](const S& s) { return s.rfind(w, 0) == 0; });
        if (at == seen.end()) return ::testing::AssertionFailure() << "missing or out of order: " << ::testing::PrintToString(w);
        ++at;
    }
    return ::testing::AssertionSuccess();
}

}  // namespace uc::test
