// The settings records that a host hands to every unpacker.
#pragma once

#include "morvunp/platform/platform.h"

/// Settings. Each flag is 0 (false) or nonzero (true).
struct INIUNPACK {
  /// UnpackFile writes straight into the target folder instead of recreating
  /// the folder path that the file has in the archive.
  BYTE bUnpackFileNoPath = 0;
  /// UnpackFolder drops the parent path of the selected folder.
  BYTE bUnpackFolderRelative = 0;
  /// UnpackArchive writes every file straight into the target folder and
  /// creates no folders.
  BYTE bUnpackArchiveNoPaths = 0;
  /// Ask before an existing file is replaced.
  BYTE bConfirmReplace = 0;
};

/// Standing "Yes To All" answers, one for each kind of existing file.
struct INIYESTOALL {
  BYTE bYesToAllNormal = 0;
  BYTE bYesToAllSystem = 0;
  BYTE bYesToAllReadOnly = 0;
  BYTE bYesToAllHidden = 0;
};

static_assert(sizeof(INIUNPACK) == 4 && sizeof(INIYESTOALL) == 4);
