# Completion of qmx for fish. What there is to complete stands in the program's own help, so it is read from there.
function __qmx_commands
    qmx --help 2>/dev/null | string replace -rf '^  ([a-z][a-z-]*) +(.*)$' '$1\t$2'
end

# The command in the line, or nothing.
function __qmx_command
    for word in (commandline -opc)[2..-1]
        if not string match -q -- '-*' $word
            echo $word
            return 0
        end
    end
    return 1
end

function __qmx_options
    qmx (__qmx_command) --help 2>/dev/null | string replace -rf '^  ((-\w,)?--[a-z-]+).*$' '$1' | string split ','
end

# The names that the option before the cursor takes, such as those of presets.
function __qmx_values
    set -l option (commandline -opc)[-1]
    qmx (__qmx_command) --help 2>/dev/null | string replace -rf -- "^  (-\w,)?$option TEXT:\{(.*?)\}.*\$" '$2' | string split ','
end

complete -c qmx -n 'not __qmx_command' -f -a '(__qmx_commands)'
complete -c qmx -n 'not __qmx_command' -f -a '--help --version'
complete -c qmx -n '__qmx_command; and test -n "$(__qmx_values)"' -f -a '(__qmx_values)'
complete -c qmx -n '__qmx_command; and string match -q -- "-*" (commandline -ct)' -f -a '(__qmx_options)'
