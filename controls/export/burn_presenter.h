// What a burn shows and asks: the progress dialog, message boxes and the messages posted to the owner window.
// The Windows presenter shows real windows; tests and tools give answers of their own.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/export.h"

namespace uc::exporting {

// Messages posted to the owner window.
inline constexpr unsigned kBurnFinishedMessage = 0x8004;  // WM_APP + 4, wParam 1 when the burn has finished
inline constexpr unsigned kBurnClosedMessage = 0x8001;    // WM_APP + 1, wParam 1 after the result box was closed

enum class Answer { Yes, No, Cancel };
enum class BoxIcon { Information, Warning, Stop };

class UC_API IBurnPresenter {
public:
    virtual ~IBurnPresenter() = default;
    virtual void CreateProgress(const std::wstring& title) = 0;
    virtual void DestroyProgress() = 0;
    // The text of the current step.
    virtual void ShowStep(const std::wstring& text) = 0;
    virtual void ShowPercent(int percent) = 0;
    virtual void ShowMinimizeButton(bool show) = 0;
    // A top-most, system-modal warning with Yes/No (and Cancel when `withCancel`).
    virtual Answer Ask(const std::wstring& text, const std::wstring& caption, bool withCancel) = 0;
    // A box with one OK button.
    virtual void Tell(const std::wstring& text, const std::wstring& caption, BoxIcon icon) = 0;
    // Posts `message` to the owner window (`owner` is its HWND on Windows).
    virtual void Post(void* owner, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) = 0;
};

// The platform's presenter: message boxes, PostMessageW and a progress window on Windows. Elsewhere it logs what
// it would show and answers every question with No (and Cancel where offered), so nothing is erased unasked.
UC_API std::shared_ptr<IBurnPresenter> PlatformBurnPresenter();

}  // namespace uc::exporting
