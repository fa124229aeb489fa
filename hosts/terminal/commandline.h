// The command line.
#pragma once

namespace terminal {

/// Runs the command that the arguments name. The exit code. Throws
/// CommandError.
int RunCommandLine(int argc, char** argv);

}  // namespace terminal
