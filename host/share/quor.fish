# Completion of quor for fish.
set -l commands check run chart scan watch format lsp studio help
set -l scripts check run chart scan watch
set -l single check run chart watch
set -l bars run chart scan watch
set -l lines run scan watch

complete -c quor -n "not __fish_seen_subcommand_from $commands" -f
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a check -d 'Compile a script and say what it needs'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a run -d 'Run a script over bars and print its lines'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a chart -d 'Draw the bars and what a script draws'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a scan -d 'Run a script over many securities'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a watch -d 'Run a script over bars as they come'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a format -d 'Write scripts in one layout, in place'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a lsp -d 'Serve editors'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a studio -d 'Open a page to write scripts, see the chart and play bars'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -a help -d 'Explain words of the language, commands and codes of errors'
complete -c quor -n "not __fish_seen_subcommand_from $commands" -l version -d 'The version'
complete -c quor -l help -d 'Help'

complete -c quor -n "__fish_seen_subcommand_from $scripts" -s e -x -d 'The script itself'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -s s -l set -x -d 'The value of a parameter, NAME=NUMBER'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l params -r -F -d 'Parameters, JSON'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -s p -l period -x -a '15s 1min 5min 15min 30min 1hour day week month quarter year' -d 'Period of the bars'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l market -x -d 'The market'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l timezone -x -d 'Its time zone'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l extra -x -a 'MINPRICE= UNIT= SHARECOUNTPERUNIT=' -d 'A market constant'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l trading -d 'The market is open now'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -l strict -d 'Exit with status 1 for a warning, too'
complete -c quor -n "__fish_seen_subcommand_from $scripts" -s q -l quiet -d 'Tell errors alone'
complete -c quor -n "__fish_seen_subcommand_from $single" -l code -x -d 'Code of the security'
complete -c quor -n "__fish_seen_subcommand_from $single" -l lines -r -F -d 'Line settings, JSON'
complete -c quor -n '__fish_seen_subcommand_from check run scan watch' -l json -d 'Print JSON'

complete -c quor -n '__fish_seen_subcommand_from run chart watch' -s b -l bars -r -F -d 'Bars, comma-separated'
complete -c quor -n "__fish_seen_subcommand_from $bars" -l column -x -d 'Column of a field under another name'
complete -c quor -n "__fish_seen_subcommand_from $bars" -s d -l delimiter -x -a 'comma semicolon tab pipe' -d 'What parts the cells'
complete -c quor -n "__fish_seen_subcommand_from $bars" -l calendar -r -F -d 'Trading calendar, JSON'
complete -c quor -n "__fish_seen_subcommand_from $bars" -l reference -x -d 'Data of another security or period'
complete -c quor -n "__fish_seen_subcommand_from $bars" -l forming -d 'Of a longer period the bar under way'
complete -c quor -n "__fish_seen_subcommand_from $bars" -s n -l last -x -d 'How many bars'
complete -c quor -n "__fish_seen_subcommand_from $lines" -s a -l all -d 'Lines declared by :=, too'
complete -c quor -n "__fish_seen_subcommand_from $lines" -l columns -x -d 'These lines alone'
complete -c quor -n "__fish_seen_subcommand_from $lines" -l csv -d 'Print comma-separated values'
complete -c quor -n '__fish_seen_subcommand_from run' -l from -x -d 'First row to calculate'
complete -c quor -n '__fish_seen_subcommand_from run' -l fire -d 'Raise notices and signals'
complete -c quor -n '__fish_seen_subcommand_from watch' -l finished -d 'A bar counts once the next one has begun'
complete -c quor -n '__fish_seen_subcommand_from chart' -s o -l out -r -F -d 'The picture'
complete -c quor -n '__fish_seen_subcommand_from chart' -l size -x -d 'Width and height in pixels'
complete -c quor -n '__fish_seen_subcommand_from chart' -l theme -x -a 'light dark' -d 'Colours'
complete -c quor -n '__fish_seen_subcommand_from chart' -l no-volume -d 'Leave out the volume'
complete -c quor -n '__fish_seen_subcommand_from scan' -s w -l where -x -d 'Only bars at which this holds'
complete -c quor -n '__fish_seen_subcommand_from scan' -s j -l jobs -x -d 'How many files at a time'
complete -c quor -n '__fish_seen_subcommand_from scan' -l sort -x -d 'Sort by the values of this line'
complete -c quor -n '__fish_seen_subcommand_from scan' -s r -l reverse -d 'Sort the other way round'

complete -c quor -n '__fish_seen_subcommand_from format' -l check -d 'Only say what is not in the layout'
complete -c quor -n '__fish_seen_subcommand_from format' -l stdin -d 'From the standard input to the output'

complete -c quor -n '__fish_seen_subcommand_from studio' -l bars -r -F -d 'A file or a folder of bars'
complete -c quor -n '__fish_seen_subcommand_from studio' -l port -x -d 'The port'
complete -c quor -n '__fish_seen_subcommand_from studio' -l export -x -a '(__fish_complete_directories)' -d 'Write the page into a folder'
complete -c quor -n '__fish_seen_subcommand_from studio' -l no-open -d 'Print the link only'

complete -c quor -n '__fish_seen_subcommand_from help' -f -a 'check run chart scan watch format lsp studio help (quor help --list 2>/dev/null)'
