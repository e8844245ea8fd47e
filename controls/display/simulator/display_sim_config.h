// What the simulated display hardware looks like: monitors, their VCP tables and faults, adapters, vendor quirks.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace uc::display::sim {

struct VcpValue {
    std::uint16_t current = 0;
    std::uint16_t maximum = 100;
};

// Misbehaviour on demand; several may be on at once.
struct MonitorFaults {
    bool resultCode = false;    // Get VCP replies carry result code 1 (unsupported)
    bool otherCode = false;     // Get VCP replies name the next VCP code instead of the one asked for
    bool typeByte = false;      // Get VCP replies carry type byte 1 (momentary)
    bool badChecksum = false;   // Get VCP replies carry a wrong checksum
    bool fail = false;          // every transfer fails (no acknowledge)
    bool noEdid = false;        // the EDID cannot be read
    bool ecoViewStuck = false;  // writes to 0xE2 are ignored
    int answerCount = -1;       // >= 0: stops answering after this many transfers
    int corruptEvery = 0;       // > 0: every Nth Get VCP reply gets a wrong checksum and a garbled value
    std::set<std::uint8_t> codes;  // the reply faults above hit only these codes (empty: every code)
};

struct MonitorConfig {
    std::string name = "UC SIM";    // EDID monitor name; empty: no name block
    std::string card = "nvidia";    // "nvidia" or "amd": which simulated vendor library shows it
    std::map<std::uint8_t, VcpValue> vcp;
    MonitorFaults faults;
    // Placement seen through ADL: adapter record and display logical index (-1: chosen automatically), and
    // the connected/mapped bits of its display record.
    int adapter = -1;
    int display = -1;
    bool connected = true;
    bool mapped = true;

    MonitorConfig();  // brightness 50/100, contrast 70/100, preset 5/11, gains 50/100, 0xE1 and 0xE2 (EcoView 1/1)
};

struct AdapterConfig {
    int index = 0;
    int bus = 0;
    int device = 0;
    int function = 0;
};

struct SimulationConfig {
    std::vector<MonitorConfig> monitors;
    std::vector<AdapterConfig> adapters;     // ADL adapter records; missing ones are made per monitor
    std::set<std::string> missingFunctions;  // NVAPI functions nvapi_QueryInterface denies ("I2CRead", ...)

    // One monitor on each vendor library: "UC SIM NVIDIA" and "UC SIM AMD".
    static SimulationConfig Default();
    // The monitors of one card ("nvidia", "amd"), or all of them for an empty card.
    std::vector<MonitorConfig> MonitorsOf(const std::string& card) const;
};

// Reads the configuration text (see docs/display.md): "[monitor]", "[adapter]" and "[nvapi]" sections of
// "key = value" lines, '#' or ';' comments. On failure returns false with `error` naming the line.
bool ParseSimulationConfig(const std::string& text, SimulationConfig& config, std::string& error);

// The environment variable naming a configuration file.
constexpr const char* ConfigVariable = "UC_DISPLAY_SIM";

// The configuration a simulated library or the i2c-dev simulation uses: the file `path` names (the value of
// $UC_DISPLAY_SIM, which callers read in their platform's way), else `fallbackPath` when it exists, else the
// default. `source` says which one was used. False when a named file is missing or does not parse.
bool LoadSimulationConfig(const std::string& path, const std::string& fallbackPath, SimulationConfig& config,
                          std::string& source, std::string& error);

}  // namespace uc::display::sim
