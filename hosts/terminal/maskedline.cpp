#include "maskedline.h"

#include <termios.h>
#include <unistd.h>

#include "interrupt.h"
#include "keyboard.h"
#include "output.h"

namespace terminal {
namespace {

constexpr char kEndOfInput = '\x04';
constexpr char kBackspace = '\b';
constexpr char kEraseLine = '\x15';
constexpr char kDelete = '\x7f';

/// Keys arrive one by one and are not shown while it lives.
class UnseenInput {
 public:
  UnseenInput() {
    tcgetattr(STDIN_FILENO, &previous_);
    termios unseen = previous_;
    unseen.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON);
    // A shell that takes over meanwhile would show what is typed afterwards.
    unseen.c_cc[VSUSP] = unseen.c_cc[VQUIT] = _POSIX_VDISABLE;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &unseen);
  }
  ~UnseenInput() { tcsetattr(STDIN_FILENO, TCSADRAIN, &previous_); }
  UnseenInput(const UnseenInput&) = delete;
  UnseenInput& operator=(const UnseenInput&) = delete;

 private:
  termios previous_{};
};

bool IsControl(char c) { return static_cast<unsigned char>(c) < ' '; }

/// The bytes of UTF-8 that begin a character.
bool BeginsCharacter(char c) { return (c & 0xC0) != 0x80; }

class MaskedLine {
 public:
  void Add(char c) {
    text_ += c;
    if (BeginsCharacter(c)) PrintToStderr("*");
  }
  void RemoveLast() {
    if (text_.empty()) return;
    while (text_.size() > 1 && !BeginsCharacter(text_.back())) text_.pop_back();
    text_.pop_back();
    PrintToStderr("\b \b");
  }
  void Clear() {
    while (!text_.empty()) RemoveLast();
  }
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

std::optional<std::string> ReadMasked(const std::string& prompt) {
  // Before the prompt: what is typed in answer to it must not show.
  const UnseenInput unseen;
  PrintToStderr(prompt);
  Keyboard keyboard;
  MaskedLine line;
  while (const auto key = keyboard.Next()) {
    if (*key == '\n' || *key == '\r') return line.Text();
    if (*key == kEscapeKey || *key == kEndOfInput) return std::nullopt;
    if (*key == kBackspace || *key == kDelete) {
      line.RemoveLast();
    } else if (*key == kEraseLine) {
      line.Clear();
    } else if (!IsControl(*key)) {
      line.Add(*key);
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> AskMasked(const std::string& prompt) {
  // Nothing may end the process while the terminal shows nothing.
  const InterruptGuard guard;
  auto line = ReadMasked(prompt);
  ForgetInterrupt();
  PrintToStderr("\n");
  return line;
}

}  // namespace terminal
