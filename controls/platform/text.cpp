// UTF conversions, Windows-style wide printf formatting and locale-independent number parsing.
#include "platform/text.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <vector>

namespace uc {
namespace {

void AppendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

void AppendWide(std::wstring& out, char32_t c) {
    if constexpr (sizeof(wchar_t) == 2) {
        if (c >= 0x10000) {
            c -= 0x10000;
            out += static_cast<wchar_t>(0xD800 + (c >> 10));
            out += static_cast<wchar_t>(0xDC00 + (c & 0x3FF));
            return;
        }
    }
    out += static_cast<wchar_t>(c);
}

// Reads one code point from a wide string (UTF-16 where wchar_t is 16 bits wide).
template <class Ch>
char32_t NextUtf16(const Ch* s, std::size_t n, std::size_t& i) {
    char32_t c = static_cast<std::uint32_t>(s[i++]) & (sizeof(Ch) == 2 ? 0xFFFFu : 0xFFFFFFFFu);
    if (sizeof(Ch) == 2 || c <= 0xFFFF) {
        if (c >= 0xD800 && c <= 0xDBFF) {
            if (i < n) {
                char32_t lo = static_cast<std::uint32_t>(s[i]) & 0xFFFF;
                if (lo >= 0xDC00 && lo <= 0xDFFF) {
                    ++i;
                    return 0x10000 + ((c - 0xD800) << 10) + (lo - 0xDC00);
                }
            }
            return 0xFFFD;
        }
        if (c >= 0xDC00 && c <= 0xDFFF) return 0xFFFD;
    }
    if (c > 0x10FFFF) return 0xFFFD;
    return c;
}

}  // namespace

std::string ToUtf8(const std::wstring& text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) AppendUtf8(out, NextUtf16(text.data(), text.size(), i));
    return out;
}

std::wstring FromUtf8(const std::string& text) {
    std::wstring out;
    out.reserve(text.size());
    const auto* s = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t n = text.size();
    for (std::size_t i = 0; i < n;) {
        unsigned char b = s[i];
        int extra = b < 0x80 ? 0 : (b >> 5) == 6 ? 1 : (b >> 4) == 14 ? 2 : (b >> 3) == 30 ? 3 : -1;
        if (extra < 0) {
            AppendWide(out, 0xFFFD);
            ++i;
            continue;
        }
        char32_t c = extra == 0 ? b : extra == 1 ? (b & 0x1F) : extra == 2 ? (b & 0x0F) : (b & 0x07);
        bool ok = true;
        for (int k = 1; k <= extra; ++k) {
            if (i + k >= n || (s[i + k] & 0xC0) != 0x80) {
                ok = false;
                break;
            }
            c = (c << 6) | (s[i + k] & 0x3F);
        }
        static const char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
        if (!ok || c < kMin[extra] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
            AppendWide(out, 0xFFFD);
            ++i;
            continue;
        }
        AppendWide(out, c);
        i += extra + 1;
    }
    return out;
}

std::u16string ToUtf16(const std::wstring& text) {
    std::u16string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        char32_t c = NextUtf16(text.data(), text.size(), i);
        if (c >= 0x10000) {
            c -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (c >> 10));
            out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        } else {
            out += static_cast<char16_t>(c);
        }
    }
    return out;
}

std::wstring FromUtf16(const std::u16string& text) {
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) AppendWide(out, NextUtf16(text.data(), text.size(), i));
    return out;
}

std::filesystem::path ToFsPath(const std::wstring& path) {
#ifdef _WIN32
    return std::filesystem::path(path);
#else
    return std::filesystem::path(ToUtf8(path));
#endif
}

std::wstring FromFsPath(const std::filesystem::path& path) {
#ifdef _WIN32
    return path.wstring();
#else
    return FromUtf8(path.string());
#endif
}

std::wstring FormatV(const wchar_t* format, va_list args) {
    std::wstring out;
    if (!format) return out;
    va_list ap;
    va_copy(ap, args);
    const wchar_t* p = format;
    while (*p) {
        if (*p != L'%') {
            out += *p++;
            continue;
        }
        const wchar_t* start = p++;
        if (*p == L'%') {
            out += L'%';
            ++p;
            continue;
        }
        std::string directive = "%";
        while (*p && std::wcschr(L"-+ #0", *p)) directive += static_cast<char>(*p++);
        if (*p == L'*') {
            directive += std::to_string(va_arg(ap, int));
            ++p;
        } else {
            while (*p >= L'0' && *p <= L'9') directive += static_cast<char>(*p++);
        }
        if (*p == L'.') {
            directive += static_cast<char>(*p++);
            if (*p == L'*') {
                directive += std::to_string(va_arg(ap, int));
                ++p;
            } else {
                while (*p >= L'0' && *p <= L'9') directive += static_cast<char>(*p++);
            }
        }
        enum { kInt, kLong, kLongLong, kShort, kSize, kMax } len = kInt;
        bool wideFlag = false, narrowFlag = false;
        if (p[0] == L'I' && p[1] == L'6' && p[2] == L'4') {
            len = kLongLong;
            p += 3;
        } else if (p[0] == L'I' && p[1] == L'3' && p[2] == L'2') {
            p += 3;
        } else if (p[0] == L'l' && p[1] == L'l') {
            len = kLongLong;
            p += 2;
        } else if (*p == L'l') {
            len = kLong;
            wideFlag = true;
            ++p;
        } else if (*p == L'w') {
            wideFlag = true;
            ++p;
        } else if (p[0] == L'h' && p[1] == L'h') {
            len = kShort;
            p += 2;
        } else if (*p == L'h') {
            len = kShort;
            narrowFlag = true;
            ++p;
        } else if (*p == L'z' || *p == L'I') {
            len = kSize;
            ++p;
        } else if (*p == L'j') {
            len = kMax;
            ++p;
        }
        const wchar_t conv = *p;
        if (!conv) {
            out.append(start);
            break;
        }
        ++p;
        char buf[512];
        auto emit = [&](const std::string& s) { out += FromUtf8(s); };
        switch (conv) {
        case L'd':
        case L'i':
        case L'u':
        case L'x':
        case L'X':
        case L'o': {
            const bool isSigned = conv == L'd' || conv == L'i';
            std::string f = directive + "ll" + static_cast<char>(conv);
            long long sv = 0;
            unsigned long long uv = 0;
            switch (len) {
            case kLongLong: sv = va_arg(ap, long long); uv = static_cast<unsigned long long>(sv); break;
            case kLong: sv = va_arg(ap, long); uv = static_cast<unsigned long>(sv); break;
            case kSize: uv = va_arg(ap, std::size_t); sv = static_cast<long long>(uv); break;
            case kMax: sv = va_arg(ap, std::intmax_t); uv = static_cast<unsigned long long>(sv); break;
            default: {
                int v = va_arg(ap, int);
                if (len == kShort) v = isSigned ? static_cast<short>(v) : static_cast<unsigned short>(v);
                sv = v;
                uv = static_cast<unsigned int>(v);
            }
            }
            if (isSigned)
                std::snprintf(buf, sizeof buf, f.c_str(), sv);
            else
                std::snprintf(buf, sizeof buf, f.c_str(), uv);
            emit(buf);
            break;
        }
        case L'f':
        case L'F':
        case L'e':
        case L'E':
        case L'g':
        case L'G': {
            std::string f = directive + static_cast<char>(conv);
            std::snprintf(buf, sizeof buf, f.c_str(), va_arg(ap, double));
            emit(buf);
            break;
        }
        case L'p': {
            std::snprintf(buf, sizeof buf, "%p", va_arg(ap, void*));
            emit(buf);
            break;
        }
        case L'c':
        case L'C': {
            // Wide format: %c is a wide character, %C (or %hc) a narrow one.
            const int v = va_arg(ap, int);
            const bool narrow = conv == L'C' ? !wideFlag : narrowFlag;
            out += narrow ? static_cast<wchar_t>(static_cast<unsigned char>(v)) : static_cast<wchar_t>(v);
            break;
        }
        case L's':
        case L'S': {
            bool narrow = conv == L'S' ? !wideFlag : narrowFlag;
            std::wstring s;
            if (narrow) {
                const char* v = va_arg(ap, const char*);
                s = v ? FromUtf8(v) : L"(null)";
            } else {
                const wchar_t* v = va_arg(ap, const wchar_t*);
                s = v ? v : L"(null)";
            }
            // Width and precision count characters, applied here rather than by snprintf.
            std::size_t dot = directive.find('.');
            if (dot != std::string::npos) {
                std::size_t prec = static_cast<std::size_t>(std::atoi(directive.c_str() + dot + 1));
                if (s.size() > prec) s.resize(prec);
            }
            const bool left = directive.find('-') != std::string::npos;
            std::size_t w = 0;
            for (std::size_t k = 1; k < directive.size() && k < dot; ++k) {
                if (directive[k] >= '1' && directive[k] <= '9') {
                    w = static_cast<std::size_t>(std::atoi(directive.c_str() + k));
                    break;
                }
            }
            if (s.size() < w) s = left ? s + std::wstring(w - s.size(), L' ') : std::wstring(w - s.size(), L' ') + s;
            out += s;
            break;
        }
        default:
            out.append(start, p);
            break;
        }
    }
    va_end(ap);
    return out;
}

std::wstring Format(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    std::wstring s = FormatV(format, args);
    va_end(args);
    return s;
}

namespace {
std::string TrimmedAscii(const std::wstring& text, bool& ok) {
    std::size_t b = 0, e = text.size();
    while (b < e && (text[b] == L' ' || text[b] == L'\t' || text[b] == L'\r' || text[b] == L'\n')) ++b;
    while (e > b && (text[e - 1] == L' ' || text[e - 1] == L'\t' || text[e - 1] == L'\r' || text[e - 1] == L'\n')) --e;
    std::string s;
    ok = b < e;
    for (std::size_t i = b; i < e; ++i) {
        if (text[i] > 0x7F) {
            ok = false;
            return {};
        }
        s += static_cast<char>(text[i]);
    }
    return s;
}
}  // namespace

bool ParseInt(const std::wstring& text, int& value) {
    bool ok = false;
    std::string s = TrimmedAscii(text, ok);
    if (!ok) return false;
    const char* b = s.data();
    if (*b == '+' && s.size() > 1 && s[1] != '-') ++b;
    int v = 0;
    auto [ptr, ec] = std::from_chars(b, s.data() + s.size(), v);
    if (ec != std::errc() || ptr != s.data() + s.size()) return false;
    value = v;
    return true;
}

bool ParseDouble(const std::wstring& text, double& value) {
    bool ok = false;
    std::string s = TrimmedAscii(text, ok);
    if (!ok) return false;
    const char* b = s.data();
    if (*b == '+' && s.size() > 1 && s[1] != '-') ++b;
    double v = 0;
    auto [ptr, ec] = std::from_chars(b, s.data() + s.size(), v);
    if (ec != std::errc() || ptr != s.data() + s.size()) return false;
    value = v;
    return true;
}

std::wstring FormatFixed(double value, int decimals) {
    if (decimals < 0) decimals = 0;
    if (decimals > 17) decimals = 17;
    char buf[400];
    auto [ptr, ec] = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, decimals);
    if (ec != std::errc()) return L"0";
    return FromUtf8(std::string(buf, ptr));
}

}  // namespace uc
