// Window timer services: USER32's and the hand-driven one for tests.
#include "ui/win/timers.h"

#include <algorithm>
#include <atomic>

namespace uc::ui {

namespace {

class User32Timers final : public TimerService {
public:
    UINT_PTR Set(HWND hwnd, UINT_PTR id, UINT periodMs) override { return ::SetTimer(hwnd, id, periodMs, nullptr); }
    bool Kill(HWND hwnd, UINT_PTR id) override { return ::KillTimer(hwnd, id) != FALSE; }
};

User32Timers g_user32;
std::atomic<TimerService*> g_service{nullptr};

}  // namespace

TimerService& Timers() {
    TimerService* s = g_service.load(std::memory_order_acquire);
    return s ? *s : g_user32;
}

TimerService* SetTimerService(TimerService* service) { return g_service.exchange(service, std::memory_order_acq_rel); }

UINT_PTR ManualTimers::Set(HWND hwnd, UINT_PTR id, UINT periodMs) {
    if (!::IsWindow(hwnd)) return 0;
    const UINT period = std::max<UINT>(periodMs, USER_TIMER_MINIMUM);
    std::lock_guard lock(m_mutex);
    for (Entry& e : m_entries) {
        if (e.hwnd == hwnd && e.id == id) {
            e.period = period;
            e.due = m_now + period;
            return id;
        }
    }
    m_entries.push_back({hwnd, id, period, m_now + period});
    return id;
}

bool ManualTimers::Kill(HWND hwnd, UINT_PTR id) {
    std::lock_guard lock(m_mutex);
    auto it = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& e) { return e.hwnd == hwnd && e.id == id; });
    if (it == m_entries.end()) return false;
    m_entries.erase(it);
    return true;
}

int ManualTimers::Advance(std::uint64_t ms) {
    std::uint64_t target;
    {
        std::lock_guard lock(m_mutex);
        target = m_now + ms;
    }
    int delivered = 0;
    while (true) {
        HWND hwnd = nullptr;
        UINT_PTR id = 0;
        {
            std::lock_guard lock(m_mutex);
            // Timers of windows that are gone die with them, as USER32's do.
            std::erase_if(m_entries, [](const Entry& e) { return !::IsWindow(e.hwnd); });
            auto next = std::min_element(m_entries.begin(), m_entries.end(),
                                         [](const Entry& a, const Entry& b) { return a.due < b.due; });
            if (next == m_entries.end() || next->due > target) {
                m_now = target;
                return delivered;
            }
            m_now = next->due;
            next->due += next->period;
            hwnd = next->hwnd;
            id = next->id;
        }
        // Sent without the lock: the handler may set or kill timers.
        ::SendMessageW(hwnd, WM_TIMER, id, 0);
        ++delivered;
    }
}

UINT ManualTimers::Period(HWND hwnd, UINT_PTR id) const {
    std::lock_guard lock(m_mutex);
    for (const Entry& e : m_entries)
        if (e.hwnd == hwnd && e.id == id) return e.period;
    return 0;
}

std::uint64_t ManualTimers::Now() const {
    std::lock_guard lock(m_mutex);
    return m_now;
}

}  // namespace uc::ui
