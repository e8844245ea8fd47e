// BatteryStatus: decoding, state texts, fault transitions, byte names and the log.
#include <gtest/gtest.h>

#include <vector>

#include "platform/logger.h"
#include "power/battery_status.h"

namespace {

BatteryStatus With(std::initializer_list<std::pair<int, unsigned char>> bytes) {
    unsigned char raw[BatteryStatus::Size] = {};
    for (auto [i, v] : bytes) raw[i] = v;
    BatteryStatus s;
    s.Initialize(raw);
    return s;
}

TEST(BatteryStatus, DecodesBigEndianWordsAndScales) {
    BatteryStatus s = With({{4, 0x02}, {5, 0x18}, {8, 0xC8}, {9, 64}, {12, 0x01}, {13, 0x90}, {14, 0x00},
                            {15, 0xC8}, {35, 0x03}});
    EXPECT_DOUBLE_EQ(s.GetVoltage(), 536 * 0.03894);
    EXPECT_EQ(s.GetPercent(), 200) << "not clamped";
    EXPECT_DOUBLE_EQ(s.GetAge(), 50.0);
    EXPECT_DOUBLE_EQ(s.GetTMPTemp(), 25.0);
    EXPECT_DOUBLE_EQ(s.GetFGTemp(), 25.0);
    EXPECT_TRUE(s.OnAC());
    EXPECT_FALSE(With({{35, 0x02}}).OnAC()) << "only bit 0 counts";
}

TEST(BatteryStatus, TemperaturesAreNotSignExtended) {
    EXPECT_DOUBLE_EQ(With({{12, 0xFF}, {13, 0xF0}}).GetTMPTemp(), 4095.0);
    EXPECT_DOUBLE_EQ(With({{14, 0xFF}, {15, 0xFF}}).GetFGTemp(), 65535 * 0.125);
}

TEST(BatteryStatus, StateTextsAndFaults) {
    const std::vector<std::pair<int, const wchar_t*>> table = {
        {1, L"Battery state 1: Boot"},           {2, L"Battery state 2: Normal Charge"},
        {3, L"Battery state 3: Slow Charge"},    {4, L"Battery state 4: Discharge"},
        {8, L"Battery state 8: Shutdown"},       {9, L"Battery state 9: Fault-Charge"},
        {10, L"Battery state 10: Fault-Discharge"}, {13, L"Battery state 13: Very Bad"},
        {5, L"Battery state: Unknown"},          {255, L"Battery state: Unknown"}};
    for (auto [code, text] : table) {
        BatteryStatus s = With({{1, static_cast<unsigned char>(code)}});
        EXPECT_STREQ(s.GetState(), text) << code;
        EXPECT_EQ(s.FaultState(), code == 9 || code == 10 || code == 13) << code;
    }
}

TEST(BatteryStatus, NewFaultOnlyWhenTheFaultBeginsOrChangesKind) {
    const BatteryStatus normal = With({{1, 2}}), charge = With({{1, 9}}), discharge = With({{1, 10}});
    EXPECT_TRUE(charge.NewFaultState(normal));
    EXPECT_FALSE(charge.NewFaultState(charge));
    EXPECT_TRUE(discharge.NewFaultState(charge));
    EXPECT_TRUE(charge.NewFaultState(BatteryStatus())) << "the zero record has state 0";
    EXPECT_FALSE(BatteryStatus().FaultState());
    EXPECT_FALSE(normal.NewFaultState(charge));
}

TEST(BatteryStatus, CopiesKeepAll39BytesAndNamesCoverThem) {
    const BatteryStatus a = With({{0, 1}, {38, 0x7F}});
    BatteryStatus b;
    b = a;
    EXPECT_EQ(b.GetRawData()[38], 0x7F);
    EXPECT_EQ(BatteryStatus(a).GetRawData()[0], 1);
    EXPECT_EQ(BatteryStatus::GetDataName(10), BatteryStatus::GetDataName(31)) << "shared names are kept";
    const std::pair<int, const wchar_t*> names[] = {{0, L"StatusCode"}, {34, L"FAN_ALRM_B"},
                                                    {38, L"ConditionsBuf(31:24)"}, {39, L"[39]"}, {1000, L"[1000]"}};
    for (auto [i, name] : names) EXPECT_EQ(BatteryStatus::GetDataName(i), name) << i;
}

TEST(BatteryStatus, LogWritesOneStateReportPerByte) {
    zelLogger::Instance().ClearEntries();
    With({{1, 0x0A}, {38, 0xFF}}).Log();
    const auto entries = zelLogger::Instance().Entries();
    ASSERT_EQ(entries.size(), 39u);
    for (const auto& e : entries) EXPECT_EQ(e.type, zelLogger::StateReport);
    EXPECT_EQ(entries[1].text, L"CurrentState                             = 0x0A");
    EXPECT_EQ(entries[38].text, L"ConditionsBuf(31:24)                     = 0xFF");
}

}  // namespace
