// Log entries to file, memory and an optional listener.
#include "platform/logger.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "platform/text.h"

namespace {
std::string BaseName(const char* file) {
    std::string s = file ? file : "";
    std::size_t slash = s.find_last_of("/\\");
    return slash == std::string::npos ? s : s.substr(slash + 1);
}

}  // namespace

zelLogger::zelLogHelper::zelLogHelper(const char* file, int line, int type) : m_file(file), m_line(line), m_type(type) {}

void zelLogger::zelLogHelper::operator()(const wchar_t* format, ...) const {
    va_list args;
    va_start(args, format);
    std::wstring text = uc::FormatV(format, args);
    va_end(args);
    zelLogger::Instance().Write(m_file, m_line, m_type, text);
}

zelLogger::zelLogger() {
    if (const char* env = std::getenv("UC_LOG_FILE")) m_path = uc::FromUtf8(env);
}

zelLogger& zelLogger::Instance() {
    static zelLogger logger;
    return logger;
}

void zelLogger::SetLogFile(const std::wstring& path) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_path = path;
}

std::wstring zelLogger::GetLogFile() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_path;
}

void zelLogger::Write(const char* file, int line, int type, const std::wstring& text) {
    Entry e{BaseName(file), line, type, text};
    std::function<void(const Entry&)> listener;
    {
        std::lock_guard<std::mutex> g(m_mutex);
        if (m_recent.size() < RecentCapacity) {
            m_recent.push_back(e);
        } else {
            m_recent[m_next] = e;
            m_next = (m_next + 1) % RecentCapacity;
        }
        if (!m_path.empty()) {
            std::ofstream out(uc::ToFsPath(m_path), std::ios::app | std::ios::binary);
            if (out) {
                const auto now = std::chrono::system_clock::now();
                const std::time_t t = std::chrono::system_clock::to_time_t(now);
                const int ms = static_cast<int>(
                    std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000);
                std::tm tm{};
#ifdef _WIN32
                localtime_s(&tm, &t);
#else
                localtime_r(&t, &tm);
#endif
                char stamp[64];
                std::snprintf(stamp, sizeof stamp, "%04d-%02d-%02d %02d:%02d:%02d.%03d", tm.tm_year + 1900,
                              tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, ms);
                out << stamp << " [" << type << "] " << e.file << '(' << line << "): " << uc::ToUtf8(text) << '\n';
            }
        }
        listener = m_listener;
    }
    if (listener) listener(e);
}

std::vector<zelLogger::Entry> zelLogger::Entries() const {
    std::lock_guard<std::mutex> g(m_mutex);
    std::vector<Entry> out;
    out.reserve(m_recent.size());
    for (std::size_t i = 0; i < m_recent.size(); ++i) out.push_back(m_recent[(m_next + i) % m_recent.size()]);
    return out;
}

void zelLogger::ClearEntries() {
    std::lock_guard<std::mutex> g(m_mutex);
    m_recent.clear();
    m_next = 0;
}

std::size_t zelLogger::Count(const std::wstring& fragment) const {
    std::lock_guard<std::mutex> g(m_mutex);
    std::size_t n = 0;
    for (const Entry& e : m_recent)
        if (e.text.find(fragment) != std::wstring::npos) ++n;
    return n;
}

void zelLogger::SetListener(std::function<void(const Entry&)> listener) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_listener = std::move(listener);
}

bool zelLogger::checkPath(const std::wstring& path) {
    if (path.empty()) return false;
    std::error_code ec;
    const std::filesystem::path p = uc::ToFsPath(path);
    if (std::filesystem::is_directory(p, ec)) return true;
    std::filesystem::create_directories(p, ec);
    return std::filesystem::is_directory(p, ec);
}
