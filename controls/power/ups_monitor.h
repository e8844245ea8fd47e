// CUPSMonitor: the power monitor of an external UPS on a plain serial port, with port search and shutdown orders.
#pragma once

#include <string>

#include "platform/clock.h"
#include "platform/export.h"
#include "power/power_monitor.h"
#include "power/power_probe.h"
#include "power/ups_connection.h"

class UC_API CUPSMonitor : public IPowerMonitor {
public:
    // Reads the thresholds and registers this monitor as the process's UPS instance.
    explicit CUPSMonitor(uc::Clock& clock = uc::Clock::System());
    // Unregisters (if still the registered instance) and closes the port.
    ~CUPSMonitor() override;
    CUPSMonitor(const CUPSMonitor&) = delete;
    CUPSMonitor& operator=(const CUPSMonitor&) = delete;

    // Closes any open port and searches for the UPS; logs the outcome.
    bool Create();
    bool IsValid() const { return m_connection.IsOpen(); }
    bool IsBatteryModule() const override { return false; }
    bool GetCurrentStatus(EPowerSource& source, int& percent, const wchar_t*& stateText, WarningLevel& level) override;

    // Orders the UPS to shut down ("D") or to shut its inverter down ("X"); true on the reply "OK".
    bool SendUPSShutdown();
    bool SendUPSInverterShutdown();
    // Forward to the registered instance; refused (false) while the system profile's "System"/"_IsUpdating"
    // is set, when no instance is registered, or when its port is closed.
    static bool ShutdownUPS();
    static bool ShutdownUPSInverter();

    int GetThresholdOne() const { return m_thresholdOne; }
    int GetThresholdTwo() const { return m_thresholdTwo; }
    int GetThresholdThree() const { return m_thresholdThree; }
    int GetPort() const { return m_connection.GetPort(); }
    // The pause between opening a port and the handshake (25 ms) that lets the UPS settle; the default
    // applies to monitors constructed afterwards.
    void SetSettleTime(uc::Millis pause) { m_settle = pause; }
    static void SetDefaultSettleTime(uc::Millis pause);
    // True while some monitor is registered for the static shutdown calls.
    static bool HasRegisteredInstance();
    // Tries only `port` (service tools that know where the UPS is).
    bool ConnectOnPort(int port) { return TestUPSPort(port); }
    // Why the last handshake or query failed (the port's open error, no reply, an unusable reply), for tools;
    // empty after a success.
    std::wstring LastFailure() const { return m_lastFailure.Get(); }

protected:
    bool Detect();
    bool Terminate();
    bool ConnectUPS();
    bool TestUPSPort(int port);
    EPowerSource GetPowerSource();
    int GetBatteryLevel(EPowerSource source);

    int m_thresholdOne;
    int m_thresholdTwo;
    int m_thresholdThree;
    CUPSConnection m_connection;

private:
    bool SendShutdownCommand(unsigned char command);

    uc::Clock& m_clock;
    uc::Millis m_settle;
    uc::power::FailureText m_lastFailure;
};
