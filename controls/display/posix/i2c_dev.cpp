// The thin ioctl layer: /dev/i2c-N opened read-write, one I2C_RDWR message per transfer.
#include <dirent.h>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "display/posix/i2c_dev.h"
#include "display/simulator/simulated_i2c_bus.h"
#include "platform/logger.h"
#include "platform/posix/fd.h"
#include "platform/text.h"

namespace uc::display {

namespace {

class DevI2cBus final : public I2cBus {
public:
    explicit DevI2cBus(UniqueFd fd) : m_fd(std::move(fd)) {}
    bool Write(std::uint8_t address7, const std::uint8_t* data, std::size_t size) override {
        return Transfer(address7, 0, const_cast<std::uint8_t*>(data), size);
    }
    bool Read(std::uint8_t address7, std::uint8_t* data, std::size_t size) override {
        return Transfer(address7, I2C_M_RD, data, size);
    }

private:
    // I2C_RDWR rather than I2C_SLAVE: it works even where a kernel driver has claimed the address (EDID at 0x50).
    bool Transfer(std::uint8_t address7, __u16 flags, std::uint8_t* data, std::size_t size) {
        if (size > 0xFFFF) return false;
        i2c_msg message{address7, flags, static_cast<__u16>(size), data};
        i2c_rdwr_ioctl_data request{&message, 1};
        return ::ioctl(m_fd.get(), I2C_RDWR, &request) >= 0;
    }
    UniqueFd m_fd;
};

class DevI2cBuses final : public I2cBusProvider {
public:
    DevI2cBuses(std::string dev, std::string sysfs) : m_dev(std::move(dev)), m_sysfs(std::move(sysfs)) {}

    std::vector<int> ListBuses() override {
        std::vector<int> buses;
        DIR* dir = ::opendir(m_dev.c_str());
        if (!dir) return buses;
        while (const dirent* entry = ::readdir(dir)) {
            const std::string name = entry->d_name;
            int bus = 0;
            if (name.rfind("i2c-", 0) != 0 || !ParseInt(FromUtf8(name.substr(4)), bus) || bus < 0) continue;
            if (!IsSystemBus(name)) buses.push_back(bus);
        }
        ::closedir(dir);
        std::sort(buses.begin(), buses.end());
        return buses;
    }

    std::unique_ptr<I2cBus> Open(int bus) override {
        UniqueFd fd(::open((m_dev + "/i2c-" + std::to_string(bus)).c_str(), O_RDWR | O_CLOEXEC));
        if (!fd) return nullptr;
        return std::make_unique<DevI2cBus>(std::move(fd));
    }

    std::wstring Describe() const override { return FromUtf8(m_dev); }

private:
    // Motherboard SMBus controllers carry memory and sensors, never a monitor: they are not probed.
    bool IsSystemBus(const std::string& name) const {
        std::ifstream in(m_sysfs + "/" + name + "/name");
        std::string adapter;
        std::getline(in, adapter);
        return adapter.rfind("SMBus", 0) == 0;
    }

    std::string m_dev, m_sysfs;
};

}  // namespace

std::unique_ptr<I2cBusProvider> DevI2cProvider(const std::string& devDir, const std::string& sysfsDir) {
    return std::make_unique<DevI2cBuses>(devDir, sysfsDir);
}

std::unique_ptr<I2cBusProvider> DefaultI2cProvider() {
    const char* path = std::getenv(sim::ConfigVariable);
    if (!path || !*path) return DevI2cProvider();
    sim::SimulationConfig config;
    std::string source, error;
    if (!sim::LoadSimulationConfig(path, "", config, source, error)) {
        UC_LOG(1)(L"Display simulation not loaded: %S", error.c_str());
        config = sim::SimulationConfig{};
    }
    return std::make_unique<sim::SimulatedI2cProvider>(config, L"simulation from " + FromUtf8(path));
}

}  // namespace uc::display
