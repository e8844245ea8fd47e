// Native port numbers: explicit map, "comN" folder, ttyS fall-back and the reverse lookup.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/serial/port_map.h"
#include "platform/text.h"
#include "support/temp_dir.h"

namespace {
namespace fs = std::filesystem;

class PortMapTest : public testing::Test {
protected:
    void SetUp() override {
        uc::serial::ClearPortMap();
        uc::serial::SetPortDirectory(dir.file(L"serial"));
        uc::serial::SetPortFallbackPattern(L"/dev/ttyS%d");
        fs::create_directories(uc::ToFsPath(dir.file(L"serial")));
    }
    void TearDown() override {
        uc::serial::ClearPortMap();
        uc::serial::SetPortFallbackPattern(L"");
    }
    uc::test::TempDir dir;
};

TEST_F(PortMapTest, ExplicitMapBeatsFolderBeatsFallback) {
    EXPECT_EQ(uc::serial::PortDevicePath(1), L"/dev/ttyS0") << "COM1 is the first legacy port";
    EXPECT_EQ(uc::serial::PortDevicePath(0), L"") << "there is no COM0";
    fs::create_symlink("/dev/null", uc::ToFsPath(dir.file(L"serial/com3")));
    EXPECT_EQ(uc::serial::PortDevicePath(3), dir.file(L"serial/com3"));
    uc::serial::MapPort(3, L"/dev/pts/9");
    EXPECT_EQ(uc::serial::PortDevicePath(3), L"/dev/pts/9");
    uc::serial::MapPort(3, L"");
    EXPECT_EQ(uc::serial::PortDevicePath(3), dir.file(L"serial/com3"));
    uc::serial::SetPortFallbackPattern(L"");
    EXPECT_EQ(uc::serial::PortDevicePath(4), L"");
    EXPECT_EQ(uc::serial::PortDevicePath(-1), L"");
}

TEST_F(PortMapTest, ReverseLookupFindsMappingsAndNumbersNewDevices) {
    const std::wstring target = dir.write(L"dev/ttyUSB0", "");
    fs::create_symlink(uc::ToFsPath(target), uc::ToFsPath(dir.file(L"serial/com6")));
    EXPECT_EQ(uc::serial::PortNumberForDevice(target), 6) << "found through the folder's symlink";
    const std::wstring other = dir.write(L"dev/ttyUSB1", "");
    const int n = uc::serial::PortNumberForDevice(other);
    EXPECT_EQ(n, uc::serial::FirstDynamicPort);
    EXPECT_EQ(uc::serial::PortDevicePath(n), other);
    EXPECT_EQ(uc::serial::PortNumberForDevice(other), n) << "stable on the second lookup";
    const std::wstring third = dir.write(L"dev/ttyUSB2", "");
    EXPECT_EQ(uc::serial::PortNumberForDevice(third), n + 1);
    EXPECT_EQ(uc::serial::PortNumberForDevice(L""), -1);
}

}  // namespace
