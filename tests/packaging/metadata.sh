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

# Newer versions of the tool also fail metainfo without a web address, which we
# do not have.
report=$(appstreamcli validate --no-net --format=yaml "$desktop/org.morvunp.Desktop.metainfo.xml") || true
[[ $report == *"Passed: "* ]] || fail "appstreamcli says neither yes nor no: $report"
problems=$(paste -d ' ' - - < <(grep -oE '\b(tag|severity): .*' <<<"$report") |
  grep -E 'severity: (error|warning)' | grep -v '^tag: url-homepage-missing ') || true
[[ -z $problems ]] || fail "the metainfo: $problems"

grep -q "version=\"$2\"" "$desktop/org.morvunp.Desktop.metainfo.xml" ||
  fail "the metainfo does not tell of the release $2"
command -v man >/dev/null || exit 0
for page in "$build"/packaging/*.1; do
  warnings=$(man --warnings -l "$page" 2>&1 >/dev/null) || warnings+=" (failed)"
  [[ -z $warnings ]] || fail "$page: $warnings"
done
