// CRoundButton2: window messages turned into the interaction rules' events, their actions carried out, painting.
#include "skin/win/round_button.h"

#include "platform/logger.h"
#include "skin/round_button_layout.h"
#include "skin/style_repository.h"

using uc::skin::ButtonAction;
using uc::skin::RoundButtonLogic;

std::vector<std::wstring> CRoundButton2::m_saTypes;

bool CRoundButton2::staticInit() {
    if (!m_saTypes.empty()) return true;
    for (int t = 0; t < uc::skin::kButtonTypeCount; ++t) m_saTypes.push_back(RoundButtonLogic::TypeName(t));
    return true;
}

namespace {
const bool s_typesReady = CRoundButton2::staticInit();
}  // namespace

CRoundButton2::CRoundButton2() { m_font = FontRepository::GetFont(m_style.font); }

CRoundButton2::~CRoundButton2() { *m_alive = false; }

bool CRoundButton2::Create(const wchar_t* caption, DWORD style, const RECT& rect, HWND parent, UINT id) {
    return OwnerDrawButton::Create(0, L"BUTTON", caption, WS_CHILD | style, rect, parent, id);
}

bool CRoundButton2::LoadStyle(const tButtonStyle* style, double scale) {
    if (!style) return false;
    m_style = *style;
    if (!uc::skin::ScaleStyle(m_style, scale))
        UC_LOG(zelLogger::Fallback)(L"Round button style \"%s\": scale %f ignored", m_style.name.c_str(), scale);
    m_font = FontRepository::GetFont(m_style.font);
    Repaint();
    return true;
}

bool CRoundButton2::LoadStyle(const std::wstring& name, double scale) {
    StyleRepository* repository = StyleRepository::GetInstance();
    if (const tButtonStyle* style = repository->GetStyle(name.c_str())) return LoadStyle(style, scale);
    UC_LOG(zelLogger::Fallback)(L"Round button style \"%s\" not found; the default style is used", name.c_str());
    const tButtonStyle* fallback = repository->GetStyle(0);
    const tButtonStyle builtIn;
    LoadStyle(fallback ? fallback : &builtIn, scale);
    return false;
}

void CRoundButton2::SetFont(const FontDescriptor& font) {
    m_style.font = font;
    m_font = FontRepository::GetFont(font);
    Repaint();
}

void CRoundButton2::SetCheck(bool check) {
    m_logic.SetCheck(check);
    Repaint();
}

namespace {
// The bitmap of `file` from the cache, or null (logged) when it cannot be read.
Gdiplus::Bitmap* LoadIcon(const std::wstring& file, unsigned long transparentColour) {
    Gdiplus::Bitmap* image = ImageRepository::GetImage(file, transparentColour);
    if (image && image->GetLastStatus() == Gdiplus::Ok) return image;
    UC_LOG(zelLogger::Failure)(L"Round button icon \"%s\" could not be loaded", file.c_str());
    return nullptr;
}
}  // namespace

int CRoundButton2::SetIcon(const std::wstring& file, IconLocation location, unsigned long transparentColour,
                           bool repaint) {
    m_icon = LoadIcon(file, transparentColour);
    m_style.iconLocation = location;
    if (repaint) Repaint();
    return m_icon ? 1 : 0;
}

int CRoundButton2::SetCheckIcon(const std::wstring& file, IconLocation location, unsigned long transparentColour) {
    m_checkIcon = LoadIcon(file, transparentColour);
    m_checkIconLocation = location;
    Repaint();
    return m_checkIcon ? 1 : 0;
}

void CRoundButton2::SetAlpha(unsigned char alpha) {
    m_style.SetAlpha(alpha);
    Repaint();
}

void CRoundButton2::SetGray(bool gray) {
    m_logic.SetGray(gray);
    Repaint();
}

void CRoundButton2::SetOffScreen(bool offScreen) {
    m_painter.SetOffScreen(offScreen);
    Repaint();
}

unsigned long CRoundButton2::TextColor(unsigned long colour) { return uc::skin::TextColor(colour); }

void CRoundButton2::Repaint() const {
    if (m_hWnd) ::InvalidateRect(m_hWnd, nullptr, FALSE);
}

void CRoundButton2::Draw(HDC dc) {
    uc::skin::RoundButtonLook look;
    look.style = &m_style;
    look.faceState = m_logic.GetFaceState();
    look.gray = m_logic.GetGray();
    if (m_hWnd) look.caption = Text();
    look.font = m_font ? m_font->GetSafeHandle() : nullptr;
    const bool checkIcon = m_logic.GetCheck() && m_checkIcon;
    look.icon = checkIcon ? m_checkIcon : m_icon;
    look.iconLocation = checkIcon ? m_checkIconLocation : m_style.iconLocation;
    look.type = m_logic.GetType();
    look.incrementRate = m_logic.GetIncrementRate();
    m_painter.Draw(dc, m_logic.Width(), m_logic.Height(), look);
}

void CRoundButton2::DrawItem(const DRAWITEMSTRUCT& item) {
    m_logic.SetFaceState(RoundButtonLogic::FaceStateFor((item.itemState & ODS_DISABLED) != 0,
                                                        (item.itemState & ODS_SELECTED) != 0, m_logic.GetCheck()));
    m_logic.SetSize(item.rcItem.right - item.rcItem.left, item.rcItem.bottom - item.rcItem.top);
    Draw(item.hDC);
}

void CRoundButton2::PreSubclassWindow() {
    OwnerDrawButton::PreSubclassWindow();
    const RECT rc = ClientRect();
    m_logic.SetSize(rc.right - rc.left, rc.bottom - rc.top);
}

void CRoundButton2::OnSize(UINT type, int cx, int cy) {
    m_logic.SetSize(cx, cy);  // the rocker thirds and the drag step follow the size before the next paint
    Default();
}

bool CRoundButton2::Inside(POINT pt) const {
    const RECT rc = ClientRect();
    return ::PtInRect(&rc, pt) != FALSE;
}

void CRoundButton2::Run(const uc::skin::ButtonActions& actions) {
    const std::shared_ptr<bool> alive = m_alive;
    const HWND hwnd = m_hWnd;
    for (const ButtonAction& a : actions) {
        switch (a.kind) {
        case ButtonAction::Notify:
            NotifyParent(static_cast<ClickType>(a.value));
            // The parent may have destroyed the window or deleted the object while handling the notification.
            if (!*alive || m_hWnd != hwnd || !::IsWindow(hwnd)) return;
            break;
        case ButtonAction::TakeCapture: SetCapture(); break;
        case ButtonAction::ReleaseCapture: ReleaseCapture(); break;
        case ButtonAction::SetPushed: Send(BM_SETSTATE, a.value ? TRUE : FALSE); break;
        case ButtonAction::StartTimer: OwnerDrawButton::SetTimer(RoundButtonLogic::kRepeatTimerId, a.value); break;
        case ButtonAction::KillTimer: OwnerDrawButton::KillTimer(RoundButtonLogic::kRepeatTimerId); break;
        case ButtonAction::Repaint: Repaint(); break;
        }
        if (!*alive || !m_hWnd) return;  // a capture change or a paint destroyed it
    }
}

void CRoundButton2::NotifyParent(ClickType click) const {
    if (!m_hWnd || !::IsWindow(m_hWnd)) return;
    const HWND parent = ::GetParent(m_hWnd);
    if (!parent || !::IsWindow(parent)) return;
    ::SendMessageW(parent, WM_COMMAND, static_cast<WPARAM>(click), reinterpret_cast<LPARAM>(m_hWnd));
}

void CRoundButton2::SetIncrementRate(int rate) { Run(m_logic.SetIncrementRate(rate)); }

void CRoundButton2::OnLButtonDown(UINT, POINT pt) { Run(m_logic.LButtonDown(pt.x, pt.y, Inside(pt))); }

void CRoundButton2::OnLButtonUp(UINT, POINT pt) { Run(m_logic.LButtonUp(pt.x, pt.y, Inside(pt))); }

void CRoundButton2::OnLButtonDblClk(UINT flags, POINT pt) {
    // A double click counts as a second press.
    Send(WM_LBUTTONDOWN, flags, MAKELPARAM(pt.x, pt.y));
}

void CRoundButton2::OnMouseMove(UINT flags, POINT pt) {
    Run(m_logic.MouseMove(pt.x, pt.y, Inside(pt), (flags & MK_LBUTTON) != 0));
}

void CRoundButton2::OnTimer(UINT_PTR id) {
    Default();
    if (id == RoundButtonLogic::kRepeatTimerId) Run(m_logic.Timer(HasCapture()));
}

void CRoundButton2::OnCaptureChanged(HWND newOwner) {
    const std::shared_ptr<bool> alive = m_alive;
    Run(m_logic.CaptureChanged(newOwner != m_hWnd));
    if (*alive && m_hWnd) Default();
}

void CRoundButton2::OnDestroy() {
    // USER32 drops a window's timers with it; a replaced timer service (tests) is told.
    OwnerDrawButton::KillTimer(RoundButtonLogic::kRepeatTimerId);
    Default();
}

void CRoundButton2::OnSetFocus(HWND) {}  // never takes the focus, not even by default processing

BOOL CRoundButton2::OnEraseBkgnd(HDC) { return FALSE; }  // all painting is in Draw
