# Completion of xdm for bash. Commands, options and their values come from the tool's own help, so they are those of the
# tool that is installed.
# Tested by tests/tool/xdm_completion_test.cpp. shellcheck shell=bash

# The options that the help on standard input names.
_xdm_options() {
  sed -n 's/^  \(-[^ ]*\).*/\1/p' | tr ',' '\n'
}

# The commands that the help on standard input names.
_xdm_commands() {
  sed -n '/^Subcommands:/,$ s/^  \([a-z][^ ]*\).*/\1/p'
}

# What kind of value option $1 takes, by the help on standard input: "FILE", "TEXT:{csv,json,xml}"; nothing for a flag.
_xdm_value() {
  sed -n "s/^  \\(-[^ ]*,\\)\\?$1 \\([A-Z][^ ]*\\).*/\\2/p"
}

# The tables of the first file among the words $2...; $1 is the tool.
_xdm_tables() {
  local tool=$1 word
  shift
  for word; do
    if [[ -f $word ]]; then
      "$tool" tables "$word" 2>/dev/null
      return
    fi
  done
}

_xdm_reply() {
  local IFS=$'\n'
  # shellcheck disable=SC2207  # names may hold blanks, and end at the end of the line
  COMPREPLY=($(compgen "$@"))
}

_xdm_files() {
  compopt -o filenames
  _xdm_reply -f -- "$1"
}

_xdm() {
  local tool=$1 current=$2 previous=$3 words=() help value
  help=$("$tool" --help 2>/dev/null)
  while ((${#words[@]} + 1 < COMP_CWORD)) && _xdm_commands <<<"$help" | grep -qxF -e "${COMP_WORDS[${#words[@]} + 1]}"; do
    words+=("${COMP_WORDS[${#words[@]} + 1]}")
    help=$("$tool" "${words[@]}" --help 2>/dev/null)
  done
  value=''
  if [[ $previous == -* ]]; then value=$(_xdm_value "$previous" <<<"$help"); fi

  case $previous:$value in
    --table:*) _xdm_reply -W "$(_xdm_tables "$tool" "${COMP_WORDS[@]:1}")" -- "$current" ;;
    *:*{*}) _xdm_reply -W "$(tr -s '{,}' '\n' <<<"${value#*:}")" -- "$current" ;;
    *:FILE) _xdm_files "$current" ;;
    *:?*) COMPREPLY=() ;;
    *)
      if [[ $current == -* ]]; then
        _xdm_reply -W "$(_xdm_options <<<"$help")" -- "$current"
      elif [[ -n $(_xdm_commands <<<"$help") ]]; then
        _xdm_reply -W "$(_xdm_commands <<<"$help")" -- "$current"
      else
        _xdm_files "$current"
      fi
      ;;
  esac
}

complete -F _xdm xdm
