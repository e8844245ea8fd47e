// The simulated disc-writing library: the StarBurn_* functions over the simulated writer and the ISO 9660/Joliet tree.
// Built as StarBurn.dll on Windows and libStarBurn.so natively; no exception leaves a function.
#include <chrono>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "export/simulator/disc_config.h"
#include "export/simulator/disc_engine.h"
#include "export/simulator/file_tree.h"
#include "export/simulator/iso_image.h"
#include "export/simulator/iso_names.h"
#include "export/simulator/iso_reader.h"
#include "export/starburn_api.h"

using namespace uc::disc;

namespace {

constexpr std::uint32_t kTreeMagic = 0x54524545;    // "TREE"
constexpr std::uint32_t kBurnerMagic = 0x4255524E;  // "BURN"
constexpr ULONG kVersion = 0x20250101;
constexpr std::uint32_t kPort = 0, kBus = 0, kLun = 0;  // devices sit at 0:0:<index>:0

struct TreeObject {
    std::uint32_t magic = kTreeMagic;
    std::mutex lock;
    FileTree tree;
    IsoImage image;
    bool stale = true;  // changed since the last BuildImage
    PCALLBACK callback = nullptr;
    PVOID context = nullptr;
    TreeObject(bool ignoreInvalid, bool level2, bool joliet) : tree(ignoreInvalid, level2, joliet) {}
};

struct BurnerObject {
    std::uint32_t magic = kBurnerMagic;
    std::mutex lock;
    DiscEngine engine;
    PCALLBACK callback = nullptr;
    PVOID context = nullptr;
    BurnerObject(DiscConfig config, int index) : engine(std::move(config), index) {}
};

TreeObject* AsTree(PVOID p) {
    auto* t = static_cast<TreeObject*>(p);
    return t && t->magic == kTreeMagic ? t : nullptr;
}
BurnerObject* AsBurner(PVOID p) {
    auto* b = static_cast<BurnerObject*>(p);
    return b && b->magic == kBurnerMagic ? b : nullptr;
}

// The caller's three (or four) outputs of every call.
struct Outputs {
    PCHAR text;
    ULONG textSize;
    PULONG systemError;
    PCDB_FAILURE_INFORMATION cdb;

    EXCEPTION_NUMBER Report(const DeviceStatus& status) const {
        if (text && textSize > 0) {
            const std::size_t n = std::min<std::size_t>(status.text.size(), textSize - 1);
            std::memcpy(text, status.text.data(), n);
            text[n] = '\0';
        }
        if (systemError) *systemError = status.systemError;
        if (cdb) {
            std::memset(cdb, 0, sizeof *cdb);
            if (status.exception == EN_SCSI_CDB_FAILED) {
                cdb->m__BOOLEAN__IsValid = TRUE;
                cdb->m__UCHAR__SenseSizeInUCHARs = 18;
                cdb->m__UCHAR__Sense[0] = 0x70;  // fixed format, current error
                cdb->m__UCHAR__Sense[2] = status.senseKey;
                cdb->m__UCHAR__Sense[7] = 10;
                cdb->m__UCHAR__Sense[12] = status.asc;
                cdb->m__UCHAR__Sense[13] = status.ascq;
                cdb->m__UCHAR__TargetStatus = 0x02;  // CHECK CONDITION
            }
        }
        return status.exception;
    }
    EXCEPTION_NUMBER Fail(EXCEPTION_NUMBER e, std::string why) const { return Report(DeviceStatus::Fail(e, std::move(why))); }
    EXCEPTION_NUMBER Ok() const { return Report({}); }
};

// Runs a call's body; an exception (out of memory) becomes an exception number instead of crossing the boundary.
template <class Body>
EXCEPTION_NUMBER Guarded(const Outputs& out, Body&& body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return out.Fail(EN_MEMORY_ALLOCATION_FAILED, "out of memory");
    } catch (...) {
        return out.Fail(EN_FAILURE, "unexpected internal failure");
    }
}

std::string ConfigProblems(const std::vector<ConfigProblem>& problems) {
    std::string text = "simulated writer configuration:";
    for (const ConfigProblem& p : problems) text += " line " + std::to_string(p.line) + ": " + p.text + ";";
    return text;
}

void Notify(PCALLBACK callback, PVOID context, CALLBACK_NUMBER number, PVOID special1 = nullptr, PVOID special2 = nullptr) {
    if (callback) callback(number, context, special1, special2);
}

void WireEvents(TreeObject& object) {
    TreeEvents events;
    events.added = [&object](const std::u16string& path) {
        std::string text = Utf16ToUtf8(path);
        Notify(object.callback, object.context, CN_FILE_TREE_PROGRESS_ADD, text.data());
    };
    events.ignored = [&object](const std::u16string& path, const std::string&) {
        std::string text = Utf16ToUtf8(path);
        Notify(object.callback, object.context, CN_FILE_TREE_PROGRESS_IGNORE, text.data());
    };
    events.collision = [&object](const std::u16string& name, const TreeNode& old, bool newIsDirectory, Collision& settle) {
        if (!object.callback) return;
        auto info = std::make_unique<NAME_COLLISION_INFO>();
        std::memset(info.get(), 0, sizeof *info);
        info->m__BOOLEAN__IsJolietName = object.tree.IsJoliet() ? TRUE : FALSE;
        for (std::size_t i = 0; i < name.size() && 2 * i + 1 < sizeof info->m__UCHAR__Name; ++i) {
            info->m__UCHAR__Name[2 * i] = static_cast<UCHAR>(name[i] & 0xFF);  // UCS-2, little-endian as Windows keeps it
            info->m__UCHAR__Name[2 * i + 1] = static_cast<UCHAR>(name[i] >> 8);
        }
        std::string oldPath = PathUtf8(old.source);
        info->m__PCHAR__OldAbsoluteName = oldPath.data();
        info->m__ULONG__OldFileAttributes = old.directory ? 0x10 : 0x80;
        info->m__ULONG__NewFileAttributes = newIsDirectory ? 0x10 : 0x80;
        info->m__NAME_COLLISION_SOLUTION = static_cast<NAME_COLLISION_SOLUTION>(settle);
        object.callback(CN_FILE_TREE_PROGRESS_NAME_COLLISION, object.context, info.get(), nullptr);
        const int chosen = info->m__NAME_COLLISION_SOLUTION;
        if (chosen >= 0 && chosen <= 3) settle = static_cast<Collision>(chosen);
    };
    object.tree.SetEvents(std::move(events));
}

TreeNode* ParentOf(TreeObject& object, PVOID* parent) {
    return parent && *parent ? static_cast<TreeNode*>(*parent) : &object.tree.Root();
}

EXCEPTION_NUMBER FromTreeResult(const Outputs& out, const TreeResult& r) {
    if (r.ok) return out.Ok();
    const EXCEPTION_NUMBER e = r.tooLong ? EN_PATH_TOO_LONG : r.systemError ? EN_SYSTEM_CALL_FAILED : EN_INVALID_INPUT_PARAMETER;
    return out.Report({e, r.systemError, r.why});
}

EXCEPTION_NUMBER CreateTree(PVOID* tree, const Outputs& out, PCALLBACK callback, PVOID context, BOOLEAN ignoreInvalid,
                            BOOLEAN level2, FILE_TREE kind) {
    return Guarded(out, [&] {
        if (!tree) return out.Fail(EN_INVALID_INPUT_PARAMETER, "no place for the tree was given");
        *tree = nullptr;
        auto object = std::make_unique<TreeObject>(ignoreInvalid != FALSE, level2 != FALSE, kind == FILE_TREE_JOLIET);
        object->callback = callback;
        object->context = context;
        WireEvents(*object);
        *tree = object.release();
        return out.Ok();
    });
}

EXCEPTION_NUMBER BuildTreeImage(PVOID tree, const Outputs& out, LONG startLba, PCHAR volumeSet, PCHAR publisher,
                                PCHAR application) {
    return Guarded(out, [&] {
        TreeObject* t = AsTree(tree);
        if (!t) return out.Fail(EN_INVALID_INPUT_PARAMETER, "not a file tree");
        if (startLba < 0) return out.Fail(EN_RANGE, "the starting block is negative");
        std::lock_guard<std::mutex> hold(t->lock);
        const VolumeTexts texts{volumeSet ? volumeSet : "", publisher ? publisher : "", application ? application : ""};
        const auto now = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
        std::string error;
        if (!t->image.Build(t->tree, static_cast<std::uint32_t>(startLba), texts, now, error)) return out.Fail(EN_RANGE, error);
        t->stale = false;
        return out.Ok();
    });
}

EXCEPTION_NUMBER EraseMedium(PVOID burner, const Outputs& out, ERASE_TYPE type) {
    return Guarded(out, [&] {
        BurnerObject* b = AsBurner(burner);
        if (!b) return out.Fail(EN_INVALID_INPUT_PARAMETER, "not a burner");
        if (type != ERASE_TYPE_BLANK_DISC_FULL && type != ERASE_TYPE_BLANK_DISC_FAST)
            return out.Fail(EN_NOT_IMPLEMENTED, "only full and fast blanking of the whole disc are supported");
        std::lock_guard<std::mutex> hold(b->lock);
        return out.Report(b->engine.Blank());
    });
}

// The common shape of a burner call: check the object, hold its lock, report the engine's status.
template <class Body>
EXCEPTION_NUMBER OnBurner(PVOID burner, const Outputs& out, Body&& body) {
    return Guarded(out, [&] {
        BurnerObject* b = AsBurner(burner);
        if (!b) return out.Fail(EN_INVALID_INPUT_PARAMETER, "not a burner");
        std::lock_guard<std::mutex> hold(b->lock);
        return out.Report(body(*b));
    });
}

}  // namespace

extern "C" {

STARBURN_IMPEX_API ULONG STARBURN_CALL StarBurn_GetVersion(VOID) { return kVersion; }

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_UpStartEx(PVOID, ULONG) { return EN_SUCCESS; }

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_DownShut(VOID) { return EN_SUCCESS; }

STARBURN_IMPEX_API VOID STARBURN_CALL StarBurn_Destroy(PVOID* object) {
    if (!object || !*object) return;
    if (TreeObject* t = AsTree(*object)) {
        t->magic = 0;
        delete t;
    } else if (BurnerObject* b = AsBurner(*object)) {
        b->magic = 0;
        delete b;
    }
    *object = nullptr;
}

STARBURN_IMPEX_API ULONG STARBURN_CALL StarBurn_FindDevice(UCHAR type, BOOLEAN, PCALLBACK callback, PVOID context) {
    if (type != SCSI_DEVICE_RO_DIRECT_ACCESS && type != SCSI_DEVICE_WILDCARD) return 0;
    try {
        std::vector<ConfigProblem> problems;
        const DiscConfig config = LoadDiscConfig(problems);
        for (int i = 0; i < config.devices; ++i) {
            SCSI_DEVICE_ADDRESS address{TRUE, kPort, kBus, static_cast<UCHAR>(i), kLun};
            Notify(callback, context, CN_FIND_DEVICE, &address);
        }
        return static_cast<ULONG>(config.devices);
    } catch (...) {
        return 0;
    }
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_GetDeviceNameByDeviceAddress(UCHAR port, UCHAR bus, UCHAR id,
                                                                                      UCHAR lun, PCHAR name) {
    if (!name) return EN_INVALID_INPUT_PARAMETER;
    std::vector<ConfigProblem> problems;
    const DiscConfig config = LoadDiscConfig(problems);
    if (port != kPort || bus != kBus || lun != kLun || id >= config.devices) return EN_NOT_FOUND;
    const std::string text = "\\\\.\\CdRom" + std::to_string(id);
    std::memcpy(name, text.c_str(), text.size() + 1);
    return EN_SUCCESS;
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_Create(
    PVOID* tree, PCHAR text, ULONG textSize, PULONG systemError, PCALLBACK callback, PVOID context, BOOLEAN ignoreInvalid,
    BOOLEAN, BOOLEAN level2, FILE_TREE kind) {
    return CreateTree(tree, {text, textSize, systemError, nullptr}, callback, context, ignoreInvalid, level2, kind);
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660FileTree_Create(
    PVOID* tree, PCHAR text, ULONG textSize, PULONG systemError, PCALLBACK callback, PVOID context, BOOLEAN ignoreInvalid,
    BOOLEAN, BOOLEAN level2, FILE_TREE kind) {
    return CreateTree(tree, {text, textSize, systemError, nullptr}, callback, context, ignoreInvalid, level2, kind);
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_Add(
    PVOID tree, PCHAR text, ULONG textSize, PULONG systemError, PCHAR path, PCHAR newName, FILE_TIME, PVOID* parent,
    PVOID* newChild) {
    const Outputs out{text, textSize, systemError, nullptr};
    return Guarded(out, [&] {
        if (newChild) *newChild = nullptr;
        TreeObject* t = AsTree(tree);
        if (!t) return out.Fail(EN_INVALID_INPUT_PARAMETER, "not a file tree");
        if (!path && (!newName || !*newName)) return out.Fail(EN_INVALID_INPUT_PARAMETER, "a virtual folder needs a name");
        std::lock_guard<std::mutex> hold(t->lock);
        TreeNode* added = nullptr;
        const std::u16string name = newName ? Utf8ToUtf16(newName) : std::u16string();
        const TreeResult r = path ? t->tree.AddFromDisk(*ParentOf(*t, parent), PathFromUtf8(path), name, &added)
                                  : t->tree.AddFolder(*ParentOf(*t, parent), name, &added);
        t->stale = true;
        if (newChild) *newChild = added;
        return FromTreeResult(out, r);
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_AddMemory(
    PVOID tree, PCHAR text, ULONG textSize, PULONG systemError, PUCHAR bytes, LARGE_INTEGER size, PCHAR name, FILE_TIME,
    PVOID* parent, PVOID* newChild) {
    const Outputs out{text, textSize, systemError, nullptr};
    return Guarded(out, [&] {
        if (newChild) *newChild = nullptr;
        TreeObject* t = AsTree(tree);
        if (!t) return out.Fail(EN_INVALID_INPUT_PARAMETER, "not a file tree");
        if (!name || size.QuadPart < 0 || (size.QuadPart > 0 && !bytes))
            return out.Fail(EN_INVALID_INPUT_PARAMETER, "a memory file needs a name and its bytes");
        std::lock_guard<std::mutex> hold(t->lock);
        std::vector<std::uint8_t> copy(bytes, bytes + size.QuadPart);
        const auto now = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
        TreeNode* added = nullptr;
        const TreeResult r = t->tree.AddMemory(*ParentOf(*t, parent), Utf8ToUtf16(name), std::move(copy), now, &added);
        t->stale = true;
        if (newChild) *newChild = added;
        return FromTreeResult(out, r);
    });
}

STARBURN_IMPEX_API LONG STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetLevel(PVOID tree) {
    TreeObject* t = AsTree(tree);
    if (!t) return 0;
    std::lock_guard<std::mutex> hold(t->lock);
    return t->tree.Level();
}

STARBURN_IMPEX_API PVOID STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetRoot(PVOID tree) {
    TreeObject* t = AsTree(tree);
    if (!t) return nullptr;
    std::lock_guard<std::mutex> hold(t->lock);
    return t->tree.Root().children.empty() ? nullptr : &t->tree.Root();
}

STARBURN_IMPEX_API PVOID STARBURN_CALL StarBurn_ISO9660FileTree_GetRoot(PVOID tree) {
    return StarBurn_ISO9660JolietFileTree_GetRoot(tree);
}

STARBURN_IMPEX_API PVOID STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetFirstKid(PVOID tree, PVOID node) {
    TreeObject* t = AsTree(tree);
    auto* n = static_cast<TreeNode*>(node);
    if (!t || !n) return nullptr;
    std::lock_guard<std::mutex> hold(t->lock);
    return n->children.empty() ? nullptr : n->children.front().get();
}

STARBURN_IMPEX_API PVOID STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetNextKid(PVOID tree, PVOID node, PVOID previous) {
    TreeObject* t = AsTree(tree);
    auto* n = static_cast<TreeNode*>(node);
    if (!t || !n) return nullptr;
    std::lock_guard<std::mutex> hold(t->lock);
    for (std::size_t i = 0; i + 1 < n->children.size(); ++i)
        if (n->children[i].get() == previous) return n->children[i + 1].get();
    return nullptr;
}

STARBURN_IMPEX_API PVOID STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetParent(PVOID tree, PVOID node) {
    TreeObject* t = AsTree(tree);
    auto* n = static_cast<TreeNode*>(node);
    return t && n ? n->parent : nullptr;
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_BuildImage(
    PVOID tree, PCHAR text, ULONG textSize, PULONG systemError, LONG startLba, LONG, BOOLEAN, PCHAR volumeSet,
    PCHAR publisher, PCHAR application) {
    return BuildTreeImage(tree, {text, textSize, systemError, nullptr}, startLba, volumeSet, publisher, application);
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660FileTree_BuildImage(
    PVOID tree, PCHAR text, ULONG textSize, PULONG systemError, LONG startLba, LONG, BOOLEAN, PCHAR volumeSet,
    PCHAR publisher, PCHAR application) {
    return BuildTreeImage(tree, {text, textSize, systemError, nullptr}, startLba, volumeSet, publisher, application);
}

STARBURN_IMPEX_API LONG STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetSizeInUCHARs(PVOID tree, PLONG high) {
    TreeObject* t = AsTree(tree);
    const std::uint64_t bytes = t && t->image.IsBuilt() ? t->image.Bytes() : 0;
    if (high) *high = static_cast<LONG>(bytes >> 32);
    return static_cast<LONG>(static_cast<std::uint32_t>(bytes));
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_Read(PVOID tree, PCHAR text, ULONG textSize,
                                                                                    PULONG systemError, LONG size,
                                                                                    PUCHAR buffer) {
    const Outputs out{text, textSize, systemError, nullptr};
    return Guarded(out, [&] {
        TreeObject* t = AsTree(tree);
        if (!t || !buffer || size < 0) return out.Fail(EN_INVALID_INPUT_PARAMETER, "not a file tree, or no buffer");
        std::lock_guard<std::mutex> hold(t->lock);
        if (!t->image.IsBuilt() || t->stale) return out.Fail(EN_INVALID_STATE, "the tree has not been built since it last changed");
        std::size_t produced = 0;
        StreamError error;
        if (!t->image.Read(buffer, static_cast<std::size_t>(size), produced, error))
            return out.Report({EN_SYSTEM_CALL_FAILED, error.systemError, error.why});
        if (produced < static_cast<std::size_t>(size)) return out.Fail(EN_RANGE, "read past the end of the image");
        return out.Ok();
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_SeekToBegin(PVOID tree, PCHAR text,
                                                                                           ULONG textSize,
                                                                                           PULONG systemError) {
    const Outputs out{text, textSize, systemError, nullptr};
    TreeObject* t = AsTree(tree);
    if (!t) return out.Fail(EN_INVALID_INPUT_PARAMETER, "not a file tree");
    std::lock_guard<std::mutex> hold(t->lock);
    t->image.Rewind();
    return out.Ok();
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_ImportTrack(
    PVOID tree, PCHAR text, ULONG textSize, PULONG systemError, PCDB_FAILURE_INFORMATION cdb, PVOID burner, LONG track) {
    const Outputs out{text, textSize, systemError, cdb};
    return Guarded(out, [&] {
        TreeObject* t = AsTree(tree);
        BurnerObject* b = AsBurner(burner);
        if (!t || !b) return out.Fail(EN_INVALID_INPUT_PARAMETER, "a file tree and a burner are needed");
        std::scoped_lock hold(t->lock, b->lock);
        long last = 0;
        DeviceStatus status = b->engine.LastTrack(last);
        if (!status.Ok()) return out.Report(status);
        if (track < 1 || track > last) return out.Fail(EN_INVALID_INPUT_PARAMETER, "there is no track " + std::to_string(track));
        STARBURN_TRACK_INFORMATION info;
        b->engine.TrackInformation(track, info);
        if (info.m__BOOLEAN__IsDamage) return out.Fail(EN_GENERAL_READ_ERROR, "track " + std::to_string(track) + " is damaged");
        SessionTree session;
        std::string error;
        const BlockReader read = [b](std::uint32_t lba, std::uint32_t count, std::uint8_t* into) {
            return b->engine.ReadBlocks(lba, count, into);
        };
        if (!ReadSession(read, b->engine.TrackStart(track), SessionLimits{}, session, error))
            return out.Fail(EN_GENERAL_READ_ERROR, "track " + std::to_string(track) + ": " + error);
        for (auto& child : session.root->children) {
            const TreeResult r = t->tree.AddNode(t->tree.Root(), std::move(child), nullptr);
            if (!r.ok) return FromTreeResult(out, r);
        }
        t->stale = true;
        return out.Ok();
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Create(
    PVOID* burner, PCHAR text, ULONG textSize, PULONG systemError, PCDB_FAILURE_INFORMATION cdb, PCALLBACK callback,
    PVOID context, UCHAR port, UCHAR bus, UCHAR target, UCHAR lun, LONG) {
    const Outputs out{text, textSize, systemError, cdb};
    return Guarded(out, [&] {
        if (!burner) return out.Fail(EN_INVALID_INPUT_PARAMETER, "no place for the burner was given");
        *burner = nullptr;
        std::vector<ConfigProblem> problems;
        DiscConfig config = LoadDiscConfig(problems);
        if (!problems.empty()) return out.Fail(EN_INVALID_INPUT_PARAMETER, ConfigProblems(problems));
        if (port != kPort || bus != kBus || lun != kLun || target >= config.devices)
            return out.Fail(EN_NOT_FOUND, "no device at " + std::to_string(port) + ":" + std::to_string(bus) + ":" +
                                              std::to_string(target) + ":" + std::to_string(lun));
        auto object = std::make_unique<BurnerObject>(std::move(config), target);
        if (!object->engine.StateProblem().empty()) return out.Fail(EN_UNRECOGNIZED_MEDIA, object->engine.StateProblem());
        object->callback = callback;
        object->context = context;
        *burner = object.release();
        return out.Ok();
    });
}

STARBURN_IMPEX_API VOID STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetDeviceInformation(PVOID burner, PCHAR vendor,
                                                                                     PCHAR product, PCHAR revision,
                                                                                     PULONG cacheBytes) {
    BurnerObject* b = AsBurner(burner);
    if (!b) return;
    const DiscConfig& c = b->engine.Config();
    if (vendor) std::memcpy(vendor, c.vendor.c_str(), c.vendor.size() + 1);
    if (product) std::memcpy(product, c.product.c_str(), c.product.size() + 1);
    if (revision) std::memcpy(revision, c.revision.c_str(), c.revision.size() + 1);
    if (cacheBytes) *cacheBytes = c.cacheBytes;
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_ProbeSupportedWriteModes(
    PVOID burner, PCHAR text, ULONG textSize, PULONG systemError, PCDB_FAILURE_INFORMATION cdb, PBOOLEAN tao,
    PBOOLEAN sao, PBOOLEAN daoPq, PBOOLEAN daoRaw) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) {
        if (tao) *tao = b.engine.Config().trackAtOnce ? TRUE : FALSE;
        if (sao) *sao = TRUE;
        if (daoPq) *daoPq = FALSE;
        if (daoRaw) *daoRaw = FALSE;
        return DeviceStatus{};
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_TestUnitReady(PVOID burner, PCHAR text,
                                                                                         ULONG textSize,
                                                                                         PULONG systemError,
                                                                                         PCDB_FAILURE_INFORMATION cdb) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) { return b.engine.TestUnitReady(); });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetBUP(PVOID burner, PCHAR text, ULONG textSize,
                                                                                  PULONG systemError,
                                                                                  PCDB_FAILURE_INFORMATION cdb,
                                                                                  PBOOLEAN enabled, PBOOLEAN supported) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) {
        if (enabled) *enabled = b.engine.BupEnabled() ? TRUE : FALSE;
        if (supported) *supported = b.engine.Config().bufferUnderrunProtection ? TRUE : FALSE;
        return DeviceStatus{};
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_SetBUP(PVOID burner, PCHAR text, ULONG textSize,
                                                                                  PULONG systemError,
                                                                                  PCDB_FAILURE_INFORMATION cdb,
                                                                                  BOOLEAN enabled) {
    return OnBurner(burner, {text, textSize, systemError, cdb},
                    [&](BurnerObject& b) { return b.engine.SetBup(enabled != FALSE); });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_SetSpeeds(PVOID burner, PCHAR text,
                                                                                     ULONG textSize, PULONG systemError,
                                                                                     PCDB_FAILURE_INFORMATION cdb,
                                                                                     ULONG read, ULONG write) {
    return OnBurner(burner, {text, textSize, systemError, cdb},
                    [&](BurnerObject& b) { return b.engine.SetSpeeds(read, write); });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetSpeeds(
    PVOID burner, PCHAR text, ULONG textSize, PULONG systemError, PCDB_FAILURE_INFORMATION cdb, PULONG read,
    PULONG maxRead, PULONG write, PULONG maxWrite) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) {
        if (!b.engine.HasMedium()) return DeviceStatus::Sense(0x02, 0x3A, 0x00, "medium not present");
        std::uint32_t r = 0, mr = 0, w = 0, mw = 0;
        b.engine.Speeds(r, mr, w, mw);
        if (read) *read = r;
        if (maxRead) *maxRead = mr;
        if (write) *write = w;
        if (maxWrite) *maxWrite = mw;
        return DeviceStatus{};
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetTrackInformation(
    PVOID burner, PCHAR text, ULONG textSize, PULONG systemError, PCDB_FAILURE_INFORMATION cdb, LONG track,
    PSTARBURN_TRACK_INFORMATION info) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) {
        if (!info) return DeviceStatus::Fail(EN_INVALID_INPUT_PARAMETER, "no track information record was given");
        return b.engine.TrackInformation(track, *info);
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetDiscInformation(
    PVOID burner, PCHAR text, ULONG textSize, PULONG systemError, PCDB_FAILURE_INFORMATION cdb,
    PSTARBURN_DISC_INFORMATION info) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) {
        if (!info) return DeviceStatus::Fail(EN_INVALID_INPUT_PARAMETER, "no disc information record was given");
        return b.engine.DiscInformation(*info);
    });
}

STARBURN_IMPEX_API DISC_TYPE STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetInsertedDiscType(PVOID burner) {
    BurnerObject* b = AsBurner(burner);
    if (!b) return DISC_TYPE_UNKNOWN;
    std::lock_guard<std::mutex> hold(b->lock);
    return b->engine.InsertedType();
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetLastTrack(
    PVOID burner, PCHAR text, ULONG textSize, PULONG systemError, PCDB_FAILURE_INFORMATION cdb, PLONG number) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) {
        long last = 0;
        DeviceStatus status = b.engine.LastTrack(last);
        if (number) *number = static_cast<LONG>(last);
        return status;
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Blank(PVOID burner, PCHAR text, ULONG textSize,
                                                                                 PULONG systemError,
                                                                                 PCDB_FAILURE_INFORMATION cdb,
                                                                                 ERASE_TYPE type) {
    return EraseMedium(burner, {text, textSize, systemError, cdb}, type);
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Erase(PVOID burner, PCHAR text, ULONG textSize,
                                                                                 PULONG systemError,
                                                                                 PCDB_FAILURE_INFORMATION cdb,
                                                                                 ERASE_TYPE type) {
    return EraseMedium(burner, {text, textSize, systemError, cdb}, type);
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_SendOPC(PVOID burner, PCHAR text, ULONG textSize,
                                                                                   PULONG systemError,
                                                                                   PCDB_FAILURE_INFORMATION cdb) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) { return b.engine.SendOpc(); });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_TrackAtOnceFromTree(
    PVOID burner, PCHAR text, ULONG textSize, PULONG systemError, PCDB_FAILURE_INFORMATION cdb, PVOID tree, BOOLEAN,
    BOOLEAN testWrite, BOOLEAN nextSessionAllowed, ULONG, ULONG) {
    const Outputs out{text, textSize, systemError, cdb};
    return Guarded(out, [&] {
        BurnerObject* b = AsBurner(burner);
        TreeObject* t = AsTree(tree);
        if (!b || !t) return out.Fail(EN_INVALID_INPUT_PARAMETER, "a burner and a file tree are needed");
        std::scoped_lock hold(b->lock, t->lock);
        if (!b->engine.Config().trackAtOnce)
            return out.Report(DeviceStatus::Sense(0x05, 0x64, 0x00, "illegal mode for this track (no Track-At-Once)"));
        if (!t->image.IsBuilt() || t->stale)
            return out.Fail(EN_INVALID_STATE, "the tree has not been built since it last changed");
        Notify(b->callback, b->context, CN_CDVD_WRITE_BEGIN);
        auto progress = [b](std::uint64_t written, std::uint64_t total) {
            LARGE_INTEGER size{}, done{};
            size.QuadPart = static_cast<std::int64_t>(total);
            done.QuadPart = static_cast<std::int64_t>(written);
            Notify(b->callback, b->context, CN_CDVD_WRITE_PROGRESS, &size, &done);
        };
        DeviceStatus status;
        if (testWrite) {
            // A test write reads every source as a real one would, and records nothing.
            std::vector<std::uint8_t> buffer(1u << 20);
            t->image.Rewind();
            std::size_t produced = 0;
            StreamError error;
            do {
                if (!t->image.Read(buffer.data(), buffer.size(), produced, error)) {
                    status = {EN_SYSTEM_CALL_FAILED, error.systemError, error.why};
                    break;
                }
                progress(t->image.Position() / IsoImage::kBlockSizeBytes, t->image.Blocks());
            } while (produced == buffer.size());
        } else {
            status = b->engine.WriteTrack(t->image, nextSessionAllowed != FALSE, progress);
        }
        Notify(b->callback, b->context, CN_CDVD_WRITE_END);
        return out.Report(status);
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_CloseSession(PVOID burner, PCHAR text,
                                                                                        ULONG textSize, PULONG systemError,
                                                                                        PCDB_FAILURE_INFORMATION cdb) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) {
        Notify(b.callback, b.context, CN_SYNCHRONIZE_CACHE_BEGIN);
        DeviceStatus status = b.engine.CloseSession();
        Notify(b.callback, b.context, CN_SYNCHRONIZE_CACHE_END);
        return status;
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Eject(PVOID burner, PCHAR text, ULONG textSize,
                                                                                 PULONG systemError,
                                                                                 PCDB_FAILURE_INFORMATION cdb) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) { return b.engine.Eject(); });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Load(PVOID burner, PCHAR text, ULONG textSize,
                                                                                PULONG systemError,
                                                                                PCDB_FAILURE_INFORMATION cdb) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) { return b.engine.Load(); });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Lock(PVOID burner, PCHAR text, ULONG textSize,
                                                                                PULONG systemError,
                                                                                PCDB_FAILURE_INFORMATION cdb) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject& b) {
        return b.engine.HasMedium() ? DeviceStatus{} : DeviceStatus::Sense(0x02, 0x3A, 0x00, "medium not present");
    });
}

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Release(PVOID burner, PCHAR text,
                                                                                   ULONG textSize, PULONG systemError,
                                                                                   PCDB_FAILURE_INFORMATION cdb) {
    return OnBurner(burner, {text, textSize, systemError, cdb}, [&](BurnerObject&) { return DeviceStatus{}; });
}

}  // extern "C"
