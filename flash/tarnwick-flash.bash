# Completion of tarnwick-flash for bash.
_tarnwick_flash() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  case $before in
    --device) COMPREPLY=($(compgen -W 'azm alt all' -- "$word")) && return ;;
    --port) COMPREPLY=($(compgen -W "$(tarnwick-flash ports 2>/dev/null | cut -d' ' -f1)" -f -- "$word")) && return ;;
    check | program | verify) COMPREPLY=($(compgen -f -X '!*.qal' -- "$word") $(compgen -d -- "$word")) && return ;;
  esac
  if [ "$COMP_CWORD" = 1 ]; then
    COMPREPLY=($(compgen -W 'ports status check program verify list fetch forget --help --version' -- "$word"))
  else
    COMPREPLY=($(compgen -W '--port --device --json --yes=' -- "$word"))
  fi
}
complete -F _tarnwick_flash tarnwick-flash
