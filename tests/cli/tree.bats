# Commands that work on a host tree from outside.

load helper

setup() {
    make_host
}

teardown() {
    remove_host
}

# A host tree in tree/, whose parameters have the names that the host itself has for its files.
make_tree() {
    mkdir -p tree/etc/zet tree/usr/share/zet/templates tree/var/lib/zet outside
    printf 'DOMAIN=example.org\nSERVER=srv.example.org\n' >tree/etc/zet/zet.conf
    printf 'a=1\n' >tree/etc/real
    printf 'a=outside\n' >outside/real
}

run_in_tree() {
    capture "$ZET_BIN/zet-client" --root tree "$@"
}

@test "under a root, files and links are those of the tree" {
    make_tree
    ln -s /etc/real tree/etc/absolute
    ln -s ../../../../etc/real tree/etc/climbing
    run_in_tree param set --no-markers /etc/absolute a 2
    assert_success "$HOST/tree/etc/real: changed, the original is kept as $HOST/tree/etc/real.before_zet"
    run_in_tree param set --no-markers etc/climbing a 3
    assert_status 0
    assert_file tree/etc/real $'a=3\n'
    assert_equal "$(readlink tree/etc/absolute)" /etc/real
    run_in_tree param get ../../etc/real a
    assert_success "3"
}

@test "under a root, a link of the host itself is not followed out" {
    make_tree
    ln -s "$HOST/outside" tree/etc/dir
    run_in_tree param set /etc/dir/real a 2
    assert_status 1
    assert_file outside/real $'a=outside\n'
}

@test "under a root, options, templates and values are those of the tree" {
    make_tree
    echo 'realm ${realm}' >tree/usr/share/zet/templates/one.conf
    run_in_tree option set REALM OTHER.ORG
    assert_success "$HOST/tree/etc/zet/zet.conf: changed"
    run_in_tree template process one.conf /etc/out
    assert_success "$HOST/tree/etc/out: created
$HOST/tree/etc/zet/one.conf: created"
    assert_equal "$(tail -n 1 tree/etc/out)" "realm OTHER.ORG"
    ln -s "$HOST/outside/real" tree/usr/share/zet/templates/leak.conf
    run_in_tree template install leak.conf
    assert_refusal 1 "$HOST/tree/usr/share/zet/templates/leak.conf: is a link that leads out of the root directory (put a file there)"
}
