# A dry run fails where the run itself does, and with the same words.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
    original one.conf $'old\n'
    echo 'a=1' >out/plain
    touch out/*
    zet -q commit-config
    zet -q param set "$HOST/out/plain" a 2
}

teardown() {
    chattr -R -ia "$HOST" 2>/dev/null || true
    remove_host
}

# make_immutable FILE...
make_immutable() {
    need_root
    chattr +i "$@" 2>/dev/null || skip "this file system knows no such files"
}

# assert_foretold WORDS COMMAND...: the command fails, a dry run of it before, too, and both tell the words.
assert_foretold() {
    local words=$1 run
    shift
    for run in -n ""; do
        # shellcheck disable=SC2086  # no word at all
        run_zet "$@" $run
        [[ $status == 1 && $output$stderr == *"$words"* ]] || differ "$* $run" "1 $words" "$status $output$stderr"
    done
}

@test "a rollback where others may write what tells root what to do" {
    need_root
    local place
    for place in zet.conf state etc; do
        chmod o+w "$place"
        assert_foretold "$HOST/$place: others may write it, so root does not use it" rollback-config
        chmod o-w "$place"
        chown 65534 "$place"
        assert_foretold "$HOST/$place: others may write it, so root does not use it" rollback-config
        chown 0 "$place"
    done
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
}

@test "a rollback in a directory that others may write" {
    need_root
    chmod 777 out
    assert_foretold "$HOST/out: others may write the directory of $HOST/out/one.conf (chmod o-w it)" rollback-config
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
}

@test "a directory of which an attribute keeps all files" {
    make_immutable out
    local words="$HOST/out: cannot be written, so $HOST/out/one.conf cannot be replaced: Operation not permitted"
    local plain="$HOST/out: cannot be written, so $HOST/out/plain cannot be replaced: Operation not permitted"
    assert_foretold "$words" rollback-config
    assert_foretold "$plain" rollback-config "$HOST/out/plain"
    assert_foretold "$plain" param set "$HOST/out/plain" a 3
    assert_foretold "$plain" line set "$HOST/out/plain" '^b' b
    assert_foretold "$plain" doctor --fix "$HOST/out/plain"
    for words in reserve restore forget strip; do
        assert_foretold "$plain" file "$words" "$HOST/out/plain"
    done
    assert_foretold "$plain" undo
    assert_foretold "$plain" rollback-config --to 1
}

@test "a file that an attribute keeps" {
    make_immutable out/plain
    assert_foretold "$HOST/out/plain: is immutable, and cannot be replaced (chattr -i it)" file restore "$HOST/out/plain"
    assert_foretold "$HOST/out/plain: is immutable, and cannot be replaced (chattr -i it)" rollback-config
    chattr -i out/plain
    zet -q param set "$HOST/out/plain" b 1
    chattr -i out/plain.before_zet
    rm out/plain.before_zet
    make_immutable out/plain
    assert_foretold "$HOST/out/plain: is immutable, and cannot be replaced (chattr -i it)" rollback-config
}

@test "templates, without a directory that can be locked" {
    mv state gone
    local words="$HOST/state/zet.lock: cannot be opened: No such file or directory (create the directory ZET_VAR_LIB_DIR, or run as a user who may write there)"
    assert_foretold "$words" template install one.conf
    assert_foretold "$words" template upgrade
    mv gone state
}

# assert_history_needed WORDS: by every command that would record what it does.
assert_history_needed() {
    local plain=$HOST/out/plain
    assert_foretold "$1" param set "$plain" a 3
    assert_foretold "$1" param unset "$plain" a
    assert_foretold "$1" param restore "$plain" a
    assert_foretold "$1" line set "$plain" '^b' b
    assert_foretold "$1" line restore "$plain" '^a'
    assert_foretold "$1" file strip "$plain"
    assert_foretold "$1" file reserve "$HOST/out/other"
    assert_foretold "$1" file forget "$plain"
    assert_foretold "$1" doctor --fix "$HOST/out/damaged"
    assert_foretold "$1" option set NTP_SERVER ntp
    assert_foretold "$1" option unset NTP_SERVER
    assert_foretold "$1" template install new.conf
    assert_foretold "$1" template upgrade one.conf
    assert_foretold "$1" template process new.conf "$HOST/out/new"
}

@test "a history into which nothing can be recorded" {
    echo "b=1" >out/other
    echo "new" >templates/new.conf
    echo NTP_SERVER=old >>zet.conf
    echo newer >>templates/one.conf
    printf '%s\n' '# ---ZET_BEGIN---' >out/damaged
    chmod 666 state/state.db
    assert_history_needed "$HOST/state/state.db: others may write it, so it is not used"
    chmod 600 state/state.db
    /usr/bin/python3 -c 'import sqlite3, sys; sqlite3.connect(sys.argv[1]).execute("PRAGMA user_version = 99")' state/state.db
    assert_history_needed "$HOST/state/state.db: was written by a newer version of the product"
    break_store
    assert_history_needed "$HOST/state/state.db: $BROKEN_STORE"
    echo ZET_HISTORY=no >>zet.conf
    run_zet param set out/other b 3 -n
    assert_status 3
}
