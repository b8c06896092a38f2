# What tells root what to do, where others have a hand in it: it is refused before it is read, run or written.

load helper
load set

setup() {
    need_root
    make_set
    STRANGER=12345
}

teardown() {
    remove_host
}

# opened FILE: what the last command under strace opened to read under this name, beyond looking who owns it.
opened() {
    grep -F "\"$1\"" "$BASE/trace" | grep -v O_PATH || true
}

# traced ARGUMENT...: the command, and every file that it opens in $BASE/trace.
traced() {
    capture strace -f -qq -e trace=openat,open -o "$BASE/trace" "$ZET_BIN/zet-client" --config zet.conf "$@"
}

# assert_list_unread PROBLEM: no command makes anything of the list, which has a broken line.
assert_list_unread() {
    local command
    for command in status check-config "commit-config -n" commit-config rollback-config; do
        # shellcheck disable=SC2086 # words
        traced $command
        assert_status 1
        [[ $output$stderr == *"$1"* ]] || differ "$command" "$1" "$output$stderr"
        [[ $output$stderr != *planted* ]] || differ "$command" "nothing of the list" "$output$stderr"
        assert_equal "$(opened "$HOST/templates/targets.toml")" ""
    done
}

assert_told() {
    run_zet check-config
    assert_refusal 1 "$1"
}

@test "a list of targets in a directory that others may write is refused unread" {
    echo 'planted' >templates/targets.toml
    chmod 777 templates
    assert_list_unread "$HOST/templates"
    assert_told "$HOST/templates: others may write the directory of $HOST/templates/targets.toml (chmod o-w it)"
    chmod 775 templates
    chgrp "$STRANGER" templates
    assert_told "$HOST/templates: a group or others may write the directory of $HOST/templates/targets.toml (chmod g-w it)"
}

@test "a list of targets to which another user's directory or link leads is refused unread" {
    chown "$STRANGER" templates
    echo 'planted' >templates/targets.toml
    chown "$STRANGER" templates/targets.toml
    assert_list_unread "so root does not use it"
    assert_told "$HOST/templates/targets.toml: is in a directory of user $STRANGER, so root does not use it (let root own all directories and links on the way)"
    # Root's own list, to which a link of his leads.
    mkdir own
    echo 'planted' >own/targets.toml
    ln -sf "$HOST/own/targets.toml" templates/targets.toml
    chown -h "$STRANGER" templates/targets.toml
    assert_told "$HOST/templates/targets.toml: is a link of user $STRANGER that leads to /, which belongs to root (run the command as that user: sudo -u '#$STRANGER' ..., or let root own all directories and links on the way)"
}

@test "a module on a way that others may lead elsewhere is refused before it is loaded" {
    need_module_file
    mkdir -p open/lib
    printf 'a=1\n' >conf
    # Root owns it and its directory, so that only the way there is open.
    cp "$ZET_BIN/../lib/zet/libzet-config.so" open/lib/
    chmod -R go-w open
    run_zet --module "$HOST/open/lib/libzet-config.so" param get conf a
    assert_success 1
    chmod 777 open
    traced --module "$HOST/open/lib/libzet-config.so" param get conf a
    assert_refusal 1 "$HOST/open: others may write the directory of $HOST/open/lib (chmod o-w it)"
    assert_equal "$(opened "$HOST/open/lib/libzet-config.so")" ""
    chmod 755 open
    chown "$STRANGER" open
    traced --module "$HOST/open/lib/libzet-config.so" param get conf a
    assert_status 1
    [[ $stderr == "zet-client: error: $HOST/open/lib"*"$STRANGER"* ]]
    assert_equal "$(opened "$HOST/open/lib/libzet-config.so")" ""
}

@test "a module that another user planted is refused before it is loaded" {
    need_module_file
    mkdir lib
    printf 'a=1\n' >conf
    cp "$ZET_BIN/../lib/zet/libzet-config.so" lib/
    chown "$STRANGER" lib/libzet-config.so
    traced --module "$HOST/lib/libzet-config.so" param get conf a
    assert_status 1
    [[ $stderr == *"$HOST/lib/libzet-config.so"*"others than root may write the file"* ]]
    assert_equal "$(opened "$HOST/lib/libzet-config.so")" ""
}

@test "a working copy is not made where others have a hand, and nothing of the set is written" {
    mkdir templates/sub etc/sub
    add_target sub/one.conf $'x\n'
    sed -i "s|$HOST/out/sub/one.conf|$HOST/out/one.conf|" templates/targets.toml
    add_target a.conf $'x\n'
    chown "$STRANGER" etc/sub
    for command in commit-config "commit-config -n" check-config; do
        # shellcheck disable=SC2086 # words
        run_zet $command
        assert_status 1
        [[ $stderr$output == *"$HOST/etc/sub/one.conf: would be a file of root's in a directory of user $STRANGER"* ]]
        assert_equal "$(names_in out) $(names_in etc)" " sub"
    done
    chown 0 etc/sub
    chmod 775 etc/sub
    chgrp "$STRANGER" etc/sub
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"$HOST/etc/sub: a group or others may write the directory of $HOST/etc/sub/one.conf (chmod g-w it)"* ]]
    assert_equal "$(names_in out) $(names_in etc)" " sub"
    chmod 755 etc/sub
    run_zet commit-config
    assert_status 0
}

# closed_set: a target of root's, and one that is rendered with the rights of the stranger.
closed_set() {
    add_target a.conf $'x\n'
    add_target one.conf $'x\n'
    sed -i "s|$HOST/out/one.conf|$HOST/home/conf|" templates/targets.toml
    mkdir home
    echo old >home/conf
    chown -R "$STRANGER:$STRANGER" home
    UNREADABLE="$HOST/home/conf: is rendered with the rights of user $STRANGER, who may not read the template [one.conf]"
}

assert_nothing_committed() {
    for command in check-config "commit-config -n" commit-config; do
        # shellcheck disable=SC2086 # words
        run_zet $command
        assert_status 1
        [[ $output$stderr == *"$UNREADABLE"* ]] || differ "$command" "$UNREADABLE" "$output$stderr"
    done
    assert_equal "$(names_in out) $(names_in home)" " conf"
    assert_file home/conf $'old\n'
}

@test "a template that the owner of the target's directory may not read is a problem of the check" {
    closed_set
    chmod 600 templates/one.conf
    assert_nothing_committed
    assert_equal "$(names_in etc)" ""
    chmod 644 templates/one.conf
    zet template install one.conf
    chmod 640 etc/one.conf
    assert_nothing_committed
    chmod o+r etc/one.conf
    run_zet commit-config
    assert_status 0
}

@test "a working copy in a directory that the owner of the target's may not search is a problem of the check" {
    closed_set
    chmod 700 etc
    assert_nothing_committed
    assert_equal "$(names_in etc)" ""
    chmod 755 etc
    run_zet commit-config
    assert_status 0
}

@test "a template that only its group may read is rendered for an owner of that group" {
    closed_set
    chown "0:$STRANGER" templates/one.conf
    chmod 640 templates/one.conf
    run_zet commit-config
    assert_status 0
    assert_equal "$(stat -c '%a %u:%g' etc/one.conf home/conf | paste -sd ' ')" "640 0:$STRANGER 640 $STRANGER:$STRANGER"
}
