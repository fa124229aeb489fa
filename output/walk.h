// The folder and archive runs of formats that unpack item by item.
#pragma once

#include <type_traits>

#include "morvunp/outputplace.h"
#include "morvunp/unpacker.h"
#include "output/root.h"

namespace morvunp::output {

/// Walks all items and writes those that `placeOf` gives a place, until one is
/// cancelled; those behind are told as not reached. The result is that of the
/// last item handled. `Record` is what the items are read into: the class's
/// ShortInfo unless another is named. `itemOf(record)` is the output::Item of
/// the current one, `write(root, place)` writes it.
template <class Record = void, class U, class PlaceOf, class ItemOf, class Write>
bool UnpackByWalking(U& unpacker, CUnpackState& state, Root& root, PlaceOf placeOf, ItemOf itemOf,
                     Write write) {
  state.m_bCancel = 0;
  bool result = false;
  bool isEnded = false;
  using Info = std::conditional_t<std::is_void_v<Record>, typename U::ShortInfo, Record>;
  WalkItems<Info>(unpacker, [&](const Info& info) {
    const std::optional<OutputPlace> place = placeOf(info);
    if (!place) return true;
    if (isEnded) {
      root.Report().TellNotReached(itemOf(info), morvunp::ItemReason::kInterrupted);
      return true;
    }
    root.Begin(itemOf(info));
    result = write(root, *place);
    isEnded = state.m_bCancel != 0;
    return !isEnded || state.m_reportItem != nullptr;
  });
  return result;
}

}  // namespace morvunp::output
