// ISO 9660 and Joliet identifiers.
#include "export/simulator/iso_names.h"

#include <algorithm>
#include <cstdint>

namespace uc::disc {

std::u16string Utf8ToUtf16(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        const auto b0 = static_cast<unsigned char>(text[i]);
        std::uint32_t cp = 0;
        std::size_t len = 0;
        if (b0 < 0x80) {
            cp = b0;
            len = 1;
        } else if ((b0 & 0xE0) == 0xC0) {
            cp = b0 & 0x1F;
            len = 2;
        } else if ((b0 & 0xF0) == 0xE0) {
            cp = b0 & 0x0F;
            len = 3;
        } else if ((b0 & 0xF8) == 0xF0) {
            cp = b0 & 0x07;
            len = 4;
        }
        bool valid = len > 0 && i + len <= text.size();
        for (std::size_t k = 1; valid && k < len; ++k) {
            const auto b = static_cast<unsigned char>(text[i + k]);
            valid = (b & 0xC0) == 0x80;
            cp = (cp << 6) | (b & 0x3F);
        }
        // Overlong forms, surrogates and values past U+10FFFF are not UTF-8.
        static constexpr std::uint32_t kMinimum[] = {0, 0, 0x80, 0x800, 0x10000};
        valid = valid && cp >= kMinimum[len] && cp <= 0x10FFFF && !(cp >= 0xD800 && cp <= 0xDFFF);
        if (!valid) {
            out.push_back(static_cast<char16_t>(b0));  // Latin-1
            ++i;
            continue;
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(cp));
        }
        i += len;
    }
    return out;
}

std::string Utf16ToUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t cp = text[i];
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            cp = 0xFFFD;
        }
        if (cp < 0x80) {
            out.push_back(static_cast<char>(cp));
        } else if (cp < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else if (cp < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        }
    }
    return out;
}

std::string JolietNameProblem(std::u16string_view name) {
    if (name.empty()) return "the name is empty";
    if (name == u"." || name == u"..") return "'.' and '..' cannot be names";
    if (name.size() > kJolietMaxNameUnits)
        return "'" + Utf16ToUtf8(name) + "' is longer than Joliet's 64 characters";
    for (char16_t c : name) {
        if (c < 0x20 || c == u'*' || c == u'/' || c == u':' || c == u';' || c == u'?' || c == u'\\')
            return "'" + Utf16ToUtf8(name) + "' holds a character Joliet forbids (control, * / : ; ? \\)";
    }
    return {};
}

namespace {
char16_t Fold(char16_t c) { return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c; }

char DChar(char16_t c) {
    if (c >= u'a' && c <= u'z') return static_cast<char>(c - 32);
    if ((c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_') return static_cast<char>(c);
    return '_';
}

std::string DChars(std::u16string_view text, std::size_t limit) {
    std::string out;
    for (char16_t c : text) {
        if (out.size() == limit) break;
        if (c >= 0xDC00 && c <= 0xDFFF) continue;  // second half of a pair: one '_' for the whole character
        out.push_back(DChar(c));
    }
    return out;
}
}  // namespace

bool SameName(std::u16string_view a, std::u16string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (Fold(a[i]) != Fold(b[i])) return false;
    return true;
}

std::string IsoIdentifier(std::u16string_view name, bool directory, bool level2, std::set<std::string>& taken) {
    std::u16string_view stem = name;
    std::u16string_view extension;
    if (!directory) {
        const auto dot = name.rfind(u'.');
        if (dot != std::u16string_view::npos && dot > 0) {
            stem = name.substr(0, dot);
            extension = name.substr(dot + 1);
        }
    }
    // Level 1: 8.3; level 2: 30 characters including the dot (31 for folders).
    const std::size_t extLimit = level2 ? 10 : 3;
    std::string ext = DChars(extension, extLimit);
    const std::size_t stemLimit = level2 ? (directory ? 31 : 30 - (ext.empty() ? 0 : ext.size() + 1)) : 8;
    std::string base = DChars(stem, stemLimit);
    if (base.empty()) base = "_";
    auto compose = [&](const std::string& s) { return ext.empty() ? s : s + "." + ext; };
    std::string candidate = compose(base);
    for (unsigned n = 1; taken.count(candidate); ++n) {
        const std::string tail = "~" + std::to_string(n);
        const std::size_t keep = stemLimit > tail.size() ? stemLimit - tail.size() : 0;
        candidate = compose(base.substr(0, std::min(base.size(), keep)) + tail);
    }
    taken.insert(candidate);
    return candidate;
}

}  // namespace uc::disc
