// A sink that only counts.
#pragma once

#include "morvunp/itemrouter.h"

namespace testsupport {

/// Counts what it is handed.
class CountingSink final : public morvunp::ItemSink {
 public:
  void Begin(const morvunp::RoutedItem&) override { ++items; }
  bool Write(const void*, std::size_t length) override {
    bytes += length;
    return true;
  }
  bool End(const morvunp::ItemReport& report) override {
    last = report.reason;
    return true;
  }

  std::size_t items = 0;
  std::size_t bytes = 0;
  morvunp::ItemReason last{};
};

}  // namespace testsupport
