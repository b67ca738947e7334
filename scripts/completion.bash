# Completion of ts5-batch for bash.

# The commands of the program, or of the group that the words name, from its help.
_ts5_batch_commands() {
  "$@" --help 2>/dev/null | sed -n '/^Befehle:/,/^$/ s/^  \([a-z]*\) .*/\1/p'
}

# The names that --set takes, from the help of the filter on the line.
_ts5_batch_parameters() {
  "$1" run "$2" --help 2>/dev/null | sed -n '/--set (/,/^$/ s/^  \([^ ]*\) .*/\1=/p'
}

# The options of a command, or of the one within its group, from its help.
_ts5_batch_options() {
  local help
  help=$("$1" "$2" "$3" --help 2>/dev/null) || help=$("$1" "$2" --help 2>/dev/null)
  sed -n 's/^  \(--[a-z][a-z0-9-]*\).*/\1/p' <<<"$help"
  echo --help
}

# _ts5_batch_words WORD CANDIDATES: those that the word begins.
_ts5_batch_words() {
  mapfile -t COMPREPLY < <(compgen -W "$2" -- "$1")
}

# _ts5_batch_files WORD PATTERN: files of that kind, and directories; names may have blanks.
_ts5_batch_files() {
  compopt -o filenames -o plusdirs
  mapfile -t COMPREPLY < <(compgen -f -X "!$2" -- "$1")
}

_ts5_batch() {
  local program="$1" word="$2" before="$3"
  local command="${COMP_WORDS[1]:-}"
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then
    _ts5_batch_words "$word" "$(_ts5_batch_commands "$program") --help --version"
    return
  fi
  case "$before" in
    --overwrite) _ts5_batch_words "$word" "yes number ask"; return ;;
    --dest-dir | --dir) compopt -o dirnames; return ;;
    --list) _ts5_batch_files "$word" '*.[sS][tT][sS]'; return ;;
    --layout) _ts5_batch_files "$word" '*.[aA][wW][lL]'; return ;;
    --dest) compopt -o default; return ;;
    --set)
      compopt -o nospace
      _ts5_batch_words "$word" "$(_ts5_batch_parameters "$program" "${COMP_WORDS[2]}")"
      return ;;
  esac
  case "$word" in
    -*)
      _ts5_batch_words "$word" "$(_ts5_batch_options "$program" "$command" "${COMP_WORDS[2]:-}")"
      return ;;
  esac
  case "$command:$COMP_CWORD" in
    run:2) _ts5_batch_words "$word" "$("$program" filters 2>/dev/null | awk '$2 == "*" { print $3 }')" ;;
    job:2) _ts5_batch_words "$word" "$("$program" jobs 2>/dev/null | awk '{ print $1 }')" ;;
    cd:2 | interfaces:2 | registry:2 | results:2)
      _ts5_batch_words "$word" "$(_ts5_batch_commands "$program" "$command")" ;;
    cd:*) _ts5_batch_files "$word" '*.[cC][uU][eE]' ;;
    results:*) _ts5_batch_files "$word" '*.json' ;;
    layout:2)
      _ts5_batch_files "$word" '*.[aA][wW][lL]'
      mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "pack unpack fit" -- "$word") ;;
    *) compopt -o default ;;
  esac
}
complete -F _ts5_batch ts5-batch
