# Whatever the commands say can be translated: to a reader whose alphabet is another one, nothing is said in ours.

load package

setup_file() {
    set_up_package
    "$CMAKE" --install "$ZET_BUILD" --prefix "$PREFIX" >/dev/null
    local domain catalogues=$PREFIX/share/locale/xx/LC_MESSAGES
    mkdir -p "$catalogues"
    "$SOURCE_DIR/script/texts" "$BATS_FILE_TMPDIR/texts"
    for domain in libzet-config libzet-core libzet-deploy zet-tools; do
        msgen --no-wrap "$BATS_FILE_TMPDIR/texts/$domain.pot" |
            sed 's/CHARSET/UTF-8/; s/nplurals=INTEGER; plural=EXPRESSION/nplurals=2; plural=(n != 1)/' |
            /usr/bin/python3 "$BATS_TEST_DIRNAME/foreign.py" write | msgattrib --clear-fuzzy |
            msgfmt -o "$catalogues/$domain.mo" -
    done
}

setup() {
    cd "$BATS_TEST_TMPDIR" || return
    SAID=$BATS_TEST_TMPDIR/said
    "$SOURCE_DIR/script/example-root" client "$BATS_TEST_TMPDIR/host"
}

# zet WORD...: a command on the host, which may fail; what it says is kept. PROGRAM is the other name of the commands.
zet() {
    echo "$ ${PROGRAM:-zet-client} $*" >>"$SAID"
    LC_ALL=C.UTF-8 LANGUAGE=xx "$PREFIX/bin/${PROGRAM:-zet-client}" --root "$BATS_TEST_TMPDIR/host" "$@" >>"$SAID" 2>&1 || true
}

# nothing_is_english LEAST [WORD...]: of at least so many lines. Commands, their values, services and users have names; the others are what
# the test itself wrote.
nothing_is_english() {
    local least=$1 left names
    shift
    [ "$(grep -c '^[^$]' "$SAID")" -ge "$least" ]
    grep -qF '𝚎𝚛𝚛𝚘𝚛' "$SAID"
    # shellcheck disable=SC2046  # each is a word
    names=$(commands_of "$PREFIX/bin/zet-client" | tr ' ' '\n' | sort -u | paste -sd ' ')
    # shellcheck disable=SC2086
    left=$(/usr/bin/python3 "$BATS_TEST_DIRNAME/foreign.py" find zet-client zet-init root $names "$@" <"$SAID")
    [ -z "$left" ] || {
        echo "$left"
        return 1
    }
}

@test "WhatTheHelpSaysCanBeTranslated" {
    local command
    # shellcheck disable=SC2086  # a command may have two words
    while read -r command; do
        zet $command --help
    done < <(commands_of "$PREFIX/bin/zet-client")
    zet --help
    PROGRAM=zet-init zet --help
    zet nothing
    # Of what an option takes.
    nothing_is_english 400 auto always never stderr syslog words openmetrics overwrite merge refuse
}

@test "WhatIsWrongWithWordsCanBeTranslated" {
    local command
    # shellcheck disable=SC2086  # a command may have two words
    while read -r command; do
        zet $command
        zet $command A B C D E F
        zet $command --nothing
        zet $command --dry-run=X A
        zet $command --root
    done < <(commands_of "$PREFIX/bin/zet-client" | grep -vx 'help\|undo\|commit-config\|check-config\|rollback-config\|status\|values\|history.*')
    for command in undo commit-config check-config rollback-config status values history 'history show' 'history diff'; do
        # shellcheck disable=SC2086
        zet $command A1 A2 A3 A4
        # shellcheck disable=SC2086
        zet $command --nothing
    done
    zet
    zet -q -v status
    zet --root A --root B status
    zet --color RED status
    zet --log FILE status
    zet --dryrun status
    zet comit-config
    zet status --format XML
    zet commit-config --on-edit ASK
    zet commit-config --set A
    zet commit-config --set =
    zet commit-config --set ZET_SYNC=X
    zet history --count X
    zet history show X
    zet undo X
    zet undo 99
    zet undo --merge --force 1
    zet param set --message
    zet param set /etc/hosts A -x
    zet template process krb5.conf
    zet param get /etc/krb5.conf A --section ''
    zet param set /etc/hosts '' X
    zet line get /etc/hosts '('
    zet line set /etc/hosts '' X
    zet -c '' status
    zet --module '' status
    zet --module /nowhere.so status
    zet help nothing
    zet doctor --no-backup /etc/hosts
    # Of what an option takes, and what the library of regular expressions says.
    nothing_is_english 200 auto always never stderr syslog words openmetrics overwrite merge refuse missing closing parenthesis exports
}

@test "WhatParametersMustBeCanBeTranslated" {
    local conf=$BATS_TEST_TMPDIR/host/etc/zet/zet.conf
    zet option set DOMAIN -- -.
    zet option set SERVER -- -.
    zet option set REALM '"'
    zet option set LDAP_BASE_DN X
    zet option set MINIMUM_UID 007
    zet option set TICKET_MAX_LIFE X
    zet option set VALID_USER_NAMES '['
    zet option set ZET_CFG_DIR relative
    zet option set SERVER_EXPORT_DIR '/a"b'
    zet option set ZET_SYNC X
    zet option set ZET_LANG XX
    zet option set NETWORK_FS_TYPE X
    zet option set DOMAIN ''
    zet option set ZET_CFG_DIR ''
    zet option get X
    printf 'MINIMUM_UID=x\nZET_SYNC=X\nTICKET_MAX_LIFE=1x\nSERVER_EXPORT_DIR=x\nNETWORK_FS_TYPE=X\nNOT_KNOWN=1\n' >>"$conf"
    zet check-config
    zet -v commit-config
    zet values
    printf 'A=\0\nnothing\n' >>"$conf"
    zet status
    # Values of parameters.
    nothing_is_english 30 relative x afs ceph cifs glusterfs nfs yes no
}

@test "WhatIsDoneToAHostCanBeTranslated" {
    local command host=$BATS_TEST_TMPDIR/host
    printf 'A=1\n' >"$host/etc/a1"
    for command in status check-config 'commit-config -n' 'commit-config -m WHY' status 'status -v' values history 'history show 1' \
        'history diff 1' 'explain /etc/krb5.conf' 'explain /etc/krb5.conf:1' 'explain /etc/krb5.conf:9999' 'param set /etc/a1 A 2' \
        'param set /etc/a1 B 2 --no-markers' 'param get /etc/a1 C' 'param unset /etc/a1 A' 'explain /etc/a1' 'line set /etc/a1 ^A= A=3' \
        'line get /etc/a1 ^Z' 'line restore /etc/a1 ^Z' 'file list' 'file strip /etc/a1' 'file restore /etc/a1' 'file reserve /etc/a1' \
        'file forget /etc/a1' 'file reserve /etc/b1' 'doctor /etc/a1' 'param set /etc/krb5.conf A 2' 'param set /etc/krb5.conf A 2 --force' \
        status 'commit-config' 'commit-config --on-edit refuse' 'commit-config --on-edit merge' 'adopt /etc/krb5.conf' 'template install krb5.conf' \
        'template status' 'template diff krb5.conf' 'template upgrade' 'template process krb5.conf /etc/c1' 'undo -n' 'undo 1' 'undo' \
        'rollback-config -n' 'rollback-config --to 1 -n' rollback-config history 'history show 2' 'history erase /etc/a1' 'commit-config NO' \
        'rollback-config NO' 'adopt /etc/NO' 'param get /etc/NO A' 'doctor /etc/NO' 'explain /etc/NO' 'file restore /etc/NO' \
        'template process NO /etc/c1' 'template install NO' 'option get DOMAIN' 'option set DOMAIN EXAMPLE.NET'; do
        # shellcheck disable=SC2086  # each of it is a word
        zet $command
    done
    chmod 600 "$host/etc/krb5.conf"
    zet commit-config
    PROGRAM=zet-init zet status
    PROGRAM=zet-init zet commit-config
    # Services, the commands that their lists run, keys and values of the files.
    nothing_is_english 150 sssd nfsidmap
}

@test "WhatDoctorSaysCanBeTranslated" {
    local file=$BATS_TEST_TMPDIR/host/etc/a1 begin='# ---ZET_BEGIN---' end='# ----ZET_END----' text
    for text in "$begin\nA=1\n" "$begin\nA=1\nB=1\nC=1\n" "A=1\n$end\n" "$begin\n$begin\nA=1\n$end\n" "$begin\nA=1\n$end\n$end\n" "$begin x\nA=1\n$end\n" \
        "$begin\n$begin X\nA=1\n$end\n" "$begin\nA=1\n$end X\n$end X\n" "# --PRE-ZET-- A=1\n" "# --PRE-ZET-- A=1\nB=1\n" "# --ZET_CONFIG_COMMENT--\n# X\n" \
        "# --ZET_COMMENT_END--\n" "#---ZET_BEGIN---\nA=1\n$end\n" "$begin\r\nA=1\n$end\n" "A=1 $begin\n" "$begin\n$end\n" "$begin \nA=1\n$end\n"; do
        # shellcheck disable=SC2059  # they hold no format
        printf "$text" >"$file"
        zet doctor /etc/a1
        zet doctor --fix -n /etc/a1
        zet param set /etc/a1 A 2
    done
    zet doctor /etc/NO
    nothing_is_english 60
}

# zet_that_fails CALLS WORD...: zet on a host that keeps no history, where these system calls fail as on a full disk.
zet_that_fails() {
    local calls=$1
    shift
    echo "$ zet-client, $calls fail: $*" >>"$SAID"
    LC_ALL=C.UTF-8 LANGUAGE=xx ASAN_OPTIONS=detect_leaks=0:${ASAN_OPTIONS:-} strace -f -qq -o /dev/null -e "trace=$calls" -e "inject=$calls:error=ENOSPC" \
        "$PREFIX/bin/zet-client" --root "$BATS_TEST_TMPDIR/host" "$@" >>"$SAID" 2>&1 || true
}

@test "WhatFailsWhileAFileIsWrittenCanBeTranslated" {
    local calls
    printf 'A=1\n' >"$BATS_TEST_TMPDIR/host/etc/a1"
    printf 'ZET_HISTORY=no\n' >>"$BATS_TEST_TMPDIR/host/etc/zet/zet.conf"
    for calls in rename,renameat,renameat2 fsync,fdatasync fchmod copy_file_range,sendfile; do
        zet_that_fails "$calls" param set /etc/a1 A 2
        zet_that_fails "$calls" param set /etc/a1 A 2 --no-backup
        zet_that_fails "$calls" commit-config krb5.conf
    done
    # The file is written in the product's language, not in this one.
    grep -F '𝙵𝚊𝚒𝚕𝚎𝚍 𝚝𝚘 𝚛𝚎𝚗𝚊𝚖𝚎 𝚏𝚒𝚕𝚎' "$SAID"
    nothing_is_english 8
}

@test "WhatIsWrongWithTheStoreCanBeTranslated" {
    echo "no database, but so many bytes that it could be one" >"$BATS_TEST_TMPDIR/host/var/lib/zet/state.db"
    chmod 600 "$BATS_TEST_TMPDIR/host/var/lib/zet/state.db"
    zet history
    zet status
    zet commit-config krb5.conf
    grep -F '𝚏𝚒𝚕𝚎 𝚒𝚜 𝚗𝚘𝚝 𝚊 𝚍𝚊𝚝𝚊𝚋𝚊𝚜𝚎' "$SAID"
    nothing_is_english 3
}
