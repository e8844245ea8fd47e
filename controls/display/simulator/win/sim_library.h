// State shared by the simulated vendor libraries: the configuration they load, their monitors and test exports.
#pragma once

#include <windows.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "display/simulator/display_sim_config.h"
#include "display/simulator/monitor_engine.h"

namespace uc::display::sim {

// One per simulated library. The configuration is read on first use: the file $UC_DISPLAY_SIM names, else
// "display-sim.ini" beside the library, else one monitor per library.
class SimLibrary {
public:
    explicit SimLibrary(const char* card) : m_card(card) {}

    // Replaces the configuration (and the monitors with it); false with `error` on a text that does not parse.
    bool Configure(const std::string& text, std::string& error);
    const SimulationConfig& Config();
    std::vector<std::shared_ptr<SimulatedMonitor>>& Monitors();
    // Every monitor's transfers, one line each: "<monitor> W 6E 51 ...".
    std::string Log();
    void ClearLog();
    std::mutex& Mutex() { return m_mutex; }

private:
    void EnsureLoaded();
    void Apply(const SimulationConfig& config);

    const char* m_card;
    std::mutex m_mutex;
    bool m_loaded = false;
    SimulationConfig m_config;
    std::vector<std::shared_ptr<SimulatedMonitor>> m_monitors;
};

// The library's own state (each simulated DLL defines it).
SimLibrary& Library();

}  // namespace uc::display::sim

// Test and service exports, the same in every simulated library.
extern "C" {
// Replaces the simulation with `text` (the configuration file's format). 1 on success; else 0 and the reason.
__declspec(dllexport) int UcDisplaySim_Configure(const char* text, char* error, int errorSize);
// Copies the transfer log (NUL-terminated) and returns its full length including the NUL.
__declspec(dllexport) int UcDisplaySim_Log(char* buffer, int size);
__declspec(dllexport) void UcDisplaySim_ClearLog();
// A monitor's current VCP value (-1 for no such monitor) and its count of "save current settings".
__declspec(dllexport) int UcDisplaySim_Value(int monitor, int code);
__declspec(dllexport) int UcDisplaySim_Saves(int monitor);
}
