// CToolTipProvider over the common controls' tool-tip window.
#include "ui/win/tooltip_provider.h"

#include <commctrl.h>

#include "ui/win/resources.h"

CToolTipProvider::~CToolTipProvider() { DestroyToolTips(); }

bool CToolTipProvider::SetToolTip(HWND owner, HWND control, const std::wstring& text) {
    if (!control || !::IsWindow(control)) return false;
    if (!m_tip || !::IsWindow(m_tip)) {
        INITCOMMONCONTROLSEX icc{sizeof icc, ICC_WIN95_CLASSES};
        ::InitCommonControlsEx(&icc);
        m_tip = ::CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                                  CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, owner, nullptr,
                                  uc::ui::LibraryModule(), nullptr);
        if (!m_tip) return false;
    }
    TTTOOLINFOW info{};
    info.cbSize = TTTOOLINFOW_V2_SIZE;  // understood by every common-controls version
    info.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    info.hwnd = owner;
    info.uId = reinterpret_cast<UINT_PTR>(control);
    ::SendMessageW(m_tip, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&info));
    if (text.empty()) return true;
    info.lpszText = const_cast<wchar_t*>(text.c_str());
    return ::SendMessageW(m_tip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&info)) != FALSE;
}

void CToolTipProvider::EnableToolTips(bool enable) {
    if (m_tip) ::SendMessageW(m_tip, TTM_ACTIVATE, enable ? TRUE : FALSE, 0);
}

void CToolTipProvider::DestroyToolTips() {
    if (m_tip && ::IsWindow(m_tip)) ::DestroyWindow(m_tip);
    m_tip = nullptr;
}
