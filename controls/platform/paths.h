// Folder service: the console's numbered folders, and the exam helpers that find protocol files and skin images.
#pragma once

#include <string>

#include "platform/export.h"

// Numbered folders of the console. Each resolves to an explicitly set path, or else to "<root>/<default name>".
// The root is $UC_DATA_DIR when set, else the folder of the running executable.
class UC_API zelPath {
public:
    enum Folder {
        Root = 0,
        Protocol = 1,   // "protocol": style file, layouts and other console protocol files
        Images = 2,     // "images": skin pictures ("status/battery1.png", ...)
        Logs = 3,       // "logs"
        Language = 4,   // "language": language files
        Presets = 6,    // "presets": the user's presets
        Export = 7,     // "export": staging area of disc exports
        FactoryPresets = 23,  // "presets/factory"
    };

    // Folder path joined with `subpath` (which may be empty). Unknown numbers resolve to "<root>/folder<N>".
    static std::wstring getPath(int folder, const std::wstring& subpath = L"");
    static void setPath(int folder, const std::wstring& path);
    static void setRoot(const std::wstring& root);
    static std::wstring getRoot();
    // Forgets every folder set by hand and the root.
    static void reset();
};

// Helpers of the console's exam module that the library relies on.
class UC_API utilsExam {
public:
    // Full path of a file in the protocol folder.
    static std::wstring GetProtocolFile(const std::wstring& name);
    // Full path of a skin image given relative to the image folder ("misc/matlab.png").
    static std::wstring GetImage(const std::wstring& relative);

    // Console model number; drawing details depend on it (type 4 draws a dark rim on button faces).
    static int m_consoleType;
    static bool IsLayoutLeft();
    static void SetLayoutLeft(bool left);
    static bool DevMode();
    static void SetDevMode(bool on);

    // Screen rectangle (left, top, right, bottom) in which console dialogs are centred: the imaging area, not the
    // whole screen. The application sets it; until then, and after an empty rectangle, the primary screen's work
    // area on Windows and an empty rectangle elsewhere.
    struct Area {
        int left = 0, top = 0, right = 0, bottom = 0;
    };
    static Area CalculateDialogRect();
    static void SetDialogRect(const Area& area);
};

namespace uc {
// Folder of the running executable.
UC_API std::wstring ExecutableFolder();
// The primary screen's work area (Windows); an empty rectangle elsewhere.
UC_API utilsExam::Area PrimaryWorkArea();
// `base` joined with `sub` using the platform's separator; '/' and '\\' in `sub` both separate.
UC_API std::wstring JoinPath(const std::wstring& base, const std::wstring& sub);
}  // namespace uc
