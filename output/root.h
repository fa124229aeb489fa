// All that a run does to the disk.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>

#include "frame/keyedhash.h"
#include "morvunp/itemrouter.h"
#include "output/file.h"
#include "output/folderfacts.h"
#include "output/folders.h"
#include "output/report.h"

namespace morvunp::output {

/// The target of one run. The formats write through it and nothing else: it
/// makes folders, decides about existing files, creates, dates and renames
/// files, makes links, and tells what becomes of each item. Nothing that it
/// does reaches outside the target folder.
class Root {
 public:
  /// `report` is told of every folder that is made. Files that are read, in
  /// `state`, are never replaced.
  Root(CUnpackState& state, std::wstring target, frame::FolderReport report)
      : m_state(state),
        m_reporter(state),
        m_folders(state, m_reporter, std::move(target), std::move(report)),
        m_budget(state.m_options.limits),
        m_file(m_reporter, m_folders, m_budget) {}
  ~Root();

  /// An item is in hand from here on.
  void Begin(Item item);
  /// The item in hand, which has been begun, goes to a sink. A folder is dealt
  /// with here; the data of a file is then written and finished as if to the
  /// disk. False when the run is over.
  bool BeginSink(morvunp::ItemSink& sink, const morvunp::RoutedItem& item);
  /// The place that somebody else than the run chose for the item in hand. None,
  /// which is told, where it is not below the target or the gate refuses it.
  std::optional<OutputPlace> Admit(const OutputPlace& place, bool isFolder);
  /// As Reporter::TellEnd, when all folders have their facts.
  bool TellEnd(const morvunp::RunReport& why);
  Reporter& Report() { return m_reporter; }
  const Reporter& Report() const { return m_reporter; }
  File& Out() { return m_file; }
  const std::wstring& Target() const { return m_folders.Target(); }

  /// Makes the folder that is in hand.
  bool MakeFolder(const std::wstring& folder);
  /// The folder in hand, which has been made, has these facts when the run has
  /// ended, where UnpackOptions::folderFacts is set.
  void NoteFolder(const FileFacts& facts);

  /// Goes to the folder of a file and makes its path m_strLastTarget.
  bool Enter(const OutputPlace& place);

  enum class Answer {
    /// The name is free, or what is there may be replaced.
    kWrite,
    kDeclined,
    /// Told.
    kFailed,
  };
  /// May the file in hand be written? Asks where one exists, again and again
  /// while the answer is another name that is taken.
  Answer Decide();
  /// Creates the file that Decide allowed. False when that fails, which is
  /// told. `mode` is that of a new file, before the umask; see File::Replace.
  bool Open(Placing placing, std::optional<DWORD> mode = {});
  /// Both at once, with one system call for a name that is free.
  Answer Create();

  /// A symbolic link, under the rule for links: it must not lead out.
  bool MakeLink(const std::wstring& target, const FILETIME* lastWrite);
  /// The same of the item in hand, whose data was collected; UTF-8 with `/`
  /// between components.
  bool FinishLink(const FileFacts& facts, morvunp::ItemReason defect);
  /// A further name for what this run wrote for the item `path`, whose place is
  /// `place`; where there can be none, its content. False when that did not come
  /// out.
  bool MakeHardLink(const OutputPlace& place, const std::wstring& path, const FileFacts& facts);
  bool Copy(const OutputPlace& place, const std::wstring& path, const FileFacts& facts);

  /// A folder of the run's own below the target, which nobody else can look
  /// into; it goes with what is in it. Empty when there can be none.
  std::wstring MakePrivateFolder();
  std::wstring TakeLinkFrom(const std::wstring& privateFolder, const std::wstring& name);
  void RemovePrivateFolder(const std::wstring& privateFolder);

 private:
  std::optional<Answer> DecideAbout(const platform::FoundFile& found);
  bool MayEnter(const std::wstring& folder, std::size_t itself);
  bool TakeOtherName(const std::wstring& name);
  std::optional<OutputPlace> SourceAt(const OutputPlace& place, const std::wstring& path) const;
  bool IsArchive(const platform::FoundFile& found) const;
  template <class Make>
  bool MakeName(Make make);

  CUnpackState& m_state;
  Reporter m_reporter;
  Folders m_folders;
  Budget m_budget;
  File m_file;
  FolderFacts m_folderFacts;
  std::wstring m_name;
  /// What Decide found at the place of the file in hand.
  std::optional<platform::FoundFile> m_existing;
  /// Names that the host chose for items, by keyed hashes of their paths.
  std::unordered_map<ULONGLONG, std::wstring, frame::KeyedHash> m_otherNames;
};

}  // namespace morvunp::output
