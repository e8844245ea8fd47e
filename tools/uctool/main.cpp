// Entry point of uctool: wide arguments on every platform, output as UTF-8 (console code page on Windows).
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "command.h"
#include "platform/text.h"

#ifdef _WIN32
#include <io.h>
#define UC_STDERR_IS_TERMINAL() (_isatty(_fileno(stderr)) != 0)
#else
#include <unistd.h>
#define UC_STDERR_IS_TERMINAL() (isatty(2) != 0)
#endif

#ifdef _WIN32
int wmain(int argc, wchar_t** argv) {
    uctool::Args args(argv + 1, argv + argc);
#else
int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "C.UTF-8");
    uctool::Args args;
    for (int i = 1; i < argc; ++i) args.push_back(uc::FromUtf8(argv[i]));
#endif
    // The Wine wrapper takes a missing marker for a program that never started.
    if (const char* marker = std::getenv("UC_RUN_MARKER"); marker && *marker)
        if (std::FILE* f = std::fopen(marker, "w")) {
            std::fputs("started\n", f);
            std::fclose(f);
        }
    uctool::SetErrorIsTerminal(UC_STDERR_IS_TERMINAL());
    return uctool::Dispatch(args, std::wcout, std::wcerr);
}
