# Other people on the host, and other programs: nobody leads root elsewhere, and nobody's work is overwritten.

load helper
load set

setup() {
    make_set
    printf 'a=1\nb=2\n' >conf
    STRANGER=12345
    SECRET=$BASE/secret
    echo secret >"$SECRET"
    chmod 600 "$SECRET"
}

teardown() {
    chattr -R -ia "$HOST" 2>/dev/null || true
    remove_host
}

# home MODE: a directory of the stranger's, with a file of his.
home() {
    need_root
    mkdir home
    printf 'a=1\n' >home/conf
    chown -R "$STRANGER:$STRANGER" home
    chmod "$1" home
}

assert_secret_kept() {
    assert_file "$SECRET" $'secret\n'
    assert_equal "$(stat -c '%a %u %h' "$SECRET")" "600 0 1"
}

@test "root writes nothing into a directory that others may write, sticky or not" {
    need_root
    local mode remedy
    mkdir open
    echo a=1 >open/conf
    for mode in 777 1777; do
        chmod "$mode" open
        remedy="chmod o-w it"
        [[ $mode == 777 ]] || remedy="use a directory of root's own"
        remember_host
        for command in "param set open/conf a 2" "line set open/conf ^a a=2" "file reserve open/conf" \
            "param set -n open/conf a 2" "file reserve open/new"; do
            # shellcheck disable=SC2086 # words
            run_zet $command
            assert_status 1
            [[ $stderr == *"$HOST/open: others may write the directory of $HOST/open/"*" ($remedy)"$'\n' ]]
        done
        assert_files_unchanged
    done
}

@test "a link that anybody may have planted leads root nowhere" {
    need_root
    mkdir drop
    chmod 1777 drop
    ln -s "$SECRET" drop/conf
    chown -h "$STRANGER:$STRANGER" drop/conf
    add_target one.conf $'x\n'
    sed -i "s|$HOST/out/one.conf|$HOST/drop/conf|" templates/targets.toml
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"is a link of user $STRANGER that leads to"*"sudo -u '#$STRANGER'"* ]]
    run_zet param set --no-markers drop/conf a 2
    assert_status 1
    assert_secret_kept
}

@test "a file in its owner's directory is edited and stays his" {
    home 755
    chmod 4755 home/conf
    run_zet param set --no-markers home/conf a 2
    assert_success "home/conf: changed, the original is kept as home/conf.before_zet"
    assert_file home/conf $'a=2\n'
    assert_equal "$(stat -c '%a %u %g' home/conf home/conf.before_zet | paste -sd ' ')" \
        "4755 $STRANGER $STRANGER 4755 $STRANGER $STRANGER"
    run_zet file restore home/conf
    assert_status 0
    assert_equal "$(stat -c '%a %u %g' home/conf)" "4755 $STRANGER $STRANGER"
}

@test "a group that the owner of a file could not give it is kept, and nothing is said of it" {
    home 755
    chown "$STRANGER:0" home/conf
    chmod 640 home/conf
    run_zet param set home/conf a 2
    assert_success "home/conf: changed, the original is kept as home/conf.before_zet"
    assert_equal "$(stat -c '%a %u:%g' home/conf home/conf.before_zet | paste -sd ' ')" "640 $STRANGER:0 640 $STRANGER:0"
}

@test "a group that not even root can give is told" {
    home 755
    chown "$STRANGER:0" home/conf
    capture strace -f -qq -o "$BASE/trace" -e trace=fchown -e inject=fchown:error=EPERM \
        "$ZET_BIN/zet-client" --config zet.conf param set home/conf a 2
    assert_status 0
    [[ $stderr == *"warning: home/conf.before_zet: has not the owner and group of the file that it keeps (chown it)"* ]] || differ words "has not the owner" "$stderr"
    [[ $stderr == *"warning: Failed to keep the owner of file 'home/conf.tmp': "* ]] || differ words "conf.tmp" "$stderr"
}

@test "no file is set-user-ID before its owner is final" {
    home 755
    chown "$STRANGER:$STRANGER" conf
    local file
    for file in conf home/conf; do
        chmod 6755 "$file"
        strace -f -qq -y -e trace=fchown,fchmod,chmod,chown,fchmodat,fchownat -o "$BASE/trace" \
            "$ZET_BIN/zet-client" --config zet.conf param set "$file" a 3 >/dev/null
        assert_equal "$(stat -c '%a %u' "$file")" "6755 $STRANGER"
        # Of each file, the change of owner comes before the bits.
        awk -F '[<>]' '/06755|04755/ {bits[$2]; ++found} /chown/ && $2 in bits {exit 1} END {if (!found) exit 1}' "$BASE/trace"
    done
}

@test "a template is rendered into a file that lies with its user" {
    home 755
    add_target one.conf $'x\n'
    sed -i "s|$HOST/out/one.conf|$HOST/home/conf|" templates/targets.toml
    run_zet commit-config
    assert_success "$HOST/home/conf: changed, the original is kept as $HOST/home/conf.before_zet
1 changed"
    assert_equal "$(stat -c '%a %u' home/conf home/conf.before_zet | paste -sd ' ')" "644 $STRANGER 644 $STRANGER"
    run_zet rollback-config
    assert_status 0
    assert_file home/conf $'a=1\n'
    rm etc/one.conf
    run_zet template process one.conf home/conf
    assert_status 0
    assert_equal "$(stat -c %u home/conf etc/one.conf | paste -sd ' ')" "$STRANGER 0"
}

@test "what another user's directory leads to is not touched, whoever owns it" {
    home 755
    ln -s "$SECRET" home/link
    ln "$SECRET" home/hard
    echo roots >home/roots
    chown -h "$STRANGER:$STRANGER" home/link
    for file in link hard roots new; do
        run_zet param set --no-markers "home/$file" a 2
        assert_status 1
    done
    add_target one.conf $'x\n'
    run_zet template process one.conf home/new
    assert_refusal 1 "$HOST/home/new: would be a file of root's in a directory of user $STRANGER (run the command as that user: sudo -u '#$STRANGER' ..., or let root own $HOST/home)"
    rm home/hard
    assert_secret_kept
    assert_file home/roots $'roots\n'
    assert_equal "$(names_in home)" "conf link roots"
}

@test "in another user's directory root has that user's rights only" {
    home 755
    strace -f -qq -o "$BASE/trace" -e trace=setfsuid "$ZET_BIN/zet-client" --config zet.conf param set home/conf a 2
    grep -q "setfsuid($STRANGER)" "$BASE/trace"
    # He puts a link in the way after the way was judged: what he may not read is not read for him.
    rm "$BASE/trace"
    strace -f -qq -o "$BASE/trace" -e trace=setfsuid,openat -e inject=setfsuid:signal=STOP:when=1 \
        "$ZET_BIN/zet-client" --config zet.conf param set --no-markers home/conf a 3 2>"$BASE/stderr" 3>&- &
    local zet=$!
    await_stop
    ln -sfn "$SECRET" home/conf
    go_on
    status=0
    wait "$zet" || status=$?
    assert_equal "$status" 1
    assert_file "$BASE/stderr" "zet-client: error: Failed to open file 'home/conf'.
zet-client: error: home/conf: cannot be read any more (run the command again)
"
    grep -q 'conf", .* = -1 EACCES' "$BASE/trace"
    assert_secret_kept
    [[ -z $(grep -rl secret home) ]] || [[ $(grep -rl secret home) == home/conf ]]
}

@test "root does nothing that others may have told it to do" {
    need_root
    add_target one.conf $'x\n'
    for file in zet.conf templates/one.conf; do
        chown "$STRANGER" "$file"
        for command in commit-config check-config "commit-config -n"; do
            # shellcheck disable=SC2086 # words
            run_zet $command
            assert_status 1
            [[ $stderr$output == *"$HOST/$file: others may write it, so root does not use it (chown root and chmod go-w)"* ]]
        done
        run_zet status
        [[ $status -ne 1 ]]
        chown 0 "$file"
    done
    chown "$STRANGER" zet.conf
    run_zet param set conf a 2
    assert_refusal 1 "$HOST/zet.conf: others may write it, so root does not use it (chown root and chmod go-w)"
    run_zet param get conf a
    assert_success 1
}

@test "a directory of two parameters that root does not use is told once" {
    need_root
    add_target one.conf $'x\n'
    sed -i "s|^ZET_VAR_LIB_DIR=.*|ZET_VAR_LIB_DIR=$HOST/etc|" zet.conf
    chown "$STRANGER" etc
    local command
    for command in commit-config rollback-config; do
        run_zet $command
        assert_refusal 1 "$HOST/etc: others may write it, so root does not use it (chown root and chmod go-w)"
    done
    run_zet check-config
    assert_status 1
    assert_output "$HOST/etc: others may write it, so root does not use it (chown root and chmod go-w)"
}

@test "a target in a directory of a service's is written when the list trusts that user" {
    need_root
    add_target one.conf $'x\n'
    mkdir service
    chown nobody service
    sed -i "s|$HOST/out/one.conf|$HOST/service/one.conf|" templates/targets.toml
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"$HOST/service/one.conf: would be a file of root's in a directory of nobody"* ]]
    echo 'trust = "nobody"' >>templates/targets.toml
    run_zet commit-config
    assert_status 0
    assert_equal "$(stat -c %u service/one.conf)" 0
    # A killed run is cleared up there, too.
    echo y >>etc/one.conf
    kill_at_rename service/one.conf commit-config
    run_zet commit-config
    assert_stderr "zet-client: removed $HOST/service/one.conf.tmp, which a run that was cut short left"
    run_zet rollback-config
    assert_status 0
    assert_equal "$(names_in service)" ""
    sed -i 's/"nobody"/"nosuchuser"/' templates/targets.toml
    run_zet check-config
    assert_status 1
    [[ $output == *"this host has no user \"nosuchuser\", whom its entry trusts"* ]]
}

@test "a damaged history stops no rollback" {
    add_target one.conf $'x\n'
    original one.conf $'old\n'
    zet commit-config
    break_store
    run_zet rollback-config --force
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/state/state.db: $BROKEN_STORE"
    assert_file out/one.conf $'old\n'
    assert_equal "$(names_in out)" one.conf
}

@test "a history that is too large is told at once, and one that is empty is none" {
    add_target one.conf $'x\n'
    (umask 077 && truncate -s 1G state/state.db)
    run_zet commit-config
    assert_refusal 1 "$HOST/state/state.db: $BROKEN_STORE"
    truncate -s 0 state/state.db
    run_zet commit-config
    assert_status 0
}

@test "a link that cannot be read is not taken for a file" {
    ln -s conf link
    for error in EIO EMFILE EACCES; do
        capture strace -f -qq -o "$BASE/trace" -e trace=readlink,readlinkat -e "inject=readlink,readlinkat:error=$error:when=2+" \
            "$ZET_BIN/zet-client" --config zet.conf param set link a 2
        assert_status 1
        [[ -L link ]]
        assert_file conf $'a=1\nb=2\n'
    done
}

@test "a call that lies leads nobody out of the root" {
    mkdir -p tree/etc
    ln -s "$SECRET" tree/etc/conf
    for error in EINVAL ENOENT EIO; do
        capture strace -f -qq -o "$BASE/trace" -P conf -P "$HOST/tree/etc/conf" -e trace=readlink,readlinkat \
            -e "inject=readlink,readlinkat:error=$error" \
            "$ZET_BIN/zet-client" --config zet.conf --root "$HOST/tree" -c /zet.conf param set --no-markers /etc/conf a 2
        [[ $status -ne 0 ]]
        assert_secret_kept
    done
}

@test "a target that another program writes while it is reserved is left to it, without that reserve" {
    add_target one.conf $'new\n'
    original one.conf $'old\n'
    strace -f -qq -o "$BASE/trace" -P "$HOST/out/one.conf" -e trace=copy_file_range \
        -e inject=copy_file_range:delay_exit=2000000:when=1 \
        "$ZET_BIN/zet-client" --config zet.conf commit-config 2>"$BASE/stderr" >"$BASE/output" &
    local tries=0
    until [[ -n $(compgen -G 'out/one.conf.before_zet.*.tmp') || $((++tries)) -gt 400 ]]; do sleep 0.02; done
    echo theirs >>out/one.conf
    status=0
    wait $! || status=$?
    assert_equal "$status" 1
    [[ $(cat "$BASE/stderr") == *"$HOST/out/one.conf: another program wrote it at the same time, and nothing was changed"* ]]
    [[ $(cat "$BASE/stderr") == *"Written by another program: $HOST/out/one.conf"* ]]
    assert_file out/one.conf $'old\ntheirs\n'
    assert_equal "$(names_in out)" one.conf
}

@test "a template that is changed after it was checked is not written" {
    add_target one.conf $'fine\n'
    add_target two.conf $'x\n' "check = [\"$BASE/change\"]"
    printf '#!/bin/sh\necho "not checked" >>%s\n' "$HOST/etc/one.conf" >"$BASE/change"
    chmod 755 "$BASE/change"
    zet template install one.conf
    original one.conf $'old\n'
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"Written: none. Not written: $HOST/out/one.conf, $HOST/out/two.conf"* ]]
    [[ $stderr == *"$HOST/out/one.conf: is not written, since its template was changed after it was checked (run the command again)"* ]]
    assert_file out/one.conf $'old\n'
    assert_equal "$(names_in out)" one.conf
}

@test "only what a run that was cut short can have left is cleared away" {
    need_root
    local stays=": stays, as it cannot be what the run that was cut short left (look at it, and move it away)"
    # A directory, a file with another name, one of another owner, another text.
    kill_at_rename conf param set conf a 2
    mv conf.tmp "$BASE/left"
    mkdir conf.tmp
    run_zet file reserve out/other
    [[ $stderr == *"zet-client: warning: $HOST/conf.tmp$stays"* ]]
    rmdir conf.tmp
    kill_at_rename conf param set conf a 2
    ln conf.tmp conf.name
    run_zet file forget out/other
    [[ $stderr == *"$HOST/conf.tmp$stays"* ]]
    rm conf.name conf.tmp
    kill_at_rename conf param set conf a 2
    chown "$STRANGER" conf.tmp
    run_zet file reserve out/other
    [[ $stderr == *"$HOST/conf.tmp$stays"* ]]
    rm conf.tmp
    kill_at_rename conf param set conf a 2
    sed -i 's/a=2/a=3/' conf.tmp
    run_zet file forget out/other
    [[ $stderr == *"$HOST/conf.tmp$stays"* ]]
    rm conf.tmp
    kill_at_rename conf param set conf a 2
    run_zet file reserve out/other
    [[ $stderr == *"removed $HOST/conf.tmp, which a run that was cut short left"* ]]
    assert_absent conf.tmp
}

@test "what a run that was cut short left is known without its recorded texts only as a whole" {
    local stays=": stays, as it cannot be what the run that was cut short left (look at it, and move it away)"
    add_target one.conf $'x\n'
    for setting in ZET_HISTORY=no ZET_HISTORY_MAX_FILE=1; do
        echo "$setting" >>zet.conf
        kill_at_rename out/one.conf commit-config
        cp out/one.conf.tmp "$BASE/left"
        echo mine | tee out/one.conf.tmp >out/one.conf.ABC123.tmp
        head -c 9 "$BASE/left" >out/two.conf.tmp
        run_zet commit-config
        assert_status 1
        for name in one.conf.tmp one.conf.ABC123.tmp; do
            [[ $stderr == *"warning: $HOST/out/$name$stays"* ]]
            assert_file "out/$name" $'mine\n'
        done
        rm out/one.conf*.tmp out/two.conf.tmp
        kill_at_rename out/one.conf commit-config
        : >out/one.conf.000000.tmp
        run_zet commit-config
        assert_status 0
        [[ $stderr == *"removed $HOST/out/one.conf.tmp, which a run that was cut short left"* ]]
        assert_equal "$(names_in out)" "one.conf one.conf.no_file_before_zet"
        zet -q rollback-config
        sed -i '$d' zet.conf
    done
}

@test "what a run that was cut short left and cannot be removed is told, and ends no run" {
    add_target one.conf $'x\n'
    kill_at_rename conf param set conf a 2
    capture strace -f -qq -o "$BASE/trace" -P ././conf.tmp -e trace=unlink,unlinkat -e inject=unlink,unlinkat:error=EPERM \
        "$ZET_BIN/zet-client" --config zet.conf commit-config
    assert_status 0
    local remedy="run the command as a user who may"
    [[ $EUID -ne 0 ]] || remedy="take the attribute away that forbids it; lsattr shows those of a file and of its directory"
    [[ $stderr == *"zet-client: warning: Failed to remove file '$HOST/conf.tmp': Operation not permitted ($remedy)"* ]]
    [[ -e conf.tmp ]]
    assert_made one.conf $'x\n'
}

@test "a file of the state that has another name is not written through" {
    add_target one.conf $'x\n'
    for name in state.db state.db-wal state.db-shm state.db-journal state.db-last zet.lock; do
        rm -f "state/$name"
        ln "$SECRET" "state/$name"
        run_zet commit-config
        assert_status 1
        [[ $stderr == *"$HOST/state/$name: is "*"(move it away"* ]]
        rm "state/$name"
        assert_secret_kept
    done
}

@test "a target that the other role has committed is left to it, and the last role puts the original back" {
    add_target one.conf $'${realm}\n'
    original one.conf $'old\n'
    server commit-config
    zet commit-config
    run_zet rollback-config -n
    assert_output "$HOST/out/one.conf: stays for the role server, which has committed it"
    run_zet rollback-config
    assert_success "$HOST/out/one.conf: stays for the role server, which has committed it"
    assert_file out/one.conf "$(notice one.conf zet-init)"$'\nEXAMPLE.ORG\n'
    assert_file out/one.conf.before_zet $'old\n'
    assert_equal "$(names_in state)" "zet-server.status zet.lock"
    PROGRAM=$ZET_BIN/zet-init run_zet status
    assert_status 0
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    assert_status 0
    assert_file out/one.conf $'old\n'
    assert_equal "$(names_in out) $(names_in state)" "one.conf zet.lock"
}

@test "a target of the other role stays, whatever its template is by now" {
    add_target one.conf $'${realm}\n'
    server commit-config
    zet commit-config
    echo '${nope}' >etc/one.conf
    run_zet rollback-config
    assert_success "$HOST/out/one.conf: stays for the role server, which has committed it"
    assert_file out/one.conf "$(notice one.conf zet-init)"$'\nEXAMPLE.ORG\n'
}

@test "a target that cannot be replaced is told by the check, and nothing of the set is written" {
    need_root
    add_target one.conf $'x\n'
    add_target two.conf $'x\n'
    original two.conf $'old\n'
    for flag in i a; do
        chattr "+$flag" out/two.conf 2>/dev/null || skip "this file system knows no such files"
        run_zet commit-config
        assert_status 1
        [[ $stderr == *"$HOST/out/two.conf: "*", and cannot be replaced (chattr -$flag it)"$'\n'*"nothing was changed"* ]]
        run_zet check-config
        assert_status 1
        chattr "-$flag" out/two.conf
        assert_equal "$(names_in out)" two.conf
    done
}

@test "what cannot be replaced is told before anything goes back, and by an edit" {
    need_root
    add_target one.conf $'x\n'
    add_target two.conf $'x\n'
    original two.conf $'old\n'
    zet -q commit-config
    chattr +i out/two.conf 2>/dev/null || skip "this file system knows no such files"
    local words names told="out/two.conf: is immutable, and cannot be replaced (chattr -i it)"
    names=$(names_in out)
    cp -r out before
    for words in undo "-n undo" "param set --force out/two.conf a 1" "-n param set --force out/two.conf a 1" \
        "rollback-config out/two.conf"; do
        run_zet $words
        assert_status 1
        [[ $stderr == *"$told"* ]]
        diff -r before out
        assert_equal "$(names_in out)" "$names"
    done
    chattr -i out/two.conf
}

@test "a target that is a mount point is told, and goes back without being replaced" {
    need_root
    add_target two.conf $'x\n'
    original two.conf $'old\n'
    echo mounted >mounted
    mount --bind mounted out/two.conf 2>/dev/null || skip "nothing may be mounted here"
    run_zet commit-config
    local result=$status told=$stderr
    zet file reserve out/two.conf
    run_zet rollback-config
    umount out/two.conf
    assert_equal "$result" 1
    [[ $told == *"$HOST/out/two.conf: is a mount point, and cannot be replaced"* ]]
    assert_success "$HOST/out/two.conf: put back as it was"
    assert_equal "$(names_in out)" two.conf
}

@test "who waits for the lock is told at once for whom" {
    hold_lock
    zet param set conf a 2 2>"$BASE/stderr" &
    local waiter=$! tries=0
    until [[ -s $BASE/stderr || $((++tries)) -gt 100 ]]; do sleep 0.02; done
    assert_equal "$(cat "$BASE/stderr")" \
        "zet-client: waiting for process $HOLDER (zet-init commit-config), which holds $HOST/state/zet.lock, for 30 s at most"
    release_lock
    wait "$waiter"
    [[ $(cat state/zet.lock) == *" (zet-client param set)" ]]
}
