// Shared fixture of the write-filter tests: a state file per test and the simulated library loaded by its real name.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/logger.h"
#include "support/temp_dir.h"
#include "system/ewf_api.h"
#include "system/ewf_library.h"
#include "system/ewf_manager.h"
#include "system/simulator/ewf_simulator.h"

namespace uc::test {

// The simulated library's file: "EWFAPI.dll" beside the test program on Windows (found by its real name),
// the module's path natively. `variant` names a test build that lacks an export ("EWFAPI_nopop").
std::wstring SimLibrary(const std::wstring& variant = L"EWFAPI");
// Points the simulated library at a state file (empty: unset).
void SetSimState(const std::wstring& path);

class EwfSimTest : public ::testing::Test {
protected:
    void SetUp() override { zelLogger::Instance().ClearEntries(); }
    void TearDown() override { SetSimState(L""); }

    // Writes the state file the simulated filter reads and saves on every call.
    void UseState(const std::string& ini) {
        m_state = m_dir.write(L"ewf.ini", ini);
        SetSimState(m_state);
    }
    // The state as the simulated filter last saved it.
    uc::ewf::sim::WriteFilterSimulator SavedState() const;

    // One of the simulation's own exports ("EwfSimRestart", "EwfSimWrite", ...) through the manager's library.
    template <class R, class... Args>
    static R Sim(const CEWFMgr& m, const char* name, Args... args) {
        auto fn = reinterpret_cast<R(UC_EWF_CALL*)(Args...)>(m.Library().ResolveAddress(name));
        EXPECT_NE(fn, nullptr) << name;
        return fn ? fn(args...) : R{};
    }
    static unsigned long OpenHandles(const CEWFMgr& m) { return Sim<uc::ewf::ULong>(m, "EwfSimOpenHandles"); }
    static std::size_t Logged(const std::wstring& fragment) { return zelLogger::Instance().Count(fragment); }

    TempDir m_dir;
    std::wstring m_state;
};

// Two disk-overlay volumes (C: and D:) on a 1,000-segment store of which C: uses 750.
inline const char* const kTwoVolumes =
    "; two protected volumes\n"
    "[store]\nsegments=1000\n"
    "[volume1]\nletter=C\nused=750\n"
    "[volume2]\nletter=D\n";

}  // namespace uc::test
