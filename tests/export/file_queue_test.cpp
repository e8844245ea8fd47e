// CFileQueue: sets and folder walks, patients and studies by their descriptors, totals, conversion and clean-up.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <tuple>

#include "export/export_files.h"
#include "export/export_paths.h"
#include "export/file_queue.h"
#include "export_test_support.h"
#include "platform/logger.h"
#include "platform/text.h"

namespace {
using namespace uc::test;
using uc::exporting::ZoneRect;

class FileQueueTest : public testing::Test {
protected:
    void SetUp() override { zelLogger::Instance().ClearEntries(); }
    TempDir dir;
    SampleArchive archive{dir};
    CFileQueue queue;
};

TEST_F(FileQueueTest, AFolderWithOrWithoutItsSeparatorQueuesTheSameFiles) {
    CFileQueue other;
    queue.AddFilesToQueue(archive.patient);
    other.AddFilesToQueue(Dir(archive.patient));
    EXPECT_EQ(queue.GetFilesName(), archive.patientFiles);
    EXPECT_EQ(other.GetFilesName(), queue.GetFilesName());
    queue.AddFilesToQueue(archive.patient);  // again: a set, nothing doubles
    EXPECT_EQ(queue.GetSize(), static_cast<int>(archive.patientFiles.size()));
}

TEST_F(FileQueueTest, TemporaryFilesAreNeverQueued) {
    const std::wstring temp = dir.write(L"archive/P1/S1/~scratch.bmp", "half written");
    bool marked = false;
    if (uc::exporting::SetTemporaryMark(temp, true))
        uc::exporting::ListFolder(Dir(archive.study1), [&](const uc::exporting::FolderEntry& e) {
            if (e.name == L"~scratch.bmp") marked = e.temporary;
        });
    if (!marked) GTEST_SKIP() << "this file system keeps no temporary mark";
    ASSERT_TRUE(queue.AddPatientToQueue(archive.patient));
    EXPECT_EQ(queue.FileExists(temp), -1);
    EXPECT_EQ(queue.GetFilesName(), archive.patientFiles);
    ASSERT_TRUE(uc::exporting::SetTemporaryMark(temp, false));
    queue.AddFilesToQueue(archive.patient);
    EXPECT_GE(queue.FileExists(temp), 0);
}

TEST_F(FileQueueTest, PatientsAndStudiesAreQueuedOnceByTheirDescriptors) {
    EXPECT_TRUE(queue.AddPatientToQueue(archive.patient));
    std::wstring upper = archive.patient;
    std::transform(upper.begin(), upper.end(), upper.begin(), ::towupper);
    EXPECT_FALSE(queue.AddPatientToQueue(Dir(upper)));  // same patient, other case
    EXPECT_EQ(queue.GetPatientsName(), (std::set<std::wstring>{Dir(archive.patient) + L"patient.xml"}));
    EXPECT_TRUE(queue.AddStudyToQueue(archive.study1));
    EXPECT_FALSE(queue.AddStudyToQueue(Dir(archive.study1)));
    EXPECT_EQ(queue.GetStudiesName(), (std::set<std::wstring>{Dir(archive.study1) + L"study.xml"}));

    CFileQueue other;  // folders without their descriptor are refused and say so
    EXPECT_FALSE(other.AddStudyToQueue(archive.studyWithoutDescriptor));
    EXPECT_FALSE(other.AddPatientToQueue(dir.file(L"nowhere")));
    EXPECT_TRUE(other.GetSize() == 0 && other.GetStudiesName().empty() && other.GetPatientsName().empty());
    EXPECT_EQ(zelLogger::Instance().Count(L"has no \"study.xml\"; not queued"), 1u);
    EXPECT_EQ(zelLogger::Instance().Count(L"has no \"patient.xml\"; not queued"), 1u);
}

TEST_F(FileQueueTest, RemovingAStudyTakesItsFilesEvenThoseThatVanished) {
    ASSERT_TRUE(queue.AddPatientToQueue(archive.patient));
    ASSERT_TRUE(queue.AddStudyToQueue(archive.study1));
    const std::wstring gone = Below(archive.study1, L"img2.jpg");
    std::filesystem::remove(uc::ToFsPath(gone));
    queue.RemoveStudyFromQueue(archive.study1);
    EXPECT_TRUE(queue.GetStudiesName().empty());
    for (const std::wstring& f : queue.GetFilesName())
        EXPECT_NE(f.rfind(Dir(archive.study1), 0), 0u) << "still queued: " << uc::ToUtf8(f);
    EXPECT_GE(queue.FileExists(Below(archive.study2, L"rpt.xml")), 0);
    // A sibling folder whose name extends the removed one's stays.
    const std::wstring sibling = dir.write(L"archive/P1/S1x/a.bmp", "x");
    queue.AddToQueue(sibling);
    queue.RemoveFilesFromQueue(archive.study1);
    EXPECT_GE(queue.FileExists(sibling), 0);

    queue.RemovePatientFromQueue(archive.patient);
    EXPECT_TRUE(queue.GetPatientsName().empty());
    EXPECT_EQ(queue.GetSize(), 0);  // the sibling lies below the patient too
}

TEST_F(FileQueueTest, PositionsFollowSetOrderAndLookupIgnoresCase) {
    for (const wchar_t* f : {L"c.txt", L"A.txt", L"b.txt"}) EXPECT_EQ(queue.AddToQueue(f), 1);
    EXPECT_EQ(queue.AddToQueue(L"b.txt"), 0);
    EXPECT_EQ(queue.GetAt(0), L"A.txt");  // ordered by character code: upper case first
    EXPECT_EQ(queue.GetAt(2), L"c.txt");
    EXPECT_EQ(queue.GetAt(1), L"b.txt");  // backwards after forwards
    EXPECT_EQ(queue.GetAt(3), L"");
    EXPECT_EQ(queue.GetAt(-1), L"");
    EXPECT_EQ(queue.FileExists(L"a.TXT"), 0);
    EXPECT_EQ(queue.FileExists(L"C.txt"), 2);
    EXPECT_EQ(queue.FileExists(L"d.txt"), -1);
    EXPECT_EQ(queue.RemoveFromQueue(L"A.txt"), 1);
    EXPECT_EQ(queue.GetAt(0), L"b.txt");  // the walking position follows changes
    EXPECT_EQ(queue.RemoveFromQueue(L"A.txt"), 0);
}

TEST_F(FileQueueTest, TotalsUseStrictUnitThresholdsAndSkipMissingFiles) {
    struct Case {
        std::size_t bytes;
        double value;
        const wchar_t* unit;
    } cases[] = {{0, 0, L"Bytes"},       {1023, 1023, L"Bytes"},         {1024, 1024, L"Bytes"},
                 {2048, 2, L"KB"},       {1048576, 1024, L"KB"},         {3 * 1048576, 3, L"MB"},
                 {1025, 1025.0 / 1024, L"KB"}};
    int n = 0;
    for (const Case& c : cases) {
        CFileQueue q;
        q.AddToQueue(dir.write(L"sizes/" + std::to_wstring(n++), std::string(c.bytes, 'x')));
        q.AddToQueue(dir.file(L"sizes/missing"));
        std::wstring unit;
        EXPECT_DOUBLE_EQ(q.GetTotalFileSize(unit), c.value) << c.bytes;
        EXPECT_EQ(unit, c.unit) << c.bytes;
    }
    EXPECT_EQ(zelLogger::Instance().Entries().size(), 0u);  // missing files are not reported
}

TEST_F(FileQueueTest, CopiesCarryAllFourSets) {
    auto codec = std::make_shared<ScriptedCodec>();
    queue.SetImageCodec(codec);
    queue.AddPatientToQueue(archive.patient);
    queue.AddStudyToQueue(archive.study1);
    queue.ConvertImage(Below(archive.study1, L"img1.bmp"), dir.file(L"out"), 1, 0);
    const CFileQueue copy(queue);
    CFileQueue assigned;
    assigned = queue;
    for (const CFileQueue* q : {&copy, static_cast<const CFileQueue*>(&assigned)}) {
        EXPECT_EQ(q->GetFilesName(), queue.GetFilesName());
        EXPECT_EQ(q->GetPatientsName(), queue.GetPatientsName());
        EXPECT_EQ(q->GetStudiesName(), queue.GetStudiesName());
        EXPECT_EQ(q->GetConvertedName(), queue.GetConvertedName());
        EXPECT_EQ(q->GetAt(1), queue.GetAt(1));
    }
}

// ConvertImage against a scripted codec: the file steps, names and failure paths.
class ConvertTest : public FileQueueTest {
protected:
    void SetUp() override {
        FileQueueTest::SetUp();
        queue.SetImageCodec(codec);
        queue.SetScreenSize(1024, 768);
        queue.SetLayoutFile(dir.write(L"layout.xml",
                                      "<layout><fullscreen>1</fullscreen><zones>"
                                      "<zone xpos='0' ypos='0' width='800' height='30'/></zones></layout>"));
        CFileQueue::SetDicomStoreCallback(nullptr);
    }
    void TearDown() override { CFileQueue::SetDicomStoreCallback(nullptr); }
    std::set<std::wstring> Outputs() const { return FilesBelow(out); }
    std::shared_ptr<ScriptedCodec> codec = std::make_shared<ScriptedCodec>();
    std::wstring bmp = Below(archive.study1, L"img1.bmp"), jpg = Below(archive.study1, L"img2.jpg");
    std::wstring out = dir.file(L"out");
};

TEST_F(ConvertTest, NothingToDoReturnsTheSourceAndCreatesNothing) {
    const std::wstring upper = Below(archive.study1, L"IMG.JPG");
    for (const auto& [source, format, privatize] : {std::tuple{jpg, 1, 0}, {bmp, 0, 0}, {bmp, 5, 0}, {upper, 1, 0}, {L"", 1, 1}})
        EXPECT_EQ(queue.ConvertImage(source, out, format, privatize), source) << uc::ToUtf8(source) << " " << format;
    EXPECT_TRUE(Outputs().empty() && codec->calls.empty() && queue.GetConvertedName().empty());
}

// Each conversion leaves one file named for its format (a "c" before the extension when blacked out) holding what
// the codec made of a copy, and records it; the unblacked copy and the source's own folder are left alone.
TEST_F(ConvertTest, EachConversionLeavesOnlyItsResultAndRecordsIt) {
    const std::string bmpBytes = ReadFile(bmp), jpgBytes = ReadFile(jpg);
    const struct {
        std::wstring source;
        int format, privatize;
        const wchar_t* name;
        std::string content;
    } cases[] = {
        {bmp, 1, 0, L"img1.jpg", "encoded image/jpeg from " + bmpBytes},
        {jpg, 2, 0, L"img2.bmp", "encoded image/bmp from " + jpgBytes},
        {jpg, 3, 0, L"img2.gif", "encoded image/gif from " + jpgBytes},
        {jpg, 1, 1, L"img2c.jpg", "blacked 1 zones of " + jpgBytes},
        {bmp, 3, 1, L"img1c.gif", "encoded image/gif from blacked 1 zones of " + bmpBytes},
    };
    std::set<std::wstring> made;
    for (const auto& c : cases) {
        const std::wstring result = queue.ConvertImage(c.source, out, c.format, c.privatize);
        EXPECT_EQ(result, Below(out, c.name));
        EXPECT_EQ(ReadFile(result), c.content) << uc::ToUtf8(c.name);
        made.insert(c.name);
        EXPECT_EQ(Outputs(), made);
        EXPECT_EQ(queue.GetConvertedName().size(), made.size());
        EXPECT_EQ(queue.GetConvertedName().count(result), 1u);
    }
    EXPECT_TRUE(ReadFile(bmp) == bmpBytes && ReadFile(jpg) == jpgBytes);
    ASSERT_EQ(codec->lastZones.size(), 1u);
    EXPECT_EQ(codec->lastZones[0], (ZoneRect{112, 33, 800, 30}));  // full-screen offsets of a 1024 x 768 screen
}

TEST_F(ConvertTest, AnUnusableLayoutLeavesTheImageAsItIsAndSaysSo) {
    queue.SetLayoutFile(dir.file(L"missing.xml"));
    const std::wstring result = queue.ConvertImage(jpg, out, 1, 1);
    EXPECT_EQ(result, Below(out, L"img2.jpg"));
    EXPECT_EQ(ReadFile(result), ReadFile(jpg));
    EXPECT_EQ(zelLogger::Instance().Count(L"is not blacked out"), 1u);
    queue.SetLayoutFile(dir.write(L"broken.xml", "<layout><zones>"));
    queue.ConvertImage(bmp, out, 0, 1);
    EXPECT_EQ(zelLogger::Instance().Count(L"is not blacked out"), 2u);
}

TEST_F(ConvertTest, FailuresLeaveNothingBehindAndNoConvertedEntry) {
    codec->failReencode = true;
    EXPECT_EQ(queue.ConvertImage(bmp, out, 1, 0), Below(out, L"img1.jpg"));
    codec->failReencode = false;
    codec->failBlackout = true;
    EXPECT_EQ(queue.ConvertImage(bmp, out, 1, 1), Below(out, L"img1c.jpg"));
    EXPECT_EQ(queue.ConvertImage(jpg, out, 0, 1), Below(out, L"img2c.jpg"));
    codec->failBlackout = false;
    EXPECT_EQ(queue.ConvertImage(Below(archive.study1, L"vanished.bmp"), out, 1, 0), Below(out, L"vanished.jpg"));
    EXPECT_TRUE(Outputs().empty() && queue.GetConvertedName().empty());
    EXPECT_EQ(zelLogger::Instance().Count(L"ConvertImage(): copying"), 1u);
    EXPECT_EQ(zelLogger::Instance().Count(L"cannot be blacked out"), 2u);
}

TEST_F(ConvertTest, TheSourceFolderIsNeverWrittenTo) {
    const std::string before = ReadFile(bmp);
    const std::set<std::wstring> files = FilesBelow(archive.study1);
    EXPECT_EQ(queue.ConvertImage(bmp, archive.study1, 1, 1), L"");
    EXPECT_EQ(ReadFile(bmp), before);
    EXPECT_EQ(FilesBelow(archive.study1), files);
}

std::vector<std::pair<std::wstring, std::wstring>> g_stored;
bool g_storeResult = true;
bool Store(std::wstring source, std::wstring target) {
    g_stored.emplace_back(source, target);
    // A failing encoder may leave half a file behind; the queue must not keep it.
    std::ofstream(uc::ToFsPath(target), std::ios::binary) << (g_storeResult ? ReadFile(source) : "DICM half");
    return g_storeResult;
}

TEST_F(ConvertTest, DicomGoesThroughTheStoreCallback) {
    EXPECT_EQ(queue.ConvertImage(bmp, out, 4, 0), Below(out, L"img1.dcm"));
    EXPECT_TRUE(Outputs().empty());  // no callback: nothing produced
    EXPECT_EQ(zelLogger::Instance().Count(L"no DICOM store is installed"), 1u);

    g_stored.clear();
    CFileQueue::SetDicomStoreCallback(&Store);
    const std::wstring result = queue.ConvertImage(bmp, out, 4, 0);
    ASSERT_EQ(g_stored.size(), 1u);
    EXPECT_EQ(g_stored[0].first, Below(out, L"img1.bmp"));
    EXPECT_EQ(g_stored[0].second, result);
    EXPECT_EQ(Outputs(), (std::set<std::wstring>{L"img1.dcm"}));

    g_storeResult = false;
    EXPECT_EQ(queue.ConvertImage(jpg, out, 4, 0), Below(out, L"img2.dcm"));
    g_storeResult = true;
    EXPECT_EQ(Outputs(), (std::set<std::wstring>{L"img1.dcm"}));
    EXPECT_EQ(queue.GetConvertedName().size(), 1u);
}

TEST_F(ConvertTest, ClearingTheQueueKeepsTheConvertedFilesForCleanUp) {
    queue.AddPatientToQueue(archive.patient);
    const std::wstring a = queue.ConvertImage(bmp, out, 1, 0), b = queue.ConvertImage(jpg, out, 2, 1);
    queue.ClearQueue();
    EXPECT_EQ(queue.GetSize(), 0);
    EXPECT_TRUE(queue.GetPatientsName().empty());
    EXPECT_EQ(queue.GetConvertedName(), (std::set<std::wstring>{a, b}));
    std::wstring unit;
    EXPECT_GT(queue.GetTotalConvertedFileSize(unit), 0);
    queue.RemoveConvertedFiles();
    EXPECT_TRUE(Outputs().empty() && queue.GetConvertedName().empty());
    EXPECT_TRUE(std::filesystem::exists(uc::ToFsPath(bmp)));
}

}  // namespace

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>

namespace {
// A disk that fills up under the staging folder: the process may write no more than 1000 bytes into a file.
TEST_F(ConvertTest, AFullDiskLeavesNoHalfCopy) {
    const std::wstring big = dir.write(L"archive/P1/S1/big.bmp", std::string(5000, 'b'));
    rlimit old{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 1000;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::wstring result = queue.ConvertImage(big, out, 1, 0);
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, previous);
    EXPECT_EQ(result, Below(out, L"big.jpg"));
    EXPECT_TRUE(Outputs().empty() && queue.GetConvertedName().empty());
    EXPECT_EQ(zelLogger::Instance().Count(L"ConvertImage(): copying"), 1u);
}
}  // namespace
#endif
