// CToolTipProvider: the tool-tip mix-in of console dialogs: one tool-tip window per owner, texts per control.
#pragma once

#include <windows.h>

#include <string>

#include "platform/export.h"

class UC_API CToolTipProvider {
public:
    CToolTipProvider() = default;
    virtual ~CToolTipProvider();
    CToolTipProvider(const CToolTipProvider&) = delete;
    CToolTipProvider& operator=(const CToolTipProvider&) = delete;

    // Shows `text` when the pointer rests on `control` (a child of `owner`); an empty text removes the tip.
    // The tool-tip window is created on first use. False when it cannot be created.
    bool SetToolTip(HWND owner, HWND control, const std::wstring& text);
    // Turns all tips of this provider on or off.
    void EnableToolTips(bool enable);
    HWND ToolTipWindow() const { return m_tip; }
    // Destroys the tool-tip window (owners call it when they are destroyed; the destructor does too).
    void DestroyToolTips();

private:
    HWND m_tip = nullptr;
};
