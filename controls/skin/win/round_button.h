// CRoundButton2: the skinned push button that paints itself from a button style and reports clicks and repeat steps.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/export.h"
#include "skin/button_style.h"
#include "skin/round_button_logic.h"
#include "skin/win/font_repository.h"
#include "skin/win/image_repository.h"
#include "skin/win/round_button_paint.h"
#include "ui/win/owner_draw_button.h"

// An owner-drawn BUTTON: subclass one of a dialog (SubclassDlgItem) or create one (CreateButton). It tells its
// parent of a click or a repeat step with WM_COMMAND, wParam the ClickType (0 click, 1 step up, 2 step down) and
// lParam its window handle (not its id: parents tell buttons apart by the handle). User-interface thread only.
class UC_API CRoundButton2 : public uc::ui::OwnerDrawButton {
public:
    using ButtonType = uc::skin::ButtonType;
    using ClickType = uc::skin::ClickType;
    using IconLocation = uc::skin::IconLocation;
    using enum uc::skin::ButtonType;
    using enum uc::skin::ClickType;
    using enum uc::skin::IconLocation;

    // Display names of the kinds, in code order ("Radio Button", ...), filled once by staticInit.
    static std::vector<std::wstring> m_saTypes;
    static bool staticInit();

    CRoundButton2();
    ~CRoundButton2() override;

    // As CButton::Create: a child BUTTON with `caption` at `rect` (add WS_VISIBLE to `style` to show it at once),
    // owner-drawn from then on. False when the window cannot be created.
    bool Create(const wchar_t* caption, DWORD style, const RECT& rect, HWND parent, UINT id);

    // Copies `style` (scaled by `scale` when its scaleText is set) and takes its font from FontRepository.
    // False, and nothing changes, for a null style.
    bool LoadStyle(const tButtonStyle* style, double scale = 1.0);
    // The style of that name from StyleRepository; a name it does not know falls back to the default style
    // (id 0, else the built-in defaults), says so in the log, and returns false.
    bool LoadStyle(const std::wstring& name, double scale = 1.0);
    tButtonStyle* GetButtonStyle() { return &m_style; }
    const tButtonStyle* GetButtonStyle() const { return &m_style; }

    void SetFont(const FontDescriptor& font);
    const FontDescriptor& GetFont() const { return m_style.font; }

    void SetType(ButtonType type) { m_logic.SetType(type); }  // stored only; no repaint
    ButtonType GetType() const { return m_logic.GetType(); }
    // Sets the check state and repaints; other buttons of the radio group are the parent's business.
    void SetCheck(bool check);
    bool GetCheck() const { return m_logic.GetCheck(); }
    void SetRadioGroup(int group) { m_logic.SetRadioGroup(group); }
    int GetRadioGroup() const { return m_logic.GetRadioGroup(); }

    // Icons from ImageRepository (`file` as given; `transparentColour` ARGB for ".bmp" files, or
    // ImageRepository::kNoTransparency). The check icon replaces the icon while the button is checked.
    // 1 when the image could be read, 0 otherwise (logged; the button then shows no icon).
    int SetIcon(const std::wstring& file, IconLocation location,
                unsigned long transparentColour = ImageRepository::kNoTransparency, bool repaint = true);
    int SetCheckIcon(const std::wstring& file, IconLocation location,
                     unsigned long transparentColour = ImageRepository::kNoTransparency);

    void SetAlpha(unsigned char alpha);
    void SetGray(bool gray);
    bool GetGray() const { return m_logic.GetGray(); }
    // Painting through a memory bitmap with the RGB(1,1,1) colour key (the default); off, the button paints
    // straight onto its DC (for parents that already paint off screen).
    void SetOffScreen(bool offScreen);
    bool GetOffScreen() const { return m_painter.GetOffScreen(); }

    // Caption colour on a face colour (GDI layout): 0x020202 on light faces, 0xFDFDFD on dark ones.
    static unsigned long TextColor(unsigned long colour);

    // Paints the button's current look into (0,0)-(width,height) of `dc`, the size of the last owner draw
    // (or of the client rectangle before the first one).
    void Draw(HDC dc);

    // A message loop that offers messages to the button first: focus is swallowed, so the button never takes it.
    bool PreTranslateMessage(const MSG& msg) const { return msg.message == WM_SETFOCUS; }

    // State, for the parent and for checks.
    int GetFaceState() const { return m_logic.GetFaceState(); }
    bool GetHover() const { return m_logic.GetHover(); }
    int GetIncrementRate() const { return m_logic.GetIncrementRate(); }
    const uc::skin::RoundButtonPainter& Painter() const { return m_painter; }

protected:
    void DrawItem(const DRAWITEMSTRUCT& item) override;
    void PreSubclassWindow() override;

    void OnLButtonDown(UINT flags, POINT pt) override;
    void OnLButtonUp(UINT flags, POINT pt) override;
    void OnLButtonDblClk(UINT flags, POINT pt) override;
    void OnMouseMove(UINT flags, POINT pt) override;
    void OnTimer(UINT_PTR id) override;
    void OnCaptureChanged(HWND newOwner) override;
    void OnSetFocus(HWND previous) override;
    BOOL OnEraseBkgnd(HDC dc) override;
    void OnSize(UINT type, int cx, int cy) override;
    void OnDestroy() override;

    void NotifyParent(ClickType click) const;
    void SetIncrementRate(int rate);

private:
    // Carries out what the interaction rules ask for, in order; stops when a notified parent destroyed the
    // button (window or object).
    void Run(const uc::skin::ButtonActions& actions);
    bool Inside(POINT pt) const;
    void Repaint() const;

    tButtonStyle m_style;
    CFont* m_font = nullptr;
    uc::skin::RoundButtonLogic m_logic;
    uc::skin::RoundButtonPainter m_painter;
    Gdiplus::Bitmap* m_icon = nullptr;
    Gdiplus::Bitmap* m_checkIcon = nullptr;
    int m_checkIconLocation = uc::skin::IconNone;
    // Cleared by the destructor: a parent may delete the button while it is being notified.
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};
