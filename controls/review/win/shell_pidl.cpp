// CShellPidl: parsing a path into an identifier list and extracting the shell's thumbnail of it.
#include "review/win/shell_pidl.h"

#include <shobjidl.h>

#include "platform/win/handles.h"

CShellPidl CShellPidl::ILFromPath(const std::wstring& path, HWND owner) {
    CShellPidl item;
    item.m_owner = owner;
    uc::ComPtr<IShellFolder> desktop;
    if (FAILED(::SHGetDesktopFolder(desktop.put()))) return item;
    std::wstring name = path;  // ParseDisplayName takes a writable string
    LPITEMIDLIST pidl = nullptr;
    if (SUCCEEDED(desktop->ParseDisplayName(owner, nullptr, name.data(), nullptr, &pidl, nullptr)))
        item.m_pidl.reset(pidl);
    return item;
}

HBITMAP CShellPidl::GetThumbnail(const SIZE& size) const {
    if (!m_pidl) return nullptr;
    uc::ComPtr<IShellFolder> desktop;
    if (FAILED(::SHGetDesktopFolder(desktop.put()))) return nullptr;

    // The parent's list is a copy without the last identifier; an item of the desktop itself has the desktop
    // as its parent.
    uc::UniquePidl parentPidl(::ILClone(m_pidl.get()));
    if (!parentPidl) return nullptr;
    ::ILRemoveLastID(parentPidl.get());
    uc::ComPtr<IShellFolder> parent;
    if (parentPidl.get()->mkid.cb == 0)
        parent = desktop;
    else if (FAILED(desktop->BindToObject(parentPidl.get(), nullptr, IID_IShellFolder, parent.putVoid())))
        return nullptr;

    LPCITEMIDLIST last = ::ILFindLastID(m_pidl.get());
    uc::ComPtr<IExtractImage> extract;
    if (FAILED(parent->GetUIObjectOf(m_owner, 1, &last, IID_IExtractImage, nullptr, extract.putVoid())) || !extract)
        return nullptr;

    wchar_t location[MAX_PATH] = {};
    DWORD priority = 0;
    SIZE requested = size;
    DWORD flags = IEIFLAG_ASPECT | IEIFLAG_OFFLINE;  // 0x0C
    if (FAILED(extract->GetLocation(location, MAX_PATH, &priority, &requested, 32, &flags))) return nullptr;
    HBITMAP bitmap = nullptr;
    if (FAILED(extract->Extract(&bitmap))) {
        if (bitmap) ::DeleteObject(bitmap);
        return nullptr;
    }
    return bitmap;
}
