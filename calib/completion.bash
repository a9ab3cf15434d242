# Completion of calib's command lines in bash. What there is to choose from is asked of the command
# itself: subcommands and options of --help, words of the braces behind an option there, record
# types of 'calib types'. Anything else is a file, which bash completes.

_calib_help() { "${COMP_WORDS[0]}" "$@" --help 2>/dev/null; }

_calib_types() { "${COMP_WORDS[0]}" types 2>/dev/null | grep '^[A-Z]'; }

# The subcommands of calib, or of one of its own.
_calib_subcommands() {
  _calib_help "$@" | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p'
}

# The words that an option takes: _calib_words OPTION SUBCOMMAND...
_calib_words() {
  case $1 in
    --type | --as) _calib_types ;;
    *)
      _calib_help "${@:2}" | sed -n "/^  $1 {/,/}/p" | tr -d ' \n' |
        sed 's/^[^{]*{\([^}]*\)}.*/\1/' | tr , '\n'
      ;;
  esac
}

_calib() {
  local word=$2 before=$3 subcommand=() candidates="" rest i
  COMPREPLY=()
  # "--to=te" is three words: "--to", "=" and "te".
  [[ $word == = ]] && word=""
  [[ $before == = ]] && before=${COMP_WORDS[COMP_CWORD - 2]}
  rest=$(_calib_subcommands)
  for ((i = 1; i < COMP_CWORD; ++i)); do
    if [[ -n $rest && ${COMP_WORDS[i]} != -* ]]; then
      subcommand+=("${COMP_WORDS[i]}")
      rest=$(_calib_subcommands "${subcommand[@]}")
    fi
  done
  if [[ $before == --* ]] && candidates=$(_calib_words "$before" "${subcommand[@]}") &&
    [[ -n $candidates ]]; then
    :
  elif [[ $word == -* ]]; then
    candidates=$(_calib_help "${subcommand[@]}" | grep -oE '^  (-h, )?--[a-z-]+' | grep -o -e '--.*')
  elif [[ -n $rest ]]; then
    candidates=$rest
  elif [[ ${subcommand[*]} == types ]]; then
    candidates=$(_calib_types)
  fi
  mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$word")
}

complete -o bashdefault -o default -F _calib calib
