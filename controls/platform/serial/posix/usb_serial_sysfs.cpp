// USB serial lookup through sysfs: ttys whose USB device matches vendor, product and serial number.
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "platform/serial/port_map.h"
#include "platform/serial/usb_serial_lookup.h"
#include "platform/text.h"

namespace uc::serial {
namespace {
namespace fs = std::filesystem;

std::mutex g_mutex;
std::wstring g_sysfs = L"/sys";
std::wstring g_dev = L"/dev";

std::optional<std::string> ReadAttr(const fs::path& file) {
    std::ifstream in(file);
    if (!in) return std::nullopt;
    std::string s;
    std::getline(in, s);
    while (!s.empty() && (s.back() == '\r' || s.back() == ' ' || s.back() == '\t')) s.pop_back();
    return s;
}

std::optional<unsigned> ReadHex(const fs::path& file) {
    auto s = ReadAttr(file);
    if (!s || s->empty()) return std::nullopt;
    try {
        std::size_t used = 0;
        unsigned long v = std::stoul(*s, &used, 16);
        if (used != s->size() || v > 0xFFFF) return std::nullopt;
        return static_cast<unsigned>(v);
    } catch (...) {
        return std::nullopt;
    }
}

struct Candidate {
    std::string tty;
    unsigned vendor = 0, product = 0;
    std::string serial;
    int interfaceNumber = -1;  // -1 unknown
};

// Every tty that sits below a USB device, with that device's identity.
std::vector<Candidate> UsbTtys(const fs::path& sysfs) {
    std::vector<Candidate> out;
    std::error_code ec;
    const fs::path root = fs::weakly_canonical(sysfs, ec);
    for (const auto& entry : fs::directory_iterator(sysfs / "class" / "tty", ec)) {
        std::error_code e2;
        const fs::path device = entry.path() / "device";
        if (!fs::exists(device, e2)) continue;
        fs::path dir = fs::weakly_canonical(device, e2);
        if (e2) continue;
        Candidate c;
        c.tty = entry.path().filename().string();
        // Walk up to the USB device (the first folder with idVendor), noting the interface on the way.
        for (int depth = 0; depth < 16 && !dir.empty(); ++depth) {
            if (c.interfaceNumber < 0)
                if (auto n = ReadHex(dir / "bInterfaceNumber")) c.interfaceNumber = static_cast<int>(*n);
            if (auto v = ReadHex(dir / "idVendor")) {
                c.vendor = *v;
                c.product = ReadHex(dir / "idProduct").value_or(0);
                c.serial = ReadAttr(dir / "serial").value_or("");
                out.push_back(c);
                break;
            }
            if (dir == root || dir == dir.parent_path()) break;
            dir = dir.parent_path();
        }
    }
    return out;
}

int PortFor(const std::vector<Candidate>& all, auto&& match) {
    const Candidate* best = nullptr;
    for (const Candidate& c : all) {
        if (!match(c)) continue;
        // Interface 0 first (the composite device's first function), then the lowest tty name.
        auto rank = [](const Candidate& x) { return x.interfaceNumber == 0 ? 0 : 1; };
        if (!best || rank(c) < rank(*best) || (rank(c) == rank(*best) && c.tty < best->tty)) best = &c;
    }
    if (!best) return -1;
    std::wstring dev;
    {
        std::lock_guard<std::mutex> g(g_mutex);
        dev = g_dev;
    }
    return PortNumberForDevice(FromFsPath(ToFsPath(dev) / best->tty));
}

fs::path Sysfs() {
    std::lock_guard<std::mutex> g(g_mutex);
    return ToFsPath(g_sysfs);
}
}  // namespace

int FindUsbSerialPort(unsigned short vendorId, unsigned short productId, const std::string& serialNumber) {
    const std::string wanted = RegistrySerial(serialNumber);
    return PortFor(UsbTtys(Sysfs()), [&](const Candidate& c) {
        return c.vendor == vendorId && c.product == productId && RegistrySerial(c.serial) == wanted;
    });
}

int FindUsbSerialPortOfVendor(unsigned short vendorId) {
    return PortFor(UsbTtys(Sysfs()), [&](const Candidate& c) { return c.vendor == vendorId; });
}

void SetDeviceRegistryRoot(const std::wstring&) {}

void SetSysfsRoot(const std::wstring& path) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_sysfs = path.empty() ? L"/sys" : path;
}

void SetDeviceRoot(const std::wstring& path) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_dev = path.empty() ? L"/dev" : path;
}

std::wstring UsbSerialLookupPlace() { return GetSysfsRoot() + L"/class/tty"; }

std::wstring GetSysfsRoot() {
    std::lock_guard<std::mutex> g(g_mutex);
    return g_sysfs;
}

std::wstring GetDeviceRoot() {
    std::lock_guard<std::mutex> g(g_mutex);
    return g_dev;
}

}  // namespace uc::serial
