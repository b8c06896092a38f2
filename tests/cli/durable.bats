# What of a change is on the disk when its first file changes.

load helper
load set

setup() {
    make_set
    add_target one.conf $'x\n'
    add_target two.conf $'y\n'
    original one.conf $'old\n'
    printf 'a=1\n' >conf
}

teardown() {
    remove_host
}

# order_of WORD...: what the command does in this order, as letters: w writes the history's journal, s syncs it,
# c changes one of the files (none of a working directory). The same twice in a row is told once.
order_of() {
    strace -f -qq -y -e trace=/write,fsync,fdatasync,/rename,/unlink -o "$BASE/trace" \
        "$ZET_BIN/zet-client" --config zet.conf "$@" >"$BASE/output"
    sed -nE -e '/zet-staging/d' -e '/[/]state[.]db-wal>/s/.* p?writev?(64)?\(.*/w/p' -e '/[/]state[.]db-wal>/s/.* f(data)?sync\(.*/s/p' \
        -e '/ = 0$/s/.* (rename[a-z0-9]*\(.*, |unlink[a-z]*\(.*)"([^"]*[/])?(conf|one[.]conf|two[.]conf)".*/c/p' "$BASE/trace" |
        uniq | tr -d '\n'
}

# assert_durable WORD...: all that was written of the change before its first file is synced by then, and its end
# is written and synced after the last one.
assert_durable() {
    local order
    order=$(order_of "$@")
    [[ $order =~ ^[ws]*ws(cws)+$ ]] || differ "order of $*" "synced, changed, written, synced" "$order"
}

@test "a change is on the disk before the first byte of a file is changed, and its end after the last" {
    assert_durable param set conf a 2
    assert_durable param set conf a 3
    assert_durable commit-config
    assert_durable undo
    zet -q commit-config
    assert_durable rollback-config
    assert_file out/one.conf $'old\n'
}
