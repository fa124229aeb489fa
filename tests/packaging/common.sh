# What the tests of this folder share. Sourced with the build folder as the
# first argument of the caller.
set -euo pipefail
export LC_ALL=C.UTF-8

build=$(cd "$1" && pwd)
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
  echo "FAILED: $*" >&2
  exit 1
}
skip() {
  echo "skipped: $*"
  exit 77
}

# One archive of each format, each with a file "greeting" that says "hello".
# The module and the engine are needed for two of them.
make_archives() {
  mkdir "$scratch/archives"
  (
    cd "$scratch/archives"
    echo hello >greeting
    gcab -c -z test.cab greeting
    7z a -bd test.7z greeting >/dev/null
    genisoimage -quiet -U -o test.iso greeting 2>/dev/null
  )
}

# Unpacks each archive with a command that takes ARCHIVE and FOLDER.
check_unpacker() {
  local format
  for format in cab 7z iso; do
    rm -rf "$scratch/out"
    "$@" "$scratch/archives/test.$format" "$scratch/out" >"$scratch/log" 2>&1 </dev/null ||
      fail "$* with $format: $(<"$scratch/log")"
    [[ $(cat "$scratch/out/greeting") == hello ]] || fail "$* with $format wrote something else"
  done
}
