// Step-by-step reports of a search for the power source, for service tools that show progress and explain failures.
#pragma once

#include <functional>
#include <mutex>
#include <string>

#include "platform/export.h"

namespace uc::power {

// One step of a search: a lookup that found nothing, a port about to be opened, or what a port did.
struct ProbeEvent {
    enum Kind {
        NotFound,    // the device lookup found no port (detail: what was looked for, and where)
        Opening,     // a port is about to be opened and tried
        OpenFailed,  // the port could not be opened (detail: the reason, naming the device path)
        Answered,    // the device answered the handshake
        NoAnswer,    // opened, but the handshake failed (detail: timed out, or what came back)
    };
    Kind kind = NotFound;
    const wchar_t* source = L"";  // "battery module" or "UPS"
    int port = -1;
    std::wstring device;  // what the port number opens; empty when nothing is behind it
    std::wstring detail;
};

// The observer that receives every step of the searches made by BatteryMonitor and CUPSMonitor (none by
// default; an empty function removes it). Called on the searching thread.
UC_API void SetProbeObserver(std::function<void(const ProbeEvent&)> observer);
// Hands one step to the observer, if any.
UC_API void ReportProbe(const ProbeEvent& event);

// Why a monitor's last search or query failed. Readings may come from several threads at once (the UPS
// serialises them only per command), so the text is kept under its own lock and handed out as a copy.
class FailureText {
public:
    void Set(std::wstring why) {
        std::lock_guard<std::mutex> g(m_mutex);
        m_text = std::move(why);
    }
    std::wstring Get() const {
        std::lock_guard<std::mutex> g(m_mutex);
        return m_text;
    }

private:
    mutable std::mutex m_mutex;
    std::wstring m_text;
};

}  // namespace uc::power
