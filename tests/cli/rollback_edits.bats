# rollback-config and files that were edited in place.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
    printf 'a=1\nb=2\n' >conf
    zet -q param set conf a 3
}

teardown() {
    remove_host
}

@test "a file that is as the product left it goes back to its reserve, byte and mode" {
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$HOST/conf: put back as it was"* ]]
    assert_file conf $'a=1\nb=2\n'
    assert_absent conf.before_zet
    run_zet status
    [[ $output != *conf:\ edit* ]]
}

@test "in a file that others changed since, only the product's blocks are taken out" {
    sed -i 's/^b=2/b=mine/' conf
    run_zet rollback-config -n --diff
    assert_status 3
    [[ $output == *"$HOST/conf: the managed blocks are taken out, all other lines stay"* && $output == *"-a=3"* ]]
    run_zet rollback-config
    assert_status 0
    assert_file conf $'a=1\nb=mine\n'
    run_zet rollback-config
    assert_status 0
    assert_file conf $'a=1\nb=mine\n'
}

@test "without a reserve the blocks are taken out" {
    printf 'x=1\n' >other
    zet -q param set --no-backup other x 2
    run_zet rollback-config
    assert_status 0
    assert_file other $'x=1\n'
}

@test "an edit without markers and reserve is named and stays" {
    printf 'x=1\n' >other
    zet -q param set --no-backup --no-markers other x 2
    run_zet rollback-config
    assert_status 1
    [[ $output == *"$HOST/other: was edited without markers and has no reserve, stays as it is"* ]]
    assert_file other $'x=2\n'
}

@test "damaged markers are refused with their line, and the others go back" {
    sed -i '/ZET_END/d' conf
    zet -q commit-config
    run_zet rollback-config
    assert_status 1
    [[ $stderr == *"$HOST/conf: could not be put back: $HOST/conf:"* ]]
    assert_absent out/one.conf
}

@test "named targets leave the edits alone" {
    zet -q commit-config
    run_zet rollback-config out/one.conf
    assert_status 0
    grep -qx a=3 conf
}

@test "what was taken back can be undone" {
    sed -i 's/^b=2/b=mine/' conf
    cp conf before
    zet -q rollback-config
    run_zet undo
    assert_status 0
    cmp conf before
}

@test "a file that is gone is put back from its reserve, as a target is" {
    rm conf
    run_zet rollback-config -n
    assert_status 3
    [[ $output == *"$HOST/conf: would be put back as it was"* ]]
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$HOST/conf: put back as it was"* ]]
    assert_file conf $'a=1\nb=2\n'
    assert_absent conf.before_zet
}

@test "a file that is gone and has no reserve is not there" {
    printf 'x=1\n' >other
    zet -q param set --no-backup other x 2
    rm other
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$HOST/other: is not there"* ]]
    assert_absent other
}

@test "what was edited in a directory that is away stays on record" {
    mkdir mnt
    printf 'a=1\n' >mnt/conf
    zet -q param set mnt/conf a 2
    mv mnt away
    run_zet rollback-config -n
    assert_status 1
    run_zet rollback-config
    assert_status 1
    [[ $output == *"$HOST/mnt/conf: its directory is not there, so that it stays on record (--force forgets it)"* ]]
    mv away mnt
    run_zet rollback-config
    assert_status 0
    assert_file mnt/conf $'a=1\n'
    assert_absent mnt/conf.before_zet
    zet -q param set mnt/conf a 2
    rm -r mnt
    run_zet rollback-config --force
    assert_status 0
    run_zet rollback-config
    assert_status 0
    [[ $output != *mnt/conf* ]]
}

@test "a dry run tells that an edit without markers would be forgotten" {
    zet -q rollback-config
    echo 'a=1' >plain
    zet -q param set --no-markers plain a 2
    echo b=1 >>plain
    run_zet rollback-config -n
    assert_status 3
    [[ $stderr == *": no file would change, but what is on record would"* ]]
    zet -q rollback-config
    run_zet rollback-config -n
    assert_status 0
    assert_stderr ""
}
