// IPowerMonitor: where the console's power comes from, how much charge is left and how urgent a warning is.
#pragma once

#include "platform/clock.h"
#include "platform/export.h"

class UC_API IPowerMonitor {
public:
    enum EPowerSource { PowerBattery = 0, PowerLine = 1, PowerUnknown = 2 };
    enum WarningLevel { WarningNone = 0, WarningLow = 1, WarningVeryLow = 2, WarningCritical = 3 };

    virtual ~IPowerMonitor() {}
    virtual bool IsBatteryModule() const = 0;
    // Queries the device once. False when no valid reading could be had; the outputs must then not be used.
    virtual bool GetCurrentStatus(EPowerSource& source, int& percent, const wchar_t*& stateText,
                                  WarningLevel& level) = 0;

    // The battery module if one answers, else the UPS if one answers, else null. Owned by the caller.
    // A UPS candidate that fails is deliberately not destroyed: it stays registered as the process's
    // UPS instance with its link closed, so later static shutdown requests are refused. (Only the
    // latest such candidate is kept, so repeated searches do not pile them up.)
    static IPowerMonitor* Create();
    // The same with the reply time-outs measured on `clock` (tests drive it by hand).
    static IPowerMonitor* Create(uc::Clock& clock);
};
