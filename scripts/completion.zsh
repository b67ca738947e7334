#compdef ts5-batch
# Completion of ts5-batch for zsh; commands, options and parameters come from the help of the program.

local program=$words[1] command=$words[2]
local -a found

# _ts5_batch_help LINES WORDS...: what these lines of a help explain, as "name:explanation".
_ts5_batch_help() {
  local lines=$1
  shift
  found=(${(f)"$($program $@ --help 2>/dev/null | sed -n "$lines s/^  \([^ ]*\)\( [^ ][^ ]*\)*   *\(.*\)/\1:\3/p")"})
}
_ts5_batch_commands() {
  _ts5_batch_help '/^Befehle:/,/^$/' $@
  _describe -t commands Befehl found
}

if (( CURRENT == 2 )); then
  _ts5_batch_commands
  return
fi
case $words[CURRENT-1] in
  --overwrite) compadd yes number ask; return ;;
  --dest-dir | --dir) _files -/; return ;;
  --list) _files -g '*.(#i)sts'; return ;;
  --layout) _files -g '*.(#i)awl'; return ;;
  --set)
    _ts5_batch_help '/--set (/,/^$/' run $words[3]
    _describe -t parameters Parameter found -S =
    return ;;
esac
if [[ $words[CURRENT] == -* ]]; then
  _ts5_batch_help '1,$' $command $words[3]
  (( $#found )) || _ts5_batch_help '1,$' $command
  found=(${(M)found:#--*})
  _describe -o -t options Option found
  return
fi
case $command:$CURRENT in
  run:3) compadd -- ${(f)"$($program filters 2>/dev/null | awk '$2 == "*" { print $3 }')"} ;;
  job:3) compadd -- ${(f)"$($program jobs 2>/dev/null | awk '{ print $1 }')"} ;;
  (cd|interfaces|registry|results):3) _ts5_batch_commands $command ;;
  cd:*) _files -g '*.(#i)cue' ;;
  results:*) _files -g '*.json' ;;
  layout:3)
    compadd pack unpack fit
    _files -g '*.(#i)awl' ;;
  *) _files ;;
esac
