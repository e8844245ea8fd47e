// BatteryStatus: the battery module's 39-byte status record, kept raw and decoded on demand.
#pragma once

#include <string>

#include "platform/export.h"

class UC_API BatteryStatus {
public:
    static constexpr int Size = 39;

    BatteryStatus();  // zero-filled
    ~BatteryStatus() {}
    BatteryStatus(const BatteryStatus& other);
    BatteryStatus& operator=(const BatteryStatus& other);

    void Initialize(const unsigned char* data);  // copies 39 bytes
    const unsigned char* GetRawData() const { return m_data; }

    double GetVoltage() const;    // volts
    int GetPercent() const;       // byte 8, not clamped
    bool OnAC() const;            // bit 0 of byte 35
    double GetAge() const;        // byte 9 scaled by 100/128
    double GetTMPTemp() const;    // board sensor, 1/16 per count, unsigned
    double GetFGTemp() const;     // fuel gauge, 1/8 per count, unsigned
    int GetStateCode() const { return m_data[1]; }
    const wchar_t* GetState() const;  // static text, never freed
    bool FaultState() const;          // state 9, 10 or 13
    // A fault that has just begun or changed kind compared with `previous`.
    bool NewFaultState(const BatteryStatus& previous) const;

    // Name of byte `index` as the log prints it; "[index]" beyond the record.
    static std::wstring GetDataName(int index);
    // One state-report log line per byte: "%-40s = 0x%02X".
    void Log() const;

private:
    void Assign(const BatteryStatus& other);
    unsigned char m_data[Size];
};
