# Completion of quor for fish.
set -l commands check run chart help
set -l scripts check run chart

complete -c quor -n "not __fish_seen_subcommand_from $commands" -f
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a check -d 'Compile a script and say what it needs'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a run -d 'Run a script over bars and print its lines'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a chart -d 'Draw the bars and what a script draws'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a help -d 'Explain words of the language and commands'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -l version -d 'The version'
complete -c quor -l help -d 'Help'

complete -c quor -n "__fish_seen_subcommand_from $scripts" -s e -x -d 'The script itself'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l set -x -d 'The value of a parameter, NAME=NUMBER'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l params -r -F -d 'Parameters, JSON'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l lines -r -F -d 'Line settings, JSON'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l period -x -a '15s 1min 5min 15min 30min 1hour day week month quarter year' -d 'Period of the bars'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l code -x -d 'Code of the security'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l market -x -d 'Its market'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l timezone -x -d 'Its time zone'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l extra -x -a 'MINPRICE= UNIT= SHARECOUNTPERUNIT=' -d 'A market constant'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l trading -d 'The market is open now'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l strict -d 'Exit with status 1 for a warning, too'
complete -c quor -n '__fish_seen_subcommand_from check run' -l json -d 'Print JSON'

complete -c quor -n '__fish_seen_subcommand_from run chart' -l bars -r -F -d 'Bars, comma-separated'
complete -c quor -n '__fish_seen_subcommand_from run chart' -l calendar -r -F -d 'Trading calendar, JSON'
complete -c quor -n '__fish_seen_subcommand_from run chart' -l reference -x -d 'Data of another security or period'
complete -c quor -n '__fish_seen_subcommand_from run chart' -l last -x -d 'How many bars'
complete -c quor -n '__fish_seen_subcommand_from run' -l csv -d 'Print comma-separated values'
complete -c quor -n '__fish_seen_subcommand_from run' -l from -x -d 'First row to calculate'
complete -c quor -n '__fish_seen_subcommand_from run' -l fire -d 'Raise notices and signals'
complete -c quor -n '__fish_seen_subcommand_from chart' -l out -r -F -d 'The picture'
complete -c quor -n '__fish_seen_subcommand_from chart' -l size -x -d 'Width and height in pixels'
complete -c quor -n '__fish_seen_subcommand_from chart' -l theme -x -a 'light dark' -d 'Colours'
complete -c quor -n '__fish_seen_subcommand_from chart' -l no-volume -d 'Leave out the volume'

complete -c quor -n '__fish_seen_subcommand_from help' -f -a 'check run chart help (quor help --list 2>/dev/null)'
