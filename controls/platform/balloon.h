// BalloonMessageService: short notifications on the console (title, text, display time), recorded for inspection.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "platform/export.h"

// Built where a notification is raised and called with what to show:
//   BalloonMessageService(__FILE__, __LINE__, true, 2)(5000, title, text);
// `flag` and `kind` are passed through to the presenter (kind 2: a warning).
class UC_API BalloonMessageService {
public:
    struct Balloon {
        std::string file;  // base name of the source file
        int line = 0;
        bool flag = false;
        int kind = 0;
        unsigned int displayMs = 0;
        std::wstring title;
        std::wstring text;
    };

    BalloonMessageService(const char* file, int line, bool flag, int kind);
    // Records the balloon, logs it (state report) and hands it to the presenter, if one is set.
    void operator()(unsigned int displayMs, const wchar_t* title, const wchar_t* text) const;

    // What was shown, oldest first (at most HistoryCapacity entries).
    static std::vector<Balloon> History();
    // Balloons shown since the last ClearHistory (not limited by the history's capacity).
    static std::size_t Count();
    static void ClearHistory();
    static constexpr std::size_t HistoryCapacity = 256;
    // The console's window (or a tool) that really shows balloons; empty removes it. Called on the
    // raising thread.
    static void SetPresenter(std::function<void(const Balloon&)> presenter);

private:
    const char* m_file;
    int m_line;
    bool m_flag;
    int m_kind;
};
