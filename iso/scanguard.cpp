#include "iso/scanguard.h"

namespace iso {
namespace {

constexpr std::size_t kLongestPath = 4095;
// A record takes at least 34 bytes; a name in it fills the rest.
constexpr ULONGLONG kPathCharactersPerByte = 16;
constexpr ULONGLONG kFreePathCharacters = 1 << 20;

}  // namespace

bool ScanGuard::Enter(ULONGLONG key, ULONGLONG length, const std::wstring& path) {
  const ULONGLONG mostCharacters = kFreePathCharacters + m_nBytesRead * kPathCharactersPerByte;
  if (path.size() > kLongestPath || m_nPathCharacters > mostCharacters) return false;
  if (length > m_nBytesLeft || !m_entered.insert(key).second) return false;
  m_nBytesLeft -= length;
  m_nBytesRead += length;
  return true;
}

bool ScanGuard::CountAllocation(ULONGLONG length) {
  if (length > m_nAllocationLeft) return false;
  m_nAllocationLeft -= length;
  return true;
}

}  // namespace iso
