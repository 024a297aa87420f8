# Completion of quarvis for bash: the command itself tells what to offer.
eval "$(_QUARVIS_COMPLETE=bash_source quarvis)"
