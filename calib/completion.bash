# Completion of calib's command lines in bash. What there is to choose from is asked of the command
# itself: subcommands and options of --help, words of the braces behind an option there, record
# types of 'calib types'. Anything else is a file, which bash completes.

_calib_help() { "${COMP_WORDS[0]}" "$@" --help 2>/dev/null; }

_calib_types() { "${COMP_WORDS[0]}" types 2>/dev/null | grep '^[A-Z]'; }

# The words that an option takes: _calib_words SUBCOMMAND OPTION
_calib_words() {
  case $2 in
    --type | --as) _calib_types ;;
    *)
      _calib_help "$1" | sed -n "/^  $2 {/,/}/p" | tr -d ' \n' |
        sed 's/^[^{]*{\([^}]*\)}.*/\1/' | tr , '\n'
      ;;
  esac
}

_calib() {
  local word=$2 before=$3 subcommand="" candidates="" i
  COMPREPLY=()
  # "--to=te" is three words: "--to", "=" and "te".
  [[ $word == = ]] && word=""
  [[ $before == = ]] && before=${COMP_WORDS[COMP_CWORD - 2]}
  for ((i = 1; i < COMP_CWORD; ++i)); do
    if [[ ${COMP_WORDS[i]} != -* ]]; then
      subcommand=${COMP_WORDS[i]}
      break
    fi
  done
  if [[ $before == --* ]] && candidates=$(_calib_words "$subcommand" "$before") &&
    [[ -n $candidates ]]; then
    :
  elif [[ $word == -* ]]; then
    candidates=$(_calib_help $subcommand | grep -oE '^  (-h, )?--[a-z-]+' | grep -o -e '--.*')
  elif [[ -z $subcommand ]]; then
    candidates=$(_calib_help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p')
  elif [[ $subcommand == types ]]; then
    candidates=$(_calib_types)
  fi
  mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$word")
}

complete -o bashdefault -o default -F _calib calib
