// Language table behind GetStr and TranslateStr.
#include "platform/localisation.h"

#include <cstdarg>
#include <fstream>
#include <mutex>
#include <sstream>
#include <unordered_map>

#include "platform/text.h"

namespace {
std::mutex g_mutex;
std::unordered_map<std::string, std::wstring> g_table;
int g_errors = 0;

std::wstring Unescape(const std::wstring& s) {
    std::wstring out;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] == L'\\' && i + 1 < s.size()) {
            wchar_t n = s[++i];
            out += n == L'n' ? L'\n' : n == L't' ? L'\t' : n;
        } else {
            out += s[i];
        }
    }
    return out;
}

std::wstring Trim(const std::wstring& s) {
    std::size_t b = s.find_first_not_of(L" \t\r");
    if (b == std::wstring::npos) return {};
    return s.substr(b, s.find_last_not_of(L" \t\r") - b + 1);
}

std::wstring Lookup(const std::string& key, bool& found) {
    std::lock_guard<std::mutex> g(g_mutex);
    auto it = g_table.find(key);
    found = it != g_table.end();
    return found ? it->second : std::wstring();
}
}  // namespace

std::wstring GetStr(const char* key, ...) {
    if (!key) return {};
    bool found = false;
    std::wstring format = Lookup(key, found);
    if (!found) return uc::FromUtf8(key);
    va_list args;
    va_start(args, key);
    std::wstring text = uc::FormatV(format.c_str(), args);
    va_end(args);
    return text;
}

std::wstring TranslateStr(const wchar_t* text) {
    if (!text) return {};
    bool found = false;
    std::wstring t = Lookup(uc::ToUtf8(text), found);
    return found ? t : std::wstring(text);
}

namespace uc {
bool LoadLanguageFile(const std::wstring& path) {
    std::ifstream in(ToFsPath(path), std::ios::binary);
    if (!in) return false;
    std::ostringstream buf;
    buf << in.rdbuf();
    std::string bytes = buf.str();
    std::wstring text;
    if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF && static_cast<unsigned char>(bytes[1]) == 0xFE) {
        std::u16string u;
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
            u += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8));
        text = FromUtf16(u);
    } else {
        if (bytes.size() >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) bytes.erase(0, 3);
        text = FromUtf8(bytes);
    }
    std::unordered_map<std::string, std::wstring> parsed;
    int errors = 0;
    std::wistringstream lines(text);
    std::wstring line;
    while (std::getline(lines, line)) {
        const std::wstring t = Trim(line);
        if (t.empty() || t[0] == L'#' || t[0] == L';') continue;
        const std::size_t eq = t.find(L'=');
        const std::wstring key = eq == std::wstring::npos ? L"" : Trim(t.substr(0, eq));
        if (key.empty()) {
            ++errors;
            continue;
        }
        parsed[ToUtf8(key)] = Unescape(Trim(t.substr(eq + 1)));
    }
    std::lock_guard<std::mutex> g(g_mutex);
    for (auto& [k, v] : parsed) g_table[k] = std::move(v);
    g_errors = errors;
    return true;
}

int LanguageFileErrors() {
    std::lock_guard<std::mutex> g(g_mutex);
    return g_errors;
}

void SetLocalisedString(const std::string& key, const std::wstring& text) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_table[key] = text;
}

void ClearLocalisedStrings() {
    std::lock_guard<std::mutex> g(g_mutex);
    g_table.clear();
    g_errors = 0;
}
}  // namespace uc
