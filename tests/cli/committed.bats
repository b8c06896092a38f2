# An edit in place of a file that a commit made, and the next one would overwrite.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\nplain = 1\n'
    original one.conf $'old = 1\n'
    ONE=$HOST/out/one.conf
}

teardown() {
    remove_host
}

EDITS=("param set out/one.conf other 2" "param restore out/one.conf other" "line set out/one.conf ^plain p=2"
    "line restore out/one.conf ^plain" "file strip out/one.conf" "file forget out/one.conf")

@test "a committed target is not edited" {
    zet -q commit-config
    remember_host
    local edit option ways
    for edit in "${EDITS[@]}"; do
        ways='--force --no-markers and "adopt" the file'
        [[ $edit != file* ]] || ways=--force
        for option in -n -v; do
            run_zet $option $edit
            assert_refusal 1 "out/one.conf: is made from [one.conf] and the next commit overwrites it (edit $HOST/etc/one.conf and commit, or use $ways)"
        done
    done
    assert_host_unchanged
}

@test "a committed target is edited with --force, and a commit takes that back as what the product wrote" {
    zet -q commit-config
    local edit
    for edit in "${EDITS[@]}"; do
        run_zet -n $edit --force
        [[ $stderr == "" && $status != 1 ]]
    done
    run_zet line set --force out/one.conf ^plain 'plain = 2'
    assert_success "out/one.conf: changed, the original is kept as out/one.conf.before_zet"
    run_zet status
    [[ $output == *"$ONE: pending"* ]]
    # The history has it, as the edit of anything else.
    run_zet commit-config
    assert_status 0
    assert_stderr ""
    run_zet file forget --force out/one.conf
    assert_success "out/one.conf: forgotten, its reserve is dropped"
    assert_absent out/one.conf.before_zet
}

@test "a target that the other role committed is not edited either" {
    server -q commit-config
    run_zet param set out/one.conf plain 2
    assert_status 1
    [[ $stderr == *"is made from [one.conf]"* ]]
}

@test "whatever way leads to a committed target, it is one" {
    zet -q commit-config
    ln -s out/one.conf link
    ln -s out other
    local file
    for file in link other/one.conf out/../out/./one.conf "$ONE"; do
        run_zet param set "$file" plain 2
        assert_status 1
        [[ $stderr == *"is made from [one.conf]"* ]]
    done
    assert_made one.conf $'realm = EXAMPLE.ORG\nplain = 1\n'
}

@test "what is not committed is edited" {
    run_zet param set -n --no-markers out/one.conf other 2
    assert_status 3
    echo a=1 >out/free
    zet -q commit-config
    run_zet param set -n out/free a 2
    assert_status 3
}

@test "a committed target that left the list is one until a commit or a rollback takes it back" {
    zet -q commit-config
    : >templates/targets.toml
    remember_host
    local edit
    for edit in "${EDITS[@]}"; do
        run_zet $edit
        assert_refusal 1 "out/one.conf: was made by a commit, and no list has it any more (put it into the lists again, take it back with \"rollback-config out/one.conf\", or use --force)"
    done
    assert_host_unchanged
    run_zet param set -n --force out/one.conf other 2
    assert_status 3
    zet -q rollback-config out/one.conf
    assert_file out/one.conf $'old = 1\n'
    run_zet param set --no-markers out/one.conf other 2
    assert_status 0
}

@test "looking, keeping and putting back a committed target is refused by nobody" {
    zet -q commit-config
    run_zet line get out/one.conf ^plain
    assert_success "plain = 1"
    run_zet file reserve out/one.conf
    assert_status 0
    run_zet file restore -n out/one.conf
    assert_status 3
}

@test "the mark of a committed target that was not there before is not dropped, and a rollback removes it" {
    add_target two.conf $'plain\n'
    server -q commit-config
    remember_host
    local option
    for option in -n -v; do
        run_zet $option file restore out/two.conf
        assert_refusal 1 "out/two.conf: was made by a commit, and there was no such file before (take it back with \"zet-init rollback-config out/two.conf\", or use --force)"
    done
    assert_host_unchanged
    run_zet file restore -n --force out/two.conf
    assert_status 3
    server -q rollback-config "$HOST/out/two.conf"
    assert_absent out/two.conf
    # Going back needs no history.
    server -q commit-config
    break_store
    run_zet file restore -n out/two.conf
    assert_status 3
}

@test "where the history cannot be used, an edit is refused before the first byte, and made without one" {
    zet -q commit-config
    break_store
    remember_host
    echo 'plain = 1' >conf
    remember_host
    run_zet line set conf ^plain 'plain = 2'
    assert_refusal 1 "$HOST/state/state.db: $BROKEN_STORE"
    assert_host_unchanged
    echo ZET_HISTORY=no >>zet.conf
    run_zet line set out/one.conf ^plain 'plain = 2'
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/state/state.db: $BROKEN_STORE; so nobody can tell whether the next commit overwrites out/one.conf"
}

@test "the directories stay where they are while something is committed" {
    zet -q commit-config
    local name
    for name in ZET_CFG_DIR ZET_CFG_TEMPL_DIR ZET_VAR_LIB_DIR; do
        run_zet option set "$name" "$HOST/elsewhere"
        assert_refusal 1 "$HOST/zet.conf: $name cannot be changed while something is committed, which is known there (\"rollback-config\" of both roles first, and commit again afterwards)"
    done
    run_zet option set ZET_VAR_LIB_DIR "$HOST/state"
    assert_success "$HOST/zet.conf: unchanged"
    zet -q rollback-config
    mkdir elsewhere
    run_zet option set ZET_VAR_LIB_DIR "$HOST/elsewhere"
    assert_success "$HOST/zet.conf: changed"
}

@test "the directory of the history stays while it knows of files that were edited in place" {
    mkdir elsewhere
    echo 'a=1' >conf
    zet -q param set conf a 2
    local command
    for command in 'set ZET_VAR_LIB_DIR '"$HOST/elsewhere" 'unset ZET_VAR_LIB_DIR'; do
        # shellcheck disable=SC2086  # words of a command line
        run_zet option $command
        assert_refusal 1 "$HOST/zet.conf: ZET_VAR_LIB_DIR cannot be changed while files are edited in place, which is known there (\"rollback-config\" first, and edit them again afterwards)"
    done
    zet -q rollback-config
    run_zet option set ZET_VAR_LIB_DIR "$HOST/elsewhere"
    assert_success "$HOST/zet.conf: changed"
}
