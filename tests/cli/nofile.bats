# A FILE that has nothing to do with the product needs no configuration file.

load helper

setup() {
    umask 022
    make_host
    mkdir -p tree/etc
    printf 'a=1\nb=2\n' >tree/etc/some
}

teardown() {
    remove_host
}

on_tree() {
    capture "$ZET_BIN/zet-client" --root "$HOST/tree" "$@"
}

@test "the defaults serve the commands on any file" {
    on_tree param get /etc/some a
    assert_success 1
    on_tree line get /etc/some ^b
    assert_success b=2
    on_tree param set /etc/some a new
    assert_status 0
    assert_output "$HOST/tree/etc/some: changed, the original is kept as $HOST/tree/etc/some.before_zet"
    # Only root is told so much of what he did not ask for.
    [[ $EUID -ne 0 ]] || assert_stderr "zet-client: warning: what is changed is not recorded: ZET_VAR_LIB_DIR cannot be written (create it, or make it writable)"
    on_tree explain /etc/some
    assert_status 0
    on_tree doctor /etc/some
    assert_success "$HOST/tree/etc/some: no damage"
    on_tree file restore /etc/some
    assert_status 0
    assert_output "$HOST/tree/etc/some: restored, from $HOST/tree/etc/some.before_zet"
    assert_file tree/etc/some $'a=1\nb=2\n'
    assert_equal "$(find tree -mindepth 1 | sort | paste -sd ' ')" "tree/etc tree/etc/some"
}

@test "what was edited without it can be taken back without it" {
    mkdir -p tree/var/lib/zet
    on_tree param set /etc/some a new
    assert_status 0
    on_tree undo
    assert_success "$HOST/tree/etc/some: restored
took back change 1"
    assert_file tree/etc/some $'a=1\nb=2\n'
}

@test "the commands on the product's own files need it" {
    local command
    for command in commit-config check-config rollback-config status values "template process a -" \
        "template install a" "option get DOMAIN" "option set DOMAIN x"; do
        on_tree $command
        assert_refusal 1 "$HOST/tree/etc/zet/zet.conf: cannot be read: No such file or directory (name a configuration file that exists and is readable)"
    done
}

@test "a file that is named with --config must be there" {
    local option
    for option in "-c /etc/zet/zet.conf" "--config=/etc/zet/zet.conf" "-c /etc/other"; do
        on_tree $option param get /etc/some a
        assert_status 1
        assert_output ""
        [[ $stderr == *": cannot be read: No such file or directory (name a configuration file that exists and is readable)"$'\n' ]]
    done
    capture "$ZET_BIN/zet-client" --root "$HOST/tree" param get /etc/some a -c /etc/other
    assert_status 1
}

@test "a file that is there must be one that can be read" {
    mkdir -p tree/etc/zet
    echo nonsense >tree/etc/zet/zet.conf
    on_tree param get /etc/some a
    assert_refusal 1 "$HOST/tree/etc/zet/zet.conf:1: no \"=\" in the line (write NAME=value, or \"#\" before a comment)"
    rm tree/etc/zet/zet.conf
    mkdir tree/etc/zet/zet.conf
    on_tree param get /etc/some a
    assert_refusal 1 "$HOST/tree/etc/zet/zet.conf: cannot be read: not a regular file (name a configuration file)"
}

@test "a main file that is a link to nothing is told, and does not count as missing" {
    printf 'a=1\n' >conf
    ln -s nowhere link.conf
    for command in "param set conf a 2" commit-config; do
        # shellcheck disable=SC2086 # words
        capture "$ZET_BIN/zet-client" --config "$HOST/link.conf" $command
        assert_status 1
        [[ $stderr == *"$HOST/link.conf: is a link to $HOST/nowhere, which is not there (correct the link, or remove it)"* ]] || differ "$command" refusal "$stderr"
    done
    assert_file conf $'a=1\n'
}
