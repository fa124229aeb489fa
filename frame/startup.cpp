// What happens when the library is loaded.
#include <clocale>
#include <cstring>

#include "frame/templates.h"
#include "morvunp/platform/platform.h"

namespace morvunp::frame {
namespace {

/// Dates and names follow the user's settings. A user who set nothing still
/// has file names in UTF-8 on any system of today.
void SetUserLocale() {
  std::setlocale(LC_ALL, "");
  const char* const locale = std::setlocale(LC_CTYPE, nullptr);
  if (locale == nullptr || std::strcmp(locale, "C") == 0 || std::strcmp(locale, "POSIX") == 0) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
  }
}

struct Startup {
  Startup() {
    SetUserLocale();
    RegisterTemplates();
  }
};

const Startup startup;

}  // namespace
}  // namespace morvunp::frame
