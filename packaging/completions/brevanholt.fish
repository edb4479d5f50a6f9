# Completion of brevanholt(1) for fish.
set -l sharing '__fish_contains_opt share'

complete -c brevanholt -f
complete -c brevanholt -l help -d 'Show the options'
complete -c brevanholt -l version -d 'Show the version'
complete -c brevanholt -l quit -d 'End the program that runs'
complete -c brevanholt -l share -d 'Send the files and folders named'
complete -c brevanholt -l share-text -x -d 'Send a text'
complete -c brevanholt -l share-clipboard -d 'Send what was copied'
complete -c brevanholt -l choose-files -d 'Choose files to send'
complete -c brevanholt -l login-item -d 'Start in the background'
complete -c brevanholt -l ui-bundle -x -a '(__fish_complete_directories)' -d 'Run the user interface in a folder'
complete -c brevanholt -l ui-argument -x -d 'Hand a text to the user interface'
complete -c brevanholt -l developer-tools -d 'Allow the web inspector'
complete -c brevanholt -n $sharing -F
