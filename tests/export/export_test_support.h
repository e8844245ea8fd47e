// Shared helpers of the export tests: an archive of patients and studies on disk, and a scripted image codec.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "export/image_codec.h"
#include "support/temp_dir.h"

namespace uc::test {

// Path of `relative` ('/'-separated) below `root`, with the platform's separators.
std::wstring Below(const std::wstring& root, const std::wstring& relative);
// `folder` with a trailing separator.
std::wstring Dir(const std::wstring& folder);

// An archive: root/P1/patient.xml, root/P1/S1/study.xml and a few images, root/P1/S2/study.xml, root/S3 without
// its descriptor.
struct SampleArchive {
    explicit SampleArchive(const TempDir& dir);
    std::wstring root, patient, study1, study2, studyWithoutDescriptor;
    std::set<std::wstring> patientFiles;  // every file below the patient folder
};

// A codec that records what it was asked and writes marker text instead of pixels. Fails on demand.
class ScriptedCodec : public uc::exporting::IImageCodec {
public:
    bool Reencode(const std::wstring& source, const std::wstring& target, const wchar_t* mimeType,
                  std::wstring& error) override;
    bool Blackout(const std::wstring& source, const std::wstring& target, const ZonesForSize& zones,
                  std::wstring& error) override;

    bool failReencode = false, failBlackout = false;
    int imageWidth = 1024, imageHeight = 768;
    std::vector<std::wstring> calls;                  // "reencode SOURCE -> TARGET (MIME)", "blackout ..."
    std::vector<uc::exporting::ZoneRect> lastZones;  // what the last blackout filled
};

std::string ReadFile(const std::wstring& path);
// Every file below `folder`, as paths relative to it; empty when the folder is missing.
std::set<std::wstring> FilesBelow(const std::wstring& folder);

}  // namespace uc::test
