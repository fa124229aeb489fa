#!/bin/bash
# The completion, asked as bash asks it, against the options that the command
# itself tells; the man page names all of them too.
#
#   completion.sh BUILD-FOLDER
source "$(dirname "$0")/common.sh" "$1"
source "$source/packaging/completion/morvunp.bash"
compopt() { :; } # there is no completion to change

# The candidates for the last of the words.
complete_words() {
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
  _morvunp
  printf '%s\n' "${COMPREPLY[@]}" | sort
}
expect() {
  local wanted=$1
  shift
  [[ $(complete_words "$@" | paste -sd ' ') == "$wanted" ]] ||
    fail "\"$*\": $(complete_words "$@" | paste -sd ' '), not $wanted"
}

morvunp=$build/bin/morvunp
for command in list info extract; do
  options=$("$morvunp" "$command" --help | grep -oE '^ +[^ ]*--[a-z-]+' | grep -oE -- '--[a-z-]+' | sort)
  [[ $(complete_words morvunp "$command" --) == "$options" ]] ||
    fail "$command has the options" $options "but completes" $(complete_words morvunp "$command" --)
  for option in $options; do
    for file in man/morvunp.1.scd completion/_morvunp; do
      grep -qe "$option" "$source/packaging/$file" || fail "$file does not tell of $option"
    done
    grep -qe "-l ${option#--}" "$source/packaging/completion/morvunp.fish" ||
      fail "morvunp.fish does not tell of $option"
  done
done

cd "$scratch"
mkdir folder
touch archive.7z
expect "--help --version extract info list" morvunp ""
expect extract morvunp e
expect "all ask none" morvunp extract --overwrite ""
expect none morvunp extract --overwrite = n
expect "all ask none" morvunp extract --overwrite =
expect folder morvunp extract a.7z -C ""
expect archive.7z morvunp list a
expect CP932 morvunp list --codepage CP932
