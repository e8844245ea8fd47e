// The round button's interaction rules: what each mouse, timer and capture event changes and asks the window to do.
#include "skin/round_button_logic.h"

#include <algorithm>
#include <cstdlib>

namespace uc::skin {

void ButtonActions::Add(ButtonAction::Kind kind, int value) {
    // Handlers add at most eight actions; a full list would be a bug in this file, not a run-time condition.
    if (m_size < kCapacity) m_items[m_size++] = ButtonAction{kind, value};
}

std::size_t ButtonActions::Count(ButtonAction::Kind kind) const {
    return static_cast<std::size_t>(std::count_if(begin(), end(), [&](const ButtonAction& a) { return a.kind == kind; }));
}

std::size_t ButtonActions::Count(ButtonAction::Kind kind, int value) const {
    return static_cast<std::size_t>(
        std::count_if(begin(), end(), [&](const ButtonAction& a) { return a.kind == kind && a.value == value; }));
}

const std::wstring& RoundButtonLogic::TypeName(int type) {
    static const std::wstring names[kButtonTypeCount] = {L"Radio Button",      L"Check Button",      L"Push Button",
                                                         L"Radio Push Button", L"Push Drag Button", L"Rocker Button",
                                                         L"Check State Button"};
    static const std::wstring none;
    return type >= 0 && type < kButtonTypeCount ? names[type] : none;
}

int RoundButtonLogic::TimerPeriod(int rate) {
    const long long magnitude = rate < 0 ? -static_cast<long long>(rate) : rate;  // INT_MIN has no int magnitude
    switch (std::min<long long>(magnitude, kMaxRate)) {
    case 3: return 10;
    case 2: return 100;
    case 1: return 500;
    default: return 0;
    }
}

bool RoundButtonLogic::CheckAfterRelease(ButtonType type, bool check) {
    switch (type) {
    case RadioButton: return true;
    case CheckButton:
    case RadioPushButton: return !check;
    case PushButton:
    case PushDragButton: return false;
    default: return check;  // rocker, check-state and unknown kinds keep it
    }
}

int RoundButtonLogic::FaceStateFor(bool disabled, bool selected, bool checked) {
    if (disabled) return 1;
    if (selected) return 3;
    return checked ? 2 : 0;
}

void RoundButtonLogic::SetSize(int width, int height) {
    m_width = std::max(0, width);
    m_height = std::max(0, height);
}

ButtonActions RoundButtonLogic::LButtonDown(int x, int y, bool inside) {
    ButtonActions out;
    if (inside) {
        if (!m_hover) out.Add(ButtonAction::TakeCapture);
        m_hover = true;
    }
    m_downX = x;
    m_downY = y;
    if (m_type == RockerButton) {
        const int h = m_height;
        const int rate = y < h / 3 ? 1 : (y > 2 * h / 3 ? -1 : 0);
        ApplyRate(rate, out);
    }
    out.Add(ButtonAction::SetPushed, 1);
    out.Add(ButtonAction::Repaint);
    return out;
}

ButtonActions RoundButtonLogic::MouseMove(int x, int y, bool inside, bool leftHeld) {
    ButtonActions out;
    if (!leftHeld) {
        if (inside) {
            if (m_hover) return out;  // nothing changes while the pointer stays inside
            m_hover = true;
            out.Add(ButtonAction::TakeCapture);
        } else {
            m_hover = false;
            out.Add(ButtonAction::ReleaseCapture);
            out.Add(ButtonAction::SetPushed, 0);
        }
        out.Add(ButtonAction::Repaint);
        return out;
    }
    if (m_type == PushDragButton && m_downX != -1 && m_downY != -1) {
        const int step = std::max(1, m_width / 2);
        // Computed in 64 bits: a pointer far outside a huge button must not overflow the difference.
        const long long rate = (static_cast<long long>(x) - m_downX) / step;
        ApplyRate(static_cast<int>(std::clamp<long long>(rate, -kMaxRate, kMaxRate)), out);
    }
    return out;
}

ButtonActions RoundButtonLogic::LButtonUp(int x, int y, bool inside) {
    ButtonActions out;
    m_check = CheckAfterRelease(m_type, m_check);
    m_incrementRate = 0;  // timer 1 stops at its next tick
    m_downX = -1;
    m_downY = -1;
    if (inside ? m_hover : (m_type == RadioButton || m_type == RadioPushButton)) out.Add(ButtonAction::Notify, Click);
    out.Add(ButtonAction::ReleaseCapture);
    out.Add(ButtonAction::SetPushed, 0);
    out.Add(ButtonAction::Repaint);
    return out;
}

ButtonActions RoundButtonLogic::Timer(bool holdsCapture) {
    ButtonActions out;
    if (m_incrementRate != 0 && holdsCapture) {
        const int sign = m_incrementRate > 0 ? 1 : -1;
        out.Add(ButtonAction::Notify, sign > 0 ? StepUp : StepDown);
        ++m_repeatCount;
        if (m_type == RockerButton) {
            const int magnitude = std::abs(m_incrementRate);
            if (magnitude == 1)
                ApplyRate(2 * sign, out);
            else if (m_repeatCount >= kAccelerationTicks)
                ApplyRate(kMaxRate * sign, out);
        }
        return out;
    }
    m_incrementRate = 0;
    out.Add(ButtonAction::KillTimer);
    out.Add(ButtonAction::Repaint);
    return out;
}

ButtonActions RoundButtonLogic::CaptureChanged(bool toOtherWindow) {
    ButtonActions out;
    if (!toOtherWindow) return out;
    m_hover = false;
    m_incrementRate = 0;  // timer 1 stops at its next tick
    out.Add(ButtonAction::Repaint);
    return out;
}

ButtonActions RoundButtonLogic::SetIncrementRate(int rate) {
    ButtonActions out;
    ApplyRate(rate, out);
    return out;
}

void RoundButtonLogic::ApplyRate(int rate, ButtonActions& out) {
    m_repeatCount = 0;
    rate = std::clamp(rate, -kMaxRate, kMaxRate);
    if (rate == m_incrementRate) return;
    m_hover = false;
    // The first step of a start is sent at once rather than one period later.
    if (m_incrementRate == 0) out.Add(ButtonAction::Notify, rate > 0 ? StepUp : StepDown);
    m_incrementRate = rate;
    out.Add(ButtonAction::KillTimer);
    if (const int period = TimerPeriod(rate)) out.Add(ButtonAction::StartTimer, period);
    out.Add(ButtonAction::Repaint);
}

}  // namespace uc::skin
