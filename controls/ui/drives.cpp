// Drive filtering for the export target list.
#include "ui/drives.h"

namespace uc::ui {

bool IsOfferedDrive(std::wstring_view root, unsigned driveType) {
    if (driveType < 2 || driveType > 6) return false;
    return root != L"C:\\" && root != L"D:\\";
}

}  // namespace uc::ui
