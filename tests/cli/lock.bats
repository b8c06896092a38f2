# One writer at a time: the lock of commits, rollbacks and edits.

load helper
load set

# The longest wait is that of the last test; it goes on while the others run.
setup_file() {
    make_set
    add_target one.conf $'${realm}\n'
    hold_lock
    export LATE_BASE=$BASE LATE_HOLDER=$HOLDER
    late_commit 3>&- &
    export LATE=$!
}

late_commit() {
    local status=0 begin=$SECONDS
    zet commit-config >"$BASE/late.output" 2>"$BASE/late.stderr" || status=$?
    echo "$status $((SECONDS - begin))" >"$BASE/late.tmp"
    mv "$BASE/late.tmp" "$BASE/late"
}

teardown_file() {
    BASE=$LATE_BASE
    HOST=$BASE/host
    [[ ! -p $BASE/release ]] || : >"$BASE/release"
    remove_host
}

setup() {
    make_set
    add_target one.conf $'${realm}\n'
}

teardown() {
    remove_host
}

# wait_in_background COMMAND...: it waits for the lock when this returns; what it prints is in $BASE/{output,stderr}.
wait_in_background() {
    rm -f "$BASE/trace"
    # A background job of a script ignores SIGINT otherwise.
    env --default-signal=INT ASAN_OPTIONS="$WITHOUT_LEAK_SEARCH" strace -qq -e trace=fcntl -o "$BASE/trace" \
        "$ZET_BIN/zet-client" --config "$HOST/zet.conf" "$@" >"$BASE/output" 2>"$BASE/stderr" 3>&- &
    WAITER=$!
    until grep -q "F_OFD_SETLK.*EAGAIN" "$BASE/trace" 2>/dev/null; do sleep 0.02; done
}

@test "a commit waits for the lock before it looks at anything, and goes on when it gets it" {
    hold_lock
    wait_in_background commit-config
    assert_equal "$(names_in state) $(names_in out)$(names_in etc)" "zet.lock "
    # What is done while it waits counts.
    echo 'made meanwhile' >templates/one.conf
    release_lock
    wait "$WAITER"
    sed -i 1d "$BASE/stderr"  # for whom it waits
    assert_file "$BASE/stderr" ""
    assert_made one.conf $'made meanwhile\n'
}

@test "an edit waits for the lock, and a dry run does not" {
    echo a=1 >conf
    hold_lock
    run_zet param set -n conf a 2
    assert_status 3
    wait_in_background param set conf a 2
    assert_file conf $'a=1\n'
    release_lock
    wait "$WAITER"
    grep -Fx a=2 conf
}

@test "a rollback waits for the lock, too" {
    original one.conf $'old\n'
    zet commit-config
    hold_lock
    wait_in_background rollback-config
    assert_made one.conf $'EXAMPLE.ORG\n'
    release_lock
    wait "$WAITER"
    assert_file out/one.conf $'old\n'
}

@test "what only reads does not wait" {
    zet commit-config
    hold_lock
    run_zet status
    assert_status 0
    run_zet check-config
    assert_status 0
    run_zet values
    assert_status 0
    run_zet rollback-config -n
    assert_status 3
    release_lock
}

# hold_directory: another process holds the lock of the current directory until release_directory.
hold_directory() {
    mkfifo "$BASE/release"
    flock . sh -c ': >"$1" && read -r _ <"$2"' sh "$BASE/held" "$BASE/release" 3>&- &
    HOLDER=$!
    while [[ ! -e $BASE/held ]]; do sleep 0.02; done
}

release_directory() {
    echo >"$BASE/release"
    wait "$HOLDER"
    rm "$BASE/release" "$BASE/held"
}

# edit_in_background VALUE: an edit of conf waits for the lock of the current directory when this returns.
edit_in_background() {
    env ASAN_OPTIONS="$WITHOUT_LEAK_SEARCH" strace -qq -e trace=flock -o "$BASE/trace" "$ZET_BIN/zet-client" --config zet.conf param set conf A "$1" 3>&- &
    WAITER=$!
    until grep -q 'LOCK_EX.*EAGAIN' "$BASE/trace" 2>/dev/null; do sleep 0.02; done
}

# make_own_file: nobody's own own/conf, and programs that nobody can run.
make_own_file() {
    copy_programs
    mkdir own
    echo a=1 >own/conf
    chown -R 65534:65534 own
}

# without_lock_file: as for a user who may not write into the product's directory.
without_lock_file() {
    rm -r state
    printf '%s=1\n' A B C D E F >conf
}

@test "an edit without a right on the product's directory waits for others in the directory of its file" {
    without_lock_file
    hold_directory
    edit_in_background 2
    assert_equal "$(head -n 1 conf)" "A=1"
    release_directory
    wait "$WAITER"
    grep -Fx A=2 conf
}

@test "edits at the same time without a right on the product's directory are all made" {
    without_lock_file
    local name
    for name in A B C D E F; do
        zet param set conf "$name" 2 --no-markers -q 3>&- &
    done
    for name in A B C D E F; do wait -n; done
    assert_file conf "$(printf '%s=2\n' A B C D E F)"$'\n'
    assert_file conf.before_zet "$(printf '%s=1\n' A B C D E F)"$'\n'
}

@test "an edit in a directory that others write waits for them, and one in a directory of one's own does not" {
    echo A=1 >conf
    hold_directory
    run_zet param set conf A 2
    assert_status 0
    chmod g+w .
    edit_in_background 3
    grep -Fx A=2 conf
    release_directory
    wait "$WAITER"
    grep -Fx A=3 conf
}

@test "who may not take the product's lock clears nothing away of the run that holds it" {
    [[ $(id -u) -eq 0 ]] || skip "no other user to be"
    make_own_file
    echo b=1 >other
    kill_at_rename other param set other b 2
    chgrp 65534 state
    chmod 2775 state
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set own/conf a 2
    assert_status 0
    [[ -e other.tmp ]]
    chmod 755 state
    run_zet param set other b 3
    [[ $stderr == "zet-client: removed $HOST/other.tmp, "* ]]
}

@test "an edit in a directory that cannot be locked is refused" {
    [[ $(id -u) -eq 0 ]] || skip "no other user to be"
    make_own_file
    chmod 300 own
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set own/conf a 2
    assert_refusal 1 "own: cannot be locked: Permission denied (let the user read the directory)"
    assert_file own/conf $'a=1\n'
}

@test "a signal ends the waiting, with a report and without a trace" {
    echo a=1 >conf
    hold_lock
    remember_host
    local signal words
    for words in commit-config "param set conf a 2"; do
        for signal in INT/Interrupt TERM/Terminated HUP/Hangup; do
            # shellcheck disable=SC2086  # words
            wait_in_background $words
            pkill -"${signal%/*}" -P "$WAITER"
            status=0
            wait "$WAITER" || status=$?
            assert_equal "$status" 1
            assert_file "$BASE/output" ""
            sed -i 1d "$BASE/stderr"  # for whom it waits
            assert_file "$BASE/stderr" "zet-client: error: ended by a signal (${signal#*/}) before all was done (run the command again)
"
            assert_host_unchanged
        done
    done
    release_lock
}

@test "the file of the lock is written over, as emptied it would be put on the disk at once" {
    zet commit-config
    strace -qq -y -e trace=ftruncate -o "$BASE/trace" "$ZET_BIN/zet-client" --config "$HOST/zet.conf" commit-config
    local cuts
    cuts=$(grep -F zet.lock "$BASE/trace")
    [[ $cuts == ftruncate* && $cuts != *", 0)"* ]]
}

@test "after 30 seconds a commit gives up and says who holds the lock" {
    while [[ ! -e $LATE_BASE/late ]]; do sleep 0.1; done
    local status seconds
    read -r status seconds <"$LATE_BASE/late"
    assert_equal "$status" 1
    [[ $seconds -ge 29 && $seconds -le 60 ]]
    assert_file "$LATE_BASE/late.output" ""
    local lock=$LATE_BASE/host/state/zet.lock holder="process $LATE_HOLDER (zet-init commit-config)"
    assert_file "$LATE_BASE/late.stderr" "zet-client: waiting for $holder, which holds $lock, for 30 s at most
zet-client: error: $lock: $holder has held the lock for 30 s (let it end, then try again)
"
    assert_equal "$(names_in "$LATE_BASE/host/state")$(names_in "$LATE_BASE/host/out")" "zet.lock"
}
