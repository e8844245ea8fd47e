// Runs one uctool command through its registry as the program does, with its output and exit code kept.
#pragma once

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "command.h"

namespace uc::test {

struct CommandOutcome {
    int rc;
    std::wstring out, err;
};

inline CommandOutcome RunCommand(const std::wstring& name, std::vector<std::wstring> args) {
    args.insert(args.begin(), name);
    std::wostringstream out, err;
    const int rc = uctool::Dispatch(args, out, err);
    return {rc, out.str(), err.str()};
}

inline bool Has(const std::wstring& text, const std::wstring& part) { return text.find(part) != std::wstring::npos; }

}  // namespace uc::test
