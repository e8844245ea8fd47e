// What a process holds of GDI objects, windows and kernel handles, for leak tests (also under Wine, whose
// GetGuiResources and GetProcessHandleCount answer 0).
#pragma once

#include <windows.h>

#include <string>

namespace uc::test {

struct GuiResources {
    long gdi = -1;      // GDI objects; -1 where neither GetGuiResources nor the shared handle table tells
    long user = -1;     // USER objects (GetGuiResources), else the process's windows
    long handles = -1;  // kernel handles (GetProcessHandleCount), else valid handle values below 0x10000
    std::wstring how;   // which sources the figures came from
};

GuiResources Measure();

}  // namespace uc::test
