// The objects that the 7-Zip engine is handed: streams and volumes. What split
// sets hold when joined is looked at by fuzz/splitset.cpp.
#include <gtest/gtest.h>

#include "platform/text.h"
#include "sevenzip/filestreams.h"
#include "sevenzip/opencallback.h"
#include "sevenzip/splithandler.h"
#include "sevenzip/volumesequence.h"
#include "support/tempfolder.h"

namespace {

using namespace sevenzip;
using testsupport::ReadFile;
using testsupport::WriteFile;

TEST(SevenZipObjects, FileStreamsReadSeekAndCut) {
  constexpr DWORD kMiB = 1 << 20;
  const testsupport::TempFolder folder;
  WriteFile(folder.Path("f"), std::string(10 * kMiB, 'x') + "end");
  const auto in = Create<CInFileStream>();
  ASSERT_TRUE(in->Open(folder.LibraryPath("f")));
  std::string buffer(10 * kMiB, '\0');
  DWORD read = 0;
  EXPECT_EQ(in->Read(buffer.data(), 10 * kMiB, &read), S_OK);
  EXPECT_EQ(read, 4 * kMiB);
  ULONGLONG position = 0;
  EXPECT_EQ(in->Seek(-3, kSeekEnd, &position), S_OK);
  EXPECT_EQ(position, 10 * kMiB);
  EXPECT_EQ(in->Seek(0, 3, &position), STG_E_INVALIDFUNCTION);
  EXPECT_NE(in->Seek(-1, kSeekStart, nullptr), S_OK);
  for (const char* rest : {"end", ""}) {
    EXPECT_EQ(in->Read(buffer.data(), 100, &read), S_OK);
    EXPECT_EQ(buffer.substr(0, read), rest);
  }

  const auto out = Create<COutFileStream>();
  ASSERT_TRUE(out->Open(folder.LibraryPath("g")));
  EXPECT_EQ(out->Write("abcdef", 6, nullptr), S_OK);
  EXPECT_EQ(out->SetSize(3), S_OK);
  EXPECT_EQ(out->Write("x", 1, nullptr), S_OK);
  EXPECT_EQ(out->ProcessedSize(), 7U);
  out->File().Close();
  EXPECT_EQ(ReadFile(folder.Path("g")), std::string("abc\0\0\0x", 7));
}

TEST(SevenZipObjects, VolumesAreCountedOnInDigitsAndLetters) {
  const struct {
    const wchar_t* first;
    int steps;
    const wchar_t* expected;
  } cases[] = {{L"a.7z.001", 1, L"a.7z.002"}, {L"a.7z.001", 999, L"a.7z.1000"},
               {L"a.01", 99, L"a.100"},       {L"b.aa", 26, L"b.ba"},
               {L"b.AA", 1, L"b.AB"},         {L"b.aa", 25 * 26 - 1, L"b.yz"},
               {L"b.aa", 25 * 26, L"b.zaaa"}, {L"b.aa", 25 * 26 + 1, L"b.zaab"},
               {L"b.xaa", 1, L"b.xab"},       {L"aaa", 1, L"aab"}};
  for (const auto& [first, steps, expected] : cases) {
    auto sequence = CVolumeSequence::OfFirstVolume(first);
    ASSERT_TRUE(sequence) << first;
    std::wstring name;
    for (int i = 0; i < steps; ++i) name = sequence->GetNextName();
    EXPECT_EQ(name, expected);
  }
  for (const wchar_t* name : {L"data.7z", L"data.002", L"data.x01", L"data.1", L"data.a", L"."}) {
    EXPECT_FALSE(CVolumeSequence::OfFirstVolume(name)) << name;
  }
}

TEST(SevenZipObjects, JoinedVolumesEndWhereTheyEnd) {
  const testsupport::TempFolder folder;
  WriteFile(folder.Path("s.001"), "first");
  WriteFile(folder.Path("s.002"), "second");
  const auto callback = Create<C7zmvOpenCallback>();
  ASSERT_TRUE(callback->Init(folder.LibraryPath("s.001")));
  const auto first = Create<CInFileStream>();
  ASSERT_TRUE(first->Open(folder.LibraryPath("s.001")));
  auto handler = Create<NArchive::NSplit::CHandler>();
  EXPECT_EQ(handler->Open(first.Get(), nullptr, nullptr), S_FALSE);
  // A callback that knows no volumes.
  EXPECT_EQ(handler->Open(first.Get(), nullptr, Create<C7zOpenCallback>().Get()), S_FALSE);
  ASSERT_EQ(handler->Open(first.Get(), nullptr, callback.Get()), S_OK);
  ComPtr<ISequentialInStream> joined;
  ASSERT_EQ(handler->GetStream(0, joined.Receive()), S_OK);
  // The stream keeps the volumes.
  handler.Reset();
  const auto stream = joined.Query<IInStream>();
  std::string buffer(50, '\0');
  DWORD read = 0;
  for (const auto& [offset, expected] :
       {std::pair(-8, "st"), {-6, "second"}, {0, ""}, {-11, "first"}}) {
    EXPECT_EQ(stream->Seek(offset, kSeekEnd, nullptr), S_OK);
    EXPECT_EQ(stream->Read(buffer.data(), 50, &read), S_OK);
    EXPECT_EQ(buffer.substr(0, read), expected);
  }
  EXPECT_EQ(stream->Seek(1, kSeekEnd, nullptr), S_OK);
  EXPECT_EQ(stream->Read(buffer.data(), 1, &read), E_FAIL);
}

}  // namespace
