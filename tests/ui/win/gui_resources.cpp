// Leak measures: GetGuiResources and GetProcessHandleCount where they answer, else counts taken by hand.
#include "gui_resources.h"

#include <winternl.h>

#include <cstdint>

namespace uc::test {

namespace {

// One entry of the GDI handle table the process environment block points to (the 64-bit layout, which Wine
// uses for its per-process table).
struct GdiEntry {
    std::uint64_t object;
    std::uint16_t processId;
    std::uint16_t count;
    std::uint16_t unique;
    std::uint8_t type;
    std::uint8_t flags;
    std::uint64_t user;
};
static_assert(sizeof(GdiEntry) == 24);

long GdiFromTable() {
#ifdef _WIN64
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"  // the segment read inside NtCurrentTeb looks like an array to GCC
    auto* peb = reinterpret_cast<const char*>(NtCurrentTeb()->ProcessEnvironmentBlock);
#pragma GCC diagnostic pop
    auto* table = *reinterpret_cast<const GdiEntry* const*>(peb + 0xF8);
    if (!table) return -1;
    const auto pid = static_cast<std::uint16_t>(::GetCurrentProcessId());
    long n = 0;
    for (int i = 0; i < 0x10000; ++i) {
        // A zero owner marks objects of the process in Wine's own table (and stock objects on Windows).
        if (table[i].type && (table[i].processId == pid || table[i].processId == 0)) ++n;
    }
    return n;
#else
    return -1;
#endif
}

BOOL CALLBACK CountChild(HWND, LPARAM counter) {
    ++*reinterpret_cast<long*>(counter);
    return TRUE;
}

BOOL CALLBACK CountWindow(HWND hwnd, LPARAM counter) {
    DWORD pid = 0;
    ::GetWindowThreadProcessId(hwnd, &pid);
    if (pid != ::GetCurrentProcessId()) return TRUE;
    ++*reinterpret_cast<long*>(counter);
    ::EnumChildWindows(hwnd, &CountChild, counter);
    return TRUE;
}

long WindowsOfProcess() {
    long n = 0;
    ::EnumWindows(&CountWindow, reinterpret_cast<LPARAM>(&n));  // top-level windows and their descendants
    return n;
}

long HandlesByProbing() {
    long n = 0;
    for (std::uintptr_t v = 4; v < 0x10000; v += 4) {
        DWORD flags = 0;
        if (::GetHandleInformation(reinterpret_cast<HANDLE>(v), &flags)) ++n;
    }
    return n;
}

}  // namespace

GuiResources Measure() {
    GuiResources r;
    HANDLE self = ::GetCurrentProcess();
    const DWORD gdi = ::GetGuiResources(self, GR_GDIOBJECTS);
    const DWORD user = ::GetGuiResources(self, GR_USEROBJECTS);
    if (gdi > 0) {
        r.gdi = static_cast<long>(gdi);
        r.user = static_cast<long>(user);
        r.how = L"GetGuiResources";
    } else {
        r.gdi = GdiFromTable();
        r.user = WindowsOfProcess();
        r.how = r.gdi >= 0 ? L"GDI handle table, windows" : L"windows (no GDI count)";
    }
    DWORD handles = 0;
    if (::GetProcessHandleCount(self, &handles) && handles > 0) {
        r.handles = static_cast<long>(handles);
        r.how += L", GetProcessHandleCount";
    } else {
        r.handles = HandlesByProbing();
        r.how += L", handle probing";
    }
    return r;
}

}  // namespace uc::test
