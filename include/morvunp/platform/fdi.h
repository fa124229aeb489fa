// The cabinet decompression interface (FDI).
//
// Names, widths and values are the published ones. docs/cabinet.md tells how
// to use it: FDICreate with seven callbacks, FDICopy once for each cabinet,
// FDIDestroy. The four functions live in a module of their own that programs
// load at run time under the name "Cabinet.dll".
#pragma once

#include "morvunp/platform/types.h"

using HFDI = void*;

/// ERF::erfOper.
enum FDIERROR : int {
  FDIERROR_NONE = 0,
  FDIERROR_CABINET_NOT_FOUND = 1,
  FDIERROR_NOT_A_CABINET = 2,
  FDIERROR_UNKNOWN_CABINET_VERSION = 3,
  /// The structure of the cabinet, or a checksum.
  FDIERROR_CORRUPT_CABINET = 4,
  /// The caller's allocator answered null.
  FDIERROR_ALLOC_FAIL = 5,
  FDIERROR_BAD_COMPR_TYPE = 6,
  /// Packed data that cannot be unpacked.
  FDIERROR_MDI_FAIL = 7,
  /// The caller could not write or close a file.
  FDIERROR_TARGET_FILE = 8,
  FDIERROR_RESERVE_MISMATCH = 9,
  /// Not the next cabinet of the set.
  FDIERROR_WRONG_CABINET = 10,
  /// The caller's notification function answered that the pass is to end.
  FDIERROR_USER_ABORT = 11,
  /// The cabinet ends before its data does.
  FDIERROR_EOF = 12,
};

/// What went wrong last. Cleared when an operation begins.
struct ERF {
  int erfOper = FDIERROR_NONE;
  int erfType = 0;
  BOOL fError = FALSE;
};

/// What FDIIsCabinet tells of a cabinet.
struct FDICABINETINFO {
  LONG cbCabinet = 0;
  USHORT cFolders = 0;
  USHORT cFiles = 0;
  USHORT setID = 0;
  /// Place in the set, from 0.
  USHORT iCabinet = 0;
  BOOL fReserve = FALSE;
  BOOL hasprev = FALSE;
  BOOL hasnext = FALSE;
};

enum FDINOTIFICATIONTYPE : int {
  fdintCABINET_INFO = 0,
  fdintPARTIAL_FILE = 1,
  fdintCOPY_FILE = 2,
  fdintCLOSE_FILE_INFO = 3,
  fdintNEXT_CABINET = 4,
  fdintENUMERATE = 5,
  /// This module's own, in passes that go on: see FDI_GO_ON.
  fdintFILE_FAILED = 16,
};

/// Bits of FDICopy's `flags`, which no other implementation looks at.
/// The pass goes on with the tables of the next cabinets of the set, and reads
/// data that goes through several of them once.
inline constexpr int FDI_WHOLE_SET = 1;
/// A file whose data cannot be had does not end the pass: fdintFILE_FAILED hands
/// its handle back, and the files of that folder that follow fail likewise.
inline constexpr int FDI_GO_ON = 2;

/// What a notification tells; docs/cabinet.md has the fields of each. Texts
/// belong to the module and are valid during the notification.
struct FDINOTIFICATION {
  LONG cb = 0;
  char* psz1 = nullptr;
  char* psz2 = nullptr;
  char* psz3 = nullptr;
  void* pv = nullptr;
  INT_PTR hf = 0;
  USHORT date = 0;
  USHORT time = 0;
  USHORT attribs = 0;
  USHORT setID = 0;
  USHORT iCabinet = 0;
  USHORT iFolder = 0;
  FDIERROR fdie = FDIERROR_NONE;
};

/// Attribute bits of files beside the system's own.
inline constexpr USHORT _A_EXEC = 0x40;
inline constexpr USHORT _A_NAME_IS_UTF = 0x80;

/// Characters of a cabinet's name, a disk's name or a path, the zero included.
inline constexpr int CB_MAX_CAB_PATH = 256;

inline constexpr int cpuUNKNOWN = -1;

using PFNALLOC = void* (*)(ULONGLONG size);
using PFNFREE = void (*)(void* memory);
using PFNOPEN = INT_PTR (*)(char* path, int openFlags, int mode);
using PFNREAD = UINT (*)(INT_PTR file, void* buffer, UINT count);
using PFNWRITE = UINT (*)(INT_PTR file, void* buffer, UINT count);
using PFNCLOSE = int (*)(INT_PTR file);
using PFNSEEK = LONG (*)(INT_PTR file, LONG distance, int origin);
using PFNFDINOTIFY = INT_PTR (*)(FDINOTIFICATIONTYPE type, FDINOTIFICATION* notification);
/// Decryption was never published; the argument is ignored.
using PFNFDIDECRYPT = int (*)(void*);

extern "C" {

/// Makes a context. Null when a callback is missing or memory is short.
MORVUNP_API HFDI FDICreate(PFNALLOC pfnalloc, PFNFREE pfnfree, PFNOPEN pfnopen, PFNREAD pfnread,
                           PFNWRITE pfnwrite, PFNCLOSE pfnclose, PFNSEEK pfnseek, int cpuType,
                           ERF* perf);
/// Tells whether a cabinet begins where `hf` stands, and what its header says.
MORVUNP_API BOOL FDIIsCabinet(HFDI hfdi, INT_PTR hf, FDICABINETINFO* pfdici);
/// One pass over the cabinet at `pszCabPath` + `pszCabinet`. `flags`: FDI_ bits.
MORVUNP_API BOOL FDICopy(HFDI hfdi, char* pszCabinet, char* pszCabPath, int flags,
                         PFNFDINOTIFY pfnfdin, PFNFDIDECRYPT pfnfdid, void* pvUser);
MORVUNP_API BOOL FDIDestroy(HFDI hfdi);

using PFNFDICREATE = decltype(&FDICreate);
using PFNFDIISCABINET = decltype(&FDIIsCabinet);
using PFNFDICOPY = decltype(&FDICopy);
using PFNFDIDESTROY = decltype(&FDIDestroy);
}
