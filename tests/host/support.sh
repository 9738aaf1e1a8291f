# What the tests of the command-line host share. To be sourced, with the arguments
#   QUOR SAMPLES [EMULATOR]
program=$1
samples=$2
emulator=${3:-}
folder=$(mktemp -d) || exit 1
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
failures=0

quor() { ${emulator:+"$emulator"} "$program" "$@"; }

# expect STATUS TEXT ARGUMENTS...: runs quor; the whole of what it prints on both channels must be
# TEXT, but for the line that says the period of the bars.
expect() {
  status=$1
  text=$2
  shift 2
  printed=$(quor "$@" 2>&1)
  got=$?
  printed=$(printf '%s\n' "$printed" | sed '/^quor: period: /d')
  [ "$got" -eq "$status" ] && [ "$printed" = "$text" ] && return
  printf 'quor %s\n' "$*"
  printf 'expected status %s and\n%s\ngot status %s and\n%s\n\n' "$status" "$text" "$got" "$printed"
  failures=$((failures + 1))
}

# misused TEXT COMMAND ARGUMENTS...: the command line says something impossible, and help is near.
misused() {
  said=$1
  shift
  expect 2 "quor: $said
quor $1 --help tells more" "$@"
}

# same TEXT EXPECTED WHAT
same() {
  [ "$1" = "$2" ] && return
  printf '%s gave\n%s\ninstead of\n%s\n\n' "$3" "$1" "$2"
  failures=$((failures + 1))
}
