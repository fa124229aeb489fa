// The host system's services, in one.
//
// The library is written against them by their own names; the small layer in
// this folder offers what of them it calls.
#pragma once

#include "morvunp/platform/components.h"
#include "morvunp/platform/crt.h"
#include "morvunp/platform/fdi.h"
#include "morvunp/platform/files.h"
#include "morvunp/platform/framework.h"
#include "morvunp/platform/memory.h"
#include "morvunp/platform/modules.h"
#include "morvunp/platform/text.h"
#include "morvunp/platform/times.h"
#include "morvunp/platform/types.h"
#include "morvunp/platform/windows.h"
