// Follows the library through a plan.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/common/plan.h"

namespace host {

/// Is told what becomes of each item, and how far the file in hand has come.
class UnpackWatch {
 public:
  void Start(Plan plan);
  /// A run of the request begins.
  void EnterRun(std::size_t run);

  /// A file begins to be written.
  void FileStarts(std::wstring_view name);
  void FileProgress(unsigned percentage);
  void Told(const morvunp::ItemReport& report);

  const std::vector<PlannedItem>& Items() const { return plan_.items; }
  /// What was told of an item beside numbers; mostly empty.
  std::wstring_view DetailOf(std::size_t index) const;
  /// The file in hand has begun and is not finished.
  bool InFile() const { return inFile_; }
  const std::wstring& CurrentName() const { return currentName_; }
  std::uint64_t TotalBytes() const { return total_; }
  /// Bytes that are done with, those of failed and kept files included.
  std::uint64_t BytesDone() const;

 private:
  void Pass(std::size_t end);

  Plan plan_;
  std::map<std::size_t, std::wstring> details_;
  std::size_t run_ = 0;
  /// The first item that has not been passed.
  std::size_t next_ = 0;
  std::uint64_t total_ = 0;
  std::uint64_t passed_ = 0;
  unsigned percentage_ = 0;
  bool inFile_ = false;
  std::wstring currentName_;
};

}  // namespace host
