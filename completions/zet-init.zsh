#compdef zet-init zet-client
# Completion of zet-init and zet-client in zsh.

# Runs the program for the host that the command line names.
_zet_run() {
    LC_ALL=C $words[1] $host -q "$@" 2>/dev/null </dev/null
}

_zet_templates() {
    _zet_run template list | command sed -n 's/^\([^:]*\): .*/\1/p'
}

_zet_targets() {
    _zet_run template list | command sed -n 's/^[^:]*: \(.*\) (.*/\1/p'
}

# The numbers of the changes that the history of the host has.
_zet_changes() {
    _zet_run history | command sed -n 's/^\([0-9][0-9]*\) .*/\1/p'
}

# The parameters that the file $1 of the host has.
_zet_names() {
    command head -c 1000000 "$root$1" 2>/dev/null |
        command sed -n 's/^[[:blank:]]*\([A-Za-z_][A-Za-z0-9_.-]*\)=.*/\1/p' | sort -u
}

# The parameters of the product, "$@", and those that the host has of its own.
_zet_parameters() {
    print -rl -- "$@"
    _zet_run option list | command sed -n 's/^\([A-Za-z_][A-Za-z0-9_]*\)=.*/\1/p'
}

# The files of the host: below a root, those in it.
_zet_files() {
    if [[ -z $root ]]; then
        _files
        return
    fi
    compset -P /
    _files -W $root
}

# _zet_keep_host OPTION VALUE: that the command line has it.
_zet_keep_host() {
    case $1 in
        (-c|--config) host+=(--config ${(Q)2}) ;;
        (--root)
            root=${${(Q)2}/#\~\//$HOME/}
            host+=(--root $root) root=${root%/}
            ;;
    esac
}

# Sets $command to the words of the command before the cursor, $arguments to how many arguments follow them, the first of
# which is $file; $host and $root to the options that name the host.
_zet_read_words() {
    local i
    command='' arguments=0 file='' host=() root=''
    for ((i = 2; i < CURRENT; i++)); do
        case $words[i] in
            (-c|--config|--root|--module|-m|--message|-N|--count|--color|--log|--set|--value|--section|--to|--on-edit|--format)
                ((++i))
                if (( i < CURRENT )); then _zet_keep_host $words[i-1] $words[i]; fi
                ;;
            (--config=*|--root=*) _zet_keep_host ${words[i]%%=*} ${words[i]#*=} ;;
            (-*) ;;
            (*)
                case $command in
                    (''|template|param|line|file|option) command+=${command:+ }$words[i] ;;
                    (history)
                        case $words[i] in
                            (show|diff|export|erase) command+=" $words[i]" ;;
                            (*) ((++arguments)) ;;
                        esac
                        ;;
                    (*)
                        ((++arguments))
                        if (( arguments == 1 )); then file=${(Q)words[i]}; fi
                        ;;
                esac
                ;;
        esac
    done
}

# Sets $known to what the parameter $1 can be given.
_zet_values() {
    local -a flags=(SERVICE_DISCOVERY ZET_HISTORY ZET_SYNC) file_systems=(nfs4 nfs cifs smb3 afs ceph glusterfs)
    local -a edits=(overwrite merge refuse)
    if (( ${flags[(Ie)$1]} )); then known=(yes no); fi
    if [[ $1 == NETWORK_FS_TYPE ]]; then known=($file_systems); fi
    if [[ $1 == ZET_ON_EDIT ]]; then known=($edits); fi
}

_zet() {
    local -a parameters=(DOMAIN DOMAIN_DN MINIMUM_UID NETWORK_FS_TYPE REALM SERVER SERVER_EXPORT_DIR SERVER_ID SERVICE_DISCOVERY
        TICKET_MAX_LIFE TICKET_MAX_RENEWABLE_LIFE VALID_GROUP_NAMES VALID_USER_NAMES ZET_CFG_DIR
        ZET_CFG_TEMPL_DIR ZET_HISTORY ZET_HISTORY_KEEP ZET_HISTORY_KEEP_EDITS ZET_HISTORY_MAX_FILE ZET_LANG
        ZET_ON_EDIT ZET_SYNC ZET_VAR_LIB_DIR)
    local -a host
    local root file command arguments current=$words[CURRENT] previous=$words[CURRENT-1]
    local -a known options=(-c --config --root --module -m --message -n --dry-run --diff --json -q --quiet -v --verbose
        --show-secrets --color --log -h --help -V --version)
    local -a commands=(commit-config check-config rollback-config undo status adopt values template param line file option
        history explain doctor help)
    _zet_read_words
    if [[ $current == --*=* ]] && compset -P '*='; then previous=${current%%=*} current=''; fi
    case $previous in
        (-c|--config) _zet_files; return ;;
        (--module) _files; return ;;
        (--root) _files -/; return ;;
        (--color) compadd -- auto always never; return ;;
        (--log) compadd -- stderr syslog; return ;;
        (--on-edit) compadd -- overwrite merge refuse; return ;;
        (--format) compadd -- words openmetrics; return ;;
        (--to) compadd -- ${(f)"$(_zet_changes)"}; return ;;
        (-m|--message|-N|--count|--set|--value|--section) return 1 ;;
    esac
    case $command in
        ('')
            known=($commands)
            ;;
        (commit-config) options+=(--set --run-checks --on-edit) known=(${(f)"$(_zet_templates)"}) ;;
        (check-config) options+=(--run-checks --no-checks) known=(${(f)"$(_zet_templates)"}) ;;
        (status) options+=(--changed --format) ;;
        (rollback-config) options+=(--force --keep-edits --merge --to) known=(${(f)"$(_zet_targets)"}) ;;
        (undo)
            options+=(--force --merge)
            if (( arguments == 0 )); then known=(${(f)"$(_zet_changes)"}); fi
            ;;
        (template) known=(list status diff install process upgrade) ;;
        (param) known=(get set unset restore) ;;
        (line) known=(get set restore) ;;
        (file) known=(strip reserve restore forget list) ;;
        (option) known=(get set unset list) ;;
        ('template install') options+=(--force) known=(${(f)"$(_zet_templates)"}) ;;
        ('template status'|'template diff'|'template upgrade') known=(${(f)"$(_zet_templates)"}) ;;
        ('template process') options+=(--value --force) known=(${(f)"$(_zet_templates)"}) ;;
        ('param get') options+=(--section --no-section) ;;
        ('param set'|'param unset') options+=(--section --no-section --force --no-markers --no-backup) ;;
        ('param restore') options+=(--section --no-section --all-blocks --force --no-markers --no-backup) ;;
        ('line get') options+=(--section --no-section) ;;
        ('line set') options+=(--section --no-section --force --no-markers --no-backup) ;;
        ('line restore') options+=(--section --no-section --all-blocks --force --no-markers --no-backup) ;;
        ('file strip') options+=(--force --no-backup) ;;
        ('file restore'|'file forget') options+=(--force) ;;
        ('file list') options+=(--null) ;;
        (history) options+=(-N --count) known=(show diff export erase) ;;
        ('history show') options+=(--after) ;;
        (doctor) options+=(--fix --no-backup) ;;
        (help) known=($commands) ;;
    esac
    if [[ $current == -* ]]; then
        compadd -- $options
        return
    fi
    case "$command $arguments" in
        (file\ list\ *) return 1 ;;
        (param\ *\ 0|line\ *\ 0|file\ *\ 0|'explain 0'|'doctor 0'|'adopt 0') _zet_files ;;
        (param\ *\ 1) compadd -- ${(f)"$(_zet_names $file)"} ;;
        ('history 0') compadd -- $known; _zet_files ;;
        ('history show 0'|'history diff 0') compadd -- ${(f)"$(_zet_changes)"} ;;
        ('history diff 1') compadd -- ${(f)"$(_zet_changes)"}; _zet_files ;;
        ('history show 1'|'history diff 2'|'history erase 0') _zet_files ;;
        (help\ 0) compadd -- $known ;;
        (help\ *) return 1 ;;
        ('option get 0'|'option set 0'|'option unset 0') compadd -- ${(fu)"$(_zet_parameters $parameters)"} ;;
        ('option set 1') _zet_values $previous; compadd -- $known ;;
        ('template process 0') compadd -- $known ;;
        ('template process 1') _zet_files ;;
        ('template process '*) return 1 ;;
        (*) compadd -- $known ;;
    esac
}

_zet "$@"
