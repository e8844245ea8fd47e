// The simulated filter's model without the library around it, and the restore dialog's texts and gauge.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/text.h"
#include "system/ewf_api.h"
#include "system/ewf_text.h"
#include "system/simulator/ewf_simulator.h"

namespace {
using namespace uc::ewf;
using uc::ewf::sim::WriteFilterSimulator;

TEST(EwfSimulatorParse, MalformedValuesAreRefusedWithSectionAndKey) {
    struct Case {
        const wchar_t* text;
        const wchar_t* message;
    } cases[] = {
        {L"[volume1]\ntype=floppy\n", L"[volume1] type='floppy' is not disk, ram or ram_reg"},
        {L"[volume1]\nstate=maybe\n", L"state='maybe' is not enabled or disabled"},
        {L"[volume1]\ncommand=reboot\n", L"command='reboot' is not none, enable, disable, restore or commit"},
        {L"[volume1]\nused=-1\n", L"used='-1' is not a whole number"},
        {L"[volume1]\nused=4294967296\n", L"used='4294967296' is not a whole number from 0 to 4294967295"},
        {L"[volume1]\nletter=CD\n", L"letter='CD' is not a drive letter"},
        {L"[volume1]\nlevel=3\nmax_levels=2\n", L"level='3' is not from 1 to max_levels (2)"},
        {L"[volume1]\nletter=C\n[volume2]\nname=\\\\?\\GLOBALROOT\\Device\\HarddiskVolume1\n", L"is not unique"},
        {L"[volume1]\nname=\n", L"[volume1] name='' is not a volume name"},
        {L"[volume1]\ndevice=a\rb\n", L"device='a\rb' is not a volume name (no control characters)"},
        {L"[store]\nsegments=10\n[volume1]\nused=11\n", L"less than the disk overlays use (11)"},
        {L"[faults]\nrefuse=enable,explode\n", L"refuse='explode' is not enable, disable"},
        {L"[faults]\nopen_fail=27\n", L"open_fail='27'"},
    };
    for (const Case& c : cases) {
        WriteFilterSimulator sim;
        std::wstring error;
        EXPECT_FALSE(sim.Parse(c.text, error)) << uc::ToUtf8(c.text);
        EXPECT_NE(error.find(c.message), std::wstring::npos) << uc::ToUtf8(error);
        EXPECT_EQ(sim.Volumes().size(), 1u) << "a refused file changes nothing";
    }
}

TEST(EwfSimulatorParse, StateRoundTripsAndCommentsSurvive) {
    WriteFilterSimulator sim;
    std::wstring error;
    ASSERT_TRUE(sim.Parse(L"; service notes\n[volume1]\nletter=e:\ntype=RAM\n[volume2]\nused=5\n[faults]\nrefuse=clear\n", error))
        << uc::ToUtf8(error);
    ASSERT_EQ(sim.Volumes().size(), 2u);
    EXPECT_EQ(sim.Volumes()[0].letter, L'E');
    EXPECT_EQ(sim.Volumes()[1].device, L"\\Device\\HarddiskVolume2");
    ULong e = 0;
    ASSERT_TRUE(sim.Command(1, EWF_DISABLE, true, e));
    ASSERT_FALSE(sim.Command(1, EWF_NO_CMD, false, e));
    EXPECT_EQ(e, ErrorAccessDenied);

    const std::wstring text = sim.Serialize();
    EXPECT_EQ(text.rfind(L"; service notes", 0), 0u);
    WriteFilterSimulator again;
    ASSERT_TRUE(again.Parse(text, error)) << uc::ToUtf8(error);
    EXPECT_EQ(again.Volumes()[1].command, EWF_DISABLE);
    EXPECT_TRUE(again.Volumes()[1].commitOnDisable);
    EXPECT_EQ(again.Volumes()[0].type, EWF_RAM);
    EXPECT_EQ(again.Faults().refused, std::vector<EWF_COMMAND>{EWF_NO_CMD});
    again.Restart();
    EXPECT_EQ(again.Volumes()[1].state, EWF_DISABLED);
    EXPECT_EQ(again.Volumes()[1].committed, 5u) << "disable with commit writes the overlay through";
}

TEST(EwfSimulator, WritesGoToTheOverlayOnlyWhileProtected) {
    WriteFilterSimulator sim;
    sim.Store().segments = 10;
    ULong e = 0;
    ASSERT_TRUE(sim.Write(0, 10, e));
    EXPECT_EQ(sim.FreeSegments(), 0u);
    EXPECT_FALSE(sim.Write(0, 1, e));
    ASSERT_TRUE(sim.Command(0, EWF_DISABLE, false, e));
    sim.Restart();
    EXPECT_EQ(sim.FreeSegments(), 10u);
    ASSERT_TRUE(sim.Write(0, 1000, e)) << "a disabled filter writes straight to the volume";
    EXPECT_EQ(sim.Volumes()[0].committed, 1000u);
    EXPECT_EQ(sim.Volumes()[0].used, 0u);
    EXPECT_FALSE(sim.Command(3, EWF_ENABLE, false, e));
    EXPECT_EQ(e, ErrorInvalidHandle);
}

TEST(EwfSimulator, VolumeNamesFitTheirFixedFields) {
    WriteFilterSimulator sim;
    sim.Volumes()[0].device = std::wstring(MaxDeviceNameLength - 1, L'x');
    ULong e = 0;
    EWF_VOLUME_CONFIG* c = sim.NewVolumeConfig(0, &AllocRecord, e);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->VolumeDesc.DeviceName[MaxDeviceNameLength - 1], 0);
    EXPECT_EQ(FromEwfString(c->VolumeDesc.DeviceName, MaxDeviceNameLength).size(), MaxDeviceNameLength - 1);
    FreeRecord(c);
    std::wstring error;
    EXPECT_FALSE(sim.Parse(L"[volume1]\ndevice=" + std::wstring(MaxDeviceNameLength, L'y') + L"\n", error));
}

TEST(EwfText, DialogTextsForEveryTableValueNoneOutsideAndTheGaugeTruncatesAndClamps) {
    EXPECT_EQ(uc::ToUtf8(std::wstring(TypeText(EWF_DISK)) + TypeText(EWF_RAM) + TypeText(EWF_RAM_REG) +
                         StateText(EWF_ENABLED) + StateText(EWF_DISABLED)),
              "DiskRAMRAM_REGEnabledDisabled");
    const char* commands[] = {"No Command", "Enable", "Disable", "Restore", "Commit"};
    const char* prompts[] = {"none: nothing to restart for", "systemrestoredlg.enable", "systemrestoredlg.disable",
                             "systemrestoredlg.restore", "systemrestoredlg.commit"};
    for (int c = 0; c < 5; ++c) {
        EXPECT_EQ(uc::ToUtf8(CommandText(c)), commands[c]);
        EXPECT_STREQ(RestartPromptKey(c) ? RestartPromptKey(c) : prompts[0], prompts[c]);
    }
    for (int bad : {-1, 5, 1000}) {
        EXPECT_EQ(CommandText(bad), nullptr) << bad;
        EXPECT_EQ(RestartPromptKey(bad), nullptr) << bad;
        EXPECT_EQ(TypeText(bad), nullptr) << bad;
        EXPECT_EQ(StateText(bad), nullptr) << bad;
    }
    EXPECT_EQ(TypeText(3), nullptr);
    EXPECT_EQ(StateText(2), nullptr);
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<double, int> gauge[] = {{25.0, 25}, {99.99, 99}, {0.5, 0}, {-1.0, 0}, {250.0, 100}, {nan, 0}, {inf, 100}};
    for (const auto& [percent, position] : gauge) EXPECT_EQ(GaugePosition(percent), position) << percent;
}

}  // namespace
