// A small INI document: sections of key=value lines, read and written without losing order or unknown lines.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/export.h"

namespace uc {

// Sections and keys match case-insensitively (ASCII), as Windows profiles do. Text is UTF-8 on disk.
class UC_API IniDocument {
public:
    void Parse(const std::wstring& text);
    std::wstring Serialize() const;

    std::optional<std::wstring> Get(const std::wstring& section, const std::wstring& key) const;
    void Set(const std::wstring& section, const std::wstring& key, const std::wstring& value);

    // Whole-file helpers; Save writes a temporary file and renames it so readers never see half a file.
    bool Load(const std::wstring& path);
    bool Save(const std::wstring& path) const;

private:
    struct Line {
        std::wstring section;  // section this line belongs to
        std::wstring key;      // empty for headers, comments and blank lines
        std::wstring raw;      // the line as written, without its line break
        std::wstring eol;      // its line break as read ("\r\n", "\n" or none at the end of the text)
    };
    std::wstring NewLine() const;
    std::vector<Line> m_lines;
};

}  // namespace uc
