# A rollback leaves a file where a hand changed a managed block, or took away what would come in its place.

load helper
load set

setup() {
    make_set
    mkdir etc/targets.d
    add_target one.conf $'x\n'
    original one.conf $'old\n'
    printf 'a=1\nb=2\n' >out/plain
    edits a client 7
}

teardown() {
    remove_host
}

# edits PARAM ROLE VALUE: one more line that the list asks for.
edits() {
    printf '[[edits]]\nfile = "%s"\nparam = "%s"\nroles = "%s"\nvalue = "%s"\n' "$HOST/out/plain" "$@" \
        >>etc/targets.d/10.toml
}

# assert_stays WORDS...: rollbacks without --force leave the file, with this error.
assert_stays() {
    cp out/plain before
    local round
    for round in 1 2; do
        run_zet rollback-config -n
        assert_status 1
        run_zet rollback-config
        assert_status 1
        [[ $output == *"$HOST/out/plain: edited, stays as it is"* ]] || differ output edited "$output"
        [[ $stderr == "zet-client: error: $HOST/out/plain:$1"$'\n' ]] || differ stderr "$1" "$stderr"
        cmp out/plain before
    done
    run_zet rollback-config --keep-edits
    assert_status 0
    assert_stderr ""
    [[ $output == *"$HOST/out/plain: edited, stays as it is"* ]]
    cmp out/plain before
    [[ -e out/plain.before_zet ]]
}

@test "a listed line that a hand changed in its block stays, and is named" {
    zet -q commit-config
    sed -i 's/^a=7/a=hand/' out/plain
    assert_stays "10: a managed block was edited here, and the file stays (--force puts back what was there before)"
    assert_file out/one.conf $'old\n'
    run_zet rollback-config --force
    assert_status 0
    assert_file out/plain $'a=1\nb=2\n'
}

@test "a line whose former line a hand took away stays, and is named" {
    zet -q commit-config
    sed -i '/PRE-ZET/d' out/plain
    assert_stays "9: what stood here before was taken out of the file, which stays (--force puts back what was there before)"
    run_zet rollback-config --force
    assert_status 0
    assert_file out/plain $'a=1\nb=2\n'
}

@test "a hand's change of a block stays one after later edits, merges and undos" {
    zet -q commit-config
    sed -i 's/^a=7/a=hand/' out/plain
    zet -q commit-config --on-edit=merge
    zet -q param set out/plain b 9
    assert_stays "10: a managed block was edited here, and the file stays (--force puts back what was there before)"
    zet -q commit-config
    zet -q undo
    grep -qx a=hand out/plain
    run_zet rollback-config
    assert_status 1
    grep -qx a=hand out/plain
    zet -q commit-config
    run_zet rollback-config
    assert_status 0
    assert_file out/plain $'a=1\nb=2\n'
}

@test "what a hand put back within a block goes with it, since nothing is lost" {
    zet -q commit-config
    sed -i 's/^a=7/a=1/' out/plain
    run_zet rollback-config
    assert_status 0
    assert_file out/plain $'a=1\nb=2\n'
}

@test "a line of one role that a hand changed stays beside those of the other" {
    edits b server 8
    zet -q commit-config
    server -q commit-config
    sed -i 's/^a=7/a=hand/' out/plain
    assert_stays "10: a managed block was edited here, and the file stays (--force takes the managed blocks out)"
    run_zet rollback-config --force
    assert_status 0
    grep -qx a=1 out/plain
    grep -qx b=8 out/plain
}

@test "without a reserve, force takes the changed block out" {
    zet -q param set --no-backup out/plain b 9
    sed -i 's/^b=9/b=hand/' out/plain
    run_zet rollback-config
    assert_status 1
    assert_stderr "zet-client: error: $HOST/out/plain:11: a managed block was edited here, and the file stays (--force takes the managed blocks out)"
    run_zet rollback-config --force
    assert_status 0
    assert_file out/plain $'a=1\nb=2\n'
}

@test "where the history is lost, nobody knows of a change, and the new history keeps it" {
    zet -q commit-config
    lose_store
    sed -i 's/^a=7/a=hand/' out/plain
    run_zet rollback-config
    assert_status 0
    assert_file out/plain $'a=1\nb=2\n'
    run_zet history show 1 out/plain
    assert_status 0
    [[ $output == *a=hand* ]]
}

@test "a commit leaves a line that is not in force any more and whose former line a hand took away" {
    edits b client 8
    zet -q commit-config
    sed -i '/PRE-ZET-- a/d' out/plain
    rm etc/targets.d/10.toml
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/out/plain: the edit \"a\" is not in force any more, but what stood there before was taken out, and the line stays (delete its block if nobody needs it)"
    grep -qx a=7 out/plain
    grep -qx b=2 out/plain
    sed -i '/BEGIN/,/END--/d' out/plain
    run_zet commit-config
    assert_status 0
    [[ $stderr != *"stood there before"* ]]
    ! grep -q a=7 out/plain || return 1
}

@test "status tells that somebody changed a file elsewhere than in its listed lines" {
    zet -q commit-config
    run_zet status
    [[ $output != *"edit "* ]]
    echo mine=1 >>out/plain
    run_zet status
    assert_status 0
    [[ $output == *"$HOST/out/plain: line a: in sync"*"$HOST/out/plain: edit changed"* ]] || differ status changed "$output"
    sed -i 's/^a=7/a=hand/' out/plain
    run_zet status
    assert_status 3
    [[ $output == *"$HOST/out/plain: line a: edited"* && $output != *"edit changed"* ]]
    zet -q commit-config
    zet -q param set out/plain b 9
    run_zet status
    [[ $output != *"edit changed"* ]]
    sed -i 's/^b=9/b=hand/' out/plain
    run_zet --json status
    assert_json '[e["state"] for e in d["edits"] + d["listed_edits"]]' '["changed", "in sync"]'
}

@test "what stays beside a file that lost its blocks is named, with both ways on" {
    zet -q commit-config
    echo mine=1 >>out/plain
    local kept="; $HOST/out/plain.before_zet keeps what was there before (\"file restore $HOST/out/plain\" puts it back, \"file forget $HOST/out/plain\" drops it)"
    run_zet rollback-config -n
    [[ $output == *"$HOST/out/plain: the managed blocks would be taken out, all other lines stay$kept"* ]] || differ dry kept "$output"
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$HOST/out/plain: the managed blocks are taken out, all other lines stay$kept"* ]]
    zet -q file forget "$HOST/out/plain"
    assert_absent out/plain.before_zet
    assert_file out/plain $'a=1\nb=2\nmine=1\n'
}

@test "a file with listed lines goes back by its name twice" {
    zet -q commit-config
    run_zet rollback-config out/plain
    assert_success "$HOST/out/plain: put back as it was"
    run_zet rollback-config -n out/plain
    assert_status 0
    run_zet rollback-config out/plain
    assert_success "$HOST/out/plain: holds no managed block any more, stays as it is"
    assert_file out/plain $'a=1\nb=2\n'
    block c=3 >>out/plain
    cp out/plain before
    run_zet rollback-config out/plain
    assert_status 2
    cmp out/plain before
    rm out/plain
    run_zet rollback-config out/plain
    assert_success "$HOST/out/plain: is not there (\"history $HOST/out/plain\" tells what is kept of it)"
}

@test "adopt of a file with listed lines names the entry to change" {
    zet -q commit-config
    sed -i 's/^a=7/a=hand/' out/plain
    run_zet adopt out/plain
    assert_refusal 2 "out/plain: is no committed target (change its line in $HOST/etc/targets.d/10.toml:1)"
}

@test "lines of both roles that a hand changed are not told as those of the other role alone" {
    edits b server 8
    zet -q commit-config
    server -q commit-config
    sed -i 's/^a=7/a=hand/; s/^b=8/b=hand/' out/plain
    assert_stays "10: a managed block was edited here, and the file stays (--force takes the managed blocks out)"
    run_zet rollback-config --force
    assert_status 0
    [[ $output == *"$HOST/out/plain: the managed blocks are taken out, but for those of the role server; all other lines stay"* ]]
    grep -qx a=1 out/plain
    grep -qx b=hand out/plain
    PROGRAM=$ZET_BIN/zet-init run_zet rollback-config
    assert_status 1
    [[ $stderr == *"a managed block was edited here"* ]]
}
