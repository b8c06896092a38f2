# Stores of each version that the history had, as its product left them: they are read, and go on. stores/ has them, each with
# the host that it is the store of.

load helper

setup() {
    make_host
    TREE=$BASE/tree
}

teardown() {
    remove_host
}

# in_tree WORD...: a command of the server in that host.
in_tree() {
    "$ZET_BIN/zet-init" --root "$TREE" "$@"
}

@test "a store of every version is read, and goes on" {
    local store
    for store in "$BATS_TEST_DIRNAME"/stores/schema-*.tar.gz; do
        rm -rf "$TREE"
        mkdir -p "$TREE"
        tar -x -f "$store" -C "$TREE"
        in_tree history | grep -F '# schema'
        # The notice has the name of the tree that the store was made in, so that a commit would change it.
        capture in_tree status
        assert_status 3
        in_tree undo
        assert_equal "$(in_tree param get /etc/edited B)" 1
        in_tree param set /etc/edited B 3
        in_tree history export >/dev/null  # reads each text
        in_tree history show 1 /etc/greeting | grep -Fx 'by hand'
        in_tree rollback-config
        assert_file "$TREE/etc/greeting" $'by hand\n'
        assert_file "$TREE/etc/edited" $'A=1\nB=1\n'
    done
}
