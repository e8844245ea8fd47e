// Which drives the console offers as export targets.
#pragma once

#include <string_view>

#include "platform/export.h"

namespace uc::ui {

// True for a drive root ("E:\") of type removable, fixed, remote, CD-ROM or RAM disk (2 to 6) that is not one of
// the console's two system drives, exactly "C:\" or "D:\" (compared case-sensitively, as the shell reports them).
UC_API bool IsOfferedDrive(std::wstring_view root, unsigned driveType);

}  // namespace uc::ui
