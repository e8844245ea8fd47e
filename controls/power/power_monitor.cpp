// The power-monitor factory: battery module first, UPS second.
#include "power/power_monitor.h"

#include <memory>
#include <mutex>

#include "power/battery_monitor.h"
#include "power/ups_monitor.h"

namespace {
// The last failed UPS candidate. It is kept alive, not destroyed, so it stays the registered UPS
// instance and refuses later static shutdown requests (its link is closed). Only the latest is kept:
// an older one stopped being the registered instance when the newer one was constructed.
// A plain pointer on purpose: it is never destroyed at process exit, when the logger may be gone.
std::mutex g_abandonedMutex;
CUPSMonitor* g_abandonedUps = nullptr;
}  // namespace

IPowerMonitor* IPowerMonitor::Create() { return Create(uc::Clock::System()); }

IPowerMonitor* IPowerMonitor::Create(uc::Clock& clock) {
    auto battery = std::make_unique<BatteryMonitor>(clock);
    if (battery->DetectBattery()) return battery.release();
    battery.reset();  // its port is closed already; nothing refers to it
    auto ups = std::make_unique<CUPSMonitor>(clock);
    if (ups->Create() && ups->IsValid()) return ups.release();
    std::lock_guard<std::mutex> g(g_abandonedMutex);
    delete g_abandonedUps;
    g_abandonedUps = ups.release();
    return nullptr;
}
