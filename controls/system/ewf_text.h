// Texts of the write filter: EWF strings to and from wide strings, and what the restore dialog shows for each value.
#pragma once

#include <cstddef>
#include <string>

#include "platform/export.h"
#include "system/ewf_api.h"

namespace uc::ewf {

using EwfString = std::basic_string<WChar>;

// Reads at most `maxLength` characters, stopping at the first null (fixed-size record fields may lack one).
UC_API std::wstring FromEwfString(const WChar* text, std::size_t maxLength = static_cast<std::size_t>(-1));
UC_API EwfString ToEwfString(const std::wstring& text);

// The fixed (untranslated) texts of the overlay type, the filter state and the pending boot command.
// Null for a value outside the table: the dialog then leaves its text as it was.
UC_API const wchar_t* TypeText(int type);
UC_API const wchar_t* StateText(int state);
UC_API const wchar_t* CommandText(int bootCommand);
// Shown in all three places when the write filter cannot be read.
inline constexpr const wchar_t* kNotAvailableText = L"N/A";

// The localisation key of the restart question asked on OK for the pending boot command, or null when
// nothing is pending (no command, or a value outside the table) and the dialog closes without asking.
UC_API const char* RestartPromptKey(int bootCommand);
inline constexpr const char* kDialogTitleKey = "systemrestoredlg.title";

// Position of the overlay gauge (0 ... 100) for a free-space answer: truncated toward zero, and an unknown
// answer (-1, not a number) shows as 0, as the progress control clamps it.
UC_API int GaugePosition(double freePercent);

}  // namespace uc::ewf
