// The registry names of the USB serial lookup and the PortName parsing, on every platform.
#include <gtest/gtest.h>

#include "platform/serial/usb_serial_lookup.h"

namespace {
using uc::serial::PortNumberFromPortName;

TEST(UsbNames, PortNameBecomesItsNumber) {
    EXPECT_EQ(PortNumberFromPortName(L"COM12"), 12);
    EXPECT_EQ(PortNumberFromPortName(L"COM7"), 7);
    EXPECT_EQ(PortNumberFromPortName(L"COM"), 0);
    EXPECT_EQ(PortNumberFromPortName(L"XYZ3x"), 3) << "the first three characters are not looked at";
    EXPECT_EQ(PortNumberFromPortName(L""), 0);
    EXPECT_EQ(PortNumberFromPortName(L"COM99999999999"), -1) << "overflow is no port";
}

TEST(UsbNames, KeysForCompositeAndPlainDevices) {
    EXPECT_EQ(uc::serial::CompositeDeviceKey(0x10C4, 0xEA60, "0001"),
              L"Vid_10C4&Pid_EA60&Mi_00\\0001_00\\Device Parameters\\");
    EXPECT_EQ(uc::serial::PlainDeviceKey(0x10C4, 0xEA60, "0001"), L"Vid_10C4&Pid_EA60\\0001\\Device Parameters\\");
    EXPECT_EQ(uc::serial::PlainDeviceKey(0xA, 0xB, "x"), L"Vid_000A&Pid_000B\\x\\Device Parameters\\");
    EXPECT_EQ(uc::serial::RegistrySerial("00 01 "), "00_01_");
}

}  // namespace
