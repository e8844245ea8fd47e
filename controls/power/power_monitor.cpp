// The power-monitor factory: battery module first, UPS second.
#include "power/power_monitor.h"

#include "power/battery_monitor.h"
#include "power/ups_monitor.h"

IPowerMonitor* IPowerMonitor::Create() { return Create(uc::Clock::System()); }

IPowerMonitor* IPowerMonitor::Create(uc::Clock& clock) {
    BatteryMonitor* battery = new BatteryMonitor(clock);
    if (battery->DetectBattery()) return battery;
    // The failed battery candidate is abandoned as well (its port is closed); nothing else refers to it.
    CUPSMonitor* ups = new CUPSMonitor(clock);
    if (!ups->Create()) return nullptr;
    if (ups->IsValid()) return ups;
    return nullptr;
}
