// The StarBurn interface keeps the vendor's byte-packed record layouts and enumerator values on every build.
#include <gtest/gtest.h>

#include <cstddef>

#include "export/starburn_api.h"

namespace {

// Callers and the library exchange these records by pointer; a padding byte or a wrong enumerator value
// would shift every field after it.
static_assert(sizeof(CDB_FAILURE_INFORMATION) == 54);
static_assert(sizeof(STARBURN_TRACK_INFORMATION) == 28);
static_assert(offsetof(STARBURN_TRACK_INFORMATION, m__LONG__NextWritableAddress) == 16);
static_assert(offsetof(STARBURN_TRACK_INFORMATION, m__LONG__FreeLBs) == 20);
static_assert(sizeof(STARBURN_DISC_INFORMATION) == 33);
static_assert(offsetof(STARBURN_DISC_INFORMATION, m__BOOLEAN__IsErasable) == 3);
static_assert(sizeof(SCSI_DEVICE_ADDRESS) == 5);
static_assert(sizeof(LARGE_INTEGER) == 8);
static_assert(sizeof(ULONG) == 4 && sizeof(LONG) == 4 && sizeof(BOOLEAN) == 1);

TEST(StarBurnApiTest, EnumeratorsKeepTheVendorValues) {
    EXPECT_EQ(EN_SCSI_CDB_FAILED, 8);
    EXPECT_EQ(EN_INVALID_FIELD_IN_CDB, 38);
    EXPECT_EQ(CN_FIND_DEVICE, 10);
    EXPECT_EQ(CN_CDVD_WRITE_PROGRESS, 12);
    EXPECT_EQ(CN_CDVD_WRITE_END, 41);
    EXPECT_EQ(DISC_TYPE_DVDRWRO, 7);
    EXPECT_EQ(DISC_TYPE_DVDPLUSR, 13);
    EXPECT_EQ(DISC_TYPE_NO_MEDIA, 14);
    EXPECT_EQ(FILE_TREE_JOLIET, 1);
    EXPECT_EQ(ERASE_TYPE_BLANK_DISC_FAST, 1);
    EXPECT_EQ(NAME_COLLISION_MERGE_FOLDERS, 3);
}

}  // namespace
