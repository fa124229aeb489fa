#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <string>

#include "commandline.h"
#include "exitcode.h"
#include "output.h"

namespace {

/// A standard stream that the caller has closed would be given to the next
/// file that is opened, and messages would end in it. Standard output is made
/// unwritable instead, so that its loss is noticed.
void OccupyStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) == -1) open("/dev/null", O_RDONLY);
  }
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardStreams();
  // A reader that goes away must not end an unpack in the middle of a file, nor
  // a limit of the files' size: both show in what is written.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  // Unless the zone is named, each conversion of a time looks at its file anew.
  setenv("TZ", ":/etc/localtime", 0);
  try {
    return terminal::RunCommandLine(argc, argv);
  } catch (const std::bad_alloc&) {
    terminal::PrintError("out of memory");
  } catch (const terminal::CommandError& error) {
    terminal::PrintError(error.what());
    return error.ExitCode();
  } catch (const std::exception& error) {
    terminal::PrintError(std::string("unexpected error: ") + error.what());
  }
  return terminal::kExitUnusable;
}
