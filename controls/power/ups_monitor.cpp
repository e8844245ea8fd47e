// The UPS power monitor: thresholds, port search and handshake, status queries, shutdown orders.
#include "power/ups_monitor.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "platform/logger.h"
#include "platform/profile.h"
#include "platform/serial/ftdi_port.h"
#include "platform/serial/port_map.h"
#include "platform/text.h"
#include "power/power_probe.h"
#include "power/ups_protocol.h"

namespace ups = uc::power::ups;

namespace {
// The registered instance. Static shutdown calls hold the mutex while they forward, so the instance
// cannot be destroyed under them.
std::recursive_mutex g_instanceMutex;
CUPSMonitor* g_instance = nullptr;

const wchar_t* const kStatusSection = L"Settings\\Status";
const wchar_t kSource[] = L"UPS";
std::atomic<long long> g_defaultSettleMs{25};
}  // namespace

void CUPSMonitor::SetDefaultSettleTime(uc::Millis pause) { g_defaultSettleMs = pause.count(); }

bool CUPSMonitor::HasRegisteredInstance() {
    std::lock_guard<std::recursive_mutex> g(g_instanceMutex);
    return g_instance != nullptr;
}

CUPSMonitor::CUPSMonitor(uc::Clock& clock)
    : m_thresholdOne(vex_utils::GetProfileIntW(kStatusSection, L"UPSThresholdOne", 35)),
      m_thresholdTwo(vex_utils::GetProfileIntW(kStatusSection, L"UPSThresholdTwo", 20)),
      m_thresholdThree(vex_utils::GetProfileIntW(kStatusSection, L"UPSThresholdThree", 10)),
      m_connection(clock),
      m_clock(clock),
      m_settle(g_defaultSettleMs.load()) {
    std::lock_guard<std::recursive_mutex> g(g_instanceMutex);
    g_instance = this;
}

CUPSMonitor::~CUPSMonitor() {
    {
        std::lock_guard<std::recursive_mutex> g(g_instanceMutex);
        if (g_instance == this) g_instance = nullptr;
    }
    Terminate();
}

bool CUPSMonitor::Create() {
    Terminate();
    const bool ok = ConnectUPS();
    UC_LOG(zelLogger::StateReport)(ok ? L"UPS connection succeeded." : L"UPS connection failed.");
    return ok;
}

bool CUPSMonitor::Terminate() {
    UC_LOG(zelLogger::StateReport)(L"Shutting down the Status Services (UPS Monitor)...");
    if (m_connection.IsOpen()) return m_connection.Close(true);
    return true;
}

bool CUPSMonitor::ConnectUPS() {
    const int touch = vex_utils::GetProfileIntW(L"System\\HW Options", L"TouchScreenSerialPort", ups::NoPort);
    const int saved = vex_utils::GetProfileIntW(kStatusSection, L"UPSPort", ups::NoPort);
    const int ftdi = FTDIPort::GetCOMPortNum();
    for (int port : ups::PortSearchOrder(saved, touch, ftdi))
        if (TestUPSPort(port)) return true;
    return false;
}

bool CUPSMonitor::TestUPSPort(int port) {
    using uc::power::ProbeEvent;
    const std::wstring device = uc::serial::PortDevicePath(port);
    uc::power::ReportProbe({ProbeEvent::Opening, kSource, port, device, L""});
    // "Attemping" is the spelling service staff search the logs for.
    UC_LOG(zelLogger::Detail)(L"Attemping to connect to port %d...", port);
    if (!m_connection.Open(port, ups::BaudRate)) {
        UC_LOG(zelLogger::StateReport)(L"Could not open connection on port %d", port);
        m_lastFailure.Set(m_connection.GetOpenError());
        uc::power::ReportProbe({ProbeEvent::OpenFailed, kSource, port, device, m_lastFailure.Get()});
        return false;
    }
    UC_LOG(zelLogger::StateReport)(L"Opened connection on port %d", port);
    m_clock.SleepFor(m_settle);
    UC_LOG(zelLogger::Detail)(L"Attempting handshake on port %d...", port);
    if (Detect()) {
        UC_LOG(zelLogger::StateReport)(L"Handshake successful on port %d", port);
        vex_utils::WriteProfileInt(kStatusSection, L"UPSPort", port);
        uc::power::ReportProbe({ProbeEvent::Answered, kSource, port, device, L""});
        return true;
    }
    UC_LOG(zelLogger::StateReport)(L"Handshake unsuccessful on port %d", port);
    uc::power::ReportProbe({ProbeEvent::NoAnswer, kSource, port, device, m_lastFailure.Get()});
    m_connection.Close(true);
    UC_LOG(zelLogger::StateReport)(L"Closed connection on port %d", port);
    return false;
}

bool CUPSMonitor::Detect() {
    EPowerSource source = PowerUnknown;
    int percent = 0;
    const wchar_t* text = nullptr;
    WarningLevel level = WarningNone;
    return GetCurrentStatus(source, percent, text, level);
}

IPowerMonitor::EPowerSource CUPSMonitor::GetPowerSource() {
    if (!m_connection.IsOpen()) {
        m_lastFailure.Set(L"the port is not open");
        return PowerUnknown;
    }
    unsigned char reply[2] = {0, 0};
    if (!m_connection.SendCommand(ups::PowerSourceCommand, reply, 1)) {
        m_lastFailure.Set(m_connection.LastFailure());
        return PowerUnknown;
    }
    const auto source = static_cast<EPowerSource>(ups::PowerSourceFromReply(std::string(1, static_cast<char>(reply[0]))));
    if (source == PowerUnknown)
        m_lastFailure.Set(uc::Format(L"the reply to \"P\" was 0x%02X, neither \"1\" nor \"0\"", static_cast<unsigned>(reply[0])));
    return source;
}

int CUPSMonitor::GetBatteryLevel(EPowerSource source) {
    if (source == PowerUnknown || !m_connection.IsOpen()) return -1;
    std::vector<int> values;
    std::wstring why;
    for (int i = 0; i < 3; ++i) {
        unsigned char reply[4];
        std::memset(reply, 0, sizeof reply);
        if (!m_connection.SendCommand(ups::BatteryLevelCommand, reply, 3)) {
            why = m_connection.LastFailure();
            continue;
        }
        const std::string text(reinterpret_cast<const char*>(reply));
        int value = 0;
        if (!text.empty() && ups::ParseBatteryLevel(text, value) && value >= 0 && value <= 100)
            values.push_back(value);
        else
            why = uc::Format(L"the reply to \"B\" was \"%S\", not a level from 0 to 100", text.c_str());
    }
    const int level = ups::AverageLevel(values);
    if (level < 0) m_lastFailure.Set(L"no battery level in three tries (last: " + why + L")");
    return level;
}

bool CUPSMonitor::GetCurrentStatus(EPowerSource& source, int& percent, const wchar_t*& stateText,
                                   WarningLevel& level) {
    m_lastFailure.Set(L"");
    source = GetPowerSource();
    stateText = source == PowerBattery ? L"UPS depleting" : source == PowerLine ? L"UPS charging" : L"UPS unknown";
    if (source == PowerUnknown) return false;
    percent = GetBatteryLevel(source);
    level = static_cast<WarningLevel>(ups::WarningLevelFor(percent, m_thresholdOne, m_thresholdTwo, m_thresholdThree));
    return percent != -1;
}

bool CUPSMonitor::SendShutdownCommand(unsigned char command) {
    if (!m_connection.IsOpen()) return false;
    unsigned char reply[3] = {0, 0, 0};
    if (!m_connection.SendCommand(command, reply, 2)) return false;
    return reply[0] == 'O' && reply[1] == 'K';
}

bool CUPSMonitor::SendUPSShutdown() { return SendShutdownCommand(ups::ShutdownCommand); }
bool CUPSMonitor::SendUPSInverterShutdown() { return SendShutdownCommand(ups::InverterShutdownCommand); }

bool CUPSMonitor::ShutdownUPS() {
    if (uc::GetSystemProfileInt(L"System", L"_IsUpdating", 0) != 0) return false;
    std::lock_guard<std::recursive_mutex> g(g_instanceMutex);
    if (!g_instance || !g_instance->IsValid()) return false;
    return g_instance->SendUPSShutdown();
}

bool CUPSMonitor::ShutdownUPSInverter() {
    if (uc::GetSystemProfileInt(L"System", L"_IsUpdating", 0) != 0) return false;
    std::lock_guard<std::recursive_mutex> g(g_instanceMutex);
    if (!g_instance || !g_instance->IsValid()) return false;
    return g_instance->SendUPSInverterShutdown();
}
