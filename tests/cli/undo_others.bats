# undo and rollback --to where others wrote files, too: before the entries, between them, or since.

load helper
load set

setup() {
    make_set
    add_target one.conf $'x\n'
    original one.conf $'old\n'
    ONE=$HOST/out/one.conf
    printf 'a=1\nm1\nm2\nm3\nb=1\n' >conf
    FORCE="(--force puts back what was there before all the same)"$'\nzet-client: nothing was changed'
}

teardown() {
    remove_host
}

set_param() {
    zet -q param set conf "$@"
}

@test "a merge that leaves newer edits leaves the reserve, and what is known of the file" {
    set_param a 2
    set_param b 3
    zet -q undo 1 --merge
    assert_file conf.before_zet $'a=1\nm1\nm2\nm3\nb=1\n'
    assert_file conf "$NOTICE"$'a=1\nm1\nm2\nm3\n# --PRE-ZET-- b=1\n'"$(block b=3)"$'\n'
    run_zet status
    [[ $output == *"$HOST/conf: edit"* && $output != *"$HOST/conf: edited"* ]]
    zet -q rollback-config
    assert_file conf $'a=1\nm1\nm2\nm3\nb=1\n'
    assert_absent conf.before_zet
}

@test "a merge that leaves newer edits beside those of a hand tells the hand's" {
    set_param a 2
    set_param b 3
    sed -i 's/^m2/hand/' conf
    zet -q undo 1 --merge
    [[ -e conf.before_zet ]]
    zet -q rollback-config
    assert_file conf $'a=1\nm1\nhand\nm3\nb=1\n'
}

@test "a merge of all that entries did leaves no reserve" {
    set_param a 2
    sed -i 's/^m2/hand/' conf
    zet -q undo 1 --merge
    assert_file conf $'a=1\nm1\nhand\nm3\nb=1\n'
    assert_absent conf.before_zet
}

@test "a mode that somebody changed is an edit after a commit and its undo, too" {

    zet -q commit-config
    chmod 600 out/one.conf
    zet -q commit-config
    zet -q undo
    assert_equal "$(stat -c %a out/one.conf)" 600
    run_zet status
    [[ $output == *"$ONE: edited"* ]]
    run_zet commit-config --on-edit=refuse
    assert_status 1
    chmod 640 out/one.conf
    zet -q rollback-config --to 3 --force
    assert_equal "$(stat -c %a out/one.conf)" 600
    run_zet status
    [[ $output == *"$ONE: edited"* ]]
    run_zet rollback-config
    assert_status 1
    [[ $output == *"$ONE: edited, stays as it is"* ]]
}

@test "a mode that somebody changed is an edit after a forced rollback and its undo, too" {
    zet -q commit-config
    chmod 600 out/one.conf
    zet -q rollback-config --force
    zet -q undo
    assert_equal "$(stat -c %a out/one.conf)" 600
    run_zet status
    [[ $output == *"$ONE: edited"* ]]
}

@test "what a hand wrote between two later entries refuses the way back" {
    set_param a 2
    set_param b 2
    sed -i 's/^m2/hand/' conf
    set_param b 4
    cp conf before
    run_zet rollback-config --to 1
    assert_refusal 1 "$HOST/conf: was edited before change 3 wrote it $FORCE"
    cmp conf before
    run_zet rollback-config --to 1 --keep-edits
    assert_status 0
    cmp conf before
    zet -q rollback-config --to 1 --merge
    assert_file conf "$NOTICE"$'# --PRE-ZET-- a=1\n'"$(block a=2)"$'\nm1\nhand\nm3\nb=1\n'
    zet -q undo
    zet -q rollback-config --to 1 --force
    assert_file conf "$NOTICE"$'# --PRE-ZET-- a=1\n'"$(block a=2)"$'\nm1\nm2\nm3\nb=1\n'
}

@test "a merge that finds nothing of the entries, but a hand's line, says that it keeps the line" {
    printf 'x\nrealm = ${realm}\ny\nz\n' >templates/one.conf
    zet -q commit-config
    zet -q option set REALM X
    zet -q commit-config
    zet -q undo
    zet -q option unset REALM
    echo hand >>out/one.conf
    cp out/one.conf before
    run_zet rollback-config --to 1 --merge
    assert_status 0
    [[ $output == *"$ONE: unchanged, keeps what was edited since"$'\n'* ]]
    cmp out/one.conf before
}

@test "what a hand wrote before the first later entry refuses the way back" {
    set_param a 2
    cp conf left
    sed -i 's/^m2/hand/' conf
    set_param b 3
    cp conf before
    run_zet rollback-config --to 1
    assert_refusal 1 "$HOST/conf: was edited before change 2 wrote it $FORCE"
    cmp conf before
    zet -q rollback-config --to 1 --merge
    assert_file conf "$(sed 's/^m2/hand/' left)"$'\n'
    zet -q undo
    zet -q rollback-config --to 1 --force
    cmp conf left
    zet -q undo
    cmp conf before
}

@test "what a hand made of a committed target before a later entry refuses the way back" {
    zet -q commit-config
    cp out/one.conf left
    echo hand >>out/one.conf
    zet -q param set --force out/one.conf a 2
    run_zet rollback-config --to 1
    assert_refusal 1 "$ONE: was edited before change 2 wrote it $FORCE"
    zet -q rollback-config --to 1 --force
    cmp out/one.conf left
    run_zet status
    [[ $output == *"$ONE: in sync"* ]]
}

@test "what somebody made of the main file before a later entry stays" {
    set_param a 2
    echo "# mine" >>zet.conf
    cp zet.conf before
    zet -q option set REALM OTHER.ORG
    zet -q rollback-config --to 1
    cmp zet.conf before
    zet -q option set REALM OTHER.ORG
    echo "# mine, too" >>zet.conf
    zet -q option set REALM ANOTHER.ORG
    run_zet rollback-config --to 1
    assert_status 1
    [[ $stderr == *"$HOST/zet.conf: was edited before change "*" wrote it"* ]]
}

@test "what somebody made of a file that was taken back is his, and stays" {
    set_param a 2
    zet -q rollback-config
    sed -i 's/^m2/hand/' conf
    cp conf before
    set_param b 2
    zet -q rollback-config --to 2
    cmp conf before
    set_param b 3
    run_zet rollback-config --to 1
    assert_status 1
    [[ $stderr == *"$HOST/conf: was edited before change 3 wrote it"* ]]
}

@test "what a hand wrote, and an undo put back, stays when all is rolled back" {
    set_param a 2
    sed -i 's/^m2/hand/' conf
    set_param b 3
    zet -q rollback-config --force
    assert_file conf $'a=1\nm1\nm2\nm3\nb=1\n'
    zet -q undo
    grep -qx hand conf
    zet -q rollback-config
    assert_file conf $'a=1\nm1\nhand\nm3\nb=1\n'
}
