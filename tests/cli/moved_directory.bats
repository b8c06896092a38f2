# A directory that was moved, with a link in its place: its files are the same ones, whatever name they are known by.

load helper
load set

setup() {
    make_set
    mkdir out/app
    add_target a.conf $'realm = ${realm}\n'
    sed -i "s|out/a.conf|out/app/a.conf|" templates/targets.toml
    printf 'orig\n' >out/app/a.conf
    chmod 640 out/app/a.conf
    REAL=$HOST/srv/a.conf
}

teardown() {
    remove_host
}

# move_directory FROM TO: and back by a link.
move_directory() {
    mv "$1" "$2"
    ln -s "$HOST/$2" "$1"
}

# known: of which files the history knows.
known() {
    store "SELECT path FROM known WHERE path NOT LIKE '$HOST/state/%' ORDER BY path"
}

@test "the next commit has nothing to do, and the one after that knows what the last one wrote" {
    zet -q commit-config
    move_directory out/app srv
    run_zet status
    assert_status 0
    run_zet commit-config
    assert_status 0
    [[ $output == *"1 unchanged"* && $output != *"restored"* ]]
    assert_file srv/a.conf.before_zet $'orig\n'
    zet -q option set REALM NEW.ORG
    run_zet commit-config
    assert_status 0
    assert_stderr ""
    grep -q NEW.ORG srv/a.conf
    assert_equal "$(known)" "$HOST/etc/a.conf
$REAL
$HOST/zet.conf"
}

@test "a rollback puts back what was there before, by whichever name, and a dry run says so" {
    local name
    for name in "" "$HOST/out/app/a.conf" "$REAL"; do
        zet -q commit-config
        move_directory out/app srv
        # shellcheck disable=SC2086  # none is none
        run_zet -n rollback-config $name
        assert_status 3
        assert_output "$REAL: would be put back as it was, mode 0644 -> 0640"
        # shellcheck disable=SC2086  # none is none
        run_zet rollback-config $name
        assert_success "$REAL: put back as it was, mode 0644 -> 0640"
        assert_file srv/a.conf $'orig\n'
        assert_equal "$(names_in srv)" a.conf
        assert_equal "$(known)" "$HOST/etc/a.conf"
        rm out/app
        mv srv out/app
    done
}

@test "a commit that takes a file back finds it, and the file is taken back once" {
    zet -q commit-config
    move_directory out/app srv
    : >templates/targets.toml
    run_zet status
    assert_status 3
    [[ $output == *"$REAL: left over"* ]]
    zet -q commit-config
    assert_file srv/a.conf $'orig\n'
    assert_equal "$(names_in srv)" a.conf
    run_zet status
    assert_status 0
}

@test "what was done to a file before its directory was moved can be told and taken back" {
    zet -q commit-config
    zet -q option set REALM NEW.ORG
    zet -q commit-config
    move_directory out/app srv
    run_zet history diff 1 "$HOST/out/app/a.conf"
    assert_status 0
    run_zet history "$HOST/out/app/a.conf"
    assert_status 0
    assert_equal "$(grep -c commit-config <<<"$output")" 2
    run_zet -n undo
    assert_status 3
    [[ $output == *"$REAL"* ]]
    zet undo
    grep -q EXAMPLE.ORG srv/a.conf
    run_zet undo
    assert_status 0
    grep -q NEW.ORG srv/a.conf
    zet rollback-config --to 1
    grep -q EXAMPLE.ORG srv/a.conf
    assert_equal "$(known)" "$HOST/etc/a.conf
$REAL"
}

@test "an edit in place is known by one name, and goes back with one undo each" {
    printf 'a=1\nb=2\n' >out/app/plain
    zet -q param set "$HOST/out/app/plain" a 7
    move_directory out/app srv
    zet -q param set "$HOST/out/app/plain" b 8
    assert_equal "$(known)" "$HOST/srv/plain"
    zet undo
    zet undo 1
    assert_file srv/plain $'a=1\nb=2\n'
    assert_absent srv/plain.before_zet
    zet param set "$HOST/srv/plain" b 9
    run_zet rollback-config
    assert_file srv/plain $'a=1\nb=2\n'
}

@test "listed edits stay set, commit by commit" {
    printf 'a=1\n' >out/app/plain
    printf '[[edits]]\nfile = "%s"\nparam = "a"\nvalue = "7"\nroles = "both"\n' "$HOST/out/app/plain" >>templates/targets.toml
    zet -q commit-config
    move_directory out/app srv
    local before
    before=$(state_of srv/*)
    zet -q commit-config
    zet -q commit-config
    assert_equal "$(state_of srv/*)" "$before"
    run_zet status
    assert_status 0
    : >templates/targets.toml
    zet -q commit-config
    assert_file srv/plain $'a=1\n'
}

@test "a working copy is still known as what it was made from" {
    zet -q commit-config
    echo "# mine" >>etc/a.conf
    move_directory etc etc2
    run_zet template status
    [[ $output == *"edited"* ]] || differ "template status" edited "$output"
    echo "# theirs" >"$BASE/new"
    cat templates/a.conf >>"$BASE/new"
    cp "$BASE/new" templates/a.conf
    zet -q template upgrade
    grep -q theirs etc2/a.conf
    grep -q mine etc2/a.conf
}

@test "where a directory is moved onto another name that is known, the newer record counts" {
    mkdir srv
    printf 'a=1\n' >srv/a.conf
    zet -q param set "$HOST/srv/a.conf" a 7
    zet -q commit-config
    rm -r srv
    move_directory out/app srv
    zet -q commit-config
    assert_equal "$(known)" "$HOST/etc/a.conf
$REAL"
    zet -q rollback-config
    assert_file srv/a.conf $'orig\n'
}

@test "the files of a directory that is gone stay on record under the name that they had" {
    zet -q commit-config
    mv out/app srv
    run_zet rollback-config
    assert_status 1
    assert_equal "$(known)" "$HOST/etc/a.conf
$HOST/out/app/a.conf"
    mv srv out/app
    zet -q rollback-config
    assert_file out/app/a.conf $'orig\n'
}

@test "a link that another user may have laid is not followed" {
    need_root
    zet -q commit-config
    move_directory out/app srv
    chown -h nobody out/app
    chown nobody out
    run_zet rollback-config
    assert_status 1
    assert_equal "$(known)" "$HOST/etc/a.conf
$HOST/out/app/a.conf"
    chown root out
}

@test "below a root directory, a link leads where it leads inside" {
    local root=$BASE/root
    mkdir -p "$root/etc/zet" "$root/var/lib/zet" "$root/usr/share/zet/templates" "$root/opt/app"
    cat >"$root/zet.conf" <<-END
		DOMAIN=example.org
		SERVER=srv.example.org
		ZET_CFG_DIR=/etc/zet
		ZET_CFG_TEMPL_DIR=/usr/share/zet/templates
		ZET_VAR_LIB_DIR=/var/lib/zet
	END
    cp templates/a.conf "$root/usr/share/zet/templates"
    printf '[templates."a.conf"]\ntarget = "/opt/app/a.conf"\nroles = "both"\n' >"$root/usr/share/zet/templates/targets.toml"
    printf 'orig\n' >"$root/opt/app/a.conf"
    capture "$ZET_BIN/zet-client" --root "$root" --config /zet.conf -q commit-config
    assert_status 0
    mv "$root/opt/app" "$root/srv"
    ln -s /srv "$root/opt/app"
    capture "$ZET_BIN/zet-client" --root "$root" --config /zet.conf status
    assert_status 0
    capture "$ZET_BIN/zet-client" --root "$root" --config /zet.conf rollback-config
    assert_success "$root/srv/a.conf: put back as it was"
    assert_file "$root/srv/a.conf" $'orig\n'
    assert_absent "$root/srv/a.conf.before_zet"
}

@test "where a change of a moved file is damaged, nothing is taken for left over" {
    zet -q commit-config
    move_directory out/app srv
    change_store "UPDATE files SET kind_before = kind_before + 1 WHERE path LIKE '%/a.conf'"
    cp srv/a.conf before
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"$HOST/state/state.db: the history is damaged"* ]]
    cmp before srv/a.conf
    assert_file srv/a.conf.before_zet $'orig\n'
}

@test "the state directory takes with it what is known of the status" {
    zet -q commit-config
    move_directory state statedir
    run_zet undo
    assert_status 0
    assert_stderr ""
    assert_equal "$(names_in statedir)" zet.lock
    run_zet undo
    assert_status 0
    run_zet status
    assert_status 0
}
