// The flat C interface of the StarBurn disc-writing library: record layouts, callback type and the StarBurn_* functions.
//
// The console loads the library at run time by name (uc::DynamicLibrary) and resolves each function by its
// undecorated name; use `decltype(&StarBurn_Xxx)` for the pointer types. The declarations follow the vendor's
// published header (names, parameter order, record layouts packed to one byte, __stdcall on Windows).
// Where that header does not say what a call takes, the declaration is marked "declared here" and states
// what this code base relies on; the simulated library (controls/export/simulator) implements exactly that.
//
// Every operation that can fail returns an EXCEPTION_NUMBER (EN_SUCCESS when it worked), fills the caller's
// exception text buffer (NUL-terminated, truncated to its size; may be NULL with size 0), stores a system
// error number through `p__PULONG__SystemError` (may be NULL) and, for device calls, fills the
// CDB_FAILURE_INFORMATION (may be NULL).
//
// Names and paths passed as PCHAR are UTF-8 in this code base (the console converts its wide strings to
// UTF-8 before calling); the simulated library also accepts bytes that are not valid UTF-8 as Latin-1.
#pragma once

#ifdef _WIN32
#include <windows.h>
#define STARBURN_CALL __stdcall
#else
#include <cstdint>
#define STARBURN_CALL
#ifndef UC_WINDOWS_BASE_TYPES
#define UC_WINDOWS_BASE_TYPES
// The Windows base types the interface is written in, with their Windows sizes.
typedef void VOID;
typedef void* PVOID;
typedef char CHAR;
typedef char* PCHAR;
typedef unsigned char UCHAR;
typedef unsigned char* PUCHAR;
typedef unsigned char BOOLEAN;
typedef BOOLEAN* PBOOLEAN;
typedef std::uint16_t USHORT;
typedef std::uint16_t* PUSHORT;
typedef std::int32_t LONG;
typedef std::int32_t* PLONG;
typedef std::uint32_t ULONG;
typedef std::uint32_t* PULONG;
typedef union _LARGE_INTEGER {
    struct {
        std::uint32_t LowPart;
        std::int32_t HighPart;
    };
    std::int64_t QuadPart;
} LARGE_INTEGER, *PLARGE_INTEGER;
#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif
#ifndef MAX_PATH
#define MAX_PATH 260
#endif
#endif  // UC_WINDOWS_BASE_TYPES
#endif

// Inside the simulated library the functions are exported; everyone else only names them.
#if defined(_WIN32) && defined(STARBURN_BUILDING_LIBRARY)
#define STARBURN_IMPEX_API __declspec(dllexport)
#elif defined(STARBURN_BUILDING_LIBRARY)
#define STARBURN_IMPEX_API __attribute__((visibility("default")))
#else
#define STARBURN_IMPEX_API
#endif

// File name of the library: the vendor's DLL on Windows; natively the simulated library's shared object.
#ifdef _WIN32
#define STARBURN_LIBRARY_NAME L"StarBurn.dll"
#else
#define STARBURN_LIBRARY_NAME L"libStarBurn.so"
#endif

#ifdef __cplusplus
extern "C" {
#endif

// ---- Constants ----

#define SCSI_DEVICE_RO_DIRECT_ACCESS 0x05  // CD/DVD device, the kind StarBurn_FindDevice looks for
#define SCSI_DEVICE_WILDCARD 0xFF          // any device kind
#define MODE1_LB_SIZE_IN_UCHARS 2048       // one logical block of data
#define ISO9660_TREE_LEVEL 8               // deepest folder level ISO 9660 readers are guaranteed to handle
#define CD_SPEED_IN_KBPS_1X 176
#define DVD_SPEED_IN_KBPS_1X 1385
#define CDVD_SPEED_IS_KBPS_MAXIMUM 0xFFFF  // "fastest the device supports"
#define TRACK_NUMBER_INVISIBLE 0xFF        // the next, not yet written track
#define NUMBER_OF_TRACKS 100
#define WRITE_REPORT_DELAY_IN_SECONDS 1
#define BUFFER_STATUS_REPORT_DELAY_IN_SECONDS 5
#define ISO9660_SYSTEM_VOLUME_ID_SIZE_IN_UCHARS 32
#define CACHE_SIZE_IN_MBS 160

// Disc status (STARBURN_DISC_INFORMATION::m__UCHAR__DiscStatus).
#define DISC_STATUS_EMPTY 0x00
#define DISC_STATUS_INCOMPLETE 0x01  // appendable
#define DISC_STATUS_COMPLETE 0x02    // closed
// Last session status (STARBURN_DISC_INFORMATION::m__UCHAR__LastSessionStatus).
#define LAST_SESSION_EMPTY 0x00
#define LAST_SESSION_INCOMPLETE 0x01
#define LAST_SESSION_COMPLETE 0x03

// ---- Enumerations ----

typedef enum _EXCEPTION_NUMBER {
    EN_SUCCESS = 0,
    EN_FAILURE,
    EN_INVALID_INPUT_PARAMETER,
    EN_INVALID_STATE,
    EN_MEMORY_ALLOCATION_FAILED,
    EN_SYSTEM_CALL_FAILED,
    EN_SCSI_TRANSPORT_FAILED,
    EN_SCSI_DEVICE_BUSY,
    EN_SCSI_CDB_FAILED,
    EN_SCSI_DEVICE_INVALID_TYPE,
    EN_INVALID_RESPONSE,
    EN_BUFFER_UNDERRUN,
    EN_INVALID_EXCEPTION,
    EN_ACCESS_TO_FEATURE_DENIED,
    EN_USER_EXCEPTION,
    EN_PATH_TOO_LONG,
    EN_UNDER_CONSTRUCTION,
    EN_NOT_FOUND,
    EN_FILE_TOO_BIG,
    EN_NOT_IMPLEMENTED,
    EN_RANGE,
    EN_REGISTRATION_FAILED,
    EN_UNSUPPORTED_AUDIO,
    EN_BUFFER_TOO_SMALL,
    EN_SYSTEM_CALL_FAILED_EX,
    EN_ERROR_RECOVERY_FAILED,
    EN_UNRECOGNIZED_MEDIA,
    EN_GENERAL_SEEK_ERROR,
    EN_GENERAL_READ_ERROR,
    EN_ILLEGAL_OPERATION_FOR_TRACK,
    EN_UNSUPPORTED_READ_MODE,
    EN_REQUEST_TOO_LARGE,
    EN_FULL_ERASE_REQUIRED,
    EN_VERIFY_FAILED,
    EN_DPM_FAILED,
    EN_DEVICE_SHARING_VIOLATION,
    EN_CALL_IS_OBSOLETE,
    EN_WRONG_OS_VERSION,
    EN_INVALID_FIELD_IN_CDB
} EXCEPTION_NUMBER, *PEXCEPTION_NUMBER;

// What a callback reports; the table under PCALLBACK says what its two extra pointers carry.
typedef enum _CALLBACK_NUMBER {
    CN_FILE_TREE_PROGRESS_ADD = 0,
    CN_FILE_TREE_PROGRESS_REMOVE,
    CN_FILE_TREE_PROGRESS_IGNORE,
    CN_FILE_TREE_PROGRESS_NAME_COLLISION,
    CN_TARGET_FILE_ANALYZE_BEGIN,
    CN_TARGET_FILE_ANALYZE_END,
    CN_WAIT_CACHE_FULL_BEGIN,
    CN_WAIT_CACHE_FULL_END,
    CN_SYNCHRONIZE_CACHE_BEGIN,
    CN_SYNCHRONIZE_CACHE_END,
    CN_FIND_DEVICE,
    CN_CDVD_READ_PROGRESS,
    CN_CDVD_WRITE_PROGRESS,
    CN_CDVD_BUFFER_STATUS,
    CN_CDVD_TRACK_BEGIN,
    CN_CDVD_TRACK_END,
    CN_CDVD_SPLIT_BEGIN,
    CN_CDVD_SPLIT_END,
    CN_CDVD_READ_BAD_BLOCK_HIT,
    CN_CDVD_READ_ECCEDC_BAD_BLOCK_HIT,
    CN_CDVD_READ_RETRY,
    CN_DVDPLUSRW_FORMAT_BEGIN,
    CN_DVDPLUSRW_FORMAT_END,
    CN_DVDRAM_FORMAT_BEGIN,
    CN_DVDRAM_FORMAT_END,
    CN_BUFFER_UNDERRUN,
    CN_DVD_MEDIA_PADDING_SIZE,
    CN_DVD_MEDIA_PADDING_BEGIN,
    CN_DVD_MEDIA_PADDING_END,
    CN_CDVD_READ_CANCEL_QUERY,
    CN_DVDRW_QUICK_FORMAT_BEGIN,
    CN_DVDRW_QUICK_FORMAT_END,
    CN_DVD_TEST_WRITE_DISABLED,
    CN_CDVD_DPM_BEGIN,
    CN_CDVD_DPM_END,
    CN_CDVD_DPM_PROGRESS,
    CN_CDVD_VERIFY_PROGRESS,
    CN_SAO_TRACK_WRITE_BEGIN,
    CN_SAO_TRACK_WRITE_END,
    CN_DVD_MEDIA_PADDING_WRITE_PROGRESS,
    CN_CDVD_WRITE_BEGIN,
    CN_CDVD_WRITE_END,
    CN_CDVD_VERIFY_BEGIN,
    CN_CDVD_VERIFY_END,
    CN_BDRE_FORMAT_BEGIN,
    CN_BDRE_FORMAT_END
} CALLBACK_NUMBER, *PCALLBACK_NUMBER;

typedef enum _WRITE_MODE {
    WRITE_MODE_TRACK_AT_ONCE = 0,
    WRITE_MODE_SESSION_AT_ONCE,
    WRITE_MODE_DISC_AT_ONCE_PQ,
    WRITE_MODE_DISC_AT_ONCE_RAW_PW
} WRITE_MODE, *PWRITE_MODE;

typedef enum _FILE_TREE {
    FILE_TREE_ISO9660 = 0,  // ISO 9660 names only
    FILE_TREE_JOLIET        // ISO 9660 plus the Joliet (UCS-2) directory hierarchy
} FILE_TREE, *PFILE_TREE;

// Which time stamp of a file goes into its directory record.
typedef enum _FILE_TIME { FILE_TIME_CREATION = 0, FILE_TIME_LAST_ACCESS, FILE_TIME_LAST_WRITE } FILE_TIME, *PFILE_TIME;

typedef enum _ERASE_TYPE {
    ERASE_TYPE_BLANK_DISC_FULL = 0,
    ERASE_TYPE_BLANK_DISC_FAST,
    ERASE_TYPE_BLANK_TRACK,
    ERASE_TYPE_UNRESERVE_TRACK,
    ERASE_TYPE_BLANK_TRACK_TAIL,
    ERASE_TYPE_UNCLOSE_LAST_SESSION,
    ERASE_TYPE_BLANK_SESSION
} ERASE_TYPE, *PERASE_TYPE;

// Inserted medium. The console's burner shows codes 0 to 13 with texts of its own.
typedef enum _DISC_TYPE {
    DISC_TYPE_UNKNOWN = 0,
    DISC_TYPE_CDROM,
    DISC_TYPE_CDR,
    DISC_TYPE_CDRW,
    DISC_TYPE_DVDROM,
    DISC_TYPE_DVDR,
    DISC_TYPE_DVDRAM,
    DISC_TYPE_DVDRWRO,  // DVD-RW, restricted overwrite
    DISC_TYPE_DVDRWSR,  // DVD-RW, sequential recording
    DISC_TYPE_DVDPLUSRW,
    DISC_TYPE_DDCDROM,
    DISC_TYPE_DDCDR,
    DISC_TYPE_DDCDRW,
    DISC_TYPE_DVDPLUSR,
    DISC_TYPE_NO_MEDIA,
    DISC_TYPE_DVDPLUSR_DL,
    DISC_TYPE_DVDR_DL,
    DISC_TYPE_BDROM,
    DISC_TYPE_BDR,
    DISC_TYPE_BDRE,
    DISC_TYPE_HDDVDROM,
    DISC_TYPE_HDDVDR,
    DISC_TYPE_HDDVDRW
} DISC_TYPE, *PDISC_TYPE;

// How a name collision in a file tree was settled (NAME_COLLISION_INFO).
typedef enum _NAME_COLLISION_SOLUTION {
    NAME_COLLISION_SKIP_NEW = 0,
    NAME_COLLISION_REPLACE_OLD = 1,
    NAME_COLLISION_RENAME_NEW = 2,
    NAME_COLLISION_MERGE_FOLDERS = 3
} NAME_COLLISION_SOLUTION, *PNAME_COLLISION_SOLUTION;

// Where a tree node came from.
typedef enum _ISO9660_KIDTYPE { KIDTYPE_UNKNOWN, KIDTYPE_IMPORTED, KIDTYPE_FROMDISK, KIDTYPE_VIRTUAL } ISO9660_KIDTYPE, *PISO9660_KIDTYPE;

// ---- Records (byte-packed, as the vendor's header lays them out) ----

#pragma pack(push, 1)

typedef struct _CDB_FAILURE_INFORMATION {
    BOOLEAN m__BOOLEAN__IsValid;  // filled by the failing call
    UCHAR m__UCHAR__CDBSizeInUCHARs;
    UCHAR m__UCHAR__CDB[16];
    UCHAR m__UCHAR__SenseSizeInUCHARs;
    UCHAR m__UCHAR__Sense[32];
    UCHAR m__UCHAR__TransportStatus;
    UCHAR m__UCHAR__TargetStatus;
    UCHAR m__UCHAR__HostAdapterStatus;
} CDB_FAILURE_INFORMATION, *PCDB_FAILURE_INFORMATION;

typedef struct _STARBURN_TRACK_INFORMATION {
    BOOLEAN m__BOOLEAN__IsValid;
    UCHAR m__UCHAR__TrackNumber;
    UCHAR m__UCHAR__SessionNumber;
    UCHAR m__UCHAR__TrackMode;
    BOOLEAN m__BOOLEAN__IsCopy;
    BOOLEAN m__BOOLEAN__IsDamage;
    UCHAR m__UCHAR__DataMode;
    BOOLEAN m__BOOLEAN__IsFixedPacket;
    BOOLEAN m__BOOLEAN__IsPacket;
    BOOLEAN m__BOOLEAN__IsBlank;
    BOOLEAN m__BOOLEAN__IsReserved;
    BOOLEAN m__BOOLEAN__IsNextWritableAddressValid;
    LONG m__LONG__TrackStartAddress;    // first block of the track
    LONG m__LONG__NextWritableAddress;  // NWA: where the next track starts
    LONG m__LONG__FreeLBs;              // blocks still free on the medium (invisible track)
    LONG m__LONG__FixedPacketSizeInLBs;
} STARBURN_TRACK_INFORMATION, *PSTARBURN_TRACK_INFORMATION;

typedef struct _STARBURN_DISC_INFORMATION {
    BOOLEAN m__BOOLEAN__IsValid;
    UCHAR m__UCHAR__DiscStatus;         // DISC_STATUS_*
    UCHAR m__UCHAR__LastSessionStatus;  // LAST_SESSION_*
    BOOLEAN m__BOOLEAN__IsErasable;     // CD-RW, DVD-RW, DVD+RW, DVD-RAM
    UCHAR m__UCHAR__FirstTrackNumber;
    UCHAR m__UCHAR__NumberOfSessions;
    UCHAR m__UCHAR__LastSessionFirstTrack;
    UCHAR m__UCHAR__LastSessionLastTrack;
    BOOLEAN m__BOOLEAN__IsGEN;
    BOOLEAN m__BOOLEAN__IsDBCValid;
    BOOLEAN m__BOOLEAN__IsDIDValid;
    UCHAR m__UCHAR__DiscType;  // the MMC disc type byte, not DISC_TYPE (see GetInsertedDiscType)
    UCHAR m__UCHAR__DiscIdentification[4];
    UCHAR m__UCHAR__LastSessionLeadIn[4];
    UCHAR m__UCHAR__LastPossibleStartTime[4];
    UCHAR m__UCHAR__DiscBarCode[8];
    UCHAR m__UCHAR__NumberOfOPCEntries;
} STARBURN_DISC_INFORMATION, *PSTARBURN_DISC_INFORMATION;

// Passed (as Special1) with CN_FIND_DEVICE; the four numbers open the device in StarBurn_CdvdBurnerGrabber_Create.
typedef struct _SCSI_DEVICE_ADDRESS {
    BOOLEAN m__BOOLEAN__IsValid;
    UCHAR m__UCHAR__PortID;
    UCHAR m__UCHAR__BusID;
    UCHAR m__UCHAR__TargetID;
    UCHAR m__UCHAR__LUN;
} SCSI_DEVICE_ADDRESS, *PSCSI_DEVICE_ADDRESS;

// Passed (as Special1) with CN_FILE_TREE_PROGRESS_NAME_COLLISION. The callback may change the solution.
typedef struct _NAME_COLLISION_INFO {
    BOOLEAN m__BOOLEAN__IsJolietName;  // m__UCHAR__Name holds UCS-2 when set, ISO 9660 characters otherwise
    UCHAR m__UCHAR__Name[MAX_PATH * 2];
    PCHAR m__PCHAR__OldAbsoluteName;
    ULONG m__ULONG__OldFileAttributes;
    PCHAR m__PCHAR__NewAbsoluteName;
    ULONG m__ULONG__NewFileAttributes;
    NAME_COLLISION_SOLUTION m__NAME_COLLISION_SOLUTION;
} NAME_COLLISION_INFO, *PNAME_COLLISION_INFO;

#pragma pack(pop)

// Progress and events. Special1 / Special2 by callback number:
//   CN_FILE_TREE_PROGRESS_ADD / _REMOVE / _IGNORE   (PCHAR) item name          / not used
//   CN_FILE_TREE_PROGRESS_NAME_COLLISION             (PNAME_COLLISION_INFO)     / not used
//   CN_TARGET_FILE_ANALYZE_END                       (PLARGE_INTEGER) bytes     / (PLARGE_INTEGER) blocks
//   CN_FIND_DEVICE                                   (PSCSI_DEVICE_ADDRESS)     / not used
//   CN_CDVD_WRITE_PROGRESS                           (PLARGE_INTEGER) track size in blocks / (PLARGE_INTEGER) blocks written
//   CN_CDVD_BUFFER_STATUS                            (PULONG) buffer bytes      / (PULONG) free buffer bytes
//   CN_CDVD_TRACK_BEGIN / _END                       (PULONG) track number      / (PULONG) number of tracks
//   CN_CDVD_WRITE_BEGIN / _END, CN_SYNCHRONIZE_CACHE_BEGIN / _END               not used
typedef VOID(STARBURN_CALL* PCALLBACK)(CALLBACK_NUMBER p__CALLBACK_NUMBER, PVOID p__PVOID__CallbackContext,
                                       PVOID p__PVOID__CallbackSpecial1, PVOID p__PVOID__CallbackSpecial2);

// ---- Library ----

// Build date of the library, packed as 0xYYYYMMDD.
STARBURN_IMPEX_API ULONG STARBURN_CALL StarBurn_GetVersion(VOID);
// Starts the library with the licence key; must precede every other call. The simulated library takes any key.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_UpStartEx(PVOID p__PVOID__RegistrationKey,
                                                                    ULONG p__ULONG__RegistrationKeySizeInUCHARs);
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_DownShut(VOID);
// Frees any object the library created (file tree, burner) and sets the pointer to NULL.
STARBURN_IMPEX_API VOID STARBURN_CALL StarBurn_Destroy(PVOID* p__PPVOID__StarBurnObject);
// Calls the callback with CN_FIND_DEVICE once per device of that kind (SCSI_DEVICE_RO_DIRECT_ACCESS for
// writers) and returns how many were found. The flag's meaning is not published; pass FALSE.
STARBURN_IMPEX_API ULONG STARBURN_CALL StarBurn_FindDevice(UCHAR p__UCHAR__DeviceType, BOOLEAN p__BOOLEAN__Flag,
                                                          PCALLBACK p__PCALLBACK, PVOID p__PVOID__CallbackContext);
// The system's name of the device at that address (for example "\\.\CdRom0"); the buffer takes MAX_PATH bytes.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_GetDeviceNameByDeviceAddress(
    UCHAR p__UCHAR__DevicePort, UCHAR p__UCHAR__DeviceBus, UCHAR p__UCHAR__DeviceID, UCHAR p__UCHAR__DeviceLUN,
    PCHAR p__PCHAR__DeviceName);

// ---- ISO 9660 / Joliet file trees ----

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_Create(
    PVOID* p__PPVOID__ISO9660JolietFileTree, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCALLBACK p__PCALLBACK, PVOID p__PVOID__CallbackContext,
    BOOLEAN p__BOOLEAN__IsInvalidKidIgnore, BOOLEAN p__BOOLEAN__IsLocked, BOOLEAN p__BOOLEAN__IsLevel2,
    FILE_TREE p__FILE_TREE);

// Adds a folder (with everything below it) or a single file from disk under `Parent` (NULL or the root for
// the top). With a NULL path and a name it adds an empty virtual folder. `NewName` renames the added node
// (NULL keeps the name on disk). The new node comes back through `NewChild`.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_Add(
    PVOID p__PVOID__ISO9660JolietFileTree, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCHAR p__PCHAR__RootDirectoryAbsolutePathAndName,
    PCHAR p__PCHAR__RootDirectoryNewName, FILE_TIME p__FILE_TIME, PVOID* p__PPVOID__ISO9660JolietFileTreeNode__Parent,
    PVOID* p__PPVOID__ISO9660JolietFileTreeNode__NewChild);

// Adds a file whose contents are the given bytes (copied by the call).
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_AddMemory(
    PVOID p__PVOID__ISO9660JolietFileTree, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PUCHAR p__PUCHAR__MemoryRegion, LARGE_INTEGER p__LARGE_INTEGER__MemoryRegionSizeInUCHARs,
    PCHAR p__PCHAR__Name, FILE_TIME p__FILE_TIME, PVOID* p__PPVOID__ISO9660JolietFileTreeNode__Parent,
    PVOID* p__PPVOID__ISO9660JolietFileTreeNode__NewChild);

// Deepest folder level in the tree (the root's children are level 1).
STARBURN_IMPEX_API LONG STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetLevel(PVOID p__PVOID__ISO9660JolietFileTree);
// Root node, NULL while nothing has been added.
STARBURN_IMPEX_API PVOID STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetRoot(PVOID p__PVOID__ISO9660JolietFileTree);
STARBURN_IMPEX_API PVOID STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetFirstKid(PVOID p__PVOID__ISO9660JolietFileTree,
                                                                                  PVOID p__PVOID__ISO9660JolietFileTreeNode);
STARBURN_IMPEX_API PVOID STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetNextKid(
    PVOID p__PVOID__ISO9660JolietFileTree, PVOID p__PVOID__ISO9660JolietFileTreeNode__Root,
    PVOID p__PVOID__ISO9660JolietFileTreeNode__PreviousKid);
STARBURN_IMPEX_API PVOID STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetParent(PVOID p__PVOID__ISO9660JolietFileTree,
                                                                                PVOID p__PVOID__ISO9660JolietFileTreeNode);

// Lays the tree out as an image starting at `StartingLBA` (the next writable address; 0 on a blank disc).
// The three texts go into the volume descriptors (volume set, publisher/preparer, application).
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_BuildImage(
    PVOID p__PVOID__ISO9660JolietFileTree, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, LONG p__LONG__StartingLBA, LONG p__LONG__TreeLevelToProcess, BOOLEAN p__BOOLEAN__IsXA,
    PCHAR p__PCHAR__VolumeSetName, PCHAR p__PCHAR__PublisherPreparerName, PCHAR p__PCHAR__ApplicationName);

// Size of the built image in bytes: low 32 bits returned, high 32 bits through the pointer.
STARBURN_IMPEX_API LONG STARBURN_CALL StarBurn_ISO9660JolietFileTree_GetSizeInUCHARs(PVOID p__PVOID__ISO9660JolietFileTree,
                                                                                    PLONG p__PLONG__HighPartSizeInUCHARs);

// Reads the next bytes of the built image (streamed: nothing but the current block is held in memory).
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_Read(
    PVOID p__PVOID__ISO9660JolietFileTree, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, LONG p__LONG__IoTransferSizeInUCHARs, PUCHAR p__PUCHAR__DataBuffer);
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_SeekToBegin(
    PVOID p__PVOID__ISO9660JolietFileTree, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError);

// Declared here: imports the folders and files of track `TrackNumber` on the burner's medium (the previous
// session, found with StarBurn_CdvdBurnerGrabber_GetLastTrack) into the tree, so that a new session written
// from the tree keeps the old files. Imported files stay where they are on the medium; only their directory
// records are written again. Call it before adding new nodes; a new node with the name of an imported one
// replaces it.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660JolietFileTree_ImportTrack(
    PVOID p__PVOID__ISO9660JolietFileTree, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION,
    PVOID p__PVOID__CdvdBurnerGrabber, LONG p__LONG__TrackNumber);

// The console's burner names the tree calls without "Joliet"; the library exports both spellings of
// these, with the same parameters.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660FileTree_Create(
    PVOID* p__PPVOID__ISO9660JolietFileTree, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCALLBACK p__PCALLBACK, PVOID p__PVOID__CallbackContext,
    BOOLEAN p__BOOLEAN__IsInvalidKidIgnore, BOOLEAN p__BOOLEAN__IsLocked, BOOLEAN p__BOOLEAN__IsLevel2,
    FILE_TREE p__FILE_TREE);
STARBURN_IMPEX_API PVOID STARBURN_CALL StarBurn_ISO9660FileTree_GetRoot(PVOID p__PVOID__ISO9660JolietFileTree);
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_ISO9660FileTree_BuildImage(
    PVOID p__PVOID__ISO9660JolietFileTree, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, LONG p__LONG__StartingLBA, LONG p__LONG__TreeLevelToProcess, BOOLEAN p__BOOLEAN__IsXA,
    PCHAR p__PCHAR__VolumeSetName, PCHAR p__PCHAR__PublisherPreparerName, PCHAR p__PCHAR__ApplicationName);

// ---- CD/DVD burner ----

// Opens the writer at that address. `CacheSizeInMBs` 0 takes the default.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Create(
    PVOID* p__PPVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION, PCALLBACK p__PCALLBACK,
    PVOID p__PVOID__Context, UCHAR p__UCHAR__PortID, UCHAR p__UCHAR__BusID, UCHAR p__UCHAR__TargetID,
    UCHAR p__UCHAR__LUN, LONG p__LONG__CacheSizeInMBs);

// Vendor, product and revision texts (buffers of at least 64 bytes) and the drive's cache size. Cannot fail.
STARBURN_IMPEX_API VOID STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetDeviceInformation(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__VendorID, PCHAR p__PCHAR__ProductID,
    PCHAR p__PCHAR__ProductRevisionLevel, PULONG p__PULONG__BufferSizeInUCHARs);

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_ProbeSupportedWriteModes(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION,
    PBOOLEAN p__PBOOLEAN__IsTrackAtOnce, PBOOLEAN p__PBOOLEAN__IsSessionAtOnce, PBOOLEAN p__PBOOLEAN__IsDiscAtOncePQ,
    PBOOLEAN p__PBOOLEAN__IsDiscAtOnceRawPW);

// Fails (EN_SCSI_CDB_FAILED, sense "medium not present" or "becoming ready") when no medium can be used.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_TestUnitReady(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION);

// Buffer underrun protection: whether it is on and whether the drive has it.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetBUP(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION,
    PBOOLEAN p__PBOOLEAN__IsBUPEnabled, PBOOLEAN p__PBOOLEAN__IsBUPSupported);
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_SetBUP(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION, BOOLEAN p__BOOLEAN__IsBUPEnabled);

// Speeds in KBps (CDVD_SPEED_IS_KBPS_MAXIMUM for the fastest).
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_SetSpeeds(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION, ULONG p__ULONG__ReadSpeed,
    ULONG p__ULONG__WriteSpeed);
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetSpeeds(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION,
    PULONG p__PULONG__CurrentReadSpeed, PULONG p__PULONG__MaximumReadSpeed, PULONG p__PULONG__CurrentWriteSpeed,
    PULONG p__PULONG__MaximumWriteSpeed);

// Track `TrackNumber` (1-based), or TRACK_NUMBER_INVISIBLE for the next writable one: its start, NWA, free blocks.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetTrackInformation(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION, LONG p__LONG__TrackNumber,
    PSTARBURN_TRACK_INFORMATION p__PSTARBURN_TRACK_INFORMATION);

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetDiscInformation(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION,
    PSTARBURN_DISC_INFORMATION p__PSTARBURN_DISC_INFORMATION);

// Kind of the inserted medium (DISC_TYPE_NO_MEDIA when the tray is empty). Cannot fail.
STARBURN_IMPEX_API DISC_TYPE STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetInsertedDiscType(PVOID p__PVOID__CdvdBurnerGrabber);

// Declared here: number of the last recorded track on the medium (0 on a blank one).
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_GetLastTrack(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION, PLONG p__PLONG__LastTrackNumber);

// Blanks rewritable media (full or fast); fails with EN_INVALID_STATE on write-once media.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Blank(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION, ERASE_TYPE p__ERASE_TYPE);
// The console's burner calls blanking "Erase"; the library exports this name too, same parameters.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Erase(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION, ERASE_TYPE p__ERASE_TYPE);

// Optimum power calibration for the current speed and medium (failure is not fatal to a burn).
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_SendOPC(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION);

// Writes a built tree as one track, Track-At-Once, at the NWA the tree was built for. Progress comes through
// the burner's callback (CN_CDVD_WRITE_PROGRESS). `IsNextSessionAllowed` leaves the disc appendable after
// StarBurn_CdvdBurnerGrabber_CloseSession.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_TrackAtOnceFromTree(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION, PVOID p__PVOID__FileTree,
    BOOLEAN p__BOOLEAN__IsXA, BOOLEAN p__BOOLEAN__IsTestWrite, BOOLEAN p__BOOLEAN__IsNextSessionAllowed,
    ULONG p__ULONG__WriteReportDelayInSeconds, ULONG p__ULONG__BufferStatusReportDelayInSeconds);

// Closes the session just written (and the disc, unless the track allowed a next session).
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_CloseSession(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION);

STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Eject(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION);
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Load(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION);
// Locks / unlocks the tray while a burn runs.
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Lock(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION);
STARBURN_IMPEX_API EXCEPTION_NUMBER STARBURN_CALL StarBurn_CdvdBurnerGrabber_Release(
    PVOID p__PVOID__CdvdBurnerGrabber, PCHAR p__PCHAR__ExceptionText, ULONG p__ULONG__ExceptionTextSizeInUCHARs,
    PULONG p__PULONG__SystemError, PCDB_FAILURE_INFORMATION p__PCDB_FAILURE_INFORMATION);

#ifdef __cplusplus
}  // extern "C"
#endif
