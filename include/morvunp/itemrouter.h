// One pass over an archive, to any destination.
#pragma once

#include <functional>
#include <string_view>

#include "morvunp/itemreport.h"
#include "morvunp/outputplace.h"

namespace morvunp {

/// An item as a router sees it. The views are valid during the call.
struct RoutedItem {
  /// Place in the walk, from 0; the same in a listing and in every run.
  ULONGLONG position = 0;
  /// In the archive.
  std::wstring_view path{};
  /// Bytes, as the archive records them.
  ULONGLONG size = 0;
  bool isFolder = false;
  /// The item repeats the content of the one with this path and has no data of
  /// its own: a hard link or a copy in a RAR archive. A sink gets no bytes.
  std::wstring_view repeats{};
};

/// Where the bytes of an item go that is not written to the disk. The functions
/// are called on the thread of the operation; they may throw and must not use
/// the object that calls them.
class ItemSink {
 public:
  virtual ~ItemSink() = default;
  /// False: nothing more is wanted, of this item or another. The pass ends, and
  /// the item is told as interrupted.
  virtual bool Write(const void* bytes, std::size_t length) = 0;
  /// The last call for the item. What was handed over counts only where its
  /// result is kIntact: checksums are at the end. False: nothing more is wanted.
  virtual bool End(const ItemReport& report) = 0;

  /// The first call for the item.
  virtual void Begin(const RoutedItem& item) = 0;
};

/// What becomes of one item.
class Route {
 public:
  /// Not wanted.
  static Route PassOver() { return Route(Kind::kPassOver); }
  /// This item and those behind it are not wanted: the pass ends.
  static Route End() { return Route(Kind::kEnd); }
  /// To this place below the target of the pass: that of a file, which needs a
  /// name, or of a folder, whose place is its whole path.
  static Route To(OutputPlace place) {
    Route route(Kind::kPlace);
    route.m_place = std::move(place);
    return route;
  }
  /// To this sink, which must outlive the pass. A folder has no bytes.
  static Route Into(ItemSink& sink) {
    Route route(Kind::kSink);
    route.m_pSink = &sink;
    return route;
  }

  bool IsEnd() const { return m_kind == Kind::kEnd; }
  bool IsPassOver() const { return m_kind == Kind::kPassOver; }
  /// Null unless the item goes into one.
  ItemSink* Sink() const { return m_pSink; }
  const OutputPlace& Place() const { return m_place; }

 private:
  enum class Kind : BYTE { kPassOver, kEnd, kPlace, kSink };
  explicit Route(Kind kind) : m_kind(kind) {}

  Kind m_kind;
  ItemSink* m_pSink = nullptr;
  OutputPlace m_place;
};

/// Asked about each item once, in the archive's order, until it answers with
/// the end. An engine that must be told beforehand what is wanted has it asked
/// about all items before the first one comes out.
using ItemRouter = std::function<Route(const RoutedItem&)>;

}  // namespace morvunp
