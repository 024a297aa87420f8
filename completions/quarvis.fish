# Completion of quarvis for fish: the command itself tells what to offer.
_QUARVIS_COMPLETE=fish_source quarvis | source
