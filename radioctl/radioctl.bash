# Completion of radioctl for bash.

_radioctl()
{
    local current previous command word
    current=${COMP_WORDS[COMP_CWORD]}
    previous=${COMP_WORDS[COMP_CWORD-1]}

    if [[ $previous == --trace ]]; then
        COMPREPLY=($(compgen -W "off error warning notice information" -- "$current"))
        return
    fi

    command=
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
            run | console | check | completion | explain | audit | thermal)
                command=$word
                break
                ;;
            plan) command=$word ;;
        esac
    done

    if [[ $current == -* ]]; then
        case $command in
            run | console) COMPREPLY=($(compgen -W "--help --json --trace --verbose" -- "$current")) ;;
            explain) COMPREPLY=($(compgen -W "--help --json --channel --tx --rx" -- "$current")) ;;
            audit) COMPREPLY=($(compgen -W "--help --json --csv" -- "$current")) ;;
            thermal) COMPREPLY=($(compgen -W "--help --json --carrier --csv --html" -- "$current")) ;;
            check | completion) COMPREPLY=($(compgen -W "--help --json" -- "$current")) ;;
            *) COMPREPLY=($(compgen -W "--help --json --version" -- "$current")) ;;
        esac
        return
    fi

    compopt -o filenames 2> /dev/null
    case $command in
        run)
            COMPREPLY=($(compgen -f -X '!*.toml' -- "$current") $(compgen -f -X '!*.script' -- "$current")
                $(compgen -d -- "$current"))
            ;;
        console | check | explain | audit) COMPREPLY=($(compgen -f -X '!*.toml' -- "$current") $(compgen -d -- "$current")) ;;
        thermal)
            COMPREPLY=($(compgen -f -X '!*.toml' -- "$current") $(compgen -f -X '!*.csv' -- "$current")
                $(compgen -d -- "$current"))
            ;;
        plan) COMPREPLY=($(compgen -W "explain audit" -- "$current")) ;;
        completion) COMPREPLY=($(compgen -W "bash" -- "$current")) ;;
        *) COMPREPLY=($(compgen -W "run console check plan thermal completion" -- "$current")) ;;
    esac
}

complete -F _radioctl radioctl
