// Control ids of the library's dialog templates.
#pragma once

namespace frame {

inline constexpr int kIdReplaceCancel = 1001;
inline constexpr int kIdReplaceNo = 1002;
inline constexpr int kIdReplaceYes = 1003;
inline constexpr int kIdReplaceYesToAll = 1004;
inline constexpr int kIdReplaceMessage = 1005;
inline constexpr int kIdReplaceName = 1006;
inline constexpr int kIdReplaceOldSize = 1007;
inline constexpr int kIdReplaceOldModified = 1008;
inline constexpr int kIdReplaceNewSize = 1009;
inline constexpr int kIdReplaceNewModified = 1010;
inline constexpr int kIdReplaceOldIcon = 1011;
inline constexpr int kIdReplaceNewIcon = 1012;

inline constexpr int kIdPasswordEdit = 1013;

}  // namespace frame
