// uctool "system": write-filter status and commands against the simulated filter, and the lock probe.
#include <gtest/gtest.h>

#include <thread>

#include "ewf_fixture.h"
#include "lock_support.h"
#include "platform/clock.h"
#include "support/tool_run.h"
#include "system/custom_mutex.h"
#include "system/mutex_backend.h"

namespace {
using uc::test::EwfSimTest;
using uc::test::SimLibrary;

using Outcome = uc::test::ToolRun;
Outcome System(const uctool::Args& args) { return uc::test::RunTool(L"system", args); }

Outcome Ewf(std::vector<std::wstring> args) {
    args.insert(args.begin(), L"ewf");
    args.push_back(L"--library");
    args.push_back(SimLibrary());
    return System(args);
}

bool Has(const std::wstring& text, const std::wstring& part) { return text.find(part) != std::wstring::npos; }

class SystemCommand : public EwfSimTest {};

TEST_F(SystemCommand, StatusCommandAndSimulatedRestart) {
    UseState(uc::test::kTwoVolumes);
    Outcome r = Ewf({L"status"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(Has(r.out, L"2 protected volume(s)"));
    EXPECT_TRUE(Has(r.out, L"volume 1: \\Device\\HarddiskVolume2\n  type Disk, state Enabled, pending No Command")) << r.out;
    EXPECT_TRUE(Has(r.out, L"overlay store: 75.0 % used (250 of 1000 segments free)")) << r.out;
    EXPECT_TRUE(Has(r.out, L"simulated; state file")) << r.out;

    r = Ewf({L"disable", L"\\device\\harddiskvolume1"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(Has(r.out, L"volume 0: pending Disable")) << r.out;
    ASSERT_EQ(Ewf({L"restart"}).code, 0);
    r = Ewf({L"status"});
    EXPECT_TRUE(Has(r.out, L"type Disk, state Disabled, pending No Command")) << r.out;
    EXPECT_TRUE(Has(r.out, L"0.0 % used")) << r.out;
    ASSERT_EQ(Ewf({L"write", L"1", L"100"}).code, 0);
    EXPECT_TRUE(Has(Ewf({L"status"}).out, L"10.0 % used"));
}

TEST_F(SystemCommand, BadVolumesRefusalsAndMissingFilter) {
    UseState(std::string(uc::test::kTwoVolumes) + "[faults]\nrefuse=commit\n");
    struct Case {
        std::vector<std::wstring> args;
        int code;
        const wchar_t* err;
    } cases[] = {
        {{L"enable", L"2"}, 1, L"no protected volume '2' (2 listed)"},
        {{L"enable", L"-1"}, 1, L"no protected volume '-1'"},
        {{L"commit", L"0"}, 1, L"refused commit for volume 0 (error 5)"},
        {{L"write", L"0", L"lots"}, 2, L"SEGMENTS must be a whole number"},
        {{L"explode", L"0"}, 2, L"usage:"},
    };
    for (const Case& c : cases) {
        const Outcome r = Ewf(c.args);
        EXPECT_EQ(r.code, c.code) << r.err;
        EXPECT_TRUE(Has(r.err, c.err)) << r.err;
    }
    const Outcome none = System({L"ewf", L"status", L"--library", L"uc-no-such-ewfapi.dll"});
    EXPECT_EQ(none.code, 1);
    EXPECT_TRUE(Has(none.err, L"EwfMgrGetProtectedVolumeList failed LE = 126")) << none.err;
    const Outcome real = System({L"ewf", L"restart", L"--library", SimLibrary(L"EWFAPI_noclear")});
    EXPECT_EQ(real.code, 0) << "the simulated build without ClearCommand is still the simulation";
}

TEST(SystemLockCommand, ReportsFreeHeldAndAbandonedLocks) {
    const std::wstring name = uc::test::UniqueLockName(L"tool");
    Outcome r = System({L"lock", name});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(Has(r.out, L"acquired '" + name + L"' after ")) << r.out;
    EXPECT_TRUE(Has(r.out, L"released '" + name + L"'"));

    CCustomMutex m;
    ASSERT_EQ(m.Create(nullptr, 0, name.c_str()), 1);
    uc::Event holding, release;
    std::thread holder([&] {
        CMutexLock lock(m);
        holding.Set();
        release.Wait();
    });
    ASSERT_TRUE(holding.Wait(uc::Millis(30000)));
    r = System({L"lock", name, L"--timeout", L"0"});
    EXPECT_EQ(r.code, 4);
    EXPECT_TRUE(Has(r.out, L"is held elsewhere")) << r.out;
    release.Set();
    holder.join();

    std::thread([&] { uc::sync::WaitMutex(m.GetHandle()); }).join();  // ends holding it
    r = System({L"lock", name, L"--priority"});
    EXPECT_EQ(r.code, 3);
    EXPECT_TRUE(Has(r.out, L"(abandoned)")) << r.out;
    EXPECT_EQ(System({L"lock", name, L"--timeout", L"soon"}).code, 2);
    EXPECT_EQ(System({L"lock", L"a\\b\\c"}).code, 1);
}

}  // namespace
