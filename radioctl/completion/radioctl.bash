# Completion of radioctl for bash. What can stand there is asked of the program: a word on each line, or
# ":files" and how the names of these files end.

_radioctl()
{
    local -a words=() endings=()
    local word line ending glued= current

    # bash takes "--trace=error" for three words.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        if ((${#words[@]})) && [[ $word == = || $glued ]]; then
            words[-1]+=$word
            glued=
        else
            words+=("$word")
        fi
        [[ $word == = ]] && glued=yes
    done
    current=${COMP_WORDS[COMP_CWORD]}
    [[ $current == = ]] && current=

    COMPREPLY=()
    while IFS= read -r line; do
        if [[ $line == :files* ]]; then
            read -ra endings <<< "${line#:files}"
            mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(
                ((${#endings[@]})) || compgen -f -- "$current"
                for ending in "${endings[@]}"; do
                    compgen -f -X "!*$ending" -- "$current"
                done
                ((${#endings[@]})) && compgen -d -- "$current"
            )
            # Has bash put a backslash before the spaces of a name, and a slash behind a directory.
            compopt -o filenames 2> /dev/null
        else
            line=${line%%$'\t'*}
            [[ $glued || ${words[-1]} == --*=* ]] && line=${line#*=}
            COMPREPLY+=("$line")
        fi
    done < <("${COMP_WORDS[0]/#\~/$HOME}" completion-words "${words[@]}" 2> /dev/null)
}

complete -F _radioctl radioctl
