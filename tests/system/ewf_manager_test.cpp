// CEWFMgr against the simulated write filter loaded by its real name: listing, records, faults, commands and restarts.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "ewf_fixture.h"
#include "platform/text.h"
#include "system/ewf_text.h"

namespace {
using namespace uc::ewf;
using uc::test::EwfSimTest;
using uc::test::kTwoVolumes;
using uc::test::SimLibrary;

class EwfManagerTest : public EwfSimTest {};

TEST_F(EwfManagerTest, ListsOpensAndNamesEveryProtectedVolume) {
    UseState(kTwoVolumes);
    CEWFMgr m(SimLibrary());
    ASSERT_TRUE(m.IsLibraryLoaded()) << uc::ToUtf8(m.LibraryError());
    const unsigned long open = OpenHandles(m);
    EXPECT_EQ(m.GetVolumeCount(), 0);
    EXPECT_EQ(m.GetVolumeHandle(0), nullptr);
    ASSERT_EQ(m.Init(), 1);
    ASSERT_EQ(m.GetVolumeCount(), 2);
    EXPECT_NE(m.GetVolumeHandle(0), nullptr);
    EXPECT_NE(m.GetVolumeHandle(0), m.GetVolumeHandle(1));
    EXPECT_EQ(m.GetVolumeName(0), L"\\Device\\HarddiskVolume1");
    EXPECT_EQ(m.GetVolumeName(1), L"\\Device\\HarddiskVolume2");
    for (int bad : {-1, 2, 5}) {
        EXPECT_EQ(m.GetVolumeHandle(bad), nullptr) << bad;
        EXPECT_EQ(m.GetVolumeName(bad), L"") << bad;
        EXPECT_EQ(m.GetVolumeConfig(bad), nullptr) << bad;
    }
    EXPECT_EQ(OpenHandles(m) - open, 2u);
    EXPECT_EQ(Logged(L"Protected volume C: = \\\\?\\GLOBALROOT\\Device\\HarddiskVolume1\n"), 1u);
    EXPECT_EQ(Logged(L"Protected volume D: = \\\\?\\GLOBALROOT\\Device\\HarddiskVolume2\n"), 1u);
    EXPECT_EQ(Logged(L"Volume device name = \\Device\\HarddiskVolume2\n"), 1u);
    for (const auto& e : zelLogger::Instance().Entries())
        if (e.text.find(L"Protected volume") != std::wstring::npos) {
            EXPECT_EQ(e.type, 3);
        }
}

TEST_F(EwfManagerTest, RecordsGoToTheCallerWithTheVolumesState) {
    UseState(
        "[volume1]\ntype=ram\nstate=disabled\ncommand=enable\n"
        "[volume2]\ntype=disk\nmax_levels=3\nlevel=2\nused=10\n");
    CEWFMgr m(SimLibrary());
    ASSERT_EQ(m.Init(), 1);
    EWF_VOLUME_CONFIG* c = m.GetVolumeConfig(0);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->Type, EWF_RAM);
    EXPECT_EQ(c->State, EWF_DISABLED);
    EXPECT_EQ(c->BootCommand, EWF_ENABLE);
    EXPECT_EQ(c->CurrentLevel, 0);  // a disabled overlay has no level
    FreeRecord(c);
    c = m.GetVolumeConfig(1);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->CurrentLevel, 2);
    EXPECT_EQ(c->MaxLevels, 3);
    EXPECT_EQ(c->DiskOverlay.DiskDataSize, 10 * 65536);
    EXPECT_EQ(FromEwfString(c->LevelDescArray[2].LevelName, MaxLevelNameLength), L"Level 3");
    EXPECT_EQ(c->LevelDescArray[1].LevelDataSize, 10 * 65536);
    FreeRecord(c);
}

TEST_F(EwfManagerTest, FreeSpaceIsFreeSegmentsOverAllSegments) {
    UseState(kTwoVolumes);
    CEWFMgr m(SimLibrary());
    const unsigned long open = OpenHandles(m);
    ASSERT_EQ(m.Init(), 1);
    EXPECT_DOUBLE_EQ(m.GetFreeSpacePercent(), 25.0);
    EWF_OVERLAY_STORE_CONFIG* store = m.GetStoreOverlay();
    ASSERT_NE(store, nullptr);
    EXPECT_EQ(store->NumSegments, 1000u);
    EXPECT_EQ(store->FreeSegments, 250u);
    EXPECT_EQ(store->NumVolumes, 2u);
    EXPECT_EQ(FromEwfString(store->VolumeDescArray[1].DeviceName, MaxDeviceNameLength), L"\\Device\\HarddiskVolume2");
    FreeRecord(store);
    EXPECT_EQ(OpenHandles(m) - open, 2u) << "the store handle is closed again";
    // Writes through the overlay fill the store; one that does not fit is refused.
    ASSERT_TRUE(Write(m, m.GetVolumeHandle(1), 125));
    EXPECT_DOUBLE_EQ(m.GetFreeSpacePercent(), 12.5);
    EXPECT_FALSE(Write(m, m.GetVolumeHandle(1), 126));
    EXPECT_EQ(LastError(), 112u);
}

TEST_F(EwfManagerTest, UnreadableStoreAnswersMinusOne) {
    struct Case {
        const char* state;
        const char* why;
    } cases[] = {
        {"[store]\nsegments=0\n[volume1]\nletter=C\n", "a store without segments (no division by zero)"},
        {"[volume1]\nletter=C\n[faults]\nstore_error=2\n", "a store that cannot be opened"},
    };
    for (const Case& c : cases) {
        UseState(c.state);
        CEWFMgr m(SimLibrary());
        ASSERT_EQ(m.Init(), 1) << c.why;
        EXPECT_EQ(m.GetFreeSpacePercent(), -1.0) << c.why;
        EXPECT_EQ(uc::ewf::GaugePosition(m.GetFreeSpacePercent()), 0) << c.why;
    }
}

TEST_F(EwfManagerTest, NullHandleCommandsReturnZeroAndCallNothing) {
    UseState(kTwoVolumes);
    CEWFMgr m(SimLibrary());
    ASSERT_EQ(m.Init(), 1);
    const unsigned long before = Calls(m);
    EXPECT_EQ(m.Enable(nullptr), 0);
    EXPECT_EQ(m.Disable(nullptr), 0);
    EXPECT_EQ(m.Commit(nullptr), 0);
    EXPECT_EQ(m.Restore(nullptr), 0);
    EXPECT_EQ(m.ClearCommand(nullptr), 0);
    EXPECT_EQ(Calls(m), before);
    // A handle the filter never gave out is refused by EWF itself.
    Handle bogus = reinterpret_cast<Handle>(static_cast<std::uintptr_t>(0x7777));
    EXPECT_EQ(m.Enable(bogus), 0);
    EXPECT_EQ(LastError(), ErrorInvalidHandle);
    EXPECT_EQ(Calls(m), before + 1);
}

TEST_F(EwfManagerTest, CopiesShareHandlesAndTheFirstDestroyedClosesThem) {
    UseState(kTwoVolumes);
    CEWFMgr m(SimLibrary());
    const unsigned long open = OpenHandles(m);
    ASSERT_EQ(m.Init(), 1);
    {
        CEWFMgr copy(m);
        EXPECT_EQ(copy.GetVolumeHandle(0), m.GetVolumeHandle(0));
        EXPECT_EQ(OpenHandles(m) - open, 2u) << "handles are not duplicated";
        CEWFMgr assigned;
        assigned = m;
        EXPECT_EQ(assigned.GetVolumeHandle(1), m.GetVolumeHandle(1));
    }
    // Both copies closed the shared handles: the original now holds closed ones, refused without a crash.
    EXPECT_EQ(OpenHandles(m) - open, 0u);
    EXPECT_EQ(m.GetVolumeCount(), 2);
    Handle closed = m.GetVolumeHandle(0);
    for (int (CEWFMgr::*command)(Handle) : {&CEWFMgr::Enable, &CEWFMgr::Disable, &CEWFMgr::Commit, &CEWFMgr::Restore,
                                             &CEWFMgr::ClearCommand}) {
        EXPECT_EQ((m.*command)(closed), 0);
        EXPECT_EQ(LastError(), ErrorInvalidHandle);
    }
    EXPECT_EQ(m.GetVolumeName(0), L"");
    EXPECT_EQ(m.GetVolumeConfig(0), nullptr);
}

TEST_F(EwfManagerTest, SecondInitAppendsTheVolumesAgain) {
    UseState(kTwoVolumes);
    CEWFMgr m(SimLibrary());
    const unsigned long open = OpenHandles(m);
    ASSERT_EQ(m.Init(), 1);
    ASSERT_EQ(m.Init(), 1);
    ASSERT_EQ(m.GetVolumeCount(), 4);
    EXPECT_EQ(m.GetVolumeName(2), m.GetVolumeName(0));
    EXPECT_NE(m.GetVolumeHandle(2), m.GetVolumeHandle(0));
    EXPECT_EQ(OpenHandles(m) - open, 4u);
}

// Failures while listing: the code logged and returned, and what was opened before stays in the list.
TEST_F(EwfManagerTest, ListingFailuresKeepWhatWasFoundBefore) {
    struct Case {
        const char* faults;
        int count;           // volumes in the list afterwards
        unsigned long open;  // handles left open by the listing
        const wchar_t* line;
    } cases[] = {
        {"list_error=1117\n", 0, 0, L"EwfMgrGetProtectedVolumeList failed LE = 1117\n"},
        {"open_fail=2\nopen_error=5\n", 1, 1, L"EwfMgrOpenProtected failed LE = 5\n"},
        // The second volume's handle is neither kept nor closed.
        {"config_fail=2\nconfig_error=1117\n", 1, 2, L"EwfMgrGetProtectedVolumeConfig failed LE = 1117\n"},
        {"open_fail=1\n", 0, 0, L"EwfMgrOpenProtected failed LE = 2\n"},
    };
    for (const Case& c : cases) {
        zelLogger::Instance().ClearEntries();
        UseState(std::string(kTwoVolumes) + "[faults]\n" + c.faults);
        CEWFMgr m(SimLibrary());
        const unsigned long open = OpenHandles(m);  // handles an earlier case left open, if still loaded
        EXPECT_EQ(m.Init(), 0) << c.faults;
        EXPECT_EQ(m.GetVolumeCount(), c.count) << c.faults;
        EXPECT_EQ(OpenHandles(m) - open, c.open) << c.faults;
        EXPECT_EQ(Logged(c.line), 1u) << c.faults;
        if (c.count == 1) {
            EXPECT_EQ(m.GetVolumeName(0), L"\\Device\\HarddiskVolume1");
        }
    }
}

TEST_F(EwfManagerTest, NoProtectedVolumeIsASuccessWithAnEmptyList) {
    UseState("[store]\nsegments=10\n");
    CEWFMgr m(SimLibrary());
    EXPECT_EQ(m.Init(), 1);
    EXPECT_EQ(m.GetVolumeCount(), 0);
    EXPECT_EQ(Logged(L"failed"), 0u);
}

TEST_F(EwfManagerTest, UnknownDriveLetterIsNotAnError) {
    UseState(std::string(kTwoVolumes) + "[faults]\nletter_fail=1\n");
    CEWFMgr m(SimLibrary());
    EXPECT_EQ(m.Init(), 1);
    EXPECT_EQ(m.GetVolumeCount(), 2);
    EXPECT_EQ(Logged(L"EwfMgrGetDriveLetterFromVolumeName failed"), 0u);
    EXPECT_EQ(Logged(L"Protected volume \xFFFF: = "), 1u);
}

TEST_F(EwfManagerTest, MissingOrPartialLibraryFailsCleanly) {
    UseState(kTwoVolumes);
    {
        CEWFMgr none(L"uc-no-such-ewfapi.dll");
        EXPECT_FALSE(none.IsLibraryLoaded());
        EXPECT_EQ(none.Init(), 0);
        EXPECT_EQ(Logged(L"EwfMgrGetProtectedVolumeList failed LE = 126\n"), 1u);
        EXPECT_EQ(none.GetFreeSpacePercent(), -1.0);
        EXPECT_EQ(none.GetStoreOverlay(), nullptr);
        EXPECT_EQ(none.Enable(reinterpret_cast<Handle>(std::uintptr_t{0x1000})), 0);
        EXPECT_EQ(LastError(), ErrorModNotFound);
    }
    {
        // Without the pop the list cannot be walked: refused rather than looping for ever.
        CEWFMgr noPop(SimLibrary(L"EWFAPI_nopop"));
        ASSERT_TRUE(noPop.IsLibraryLoaded()) << uc::ToUtf8(noPop.LibraryError());
        EXPECT_EQ(noPop.Init(), 0);
        EXPECT_EQ(Logged(L"EwfMgrGetProtectedVolumeList failed LE = 127\n"), 1u);
    }
    {
        CEWFMgr noClear(SimLibrary(L"EWFAPI_noclear"));
        ASSERT_EQ(noClear.Init(), 1);
        Handle c = noClear.GetVolumeHandle(0);
        EXPECT_EQ(noClear.ClearCommand(c), 0);
        EXPECT_EQ(LastError(), ErrorProcNotFound);
        EXPECT_NE(noClear.Enable(c), 0);
    }
}

TEST_F(EwfManagerTest, BrokenStateFileFailsEveryCall) {
    UseState("[volume1]\ntype=floppy\n");
    CEWFMgr m(SimLibrary());
    EXPECT_EQ(m.Init(), 0);
    EXPECT_EQ(Logged(L"EwfMgrGetProtectedVolumeList failed LE = 1392\n"), 1u);
    auto describe = reinterpret_cast<ULong(UC_EWF_CALL*)(WChar*, ULong)>(m.Library().ResolveAddress("EwfSimDescribe"));
    ASSERT_NE(describe, nullptr);
    WChar text[512];
    describe(text, 512);
    EXPECT_NE(FromEwfString(text).find(L"type='floppy' is not disk, ram or ram_reg"), std::wstring::npos);
}

// Command sequences through the manager, then a simulated restart: what the volume is left with.
struct Sequence {
    const char* volume;      // the [volume1] section
    std::vector<int> steps;  // 1 enable, 2 disable, 3 restore, 4 commit, 0 clear
    int accepted;            // how many of the steps EWF accepted
    EWF_COMMAND pending;     // reported before the restart
    EWF_STATE state;         // after the restart
    unsigned used, committed, level;
};

class EwfRestartTest : public EwfSimTest, public ::testing::WithParamInterface<Sequence> {};

TEST_P(EwfRestartTest, PendingCommandTakesEffectAtTheRestart) {
    const Sequence& s = GetParam();
    UseState(std::string("[store]\nsegments=1000\n[volume1]\n") + s.volume + "\n");
    CEWFMgr m(SimLibrary());
    ASSERT_EQ(m.Init(), 1);
    Handle h = m.GetVolumeHandle(0);
    int accepted = 0;
    for (int step : s.steps) {
        int r = step == 1 ? m.Enable(h) : step == 2 ? m.Disable(h) : step == 3 ? m.Restore(h) : step == 4 ? m.Commit(h) : m.ClearCommand(h);
        accepted += r != 0;
    }
    EXPECT_EQ(accepted, s.accepted);
    EWF_VOLUME_CONFIG* before = m.GetVolumeConfig(0);
    ASSERT_NE(before, nullptr);
    EXPECT_EQ(before->BootCommand, s.pending);
    FreeRecord(before);

    ASSERT_TRUE(Restart(m));
    EWF_VOLUME_CONFIG* after = m.GetVolumeConfig(0);
    ASSERT_NE(after, nullptr);
    EXPECT_EQ(after->BootCommand, EWF_NO_CMD);
    EXPECT_EQ(after->State, s.state);
    FreeRecord(after);
    const auto saved = SavedState();
    const auto& v = saved.Volumes().at(0);
    EXPECT_EQ(v.used, s.used);
    EXPECT_EQ(v.committed, s.committed);
    EXPECT_EQ(v.level, s.level);
}

INSTANTIATE_TEST_SUITE_P(
    Sequences, EwfRestartTest,
    ::testing::Values(
        // Disabling without a commit discards the overlay.
        Sequence{"used=100", {2}, 1, EWF_DISABLE, EWF_DISABLED, 0, 0, 1},
        Sequence{"used=100", {4}, 1, EWF_COMMIT, EWF_ENABLED, 0, 100, 1},
        Sequence{"state=disabled", {1}, 1, EWF_ENABLE, EWF_ENABLED, 0, 0, 1},
        // Cancel's clear withdraws what was scheduled; a disk overlay survives the restart.
        Sequence{"used=100", {1, 0}, 2, EWF_NO_CMD, EWF_ENABLED, 100, 0, 1},
        // The last command wins; enabling an enabled overlay leaves it as it is.
        Sequence{"used=100", {2, 4, 1}, 3, EWF_ENABLE, EWF_ENABLED, 100, 0, 1},
        Sequence{"used=50\nmax_levels=3\nlevel=2", {3}, 1, EWF_SET_LEVEL, EWF_ENABLED, 0, 0, 1},
        // A RAM overlay is lost at every restart.
        Sequence{"type=ram\nused=40", {}, 0, EWF_NO_CMD, EWF_ENABLED, 0, 0, 1},
        // A registry RAM overlay can only be disabled by committing: the plain disable is refused.
        Sequence{"type=ram_reg\nused=40\ncommand=commit", {2}, 0, EWF_COMMIT, EWF_ENABLED, 0, 40, 1},
        Sequence{"used=30\n[faults]\nrefuse=commit,clear", {1, 4, 0}, 1, EWF_ENABLE, EWF_ENABLED, 30, 0, 1}));

}  // namespace
