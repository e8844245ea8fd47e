// The StarBurn interface keeps the vendor's byte-packed record layouts on every build (checked when compiled).
#include <cstddef>

#include "export/starburn_api.h"

// Callers and the library exchange these records by pointer; a padding byte would shift every field after it.
static_assert(sizeof(CDB_FAILURE_INFORMATION) == 54);
static_assert(sizeof(STARBURN_TRACK_INFORMATION) == 28);
static_assert(offsetof(STARBURN_TRACK_INFORMATION, m__LONG__NextWritableAddress) == 16);
static_assert(offsetof(STARBURN_TRACK_INFORMATION, m__LONG__FreeLBs) == 20);
static_assert(sizeof(STARBURN_DISC_INFORMATION) == 33);
static_assert(offsetof(STARBURN_DISC_INFORMATION, m__BOOLEAN__IsErasable) == 3);
static_assert(sizeof(SCSI_DEVICE_ADDRESS) == 5);
static_assert(sizeof(LARGE_INTEGER) == 8);
static_assert(sizeof(ULONG) == 4 && sizeof(LONG) == 4 && sizeof(BOOLEAN) == 1);
