// CStarDiscBurn against a scripted library: the steps in order, the erase/append table, free space, the tree,
// failures and clean-up, the burn thread and its messages.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "export/disc_burner.h"
#include "export/disc_decision.h"
#include "export/export_files.h"
#include "export/starburn_loader.h"
#include "export_test_support.h"
#include "platform/localisation.h"
#include "platform/logger.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "scripted_disc.h"

namespace {
using namespace uc::test;
using uc::exporting::Answer;
using uc::exporting::DiscUse;

std::tm FixedTime() {
    std::tm t{};
    t.tm_year = 124;
    t.tm_mon = 2;
    t.tm_mday = 5;
    t.tm_hour = 9;
    t.tm_min = 7;
    t.tm_sec = 3;
    return t;
}

TEST(DiscDecision, FollowsTheTable) {
    struct Row {
        bool erasable;
        int status, type;
        int asked;  // 0 none, 1 not-empty question, 2 closed question
        Answer answer;
        DiscUse use;
    } rows[] = {
        {true, 0, 3, 0, Answer::Yes, DiscUse::Write},
        {true, 1, 3, 1, Answer::Yes, DiscUse::EraseThenWrite},
        {true, 1, 3, 1, Answer::No, DiscUse::Append},
        {true, 1, 3, 1, Answer::Cancel, DiscUse::Abandon},
        {true, 2, 7, 1, Answer::Yes, DiscUse::EraseThenWrite},
        {true, 2, 7, 1, Answer::No, DiscUse::Append},
        {true, 2, 7, 1, Answer::Cancel, DiscUse::Abandon},
        {true, 2, 3, 2, Answer::Yes, DiscUse::EraseThenWrite},
        {true, 2, 3, 2, Answer::No, DiscUse::Abandon},
        {true, 3, 3, 0, Answer::Yes, DiscUse::Write},
        {false, 0, 5, 0, Answer::Yes, DiscUse::Write},
        {false, 1, 5, 0, Answer::Yes, DiscUse::Append},
        {false, 2, 5, 0, Answer::Yes, DiscUse::ReadOnly},
        {false, 3, 7, 0, Answer::Yes, DiscUse::ReadOnly},
    };
    for (const Row& r : rows) {
        int asked = 0;
        const DiscUse use = uc::exporting::DecideDiscUse(r.erasable, r.status, r.type, [&](bool notEmpty) {
            asked = notEmpty ? 1 : 2;
            return r.answer;
        });
        EXPECT_EQ(use, r.use) << r.erasable << " " << r.status << " " << r.type;
        EXPECT_EQ(asked, r.asked) << r.erasable << " " << r.status << " " << r.type;
    }
}

class BurnTest : public testing::Test {
protected:
    void SetUp() override {
        zelLogger::Instance().ClearEntries();
        uc::ClearLocalisedStrings();
        uc::SetProfileLocation(dir.file(L"profile.ini"));
        queue.SetImageCodec(codec);
        queue.AddPatientToQueue(archive.patient);
        burner.SetDiscOperations(disc);
        burner.SetPresenter(presenter);
        burner.SetWallClock(&FixedTime);
        burner.SetTempFolder(dir.file(L"staging"));
        burner.SetExportFolder(L"{PATID}\\Exports:Cardio/");
        burner.FindDevices();
    }
    void TearDown() override {
        uc::ClearLocalisedStrings();
        uc::SetProfileLocation(L"");
    }
    bool Logged(const std::wstring& line) const {
        const auto log = burner.GetLog();
        return std::find(log.begin(), log.end(), line) != log.end();
    }
    // Index in the burn log of the first line starting with `prefix`, or -1.
    int LogIndex(const std::wstring& prefix) const {
        const auto log = burner.GetLog();
        for (std::size_t i = 0; i < log.size(); ++i)
            if (log[i].rfind(prefix, 0) == 0) return static_cast<int>(i);
        return -1;
    }
    bool Called(const std::string& op) const {
        return std::find(disc->calls.begin(), disc->calls.end(), op) != disc->calls.end();
    }
    bool StagingIsGone() const { return !std::filesystem::exists(uc::ToFsPath(dir.file(L"staging"))); }

    TempDir dir;
    SampleArchive archive{dir};
    std::shared_ptr<ScriptedCodec> codec = std::make_shared<ScriptedCodec>();
    CFileQueue queue;
    std::shared_ptr<ScriptedDisc> disc = std::make_shared<ScriptedDisc>();
    std::shared_ptr<RecordingPresenter> presenter = std::make_shared<RecordingPresenter>();
    CStarDiscBurn burner{&queue};
};

TEST_F(BurnTest, ABlankDiscGoesThroughEveryStepInOrder) {
    ASSERT_EQ(burner.Burn(0, 0), 1);
    const char* ops[] = {"ISO9660FileTree_Create", "CdvdBurnerGrabber_Create", "CdvdBurnerGrabber_ProbeSupportedWriteModes",
                         "CdvdBurnerGrabber_TestUnitReady", "CdvdBurnerGrabber_GetBUP", "CdvdBurnerGrabber_SetBUP",
                         "CdvdBurnerGrabber_SetSpeeds", "CdvdBurnerGrabber_GetSpeeds",
                         "CdvdBurnerGrabber_GetTrackInformation", "CdvdBurnerGrabber_GetDiscInformation",
                         "ISO9660JolietFileTree_Add", "ISO9660FileTree_BuildImage", "CdvdBurnerGrabber_SendOPC",
                         "CdvdBurnerGrabber_TrackAtOnceFromTree", "CdvdBurnerGrabber_CloseSession",
                         "CdvdBurnerGrabber_Eject"};
    auto at = disc->calls.begin();
    for (const char* op : ops) {
        at = std::find(at, disc->calls.end(), op);
        ASSERT_NE(at, disc->calls.end()) << op << " missing or out of order";
    }
    EXPECT_FALSE(Called("CdvdBurnerGrabber_Erase"));
    EXPECT_FALSE(Called("ISO9660JolietFileTree_ImportTrack"));
    EXPECT_EQ(disc->liveObjects, 0);

    const wchar_t* lines[] = {L"Burn(): Creating Joliet file tree",
                              L"Burn(): Found CD/DVD device 'UTILS' - 'SCRIPTED' - '1.0' with 2097152 UCHARs of cache",
                              L"Burn(): Probing supported write modes...", L"Burn(): Testing unit ready...",
                              L"Burn(): Getting BUP (Buffer Underrun Protection) support...",
                              L"Burn(): Enabling BUP (Buffer Underrun Protection)...",
                              L"Burn(): Setting maximum supported CD/DVD speeds...", L"Burn(): Getting track information...",
                              L"Burn(): Getting disc information...", L"Burn(): Tree level 3", L"Burn(): Building ISO image...",
                              L"Burn(): OPC succeded", L"Burn(): Burn process started", L"Closing session...",
                              L"Burn(): Ejecting the disc...", L"Burn(): EXITing with success"};
    int previous = -1;
    for (const wchar_t* line : lines) {
        const int index = LogIndex(line);
        ASSERT_GT(index, previous) << uc::ToUtf8(line);
        previous = index;
    }
    const char* keys[] = {"startburnmsg", "connectingmsg", "treecreatemsg", "testdevicemsg", "enablebufferunderrunmsg",
                          "setmaxspeedmsg", "getdiscinfomsg", "archivetomsg", "addfilesmsg", "archivetospacemsg",
                          "buildisomsg", "progress1msg", "progress2msg", "finalizemsg", "ejectmsg", "cleanupmsg"};
    previous = -1;
    for (const char* key : keys) {
        const int index = presenter->Find(L"step utilscontrols.burn." + uc::FromUtf8(key));
        ASSERT_GT(index, previous) << key;
        previous = index;
    }
    EXPECT_EQ(presenter->percents, (std::vector<int>{0, 50, 100}));
    EXPECT_GE(presenter->Find(L"minimize shown"), 0);
}

TEST_F(BurnTest, TheQueueGoesIntoATimeStampedFolderBelowTheSafeExportFolder) {
    ASSERT_EQ(burner.Burn(0, 0), 1);
    const std::string top = "/Exports_Cardio/2024-03-05_09-07-03";
    EXPECT_EQ(disc->discPaths[0], "/Exports_Cardio/");
    EXPECT_EQ(disc->discPaths[1], top + "/");
    std::set<std::string> files;
    for (const auto& [path, source] : disc->sources) files.insert(path);
    EXPECT_EQ(files, (std::set<std::string>{top + "/P1/patient.xml", top + "/P1/S1/study.xml", top + "/P1/S1/img1.bmp",
                                            top + "/P1/S1/img2.jpg", top + "/P1/S1/deep/er/clip.avi",
                                            top + "/P1/S2/study.xml", top + "/P1/S2/rpt.xml"}));
    EXPECT_EQ(disc->sources[top + "/P1/S1/img1.bmp"], uc::ToUtf8(Below(archive.study1, L"img1.bmp")));
}

TEST_F(BurnTest, ConvertedImagesAreStagedRenamedOnCollisionAndCleanedUp) {
    dir.write(L"archive/P1/S1/img2.bmp", "a second img2");
    queue.AddFilesToQueue(archive.patient);
    burner.SetConversion(1);
    ASSERT_EQ(burner.Burn(0, 0), 1);
    const std::string s1 = "/Exports_Cardio/2024-03-05_09-07-03/P1/S1/";
    ASSERT_EQ(disc->sources.count(s1 + "img1.jpg"), 1u);
    ASSERT_EQ(disc->sources.count(s1 + "img2.jpg"), 1u);
    ASSERT_EQ(disc->sources.count(s1 + "img2 (2).jpg"), 1u);  // img2.bmp converted; img2.jpg kept its name
    EXPECT_EQ(disc->sources.count(s1 + "study.xml"), 1u);    // descriptors are never converted
    EXPECT_GE(presenter->Find(L"step utilscontrols.burn.addfilesjpgmsg"), 0);
    EXPECT_TRUE(queue.GetConvertedName().empty());
    EXPECT_TRUE(StagingIsGone());
    EXPECT_TRUE(uc::exporting::FileIsPresent(Below(archive.study1, L"img1.bmp")));
}

TEST_F(BurnTest, AnAppendableRewritableDiscAsksAndAppendsOnNo) {
    disc->erasable = true;
    disc->discStatus = 1;
    disc->discType = 3;
    disc->lastTrack = 2;
    disc->nextWritable = 5000;
    presenter->answers = {Answer::No};
    ASSERT_EQ(burner.Burn(0, 0), 1);
    EXPECT_GE(presenter->Find(L"ask utilscontrols.burn.notemptymsg | utilscontrols.burn.nomediamsgtitle | yes/no/cancel"), 0);
    EXPECT_TRUE(Logged(L"Burn(): Importing track 2... "));
    EXPECT_TRUE(Called("ISO9660JolietFileTree_ImportTrack"));
    EXPECT_FALSE(Called("CdvdBurnerGrabber_Erase"));
    EXPECT_EQ(disc->builtAt, 5000);
}

TEST_F(BurnTest, YesErasesAfterTheTreeIsBuiltAndReadsTheTrackAgain) {
    disc->erasable = true;
    disc->discStatus = 2;
    disc->discType = 3;
    presenter->answers = {Answer::Yes};
    ASSERT_EQ(burner.Burn(0, 0), 1);
    EXPECT_GE(presenter->Find(L"ask utilscontrols.burn.closedmsg | utilscontrols.burn.nomediamsgtitle | yes/no"), 0);
    const auto add = std::find(disc->calls.begin(), disc->calls.end(), "ISO9660JolietFileTree_Add");
    const auto erase = std::find(disc->calls.begin(), disc->calls.end(), "CdvdBurnerGrabber_Erase");
    ASSERT_NE(erase, disc->calls.end());
    EXPECT_LT(add, erase);
    EXPECT_EQ(*(erase + 1), "CdvdBurnerGrabber_GetTrackInformation");
    EXPECT_LT(LogIndex(L"Erasing ReWriteable media..."), LogIndex(L"Erase Complete"));
    EXPECT_GT(LogIndex(L"Burn(): After erase: "), LogIndex(L"Erase Complete"));
    EXPECT_EQ(disc->builtAt, 0);
}

TEST_F(BurnTest, RefusalsEndTheBurnWithoutWriting) {
    struct Case {
        bool erasable;
        int status, type;
        std::deque<Answer> answers;
        const wchar_t* shown;
    } cases[] = {
        {true, 1, 3, {Answer::Cancel}, nullptr},
        {true, 2, 3, {Answer::No}, nullptr},
        {false, 2, 5, {}, L"tell utilscontrols.burn.readonlymsg | utilscontrols.burn.nomediamsgtitle | stop"},
    };
    for (const Case& c : cases) {
        disc->calls.clear();
        disc->erasable = c.erasable;
        disc->discStatus = c.status;
        disc->discType = c.type;
        presenter->answers = c.answers;
        EXPECT_EQ(burner.Burn(0, 0), 0);
        EXPECT_FALSE(Called("CdvdBurnerGrabber_TrackAtOnceFromTree"));
        EXPECT_FALSE(Called("CdvdBurnerGrabber_Erase"));
        if (c.shown) EXPECT_GE(presenter->Find(c.shown), 0);
        EXPECT_EQ(burner.GetLog().back(), L"Burn(): EXITing with failure");
        EXPECT_EQ(disc->liveObjects, 0);
    }
}

TEST_F(BurnTest, FreeSpaceIsComparedInKilobytesAndEqualPasses) {
    uc::SetLocalisedString("utilscontrols.burn.freespaceerrormsg", L"%s: %ld KB needed, %ld KB free");
    std::wstring unit;
    const double total = queue.GetTotalFileSize(unit);
    ASSERT_EQ(unit, L"Bytes");  // a few hundred bytes: needed KB = bytes / 1024
    ASSERT_LT(total, 2048);
    disc->imageBytes = 2048;
    disc->freeBlocks = 1;  // 2 KB
    EXPECT_EQ(burner.Burn(0, 0), 1);
    // Exactly as much as is free passes; one byte more does not.
    dir.write(L"archive/P1/S2/fill.avi", std::string(2048 - static_cast<std::size_t>(total), 'f'));
    queue.AddFilesToQueue(archive.patient);
    EXPECT_EQ(burner.Burn(0, 0), 1);
    dir.write(L"archive/P1/S2/more.avi", "m");
    queue.AddFilesToQueue(archive.patient);
    EXPECT_EQ(burner.Burn(0, 0), 0);

    // Large enough to need more than the disc holds.
    dir.write(L"archive/P1/S2/big.avi", std::string(5000, 'v'));
    queue.AddFilesToQueue(archive.patient);
    disc->calls.clear();
    EXPECT_EQ(burner.Burn(0, 0), 0);
    EXPECT_GE(presenter->Find(L"tell utilscontrols.burn.disctypedvdr: 7 KB needed, 2 KB free | "
                              L"utilscontrols.burn.nomediamsgtitle | stop"),
              0);
    EXPECT_FALSE(Called("ISO9660FileTree_BuildImage"));
}

TEST_F(BurnTest, AnImageLargerThanTheFreeSpaceIsCaughtBeforeWriting) {
    disc->freeBlocks = 10;
    disc->imageBytes = 10 * 2048 + 1;
    EXPECT_EQ(burner.Burn(0, 0), 0);
    EXPECT_TRUE(Called("ISO9660FileTree_BuildImage"));
    EXPECT_FALSE(Called("CdvdBurnerGrabber_TrackAtOnceFromTree"));
    disc->imageBytes = 10 * 2048;
    EXPECT_EQ(burner.Burn(0, 0), 1);
}

TEST_F(BurnTest, FailedOperationsAreLoggedWithTheirNumbersAndEndTheBurn) {
    const char* fatal[] = {"ISO9660FileTree_Create", "CdvdBurnerGrabber_Create", "CdvdBurnerGrabber_ProbeSupportedWriteModes",
                           "CdvdBurnerGrabber_GetBUP", "CdvdBurnerGrabber_SetBUP", "CdvdBurnerGrabber_GetTrackInformation",
                           "CdvdBurnerGrabber_GetDiscInformation", "ISO9660JolietFileTree_Add",
                           "ISO9660FileTree_BuildImage", "CdvdBurnerGrabber_TrackAtOnceFromTree",
                           "CdvdBurnerGrabber_CloseSession"};
    burner.SetConversion(2);
    for (const char* op : fatal) {
        disc->failures = {{op, 6}};
        EXPECT_EQ(burner.Burn(0, 0), 0) << op;
        const std::wstring line = uc::Format(L"Burn(): StarBurn_%S() failed, exception 6, status 21, text '%S failed on purpose'", op, op);
        EXPECT_TRUE(Logged(line)) << op;
        EXPECT_EQ(burner.GetLog().back(), L"Burn(): EXITing with failure") << op;
        EXPECT_TRUE(queue.GetConvertedName().empty()) << op;
        EXPECT_TRUE(StagingIsGone()) << op;
        EXPECT_EQ(disc->liveObjects, 0) << op;
    }
}

TEST_F(BurnTest, NoMediumClosesTheProgressAndSaysSo) {
    disc->failures = {{"CdvdBurnerGrabber_TestUnitReady", 8}};
    EXPECT_EQ(burner.Burn(0, 0), 0);
    const int closed = presenter->Find(L"progress closed");
    ASSERT_GE(closed, 0);
    EXPECT_GT(presenter->Find(L"tell utilscontrols.burn.nomediamsg | utilscontrols.burn.nomediamsgtitle"), closed);
}

TEST_F(BurnTest, SpeedsOpcAndEjectFailuresOnlyWarn) {
    disc->failures = {{"CdvdBurnerGrabber_SetSpeeds", 6}, {"CdvdBurnerGrabber_SendOPC", 6}, {"CdvdBurnerGrabber_Eject", 6}};
    EXPECT_EQ(burner.Burn(0, 0), 1);
    EXPECT_GE(LogIndex(L"Burn(): Warning: StarBurn_CdvdBurnerGrabber_SetSpeeds() failed, exception 6"), 0);
    EXPECT_TRUE(Logged(L"Burn(): OPC failed"));
    EXPECT_GE(LogIndex(L"Burn(): StarBurn_CdvdBurnerGrabber_Eject() failed"), 0);
}

TEST_F(BurnTest, TrackAtOnceMissingFails) {
    disc->trackAtOnce = false;
    EXPECT_EQ(burner.Burn(0, 0), 0);
    EXPECT_TRUE(Logged(L"Burn(): Track-At-Once is unsupported!!!"));
    EXPECT_FALSE(Called("CdvdBurnerGrabber_TestUnitReady"));
}

TEST_F(BurnTest, DeepTreesAreWarnedAboutButBurned) {
    disc->level = 9;
    EXPECT_EQ(burner.Burn(0, 0), 1);
    EXPECT_TRUE(Logged(L"Burn(): Warning: Tree level exceeds allowed 8, image may be unusable!!!"));
}

TEST_F(BurnTest, AVanishedFileStopsTheBurnBeforeAnythingIsWritten) {
    std::filesystem::remove(uc::ToFsPath(Below(archive.study2, L"rpt.xml")));
    EXPECT_EQ(burner.Burn(0, 0), 0);
    EXPECT_GE(LogIndex(L"Burn(): '" + Below(archive.study2, L"rpt.xml") + L"' has vanished"), 0);
    EXPECT_FALSE(Called("ISO9660FileTree_BuildImage"));
}

TEST_F(BurnTest, BlackingOutWithoutAReadableLayoutBurnsNothing) {
    queue.SetLayoutFile(dir.file(L"no-layout.xml"));
    EXPECT_EQ(burner.Burn(0, 1), 0);
    EXPECT_GE(LogIndex(L"Burn(): the privacy layout"), 0);
    EXPECT_FALSE(Called("ISO9660FileTree_BuildImage"));

    queue.SetLayoutFile(dir.write(L"layout.xml", "<layout><zones><z xpos='0' ypos='0' width='5' height='5'/></zones></layout>"));
    codec->failBlackout = true;
    EXPECT_EQ(burner.Burn(0, 1), 0);
    EXPECT_GE(LogIndex(L"Burn(): '" + Below(archive.study1, L"img1.bmp") + L"' could not be blacked out"), 0);
    EXPECT_TRUE(StagingIsGone());

    codec->failBlackout = false;
    EXPECT_EQ(burner.Burn(0, 1), 1);
    EXPECT_EQ(disc->sources.count("/Exports_Cardio/2024-03-05_09-07-03/P1/S1/img1c.bmp"), 1u);
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

TEST_F(BurnTest, DiscTypesHaveTheirTexts) {
    EXPECT_EQ(burner.GetDiscTypeString(0), L"utilscontrols.burn.disctypeunknown");
    EXPECT_EQ(burner.GetDiscTypeString(7), L"utilscontrols.burn.disctypedvdrwro");
    EXPECT_EQ(burner.GetDiscTypeString(11), L"utilscontrols.burn.disctypecdddr");
    EXPECT_EQ(burner.GetDiscTypeString(12), L"");
    EXPECT_EQ(burner.GetDiscTypeString(13), L"utilscontrols.burn.disctypedvdpr");
    EXPECT_EQ(burner.GetDiscTypeString(14), L"");
    EXPECT_EQ(burner.GetDiscTypeString(-1), L"");
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
    const int created = presenter->Find(L"progress CD-R"), started = presenter->Find(L"post 0x8004 0");
    const int finished = presenter->Find(L"post 0x8004 1"), closed = presenter->Find(L"progress closed");
    const int told = presenter->Find(L"tell utilscontrols.burn.donemsg |"), after = presenter->Find(L"post 0x8001 1");
    ASSERT_GE(created, 0);
    EXPECT_GT(started, created);
    EXPECT_GT(finished, started);
    EXPECT_GT(closed, finished);
    EXPECT_GT(told, closed);
    EXPECT_GT(after, told);
}

// The owner may start the next burn as soon as it is told the last one's box was closed.
class ChainingPresenter : public RecordingPresenter {
public:
    CStarDiscBurn* burner = nullptr;
    int restarted = -1;
    void Post(void* owner, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
        RecordingPresenter::Post(owner, message, wParam, lParam);
        if (message == uc::exporting::kBurnClosedMessage && restarted < 0) restarted = burner->IsBurning() ? 0 : 1;
    }
};

TEST_F(BurnTest, TheBurnerIsFreeWhenTheOwnerHearsTheBoxWasClosed) {
    auto chaining = std::make_shared<ChainingPresenter>();
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
    const int first = presenter->Find(L"post 0x8004 0"), finished = presenter->Find(L"post 0x8004 1");
    ASSERT_GE(first, 0);
    EXPECT_GT(finished, first);
    EXPECT_GT(presenter->Find(L"tell utilscontrols.burn.donefailmsg"), finished);
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
    std::thread burn([&] { result = burner.Burn(0, 0); });
    ASSERT_TRUE(clock.WaitForWaiters(1));
    dir.write(L"reports/S1.pdf", "%PDF-1.4");
    clock.Advance(uc::Millis(250));
    burn.join();
    CStarDiscBurn::SetGeneratePDFCallback(nullptr);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(disc->sources.count("/Exports_Cardio/2024-03-05_09-07-03/P1/S1/S1.pdf"), 1u);
}

}  // namespace

namespace {
using namespace uc::test;

class RemovableTest : public BurnTest {
protected:
    std::set<std::wstring> FilesBelow(const std::wstring& folder) const {
        std::set<std::wstring> out;
        std::error_code ec;
        for (auto it = std::filesystem::recursive_directory_iterator(uc::ToFsPath(folder), ec);
             !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
            if (it->is_regular_file())
                out.insert(uc::FromFsPath(std::filesystem::relative(it->path(), uc::ToFsPath(folder))));
        return out;
    }
    std::wstring drive = dir.file(L"usb");
};

TEST_F(RemovableTest, TheQueueIsCopiedBelowTheExportFolderAndTimeStamp) {
    std::filesystem::create_directories(uc::ToFsPath(drive));
    std::wstring result;
    ASSERT_EQ(burner.SendToRemovable(nullptr, L"", drive, 1, 0, result, nullptr, L"Exp/{PATID}", L"ID7", 0), 1) << uc::ToUtf8(result);
    const std::wstring destination = Below(drive, L"Exp/ID7/2024-03-05_09-07-03");
    EXPECT_EQ(Dir(result), Dir(destination));
    const std::set<std::wstring> files = FilesBelow(destination);
    EXPECT_EQ(files.count(Below(L"P1", L"S1/img1.jpg")), 1u);  // converted
    EXPECT_EQ(files.count(Below(L"P1", L"S1/img2.jpg")), 1u);
    EXPECT_EQ(files.count(Below(L"P1", L"S2/rpt.xml")), 1u);
    EXPECT_EQ(files.size(), archive.patientFiles.size());
    EXPECT_TRUE(queue.GetConvertedName().empty());
    EXPECT_GE(presenter->Find(L"step utilscontrols.burn.progressTransfer"), 0);
    // The same second again: the folder exists and is not overwritten unless asked.
    EXPECT_EQ(burner.SendToRemovable(nullptr, L"", drive, 1, 0, result, nullptr, L"Exp/{PATID}", L"ID7", 0), 0);
}

TEST_F(RemovableTest, FailuresLeaveNothingOnTheDrive) {
    std::filesystem::create_directories(uc::ToFsPath(drive));
    std::wstring result;
    burner.SetFreeSpaceProbe([](const std::wstring&) { return std::int64_t(100); });
    EXPECT_EQ(burner.SendToRemovable(nullptr, L"", drive, 0, 0, result, nullptr, L"", L"", 0), 0);
    EXPECT_GE(presenter->Find(L"tell utilscontrols.burn.removablefreespaceerrormsg | utilscontrols.burn.nomediamsgtitle"), 0);
    burner.SetFreeSpaceProbe(nullptr);

    std::filesystem::remove(uc::ToFsPath(Below(archive.study2, L"study.xml")));
    EXPECT_EQ(burner.SendToRemovable(nullptr, L"", drive, 0, 0, result, nullptr, L"", L"", 0), 0);
    EXPECT_NE(result.find(L"has vanished"), std::wstring::npos);
    EXPECT_TRUE(FilesBelow(drive).empty());

    codec->failBlackout = true;
    queue.SetLayoutFile(dir.write(L"layout.xml", "<layout><zones/></layout>"));
    dir.write(L"archive/P1/S2/study.xml", "<study/>");
    EXPECT_EQ(burner.SendToRemovable(nullptr, L"", drive, 0, 1, result, nullptr, L"", L"", 1), 0);
    EXPECT_NE(result.find(L"could not be blacked out"), std::wstring::npos);
    EXPECT_TRUE(FilesBelow(drive).empty());
    EXPECT_TRUE(queue.GetConvertedName().empty());
}

TEST_F(RemovableTest, ADicomDirTreeIsCopiedWhenItFits) {
    dir.write(L"dicom/DICOMDIR", std::string(300, 'd'));
    dir.write(L"dicom/IMAGES/IM0001", std::string(700, 'i'));
    EXPECT_EQ(burner.SendDicomDirToRemovable(dir.file(L"dicom"), drive, nullptr, L"USB"), 0);  // no drive there
    std::filesystem::create_directories(uc::ToFsPath(drive));
    EXPECT_EQ(burner.SendDicomDirToRemovable(dir.file(L"dicom"), drive, nullptr, L"USB"), 1);
    EXPECT_EQ(FilesBelow(drive), (std::set<std::wstring>{L"DICOMDIR", Below(L"IMAGES", L"IM0001")}));
    EXPECT_EQ(ReadFile(Below(drive, L"IMAGES/IM0001")), std::string(700, 'i'));

    burner.SetFreeSpaceProbe([](const std::wstring&) { return std::int64_t(999); });
    const std::wstring other = dir.file(L"usb2");
    std::filesystem::create_directories(uc::ToFsPath(other));
    EXPECT_EQ(burner.SendDicomDirToRemovable(dir.file(L"dicom"), other, nullptr, L"USB"), 0);
    EXPECT_TRUE(FilesBelow(other).empty());
    EXPECT_GE(presenter->Find(L"tell utilscontrols.burn.removablefreespaceerrormsg"), 0);
}

}  // namespace
