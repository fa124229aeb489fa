#include "list.h"

#include "archivefile.h"
#include "morvunp/platform/text.h"
#include "output.h"
#include "terminalinterface.h"
#include "text.h"
#include "timetext.h"

namespace terminal {
namespace {

using host::Archive;
using host::Item;

constexpr const char* kHeader = "Modified                      Size  Attr  Path\n";
constexpr std::size_t kSizeColumns = 14;

std::string_view AttributesOf(const Item& item) {
  if (item.isFolder) return item.isHidden ? "  DH    " : "  D-    ";
  return item.isHidden ? "  -H    " : "  --    ";
}

void AppendRow(std::string& out, const Item& item, LocalTimeText& times) {
  times.Append(out, item.modified);
  AppendNumber(out, item.size, kSizeColumns);
  out += AttributesOf(item);
  AppendPath(out, item.path);
  out += '\n';
}

void WriteTable(Archive& archive, StandardOutput& output) {
  LocalTimeText times;
  output.Text() += kHeader;
  host::ForEachItem(archive, [&](const Item& item) {
    AppendRow(output.Text(), item, times);
    return output.Pass();
  });
  output.Text() += ShownText(host::SummaryOf(archive)) + "\n";
}

/// A time that was not recorded has no member.
void AppendTime(std::string& out, const char* member, std::optional<std::int64_t> time,
                UtcTimeText& times) {
  if (!time) return;
  out += member;
  times.Append(out, *time);
  out += '"';
}

void AppendObject(std::string& out, const Item& item, UtcTimeText& times) {
  out += "{\"path\":";
  AppendJsonString(out, item.path);
  out += ",\"name\":";
  AppendJsonString(out, item.name);
  out += item.isFolder ? ",\"folder\":true" : ",\"folder\":false";
  out += item.isHidden ? ",\"hidden\":true" : ",\"hidden\":false";
  out += ",\"size\":";
  AppendNumber(out, item.size);
  out += ",\"packed\":";
  AppendNumber(out, item.packedSize);
  AppendTime(out, ",\"modified\":\"", item.modified, times);
  AppendTime(out, ",\"accessed\":\"", item.accessed, times);
  out += '}';
}

/// The archive's own path stays in this system's form, "/" and all.
void AppendNativeJsonString(std::string& out, const std::string& path) {
  std::wstring wide = morvunp::platform::ToLibraryPath(path);
  for (wchar_t& c : wide) {
    if (c == L'\\') {
      c = L'/';
    } else if (c == morvunp::platform::kEscapedBackslash) {
      c = L'\\';
    }
  }
  AppendJsonString(out, wide);
}

void WriteJson(Archive& archive, const std::string& archivePath, StandardOutput& output) {
  UtcTimeText times;
  output.Text() += "{\"archive\":";
  AppendNativeJsonString(output.Text(), archivePath);
  output.Text() += ",\"items\":[";
  bool isFirst = true;
  host::ForEachItem(archive, [&](const Item& item) {
    output.Text() += isFirst ? "\n" : ",\n";
    isFirst = false;
    AppendObject(output.Text(), item, times);
    return output.Pass();
  });
  output.Text() += "\n]}\n";
}

}  // namespace

int List(const std::string& archivePath, bool asJson, const std::optional<std::wstring>& password) {
  ListingInterface interface(password);
  Archive archive = OpenForCommand(archivePath, {.password = &interface.password});
  StandardOutput output;
  if (asJson) {
    WriteJson(archive, archivePath, output);
  } else {
    WriteTable(archive, output);
  }
  return output.Finish(interface.ExitCode(CheckComplete(archive, archivePath)));
}

}  // namespace terminal
