# What has to be restarted after a rollback.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n' 'restart = ["one", "both"]'
    add_target two.conf $'domain = ${domain}\n' 'restart = ["two", "both"]'
    original one.conf $'old\n'
    ONE=$HOST/out/one.conf
    TWO=$HOST/out/two.conf
}

teardown() {
    remove_host
}

@test "a rollback names the services to restart, each once" {
    zet -q commit-config
    run_zet rollback-config -n
    assert_status 3
    assert_equal "$(tail -n 1 <<<"${output%?}")" "would have to be restarted: one, both, two"
    run_zet --json rollback-config -n
    assert_json 'd["restart"]' '["one", "both", "two"]'
    run_zet rollback-config
    assert_success "$ONE: put back as it was, mode 0644 -> 0640
$TWO: removed, as there was none before
to be restarted: one, both, two"
}

@test "what stays as it is needs no restart" {
    zet -q commit-config
    echo mine >>out/one.conf
    run_zet --json rollback-config -n
    assert_json 'd["restart"]' '["two", "both"]'
    run_zet --json rollback-config
    assert_status 1
    assert_json 'd["restart"]' '["two", "both"]'
    run_zet --json rollback-config
    assert_json 'd["restart"]' '[]'
    run_zet --json rollback-config --force
    assert_status 0
    assert_json 'd["restart"]' '["one", "both"]'
}

@test "what could not be put back needs no restart" {
    zet -q commit-config
    rm out/one.conf.before_zet
    mkdir out/one.conf.before_zet
    run_zet --json rollback-config
    assert_status 1
    assert_json 'd["restart"]' '["two", "both"]'
}

@test "only changes and errors are wanted, so no service is named" {
    zet -q commit-config
    run_zet -q rollback-config
    assert_success "$HOST/out/one.conf: put back as it was, mode 0644 -> 0640
$HOST/out/two.conf: removed, as there was none before"
}

@test "a rollback that a signal ends names the services of what it had put back" {
    zet -q commit-config
    capture strace -f -qq -o "$BASE/trace" -P ././one.conf.before_zet -e trace=/rename -e inject=/rename:signal=TERM \
        "$ZET_BIN/zet-client" --config zet.conf rollback-config
    assert_status 1
    assert_equal "$(tail -n 1 <<<"${output%?}")" "to be restarted: one, both"
    assert_file out/one.conf $'old\n'
    assert_made two.conf $'domain = example.org\n'
}

@test "what no service is in charge of is named as it is typed" {
    add_target three.conf $'server = ${server}\n' 'reload = { client = ["quick", ["own", "-c"]], server = [["other", "-s"]] }'
    run_zet commit-config three.conf
    assert_success "$HOST/out/three.conf: created, mode 0644, owner $(id -u):$(id -g)
to be reloaded: quick
to be run: own -c
1 created"
    run_zet --json rollback-config -n
    assert_json 'd["reload"]' '["quick", "own -c"]'
    run_zet rollback-config -n
    assert_status 3
    [[ $output == *$'would have to be reloaded: quick\nwould have to be run: own -c'* ]]
}

@test "a word is quoted that ends as one that the history hides" {
    add_target three.conf $'server = ${server}\n' 'reload = [["find", "/srv", "-name", "a***"]]'
    run_zet commit-config three.conf
    assert_success "$HOST/out/three.conf: created, mode 0644, owner $(id -u):$(id -g)
to be run: find /srv -name 'a***'
1 created"
}

@test "a command is printed with the quotes that a shell needs" {
    add_target three.conf $'server = ${server}\n' "reload = [[\"sh\", \"-c\", 'echo \"hi \$x\"']]"
    run_zet commit-config three.conf
    assert_success "$HOST/out/three.conf: created, mode 0644, owner $(id -u):$(id -g)
to be run: sh -c 'echo \"hi \$x\"'
1 created"
}
