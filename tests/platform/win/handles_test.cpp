// Handle owners close what they own exactly once; SelectObjectGuard restores the DC; COM holders balance references.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <filesystem>
#include <thread>

#include "platform/paths.h"
#include "platform/text.h"
#include "platform/win/handles.h"
#include "support/temp_dir.h"

namespace {

bool HandleOpen(HANDLE h) {
    DWORD flags = 0;
    return ::GetHandleInformation(h, &flags) != FALSE;
}

TEST(Handles, KernelHandleClosesOnScopeExitButNotAfterRelease) {
    HANDLE raw = nullptr;
    {
        uc::UniqueKernelHandle h(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
        ASSERT_TRUE(h.valid());
        raw = h.get();
        EXPECT_TRUE(HandleOpen(raw));
    }
    EXPECT_FALSE(HandleOpen(raw));

    HANDLE kept = nullptr;
    {
        uc::UniqueKernelHandle h(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
        kept = h.release();
    }
    EXPECT_TRUE(HandleOpen(kept));
    ::CloseHandle(kept);
}

TEST(Handles, MovedHandleIsClosedOnceByItsNewOwner) {
    uc::UniqueKernelHandle a(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const HANDLE raw = a.get();
    {
        uc::UniqueKernelHandle b(std::move(a));
        EXPECT_FALSE(a.valid());
        EXPECT_TRUE(HandleOpen(raw));
    }
    EXPECT_FALSE(HandleOpen(raw));
}

TEST(Handles, FileHandleTreatsInvalidHandleValueAsEmpty) {
    uc::test::TempDir dir;
    const std::wstring path = dir.file(L"locked.bin");
    {
        // Opened without sharing: a second open fails until the owner closes it.
        uc::UniqueFileHandle f(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        ASSERT_TRUE(f.valid());
        uc::UniqueFileHandle second(::CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_FALSE(second.valid()) << "a failed CreateFile must not count as an open handle";
        EXPECT_EQ(second.get(), INVALID_HANDLE_VALUE);
    }
    uc::UniqueFileHandle again(::CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(again.valid()) << "the first handle was not closed";
}

TEST(Handles, RegistryKeyIsClosed) {
    HKEY raw = nullptr;
    {
        uc::UniqueHKey k;
        ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, k.put()), ERROR_SUCCESS);
        raw = k.get();
        EXPECT_EQ(::RegQueryInfoKeyW(raw, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     nullptr, nullptr, nullptr), ERROR_SUCCESS);
    }
    EXPECT_EQ(::RegQueryInfoKeyW(raw, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr), ERROR_INVALID_HANDLE);
}

TEST(Handles, GdiObjectsAndMemoryDcAreDeleted) {
    HGDIOBJ brush, pen, font, bitmap, region;
    HDC dc;
    {
        uc::UniqueHBrush b(::CreateSolidBrush(RGB(1, 2, 3)));
        uc::UniqueHPen p(::CreatePen(PS_SOLID, 1, RGB(1, 2, 3)));
        uc::UniqueHFont f(::CreateFontW(12, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, L"Arial"));
        uc::UniqueHBitmap bm(::CreateBitmap(4, 4, 1, 32, nullptr));
        uc::UniqueHRgn r(::CreateRectRgn(0, 0, 4, 4));
        uc::UniqueHdc d(::CreateCompatibleDC(nullptr));
        brush = b.get(), pen = p.get(), font = f.get(), bitmap = bm.get(), region = r.get(), dc = d.get();
        EXPECT_EQ(::GetObjectType(brush), static_cast<DWORD>(OBJ_BRUSH));
        EXPECT_EQ(::GetObjectType(pen), static_cast<DWORD>(OBJ_PEN));
        EXPECT_EQ(::GetObjectType(font), static_cast<DWORD>(OBJ_FONT));
        EXPECT_EQ(::GetObjectType(bitmap), static_cast<DWORD>(OBJ_BITMAP));
        EXPECT_EQ(::GetObjectType(region), static_cast<DWORD>(OBJ_REGION));
        EXPECT_EQ(::GetObjectType(dc), static_cast<DWORD>(OBJ_MEMDC));
    }
    for (HGDIOBJ h : {brush, pen, font, bitmap, region, static_cast<HGDIOBJ>(dc)}) EXPECT_EQ(::GetObjectType(h), 0u);
}

TEST(Handles, IconIsDestroyed) {
    BYTE andMask[32 * 4];
    BYTE xorMask[32 * 4];
    std::memset(andMask, 0xFF, sizeof andMask);
    std::memset(xorMask, 0, sizeof xorMask);
    HICON raw = nullptr;
    {
        uc::UniqueHIcon icon(::CreateIcon(::GetModuleHandleW(nullptr), 32, 32, 1, 1, andMask, xorMask));
        ASSERT_TRUE(icon.valid());
        raw = icon.get();
        EXPECT_NE(::CopyIcon(raw), nullptr);  // usable while owned (the copy is a separate icon)
    }
    ICONINFO info{};
    EXPECT_FALSE(::GetIconInfo(raw, &info));
}

TEST(Handles, LibraryIsFreed) {
    // A system DLL this program does not otherwise load, so the owner holds its only reference.
    const wchar_t* name = nullptr;
    for (const wchar_t* candidate : {L"lz32.dll", L"cabinet.dll", L"imagehlp.dll", L"msimg32.dll"}) {
        if (!::GetModuleHandleW(candidate)) {
            name = candidate;
            break;
        }
    }
    if (!name) GTEST_SKIP() << "every candidate DLL is already loaded";
    {
        uc::UniqueHModule lib(::LoadLibraryW(name));
        ASSERT_TRUE(lib.valid()) << "cannot load the system DLL";
        EXPECT_EQ(::GetModuleHandleW(name), lib.get());
    }
    EXPECT_EQ(::GetModuleHandleW(name), nullptr);
}

TEST(Handles, WindowIsDestroyed) {
    HWND raw = nullptr;
    {
        uc::UniqueHwnd w(::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
        ASSERT_TRUE(w.valid());
        raw = w.get();
        EXPECT_TRUE(::IsWindow(raw));
    }
    EXPECT_FALSE(::IsWindow(raw));
}

TEST(SelectObjectGuard, RestoresThePreviousObjectAndFreesTheSelectedOne) {
    uc::UniqueHdc dc(::CreateCompatibleDC(nullptr));
    uc::UniqueHdc other(::CreateCompatibleDC(nullptr));
    uc::UniqueHBitmap bitmap(::CreateBitmap(8, 8, 1, 1, nullptr));
    const HGDIOBJ original = ::GetCurrentObject(dc.get(), OBJ_BITMAP);
    {
        uc::SelectObjectGuard guard(dc.get(), bitmap.get());
        EXPECT_EQ(::GetCurrentObject(dc.get(), OBJ_BITMAP), bitmap.get());
        EXPECT_EQ(guard.previous(), original);
        // A bitmap is selected into one DC at a time.
        EXPECT_EQ(::SelectObject(other.get(), bitmap.get()), nullptr);
    }
    EXPECT_EQ(::GetCurrentObject(dc.get(), OBJ_BITMAP), original);
    EXPECT_NE(::SelectObject(other.get(), bitmap.get()), nullptr) << "the guard did not release the bitmap";
}

TEST(SelectObjectGuard, NullObjectSelectsNothing) {
    uc::UniqueHdc dc(::CreateCompatibleDC(nullptr));
    const HGDIOBJ pen = ::GetCurrentObject(dc.get(), OBJ_PEN);
    {
        uc::SelectObjectGuard guard(dc.get(), nullptr);
        EXPECT_EQ(guard.previous(), nullptr);
    }
    EXPECT_EQ(::GetCurrentObject(dc.get(), OBJ_PEN), pen);
}

// A COM object that only counts its references.
struct Counted : IUnknown {
    LONG refs = 1;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (!IsEqualIID(iid, IID_IUnknown)) {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        *out = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++refs); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--refs); }
};

TEST(ComPtr, CopiesAddRefAndEveryOwnerReleasesOnce) {
    Counted obj;
    {
        auto a = uc::ComPtr<IUnknown>::Attach(&obj);
        EXPECT_EQ(obj.refs, 1) << "Attach adopts the caller's reference";
        {
            uc::ComPtr<IUnknown> b = a;
            EXPECT_EQ(obj.refs, 2);
            uc::ComPtr<IUnknown> c = std::move(b);
            EXPECT_EQ(obj.refs, 2);
            c = a;  // same object again: one reference per holder still
            EXPECT_EQ(obj.refs, 2);
        }
        EXPECT_EQ(obj.refs, 1);
        auto q = a.query<IUnknown>(IID_IUnknown);
        EXPECT_EQ(q.get(), &obj);
        EXPECT_EQ(obj.refs, 2);
        EXPECT_FALSE(a.query<IUnknown>(IID_IDispatch)) << "an unsupported interface gives an empty holder";
        EXPECT_EQ(obj.refs, 2);
    }
    EXPECT_EQ(obj.refs, 0);
}

TEST(ComPtr, PutReleasesTheOldPointerAndDetachKeepsTheReference) {
    Counted first, second;
    auto p = uc::ComPtr<IUnknown>::Attach(&first);
    first.QueryInterface(IID_IUnknown, p.putVoid());  // replaces p's reference by the query's
    EXPECT_EQ(first.refs, 1);
    *p.put() = &second;
    EXPECT_EQ(first.refs, 0);
    IUnknown* raw = p.detach();
    EXPECT_FALSE(p);
    EXPECT_EQ(raw, &second);
    EXPECT_EQ(second.refs, 1);
}

TEST(ScopedCoInitialize, BalancesItsOwnInitialisation) {
    std::thread([] {
        {
            uc::ScopedCoInitialize outer;
            EXPECT_EQ(outer.result(), S_OK);
            uc::ScopedCoInitialize inner;
            EXPECT_EQ(inner.result(), S_FALSE);
            EXPECT_TRUE(inner.ok());
        }
        // Fully uninitialised again: the thread may now join the other apartment kind.
        const HRESULT hr = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        EXPECT_EQ(hr, S_OK);
        if (SUCCEEDED(hr)) ::CoUninitialize();
    }).join();
}

TEST(ScopedCoInitialize, LeavesAnotherApartmentAlone) {
    std::thread([] {
        ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        {
            uc::ScopedCoInitialize guard;  // asks for an STA on an MTA thread
            EXPECT_EQ(guard.result(), RPC_E_CHANGED_MODE);
            EXPECT_TRUE(guard.ok());
        }
        // Still in the MTA: the guard did not uninitialise what it did not initialise.
        EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
        ::CoUninitialize();
        ::CoUninitialize();
    }).join();
}

TEST(ExecutableFolder, HoldsTheRunningProgram) {
    const std::filesystem::path folder = uc::ToFsPath(uc::ExecutableFolder());
    EXPECT_TRUE(folder.is_absolute());
    EXPECT_TRUE(std::filesystem::exists(folder / "platform_win_test.exe")) << folder;
}

}  // namespace
