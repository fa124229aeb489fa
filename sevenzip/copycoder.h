// Copying from stream to stream, and telling about it.
#pragma once

#include "sevenzip/component.h"
#include "sevenzip/interfaces.h"

namespace NCompress {

/// The coder that changes nothing.
class CCopyCoder final
    : public morvunp::sevenzip::Component<
          morvunp::sevenzip::Answers<morvunp::sevenzip::ICompressGetInStreamProcessedSize>,
          morvunp::sevenzip::ICompressGetInStreamProcessedSize, morvunp::sevenzip::ICompressCoder> {
 public:
  ~CCopyCoder() override;

  /// Ends at `*outSize` bytes, when given, or at the end of the input. `out`
  /// and `progress` may be null.
  HRESULT Code(morvunp::sevenzip::ISequentialInStream* in,
               morvunp::sevenzip::ISequentialOutStream* out, const ULONGLONG* inSize,
               const ULONGLONG* outSize,
               morvunp::sevenzip::ICompressProgressInfo* progress) override;
  HRESULT GetInStreamProcessedSize(ULONGLONG* size) override;

 private:
  BYTE* m_pBuffer = nullptr;
  ULONGLONG m_nCopied = 0;
};

}  // namespace NCompress

namespace morvunp::sevenzip {

/// Turns what a coder tells of its sizes into the progress of a whole.
class CLocalProgress final : public Component<Answers<>, ICompressProgressInfo> {
 public:
  /// Also passes sizes on where `progress` asks for them.
  CLocalProgress(IProgress* progress, bool inSizeIsMain);

  HRESULT SetRatioInfo(const ULONGLONG* inSize, const ULONGLONG* outSize) override;

  /// Bytes before those of the coder in hand.
  ULONGLONG m_nInSize = 0;
  ULONGLONG m_nOutSize = 0;
  ULONGLONG m_nProgressOffset = 0;
  bool m_bSendRatio = true;
  bool m_bSendProgress = true;

 private:
  ComPtr<IProgress> m_pProgress;
  ComPtr<ICompressProgressInfo> m_pRatioProgress;
  bool m_bInSizeIsMain;
};

}  // namespace morvunp::sevenzip
