// Decoding and encoding in one named code page, over iconv.
#pragma once

#include <iconv.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace morvunp::platform {

/// A pair of converters between a code page and wide text. They have a state,
/// so that no two threads may use one.
class CodePage {
 public:
  /// Null when the system does not know `name`, or when the code page is not
  /// a superset of ASCII (the path gate and the ASCII short cut rely on that).
  static std::unique_ptr<CodePage> Open(const std::string& name);

  ~CodePage();
  CodePage(const CodePage&) = delete;
  CodePage& operator=(const CodePage&) = delete;

  /// None when the bytes are not valid in this code page.
  std::optional<std::wstring> Decode(std::string_view bytes) const;
  /// Decodes what it can; each byte that has no meaning becomes
  /// `privateBase` + byte.
  std::wstring DecodeLoosely(std::string_view bytes, wchar_t privateBase) const;
  /// One character outside ASCII; none when the code page lacks it. Never empty
  /// and never ASCII.
  std::optional<std::string> EncodeOne(wchar_t character) const;

 private:
  CodePage(iconv_t decoder, iconv_t encoder) : m_decoder(decoder), m_encoder(encoder) {}
  bool CoversAscii() const;
  /// Appends the characters of the longest valid start of `bytes` to `wide`;
  /// returns how many bytes that was.
  std::size_t DecodeStart(std::string_view bytes, std::wstring& wide) const;

  iconv_t m_decoder;
  iconv_t m_encoder;
};

/// The code page in force on this thread: that of an AnsiCodePageScope, or else
/// what a host set, or else the locale's codeset.
const CodePage& AnsiCodePage();
/// The codeset of the locale, whatever a host set: the code page of file names
/// and terminals.
const CodePage& LocaleCodePage();
/// The Windows code page of the locale's language (1252 where nothing better
/// is known).
const CodePage& LanguageCodePage();

/// True when the system knows the code page and it is a superset of ASCII.
bool IsUsableCodePage(const std::string& name);

/// A code page is in force on this thread until the scope ends; an empty name
/// stands for what would be without any scope. Throws std::bad_alloc when the
/// converters cannot be made, although the code page is usable.
class AnsiCodePageScope {
 public:
  explicit AnsiCodePageScope(const std::string& name);
  ~AnsiCodePageScope();
  AnsiCodePageScope(const AnsiCodePageScope&) = delete;
  AnsiCodePageScope& operator=(const AnsiCodePageScope&) = delete;

 private:
  const CodePage* m_outer;
};

/// True when every character is ASCII other than NUL.
bool IsPlainAscii(std::string_view text);

}  // namespace morvunp::platform
