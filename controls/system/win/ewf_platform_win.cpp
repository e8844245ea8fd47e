// EWF's last error and record memory on Windows: GetLastError/SetLastError and LocalAlloc/LocalFree.
#include <windows.h>

#include "system/ewf_api.h"

namespace uc::ewf {

ULong LastError() { return ::GetLastError(); }
void SetLastError(ULong code) { ::SetLastError(code); }
void* AllocRecord(std::size_t bytes) { return ::LocalAlloc(LMEM_FIXED | LMEM_ZEROINIT, bytes); }
void FreeRecord(void* record) {
    if (record) ::LocalFree(record);
}
const wchar_t* DefaultLibraryName() { return L"EWFAPI.dll"; }

}  // namespace uc::ewf
