// Portable helpers of the USB serial lookup: registry key names and PortName parsing.
#include <cwctype>

#include "platform/serial/usb_serial_lookup.h"
#include "platform/text.h"

namespace uc::serial {

int PortNumberFromPortName(const std::wstring& portName) {
    std::wstring s = portName;
    for (std::size_t i = 0; i < 3 && i < s.size(); ++i) s[i] = L'0';
    // Leading number, as the C library's wtoi reads it: blanks, a sign, digits up to the first non-digit.
    std::size_t i = 0;
    while (i < s.size() && std::iswspace(s[i])) ++i;
    bool negative = false;
    if (i < s.size() && (s[i] == L'+' || s[i] == L'-')) negative = s[i++] == L'-';
    long long v = 0;
    while (i < s.size() && s[i] >= L'0' && s[i] <= L'9') {
        v = v * 10 + (s[i++] - L'0');
        if (v > 0x7FFFFFFF) return -1;
    }
    return static_cast<int>(negative ? -v : v);
}

std::string RegistrySerial(std::string serial) {
    for (char& c : serial)
        if (c == ' ') c = '_';
    return serial;
}

std::wstring CompositeDeviceKey(unsigned short vendorId, unsigned short productId, const std::string& serial) {
    return Format(L"Vid_%04X&Pid_%04X&Mi_00\\%S_00\\Device Parameters\\", vendorId, productId, serial.c_str());
}

std::wstring PlainDeviceKey(unsigned short vendorId, unsigned short productId, const std::string& serial) {
    return Format(L"Vid_%04X&Pid_%04X\\%S\\Device Parameters\\", vendorId, productId, serial.c_str());
}

}  // namespace uc::serial
