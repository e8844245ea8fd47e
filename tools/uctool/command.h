// Command registry of uctool: each command has a name, a one-line summary and a handler.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace uctool {

using Args = std::vector<std::wstring>;

struct Command {
    std::wstring name;
    std::wstring summary;
    std::wstring usage;  // shown by "uctool help NAME"
    // Returns the process exit code: 0 success, 1 failure of the work, 2 bad usage.
    std::function<int(const Args& args, std::wostream& out, std::wostream& err)> run;
};

// Called from a static object in each cmd_*.cpp.
bool Register(Command command);
const std::vector<Command>& Commands();
int Dispatch(const Args& args, std::wostream& out, std::wostream& err);

// Whether standard error is a terminal (set by main): commands show progress there and nowhere else.
void SetErrorIsTerminal(bool terminal);
bool ErrorIsTerminal();

// "--name=value" or "--name value" option lookup; removes what it consumes from `args`.
bool TakeOption(Args& args, const std::wstring& name, std::wstring& value);
bool TakeFlag(Args& args, const std::wstring& name);
// "WIDTHxHEIGHT" with each side from 8 to 2000 pixels.
bool ParseSize(const std::wstring& text, int& w, int& h);

}  // namespace uctool
