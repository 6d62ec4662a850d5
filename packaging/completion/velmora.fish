# Completion in fish for velmora, velmorad and velmora-cli. Verbs and options come from the programs'
# own help, names of controls from the servent that runs.

# Prints NAME, a tab and a description for the verbs, or the options, of a help text.
function __velmora_offers --argument-names kind help
    printf '%s\n' $help | awk -v kind=$kind '
        function describe() { return substr($0, 30, 1) == " " ? substr($0, 31) : "" }
        /^[^ ].*:$/ { section = $0 }
        kind == "option" && /^  -/ && section ~ /^Options/ {
            text = describe(); sub(/^-[a-z],/, "", $1); print $1 "\t" text
        }
        kind == "verb" && /^  [a-z]/ && section !~ /^(Options|Positionals|Examples)/ && $1 !~ /^velmora/ {
            print $1 "\t" describe()
        }'
end

function __velmora_complete
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    set -l program $words[1]
    command -q $program
    or return
    set -l previous $words[-1]
    set -l profile
    set -l verbs
    set -l arguments 0
    set -l help ($program --help 2>/dev/null | string collect)
    set -l at 2
    while test $at -le (count $words)
        switch $words[$at]
            case --profile
                set at (math $at + 1)
                set profile --profile $words[$at]
            case --listen --set --timeout --first --count --for --wait --slot
                set at (math $at + 1)
            case '-*'
            case '*'
                if __velmora_offers verb $help | string match -q -r "^"(string escape --style=regex -- $words[$at])"\t"
                    set -a verbs $words[$at]
                    set help ($program $verbs --help 2>/dev/null | string collect)
                else
                    set arguments (math $arguments + 1)
                end
        end
        set at (math $at + 1)
    end

    switch $previous
        case --profile
            __fish_complete_directories $current
            return
        case --set
            velmora-cli $profile --timeout 1 controls 2>/dev/null | awk 'NR > 1 { print $1 "=" }'
            return
        case --listen --timeout --first --count --for --wait --slot
            return
    end
    if string match -q -- '-*' $current
        __velmora_offers option $help
        if set -q verbs[1]
            printf '%s\n' --profile --json --timeout
        end
    else if string match -q -r '(?m)^  DIR ' $help
        __fish_complete_directories $current
    else if string match -q -r '(?m)^  CONTROL TEXT \.\.\.' $help
        or begin
            test $arguments -eq 0
            and string match -q -r '(?m)^  CONTROL ' $help
        end
        velmora-cli $profile --timeout 1 controls 2>/dev/null | awk 'NR > 1 { print $1 }'
    else
        __velmora_offers verb $help
        test $arguments -eq 0
        and string match -r -g '(?m)^Names: (.*)' $help | string split ' '
    end
end

for program in velmora velmorad velmora-cli
    complete -c $program -f -a '(__velmora_complete)'
end
