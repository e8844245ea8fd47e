// FontRepository: the process-wide cache of skin fonts, one GDI font per (size, face name).
#pragma once

#include <windows.h>

#include <cstddef>

#include "platform/export.h"
#include "skin/descriptors.h"
#include "skin/win/cfont.h"

class UC_API FontRepository {
public:
    FontRepository() = delete;

    // The cached font for `font`, created bold and antialiased on first request. A font GDI cannot create is
    // cached all the same (a CFont without a handle) and not retried. Pointers stay valid until Destroy.
    static CFont* GetFont(const FontDescriptor& font);
    // Deletes every cached font; GetFont fills the cache again afterwards.
    static void Destroy();

    // The LOGFONTW a descriptor asks GDI for; face names longer than 31 characters are cut.
    static LOGFONTW MakeLogFont(const FontDescriptor& font);
    static std::size_t CachedCount();
};
