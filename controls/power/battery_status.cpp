// Decoding and logging of the battery module's status record.
#include "power/battery_status.h"

#include <cstring>

#include "platform/logger.h"
#include "platform/text.h"

namespace {
// Byte names as the log shows them. Bytes 10-11 and 31-32 share names and byte 33 lacks the F of its
// neighbour; these exact texts are what service staff search logs for, so they stay as they are.
const wchar_t* const kNames[35] = {
    L"StatusCode",
    L"CurrentState",
    L"LatestVIN(15:8)",
    L"LatestVIN(7:0)",
    L"FuelGauge.BatteryVoltageInt(15:8)",
    L"FuelGauge.BatteryVoltageInt(7:0)",
    L"FuelGauge.BatteryCurrentInt(15:8)",
    L"FuelGauge.BatteryCurrentInt(7:0)",
    L"FuelGauge.ChargeLeft_RelativeActive",
    L"FuelGauge.AgeScalar",
    L"RawADCAverage[3](15:8)",
    L"RawADCAverage[3](7:0)",
    L"TMPReg(15:8)",
    L"TMPReg(7:0)",
    L"FuelGauge.BatteryTemperatureInt(15:8)",
    L"FuelGauge.BatteryTemperatureInt(7:0)",
    L"totalDischargeTime(31:24)",
    L"totalDischargeTime(23:16)",
    L"totalDischargeTime(15:8)",
    L"totalDischargeTime(7:0)",
    L"FuelGauge.CurrentAccumulator(15:8)",
    L"FuelGauge.CurrentAccumulator(7:0)",
    L"FuelGauge.AverageCurrent(15:8)",
    L"FuelGauge.AverageCurrent(7:0)",
    L"FuelGauge.StatusByte",
    L"RawADCAverage[0](15:8)",
    L"RawADCAverage[0](7:0)",
    L"RawADCAverage[1](15:8)",
    L"RawADCAverage[1](7:0)",
    L"RawADCAverage[2](15:8)",
    L"RawADCAverage[2](7:0)",
    L"RawADCAverage[3](15:8)",
    L"RawADCAverage[3](7:0)",
    L"AN_ALRM_A",
    L"FAN_ALRM_B",
};

unsigned Word(const unsigned char* d, int hi) { return static_cast<unsigned>(d[hi]) * 256u + d[hi + 1]; }
}  // namespace

BatteryStatus::BatteryStatus() { std::memset(m_data, 0, sizeof m_data); }

BatteryStatus::BatteryStatus(const BatteryStatus& other) { Assign(other); }

BatteryStatus& BatteryStatus::operator=(const BatteryStatus& other) {
    if (this != &other) Assign(other);
    return *this;
}

void BatteryStatus::Assign(const BatteryStatus& other) { std::memcpy(m_data, other.m_data, sizeof m_data); }

void BatteryStatus::Initialize(const unsigned char* data) {
    if (data) std::memcpy(m_data, data, sizeof m_data);
}

double BatteryStatus::GetVoltage() const { return Word(m_data, 4) * 0.03894; }
int BatteryStatus::GetPercent() const { return m_data[8]; }
bool BatteryStatus::OnAC() const { return (m_data[35] & 1) != 0; }
double BatteryStatus::GetAge() const { return m_data[9] * 100 * 0.0078125; }
double BatteryStatus::GetTMPTemp() const { return Word(m_data, 12) * 0.0625; }
double BatteryStatus::GetFGTemp() const { return Word(m_data, 14) * 0.125; }

const wchar_t* BatteryStatus::GetState() const {
    switch (m_data[1]) {
        case 1: return L"Battery state 1: Boot";
        case 2: return L"Battery state 2: Normal Charge";
        case 3: return L"Battery state 3: Slow Charge";
        case 4: return L"Battery state 4: Discharge";
        case 8: return L"Battery state 8: Shutdown";
        case 9: return L"Battery state 9: Fault-Charge";
        case 10: return L"Battery state 10: Fault-Discharge";
        case 13: return L"Battery state 13: Very Bad";
        default: return L"Battery state: Unknown";
    }
}

bool BatteryStatus::FaultState() const { return m_data[1] == 9 || m_data[1] == 10 || m_data[1] == 13; }

bool BatteryStatus::NewFaultState(const BatteryStatus& previous) const {
    return FaultState() && previous.m_data[1] != m_data[1];
}

std::wstring BatteryStatus::GetDataName(int index) {
    if (index >= 0 && index < 35) return kNames[index];
    if (index >= 35 && index < Size) return uc::Format(L"ConditionsBuf(%d:%d)", index * 8 - 273, index * 8 - 280);
    return uc::Format(L"[%d]", index);
}

void BatteryStatus::Log() const {
    for (int i = 0; i < Size; ++i)
        UC_LOG(zelLogger::StateReport)(L"%-40s = 0x%02X", GetDataName(i).c_str(), static_cast<unsigned>(m_data[i]));
}
