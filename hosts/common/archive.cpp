#include "hosts/common/archive.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>

#include "hosts/common/filebeginning.h"
#include "hosts/common/sevenzipfile.h"
#include "morvunp/platform/text.h"

namespace host {
namespace {

Reason ReasonOfErrno(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return Reason::Of("no such file");
    case EACCES:
    case EPERM:
      return Reason::Of("no permission to read it");
    default:
      return {std::strerror(error)};
  }
}

/// Why a file of this kind cannot be an archive; none when it can.
std::optional<Reason> ReasonOfKind(const struct stat& status) {
  if (S_ISDIR(status.st_mode)) return Reason::Of("it is a folder");
  if (S_ISBLK(status.st_mode)) return std::nullopt;
  if (!S_ISREG(status.st_mode)) return Reason::Of("not a regular file");
  if (status.st_size == 0) return Reason::Of("the file is empty");
  return std::nullopt;
}

/// The unpackers answer only "no", so everything that the system can tell
/// about the file is found out before they are asked.
std::optional<Reason> ReasonAgainstFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return ReasonOfErrno(errno);
  if (auto reason = ReasonOfKind(status)) return reason;
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return ReasonOfErrno(errno);
  close(descriptor);
  return std::nullopt;
}

/// The password was wrong, or there is none.
struct PasswordProblem {
  Reason reason;
};

bool IsOfPassword(morvunp::ItemReason problem) {
  return problem == morvunp::ItemReason::kNoPassword ||
         problem == morvunp::ItemReason::kWrongPassword ||
         problem == morvunp::ItemReason::kWrongPasswordOrDamaged;
}

/// The password of encrypted headers proves itself with the first of them.
template <class U>
void ThrowPasswordProblem(U& unpacker, bool isOpen) {
  typename U::FullInfo record;
  if (isOpen && unpacker.FindFile() && unpacker.FindNextFile()) unpacker.GetFileFullInfo(record);
  const morvunp::ItemReason problem = unpacker.GetWalkProblem();
  if (IsOfPassword(problem)) throw PasswordProblem{ReasonOf(problem, {})};
}

std::optional<Reason> ReasonOfGap(morvunp::ItemReason problem) {
  using morvunp::ItemReason;
  if (problem == ItemReason::kNone) return std::nullopt;
  if (problem == ItemReason::kCutShort) {
    return Reason::Of("cut short: the file ends before the archive does");
  }
  Reason reason = ReasonOf(problem, {});
  reason.effect = Reason::Of("the list is cut short").text;
  return reason;
}

template <class U>
bool OpenWith(U& unpacker, const std::wstring& path, const ArchiveSetup&) {
  return unpacker.OpenArchive(path);
}

/// A split set opens from its first volume only. Encrypted headers that do not
/// open after a password was asked for have had a wrong one, or none.
bool OpenWith(C7zUnpacker& unpacker, const std::wstring& path, const ArchiveSetup& setup) {
  const SevenZipTraits traits = SevenZipTraitsOf(path);
  if (!traits.mayBeOne) return false;
  if (traits.isFirstVolume) AllowManyVolumes();
  const int asked = setup.password != nullptr ? setup.password->TimesAsked() : 0;
  const bool isOpen =
      traits.isFirstVolume ? unpacker.OpenMultiVolumeArchive(path) : unpacker.OpenArchive(path);
  if (isOpen || setup.password == nullptr) return isOpen;
  if (setup.password->TimesAsked() == asked) return false;
  throw PasswordProblem{setup.password->HasAnswer() ? WrongPasswordOrDamaged() : NoPassword()};
}

morvunp::UnpackOptions OptionsOf(const ArchiveSetup& setup) {
  morvunp::UnpackOptions options;
  options.goOn = true;
  options.wholeSet = true;
  options.safeReplace = true;
  options.utf8Names = true;
  // Without that window there is nobody who could ask for a stop.
  options.pumpAlways = setup.progressWindow != nullptr;
  return options;
}

template <class U>
void SetUp(U& unpacker, const ArchiveSetup& setup) {
  unpacker.SetOptions(OptionsOf(setup));
  unpacker.SetIni(setup.settings);
  unpacker.SetIniYesToAll(INIYESTOALL{});
  unpacker.SetWndFileTree(setup.fileTree);
  unpacker.SetHandleDialogProgress(setup.progressWindow);
  unpacker.SetItemReport(setup.onItem);
  if constexpr (std::is_same_v<U, CRarUnpacker>) unpacker.CountSplitFilesOnce(true);
}

template <class U>
std::unique_ptr<U> TryFormat(const std::wstring& path, const ArchiveSetup& setup) {
  auto unpacker = std::make_unique<U>();
  SetUp(*unpacker, setup);
  const bool isOpen = OpenWith(*unpacker, path, setup);
  if constexpr (std::is_same_v<U, CRarUnpacker>) ThrowPasswordProblem(*unpacker, isOpen);
  if (isOpen) return unpacker;
  // What is cut is known for what it is: no other format needs to be tried.
  const morvunp::ItemReason problem = unpacker->GetWalkProblem();
  const bool isCut =
      problem == morvunp::ItemReason::kCutShort || problem == morvunp::ItemReason::kMissingVolume;
  if (isCut) throw OpenError{*ReasonOfGap(problem)};
  return nullptr;
}

/// What every file of a format begins with; empty when there is no such mark.
template <class U>
constexpr std::string_view kSignature;
template <>
constexpr std::string_view kSignature<CCabUnpacker> = "MSCF";
template <>
constexpr std::string_view kSignature<CRarUnpacker> = "Rar!\x1a\x07";
template <>
constexpr std::string_view kSignature<C7zUnpacker> = kSevenZipSignature;

/// Tries the formats of the variant, in their order but for one that the file
/// bears the mark of: others may have to read all of it to find that it is not
/// theirs.
template <class... U>
std::optional<std::variant<std::unique_ptr<U>...>> TryFormats(
    std::type_identity<std::variant<std::unique_ptr<U>...>>, const std::string& path,
    const ArchiveSetup& setup) {
  std::optional<std::variant<std::unique_ptr<U>...>> archive;
  const std::string beginning = BeginningOf(path);
  const std::wstring libraryPath = morvunp::platform::ToLibraryPath(path);
  const auto tryOne = [&]<class One>(std::type_identity<One>, bool isMarked) {
    const std::string_view mark = kSignature<One>;
    if (isMarked != (!mark.empty() && beginning.starts_with(mark))) return false;
    if (auto unpacker = TryFormat<One>(libraryPath, setup)) archive = std::move(unpacker);
    return archive.has_value();
  };
  for (const bool isMarked : {true, false}) {
    if ((tryOne(std::type_identity<U>{}, isMarked) || ...)) break;
  }
  return archive;
}

std::optional<Archive> TryAllFormats(const std::string& path, const ArchiveSetup& setup) {
  try {
    return TryFormats(std::type_identity<Archive>{}, path, setup);
  } catch (const CAtlException&) {
    // The only error of this kind that leaves an open.
    throw OpenError{Reason::Of("a recorded date is impossible")};
  } catch (const CInvalidArgException&) {
    throw OpenError{Reason::Of("damaged: it names a partition that it lacks")};
  }
}

/// As TryAllFormats; a password that was typed wrong may be typed again.
std::optional<Archive> TryWithPassword(const std::string& path, const ArchiveSetup& setup) {
  for (;;) {
    try {
      return TryAllFormats(path, setup);
    } catch (const PasswordProblem& wrong) {
      const bool wasCancelled = setup.password != nullptr && setup.password->WasCancelled();
      if (wasCancelled) throw OpenError{wrong.reason, true};
      if (setup.password == nullptr || !setup.password->Reject()) throw OpenError{wrong.reason};
      if (setup.onWrongPassword) setup.onWrongPassword(wrong.reason);
    }
  }
}

/// What is left to tell of a file that no format knew.
Reason ReasonOfUnknown(const std::string& path, DWORD error) {
  if (error == ERROR_SHARING_VIOLATION) return Reason::Of("another program is writing to it");
  if (SevenZipTraitsOf(morvunp::platform::ToLibraryPath(path)).hasSignature &&
      !HasSevenZipEngine()) {
    return Reason::Of(
        "a 7z archive, but the 7-Zip engine is missing; install the package p7zip-full (or "
        "7zip with its 7z.so)");
  }
  if (!MORVUNP_HAS_RAR && BeginningOf(path).starts_with(kSignature<CRarUnpacker>)) {
    return Reason::Of("a RAR archive, but morvunp was built without the RAR engine");
  }
  if (error == ERROR_MOD_NOT_FOUND)
    return Reason::Of("not an archive, or one whose module is missing");
  return Reason::Of("not an archive that morvunp knows, or damaged");
}

}  // namespace

Archive OpenArchiveFile(const std::string& path, const ArchiveSetup& setup) {
  if (const auto reason = ReasonAgainstFile(path)) throw OpenError{*reason};
  SetLastError(ERROR_SUCCESS);
  auto archive = TryWithPassword(path, setup);
  if (!archive) throw OpenError{ReasonOfUnknown(path, GetLastError())};
  return std::move(*archive);
}

void SetUpArchive(Archive& archive, const ArchiveSetup& setup) {
  WithUnpacker(archive, [&](auto& unpacker) { SetUp(unpacker, setup); });
}

namespace {

/// What it means for a list that an archive is damaged.
template <class U>
Reason ReasonOfDamage(const U&) {
  return *ReasonOfGap(morvunp::ItemReason::kDamaged);
}
Reason ReasonOfDamage(const CIsoUnpacker&) {
  return Reason::Of("damaged: not all of its folders could be read");
}
Reason ReasonOfDamage(const CCabUnpacker&) {
  return Reason::Of("damaged: its table of files could not be read whole");
}
Reason ReasonOfDamage(const C7zUnpacker&) {
  return Reason::Of("damaged: the engine found errors in its headers");
}

}  // namespace

std::optional<Reason> ReasonOfGap(Archive& archive) {
  return WithUnpacker(archive, [](const auto& unpacker) -> std::optional<Reason> {
    const morvunp::ItemReason problem = unpacker.GetWalkProblem();
    if (problem == morvunp::ItemReason::kDamaged) return ReasonOfDamage(unpacker);
    if constexpr (requires { unpacker.GetMissingCabinet(); }) {
      if (problem == morvunp::ItemReason::kMissingVolume) {
        return ReasonOf(problem, unpacker.GetMissingCabinet());
      }
    }
    return ReasonOfGap(problem);
  });
}

std::wstring SummaryOf(Archive& archive) {
  return WithUnpacker(archive, [](auto& unpacker) { return unpacker.GetArchiveOutputInfo(); });
}

std::wstring SummaryOf(Archive& archive, const std::wstring& path, bool isFolder) {
  return WithUnpacker(archive, [&](auto& unpacker) {
    return isFolder ? unpacker.GetFolderOutputInfo(path) : unpacker.GetFileOutputInfo(path);
  });
}

}  // namespace host
