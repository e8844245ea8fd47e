// Parser of the simulated display configuration and its defaults.
#include "display/simulator/display_sim_config.h"

#include <cctype>
#include <fstream>
#include <sstream>

namespace uc::display::sim {

MonitorConfig::MonitorConfig() {
    vcp[0x10] = {50, 100};
    vcp[0x12] = {70, 100};
    vcp[0x14] = {5, 11};
    vcp[0x16] = {50, 100};
    vcp[0x18] = {50, 100};
    vcp[0x1A] = {50, 100};
    vcp[0xE1] = {0, 255};  // the maker's page switch; 0xE0 opens the page holding 0xE2
    vcp[0xE2] = {1, 1};    // Auto EcoView, on as delivered
}

SimulationConfig SimulationConfig::Default() {
    SimulationConfig c;
    MonitorConfig nvidia;
    nvidia.name = "UC SIM NVIDIA";
    MonitorConfig amd;
    amd.name = "UC SIM AMD";
    amd.card = "amd";
    c.monitors = {nvidia, amd};
    return c;
}

std::vector<MonitorConfig> SimulationConfig::MonitorsOf(const std::string& card) const {
    std::vector<MonitorConfig> out;
    for (const MonitorConfig& m : monitors)
        if (card.empty() || m.card == card) out.push_back(m);
    return out;
}

namespace {

std::string Trim(const std::string& s) {
    std::size_t b = 0, e = s.size();
    while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
    return s.substr(b, e - b);
}

std::string Lower(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// A whole number within [low, high] in base 10 (or 16 with `hex`).
bool Number(const std::string& text, long long low, long long high, long long& value, bool hex = false) {
    const std::string t = Trim(text);
    if (t.empty() || t.size() > 10) return false;
    std::size_t i = 0;
    bool negative = false;
    if (!hex && t[0] == '-') {
        negative = true;
        i = 1;
    }
    if (i == t.size()) return false;
    long long v = 0;
    for (; i < t.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(t[i]);
        int digit;
        if (std::isdigit(c)) digit = c - '0';
        else if (hex && std::isxdigit(c)) digit = std::tolower(c) - 'a' + 10;
        else return false;
        v = v * (hex ? 16 : 10) + digit;
    }
    value = negative ? -v : v;
    return value >= low && value <= high;
}

std::vector<std::string> List(const std::string& text) {
    std::vector<std::string> items;
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, ',')) {
        item = Trim(item);
        if (!item.empty()) items.push_back(item);
    }
    return items;
}

bool SetFault(MonitorFaults& f, const std::string& name) {
    if (name == "result-code") f.resultCode = true;
    else if (name == "other-code") f.otherCode = true;
    else if (name == "type-byte") f.typeByte = true;
    else if (name == "bad-checksum") f.badChecksum = true;
    else if (name == "fail") f.fail = true;
    else if (name == "no-edid") f.noEdid = true;
    else if (name == "ecoview-stuck") f.ecoViewStuck = true;
    else return false;
    return true;
}

class Parser {
public:
    explicit Parser(SimulationConfig& config) : m_config(config) {}

    bool Line(const std::string& raw, std::string& why) {
        const std::string line = Trim(raw);
        if (line.empty() || line[0] == '#' || line[0] == ';') return true;
        if (line.front() == '[') {
            if (line.back() != ']') return Fail(why, "a section header needs a closing ']'");
            return Section(Lower(Trim(line.substr(1, line.size() - 2))), why);
        }
        const std::size_t eq = line.find('=');
        if (eq == std::string::npos) return Fail(why, "expected 'key = value'");
        const std::string key = Lower(Trim(line.substr(0, eq)));
        std::string value = Trim(line.substr(eq + 1));
        const std::size_t comment = value.find(" #");
        if (comment != std::string::npos) value = Trim(value.substr(0, comment));
        switch (m_section) {
        case None: return Fail(why, "a key outside a section");
        case Monitor: return MonitorKey(key, value, why);
        case Adapter: return AdapterKey(key, value, why);
        case Nvapi:
            if (key != "missing") return Fail(why, "unknown key '" + key + "' in [nvapi]");
            for (const std::string& f : List(value)) m_config.missingFunctions.insert(f);
            return true;
        }
        return true;
    }

    // Copies of a monitor asked for with "count" are made once its section is complete.
    void Finish() { Replicate(); }

private:
    enum SectionKind { None, Monitor, Adapter, Nvapi };

    static bool Fail(std::string& why, const std::string& text) {
        why = text;
        return false;
    }

    bool Section(const std::string& name, std::string& why) {
        Replicate();
        if (name == "monitor") {
            m_section = Monitor;
            m_config.monitors.emplace_back();
            m_count = 1;
        } else if (name == "adapter") {
            m_section = Adapter;
            m_config.adapters.emplace_back();
        } else if (name == "nvapi") {
            m_section = Nvapi;
        } else {
            return Fail(why, "unknown section [" + name + "]");
        }
        return true;
    }

    bool MonitorKey(const std::string& key, const std::string& value, std::string& why) {
        MonitorConfig& m = m_config.monitors.back();
        long long n = 0;
        if (key == "name") {
            m.name = value.substr(0, 64);
        } else if (key == "card") {
            if (value != "nvidia" && value != "amd") return Fail(why, "card is nvidia or amd");
            m.card = value;
        } else if (key == "count") {
            if (!Number(value, 1, 64, n)) return Fail(why, "count is 1 to 64");
            m_count = static_cast<int>(n);
        } else if (key.rfind("vcp.", 0) == 0) {
            long long code = 0, current = 0, maximum = 0;
            const std::size_t slash = value.find('/');
            if (!Number(key.substr(4), 0, 255, code, true)) return Fail(why, "vcp.XX takes a hexadecimal code");
            if (slash == std::string::npos || !Number(value.substr(0, slash), 0, 65535, current) ||
                !Number(value.substr(slash + 1), 0, 65535, maximum))
                return Fail(why, "a VCP value is CURRENT/MAXIMUM, each 0 to 65535");
            m.vcp[static_cast<std::uint8_t>(code)] = {static_cast<std::uint16_t>(current),
                                                      static_cast<std::uint16_t>(maximum)};
        } else if (key == "no-vcp") {
            for (const std::string& c : List(value)) {
                if (!Number(c, 0, 255, n, true)) return Fail(why, "no-vcp takes hexadecimal codes");
                m.vcp.erase(static_cast<std::uint8_t>(n));
            }
        } else if (key == "faults") {
            for (const std::string& f : List(value))
                if (!SetFault(m.faults, f)) return Fail(why, "unknown fault '" + f + "'");
        } else if (key == "fault-codes") {
            for (const std::string& c : List(value)) {
                if (!Number(c, 0, 255, n, true)) return Fail(why, "fault-codes takes hexadecimal codes");
                m.faults.codes.insert(static_cast<std::uint8_t>(n));
            }
        } else if (key == "stop-after") {
            if (!Number(value, 0, 1000000, n)) return Fail(why, "stop-after is a number of transfers");
            m.faults.answerCount = static_cast<int>(n);
        } else if (key == "corrupt-every") {
            if (!Number(value, 1, 1000000, n)) return Fail(why, "corrupt-every is a positive number");
            m.faults.corruptEvery = static_cast<int>(n);
        } else if (key == "adapter" || key == "display") {
            if (!Number(value, 0, 1000, n)) return Fail(why, key + " is 0 to 1000");
            (key == "adapter" ? m.adapter : m.display) = static_cast<int>(n);
        } else if (key == "connected" || key == "mapped") {
            if (!Number(value, 0, 1, n)) return Fail(why, key + " is 0 or 1");
            (key == "connected" ? m.connected : m.mapped) = n != 0;
        } else {
            return Fail(why, "unknown key '" + key + "' in [monitor]");
        }
        return true;
    }

    bool AdapterKey(const std::string& key, const std::string& value, std::string& why) {
        AdapterConfig& a = m_config.adapters.back();
        long long n = 0;
        if (!Number(value, 0, 1000, n)) return Fail(why, key + " is 0 to 1000");
        if (key == "index") a.index = static_cast<int>(n);
        else if (key == "bus") a.bus = static_cast<int>(n);
        else if (key == "device") a.device = static_cast<int>(n);
        else if (key == "function") a.function = static_cast<int>(n);
        else return Fail(why, "unknown key '" + key + "' in [adapter]");
        return true;
    }

    void Replicate() {
        if (m_section != Monitor || m_count <= 1) return;
        const MonitorConfig base = m_config.monitors.back();
        m_config.monitors.back().name = base.name.empty() ? "" : base.name + " 1";
        for (int i = 2; i <= m_count; ++i) {
            MonitorConfig copy = base;
            if (!copy.name.empty()) copy.name += " " + std::to_string(i);
            m_config.monitors.push_back(copy);
        }
        m_count = 1;
    }

    SimulationConfig& m_config;
    SectionKind m_section = None;
    int m_count = 1;
};

}  // namespace

bool ParseSimulationConfig(const std::string& text, SimulationConfig& config, std::string& error) {
    SimulationConfig parsed;
    Parser parser(parsed);
    std::stringstream in(text);
    std::string line, why;
    for (int number = 1; std::getline(in, line); ++number) {
        if (!parser.Line(line, why)) {
            error = "line " + std::to_string(number) + ": " + why;
            return false;
        }
    }
    parser.Finish();
    config = std::move(parsed);
    return true;
}

bool LoadSimulationConfig(const std::string& path, const std::string& fallbackPath, SimulationConfig& config,
                          std::string& source, std::string& error) {
    const std::string& file = !path.empty() ? path : fallbackPath;
    std::ifstream in(file, std::ios::binary);
    if (file.empty() || !in) {
        if (!path.empty()) {
            error = "cannot read " + path;
            return false;
        }
        config = SimulationConfig::Default();
        source = "built-in default";
        return true;
    }
    std::ostringstream text;
    text << in.rdbuf();
    if (!ParseSimulationConfig(text.str(), config, error)) {
        error = file + ": " + error;
        return false;
    }
    source = file;
    return true;
}

}  // namespace uc::display::sim
