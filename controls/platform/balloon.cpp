// Balloon notifications: history, log line and hand-over to the presenter.
#include "platform/balloon.h"

#include <deque>
#include <mutex>

#include "platform/logger.h"

namespace {
std::mutex g_mutex;
std::deque<BalloonMessageService::Balloon> g_history;
std::function<void(const BalloonMessageService::Balloon&)> g_presenter;
std::size_t g_total = 0;

std::string BaseName(const char* file) {
    std::string s = file ? file : "";
    const std::size_t slash = s.find_last_of("/\\");
    return slash == std::string::npos ? s : s.substr(slash + 1);
}
}  // namespace

BalloonMessageService::BalloonMessageService(const char* file, int line, bool flag, int kind)
    : m_file(file), m_line(line), m_flag(flag), m_kind(kind) {}

void BalloonMessageService::operator()(unsigned int displayMs, const wchar_t* title, const wchar_t* text) const {
    Balloon b{BaseName(m_file), m_line, m_flag, m_kind, displayMs, title ? title : L"", text ? text : L""};
    std::function<void(const Balloon&)> presenter;
    {
        std::lock_guard<std::mutex> g(g_mutex);
        g_history.push_back(b);
        ++g_total;
        if (g_history.size() > HistoryCapacity) g_history.pop_front();
        presenter = g_presenter;
    }
    zelLogger::Instance().Write(m_file, m_line, zelLogger::StateReport,
                                L"Balloon (" + std::to_wstring(displayMs) + L" ms): " + b.title);
    if (presenter) presenter(b);
}

std::vector<BalloonMessageService::Balloon> BalloonMessageService::History() {
    std::lock_guard<std::mutex> g(g_mutex);
    return {g_history.begin(), g_history.end()};
}

std::size_t BalloonMessageService::Count() {
    std::lock_guard<std::mutex> g(g_mutex);
    return g_total;
}

void BalloonMessageService::ClearHistory() {
    std::lock_guard<std::mutex> g(g_mutex);
    g_history.clear();
    g_total = 0;
}

void BalloonMessageService::SetPresenter(std::function<void(const Balloon&)> presenter) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_presenter = std::move(presenter);
}
