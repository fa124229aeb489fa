#include "hosts/common/itemrecord.h"

namespace host {

Item ItemOf(const CABFILEFULLINFO& record) {
  const auto size = static_cast<std::uint32_t>(record.nSize);
  return {.path = record.strPath,
          .name = record.strName,
          .isFolder = record.bFolder != 0,
          .isHidden = (record.nAttribs & FILE_ATTRIBUTE_HIDDEN) != 0,
          .size = size,
          // Cabinets record packed sizes of whole folders only.
          .packedSize = size,
          .modified = morvunp::TimeOfDosDateTime(DWORD{record.nDate} << 16 | record.nTime),
          .accessed = std::nullopt};
}

Item ItemOf(const ISOFILEFULLINFO& record) {
  const std::uint64_t size = record.nSize != 0 ? record.nSize : record.nSize64;
  return {.path = record.strPath,
          .name = record.strName,
          .isFolder = record.bFolder != 0,
          .isHidden = record.bHidden != 0,
          .size = size,
          .packedSize = record.nPackedSize != 0 ? record.nPackedSize : size,
          .modified = record.timeModified,
          .accessed = record.timeAccessed != 0 ? std::optional(record.timeAccessed) : std::nullopt};
}

namespace {

std::uint64_t Join(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

/// The record of a folder has no name of its own.
template <class Record>
std::wstring_view NameOf(const Record& record) {
  const std::wstring_view path = record.strPath;
  return path.substr(path.rfind(L'\\') + 1);
}

bool IsHidden(const RARFILEFULLINFO& record) {
  // Items of Unix have a mode here; its file types lie above the attributes.
  const bool isDosAttribute = record.nFileAttr < 0x1000;
  return isDosAttribute && (record.nFileAttr & FILE_ATTRIBUTE_HIDDEN) != 0;
}

}  // namespace

Item ItemOf(const SEVENZIPFILEFULLINFO& record) {
  return {.path = record.strPath,
          .name = NameOf(record),
          .isFolder = record.bFolder != 0 || record.bInFolder != 0,
          .isHidden = (record.nAttributes & FILE_ATTRIBUTE_HIDDEN) != 0,
          .size = record.nSize,
          .packedSize = record.nPackedSize,
          .modified = morvunp::TimeOfDosDateTime(record.nDateTime),
          .accessed = std::nullopt,
          .crc = record.nCRC != 0 ? std::optional(record.nCRC) : std::nullopt,
          .isEncrypted = record.strMethod.find(L"7zAES") != std::wstring::npos};
}

Item ItemOf(const RARFILEFULLINFO& record) {
  return {.path = record.strPath,
          .name = NameOf(record),
          .isFolder = record.bFolder != 0 || record.bInFolder != 0,
          .isHidden = IsHidden(record),
          .size = Join(record.nUnpSizeHigh, record.nUnpSize),
          .packedSize = Join(record.nPackSizeHigh, record.nPackSize),
          .modified = morvunp::TimeOfDosDateTime(record.nFileTime),
          .accessed = std::nullopt};
}

bool IsContinuation(const RARFILEFULLINFO& record) {
  return (record.nFlags & morvunp::kRarSplitBefore) != 0;
}

void AddPart(RARFILEFULLINFO& file, const RARFILEFULLINFO& part) {
  const std::uint64_t packed =
      Join(file.nPackSizeHigh, file.nPackSize) + Join(part.nPackSizeHigh, part.nPackSize);
  file.nPackSize = static_cast<DWORD>(packed);
  file.nPackSizeHigh = static_cast<DWORD>(packed >> 32);
}

}  // namespace host
