// RAII owners of Win32 handles, GDI objects and COM interfaces, built on uc::UniqueHandle.
#pragma once

#include <windows.h>
#include <objbase.h>

#include <utility>

#include "platform/unique_handle.h"

namespace uc {

// Kernel objects whose "no handle" value is NULL (events, threads, mutexes, processes, file mappings).
struct KernelHandleTraits {
    using Type = HANDLE;
    static HANDLE Invalid() { return nullptr; }
    static void Close(HANDLE h) { ::CloseHandle(h); }
};
using UniqueKernelHandle = UniqueHandle<KernelHandleTraits>;

// Kernel objects whose "no handle" value is INVALID_HANDLE_VALUE (CreateFile, CreateNamedPipe, CreateToolhelp32Snapshot).
struct FileHandleTraits {
    using Type = HANDLE;
    static HANDLE Invalid() { return INVALID_HANDLE_VALUE; }
    static void Close(HANDLE h) { ::CloseHandle(h); }
};
using UniqueFileHandle = UniqueHandle<FileHandleTraits>;

struct HKeyTraits {
    using Type = HKEY;
    static HKEY Invalid() { return nullptr; }
    static void Close(HKEY h) { ::RegCloseKey(h); }
};
using UniqueHKey = UniqueHandle<HKeyTraits>;

// Fonts, bitmaps, brushes, pens and regions: all released with DeleteObject.
template <class T>
struct GdiObjectTraits {
    using Type = T;
    static T Invalid() { return nullptr; }
    static void Close(T h) { ::DeleteObject(h); }
};
using UniqueHGdiObj = UniqueHandle<GdiObjectTraits<HGDIOBJ>>;
using UniqueHFont = UniqueHandle<GdiObjectTraits<HFONT>>;
using UniqueHBitmap = UniqueHandle<GdiObjectTraits<HBITMAP>>;
using UniqueHBrush = UniqueHandle<GdiObjectTraits<HBRUSH>>;
using UniqueHPen = UniqueHandle<GdiObjectTraits<HPEN>>;
using UniqueHRgn = UniqueHandle<GdiObjectTraits<HRGN>>;

// Memory DCs from CreateCompatibleDC / CreateDC (not GetDC, which is paired with ReleaseDC).
struct HdcTraits {
    using Type = HDC;
    static HDC Invalid() { return nullptr; }
    static void Close(HDC h) { ::DeleteDC(h); }
};
using UniqueHdc = UniqueHandle<HdcTraits>;

// Icons and cursors created at run time (CreateIcon, CreateIconIndirect, CopyIcon), not shared resource icons.
struct HIconTraits {
    using Type = HICON;
    static HICON Invalid() { return nullptr; }
    static void Close(HICON h) { ::DestroyIcon(h); }
};
using UniqueHIcon = UniqueHandle<HIconTraits>;

struct HModuleTraits {
    using Type = HMODULE;
    static HMODULE Invalid() { return nullptr; }
    static void Close(HMODULE h) { ::FreeLibrary(h); }
};
using UniqueHModule = UniqueHandle<HModuleTraits>;

// Must be destroyed on the thread that created the window (DestroyWindow fails elsewhere).
struct HwndTraits {
    using Type = HWND;
    static HWND Invalid() { return nullptr; }
    static void Close(HWND h) { ::DestroyWindow(h); }
};
using UniqueHwnd = UniqueHandle<HwndTraits>;

// Selects a GDI object into a DC and puts the previous one back on scope exit, so the owner of the
// selected object can delete it afterwards (a selected object cannot be deleted).
class SelectObjectGuard {
public:
    SelectObjectGuard(HDC dc, HGDIOBJ object) noexcept : m_dc(dc), m_previous(dc && object ? ::SelectObject(dc, object) : nullptr) {}
    SelectObjectGuard(const SelectObjectGuard&) = delete;
    SelectObjectGuard& operator=(const SelectObjectGuard&) = delete;
    ~SelectObjectGuard() {
        // SelectObject returns HGDI_ERROR for a failed region selection; there is nothing to restore then.
        if (m_previous && m_previous != HGDI_ERROR) ::SelectObject(m_dc, m_previous);
    }
    HGDIOBJ previous() const noexcept { return m_previous; }

private:
    HDC m_dc;
    HGDIOBJ m_previous;
};

// Owning COM interface pointer: copies AddRef, destruction Releases. Interface ids are passed
// explicitly because MinGW's MSXML headers carry no __uuidof declarations.
template <class T>
class ComPtr {
public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}
    // Adopts a reference the caller already owns (as returned by a Create/Query call).
    static ComPtr Attach(T* p) noexcept {
        ComPtr c;
        c.m_p = p;
        return c;
    }
    ComPtr(const ComPtr& other) noexcept : m_p(other.m_p) {
        if (m_p) m_p->AddRef();
    }
    ComPtr(ComPtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(m_p, other.m_p);
        return *this;
    }
    ~ComPtr() { reset(); }

    T* get() const noexcept { return m_p; }
    T* operator->() const noexcept { return m_p; }
    explicit operator bool() const noexcept { return m_p != nullptr; }

    void reset() noexcept {
        if (T* p = std::exchange(m_p, nullptr)) p->Release();
    }
    // Gives up ownership without releasing.
    T* detach() noexcept { return std::exchange(m_p, nullptr); }
    // Out parameter for Create/Query calls; releases what was held before.
    T** put() noexcept {
        reset();
        return &m_p;
    }
    void** putVoid() noexcept { return reinterpret_cast<void**>(put()); }

    template <class U>
    ComPtr<U> query(REFIID iid) const noexcept {
        ComPtr<U> out;
        if (m_p) m_p->QueryInterface(iid, out.putVoid());
        return out;
    }

private:
    T* m_p = nullptr;
};

// Initialises COM on this thread for the guard's lifetime. A thread already in another apartment
// keeps it (RPC_E_CHANGED_MODE): COM is usable there, but the matching CoUninitialize is not ours.
class ScopedCoInitialize {
public:
    explicit ScopedCoInitialize(DWORD model = COINIT_APARTMENTTHREADED) noexcept
        : m_hr(::CoInitializeEx(nullptr, model)), m_thread(::GetCurrentThreadId()) {}
    ScopedCoInitialize(const ScopedCoInitialize&) = delete;
    ScopedCoInitialize& operator=(const ScopedCoInitialize&) = delete;
    ~ScopedCoInitialize() {
        // Uninitialising another thread's apartment would unbalance it; a guard that ends on a foreign
        // thread leaves its count on the creating thread instead.
        if (SUCCEEDED(m_hr) && m_thread == ::GetCurrentThreadId()) ::CoUninitialize();
    }
    // True when COM can be used on this thread.
    bool ok() const noexcept { return SUCCEEDED(m_hr) || m_hr == RPC_E_CHANGED_MODE; }
    HRESULT result() const noexcept { return m_hr; }

private:
    HRESULT m_hr;
    DWORD m_thread;
};

}  // namespace uc
