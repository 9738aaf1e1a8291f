# Completion of quor for bash.
_quor() {
  local current=${COMP_WORDS[COMP_CWORD]}
  local previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command=${COMP_WORDS[1]}
  local options=
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then
    COMPREPLY=($(compgen -W 'check run chart scan watch format lsp studio help --help --version' -- "$current"))
    return
  fi
  case $previous in
    -p | --period)
      COMPREPLY=($(compgen -W '15s 1min 5min 15min 30min 1hour day week month quarter year' -- "$current"))
      return
      ;;
    --extra)
      COMPREPLY=($(compgen -W 'MINPRICE= UNIT= SHARECOUNTPERUNIT=' -- "$current"))
      compopt -o nospace
      return
      ;;
    --theme) COMPREPLY=($(compgen -W 'light dark' -- "$current")); return ;;
    -d | --delimiter) COMPREPLY=($(compgen -W 'comma semicolon tab pipe' -- "$current")); return ;;
    -e | -s | --set | --code | --market | --timezone | -n | --last | --from | --size | -w | --where | -j | --jobs | --sort | --port | --columns) return ;;
  esac
  options='-e --set --params --period --market --timezone --extra --trading --strict --quiet --help'
  local bars='--column --delimiter --calendar --reference --forming --last'
  local lines='--columns --all --csv --json'
  case $command in
    check) options="$options --code --lines --json" ;;
    run) options="$options --code --lines --bars $bars $lines --from --fire" ;;
    chart) options="$options --code --lines --bars $bars --out --size --theme --no-volume" ;;
    scan) options="$options $bars $lines --where --jobs --sort --reverse" ;;
    watch) options="$options --code --lines --bars $bars $lines --finished" ;;
    format) options='--check --stdin --help' ;;
    lsp) options='--help' ;;
    studio) options='--bars --port --export --no-open --help' ;;
    help)
      COMPREPLY=($(compgen -W "check run chart scan watch format lsp studio help $(quor help --list 2>/dev/null)" -- "${current^^}"))
      [ ${#COMPREPLY[@]} -gt 0 ] || COMPREPLY=($(compgen -W 'check run chart scan watch format lsp studio help' -- "$current"))
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
