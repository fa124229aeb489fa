// Symbol visibility: everything is hidden unless it carries MORVUNP_API.
#pragma once

#define MORVUNP_API __attribute__((visibility("default")))
