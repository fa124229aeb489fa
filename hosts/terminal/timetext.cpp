#include "timetext.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace terminal {
namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kDay = 24 * 60 * 60;

std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

void AppendTwoDigits(std::string& out, std::int64_t value) {
  out += static_cast<char>('0' + value / 10 % 10);
  out += static_cast<char>('0' + value % 10);
}

}  // namespace

void LocalTimeText::Append(std::string& out, std::optional<std::int64_t> time) {
  if (!time) {
    out.append(19, ' ');
    return;
  }
  if (time != time_) Format(*time);
  out += text_;
}

void LocalTimeText::Format(std::int64_t time) {
  // 1972-01-07, when the last zone gave up an offset with odd seconds. Since
  // then zones have changed their offsets at whole minutes only, so within one
  // nothing but the seconds differs.
  constexpr std::int64_t kOnlyWholeMinutes = 63'593'070;
  const std::int64_t minute = FloorDivide(time, kMinute);
  time_ = time;
  if (minute == minute_ && time > kOnlyWholeMinutes) {
    text_.resize(text_.size() - 2);
    AppendTwoDigits(text_, time - minute * kMinute);
    return;
  }
  minute_ = minute;
  const std::time_t seconds = time;
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", local.tm_year + 1900,
                local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
  text_ = text;
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
