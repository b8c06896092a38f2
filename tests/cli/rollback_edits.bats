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
    [[ $output == *"$HOST/conf: the managed blocks would be taken out, all other lines stay"* && $output == *"-a=3"* ]]
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$HOST/conf: the managed blocks are taken out, all other lines stay"* ]]
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
    [[ $stderr == *"$HOST/other: was edited without markers and has no reserve, stays as it is (--force forgets it)"* ]]
    assert_file other $'x=2\n'
}

@test "a former line that lost its block stays, and the way back is named" {
    zet -q file strip conf
    echo c=1 >>conf
    run_zet rollback-config -n
    [[ $output == *"$HOST/conf: the notice would be taken out; kept former lines stay"* ]]
    run_zet rollback-config
    assert_status 1
    [[ $output == *"$HOST/conf: the notice is taken out; kept former lines stay (\"param restore\" or \"line restore\" brings one back), and the file is on record (--force puts back what was there before)"* ]]
    assert_file conf $'# --PRE-ZET-- a=1\nb=2\nc=1\n'
    zet -q param restore --no-markers conf a
    assert_file conf $'a=1\nb=2\nc=1\n'
}

@test "damaged markers are refused with their line, and the others go back" {
    sed -i '/ZET_END/d' conf
    zet -q commit-config
    run_zet rollback-config
    assert_status 1
    [[ $stderr == *"$HOST/conf: could not be put back: $HOST/conf:"*"(\"zet-client doctor $HOST/conf\" tells a repair)"* ]]
    assert_absent out/one.conf
}

@test "named targets leave the edits alone" {
    zet -q commit-config
    run_zet rollback-config out/one.conf
    assert_status 0
    grep -qx a=3 conf
}

@test "an edit that is named goes back alone" {
    zet -q commit-config
    run_zet rollback-config conf
    assert_status 0
    assert_output "$HOST/conf: put back as it was"
    assert_file conf $'a=1\nb=2\n'
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    run_zet status
    assert_status 0
}

@test "an edit that goes back by its name, or by two, takes no status with it" {
    sed -i 's/^roles.*/&\nenabled = false/' templates/targets.toml
    zet -q commit-config
    run_zet rollback-config conf "$HOST/conf"
    assert_status 0
    assert_output "$HOST/conf: put back as it was"
    assert_stderr ""
    [[ -e state/zet-client.status ]]
}

@test "without a list, what was edited in place goes back all the same" {
    mv templates/targets.toml list
    run_zet rollback-config
    assert_status 1
    assert_output "$HOST/conf: put back as it was"
    [[ $stderr == *"list of targets "*"only the files that are on record are put back"$'\n' ]]
    assert_file conf $'a=1\nb=2\n'
    run_zet rollback-config
    assert_status 1
    [[ $stderr != *"on record"* ]]
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
    [[ $output == *"$HOST/other: is not there (\"history $HOST/other\" tells what is kept of it)"* ]]
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
    [[ $stderr == *"$HOST/mnt/conf: its directory is not there, so that it stays on record (--force forgets it)"* ]]
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

@test "an edit keeps no text of the product's as the original" {
    rm conf.before_zet
    run_zet param set conf b 5
    assert_status 0
    assert_stderr "zet-client: warning: conf: has no reserve, and gets none, as the product's own work is no original (\"history $HOST/conf\" tells where that is kept)"
    assert_output "conf: changed"
    assert_absent conf.before_zet
    run_zet rollback-config
    assert_status 0
    assert_file conf $'a=1\nb=2\n'
}

@test "a list's line keeps no text of the product's as the original" {
    printf '[[edits]]\nfile = "%s"\nroles = "both"\nparam = "c"\nvalue = "${domain}"\n' "$HOST/listed" >>templates/targets.toml
    printf 'c=0\n' >listed
    zet -q commit-config
    rm listed.before_zet
    zet -q option set DOMAIN other.org
    run_zet commit-config
    assert_status 0
    [[ $stderr == *"$HOST/listed: has no reserve, and gets none"* ]]
    assert_absent listed.before_zet
}

@test "an edit without markers that somebody changed since is named, stays, and is on record" {
    printf 'x=1\n' >other
    zet -q param set --no-markers other x 2
    echo mine=1 >>other
    run_zet status
    [[ $output == *"$HOST/other: edit changed"* ]] || differ status changed "$output"
    local round
    for round in 1 2; do
        run_zet rollback-config
        assert_status 1
        [[ $stderr == *"$HOST/other: was edited without markers, and may hold what others wrote, stays as it is (--force puts back what was there before)"* ]] || differ rollback named "$stderr"
        assert_file other $'x=2\nmine=1\n'
    done
    run_zet rollback-config --force
    assert_status 0
    assert_file other $'x=1\n'
}

@test "beside blocks, what was edited without markers is named, stays, and is on record" {
    printf 'x=1\n[one]\nkey=1\n' >other
    zet -q param set other --no-section x 2
    zet -q param set --no-markers other --section one key 9
    echo mine=1 >>other
    run_zet rollback-config -n
    assert_status 1
    [[ $output == *"$HOST/other: the managed blocks would be taken out; what was edited without markers stays, and is on record (--force puts back what was there before)"* ]]
    run_zet rollback-config
    assert_status 1
    [[ $output == *"$HOST/other: the managed blocks are taken out; what was edited without markers stays, and is on record (--force puts back what was there before)"* ]] ||
        differ rollback named "$output"
    assert_file other $'x=1\n[one]\nkey=9\nmine=1\n'
    run_zet rollback-config
    assert_status 1
    [[ $stderr == *"$HOST/other: was edited without markers, and may hold what others wrote, stays as it is"* ]]
    run_zet rollback-config --force
    assert_status 0
    assert_file other $'x=1\n[one]\nkey=1\n'
}

@test "where all edits had markers, the blocks go, and nothing is left to be named" {
    printf 'x=1\n' >other
    zet -q param set other x 2
    echo mine=1 >>other
    zet -q param set other x 3
    run_zet rollback-config
    assert_status 0
    assert_file other $'x=1\nmine=1\n'
}

@test "force forgets an edit without markers whose reserve somebody took away" {
    echo x=1 >other
    zet -q param set --no-markers other x 2
    rm other.before_zet
    run_zet rollback-config
    assert_status 1
    run_zet rollback-config --force
    assert_status 0
    [[ $output == *"$HOST/other: has no reserve, stays as it is"* ]] || differ rollback forced "$output"
    assert_file other $'x=2\n'
    run_zet status
    [[ $output != *other* ]]
}
