# Completion of bash for zelvan-easy: the command itself tells what may follow. Those of zsh and fish are printed by
# "zelvan-easy --show-completion".
_zelvan_easy() {
  mapfile -t COMPREPLY < <(COMP_WORDS="${COMP_WORDS[*]}" COMP_CWORD=$COMP_CWORD \
    _ZELVAN_EASY_COMPLETE=complete_bash "$1" 2>/dev/null)
}

complete -o default -F _zelvan_easy zelvan-easy
