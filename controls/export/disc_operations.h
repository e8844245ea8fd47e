// The disc-writing library's operations as the burner uses them: one interface, served by the loaded library
// (StarBurnLoader) and by scripted fakes in tests.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/export.h"

namespace uc::exporting {

// What every operation reports: the library's exception number (0 success), the system's status and its text.
struct DiscResult {
    long exception = 0;
    unsigned long status = 0;
    std::string text;  // UTF-8, as the library writes it
    // The drive's sense data when it refused a command (0 otherwise): why, beyond "the command failed".
    unsigned char senseKey = 0, asc = 0, ascq = 0;
    bool ok() const { return exception == 0; }
};

struct DeviceAddress {
    unsigned char port = 0, bus = 0, target = 0, lun = 0;
};

struct DeviceInformation {
    std::string vendor, product, revision;
    unsigned long cacheBytes = 0;
};

struct WriteModes {
    bool trackAtOnce = false, sessionAtOnce = false, discAtOncePQ = false, discAtOnceRawPW = false;
};

struct Speeds {
    unsigned long currentRead = 0, maximumRead = 0, currentWrite = 0, maximumWrite = 0;  // KBps
};

struct TrackInformation {
    bool blank = false;
    long trackNumber = 0;
    bool nextWritableValid = false;
    long nextWritableAddress = 0;
    long freeBlocks = 0;  // 2048-byte logical blocks
};

struct DiscInformation {
    bool erasable = false;
    int discStatus = 0;         // 0 empty, 1 appendable, 2 closed
    int lastSessionStatus = 0;
    int sessions = 0;
};

using DiscObject = void*;  // a file tree, a tree node or a burner of the library

// Progress of the track write: blocks written of blocks in the track.
using WriteProgress = std::function<void(std::int64_t written, std::int64_t total)>;

class UC_API IDiscOperations {
public:
    virtual ~IDiscOperations() = default;

    // False when the library is missing or lacks a function the burn needs; `Problem` says which.
    virtual bool Available() const = 0;
    virtual std::wstring Problem() const = 0;

    virtual std::vector<DeviceAddress> FindDevices() = 0;
    virtual std::string DeviceName(const DeviceAddress& address) = 0;

    virtual DiscResult CreateTree(DiscObject& tree) = 0;
    virtual DiscResult CreateBurner(const DeviceAddress& address, DiscObject& burner, WriteProgress progress) = 0;
    virtual DeviceInformation GetDeviceInformation(DiscObject burner) = 0;
    virtual DiscResult ProbeSupportedWriteModes(DiscObject burner, WriteModes& modes) = 0;
    virtual DiscResult TestUnitReady(DiscObject burner) = 0;
    virtual DiscResult GetBUP(DiscObject burner, bool& enabled, bool& supported) = 0;
    virtual DiscResult SetBUP(DiscObject burner, bool enabled) = 0;
    virtual DiscResult SetSpeeds(DiscObject burner, unsigned long read, unsigned long write) = 0;
    virtual DiscResult GetSpeeds(DiscObject burner, Speeds& speeds) = 0;
    // `track` 1-based, or TRACK_NUMBER_INVISIBLE (0xFF) for the next writable track.
    virtual DiscResult GetTrackInformation(DiscObject burner, long track, TrackInformation& info) = 0;
    virtual DiscResult GetDiscInformation(DiscObject burner, DiscInformation& info) = 0;
    virtual int GetInsertedDiscType(DiscObject burner) = 0;
    virtual DiscResult GetLastTrack(DiscObject burner, long& track) = 0;
    virtual DiscResult ImportTrack(DiscObject tree, DiscObject burner, long track) = 0;
    virtual DiscObject GetRoot(DiscObject tree) = 0;
    // A file or folder from disk (`path`, UTF-8) under `parent` (null: the top); `newName` empty keeps its name.
    virtual DiscResult AddFromDisk(DiscObject tree, DiscObject parent, const std::string& path,
                                   const std::string& newName, DiscObject& child) = 0;
    // An empty folder named `name` under `parent` (null: the top).
    virtual DiscResult AddFolder(DiscObject tree, DiscObject parent, const std::string& name, DiscObject& child) = 0;
    virtual long GetLevel(DiscObject tree) = 0;
    virtual DiscResult Erase(DiscObject burner) = 0;
    virtual DiscResult BuildImage(DiscObject tree, long startingBlock, const std::string& volumeSet,
                                  const std::string& publisher, const std::string& application) = 0;
    virtual std::int64_t GetImageSize(DiscObject tree) = 0;
    virtual DiscResult SendOPC(DiscObject burner) = 0;
    virtual DiscResult TrackAtOnceFromTree(DiscObject burner, DiscObject tree, bool nextSessionAllowed) = 0;
    virtual DiscResult CloseSession(DiscObject burner) = 0;
    virtual DiscResult Eject(DiscObject burner) = 0;
    virtual void Destroy(DiscObject& object) = 0;
};

}  // namespace uc::exporting
