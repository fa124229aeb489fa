// Everything that a host of the library includes.
#pragma once

#include "morvunp/buildoptions.h"
#if MORVUNP_HAS_RAR
#include "morvunp/rarunpacker.h"
#endif
#include "morvunp/cabunpacker.h"
#include "morvunp/dostime.h"
#include "morvunp/isounpacker.h"
#include "morvunp/itemreport.h"
#include "morvunp/itemrouter.h"
#include "morvunp/messages.h"
#include "morvunp/outputplace.h"
#include "morvunp/records.h"
#include "morvunp/sevenzipunpacker.h"
#include "morvunp/unpacker.h"
#include "morvunp/unpackoptions.h"
