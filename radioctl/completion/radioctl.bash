# Completion of radioctl for bash.

_radioctl()
{
    local current previous command word
    local -a matches=()
    current=${COMP_WORDS[COMP_CWORD]}
    previous=${COMP_WORDS[COMP_CWORD - 1]}

    # bash takes "--trace=error" for three words.
    if [[ $current == = ]]; then
        current=
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi

    if [[ $previous == --trace ]]; then
        mapfile -t COMPREPLY < <(compgen -W "off error warning notice information" -- "$current")
        return
    fi

    command=
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
            run | console | completion | explain | audit | thermal | qualify | calibrate | lint | why | replay | describe | list | compare | report | export | import | push | grant)
                command=$word
                break
                ;;
            diff) # of tables, or of recordings
                command=${command:+$command-}diff
                break
                ;;
            show | check) # of recordings or boards, or of the store
                command=${command:+$command-}$word
                [[ $command == record-show ]] && command=show
                break
                ;;
            tables) # a command of its own, and one of the store
                command=${command:+$command-}$word
                [[ $command == tables ]] || break
                ;;
            plan | record | store) command=$word ;;
        esac
    done

    if [[ $previous == --detector ]]; then
        mapfile -t COMPREPLY < <(compgen -W "low high" -- "$current")
        return
    fi
    if [[ $previous == --method ]]; then
        mapfile -t COMPREPLY < <(compgen -W "fit search" -- "$current")
        return
    fi

    if [[ $previous == --format ]]; then
        mapfile -t COMPREPLY < <(compgen -W "csv json junit" -- "$current")
        return
    fi
    if [[ $previous == --kind ]]; then
        mapfile -t COMPREPLY < <(compgen -W "calibration thermal audit acceptance" -- "$current")
        return
    fi
    if [[ $previous == --verdict ]]; then
        mapfile -t COMPREPLY < <(compgen -W "pass fail none" -- "$current")
        return
    fi

    if [[ $previous == --junit || $previous == --script ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        compopt -o filenames 2> /dev/null
        return
    fi

    if [[ $current == -* ]]; then
        case $command in
            run) word="--help --json --hardware --dry-run --junit --store --serial --station --operator --trace --verbose" ;;
            console) word="--help --json --hardware --dry-run --trace --verbose" ;;
            explain) word="--help --json --channel --tx --rx" ;;
            audit) word="--help --json --hardware --csv --store --serial --station --operator" ;;
            thermal) word="--help --json --carrier --station --csv --html --store --serial --operator" ;;
            qualify) word="--help --json --hardware --force --channel --settle-time --detector --real-time" ;;
            calibrate) word="--help --json --hardware --force --verbose --channel --method --probes --band --step --temperatures --i-range --q-range
                --shrink --min-delta --max-iterations --settle-time --detector --serial --station --journal --out --html
                --resume --restart --offline --accept-edge --accept-fail --no-qualify --attended --tolerance --dwell
                --real-time --store --operator" ;;
            tables-diff) word="--help --json --board --channel --all" ;;
            record-diff) word="--help --json --verbose --channel --driver --from --to --limit" ;;
            why) word="--help --json --channel --frequency --temperature" ;;
            show) word="--help --json --verbose --channel --driver --from --to" ;;
            replay) word="--help --json --jobs --timeout" ;;
            describe) word="--help --json --script" ;;
            check) word="--help --json --all --strict --hardware" ;;
            list) word="--help --json --store --serial --board --station --kind --verdict --from --to" ;;
            store-show | compare | import | store-check | grant) word="--help --json --store" ;;
            store-tables) word="--help --json --store --channel --out" ;;
            export) word="--help --json --store --format --out --serial --board --station --kind --verdict --from --to" ;;
            report) word="--help --json --store --html --all --serial --board --station --kind --verdict --from --to" ;;
            push) word="--help --json --store --all" ;;
            completion | lint) word="--help --json" ;;
            *) word="--help --json --version" ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$word" -- "$current")
        return
    fi

    case $command in
        run) mapfile -t matches < <(
            compgen -f -X '!*.toml' -- "$current"
            compgen -f -X '!*.script' -- "$current"
            compgen -d -- "$current"
        ) ;;
        console | check | explain | audit | qualify | calibrate | why) mapfile -t matches < <(
            compgen -f -X '!*.toml' -- "$current"
            compgen -d -- "$current"
        ) ;;
        thermal | lint | tables-diff) mapfile -t matches < <(
            compgen -f -X '!*.toml' -- "$current"
            compgen -f -X '!*.csv' -- "$current"
            compgen -d -- "$current"
        ) ;;
        show | record-diff | replay | describe | import) mapfile -t matches < <(compgen -f -- "$current") ;;
        plan) mapfile -t COMPREPLY < <(compgen -W "explain audit" -- "$current") && return ;;
        tables) mapfile -t COMPREPLY < <(compgen -W "lint diff why" -- "$current") && return ;;
        record) mapfile -t COMPREPLY < <(compgen -W "show diff" -- "$current") && return ;;
        push) mapfile -t matches < <(compgen -d -- "$current") ;;
        list | store-show | store-tables | compare | report | export | store-check | grant) return ;;
        store) mapfile -t COMPREPLY < <(compgen -W "list show tables compare report export import check push grant" -- "$current") && return ;;
        completion) mapfile -t COMPREPLY < <(compgen -W "bash" -- "$current") && return ;;
        *) mapfile -t COMPREPLY < <(compgen -W "run console check plan thermal qualify calibrate tables record replay describe store completion" -- "$current") && return ;;
    esac
    # Has bash put a backslash before the spaces of a name, and a slash behind a directory.
    compopt -o filenames 2> /dev/null
    COMPREPLY=("${matches[@]}")
}

complete -F _radioctl radioctl
