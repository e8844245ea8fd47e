// Test lines under Wine: COM port pairs joined by socat, announced in UC_TEST_COM_PAIRS.
#include <windows.h>

#include <cstdlib>
#include <sstream>
#include <vector>

#include "platform/serial/port_map.h"
#include "platform/serial/test_line.h"
#include "platform/text.h"

namespace uc::test {

namespace {
std::vector<std::pair<int, int>> Pairs() {
    std::vector<std::pair<int, int>> out;
    const char* env = std::getenv("UC_TEST_COM_PAIRS");
    if (!env) return out;
    std::stringstream ss(env);
    std::string item;
    while (std::getline(ss, item, ',')) {
        const auto colon = item.find(':');
        if (colon == std::string::npos) continue;
        out.emplace_back(std::atoi(item.substr(0, colon).c_str()), std::atoi(item.substr(colon + 1).c_str()));
    }
    return out;
}
}  // namespace

void IsolateSerialPorts() {}

bool LinesAvailable(std::string* why) {
    if (!Pairs().empty()) return true;
    if (why) *why = "UC_TEST_COM_PAIRS is not set: run through tests/power/win/com-pairs.sh";
    return false;
}

int LinePort(int index) {
    auto pairs = Pairs();
    return index < static_cast<int>(pairs.size()) ? pairs[static_cast<std::size_t>(index)].first : -1;
}

bool OpenRawLine(int index, RawLine& line) {
    auto pairs = Pairs();
    if (index >= static_cast<int>(pairs.size())) return false;
    DCB dcb{};
    uc::serial::DefaultLineSetup(dcb, 38400);
    std::wstring error;
    line.device = uc::serial::OpenPortBackend(pairs[static_cast<std::size_t>(index)].second, dcb, error);
    line.port = pairs[static_cast<std::size_t>(index)].first;
    return line.device != nullptr;
}

int StartSimulator(uc::power::sim::SimulatorHost& host, int index, int baud) {
    auto pairs = Pairs();
    if (index >= static_cast<int>(pairs.size())) return -1;
    if (!host.StartOnPort(pairs[static_cast<std::size_t>(index)].second, baud)) return -1;
    return pairs[static_cast<std::size_t>(index)].first;
}

bool PortsAreExclusive() {
    // Windows refuses a second open of a COM port; Wine does not enforce that.
    HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
    return !(ntdll && ::GetProcAddress(ntdll, "wine_get_version"));
}

}  // namespace uc::test
