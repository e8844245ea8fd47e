// The i2c-dev layer over a fake /dev and sysfs: which buses are listed, and transfers on a node that is no bus.
#include <gtest/gtest.h>

#include <cstdlib>

#include "display/i2c_bus_driver.h"
#include "display/posix/i2c_dev.h"
#include "platform/text.h"
#include "support/temp_dir.h"

namespace {
using uc::ToUtf8;

TEST(I2cDev, ListsNumberedBusesInOrderWithoutSystemSmbus) {
    uc::test::TempDir dev, sysfs;
    for (const wchar_t* name : {L"i2c-10", L"i2c-2", L"i2c-x", L"i2c-", L"tty0", L"i2c-3"}) dev.write(name, "");
    sysfs.write(L"i2c-3/name", "SMBus I801 adapter at efa0\n");
    sysfs.write(L"i2c-2/name", "NVIDIA i2c adapter 1 at 1:00.0\n");
    auto provider = uc::display::DevI2cProvider(ToUtf8(dev.path()), ToUtf8(sysfs.path()));
    EXPECT_EQ(provider->ListBuses(), (std::vector<int>{2, 10}));
    EXPECT_EQ(provider->Describe(), dev.path());
    // A node that is not an i2c-dev device opens but refuses the transfer ioctl.
    auto bus = provider->Open(2);
    ASSERT_NE(bus, nullptr);
    const std::uint8_t byte = 0;
    std::uint8_t reply[10];
    EXPECT_FALSE(bus->Write(0x37, &byte, 1));
    EXPECT_FALSE(bus->Read(0x37, reply, sizeof reply));
    EXPECT_EQ(provider->Open(7), nullptr);
    // The driver over such buses finds nothing and says so without failing.
    I2cBusDriver driver(uc::display::DevI2cProvider(ToUtf8(dev.path()), ToUtf8(sysfs.path())));
    EXPECT_TRUE(driver.IsInitialized());
    EXPECT_EQ(driver.Enumerate(), 0u);
    EXPECT_TRUE(uc::display::DevI2cProvider("/nonexistent-dev")->ListBuses().empty());
}

TEST(I2cDev, TheSimulationFileStandsInForTheMachinesBuses) {
    uc::test::TempDir dir;
    const std::wstring file = dir.write(L"sim.ini", "[monitor]\nname = Bench\ncount = 3\n");
    ::setenv("UC_DISPLAY_SIM", ToUtf8(file).c_str(), 1);
    auto provider = uc::display::DefaultI2cProvider();
    ::unsetenv("UC_DISPLAY_SIM");
    EXPECT_EQ(provider->ListBuses().size(), 3u);
    EXPECT_EQ(provider->Describe(), L"simulation from " + file);
}

}  // namespace
