// Localised text: dotted keys looked up in the loaded language file, and translation of control texts.
#pragma once

#include <string>

#include "platform/export.h"

// Text for `key`, used as a printf-style format (Windows wide meaning) for the extra arguments.
// An unknown key yields the key itself, so a missing translation shows up as its key rather than as nothing.
UC_API std::wstring GetStr(const char* key, ...);
// Localised text for a text or key: a known key or source text is translated, anything else comes back unchanged.
UC_API std::wstring TranslateStr(const wchar_t* text);

namespace uc {
// Language file: UTF-8 (or UTF-16 with byte-order mark) lines "key=text"; '#' or ';' start a comment line;
// "\n", "\t" and "\\" in a text are escapes. Later lines override earlier ones. Returns false when the file
// cannot be read; keys already loaded stay.
UC_API bool LoadLanguageFile(const std::wstring& path);
// Number of lines of the last loaded file that were neither entries, comments nor blank.
UC_API int LanguageFileErrors();
UC_API void SetLocalisedString(const std::string& key, const std::wstring& text);
UC_API void ClearLocalisedStrings();
}  // namespace uc
