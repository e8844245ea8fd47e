// The battery module's power monitor: detection, status queries with history, fault balloons and log.
#include "power/battery_monitor.h"

#include <cstring>
#include <string>

#include "platform/balloon.h"
#include "platform/localisation.h"
#include "platform/logger.h"
#include "platform/serial/port_map.h"
#include "platform/serial/usb_serial_lookup.h"
#include "platform/text.h"
#include "power/power_probe.h"

void (*BatteryMonitor::g_callback)(const BatteryStatus&) = nullptr;
bool BatteryMonitor::g_extensiveLogging = false;

BatteryMonitor::BatteryMonitor(uc::Clock& clock) : m_connection(clock), m_history(new BatteryStatus[HistorySize]) {}

BatteryMonitor::~BatteryMonitor() {
    m_connection.Close(true);
    delete[] m_history;
}

int BatteryMonitor::GetPortNumber(unsigned short vendorId, unsigned short productId, char* serialNumber) {
    if (!serialNumber) return -1;
    for (char* c = serialNumber; *c; ++c)
        if (*c == ' ') *c = '_';
    return uc::serial::FindUsbSerialPort(vendorId, productId, serialNumber);
}

namespace {
const wchar_t kSource[] = L"battery module";
using uc::power::ProbeEvent;
}  // namespace

bool BatteryMonitor::DetectBattery() {
    char serial[] = "0001";
    const int port = GetPortNumber(VendorId, ProductId, serial);
    if (port < 0) {
        m_lastFailure.Set(uc::Format(L"no USB serial bridge %04X:%04X with serial \"%S\" (looked in %s)", VendorId, ProductId,
                                     SerialNumber, uc::serial::UsbSerialLookupPlace().c_str()));
        uc::power::ReportProbe({ProbeEvent::NotFound, kSource, -1, L"", m_lastFailure.Get()});
        return false;
    }
    return DetectBatteryOnPort(port);
}

bool BatteryMonitor::DetectBatteryOnPort(int port) {
    const std::wstring device = uc::serial::PortDevicePath(port);
    uc::power::ReportProbe({ProbeEvent::Opening, kSource, port, device, L""});
    if (!m_connection.Open(port, BaudRate)) {
        m_lastFailure.Set(m_connection.GetOpenError());
        uc::power::ReportProbe({ProbeEvent::OpenFailed, kSource, port, device, m_lastFailure.Get()});
        return false;
    }
    if (m_connection.PingBattery()) {
        m_lastFailure.Set(L"");
        uc::power::ReportProbe({ProbeEvent::Answered, kSource, port, device, L""});
        return true;
    }
    m_lastFailure.Set(m_connection.LastFailure());
    uc::power::ReportProbe({ProbeEvent::NoAnswer, kSource, port, device, m_lastFailure.Get()});
    m_connection.Close(true);
    return false;
}

const BatteryStatus& BatteryMonitor::GetLastStatus() const {
    return m_history[(m_current + HistorySize - 1) % HistorySize];
}

void BatteryMonitor::SetCallback(void (*callback)(const BatteryStatus&)) { g_callback = callback; }
void BatteryMonitor::SetExtensiveLogging(bool on) { g_extensiveLogging = on; }
bool BatteryMonitor::GetExtensiveLogging() { return g_extensiveLogging; }

IPowerMonitor::WarningLevel BatteryMonitor::LevelForVoltage(double volts) {
    if (volts < 20.2) return WarningCritical;
    if (volts < 20.6) return WarningVeryLow;
    if (volts < 21.0) return WarningLow;
    return WarningNone;
}

void BatteryMonitor::LogFaultHistory() const {
    // The heading says 5 although four earlier records follow; log readers expect this exact line.
    UC_LOG(zelLogger::StateReport)(L"Battery fault detected! Previous %d battery states:", HistorySize);
    for (int k = 4; k >= 1; --k) {
        UC_LOG(zelLogger::StateReport)(L"Battery state %d %s ago", k, k == 1 ? L"query" : L"queries");
        m_history[(m_current + HistorySize - k) % HistorySize].Log();
    }
    UC_LOG(zelLogger::StateReport)(L"Current battery state:");
    m_history[m_current].Log();
}

bool BatteryMonitor::GetCurrentStatus(EPowerSource& source, int& percent, const wchar_t*& stateText,
                                      WarningLevel& level) {
    if (!IsValid()) {
        m_lastFailure.Set(L"the port is not open");
        return false;
    }
    BatteryStatus& status = m_history[m_current];
    // On failure the slot stays put, so the next query overwrites the same record.
    if (!m_connection.GetBatteryStatus(status)) {
        m_lastFailure.Set(m_connection.LastFailure());
        return false;
    }
    m_lastFailure.Set(L"");
    if (g_callback) g_callback(status);
    if (g_extensiveLogging) {
        UC_LOG(zelLogger::StateReport)(L"Current battery state:");
        status.Log();
    }
    if (status.FaultState()) {
        std::wstring message;
        for (int i = 1; i <= 6; ++i) {
            if (i > 1) message += L'\n';
            message += GetStr(("balloon.battery.fault.msg" + std::to_string(i)).c_str());
        }
        const std::wstring title = GetStr("balloon.battery.fault.header");
        // Shown on every faulty reading, not only the first: the fault must not go unnoticed.
        BalloonMessageService(__FILE__, __LINE__, true, 2)(5000, title.c_str(), message.c_str());
        if (status.NewFaultState(m_history[(m_current + HistorySize - 1) % HistorySize])) LogFaultHistory();
    }
    stateText = status.GetState();
    percent = status.GetPercent();
    source = status.OnAC() ? PowerLine : PowerBattery;
    level = LevelForVoltage(status.GetVoltage());
    m_current = (m_current + 1) % HistorySize;
    return true;
}
