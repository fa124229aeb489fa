#include "iso/scanguard.h"

namespace morvunp::iso {
namespace {

constexpr std::size_t kLongestPath = 4095;
// The scans recurse; folders without a name would nest without a path.
constexpr int kDeepest = 1024;
// A record takes at least 34 bytes; a name in it fills the rest.
constexpr ULONGLONG kPathCharactersPerByte = 16;
constexpr ULONGLONG kFreePathCharacters = 1 << 20;

}  // namespace

bool ScanGuard::Enter(ULONGLONG key, ULONGLONG length, std::size_t pathLength) {
  if (pathLength > kLongestPath || m_nDepth == kDeepest) return false;
  if (length > Room() || length > m_nBytesLeft || !m_entered.insert(key).second) return false;
  m_nBytesLeft -= length;
  m_nBytesRead += length;
  m_nBytesHeld += length;
  ++m_nDepth;
  return true;
}

void ScanGuard::Leave(ULONGLONG length) {
  m_nBytesHeld -= length;
  --m_nDepth;
}

bool ScanGuard::CountPath(std::size_t length) {
  m_nPathCharacters += length;
  return m_nPathCharacters <= kFreePathCharacters + m_nBytesRead * kPathCharactersPerByte;
}

bool ScanGuard::CountAllocation(ULONGLONG length) {
  if (length > m_nAllocationLeft) return false;
  m_nAllocationLeft -= length;
  return true;
}

}  // namespace morvunp::iso
