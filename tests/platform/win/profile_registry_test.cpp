// Registry-backed application profile and the win.ini system profile, checked against the registry and the OS.
#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <cstring>
#include <string>

#include "platform/profile.h"
#include "platform/win/handles.h"

namespace {

// Reads a value straight from the registry: its type, and its text or number.
struct RawValue {
    DWORD type = REG_NONE;
    DWORD number = 0;
    std::wstring text;
    bool found = false;
};

RawValue ReadRaw(HKEY root, const std::wstring& key, const wchar_t* name) {
    RawValue r;
    uc::UniqueHKey k;
    if (::RegOpenKeyExW(root, key.c_str(), 0, KEY_QUERY_VALUE, k.put()) != ERROR_SUCCESS) return r;
    wchar_t buf[512] = {};
    DWORD size = sizeof buf - sizeof(wchar_t);
    if (::RegQueryValueExW(k.get(), name, nullptr, &r.type, reinterpret_cast<BYTE*>(buf), &size) != ERROR_SUCCESS) return r;
    r.found = true;
    if (r.type == REG_DWORD) std::memcpy(&r.number, buf, sizeof r.number);
    if (r.type == REG_SZ) r.text = buf;
    return r;
}

void WriteRaw(const std::wstring& key, const wchar_t* name, DWORD type, const void* data, DWORD size) {
    uc::UniqueHKey k;
    ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, k.put(), nullptr), ERROR_SUCCESS);
    ASSERT_EQ(::RegSetValueExW(k.get(), name, 0, type, static_cast<const BYTE*>(data), size), ERROR_SUCCESS);
}

void WriteRawString(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    WriteRaw(key, name, REG_SZ, value.c_str(), static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

const wchar_t kParent[] = L"Software\\utils_controls_test";

// Each test gets its own key under HKCU, removed afterwards.
class RegistryProfile : public testing::Test {
protected:
    void SetUp() override {
        static std::atomic<int> counter{0};
        key = std::wstring(kParent) + L"\\run" + std::to_wstring(::GetCurrentProcessId()) + L"_" + std::to_wstring(counter++);
        uc::SetProfileLocation(key);
    }
    void TearDown() override {
        uc::SetProfileLocation(L"");
        ::RegDeleteTreeW(HKEY_CURRENT_USER, key.c_str());
        ::RegDeleteKeyW(HKEY_CURRENT_USER, kParent);  // only succeeds once no other run uses it
    }
    std::wstring key;
};

TEST_F(RegistryProfile, IntsAreDwordsAndStringsAreRegSzUnderTheSectionKey) {
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Status", L"UPSPort", -1), -1);
    EXPECT_TRUE(vex_utils::WriteProfileInt(L"Settings\\Status", L"UPSPort", -40));
    EXPECT_TRUE(vex_utils::WriteProfileStringW(L"Settings\\Status", L"Name", L"Caf\u00E9 = bar"));

    const RawValue port = ReadRaw(HKEY_CURRENT_USER, key + L"\\Settings\\Status", L"UPSPort");
    ASSERT_TRUE(port.found) << "the section is a key path below the location";
    EXPECT_EQ(port.type, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(static_cast<int>(port.number), -40);
    const RawValue name = ReadRaw(HKEY_CURRENT_USER, key + L"\\Settings\\Status", L"Name");
    EXPECT_EQ(name.type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(name.text, L"Caf\u00E9 = bar");

    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Status", L"UPSPort", 0), -40);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"settings\\STATUS", L"upsport", 0), -40) << "names match without case";
    EXPECT_EQ(vex_utils::GetProfileStringW(L"Settings\\Status", L"UPSPort", L""), L"-40") << "an int reads as its text";
    EXPECT_EQ(vex_utils::GetProfileStringW(L"Settings\\Status", L"Name", L""), L"Caf\u00E9 = bar");
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Status", L"Name", 5), 5);
    EXPECT_EQ(vex_utils::GetProfileStringW(L"Settings\\Other", L"Name", L"dflt"), L"dflt");
}

TEST_F(RegistryProfile, WholeNumbersHeldAsTextReadAsInts) {
    const std::wstring section = key + L"\\Settings";
    WriteRawString(section, L"Plain", L"42");
    WriteRawString(section, L"Padded", L" -7 ");
    WriteRawString(section, L"Garbage", L"12abc");
    WriteRawString(section, L"Empty", L"");
    WriteRawString(section, L"Huge", L"99999999999");
    const BYTE bytes[4] = {1, 0, 0, 0};
    WriteRaw(section, L"Binary", REG_BINARY, bytes, sizeof bytes);
    const ULONGLONG wide = 5;
    WriteRaw(section, L"Qword", REG_QWORD, &wide, sizeof wide);

    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings", L"Plain", -1), 42);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings", L"Padded", -1), -7);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings", L"Garbage", -1), -1);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings", L"Empty", -1), -1);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings", L"Huge", -1), -1);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings", L"Binary", -1), -1) << "other value types are not numbers";
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings", L"Qword", -1), -1);
    EXPECT_EQ(vex_utils::GetProfileStringW(L"Settings", L"Binary", L"d"), L"d");

    // Writing an int over a text value turns it into a DWORD.
    EXPECT_TRUE(vex_utils::WriteProfileInt(L"Settings", L"Plain", 43));
    EXPECT_EQ(ReadRaw(HKEY_CURRENT_USER, section, L"Plain").type, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings", L"Plain", -1), 43);
}

TEST_F(RegistryProfile, InvalidWritesStoreNothing) {
    EXPECT_FALSE(vex_utils::WriteProfileInt(L"Settings", L"", 1));
    EXPECT_FALSE(vex_utils::WriteProfileInt(L"Settings", nullptr, 1));
    EXPECT_FALSE(vex_utils::WriteProfileStringW(nullptr, L"k", L"v"));
    uc::UniqueHKey k;
    EXPECT_NE(::RegOpenKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, KEY_READ, k.put()), ERROR_SUCCESS)
        << "a rejected write must not create the key";
    // The unnamed default value of a key is not a profile entry.
    WriteRawString(key, L"", L"9");
    EXPECT_EQ(vex_utils::GetProfileIntW(L"", L"", -1), -1);
}

TEST_F(RegistryProfile, NullValueAndEmptySectionWriteAtTheLocation) {
    EXPECT_TRUE(vex_utils::WriteProfileStringW(L"", L"Top", nullptr));
    const RawValue top = ReadRaw(HKEY_CURRENT_USER, key, L"Top");
    EXPECT_TRUE(top.found);
    EXPECT_EQ(top.text, L"");
    EXPECT_EQ(vex_utils::GetProfileStringW(L"", L"Top", L"d"), L"");
}

TEST_F(RegistryProfile, LocationAcceptsAHivePrefix) {
    EXPECT_EQ(uc::GetProfileLocation(), key);
    uc::SetProfileLocation(L"HKCU\\" + key);
    EXPECT_EQ(uc::GetProfileLocation(), L"HKCU\\" + key);
    EXPECT_TRUE(vex_utils::WriteProfileInt(L"S", L"V", 7));
    EXPECT_EQ(ReadRaw(HKEY_CURRENT_USER, key + L"\\S", L"V").number, 7u) << "the prefix is not part of the key path";
    uc::SetProfileLocation(key);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"S", L"V", 0), 7);

    uc::SetProfileLocation(L"");
    EXPECT_EQ(uc::GetProfileLocation(), L"Software\\utils_controls");
}

TEST_F(RegistryProfile, MachinePrefixWritesBelowHklm) {
    uc::SetProfileLocation(L"hklm\\" + key);
    if (!vex_utils::WriteProfileInt(L"S", L"V", 11)) GTEST_SKIP() << "no write access to HKEY_LOCAL_MACHINE";
    EXPECT_EQ(ReadRaw(HKEY_LOCAL_MACHINE, key + L"\\S", L"V").number, 11u);
    EXPECT_FALSE(ReadRaw(HKEY_CURRENT_USER, key + L"\\S", L"V").found);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"S", L"V", 0), 11);
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str());
    ::RegDeleteKeyW(HKEY_LOCAL_MACHINE, kParent);
}

// The system profile is the OS's own: what we write, ::GetProfileIntW sees.
class SystemProfile : public testing::Test {
protected:
    void TearDown() override { ::WriteProfileStringW(section.c_str(), nullptr, nullptr); }
    const std::wstring section = L"uc_test_" + std::to_wstring(::GetCurrentProcessId());
};

TEST_F(SystemProfile, WritesReachWinIni) {
    EXPECT_EQ(uc::GetSystemProfileInt(section.c_str(), L"_IsUpdating", 0), 0);
    EXPECT_TRUE(uc::WriteSystemProfileString(section.c_str(), L"_IsUpdating", L"1"));
    EXPECT_EQ(uc::GetSystemProfileInt(section.c_str(), L"_IsUpdating", 0), 1);
    EXPECT_EQ(::GetProfileIntW(section.c_str(), L"_IsUpdating", 0), 1u);
    EXPECT_EQ(vex_utils::GetProfileIntW(section.c_str(), L"_IsUpdating", 0), 0) << "separate from the application profile";

    // The OS reads "12abc" as 12; the profile contract says it is not a number.
    EXPECT_TRUE(uc::WriteSystemProfileString(section.c_str(), L"Odd", L"12abc"));
    EXPECT_EQ(uc::GetSystemProfileInt(section.c_str(), L"Odd", -1), -1);
    EXPECT_TRUE(uc::WriteSystemProfileString(section.c_str(), L"Neg", L"-3"));
    EXPECT_EQ(uc::GetSystemProfileInt(section.c_str(), L"Neg", 0), -3);
}

TEST_F(SystemProfile, NullValueWritesAnEmptyEntryAndBadKeysAreRejected) {
    EXPECT_TRUE(uc::WriteSystemProfileString(section.c_str(), L"K", L"5"));
    EXPECT_TRUE(uc::WriteSystemProfileString(section.c_str(), L"K", nullptr));
    wchar_t buf[16] = {};
    ::GetProfileStringW(section.c_str(), L"K", L"absent", buf, 16);
    EXPECT_STREQ(buf, L"") << "a null value must not delete the entry";
    EXPECT_FALSE(uc::WriteSystemProfileString(section.c_str(), L"", L"1"));
    EXPECT_FALSE(uc::WriteSystemProfileString(nullptr, L"K", L"1"));
    EXPECT_EQ(uc::GetSystemProfileInt(section.c_str(), nullptr, 4), 4);
}

TEST_F(SystemProfile, LocationCannotBeRedirected) {
    uc::SetSystemProfileLocation(L"C:\\somewhere\\else.ini");
    EXPECT_TRUE(uc::WriteSystemProfileString(section.c_str(), L"K", L"2"));
    EXPECT_EQ(::GetProfileIntW(section.c_str(), L"K", 0), 2u);
}

}  // namespace
