# Completion of morvunp for bash.

_morvunp() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
  local command=${COMP_WORDS[1]} options='--help --codepage --password-file'
  COMPREPLY=()

  # "--overwrite=all" arrives in three words, split at the sign.
  if [[ $cur == = ]]; then
    cur=
  elif [[ $prev == = ]]; then
    prev=${COMP_WORDS[COMP_CWORD - 2]}
  fi

  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W 'list info extract --help --version' -- "$cur")
    return
  fi
  case $command in
    list) options+=' --json' ;;
    info) ;;
    extract) options+=' --directory --flat --relative --overwrite --quiet' ;;
    *) return ;;
  esac
  case $prev in
    --overwrite) mapfile -t COMPREPLY < <(compgen -W 'ask all none' -- "$cur") ;;
    --codepage) mapfile -t COMPREPLY < <(compgen -W "$(iconv -l 2>/dev/null | tr -d /,)" -- "$cur") ;;
    -C | --directory)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$cur")
      ;;
    *)
      if [[ $cur == -* && $prev != --password-file ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
      else
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
      fi
      ;;
  esac
}

complete -F _morvunp morvunp
