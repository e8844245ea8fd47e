// Runs a uctool command in the test's own process (the test program compiles the commands it tests) and keeps
// its exit code and what it printed.
#pragma once

#include <sstream>
#include <string>
#include <utility>

#include "command.h"

namespace uc::test {

struct ToolRun {
    int code;  // 0 success, 1 the work failed, 2 bad usage
    std::wstring out, err;
};

// `uctool ARGS...`.
inline ToolRun RunTool(const uctool::Args& args) {
    std::wostringstream out, err;
    const int code = uctool::Dispatch(args, out, err);
    return {code, out.str(), err.str()};
}

// `uctool COMMAND ARGS...`.
inline ToolRun RunTool(const std::wstring& command, uctool::Args args) {
    args.insert(args.begin(), command);
    return RunTool(args);
}

}  // namespace uc::test
