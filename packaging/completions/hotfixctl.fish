# Completion of hotfixctl's command lines in fish. The program that is called tells itself what can come
# next.

function __hotfixctl_choices
    set -l words (commandline -opc)
    set -l begun (commandline -ct)
    set -l program $words[1]
    set -e words[1]
    $program --complete $words "$begun" 2>/dev/null
end

# What kind of word it is stands in the first line.
function __hotfixctl_wants
    set -l lines (__hotfixctl_choices)
    test "$lines[1]" = $argv[1]
end

function __hotfixctl_words
    set -l lines (__hotfixctl_choices)
    test "$lines[1]" = words
    and printf '%s\n' $lines[2..-1]
end

complete -c hotfixctl -f -a '(__hotfixctl_words)'
complete -c hotfixctl -n '__hotfixctl_wants files' -F
complete -c hotfixctl -n '__hotfixctl_wants folders' -f -a '(__fish_complete_directories)'
