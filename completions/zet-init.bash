# Completion of zet-init and zet-client in bash.

# Runs the program for the host that the command line names.
_zet_run() {
    LC_ALL=C "$program" "${host[@]}" -q "$@" 2>/dev/null </dev/null
}

_zet_templates() {
    _zet_run template list | sed -n 's/^\([^:]*\): .*/\1/p'
}

_zet_targets() {
    _zet_run template list | sed -n 's/^[^:]*: \(.*\) (.*/\1/p'
}

# The numbers of the changes that the history of the host has.
_zet_changes() {
    _zet_run history | sed -n 's/^\([0-9][0-9]*\) .*/\1/p'
}

# The parameters that the file $1 of the host has.
_zet_names() {
    head -c 1000000 "$root$1" 2>/dev/null | sed -n 's/^[[:blank:]]*\([A-Za-z_][A-Za-z0-9_.-]*\)=.*/\1/p' | sort -u
}

# The parameters of the product, $1, and those that the host has of its own.
_zet_parameters() {
    printf '%s\n' $1
    _zet_run option list | sed -n 's/^\([A-Za-z_][A-Za-z0-9_]*\)=.*/\1/p'
}

# The files of the host whose names begin with $1: below a root, those in it.
_zet_files() {
    if [[ -z $root ]]; then
        compgen -f -- "$1"
        return
    fi
    local name file begin=''
    [[ $1 != /* ]] || begin=/
    compgen -f -- "$root/${1#/}" | while IFS= read -r name; do
        file=$begin${name#"$root/"}
        # Where the shell does not see that it is a directory.
        [[ ! -d $name || -d $file ]] || file+=/
        printf '%s\n' "$file"
    done
}

# _zet_keep_host OPTION VALUE: that the command line has it.
_zet_keep_host() {
    case $1 in
        -c | --config) host+=(--config "$2") ;;
        --root)
            root=${2/#'~/'/$HOME/}
            host+=(--root "$root") root=${root%/}
            ;;
    esac
}

_zet_is_of_history() {
    [[ " show diff export erase " == *" $1 "* ]]
}

# Sets $command to the words of the command before the cursor, $arguments to how many arguments follow them, the first of
# which is $file; $host and $root to the options that name the host.
_zet_read_words() {
    local i option
    command='' arguments=0 file='' host=() root=''
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
            -c | --config | --root | --module | -m | --message | -N | --count | --color | --log | --set | --value | --section | --to | \
                --on-edit | --format)
                option=${COMP_WORDS[i]}
                ((++i))
                [[ ${COMP_WORDS[i]} != = ]] || ((++i))
                ((i >= COMP_CWORD)) || _zet_keep_host "$option" "${COMP_WORDS[i]}"
                ;;
            =) ((++i)) ;; # The shell takes NAME=VALUE for three words.
            -*) ;;
            *)
                case $command in
                    '' | template | param | line | file | option) command+=${command:+ }${COMP_WORDS[i]} ;;
                    history) _zet_is_of_history "${COMP_WORDS[i]}" && command+=" ${COMP_WORDS[i]}" || ((++arguments)) ;;
                    *)
                        ((++arguments))
                        [[ $arguments -ne 1 ]] || file=${COMP_WORDS[i]}
                        ;;
                esac
                ;;
        esac
    done
}

# Sets $words to what the parameter $1 can be given.
_zet_values() {
    local flags='SERVICE_DISCOVERY ZET_HISTORY ZET_SYNC' file_systems='nfs4 nfs cifs smb3 afs ceph glusterfs'
    local edits='overwrite merge refuse'
    case " $flags " in *" $1 "*) words='yes no' ;; esac
    [[ $1 != NETWORK_FS_TYPE ]] || words=$file_systems
    [[ $1 != ZET_ON_EDIT ]] || words=$edits
}

_zet() {
    local parameters='DOMAIN DOMAIN_DN MINIMUM_UID NETWORK_FS_TYPE REALM SERVER SERVER_EXPORT_DIR SERVER_ID SERVICE_DISCOVERY
        TICKET_MAX_LIFE TICKET_MAX_RENEWABLE_LIFE VALID_GROUP_NAMES VALID_USER_NAMES ZET_CFG_DIR
        ZET_CFG_TEMPL_DIR ZET_HISTORY ZET_HISTORY_KEEP ZET_HISTORY_KEEP_EDITS ZET_HISTORY_MAX_FILE ZET_LANG
        ZET_ON_EDIT ZET_SYNC ZET_VAR_LIB_DIR'
    local program=$1 host root file current=$2 previous=${COMP_WORDS[COMP_CWORD - 1]} command arguments words='' files=''
    local options='-c --config --root --module -m --message -n --dry-run --diff --json -q --quiet -v --verbose --show-secrets --color --log
        -h --help -V --version'
    local commands='commit-config check-config rollback-config undo status adopt values template param line file option
        history explain doctor help'
    [[ $current != = ]] || current=''
    [[ $previous != = ]] || previous=${COMP_WORDS[COMP_CWORD - 2]}
    _zet_read_words
    case $command in
        '')
            words=$commands
            ;;
        commit-config) options+=' --set --run-checks --on-edit' words=$(_zet_templates) ;;
        check-config) options+=' --run-checks --no-checks' words=$(_zet_templates) ;;
        status) options+=' --changed --format' ;;
        rollback-config) options+=' --force --keep-edits --merge --to' words=$(_zet_targets) ;;
        undo)
            options+=' --force --merge'
            [[ $arguments -ne 0 ]] || words=$(_zet_changes)
            ;;
        template) words='list status diff install process upgrade' ;;
        param) words='get set unset restore' ;;
        line) words='get set restore' ;;
        file) words='strip reserve restore forget list' ;;
        option) words='get set unset list' ;;
        'template install') options+=' --force' words=$(_zet_templates) ;;
        'template status' | 'template diff' | 'template upgrade') words=$(_zet_templates) ;;
        'template process') options+=' --value --force' words=$(_zet_templates) ;;
        'param get') options+=' --section --no-section' ;;
        'param set' | 'param unset') options+=' --section --no-section --force --no-markers --no-backup' ;;
        'param restore') options+=' --section --no-section --all-blocks --force --no-markers --no-backup' ;;
        'line get') options+=' --section --no-section' ;;
        'line set') options+=' --section --no-section --force --no-markers --no-backup' ;;
        'line restore') options+=' --section --no-section --all-blocks --force --no-markers --no-backup' ;;
        'file strip') options+=' --force --no-backup' ;;
        'file restore' | 'file forget') options+=' --force' ;;
        'file list') options+=' --null' ;;
        history)
            options+=' -N --count' files=-f
            [[ $arguments -ne 0 ]] || words='show diff export erase'
            ;;
        'history show') options+=' --after' ;;
        doctor) options+=' --fix --no-backup' ;;
        help) words=$commands ;;
    esac
    case "$command $arguments" in
        'file list '*) words='' ;;
        'param '*' 0' | 'line '*' 0' | 'file '*' 0' | 'explain 0' | 'doctor 0' | 'adopt 0') files=-f ;;
        'history show 0' | 'history diff 0') words=$(_zet_changes) ;;
        'history diff 1') words=$(_zet_changes) files=-f ;;
        'history show 1' | 'history diff 2' | 'history erase 0') files=-f ;;
        'param '*' 1') words=$(_zet_names "$file") ;;
        'help 0') ;;
        'help '*) words='' ;;
        'option get 0' | 'option set 0' | 'option unset 0') words=$(_zet_parameters "$parameters" | sort -u) ;;
        'option set 1') _zet_values "$previous" ;;
        'template process 1') words='' files=-f ;;
        'template process '[2-9]*) words='' ;;
    esac
    [[ $current != -* ]] || words=$options files=''
    case $previous in
        -c | --config) words='' files=-f ;;
        --module) words='' files=-f root='' ;;
        --root) words='' files=-d ;;
        --color) words='auto always never' files='' ;;
        --log) words='stderr syslog' files='' ;;
        --on-edit) words='overwrite merge refuse' files='' ;;
        --format) words='words openmetrics' files='' ;;
        --to) words=$(_zet_changes) files='' ;;
        -m | --message | -N | --count | --set | --value | --section) words='' files='' ;;
    esac
    mapfile -t COMPREPLY < <(
        compgen -W "$words" -- "$current"
        case $files in
            -f) _zet_files "$current" ;;
            -d) compgen -d -- "$current" ;;
        esac
    )
    [[ -z $files ]] || compopt -o filenames 2>/dev/null || true
    [[ ${#COMPREPLY[@]} -ne 1 || ${COMPREPLY[0]} != */ ]] || compopt -o nospace 2>/dev/null || true
}

complete -F _zet zet-init zet-client
