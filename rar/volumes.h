// The files of a volume set.
#pragma once

#include <string>
#include <vector>

namespace morvunp::rar {

/// The archive and, where it is one of a set, the volumes behind it that lie
/// beside it in their order, by both ways of naming them: NAME.part1.rar,
/// NAME.part2.rar and NAME.rar, NAME.r00, NAME.r01. The first may be a program.
std::vector<std::wstring> PathsOfSet(const std::wstring& path, bool isVolume);

}  // namespace morvunp::rar
