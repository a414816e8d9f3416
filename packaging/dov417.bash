# Completion for dov417. Commands and options are those that the tool's own help names.

_dov417_options() {
  "$@" --help 2>/dev/null | grep -oE '^ +(-[A-Za-z0-9], ?)?--[a-z-]+' | grep -oE -- '--[a-z-]+'
}

_dov417_commands() {
  "$1" --help 2>/dev/null | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p'
}

_dov417_registers() {
  "$1" info 2>/dev/null | sed -n '/^register  format/,/^$/s/^\([A-Z][A-Za-z_]*\) .*/\1/p'
}

# The value of an option that is already on the line: words 1 and on are the line's.
_dov417_given() {
  local option=$1 i
  shift
  for ((i = 1; i < $#; i++)); do
    [[ ${!i} == "$option" ]] && { i=$((i + 1)); printf '%s' "${!i}"; return; }
  done
}

_dov417_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_dov417() {
  local tool=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]}
  local before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]} words tags
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    words="$(_dov417_commands "$tool") --help --version"
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    return
  fi
  case $before in
    --port) mapfile -t COMPREPLY < <(compgen -G "/dev/tty[UAS]*" -- "$current"); return ;;
    --line | --lines) words="9600,8,EVEN,1 19200,8,EVEN,1 38400,8,EVEN,1 57600,8,EVEN,1 115200,8,EVEN,1" ;;
    --format) words="unsigned signed hex bcd float int64 uint64 double bool binary text" ;;
    --word-order) words="low-first high-first" ;;
    --tags | --project | --log | --library | --csv | --load | --dump | --link)
      _dov417_files "$current"
      return ;;
    --timeout | --timeout-min | --timeout-max | --reply-gap | --horizon | --retries | --probe | \
      --gap | --max-registers | --turnaround | --response-time | --count | --step | --every | --cycles | \
      --seconds | --baud | --data-bits | --parity | --stop-bits | --stations | --seed | --fault) return ;;
    *)
      if [[ $current == -* ]]; then
        # upload and download have options of their own.
        before=
        if [[ $command == recipe ]] && ((COMP_CWORD > 2)); then before=${COMP_WORDS[2]}; fi
        words=$(_dov417_options "$tool" "$command" ${before:+"$before"})
      else
        case $command in
          trace) _dov417_files "$current"; return ;;
          series) ((COMP_CWORD == 2)) && words=$(_dov417_registers "$tool") ;;
          recipe)
            if ((COMP_CWORD == 2)); then words="upload download compare"; else _dov417_files "$current"; return; fi ;;
          check | plan | watch | read | write | simulate)
            # What follows a colon is a number that nobody can guess.
            [[ $current == ':' || $before == ':' ]] && return
            compopt -o nospace 2>/dev/null
            words=$(_dov417_registers "$tool" | sed 's/$/:/')
            tags=$(_dov417_given --tags "${COMP_WORDS[@]:1}")
            [[ -r $tags ]] && words+=" $(sed -n '/^#/d;2,$s/^\([^",;\t]*\)[,;\t].*/\1/p' "$tags")" ;;
        esac
      fi ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _dov417 dov417
