// The calibration prompt's delayed OK, and the please-wait box: its thread, geometry, timers and painting.
#include "dialogs/win/message_box.h"

#include <cwchar>

#include "dialogs/resource_ids.h"
#include "platform/logger.h"
#include "platform/win/handles.h"
#include "skin/win/gdiplus.h"
#include "ui/win/gdi.h"
#include "ui/win/resources.h"
#include "ui/win/wrap_dc.h"

namespace wait_box = uc::ui::wait_box;

CCustomMessageBox::CCustomMessageBox(HWND parent) : CCustomDialog(IDD_CUSTOMMESSAGEBOX, parent) {}

BOOL CCustomMessageBox::OnInitDialog() {
    m_title = L"CALIBRATE TOUCH SCREEN";  // whatever the caller set: this prompt has one purpose
    CCustomDialog::OnInitDialog();
    if (m_okDelay != 0) {
        ::EnableWindow(Item(IDOK), FALSE);
        SetTimer(1, static_cast<UINT>(m_okDelay));
    }
    // After the translation step, so the message shows exactly as given.
    ::SetDlgItemTextW(m_hWnd, IDC_TXTMESSAGE, m_message.c_str());
    return TRUE;
}

void CCustomMessageBox::OnTimer(UINT_PTR id) {
    if (id != 1) return;
    ::EnableWindow(Item(IDOK), TRUE);
    KillTimer(1);
}

bool CCustomMessageBox::OnCommand(UINT id, UINT code, HWND) {
    if (id == IDC_TXTMESSAGE && code == EN_SETFOCUS) {
        // The text is never shown selected: drop the selection and keep the caret in view.
        HWND text = Item(IDC_TXTMESSAGE);
        ::SendMessageW(text, EM_SETSEL, static_cast<WPARAM>(-1), 0);
        ::SendMessageW(text, EM_SCROLLCARET, 0, 0);
        return true;
    }
    return false;
}

const wchar_t* CMessageBox::ClassName() {
    static const wchar_t* const name = L"uc.ui.PleaseWait";
    static const bool registered = RegisterWindowClass(name, CS_GLOBALCLASS | CS_PARENTDC | CS_HREDRAW | CS_VREDRAW,
                                                       reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(5 + 1)), nullptr);
    (void)registered;
    return name;
}

int CMessageBox::OnCreate(CREATESTRUCTW* cs) {
    if (Window::OnCreate(cs) == -1) return -1;
    m_timerId = SetTimer(wait_box::kShowTimer, m_showDelay);
    return 0;
}

void CMessageBox::OnTimer(UINT_PTR id) {
    switch (m_animation.OnTimer(static_cast<unsigned>(id))) {
    case wait_box::TickAction::Show:
        KillTimer(m_timerId);
        m_shown = true;
        ::SetWindowPos(m_hWnd, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_SHOWWINDOW);
        m_timerId = SetTimer(wait_box::kAnimationTimer, wait_box::kAnimationPeriodMs);
        break;
    case wait_box::TickAction::Animate:
        m_barOffset = m_animation.Offset();
        Invalidate(false);
        break;
    case wait_box::TickAction::None:
        break;
    }
    Default();
}

void CMessageBox::OnPaint() {
    uc::ui::PaintDC dc(m_hWnd);
    Paint(dc);
}

void CMessageBox::OnPrintClient(HDC dc, UINT) { Paint(dc); }

namespace {

// "Arial" 8 pt; where GDI+ does not know that family (or it fails), the generic sans-serif one; where GDI+ has none
// at all (a machine with substituted fonts only), the face GDI's font mapper picks for "Arial".
std::unique_ptr<Gdiplus::Font> TextFont(HDC dc) {
    using namespace Gdiplus;
    FontFamily arial(L"Arial");
    if (arial.IsAvailable()) {
        auto font = std::make_unique<Font>(&arial, 8.0f, FontStyleRegular, UnitPoint);
        if (font->IsAvailable()) return font;
    }
    if (const FontFamily* generic = FontFamily::GenericSansSerif()) {
        auto font = std::make_unique<Font>(generic, 8.0f, FontStyleRegular, UnitPoint);
        if (font->IsAvailable()) return font;
    }
    LOGFONTW lf{};
    lf.lfHeight = -::MulDiv(8, ::GetDeviceCaps(dc, LOGPIXELSY), 72);
    std::wcscpy(lf.lfFaceName, L"Arial");
    return std::make_unique<Font>(dc, &lf);
}

}  // namespace

void CMessageBox::Paint(HDC target) {
    ++m_paints;
    const RECT client = ClientRect();
    const int w = client.right, b = client.bottom;
    uc::ui::Canvas canvas(target, w, b);
    if (!canvas.ok()) return;
    HDC dc = canvas.dc();

    wait_box::FrameBand bands[4];
    wait_box::FrameBands(w, b, bands);
    for (const wait_box::FrameBand& band : bands) {
        const RECT r{band.x, band.y, band.x + band.cx, band.y + band.cy};
        ::FillRect(dc, &r, ::GetSysColorBrush(band.sysColour));
    }

    {
        using namespace Gdiplus;
        Graphics g(dc);
        if (m_showStatusBar) {
            const wait_box::Bar bar = wait_box::BarFor(b, m_barOffset);
            LinearGradientBrush brush(Point(bar.x1, bar.y1), Point(bar.x2, bar.y2), Color(wait_box::kBarLightArgb),
                                      Color(wait_box::kBarDarkArgb));
            brush.SetWrapMode(WrapModeTileFlipX);
            g.FillRectangle(&brush, bar.x, bar.y, bar.cx, bar.cy);
            Pen outline(Color(0xFF000000), 1.0f);
            g.DrawRectangle(&outline, bar.x, bar.y, bar.cx, bar.cy);
        }
        std::unique_ptr<Font> font = TextFont(dc);
        const COLORREF text = ::GetSysColor(COLOR_WINDOWTEXT);
        SolidBrush ink(Color(255, GetRValue(text), GetGValue(text), GetBValue(text)));
        StringFormat format;
        format.SetAlignment(StringAlignmentCenter);
        format.SetLineAlignment(StringAlignmentCenter);
        const uc::ui::Rect area = wait_box::TextArea(b);
        g.DrawString(m_text.c_str(), -1, font.get(),
                     RectF(static_cast<REAL>(area.left), static_cast<REAL>(area.top), static_cast<REAL>(area.Width()),
                           static_cast<REAL>(area.Height())),
                     &format, &ink);
    }
    canvas.CopyTo(target);
}

CMessageBoxThread* CMessageBoxThread::CreateObject() { return new CMessageBoxThread; }

CMessageBoxThread::CMessageBoxThread() = default;

CMessageBoxThread::~CMessageBoxThread() {
    // Ends the thread while this object's ExitInstance can still run.
    if (::GetCurrentThreadId() != ThreadId()) Stop();
}

void CMessageBoxThread::SetMessage(UINT resourceId) {
    m_message = uc::ui::LoadStringResource(resourceId, uc::ui::ResourceModule());
}

void CMessageBoxThread::SetMessage(const wchar_t* text) { m_message = text ? text : L""; }

void CMessageBoxThread::SetTimeout(UINT ms) {
    m_timeout = ms;
    m_box.m_showDelay = ms;
}

void CMessageBoxThread::SetShowStatusBar(BOOL show) { m_box.m_showStatusBar = show; }

bool CMessageBoxThread::InitInstance() {
    m_gdiplus = std::make_unique<uc::GdiplusSession>();

    HWND desktop = ::GetDesktopWindow();
    const int screenW = ::GetSystemMetrics(SM_CXSCREEN);
    const int screenH = ::GetSystemMetrics(SM_CYSCREEN);
    uc::ui::Rect r;
    {
        uc::ui::WindowDC dc(desktop);
        LOGFONTW measuring{};
        measuring.lfHeight = 8;
        std::wcscpy(measuring.lfFaceName, L"Arial");
        uc::UniqueHFont font(::CreateFontIndirectW(&measuring));
        uc::SelectObjectGuard selected(dc, font.get());
        const int lines = uc::ui::WrapStr(dc, m_message, wait_box::kTextWidth);
        RECT calc{};
        const int height = ::DrawTextW(dc, m_message.c_str(), -1, &calc, DT_CALCRECT);
        r = wait_box::BoxRect(screenW, screenH, height, lines);
    }
    if (!m_box.Create(0, CMessageBox::ClassName(), m_message.c_str(), WS_CHILD | WS_CLIPSIBLINGS,
                      RECT{r.left, r.top, r.right, r.bottom}, desktop, 0)) {
        UC_LOG(zelLogger::Failure)(L"please-wait box: the window could not be created");
        return false;
    }
    m_box.m_text = m_message;
    return true;
}

int CMessageBoxThread::ExitInstance() {
    if (HWND box = m_box.GetHwnd()) {
        ::ShowWindow(box, SW_HIDE);
        m_box.DestroyWindow();
    }
    m_gdiplus.reset();
    return UiThread::ExitInstance();
}

namespace uc::ui {

PleaseWait::PleaseWait(const std::wstring& text, UINT delayMs, bool showBar) : m_thread(CMessageBoxThread::CreateObject()) {
    m_thread->SetMessage(text.c_str());
    m_thread->SetTimeout(delayMs);
    m_thread->SetShowStatusBar(showBar ? TRUE : FALSE);
    m_thread->Start();
}

PleaseWait::~PleaseWait() { m_thread->Stop(); }

}  // namespace uc::ui
