// CStarDiscBurn: the burn's steps in order, the tree built from the queue, the burn thread and erasing.
#include "export/disc_burner.h"

#include <cstdarg>
#include <map>
#include <set>

#include "export/disc_decision.h"
#include "export/export_files.h"
#include "export/export_paths.h"
#include "export/starburn_loader.h"
#include "platform/localisation.h"
#include "platform/logger.h"
#include "platform/paths.h"
#include "platform/profile.h"
#include "platform/text.h"

using namespace uc::exporting;

namespace {
constexpr long kTrackInvisible = 0xFF;        // the next writable track
constexpr unsigned long kMaximumSpeed = 0xFFFF;
constexpr int kTreeLevelLimit = 8;            // deepest level every ISO 9660 reader must handle
constexpr long kCacheMBs = 160;

std::tm LocalNow() {
    const std::time_t t = std::time(nullptr);
    std::tm out{};
#ifdef _WIN32
    localtime_s(&out, &t);
#else
    localtime_r(&t, &out);
#endif
    return out;
}

std::wstring Stamp(const std::tm& t, const wchar_t* format) {
    wchar_t buffer[64] = {};
    std::wcsftime(buffer, 64, format, &t);
    return buffer;
}

std::wstring Lower(std::wstring s) {
    for (wchar_t& c : s) c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
    return s;
}

bool IsDescriptor(const std::wstring& name) {
    const std::wstring n = Lower(name);
    return n == L"rpt.xml" || n == L"worksheet.xml" || n == L"patient.xml" || n == L"study.xml";
}

std::vector<std::wstring> Components(const std::wstring& relative) {
    std::vector<std::wstring> parts;
    std::wstring part;
    for (wchar_t c : relative) {
        if (IsSeparator(c) || c == L'\\') {
            if (!part.empty()) parts.push_back(part);
            part.clear();
        } else {
            part += c;
        }
    }
    if (!part.empty()) parts.push_back(part);
    return parts;
}

// "name (2).ext", "name (3).ext", ... for a name already taken in a disc folder.
std::wstring Numbered(const std::wstring& name, int n) {
    const std::size_t dot = name.rfind(L'.');
    const std::wstring tail = L" (" + std::to_wstring(n) + L")";
    return dot == std::wstring::npos || dot == 0 ? name + tail : name.substr(0, dot) + tail + name.substr(dot);
}
}  // namespace

void* CStarDiscBurn::m_hParentWnd = nullptr;
std::atomic<CStarDiscBurn::GeneratePDFCallback> CStarDiscBurn::s_generatePDF{nullptr};

struct CStarDiscBurn::Session {
    explicit Session(IDiscOperations& o) : ops(o) {}
    ~Session() {
        ops.Destroy(burner);
        ops.Destroy(tree);
    }
    IDiscOperations& ops;
    DiscObject tree = nullptr, burner = nullptr;
    std::wstring tempFolder;
    void* exportNode = nullptr;                         // the time-stamped folder the queue goes into
    std::map<std::wstring, void*> folders;              // disc folder below it (relative, lower case) -> node
    std::map<void*, std::set<std::wstring>> names;      // names given in each folder, lower case
    int discType = 0;
    int conversions = 0;
};

CStarDiscBurn::CStarDiscBurn(CFileQueue* queue)
    : m_queue(queue), m_presenter(PlatformBurnPresenter()), m_wallClock(&LocalNow), m_clock(&uc::Clock::System()) {}

CStarDiscBurn::~CStarDiscBurn() { WaitForBurn(); }

void CStarDiscBurn::SetGeneratePDFCallback(GeneratePDFCallback callback) { s_generatePDF = callback; }
CStarDiscBurn::GeneratePDFCallback CStarDiscBurn::GetGeneratePDFCallback() { return s_generatePDF; }

void CStarDiscBurn::SetDiscOperations(std::shared_ptr<IDiscOperations> operations) {
    m_operations = std::move(operations);
}

IDiscOperations& CStarDiscBurn::Operations() {
    if (!m_operations) m_operations = std::make_shared<StarBurnLoader>();
    return *m_operations;
}

std::wstring CStarDiscBurn::LocalText(const char* key) const { return GetStr(key); }

void CStarDiscBurn::AddToLog(const wchar_t* text) {
    if (!text) return;
    {
        std::lock_guard<std::mutex> g(m_logMutex);
        m_log.emplace_back(text);
    }
    UC_LOG(zelLogger::Detail)(L"%s", text);
}

std::vector<std::wstring> CStarDiscBurn::GetLog() const {
    std::lock_guard<std::mutex> g(m_logMutex);
    return m_log;
}

void CStarDiscBurn::Log(const std::wstring& text) { AddToLog(text.c_str()); }

bool CStarDiscBurn::Step(const char* key) {
    if (m_presenter) m_presenter->ShowStep(LocalText(key));
    return true;
}

bool CStarDiscBurn::SdkFailed(const wchar_t* operation, const DiscResult& r) {
    if (r.ok()) return false;
    const std::wstring line = uc::Format(L"Burn(): %s() failed, exception %ld, status %ld, text '%s'", operation,
                                         r.exception, static_cast<long>(r.status), uc::FromUtf8(r.text).c_str());
    Log(line);
    UC_LOG(zelLogger::Failure)(L"%s", line.c_str());
    return true;
}

void CStarDiscBurn::CleanUp(Session& session) {
    if (m_queue) m_queue->RemoveConvertedFiles();
    if (!session.tempFolder.empty()) RemoveFolderTree(session.tempFolder);
}

int CStarDiscBurn::Fail(Session& session) {
    CleanUp(session);
    Log(L"Burn(): EXITing with failure");
    UC_LOG(zelLogger::Failure)(L"Burn(): EXITing with failure");
    m_session = nullptr;
    return 0;
}

std::wstring CStarDiscBurn::GetDiscTypeString(int discType) const {
    static const char* const keys[] = {
        "utilscontrols.burn.disctypeunknown", "utilscontrols.burn.disctypecd",      "utilscontrols.burn.disctypecdr",
        "utilscontrols.burn.disctypecdrw",    "utilscontrols.burn.disctypedvd",     "utilscontrols.burn.disctypedvdr",
        "utilscontrols.burn.disctypedvdram",  "utilscontrols.burn.disctypedvdrwro", "utilscontrols.burn.disctypedvdrwsr",
        "utilscontrols.burn.disctypedvdsrw",  "utilscontrols.burn.disctypecddd",    "utilscontrols.burn.disctypecdddr",
        nullptr,                              "utilscontrols.burn.disctypedvdpr"};
    if (discType < 0 || discType > 13 || !keys[discType]) return {};
    return LocalText(keys[discType]);
}

int CStarDiscBurn::ShowMessageBox(int notEmpty, int discType) {
    const std::wstring caption = LocalText("utilscontrols.burn.nomediamsgtitle");
    const std::wstring text = notEmpty ? GetStr("utilscontrols.burn.notemptymsg", GetDiscTypeString(discType).c_str())
                                       : GetStr("utilscontrols.burn.closedmsg", GetDiscTypeString(discType).c_str());
    const Answer a = m_presenter ? m_presenter->Ask(text, caption, notEmpty != 0) : Answer::Cancel;
    if (!notEmpty && a == Answer::Cancel) return 7;
    return a == Answer::Yes ? 6 : a == Answer::No ? 7 : 2;
}

void CStarDiscBurn::CreateProgressDialog(const std::wstring& title) {
    if (m_presenter) m_presenter->CreateProgress(title);
}
void CStarDiscBurn::DestroyProgressDialog() {
    if (m_presenter) m_presenter->DestroyProgress();
}
void CStarDiscBurn::ShowMinimizeButton(int show) {
    if (m_presenter) m_presenter->ShowMinimizeButton(show != 0);
}

void CStarDiscBurn::FindDevices() {
    m_devices = Operations().FindDevices();
    m_deviceNames.clear();
    for (const DeviceAddress& a : m_devices) m_deviceNames.push_back(uc::FromUtf8(Operations().DeviceName(a)));
    if (!Operations().Available())
        UC_LOG(zelLogger::Failure)(L"FindDevices(): the disc-writing library is unavailable: %s",
                                   Operations().Problem().c_str());
}

std::wstring CStarDiscBurn::GetDeviceName(int device) const {
    return device >= 0 && device < static_cast<int>(m_deviceNames.size()) ? m_deviceNames[device] : std::wstring();
}

void* CStarDiscBurn::AddVirtualFolderToJolietTree(void* parent, const std::wstring& name) {
    if (!m_session) return nullptr;
    DiscObject child = nullptr;
    if (SdkFailed(L"StarBurn_ISO9660JolietFileTree_Add",
                  Operations().AddFolder(m_session->tree, parent, uc::ToUtf8(name), child)))
        return nullptr;
    return child;
}

void* CStarDiscBurn::AddAbsoluteFolderToJolietTree(void* parent, const std::wstring& folder) {
    if (!m_session) return nullptr;
    DiscObject child = nullptr;
    std::wstring path = folder;
    while (path.size() > 1 && IsSeparator(path.back())) path.pop_back();
    if (SdkFailed(L"StarBurn_ISO9660JolietFileTree_Add",
                  Operations().AddFromDisk(m_session->tree, parent, uc::ToUtf8(path), "", child)))
        return nullptr;
    return child;
}

void* CStarDiscBurn::FolderNode(Session& s, const std::wstring& relative) {
    const std::vector<std::wstring> parts = Components(relative);
    void* node = s.exportNode;
    std::wstring key;
    for (const std::wstring& part : parts) {
        key += Lower(part) + L'\\';
        auto it = s.folders.find(key);
        if (it == s.folders.end()) {
            void* child = AddVirtualFolderToJolietTree(node, part);
            if (!child) return nullptr;
            s.names[node].insert(Lower(part));
            it = s.folders.emplace(key, child).first;
        }
        node = it->second;
    }
    return node;
}

bool CStarDiscBurn::AddQueuedFile(Session& s, const std::wstring& file, const std::wstring& base, int privacy) {
    const std::wstring relative = file.substr(base.size());
    const std::wstring name = FileName(relative);
    if (!FileIsPresent(file)) {
        Log(uc::Format(L"Burn(): '%s' has vanished or cannot be read; nothing is burned", file.c_str()));
        UC_LOG(zelLogger::Failure)(L"Burn(): '%s' has vanished or cannot be read", file.c_str());
        return false;
    }
    std::wstring source = file;
    const bool convert = m_queue && IsImageFile(file) && !IsDescriptor(name) &&
                         (privacy || (m_conversion >= 1 && m_conversion <= 4));
    if (convert) {
        // Each conversion gets a folder of its own, so images of the same name never overwrite each other.
        const std::wstring target =
            WithTrailingSeparator(s.tempFolder) + std::to_wstring(++s.conversions) + kSeparator;
        const int format = m_conversion >= 1 && m_conversion <= 4 ? m_conversion : 0;
        const std::wstring produced = m_queue->ConvertImage(file, target, format, privacy);
        if (produced.empty() || !FileIsPresent(produced)) {
            if (privacy) {
                Log(uc::Format(L"Burn(): '%s' could not be blacked out; nothing is burned so that no patient "
                               L"information leaves unblacked", file.c_str()));
                return false;
            }
            Log(uc::Format(L"Burn(): '%s' could not be converted; it is burned as it is", file.c_str()));
            UC_LOG(zelLogger::Fallback)(L"Burn(): '%s' could not be converted; burned as it is", file.c_str());
        } else {
            source = produced;
        }
    }
    void* folder = FolderNode(s, FolderOf(relative));
    if (!folder) return false;
    // A second file of the same name in one disc folder (img.bmp and img.jpg both converted to JPEG) is
    // renamed rather than replacing the first.
    std::set<std::wstring>& taken = s.names[folder];
    std::wstring discName = FileName(source);
    for (int n = 2; taken.count(Lower(discName)); ++n) discName = Numbered(FileName(source), n);
    if (discName != FileName(source))
        Log(uc::Format(L"Burn(): '%s' goes onto the disc as '%s' (the name is taken)", file.c_str(), discName.c_str()));
    DiscObject child = nullptr;
    if (SdkFailed(L"StarBurn_ISO9660JolietFileTree_Add",
                  Operations().AddFromDisk(s.tree, folder, uc::ToUtf8(source),
                                           discName == FileName(source) ? "" : uc::ToUtf8(discName), child))) {
        Log(uc::Format(L"Burn(): '%s' cannot go onto the disc", file.c_str()));
        return false;
    }
    taken.insert(Lower(discName));
    return true;
}

bool CStarDiscBurn::AddPdfReports(Session& s, const std::wstring& base) {
    const GeneratePDFCallback generate = s_generatePDF.load();
    if (!m_generatePDFs || !generate || !m_queue) return true;
    for (const std::wstring& descriptor : m_queue->GetStudiesName()) {
        const std::wstring study = FolderOf(descriptor);
        const std::wstring pdf = generate(study, 0);
        if (pdf.empty()) {
            Log(uc::Format(L"Burn(): no PDF report for '%s'", study.c_str()));
            continue;
        }
        // The report is written by another module; wait for it to appear.
        const auto deadline = m_clock->Now() + m_pdfTimeout;
        while (!FileIsPresent(pdf) && m_clock->Now() < deadline) m_clock->SleepFor(uc::Millis(250));
        if (!FileIsPresent(pdf)) {
            Log(uc::Format(L"Burn(): the PDF report '%s' did not appear; the study is burned without it", pdf.c_str()));
            continue;
        }
        const std::wstring target = WithTrailingSeparator(s.tempFolder) + L"pdf" + std::to_wstring(++s.conversions) +
                                    kSeparator + FileName(pdf);
        std::wstring error;
        if (!MakeFolders(FolderOf(target)) || !CopyWhole(pdf, target, error)) {
            Log(uc::Format(L"Burn(): the PDF report '%s' cannot be staged: %s", pdf.c_str(), error.c_str()));
            return false;
        }
        void* folder = FolderNode(s, study.compare(0, base.size(), base) == 0 ? study.substr(base.size()) : L"");
        DiscObject child = nullptr;
        if (!folder || SdkFailed(L"StarBurn_ISO9660JolietFileTree_Add",
                                 Operations().AddFromDisk(s.tree, folder, uc::ToUtf8(target), "", child)))
            return false;
    }
    return true;
}

bool CStarDiscBurn::BuildTree(Session& s, int privacy) {
    // Contents of the export root folder (a viewer, a read-me) at the top of every disc.
    if (!m_exportRootFolder.empty()) {
        const std::wstring root = WithTrailingSeparator(m_exportRootFolder);
        bool ok = ListFolder(root, [&](const FolderEntry& e) {
            DiscObject child = nullptr;
            if (ok && SdkFailed(L"StarBurn_ISO9660JolietFileTree_Add",
                                Operations().AddFromDisk(s.tree, nullptr, uc::ToUtf8(root + e.name), "", child)))
                ok = false;
        });
        if (!ok) return false;
    }
    void* node = nullptr;
    for (const std::wstring& part : Components(SafeExportFolder(m_exportFolder))) {
        node = AddVirtualFolderToJolietTree(node, part);
        if (!node) return false;
    }
    const std::tm t = m_wallClock();
    const std::wstring stamped = uc::Format(L"%04d-%02d-%02d_%02d-%02d-%02d", t.tm_year + 1900, t.tm_mon + 1,
                                            t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
    s.exportNode = AddVirtualFolderToJolietTree(node, stamped);
    if (!s.exportNode) return false;

    switch (m_conversion) {
    case 1: Step("utilscontrols.burn.addfilesjpgmsg"); break;
    case 2: Step("utilscontrols.burn.addfilesmsgbmp"); break;
    case 3: Step("utilscontrols.burn.addfilesmsggif"); break;
    default: Step("utilscontrols.burn.addfilesmsg"); break;
    }
    if (m_queue) {
        const std::set<std::wstring> files = m_queue->GetFilesName();
        const std::wstring base = ExportBase(files);
        for (int i = 0, n = m_queue->GetSize(); i < n; ++i)
            if (!AddQueuedFile(s, m_queue->GetAt(i), base, privacy)) return false;
        if (!AddPdfReports(s, base)) return false;
    }
    const long level = Operations().GetLevel(s.tree);
    Log(uc::Format(L"Burn(): Tree level %ld", level));
    if (level > kTreeLevelLimit) Log(L"Burn(): Warning: Tree level exceeds allowed 8, image may be unusable!!!");
    Log(uc::Format(L"Burn(): Using %ld MB of cache", kCacheMBs));
    return true;
}

bool CStarDiscBurn::CheckFreeSpace(Session& s, long freeBlocks, int discType) {
    double neededKB = 0;
    if (m_conversion == 5) {
        neededKB = static_cast<double>(FolderSize(m_exportRootFolder)) / 1024.0;
    } else if (m_queue) {
        std::wstring unit;
        const double size = m_conversion ? m_queue->GetTotalConvertedFileSize(unit) : m_queue->GetTotalFileSize(unit);
        neededKB = unit == L"MB" ? size * 1024.0 : unit == L"Bytes" ? size / 1024.0 : size;
    }
    const double freeKB = static_cast<double>(freeBlocks) * 2.0;  // 2048-byte blocks
    if (neededKB > freeKB) {
        Log(uc::Format(L"Burn(): %.0f KB needed, %.0f KB free on the disc", neededKB, freeKB));
        if (m_presenter)
            m_presenter->Tell(GetStr("utilscontrols.burn.freespaceerrormsg", GetDiscTypeString(discType).c_str(),
                                     static_cast<long>(neededKB + 0.5), static_cast<long>(freeKB)),
                              LocalText("utilscontrols.burn.nomediamsgtitle"), BoxIcon::Stop);
        (void)s;
        return false;
    }
    Step("utilscontrols.burn.archivetospacemsg");
    return true;
}

int CStarDiscBurn::Burn(int device, int privacy) {
    IDiscOperations& ops = Operations();
    Session s(ops);
    m_session = &s;
    const std::tm started = m_wallClock();
    const std::wstring runName = Stamp(started, L"%d-%m-%Y_%H-%M-%S");
    Log(L"Burn(): Burn " + runName + L" started");
    Step("utilscontrols.burn.startburnmsg");
    Step("utilscontrols.burn.connectingmsg");
    s.tempFolder = !m_tempFolderSetting.empty() ? m_tempFolderSetting
                                                : zelPath::getPath(zelPath::Export, L"burn_" + runName);
    if (!ops.Available()) {
        Log(L"Burn(): the disc-writing library is unavailable: " + ops.Problem());
        UC_LOG(zelLogger::Failure)(L"Burn(): the disc-writing library is unavailable: %s", ops.Problem().c_str());
        return Fail(s);
    }
    if (m_devices.empty()) FindDevices();
    if (device < 0 || device >= static_cast<int>(m_devices.size())) {
        Log(uc::Format(L"Burn(): there is no CD/DVD device %d (%d found)", device, GetDeviceCount()));
        return Fail(s);
    }

    // 2. The file tree and the burner.
    Log(L"Burn(): Creating Joliet file tree");
    Step("utilscontrols.burn.treecreatemsg");
    if (SdkFailed(L"StarBurn_ISO9660FileTree_Create", ops.CreateTree(s.tree))) return Fail(s);
    std::shared_ptr<IBurnPresenter> presenter = m_presenter;
    const auto progress = [this, presenter](std::int64_t written, std::int64_t total) {
        if (!presenter || total <= 0) return;
        const int percent = static_cast<int>(written * 100 / total);
        presenter->ShowPercent(percent);
        presenter->ShowStep(GetStr("utilscontrols.burn.progress2msg", percent));
    };
    if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_Create", ops.CreateBurner(m_devices[device], s.burner, progress)))
        return Fail(s);
    const DeviceInformation info = ops.GetDeviceInformation(s.burner);
    Log(uc::Format(L"Burn(): Found CD/DVD device '%S' - '%S' - '%S' with %ld UCHARs of cache", info.vendor.c_str(),
                   info.product.c_str(), info.revision.c_str(), static_cast<long>(info.cacheBytes)));

    // 3. Write modes.
    Log(L"Burn(): Probing supported write modes...");
    WriteModes modes;
    if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_ProbeSupportedWriteModes", ops.ProbeSupportedWriteModes(s.burner, modes)))
        return Fail(s);
    const auto yesNo = [](bool b) { return b ? L"supported" : L"unsupported"; };
    Log(uc::Format(L"Burn(): Track-At-Once %s, Session-At-Once %s, Disc-At-Once PQ %s, Disc-At-Once raw P-W %s",
                   yesNo(modes.trackAtOnce), yesNo(modes.sessionAtOnce), yesNo(modes.discAtOncePQ),
                   yesNo(modes.discAtOnceRawPW)));
    if (!modes.trackAtOnce) {
        Log(L"Burn(): Track-At-Once is unsupported!!!");
        return Fail(s);
    }

    // 4. A medium in the drive.
    Log(L"Burn(): Testing unit ready...");
    Step("utilscontrols.burn.testdevicemsg");
    if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_TestUnitReady", ops.TestUnitReady(s.burner))) {
        DestroyProgressDialog();
        if (m_presenter)
            m_presenter->Tell(LocalText("utilscontrols.burn.nomediamsg"), LocalText("utilscontrols.burn.nomediamsgtitle"),
                              BoxIcon::Warning);
        return Fail(s);
    }

    // 5. Buffer underrun protection.
    Log(L"Burn(): Getting BUP (Buffer Underrun Protection) support...");
    bool bupEnabled = false, bupSupported = false;
    if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_GetBUP", ops.GetBUP(s.burner, bupEnabled, bupSupported))) return Fail(s);
    Log(uc::Format(L"Burn(): BUP is %s and %s", bupEnabled ? L"enabled" : L"disabled",
                   bupSupported ? L"supported" : L"unsupported"));
    Log(L"Burn(): Enabling BUP (Buffer Underrun Protection)...");
    Step("utilscontrols.burn.enablebufferunderrunmsg");
    if (bupSupported && SdkFailed(L"StarBurn_CdvdBurnerGrabber_SetBUP", ops.SetBUP(s.burner, true))) return Fail(s);

    // 6. Speeds: a drive that refuses is only warned about.
    Log(L"Burn(): Setting maximum supported CD/DVD speeds...");
    Step("utilscontrols.burn.setmaxspeedmsg");
    const DiscResult speedsSet = ops.SetSpeeds(s.burner, kMaximumSpeed, kMaximumSpeed);
    if (!speedsSet.ok())
        Log(uc::Format(L"Burn(): Warning: StarBurn_CdvdBurnerGrabber_SetSpeeds() failed, exception %ld, status %ld, "
                       L"text '%s'", speedsSet.exception, static_cast<long>(speedsSet.status),
                       uc::FromUtf8(speedsSet.text).c_str()));
    Speeds speeds;
    if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_GetSpeeds", ops.GetSpeeds(s.burner, speeds))) return Fail(s);
    Log(uc::Format(L"Burn(): Current read speed %ld KBps, current write speed %ld KBps",
                   static_cast<long>(speeds.currentRead), static_cast<long>(speeds.currentWrite)));

    // 7. The next writable track.
    Log(L"Burn(): Getting track information...");
    TrackInformation track;
    if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_GetTrackInformation",
                  ops.GetTrackInformation(s.burner, kTrackInvisible, track)))
        return Fail(s);
    Log(uc::Format(L"Burn(): Track %ld: blank %s, next writable address %ld, free logical blocks %ld",
                   track.trackNumber, track.blank ? L"yes" : L"no", track.nextWritableAddress, track.freeBlocks));

    // 8. The disc.
    Log(L"Burn(): Getting disc information...");
    Step("utilscontrols.burn.getdiscinfomsg");
    DiscInformation disc;
    if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_GetDiscInformation", ops.GetDiscInformation(s.burner, disc)))
        return Fail(s);
    s.discType = ops.GetInsertedDiscType(s.burner);
    if (m_presenter)
        m_presenter->ShowStep(GetStr("utilscontrols.burn.archivetomsg", GetDiscTypeString(s.discType).c_str()));
    Log(uc::Format(L"Burn(): Disc is erasable: %s, disc status %02X, last session status %02X",
                   disc.erasable ? L"yes" : L"no", disc.discStatus, disc.lastSessionStatus));

    // 9. Erase, append or write.
    const DiscUse use = DecideDiscUse(disc.erasable, disc.discStatus, s.discType, [&](bool notEmpty) {
        const int a = ShowMessageBox(notEmpty ? 1 : 0, s.discType);
        return a == 6 ? Answer::Yes : a == 7 ? Answer::No : Answer::Cancel;
    });
    if (use == DiscUse::ReadOnly) {
        Log(L"Burn(): The disc is closed and cannot be erased");
        if (m_presenter)
            m_presenter->Tell(LocalText("utilscontrols.burn.readonlymsg"),
                              LocalText("utilscontrols.burn.nomediamsgtitle"), BoxIcon::Stop);
        return Fail(s);
    }
    if (use == DiscUse::Abandon) {
        Log(L"Burn(): The burn was abandoned at the user's request");
        return Fail(s);
    }
    if (use == DiscUse::Append) {
        long last = 0;
        if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_GetLastTrack", ops.GetLastTrack(s.burner, last))) return Fail(s);
        Log(uc::Format(L"Burn(): Importing track %ld... ", last));
        Step("utilscontrols.burn.importtrackmsg");
        if (SdkFailed(L"StarBurn_ISO9660JolietFileTree_ImportTrack", ops.ImportTrack(s.tree, s.burner, last)))
            return Fail(s);
        ops.GetRoot(s.tree);
    }

    // 10. The folder tree.
    if (privacy && m_queue) {
        // Blacking-out was asked for: a layout that cannot be read would let patient information onto the disc.
        PrivacyLayout layout;
        std::wstring error;
        if (!LoadPrivacyLayout(m_queue->GetLayoutFile(), layout, error)) {
            Log(uc::Format(L"Burn(): the privacy layout '%s' cannot be read (%s); nothing is burned",
                           m_queue->GetLayoutFile().c_str(), error.c_str()));
            UC_LOG(zelLogger::Failure)(L"Burn(): the privacy layout '%s' cannot be read", m_queue->GetLayoutFile().c_str());
            return Fail(s);
        }
    }
    if (!BuildTree(s, privacy)) return Fail(s);

    // 11. Erase when chosen.
    if (use == DiscUse::EraseThenWrite) {
        Step("utilscontrols.burn.erasemsg");
        Log(L"Erasing ReWriteable media...");
        if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_Erase", ops.Erase(s.burner))) return Fail(s);
        Log(L"Erase Complete");
        Step("utilscontrols.burn.erasedonemsg");
        if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_GetTrackInformation",
                      ops.GetTrackInformation(s.burner, kTrackInvisible, track)))
            return Fail(s);
        Log(uc::Format(L"Burn(): After erase: Track %ld: blank %s, next writable address %ld, free logical blocks %ld",
                       track.trackNumber, track.blank ? L"yes" : L"no", track.nextWritableAddress, track.freeBlocks));
    }

    // 12. Free space.
    if (!CheckFreeSpace(s, track.freeBlocks, s.discType)) return Fail(s);

    // 13. The image.
    Log(L"Burn(): Building ISO image...");
    Step("utilscontrols.burn.buildisomsg");
    const long start = use == DiscUse::Append && track.nextWritableValid ? track.nextWritableAddress : 0;
    if (SdkFailed(L"StarBurn_ISO9660FileTree_BuildImage",
                  ops.BuildImage(s.tree, start, "TrackAtOnceFromTree.exe", "TrackAtOnceFromTree.exe", "KAVEL Media")))
        return Fail(s);
    const std::int64_t imageBytes = ops.GetImageSize(s.tree);
    Log(uc::Format(L"Burn(): Burning %I64d UCHARs of ISO9660/Joliet image", static_cast<long long>(imageBytes)));
    // The queue's total leaves out names, folders and files added besides the queue; the image is exact.
    if ((imageBytes + 2047) / 2048 > track.freeBlocks) {
        Log(uc::Format(L"Burn(): the image needs %I64d blocks, the disc has %ld free",
                       static_cast<long long>((imageBytes + 2047) / 2048), track.freeBlocks));
        if (m_presenter)
            m_presenter->Tell(GetStr("utilscontrols.burn.freespaceerrormsg", GetDiscTypeString(s.discType).c_str(),
                                     static_cast<long>((imageBytes + 1023) / 1024), track.freeBlocks * 2),
                              LocalText("utilscontrols.burn.nomediamsgtitle"), BoxIcon::Stop);
        return Fail(s);
    }

    // 14. Calibration and the write.
    Log(ops.SendOPC(s.burner).ok() ? L"Burn(): OPC succeded" : L"Burn(): OPC failed");
    ShowMinimizeButton(1);
    Log(L"Burn(): Burn process started");
    Step("utilscontrols.burn.progress1msg");
    if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_TrackAtOnceFromTree", ops.TrackAtOnceFromTree(s.burner, s.tree, true)))
        return Fail(s);

    // 15. Close the session.
    Log(L"Closing session...");
    Step("utilscontrols.burn.finalizemsg");
    if (SdkFailed(L"StarBurn_CdvdBurnerGrabber_CloseSession", ops.CloseSession(s.burner))) return Fail(s);

    // 16. Eject: the session is complete; a tray that does not open is reported but does not fail the burn.
    Log(L"Burn(): Ejecting the disc...");
    Step("utilscontrols.burn.ejectmsg");
    SdkFailed(L"StarBurn_CdvdBurnerGrabber_Eject", ops.Eject(s.burner));

    // 17. Clean up.
    Step("utilscontrols.burn.cleanupmsg");
    CleanUp(s);
    Log(L"Burn(): EXITing with success");
    m_session = nullptr;
    return 1;
}

void CStarDiscBurn::EraseDisc() {
    IDiscOperations& ops = Operations();
    Log(L"Erasing ReWriteable media...");
    DiscObject burner = m_session ? m_session->burner : nullptr;
    DiscObject own = nullptr;
    if (!burner) {
        if (m_devices.empty()) FindDevices();
        if (m_devices.empty() || SdkFailed(L"StarBurn_CdvdBurnerGrabber_Create",
                                           ops.CreateBurner(m_devices[0], own, nullptr))) {
            Log(L"EraseDisc(): no CD/DVD device to erase");
            return;
        }
        burner = own;
    }
    if (!SdkFailed(L"StarBurn_CdvdBurnerGrabber_Erase", ops.Erase(burner))) Log(L"Erase Complete");
    ops.Destroy(own);
}

int CStarDiscBurn::StartBurningProcess(int device) {
    if (m_burning || device < 0 || device >= GetDeviceCount()) return 0;
    if (m_thread.joinable()) m_thread.join();
    m_burning = true;
    const int threaded = vex_utils::GetProfileIntW(L"System", L"BurnThread", 1);
    if (threaded == 0) {
        if (m_presenter) m_presenter->Post(m_hParentWnd, kBurnFinishedMessage, 0, 0);
        CreateProgressDialog(L"CD-R");
        const int ok = Burn(device, m_privacy);
        DestroyProgressDialog();
        if (m_presenter) {
            m_presenter->Post(m_hParentWnd, kBurnFinishedMessage, 1, 0);
            m_presenter->Tell(LocalText(ok ? "utilscontrols.burn.donemsg" : "utilscontrols.burn.donefailmsg"), L"",
                              BoxIcon::Information);
        }
        m_burning = false;
        return ok;
    }
    CreateProgressDialog(L"CD-R");
    m_threadDevice = device;
    m_thread = std::thread([this] { BurnThread(this); });
    if (m_presenter) m_presenter->Post(m_hParentWnd, kBurnFinishedMessage, 0, 0);
    return 1;
}

unsigned long CStarDiscBurn::BurnThread(void* burner) {
    auto* self = static_cast<CStarDiscBurn*>(burner);
    int ok = 0;
    try {
        ok = self->Burn(self->m_threadDevice, self->GetPrivacy());
    } catch (...) {
        UC_LOG(zelLogger::Failure)(L"Burn(): stopped by an unexpected error");
    }
    if (self->m_presenter) self->m_presenter->Post(m_hParentWnd, kBurnFinishedMessage, 1, 0);
    self->DestroyProgressDialog();
    if (self->m_presenter)
        self->m_presenter->Tell(self->LocalText(ok ? "utilscontrols.burn.donemsg" : "utilscontrols.burn.donefailmsg"),
                                L"", BoxIcon::Information);
    // Free before the last message, so an owner that starts the next burn on it is not refused.
    self->m_burning = false;
    if (self->m_presenter) self->m_presenter->Post(m_hParentWnd, kBurnClosedMessage, 1, 0);
    return 0;
}

void CStarDiscBurn::WaitForBurn() {
    if (m_thread.joinable() && m_thread.get_id() != std::this_thread::get_id()) m_thread.join();
}
