// BatteryMonitor: the power monitor of the built-in battery module (USB serial bridge, framed protocol).
#pragma once

#include <string>

#include "platform/clock.h"
#include "platform/export.h"
#include "power/battery_connection.h"
#include "power/battery_status.h"
#include "power/power_monitor.h"
#include "power/power_probe.h"

class UC_API BatteryMonitor : public IPowerMonitor {
public:
    static constexpr unsigned short VendorId = 0x10C4;
    static constexpr unsigned short ProductId = 0xEA60;
    static constexpr const char* SerialNumber = "0001";
    static constexpr int BaudRate = 38400;
    static constexpr int HistorySize = 5;

    explicit BatteryMonitor(uc::Clock& clock = uc::Clock::System());
    ~BatteryMonitor() override;
    BatteryMonitor(const BatteryMonitor&) = delete;
    BatteryMonitor& operator=(const BatteryMonitor&) = delete;

    // Finds the module's port, opens it and pings once; no retry.
    bool DetectBattery();
    // Opens `port` and pings once, skipping the lookup (service tools that know the port).
    bool DetectBatteryOnPort(int port);
    bool IsValid() const { return m_connection.IsOpen(); }
    bool IsBatteryModule() const override { return true; }
    bool GetCurrentStatus(EPowerSource& source, int& percent, const wchar_t*& stateText, WarningLevel& level) override;

    // Why the last detection or query failed (no bridge found, the port's open error, the link's failure),
    // for tools; empty after a success.
    std::wstring LastFailure() const { return m_lastFailure.Get(); }

    // The record read by the last successful query (zero-filled before the first).
    const BatteryStatus& GetLastStatus() const;
    int GetCurrentSlot() const { return m_current; }
    int GetPort() const { return m_connection.GetPort(); }

    static void SetCallback(void (*callback)(const BatteryStatus&));
    static void SetExtensiveLogging(bool on);
    static bool GetExtensiveLogging();

    // Warning level for a module voltage: below 20.2 V critical, 20.6 V very low, 21.0 V low.
    static WarningLevel LevelForVoltage(double volts);

    // Port number of the USB serial bridge, or -1; rewrites `serialNumber` in place (spaces become "_").
    static int GetPortNumber(unsigned short vendorId, unsigned short productId, char* serialNumber);

protected:
    BatteryConnection m_connection;

private:
    void LogFaultHistory() const;

    BatteryStatus* m_history;  // HistorySize records
    int m_current = 0;         // slot the next reading is written to
    uc::power::FailureText m_lastFailure;

    static void (*g_callback)(const BatteryStatus&);
    static bool g_extensiveLogging;
};
