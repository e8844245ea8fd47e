// Natively there are no windows: the burn's texts go to the log, and every question is answered No (Cancel where
// offered), so a disc is never erased or appended to without someone choosing it.
#include "export/burn_presenter.h"
#include "platform/logger.h"

namespace uc::exporting {
namespace {
class LoggingPresenter final : public IBurnPresenter {
public:
    void CreateProgress(const std::wstring& title) override { UC_LOG(zelLogger::Detail)(L"Burn progress: %s", title.c_str()); }
    void DestroyProgress() override {}
    void ShowStep(const std::wstring& text) override { UC_LOG(zelLogger::Detail)(L"Burn step: %s", text.c_str()); }
    void ShowPercent(int) override {}
    void ShowMinimizeButton(bool) override {}
    Answer Ask(const std::wstring& text, const std::wstring& caption, bool withCancel) override {
        UC_LOG(zelLogger::StateReport)(L"Burn question (%s): %s; answered %s", caption.c_str(), text.c_str(),
                                       withCancel ? L"Cancel" : L"No");
        return withCancel ? Answer::Cancel : Answer::No;
    }
    void Tell(const std::wstring& text, const std::wstring& caption, BoxIcon) override {
        UC_LOG(zelLogger::StateReport)(L"Burn message (%s): %s", caption.c_str(), text.c_str());
    }
    void Post(void*, unsigned, std::uintptr_t, std::intptr_t) override {}
};
}  // namespace

std::shared_ptr<IBurnPresenter> PlatformBurnPresenter() { return std::make_shared<LoggingPresenter>(); }

}  // namespace uc::exporting
