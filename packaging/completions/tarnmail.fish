# Completion of tarnmail for fish.

set -l commands list show search info document pages attachments extract help
set -l reads info document pages attachments extract
set -l archive list show search

complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -f
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a list -d 'List every message of archives, and folders of them'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a show -d 'Show one message, or save its attachments'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a search -d 'Find messages in what was exported'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a info -d 'Tell what a mail file is'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a document -d 'Write the finished document of a message'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a pages -d 'Write the pages of a message as PNG or PDF'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a attachments -d 'List the attachments of a message'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a extract -d 'Write one attachment of a message'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -a help -d 'Explain a command'
complete -c tarnmail -n "__fish_seen_subcommand_from help" -f -a "$commands"

complete -c tarnmail -s h -l help -d 'Print the options and commands'
complete -c tarnmail -n "not __fish_seen_subcommand_from $commands" -s V -l version -d 'Print the version'
complete -c tarnmail -n "not __fish_seen_subcommand_from help $archive" -l language -x -d 'Language of the header labels'
complete -c tarnmail -n "not __fish_seen_subcommand_from help $archive" -l in-memory -d 'Write no temporary files'
complete -c tarnmail -n "not __fish_seen_subcommand_from help $archive" -l temp-files -d 'HTML and its images as temporary files'
complete -c tarnmail -n "not __fish_seen_subcommand_from help search" -l temp -x -a '(__fish_complete_directories)' -d 'Directory for temporary files'
complete -c tarnmail -n "__fish_seen_subcommand_from $reads" -s m -l message -x -d 'Message of a PST file, from 1'
complete -c tarnmail -n "__fish_seen_subcommand_from info document pages" -l text -d 'Ask for plain text'
complete -c tarnmail -n "__fish_seen_subcommand_from info attachments list search" -l json -d 'JSON for machines'
complete -c tarnmail -n "__fish_seen_subcommand_from document pages extract show" -s o -l output -r -F -d 'File to write; - is standard output'
complete -c tarnmail -n "__fish_seen_subcommand_from info" -l pages -d 'Lay the document out and count its pages'
complete -c tarnmail -n "__fish_seen_subcommand_from info pages" -l no-sandbox -d 'Lay documents out where helpers cannot be kept apart'
complete -c tarnmail -n "__fish_seen_subcommand_from pages" -l pdf -d 'One PDF instead of PNG files'
complete -c tarnmail -n "__fish_seen_subcommand_from pages" -l dpi -x -d 'Dots per inch of PNG files'
complete -c tarnmail -n "__fish_seen_subcommand_from pages" -l paper -x -a 'a4 letter' -d 'Paper'
complete -c tarnmail -n "__fish_seen_subcommand_from pages" -l pages -x -d 'Pages, as 2, 1-3 or 3-'
complete -c tarnmail -n "__fish_seen_subcommand_from list" -l folders -d 'The folders with their numbers'
complete -c tarnmail -n "__fish_seen_subcommand_from list" -l embedded -d 'Messages attached to messages too'
complete -c tarnmail -n "__fish_seen_subcommand_from list" -l recover -d 'What a store holds and no table names'
complete -c tarnmail -n "__fish_seen_subcommand_from show" -l headers -d 'The original headers'
complete -c tarnmail -n "__fish_seen_subcommand_from show" -l attachment -x -d 'Write attachment K'
complete -c tarnmail -n "__fish_seen_subcommand_from show" -l all-attachments -x -a '(__fish_complete_directories)' -d 'Write all attachments into a folder'
complete -c tarnmail -n "__fish_seen_subcommand_from search" -l limit -x -d 'At most this many messages'
complete -c tarnmail -n "__fish_seen_subcommand_from list search" -l folder -x -d 'Only this folder and those below it'
complete -c tarnmail -n "__fish_seen_subcommand_from list search" -l from -x -d 'Only with this in the sender'
complete -c tarnmail -n "__fish_seen_subcommand_from list search" -l to -x -d 'Only with this in a recipient'
complete -c tarnmail -n "__fish_seen_subcommand_from list search" -l subject -x -d 'Only with this in the subject'
complete -c tarnmail -n "__fish_seen_subcommand_from list search" -l since -x -d 'Only from this date on'
complete -c tarnmail -n "__fish_seen_subcommand_from list search" -l until -x -d 'Only up to this date'
complete -c tarnmail -n "__fish_seen_subcommand_from list search" -l has-attachment -d 'Only with attachments'
complete -c tarnmail -n "__fish_seen_subcommand_from list search" -l class -x -d 'Only items whose class begins so'
