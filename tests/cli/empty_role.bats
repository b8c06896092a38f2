# A role that has committed, and of which no target is in force: its status goes its own way.

load helper
load set

setup() {
    make_set
    printf 'ON=no\n' >>zet.conf
    add_target one.conf $'x\n' 'when = "ON=yes"'
    printf 'a=1\n' >out/plain
}

teardown() {
    remove_host
}

@test "an undo leaves the status of a role without targets where it is" {
    zet -q commit-config
    zet -q param set "$HOST/out/plain" a 7
    run_zet undo
    assert_status 0
    assert_file out/plain $'a=1\n'
    [[ $output != *status* ]] || differ "what undo tells" "no status" "$output"
    test -e state/zet-client.status
    test -e state/zet-client-fs.status
}

@test "what one role did is taken back, and the status of the other one stays" {
    zet -q commit-config
    printf '[[edits]]\nfile = "%s"\nparam = "a"\nvalue = "7"\nroles = "server"\n' "$HOST/out/plain" >>templates/targets.toml
    server -q commit-config
    server -q undo
    assert_file out/plain $'a=1\n'
    test -e state/zet-client.status
    assert_absent state/zet-init.status
    assert_absent state/zet-server.status
}

@test "the first commit of a role without targets is taken back, and comes again" {
    zet -q commit-config
    zet undo
    assert_absent state/zet-client.status
    zet undo
    test -e state/zet-client.status
    test -e state/zet-client-fs.status
    zet undo
    assert_absent state/zet-client.status
}

@test "a way back over several changes leaves the status that was there then" {
    zet -q commit-config
    zet -q param set "$HOST/out/plain" a 7
    zet -q param set "$HOST/out/plain" a 8
    zet -q rollback-config --to 2
    test -e state/zet-client.status
    zet -q rollback-config --to 1
    test -e state/zet-client.status
    assert_file out/plain $'a=1\n'
}
