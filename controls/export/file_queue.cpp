// CFileQueue: selection sets, folder walks, totals, image conversion and blacking-out.
#include "export/file_queue.h"

#include <atomic>
#include <functional>

#include "export/export_files.h"
#include "export/export_paths.h"
#include "platform/logger.h"
#include "platform/paths.h"

using namespace uc::exporting;

namespace {
std::atomic<CFileQueue::DicomStoreCallback> g_dicomStore{nullptr};

double Scaled(double bytes, std::wstring& unit) {
    unit = L"Bytes";
    if (bytes > 1048576.0) {
        unit = L"MB";
        return bytes / 1048576.0;
    }
    if (bytes > 1024.0) {
        unit = L"KB";
        return bytes / 1024.0;
    }
    return bytes;
}

double TotalOf(const std::set<std::wstring>& files, std::wstring& unit) {
    double total = 0;
    for (const std::wstring& file : files) {
        const std::int64_t length = FileLength(file);
        if (length > 0) total += static_cast<double>(length);
    }
    return Scaled(total, unit);
}

void Walk(const std::wstring& folder, const std::function<void(const std::wstring&)>& onFile) {
    ListFolder(folder, [&](const FolderEntry& entry) {
        if (entry.directory)
            Walk(folder + entry.name + kSeparator, onFile);
        else if (!entry.temporary)  // files their writer marked temporary never leave the console
            onFile(folder + entry.name);
    });
}
}  // namespace

CFileQueue::CFileQueue() : m_layoutFile(utilsExam::GetProtocolFile(L"ScreenLayout.xml")), m_codec(PlatformImageCodec()) {}

CFileQueue::CFileQueue(const CFileQueue& other)
    : m_studies(other.m_studies),
      m_patients(other.m_patients),
      m_files(other.m_files),
      m_converted(other.m_converted),
      m_layoutFile(other.m_layoutFile),
      m_codec(other.m_codec),
      m_screenWidth(other.m_screenWidth),
      m_screenHeight(other.m_screenHeight) {}

CFileQueue& CFileQueue::operator=(const CFileQueue& other) {
    if (this != &other) {
        m_studies = other.m_studies;
        m_patients = other.m_patients;
        m_files = other.m_files;
        m_converted = other.m_converted;
        m_layoutFile = other.m_layoutFile;
        m_codec = other.m_codec;
        m_screenWidth = other.m_screenWidth;
        m_screenHeight = other.m_screenHeight;
        Touched();
    }
    return *this;
}

CFileQueue::~CFileQueue() = default;

void CFileQueue::SetDicomStoreCallback(DicomStoreCallback callback) { g_dicomStore = callback; }
CFileQueue::DicomStoreCallback CFileQueue::GetDicomStoreCallback() { return g_dicomStore; }

int CFileQueue::AddToQueue(const std::wstring& file) {
    Touched();
    return m_files.insert(file).second ? 1 : 0;
}

int CFileQueue::RemoveFromQueue(const std::wstring& file) {
    Touched();
    return static_cast<int>(m_files.erase(file));
}

int CFileQueue::FileExists(const std::wstring& file) const {
    int index = 0;
    for (const std::wstring& entry : m_files) {
        if (EqualsNoCase(entry, file)) return index;
        ++index;
    }
    return -1;
}

void CFileQueue::AddFilesToQueue(const std::wstring& folder) {
    const std::wstring base = WithTrailingSeparator(folder);
    if (base.empty()) return;
    Walk(base, [this](const std::wstring& file) { AddToQueue(file); });
}

void CFileQueue::RemoveFilesFromQueue(const std::wstring& folder) {
    const std::wstring base = WithTrailingSeparator(folder);
    if (base.empty()) return;
    Touched();
    // Every entry below the folder sorts between the folder and the folder with its separator raised by one.
    std::wstring end = base;
    end.back() = static_cast<wchar_t>(end.back() + 1);
    m_files.erase(m_files.lower_bound(base), m_files.lower_bound(end));
#ifdef _WIN32
    // Entries added with "/" separators below the same folder.
    std::wstring slashed = base;
    for (wchar_t& c : slashed)
        if (c == L'\\') c = L'/';
    if (slashed != base) {
        std::wstring slashedEnd = slashed;
        slashedEnd.back() = static_cast<wchar_t>(slashedEnd.back() + 1);
        m_files.erase(m_files.lower_bound(slashed), m_files.lower_bound(slashedEnd));
    }
#endif
}

int CFileQueue::GetSize() const { return static_cast<int>(m_files.size()); }

std::wstring CFileQueue::GetAt(int index) const {
    if (index < 0 || index >= GetSize()) return {};
    if (m_cursorIndex < 0 || index < m_cursorIndex) {
        m_cursorIndex = 0;
        m_cursor = m_files.begin();
    }
    for (; m_cursorIndex < index; ++m_cursorIndex) ++m_cursor;
    return *m_cursor;
}

void CFileQueue::ClearQueue() {
    Touched();
    m_files.clear();
    m_patients.clear();
    m_studies.clear();
}

double CFileQueue::GetTotalFileSize(std::wstring& unit) const { return TotalOf(m_files, unit); }
double CFileQueue::GetTotalConvertedFileSize(std::wstring& unit) const { return TotalOf(m_converted, unit); }

bool CFileQueue::AddDescribedFolder(std::wstring folder, const wchar_t* descriptor, std::set<std::wstring>& set,
                                    const wchar_t* what) {
    folder = WithTrailingSeparator(folder);
    const std::wstring entry = folder + descriptor;
    for (const std::wstring& queued : set)
        if (EqualsNoCase(queued, entry)) return false;
    if (!FileIsPresent(entry)) {
        UC_LOG(zelLogger::Failure)(L"CFileQueue: %s folder '%s' has no \"%s\"; not queued", what, folder.c_str(),
                                   descriptor);
        return false;
    }
    set.insert(entry);
    AddFilesToQueue(folder);
    return true;
}

void CFileQueue::RemoveDescribedFolder(std::wstring folder, const wchar_t* descriptor, std::set<std::wstring>& set) {
    folder = WithTrailingSeparator(folder);
    const std::wstring entry = folder + descriptor;
    for (auto it = set.begin(); it != set.end();)
        it = EqualsNoCase(*it, entry) ? set.erase(it) : std::next(it);
    RemoveFilesFromQueue(folder);
}

bool CFileQueue::AddPatientToQueue(std::wstring patientFolder) {
    return AddDescribedFolder(std::move(patientFolder), PatientDescriptor, m_patients, L"patient");
}

bool CFileQueue::AddStudyToQueue(std::wstring studyFolder) {
    return AddDescribedFolder(std::move(studyFolder), StudyDescriptor, m_studies, L"study");
}

void CFileQueue::RemovePatientFromQueue(std::wstring patientFolder) {
    RemoveDescribedFolder(std::move(patientFolder), PatientDescriptor, m_patients);
}

void CFileQueue::RemoveStudyFromQueue(std::wstring studyFolder) {
    RemoveDescribedFolder(std::move(studyFolder), StudyDescriptor, m_studies);
}

void CFileQueue::PrintPatients() const {
    for ([[maybe_unused]] const std::wstring& entry : m_patients) {
    }
}
void CFileQueue::PrintStudies() const {
    for ([[maybe_unused]] const std::wstring& entry : m_studies) {
    }
}
void CFileQueue::PrintFiles() const {
    for ([[maybe_unused]] const std::wstring& entry : m_files) {
    }
}

void CFileQueue::SetScreenSize(int width, int height) {
    m_screenWidth = width;
    m_screenHeight = height;
}

int CFileQueue::ConversionNeeded(int format, const std::wstring& extension) const {
    const ImageFormat* target = FormatForCode(format);
    return target && extension != target->extension ? 1 : 0;
}

CFileQueue::Privatized CFileQueue::PrivatizeImage(const std::wstring& layoutFile, std::wstring& image) {
    PrivacyLayout layout;
    std::wstring error;
    if (!LoadPrivacyLayout(layoutFile, layout, error)) {
        UC_LOG(zelLogger::Failure)(L"PrivatizeImage(): layout file '%s': %s; '%s' is not blacked out",
                                   layoutFile.c_str(), error.c_str(), image.c_str());
        return Privatized::LayoutUnusable;
    }
    for (const std::wstring& reason : layout.rejected)
        UC_LOG(zelLogger::Failure)(L"PrivatizeImage(): layout file '%s': %s", layoutFile.c_str(), reason.c_str());
    if (!m_codec) return Privatized::Failed;

    int screenWidth = m_screenWidth, screenHeight = m_screenHeight;
    if (screenWidth <= 0 || screenHeight <= 0) PrimaryScreenSize(screenWidth, screenHeight);
    const std::wstring target = PrivatizedName(image);
    const auto zones = [&](int width, int height) {
        std::vector<std::wstring> dropped;
        auto rects = ZonesOnImage(layout, screenWidth, screenHeight, width, height, &dropped);
        for (const std::wstring& reason : dropped)
            UC_LOG(zelLogger::Fallback)(L"PrivatizeImage(): '%s': %s", image.c_str(), reason.c_str());
        return rects;
    };
    if (!m_codec->Blackout(image, target, zones, error)) {
        UC_LOG(zelLogger::Failure)(L"PrivatizeImage(): '%s' cannot be blacked out: %s", image.c_str(), error.c_str());
        return Privatized::Failed;
    }
    image = target;
    return Privatized::Done;
}

std::wstring CFileQueue::ConvertImage(const std::wstring& source, const std::wstring& targetFolder, int format,
                                      int privatize) {
    const int needed = ConversionNeeded(format, LowerExtension(source));
    if (source.empty() || (!privatize && !needed)) return source;

    const std::wstring folder = WithTrailingSeparator(targetFolder);
    std::wstring copy = folder + FileName(source);
    const ImageFormat* target = FormatForCode(format);
    const auto produced = [&](const std::wstring& from) {
        return needed ? ReplaceExtension(from, target->targetExtension) : from;
    };
    // What a successful run would have returned, for the failure paths.
    const std::wstring expected = produced(privatize ? PrivatizedName(copy) : copy);

    if (SameFolder(FolderOf(source), folder)) {
        UC_LOG(zelLogger::Failure)(L"ConvertImage(): '%s' would be written over in its own folder; not converted",
                                   source.c_str());
        return {};
    }
    std::wstring error;
    if (!MakeFolders(folder) || !CopyWhole(source, copy, error)) {
        UC_LOG(zelLogger::Failure)(L"ConvertImage(): copying '%s' to '%s' failed: %s", source.c_str(), copy.c_str(),
                                   error.c_str());
        return expected;
    }

    if (privatize) {
        const std::wstring unprivatised = copy;
        switch (PrivatizeImage(m_layoutFile, copy)) {
        case Privatized::Done:
            // The copy that still shows patient information is not kept.
            DeleteFileAt(unprivatised);
            break;
        case Privatized::LayoutUnusable:
            break;
        case Privatized::Failed:
            DeleteFileAt(unprivatised);
            return expected;
        }
    }

    std::wstring output = copy;
    if (needed) {
        output = produced(copy);
        bool ok = false;
        if (!target->mimeType) {
            if (const DicomStoreCallback store = g_dicomStore.load()) {
                ok = store(copy, output);
                if (!ok) UC_LOG(zelLogger::Failure)(L"ConvertImage(): the DICOM store failed for '%s'", copy.c_str());
            } else {
                UC_LOG(zelLogger::Failure)(L"ConvertImage(): no DICOM store is installed; '%s' not converted",
                                           source.c_str());
            }
            if (!ok) DeleteFileAt(output);
        } else if (m_codec) {
            ok = m_codec->Reencode(copy, output, target->mimeType, error);
            if (!ok)
                UC_LOG(zelLogger::Failure)(L"ConvertImage(): '%s' cannot be saved as %s: %s", copy.c_str(),
                                           target->mimeType, error.c_str());
        }
        DeleteFileAt(copy);
        if (!ok) return output;
    }
    m_converted.insert(output);
    return output;
}

void CFileQueue::RemoveConvertedFiles() {
    for (const std::wstring& file : m_converted) DeleteFileAt(file);
    m_converted.clear();
}
