// CShellPidl: one shell item identifier list and the shell's thumbnail of that item (IExtractImage).
#pragma once

#include <windows.h>
#include <shlobj.h>

#include <string>

#include "platform/export.h"
#include "platform/unique_handle.h"

namespace uc {
// Identifier lists come from the shell allocator and go back to it.
struct PidlTraits {
    using Type = LPITEMIDLIST;
    static LPITEMIDLIST Invalid() { return nullptr; }
    static void Close(LPITEMIDLIST p) { ::CoTaskMemFree(p); }
};
using UniquePidl = UniqueHandle<PidlTraits>;
}  // namespace uc

class UC_API CShellPidl {
public:
    CShellPidl() = default;

    // The absolute identifier list of `path`, parsed by the desktop folder; an empty object (IsValid false)
    // when the shell does not know the path. `owner` parents any window the shell shows.
    static CShellPidl ILFromPath(const std::wstring& path, HWND owner = nullptr);
    bool IsValid() const { return static_cast<bool>(m_pidl); }

    // The shell's thumbnail of the item at `size`, owned by the caller, or null when any step fails: the
    // parent folder is bound from the desktop, asked for the item's IExtractImage, which is asked for the
    // location (260-character buffer, priority 0, colour depth 32, IEIFLAG_ASPECT | IEIFLAG_OFFLINE) and then
    // to extract. Every interface and list obtained is released before return. Needs COM on this thread.
    HBITMAP GetThumbnail(const SIZE& size) const;

private:
    uc::UniquePidl m_pidl;
    HWND m_owner = nullptr;
};
