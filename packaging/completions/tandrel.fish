# Completions of tandrel(1) for fish.

# What the word at the cursor can be: first, component (an argument of one), port, option or nothing.
function __tandrel_place
    set -l words (commandline -opc)[2..-1]
    if not set -q words[1]
        echo first
        return
    end
    switch $words[1]
        case hub sender receiver align
            echo component
            return
        case -h --help
            echo nothing
            return
    end
    # A port may look like an option.
    set -l place option
    for word in $words
        if test $place = port
            set place option
        else if contains -- $word --http-port --udp-port
            set place port
        end
    end
    echo $place
end

function __tandrel_is
    contains -- (__tandrel_place) $argv
end

complete -c tandrel -f
complete -c tandrel -n '__tandrel_is component' -F

# fish shows the words of a later command before those of an earlier one.
complete -c tandrel -k -n '__tandrel_is first' -a "
--help\t'Show the usage text'
-h\t'Show the usage text'"
complete -c tandrel -k -n '__tandrel_is first option' -a "
--no-sender\t'Do not offer this machine\'s audio'
--no-receiver\t'Do not play audio on this machine'
--browser\t'Open the dashboard in the browser'
--no-browser\t'Do not open the dashboard'
--http-port\t'Dashboard port, 4466 by default'
--udp-port\t'The hub\'s control port, 4465 by default'
--verbose\t'Let the components use the terminal'"
complete -c tandrel -k -n '__tandrel_is first' -a "
hub\t'Run td_hub with the arguments that follow'
sender\t'Run td_sender with the arguments that follow'
receiver\t'Run td_receiver with the arguments that follow'
align\t'Run td_align with the arguments that follow'"
