# A run is killed, and somebody writes its files before the next run finds out what it did.

load helper
load set

setup() {
    make_set_of_one $'x\n'
}

teardown() {
    remove_host
}

# kill_commit: it has written all files but the status.
kill_commit() {
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/state/zet-client.status" -e trace=/write \
        -e inject=/write:signal=KILL "$ZET_BIN/zet-client" --config zet.conf commit-config
    assert_status 137
}

# edit_and_kill: the killed commit replaces what somebody has made of the file.
edit_and_kill() {
    zet -q commit-config
    echo "a precious edit" >>"$ONE"
    EDITED=$(<"$ONE")$'\n'
    kill_commit
    assert_made one.conf $'x\n'
}

# kill_edit: it has written $HOST/f, and has not found out so.
kill_edit() {
    capture strace -f -qq -o "$BASE/trace" -P "$HOST" -e trace=fsync -e inject=fsync:signal=KILL \
        "$ZET_BIN/zet-client" --config zet.conf param set --no-backup f a 2
    assert_status 137
    grep -qx a=2 f
}

# settle: the next command that writes finds out what the killed one did.
settle() {
    echo a=1 >aside
    zet -q param set --no-backup aside a 2
}

# assert_kept ENTRY FILE TEXT: what the file held before is in the entry.
assert_kept() {
    run_zet history show "$1" "$2"
    assert_success "${3%$'\n'}"
}

@test "what a killed commit replaced is kept, whatever somebody makes of the file before the next run" {
    local way ways=('echo more >>"$ONE"' 'rm "$ONE"' 'ln -s /dev/null "$ONE.new"; mv "$ONE.new" "$ONE"'
        'rm "$ONE"; mkfifo "$ONE"' 'rm "$ONE"; mkdir "$ONE"' 'rm -r out')
    for way in "${ways[@]}"; do
        edit_and_kill
        eval "$way"
        settle
        assert_kept 2 "$ONE" "$EDITED"
        rm -rf out state/* etc/*
        mkdir -p out
        original one.conf $'old\n'
    done
}

@test "what was made of a file after a killed commit is an edit, and goes with --force alone" {
    edit_and_kill
    echo more >>"$ONE"
    settle
    run_zet status
    assert_status 3
    [[ $output == *"$ONE: edited"* ]] || differ status edited "$output"
    run_zet undo 2
    assert_status 1
    assert_made one.conf $'x\nmore\n'
    run_zet undo 2 --force
    assert_status 0
    assert_file "$ONE" "$EDITED"
    run_zet status
    [[ $output == *"$ONE: edited"* ]] || differ status edited "$output"
    run_zet undo
    assert_status 0
    assert_made one.conf $'x\nmore\n'
}

@test "what a killed commit did not replace is no change" {
    zet -q commit-config
    echo "a precious edit" >>"$ONE"
    kill_at_rename "$ONE" commit-config
    chmod 0600 "$ONE"
    settle
    assert_equal "$(store 'SELECT group_concat(number) FROM entries')" "1,3"
    assert_made one.conf $'x\na precious edit\n'
}

@test "what was made of a file that a killed commit had not yet replaced stays, and is undone with --force alone" {
    zet -q commit-config
    echo "a precious edit" >>"$ONE"
    kill_at_rename "$ONE" commit-config
    echo more >>"$ONE"
    settle
    assert_made one.conf $'x\na precious edit\nmore\n'
    run_zet undo 2
    assert_status 1
    assert_made one.conf $'x\na precious edit\nmore\n'
}

@test "what a killed commit replaced is kept, although somebody made a copy that has the name of its new text" {
    edit_and_kill
    cp -p "$ONE" "$ONE.tmp"
    echo more >>"$ONE"
    settle
    assert_kept 2 "$ONE" "$EDITED"
}

@test "what a killed edit without a reserve replaced is kept" {
    echo a=1 >f
    kill_edit
    echo y=9 >>f
    settle
    assert_kept 1 "$HOST/f" $'a=1\n'
}

@test "a way back leads over a killed run that changed nothing, whatever was pruned before" {
    echo ZET_HISTORY_KEEP=4 >>zet.conf
    echo a=1 >f
    zet -q param set --no-backup f a 2
    zet -q undo
    echo theirs >>f
    zet -q undo 2 --force # kept for that edit
    zet -q undo
    local value
    echo b=1 >g
    for value in 2 3 4 5 6; do zet -q param set --no-backup g b $value; done
    kill_at_rename g param set --no-backup g b 7
    zet -q param set --no-backup g b 8
    assert_equal "$(store 'SELECT group_concat(number) FROM entries')" "3,7,8,9,11"
    run_zet rollback-config --to 9
    assert_status 0
    grep -qx b=6 g
}

@test "a way back leads to a killed run whose file somebody has written since, and an edit after that" {
    echo a=1 >f
    kill_edit
    echo y=9 >>f
    settle
    zet -q param set --no-backup f a 3
    run_zet rollback-config --to 1 --force
    assert_status 0
    grep -qx a=2 f
    assert_file aside $'a=1\n'
}

@test "what a killed commit replaced is kept, even if the history ends meanwhile" {
    edit_and_kill
    echo ZET_HISTORY=no >>zet.conf
    zet -q commit-config
    assert_kept 2 "$ONE" "$EDITED"
}
