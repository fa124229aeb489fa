#include "sevenzip/engine.h"

#include "frame/modulefunction.h"
#include "sevenzip/engineadapter.h"

namespace morvunp::sevenzip {

Engine::~Engine() {
  CloseArchive();
  FreeEngine();
}

Engine& Engine::operator=(const Engine& other) {
  if (this != &other) {
    CloseArchive();
    FreeEngine();
  }
  return *this;
}

/// The handle goes only when the module does.
bool Engine::FreeEngine() {
  if (m_hEngine != nullptr && FreeLibrary(m_hEngine) == FALSE) return false;
  m_hEngine = nullptr;
  return true;
}

bool Engine::CreateArchive(const std::wstring& path) {
  CloseArchive();
  const HMODULE module = LoadLibraryW(L"7zxa.dll");
  if (module == nullptr) return false;
  if (!FreeEngine()) return false;
  m_hEngine = module;
  const auto create = frame::FunctionOf<CreateObjectFunction>(m_hEngine, "CreateObject");
  if (create == nullptr) {
    FreeEngine();
    return false;
  }
  void* object = nullptr;
  if (create(&kClassId7z, &IInArchive::kId, &object) != S_OK) return false;
  ComPtr<IInArchive> archive;
  *archive.Receive() = static_cast<IInArchive*>(object);
  m_pArchive = ComPtr<IInArchive>(new AdaptedArchive(std::move(archive), NamelessIn(path)));
  return true;
}

bool Engine::CloseArchive() {
  if (!m_pArchive) return false;
  m_pArchive->Close();
  m_pArchive.Reset();
  FreeEngine();
  return true;
}

}  // namespace morvunp::sevenzip
