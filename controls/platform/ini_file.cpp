// INI parsing and writing for the file-backed profiles.
#include "platform/ini_file.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "platform/text.h"

namespace uc {
namespace {
std::wstring Trim(const std::wstring& s) {
    std::size_t b = s.find_first_not_of(L" \t\r");
    if (b == std::wstring::npos) return {};
    std::size_t e = s.find_last_not_of(L" \t\r");
    return s.substr(b, e - b + 1);
}

bool SameName(const std::wstring& a, const std::wstring& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        wchar_t x = a[i], y = b[i];
        if (x >= L'A' && x <= L'Z') x = static_cast<wchar_t>(x - L'A' + L'a');
        if (y >= L'A' && y <= L'Z') y = static_cast<wchar_t>(y - L'A' + L'a');
        if (x != y) return false;
    }
    return true;
}
}  // namespace

void IniDocument::Parse(const std::wstring& text) {
    m_lines.clear();
    std::wstring section;
    std::size_t pos = 0;
    while (pos <= text.size()) {
        std::size_t nl = text.find(L'\n', pos);
        std::wstring raw = text.substr(pos, nl == std::wstring::npos ? std::wstring::npos : nl - pos);
        if (nl == std::wstring::npos && raw.empty()) break;
        // Only the break's own CR goes with it: further CRs belong to the line, so a save writes them back.
        std::wstring eol = nl == std::wstring::npos ? L"" : L"\n";
        if (!eol.empty() && !raw.empty() && raw.back() == L'\r') {
            raw.pop_back();
            eol = L"\r\n";
        }
        const std::wstring t = Trim(raw);
        Line line{section, L"", raw, eol};
        if (t.size() >= 2 && t.front() == L'[' && t.back() == L']') {
            section = Trim(t.substr(1, t.size() - 2));
            line.section = section;
        } else if (!t.empty() && t[0] != L';' && t[0] != L'#') {
            std::size_t eq = t.find(L'=');
            if (eq != std::wstring::npos) line.key = Trim(t.substr(0, eq));
        }
        m_lines.push_back(std::move(line));
        if (nl == std::wstring::npos) break;
        pos = nl + 1;
    }
}

// New lines take the document's first line break, so a CRLF file stays CRLF.
std::wstring IniDocument::NewLine() const {
    for (const Line& l : m_lines)
        if (!l.eol.empty()) return l.eol;
    return L"\n";
}

std::wstring IniDocument::Serialize() const {
    std::wstring out;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const Line& l = m_lines[i];
        // A last line read without a break gets one when lines were added after it.
        out += l.raw + (l.eol.empty() && i + 1 < m_lines.size() ? NewLine() : l.eol);
    }
    return out;
}

std::optional<std::wstring> IniDocument::Get(const std::wstring& section, const std::wstring& key) const {
    for (const Line& l : m_lines) {
        if (!l.key.empty() && SameName(l.section, section) && SameName(l.key, key)) {
            const std::wstring t = Trim(l.raw);
            return Trim(t.substr(t.find(L'=') + 1));
        }
    }
    return std::nullopt;
}

void IniDocument::Set(const std::wstring& section, const std::wstring& key, const std::wstring& value) {
    // Values are one line: line breaks would split the entry.
    std::wstring v = value;
    for (wchar_t& c : v)
        if (c == L'\n' || c == L'\r') c = L' ';
    const std::wstring raw = key + L"=" + v;
    std::size_t lastInSection = std::wstring::npos;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        Line& l = m_lines[i];
        if (!SameName(l.section, section)) continue;
        if (!l.key.empty() && SameName(l.key, key)) {
            l.raw = raw;
            return;
        }
        if (!Trim(l.raw).empty()) lastInSection = i;
    }
    const std::wstring eol = NewLine();
    if (lastInSection == std::wstring::npos) {
        m_lines.push_back({section, L"", L"[" + section + L"]", eol});
        m_lines.push_back({section, key, raw, eol});
    } else {
        m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(lastInSection) + 1, Line{section, key, raw, eol});
    }
}

bool IniDocument::Load(const std::wstring& path) {
    std::ifstream in(ToFsPath(path), std::ios::binary);
    if (!in) {
        m_lines.clear();
        return false;
    }
    std::ostringstream buf;
    buf << in.rdbuf();
    Parse(FromUtf8(buf.str()));
    return true;
}

bool IniDocument::Save(const std::wstring& path) const {
    const std::filesystem::path target = ToFsPath(path);
    std::error_code ec;
    if (target.has_parent_path()) std::filesystem::create_directories(target.parent_path(), ec);
    std::filesystem::path tmp = target;
    tmp += ".tmp";
    {
        std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
        if (!out) return false;
        out << ToUtf8(Serialize());
        if (!out.flush()) return false;
    }
    std::filesystem::rename(tmp, target, ec);
    return !ec;
}

}  // namespace uc
