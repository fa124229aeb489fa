// The host system's services, in one.
//
// The library is written against them by their own names; the small layer in
// this folder offers what of them it calls.
#pragma once

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
