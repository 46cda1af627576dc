# Completion of radioctl for fish. What can stand there is asked of the program: a word and what it does on each
# line, or ":files" and how the names of these files end.

function __radioctl_offers
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    set -l program (string replace -r '^~' $HOME -- $words[1])
    for line in (command $program completion-words $words[2..-1] $current 2>/dev/null)
        if string match -q ':files*' -- $line
            set -l endings (string split ' ' -- $line)[2..-1]
            # Behind an equals sign the name begins.
            set -l option (string match -r -- '^--[^=]*=' $current)
            set -l files (__fish_complete_path (string replace -- "$option" '' $current))
            if test (count $endings) -gt 0
                set files (string match -r '.*(?:/|'(string join '|' (string escape --style=regex -- $endings))')(?:\t.*)?$' -- $files)
            end
            string replace -r '^' -- "$option" $files
        else
            printf '%s\n' $line
        end
    end
end

complete -c radioctl -f -a '(__radioctl_offers)'
