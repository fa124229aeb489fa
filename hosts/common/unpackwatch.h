// Follows the library through a plan.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/common/plan.h"
#include "hosts/common/writtenfile.h"

namespace host {

/// Told of everything that the library reports, in its order, it records the
/// outcome of each planned item. The library works through the files of a plan
/// from first to last, so whatever it passes over has failed.
class UnpackWatch {
 public:
  void Start(Plan plan);

  /// A file begins to be written.
  void FileStarts(std::wstring_view name);
  void FileProgress(unsigned percentage);
  /// A folder was created, or a file written. The library takes a file for
  /// written even where the archive ended early or the password was wrong, so
  /// the file on disk is looked at: its content where its CRC is known, and its
  /// size when the progress did not reach the end. Where its content cannot be
  /// read, which the archive may bring about by its mode, the engine's word
  /// decides.
  void Created(const WrittenFile& file);
  /// A file is not to replace the existing one.
  void Kept(std::wstring_view name);

  const std::vector<PlannedItem>& Items() const { return plan_.items; }
  const std::vector<std::size_t>& RunEnds() const { return plan_.runEnds; }
  /// Index behind the last item of a run that the library got to, if any.
  std::size_t ReachedIn(std::size_t run) const;
  /// Index of the first file that the library has not passed yet.
  std::size_t Next() const { return next_; }
  /// The file in hand has begun and is not finished.
  bool InFile() const { return inFile_; }
  const std::wstring& CurrentName() const { return currentName_; }
  std::uint64_t TotalBytes() const { return total_; }
  /// Bytes that are done with, those of failed and kept files included.
  std::uint64_t BytesDone() const;

 private:
  bool IsFileNamed(std::size_t index, std::uint32_t nameHash) const;
  /// Goes on to the next file of this name; false when there is none.
  bool AdvanceTo(std::wstring_view name);
  /// Index of the next planned item with this output path, or Items().size().
  std::size_t Find(std::uint64_t pathHash);
  void Pass(std::size_t end);
  Outcome OutcomeOf(const PlannedItem& item, const WrittenFile& file) const;
  /// Of a file whose content was not compared with a CRC.
  Outcome OutcomeOfUnread(const PlannedItem& item, const WrittenFile& file) const;

  Plan plan_;
  /// Indexes of the plan's items, by path; made when first needed.
  std::vector<std::uint32_t> byPath_;
  std::size_t next_ = 0;
  std::uint64_t total_ = 0;
  std::uint64_t passed_ = 0;
  unsigned percentage_ = 0;
  bool inFile_ = false;
  bool namesFollowPlan_ = true;
  std::wstring currentName_;
};

}  // namespace host
