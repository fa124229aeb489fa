#include "morvunp/platform/fdi.h"

#include "platform/cabinet/pass.h"

namespace {

using cabinet::Failure;
using cabinet::Host;

struct Context {
  Host host;
  ERF* error;
};

/// Runs an operation and records how it ended.
template <class Operation>
BOOL Perform(HFDI hfdi, Operation operation) {
  auto* const context = static_cast<Context*>(hfdi);
  if (context == nullptr) return FALSE;
  *context->error = {};
  try {
    operation(context->host);
    return TRUE;
  } catch (const Failure& failure) {
    *context->error = {failure.error, 0, TRUE};
    return FALSE;
  }
}

}  // namespace

HFDI FDICreate(PFNALLOC pfnalloc, PFNFREE pfnfree, PFNOPEN pfnopen, PFNREAD pfnread,
               PFNWRITE pfnwrite, PFNCLOSE pfnclose, PFNSEEK pfnseek, int, ERF* perf) {
  const Host host{pfnalloc, pfnfree, pfnopen, pfnread, pfnwrite, pfnclose, pfnseek};
  const bool isWhole = pfnalloc != nullptr && pfnfree != nullptr && pfnopen != nullptr &&
                       pfnread != nullptr && pfnwrite != nullptr && pfnclose != nullptr &&
                       pfnseek != nullptr;
  if (perf == nullptr || !isWhole) return nullptr;
  void* const memory = pfnalloc(sizeof(Context));
  if (memory == nullptr) {
    *perf = {FDIERROR_ALLOC_FAIL, 0, TRUE};
    return nullptr;
  }
  *perf = {};
  return new (memory) Context{host, perf};
}

BOOL FDIIsCabinet(HFDI hfdi, INT_PTR hf, FDICABINETINFO* pfdici) {
  return Perform(hfdi, [&](const Host& host) {
    cabinet::Reader reader(host, hf);
    const cabinet::Header header = ReadHeader(reader);
    if (pfdici == nullptr) return;
    *pfdici = {.cbCabinet = static_cast<LONG>(header.cabinetSize),
               .cFolders = header.folders,
               .cFiles = header.files,
               .setID = header.setId,
               .iCabinet = header.index,
               .fReserve = header.HasReserve() ? TRUE : FALSE,
               .hasprev = header.HasPrevious() ? TRUE : FALSE,
               .hasnext = header.HasNext() ? TRUE : FALSE};
  });
}

BOOL FDICopy(HFDI hfdi, char* pszCabinet, char* pszCabPath, int flags, PFNFDINOTIFY pfnfdin,
             PFNFDIDECRYPT, void* pvUser) {
  return Perform(hfdi, [&](const Host& host) {
    cabinet::Pass(host, pszCabinet, pszCabPath, flags, pfnfdin, pvUser).Run();
  });
}

BOOL FDIDestroy(HFDI hfdi) {
  auto* const context = static_cast<Context*>(hfdi);
  if (context == nullptr) return FALSE;
  const PFNFREE free = context->host.free;
  context->~Context();
  free(context);
  return TRUE;
}
