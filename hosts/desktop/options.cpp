#include "hosts/desktop/options.h"

#include <QSettings>
#include <array>

namespace desktop {
namespace {

struct Flag {
  const char* key;
  BYTE INIUNPACK::*field;
  bool standard;
};

constexpr std::array kFlags{
    Flag{"unpack/fileNoPath", &INIUNPACK::bUnpackFileNoPath, false},
    Flag{"unpack/folderRelative", &INIUNPACK::bUnpackFolderRelative, true},
    Flag{"unpack/archiveNoPaths", &INIUNPACK::bUnpackArchiveNoPaths, false},
    Flag{"unpack/confirmReplace", &INIUNPACK::bConfirmReplace, true},
};
constexpr const char* kTarget = "unpack/target";

}  // namespace

Options LoadOptions() {
  const QSettings stored;
  Options options;
  for (const Flag& flag : kFlags) {
    options.settings.*flag.field = stored.value(flag.key, flag.standard).toBool() ? 1 : 0;
  }
  options.target = stored.value(kTarget).toString();
  return options;
}

void SaveOptions(const Options& options) {
  QSettings stored;
  for (const Flag& flag : kFlags) {
    stored.setValue(flag.key, options.settings.*flag.field != 0);
  }
  stored.setValue(kTarget, options.target);
}

}  // namespace desktop
