#!/bin/bash
# Where the loader looks for what our files need: never in a folder that depends
# on where somebody happens to be, such as one that an archive was unpacked into.
#
#   runpath.sh BUILD-FOLDER
source "$(dirname "$0")/common.sh" "$1"
command -v readelf >/dev/null || skip "there is no readelf"

check_file() {
  local paths element elements
  paths=$(readelf -dW "$1" | sed -nE 's/.*\((RPATH|RUNPATH)\).*\[(.*)\]$/\2/p')
  [[ -n $paths ]] || return 0
  [[ :$paths: != *::* ]] || fail "$1 has an empty element: $paths"
  IFS=: read -ra elements <<<"$paths"
  for element in "${elements[@]}"; do
    # shellcheck disable=SC2016 # the loader's variable
    [[ $element == /* || $element == '$ORIGIN' || $element == '$ORIGIN/'* ]] ||
      fail "$1 has a relative element: $paths"
  done
}

# Every file that begins as a program or library does.
check_tree() {
  local file magic seen=
  while IFS= read -r file; do
    magic=
    LC_ALL=C IFS= read -r -n 4 magic 2>/dev/null <"$file" || true
    [[ $magic == $'\x7fELF' ]] || continue
    check_file "$file"
    seen+=" ${file##*/}"
  done < <(find "$1" -type f ! -name '*.o' ! -name '*.a' ! -path '*/CMakeFiles/*' ! -path '*/_CPack_Packages/*')
  for file in morvunp Cabinet.dll libmorvunp.so; do
    [[ $seen\  == *" $file"[\ .]* ]] || fail "$file was not found below $1"
  done
}

check_tree "$build"
cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
check_tree "$scratch/prefix"
