# Completion of quarvis-rules for fish.

complete -c quarvis-rules -s '?' -l help -d 'Print the usage'
complete -c quarvis-rules -s c -l count -x -d 'Least number of histories of an item set and of a rule'
complete -c quarvis-rules -s C -l confidence -x -d 'Least confidence'
complete -c quarvis-rules -s l -l lift -x -d 'Least lift'
complete -c quarvis-rules -s o -l order -x -d 'Greatest number of items of a rule, less one'
complete -c quarvis-rules -s s -l support -x -d 'Least support'
complete -c quarvis-rules -s V -l conviction -x -d 'Greatest conviction'
complete -c quarvis-rules -s v -l verbose -d 'Accepted without effect'
complete -c quarvis-rules -s w -l window -x -d 'Length of the window, in the unit of the times'
