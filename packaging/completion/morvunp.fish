# Completion of morvunp for fish.
set -l commands list info extract
set -l none "not __fish_seen_subcommand_from $commands"

complete -c morvunp -n $none -f -a list -d 'List the items of an archive'
complete -c morvunp -n $none -f -a info -d 'Tell about an archive or items of it'
complete -c morvunp -n $none -f -a extract -d 'Unpack an archive or items of it'
complete -c morvunp -n $none -l version -d 'Print the version'
complete -c morvunp -s h -l help -d 'Print the options'

set -l any "__fish_seen_subcommand_from $commands"
complete -c morvunp -n $any -l codepage -x -d 'Code page of names that are not Unicode'
complete -c morvunp -n $any -l password-file -r -d 'File whose first line is the password'

complete -c morvunp -n '__fish_seen_subcommand_from list' -l json -d 'Write one JSON object'

set -l extract '__fish_seen_subcommand_from extract'
complete -c morvunp -n $extract -s C -l directory -x -a '(__fish_complete_directories)' -d 'Folder to unpack to'
complete -c morvunp -n $extract -l flat -d 'Write all files straight into the folder'
complete -c morvunp -n $extract -l relative -d 'Drop the parent folders of a selected folder'
complete -c morvunp -n $extract -l overwrite -x -a 'ask all none' -d 'Whether existing files are replaced'
complete -c morvunp -n $extract -s q -l quiet -d 'No progress and no closing line'
