#!/usr/bin/env bats
# What the history has not, or cannot be told.

load helper
load set

setup() {
    make_set
    add_target one.conf $'one\n'
    original one.conf $'old\n'
    ONE=$HOST/out/one.conf
}

teardown() {
    remove_host
}

# on_read_only_state WORD...: a run while nothing can be written to the state directory.
on_read_only_state() {
    unshare --user --map-root-user --mount true 2>/dev/null || skip "no directory can be mounted here"
    # shellcheck disable=SC2016  # expanded inside
    capture unshare --user --map-root-user --mount sh -c \
        'mount --bind "$1" "$1" && mount -o remount,bind,ro "$1" && shift && exec "$@"' \
        sh "$HOST/state" "$ZET_BIN/zet-client" --config "$HOST/zet.conf" "$@"
}

@test "a rollback that cannot be recorded is none that is done" {
    zet -q commit-config
    on_read_only_state rollback-config
    assert_status 1
    assert_file "$ONE" $'old\n'
    [[ $stderr == *"the status stays: "* ]]
    [[ $stderr == *"zet-client: error: what was put back is still on record as committed (run the command again once ZET_VAR_LIB_DIR can be written)"$'\n'* ]]
    run_zet rollback-config
    assert_status 0
    run_zet status
    [[ $output == *"committed: never"*"$ONE: not committed"* ]]
}

@test "a rollback that finds no room in the history is none that is done" {
    add_target two.conf $'two\n'
    zet -q commit-config
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/state/state.db-wal" -e trace=pwrite64 -e inject=pwrite64:error=ENOSPC \
        "$ZET_BIN/zet-client" --config zet.conf rollback-config
    assert_status 1
    assert_file "$ONE" $'old\n'
    assert_absent out/two.conf
    [[ $stderr == *"the history cannot be used: database or disk is full"* ]]
    [[ $stderr == *"zet-client: error: what was put back is still on record as committed (run the command again once ZET_VAR_LIB_DIR can be written)"$'\n'* ]]
    run_zet rollback-config
    assert_status 0
    run_zet status
    [[ $output == *"committed: never"*"$ONE: not committed"*"out/two.conf: not committed"* && $output != *edited* ]]
    run_zet commit-config --on-edit=refuse
    assert_status 0
}

@test "a rollback that has nothing to record is done on a read-only directory, too" {
    on_read_only_state rollback-config
    assert_status 0
}

@test "entries that are no longer kept were there all the same" {
    echo ZET_HISTORY_KEEP=0 >>zet.conf
    echo a=1 >plain
    zet param set plain a 2
    zet param set plain a 3
    run_zet history
    assert_status 0
    assert_output ""
    assert_stderr "zet-client: no change is kept any more"
    run_zet history show 1
    assert_refusal 1 "change 1 is not kept any more, or changed nothing after all (\"history\" tells what there is; ZET_HISTORY_KEEP says how many are kept)"
    run_zet history show 3
    assert_refusal 2 "there is no change 3: the last one is 2 (\"history\" tells them)"
}
