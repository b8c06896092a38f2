# A whole host tree under --root, worked on by a user without any rights beyond it.

load helper
load set

setup() {
    umask 022
    make_host
    # The names are those that the host itself has for its files.
    mkdir -p tree/etc/zet tree/usr/share/zet/templates tree/var/lib/zet outside
    printf 'DOMAIN=example.org\nSERVER=srv.example.org\n' >tree/etc/zet/zet.conf
    echo 'realm = ${realm}' >tree/usr/share/zet/templates/one.conf
    list one.conf /etc/one.conf
    echo old >tree/etc/one.conf
    TREE=$HOST/tree
    COMMAND=("$ZET_BIN/zet-client")
}

teardown() {
    remove_host
}

# list NAME PATH: an entry of the tree's list of targets.
list() {
    printf '[templates."%s"]\ntarget = "%s"\nroles = "both"\n' "$1" "$2" >>tree/usr/share/zet/templates/targets.toml
}

run_in_tree() {
    capture "${COMMAND[@]}" --root tree "$@"
}

remember_outside() {
    OUTSIDE=$(find outside -printf '%p %y %m %i %T@ %l\n' -type f -exec cat {} +)
}

# assert_outside_unchanged: what lies beside the tree is as it was, and the host's own directories are.
assert_outside_unchanged() {
    assert_equal "$(find outside -printf '%p %y %m %i %T@ %l\n' -type f -exec cat {} +)" "$OUTSIDE"
}

# assert_in_tree FILE: the file of the tree was made from one.conf; its notice names the way to it.
assert_in_tree() {
    assert_equal "$(tail -n 1 "tree/$1")" "realm = EXAMPLE.ORG"
}

@test "a check command that refuses, or cannot be started, names the target as it is in the tree" {
    echo 'check = ["false"]' >>tree/usr/share/zet/templates/targets.toml
    run_in_tree commit-config --run-checks
    assert_status 1
    [[ $stderr == "zet-client: error: $TREE/etc/one.conf: its check \"false\" refuses"* ]]
    sed -i 's/"false"/"missing-program"/' tree/usr/share/zet/templates/targets.toml
    run_in_tree commit-config --run-checks
    assert_status 1
    [[ $stderr == "zet-client: error: $TREE/etc/one.conf: what [one.conf] renders to cannot be checked: missing-program: "*")"$'\n' ]]
}

@test "an ordinary user commits, asks and goes back in a tree of his own" {
    need_root
    copy_programs
    COMMAND=(as_nobody "$BASE/programs/bin/zet-client")
    chown -R 65534:65534 tree
    run_in_tree check-config
    assert_status 0
    run_in_tree commit-config
    assert_success "$TREE/etc/one.conf: changed, the original is kept as $TREE/etc/one.conf.before_zet
1 changed"
    assert_in_tree etc/one.conf
    assert_equal "$(find tree -not -user 65534)" ""
    run_in_tree status
    assert_status 0
    assert_equal "$(tail -n 2 <<<"${output%?}" | head -n 1)" "$TREE/etc/one.conf: in sync"
    run_in_tree rollback-config /etc/one.conf
    assert_status 0
    assert_file tree/etc/one.conf $'old\n'
    assert_equal "$(names_in tree/var/lib/zet)" zet.lock
}

@test "the notice names the template's working copy with the root" {
    run_in_tree commit-config
    assert_status 0
    assert_equal "$(sed -n 5p tree/etc/one.conf)" "# Edit '$TREE/etc/zet/one.conf'"
}

@test "values that are rendered do not get the root" {
    echo '${server_export_dir}' >tree/usr/share/zet/templates/one.conf
    run_in_tree commit-config
    assert_status 0
    assert_equal "$(tail -n 1 tree/etc/one.conf)" /srv/zet
    grep -qx 'SERVER_EXPORT_DIR=/srv/zet' tree/var/lib/zet/zet-client.status
}

@test "a tree that was moved is still known" {
    run_in_tree commit-config
    mv tree tree2
    capture "$ZET_BIN/zet-client" --root tree2 rollback-config
    assert_status 0
    assert_file tree2/etc/one.conf $'old\n'
}

@test "a root that is a link or climbs is the directory that it leads to" {
    ln -s tree link
    capture "$ZET_BIN/zet-client" --root link commit-config
    assert_status 0
    assert_equal "${output%%:*}" "$TREE/etc/one.conf"
    capture "$ZET_BIN/zet-client" --root outside/../tree/ status
    assert_status 0
    assert_equal "$(tail -n 2 <<<"${output%?}" | head -n 1)" "$TREE/etc/one.conf: in sync"
}

@test "targets that are links lead to files of the tree, however they climb" {
    echo outside >outside/file
    remember_outside
    mkdir tree/real
    local link
    rm tree/etc/one.conf
    for link in /real/file ../../../../../../../../real/file "../../../../../../../../../real/../real/./file"; do
        ln -sfn "$link" tree/etc/one.conf
        run_in_tree commit-config
        assert_status 0
        assert_equal "${output%%:*}" "$TREE/real/file"
        assert_in_tree real/file
        assert_equal "$(readlink tree/etc/one.conf)" "$link"
        run_in_tree rollback-config
        assert_status 0
        assert_equal "$(names_in tree/real)" ""
    done
    # Led out, the link would find a directory that is there.
    ln -sfn "$HOST/outside/file" tree/etc/one.conf
    run_in_tree commit-config
    assert_status 1
    assert_stderr "zet-client: error: $TREE$HOST/outside: the directory of $TREE$HOST/outside/file cannot be used: No such file or directory (create it, or correct the target in the list)
zet-client: nothing was changed"
    assert_outside_unchanged
}

@test "a directory on the way to a target that is a link stays inside" {
    mkdir tree/other outside/etc
    remember_outside
    list two.conf /way/two.conf
    echo two >tree/usr/share/zet/templates/two.conf
    ln -s ../../../../other tree/way
    run_in_tree commit-config
    assert_status 0
    assert_equal "$(tail -n 1 tree/other/two.conf)" two
    run_in_tree rollback-config
    assert_status 0
    assert_equal "$(names_in tree/other)" ""
    ln -sfn "$HOST/outside" tree/way
    run_in_tree commit-config
    assert_status 1
    assert_outside_unchanged
}

@test "the product's own directories that are links stay inside" {
    mkdir -p tree/srv/state tree/srv/cfg outside/state
    remember_outside
    rm -r tree/var/lib/zet
    ln -s /srv/state tree/var/lib/zet
    run_in_tree commit-config
    assert_status 0
    assert_equal "$(names_in tree/srv/state)" "zet-client-fs.status zet-client.status zet.lock"
    rm tree/var/lib/zet
    ln -s "$HOST/outside/state" tree/var/lib/zet
    run_in_tree commit-config
    assert_status 1
    assert_outside_unchanged
}

@test "a template or a list that is a link out of the tree is not read" {
    echo 'secret of the host' >outside/file
    remember_outside
    ln -sfn "$HOST/outside/file" tree/usr/share/zet/templates/one.conf
    run_in_tree commit-config
    assert_status 1
    assert_stderr "zet-client: error: $TREE/usr/share/zet/templates/one.conf: the template is a link that leads out of the root directory (put the template itself there)
zet-client: nothing was changed"
    ln -sfn "$HOST/outside/file" tree/usr/share/zet/templates/targets.toml
    local command
    for command in commit-config check-config status rollback-config; do
        run_in_tree "$command"
        assert_status 1
        [[ $stderr == *"$TREE/usr/share/zet/templates/targets.toml: the list of targets is a link that leads out of the root directory (put the list itself there)"* ]]
        [[ $output$stderr != *secret* ]]
    done
    assert_outside_unchanged
}

@test "a history whose paths lead out by a link takes nothing back there" {
    mkdir tree/dir outside/dir
    list two.conf /dir/two.conf
    echo two >tree/usr/share/zet/templates/two.conf
    run_in_tree commit-config
    assert_status 0
    sed -i '/two.conf/,$d' tree/usr/share/zet/templates/targets.toml
    echo precious >outside/dir/two.conf
    : >outside/dir/two.conf.no_file_before_zet
    rm -r tree/dir
    ln -s "$HOST/outside/dir" tree/dir
    remember_outside
    run_in_tree rollback-config --force
    assert_outside_unchanged
    [[ $stderr == *"$TREE/dir/two.conf: leads out of the root directory by a link, and is left alone"* ]]
}

@test "a directory that is none cannot serve as root" {
    local root
    for root in nowhere outside/file; do
        : >outside/file
        capture "$ZET_BIN/zet-client" --root "$root" status
        assert_refusal 1 "$root: is no directory that can serve as root (create it, or correct --root)"
    done
    capture "$ZET_BIN/zet-client" --root '' status
    assert_status 2
}

@test "the host itself as root is as good as none" {
    capture "$ZET_BIN/zet-client" --root / --config "$HOST/zet.conf" option get REALM
    assert_success EXAMPLE.ORG
}

@test "state files that are links are not followed out of the tree" {
    run_in_tree commit-config
    assert_status 0
    local file
    for file in zet-client.status zet-client-fs.status; do
        mv "tree/var/lib/zet/$file" "$BASE/kept"
        sed 's/^COMMIT_TIME=.*/COMMIT_TIME=hidden/' "$BASE/kept" >"outside/$file"
        ln -s "$HOST/outside/$file" "tree/var/lib/zet/$file"
        remember_outside
        run_in_tree status
        assert_status 1
        assert_stderr "zet-client: error: $TREE/var/lib/zet/$file: is no regular file (move it away)"
        [[ $output != *hidden* ]]
        assert_outside_unchanged
        mv "$BASE/kept" "tree/var/lib/zet/$file"
    done
}

@test "the history is not read outside of the tree" {
    run_in_tree commit-config
    assert_status 0
    local suffix command
    for suffix in "" -wal -shm -journal; do
        echo secret >outside/store
        rm -f "tree/var/lib/zet/state.db$suffix"
        ln -s "$HOST/outside/store" "tree/var/lib/zet/state.db$suffix"
        remember_outside
        for command in commit-config check-config "param set /etc/one.conf a 2"; do
            run_in_tree $command
            assert_status 1
            [[ $output$stderr == *"$TREE/var/lib/zet/state.db$suffix: is no regular file"*"(move it away, or set ZET_HISTORY=no"* ]]
        done
        # What stands beside the files is enough to put them back, and to tell what became of them.
        run_in_tree status
        assert_status 0
        [[ $output == *"/one.conf: in sync"* ]]
        run_in_tree rollback-config -n --force
        assert_stderr "zet-client: warning: $TREE/var/lib/zet/state.db$suffix: is no regular file of one name that belongs to this user (move it away, or set ZET_HISTORY=no to edit without the history)"
        assert_outside_unchanged
        rm "tree/var/lib/zet/state.db$suffix"
    done
}

@test "what a commit made in the tree is known as that to the commands about one file" {
    run_in_tree -q commit-config
    run_in_tree param set /etc/one.conf realm x
    assert_refusal 1 "$TREE/etc/one.conf: is made from [one.conf] and the next commit overwrites it (edit $TREE/etc/zet/one.conf and commit, or use --force --no-markers and \"adopt\" the file)"
    echo more >>tree/etc/one.conf
    run_in_tree adopt /etc/one.conf
    assert_success "$TREE/etc/zet/one.conf: changed, with the edit of $TREE/etc/one.conf"
    assert_equal "$(tail -n 1 tree/etc/zet/one.conf)" more
}

@test "what left the list of the tree is not shown" {
    run_in_tree -q commit-config
    : >tree/usr/share/zet/templates/targets.toml
    run_in_tree -n --diff file strip /etc/one.conf
    assert_refusal 1 "$TREE/etc/one.conf: was made by a commit, and no list has it any more (put it into the lists again, take it back with \"rollback-config /etc/one.conf\", or use --force)"
    run_in_tree -n --diff file strip --force /etc/one.conf
    assert_status 3
    [[ $output == *"text not shown: it was committed, and is in no list any more"* && $output != *realm* ]]
}

@test "a target that leads back to itself inside the tree is not looked for outside" {
    run_in_tree commit-config
    rm tree/etc/one.conf
    ln -s /etc/one.conf tree/etc/one.conf
    remember_outside
    run_in_tree rollback-config --force --diff
    assert_status 1
    assert_equal "${output%?}" "$TREE/etc/one.conf: could not be put back"
    assert_file tree/etc/one.conf.before_zet $'old\n'
    run_in_tree status
    assert_status 1
    assert_equal "$(tail -n 2 <<<"${output%?}" | head -n 1)" "$TREE/etc/one.conf: unknown"
    rm tree/usr/share/zet/templates/targets.toml
    run_in_tree rollback-config --diff
    assert_status 1
    assert_outside_unchanged
}

@test "what was made under another root is told as that" {
    run_in_tree -q commit-config
    mv tree moved
    TREE=$HOST/moved
    run_in_moved() { capture "$ZET_BIN/zet-client" --root moved "$@"; }
    run_in_moved status
    assert_status 3
    [[ $output == *$'\n'"$TREE/etc/one.conf: pending, made under another root"$'\n'"1 pending"$'\n' ]]
    run_in_moved --json status
    assert_json 'd["targets"][0]["reason"]' "made under another root"
    run_in_moved explain /etc/one.conf
    [[ $output == *"$TREE/usr/share/zet/templates/one.conf"* || $output == *"$TREE/etc/zet/one.conf"* ]]
    [[ $output != *"it is gone"* ]]
    # What is otherwise in any other place, too, is not only that.
    sed -i 's/^DOMAIN=.*/DOMAIN=example.com/' moved/etc/zet/zet.conf
    run_in_moved status
    [[ $output == *"$TREE/etc/one.conf: pending"$'\n'* ]]
    sed -i 's/^DOMAIN=.*/DOMAIN=example.org/' moved/etc/zet/zet.conf
    chmod 600 moved/etc/one.conf
    run_in_moved status
    [[ $output == *"$TREE/etc/one.conf: edited"$'\n'* ]]
    chmod 644 moved/etc/one.conf
    run_in_moved commit-config
    assert_success "$TREE/etc/one.conf: changed, the original is kept as $TREE/etc/one.conf.before_zet
1 changed"
    run_in_moved status
    assert_status 0
}

# assert_problem_in_tree TEXT: a check prints just this problem of the list.
assert_problem_in_tree() {
    run_in_tree check-config
    assert_status 1
    assert_output "$TREE/$1"
}

@test "owner and trust are looked up among the users of the tree, if it has some" {
    need_root
    local shipped=tree/usr/share/zet/templates
    mkdir -p tree/srv/svc
    chown 4242:4243 tree/srv/svc
    echo 'realm = ${realm}' >$shipped/two.conf
    list two.conf /srv/svc/two.conf
    printf 'trust = "svc"\nowner = "svc:mail"\n' >>$shipped/targets.toml
    assert_problem_in_tree "srv/svc/two.conf: this host has no user \"svc\", whom its entry trusts (correct trust in the list, or make the user)
$TREE/usr/share/zet/templates/targets.toml:4: this host has no user \"svc\", to whom the file is to belong (correct owner, or make the user)"
    printf 'root:x:0:0::/root:/bin/sh\nsvc:x:4242:4243::/:/bin/sh\nhalf:x:1\n' >tree/etc/passwd
    printf 'root:x:0:\n' >tree/etc/group
    assert_problem_in_tree "usr/share/zet/templates/targets.toml:4: this host has no group \"mail\", to whom the file is to belong (correct owner, or make the group)"
    echo 'mail:x:4244:svc' >>tree/etc/group
    run_in_tree -q commit-config
    assert_status 0
    assert_equal "$(stat -c %u:%g tree/srv/svc/two.conf)" 4242:4244
    run_in_tree -q rollback-config
    sed -i 's/svc:mail/svc/' $shipped/targets.toml
    run_in_tree -q commit-config
    assert_equal "$(stat -c %u:%g tree/srv/svc/two.conf)" 4242:4243
    sed -i 's/owner = "svc"/owner = "half"/' $shipped/targets.toml
    assert_problem_in_tree "usr/share/zet/templates/targets.toml:4: this host has no user \"half\", to whom the file is to belong (correct owner, or make the user)"
    rm tree/etc/passwd
    sed -i 's/"half"/"nobody"/; /^trust/d' $shipped/targets.toml
    run_in_tree check-config
    [[ $output != *"has no user"* ]]
}
