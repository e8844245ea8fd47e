// Run-time loading: an absent library leaves an empty object that resolves nothing; a present one resolves by name.
#include <gtest/gtest.h>

#include "platform/dynamic_library.h"

namespace {

#ifdef _WIN32
const wchar_t* const kSystemLibrary = L"kernel32.dll";
const char* const kSystemSymbol = "GetTickCount";
#else
const wchar_t* const kSystemLibrary = L"libc.so.6";
const char* const kSystemSymbol = "strlen";
#endif

TEST(DynamicLibraryTest, AbsentLibraryDegradesAndPresentOneResolves) {
    uc::DynamicLibrary absent(L"uc-no-such-vendor-library.dll");
    EXPECT_FALSE(absent.IsLoaded());
    EXPECT_FALSE(absent.LastError().empty());
    EXPECT_EQ(absent.ResolveAddress("anything"), nullptr);

    uc::DynamicLibrary present(kSystemLibrary);
    ASSERT_TRUE(present.IsLoaded()) << std::string(present.LastError().begin(), present.LastError().end());
    EXPECT_TRUE(present.LastError().empty());
    EXPECT_NE(present.ResolveAddress(kSystemSymbol), nullptr);
    EXPECT_EQ(present.ResolveAddress("uc_no_such_export"), nullptr);

    // Moving hands the module over; the source is left empty and unloading it is harmless.
    uc::DynamicLibrary moved(std::move(present));
    EXPECT_TRUE(moved.IsLoaded());
    EXPECT_FALSE(present.IsLoaded());
    moved.Unload();
    EXPECT_EQ(moved.ResolveAddress(kSystemSymbol), nullptr);
}

}  // namespace
