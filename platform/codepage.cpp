#include "platform/codepage.h"

#include <langinfo.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <map>
#include <new>
#include <utility>

#include "morvunp/platform/text.h"

namespace morvunp::platform {
namespace {

const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1);

/// Windows code pages of the languages whose old disc images use another one
/// than 1252.
constexpr std::array<std::pair<std::string_view, const char*>, 32> kLanguageCodePages{{
    {"ar", "CP1256"}, {"be", "CP1251"}, {"bg", "CP1251"}, {"bs", "CP1250"}, {"cs", "CP1250"},
    {"el", "CP1253"}, {"et", "CP1257"}, {"fa", "CP1256"}, {"he", "CP1255"}, {"hr", "CP1250"},
    {"hu", "CP1250"}, {"ja", "CP932"},  {"kk", "CP1251"}, {"ko", "CP949"},  {"lt", "CP1257"},
    {"lv", "CP1257"}, {"mk", "CP1251"}, {"mn", "CP1251"}, {"pl", "CP1250"}, {"ro", "CP1250"},
    {"ru", "CP1251"}, {"sk", "CP1250"}, {"sl", "CP1250"}, {"sq", "CP1250"}, {"sr", "CP1251"},
    {"th", "CP874"},  {"tr", "CP1254"}, {"uk", "CP1251"}, {"ur", "CP1256"}, {"uz", "CP1251"},
    {"vi", "CP1258"}, {"zh", "CP936"},
}};

std::string LanguageCodePageName() {
  const char* locale = std::setlocale(LC_CTYPE, nullptr);
  const std::string_view name = locale != nullptr ? locale : "";
  if (name.starts_with("zh_TW") || name.starts_with("zh_HK")) return "CP950";
  const auto* const entry =
      std::find_if(kLanguageCodePages.begin(), kLanguageCodePages.end(), [&](const auto& pair) {
        return name.substr(0, 2) == pair.first && (name.size() == 2 || name[2] == '_');
      });
  return entry != kLanguageCodePages.end() ? entry->second : "CP1252";
}

/// A code page that follows a name which may change with the locale; the
/// converters are made again only when it does.
class FollowingCodePage {
 public:
  const CodePage& Get(const std::string& name) {
    if (m_page == nullptr || name != m_name) {
      m_page = CodePage::Open(name);
      if (m_page == nullptr) m_page = CodePage::Open("UTF-8");
      m_name = name;
    }
    return *m_page;
  }

 private:
  std::string m_name;
  std::unique_ptr<CodePage> m_page;
};

thread_local FollowingCodePage localePage;
thread_local FollowingCodePage languagePage;

/// What SetAnsiCodePage set; null for the locale's codeset.
thread_local const CodePage* chosen = nullptr;
/// That of the innermost scope; null for what would be without it.
thread_local const CodePage* scoped = nullptr;

/// This thread's converters for a code page that was asked for by name; they
/// stay until the thread ends, because calls use them again and again. Null
/// when it cannot be used.
const CodePage* NamedCodePage(const std::string& name) {
  thread_local std::map<std::string, std::unique_ptr<CodePage>> pages;
  if (const auto found = pages.find(name); found != pages.end()) return found->second.get();
  auto page = CodePage::Open(name);
  if (page == nullptr) return nullptr;
  return pages.emplace(name, std::move(page)).first->second.get();
}

}  // namespace

std::unique_ptr<CodePage> CodePage::Open(const std::string& name) {
  const iconv_t decoder = iconv_open("WCHAR_T", name.c_str());
  if (decoder == kNoConverter) return nullptr;
  const iconv_t encoder = iconv_open(name.c_str(), "WCHAR_T");
  if (encoder == kNoConverter) {
    iconv_close(decoder);
    return nullptr;
  }
  std::unique_ptr<CodePage> page(new CodePage(decoder, encoder));
  return page->CoversAscii() ? std::move(page) : nullptr;
}

CodePage::~CodePage() {
  iconv_close(m_decoder);
  iconv_close(m_encoder);
}

bool CodePage::CoversAscii() const {
  std::string ascii;
  for (char c = 1; c < 0x7F; ++c) ascii += c;
  return Decode(ascii) == std::wstring(ascii.begin(), ascii.end());
}

std::size_t CodePage::DecodeStart(std::string_view bytes, std::wstring& wide) const {
  // No code page has more than one wide character to a byte but for a few that
  // compose; those are asked for again until all input is taken.
  std::size_t taken = 0;
  iconv(m_decoder, nullptr, nullptr, nullptr, nullptr);
  while (taken < bytes.size()) {
    const std::size_t before = wide.size();
    const std::size_t room = bytes.size() - taken + 4;
    wide.resize(before + room);
    char* in = const_cast<char*>(bytes.data()) + taken;
    std::size_t inLeft = bytes.size() - taken;
    char* out = reinterpret_cast<char*>(wide.data() + before);
    std::size_t outLeft = room * sizeof(wchar_t);
    iconv(m_decoder, &in, &inLeft, &out, &outLeft);
    // Some code pages hold a character back in case a combining one follows.
    iconv(m_decoder, nullptr, nullptr, &out, &outLeft);
    const std::size_t now = bytes.size() - inLeft;
    wide.resize(before + room - outLeft / sizeof(wchar_t));
    if (now == taken) break;
    taken = now;
  }
  return taken;
}

std::optional<std::wstring> CodePage::Decode(std::string_view bytes) const {
  std::wstring wide;
  if (DecodeStart(bytes, wide) != bytes.size()) return std::nullopt;
  return wide;
}

std::wstring CodePage::DecodeLoosely(std::string_view bytes, wchar_t privateBase) const {
  std::wstring wide;
  for (std::size_t taken = 0; taken < bytes.size();) {
    taken += DecodeStart(bytes.substr(taken), wide);
    if (taken == bytes.size()) break;
    wide += static_cast<wchar_t>(privateBase + static_cast<unsigned char>(bytes[taken]));
    ++taken;
  }
  return wide;
}

std::optional<std::string> CodePage::EncodeOne(wchar_t character) const {
  std::array<char, 16> buffer{};
  char* in = reinterpret_cast<char*>(&character);
  std::size_t inLeft = sizeof character;
  char* out = buffer.data();
  std::size_t outLeft = buffer.size();
  iconv(m_encoder, nullptr, nullptr, nullptr, nullptr);
  if (iconv(m_encoder, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1)) {
    return std::nullopt;
  }
  std::string bytes(buffer.data(), buffer.size() - outLeft);
  // Some characters are dropped without an error. Nor may a foreign character
  // turn into ASCII: a path that was checked would become another one.
  if (IsPlainAscii(bytes)) return std::nullopt;
  return bytes;
}

const CodePage& LocaleCodePage() { return localePage.Get(nl_langinfo(CODESET)); }

const CodePage& LanguageCodePage() { return languagePage.Get(LanguageCodePageName()); }

const CodePage& AnsiCodePage() {
  if (scoped != nullptr) return *scoped;
  return chosen != nullptr ? *chosen : LocaleCodePage();
}

bool SetAnsiCodePage(const std::string& name) {
  const CodePage* const page = name.empty() ? nullptr : NamedCodePage(name);
  if (page == nullptr && !name.empty()) return false;
  chosen = page;
  return true;
}

bool IsUsableCodePage(const std::string& name) { return NamedCodePage(name) != nullptr; }

AnsiCodePageScope::AnsiCodePageScope(const std::string& name) : m_outer(scoped) {
  const CodePage* const page = name.empty() ? nullptr : NamedCodePage(name);
  if (page == nullptr && !name.empty()) throw std::bad_alloc();
  scoped = page;
}

AnsiCodePageScope::~AnsiCodePageScope() { scoped = m_outer; }

bool IsPlainAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > 0; });
}

}  // namespace morvunp::platform
