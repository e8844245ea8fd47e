// Text helpers shared by every subsystem: UTF-8/UTF-16/wide conversions and Windows-style printf formatting.
#pragma once

#include <cstdarg>
#include <filesystem>
#include <string>

#include "platform/export.h"

namespace uc {

// Conversions never throw: invalid sequences become U+FFFD.
UC_API std::string ToUtf8(const std::wstring& text);
UC_API std::wstring FromUtf8(const std::string& text);
UC_API std::u16string ToUtf16(const std::wstring& text);
UC_API std::wstring FromUtf16(const std::u16string& text);

// Paths given as wide strings (UTF-16 on Windows, UTF-32 elsewhere) to std::filesystem and back.
UC_API std::filesystem::path ToFsPath(const std::wstring& path);
UC_API std::wstring FromFsPath(const std::filesystem::path& path);

// printf-style formatting with the Windows wide-format meaning on every platform:
// in a wide format "%s" takes a wide string and "%S" a narrow one ("%ls"/"%hs" are explicit).
// Integer, floating point, character, pointer and "%%" conversions with flags, width and precision
// ("*" too), the length prefixes h, l, ll, I64, I32, z and j are understood. An unknown conversion is
// copied through as text rather than consuming an argument.
UC_API std::wstring FormatV(const wchar_t* format, va_list args);
UC_API std::wstring Format(const wchar_t* format, ...);

// Parses a whole decimal integer (optional sign, surrounding blanks allowed). False on anything else
// or on overflow of the 32-bit range.
UC_API bool ParseInt(const std::wstring& text, int& value);
// Parses a whole decimal floating-point number independent of the C locale.
UC_API bool ParseDouble(const std::wstring& text, double& value);
// Fixed-point text with `decimals` digits after the point, independent of the C locale.
UC_API std::wstring FormatFixed(double value, int decimals);

}  // namespace uc
