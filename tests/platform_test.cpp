// The layer that stands in for the host's system.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>

#include "morvunp/platform/platform.h"
#include "morvunp/platform/userinterface.h"
#include "platform/below.h"
#include "support/attributes.h"
#include "support/fakehost.h"
#include "support/rooms.h"
#include "support/tempfolder.h"

namespace {

using testing::ElementsAre;
using testsupport::TempFolder;

TEST(Paths, SurviveTheWayThereAndBack) {
  for (const std::string native : {"/home/ann/out", "relative/x", "/tmp/\xC3\xA9\xE2\x82\xAC",
                                   "/bad\xFF\xC3/utf8", "/back\\slash", "/\xF0\x9F\x98\x80"}) {
    EXPECT_EQ(platform::ToNativePath(platform::ToLibraryPath(native)), native);
  }
  EXPECT_EQ(platform::ToLibraryPath("/home/ann"), L"\\home\\ann");
  EXPECT_EQ(platform::ToLibraryPath("a\\b").find(L'\\'), std::wstring::npos);
  EXPECT_EQ(platform::ToNativePath(std::wstring(1, wchar_t{0xDC2F})), "\xED\xB0\xAF")
      << "never a separator";
}

TEST(Text, EncodesWhatTheCodePageHas) {
  ASSERT_TRUE(platform::SetAnsiCodePage("CP1252"));
  char bytes[16] = {};
  BOOL lacking = FALSE;
  const std::wstring text = L"a\u00E9\u8868";
  ASSERT_EQ(WideCharToMultiByte(CP_ACP, 0, text.c_str(), 3, bytes, 16, nullptr, &lacking), 3);
  EXPECT_STREQ(bytes, "a\xE9?");
  EXPECT_TRUE(lacking);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, text.c_str(), 3, nullptr, 0, nullptr, nullptr), 3);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, text.c_str(), 3, bytes, 2, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  // The system's converter drops tag characters without an error; "..", a tag
  // and nothing else would become "..".
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"\U000E0041", 1, bytes, 16, nullptr, nullptr), 1);
  EXPECT_EQ(bytes[0], '?');
  platform::SetAnsiCodePage("");
}

class Attributes : public testing::Test {
 protected:
  DWORD Get() { return GetFileAttributesW(folder.LibraryPath("f").c_str()); }
  BOOL Set(DWORD attributes) {
    return testsupport::SetAttributes(folder.LibraryPath(), L"f", attributes) ? TRUE : FALSE;
  }
  TempFolder folder;
};

TEST_F(Attributes, KeepHiddenAndSystemInAnExtendedAttribute) {
  testsupport::WriteFile(folder.Path("f"), "");
  EXPECT_EQ(Get(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_TRUE(Set(FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(Get(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY);
  char text[8] = {};
  EXPECT_EQ(getxattr(folder.Path("f").c_str(), "user.DOSATTRIB", text, 8), 3);
  EXPECT_STREQ(text, "0x6");
  EXPECT_TRUE(Set(FILE_ATTRIBUTE_NORMAL));
  EXPECT_EQ(Get(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_LT(getxattr(folder.Path("f").c_str(), "user.DOSATTRIB", text, 8), 0);
  // Others append binary data behind the text.
  setxattr(folder.Path("f").c_str(), "user.DOSATTRIB", "0x2\0\1\2\3", 7, 0);
  EXPECT_EQ(Get(), FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(Attributes, ProtectReadOnlyFilesFromRootToo) {
  testsupport::WriteFile(folder.Path("f"), "kept");
  ASSERT_TRUE(Set(FILE_ATTRIBUTE_READONLY));
  const HANDLE parent = platform::OpenFolder(folder.LibraryPath().c_str());
  EXPECT_EQ(platform::RewriteFileBelow(parent, L"f"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_EQ(platform::LastSystemError(), EACCES);
  CloseHandle(parent);
  EXPECT_EQ(testsupport::ReadFile(folder.Path("f")), "kept");
}

TEST_F(Attributes, LookAtLinksThemselves) {
  ASSERT_EQ(symlink(".", folder.Path("f").c_str()), 0);
  EXPECT_EQ(Get(), FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_FALSE(Set(FILE_ATTRIBUTE_READONLY));
  unlink(folder.Path("f").c_str());
  ASSERT_EQ(symlink("nowhere", folder.Path("f").c_str()), 0);
  EXPECT_EQ(Get(), FILE_ATTRIBUTE_REPARSE_POINT);
  unlink(folder.Path("f").c_str());
  EXPECT_EQ(Get(), INVALID_FILE_ATTRIBUTES);
}

TEST(Files, AreTheWritersOwnFromTheSecondWriteOn) {
  const TempFolder folder;
  const HANDLE parent = platform::OpenFolder(folder.LibraryPath().c_str());
  const HANDLE file = platform::CreateFileBelow(parent, L"f");
  DWORD written = 0;
  EXPECT_TRUE(WriteFile(file, "1", 1, &written, nullptr));
  EXPECT_TRUE(WriteFile(file, "2", 1, &written, nullptr));
  EXPECT_EQ(platform::RewriteFileBelow(parent, L"f"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  EXPECT_EQ(testsupport::ReadFile(folder.Path("f")), "12") << "refused before it was cut";
  CloseHandle(file);
  const HANDLE again = platform::RewriteFileBelow(parent, L"f");
  EXPECT_NE(again, INVALID_HANDLE_VALUE);
  CloseHandle(again);
  CloseHandle(parent);
}

TEST(Files, NeverWaitForAPipe) {
  const TempFolder folder;
  ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
  const std::wstring path = folder.LibraryPath("pipe");
  for (const DWORD access : {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE}) {
    EXPECT_EQ(CreateFileW(path.c_str(), access, 0, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
  }
}

TEST(Files, GiveNoDescriptorThatMeansNone) {
  const TempFolder folder;
  testsupport::WriteFile(folder.Path("f"), "x");
  const int saved = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  int descriptor = 0;
  EXPECT_EQ(_wsopen_s(&descriptor, folder.LibraryPath("f").c_str(), _O_RDONLY, _SH_DENYWR, 0), 0);
  EXPECT_GT(descriptor, 2);
  _close(descriptor);
  dup2(saved, STDIN_FILENO);
  close(saved);
}

TEST(Files, KeepTimesToTheirPrecision) {
  const TempFolder folder;
  const HANDLE parent = platform::OpenFolder(folder.LibraryPath().c_str());
  const HANDLE file = platform::CreateFileBelow(parent, L"f");
  const FILETIME time = platform::FileTimeOfTimespec(1000000000, 123456700);
  EXPECT_TRUE(SetFileTime(file, nullptr, nullptr, &time));
  CloseHandle(file);
  platform::FoundFile found;
  EXPECT_TRUE(platform::FindBelow(parent, L"f", found));
  CloseHandle(parent);
  EXPECT_EQ(found.lastWrite.dwLowDateTime, time.dwLowDateTime);
  EXPECT_EQ(platform::SecondsOfFileTime(found.lastWrite), 1000000000);
  EXPECT_EQ(platform::FileTimeOfTimespec(INT64_MAX, 0).dwHighDateTime, 0U);
}

TEST(Times, OfMsDosAreLocal) {
  const struct {
    WORD date;
    WORD time;
    bool isValid;
    std::int64_t seconds;
  } cases[] = {{21 << 9 | 2 << 5 | 3, 4 << 11 | 5 << 5 | 3, true, 981173106 - 3600},
               // In summer, whatever the season of today.
               {21 << 9 | 7 << 5 | 3, 0, true, 994111200},
               {20 << 9 | 2 << 5 | 29, 23 << 11 | 59 << 5 | 29, true, 951868798 - 3600},
               {21 << 9 | 2 << 5 | 29, 0, false, 0},
               {13 << 5 | 1, 0, false, 0},
               {0, 0, false, 0},
               {1 << 5 | 1, 24 << 11, false, 0},
               {1 << 5 | 1, 30, false, 0}};
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  tzset();
  for (const auto& item : cases) {
    SCOPED_TRACE(item.date);
    FILETIME local;
    FILETIME universal;
    EXPECT_EQ(DosDateTimeToFileTime(item.date, item.time, &local) != FALSE, item.isValid);
    if (!item.isValid) continue;
    ASSERT_TRUE(LocalFileTimeToFileTime(&local, &universal));
    EXPECT_EQ(platform::SecondsOfFileTime(universal), item.seconds);
    EXPECT_EQ(platform::CarriedTimeOfDosDateTime(item.date, item.time), item.seconds);
  }
  // Newfoundland changed its clocks a minute past midnight: the seconds before
  // and after, one after the other.
  setenv("TZ", "NST3:30NDT,M4.1.0/0:01,M10.5.0/0:01", 1);
  tzset();
  for (const auto& [seconds, shownLater] :
       {std::pair{954646259, -12600}, {954646260, -9000}, {954646261, -9000}}) {
    const FILETIME universal = platform::FileTimeOfTimespec(seconds, 0);
    FILETIME local;
    ASSERT_TRUE(FileTimeToLocalFileTime(&universal, &local));
    EXPECT_EQ(platform::SecondsOfFileTime(local), seconds + shownLater);
  }
  unsetenv("TZ");
  tzset();
}

TEST(Modules, AreLookedForBesideTheLibraryOnly) {
  const HMODULE module = LoadLibraryW(L"Cabinet.dll");
  ASSERT_NE(module, nullptr);
  EXPECT_NE(GetProcAddress(module, "FDICopy"), nullptr);
  EXPECT_EQ(GetProcAddress(module, "FCICreate"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(LoadLibraryW(L"libc.so.6"), nullptr) << "the system's search path plays no part";
  EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST(Windows, DeliverToTheirOwnProcedureUntilTheyAreDestroyed) {
  std::vector<UINT> seen;
  const HWND parent = platform::MakeWindow(nullptr, [&](UINT message, WPARAM, LPARAM) {
    seen.push_back(message);
    return LRESULT{7};
  });
  const HWND child = platform::MakeWindow(parent, [&](UINT message, WPARAM, LPARAM) {
    seen.push_back(message + 1000);
    return LRESULT{8};
  });
  EXPECT_EQ(SendMessageW(parent, 1, 0, 0), 7);
  EXPECT_TRUE(PostMessageW(child, 2, 0, 0));
  MSG message;
  ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
  EXPECT_TRUE(IsDialogMessageW(parent, &message));
  EXPECT_FALSE(IsDialogMessageW(nullptr, &message));
  EXPECT_THAT(seen, ElementsAre(1U, 1002U));
  PostMessageW(child, 3, 0, 0);
  EXPECT_TRUE(DestroyWindow(parent));
  EXPECT_FALSE(IsWindow(child));
  EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) << "its messages went with it";
  EXPECT_EQ(SendMessageW(child, 4, 0, 0), 0);
}

TEST(Dialogs, FailToRunWithoutAnInterfaceOrTemplate) {
  EXPECT_EQ(CDialog(1001).DoModal(), -1);
  EXPECT_EQ(MessageBoxW(nullptr, L"?", L"", MB_YESNO), IDNO);
  testsupport::FakeHost host;
  EXPECT_EQ(CDialog(4711).DoModal(), -1);
}

}  // namespace
