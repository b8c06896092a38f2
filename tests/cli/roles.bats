# A rollback beside a record of the other role that cannot be read: nobody knows what that role has committed.

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
    echo damaged >state/zet-server.manifest
    KEPT="$HOST/out/both.conf: may have been committed by the role server, too, and stays (--force puts it back)"
}

teardown() {
    remove_host
}

@test "a damaged record of the other role stops no rollback, and the files of both roles stay" {
    run_zet rollback-config
    assert_status 1
    [[ $stderr == *"warning: $HOST/state/zet-server.manifest:1: is no line INODE SIZE MTIME MODE PATH (remove the file, then commit again)"* ]]
    assert_output "$KEPT"$'\n'"$HOST/out/client.conf: put back as it was, mode 0644 -> 0640"
    assert_made both.conf $'x\n'
    assert_file out/both.conf.before_zet $'old both\n'
    assert_file out/client.conf $'old client\n'
    assert_absent out/client.conf.before_zet
    assert_file state/zet-server.manifest $'damaged\n'
    [[ $(cat state/zet-client.manifest) == *"out/both.conf" ]]
    [[ -e state/zet-client.status ]]
}

@test "a dry run tells that the files of both roles would stay" {
    remember_files
    run_zet rollback-config -n
    assert_status 3
    [[ $output == *"$KEPT"$'\n'* ]]
    assert_unchanged_but_staging
}

@test "what the list does not have any more may be of both roles, and stays" {
    sed -i '/both.conf/,/roles/d' templates/targets.toml
    run_zet rollback-config
    assert_status 1
    [[ $output == *"$KEPT"* ]]
    assert_made both.conf $'x\n'
    assert_file out/client.conf $'old client\n'
}

@test "force puts back what both roles may have committed" {
    run_zet rollback-config --force
    assert_status 0
    assert_file out/both.conf $'old both\n'
    assert_equal "$(names_in out)" "both.conf client.conf"
}

@test "once the damaged record is gone, the rollback comes to its end" {
    run_zet rollback-config
    assert_status 1
    rm state/zet-server.manifest
    run_zet rollback-config
    assert_status 0
    assert_file out/both.conf $'old both\n'
    assert_equal "$(names_in out)" "both.conf client.conf"
}
