// uctool "power": find the power source, read it once or repeatedly, and run device simulators for service work.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
#include <thread>
#include <utility>
#include <vector>

#include "command.h"
#include "platform/balloon.h"
#include "platform/logger.h"
#include "platform/serial/port_map.h"
#include "platform/serial/usb_serial_lookup.h"
#include "platform/text.h"
#include "power/battery_monitor.h"
#include "power/power_probe.h"
#include "power/simulator/battery_simulator.h"
#include "power/simulator/simulator_host.h"
#include "power/simulator/ups_simulator.h"
#include "power/ups_monitor.h"

namespace uctool::power {
namespace {
namespace fs = std::filesystem;
namespace sim = uc::power::sim;

std::atomic<bool> g_stop{false};
void OnSignal(int) { g_stop = true; }

const wchar_t* const kUsage =
    L"usage: uctool power detect   [PORT OPTIONS]\n"
    L"       uctool power status   [PORT OPTIONS] [--raw]\n"
    L"       uctool power watch    [PORT OPTIONS] [--interval SECONDS] [--count N]\n"
    L"       uctool power simulate battery [--voltage V] [--percent P] [--state CODE] [--on-battery] [FAULTS]\n"
    L"       uctool power simulate ups [--source 1|0|TEXT] [--level P] [--shutdown-reply TEXT] [FAULTS]\n"
    L"\n"
    L"detect: which power source answers (battery module first, UPS second) and on which port.\n"
    L"status: one reading: source, percent, state text, warning level; for the battery module the record.\n"
    L"watch:  a reading every --interval seconds (default 5) until interrupted or --count readings.\n"
    L"simulate: runs a simulated device until interrupted (or --for SECONDS) and prints where to connect.\n"
    L"\n"
    L"PORT OPTIONS:\n"
    L"  --port N             skip the search: battery module on port N, else UPS on port N\n"
    L"  --only battery|ups   look for that source only\n"
    L"  --map N=PATH         (not Windows) port N opens device PATH; may be repeated\n"
    L"  --serial-dir DIR     (not Windows) folder of comN links naming ports\n"
    L"  --sysfs DIR --dev DIR  (not Windows) sysfs and /dev roots of the USB lookup (a simulator's fake tree)\n"
    L"  --registry-root KEY  (Windows) key standing for HKLM in the USB lookup, e.g. HKEY_CURRENT_USER\\Software\\x\n"
    L"FAULTS (simulate):\n"
    L"  --delay MS --silent --twice --garbage HEX --split N --split-delay MS --wrong-end\n"
    L"  --com N              Windows: serve on COMN (one end of a null-modem pair);\n"
    L"                       elsewhere: also link the pty as comN in the serial folder\n"
    L"  --for SECONDS        stop after this long\n"
    L"EVERY COMMAND:\n"
    L"  -v                   the library's log lines on standard error as they are written\n"
    L"  --log FILE           the library's log appended to FILE\n"
    L"When nothing is found, every port and lookup tried is listed with what happened; on a terminal the\n"
    L"search shows which port it is trying.";

void Usage(std::wostream& err) { err << kUsage << L"\n"; }

// Refuses whatever the known options left: an unknown or misspelt option, an option without its value, a
// stray word. Each is a usage error: nothing is probed on a guess.
bool NoLeftovers(const Args& args, std::wostream& err) {
    if (args.empty()) return true;
    static const wchar_t* const valued[] = {L"--port", L"--only", L"--map", L"--serial-dir", L"--sysfs", L"--dev",
                                            L"--registry-root", L"--interval", L"--count", L"--log", L"--voltage",
                                            L"--percent", L"--state", L"--source", L"--level", L"--shutdown-reply",
                                            L"--delay", L"--garbage", L"--split", L"--split-delay", L"--com", L"--for"};
    const std::wstring& a = args[0];
    if (std::find(std::begin(valued), std::end(valued), a) != std::end(valued))
        err << L"uctool power: " << a << L" needs a value\n";
    else if (!a.empty() && a[0] == L'-')
        err << L"uctool power: unknown option '" << a << L"'\n";
    else
        err << L"uctool power: unexpected argument '" << a << L"'\n";
    Usage(err);
    return false;
}

// -v and --log for the length of one command; the logger is put back as it was afterwards.
class LogOptions {
public:
    LogOptions(Args& args, std::wostream& err, bool& bad) : m_previousFile(zelLogger::Instance().GetLogFile()) {
        std::wstring file;
        if (TakeOption(args, L"--log", file)) {
            if (file.empty() || !std::ofstream(uc::ToFsPath(file), std::ios::app)) {
                err << L"uctool power: cannot write the log to '" << file << L"'\n";
                bad = true;
            } else {
                zelLogger::Instance().SetLogFile(file);
                m_fileSet = true;
            }
        }
        if (TakeFlag(args, L"-v") | TakeFlag(args, L"--verbose")) {
            m_listening = true;
            zelLogger::Instance().SetListener([&err](const zelLogger::Entry& e) {
                err << L"log: " << uc::FromUtf8(e.file) << L":" << e.line << L": " << e.text << L"\n";
                err.flush();
            });
        }
    }
    ~LogOptions() {
        if (m_listening) zelLogger::Instance().SetListener(nullptr);
        if (m_fileSet) zelLogger::Instance().SetLogFile(m_previousFile);
    }
    LogOptions(const LogOptions&) = delete;
    LogOptions& operator=(const LogOptions&) = delete;

private:
    std::wstring m_previousFile;
    bool m_fileSet = false;
    bool m_listening = false;
};

// What a search tried, kept for the explanation when nothing answers, and shown as it goes on a terminal.
class SearchReport {
public:
    SearchReport(std::wostream& err, bool progress) : m_err(err), m_progress(progress) {
        uc::power::SetProbeObserver([this](const uc::power::ProbeEvent& e) { OnStep(e); });
    }
    ~SearchReport() {
        uc::power::SetProbeObserver(nullptr);
        ClearProgress();
    }
    SearchReport(const SearchReport&) = delete;
    SearchReport& operator=(const SearchReport&) = delete;

    // "no power source found" and every step tried, the progress line cleared first.
    void Explain(std::wostream& out) {
        ClearProgress();
        out << L"no power source found\n";
        for (const Step& step : m_steps) {
            out << L"  " << step.source;
            if (step.firstPort >= 0 && step.lastPort == step.firstPort)
                out << L" on port " << step.firstPort << L" ("
                    << (step.firstDevice.empty() ? std::wstring(L"no device") : step.firstDevice) << L")";
            else if (step.firstPort >= 0)
                out << L" on ports " << step.firstPort << L" to " << step.lastPort << L" (" << step.firstDevice << L" to "
                    << step.lastDevice << L")";
            out << L": " << step.text << L"\n";
        }
    }

private:
    // One line of the explanation: a step, or a run of ports that failed to open for the same reason.
    struct Step {
        std::wstring source;
        int firstPort = -1, lastPort = -1;
        std::wstring firstDevice, lastDevice;
        std::wstring text;
    };

    void OnStep(const uc::power::ProbeEvent& e) {
        using Kind = uc::power::ProbeEvent::Kind;
        if (e.kind == Kind::Opening) {
            if (!m_progress) return;
            const std::wstring text = L"trying " + std::wstring(e.source) + L" on port " + std::to_wstring(e.port) +
                                      (e.device.empty() ? L"" : L" (" + e.device + L")") + L"...";
            m_err << L"\r" << text << std::wstring(m_shown > text.size() ? m_shown - text.size() : 0, L' ');
            m_err.flush();
            m_shown = text.size();
            return;
        }
        std::wstring text = e.detail;
        if (e.kind == Kind::OpenFailed) {
            // "PATH: reason" would say the path twice once the line names it.
            if (!e.device.empty() && text.rfind(e.device + L": ", 0) == 0) text.erase(0, e.device.size() + 2);
            text = L"cannot open: " + text;
            Step* last = m_steps.empty() ? nullptr : &m_steps.back();
            if (last && last->source == e.source && last->text == text && last->lastPort + 1 == e.port &&
                !e.device.empty() && !last->lastDevice.empty()) {
                last->lastPort = e.port;
                last->lastDevice = e.device;
                return;
            }
        } else if (e.kind == Kind::Answered) {
            text = L"answered";
        } else if (e.kind == Kind::NoAnswer) {
            text = L"opened; " + text;
        }
        m_steps.push_back({e.source, e.port, e.port, e.device, e.device, text});
    }

    void ClearProgress() {
        if (!m_shown) return;
        m_err << L"\r" << std::wstring(m_shown, L' ') << L"\r";
        m_err.flush();
        m_shown = 0;
    }

    std::wostream& m_err;
    bool m_progress;
    std::size_t m_shown = 0;  // characters of the progress line on screen
    std::vector<Step> m_steps;
};

bool ParseIntOption(Args& args, const std::wstring& name, int& value, std::wostream& err, bool& bad) {
    std::wstring text;
    if (!TakeOption(args, name, text)) return false;
    if (!uc::ParseInt(text, value)) {
        err << L"uctool power: " << name << L" needs a whole number, not '" << text << L"'\n";
        bad = true;
        return false;
    }
    return true;
}

enum class Only { Any, Battery, Ups };
Only g_only = Only::Any;

// Applies the port options; returns false on bad usage.
bool ApplyPortOptions(Args& args, int& port, std::wostream& err) {
    bool bad = false;
    port = -1;
    g_only = Only::Any;
    std::wstring only;
    if (TakeOption(args, L"--only", only)) {
        if (only == L"battery") g_only = Only::Battery;
        else if (only == L"ups") g_only = Only::Ups;
        else {
            err << L"uctool power: --only takes battery or ups\n";
            Usage(err);
            return false;
        }
    }
    ParseIntOption(args, L"--port", port, err, bad);
    std::wstring value;
    while (TakeOption(args, L"--map", value)) {
        const auto eq = value.find(L'=');
        int n = 0;
        if (eq == std::wstring::npos || !uc::ParseInt(value.substr(0, eq), n)) {
            err << L"uctool power: --map needs N=PATH\n";
            Usage(err);
            return false;
        }
        uc::serial::MapPort(n, value.substr(eq + 1));
    }
    if (TakeOption(args, L"--serial-dir", value)) uc::serial::SetPortDirectory(value);
    if (TakeOption(args, L"--sysfs", value)) uc::serial::SetSysfsRoot(value);
    if (TakeOption(args, L"--dev", value)) uc::serial::SetDeviceRoot(value);
    if (TakeOption(args, L"--registry-root", value)) uc::serial::SetDeviceRegistryRoot(value);
    if (bad) Usage(err);
    return !bad;
}

struct Found {
    std::unique_ptr<IPowerMonitor> monitor;
    int port = -1;
    BatteryMonitor* battery = nullptr;
    CUPSMonitor* ups = nullptr;

    std::wstring Failure() const { return battery ? battery->LastFailure() : ups ? ups->LastFailure() : L""; }
};

// The same order as IPowerMonitor::Create (battery module first), keeping track of the port.
Found Detect(int port) {
    Found f;
    auto battery = std::make_unique<BatteryMonitor>();
    if (g_only != Only::Ups && (port >= 0 ? battery->DetectBatteryOnPort(port) : battery->DetectBattery())) {
        f.port = battery->GetPort();
        f.battery = battery.get();
        f.monitor = std::move(battery);
        return f;
    }
    battery.reset();
    if (g_only == Only::Battery) return f;
    auto ups = std::make_unique<CUPSMonitor>();
    if (port >= 0 ? ups->ConnectOnPort(port) : ups->Create()) {
        f.port = ups->GetPort();
        f.ups = ups.get();
        f.monitor = std::move(ups);
    }
    return f;
}

// Detects with the search shown on a terminal; when nothing answers, says so with every step tried.
Found DetectExplained(int port, std::wostream& out, std::wostream& err) {
    SearchReport report(err, ErrorIsTerminal());
    Found f = Detect(port);
    if (!f.monitor) report.Explain(out);
    return f;
}

std::wstring Describe(const Found& f) {
    if (!f.monitor) return L"no power source found";
    return (f.battery ? L"battery module on port " : L"UPS on port ") + std::to_wstring(f.port);
}

const wchar_t* LevelName(IPowerMonitor::WarningLevel level) {
    switch (level) {
        case IPowerMonitor::WarningNone: return L"none";
        case IPowerMonitor::WarningLow: return L"low";
        case IPowerMonitor::WarningVeryLow: return L"very low";
        case IPowerMonitor::WarningCritical: return L"critical";
    }
    return L"?";
}

const wchar_t* SourceName(IPowerMonitor::EPowerSource source) {
    switch (source) {
        case IPowerMonitor::PowerBattery: return L"battery (depleting)";
        case IPowerMonitor::PowerLine: return L"mains (charging)";
        default: return L"unknown";
    }
}

bool PrintReading(Found& f, std::wostream& out, bool record, bool raw) {
    IPowerMonitor::EPowerSource source = IPowerMonitor::PowerUnknown;
    int percent = -1;
    const wchar_t* text = nullptr;
    IPowerMonitor::WarningLevel level = IPowerMonitor::WarningNone;
    const bool ok = f.monitor->GetCurrentStatus(source, percent, text, level);
    out << L"source:  " << Describe(f) << L"\n";
    if (!ok) {
        const std::wstring why = f.Failure();
        out << L"reading: failed" << (text ? std::wstring(L" (") + text + L")" : L"") << (why.empty() ? L"" : L": " + why)
            << L"\n";
        return false;
    }
    out << L"power:   " << SourceName(source) << L"\n"
        << L"percent: " << percent << L"\n"
        << L"state:   " << (text ? text : L"") << L"\n"
        << L"warning: " << static_cast<int>(level) << L" (" << LevelName(level) << L")\n";
    if (record && f.battery) {
        const BatteryStatus& s = f.battery->GetLastStatus();
        out << L"record:  voltage " << uc::FormatFixed(s.GetVoltage(), 2) << L" V, charge " << s.GetPercent()
            << L" %, on mains " << (s.OnAC() ? L"yes" : L"no") << L", age " << uc::FormatFixed(s.GetAge(), 1)
            << L", board temperature " << uc::FormatFixed(s.GetTMPTemp(), 2) << L", gauge temperature "
            << uc::FormatFixed(s.GetFGTemp(), 2) << L", state code " << s.GetStateCode() << L", fault "
            << (s.FaultState() ? L"yes" : L"no") << L"\n";
        if (raw)
            for (int i = 0; i < BatteryStatus::Size; ++i)
                out << uc::Format(L"  %-40s = 0x%02X\n", BatteryStatus::GetDataName(i).c_str(),
                                  static_cast<unsigned>(s.GetRawData()[i]));
    }
    return true;
}

void WatchBalloons(std::wostream& out) {
    BalloonMessageService::SetPresenter([&out](const BalloonMessageService::Balloon& b) {
        std::wstring text = b.text;
        for (auto& c : text)
            if (c == L'\n') c = L' ';
        out << L"balloon: " << b.title << L": " << text << L"\n";
    });
}

int Detect(Args args, std::wostream& out, std::wostream& err) {
    int port = -1;
    if (!ApplyPortOptions(args, port, err) || !NoLeftovers(args, err)) return 2;
    Found f = DetectExplained(port, out, err);
    if (f.monitor) out << Describe(f) << L"\n";
    return f.monitor ? 0 : 1;
}

int Status(Args args, std::wostream& out, std::wostream& err) {
    const bool raw = TakeFlag(args, L"--raw");
    int port = -1;
    if (!ApplyPortOptions(args, port, err) || !NoLeftovers(args, err)) return 2;
    Found f = DetectExplained(port, out, err);
    if (!f.monitor) return 1;
    WatchBalloons(out);
    const bool ok = PrintReading(f, out, true, raw);
    BalloonMessageService::SetPresenter(nullptr);
    return ok ? 0 : 1;
}

int Watch(Args args, std::wostream& out, std::wostream& err) {
    int interval = 5, count = -1;
    bool bad = false;
    ParseIntOption(args, L"--interval", interval, err, bad);
    ParseIntOption(args, L"--count", count, err, bad);
    int port = -1;
    if (interval < 0) {
        err << L"uctool power: --interval cannot be negative\n";
        bad = true;
    }
    if (bad) {
        Usage(err);
        return 2;
    }
    if (!ApplyPortOptions(args, port, err) || !NoLeftovers(args, err)) return 2;
    Found f = DetectExplained(port, out, err);
    if (!f.monitor) return 1;
    g_stop = false;
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
    WatchBalloons(out);
    int failures = 0;
    for (int n = 1; !g_stop && (count < 0 || n <= count); ++n) {
        out << L"-- reading " << n << L"\n";
        if (!PrintReading(f, out, true, false)) ++failures;
        out.flush();
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(interval);
        while (!g_stop && (count < 0 || n < count) && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    BalloonMessageService::SetPresenter(nullptr);
    return failures ? 1 : 0;
}

bool ParseHex(const std::wstring& text, std::vector<std::uint8_t>& bytes) {
    if (text.size() % 2) return false;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const std::wstring pair = text.substr(i, 2);
        wchar_t* end = nullptr;
        const unsigned long v = std::wcstoul(pair.c_str(), &end, 16);
        if (!end || *end) return false;
        bytes.push_back(static_cast<std::uint8_t>(v));
    }
    return true;
}

#ifndef _WIN32
// Lays out a fake sysfs and /dev with the battery bridge's identity pointing at `device`; returns its root.
std::wstring FakeBatteryTree(const std::wstring& device) {
    const fs::path root = fs::temp_directory_path() / ("uc-power-sim-" + std::to_string(std::rand()) + "-" +
                                                       std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    const fs::path usb = root / "sys" / "devices" / "usb1" / "1-1";
    fs::create_directories(usb / "1-1:1.0" / "ttyUSB0");
    std::ofstream(usb / "idVendor") << "10c4\n";
    std::ofstream(usb / "idProduct") << "ea60\n";
    std::ofstream(usb / "serial") << "0001\n";
    std::ofstream(usb / "1-1:1.0" / "bInterfaceNumber") << "00\n";
    fs::create_directories(root / "sys" / "class" / "tty" / "ttyUSB0");
    fs::create_symlink("../../../devices/usb1/1-1/1-1:1.0/ttyUSB0", root / "sys" / "class" / "tty" / "ttyUSB0" / "device");
    fs::create_directories(root / "dev");
    fs::create_symlink(uc::ToFsPath(device), root / "dev" / "ttyUSB0");
    return uc::FromFsPath(root);
}
#endif

int Simulate(Args args, std::wostream& out, std::wostream& err) {
    if (args.empty() || (args[0] != L"battery" && args[0] != L"ups")) {
        err << L"uctool power: simulate needs battery or ups\n";
        Usage(err);
        return 2;
    }
    const bool battery = args[0] == L"battery";
    args.erase(args.begin());
    sim::Faults faults;
    bool bad = false;
    int delay = 0, split = 0, splitDelay = 0, com = -1, seconds = -1;
    ParseIntOption(args, L"--delay", delay, err, bad);
    ParseIntOption(args, L"--split", split, err, bad);
    ParseIntOption(args, L"--split-delay", splitDelay, err, bad);
    ParseIntOption(args, L"--com", com, err, bad);
    ParseIntOption(args, L"--for", seconds, err, bad);
    faults.replyDelay = uc::Millis(delay);
    faults.splitAt = static_cast<std::size_t>(std::max(0, split));
    faults.splitDelay = uc::Millis(splitDelay);
    faults.silent = TakeFlag(args, L"--silent");
    faults.repeat = TakeFlag(args, L"--twice") ? 2 : 1;
    faults.wrongEnd = TakeFlag(args, L"--wrong-end");
    std::wstring value;
    if (TakeOption(args, L"--garbage", value) && !ParseHex(value, faults.garbage)) {
        err << L"uctool power: --garbage needs hex bytes such as 00FF12\n";
        bad = true;
    }

    sim::BatteryModuleSimulator module;
    sim::UpsSimulator ups;
    if (battery) {
        if (TakeOption(args, L"--voltage", value)) {
            double v = 0;
            if (uc::ParseDouble(value, v)) module.SetVoltage(v); else bad = true;
        }
        int n = 0;
        if (ParseIntOption(args, L"--percent", n, err, bad)) module.SetPercent(n);
        if (ParseIntOption(args, L"--state", n, err, bad)) module.SetState(n);
        if (TakeFlag(args, L"--on-battery")) module.SetOnAC(false);
        module.SetFaults(faults);
    } else {
        if (TakeOption(args, L"--source", value)) ups.SetSource(uc::ToUtf8(value));
        int n = 0;
        if (ParseIntOption(args, L"--level", n, err, bad)) ups.SetLevel(n);
        if (TakeOption(args, L"--shutdown-reply", value)) ups.SetShutdownReply(uc::ToUtf8(value));
        ups.SetFaults(faults);
    }
    if (bad) {
        Usage(err);
        return 2;
    }
    if (!NoLeftovers(args, err)) return 2;

    sim::SimulatorHost host(battery ? static_cast<sim::SimulatorEngine&>(module) : static_cast<sim::SimulatorEngine&>(ups));
    const wchar_t* what = battery ? L"battery module" : L"UPS";
    std::wstring linkMade, treeMade;
#ifdef _WIN32
    if (com < 0) {
        err << L"uctool power: on Windows a simulator serves on a COM port: give --com N\n";
        return 2;
    }
    if (!host.StartOnPort(com, battery ? BatteryMonitor::BaudRate : 2400)) {
        err << L"uctool power: cannot open COM" << com << L"\n";
        return 1;
    }
    out << what << L" simulator on " << host.DevicePath() << L"\n";
#else
    if (!host.StartPty()) {
        err << L"uctool power: cannot create a pseudo-terminal\n";
        return 1;
    }
    out << what << L" simulator on " << host.DevicePath() << L"\n";
    if (com >= 0) {
        const fs::path link = uc::ToFsPath(uc::serial::GetPortDirectory()) / ("com" + std::to_string(com));
        std::error_code ec;
        fs::create_directories(link.parent_path(), ec);
        fs::remove(link, ec);
        fs::create_symlink(uc::ToFsPath(host.DevicePath()), link, ec);
        if (!ec) {
            linkMade = uc::FromFsPath(link);
            out << L"  linked as port " << com << L": " << linkMade << L"\n";
        }
    }
    if (battery) {
        treeMade = FakeBatteryTree(host.DevicePath());
        out << L"  detect it with: uctool power detect --sysfs " << treeMade << L"/sys --dev " << treeMade << L"/dev\n";
    } else if (com < 0) {
        out << L"  use it as a port with: uctool power detect --map 5=" << host.DevicePath() << L"\n";
    }
#endif
    out.flush();
    g_stop = false;
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds < 0 ? 0 : seconds);
    while (!g_stop && (seconds < 0 || std::chrono::steady_clock::now() < end))
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    host.Stop();
    std::error_code ec;
    if (!linkMade.empty()) fs::remove(uc::ToFsPath(linkMade), ec);
    if (!treeMade.empty()) fs::remove_all(uc::ToFsPath(treeMade), ec);
    out << what << L" simulator stopped after " << host.BytesReceived() << L" bytes received, " << host.BytesSent()
        << L" sent\n";
    return 0;
}

int Run(const Args& all, std::wostream& out, std::wostream& err) {
    if (all.empty()) {
        Usage(err);
        return 2;
    }
    using Action = int (*)(Args, std::wostream&, std::wostream&);
    const std::pair<const wchar_t*, Action> actions[] = {
        {L"detect", Detect}, {L"status", Status}, {L"watch", Watch}, {L"simulate", Simulate}};
    for (const auto& [name, action] : actions) {
        if (all[0] != name) continue;
        Args args(all.begin() + 1, all.end());
        bool bad = false;
        const LogOptions logging(args, err, bad);
        if (bad) {
            Usage(err);
            return 2;
        }
        return action(std::move(args), out, err);
    }
    err << L"uctool power: unknown action '" << all[0] << L"'\n";
    Usage(err);
    return 2;
}

const bool registered = Register({L"power", L"find and read the battery module or UPS; run device simulators", kUsage, Run});

}  // namespace
}  // namespace uctool::power
