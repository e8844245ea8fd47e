// Command registry and dispatch of uctool.
#include "command.h"

#include <algorithm>
#include <ostream>

#include "platform/text.h"

namespace uctool {

static std::vector<Command>& Registry() {
    static std::vector<Command> commands;
    return commands;
}

bool Register(Command command) {
    Registry().push_back(std::move(command));
    std::sort(Registry().begin(), Registry().end(), [](const Command& a, const Command& b) { return a.name < b.name; });
    return true;
}

const std::vector<Command>& Commands() { return Registry(); }

static void Help(std::wostream& out) {
    out << L"usage: uctool COMMAND [ARGS...]\n\ncommands:\n";
    for (const Command& c : Registry()) out << L"  " << c.name << L"  " << c.summary << L"\n";
    out << L"\n\"uctool help COMMAND\" shows a command's usage.\n";
}

int Dispatch(const Args& args, std::wostream& out, std::wostream& err) {
    if (args.empty() || args[0] == L"--help" || args[0] == L"-h") {
        Help(args.empty() ? err : out);
        return args.empty() ? 2 : 0;
    }
    if (args[0] == L"help") {
        if (args.size() < 2) {
            Help(out);
            return 0;
        }
        for (const Command& c : Registry())
            if (c.name == args[1]) {
                out << c.usage << L"\n";
                return 0;
            }
        err << L"uctool: unknown command '" << args[1] << L"'\n";
        return 2;
    }
    for (const Command& c : Registry())
        if (c.name == args[0]) return c.run(Args(args.begin() + 1, args.end()), out, err);
    err << L"uctool: unknown command '" << args[0] << L"'\n";
    Help(err);
    return 2;
}

namespace {
bool g_errorIsTerminal = false;
}  // namespace

void SetErrorIsTerminal(bool terminal) { g_errorIsTerminal = terminal; }
bool ErrorIsTerminal() { return g_errorIsTerminal; }

bool TakeOption(Args& args, const std::wstring& name, std::wstring& value) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == name && i + 1 < args.size()) {
            value = args[i + 1];
            args.erase(args.begin() + static_cast<std::ptrdiff_t>(i), args.begin() + static_cast<std::ptrdiff_t>(i) + 2);
            return true;
        }
        if (args[i].rfind(name + L"=", 0) == 0) {
            value = args[i].substr(name.size() + 1);
            args.erase(args.begin() + static_cast<std::ptrdiff_t>(i));
            return true;
        }
    }
    return false;
}

bool TakeFlag(Args& args, const std::wstring& name) {
    auto it = std::find(args.begin(), args.end(), name);
    if (it == args.end()) return false;
    args.erase(it);
    return true;
}

bool ParseSize(const std::wstring& text, int& w, int& h) {
    const std::size_t x = text.find_first_of(L"xX");
    if (x == std::wstring::npos) return false;
    return uc::ParseInt(text.substr(0, x), w) && uc::ParseInt(text.substr(x + 1), h) && w >= 8 && h >= 8 && w <= 2000 &&
           h <= 2000;
}

}  // namespace uctool
