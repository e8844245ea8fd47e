// The simulated libraries' configuration loading, monitor set and test exports.
#include "display/simulator/win/sim_library.h"

#include <algorithm>
#include <cstring>

namespace uc::display::sim {

namespace {
std::string Environment(const char* name) {
    char value[1024];
    const DWORD n = ::GetEnvironmentVariableA(name, value, sizeof value);
    return n > 0 && n < sizeof value ? std::string(value, n) : std::string();
}

// "display-sim.ini" in the folder of the library holding this code.
std::string BesideLibrary() {
    HMODULE self = nullptr;
    ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCSTR>(&BesideLibrary), &self);
    char path[MAX_PATH];
    const DWORD n = ::GetModuleFileNameA(self, path, MAX_PATH);
    if (n == 0 || n >= MAX_PATH) return {};
    std::string folder(path, n);
    const std::size_t slash = folder.find_last_of("\\/");
    return (slash == std::string::npos ? std::string() : folder.substr(0, slash + 1)) + "display-sim.ini";
}
}  // namespace

void SimLibrary::EnsureLoaded() {
    if (m_loaded) return;
    m_loaded = true;
    SimulationConfig config;
    std::string source, error;
    // A file that does not load leaves no monitors: the technician sees nothing rather than a guess.
    if (!LoadSimulationConfig(Environment(ConfigVariable), BesideLibrary(), config, source, error)) config = {};
    Apply(config);
}

void SimLibrary::Apply(const SimulationConfig& config) {
    m_config = config;
    m_monitors.clear();
    for (const MonitorConfig& m : config.MonitorsOf(m_card)) m_monitors.push_back(std::make_shared<SimulatedMonitor>(m));
}

bool SimLibrary::Configure(const std::string& text, std::string& error) {
    SimulationConfig config;
    if (!ParseSimulationConfig(text, config, error)) return false;
    m_loaded = true;
    Apply(config);
    return true;
}

const SimulationConfig& SimLibrary::Config() {
    EnsureLoaded();
    return m_config;
}

std::vector<std::shared_ptr<SimulatedMonitor>>& SimLibrary::Monitors() {
    EnsureLoaded();
    return m_monitors;
}

std::string SimLibrary::Log() {
    std::string text;
    const auto& monitors = Monitors();
    for (std::size_t i = 0; i < monitors.size(); ++i)
        for (const Transfer& t : monitors[i]->Transfers()) text += std::to_string(i) + " " + FormatTransfer(t) + "\n";
    return text;
}

void SimLibrary::ClearLog() {
    for (auto& m : Monitors()) m->ClearTransfers();
}

}  // namespace uc::display::sim

using uc::display::sim::Library;

extern "C" {

int UcDisplaySim_Configure(const char* text, char* error, int errorSize) {
    std::lock_guard<std::mutex> lock(Library().Mutex());
    std::string why;
    if (Library().Configure(text ? text : "", why)) return 1;
    if (error && errorSize > 0) {
        const std::size_t n = std::min(why.size(), static_cast<std::size_t>(errorSize - 1));
        std::memcpy(error, why.data(), n);
        error[n] = 0;
    }
    return 0;
}

int UcDisplaySim_Log(char* buffer, int size) {
    std::lock_guard<std::mutex> lock(Library().Mutex());
    const std::string text = Library().Log();
    if (buffer && size > 0) {
        const std::size_t n = std::min(text.size(), static_cast<std::size_t>(size - 1));
        std::memcpy(buffer, text.data(), n);
        buffer[n] = 0;
    }
    return static_cast<int>(text.size() + 1);
}

void UcDisplaySim_ClearLog() {
    std::lock_guard<std::mutex> lock(Library().Mutex());
    Library().ClearLog();
}

int UcDisplaySim_Value(int monitor, int code) {
    std::lock_guard<std::mutex> lock(Library().Mutex());
    const auto& monitors = Library().Monitors();
    if (monitor < 0 || static_cast<std::size_t>(monitor) >= monitors.size()) return -1;
    return monitors[static_cast<std::size_t>(monitor)]->Value(static_cast<std::uint8_t>(code));
}

int UcDisplaySim_Saves(int monitor) {
    std::lock_guard<std::mutex> lock(Library().Mutex());
    const auto& monitors = Library().Monitors();
    if (monitor < 0 || static_cast<std::size_t>(monitor) >= monitors.size()) return -1;
    return monitors[static_cast<std::size_t>(monitor)]->Saves();
}
}
