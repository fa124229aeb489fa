#include "frame/summary.h"

#include <array>
#include <cwchar>

namespace morvunp::frame {
namespace {

constexpr std::size_t kTimeTextLength = 128;
// Sizes that an archive invents may give a ratio that no integer holds.
constexpr double kLargestPercentage = 9.0e18;

}  // namespace

std::wstring FormatOfNumber64(ULONGLONG number) {
  std::wstring text = std::to_wstring(number);
  for (std::size_t i = text.size(); i > 3; i -= 3) text.insert(i - 3, 1, L' ');
  return text;
}

double ConvUInt64ToDouble(ULONGLONG number) {
  const auto high = static_cast<double>(number >> 32);
  const auto low = static_cast<double>(number & 0xFFFFFFFF);
  return (high * 4294967295.0 + low) + high;
}

LONGLONG PercentageOf(ULONGLONG part, ULONGLONG whole) {
  if (whole == 0) return 0;
  const double percentage = ConvUInt64ToDouble(part) / ConvUInt64ToDouble(whole) * 100.0;
  return percentage < kLargestPercentage ? static_cast<LONGLONG>(percentage)
                                         : static_cast<LONGLONG>(kLargestPercentage);
}

std::wstring LocalTimeText(__time64_t time, LPCWSTR format) {
  std::tm local{};
  if (_localtime64_s(&local, &time) != 0) return {};
  std::array<wchar_t, kTimeTextLength> text{};
  return {text.data(), std::wcsftime(text.data(), text.size(), format, &local)};
}

void Totals::AddFile(const std::wstring& path, ULONGLONG size, ULONGLONG packed) {
  if (!path.starts_with(m_prefix)) return;
  ++m_nFiles;
  m_nSize += size;
  m_nPacked += packed;
}

void Totals::AddPart(const std::wstring& path, ULONGLONG packed) {
  if (path.starts_with(m_prefix)) m_nPacked += packed;
}

void Totals::AddFolder(const std::wstring& path) {
  if (!path.starts_with(m_prefix) || path.size() == m_prefix.size()) return;
  const std::wstring_view below = std::wstring_view(path).substr(m_prefix.size());
  for (const FolderKey& folder : FolderKeysOf(below)) m_folders.insert(folder.key);
}

std::wstring Totals::CountsText() const {
  return L"Files - " + FormatOfNumber64(m_nFiles) + L", Folders - " +
         FormatOfNumber64(m_folders.size()) + L", ";
}

std::wstring Totals::Text() const { return CountsText() + SizesText(m_nSize, m_nPacked); }

std::wstring Totals::TextOfSizes32() const {
  return CountsText() + SizeText(static_cast<DWORD>(m_nSize));
}

std::wstring SizeText(ULONGLONG size) { return L"Size - " + FormatOfNumber64(size) + L" bytes"; }

std::wstring FileTextWithCrc(__time64_t modified, ULONGLONG size, ULONGLONG packed, DWORD crc) {
  std::array<wchar_t, 9> digits{};
  std::swprintf(digits.data(), digits.size(), L"%08x", crc);
  return L"Modified - " + DateTimeText(modified) + L", " + SizesText(size, packed) + L", CRC - " +
         digits.data();
}

std::wstring SizesText(ULONGLONG size, ULONGLONG packed) {
  return SizeText(size) + L", Packed - " + FormatOfNumber64(packed) + L" bytes, Ratio - " +
         std::to_wstring(static_cast<LONG>(PercentageOf(packed, size))) + L"%";
}

}  // namespace morvunp::frame
