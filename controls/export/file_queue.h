// CFileQueue: the files of patients, studies and single files chosen for export, their total size, and the
// conversion and blacking-out of images on their way out.
#pragma once

#include <cstddef>
#include <memory>
#include <set>
#include <string>

#include "export/image_codec.h"
#include "platform/export.h"

class UC_API CFileQueue {
public:
    // Writes the image `source` as the DICOM file `target`; the DICOM encoder lives outside this library.
    using DicomStoreCallback = bool (*)(std::wstring source, std::wstring target);

    // Descriptor files that mark the archive's patient and study folders.
    static constexpr const wchar_t* PatientDescriptor = L"patient.xml";
    static constexpr const wchar_t* StudyDescriptor = L"study.xml";

    CFileQueue();
    CFileQueue(const CFileQueue& other);
    CFileQueue& operator=(const CFileQueue& other);
    virtual ~CFileQueue();

    // Class-wide; set once at start-up.
    static void SetDicomStoreCallback(DicomStoreCallback callback);
    static DicomStoreCallback GetDicomStoreCallback();

    // Inserts the path into the files set; 1 when it was added, 0 when the exact path was already there.
    int AddToQueue(const std::wstring& file);
    // Removes the path from the files set; 1 when it was there.
    int RemoveFromQueue(const std::wstring& file);
    // Position in set order of the first entry equal to `file` ignoring case, or -1.
    int FileExists(const std::wstring& file) const;
    // Every file below the folder (depth first, temporary files skipped) into the files set.
    void AddFilesToQueue(const std::wstring& folder);
    // Every queued file below the folder out of the files set (files that vanished from disk included).
    void RemoveFilesFromQueue(const std::wstring& folder);
    int GetSize() const;
    // The entry at `index` in set order; empty for an index outside the set.
    std::wstring GetAt(int index) const;
    // Empties the files, patients and studies sets; the converted set stays so that its files can be removed.
    void ClearQueue();

    // Total size of the queued (or converted) files that exist: bytes, or "KB" above 1024 bytes, or "MB" above
    // 1048576 bytes (strictly above), with the unit word in `unit` ("Bytes", "KB", "MB").
    double GetTotalFileSize(std::wstring& unit) const;
    double GetTotalConvertedFileSize(std::wstring& unit) const;

    // A patient or study folder with its descriptor file: the descriptor goes into its set and the folder's
    // files into the queue. False (and a log line) when it is already queued or the descriptor is missing.
    bool AddPatientToQueue(std::wstring patientFolder);
    bool AddStudyToQueue(std::wstring studyFolder);
    void RemovePatientFromQueue(std::wstring patientFolder);
    void RemoveStudyFromQueue(std::wstring studyFolder);

    std::set<std::wstring> GetStudiesName() const { return m_studies; }
    std::set<std::wstring> GetPatientsName() const { return m_patients; }
    std::set<std::wstring> GetFilesName() const { return m_files; }
    std::set<std::wstring> GetConvertedName() const { return m_converted; }

    // Kept as empty diagnostics: they walk the set and output nothing.
    void PrintPatients() const;
    void PrintStudies() const;
    void PrintFiles() const;

    // Copies `source` into `targetFolder`, blacks out the layout's zones when `privatize` is set, and re-encodes
    // it to `format` (1 JPEG, 2 BMP, 3 GIF, 4 DICOM) when its extension differs. Returns the produced file,
    // recorded in the converted set; the source itself when nothing is to be done. On failure nothing is
    // recorded and the returned path (the one that would have been produced) does not exist; an empty path
    // when `targetFolder` is the source's own folder (the source is never written to).
    std::wstring ConvertImage(const std::wstring& source, const std::wstring& targetFolder, int format, int privatize);
    // Deletes every converted file (failures ignored) and empties the converted set.
    void RemoveConvertedFiles();

    // The screen layout whose zones are blacked out; default "ScreenLayout.xml" in the protocol folder.
    void SetLayoutFile(const std::wstring& path) { m_layoutFile = path; }
    const std::wstring& GetLayoutFile() const { return m_layoutFile; }
    // Image library used by ConvertImage; default the platform's (GDI+ on Windows).
    void SetImageCodec(std::shared_ptr<uc::exporting::IImageCodec> codec) { m_codec = std::move(codec); }
    // Screen size that full-screen layouts are centred on; default the primary screen's.
    void SetScreenSize(int width, int height);

private:
    enum class Privatized { Done, LayoutUnusable, Failed };

    int ConversionNeeded(int format, const std::wstring& extension) const;
    Privatized PrivatizeImage(const std::wstring& layoutFile, std::wstring& image);
    bool AddDescribedFolder(std::wstring folder, const wchar_t* descriptor, std::set<std::wstring>& set,
                            const wchar_t* what);
    void RemoveDescribedFolder(std::wstring folder, const wchar_t* descriptor, std::set<std::wstring>& set);
    void Touched() { m_cursorIndex = -1; }

    std::set<std::wstring> m_studies;
    std::set<std::wstring> m_patients;
    std::set<std::wstring> m_files;
    std::set<std::wstring> m_converted;

    std::wstring m_layoutFile;
    std::shared_ptr<uc::exporting::IImageCodec> m_codec;
    int m_screenWidth = 0, m_screenHeight = 0;  // 0: ask the platform when needed

    // GetAt walks forward from the last position asked, so a loop over GetSize/GetAt stays linear.
    mutable int m_cursorIndex = -1;
    mutable std::set<std::wstring>::const_iterator m_cursor;
};
