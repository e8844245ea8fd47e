// Encoding detection and decoding of XML documents, the pseudo-attributes of their declaration, and the read
// error both back-ends report.
#include "platform/xml_text.h"

#include <cstdint>

#include "platform/text.h"
#include "platform/xml.h"

void zelXMLFile::setError(std::wstring message, std::size_t line, std::size_t column) {
    m_errorLine = static_cast<int>(line);
    m_errorColumn = static_cast<int>(column);
    m_error = line ? uc::Format(L"XML error at line %d, column %d: %s", m_errorLine, m_errorColumn, message.c_str())
                   : std::move(message);
}

namespace uc::xml {
namespace {
bool IsBlank(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }

std::wstring Lower(std::wstring s) {
    for (wchar_t& c : s)
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
    return s;
}
}  // namespace

bool ParseDeclaration(const std::wstring& text, Pairs& out) {
    if (text.compare(0, 5, L"<?xml") != 0 || text.size() < 6 || !IsBlank(text[5])) return false;
    const std::size_t end = text.find(L"?>", 5);
    if (end == std::wstring::npos) return false;
    std::size_t i = 5;
    while (i < end) {
        while (i < end && IsBlank(text[i])) ++i;
        const std::size_t nameStart = i;
        while (i < end && !IsBlank(text[i]) && text[i] != L'=') ++i;
        if (i == nameStart) break;
        std::wstring name = text.substr(nameStart, i - nameStart);
        while (i < end && IsBlank(text[i])) ++i;
        if (i >= end || text[i] != L'=') break;
        ++i;
        while (i < end && IsBlank(text[i])) ++i;
        if (i >= end || (text[i] != L'"' && text[i] != L'\'')) break;
        const wchar_t quote = text[i++];
        const std::size_t close = text.find(quote, i);
        if (close == std::wstring::npos || close > end) break;
        out.emplace_back(std::move(name), text.substr(i, close - i));
        i = close + 1;
    }
    return true;
}

bool DeclaresUtf16(const Pairs& declaration) {
    for (const auto& [name, value] : declaration)
        if (name == L"encoding") return Lower(value).rfind(L"utf-16", 0) == 0;
    return false;
}

Encoding DetectEncoding(std::string_view bytes) {
    const auto* d = reinterpret_cast<const unsigned char*>(bytes.data());
    if (bytes.size() < 4) return Encoding::Utf8;
    if (d[0] == 0 && d[1] == 0 && d[2] == 0xFE && d[3] == 0xFF) return Encoding::Utf32Be;
    if (d[0] == 0xFF && d[1] == 0xFE && d[2] == 0 && d[3] == 0) return Encoding::Utf32Le;
    if (d[0] == 0xFE && d[1] == 0xFF) return Encoding::Utf16Be;
    if (d[0] == 0xFF && d[1] == 0xFE) return Encoding::Utf16Le;
    if (d[0] == 0xEF && d[1] == 0xBB && d[2] == 0xBF) return Encoding::Utf8;
    if (d[0] == 0 && d[1] == 0 && d[2] == 0 && d[3] == '<') return Encoding::Utf32Be;
    if (d[0] == '<' && d[1] == 0 && d[2] == 0 && d[3] == 0) return Encoding::Utf32Le;
    if (d[0] == 0 && d[1] == '<') return Encoding::Utf16Be;
    if (d[0] == '<' && d[1] == 0) return Encoding::Utf16Le;
    if (bytes.compare(0, 5, "<?xml") == 0) {
        const std::size_t end = bytes.find("?>");
        Pairs decl;
        if (end != std::string_view::npos && ParseDeclaration(FromUtf8(std::string(bytes.substr(0, end + 2))), decl))
            for (const auto& [name, value] : decl)
                if (name == L"encoding" && (Lower(value) == L"iso-8859-1" || Lower(value) == L"latin1"))
                    return Encoding::Latin1;
    }
    return Encoding::Utf8;
}

std::wstring DecodeText(std::string_view bytes, Encoding encoding) {
    const auto* d = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t n = bytes.size();
    std::wstring text;
    switch (encoding) {
    case Encoding::Utf8: text = FromUtf8(std::string(bytes)); break;
    case Encoding::Latin1: text.assign(d, d + n); break;
    case Encoding::Utf16Le:
    case Encoding::Utf16Be: {
        const bool le = encoding == Encoding::Utf16Le;
        std::u16string u(n / 2, u'\0');
        for (std::size_t i = 0; i < u.size(); ++i)
            u[i] = static_cast<char16_t>(le ? d[2 * i] | (d[2 * i + 1] << 8) : (d[2 * i] << 8) | d[2 * i + 1]);
        text = FromUtf16(u);
        break;
    }
    case Encoding::Utf32Le:
    case Encoding::Utf32Be: {
        const bool le = encoding == Encoding::Utf32Le;
        std::u16string u;
        for (std::size_t i = 0; i + 3 < n; i += 4) {
            std::uint32_t c = le ? d[i] | (d[i + 1] << 8) | (d[i + 2] << 16) | (std::uint32_t(d[i + 3]) << 24)
                                 : (std::uint32_t(d[i]) << 24) | (d[i + 1] << 16) | (d[i + 2] << 8) | d[i + 3];
            if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = 0xFFFD;
            if (c >= 0x10000) {
                c -= 0x10000;
                u += static_cast<char16_t>(0xD800 + (c >> 10));
                u += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
            } else {
                u += static_cast<char16_t>(c);
            }
        }
        text = FromUtf16(u);
        break;
    }
    }
    if (!text.empty() && text[0] == 0xFEFF) text.erase(0, 1);
    return text;
}

}  // namespace uc::xml
