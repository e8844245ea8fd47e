// EWF's last error and record memory natively: errno carries the Windows error code, records come from calloc.
#include <cerrno>
#include <cstdlib>

#include "system/ewf_api.h"

namespace uc::ewf {

ULong LastError() { return static_cast<ULong>(errno); }
void SetLastError(ULong code) { errno = static_cast<int>(code); }
void* AllocRecord(std::size_t bytes) { return std::calloc(1, bytes); }
void FreeRecord(void* record) { std::free(record); }
const wchar_t* DefaultLibraryName() { return L"libEWFAPI.so"; }

}  // namespace uc::ewf
