// The registry lookup of USB serial ports (Windows): composite key first, plain key second, FTDI instances.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "platform/serial/ftdi_port.h"
#include "platform/serial/usb_serial_lookup.h"
#include "power/battery_monitor.h"

namespace {

class RegistryLookupTest : public testing::Test {
protected:
    void SetUp() override {
        m_root = L"Software\\utils_controls-test\\usb-" + std::to_wstring(::GetCurrentProcessId());
        ::RegDeleteTreeW(HKEY_CURRENT_USER, m_root.c_str());
        Create(L"SYSTEM\\CurrentControlSet\\Enum\\USB");
        uc::serial::SetDeviceRegistryRoot(L"HKEY_CURRENT_USER\\" + m_root);
    }
    void TearDown() override {
        uc::serial::SetDeviceRegistryRoot(L"");
        ::RegDeleteTreeW(HKEY_CURRENT_USER, m_root.c_str());
    }
    void Create(const std::wstring& sub, const wchar_t* portName = nullptr) {
        HKEY key = nullptr;
        ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, (m_root + L"\\" + sub).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                    nullptr, &key, nullptr),
                  ERROR_SUCCESS);
        if (portName)
            ::RegSetValueExW(key, L"PortName", 0, REG_SZ, reinterpret_cast<const BYTE*>(portName),
                             static_cast<DWORD>((wcslen(portName) + 1) * sizeof(wchar_t)));
        ::RegCloseKey(key);
    }
    std::wstring m_root;
};

const std::wstring kUsb = L"SYSTEM\\CurrentControlSet\\Enum\\USB\\";

TEST_F(RegistryLookupTest, CompositeKeyWinsOverPlainKey) {
    Create(kUsb + L"Vid_10C4&Pid_EA60\\0001\\Device Parameters", L"COM3");
    Create(kUsb + L"Vid_10C4&Pid_EA60&Mi_00\\0001_00\\Device Parameters", L"COM12");
    EXPECT_EQ(uc::serial::FindUsbSerialPort(0x10C4, 0xEA60, "0001"), 12);
}

TEST_F(RegistryLookupTest, PlainKeyAloneIsFound) {
    Create(kUsb + L"Vid_10C4&Pid_EA60\\0001\\Device Parameters", L"COM7");
    EXPECT_EQ(uc::serial::FindUsbSerialPort(0x10C4, 0xEA60, "0001"), 7);
    EXPECT_EQ(uc::serial::FindUsbSerialPort(0x10C4, 0xEA60, "0002"), -1);
}

TEST_F(RegistryLookupTest, SpacesInTheSerialBecomeUnderscores) {
    Create(kUsb + L"Vid_10C4&Pid_EA60\\00_01\\Device Parameters", L"COM5");
    char serial[] = "00 01";
    EXPECT_EQ(BatteryMonitor::GetPortNumber(0x10C4, 0xEA60, serial), 5);
    EXPECT_STREQ(serial, "00_01");
}

TEST_F(RegistryLookupTest, MissingPortNameOrTreeGivesMinusOne) {
    Create(kUsb + L"Vid_10C4&Pid_EA60\\0001\\Device Parameters");
    EXPECT_EQ(uc::serial::FindUsbSerialPort(0x10C4, 0xEA60, "0001"), -1);
    uc::serial::SetDeviceRegistryRoot(L"HKEY_CURRENT_USER\\Software\\utils_controls-test\\nothing-here");
    EXPECT_EQ(uc::serial::FindUsbSerialPort(0x10C4, 0xEA60, "0001"), -1);
    EXPECT_EQ(FTDIPort::GetCOMPortNum(), -1);
}

TEST_F(RegistryLookupTest, FtdiInstanceIsFound) {
    Create(L"SYSTEM\\CurrentControlSet\\Enum\\FTDIBUS\\VID_0403+PID_6001+A1B2C3\\0000\\Device Parameters", L"COM9");
    EXPECT_EQ(FTDIPort::GetCOMPortNum(), 9);
}

}  // namespace
