#include "question.h"

#include <strings.h>
#include <unistd.h>

#include "interrupt.h"
#include "keyboard.h"
#include "output.h"

namespace terminal {
namespace {

/// None after Ctrl-C or at the end of the input.
std::optional<std::string> ReadLine() {
  Keyboard keyboard;
  std::string line;
  while (const auto key = keyboard.Next()) {
    if (*key == '\n') return line;
    line += *key;
  }
  return std::nullopt;
}

std::string Trimmed(const std::string& line) {
  const std::size_t first = line.find_first_not_of(" \t\r");
  if (first == std::string::npos) return {};
  return line.substr(first, line.find_last_not_of(" \t\r") - first + 1);
}

bool Names(const std::string& line, const Choice& choice) {
  const char key[] = {choice.key, '\0'};
  return strcasecmp(line.c_str(), key) == 0 || strcasecmp(line.c_str(), choice.label.c_str()) == 0;
}

std::optional<std::size_t> FindChoice(const std::string& line, const std::vector<Choice>& choices,
                                      std::size_t defaultChoice) {
  if (line.empty()) return defaultChoice;
  for (std::size_t i = 0; i < choices.size(); ++i) {
    if (Names(line, choices[i])) return i;
  }
  return std::nullopt;
}

std::string Prompt(const std::vector<Choice>& choices, std::size_t defaultChoice) {
  std::string prompt;
  for (std::size_t i = 0; i < choices.size(); ++i) {
    if (i > 0) prompt += "  ";
    prompt += std::string("[") + choices[i].key + "] " + choices[i].label;
    if (i == defaultChoice) prompt += " (default)";
  }
  return prompt + ": ";
}

}  // namespace

bool CanAsk() { return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1; }

std::optional<std::size_t> Ask(const std::string& text, const std::vector<Choice>& choices,
                               std::size_t defaultChoice) {
  PrintToStderr(text + "\n");
  for (;;) {
    PrintToStderr(Prompt(choices, defaultChoice));
    const auto line = ReadLine();
    if (!line) {
      ForgetInterrupt();
      PrintToStderr("\n");
      return std::nullopt;
    }
    if (line->find(kEscapeKey) != std::string::npos) return std::nullopt;
    if (const auto found = FindChoice(Trimmed(*line), choices, defaultChoice)) return found;
  }
}

std::optional<bool> AskYesNo(const std::string& text) {
  constexpr std::size_t kYes = 0;
  constexpr std::size_t kNo = 1;
  const auto chosen = Ask(text, {{'y', "Yes"}, {'n', "No"}}, kNo);
  return chosen ? std::optional(*chosen == kYes) : std::nullopt;
}

}  // namespace terminal
