// The power-monitor factory: battery module first, UPS second.
#include "power/power_monitor.h"

#include "power/battery_monitor.h"
#include "power/ups_monitor.h"

IPowerMonitor* IPowerMonitor::Create() {
    BatteryMonitor* battery = new BatteryMonitor();
    if (battery->DetectBattery()) return battery;
    // The failed battery candidate is abandoned as well (its port is closed); nothing else refers to it.
    CUPSMonitor* ups = new CUPSMonitor();
    if (!ups->Create()) return nullptr;
    if (ups->IsValid()) return ups;
    return nullptr;
}
