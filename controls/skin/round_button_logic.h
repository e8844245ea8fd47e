// The round button's interaction state machine: kinds, check rules, hover and capture, repeat rates and timer 1.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "platform/export.h"

namespace uc::skin {

// The button's kind; the codes are part of the console's interface.
enum ButtonType : int {
    RadioButton = 0,      // check set on release
    CheckButton = 1,      // check toggled
    PushButton = 2,       // check cleared
    RadioPushButton = 3,  // check toggled
    PushDragButton = 4,   // check cleared; dragging sideways while held repeats
    RockerButton = 5,     // check unchanged; holding the upper or lower third repeats
    CheckStateButton = 6, // check unchanged
};
constexpr int kButtonTypeCount = 7;

// What the parent is told in the wParam of WM_COMMAND.
enum ClickType : int { Click = 0, StepUp = 1, StepDown = 2 };

// Where the icon goes (the style's icon location).
enum IconLocation : int {
    IconNone = 0,
    IconCentre = 1,
    IconLeft = 2,
    IconRight = 3,
    IconTop = 4,
    IconBottom = 5,
    IconOnBackground = 6,  // centred on a flat background fill instead of the face
};

// One thing the window has to do, in the order given.
struct ButtonAction {
    enum Kind : unsigned char {
        Notify,          // WM_COMMAND to the parent; value: the ClickType
        TakeCapture,     // SetCapture
        ReleaseCapture,  // ReleaseCapture, only if this window holds the capture
        SetPushed,       // BM_SETSTATE; value 1 pushed, 0 released
        StartTimer,      // (re)start timer 1; value: period in ms
        KillTimer,       // stop timer 1
        Repaint,
    };
    Kind kind;
    int value;
    bool operator==(const ButtonAction&) const = default;
};

// A short, allocation-free list of actions (no handler produces more than a handful).
class ButtonActions {
public:
    static constexpr std::size_t kCapacity = 12;
    void Add(ButtonAction::Kind kind, int value = 0);
    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    const ButtonAction& operator[](std::size_t i) const { return m_items[i]; }
    const ButtonAction* begin() const { return m_items.data(); }
    const ButtonAction* end() const { return m_items.data() + m_size; }
    // Number of actions of `kind` (and, when given, of `value`).
    std::size_t Count(ButtonAction::Kind kind) const;
    std::size_t Count(ButtonAction::Kind kind, int value) const;

private:
    std::array<ButtonAction, kCapacity> m_items{};
    std::size_t m_size = 0;
};

// The window feeds it mouse, timer and capture events with the facts only the window knows (is the point
// inside the client rectangle, does it hold the capture) and carries out the actions it returns.
class UC_API RoundButtonLogic {
public:
    static constexpr unsigned kRepeatTimerId = 1;
    static constexpr int kMaxRate = 3;
    // Ticks at a rate of magnitude 2 after which a held rocker goes to the fastest rate.
    static constexpr int kAccelerationTicks = 5;

    // Display name of a kind ("Radio Button", ...); empty for codes outside 0-6.
    static const std::wstring& TypeName(int type);
    // Timer 1's period for a repeat rate: magnitude 3 → 10 ms, 2 → 100 ms, 1 → 500 ms, 0 → none (0).
    static int TimerPeriod(int rate);
    // The check state after a release, by kind.
    static bool CheckAfterRelease(ButtonType type, bool check);
    // Face colour slot for an owner-draw item: disabled 1, else held down 3, else checked 2, else 0.
    static int FaceStateFor(bool disabled, bool selected, bool checked);

    ButtonType GetType() const { return m_type; }
    void SetType(ButtonType type) { m_type = type; }
    bool GetCheck() const { return m_check; }
    void SetCheck(bool check) { m_check = check; }
    int GetRadioGroup() const { return m_radioGroup; }
    void SetRadioGroup(int group) { m_radioGroup = group; }
    bool GetHover() const { return m_hover; }
    int GetIncrementRate() const { return m_incrementRate; }
    int GetRepeatCount() const { return m_repeatCount; }
    int GetDownX() const { return m_downX; }
    int GetDownY() const { return m_downY; }

    // The button rectangle's size, which places the rocker thirds and the drag step.
    void SetSize(int width, int height);
    int Width() const { return m_width; }
    int Height() const { return m_height; }

    // Colour slot chosen by the last owner draw, and the slot to paint (1 whenever the button is gray).
    int GetFaceState() const { return m_faceState; }
    void SetFaceState(int state) { m_faceState = state; }
    bool GetGray() const { return m_gray; }
    void SetGray(bool gray) { m_gray = gray; }
    int PaintState() const { return m_gray ? 1 : m_faceState; }

    ButtonActions LButtonDown(int x, int y, bool inside);
    ButtonActions MouseMove(int x, int y, bool inside, bool leftHeld);
    ButtonActions LButtonUp(int x, int y, bool inside);
    // Timer 1 fired; `holdsCapture`: the button's window has the mouse capture.
    ButtonActions Timer(bool holdsCapture);
    // The capture moved; `toOtherWindow` unless this window took it.
    ButtonActions CaptureChanged(bool toOtherWindow);
    // Clamps to -3..3; a new rate restarts timer 1 at its period, and the first step of a start is sent at once.
    ButtonActions SetIncrementRate(int rate);

private:
    void ApplyRate(int rate, ButtonActions& out);

    ButtonType m_type = RadioButton;  // the default kind is the radio kind, deliberately
    bool m_check = false;
    int m_radioGroup = -1;
    int m_downX = -1;
    int m_downY = -1;
    int m_incrementRate = 0;
    int m_repeatCount = 0;
    bool m_hover = false;
    int m_faceState = 0;
    bool m_gray = false;
    int m_width = 0;
    int m_height = 0;
};

}  // namespace uc::skin
