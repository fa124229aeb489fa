// The one place that chooses where the host system's services come from.
//
// The library is written against the services by their own names. On the
// system that offers them its real headers are included here; on this one a
// small layer of our own, in this folder, stands in their place.
#pragma once

#ifdef _WIN32
#include <afxwin.h>
#include <fcntl.h>
#include <fdi.h>
#include <io.h>
#include <oleauto.h>
#include <share.h>
#include <sys/stat.h>
#include <time.h>
#else
#include "platform/cabinet/fdi.h"
#include "platform/components.h"
#include "platform/crt.h"
#include "platform/files.h"
#include "platform/framework.h"
#include "platform/memory.h"
#include "platform/modules.h"
#include "platform/text.h"
#include "platform/times.h"
#include "platform/types.h"
#include "platform/windows.h"
#endif
