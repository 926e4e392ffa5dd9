# Completion of tarnmail for fish.

set -l commands info document pages attachments extract help
set -l reads info document pages attachments extract

complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -f
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a info -d 'Tell what a mail file is'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a document -d 'Write the finished document of a message'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a pages -d 'Write the pages of a message as PNG or PDF'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a attachments -d 'List the attachments of a message'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a extract -d 'Write one attachment of a message'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a help -d 'Explain a command'
complete -c tarnmail -n "__fish_seen_subcommand_from help" -f -a "$commands"

complete -c tarnmail -s h -l help -d 'Print the options and commands'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -s V -l version -d 'Print the version'
complete -c tarnmail -n "not __fish_seen_subcommand_from help" -l language -x -d 'Language of the header labels'
complete -c tarnmail -n "not __fish_seen_subcommand_from help" -l in-memory -d 'Write no temporary files'
complete -c tarnmail -n "not __fish_seen_subcommand_from help" -l temp-files -d 'HTML and its images as temporary files'
complete -c tarnmail -n "not __fish_seen_subcommand_from help" -l temp -x -a '(__fish_complete_directories)' -d 'Directory for temporary files'
complete -c tarnmail -n "__fish_seen_subcommand_from $reads" -s m -l message -x -d 'Message of a PST file, from 1'
complete -c tarnmail -n "__fish_seen_subcommand_from info document pages" -l text -d 'Ask for plain text'
complete -c tarnmail -n "__fish_seen_subcommand_from info attachments" -l json -d 'JSON for machines'
complete -c tarnmail -n "__fish_seen_subcommand_from document pages extract" -s o -l output -r -F -d 'File to write; - is standard output'
complete -c tarnmail -n "__fish_seen_subcommand_from info" -l pages -d 'Lay the document out and count its pages'
complete -c tarnmail -n "__fish_seen_subcommand_from info pages" -l no-sandbox -d 'Lay documents out where helpers cannot be kept apart'
complete -c tarnmail -n "__fish_seen_subcommand_from pages" -l pdf -d 'One PDF instead of PNG files'
complete -c tarnmail -n "__fish_seen_subcommand_from pages" -l dpi -x -d 'Dots per inch of PNG files'
complete -c tarnmail -n "__fish_seen_subcommand_from pages" -l paper -x -a 'a4 letter' -d 'Paper'
complete -c tarnmail -n "__fish_seen_subcommand_from pages" -l pages -x -d 'Pages, as 2, 1-3 or 3-'
