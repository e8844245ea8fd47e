// The burn's presenter on Windows: message boxes owned by the burner's parent window and PostMessageW to it.
// The progress steps go to the log until the console's progress dialog is built on the dialog framework.
#include <windows.h>

#include "export/burn_presenter.h"
#include "export/disc_burner.h"
#include "platform/logger.h"

namespace uc::exporting {
namespace {
HWND Owner() { return static_cast<HWND>(CStarDiscBurn::m_hParentWnd); }

class WindowsPresenter final : public IBurnPresenter {
public:
    void CreateProgress(const std::wstring& title) override { UC_LOG(zelLogger::Detail)(L"Burn progress: %s", title.c_str()); }
    void DestroyProgress() override {}
    void ShowStep(const std::wstring& text) override { UC_LOG(zelLogger::Detail)(L"Burn step: %s", text.c_str()); }
    void ShowPercent(int) override {}
    void ShowMinimizeButton(bool) override {}
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
};
}  // namespace

std::shared_ptr<IBurnPresenter> PlatformBurnPresenter() { return std::make_shared<WindowsPresenter>(); }

}  // namespace uc::exporting
