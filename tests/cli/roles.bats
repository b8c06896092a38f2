# Both roles on one host: they have one record, and a rollback of one leaves what the other has committed.

load helper
load set

setup() {
    make_set
    add_target both.conf $'x\n'
    add_target client.conf $'x\n'
    sed -i '/client.conf/,$ s/"both"/"client"/' templates/targets.toml
    original both.conf $'old both\n'
    original client.conf $'old client\n'
    server commit-config >/dev/null
    zet commit-config >/dev/null
    STAYS="$HOST/out/both.conf: stays for the role server, which has committed it"
    KEPT="$HOST/out/both.conf: may have been committed by the role server, too, and stays (--force puts it back)"
}

teardown() {
    remove_host
}

@test "a file of both roles is in sync for both, whichever its notice names" {
    assert_file out/both.conf "$(notice both.conf zet-init)"$'\nx\n'
    run_zet status
    assert_status 0
    PROGRAM=$ZET_BIN/zet-init run_zet status
    assert_status 0
}

@test "a commit of one role writes nothing of the other's, and names none of its services" {
    sed -i 's/"both"/&\nrestart = ["service"]/' templates/targets.toml
    local before role
    before=$(state_of_host | grep /out)
    for role in init client init; do
        PROGRAM=$ZET_BIN/zet-$role run_zet commit-config
        assert_status 0
        [[ $output == *" unchanged"$'\n' && $output != *restarted* ]]
        assert_equal "$(state_of_host | grep /out)" "$before"
    done
    # What one of them writes anew is the other's, too.
    echo y >>etc/both.conf
    run_zet commit-config
    [[ $output == *"to be restarted: service"* ]]
    assert_file out/both.conf "$(notice both.conf zet-init)"$'\nx\ny\n'
    PROGRAM=$ZET_BIN/zet-init run_zet status
    assert_status 0
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config
    assert_success "1 unchanged"
}

@test "a dry run tells that the status would go though all files stay" {
    zet -q rollback-config out/client.conf
    run_zet rollback-config -n
    assert_status 3
    assert_output "$STAYS
$HOST/out/client.conf: has no reserve, stays as it is"
    assert_stderr "zet-client: no file would change, but what is on record would"
    assert_equal "$(names_in state)" "zet-client-fs.status zet-client.status zet-server.status zet.lock"
    zet -q rollback-config
    assert_equal "$(names_in state)" "zet-server.status zet.lock"
    run_zet rollback-config -n
    assert_status 0
    assert_stderr ""
}

@test "a rollback of one role leaves what the other has committed, with its reserve" {
    run_zet rollback-config
    assert_success "$STAYS
$HOST/out/client.conf: put back as it was, mode 0644 -> 0640"
    assert_file out/both.conf "$(notice both.conf zet-init)"$'\nx\n'
    assert_equal "$(names_in out)" "both.conf both.conf.before_zet client.conf"
    assert_equal "$(names_in state)" "zet-server.status zet.lock"
    PROGRAM=$ZET_BIN/zet-init run_zet status
    assert_status 0
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    assert_success "$HOST/out/both.conf: put back as it was, mode 0644 -> 0640"
    assert_equal "$(names_in out) $(names_in state)" "both.conf client.conf zet.lock"
}

@test "what stays for the other role names its command from then on" {
    cp -p out/both.conf before
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config -n --diff
    assert_status 3
    [[ $output == *"-# \$ zet-init commit-config"$'\n'"+# \$ zet-client commit-config"* ]]
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    assert_success "$HOST/out/both.conf: stays for the role client, whose command its notice names now"
    assert_file out/both.conf "$(notice both.conf zet-client)"$'\nx\n'
    run_zet status
    assert_status 0
    run_zet commit-config
    assert_status 0
    zet -q undo
    cmp before out/both.conf
    PROGRAM=$ZET_BIN/zet-init run_zet status
    assert_status 0
}

@test "what a commit merged stays as it is for the other role" {
    echo edited >>out/both.conf
    zet commit-config --on-edit=merge
    server commit-config
    cp out/both.conf before
    PROGRAM=$ZET_BIN/zet-init zet rollback-config
    cmp before out/both.conf
    run_zet status
    assert_status 0
    run_zet commit-config
    assert_status 0
    cmp before out/both.conf
}

@test "what lost its reserve names the command of the role for which it stays, too" {
    rm out/both.conf.before_zet
    PROGRAM=$ZET_BIN/zet-init zet rollback-config
    assert_file out/both.conf "$(notice both.conf zet-client)"$'\nx\n'
    run_zet status
    assert_status 0
}

@test "what somebody edited names its command as before, until the other role commits it" {
    echo edited >>out/both.conf
    run_zet status
    [[ $output == *"$HOST/out/both.conf: edited"* ]]
    cp out/both.conf before
    PROGRAM=$ZET_BIN/zet-init zet rollback-config --force
    cmp before out/both.conf
    run_zet commit-config
    assert_status 0
    assert_file out/both.conf "$(notice both.conf zet-client)"$'\nx\n'
}

@test "where the history is damaged, a rollback leaves what may be of both roles" {
    break_store
    run_zet rollback-config
    assert_status 1
    assert_stderr "zet-client: warning: $HOST/state/state.db: $BROKEN_STORE
zet-client: error: $KEPT"
    assert_output "$HOST/out/both.conf: stays as it is
$HOST/out/client.conf: put back as it was, mode 0644 -> 0640"
    assert_file out/both.conf.before_zet $'old both\n'
    assert_file out/client.conf $'old client\n'
    assert_absent out/client.conf.before_zet
    [[ -e state/zet-client.status ]]
}

@test "a dry run tells that the files of both roles would stay" {
    break_store
    remember_files
    run_zet rollback-config -n
    assert_status 1
    [[ $output == *"$HOST/out/both.conf: stays as it is"* && $stderr == *"$KEPT"* ]]
    assert_unchanged_but_staging
}

@test "force puts back what both roles may have committed" {
    break_store
    run_zet rollback-config --force
    assert_status 0
    assert_file out/both.conf $'old both\n'
    assert_equal "$(names_in out)" "both.conf client.conf"
}

@test "what the list does not have any more is known to be of both roles, and stays" {
    sed -i '/both.conf/,/roles/d' templates/targets.toml
    run_zet rollback-config
    assert_success "$HOST/out/client.conf: put back as it was, mode 0644 -> 0640
$STAYS"
}

@test "once the damaged history is gone, a rollback comes to its end" {
    break_store
    run_zet rollback-config
    assert_status 1
    rm state/state.db*
    run_zet rollback-config
    assert_status 0
    assert_file out/both.conf $'old both\n'
    assert_equal "$(names_in out)" "both.conf client.conf"
}
