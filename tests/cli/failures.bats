# System calls that fail during a commit: it says what and where, writes nothing by halves, and can be run again.

load helper
load set

setup() {
    make_set_of_one $'realm = ${realm}\n'
    ONE=$HOST/out/one.conf
    BROKEN_OFF="the commit did not come to its end, its status is not recorded (run it again to complete it)."
}

teardown() {
    remove_host
}

# commit_with CALLS ERROR [FILE]: a commit in which these system calls fail, on this file or on all.
commit_with() {
    local place=()
    [[ $# -lt 3 ]] || place=(-P "$3")
    capture strace -f -qq -o "$BASE/trace" "${place[@]}" -e "trace=$1" -e "inject=$1:error=$2" \
        "$ZET_BIN/zet-client" --config zet.conf commit-config --diff
    assert_status 1
    grep -q INJECTED "$BASE/trace"
}

# assert_not_written MESSAGE: just this error, and the target and its companions are as they were.
assert_not_written() {
    assert_stderr "zet-client: error: $1"
    assert_file out/one.conf $'old\n'
    assert_equal "$(names_in out)$(find state -name 'zet-*')" one.conf
}

# assert_completed: a run without failures comes to the end that it always comes to.
assert_completed() {
    run_zet commit-config
    assert_status 0
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    assert_file out/one.conf.before_zet $'old\n'
    assert_equal "$(names_in out)" "one.conf one.conf.before_zet"
    assert_equal "$(names_in state)" "zet-client-fs.status zet-client.status zet.lock"
    run_zet status
    assert_status 0
}

@test "a file system without locks" {
    commit_with fcntl ENOLCK
    assert_not_written "$HOST/state/zet.lock: cannot be locked: No locks available (let ZET_VAR_LIB_DIR be on a file system that has locks)"
    assert_completed
}

@test "no room for the private directory" {
    commit_with mkdir ENOSPC
    assert_not_written "$HOST/state: no directory for temporary files can be made here: No space left on device (make room, or let ZET_VAR_LIB_DIR be a directory that can be written)"
    assert_completed
}

@test "a list of targets whose reading breaks off" {
    commit_with read EIO "$HOST/templates/targets.toml"
    assert_not_written "$HOST/templates/targets.toml: reading the list of targets broke off: Input/output error (repair its file system)"
    assert_completed
}

@test "a template whose reading breaks off" {
    commit_with read EIO "$HOST/templates/one.conf"
    assert_not_written "$HOST/templates/one.conf: cannot be read: Input/output error (repair or replace the file or its file system)
zet-client: nothing was changed"
    assert_completed
}

@test "too many open files for a diff" {
    commit_with pipe2 EMFILE
    assert_not_written "$BROKEN_OFF Written: none. Not written: $ONE
zet-client: error: a pipe cannot be made: Too many open files (let the command open more files)"
    assert_completed
}

@test "a full disk when a target or its reserve is written" {
    local file
    for file in one.conf.before_zet one.conf; do
        # The kernel copies the target into its reserve.
        case $file in
            *.before_zet) commit_with copy_file_range ENOSPC "$HOST/out/one.conf" ;;
            *) commit_with /write ENOSPC "$HOST/out/$file.tmp" ;;
        esac
        [[ $stderr == "zet-client: error: $BROKEN_OFF Written: none. Not written: $ONE"$'\n'*"$HOST/out/$file"* ]]
        assert_file out/one.conf $'old\n'
        assert_equal "$(find . -name '*.tmp' -o -name '*_zet')" ""
    done
    assert_completed
}

@test "a target that cannot take its name" {
    commit_with /rename EACCES ././one.conf.tmp
    [[ $stderr == *"Written: none. Not written: $ONE"$'\n'*"$ONE"* ]]
    assert_file out/one.conf $'old\n'
    assert_completed
}

@test "a full disk when the status or the history is written" {
    commit_with /write ENOSPC "$HOST/state/state.db-wal"
    assert_not_written "$HOST/state/state.db: the history cannot be used: database or disk is full (make room, or set ZET_HISTORY=no)"
    commit_with /write ENOSPC "$HOST/state/zet-client.status"
    assert_stderr "zet-client: error: $BROKEN_OFF Written: $ONE. Not written: none
zet-client: error: $HOST/state/zet-client.status: cannot be written: Failed to write the status: No space left on device. (make room, or allow it; then commit again)"
    commit_with /write ENOSPC "$HOST/state/zet-client-fs.status"
    assert_stderr "zet-client: error: $BROKEN_OFF Written: none. Not written: none
zet-client: error: $HOST/state/zet-client-fs.status: could not be written whole (make room, then commit again)"
    assert_completed
}

@test "a status that cannot be written stays as it was, or stays away" {
    local file
    for file in zet-client.status zet-client-fs.status; do
        commit_with /write ENOSPC:when=1 "$HOST/state/$file"
        assert_absent "state/$file"
    done
    assert_completed
    echo NETWORK_FS_TYPE=smb3 >>zet.conf
    sed -i s/^COMMIT_TIME=.*/COMMIT_TIME=2001-02-03T04:05:06Z/ state/zet-client.status
    for file in zet-client.status zet-client-fs.status; do
        cp "state/$file" "$BASE/former"
        commit_with /write ENOSPC:when=1 "$HOST/state/$file"
        cmp "state/$file" "$BASE/former"
    done
}

@test "what cannot be made durable is a failure before the name changes" {
    commit_with fsync EIO "$HOST/out/one.conf.tmp"
    assert_file out/one.conf $'old\n'
    assert_completed
}
