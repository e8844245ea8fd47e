// The burn's presenter on Windows: the progress dialog, message boxes owned by the burner's parent window and
// PostMessageW to it.
#include <windows.h>

#include <memory>

#include "export/burn_presenter.h"
#include "export/disc_burner.h"
#include "export/win/burn_progress_dialog.h"
#include "platform/logger.h"

namespace uc::exporting {
namespace {
HWND Owner() { return static_cast<HWND>(CStarDiscBurn::m_hParentWnd); }

class WindowsPresenter final : public IBurnPresenter {
public:
    // Created on the calling thread, which must run a message loop (the console's user-interface thread).
    void CreateProgress(const std::wstring& title) override {
        // A dialog whose window is gone can be dropped; one still open stays owned here until it is.
        if (m_dialog && !::IsWindow(m_dialog->GetHwnd())) m_dialog.reset();
        if (m_dialog) return;
        auto dialog = std::make_unique<BurnProgressDialog>();
        if (dialog->Open(title, Owner()))
            m_dialog = std::move(dialog);
        else
            UC_LOG(zelLogger::Failure)(L"Burn: the progress dialog cannot be opened");
    }
    void DestroyProgress() override {
        if (m_dialog) m_dialog->PostClose();
    }
    void ShowStep(const std::wstring& text) override {
        UC_LOG(zelLogger::Detail)(L"Burn step: %s", text.c_str());
        if (m_dialog) m_dialog->PostStep(text);
    }
    void ShowPercent(int percent) override {
        if (m_dialog) m_dialog->PostPercent(percent);
    }
    void ShowMinimizeButton(bool show) override {
        if (m_dialog) m_dialog->PostMinimizeButton(show);
    }
    Answer Ask(const std::wstring& text, const std::wstring& caption, bool withCancel) override {
        const UINT style = MB_ICONWARNING | MB_TOPMOST | MB_SYSTEMMODAL | (withCancel ? MB_YESNOCANCEL : MB_YESNO);
        switch (::MessageBoxW(Owner(), text.c_str(), caption.c_str(), style)) {
        case IDYES: return Answer::Yes;
        case IDNO: return Answer::No;
        default: return withCancel ? Answer::Cancel : Answer::No;
        }
    }
    void Tell(const std::wstring& text, const std::wstring& caption, BoxIcon icon) override {
        const UINT style = icon == BoxIcon::Stop      ? MB_ICONSTOP | MB_SYSTEMMODAL
                           : icon == BoxIcon::Warning ? MB_ICONWARNING | MB_TOPMOST
                                                      : MB_ICONINFORMATION;
        ::MessageBoxW(Owner(), text.c_str(), caption.c_str(), MB_OK | style);
    }
    void Post(void* owner, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
        if (owner) ::PostMessageW(static_cast<HWND>(owner), message, static_cast<WPARAM>(wParam), static_cast<LPARAM>(lParam));
    }

private:
    std::unique_ptr<BurnProgressDialog> m_dialog;
};
}  // namespace

std::shared_ptr<IBurnPresenter> PlatformBurnPresenter() { return std::make_shared<WindowsPresenter>(); }

}  // namespace uc::exporting
