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

@test "a file of which the history is damaged goes back from its reserve, as a trial foretells" {
    echo mine >>out/one.conf
    change_store "UPDATE known SET kind = 7 WHERE path LIKE '%/one.conf'"
    run_zet file restore -n --force out/one.conf
    assert_status 3
    run_zet file restore --force out/one.conf
    assert_status 0
    [[ $stderr == *"the history is damaged"* ]]
    assert_file out/one.conf $'old\n'
    assert_absent out/one.conf.before_zet
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

# disable TEMPLATE: it is not in force any more.
disable() {
    sed -i "s|^\[templates.\"$1\"\]|&\nenabled = false|" templates/targets.toml
}

@test "a commit leaves alone what is not in force where the history is lost, and a rollback takes it back" {
    add_target two.conf $'y\n'
    zet -q commit-config
    lose_store
    disable one.conf
    run_zet status
    [[ $output != *"$ONE"* ]]
    zet -q commit-config
    assert_made one.conf $'x\n'
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$ONE: put back as it was"* ]]
    assert_file out/one.conf $'old\n'
    assert_equal "$(names_in out)" one.conf
    run_zet undo
    assert_status 0
    assert_made one.conf $'x\n'
}

@test "with a lost history, a rollback leaves what the other role has in force, and what was only reserved" {
    printf '\n[templates."other.conf"]\ntarget = "%s"\nroles = "server"\n' "$ONE" >>templates/targets.toml
    printf 'x\n' >templates/other.conf
    sed -i 's/both/client/' templates/targets.toml
    disable one.conf
    server -q commit-config
    lose_store
    run_zet rollback-config
    assert_status 0
    [[ $output != *"$ONE"* ]]
    assert_equal "$(names_in out)" "one.conf one.conf.before_zet"
    server -q rollback-config
    zet -q file reserve "$ONE"
    run_zet rollback-config
    [[ $output != *"put back"* ]]
    assert_equal "$(names_in out)" "one.conf one.conf.before_zet"
}

@test "a rollback takes back what is not in force any more, whatever became of the history" {
    local loss
    for loss in lose_store ": >state/state.db" break_store; do
        zet -q commit-config
        rm -f state/state.db-*
        eval "$loss"
        disable one.conf
        run_zet rollback-config -n "$ONE"
        assert_status 3
        run_zet rollback-config
        assert_status 0
        assert_file out/one.conf $'old\n'
        assert_equal "$(names_in out) $(names_in state)" "one.conf zet.lock"
        sed -i /enabled/d templates/targets.toml
        lose_store
    done
}

@test "what somebody edited since, and what no commit made, is not taken for left over where the history is lost" {
    zet -q commit-config
    lose_store
    disable one.conf
    cp out/one.conf made
    echo mine >>out/one.conf
    run_zet commit-config
    assert_status 0
    run_zet rollback-config
    assert_status 1
    [[ $output == *"$ONE: edited, stays as it is"* ]]
    grep -qx mine out/one.conf
    lose_store
    echo mine >out/one.conf
    run_zet status
    assert_status 0
    [[ $output != *"$ONE"* ]]
    run_zet rollback-config
    assert_status 0
    assert_file out/one.conf $'mine\n'
    assert_file out/one.conf.before_zet $'old\n'
}

@test "a commit that takes over what is as it is to be already is an entry, and a trial tells it" {
    lose_store
    run_zet status
    assert_status 3
    [[ $output == *"$ONE: not committed"* ]]
    run_zet commit-config -n
    assert_status 3
    run_zet commit-config -m "found again"
    assert_status 0
    run_zet status
    assert_status 0
    run_zet history
    assert_status 0
    [[ $output == *"found again"* ]]
    run_zet commit-config -n
    assert_status 0
    run_zet undo
    assert_status 0
    run_zet status
    [[ $output == *"$ONE: not committed"* ]]
    assert_made one.conf $'x\n'
}

@test "a target of a role that never committed is not missing, whatever became of the history" {
    add_target two.conf $'y\n'
    sed -i '0,/both/s//server/' templates/targets.toml
    server -q commit-config
    rm out/two.conf
    zet -q rollback-config
    break_store
    run_zet status
    assert_status 3
    [[ $output == *"committed: never"*"$HOST/out/two.conf: not committed"* ]]
    PROGRAM=$ZET_BIN/zet-init run_zet status
    [[ $output == *"$HOST/out/two.conf: differs"* ]]
}
