# Hosts whose lists ask for single lines and for no target: both roles have committed them all the same.

load helper
load set

setup() {
    make_set
    cat >templates/targets.toml <<-END
		[[edits]]
		file = "$HOST/out/plain"
		param = "a"
		value = "2"
		roles = "both"
	END
    printf 'a=1\n' >out/plain
    printf 'Q=1\n' >out/q
}

teardown() {
    remove_host
}

# statuses: the files that tell when a role has committed.
statuses() {
    find state -name '*.status' -printf '%f\n' | sort | paste -sd ' '
}

ALL_STATUSES="zet-client-fs.status zet-client.status zet-server.status"

@test "the status of a role that has lines alone stays when something else is undone" {
    server commit-config
    zet commit-config
    zet param set out/q Q 2
    run_zet undo
    assert_success "$HOST/out/q: restored
took back change 3 (\"undo 2\" goes further back)"
    assert_equal "$(statuses)" "$ALL_STATUSES"
    run_zet undo
    assert_status 0
    assert_equal "$(statuses)" "$ALL_STATUSES"
}

@test "the status of a role goes with the last of its lines, and comes back with them" {
    server commit-config
    zet commit-config
    zet undo
    assert_equal "$(statuses)" "zet-server.status"
    zet undo
    assert_equal "$(statuses)" "$ALL_STATUSES"
    zet rollback-config
    assert_equal "$(statuses)" "zet-server.status"
    run_zet undo
    assert_status 0
    assert_equal "$(statuses)" "$ALL_STATUSES"
    run_zet status
    assert_status 0
    [[ $output != *never* ]]
}

@test "a rollback to the entry that made the status leaves it" {
    zet commit-config
    zet param set out/q Q 2
    run_zet rollback-config --to 1
    assert_status 0
    assert_equal "$(statuses)" "zet-client-fs.status zet-client.status"
    zet undo
    assert_equal "$(statuses)" "zet-client-fs.status zet-client.status"
}

@test "a directory that has the records of committed lines stays the product's" {
    zet commit-config
    run_zet option set ZET_VAR_LIB_DIR "$HOST/other"
    assert_refusal 1 "$HOST/zet.conf: ZET_VAR_LIB_DIR cannot be changed while something is committed, which is known there (\"rollback-config\" of both roles first, and commit again afterwards)"
}
