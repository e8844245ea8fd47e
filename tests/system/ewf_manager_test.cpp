// CEWFMgr against the simulated write filter loaded by its real name: listing, records, faults, commands and restarts.
#include <gtest/gtest.h>

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
    EXPECT_EQ(m.GetVolumeHandle(0), nullptr) << "nothing before Init";
    ASSERT_EQ(m.Init(), 1);
    ASSERT_EQ(m.GetVolumeCount(), 2);
    EXPECT_NE(m.GetVolumeHandle(0), m.GetVolumeHandle(1));
    EXPECT_EQ(m.GetVolumeName(1), L"\\Device\\HarddiskVolume2");
    for (int bad : {-1, 2}) {
        EXPECT_EQ(m.GetVolumeHandle(bad), nullptr) << bad;
        EXPECT_EQ(m.GetVolumeName(bad), L"") << bad;
        EXPECT_EQ(m.GetVolumeConfig(bad), nullptr) << bad;
    }
    EXPECT_EQ(OpenHandles(m) - open, 2u);
    EXPECT_EQ(Logged(L"Protected volume C: = \\\\?\\GLOBALROOT\\Device\\HarddiskVolume1\n"), 1u);
    EXPECT_EQ(Logged(L"Protected volume D: = \\\\?\\GLOBALROOT\\Device\\HarddiskVolume2\n"), 1u);
    EXPECT_EQ(Logged(L"Volume device name = \\Device\\HarddiskVolume2\n"), 1u);
    EXPECT_EQ(zelLogger::Instance().Entries().front().type, 3);
    // A second Init appends the volumes again, with handles of their own.
    ASSERT_EQ(m.Init(), 1);
    ASSERT_EQ(m.GetVolumeCount(), 4);
    EXPECT_EQ(m.GetVolumeName(2), m.GetVolumeName(0));
    EXPECT_NE(m.GetVolumeHandle(2), m.GetVolumeHandle(0));
    EXPECT_EQ(OpenHandles(m) - open, 4u);
}

TEST_F(EwfManagerTest, RecordsGoToTheCallerWithTheVolumesState) {
    UseState("[volume1]\ntype=ram\nstate=disabled\ncommand=enable\n[volume2]\ntype=disk\nmax_levels=3\nlevel=2\nused=10\n");
    CEWFMgr m(SimLibrary());
    ASSERT_EQ(m.Init(), 1);
    EWF_VOLUME_CONFIG* c = m.GetVolumeConfig(0);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->Type, EWF_RAM);
    EXPECT_EQ(c->State, EWF_DISABLED);
    EXPECT_EQ(c->BootCommand, EWF_ENABLE);
    EXPECT_EQ(c->CurrentLevel, 0) << "a disabled overlay has no level";
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
    EXPECT_EQ(store->FreeSegments, 250u);
    EXPECT_EQ(store->NumVolumes, 2u);
    EXPECT_EQ(FromEwfString(store->VolumeDescArray[1].DeviceName, MaxDeviceNameLength), L"\\Device\\HarddiskVolume2");
    FreeRecord(store);
    EXPECT_EQ(OpenHandles(m) - open, 2u) << "the store handle is closed again";
    // Writes through the overlay fill the store; one that does not fit is refused.
    ASSERT_TRUE(Sim<Bool>(m, "EwfSimWrite", m.GetVolumeHandle(1), ULong{125}));
    EXPECT_DOUBLE_EQ(m.GetFreeSpacePercent(), 12.5);
    EXPECT_FALSE(Sim<Bool>(m, "EwfSimWrite", m.GetVolumeHandle(1), ULong{126}));
    EXPECT_EQ(LastError(), 112u);
    // A store without segments (no division by zero) or one that cannot be opened answers -1.
    for (const char* state : {"[store]\nsegments=0\n[volume1]\n", "[volume1]\n[faults]\nstore_error=2\n"}) {
        UseState(state);
        CEWFMgr other(SimLibrary());
        ASSERT_EQ(other.Init(), 1) << state;
        EXPECT_EQ(other.GetFreeSpacePercent(), -1.0) << state;
        EXPECT_EQ(GaugePosition(other.GetFreeSpacePercent()), 0) << state;
    }
}

TEST_F(EwfManagerTest, NullClosedAndForeignHandlesAreRefusedAndCopiesShareHandles) {
    UseState(kTwoVolumes);
    CEWFMgr m(SimLibrary());
    const unsigned long open = OpenHandles(m);
    ASSERT_EQ(m.Init(), 1);
    int (CEWFMgr::*const commands[])(Handle) = {&CEWFMgr::Enable, &CEWFMgr::Disable, &CEWFMgr::Commit,
                                                &CEWFMgr::Restore, &CEWFMgr::ClearCommand};
    const unsigned long calls = Sim<ULong>(m, "EwfSimCalls");
    for (auto command : commands) EXPECT_EQ((m.*command)(nullptr), 0);
    EXPECT_EQ(Sim<ULong>(m, "EwfSimCalls"), calls) << "a null handle reaches nothing";
    EXPECT_EQ(m.Enable(reinterpret_cast<Handle>(std::uintptr_t{0x7777})), 0);
    EXPECT_EQ(LastError(), ErrorInvalidHandle) << "a handle the filter never gave out is refused by EWF itself";
    {
        CEWFMgr copy(m);
        CEWFMgr assigned;
        assigned = m;
        EXPECT_EQ(assigned.GetVolumeHandle(1), m.GetVolumeHandle(1));
        EXPECT_EQ(OpenHandles(m) - open, 2u) << "handles are not duplicated";
    }
    // Both copies closed the shared handles: the original now holds closed ones, refused without a crash.
    EXPECT_EQ(OpenHandles(m) - open, 0u);
    EXPECT_EQ(m.GetVolumeCount(), 2);
    for (auto command : commands) {
        EXPECT_EQ((m.*command)(m.GetVolumeHandle(0)), 0);
        EXPECT_EQ(LastError(), ErrorInvalidHandle);
    }
    EXPECT_EQ(m.GetVolumeName(0), L"");
    EXPECT_EQ(m.GetVolumeConfig(0), nullptr);
}

// Failures while listing: the code logged and returned, and what was opened before stays in the list.
TEST_F(EwfManagerTest, ListingFailuresKeepWhatWasFoundBefore) {
    const struct {
        std::string state;
        int init, count;     // Init's answer, volumes in the list afterwards
        unsigned long open;  // handles left open by the listing
        const wchar_t* line;
    } cases[] = {
        {std::string(kTwoVolumes) + "[faults]\nlist_error=1117\n", 0, 0, 0, L"EwfMgrGetProtectedVolumeList failed LE = 1117\n"},
        {std::string(kTwoVolumes) + "[faults]\nopen_fail=2\nopen_error=5\n", 0, 1, 1, L"EwfMgrOpenProtected failed LE = 5\n"},
        // The second volume's handle is neither kept nor closed.
        {std::string(kTwoVolumes) + "[faults]\nconfig_fail=2\nconfig_error=1117\n", 0, 1, 2,
         L"EwfMgrGetProtectedVolumeConfig failed LE = 1117\n"},
        {std::string(kTwoVolumes) + "[faults]\nopen_fail=1\n", 0, 0, 0, L"EwfMgrOpenProtected failed LE = 2\n"},
        {"[volume1]\ntype=floppy\n", 0, 0, 0, L"EwfMgrGetProtectedVolumeList failed LE = 1392\n"},
        // An unknown drive letter is not an error (the check for it can never fire).
        {std::string(kTwoVolumes) + "[faults]\nletter_fail=1\n", 1, 2, 2, L"Protected volume \xFFFF: = "},
        {"[store]\nsegments=10\n", 1, 0, 0, nullptr},  // no protected volume: an empty list
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.state);
        zelLogger::Instance().ClearEntries();
        UseState(c.state);
        CEWFMgr m(SimLibrary());
        const unsigned long open = OpenHandles(m);  // handles an earlier case left open, if still loaded
        EXPECT_EQ(m.Init(), c.init);
        EXPECT_EQ(m.GetVolumeCount(), c.count);
        EXPECT_EQ(OpenHandles(m) - open, c.open);
        EXPECT_EQ(Logged(L"failed"), c.init ? 0u : 1u);
        if (c.line) {
            EXPECT_EQ(Logged(c.line), 1u);
        }
        if (c.count == 1) {
            EXPECT_EQ(m.GetVolumeName(0), L"\\Device\\HarddiskVolume1");
        }
    }
}

TEST_F(EwfManagerTest, MissingOrPartialLibraryFailsCleanly) {
    UseState(kTwoVolumes);
    CEWFMgr none(L"uc-no-such-ewfapi.dll");
    EXPECT_FALSE(none.IsLibraryLoaded());
    EXPECT_EQ(none.Init(), 0);
    EXPECT_EQ(Logged(L"EwfMgrGetProtectedVolumeList failed LE = 126\n"), 1u);
    EXPECT_EQ(none.GetFreeSpacePercent(), -1.0);
    EXPECT_EQ(none.GetStoreOverlay(), nullptr);
    EXPECT_EQ(none.Enable(reinterpret_cast<Handle>(std::uintptr_t{0x1000})), 0);
    EXPECT_EQ(LastError(), ErrorModNotFound);
    // Without the pop the list cannot be walked: refused rather than looping for ever.
    CEWFMgr noPop(SimLibrary(L"EWFAPI_nopop"));
    ASSERT_TRUE(noPop.IsLibraryLoaded()) << uc::ToUtf8(noPop.LibraryError());
    EXPECT_EQ(noPop.Init(), 0);
    EXPECT_EQ(Logged(L"EwfMgrGetProtectedVolumeList failed LE = 127\n"), 1u);
    CEWFMgr noClear(SimLibrary(L"EWFAPI_noclear"));
    ASSERT_EQ(noClear.Init(), 1);
    EXPECT_EQ(noClear.ClearCommand(noClear.GetVolumeHandle(0)), 0);
    EXPECT_EQ(LastError(), ErrorProcNotFound);
    EXPECT_NE(noClear.Enable(noClear.GetVolumeHandle(0)), 0);
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
    int (CEWFMgr::*const commands[])(Handle) = {&CEWFMgr::ClearCommand, &CEWFMgr::Enable, &CEWFMgr::Disable,
                                                &CEWFMgr::Restore, &CEWFMgr::Commit};
    int accepted = 0;
    for (int step : s.steps) accepted += (m.*commands[step])(m.GetVolumeHandle(0)) != 0;
    EXPECT_EQ(accepted, s.accepted);
    EWF_VOLUME_CONFIG* c = m.GetVolumeConfig(0);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->BootCommand, s.pending);
    FreeRecord(c);
    ASSERT_TRUE(Sim<Bool>(m, "EwfSimRestart"));
    c = m.GetVolumeConfig(0);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->BootCommand, EWF_NO_CMD);
    EXPECT_EQ(c->State, s.state);
    FreeRecord(c);
    const auto v = SavedState().Volumes().at(0);
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
