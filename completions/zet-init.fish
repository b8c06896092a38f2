# Completion of zet-init and zet-client in fish. Commands and options are those that the program's help lists.

# The words of the command line before the cursor: the program, and how the host is named.
function __zet_host
    set -l words (commandline -opc)
    set -l i 2
    echo $words[1]
    while test $i -le (count $words)
        switch $words[$i]
            case -c --config --root
                test $i -lt (count $words); and printf '%s\n' $words[$i] $words[(math $i + 1)]
                set i (math $i + 1)
            case '--config=*' '--root=*'
                echo $words[$i]
        end
        set i (math $i + 1)
    end
end

# The words that are no options and no values of options, behind the program.
function __zet_words
    set -l words (commandline -opc)
    set -l i 2
    while test $i -le (count $words)
        switch $words[$i]
            case -c --config --root --module -m --message -N --count --color --log --set --value --section --to --on-edit --format
                set i (math $i + 1)
            case '-*'
            case '*'
                echo $words[$i]
        end
        set i (math $i + 1)
    end
end

# The first one or two of them, as far as they are a command.
function __zet_command
    set -l words (__zet_words)
    switch "$words[1]"
        case template param line file option
            echo $words[1..2]
        case history
            if contains -- "$words[2]" show diff export erase
                echo $words[1..2]
            else
                echo history
            end
        case '*'
            echo $words[1]
    end
end

# How many arguments the command has already.
function __zet_arguments
    math (count (__zet_words)) - (count (string split -n ' ' -- (__zet_command)))
end

function __zet_run
    set -lx LC_ALL C
    command $argv </dev/null 2>/dev/null
end

function __zet_commands
    set -l program (commandline -opc)[1]
    __zet_run $program $argv --help | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z-]*\) *\(.*\)$/\1\t\2/p'
end

function __zet_options
    set -l program (commandline -opc)[1]
    __zet_run $program (string split -n ' ' -- (__zet_command)) --help |
        sed -n '/^Options/,/^$/s/^  \(-[^ ]*\).*/\1/p' | string split ,
end

function __zet_templates
    __zet_run (__zet_host) -q template list | string replace -rf '^([^:]*): (.*) \(.*$' '$1\t$2'
end

function __zet_targets
    __zet_run (__zet_host) -q template list | string replace -rf '^([^:]*): (.*) \(.*$' '$2\t$1'
end

function __zet_changes
    __zet_run (__zet_host) -q history | string replace -rf '^(\d+)  (.*)$' '$1\t$2'
end

# The parameters of the product, and those that the host has of its own.
function __zet_parameters
    set -l parameters 'DOMAIN DOMAIN_DN MINIMUM_UID NETWORK_FS_TYPE REALM SERVER SERVER_EXPORT_DIR SERVER_ID SERVICE_DISCOVERY
        TICKET_MAX_LIFE TICKET_MAX_RENEWABLE_LIFE VALID_GROUP_NAMES VALID_USER_NAMES ZET_CFG_DIR
        ZET_CFG_TEMPL_DIR ZET_HISTORY ZET_HISTORY_KEEP ZET_HISTORY_KEEP_EDITS ZET_HISTORY_MAX_FILE ZET_LANG
        ZET_ON_EDIT ZET_SYNC ZET_VAR_LIB_DIR'
    begin
        string match -ra '\S+' -- $parameters
        __zet_run (__zet_host) -q option list | string replace -rf '^([A-Za-z_]\w*)=.*' '$1'
    end | sort -u
end

# What the parameter can be given.
function __zet_values
    set -l flags 'SERVICE_DISCOVERY ZET_HISTORY ZET_SYNC'
    set -l file_systems 'nfs4 nfs cifs smb3 afs ceph glusterfs'
    set -l edits 'overwrite merge refuse'
    contains -- "$argv[1]" (string split ' ' -- $flags); and printf '%s\n' yes no
    test "$argv[1]" = NETWORK_FS_TYPE; and string split ' ' -- $file_systems
    test "$argv[1]" = ZET_ON_EDIT; and string split ' ' -- $edits
end

# The root that the command line names, without a slash at its end.
function __zet_root
    set -l root ''
    set -l previous ''
    for word in (__zet_host)
        test "$previous" = --root; and set root $word
        set -l given (string replace -rf '^--root=' '' -- $word); and set root $given
        set previous $word
    end
    string replace -r '/$' '' -- (string replace -r '^~/' $HOME/ -- $root)
end

# The parameters that the file has which the command names, below the root that it names.
function __zet_names
    set -l file (__zet_root)(__zet_words)[3]
    test -r $file; and head -c 1000000 $file | string replace -rf '^\s*([A-Za-z_][\w.-]*)=.*' '$1' | sort -u
end

# The words that an option takes, as the help has them: "--color TEXT:{auto,always,never}".
function __zet_choices
    set -l program (commandline -opc)[1]
    __zet_run $program (string split -n ' ' -- (__zet_command)) --help |
        string replace -rf "^ +(-.,)?$argv[1] .*\{(.*)\}.*" '$2' | string split ,
end

# The files of the host whose names begin with the argument: below a root, those in it.
function __zet_files
    set -l root (__zet_root)
    if test -z "$root"
        __fish_complete_path "$argv[1]"
        return
    end
    set -l begin (string match -r '^/' -- "$argv[1]")
    set -l rest (string replace -r '^/' '' -- "$argv[1]")
    for file in $root/$rest*
        set -l slash ''
        test -d $file; and set slash /
        printf '%s\n' "$begin"(string sub -s (math (string length -- $root/) + 1) -- $file)$slash
    end
end

# __zet_option_value OPTION BEGIN: what may follow the option; false where that takes nothing.
function __zet_option_value
    switch "$argv[1]"
        case -c --config
            __zet_files $argv[2]
        case --module
            __fish_complete_path $argv[2]
        case --root
            __fish_complete_directories $argv[2] ''
        case --color --log --on-edit --format
            __zet_choices $argv[1]
        case --to
            __zet_changes
        case -m --message -N --count --set --value --section
        case '*'
            return 1
    end
end

function __zet_argument
    set -l words (__zet_words)
    set -l arguments (__zet_arguments)
    switch (__zet_command)
        case ''
            __zet_commands
        case template param line file option
            __zet_commands $words[1]
        case help
            test $arguments -eq 0; and __zet_commands
        case commit-config check-config 'template install' 'template status' 'template diff' 'template upgrade'
            __zet_templates
        case 'template process'
            switch $arguments
                case 0
                    __zet_templates
                case 1
                    __zet_files (commandline -ct)
            end
        case rollback-config
            __zet_targets
        case 'param *'
            switch $arguments
                case 0
                    __zet_files (commandline -ct)
                case 1
                    __zet_names
            end
        case 'option *'
            switch $arguments
                case 0
                    __zet_parameters
                case 1
                    test $words[2] = set; and __zet_values $words[3]
            end
        case undo
            test $arguments -eq 0; and __zet_changes
        case history
            if test $arguments -eq 0
                __zet_commands history
                __zet_files (commandline -ct)
            end
        case 'history show' 'history diff'
            switch $arguments
                case 0
                    __zet_changes
                case 1
                    test $words[2] = diff; and __zet_changes
                    __zet_files (commandline -ct)
                case 2
                    test $words[2] = diff; and __zet_files (commandline -ct)
            end
        case 'file list'
        case 'history erase' 'line *' 'file *' explain doctor adopt
            test $arguments -eq 0; and __zet_files (commandline -ct)
    end
end

function __zet_complete
    __zet_option_value (commandline -opc)[-1] (commandline -ct); and return
    switch (commandline -ct)
        case '--*=*'
            set -l parts (string split -m 1 = -- (commandline -ct))
            __zet_option_value $parts | string replace -r -- '^' "$parts[1]="
        case '-*'
            __zet_options
        case '*'
            __zet_argument
    end
end

for program in zet-init zet-client
    complete -c $program -e
    complete -c $program -f -a '(__zet_complete)'
end
