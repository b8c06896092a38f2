# undo: what is known of the files, and by whom they are committed, goes back by what the entry changed, and no more.

load helper
load set

setup() {
    make_set_of_one $'realm = ${realm}\n'
}

teardown() {
    remove_host
}

# list_edit: a line that the lists ask for in a file of its own, $PLAIN.
list_edit() {
    PLAIN=$HOST/plain.conf
    printf 'size=3\ncolor=red\n' >plain.conf
    printf '[[edits]]\nfile = "%s"\nparam = "size"\nvalue = "${realm}"\nroles = "both"\n' "$PLAIN" >>templates/targets.toml
}

# roles: who has committed $ONE.
roles() {
    store "SELECT CAST(roles AS TEXT) FROM known, states WHERE state = id AND path = '$ONE'"
}

# assert_state WORD PROGRAM: of $ONE.
assert_state() {
    PROGRAM=$ZET_BIN/$2 run_zet status
    [[ $output == *"$ONE: $1"* ]] || differ "$2 status" "$1" "$output"
}

# assert_refuses_edit: the next commit tells that somebody wrote $ONE.
assert_refuses_edit() {
    local before
    before=$(with_end out/one.conf)
    run_zet commit-config --on-edit=refuse
    assert_status 1
    [[ $stderr == *"$ONE"* ]]
    assert_equal "$(with_end out/one.conf)" "$before"
}

@test "a role that has left since stays away, and the other one takes its file with it" {
    server -q commit-config
    zet -q commit-config
    zet -q option set REALM NEW.ORG
    server -q commit-config
    zet -q rollback-config
    server undo 4
    assert_equal "$(roles)" "6:server"
    run_zet status
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    assert_success "$ONE: put back as it was, mode 0644 -> 0640"
    assert_file out/one.conf $'old\n'
    assert_equal "$(names_in state)" "zet.lock"
}

@test "a role that came since stays, with its status" {
    server -q commit-config
    zet -q option set REALM NEW.ORG
    server -q commit-config
    zet -q commit-config
    server undo 3
    assert_equal "$(roles)" "6:server6:client"
    [[ -e state/zet-client.status && -e state/zet-client-fs.status ]]
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    assert_success "$ONE: stays for the role client, whose command its notice names now"
    grep -q NEW.ORG out/one.conf || grep -q realm out/one.conf
}

@test "what only one of several undos has left of a role is taken back by its number" {
    server -q commit-config
    zet -q commit-config
    zet -q undo
    zet -q undo
    assert_equal "$(roles)" "6:server6:client"
    zet undo 2
    assert_equal "$(roles)" "6:server"
    assert_equal "$(names_in state)" "zet-server.status zet.lock"
}

@test "where both roles have left, an undo lets come back only the one that the change was about" {
    list_edit
    server -q commit-config
    zet -q commit-config
    zet -q rollback-config
    server -q rollback-config
    run_zet undo 2
    assert_status 0
    assert_equal "$(roles)" ""
    assert_equal "$(names_in state)" "zet.lock"
    run_zet undo 3
    assert_status 0
    assert_equal "$(roles)" "6:client"
    assert_equal "$(names_in state)" "zet-client-fs.status zet-client.status zet.lock"
    PROGRAM=$ZET_BIN/zet-init run_zet status
    [[ $output == *$'\ncommitted: never\n'"$ONE: not committed"* ]] || differ status "not committed" "$output"
    zet -q rollback-config --force
    assert_file out/one.conf $'old\n'
    assert_file plain.conf $'size=3\ncolor=red\n'
    assert_equal "$(names_in state)" "zet.lock"
}

@test "the lines of a role in a file of listed edits are its own, too" {
    list_edit
    server -q commit-config
    zet -q commit-config
    zet -q option set REALM NEW.ORG
    server -q commit-config
    zet -q rollback-config
    server -q undo 4
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    assert_status 0
    [[ $output != *"stays for the role"* ]]
    assert_file plain.conf $'size=3\ncolor=red\n'
}

@test "the lines of a role that came since stay" {
    list_edit
    server -q commit-config
    zet -q option set REALM NEW.ORG
    server -q commit-config
    zet -q commit-config
    server -q undo 3
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    [[ $output == *"$ONE: stays for the role client"* ]]
    run_zet status
    [[ $output != *"$PLAIN: not committed"* && $output != *"not committed: "* ]]
    zet -q commit-config
    grep -qx size=NEW.ORG plain.conf
    run_zet rollback-config
    assert_status 0
    assert_file plain.conf $'size=3\ncolor=red\n'
}

@test "an adopted edit is one again, whatever came and went after it" {
    local way
    for way in "option set REALM NEW.ORG; commit-config; undo; undo 3; undo 2" "undo; undo; undo 2" "undo"; do
        zet -q commit-config
        echo mine >>out/one.conf
        zet -q adopt "$ONE"
        while IFS= read -r -d ';' word; do
            # shellcheck disable=SC2086  # words
            zet -q $word
        done <<<"$way;"
        assert_state edited zet-client
        assert_refuses_edit
        zet -q rollback-config --force
        rm -rf state etc
        mkdir etc state
        sed -i /REALM/d zet.conf
    done
}

@test "an adopted edit is one again beside the other role" {
    zet -q commit-config
    echo mine >>out/one.conf
    zet -q adopt "$ONE"
    server -q commit-config
    zet -q undo
    zet -q undo 2
    assert_state edited zet-client
    assert_refuses_edit
}

@test "an adopted edit is one again for the other role, too" {
    zet -q commit-config
    echo mine >>out/one.conf
    zet -q adopt "$ONE"
    server -q commit-config
    zet -q undo 2
    assert_equal "$(roles)" "6:server6:client"
    assert_state edited zet-client
    assert_state edited zet-init
}

@test "what stays as an edit on a way back is one" {
    zet -q commit-config
    echo mine >>out/one.conf
    zet -q adopt "$ONE"
    zet -q option set REALM NEW.ORG
    zet -q commit-config
    run_zet rollback-config --to 1 --keep-edits
    assert_status 0
    [[ $output == *"$ONE: kept, edited, stays as it is"* ]]
    assert_state edited zet-client
    assert_refuses_edit
    run_zet rollback-config --to 1 --keep-edits
    assert_status 0
    assert_equal "$(store "SELECT max(number) FROM entries")" 5
    assert_state edited zet-client
}

@test "the services of the role that has committed are named, whoever types the undo" {
    printf 'restart = { server = ["srvd"], client = ["clid"] }\n' >>templates/targets.toml
    server -q commit-config
    local i
    for i in 1 2 3; do
        run_zet undo
        assert_status 0
        [[ $output == *"to be restarted: srvd"$'\n'* && $output != *clid* ]] || differ services srvd "$output"
    done
}

@test "a directory below what is committed is not undone" {
    mkdir etc2
    zet -q option set ZET_CFG_DIR "$HOST/etc2"
    zet -q commit-config
    local before
    before=$(with_end zet.conf)
    run_zet undo 1
    assert_status 1
    assert_stderr "zet-client: error: $HOST/zet.conf: ZET_CFG_DIR cannot be changed while something is committed, which is known there (--force puts back what was there before all the same)
zet-client: nothing was changed"
    assert_equal "$(with_end zet.conf)" "$before"
    run_zet undo -n 1
    assert_status 1
    zet -q undo
    run_zet undo 1
    assert_status 0
    grep -qx "ZET_CFG_DIR=$HOST/etc" zet.conf
}

@test "a directory below what is committed is undone with --force, or together with the commit" {
    mkdir etc2
    printf 'a=1\n' >plain.conf
    zet -q param set plain.conf a 2
    zet -q option set ZET_CFG_DIR "$HOST/etc2"
    zet -q commit-config
    run_zet rollback-config --to 1
    assert_status 0
    grep -qx "ZET_CFG_DIR=$HOST/etc" zet.conf
    zet -q undo
    run_zet undo 2 --force
    assert_status 0
    grep -qx "ZET_CFG_DIR=$HOST/etc" zet.conf
}

@test "a status that stood there before the first entry comes back" {
    zet -q commit-config
    rm state/state.db*
    zet -q option set REALM NEW.ORG
    zet -q commit-config
    run_zet undo
    assert_status 0
    [[ -e state/zet-client.status && -e state/zet-client-fs.status ]]
    run_zet undo
    assert_status 0
    run_zet undo
    assert_status 0
    [[ -e state/zet-client.status && -e state/zet-client-fs.status ]]
}
