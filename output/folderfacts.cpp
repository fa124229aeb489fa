#include "output/folderfacts.h"

#include "platform/below.h"

namespace morvunp::output {

void FolderFacts::Settle(const Folders& folders) {
  for (; !m_facts.empty(); m_facts.erase(m_facts.begin())) {
    const auto& [path, facts] = *m_facts.begin();
    const frame::OpenFile folder = folders.Open(path);
    if (!folder.IsOpen()) continue;
    platform::SetFolderFacts(folder.Get(), facts.attributes ? &*facts.attributes : nullptr,
                             facts.lastWrite ? &*facts.lastWrite : nullptr);
  }
}

}  // namespace morvunp::output
