// Test lines under Wine: COM port pairs joined by socat, announced in UC_TEST_COM_PAIRS.
#include <windows.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
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
// Reads from `port` until `marker` has arrived, discarding everything before it; false after `limitMs`.
bool ReadThrough(uc::serial::PortBackend& port, const std::string& marker, int limitMs) {
    std::mutex m;
    std::condition_variable cv;
    bool done = false;
    std::thread watchdog([&] {
        std::unique_lock<std::mutex> g(m);
        if (!cv.wait_for(g, std::chrono::milliseconds(limitMs), [&] { return done; })) port.CancelRead();
    });
    std::string seen;
    unsigned char chunk[256];
    bool found = false;
    while (!found) {
        const int n = port.Read(chunk, sizeof chunk);
        if (n <= 0) break;
        seen.append(reinterpret_cast<const char*>(chunk), static_cast<std::size_t>(n));
        found = seen.find(marker) != std::string::npos;
    }
    {
        std::lock_guard<std::mutex> g(m);
        done = true;
    }
    cv.notify_all();
    watchdog.join();
    return found;
}

// A COM pair outlives the test that used it: bytes still travelling between its ends (a reply to the
// last command, a command the device never read) would reach the next test's code as if they were
// new. A marker sent each way and read through on the far end empties both directions first.
bool FlushPair(int console, int device) {
    DCB dcb{};
    uc::serial::DefaultLineSetup(dcb, 38400);
    std::wstring error;
    auto a = uc::serial::OpenPortBackend(console, dcb, error);
    auto b = uc::serial::OpenPortBackend(device, dcb, error);
    if (!a || !b) return false;
    static int round = 0;
    const std::string marker = "\x01uc-flush-" + std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(++round) + "\x02";
    const auto* bytes = reinterpret_cast<const unsigned char*>(marker.data());
    const auto size = static_cast<unsigned int>(marker.size());
    return b->Write(bytes, size) && ReadThrough(*a, marker, 5000) && a->Write(bytes, size) && ReadThrough(*b, marker, 5000);
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
    const auto [console, device] = pairs[static_cast<std::size_t>(index)];
    if (!FlushPair(console, device)) return false;
    DCB dcb{};
    uc::serial::DefaultLineSetup(dcb, 38400);
    std::wstring error;
    line.device = uc::serial::OpenPortBackend(device, dcb, error);
    line.port = pairs[static_cast<std::size_t>(index)].first;
    return line.device != nullptr;
}

int StartSimulator(uc::power::sim::SimulatorHost& host, int index, int baud) {
    auto pairs = Pairs();
    if (index >= static_cast<int>(pairs.size())) return -1;
    const auto [console, device] = pairs[static_cast<std::size_t>(index)];
    if (!FlushPair(console, device) || !host.StartOnPort(device, baud)) return -1;
    return pairs[static_cast<std::size_t>(index)].first;
}

bool PortsAreExclusive() {
    // Windows refuses a second open of a COM port; Wine does not enforce that.
    HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
    return !(ntdll && ::GetProcAddress(ntdll, "wine_get_version"));
}

}  // namespace uc::test
