# Another program writes a target between the look at it and the end of the command: its work is told, not recorded.

load helper
load set

setup() {
    make_set
}

teardown() {
    remove_host
}

# written_meanwhile LINE...: a target of which nothing would change, and a second one whose check is this script.
written_meanwhile() {
    add_target one.conf $'x\n'
    zet commit-config >/dev/null
    printf '#!/bin/sh\n%s\n' "$1" >"$BASE/write"
    chmod 755 "$BASE/write"
    add_target two.conf $'y\n' "check = [\"$BASE/write\"]"
}

assert_told() {
    assert_status 1
    [[ $stderr == *"error: $HOST/out/one.conf: another program wrote it after it was looked at (look at it, and run the command again)"* ]]
    assert_absent out/two.conf
}

@test "an unchanged target that another program writes meanwhile ends the commit, and nothing takes its place" {
    written_meanwhile "echo theirs >>'$HOST/out/one.conf'"
    # Working copies that are missing are installed before the first target is written.
    local state known="SELECT path, entry FROM known WHERE path <> '$HOST/etc/two.conf'"
    state=$(store "$known")
    run_zet commit-config
    assert_told
    assert_made one.conf $'x\ntheirs\n'
    assert_equal "$(store "$known")" "$state"
    # It is the other program's work, not the product's.
    run_zet status
    assert_status 3
    [[ $output == *"$HOST/out/one.conf: edited"* ]] || differ status "edited" "$output"
    run_zet rollback-config
    assert_status 1
    assert_made one.conf $'x\ntheirs\n'
}

@test "an unchanged target that another program replaces meanwhile ends the commit" {
    written_meanwhile "echo theirs >'$HOST/out/new'; mv '$HOST/out/new' '$HOST/out/one.conf'"
    run_zet commit-config
    assert_told
    assert_file out/one.conf $'theirs\n'
}

@test "an unchanged target that another program removes meanwhile ends the commit" {
    written_meanwhile "rm '$HOST/out/one.conf'"
    run_zet commit-config
    assert_told
    assert_absent out/one.conf
}

@test "what another program makes of a target that stays for the other role is not taken for the product's work" {
    add_target one.conf $'x\n'
    server commit-config >/dev/null
    zet commit-config >/dev/null
    # It is stopped when it has looked at the target, and before it closes its entry.
    strace -f -qq -P "$HOST/state/zet-client.status" -e trace=/unlink -e inject=/unlink:signal=STOP:when=1 -o "$BASE/trace" \
        "$ZET_BIN/zet-client" --config zet.conf rollback-config >"$BASE/output" 2>"$BASE/stderr" 3>&- &
    local strace=$!
    await_stop
    echo theirs >>out/one.conf
    go_on
    wait "$strace"
    PROGRAM=$ZET_BIN/zet-init run_zet status
    [[ $output == *"$HOST/out/one.conf: edited"* ]]
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    assert_status 1
    assert_file out/one.conf "$(notice one.conf zet-init)"$'\nx\ntheirs\n'
}

@test "what another program does to a target that is to change is recorded as nobody's work" {
    add_target one.conf $'x\n' 'mode = "0600"' "check = [\"$BASE/write\"]"
    printf '#!/bin/sh\n[ ! -e "%s" ] || chmod 0640 "%s"\n' "$HOST/meanwhile" "$HOST/out/one.conf" >"$BASE/write"
    chmod 755 "$BASE/write"
    zet commit-config >/dev/null
    chmod 0644 out/one.conf
    touch meanwhile
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"another program wrote it at the same time, and nothing was changed"* ]]
    assert_equal "$(stat -c %a out/one.conf)" 640
    assert_equal "$(store 'SELECT count(*) FROM entries')" 1
    run_zet status
    [[ $output == *"$HOST/out/one.conf: edited"* ]] || differ status "edited" "$output"
}

# status_beside FILE WORD...: a status that is stopped at its first look at the file, while this command writes.
status_beside() {
    run_beside "$1" /stat status "${@:2}"
}

@test "what another command edits in place during a status is not told as somebody's edit" {
    echo a=1 >f
    zet param set f a 2 >/dev/null
    status_beside "$HOST/f" zet param set f a 3
    [[ $output == *"$HOST/f: edit in place"* ]] || differ status "in place" "$output"
    # Somebody's edit is one all the same.
    status_beside "$HOST/f" eval 'zet param set f a 4; echo theirs >>f'
    [[ $output == *"$HOST/f: edit changed"* ]] || differ status "changed" "$output"
    assert_equal "$stderr" ""
}

@test "what another commit writes during a status is not told as edited" {
    add_target one.conf '${realm}'$'\n'
    zet commit-config >/dev/null
    status_beside "$HOST/out/one.conf" eval 'zet option set REALM OTHER.ORG; zet commit-config'
    assert_equal "$stderr" ""
    # The status has the values of its own beginning.
    [[ $output == *"$HOST/out/one.conf: pending"* ]] || differ status "pending" "$output"
}

@test "a status that looks again because another command wrote warns once" {
    mkdir etc/targets.d
    echo a=1 >f
    echo b=1 >g
    printf '[[edits]]\nfile = "%s/f"\nparam = "a"\nvalue = "3"\n' "$HOST" >etc/targets.d/10.toml
    zet commit-config >/dev/null
    zet param set g b 2 >/dev/null
    sed -i s/^a=3/a=4/ f
    rm etc/targets.d/10.toml
    run_beside "$HOST/g" /stat "status --diff" zet param set g b 3
    assert_equal "$stderr" "zet-client: warning: $HOST/f: the edit \"a\" is not in force any more, but what it set was changed, and stays"
}

@test "a directory does not move that another run has begun to use meanwhile" {
    add_target one.conf $'x\n'
    cp zet.conf before
    local words
    mkdir other
    for words in "option set ZET_VAR_LIB_DIR $HOST/other" "option unset ZET_CFG_DIR"; do
        run_beside "$HOST/state/zet.lock" openat "$words" zet commit-config
        assert_status 1
        [[ $stderr == *"cannot be changed while something is committed, which is known there"* ]]
        cmp before zet.conf
        zet -q rollback-config
    done
}

@test "what is foretold of an undo is of one moment, whatever is recorded and pruned meanwhile" {
    echo ZET_HISTORY_KEEP=1 >>zet.conf
    local count=0
    record_one() {
        count=$((count + 1))
        echo a=1 >"f$count"
        zet -q param set "f$count" a 2 >/dev/null
    }
    record_one
    strace -f -qq -e trace=fcntl -e inject=fcntl:delay_enter=60000 -o "$BASE/trace" \
        "$ZET_BIN/zet-client" --config zet.conf undo -n >"$BASE/output" 2>"$BASE/stderr" 3>&- &
    local strace=$!
    while kill -0 "$strace" 2>/dev/null; do
        record_one
        sleep 0.15
    done
    status=0
    wait "$strace" || status=$?
    assert_equal "$(<"$BASE/stderr")" ""
    assert_equal "$status" 3
}

@test "a file that a failed command did not write is no change of it" {
    echo A=1 >f
    run_beside ././f.before_zet /stat "param set f A 2" eval 'echo B=theirs >>f'
    assert_status 1
    [[ $stderr == *"f: another program wrote it at the same time, and nothing was changed"* ]] || differ refusal "" "$stderr"
    assert_file f $'A=1\nB=theirs\n'
    assert_equal "$(store 'SELECT count(*) FROM entries')" 0
    run_zet undo --force
    assert_status 1
    assert_file f $'A=1\nB=theirs\n'
}

@test "a file that another program creates during a first commit is no change of it" {
    add_target one.conf $'x\n'
    add_target two.conf $'y\n'
    run_beside ././two.conf /stat commit-config eval 'echo theirs >out/two.conf'
    assert_status 1
    [[ $stderr == *"two.conf: another program wrote it at the same time, and nothing was changed"* ]] || differ refusal "" "$stderr"
    assert_equal "$(store "SELECT count(*) FROM files WHERE path LIKE '%/out/two.conf'")" 0
    run_zet undo --force
    assert_status 0
    assert_absent out/one.conf
    assert_file out/two.conf $'theirs\n'
}
