// ISO 9660 and Joliet identifiers: UTF-8/UCS-2 text, the d-character names of ISO 9660 and Joliet's limits.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

namespace uc::disc {

// Joliet holds at most 64 UCS-2 units per name (surrogate pairs count as two).
inline constexpr std::size_t kJolietMaxNameUnits = 64;

// UTF-8 to UTF-16; bytes that are not valid UTF-8 are taken as Latin-1 (names from ANSI callers).
std::u16string Utf8ToUtf16(std::string_view text);
// UTF-16 to UTF-8; unpaired surrogates become U+FFFD.
std::string Utf16ToUtf8(std::u16string_view text);

// Why `name` cannot be a Joliet file or folder name (empty, ".", "..", a control character or one of
// * / : ; ? \, longer than 64 units), or an empty string when it can.
std::string JolietNameProblem(std::u16string_view name);

// Case-insensitive equality for names in one folder (ASCII letters folded, as the console's file system does).
bool SameName(std::u16string_view a, std::u16string_view b);

// The ISO 9660 identifier for a Joliet name: upper-case d-characters, 8.3 at level 1 or up to 30
// characters at level 2, folders without an extension; files get ";1" appended by the image writer.
// The result is unique among `taken` (a "~N" tail is added when needed) and is added to it.
std::string IsoIdentifier(std::u16string_view name, bool directory, bool level2, std::set<std::string>& taken);

}  // namespace uc::disc
