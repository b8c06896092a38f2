# What a rollback takes back of edits in place, where there are others: another role, other writers, or a history
# that is lost.

load helper
load set

setup() {
    make_set
    mkdir etc/targets.d
    add_target one.conf $'x\n'
    original one.conf $'old\n'
    printf 'a=1\nb=2\n' >out/plain
    printf 'c=1\n' >out/daemon
    chmod 640 out/plain
    cat >etc/targets.d/10.toml <<-END
		[[edits]]
		file = "$HOST/out/plain"
		roles = "both"
		param = "a"
		value = "7"
		[[edits]]
		file = "$HOST/out/daemon"
		roles = "server"
		param = "c"
		value = "8"
	END
}

teardown() {
    remove_host
}

# all_as_before: nothing of the product's is left.
all_as_before() {
    assert_file out/one.conf $'old\n'
    assert_file out/plain $'a=1\nb=2\n'
    assert_file out/daemon $'c=1\n'
    assert_equal "$(stat -c %a out/plain)" 640
    assert_equal "$(names_in out)" "daemon one.conf plain"
}

@test "without a history, listed edits go back to their reserves, too" {
    server -q commit-config
    lose_store
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    assert_status 0
    all_as_before
    assert_equal "$(names_in state)" "zet.lock"
}

@test "a damaged history keeps no listed edit from going back" {
    local force
    for force in "" --force; do
        server -q commit-config
        break_store
        # shellcheck disable=SC2086  # none is none
        PROGRAM=$ZET_BIN/zet-init run_zet rollback-config $force
        assert_status 0
        all_as_before
        lose_store
    done
}

@test "without a history, lines of others stay beside what is taken out" {
    zet -q commit-config
    lose_store
    echo mine=1 >>out/plain
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$HOST/out/plain: the managed blocks are taken out, all other lines stay"* ]]
    assert_file out/plain $'a=1\nb=2\nmine=1\n'
    zet -q commit-config
    lose_store
    zet -q rollback-config --force
    assert_file out/plain $'a=1\nb=2\n'
}

@test "a mode that somebody changed is his work where no history tells" {
    zet -q commit-config
    lose_store
    chmod 600 out/plain
    zet -q rollback-config
    assert_file out/plain $'a=1\nb=2\n'
    assert_equal "$(stat -c %a out/plain)" 600
}

@test "a commit knows listed edits that are set already, as it knows targets" {
    zet -q commit-config
    lose_store
    run_zet commit-config
    assert_status 0
    assert_equal "$(store "SELECT count(*) FROM known WHERE kind = 1")" 1
    sed -i 's/^a=7/a=hand/' out/plain
    run_zet status
    [[ $output == *"$HOST/out/plain: line a: edited"* ]]
    sed -i 's/^a=hand/a=7/' out/plain
    zet -q rollback-config
    assert_file out/plain $'a=1\nb=2\n'
    assert_absent out/plain.before_zet
}

@test "an entry or a text that is damaged keeps no edit from going back, but for what may be of the other role" {
    local damaged
    for damaged in "UPDATE files SET kind_before = 5" "UPDATE texts SET frame = x'00'"; do
        zet -q commit-config
        change_store "$damaged"
        run_zet rollback-config
        assert_status 0
        [[ $stderr == *"the history is damaged"* ]]
        assert_file out/one.conf $'old\n'
        assert_file out/plain $'a=1\nb=2\n'
        assert_absent out/plain.before_zet
        lose_store
    done
    server -q commit-config
    zet -q commit-config
    change_store "UPDATE texts SET frame = x'00'"
    run_zet rollback-config
    assert_status 1
    grep -qx a=7 out/plain
    zet rollback-config --force
    assert_file out/plain $'a=1\nb=2\n'
}

@test "what cannot be read keeps no other file from going back without a history" {
    need_root
    copy_programs
    zet -q commit-config
    lose_store
    chmod 600 out/plain
    chmod -R a+rwX .
    chmod 600 out/plain
    chmod 777 out state
    ZET_BIN=$BASE/programs/bin capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" rollback-config -n
    [[ $output == *"$HOST/out/one.conf: would be put back"* && $stderr == *"$HOST/out/plain"* ]]
}

@test "where the history is damaged, an edit of both roles stays for the role that has a status" {
    server -q commit-config
    zet -q commit-config
    break_store
    run_zet rollback-config
    assert_status 1
    local stays="$HOST/out/plain: may have been committed by the role server, too, and stays (--force puts it back)"
    [[ $output == *"$HOST/out/plain: stays as it is"* && $stderr == *"$stays"* ]]
    grep -qx a=7 out/plain
    grep -qx c=8 out/daemon
    zet -q rollback-config --force
    assert_file out/plain $'a=1\nb=2\n'
    grep -qx c=8 out/daemon
}

@test "on a host of one role a damaged history keeps no file" {
    zet -q commit-config
    break_store
    run_zet rollback-config
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/state/state.db: $BROKEN_STORE"
    assert_file out/one.conf $'old\n'
    assert_file out/plain $'a=1\nb=2\n'
    assert_equal "$(names_in state)" "zet.lock"
}

@test "a rollback leaves the edits of a role that has committed alone" {
    server -q commit-config
    local before
    before=$(state_of_host | grep '/out/')
    run_zet rollback-config
    assert_success "$HOST/out/one.conf: stays for the role server, which has committed it
$HOST/out/daemon: stays for the role server, which has committed it
$HOST/out/plain: stays for the role server, which has committed it"
    assert_equal "$(state_of_host | grep '/out/')" "$before"
    PROGRAM=$ZET_BIN/zet-init run_zet status
    assert_status 0
    server -q rollback-config
    all_as_before
}

@test "lines that both roles have set stay for the other, whichever goes first" {
    local first second
    for first in client server; do
        second=$([[ $first == client ]] && echo server || echo client)
        PROGRAM=$ZET_BIN/zet-${first/server/init} zet -q commit-config
        PROGRAM=$ZET_BIN/zet-${second/server/init} zet -q commit-config
        PROGRAM=$ZET_BIN/zet-${first/server/init} zet -q rollback-config
        grep -qx a=7 out/plain
        PROGRAM=$ZET_BIN/zet-${second/server/init} run_zet status
        assert_status 0
        PROGRAM=$ZET_BIN/zet-${second/server/init} zet -q rollback-config
        all_as_before
    done
}

@test "a line of both roles that a hand changed stays for the other" {
    server -q commit-config
    zet -q commit-config
    zet -q param set out/plain b 9
    sed -i 's/^a=7/a=hand/' out/plain
    local force told="the managed blocks are taken out, but for those of the role server; all other lines stay"
    for force in "" --force; do
        # shellcheck disable=SC2086  # none is none
        run_zet rollback-config $force
        assert_status 0
        [[ $output == *"$HOST/out/plain: $told"* ]] || differ rollback "$told" "$output"
        told="stays for the role server, which has committed it"
        grep -qx a=hand out/plain
    done
    grep -qx b=2 out/plain
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    assert_status 1
    grep -qx a=hand out/plain
    server -q rollback-config --force
    assert_file out/plain $'a=1\nb=2\n'
}

@test "a file of the other role that is gone stays away for it" {
    server -q commit-config
    rm out/plain
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$HOST/out/plain: stays for the role server, which has committed it"* ]]
    assert_absent out/plain
    server -q rollback-config
    assert_file out/plain $'a=1\nb=2\n'
}

@test "what a hand set in a file of the other role is taken out, and its lines stay" {
    server -q commit-config
    zet -q param set out/plain b 9
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$HOST/out/plain: the managed blocks are taken out, but for those of the role server; all other lines stay"* ]]
    grep -qx a=7 out/plain
    grep -qx b=2 out/plain
    PROGRAM=$ZET_BIN/zet-init run_zet status
    assert_status 0
    server -q rollback-config
    assert_file out/plain $'a=1\nb=2\n'
}

@test "a line that somebody added between two edits stays" {
    zet -q param set out/daemon c 2
    echo mine=1 >>out/daemon
    zet -q param set out/daemon c 3
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$HOST/out/daemon: the managed blocks are taken out, all other lines stay"* ]]
    assert_file out/daemon $'c=1\nmine=1\n'
}

@test "a line that somebody added after a rollback stays in the next" {
    zet -q param set out/daemon c 2
    echo mine=1 >>out/daemon
    zet -q rollback-config
    zet -q param set out/daemon c 3
    zet -q rollback-config
    assert_file out/daemon $'c=1\nmine=1\n'
}

@test "edits without markers go back where nobody else wrote between them, and stay otherwise" {
    zet -q param set --no-markers out/daemon c 2
    zet -q param set --no-markers out/daemon c 3
    zet -q rollback-config
    assert_file out/daemon $'c=1\n'
    zet -q param set --no-markers out/daemon c 2
    echo mine=1 >>out/daemon
    zet -q param set --no-markers out/daemon c 3
    run_zet rollback-config
    assert_status 1
    [[ $stderr == *"$HOST/out/daemon: was edited without markers, and may hold what others wrote, stays as it is"* ]]
    assert_file out/daemon $'c=3\nmine=1\n'
}

@test "without entries, the rest of a file tells whether others wrote it" {
    echo ZET_HISTORY=no >>zet.conf
    zet -q commit-config
    echo mine=1 >>out/plain
    sed -i 's/"7"/"9"/' etc/targets.d/10.toml
    zet -q commit-config
    zet -q rollback-config
    assert_file out/plain $'a=1\nb=2\nmine=1\n'
    zet -q file restore --force out/plain
    zet -q commit-config
    sed -i 's/"9"/"10"/' etc/targets.d/10.toml
    zet -q commit-config
    zet -q rollback-config
    all_as_before
}

@test "the first commit of a role is an entry, and taken back alone" {
    server -q commit-config
    zet -q rollback-config
    sed -i '/roles = "server"/d' etc/targets.d/10.toml
    server -q commit-config
    run_zet commit-config -m joins
    assert_success "3 unchanged"
    run_zet history
    [[ $output == *joins* ]]
    [[ -e state/zet-client.status ]]
    zet -q commit-config
    run_zet undo
    assert_status 0
    assert_equal "$(names_in state)" "zet-server.status zet.lock"
    grep -qx a=7 out/plain
    PROGRAM=$ZET_BIN/zet-init run_zet status
    assert_status 0
    run_zet status
    assert_status 3
    zet -q undo
    [[ -e state/zet-client.status ]]
    run_zet status
    assert_status 0
}

@test "a reserve that a killed run kept of a file that it did not come to goes" {
    cp -p out/plain out/plain.before_zet
    run_zet rollback-config
    assert_status 0
    all_as_before
}

@test "a file that is not as such a reserve, and holds no block, is somebody else's" {
    printf 'a=other\n' >out/plain.before_zet
    run_zet rollback-config
    assert_status 0
    assert_file out/plain $'a=1\nb=2\n'
    assert_file out/plain.before_zet $'a=other\n'
}
