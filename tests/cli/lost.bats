# A history of which something is lost.

load helper
load set

setup() {
    make_set_of_one $'x\n'
    printf 'a=1\nb=2\n' >conf
    zet -q commit-config
    STORE=$HOST/state/state.db
}

teardown() {
    remove_host
}

# flip FILE OFFSET: a bit of its byte there.
flip() {
    /usr/bin/python3 -c 'import sys
with open(sys.argv[1], "r+b") as file:
    file.seek(int(sys.argv[2]))
    byte = file.read(1)[0]
    file.seek(int(sys.argv[2]))
    file.write(bytes([byte ^ 16]))' "$1" "$2"
    rm -f state/state.db-shm
}

# assert_damage FILE WHAT: told by what looks, refused by what records, and no hindrance to go back.
assert_damage() {
    local told="$1: the history is damaged: $2 (move it away: what was there before the product is kept beside the files; or set ZET_HISTORY=no to edit without it)"
    run_zet history
    assert_refusal 1 "$told"
    run_zet status
    assert_status 0
    assert_stderr "zet-client: warning: $told"
    [[ $output == *"$ONE: in sync"* ]]
    run_zet param set conf a 2
    assert_refusal 1 "$told"
    run_zet commit-config
    assert_status 1
    assert_file conf $'a=1\nb=2\n'
    run_zet rollback-config --force
    assert_status 0
    assert_stderr "zet-client: warning: $told"
    assert_file out/one.conf $'old\n'
}

@test "a broken byte in the journal loses no history without a word" {
    flip state/state.db-wal 40
    assert_damage "$STORE" "all of its changes are gone"
}

@test "a journal that is cut loses no history without a word" {
    truncate -s 1000 state/state.db-wal
    rm -f state/state.db-shm
    assert_damage "$STORE" "all of its changes are gone"
}

@test "a history that is emptied beside its journal is damaged" {
    : >state/state.db
    assert_damage "$STORE" "its journal is there, and what belongs to it is gone"
}

@test "a history that is emptied is damaged where something is committed" {
    rm state/state.db-*
    : >state/state.db
    assert_damage "$STORE" "it is empty, though something is committed"
}

@test "a journal whose history is gone is damaged" {
    rm state/state.db
    assert_damage "$STORE-wal" "its journal is there, and what belongs to it is gone"
}

@test "a history that is moved away begins anew" {
    rm state/state.db state/state.db-wal state/state.db-shm
    run_zet param set conf a 2
    assert_status 0
    assert_stderr ""
    run_zet history
    assert_status 0
    assert_stderr ""
}

@test "the last entries of a journal that is cut are told, and their numbers not given again" {
    cp state/state.db-wal short
    zet -q param set conf a 2
    zet -q param set conf a 3
    cp short state/state.db-wal
    rm -f state/state.db-shm
    local lost="zet-client: warning: $STORE: its last changes, 2 to 3, are lost, as its journal is damaged (look at \"status\": what they wrote may be told as edited)"
    run_zet history
    assert_status 0
    assert_stderr "$lost"
    run_zet param set conf a 4
    assert_status 0
    assert_stderr "$lost"
    run_zet history --json
    assert_stderr ""
    assert_json '[entry["entry"] for entry in d["entries"]]' "[4, 1]"
    run_zet rollback-config --to 1
    assert_status 1
    [[ $stderr == *"go back to one from 4 on"* ]]
}
