// StarBurnLoader: resolves the library's flat functions by name and turns their out-parameters into DiscResults.
#include "export/starburn_loader.h"

#include <cstring>

#include "export/starburn_api.h"
#include "platform/text.h"

namespace uc::exporting {

#define UC_SB_FUNCTIONS(X)                                                                                       \
    X(StarBurn_UpStartEx) X(StarBurn_DownShut) X(StarBurn_Destroy) X(StarBurn_FindDevice)                       \
    X(StarBurn_GetDeviceNameByDeviceAddress) X(StarBurn_ISO9660FileTree_Create)                                  \
    X(StarBurn_ISO9660JolietFileTree_Add) X(StarBurn_ISO9660JolietFileTree_GetLevel)                             \
    X(StarBurn_ISO9660FileTree_GetRoot) X(StarBurn_ISO9660FileTree_BuildImage)                                   \
    X(StarBurn_ISO9660JolietFileTree_GetSizeInUCHARs) X(StarBurn_ISO9660JolietFileTree_ImportTrack)             \
    X(StarBurn_CdvdBurnerGrabber_Create) X(StarBurn_CdvdBurnerGrabber_GetDeviceInformation)                      \
    X(StarBurn_CdvdBurnerGrabber_ProbeSupportedWriteModes) X(StarBurn_CdvdBurnerGrabber_TestUnitReady)          \
    X(StarBurn_CdvdBurnerGrabber_GetBUP) X(StarBurn_CdvdBurnerGrabber_SetBUP) X(StarBurn_CdvdBurnerGrabber_SetSpeeds) \
    X(StarBurn_CdvdBurnerGrabber_GetSpeeds) X(StarBurn_CdvdBurnerGrabber_GetTrackInformation)                    \
    X(StarBurn_CdvdBurnerGrabber_GetDiscInformation) X(StarBurn_CdvdBurnerGrabber_GetInsertedDiscType)           \
    X(StarBurn_CdvdBurnerGrabber_GetLastTrack) X(StarBurn_CdvdBurnerGrabber_Erase)                               \
    X(StarBurn_CdvdBurnerGrabber_SendOPC) X(StarBurn_CdvdBurnerGrabber_TrackAtOnceFromTree)                      \
    X(StarBurn_CdvdBurnerGrabber_CloseSession) X(StarBurn_CdvdBurnerGrabber_Eject)

struct StarBurnLoader::Functions {
#define UC_SB_MEMBER(name) decltype(&::name) name = nullptr;
    UC_SB_FUNCTIONS(UC_SB_MEMBER)
#undef UC_SB_MEMBER
};

namespace {
constexpr ULONG kTextSize = 1024;
constexpr LONG kCacheMBs = CACHE_SIZE_IN_MBS;

// Buffers an operation writes its exception text and system error into.
struct Outputs {
    char text[kTextSize] = {};
    ULONG status = 0;
    CDB_FAILURE_INFORMATION cdb{};
    DiscResult Result(EXCEPTION_NUMBER exception) const {
        DiscResult r;
        r.exception = static_cast<long>(exception);
        r.status = status;
        r.text.assign(text, strnlen(text, kTextSize));
        if (cdb.m__BOOLEAN__IsValid) {  // fixed-format sense: key in byte 2, ASC and ASCQ in bytes 12 and 13
            r.senseKey = cdb.m__UCHAR__Sense[2] & 0x0F;
            r.asc = cdb.m__UCHAR__Sense[12];
            r.ascq = cdb.m__UCHAR__Sense[13];
        }
        return r;
    }
};

DiscResult Missing() {
    DiscResult r;
    r.exception = EN_NOT_FOUND;
    r.text = "the disc-writing library is not loaded";
    return r;
}

void STARBURN_CALL OnBurnerEvent(CALLBACK_NUMBER number, PVOID context, PVOID special1, PVOID special2) {
    if (number != CN_CDVD_WRITE_PROGRESS || !context || !special1 || !special2) return;
    try {
        const auto& progress = *static_cast<const WriteProgress*>(context);
        if (progress)
            progress(static_cast<const LARGE_INTEGER*>(special2)->QuadPart,
                     static_cast<const LARGE_INTEGER*>(special1)->QuadPart);
    } catch (...) {
        // Nothing may cross back into the library.
    }
}

void STARBURN_CALL OnDeviceFound(CALLBACK_NUMBER number, PVOID context, PVOID special1, PVOID) {
    if (number != CN_FIND_DEVICE || !context || !special1) return;
    const auto* a = static_cast<const SCSI_DEVICE_ADDRESS*>(special1);
    try {
        static_cast<std::vector<DeviceAddress>*>(context)->push_back(
            {a->m__UCHAR__PortID, a->m__UCHAR__BusID, a->m__UCHAR__TargetID, a->m__UCHAR__LUN});
    } catch (...) {
    }
}

PCHAR Text(const std::string& s) { return const_cast<PCHAR>(s.c_str()); }
}  // namespace

StarBurnLoader::StarBurnLoader(const std::wstring& libraryName) : m_fn(std::make_unique<Functions>()) {
    const std::wstring name = libraryName.empty() ? std::wstring(STARBURN_LIBRARY_NAME) : libraryName;
    if (!m_library.Load(name)) {
        m_problem = L"'" + name + L"' cannot be loaded: " + m_library.LastError();
        return;
    }
#define UC_SB_RESOLVE(fname)                                                    \
    if (!m_library.Resolve(#fname, m_fn->fname)) {                              \
        m_problem = L"'" + name + L"' lacks " + FromUtf8(#fname);               \
        return;                                                                 \
    }
    UC_SB_FUNCTIONS(UC_SB_RESOLVE)
#undef UC_SB_RESOLVE
    char key[] = "utils_controls";
    if (m_fn->StarBurn_UpStartEx(key, sizeof key - 1) != EN_SUCCESS) {
        m_problem = L"'" + name + L"' refused to start";
        return;
    }
    m_started = true;
    m_available = true;
}

StarBurnLoader::~StarBurnLoader() {
    if (m_started) m_fn->StarBurn_DownShut();
}

std::vector<DeviceAddress> StarBurnLoader::FindDevices() {
    std::vector<DeviceAddress> found;
    if (m_available) m_fn->StarBurn_FindDevice(SCSI_DEVICE_RO_DIRECT_ACCESS, FALSE, &OnDeviceFound, &found);
    return found;
}

std::string StarBurnLoader::DeviceName(const DeviceAddress& a) {
    if (!m_available) return {};
    char name[MAX_PATH + 1] = {};
    if (m_fn->StarBurn_GetDeviceNameByDeviceAddress(a.port, a.bus, a.target, a.lun, name) != EN_SUCCESS) return {};
    return std::string(name, strnlen(name, MAX_PATH));
}

DiscResult StarBurnLoader::CreateTree(DiscObject& tree) {
    if (!m_available) return Missing();
    Outputs o;
    tree = nullptr;
    return o.Result(m_fn->StarBurn_ISO9660FileTree_Create(&tree, o.text, kTextSize, &o.status, nullptr, nullptr, FALSE,
                                                          FALSE, FALSE, FILE_TREE_JOLIET));
}

DiscResult StarBurnLoader::CreateBurner(const DeviceAddress& a, DiscObject& burner, WriteProgress progress) {
    if (!m_available) return Missing();
    auto context = std::make_unique<WriteProgress>(std::move(progress));
    Outputs o;
    burner = nullptr;
    const EXCEPTION_NUMBER e = m_fn->StarBurn_CdvdBurnerGrabber_Create(&burner, o.text, kTextSize, &o.status, &o.cdb,
                                                                       &OnBurnerEvent, context.get(), a.port, a.bus,
                                                                       a.target, a.lun, kCacheMBs);
    if (e == EN_SUCCESS && burner) {
        std::lock_guard<std::mutex> g(m_mutex);
        m_progress[burner] = std::move(context);
    }
    return o.Result(e);
}

DeviceInformation StarBurnLoader::GetDeviceInformation(DiscObject burner) {
    DeviceInformation info;
    if (!m_available || !burner) return info;
    char vendor[256] = {}, product[256] = {}, revision[256] = {};
    ULONG cache = 0;
    m_fn->StarBurn_CdvdBurnerGrabber_GetDeviceInformation(burner, vendor, product, revision, &cache);
    info.vendor = vendor;
    info.product = product;
    info.revision = revision;
    info.cacheBytes = cache;
    return info;
}

DiscResult StarBurnLoader::ProbeSupportedWriteModes(DiscObject burner, WriteModes& modes) {
    if (!m_available) return Missing();
    Outputs o;
    BOOLEAN tao = FALSE, sao = FALSE, pq = FALSE, raw = FALSE;
    const EXCEPTION_NUMBER e = m_fn->StarBurn_CdvdBurnerGrabber_ProbeSupportedWriteModes(
        burner, o.text, kTextSize, &o.status, &o.cdb, &tao, &sao, &pq, &raw);
    modes = {tao != FALSE, sao != FALSE, pq != FALSE, raw != FALSE};
    return o.Result(e);
}

DiscResult StarBurnLoader::TestUnitReady(DiscObject burner) {
    if (!m_available) return Missing();
    Outputs o;
    return o.Result(m_fn->StarBurn_CdvdBurnerGrabber_TestUnitReady(burner, o.text, kTextSize, &o.status, &o.cdb));
}

DiscResult StarBurnLoader::GetBUP(DiscObject burner, bool& enabled, bool& supported) {
    if (!m_available) return Missing();
    Outputs o;
    BOOLEAN on = FALSE, has = FALSE;
    const EXCEPTION_NUMBER e =
        m_fn->StarBurn_CdvdBurnerGrabber_GetBUP(burner, o.text, kTextSize, &o.status, &o.cdb, &on, &has);
    enabled = on != FALSE;
    supported = has != FALSE;
    return o.Result(e);
}

DiscResult StarBurnLoader::SetBUP(DiscObject burner, bool enabled) {
    if (!m_available) return Missing();
    Outputs o;
    return o.Result(m_fn->StarBurn_CdvdBurnerGrabber_SetBUP(burner, o.text, kTextSize, &o.status, &o.cdb,
                                                            enabled ? TRUE : FALSE));
}

DiscResult StarBurnLoader::SetSpeeds(DiscObject burner, unsigned long read, unsigned long write) {
    if (!m_available) return Missing();
    Outputs o;
    return o.Result(m_fn->StarBurn_CdvdBurnerGrabber_SetSpeeds(burner, o.text, kTextSize, &o.status, &o.cdb,
                                                               static_cast<ULONG>(read), static_cast<ULONG>(write)));
}

DiscResult StarBurnLoader::GetSpeeds(DiscObject burner, Speeds& speeds) {
    if (!m_available) return Missing();
    Outputs o;
    ULONG cr = 0, mr = 0, cw = 0, mw = 0;
    const EXCEPTION_NUMBER e =
        m_fn->StarBurn_CdvdBurnerGrabber_GetSpeeds(burner, o.text, kTextSize, &o.status, &o.cdb, &cr, &mr, &cw, &mw);
    speeds = {cr, mr, cw, mw};
    return o.Result(e);
}

DiscResult StarBurnLoader::GetTrackInformation(DiscObject burner, long track, TrackInformation& info) {
    if (!m_available) return Missing();
    Outputs o;
    STARBURN_TRACK_INFORMATION t{};
    const EXCEPTION_NUMBER e = m_fn->StarBurn_CdvdBurnerGrabber_GetTrackInformation(
        burner, o.text, kTextSize, &o.status, &o.cdb, static_cast<LONG>(track), &t);
    info.blank = t.m__BOOLEAN__IsBlank != FALSE;
    info.trackNumber = t.m__UCHAR__TrackNumber;
    info.nextWritableValid = t.m__BOOLEAN__IsNextWritableAddressValid != FALSE;
    info.nextWritableAddress = t.m__LONG__NextWritableAddress;
    info.freeBlocks = t.m__LONG__FreeLBs;
    return o.Result(e);
}

DiscResult StarBurnLoader::GetDiscInformation(DiscObject burner, DiscInformation& info) {
    if (!m_available) return Missing();
    Outputs o;
    STARBURN_DISC_INFORMATION d{};
    const EXCEPTION_NUMBER e =
        m_fn->StarBurn_CdvdBurnerGrabber_GetDiscInformation(burner, o.text, kTextSize, &o.status, &o.cdb, &d);
    info.erasable = d.m__BOOLEAN__IsErasable != FALSE;
    info.discStatus = d.m__UCHAR__DiscStatus;
    info.lastSessionStatus = d.m__UCHAR__LastSessionStatus;
    info.sessions = d.m__UCHAR__NumberOfSessions;
    return o.Result(e);
}

int StarBurnLoader::GetInsertedDiscType(DiscObject burner) {
    return m_available && burner ? static_cast<int>(m_fn->StarBurn_CdvdBurnerGrabber_GetInsertedDiscType(burner)) : 0;
}

DiscResult StarBurnLoader::GetLastTrack(DiscObject burner, long& track) {
    if (!m_available) return Missing();
    Outputs o;
    LONG last = 0;
    const EXCEPTION_NUMBER e =
        m_fn->StarBurn_CdvdBurnerGrabber_GetLastTrack(burner, o.text, kTextSize, &o.status, &o.cdb, &last);
    track = last;
    return o.Result(e);
}

DiscResult StarBurnLoader::ImportTrack(DiscObject tree, DiscObject burner, long track) {
    if (!m_available) return Missing();
    Outputs o;
    return o.Result(m_fn->StarBurn_ISO9660JolietFileTree_ImportTrack(tree, o.text, kTextSize, &o.status, &o.cdb,
                                                                    burner, static_cast<LONG>(track)));
}

DiscObject StarBurnLoader::GetRoot(DiscObject tree) {
    return m_available && tree ? m_fn->StarBurn_ISO9660FileTree_GetRoot(tree) : nullptr;
}

DiscResult StarBurnLoader::AddFromDisk(DiscObject tree, DiscObject parent, const std::string& path,
                                       const std::string& newName, DiscObject& child) {
    if (!m_available) return Missing();
    Outputs o;
    child = nullptr;
    return o.Result(m_fn->StarBurn_ISO9660JolietFileTree_Add(tree, o.text, kTextSize, &o.status, Text(path),
                                                             newName.empty() ? nullptr : Text(newName),
                                                             FILE_TIME_LAST_WRITE, parent ? &parent : nullptr, &child));
}

DiscResult StarBurnLoader::AddFolder(DiscObject tree, DiscObject parent, const std::string& name, DiscObject& child) {
    if (!m_available) return Missing();
    Outputs o;
    child = nullptr;
    return o.Result(m_fn->StarBurn_ISO9660JolietFileTree_Add(tree, o.text, kTextSize, &o.status, nullptr, Text(name),
                                                             FILE_TIME_LAST_WRITE, parent ? &parent : nullptr, &child));
}

long StarBurnLoader::GetLevel(DiscObject tree) {
    return m_available && tree ? m_fn->StarBurn_ISO9660JolietFileTree_GetLevel(tree) : 0;
}

DiscResult StarBurnLoader::Erase(DiscObject burner) {
    if (!m_available) return Missing();
    Outputs o;
    return o.Result(m_fn->StarBurn_CdvdBurnerGrabber_Erase(burner, o.text, kTextSize, &o.status, &o.cdb,
                                                           ERASE_TYPE_BLANK_DISC_FAST));
}

DiscResult StarBurnLoader::BuildImage(DiscObject tree, long startingBlock, const std::string& volumeSet,
                                      const std::string& publisher, const std::string& application) {
    if (!m_available) return Missing();
    Outputs o;
    return o.Result(m_fn->StarBurn_ISO9660FileTree_BuildImage(tree, o.text, kTextSize, &o.status,
                                                              static_cast<LONG>(startingBlock), ISO9660_TREE_LEVEL,
                                                              FALSE, Text(volumeSet), Text(publisher),
                                                              Text(application)));
}

std::int64_t StarBurnLoader::GetImageSize(DiscObject tree) {
    if (!m_available || !tree) return 0;
    LONG high = 0;
    const LONG low = m_fn->StarBurn_ISO9660JolietFileTree_GetSizeInUCHARs(tree, &high);
    return (static_cast<std::int64_t>(high) << 32) | static_cast<std::uint32_t>(low);
}

DiscResult StarBurnLoader::SendOPC(DiscObject burner) {
    if (!m_available) return Missing();
    Outputs o;
    return o.Result(m_fn->StarBurn_CdvdBurnerGrabber_SendOPC(burner, o.text, kTextSize, &o.status, &o.cdb));
}

DiscResult StarBurnLoader::TrackAtOnceFromTree(DiscObject burner, DiscObject tree, bool nextSessionAllowed) {
    if (!m_available) return Missing();
    Outputs o;
    return o.Result(m_fn->StarBurn_CdvdBurnerGrabber_TrackAtOnceFromTree(
        burner, o.text, kTextSize, &o.status, &o.cdb, tree, FALSE, FALSE, nextSessionAllowed ? TRUE : FALSE,
        WRITE_REPORT_DELAY_IN_SECONDS, BUFFER_STATUS_REPORT_DELAY_IN_SECONDS));
}

DiscResult StarBurnLoader::CloseSession(DiscObject burner) {
    if (!m_available) return Missing();
    Outputs o;
    return o.Result(m_fn->StarBurn_CdvdBurnerGrabber_CloseSession(burner, o.text, kTextSize, &o.status, &o.cdb));
}

DiscResult StarBurnLoader::Eject(DiscObject burner) {
    if (!m_available) return Missing();
    Outputs o;
    return o.Result(m_fn->StarBurn_CdvdBurnerGrabber_Eject(burner, o.text, kTextSize, &o.status, &o.cdb));
}

void StarBurnLoader::Destroy(DiscObject& object) {
    if (!m_available || !object) return;
    const DiscObject was = object;
    m_fn->StarBurn_Destroy(&object);
    object = nullptr;
    std::lock_guard<std::mutex> g(m_mutex);
    m_progress.erase(was);
}

}  // namespace uc::exporting
