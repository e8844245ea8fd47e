// CStarDiscBurn against a scripted library: the steps in order, the erase/append table, free space, the tree,
// failures and clean-up, the burn thread and its messages, and copies to a removable drive.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <thread>

#include "export/disc_burner.h"
#include "export/disc_decision.h"
#include "export/export_files.h"
#include "export/starburn_loader.h"
#include "export_test_support.h"
#include "platform/localisation.h"
#include "platform/logger.h"
#include "platform/profile.h"
#include "scripted_disc.h"

namespace {
using namespace uc::test;
using uc::exporting::Answer;
namespace fs = std::filesystem;

const std::string kTop = "/Exports_Cardio/2024-03-05_09-07-03";  // the safe export folder and the burn's time

class BurnTest : public testing::Test {
protected:
    void SetUp() override {
        zelLogger::Instance().ClearEntries();
        uc::ClearLocalisedStrings();
        uc::SetProfileLocation(dir.file(L"profile.ini"));
        queue.SetImageCodec(codec);
        queue.AddPatientToQueue(archive.patient);
        burner.SetWallClock([] {
            std::tm t{};
            t.tm_year = 124, t.tm_mon = 2, t.tm_mday = 5, t.tm_hour = 9, t.tm_min = 7, t.tm_sec = 3;
            return t;
        });
        burner.SetTempFolder(dir.file(L"staging"));
        burner.SetExportFolder(L"{PATID}\\Exports:Cardio/");
        Reset();
    }
    void TearDown() override {
        uc::ClearLocalisedStrings();
        uc::SetProfileLocation(L"");
    }
    // A fresh library and presenter.
    void Reset() {
        disc = std::make_shared<ScriptedDisc>();
        presenter = std::make_shared<RecordingPresenter>();
        burner.SetDiscOperations(disc);
        burner.SetPresenter(presenter);
        burner.FindDevices();
    }
    // Burns on device 0; `log` then holds this burn's lines.
    int Burn(int privacy = 0) {
        const std::size_t before = burner.GetLog().size();
        const int result = burner.Burn(0, privacy);
        const std::vector<std::wstring> all = burner.GetLog();
        log.assign(all.begin() + static_cast<std::ptrdiff_t>(before), all.end());
        return result;
    }
    bool Logged(const std::wstring& prefix) const { return InOrder(log, {prefix}); }
    bool Called(const std::string& op) const { return std::count(disc->calls.begin(), disc->calls.end(), op) > 0; }
    bool CleanedUp() const { return queue.GetConvertedName().empty() && !fs::exists(uc::ToFsPath(dir.file(L"staging"))); }

    TempDir dir;
    SampleArchive archive{dir};
    std::shared_ptr<ScriptedCodec> codec = std::make_shared<ScriptedCodec>();
    CFileQueue queue;
    std::shared_ptr<ScriptedDisc> disc;
    std::shared_ptr<RecordingPresenter> presenter;
    CStarDiscBurn burner{&queue};
    std::vector<std::wstring> log;
};

TEST_F(BurnTest, ABlankDiscGoesThroughEveryStepInOrder) {
    ASSERT_EQ(Burn(), 1);
    EXPECT_TRUE(InOrder<std::string>(disc->calls, {
        "ISO9660FileTree_Create", "CdvdBurnerGrabber_Create", "CdvdBurnerGrabber_ProbeSupportedWriteModes",
        "CdvdBurnerGrabber_TestUnitReady", "CdvdBurnerGrabber_GetBUP", "CdvdBurnerGrabber_SetBUP",
        "CdvdBurnerGrabber_SetSpeeds", "CdvdBurnerGrabber_GetSpeeds", "CdvdBurnerGrabber_GetTrackInformation",
        "CdvdBurnerGrabber_GetDiscInformation", "ISO9660JolietFileTree_Add", "ISO9660FileTree_BuildImage",
        "CdvdBurnerGrabber_SendOPC", "CdvdBurnerGrabber_TrackAtOnceFromTree", "CdvdBurnerGrabber_CloseSession",
        "CdvdBurnerGrabber_Eject"}));
    EXPECT_FALSE(Called("CdvdBurnerGrabber_Erase") || Called("ISO9660JolietFileTree_ImportTrack"));
    EXPECT_EQ(disc->liveObjects, 0);
    EXPECT_TRUE(InOrder<std::wstring>(log, {
        L"Burn(): Creating Joliet file tree",
        L"Burn(): Found CD/DVD device 'UTILS' - 'SCRIPTED' - '1.0' with 2097152 UCHARs of cache",
        L"Burn(): Probing supported write modes...", L"Burn(): Testing unit ready...",
        L"Burn(): Getting BUP (Buffer Underrun Protection) support...",
        L"Burn(): Enabling BUP (Buffer Underrun Protection)...", L"Burn(): Setting maximum supported CD/DVD speeds...",
        L"Burn(): Getting track information...", L"Burn(): Getting disc information...", L"Burn(): Tree level 3",
        L"Burn(): Building ISO image...", L"Burn(): OPC succeded", L"Burn(): Burn process started",
        L"Closing session...", L"Burn(): Ejecting the disc...", L"Burn(): EXITing with success"}));
    std::vector<std::wstring> steps;
    for (const char* key : {"startburnmsg", "connectingmsg", "treecreatemsg", "testdevicemsg", "enablebufferunderrunmsg",
                            "setmaxspeedmsg", "getdiscinfomsg", "archivetomsg", "addfilesmsg", "archivetospacemsg",
                            "buildisomsg", "progress1msg", "progress2msg", "finalizemsg", "ejectmsg", "cleanupmsg"})
        steps.push_back(L"step utilscontrols.burn." + uc::FromUtf8(key));
    EXPECT_TRUE(InOrder(presenter->Events(), steps));
    EXPECT_EQ(presenter->percents, (std::vector<int>{0, 50, 100}));
    EXPECT_GE(presenter->Find(L"minimize shown"), 0);
}

TEST_F(BurnTest, TheQueueGoesIntoATimeStampedFolderBelowTheSafeExportFolder) {
    ASSERT_EQ(Burn(), 1);
    EXPECT_EQ(std::vector<std::string>(disc->discPaths.begin(), disc->discPaths.begin() + 2),
              (std::vector<std::string>{"/Exports_Cardio/", kTop + "/"}));
    std::set<std::string> files;
    for (const auto& [path, source] : disc->sources) files.insert(path.substr(kTop.size()));
    EXPECT_EQ(files, (std::set<std::string>{"/P1/patient.xml", "/P1/S1/study.xml", "/P1/S1/img1.bmp", "/P1/S1/img2.jpg",
                                            "/P1/S1/deep/er/clip.avi", "/P1/S2/study.xml", "/P1/S2/rpt.xml"}));
    EXPECT_EQ(disc->sources[kTop + "/P1/S1/img1.bmp"], uc::ToUtf8(Below(archive.study1, L"img1.bmp")));
}

TEST_F(BurnTest, ConvertedImagesAreStagedRenamedOnCollisionAndCleanedUp) {
    dir.write(L"archive/P1/S1/img2.bmp", "a second img2");
    queue.AddFilesToQueue(archive.patient);
    burner.SetConversion(1);
    ASSERT_EQ(Burn(), 1);
    const std::string s1 = kTop + "/P1/S1/";
    // img2.bmp converted takes the next free name; img2.jpg keeps its own; descriptors are never converted.
    for (const char* name : {"img1.jpg", "img2.jpg", "img2 (2).jpg", "study.xml"})
        EXPECT_EQ(disc->sources.count(s1 + name), 1u) << name;
    EXPECT_GE(presenter->Find(L"step utilscontrols.burn.addfilesjpgmsg"), 0);
    EXPECT_TRUE(CleanedUp());
    EXPECT_TRUE(uc::exporting::FileIsPresent(Below(archive.study1, L"img1.bmp")));
}

// The medium and the answer decide what is asked, whether the disc is erased (after the tree is built, then read
// again) or its last track imported, where the image starts, and whether anything is written.
TEST_F(BurnTest, TheMediumAndTheAnswerDecideWhatIsWritten) {
    const std::wstring notEmpty = L"ask utilscontrols.burn.notemptymsg | utilscontrols.burn.nomediamsgtitle | yes/no/cancel";
    const std::wstring closed = L"ask utilscontrols.burn.closedmsg | utilscontrols.burn.nomediamsgtitle | yes/no";
    const std::wstring readOnly = L"tell utilscontrols.burn.readonlymsg | utilscontrols.burn.nomediamsgtitle | stop";
    const struct {
        bool erasable;
        int status, type;  // status 0 empty, 1 appendable, 2 closed, 3 other; type 7 a restricted-overwrite DVD-RW
        Answer answer;
        std::wstring shown;  // the question or box, empty for none
        int result;
        bool erased, imported;
        long builtAt;
    } cases[] = {
        {true, 0, 3, Answer::Cancel, L"", 1, false, false, 0},       {true, 3, 3, Answer::Cancel, L"", 1, false, false, 0},
        {true, 1, 3, Answer::No, notEmpty, 1, false, true, 5000},    {true, 1, 3, Answer::Yes, notEmpty, 1, true, false, 0},
        {true, 1, 3, Answer::Cancel, notEmpty, 0, false, false, -1}, {true, 2, 7, Answer::No, notEmpty, 1, false, true, 5000},
        {true, 2, 7, Answer::Yes, notEmpty, 1, true, false, 0},      {true, 2, 7, Answer::Cancel, notEmpty, 0, false, false, -1},
        {true, 2, 3, Answer::Yes, closed, 1, true, false, 0},        {true, 2, 3, Answer::No, closed, 0, false, false, -1},
        {false, 0, 5, Answer::Cancel, L"", 1, false, false, 0},      {false, 1, 5, Answer::Cancel, L"", 1, false, true, 5000},
        {false, 2, 5, Answer::Cancel, readOnly, 0, false, false, -1}, {false, 3, 7, Answer::Cancel, readOnly, 0, false, false, -1},
    };
    for (const auto& c : cases) {
        Reset();
        disc->erasable = c.erasable, disc->discStatus = c.status, disc->discType = c.type;
        disc->lastTrack = 2, disc->nextWritable = 5000;
        presenter->answers = {c.answer};
        const std::string where = std::to_string(c.erasable) + " " + std::to_string(c.status) + " " + std::to_string(c.type);
        EXPECT_EQ(Burn(), c.result) << where;
        EXPECT_EQ(presenter->Find(L"ask") >= 0 || presenter->Find(L"tell utilscontrols.burn.readonlymsg") >= 0, !c.shown.empty()) << where;
        EXPECT_TRUE(c.shown.empty() || presenter->Find(c.shown) >= 0) << where;
        EXPECT_EQ(Called("CdvdBurnerGrabber_Erase"), c.erased) << where;
        EXPECT_EQ(Called("ISO9660JolietFileTree_ImportTrack"), c.imported) << where;
        EXPECT_EQ(Logged(L"Burn(): Importing track 2... "), c.imported) << where;
        EXPECT_EQ(disc->builtAt, c.builtAt) << where;
        EXPECT_EQ(Called("CdvdBurnerGrabber_TrackAtOnceFromTree"), c.result == 1) << where;
        EXPECT_EQ(log.back(), c.result ? L"Burn(): EXITing with success" : L"Burn(): EXITing with failure") << where;
        EXPECT_EQ(disc->liveObjects, 0) << where;
        if (c.erased) {
            EXPECT_TRUE(InOrder<std::string>(disc->calls, {"ISO9660JolietFileTree_Add", "CdvdBurnerGrabber_Erase",
                                                           "CdvdBurnerGrabber_GetTrackInformation"}));
            EXPECT_TRUE(InOrder<std::wstring>(log, {L"Erasing ReWriteable media...", L"Erase Complete", L"Burn(): After erase: "}));
        }
    }
}

// Needed and free space are compared in kilobytes (equal passes), and the built image against the free blocks.
TEST_F(BurnTest, FreeSpaceIsComparedInKilobytesAndAgainstTheImage) {
    uc::SetLocalisedString("utilscontrols.burn.freespaceerrormsg", L"%s: %ld KB needed, %ld KB free");
    std::wstring unit;
    const double total = queue.GetTotalFileSize(unit);
    ASSERT_TRUE(unit == L"Bytes" && total < 2048);  // needed KB = bytes / 1024
    disc->imageBytes = 2048;
    disc->freeBlocks = 1;  // 2 KB
    EXPECT_EQ(Burn(), 1);
    dir.write(L"archive/P1/S2/fill.avi", std::string(2048 - static_cast<std::size_t>(total), 'f'));
    queue.AddFilesToQueue(archive.patient);
    EXPECT_EQ(Burn(), 1);  // exactly as much as is free
    dir.write(L"archive/P1/S2/more.avi", "m");
    queue.AddFilesToQueue(archive.patient);
    EXPECT_EQ(Burn(), 0);  // one byte more
    dir.write(L"archive/P1/S2/big.avi", std::string(5000, 'v'));
    queue.AddFilesToQueue(archive.patient);
    disc->calls.clear();
    EXPECT_EQ(Burn(), 0);
    EXPECT_GE(presenter->Find(L"tell utilscontrols.burn.disctypedvdr: 7 KB needed, 2 KB free | "
                              L"utilscontrols.burn.nomediamsgtitle | stop"), 0);
    EXPECT_FALSE(Called("ISO9660FileTree_BuildImage"));

    Reset();
    disc->freeBlocks = 10;
    disc->imageBytes = 10 * 2048 + 1;  // the queue fits, the image does not
    EXPECT_EQ(Burn(), 0);
    EXPECT_TRUE(Called("ISO9660FileTree_BuildImage") && !Called("CdvdBurnerGrabber_TrackAtOnceFromTree"));
    disc->imageBytes = 10 * 2048;
    EXPECT_EQ(Burn(), 1);
}

// Every failing library call is logged with its numbers; the burn's own steps fail it and clean up, the optional
// ones only warn. Without a medium the progress closes before the box says so.
TEST_F(BurnTest, FailedOperationsAreLoggedAndOnlyOptionalOnesAreSurvived) {
    const struct {
        const char* op;
        int result;
        const wchar_t* line;  // null: "Burn(): StarBurn_<op>() failed, exception 6, status 21, text '...'"
    } cases[] = {
        {"ISO9660FileTree_Create", 0, nullptr},         {"CdvdBurnerGrabber_Create", 0, nullptr},
        {"CdvdBurnerGrabber_ProbeSupportedWriteModes", 0, nullptr},
        {"CdvdBurnerGrabber_TestUnitReady", 0, nullptr}, {"CdvdBurnerGrabber_GetBUP", 0, nullptr},
        {"CdvdBurnerGrabber_SetBUP", 0, nullptr},        {"CdvdBurnerGrabber_GetTrackInformation", 0, nullptr},
        {"CdvdBurnerGrabber_GetDiscInformation", 0, nullptr}, {"ISO9660JolietFileTree_Add", 0, nullptr},
        {"ISO9660FileTree_BuildImage", 0, nullptr},     {"CdvdBurnerGrabber_TrackAtOnceFromTree", 0, nullptr},
        {"CdvdBurnerGrabber_CloseSession", 0, nullptr},  {"CdvdBurnerGrabber_Eject", 1, nullptr},
        {"CdvdBurnerGrabber_SetSpeeds", 1, L"Burn(): Warning: StarBurn_CdvdBurnerGrabber_SetSpeeds() failed, exception 6"},
        {"CdvdBurnerGrabber_SendOPC", 1, L"Burn(): OPC failed"},
    };
    burner.SetConversion(2);
    for (const auto& c : cases) {
        Reset();
        disc->failures = {{c.op, 6}};
        EXPECT_EQ(Burn(), c.result) << c.op;
        EXPECT_TRUE(Logged(c.line ? c.line : uc::Format(L"Burn(): StarBurn_%S() failed, exception 6, status 21, "
                                                        L"text '%S failed on purpose'", c.op, c.op))) << c.op;
        EXPECT_EQ(log.back(), c.result ? L"Burn(): EXITing with success" : L"Burn(): EXITing with failure") << c.op;
        EXPECT_TRUE(CleanedUp()) << c.op;
        EXPECT_EQ(disc->liveObjects, 0) << c.op;
        if (std::string(c.op) == "CdvdBurnerGrabber_TestUnitReady") {
            EXPECT_TRUE(InOrder<std::wstring>(presenter->Events(), {L"progress closed", L"tell utilscontrols.burn.nomediamsg | "
                                                                                        L"utilscontrols.burn.nomediamsgtitle"}));
        }
    }
}

TEST_F(BurnTest, NoTrackAtOnceFailsAndADeepTreeOnlyWarns) {
    disc->trackAtOnce = false;
    EXPECT_EQ(Burn(), 0);
    EXPECT_TRUE(Logged(L"Burn(): Track-At-Once is unsupported!!!"));
    EXPECT_FALSE(Called("CdvdBurnerGrabber_TestUnitReady"));
    disc->trackAtOnce = true;
    disc->level = 9;
    EXPECT_EQ(Burn(), 1);
    EXPECT_TRUE(Logged(L"Burn(): Warning: Tree level exceeds allowed 8, image may be unusable!!!"));
}

// A vanished file, or blacking-out that cannot be done, stops the burn before the image is built.
TEST_F(BurnTest, WhatCannotGoOnTheDiscAsAskedStopsTheBurnBeforeTheImage) {
    fs::remove(uc::ToFsPath(Below(archive.study2, L"rpt.xml")));
    EXPECT_EQ(Burn(), 0);
    EXPECT_TRUE(Logged(L"Burn(): '" + Below(archive.study2, L"rpt.xml") + L"' has vanished"));
    dir.write(L"archive/P1/S2/rpt.xml", "back");

    queue.SetLayoutFile(dir.file(L"no-layout.xml"));
    EXPECT_EQ(Burn(1), 0);
    EXPECT_TRUE(Logged(L"Burn(): the privacy layout"));
    queue.SetLayoutFile(dir.write(L"layout.xml", "<layout><zones><z xpos='0' ypos='0' width='5' height='5'/></zones></layout>"));
    codec->failBlackout = true;
    EXPECT_EQ(Burn(1), 0);
    EXPECT_TRUE(Logged(L"Burn(): '" + Below(archive.study1, L"img1.bmp") + L"' could not be blacked out"));
    EXPECT_FALSE(Called("ISO9660FileTree_BuildImage"));
    EXPECT_TRUE(CleanedUp());

    codec->failBlackout = false;
    EXPECT_EQ(Burn(1), 1);
    EXPECT_EQ(disc->sources.count(kTop + "/P1/S1/img1c.bmp"), 1u);
}

TEST_F(BurnTest, AMissingLibraryFailsCleanly) {
    CStarDiscBurn lonely(&queue);
    lonely.SetDiscOperations(std::make_shared<uc::exporting::StarBurnLoader>(L"libNoSuchStarBurn.so"));
    lonely.SetPresenter(presenter);
    lonely.FindDevices();
    EXPECT_EQ(lonely.GetDeviceCount(), 0);
    EXPECT_EQ(lonely.StartBurningProcess(0), 0);
    EXPECT_EQ(lonely.Burn(0, 0), 0);
    EXPECT_GE(zelLogger::Instance().Count(L"Burn(): the disc-writing library is unavailable: 'libNoSuchStarBurn.so'"), 1u);
}

TEST_F(BurnTest, TheThreadPostsFinishedShowsTheResultThenPostsClosed) {
    disc->holdWrite = true;
    ASSERT_EQ(burner.StartBurningProcess(0), 1);
    ASSERT_TRUE(disc->WaitUntilWriting());
    EXPECT_TRUE(burner.IsBurning());
    EXPECT_EQ(burner.StartBurningProcess(0), 0);  // one burn at a time
    disc->Release();
    burner.WaitForBurn();
    EXPECT_FALSE(burner.IsBurning());
    EXPECT_TRUE(InOrder<std::wstring>(presenter->Events(), {L"progress CD-R", L"post 0x8004 0", L"post 0x8004 1",
                                                             L"progress closed", L"tell utilscontrols.burn.donemsg |",
                                                             L"post 0x8001 1"}));
}

// The owner may start the next burn as soon as it is told the last one's box was closed.
TEST_F(BurnTest, TheBurnerIsFreeWhenTheOwnerHearsTheBoxWasClosed) {
    struct Chaining : RecordingPresenter {
        CStarDiscBurn* burner = nullptr;
        int restarted = -1;
        void Post(void* owner, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
            RecordingPresenter::Post(owner, message, wParam, lParam);
            if (message == uc::exporting::kBurnClosedMessage && restarted < 0) restarted = burner->IsBurning() ? 0 : 1;
        }
    };
    auto chaining = std::make_shared<Chaining>();
    chaining->burner = &burner;
    burner.SetPresenter(chaining);
    ASSERT_EQ(burner.StartBurningProcess(0), 1);
    burner.WaitForBurn();
    EXPECT_EQ(chaining->restarted, 1);
}

TEST_F(BurnTest, WithoutTheThreadTheSameMessagesComeFromTheCaller) {
    vex_utils::WriteProfileInt(L"System", L"BurnThread", 0);
    disc->failures = {{"CdvdBurnerGrabber_CloseSession", 6}};
    EXPECT_EQ(burner.StartBurningProcess(0), 0);
    EXPECT_FALSE(burner.IsBurning());
    EXPECT_TRUE(InOrder<std::wstring>(presenter->Events(), {L"post 0x8004 0", L"post 0x8004 1",
                                                             L"tell utilscontrols.burn.donefailmsg"}));
    EXPECT_EQ(presenter->Find(L"post 0x8001"), -1);
}

std::wstring g_pdf;
std::wstring MakePdf(std::wstring, int) { return g_pdf; }

TEST_F(BurnTest, PdfReportsAreAwaitedOnTheInjectedClock) {
    uc::ManualClock clock;
    burner.SetClock(clock);
    burner.SetPdfTimeout(uc::Millis(2000));
    burner.SetGeneratePDFs(1);
    queue.AddStudyToQueue(archive.study1);
    g_pdf = dir.file(L"reports/S1.pdf");
    CStarDiscBurn::SetGeneratePDFCallback(&MakePdf);
    int result = -1;
    std::thread burn([&] { result = Burn(); });
    ASSERT_TRUE(clock.WaitForWaiters(1));
    dir.write(L"reports/S1.pdf", "%PDF-1.4");
    clock.Advance(uc::Millis(250));
    burn.join();
    CStarDiscBurn::SetGeneratePDFCallback(nullptr);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(disc->sources.count(kTop + "/P1/S1/S1.pdf"), 1u);
}

class RemovableTest : public BurnTest {
protected:
    void SetUp() override {
        BurnTest::SetUp();
        fs::create_directories(uc::ToFsPath(drive));
    }
    int Send(int convert, int privacy, int overwrite = 0, const std::wstring& folder = L"", const std::wstring& id = L"") {
        return burner.SendToRemovable(nullptr, L"", drive, convert, privacy, result, nullptr, folder, id, overwrite);
    }
    std::wstring drive = dir.file(L"usb"), result;
};

TEST_F(RemovableTest, TheQueueIsCopiedBelowTheExportFolderAndTimeStamp) {
    ASSERT_EQ(Send(1, 0, 0, L"Exp/{PATID}", L"ID7"), 1) << uc::ToUtf8(result);
    const std::wstring destination = Below(drive, L"Exp/ID7/2024-03-05_09-07-03");
    EXPECT_EQ(Dir(result), Dir(destination));
    const std::set<std::wstring> files = FilesBelow(destination);
    for (const wchar_t* f : {L"S1/img1.jpg", L"S1/img2.jpg", L"S2/rpt.xml"}) EXPECT_EQ(files.count(Below(L"P1", f)), 1u);
    EXPECT_EQ(files.size(), archive.patientFiles.size());
    EXPECT_TRUE(queue.GetConvertedName().empty());
    EXPECT_GE(presenter->Find(L"step utilscontrols.burn.progressTransfer"), 0);
    EXPECT_EQ(Send(1, 0, 0, L"Exp/{PATID}", L"ID7"), 0);  // the same second again: the folder is not overwritten
}

TEST_F(RemovableTest, FailuresLeaveNothingOnTheDrive) {
    burner.SetFreeSpaceProbe([](const std::wstring&) { return std::int64_t(100); });
    EXPECT_EQ(Send(0, 0), 0);
    EXPECT_GE(presenter->Find(L"tell utilscontrols.burn.removablefreespaceerrormsg | utilscontrols.burn.nomediamsgtitle"), 0);
    burner.SetFreeSpaceProbe(nullptr);

    fs::remove(uc::ToFsPath(Below(archive.study2, L"study.xml")));
    EXPECT_EQ(Send(0, 0), 0);
    EXPECT_NE(result.find(L"has vanished"), std::wstring::npos);
    EXPECT_TRUE(FilesBelow(drive).empty());

    codec->failBlackout = true;
    queue.SetLayoutFile(dir.write(L"layout.xml", "<layout><zones/></layout>"));
    dir.write(L"archive/P1/S2/study.xml", "<study/>");
    EXPECT_EQ(Send(0, 1, 1), 0);
    EXPECT_NE(result.find(L"could not be blacked out"), std::wstring::npos);
    EXPECT_TRUE(FilesBelow(drive).empty());
    EXPECT_TRUE(queue.GetConvertedName().empty());
}

TEST_F(RemovableTest, ADicomDirTreeIsCopiedWhenItFits) {
    dir.write(L"dicom/DICOMDIR", std::string(300, 'd'));
    dir.write(L"dicom/IMAGES/IM0001", std::string(700, 'i'));
    EXPECT_EQ(burner.SendDicomDirToRemovable(dir.file(L"dicom"), dir.file(L"nodrive"), nullptr, L"USB"), 0);
    EXPECT_EQ(burner.SendDicomDirToRemovable(dir.file(L"dicom"), drive, nullptr, L"USB"), 1);
    EXPECT_EQ(FilesBelow(drive), (std::set<std::wstring>{L"DICOMDIR", Below(L"IMAGES", L"IM0001")}));
    EXPECT_EQ(ReadFile(Below(drive, L"IMAGES/IM0001")), std::string(700, 'i'));

    burner.SetFreeSpaceProbe([](const std::wstring&) { return std::int64_t(999); });
    const std::wstring other = dir.file(L"usb2");
    fs::create_directories(uc::ToFsPath(other));
    EXPECT_EQ(burner.SendDicomDirToRemovable(dir.file(L"dicom"), other, nullptr, L"USB"), 0);
    EXPECT_TRUE(FilesBelow(other).empty());
    EXPECT_GE(presenter->Find(L"tell utilscontrols.burn.removablefreespaceerrormsg"), 0);
}

}  // namespace
