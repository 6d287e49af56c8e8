# Prints what zsh would complete, one a line: complete.zsh FOLDER LINE
# FOLDER holds the completion function. A second zsh is driven on a terminal of its own: only a line that is being typed
# is completed.
zmodload zsh/zpty || exit 77
folder=${1:a} typed=$2
zpty shell zsh -f -i
ask() { zpty -w shell "$1" }
await() { # reads up to a mark, and keeps what came before it
    shown=
    while zpty -r shell piece; do
        shown+=$piece
        [[ $shown == *$1* ]] && return 0
    done
    return 1
}
ask 'PROMPT= RPROMPT=; unsetopt zle prompt_cr prompt_sp beep; TERM=dumb; stty -echo; print READ""Y'
await READY
ask "fpath=(${(q)folder} \$fpath); autoload -Uz compinit && compinit -u -d ${(q)folder}/.dump"
ask 'compadd() {
    if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then builtin compadd "$@"; return $?; fi
    local -a hits; builtin compadd -O hits "$@"
    (( $#hits )) && print -rl -- "match:"${^hits}
    builtin compadd "$@"
}'
ask 'zstyle ":completion:*" list-grouped false; zstyle ":completion:*" menu no'
ask 'finish() { print DO""NE; zle kill-buffer; exit }; bindkey "^I" complete-word; zle -N finish; bindkey "^X" finish'
ask 'setopt zle; LISTMAX=10000; print SE""T'
await SET
zpty -w -n shell "$typed"$'\t\x18'
await DONE
print -r -- ${(F)${(M)${(f)${shown//$'\r'/}}:#*match:*}##*match:} | LC_ALL=C sort -u
zpty -d shell
