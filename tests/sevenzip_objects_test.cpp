// The objects that the 7-Zip engine is handed: counting, ids, streams, volumes.
// What split sets hold when joined is looked at by fuzz/splitset.cpp.
#include <gtest/gtest.h>

#include "platform/text.h"
#include "sevenzip/copycoder.h"
#include "sevenzip/extractcallback.h"
#include "sevenzip/filestreams.h"
#include "sevenzip/multistream.h"
#include "sevenzip/opencallback.h"
#include "sevenzip/splithandler.h"
#include "sevenzip/volumesequence.h"
#include "support/tempfolder.h"

namespace {

using namespace sevenzip;
using testsupport::ReadFile;
using testsupport::WriteFile;

/// What an object answers of a list of ids, as a text of 0 and 1.
template <class T>
std::string AnswersOf(const T& object) {
  std::string answers;
  for (const GUID& id :
       {IUnknown::kId, IInStream::kId, IStreamGetSize::kId, IOutStream::kId, IInArchive::kId,
        IInArchiveGetStream::kId, ICryptoGetTextPassword::kId, IArchiveOpenVolumeCallback::kId,
        ICompressProgressInfo::kId, ICompressGetInStreamProcessedSize::kId, ISetProperties::kId}) {
    void* found = &found;
    const HRESULT result = object->QueryInterface(id, &found);
    EXPECT_EQ(result == S_OK, found != nullptr);
    if (result == S_OK) {
      static_cast<IUnknown*>(found)->Release();
    } else {
      EXPECT_EQ(result, E_NOINTERFACE);
    }
    answers += result == S_OK ? '1' : '0';
  }
  return answers;
}

TEST(SevenZipObjects, AnswerTheirOwnIdsOnly) {
  EXPECT_EQ(AnswersOf(Create<CInFileStream>()), "11100000000");
  EXPECT_EQ(AnswersOf(Create<COutFileStream>()), "10010000000");
  EXPECT_EQ(AnswersOf(Create<CMultiStream>()), "11000000000");
  EXPECT_EQ(AnswersOf(Create<C7zOpenCallback>()), "10000010000");
  EXPECT_EQ(AnswersOf(Create<C7zmvOpenCallback>()), "10000011000");
  EXPECT_EQ(AnswersOf(Create<C7zExtractCallback>()), "10000010000");
  EXPECT_EQ(AnswersOf(Create<NArchive::NSplit::CHandler>()), "10001100000");
  EXPECT_EQ(AnswersOf(Create<NCompress::CCopyCoder>()), "10000000010");
}

TEST(SevenZipObjects, FileStreamsReadSeekAndCut) {
  const testsupport::TempFolder folder;
  WriteFile(folder.Path("f"), std::string(std::size_t{10} << 20, 'x') + "end");
  const auto in = Create<CInFileStream>();
  ASSERT_TRUE(in->Open(folder.LibraryPath("f")));
  std::string buffer(std::size_t{10} << 20, '\0');
  DWORD read = 0;
  EXPECT_EQ(in->Read(buffer.data(), static_cast<DWORD>(buffer.size()), &read), S_OK);
  EXPECT_EQ(read, DWORD{4} << 20);
  ULONGLONG position = 0;
  EXPECT_EQ(in->Seek(-3, kSeekEnd, &position), S_OK);
  EXPECT_EQ(position, ULONGLONG{10} << 20);
  EXPECT_EQ(in->Seek(0, 3, &position), STG_E_INVALIDFUNCTION);
  EXPECT_NE(in->Seek(-1, kSeekStart, nullptr), S_OK);
  EXPECT_EQ(in->Read(buffer.data(), 100, &read), S_OK);
  EXPECT_EQ(buffer.substr(0, read), "end");
  EXPECT_EQ(in->Read(buffer.data(), 100, &read), S_OK);
  EXPECT_EQ(read, 0U);
  ULONGLONG size = 0;
  EXPECT_EQ(in->GetSize(&size), S_OK);
  EXPECT_EQ(size, (ULONGLONG{10} << 20) + 3);

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
  } cases[] = {{L"a.7z.001", 1, L"a.7z.002"},
               {L"a.7z.001", 998, L"a.7z.999"},
               {L"a.7z.001", 999, L"a.7z.1000"},
               {L"a.01", 99, L"a.100"},
               {L"b.aa", 25, L"b.az"},
               {L"b.aa", 26, L"b.ba"},
               {L"b.AA", 1, L"b.AB"},
               {L"b.aa", 25 * 26 - 1, L"b.yz"},
               {L"b.aa", 25 * 26, L"b.zaaa"},
               {L"b.aa", 25 * 26 + 1, L"b.zaab"},
               {L"b.xaa", 1, L"b.xab"},
               {L"aaa", 1, L"aab"}};
  for (const auto& [first, steps, expected] : cases) {
    auto sequence = CVolumeSequence::OfFirstVolume(first);
    ASSERT_TRUE(sequence) << first;
    std::wstring name;
    for (int i = 0; i < steps; ++i) name = sequence->GetNextName();
    EXPECT_EQ(name, expected);
  }
  for (const wchar_t* name :
       {L"data.7z", L"data.002", L"data.x01", L"data.1", L"data.a", L"", L"."}) {
    EXPECT_FALSE(CVolumeSequence::OfFirstVolume(name)) << name;
  }
  EXPECT_EQ(CVolumeSequence::OfFirstVolume(L"a.7z.001")->SetName(), L"a.7z");
  EXPECT_EQ(CVolumeSequence::OfFirstVolume(L"aa")->SetName(), L"file");
}

class SplitSet : public testing::Test {
 protected:
  void SetUp() override {
    for (int i = 0; i < 3; ++i) {
      WriteFile(folder.Path("s.00" + std::to_string(i + 1)), std::string(100, char('a' + i)));
    }
    callback = Create<C7zmvOpenCallback>();
    ASSERT_TRUE(callback->Init(folder.LibraryPath("s.001")));
    const auto first = Create<CInFileStream>();
    ASSERT_TRUE(first->Open(folder.LibraryPath("s.001")));
    ASSERT_EQ(handler->Open(first.Get(), nullptr, callback.Get()), S_OK);
  }

  testsupport::TempFolder folder;
  ComPtr<C7zmvOpenCallback> callback;
  ComPtr<NArchive::NSplit::CHandler> handler = Create<NArchive::NSplit::CHandler>();
};

TEST_F(SplitSet, JoinsItsVolumesIntoOneStream) {
  ComPtr<ISequentialInStream> joined;
  EXPECT_EQ(handler->GetStream(1, joined.Receive()), E_INVALIDARG);
  ASSERT_EQ(handler->GetStream(0, joined.Receive()), S_OK);
  const auto stream = joined.Query<IInStream>();
  ASSERT_TRUE(stream);
  // The stream keeps the volumes.
  handler.Reset();
  std::string buffer(50, '\0');
  DWORD read = 0;
  const auto readAt = [&](LONGLONG offset, DWORD origin) {
    ULONGLONG position = 0;
    EXPECT_EQ(stream->Seek(offset, origin, &position), S_OK);
    EXPECT_EQ(stream->Read(buffer.data(), 50, &read), S_OK);
    return buffer.substr(0, read);
  };
  EXPECT_EQ(readAt(90, kSeekStart), std::string(10, 'a'));
  EXPECT_EQ(readAt(0, kSeekCurrent), std::string(50, 'b'));
  EXPECT_EQ(readAt(-20, kSeekEnd), std::string(20, 'c'));
  EXPECT_EQ(readAt(0, kSeekCurrent), "");
  EXPECT_EQ(readAt(0, kSeekStart), std::string(50, 'a'));
  EXPECT_EQ(stream->Seek(301, kSeekStart, nullptr), S_OK);
  EXPECT_EQ(stream->Read(buffer.data(), 1, &read), E_FAIL);
  EXPECT_EQ(stream->Seek(0, 3, nullptr), STG_E_INVALIDFUNCTION);
}

TEST_F(SplitSet, RefusesWhatIsNoFirstVolume) {
  ASSERT_TRUE(callback->Init(folder.LibraryPath("s.002")));
  const auto stream = Create<CInFileStream>();
  ASSERT_TRUE(stream->Open(folder.LibraryPath("s.002")));
  EXPECT_EQ(handler->Open(stream.Get(), nullptr, callback.Get()), S_FALSE);
  EXPECT_EQ(handler->Open(stream.Get(), nullptr, nullptr), S_FALSE);
  // A callback that knows no volumes.
  EXPECT_EQ(handler->Open(stream.Get(), nullptr, Create<C7zOpenCallback>().Get()), S_FALSE);
}

}  // namespace
