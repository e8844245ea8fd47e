// The burn's progress dialog: a modeless window with the current step, a progress bar and, once writing starts,
// a minimise button. Created on the caller's thread; the burn thread changes and closes it by posted messages.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "platform/export.h"
#include "ui/win/dialog.h"

namespace uc::exporting {

class UC_API BurnProgressDialog : public uc::ui::Dialog {
public:
    static constexpr UINT StepTextId = 1001;
    static constexpr UINT ProgressBarId = 1002;

    BurnProgressDialog();
    // Creates the window titled `title`, owned by `owner`; false when it cannot be created.
    bool Open(const std::wstring& title, HWND owner);

    // From any thread: the window's own thread applies them in order.
    void PostStep(const std::wstring& text) const;
    void PostPercent(int percent) const;
    void PostMinimizeButton(bool show) const;
    // From any thread: the window destroys itself on its own thread.
    void PostClose() const;

protected:
    BOOL OnInitDialog() override;
    void OnCancel() override {}  // the burn cannot be stopped from here; Escape does nothing
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override;
};

}  // namespace uc::exporting
