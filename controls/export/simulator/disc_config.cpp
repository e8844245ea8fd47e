// Configuration of the simulated writer.
#include "export/simulator/disc_config.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "export/simulator/file_tree.h"

namespace uc::disc {

namespace {

struct Entry {
    Medium medium;
    MediumFacts facts;
};

// Capacities are the usual blank media: 80-minute CD, 1.3 GB DDCD, 4.7 GB DVD, 8.5 GB DL, 25 GB BD.
const Entry kMedia[] = {
    {Medium::None, {"none", 0, false, false, false, false, 0}},
    {Medium::CdRom, {"cd-rom", 359847, false, false, false, true, 0}},
    {Medium::CdR, {"cd-r", 359847, true, false, false, true, 8448}},
    {Medium::CdRw, {"cd-rw", 359847, true, true, false, true, 5632}},
    {Medium::DvdRom, {"dvd-rom", 2295104, false, false, false, false, 0}},
    {Medium::DvdR, {"dvd-r", 2298496, true, false, false, false, 22160}},
    {Medium::DvdRam, {"dvd-ram", 2236704, true, true, true, false, 6925}},
    {Medium::DvdRwRestricted, {"dvd-rw-ro", 2297888, true, true, true, false, 8310}},
    {Medium::DvdRwSequential, {"dvd-rw-sr", 2297888, true, true, false, false, 8310}},
    {Medium::DvdPlusRw, {"dvd+rw", 2295104, true, true, true, false, 11080}},
    {Medium::DdCdRom, {"ddcd-rom", 668000, false, false, false, true, 0}},
    {Medium::DdCdR, {"ddcd-r", 668000, true, false, false, true, 5632}},
    {Medium::DdCdRw, {"ddcd-rw", 668000, true, true, false, true, 2816}},
    {Medium::DvdPlusR, {"dvd+r", 2295104, true, false, false, false, 22160}},
    {Medium::DvdPlusRDl, {"dvd+r-dl", 4173824, true, false, false, false, 11080}},
    {Medium::DvdRDl, {"dvd-r-dl", 4171712, true, false, false, false, 11080}},
    {Medium::BdRom, {"bd-rom", 12219392, false, false, false, false, 0}},
    {Medium::BdR, {"bd-r", 12219392, true, false, false, false, 53940}},
    {Medium::BdRe, {"bd-re", 11826176, true, true, true, false, 8991}},
};

std::string_view Trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t' || s.front() == '\r')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
    return s;
}

bool ParseBool(std::string_view v, bool& out) {
    if (v == "1" || v == "yes" || v == "true" || v == "on") return out = true, true;
    if (v == "0" || v == "no" || v == "false" || v == "off") return out = false, true;
    return false;
}

bool ParseNumber(std::string_view v, std::int64_t low, std::int64_t high, std::int64_t& out) {
    if (v.empty() || v.size() > 18) return false;
    std::int64_t value = 0;
    bool negative = false;
    std::size_t i = 0;
    if (v[0] == '-') negative = true, i = 1;
    if (i == v.size()) return false;
    for (; i < v.size(); ++i) {
        if (v[i] < '0' || v[i] > '9') return false;
        value = value * 10 + (v[i] - '0');
    }
    if (negative) value = -value;
    if (value < low || value > high) return false;
    out = value;
    return true;
}

// Applies one setting; returns the problem, or an empty string.
std::string Apply(std::string_view key, std::string_view value, DiscConfig& c) {
    std::int64_t n = 0;
    bool b = false;
    auto number = [&](std::int64_t low, std::int64_t high) { return ParseNumber(value, low, high, n); };
    if (key == "image") {
        if (value.empty()) return "the image path is empty";
        c.image = std::string(value);
    } else if (key == "medium") {
        if (!MediumFromName(value, c.medium)) return "unknown medium '" + std::string(value) + "'";
    } else if (key == "state") {
        if (value == "blank") c.state = InitialState::Blank;
        else if (value == "appendable") c.state = InitialState::Appendable;
        else if (value == "closed") c.state = InitialState::Closed;
        else return "state is blank, appendable or closed";
    } else if (key == "capacity") {
        if (!number(1, 0x7FFFFFFF)) return "capacity is a number of blocks";
        c.capacity = n;
    } else if (key == "tao" || key == "bup" || key.rfind("fault.", 0) == 0) {
        if (key == "fault.not-ready") {
            if (!number(0, 1000000)) return "fault.not-ready is a count";
            c.notReady = static_cast<int>(n);
        } else if (key == "fault.write-error") {
            if (!value.empty() && value.back() == '%') {
                if (!ParseNumber(value.substr(0, value.size() - 1), 0, 100, n)) return "fault.write-error takes 0% to 100%";
                c.writeErrorPercent = static_cast<int>(n);
                c.writeErrorBlock = -1;
            } else {
                if (!number(-1, 0x7FFFFFFF)) return "fault.write-error is a block number or a percentage";
                c.writeErrorBlock = n;
                c.writeErrorPercent = -1;
            }
        } else if (key == "fault.free-blocks") {
            if (!number(-1, 0x7FFFFFFF)) return "fault.free-blocks is a number of blocks";
            c.freeBlocks = n;
        } else {
            bool* flag = key == "tao" ? &c.trackAtOnce
                         : key == "bup" ? &c.bufferUnderrunProtection
                         : key == "fault.no-medium" ? &c.noMedium
                         : key == "fault.close" ? &c.failClose
                         : key == "fault.erase" ? &c.failErase
                         : key == "fault.speeds" ? &c.failSpeeds
                         : key == "fault.opc" ? &c.failOpc
                         : key == "fault.eject" ? &c.failEject
                                                : nullptr;
            if (!flag) return "unknown setting '" + std::string(key) + "'";
            if (!ParseBool(value, b)) return std::string(key) + " is yes or no";
            *flag = b;
        }
    } else if (key == "devices") {
        if (!number(0, 8)) return "devices is 0 to 8";
        c.devices = static_cast<int>(n);
    } else if (key == "vendor" || key == "product" || key == "revision") {
        if (value.size() > 40) return std::string(key) + " is at most 40 characters";
        (key == "vendor" ? c.vendor : key == "product" ? c.product : c.revision) = std::string(value);
    } else if (key == "cache") {
        if (!number(0, 1 << 30)) return "cache is a number of bytes";
        c.cacheBytes = static_cast<std::uint32_t>(n);
    } else {
        return "unknown setting '" + std::string(key) + "'";
    }
    return {};
}

}  // namespace

const MediumFacts& FactsOf(Medium medium) {
    for (const Entry& e : kMedia)
        if (e.medium == medium) return e.facts;
    return kMedia[0].facts;
}

bool MediumFromName(std::string_view name, Medium& medium) {
    for (const Entry& e : kMedia)
        if (name == e.facts.name) return medium = e.medium, true;
    return false;
}

void ParseDiscConfig(std::string_view text, DiscConfig& config, std::vector<ConfigProblem>& problems) {
    int line = 1;
    std::size_t at = 0;
    while (at <= text.size()) {
        std::size_t end = text.find_first_of("\n;", at);
        if (end == std::string_view::npos) end = text.size();
        std::string_view item = text.substr(at, end - at);
        const std::size_t hash = item.find('#');
        if (hash != std::string_view::npos) item = item.substr(0, hash);
        item = Trim(item);
        if (!item.empty()) {
            const std::size_t eq = item.find('=');
            if (eq == std::string_view::npos) {
                problems.push_back({line, "'" + std::string(item) + "' is not a 'key = value' setting"});
            } else {
                const std::string why = Apply(Trim(item.substr(0, eq)), Trim(item.substr(eq + 1)), config);
                if (!why.empty()) problems.push_back({line, why});
            }
        }
        if (end < text.size() && text[end] == '\n') ++line;
        at = end + 1;
    }
}

DiscConfig LoadDiscConfig(std::vector<ConfigProblem>& problems) {
    DiscConfig config;
    std::error_code ec;
    config.image = PathUtf8(std::filesystem::temp_directory_path(ec) / "starburn-disc.iso");
    if (const char* file = std::getenv("UC_STARBURN_CONFIG"); file && *file) {
        std::ifstream in(PathFromUtf8(file), std::ios::binary);
        if (!in) {
            problems.push_back({0, std::string("cannot read the configuration '") + file + "'"});
        } else {
            std::ostringstream text;
            text << in.rdbuf();
            ParseDiscConfig(text.str(), config, problems);
        }
    }
    if (const char* settings = std::getenv("UC_STARBURN_SET"); settings && *settings)
        ParseDiscConfig(settings, config, problems);
    return config;
}

}  // namespace uc::disc
