// CStarDiscBurn: writes a CFileQueue to CD/DVD as an ISO 9660/Joliet session (Track-At-Once) through the
// disc-writing library, erases rewritable media, and copies the same selection to a removable drive.
#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "export/burn_presenter.h"
#include "export/disc_operations.h"
#include "export/file_queue.h"
#include "platform/clock.h"
#include "platform/export.h"

class UC_API CStarDiscBurn {
public:
    // Produces the PDF report of a study folder (from its "rpt.xml") and returns the PDF's path.
    using GeneratePDFCallback = std::wstring (*)(std::wstring studyFolder, int);

    // Burns the files of `queue` (not owned; it must outlive the burner).
    explicit CStarDiscBurn(CFileQueue* queue = nullptr);
    virtual ~CStarDiscBurn();
    CStarDiscBurn(const CStarDiscBurn&) = delete;
    CStarDiscBurn& operator=(const CStarDiscBurn&) = delete;

    // Owner window of the completion messages and message boxes (an HWND on Windows); class-wide.
    static void* m_hParentWnd;
    static void SetGeneratePDFCallback(GeneratePDFCallback callback);
    static GeneratePDFCallback GetGeneratePDFCallback();

    void SetQueue(CFileQueue* queue) { m_queue = queue; }
    void SetPrivacy(int privacy) { m_privacy = privacy; }
    int GetPrivacy() const { return m_privacy; }
    // Image format code of the queue's conversions (0 none, 1 JPEG, 2 BMP, 3 GIF, 4 DICOM); 5 measures the
    // exported folder instead of the queue in the free-space check.
    void SetConversion(int conversion) { m_conversion = conversion; }
    int GetConversion() const { return m_conversion; }
    void SetGeneratePDFs(int generate) { m_generatePDFs = generate; }
    int GetGeneratePDFs() const { return m_generatePDFs; }
    void SetExport(int exportFlag) { m_export = exportFlag; }
    int GetExport() const { return m_export; }
    // How the library settles a name that is already in the tree (2: the new node is renamed).
    int GetNameCollisionSolution() const { return m_nameCollisionSolution; }

    // Writers found by the library; empty when it is missing.
    void FindDevices();
    int GetDeviceCount() const { return static_cast<int>(m_devices.size()); }
    std::wstring GetDeviceName(int device) const;

    // Starts a burn on device `device` (threaded unless "System"/"BurnThread" is 0). 0 when a burn is running,
    // the index is out of range, or (unthreaded) the burn failed.
    int StartBurningProcess(int device);
    // The whole burn on the calling thread; nonzero on success.
    int Burn(int device, int privacy);
    static unsigned long BurnThread(void* burner);
    bool IsBurning() const { return m_burning; }
    // Waits for a threaded burn to end (the console learns it from the posted messages instead).
    void WaitForBurn();

    // Blanks the rewritable medium in the device of the current burn (or device 0).
    void EraseDisc();
    // Asks about a medium that is not blank: IDYES / IDNO / IDCANCEL (6 / 7 / 2).
    int ShowMessageBox(int notEmpty, int discType);
    std::wstring GetDiscTypeString(int discType) const;

    void CreateProgressDialog(const std::wstring& title);
    void DestroyProgressDialog();
    void ShowMinimizeButton(int show);
    // Appends a line to the burn log (and to the console's log).
    void AddToLog(const wchar_t* text);
    std::vector<std::wstring> GetLog() const;

    // Tree building for the current burn: an empty folder named `name`, or a folder with its files from disk.
    void* AddVirtualFolderToJolietTree(void* parent, const std::wstring& name);
    void* AddAbsoluteFolderToJolietTree(void* parent, const std::wstring& folder);

    // Copies the queue (converted and blacked out as set) to `target`\<export folder>\<time stamp>\ on a
    // removable drive. `progress` (may be null) receives percentages; `result` the folder written or the
    // reason of a failure. Nonzero on success.
    int SendToRemovable(void* progress, const std::wstring& source, const std::wstring& target, int convert,
                        int privacy, std::wstring& result, void* owner, const std::wstring& exportFolder,
                        const std::wstring& patientId, int overwrite);
    // Copies a DICOMDIR folder tree `source` to `target` after checking the drive's free space.
    int SendDicomDirToRemovable(const std::wstring& source, const std::wstring& target, void* owner,
                                const std::wstring& title);

    // Where the export goes on the disc: "{PATID}" and "{SYSID}" are dropped, ":" and "/" made safe.
    void SetExportFolder(const std::wstring& folder) { m_exportFolder = folder; }
    // A folder whose contents go onto every disc beside the export (a viewer, a read-me); empty for none.
    void SetExportRootFolder(const std::wstring& folder) { m_exportRootFolder = folder; }
    // Staging folder of converted files; default a folder per burn in the console's export folder.
    void SetTempFolder(const std::wstring& folder) { m_tempFolderSetting = folder; }
    // Test and tool seams: the library, what is shown and asked, the wall clock of time stamps, the clock of waits.
    void SetDiscOperations(std::shared_ptr<uc::exporting::IDiscOperations> operations);
    void SetPresenter(std::shared_ptr<uc::exporting::IBurnPresenter> presenter) { m_presenter = std::move(presenter); }
    void SetWallClock(std::function<std::tm()> now) { m_wallClock = std::move(now); }
    void SetClock(uc::Clock& clock) { m_clock = &clock; }
    // Free bytes of the drive holding a folder (default: the file system's answer), for the removable copies.
    void SetFreeSpaceProbe(std::function<std::int64_t(const std::wstring&)> probe) { m_freeSpace = std::move(probe); }
    // Longest wait for a PDF report to appear.
    void SetPdfTimeout(uc::Millis timeout) { m_pdfTimeout = timeout; }

private:
    struct Session;
    bool Step(const char* key);
    void Log(const std::wstring& text);
    bool SdkFailed(const wchar_t* operation, const uc::exporting::DiscResult& result);
    int Fail(Session& session);
    bool BuildTree(Session& session, int privacy);
    bool AddQueuedFile(Session& session, const std::wstring& file, const std::wstring& base, int privacy);
    void* FolderNode(Session& session, const std::wstring& relativeFolder);
    bool AddPdfReports(Session& session, const std::wstring& base);
    bool CheckFreeSpace(Session& session, long freeBlocks, int discType);
    void CleanUp(Session& session);
    std::wstring LocalText(const char* key) const;
    uc::exporting::IDiscOperations& Operations();

    CFileQueue* m_queue;
    int m_privacy = 0, m_conversion = 0, m_generatePDFs = 0, m_export = 0, m_nameCollisionSolution = 2;
    std::wstring m_exportFolder, m_exportRootFolder, m_tempFolderSetting;
    std::vector<uc::exporting::DeviceAddress> m_devices;
    std::vector<std::wstring> m_deviceNames;
    std::shared_ptr<uc::exporting::IDiscOperations> m_operations;
    std::shared_ptr<uc::exporting::IBurnPresenter> m_presenter;
    std::function<std::tm()> m_wallClock;
    uc::Clock* m_clock;
    uc::Millis m_pdfTimeout{60000};
    std::function<std::int64_t(const std::wstring&)> m_freeSpace;

    std::atomic<bool> m_burning{false};
    std::thread m_thread;
    int m_threadDevice = 0;
    Session* m_session = nullptr;  // the running burn, for the tree helpers and EraseDisc
    mutable std::mutex m_logMutex;
    std::vector<std::wstring> m_log;

    static std::atomic<GeneratePDFCallback> s_generatePDF;
};
