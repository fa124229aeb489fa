// Split sets through the handler that joins their volumes. Volumes may claim
// sizes that they do not have.
#include <algorithm>
#include <cstring>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "morvunp/platform/text.h"
#include "sevenzip/property.h"
#include "sevenzip/splithandler.h"
#include "sevenzip/volumesequence.h"

namespace fuzz {
namespace {

using morvunp::sevenzip::Answers;
using morvunp::sevenzip::Component;
using morvunp::sevenzip::ComPtr;
using morvunp::sevenzip::Create;
using morvunp::sevenzip::IArchiveExtractCallback;
using morvunp::sevenzip::IArchiveOpenCallback;
using morvunp::sevenzip::IArchiveOpenVolumeCallback;
using morvunp::sevenzip::IInStream;
using morvunp::sevenzip::IProgress;
using morvunp::sevenzip::ISequentialInStream;
using morvunp::sevenzip::ISequentialOutStream;
using morvunp::sevenzip::kSeekCurrent;
using morvunp::sevenzip::kSeekEnd;
using morvunp::sevenzip::kSeekStart;

class Volume final : public Component<Answers<IInStream>, IInStream> {
 public:
  explicit Volume(std::string_view bytes) : m_bytes(bytes) {}

  HRESULT Read(void* data, DWORD size, DWORD* processed) override {
    const std::string_view rest = m_bytes.substr(std::min<ULONGLONG>(m_nPos, m_bytes.size()));
    *processed = static_cast<DWORD>(std::min<std::size_t>(size, rest.size()));
    std::memcpy(data, rest.data(), *processed);
    m_nPos += *processed;
    return S_OK;
  }
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) override {
    const ULONGLONG base = origin == kSeekEnd ? m_bytes.size() : origin == kSeekStart ? 0 : m_nPos;
    m_nPos = base + static_cast<ULONGLONG>(offset);
    if (position != nullptr) *position = m_nPos;
    return S_OK;
  }

 private:
  std::string_view m_bytes;
  ULONGLONG m_nPos = 0;
};

struct Piece {
  std::string_view bytes;
  ULONGLONG claimedSize;
};

class Folder final : public Component<Answers<IArchiveOpenVolumeCallback>,
                                      IArchiveOpenVolumeCallback, IArchiveOpenCallback> {
 public:
  Folder(std::wstring firstName, std::vector<Piece> pieces)
      : m_strFirstName(std::move(firstName)), m_pieces(std::move(pieces)) {}

  HRESULT SetTotal(const ULONGLONG*, const ULONGLONG*) override { return S_OK; }
  HRESULT SetCompleted(const ULONGLONG*, const ULONGLONG*) override { return S_OK; }
  HRESULT GetProperty(PROPID id, PROPVARIANT* value) override {
    if (id == morvunp::sevenzip::kpidName) morvunp::sevenzip::Put(value, m_strFirstName);
    if (id == morvunp::sevenzip::kpidSize)
      morvunp::sevenzip::Put(value, m_pieces[m_nFound].claimedSize);
    return S_OK;
  }
  HRESULT GetStream(const wchar_t* name, IInStream** stream) override {
    Require(m_strLastName != name, "no volume is asked for twice");
    m_strLastName = name;
    if (m_nFound + 1 == m_pieces.size()) return S_FALSE;
    *stream = Create<Volume>(m_pieces[++m_nFound].bytes).Detach();
    return S_OK;
  }

 private:
  std::wstring m_strFirstName;
  std::wstring m_strLastName;
  std::vector<Piece> m_pieces;
  std::size_t m_nFound = 0;
};

class Collector final
    : public Component<Answers<IProgress>, IArchiveExtractCallback, ISequentialOutStream> {
 public:
  HRESULT SetTotal(ULONGLONG) override { return S_OK; }
  HRESULT SetCompleted(const ULONGLONG*) override { return S_OK; }
  HRESULT GetStream(DWORD, ISequentialOutStream** stream, LONG) override {
    AddRef();
    *stream = this;
    return S_OK;
  }
  HRESULT PrepareOperation(LONG) override { return S_OK; }
  HRESULT SetOperationResult(LONG) override { return S_OK; }
  HRESULT Write(const void* data, DWORD size, DWORD* processed) override {
    *processed = std::min<DWORD>(size, 100);
    bytes.append(static_cast<const char*>(data), *processed);
    return S_OK;
  }

  std::string bytes;
};

/// Reads here and there. What comes out of honest volumes is their `whole`.
void ReadAround(IInStream& stream, Input input, const std::string* whole) {
  while (!input.IsEmpty()) {
    const auto origin = static_cast<DWORD>(input.Number(1) % 4);
    const auto offset = static_cast<LONGLONG>(input.Number(8));
    ULONGLONG position = 0;
    stream.Seek(offset, origin, &position);
    std::string buffer(1 + input.Number(1), '\0');
    DWORD read = 0;
    stream.Read(buffer.data(), static_cast<DWORD>(buffer.size()), &read);
    Require(read <= buffer.size(), "no more is read than was asked for");
    if (whole == nullptr || read == 0) continue;
    stream.Seek(0, kSeekCurrent, &position);
    Require(
        position <= whole->size() && whole->compare(position - read, read, buffer, 0, read) == 0,
        "the joined stream is what its volumes are");
  }
}

const wchar_t* const kNames[] = {L"a.7z.001", L"b.aa", L"c.ZAA", L"d.01", L"aa", L"e.7z", L".0001"};

std::vector<Piece> PiecesOf(Input& input) {
  std::vector<Piece> pieces;
  for (std::size_t count = 1 + input.Number(1) % 8; count > 0; --count) {
    const ULONGLONG excess = input.Number(1) == 0 ? 0 : input.Number(8);
    const std::string_view bytes = input.Counted();
    pieces.push_back({bytes, bytes.size() + excess});
  }
  return pieces;
}

}  // namespace

void RunSplitSet(std::string_view bytes) {
  Input input(bytes);
  const std::wstring name = kNames[input.Number(1) % std::size(kNames)];
  const std::vector<Piece> pieces = PiecesOf(input);
  std::string whole;
  bool isHonest = true;
  for (const Piece& piece : pieces) {
    whole += piece.bytes;
    isHonest &= piece.claimedSize == piece.bytes.size();
  }
  const auto folder = Create<Folder>(name, pieces);
  const auto first = Create<Volume>(pieces.front().bytes);
  const auto handler = Create<NArchive::NSplit::CHandler>();
  if (handler->Open(first.Get(), nullptr, folder.Get()) != S_OK) return;
  const auto collector = Create<Collector>();
  Require(handler->Extract(nullptr, morvunp::sevenzip::kAllItems, 0, collector.Get()) == S_OK,
          "volumes are copied");
  Require(collector->bytes == whole, "a copy is what its volumes are");
  ComPtr<ISequentialInStream> joined;
  if (handler->GetStream(0, joined.Receive()) != S_OK) return;
  ReadAround(*joined.Query<IInStream>().Get(), input, isHonest ? &whole : nullptr);
}

std::vector<std::string> SplitSetSeeds() {
  const std::string reads = NumberBytes(0, 1) + NumberBytes(2, 8) + NumberBytes(9, 1) +
                            NumberBytes(2, 1) + NumberBytes(~std::uint64_t{3}, 8) +
                            NumberBytes(9, 1) + NumberBytes(1, 1) + NumberBytes(0, 8);
  const std::string honest = NumberBytes(0, 1);
  const std::string lying = NumberBytes(1, 1) + NumberBytes(3, 8);
  std::vector<std::string> seeds;
  for (std::size_t i = 0; i < std::size(kNames); ++i) {
    std::string& seed = seeds.emplace_back(NumberBytes(i, 1));
    seed += NumberBytes(2, 1);
    seed += honest + CountedBytes("first");
    seed += honest + CountedBytes("");
    seed += (i % 2 == 0 ? honest : lying) + CountedBytes("third");
    seed += reads;
  }
  return seeds;
}

}  // namespace fuzz
