// What the program remembers from one run to the next.
#pragma once

#include <QString>

#include "morvunp/records.h"

namespace desktop {

struct Options {
  INIUNPACK settings;
  /// Folder that was unpacked to last; empty at first.
  QString target;
};

Options LoadOptions();
void SaveOptions(const Options& options);

}  // namespace desktop
