// A scripted disc-writing library and a recording presenter for the burner's tests: every call is recorded,
// any operation can be made to fail, and the tree is kept as disc paths.
#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "export/burn_presenter.h"
#include "export/disc_operations.h"

namespace uc::test {

class ScriptedDisc : public uc::exporting::IDiscOperations {
public:
    // The medium.
    bool erasable = false;
    int discStatus = 0, discType = 5, lastTrack = 0;
    long freeBlocks = 100000, nextWritable = 0;
    bool trackAtOnce = true, bupSupported = true;
    long level = 3;
    std::int64_t imageBytes = 0;  // 0: the sum of the added files, rounded up to blocks, plus 20 blocks
    // Operations that fail (by the library's function name without "StarBurn_"), with their exception number.
    std::map<std::string, long> failures;
    // When set, the track write waits until Release() (a burn held in flight).
    bool holdWrite = false;
    void Release();
    bool WaitUntilWriting();

    std::vector<std::string> calls;           // operation names in order
    std::vector<std::string> discPaths;       // "/folder/name" of every node added, in order
    std::map<std::string, std::string> sources;  // disc path -> file on disk
    long builtAt = -1;

    bool Available() const override { return true; }
    std::wstring Problem() const override { return {}; }
    std::vector<uc::exporting::DeviceAddress> FindDevices() override;
    std::string DeviceName(const uc::exporting::DeviceAddress&) override { return "\\\\.\\CdRom0"; }
    uc::exporting::DiscResult CreateTree(uc::exporting::DiscObject& tree) override;
    uc::exporting::DiscResult CreateBurner(const uc::exporting::DeviceAddress&, uc::exporting::DiscObject& burner,
                                           uc::exporting::WriteProgress progress) override;
    uc::exporting::DeviceInformation GetDeviceInformation(uc::exporting::DiscObject) override;
    uc::exporting::DiscResult ProbeSupportedWriteModes(uc::exporting::DiscObject, uc::exporting::WriteModes& m) override;
    uc::exporting::DiscResult TestUnitReady(uc::exporting::DiscObject) override { return Op("CdvdBurnerGrabber_TestUnitReady"); }
    uc::exporting::DiscResult GetBUP(uc::exporting::DiscObject, bool& enabled, bool& supported) override;
    uc::exporting::DiscResult SetBUP(uc::exporting::DiscObject, bool) override { return Op("CdvdBurnerGrabber_SetBUP"); }
    uc::exporting::DiscResult SetSpeeds(uc::exporting::DiscObject, unsigned long, unsigned long) override {
        return Op("CdvdBurnerGrabber_SetSpeeds");
    }
    uc::exporting::DiscResult GetSpeeds(uc::exporting::DiscObject, uc::exporting::Speeds& s) override;
    uc::exporting::DiscResult GetTrackInformation(uc::exporting::DiscObject, long, uc::exporting::TrackInformation& t) override;
    uc::exporting::DiscResult GetDiscInformation(uc::exporting::DiscObject, uc::exporting::DiscInformation& d) override;
    int GetInsertedDiscType(uc::exporting::DiscObject) override { return discType; }
    uc::exporting::DiscResult GetLastTrack(uc::exporting::DiscObject, long& track) override;
    uc::exporting::DiscResult ImportTrack(uc::exporting::DiscObject, uc::exporting::DiscObject, long) override {
        return Op("ISO9660JolietFileTree_ImportTrack");
    }
    uc::exporting::DiscObject GetRoot(uc::exporting::DiscObject tree) override { return tree; }
    uc::exporting::DiscResult AddFromDisk(uc::exporting::DiscObject tree, uc::exporting::DiscObject parent,
                                          const std::string& path, const std::string& newName,
                                          uc::exporting::DiscObject& child) override;
    uc::exporting::DiscResult AddFolder(uc::exporting::DiscObject tree, uc::exporting::DiscObject parent,
                                        const std::string& name, uc::exporting::DiscObject& child) override;
    long GetLevel(uc::exporting::DiscObject) override { return level; }
    uc::exporting::DiscResult Erase(uc::exporting::DiscObject) override;
    uc::exporting::DiscResult BuildImage(uc::exporting::DiscObject, long start, const std::string&, const std::string&,
                                         const std::string&) override;
    std::int64_t GetImageSize(uc::exporting::DiscObject) override;
    uc::exporting::DiscResult SendOPC(uc::exporting::DiscObject) override { return Op("CdvdBurnerGrabber_SendOPC"); }
    uc::exporting::DiscResult TrackAtOnceFromTree(uc::exporting::DiscObject, uc::exporting::DiscObject, bool) override;
    uc::exporting::DiscResult CloseSession(uc::exporting::DiscObject) override { return Op("CdvdBurnerGrabber_CloseSession"); }
    uc::exporting::DiscResult Eject(uc::exporting::DiscObject) override { return Op("CdvdBurnerGrabber_Eject"); }
    void Destroy(uc::exporting::DiscObject& object) override;
    int liveObjects = 0;  // created and not yet destroyed

private:
    uc::exporting::DiscResult Op(const std::string& name);
    std::string PathOf(uc::exporting::DiscObject node) const;
    std::deque<std::string> m_nodes;  // node i is &m_nodes[i]: its disc path
    uc::exporting::WriteProgress m_progress;
    std::mutex m_mutex;
    std::condition_variable m_cv;
    bool m_writing = false, m_released = false;
};

// Records what a burn shows, asks and posts; answers questions from a script.
class RecordingPresenter : public uc::exporting::IBurnPresenter {
public:
    std::deque<uc::exporting::Answer> answers;  // taken in order; Cancel when empty
    std::vector<std::wstring> events;            // "step TEXT", "ask TEXT", "tell TEXT", "post 0x8004 1", ...
    std::vector<int> percents;

    void CreateProgress(const std::wstring& title) override { Add(L"progress " + title); }
    void DestroyProgress() override { Add(L"progress closed"); }
    void ShowStep(const std::wstring& text) override { Add(L"step " + text); }
    void ShowPercent(int percent) override;
    void ShowMinimizeButton(bool show) override { Add(show ? L"minimize shown" : L"minimize hidden"); }
    uc::exporting::Answer Ask(const std::wstring& text, const std::wstring& caption, bool withCancel) override;
    void Tell(const std::wstring& text, const std::wstring& caption, uc::exporting::BoxIcon icon) override;
    void Post(void* owner, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override;

    std::vector<std::wstring> Events();
    // Position of the first event starting with `prefix`, or -1.
    int Find(const std::wstring& prefix);

private:
    void Add(const std::wstring& e);
    std::mutex m_mutex;
};

}  // namespace uc::test
