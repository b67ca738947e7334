# Completion of ts5-batch for bash.

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

_ts5_batch() {
  local program="$1" word="$2" before="$3"
  local command="${COMP_WORDS[1]:-}"
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then
    COMPREPLY=($(compgen -W "filters jobs type info attributes interfaces score run job resume codecs cd layout results registry --help --version" -- "$word"))
    return
  fi
  case "$before" in
    --overwrite) COMPREPLY=($(compgen -W "yes number ask" -- "$word")); return ;;
    --dest-dir | --dir) compopt -o dirnames; return ;;
    --list) compopt -o plusdirs; COMPREPLY=($(compgen -f -X '!*.[sS][tT][sS]' -- "$word")); return ;;
    --dest) compopt -o default; return ;;
    --set)
      compopt -o nospace
      COMPREPLY=($(compgen -W "$(_ts5_batch_parameters "$program" "${COMP_WORDS[2]}")" -- "$word"))
      return ;;
  esac
  case "$word" in
    -*)
      COMPREPLY=($(compgen -W "$(_ts5_batch_options "$program" "$command" "${COMP_WORDS[2]:-}")" -- "$word"))
      return ;;
  esac
  case "$command:$COMP_CWORD" in
    run:2) COMPREPLY=($(compgen -W "$("$program" filters 2>/dev/null | awk '$2 == "*" { print $3 }')" -- "$word")) ;;
    job:2) COMPREPLY=($(compgen -W "$("$program" jobs 2>/dev/null | awk '{ print $1 }')" -- "$word")) ;;
    cd:2) COMPREPLY=($(compgen -W "list insert blank info track erase eject load" -- "$word")) ;;
    cd:*) compopt -o plusdirs; COMPREPLY=($(compgen -f -X '!*.[cC][uU][eE]' -- "$word")) ;;
    results:2) COMPREPLY=($(compgen -W "merge" -- "$word")) ;;
    results:*) compopt -o plusdirs; COMPREPLY=($(compgen -f -X '!*.json' -- "$word")) ;;
    layout:2) COMPREPLY=($(compgen -W "pack unpack" -- "$word")) ;;
    interfaces:2) COMPREPLY=($(compgen -W "list add remove find" -- "$word")) ;;
    registry:2) COMPREPLY=($(compgen -W "list get set delete import export" -- "$word")) ;;
    *) compopt -o default ;;
  esac
}
complete -F _ts5_batch ts5-batch
