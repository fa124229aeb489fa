#include "frame/keyedhash.h"

#include <array>
#include <bit>
#include <chrono>
#include <exception>
#include <random>

namespace morvunp::frame {
namespace {

using Key = std::array<ULONGLONG, 2>;

Key MakeKey() noexcept {
  // Where the system has no random numbers to give, its layout of memory and
  // the time have to do.
  static const char place = 0;
  Key key{static_cast<ULONGLONG>(reinterpret_cast<std::uintptr_t>(&place)),
          static_cast<ULONGLONG>(std::chrono::steady_clock::now().time_since_epoch().count())
              << 20};
  try {
    std::random_device device;
    for (ULONGLONG& half : key) half ^= ULONGLONG{device()} << 32 | device();
  } catch (const std::exception&) {
  }
  return key;
}

/// Of the process on purpose: an index may be asked from another thread than
/// the one that built it.
const Key& ProcessKey() {
  static const Key key = MakeKey();
  return key;
}

}  // namespace

std::size_t KeyedHash::operator()(ULONGLONG number) const noexcept {
  // The finalizer of SplitMix64: every bit of the sum reaches every bit.
  ULONGLONG mixed = number + ProcessKey()[0];
  mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9;
  mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
  return static_cast<std::size_t>(mixed ^ mixed >> 31);
}

TextHash::TextHash()
    : m_v0(ProcessKey()[0] ^ 0x736F6D6570736575),
      m_v1(ProcessKey()[1] ^ 0x646F72616E646F6D),
      m_v2(ProcessKey()[0] ^ 0x6C7967656E657261),
      m_v3(ProcessKey()[1] ^ 0x7465646279746573) {}

void TextHash::Round() {
  m_v0 += m_v1;
  m_v1 = std::rotl(m_v1, 13) ^ m_v0;
  m_v0 = std::rotl(m_v0, 32);
  m_v2 += m_v3;
  m_v3 = std::rotl(m_v3, 16) ^ m_v2;
  m_v0 += m_v3;
  m_v3 = std::rotl(m_v3, 21) ^ m_v0;
  m_v2 += m_v1;
  m_v1 = std::rotl(m_v1, 17) ^ m_v2;
  m_v2 = std::rotl(m_v2, 32);
}

void TextHash::AddWord(ULONGLONG word) {
  m_v3 ^= word;
  Round();
  m_v0 ^= word;
}

void TextHash::Add(wchar_t character) {
  m_nPending = m_nPending << 32 | static_cast<std::uint32_t>(character);
  if (++m_nCount % 2 == 0) AddWord(m_nPending);
}

ULONGLONG TextHash::Result() {
  // The length keeps apart what only zeros at the end tell apart.
  AddWord((m_nCount % 2 != 0 ? m_nPending << 32 : 0) ^ m_nCount);
  m_v2 ^= 0xFF;
  for (int i = 0; i < 3; ++i) Round();
  return m_v0 ^ m_v1 ^ m_v2 ^ m_v3;
}

ULONGLONG HashOfText(std::wstring_view text) {
  TextHash hash;
  for (const wchar_t c : text) hash.Add(c);
  return hash.Result();
}

}  // namespace morvunp::frame
