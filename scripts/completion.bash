# Completion of ts5-batch for bash.

# The names that --set takes, from the help of the filter on the line.
_ts5_batch_parameters() {
  "$1" run "$2" --help 2>/dev/null | sed -n '/--set (/,/^$/ s/^  \([^ ]*\) .*/\1=/p'
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
  local options="--help"
  case "$command" in
    filters | jobs | type | info | score | codecs) options="$options --json" ;;
    attributes) options="$options --json --set --remove" ;;
    results) options="$options --json" ;;
    layout) options="$options --json --overwrite" ;;
    run) options="$options --set --dest --dest-dir --overwrite --list --dir --part --preview --attribute --melody --melody-name --keys --device --input --json --quiet" ;;
    job) options="$options --json --quiet" ;;
    resume) options="$options --list --discard --json --quiet" ;;
    registry) options="$options --recursive --binary --overwrite" ;;
  esac
  case "$word" in
    -*) COMPREPLY=($(compgen -W "$options" -- "$word")); return ;;
  esac
  case "$command:$COMP_CWORD" in
    run:2) COMPREPLY=($(compgen -W "$("$program" filters 2>/dev/null | awk '$2 == "*" { print $3 }')" -- "$word")) ;;
    job:2) COMPREPLY=($(compgen -W "$("$program" jobs 2>/dev/null | awk '{ print $1 }')" -- "$word")) ;;
    cd:2) COMPREPLY=($(compgen -W "list insert blank info track erase eject load" -- "$word")) ;;
    cd:*) compopt -o plusdirs; COMPREPLY=($(compgen -f -X '!*.[cC][uU][eE]' -- "$word")) ;;
    results:2) COMPREPLY=($(compgen -W "merge" -- "$word")) ;;
    results:*) compopt -o plusdirs; COMPREPLY=($(compgen -f -X '!*.json' -- "$word")) ;;
    interfaces:2) COMPREPLY=($(compgen -W "list add remove find" -- "$word")) ;;
    registry:2) COMPREPLY=($(compgen -W "list get set delete import export" -- "$word")) ;;
    *) compopt -o default ;;
  esac
}
complete -F _ts5_batch ts5-batch
