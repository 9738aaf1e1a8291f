# Completion of quor for bash.
_quor() {
  local current=${COMP_WORDS[COMP_CWORD]}
  local previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command=${COMP_WORDS[1]}
  local options=
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then
    COMPREPLY=($(compgen -W 'check run chart scan format lsp studio help --help --version' -- "$current"))
    return
  fi
  case $previous in
    --period)
      COMPREPLY=($(compgen -W '15s 1min 5min 15min 30min 1hour day week month quarter year' -- "$current"))
      return
      ;;
    --extra)
      COMPREPLY=($(compgen -W 'MINPRICE= UNIT= SHARECOUNTPERUNIT=' -- "$current"))
      compopt -o nospace
      return
      ;;
    --theme) COMPREPLY=($(compgen -W 'light dark' -- "$current")); return ;;
    -e | --set | --code | --market | --timezone | --last | --from | --size | --where | --jobs | --sort | --port) return ;;
  esac
  options='-e --set --params --lines --period --code --market --timezone --extra --trading --strict --help'
  case $command in
    check) options="$options --json" ;;
    run) options="$options --bars --column --calendar --reference --last --json --csv --from --fire" ;;
    chart) options="$options --bars --column --calendar --reference --last --out --size --theme --no-volume" ;;
    scan) options='-e --set --period --market --calendar --extra --last --where --jobs --sort --reverse --csv --json --help' ;;
    format) options='--check --stdin --help' ;;
    lsp) options='--help' ;;
    studio) options='--bars --port --no-open --help' ;;
    help)
      COMPREPLY=($(compgen -W "check run chart scan format lsp studio help $(quor help --list 2>/dev/null)" -- "${current^^}"))
      [ ${#COMPREPLY[@]} -gt 0 ] || COMPREPLY=($(compgen -W 'check run chart scan format lsp studio help' -- "$current"))
      return
      ;;
  esac
  if [ "${current#-}" != "$current" ]; then
    COMPREPLY=($(compgen -W "$options" -- "$current"))
  else
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -f -- "$current"))
  fi
}
complete -F _quor quor
