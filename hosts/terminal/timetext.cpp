#include "timetext.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace terminal {
namespace {

/// All zones change their offset at a multiple of a quarter of an hour, so
/// within such a block only minutes and seconds differ.
constexpr std::int64_t kBlock = 15 * 60;
constexpr std::int64_t kDay = 24 * 60 * 60;

std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

void AppendTwoDigits(std::string& out, std::int64_t value) {
  out += static_cast<char>('0' + value / 10 % 10);
  out += static_cast<char>('0' + value % 10);
}

}  // namespace

void LocalTimeText::Append(std::string& out, std::int64_t time) {
  if (time == 0) {
    out.append(19, ' ');
    return;
  }
  const std::int64_t block = FloorDivide(time, kBlock);
  if (block != block_ || upToHour_.empty()) Calculate(block);
  if (time != time_) {
    time_ = time;
    const std::int64_t second = time - block * kBlock;
    text_ = upToHour_;
    AppendTwoDigits(text_, minuteOfBlock_ + second / 60);
    text_ += ':';
    AppendTwoDigits(text_, second % 60);
  }
  out += text_;
}

void LocalTimeText::Calculate(std::int64_t block) {
  const std::time_t start = block * kBlock;
  std::tm local{};
  localtime_r(&start, &local);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:", local.tm_year + 1900, local.tm_mon + 1,
                local.tm_mday, local.tm_hour);
  block_ = block;
  minuteOfBlock_ = local.tm_min;
  upToHour_ = text;
}

void UtcTimeText::Append(std::string& out, std::int64_t time) {
  const std::int64_t day = FloorDivide(time, kDay);
  if (day != day_ || date_.empty()) {
    const std::chrono::sys_days point{std::chrono::days{static_cast<int>(day)}};
    const std::chrono::year_month_day date{point};
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    day_ = day;
    date_ = text;
  }
  const std::int64_t second = time - day * kDay;
  out += date_;
  AppendTwoDigits(out, second / 3600);
  out += ':';
  AppendTwoDigits(out, second / 60 % 60);
  out += ':';
  AppendTwoDigits(out, second % 60);
  out += 'Z';
}

}  // namespace terminal
