#include "progressline.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include "output.h"
#include "text.h"

namespace terminal {
namespace {

constexpr std::chrono::milliseconds kRedrawInterval{100};
constexpr std::size_t kUsualColumns = 80;

std::size_t TerminalColumns() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualColumns;
  return size.ws_col;
}

std::string ShortSize(double bytes) {
  constexpr std::array<const char*, 6> kUnits{"B", "KiB", "MiB", "GiB", "TiB", "PiB"};
  std::size_t unit = 0;
  while (bytes >= 1024 && unit + 1 < kUnits.size()) {
    bytes /= 1024;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]);
  return text;
}

int PercentageOf(std::uint64_t done, std::uint64_t total) {
  if (total == 0) return 0;
  return static_cast<int>(static_cast<double>(done) * 100.0 / static_cast<double>(total));
}

}  // namespace

void ProgressLine::Start(std::uint64_t total) {
  total_ = total;
  start_ = lastDraw_ = Clock::now();
}

void ProgressLine::Show(std::uint64_t done, std::wstring_view name) {
  if (!enabled_) return;
  const auto now = Clock::now();
  if (now - lastDraw_ < kRedrawInterval) return;
  lastDraw_ = now;
  Draw(done, name, now);
}

void ProgressLine::Draw(std::uint64_t done, std::wstring_view name, Clock::time_point now) {
  const double seconds = std::chrono::duration<double>(now - start_).count();
  char percentage[16];
  std::snprintf(percentage, sizeof percentage, "%3d%%  ",
                std::min(PercentageOf(done, total_), 100));
  std::string line = percentage + ShortSize(static_cast<double>(done)) + " / " +
                     ShortSize(static_cast<double>(total_)) + "  " +
                     ShortSize(static_cast<double>(done) / seconds) + "/s  ";
  // The last column stays free: some terminals go to the next line after it.
  const std::size_t columns = TerminalColumns() - 1;
  if (line.size() < columns) {
    AppendPathCut(line, name, columns - line.size());
  } else {
    line.resize(columns);
  }
  PrintToStderr("\r" + line + "\x1b[K");
  visible_ = true;
}

void ProgressLine::Clear() {
  if (!visible_) return;
  PrintToStderr("\r\x1b[K");
  visible_ = false;
}

}  // namespace terminal
