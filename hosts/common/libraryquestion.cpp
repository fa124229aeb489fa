#include "hosts/common/libraryquestion.h"

namespace host {

void NoteReplaceAnswer(UINT pressed, StopRequest& stop) {
  if (pressed == morvunp::kReplaceCancel) stop.Cancel();
}

}  // namespace host
