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

# Offers the lines of standard input that begin with $1. They may hold anything: `compgen -W` would expand them.
_xdm_lines() {
  local line
  while IFS= read -r line; do
    if [[ $line == "$1"* ]]; then COMPREPLY+=("$line"); fi
  done
}

# Likewise, quoted for the shell; where the word has begun with a quote, only what it encloses as it is.
_xdm_names() {
  local name quoted
  while IFS= read -r name; do
    printf -v quoted %q "$name"
    case ${COMP_WORDS[COMP_CWORD]} in
      [\"\']*) _xdm_lines "$1" < <(grep -v '["'\''\\`$!]' <<<"$name") ;;
      *) _xdm_lines "$1" <<<"$quoted" ;;
    esac
  done
}

_xdm_files() {
  compopt -o filenames
  _xdm_lines "$1" < <(compgen -f -- "$1")
}

_xdm() {
  local tool=$1 current=$2 previous=$3 words=() help value
  help=$("$tool" --help 2>/dev/null)
  while ((${#words[@]} + 1 < COMP_CWORD)) && _xdm_commands <<<"$help" | grep -qxF -e "${COMP_WORDS[${#words[@]} + 1]}"; do
    words+=("${COMP_WORDS[${#words[@]} + 1]}")
    help=$("$tool" "${words[@]}" --help 2>/dev/null)
  done
  COMPREPLY=()
  value=''
  if [[ $previous == -* ]]; then value=$(_xdm_value "$previous" <<<"$help"); fi

  case $previous:$value in
    --table:*) _xdm_names "$current" < <(_xdm_tables "$tool" "${COMP_WORDS[@]:1}") ;;
    *:*"{"*) _xdm_lines "$current" < <(tr -s '{,}' '\n' <<<"${value#*:\{}") ;;
    *:FILE) _xdm_files "$current" ;;
    *:?*) ;;
    *)
      if [[ $current == -* ]]; then
        _xdm_lines "$current" < <(_xdm_options <<<"$help")
      elif [[ -n $(_xdm_commands <<<"$help") ]]; then
        _xdm_lines "$current" < <(_xdm_commands <<<"$help")
      else
        _xdm_files "$current"
      fi
      ;;
  esac
}

complete -F _xdm xdm
