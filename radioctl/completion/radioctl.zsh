#compdef radioctl
# Completion of radioctl for zsh. What can stand there is asked of the program: a word and what it does on each
# line, or ":files" and how the names of these files end.

_radioctl() {
    local -a lines offers endings
    local line
    lines=("${(@f)$("${(Q)words[1]/#\~/$HOME}" completion-words "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}")
    for line in $lines; do
        if [[ $line == :files* ]]; then
            endings=(${(s: :)line#:files})
            # Behind an equals sign the name begins.
            [[ $PREFIX == --*=* ]] && compset -P '*='
            if (( $#endings )); then
                _files -g "${(j: :)${(@)endings/#/*}}"
            else
                _files
            fi
        else
            offers+=("${${line%%$'\t'*}//:/\\:}:${line#*$'\t'}")
        fi
    done
    (( $#offers )) && _describe 'radioctl' offers
}

if [[ $funcstack[1] == _radioctl ]]; then
    _radioctl "$@"
elif (( $+functions[compdef] )); then
    compdef _radioctl radioctl
fi
