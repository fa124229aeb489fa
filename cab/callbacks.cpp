// CCabUnpacker: the memory and file callbacks of the cabinet interface.
#include "cab/cabinet.h"
#include "cab/extraction.h"
#include "cab/narrowpath.h"
#include "frame/keptexception.h"
#include "frame/progress.h"
#include "morvunp/cabunpacker.h"

namespace cab = morvunp::cab;
namespace frame = morvunp::frame;
namespace output = morvunp::output;

namespace {

/// The unpacker that wrote a file last.
thread_local void* m_pThis = nullptr;

constexpr UINT kFailed = static_cast<UINT>(-1);

}  // namespace

std::exception_ptr& cab::Cabinet::Thrown() {
  thread_local std::exception_ptr thrown;
  return thrown;
}

void CCabUnpacker::SetThis(void* unpacker) { m_pThis = unpacker; }

void* CCabUnpacker::GetThis() { return m_pThis; }

void* CCabUnpacker::FDIAlloc(ULONGLONG size) {
  return ::operator new[](static_cast<std::size_t>(size), std::nothrow);
}

void CCabUnpacker::FDIFree(void* memory) { ::operator delete[](memory); }

// NOLINTNEXTLINE(readability-non-const-parameter): the interface's signature
INT_PTR CCabUnpacker::FDIOpen(char* path, int openFlags, int mode) {
  return frame::KeepException(cab::Cabinet::Thrown(), INT_PTR{-1}, [&]() -> INT_PTR {
    int file = -1;
    const std::wstring wide = cab::WidePath(path);
    const cab::Cabinet* const current = cab::Cabinet::Current();
    const std::wstring cabinet = current != nullptr ? current->FileOf(wide) : wide;
    // Writers are denied: a cabinet may hold a file of its own name.
    const int error = _wsopen_s(&file, cabinet.c_str(), openFlags, _SH_DENYWR, mode);
    return error == 0 ? file : -1;
  });
}

UINT CCabUnpacker::FDIRead(INT_PTR file, void* buffer, UINT count) {
  return frame::KeepException(cab::Cabinet::Thrown(), kFailed, [&] {
    cab::Cabinet* const current = cab::Cabinet::Current();
    if (current != nullptr && !current->MayRead()) return kFailed;
    return static_cast<UINT>(_read(static_cast<int>(file), buffer, count));
  });
}

// NOLINTNEXTLINE(readability-non-const-parameter): the interface's signature
UINT CCabUnpacker::FDIWrite(INT_PTR, void* buffer, UINT count) {
  return frame::KeepException(cab::Cabinet::Thrown(), kFailed, [&] {
    return static_cast<CCabUnpacker*>(cab::Cabinet::CurrentUser())->OnWrite(buffer, count);
  });
}

UINT CCabUnpacker::OnWrite(const void* bytes, UINT count) {
  cab::Extraction& run = *m_pExtraction;
  output::Root& root = *run.m_pRoot;
  if (!root.Out().Write(bytes, count)) return kFailed;
  run.m_nDone += count;
  if (frame::ReportBlock(m_state, run.m_nDone, static_cast<DWORD>(run.m_nTotal))) return count;
  root.Out().Remove();
  root.Report().Tell(morvunp::ItemResult::kFailed, morvunp::ItemReason::kInterrupted);
  return kFailed;
}

int CCabUnpacker::FDIClose(INT_PTR file) {
  // The file that is written is the run's.
  return file == cab::kOutputFile ? 0 : _close(static_cast<int>(file));
}

LONG CCabUnpacker::FDISeek(INT_PTR file, LONG distance, int origin) {
  return _lseek(static_cast<int>(file), distance, origin);
}
