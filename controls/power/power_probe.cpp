// The process-wide observer of power-source searches.
#include "power/power_probe.h"

#include <mutex>

namespace uc::power {
namespace {
std::mutex g_mutex;
std::function<void(const ProbeEvent&)> g_observer;
}  // namespace

void SetProbeObserver(std::function<void(const ProbeEvent&)> observer) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_observer = std::move(observer);
}

void ReportProbe(const ProbeEvent& event) {
    std::function<void(const ProbeEvent&)> observer;
    {
        std::lock_guard<std::mutex> g(g_mutex);
        observer = g_observer;
    }
    // Called outside the lock: an observer may report progress slowly or set another observer.
    if (observer) observer(event);
}

}  // namespace uc::power
