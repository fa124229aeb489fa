// The passes of formats that unpack item by item.
#pragma once

#include <type_traits>

#include "frame/progress.h"
#include "morvunp/itemrouter.h"
#include "morvunp/unpacker.h"
#include "output/root.h"

namespace morvunp::output {

/// The route of an item that a run of the contract has a place for, or none.
inline Route RouteTo(std::optional<OutputPlace> place) {
  return place ? Route::To(std::move(*place)) : Route::PassOver();
}

/// Walks all items and unpacks those that `routeOf(record)` wants, until one is
/// cancelled or the run is to end; those behind are told as not reached. The
/// result is that of the last item handled. `Record` is what the items are read
/// into: the class's ShortInfo unless another is named. `itemOf(record)` is the
/// output::Item of the current one, `unpack(root, route)` unpacks it.
template <class Record = void, class U, class RouteOf, class ItemOf, class Unpack>
bool UnpackByWalking(U& unpacker, CUnpackState& state, Root& root, RouteOf routeOf, ItemOf itemOf,
                     Unpack unpack) {
  state.m_bCancel = 0;
  frame::ForgetStop(state);
  bool result = false;
  bool isEnded = false;
  using Info = std::conditional_t<std::is_void_v<Record>, typename U::ShortInfo, Record>;
  WalkItems<Info>(unpacker, [&](const Info& info) {
    const Route route = routeOf(info);
    if (!isEnded && !frame::MayGoOnMeanwhile(state)) isEnded = true;
    if (isEnded && state.m_reportItem == nullptr) return false;
    if (route.IsEnd()) root.Report().SetEnd({});
    if (route.IsEnd()) return false;
    if (route.IsPassOver()) return true;
    if (isEnded) {
      const auto& end = root.Report().End();
      root.Report().TellNotReached(itemOf(info), end ? end->reason : ItemReason::kInterrupted);
      return true;
    }
    root.Begin(itemOf(info));
    result = unpack(root, route);
    isEnded = state.m_bCancel != 0 || root.Report().End();
    return !isEnded || (state.m_reportItem != nullptr && !root.Report().HasEnough());
  });
  return result;
}

/// The same for a router. `routedOf(record)` is the current item as a router
/// sees it, `write(root, place)` writes it, `drain(root)` writes the data of a
/// file that goes to a sink.
template <class Record = void, class U, class RoutedOf, class ItemOf, class Write, class Drain>
bool UnpackByRouter(U& unpacker, CUnpackState& state, Root& root, const ItemRouter& router,
                    RoutedOf routedOf, ItemOf itemOf, Write write, Drain drain) {
  RoutedItem item;
  return UnpackByWalking<Record>(
      unpacker, state, root,
      [&](const auto& info) {
        item = routedOf(info);
        return router(item);
      },
      itemOf,
      [&](Root& to, const Route& route) {
        if (route.Sink() != nullptr) {
          return to.BeginSink(*route.Sink(), item) && (item.isFolder || drain(to));
        }
        const auto place = to.Admit(route.Place(), item.isFolder);
        return place && write(to, *place);
      });
}

}  // namespace morvunp::output
