// Shared helpers of the export tests.
#include "export_test_support.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "export/export_paths.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace uc::test {
using uc::exporting::kSeparator;

std::wstring Below(const std::wstring& root, const std::wstring& relative) { return JoinPath(root, relative); }
std::wstring Dir(const std::wstring& folder) { return uc::exporting::WithTrailingSeparator(folder); }

SampleArchive::SampleArchive(const TempDir& dir) {
    root = dir.file(L"archive");
    patient = Below(root, L"P1");
    study1 = Below(root, L"P1/S1");
    study2 = Below(root, L"P1/S2");
    studyWithoutDescriptor = Below(root, L"S3");
    for (const char* f : {"P1/patient.xml", "P1/S1/study.xml", "P1/S1/img1.bmp", "P1/S1/img2.jpg",
                          "P1/S1/deep/er/clip.avi", "P1/S2/study.xml", "P1/S2/rpt.xml"})
        patientFiles.insert(dir.write(L"archive/" + FromUtf8(f), std::string("content of ") + f));
    dir.write(L"archive/S3/img.bmp", "orphan");
}

std::string ReadFile(const std::wstring& path) {
    std::ifstream in(ToFsPath(path), std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

std::set<std::wstring> FilesBelow(const std::wstring& folder) {
    namespace fs = std::filesystem;
    std::set<std::wstring> out;
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(ToFsPath(folder), ec); !ec && it != fs::recursive_directory_iterator();
         it.increment(ec))
        if (it->is_regular_file()) out.insert(FromFsPath(fs::relative(it->path(), ToFsPath(folder))));
    return out;
}

namespace {
bool WriteText(const std::wstring& path, const std::string& text) {
    std::ofstream out(ToFsPath(path), std::ios::binary | std::ios::trunc);
    out << text;
    return bool(out);
}
}  // namespace

bool ScriptedCodec::Reencode(const std::wstring& source, const std::wstring& target, const wchar_t* mimeType,
                             std::wstring& error) {
    calls.push_back(L"reencode " + source + L" -> " + target + L" (" + mimeType + L")");
    if (failReencode || !std::filesystem::exists(ToFsPath(source))) {
        error = L"scripted failure";
        return false;
    }
    return WriteText(target, "encoded " + ToUtf8(mimeType) + " from " + ReadFile(source));
}

bool ScriptedCodec::Blackout(const std::wstring& source, const std::wstring& target, const ZonesForSize& zones,
                             std::wstring& error) {
    calls.push_back(L"blackout " + source + L" -> " + target);
    if (failBlackout) {
        error = L"scripted failure";
        return false;
    }
    lastZones = zones(imageWidth, imageHeight);
    return WriteText(target, "blacked " + std::to_string(lastZones.size()) + " zones of " + ReadFile(source));
}

}  // namespace uc::test
