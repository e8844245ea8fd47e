// The console's log: entries with source file, line and type, written to a log file and kept for inspection.
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/export.h"

class UC_API zelLogger {
public:
    // Log types used across the library.
    enum LogType { Failure = 1, Fallback = 2, StateReport = 3, Detail = 5 };

    struct Entry {
        std::string file;
        int line = 0;
        int type = 0;
        std::wstring text;
    };

    // Formats and logs one entry: zelLogger::zelLogHelper(__FILE__, __LINE__, 1)(L"open %s failed", path).
    class UC_API zelLogHelper {
    public:
        zelLogHelper(const char* file, int line, int type);
        void operator()(const wchar_t* format, ...) const;

    private:
        const char* m_file;
        int m_line;
        int m_type;
    };

    static zelLogger& Instance();

    // Log file (UTF-8, appended); empty turns file output off. Default: $UC_LOG_FILE, else none.
    void SetLogFile(const std::wstring& path);
    std::wstring GetLogFile() const;

    void Write(const char* file, int line, int type, const std::wstring& text);

    // The most recent entries (up to `RecentCapacity`), oldest first.
    std::vector<Entry> Entries() const;
    void ClearEntries();
    // Number of recent entries whose text contains `fragment`.
    std::size_t Count(const std::wstring& fragment) const;
    static constexpr std::size_t RecentCapacity = 4096;

    // Extra receiver of every entry (a console window, a test); empty removes it.
    void SetListener(std::function<void(const Entry&)> listener);

    // Makes sure the folder `path` exists, creating missing parents; true when it exists afterwards.
    static bool checkPath(const std::wstring& path);

private:
    zelLogger();
    mutable std::mutex m_mutex;
    std::wstring m_path;
    std::vector<Entry> m_recent;
    std::size_t m_next = 0;
    std::function<void(const Entry&)> m_listener;
};

using zelLogHelper = zelLogger::zelLogHelper;

// Short form used throughout the library.
#define UC_LOG(type) zelLogger::zelLogHelper(__FILE__, __LINE__, (type))
