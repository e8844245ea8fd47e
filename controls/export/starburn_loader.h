// StarBurnLoader: the disc-writing library loaded at run time by its file name, its flat functions behind
// IDiscOperations.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "export/disc_operations.h"
#include "platform/dynamic_library.h"

namespace uc::exporting {

class UC_API StarBurnLoader final : public IDiscOperations {
public:
    // Loads the library (default: "StarBurn.dll" on Windows, "libStarBurn.so" elsewhere) and starts it.
    // A missing library or function leaves the loader unavailable; nothing fails at load time.
    explicit StarBurnLoader(const std::wstring& libraryName = L"");
    ~StarBurnLoader() override;
    StarBurnLoader(const StarBurnLoader&) = delete;
    StarBurnLoader& operator=(const StarBurnLoader&) = delete;

    bool Available() const override { return m_available; }
    std::wstring Problem() const override { return m_problem; }

    std::vector<DeviceAddress> FindDevices() override;
    std::string DeviceName(const DeviceAddress& address) override;
    DiscResult CreateTree(DiscObject& tree) override;
    DiscResult CreateBurner(const DeviceAddress& address, DiscObject& burner, WriteProgress progress) override;
    DeviceInformation GetDeviceInformation(DiscObject burner) override;
    DiscResult ProbeSupportedWriteModes(DiscObject burner, WriteModes& modes) override;
    DiscResult TestUnitReady(DiscObject burner) override;
    DiscResult GetBUP(DiscObject burner, bool& enabled, bool& supported) override;
    DiscResult SetBUP(DiscObject burner, bool enabled) override;
    DiscResult SetSpeeds(DiscObject burner, unsigned long read, unsigned long write) override;
    DiscResult GetSpeeds(DiscObject burner, Speeds& speeds) override;
    DiscResult GetTrackInformation(DiscObject burner, long track, TrackInformation& info) override;
    DiscResult GetDiscInformation(DiscObject burner, DiscInformation& info) override;
    int GetInsertedDiscType(DiscObject burner) override;
    DiscResult GetLastTrack(DiscObject burner, long& track) override;
    DiscResult ImportTrack(DiscObject tree, DiscObject burner, long track) override;
    DiscObject GetRoot(DiscObject tree) override;
    DiscResult AddFromDisk(DiscObject tree, DiscObject parent, const std::string& path, const std::string& newName,
                           DiscObject& child) override;
    DiscResult AddFolder(DiscObject tree, DiscObject parent, const std::string& name, DiscObject& child) override;
    long GetLevel(DiscObject tree) override;
    DiscResult Erase(DiscObject burner) override;
    DiscResult BuildImage(DiscObject tree, long startingBlock, const std::string& volumeSet,
                          const std::string& publisher, const std::string& application) override;
    std::int64_t GetImageSize(DiscObject tree) override;
    DiscResult SendOPC(DiscObject burner) override;
    DiscResult TrackAtOnceFromTree(DiscObject burner, DiscObject tree, bool nextSessionAllowed) override;
    DiscResult CloseSession(DiscObject burner) override;
    DiscResult Eject(DiscObject burner) override;
    void Destroy(DiscObject& object) override;

    struct Functions;  // resolved entry points

private:
    uc::DynamicLibrary m_library;
    std::unique_ptr<Functions> m_fn;
    bool m_available = false;
    bool m_started = false;
    std::wstring m_problem;
    std::mutex m_mutex;
    std::map<DiscObject, std::unique_ptr<WriteProgress>> m_progress;  // callback context of each burner
};

}  // namespace uc::exporting
