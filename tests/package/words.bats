# The shells and the manual know the words that the commands themselves list in their help, and no others.

load package

setup_file() {
    export COMPLETIONS MANUAL ZET LC_ALL=C
    COMPLETIONS=$(cd "$BATS_TEST_DIRNAME/../.." && pwd)/completions
    MANUAL=$COMPLETIONS/../man/zet-init.1.scd
    ZET=${ZET_BUILD:-$BATS_TEST_DIRNAME/../../build/test}/bin/zet-client
}

# commands [WORD...]: those behind these words, in the order of their names.
commands() {
    listed_commands "$ZET" "$@" | sort
}

# options [WORD...]: what "--help" lists as options after these words, those of all commands included.
options() {
    "$ZET" "$@" --help | sed -n '/^Options/,/^$/s/^  \(-[^ ]*\).*/\1/p' | tr , '\n' | sort -u
}

# in_bash WORD...: what bash offers for the last word, one a line.
in_bash() {
    bash --noprofile --norc -c '
        source "$COMPLETIONS/zet-init.bash"
        _zet_templates() { printf "%s\n" krb5.conf ldap.conf; }
        _zet_targets() { printf "%s\n" /etc/krb5.conf /etc/ldap/ldap.conf; }
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
        _zet "$1" "${@: -1}" "${@: -2:1}"
        [ ${#COMPREPLY[@]} -eq 0 ] || printf "%s\n" "${COMPREPLY[@]}"' bash "$@" | sort
}

# in_zsh WORD...: the same for zsh, whose own functions that offer words are replaced.
in_zsh() {
    zsh -f -c '
        compadd() { shift; print -rl -- ${(M)@:#$words[CURRENT]*}; }
        compset() { words[CURRENT]=${words[CURRENT]#*=}; }
        _files() { if [[ $1 == -/ ]]; then print -rl -- *(/); else print -rl -- *; fi; }
        words=("$@") CURRENT=$#
        functions_of_zet=$(sed "\$d" "$COMPLETIONS/zet-init.zsh")
        eval "$functions_of_zet"
        _zet_templates() { print -l krb5.conf ldap.conf; }
        _zet_targets() { print -l /etc/krb5.conf /etc/ldap/ldap.conf; }
        _zet || true' zsh "$@" | sed '/^$/d' | sort
}

# offers EXPECTED WORD...: what both shells offer for the last word, separated by blanks.
offers() {
    local expected=$1 shell actual
    shift
    for shell in in_bash in_zsh; do
        actual=$("$shell" "$@" | paste -sd ' ')
        [ "$actual" = "$expected" ] || {
            printf '%s: %s\nexpected: %s\nactual:   %s\n' "$shell" "$*" "$expected" "$actual" >&2
            return 1
        }
    done
}

make_files() {
    cd "$BATS_TEST_TMPDIR" || return
    mkdir directory
    : >file
}

@test "TheHelpListsCommandsAndOptions" {
    [ "$(commands_of "$ZET" | wc -l)" -ge 20 ]
    options param set | grep -Fx -e --no-markers
    options param set | grep -Fx -e -n
}

@test "EveryHelpHasTheOptionsOfAllCommandsInAGroupOfTheirOwn" {
    local command all
    all=$("$ZET" --help | sed -n '/^Options of all commands:/,/^$/p')
    grep -F -e --dry-run <<<"$all"
    # shellcheck disable=SC2086  # a command may have two words
    while read -r command; do
        [ "$("$ZET" $command --help | sed -n '/^Options of all commands:/,/^$/p')" = "$all" ]
        [ "$("$ZET" $command --help | grep -c -e '^  -h,')" -eq 1 ]
    done < <(commands_of "$ZET")
}

@test "EveryCommandOfTheHelpIsOffered" {
    local family
    offers "$(commands | paste -sd ' ')" zet-client ''
    for family in template param line file option; do
        [ -n "$(commands "$family")" ]
        offers "$(commands "$family" | paste -sd ' ')" zet-client "$family" ''
    done
}

@test "EveryOptionOfTheHelpIsOfferedWithItsCommand" {
    local command
    # shellcheck disable=SC2086  # a command may have two words
    while read -r command; do
        offers "$(options $command | paste -sd ' ')" zet-client $command -
    done < <(commands_of "$ZET")
    offers "$(options | paste -sd ' ')" zet-client -
}

@test "AWordThatIsBegunIsCompleted" {
    offers "check-config commit-config" zet-init c
    offers "--dry-run" zet-init commit-config --dr
    offers "ldap.conf" zet-init check-config l
}

@test "OptionsBeforeTheCommandAreNoCommand" {
    offers "get restore set unset" zet-init -c template --root file -n param ''
    offers "krb5.conf ldap.conf" zet-init --root / commit-config krb5.conf ''
}

@test "TemplatesAreOfferedWhereOneIsNamed" {
    local command
    for command in commit-config check-config 'template install' 'template process'; do
        # shellcheck disable=SC2086
        offers "krb5.conf ldap.conf" zet-init $command ''
    done
    offers "" zet-init template process krb5.conf /tmp/target ''
}

@test "CommandsAreOfferedToTheCommandThatHelps" {
    offers "$(commands | paste -sd ' ')" zet-client help ''
    offers "param" zet-client help pa
    offers "" zet-client help status ''
}

@test "FilesAreOfferedWhereOneIsNamed" {
    make_files
    local command
    for command in adopt doctor explain 'param get' 'line set' 'file strip' 'template process krb5.conf'; do
        # shellcheck disable=SC2086
        offers "directory file" zet-client $command ''
    done
    offers "" zet-client param get file value ''
    offers "" zet-client status ''
    offers "/etc/krb5.conf /etc/ldap/ldap.conf" zet-client rollback-config ''
}

@test "ParametersOfTheProductAreOfferedWithWhatTheyCanBe" {
    offers "SERVER SERVER_EXPORT_DIR SERVER_ID" zet-client option set SERVER
    offers "REALM" zet-client option get R
    offers "no yes" zet-client option set ZET_SYNC ''
    offers "afs ceph cifs glusterfs nfs nfs4 smb3" zet-client option set NETWORK_FS_TYPE ''
    offers "" zet-client option set REALM ''
    offers "" zet-client option get REALM ''
}

@test "ValuesOfOptionsAreOffered" {
    make_files
    offers "directory file" zet-client --config ''
    offers "directory file" zet-client status --module ''
    offers "directory" zet-client --root ''
    offers "always auto never" zet-client --color ''
    offers "merge overwrite refuse" zet-client commit-config --on-edit ''
    offers "openmetrics words" zet-client status --format ''
    offers "stderr syslog" zet-client status --log ''
    offers "" zet-client commit-config --set ''
}

@test "AValueMayFollowItsOptionWithAnEqualsSign" {
    # bash hands the sign over as a word of its own.
    [ "$(in_bash zet-client --color = al)" = always ]
    [ "$(in_bash zet-client --set A = b param '' | paste -sd ' ')" = "get restore set unset" ]
    [ "$(in_zsh zet-client --color=al)" = always ]
}

# commands_of_manual: the headings of its commands, "*param get|set* _FILE_" being two.
commands_of_manual() {
    sed -n '/^# COMMANDS/,/^# OPTIONS/s/^\*\([a-z][^*]*\)\*.*/\1/p' "$MANUAL" | while read -r family names; do
        echo "$family"
        [[ -z $names ]] || tr '|' '\n' <<<"$names" | sed "s/^/$family /"
    done | sort -u
}

# bold_options: the words of its text, its examples left out, that are options of the commands.
bold_options() {
    sed '/^# EXAMPLES/,$d' "$MANUAL" | grep -oE '\*-[^*]*\*' | tr -d '*' | grep -oE '^--?[A-Za-z][a-z-]*| --[a-z-]+' |
        tr -d ' ' | sort -u
}

@test "TheManualDescribesEveryCommandOfTheHelp" {
    diff -u <(commands_of "$ZET" | sort) <(commands_of_manual)
}

@test "TheManualDescribesEveryOptionOfTheHelp" {
    # shellcheck disable=SC2086
    diff -u <(commands_of "$ZET" | while read -r command; do options $command; done | sort -u) <(bold_options)
}

@test "NumbersOfTheChangesOfThisHostAreOffered" {
    make_files
    mkdir bin
    printf '#!/bin/sh\n[ "$*" = "-q history" ] && printf "12  2026-11-22 10:12:03  root  client  status\\n3  x\\n"\n' >bin/zet-client
    chmod +x bin/zet-client
    PATH=$PWD/bin:$PATH
    cd directory
    offers '12 3' zet-client history show ''
    offers '12' zet-client history diff 1
    offers '12 3' zet-client history diff 12 ''
    touch erased
    offers 'erased' zet-client history erase ''
    offers 'erased' zet-client history show 12 e
    offers 'diff erase erased export show' zet-client history ''
    offers '--after' zet-client history show 12 --af
    offers '--count' zet-client history --cou
    offers '' zet-client commit-config -m ''
}
