// A file on its way out.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "frame/filesystem.h"
#include "output/budget.h"
#include "output/facts.h"
#include "output/folders.h"
#include "platform/below.h"

namespace morvunp::output {

/// Permission bits of a new file, before the umask, where nothing is said.
inline constexpr DWORD kDefaultMode = 0666;

/// How a file comes to its name.
enum class Placing {
  /// Under its own name, which is free.
  kFresh,
  /// Into the existing file.
  kInPlace,
  /// Under another name, to take its own when it is whole. The way of all
  /// formats where UnpackOptions::safeReplace is set; a folder that takes no new
  /// file has the existing one written into then, which is told.
  kBeside,
};

/// The one file that a run writes at a time, in the current folder. What is
/// neither finished nor kept goes when the object does, as by an exception.
class File {
 public:
  File(Reporter& reporter, Folders& folders, Budget& budget)
      : m_reporter(reporter), m_folders(folders), m_budget(budget) {}
  ~File();
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  /// `mode` is that of a fresh file, before the umask. False when the name is
  /// taken (ERROR_FILE_EXISTS) or the system refuses; nothing is told.
  bool Create(const std::wstring& name, DWORD mode);
  /// Makes way for a file that may be replaced. A new file in its place has its
  /// permissions unless a mode is given. False when the system refuses.
  bool Replace(const std::wstring& name, const platform::FoundFile& existing, Placing placing,
               std::optional<DWORD> mode);

  /// The data of the item in hand goes to a sink and not to the disk.
  void Attach(morvunp::ItemSink& sink) { m_pSink = &sink; }
  bool HasSink() const { return m_pSink != nullptr; }
  /// What the item before was attached to is no longer meant.
  void Detach();

  /// The data of the item in hand is text that is kept and makes no file: what a
  /// symbolic link says. No more is kept than shows that it is longer than this.
  static constexpr std::size_t kLongestText = 4095;
  void Collect() { m_text.emplace(); }
  bool IsCollecting() const { return m_text.has_value(); }
  std::string TakeText() { return std::exchange(m_text, std::nullopt).value_or(std::string()); }

  bool IsOpen() const { return HasSink() || IsCollecting() || m_bDropped || m_file.IsOpen(); }
  HANDLE Get() const { return m_file.Get(); }

  /// False when not all of it could be written, or no more is wanted or
  /// allowed, which is told. In a run that goes on, what follows of a file that
  /// cannot be written is dropped.
  bool Write(const void* bytes, DWORD length);
  /// Leaves a hole of zeros, which costs nothing whatever its length.
  bool Skip(ULONGLONG length);
  /// Ends the file where the writing ended, also behind a hole.
  bool EndHere();

  /// The file is complete: dates it, gives it its attributes and its name, and
  /// tells that it was written, or is intact, or, where the format takes it for
  /// complete in spite of it, what is wrong with it. False when one of these
  /// fails, or what it lacks was dropped, which is told: it is broken then.
  bool Finish(const FileFacts& facts, morvunp::ItemReason defect = morvunp::ItemReason::kNone);
  /// A file that its format takes for complete in spite of `defect`: where the
  /// options let none stay it goes, which is told. False when it is to be
  /// finished.
  bool RefuseDefect(morvunp::ItemReason defect);
  /// Two ends of a file that is not whole: the first for formats that leave what
  /// came out of it, the second for those that leave nothing. The options say
  /// otherwise; but one that was to replace another always goes.
  void KeepBroken() { EndBroken(morvunp::BrokenFiles::kKeep); }
  void RemoveBroken() { EndBroken(morvunp::BrokenFiles::kRemove); }
  /// Deletes what was written.
  void Remove();

 private:
  bool GiveUp();
  bool CreateBeside(const platform::FoundFile& existing, std::optional<DWORD> mode);
  bool Rewrite(const platform::FoundFile& existing);
  bool RewriteInstead(const platform::FoundFile& existing);
  bool MayStay(morvunp::BrokenFiles asFormat) const;
  void EndBroken(morvunp::BrokenFiles asFormat);
  bool TakeName();
  void Keep(const void* bytes, DWORD length);
  bool Hand(const void* bytes, DWORD length);
  bool HandZeros(ULONGLONG length);

  Reporter& m_reporter;
  Folders& m_folders;
  Budget& m_budget;
  frame::OpenFile m_file;
  morvunp::ItemSink* m_pSink = nullptr;
  /// It could not be written, which was told.
  bool m_bDropped = false;
  std::optional<std::string> m_text;
  /// A file was made and is neither finished nor given up.
  bool m_bPending = false;
  Placing m_placing = Placing::kFresh;
  std::wstring m_name;
  /// Its name until it is whole; empty unless it is written beside.
  std::wstring m_aside;
  /// Permission bits that a new file was created with.
  DWORD m_mode = 0;
};

/// A name that nobody can guess.
std::wstring PrivateName();

}  // namespace morvunp::output
