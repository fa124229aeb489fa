#!/bin/bash
# What desktop environments and manual readers are given, judged by their tools.
#
#   metadata.sh BUILD-FOLDER
source "$(dirname "$0")/common.sh" "$1"
for tool in desktop-file-validate appstreamcli; do
  command -v $tool >/dev/null || skip "there is no $tool"
done
desktop=$source/packaging/desktop
desktop-file-validate "$desktop/morvunp-desktop.desktop"
appstreamcli validate --no-net "$desktop/org.morvunp.Desktop.metainfo.xml"
grep -q "version=\"$2\"" "$desktop/org.morvunp.Desktop.metainfo.xml" ||
  fail "the metainfo does not tell of the release $2"
command -v man >/dev/null || exit 0
for page in "$build"/packaging/*.1; do
  warnings=$(man --warnings -l "$page" 2>&1 >/dev/null) || warnings+=" (failed)"
  [[ -z $warnings ]] || fail "$page: $warnings"
done
