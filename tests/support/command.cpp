#include "support/command.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <linux/filter.h>
#include <linux/openat2.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include "support/tempfolder.h"

namespace testsupport {
namespace {

[[noreturn]] void Execute(const Arguments& arguments) {
  std::vector<char*> pointers{const_cast<char*>(MORVUNP_COMMAND)};
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  signal(SIGINT, SIG_DFL);
  setenv("LC_ALL", "C.UTF-8", 1);
  setenv("TZ", "UTC", 1);
  execv(pointers[0], pointers.data());
  _exit(127);
}

int ExitCodeOf(pid_t process) {
  int status = 0;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void CannotReadBack() {
  umask(0400);
  // With these, root reads everything. Others lack them and cannot drop them.
  prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
  prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
}

/// As the filters of older containers, which do not know the call.
void RefuseOpenat2() {
  std::array<sock_filter, 4> filter{{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat2, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  }};
  const sock_fprog program{filter.size(), filter.data()};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
  open_how how{};
  const long opened = syscall(SYS_openat2, AT_FDCWD, "/", &how, sizeof how);
  if (opened >= 0 || errno != EPERM) _exit(kNoSuchProcess);
}

}  // namespace

Result RunCommand(const Arguments& arguments, const std::string& input, Process kind) {
  const TempFolder folder;
  WriteFile(folder.Path("in"), input);
  const pid_t process = fork();
  if (process == 0) {
    const auto redirect = [](const std::string& path, int descriptor) {
      dup2(open(path.c_str(), O_RDWR | O_CREAT, 0600), descriptor);
    };
    redirect(folder.Path("in"), STDIN_FILENO);
    redirect(folder.Path("out"), STDOUT_FILENO);
    redirect(folder.Path("err"), STDERR_FILENO);
    if (kind == Process::kCannotReadBack) CannotReadBack();
    if (kind == Process::kWithoutOpenat2) RefuseOpenat2();
    Execute(arguments);
  }
  const int exitCode = ExitCodeOf(process);
  return {exitCode, ReadFile(folder.Path("out")), ReadFile(folder.Path("err"))};
}

OnTerminal::OnTerminal(const Arguments& arguments) {
  process_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
  if (process_ == 0) Execute(arguments);
}

OnTerminal::~OnTerminal() {
  if (process_ > 0) {
    kill(process_, SIGKILL);
    ExitCodeOf(process_);
  }
  close(terminal_);
}

void OnTerminal::Type(const std::string& text) {
  ASSERT_EQ(write(terminal_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

void OnTerminal::Send(int signal) { kill(process_, signal); }

bool OnTerminal::Await(const std::string& text) {
  for (;;) {
    const std::size_t found = shown_.find(text, seen_);
    if (found != std::string::npos) {
      seen_ = found + text.size();
      return true;
    }
    if (!ReadSome()) return false;
  }
}

int OnTerminal::Finish() {
  while (ReadSome()) {
  }
  return ExitCodeOf(std::exchange(process_, -1));
}

bool OnTerminal::ReadSome() {
  pollfd input{terminal_, POLLIN, 0};
  std::array<char, 4096> block{};
  if (poll(&input, 1, 20000) != 1) return false;
  const ssize_t count = read(terminal_, block.data(), block.size());
  if (count <= 0) return false;
  shown_.append(block.data(), static_cast<std::size_t>(count));
  return true;
}

}  // namespace testsupport
