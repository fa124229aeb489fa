// The volumes of a split set as one stream.
#pragma once

#include <vector>

#include "sevenzip/component.h"
#include "sevenzip/interfaces.h"

namespace morvunp::sevenzip {

class CMultiStream final : public Component<Answers<IInStream>, IInStream> {
 public:
  struct CSubStreamInfo {
    ComPtr<IInStream> pStream;
    ULONGLONG nVolumeSize = 0;
    /// Offset of the volume's first byte in the joined stream.
    ULONGLONG nGlobalOffset = 0;
    /// Where the volume's own stream stands.
    ULONGLONG nLocalPos = 0;
  };

  /// Takes the volumes, first one first; their offsets and positions are found
  /// out here. The result code of a volume that cannot tell its position.
  HRESULT Init(std::vector<CSubStreamInfo> volumes);

  /// Never reads across the end of a volume.
  HRESULT Read(void* data, DWORD size, DWORD* processed) override;
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) override;

 private:
  CSubStreamInfo& VolumeAtPosition();

  ULONGLONG m_nPos = 0;
  ULONGLONG m_nTotalLength = 0;
  /// The volume read last; the next search starts there.
  LONG m_nStreamIndex = 0;
  std::vector<CSubStreamInfo> m_arrStreams;
};

}  // namespace morvunp::sevenzip
