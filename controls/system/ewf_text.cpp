// Write-filter texts: string conversions for EWF records and the restore dialog's fixed texts and prompt keys.
#include "system/ewf_text.h"

#include <cmath>

#include "platform/text.h"

namespace uc::ewf {

std::wstring FromEwfString(const WChar* text, std::size_t maxLength) {
    if (!text) return {};
    std::size_t n = 0;
    while (n < maxLength && text[n] != 0) ++n;
#ifdef _WIN32
    return std::wstring(text, n);
#else
    return FromUtf16(std::u16string(text, n));
#endif
}

EwfString ToEwfString(const std::wstring& text) {
#ifdef _WIN32
    return text;
#else
    return ToUtf16(text);
#endif
}

const wchar_t* TypeText(int type) {
    switch (type) {
    case EWF_DISK: return L"Disk";
    case EWF_RAM: return L"RAM";
    case EWF_RAM_REG: return L"RAM_REG";
    default: return nullptr;
    }
}

const wchar_t* StateText(int state) {
    switch (state) {
    case EWF_ENABLED: return L"Enabled";
    case EWF_DISABLED: return L"Disabled";
    default: return nullptr;
    }
}

const wchar_t* CommandText(int bootCommand) {
    switch (bootCommand) {
    case EWF_NO_CMD: return L"No Command";
    case EWF_ENABLE: return L"Enable";
    case EWF_DISABLE: return L"Disable";
    case EWF_SET_LEVEL: return L"Restore";  // a restore is scheduled as a set-level command
    case EWF_COMMIT: return L"Commit";
    default: return nullptr;
    }
}

const char* RestartPromptKey(int bootCommand) {
    switch (bootCommand) {
    case EWF_ENABLE: return "systemrestoredlg.enable";
    case EWF_DISABLE: return "systemrestoredlg.disable";
    case EWF_SET_LEVEL: return "systemrestoredlg.restore";
    case EWF_COMMIT: return "systemrestoredlg.commit";
    default: return nullptr;
    }
}

int GaugePosition(double freePercent) {
    if (!(freePercent > 0.0)) return 0;  // also NaN
    if (freePercent >= 100.0) return 100;
    return static_cast<int>(freePercent);
}

}  // namespace uc::ewf
