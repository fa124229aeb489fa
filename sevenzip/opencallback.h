// What the engine asks while it opens an archive.
#pragma once

#include <string>
#include <vector>

#include "morvunp/unpackstate.h"
#include "sevenzip/component.h"
#include "sevenzip/filestreams.h"
#include "sevenzip/interfaces.h"
#include "sevenzip/password.h"

namespace morvunp::sevenzip {

/// Of an archive in one file.
class C7zOpenCallback final : public Component<Answers<ICryptoGetTextPassword>,
                                               ICryptoGetTextPassword, IArchiveOpenCallback> {
 public:
  HRESULT SetTotal(const ULONGLONG*, const ULONGLONG*) override { return S_OK; }
  HRESULT SetCompleted(const ULONGLONG*, const ULONGLONG*) override { return S_OK; }
  HRESULT CryptoGetTextPassword(BSTR* password) override { return m_password.Get(password); }

  Password& GivenPassword() { return m_password; }

 private:
  Password m_password;
};

/// Of a set of volumes: finds the volumes in the folder of the first one.
class C7zmvOpenCallback final
    : public Component<Answers<IArchiveOpenVolumeCallback, ICryptoGetTextPassword>,
                       IArchiveOpenVolumeCallback, ICryptoGetTextPassword, IArchiveOpenCallback> {
 public:
  /// `state` is the unpacker's.
  explicit C7zmvOpenCallback(CUnpackState& state) : m_state(state) {}

  /// Looks the first volume up. False when it does not exist.
  bool Init(const std::wstring& firstVolume);
  /// `first` is the first volume, which tells the length of all. The host is
  /// asked for a volume only where more are known to come.
  void Begin(CInFileStream& first);

  HRESULT SetTotal(const ULONGLONG*, const ULONGLONG*) override { return S_OK; }
  HRESULT SetCompleted(const ULONGLONG*, const ULONGLONG*) override { return S_OK; }
  /// Of the volume that was found last.
  HRESULT GetProperty(PROPID id, PROPVARIANT* value) override;
  /// S_FALSE when there is no such volume; the error code of the system itself
  /// when it cannot be opened.
  HRESULT GetStream(const wchar_t* name, IInStream** stream) override;
  HRESULT CryptoGetTextPassword(BSTR* password) override { return m_password.Get(password); }

  Password& GivenPassword() { return m_password; }
  /// The files that were opened.
  const std::vector<platform::FileIdentity>& Volumes() const { return m_volumes; }

 private:
  bool LookUp(const std::wstring& path);
  std::wstring PathOf(const wchar_t* name) const;
  void TakeLength(CInFileStream& volume);

  CUnpackState& m_state;
  /// Of the length of all volumes, what those that were found do not have.
  ULONGLONG m_nMissing = 0;
  std::vector<platform::FileIdentity> m_volumes;

  Password m_password;
  /// The path up to its last backslash and with it; empty without one.
  std::wstring m_strFolderPrefix;
  WIN32_FIND_DATAW m_volumeInfo;
};

}  // namespace morvunp::sevenzip
