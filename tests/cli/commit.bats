# commit-config: what it writes, keeps and says.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
    add_target two.conf $'domain = ${domain}\n'
}

teardown() {
    remove_host
}

@test "a first commit makes every target of the role, keeps what was there, and records the status" {
    original one.conf $'old\n'
    run_zet commit-config
    assert_success "$HOST/out/one.conf: changed, mode 0640 -> 0644, the original is kept as $HOST/out/one.conf.before_zet
$HOST/out/two.conf: created, mode 0644, owner $EUID:$(id -g)
1 created, 1 changed"
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    assert_made two.conf $'domain = example.org\n'
    assert_file out/one.conf.before_zet $'old\n'
    assert_equal "$(stat -c %a out/one.conf out/one.conf.before_zet | paste -sd ' ')" "644 640"
    assert_absent out/two.conf.before_zet
    assert_file out/two.conf.no_file_before_zet ""
    cmp templates/one.conf etc/one.conf
    cmp templates/two.conf etc/two.conf
    grep -qx 'DOMAIN=example.org' state/zet-client.status
    grep -qxE 'COMMIT_TIME=[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z' state/zet-client.status
    assert_equal "$(names_in state)" \
        "zet-client-fs.status zet-client.status zet.lock"
    assert_equal "$(names_in out)" \
        "one.conf one.conf.before_zet two.conf two.conf.no_file_before_zet"
}

@test "the history has each target as the commit left it, and who did it with which words" {
    zet commit-config
    assert_equal "$(store 'SELECT path FROM known JOIN states ON state = states.id WHERE kind = 0 AND CAST(roles AS TEXT) = "6:client" ORDER BY path')" \
        "$HOST/out/one.conf"$'\n'"$HOST/out/two.conf"
    assert_equal "$(store 'SELECT number, outcome, user, role, CAST(words AS TEXT) FROM entries')" "1|1|$EUID|client|8:--config$((${#HOST} + 9)):$HOST/zet.conf13:commit-config"
    assert_equal "$(stat -c '%a %h' state/state.db*)" $'600 1\n600 1\n600 1\n600 1'
}

@test "a commit of the server writes the server's targets and no status of the file server" {
    cat >>templates/targets.toml <<-END
		[templates."client.conf"]
		target = "$HOST/out/client.conf"
		roles = "client"
		[templates."server.conf"]
		target = "$HOST/out/server.conf"
		roles = "server"
	END
    echo c >templates/client.conf
    echo s >templates/server.conf
    server commit-config
    assert_file out/server.conf "$(notice server.conf zet-init)"$'\ns\n'
    assert_absent out/client.conf
    assert_equal "$(names_in state)" "zet-server.status zet.lock"
}

@test "a second commit touches no target and says so" {
    zet commit-config
    touch -d @1000000000 out/one.conf out/two.conf
    local before
    before=$(state_of out/* etc/*)
    run_zet commit-config
    assert_success "2 unchanged"
    assert_equal "$(state_of out/* etc/*)" "$before"
}

@test "only what changes is written" {
    zet commit-config
    zet option set REALM OTHER.ORG
    local before
    before=$(state_of out/two.conf)
    run_zet commit-config
    assert_success "$HOST/out/one.conf: changed
1 changed, 1 unchanged"
    assert_made one.conf $'realm = OTHER.ORG\n'
    assert_equal "$(state_of out/two.conf)" "$before"
    grep -qx 'REALM=OTHER.ORG' state/zet-client.status
}

@test "a target that has the text already is left as it is, and gets its working copy" {
    zet commit-config
    cp out/one.conf rendered
    rm -r out/* etc/* state/*
    cp rendered out/one.conf
    local before
    before=$(state_of out/one.conf)
    run_zet commit-config one.conf
    assert_success "1 unchanged"
    assert_equal "$(state_of out/one.conf)" "$before"
    assert_absent out/one.conf.before_zet
    cmp templates/one.conf etc/one.conf
    run_zet status
    assert_equal "$(tail -n 3 <<<"${output%?}" | head -n 1)" "$HOST/out/one.conf: in sync"
}

@test "another mode alone is a change" {
    zet commit-config
    chmod 600 etc/one.conf
    run_zet commit-config
    assert_success "$HOST/out/one.conf: changed, mode 0644 -> 0600
1 changed, 1 unchanged"
    assert_equal "$(stat -c %a out/one.conf)" 600
}

@test "the working copy is what counts, once there is one" {
    zet commit-config
    echo 'mine = ${domain}' >etc/one.conf
    echo 'shipped anew' >templates/one.conf
    run_zet commit-config
    assert_success "$HOST/out/one.conf: changed
1 changed, 1 unchanged"
    assert_made one.conf $'mine = example.org\n'
}

@test "the reserve holds what was there before the first commit, however many come" {
    original one.conf $'old\n'
    local before
    before=$(stat -c '%a %u:%g' out/one.conf)
    for realm in A B C; do
        zet option set REALM "$realm"
        zet commit-config
        assert_file out/one.conf.before_zet $'old\n'
        assert_equal "$(stat -c '%a %u:%g' out/one.conf.before_zet)" "$before"
        assert_file out/two.conf.no_file_before_zet ""
        assert_absent out/two.conf.before_zet
    done
}

@test "a file that was edited by hand is overwritten, with a warning that names it" {
    zet commit-config
    echo mine >>out/one.conf
    run_zet commit-config
    assert_status 0
    assert_output "$HOST/out/one.conf: changed
1 changed, 1 unchanged"
    assert_stderr "zet-client: warning: $HOST/out/one.conf: was edited since the last commit; the edits are overwritten
zet-client: \"history show 2 $HOST/out/one.conf\" shows what it held"
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    run_zet commit-config
    assert_stderr ""
}

@test "a command that is told can be given to a shell, whatever the file is called" {
    add_target "it's.conf" $'a\n'
    zet -q commit-config
    echo mine >>"out/it's.conf"
    run_zet commit-config
    assert_status 0
    [[ $stderr == *"\"history show 2 '$HOST/out/it'\\''s.conf'\" shows what it held"* ]] || differ words quoted "$stderr"
    run_zet template upgrade "it's.conf"
    rm "etc/it's.conf"
    run_zet template upgrade "it's.conf"
    assert_refusal 1 "$HOST/etc/it's.conf: there is no such working copy (\"zet-client template install 'it'\\''s.conf'\" makes it)"
}

# UNRECORDED is how a commit calls what is lost with a file that no commit of the role recorded.
UNRECORDED="holds changes that are kept nowhere; they are overwritten"

@test "an edit of a file that the product came to without a commit is overwritten with a warning" {
    original one.conf $'orig=1\n'
    zet param set out/one.conf orig 2
    echo precious >>out/one.conf
    original two.conf $'orig=1\n'
    zet file reserve out/two.conf
    run_zet commit-config -n two.conf
    assert_stderr ""
    echo precious >>out/two.conf
    remember_host
    run_zet --json commit-config -n
    assert_status 3
    assert_json '[t["edited"] for t in d["targets"]]' '[true, true]'
    assert_stderr "zet-client: warning: $HOST/out/one.conf: ${UNRECORDED/are over/would be over}
zet-client: warning: $HOST/out/two.conf: ${UNRECORDED/are over/would be over}"
    assert_host_unchanged
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/out/one.conf: $UNRECORDED
zet-client: \"history show 3 $HOST/out/one.conf\" shows what it held
zet-client: warning: $HOST/out/two.conf: $UNRECORDED
zet-client: \"history show 3 $HOST/out/two.conf\" shows what it held"
    assert_file out/one.conf.before_zet $'orig=1\n'
    run_zet commit-config
    assert_success "2 unchanged"
}

@test "an edit after the commit of the other role is overwritten with a warning, its work without one" {
    zet commit-config
    echo precious >>out/two.conf
    capture server --json commit-config
    assert_status 0
    assert_json '[(t["result"], t["edited"]) for t in d["targets"]]' '[["unchanged", false], ["changed", true]]'
    assert_stderr "zet-init: warning: $HOST/out/two.conf: was edited since the last commit; the edits are overwritten
zet-init: \"history show 2 $HOST/out/two.conf\" shows what it held"
    # Its notice goes on naming the role that committed it first.
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
}

@test "commits of the roles in turn take each other's work for nobody's edit" {
    zet commit-config
    server commit-config
    run_zet --json commit-config
    assert_json '[(t["result"], t["edited"]) for t in d["targets"]]' '[["unchanged", false], ["unchanged", false]]'
    assert_stderr ""
    server commit-config
    echo precious >>out/one.conf
    run_zet commit-config
    assert_stderr "zet-client: warning: $HOST/out/one.conf: was edited since the last commit; the edits are overwritten
zet-client: \"history show 3 $HOST/out/one.conf\" shows what it held"
}

@test "an edit is overwritten with a warning where the history was lost" {
    zet commit-config
    rm state/state.db*
    echo precious >>out/one.conf
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/out/one.conf: $UNRECORDED
zet-client: \"history show 1 $HOST/out/one.conf\" shows what it held"
}

@test "where the history was lost, targets are taken for committed without being written" {
    zet commit-config
    rm state/state.db*
    remember_host
    run_zet status
    assert_status 3
    PROGRAM=$ZET_BIN/zet-init run_zet -q commit-config two.conf
    assert_success ""
    run_zet -q commit-config
    assert_success ""
    assert_equal "$(state_of_host | grep '/out')" "$(grep '/out' <<<"$REMEMBERED")"
    run_zet status
    assert_status 0
    run_zet rollback-config "$HOST/out/one.conf"
    assert_success "$HOST/out/one.conf: removed, as there was none before"
}

@test "a commit that was killed before it wrote its target takes nobody's work for lost" {
    original one.conf $'old\n'
    local count=0
    # Until there is the reserve, and not yet the target.
    while [[ ! -e out/one.conf.before_zet ]]; do
        capture strace -f -qq -o "$BASE/trace" -e trace=/rename -e "inject=/rename:signal=KILL:when=$((++count))" \
            "$ZET_BIN/zet-client" --config zet.conf commit-config
        assert_status 137
        assert_file out/one.conf $'old\n'
    done
    run_zet commit-config
    assert_status 0
    [[ $stderr != *warning* && $output == *"one.conf: changed"* ]]
}

@test "a file that was removed by hand is made again, with a warning that names it" {
    original one.conf $'old\n'
    zet commit-config
    rm out/one.conf out/two.conf
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/out/one.conf: was removed since the last commit
zet-client: warning: $HOST/out/two.conf: was removed since the last commit"
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    assert_made two.conf $'domain = example.org\n'
    assert_file out/one.conf.before_zet $'old\n'
}

@test "an edit by hand to just what the commit would write is no reason to warn" {
    zet commit-config
    zet option set REALM OTHER.ORG
    sed -i s/EXAMPLE.ORG/OTHER.ORG/ out/one.conf
    run_zet commit-config
    assert_success "2 unchanged"
    run_zet status
    assert_status 0
}

@test "named templates are committed, and no others" {
    run_zet commit-config two.conf
    assert_success "$HOST/out/two.conf: created, mode 0644, owner $EUID:$(id -g)
1 created"
    assert_absent out/one.conf
    assert_absent etc/one.conf
    zet commit-config one.conf
    # The manifest still knows the other.
    run_zet status
    assert_status 0
}

@test "a template that the list does not have for the role is wrong use" {
    printf '[templates."server.conf"]\ntarget = "%s"\nroles = "server"\n' "$HOST/out/server.conf" >>templates/targets.toml
    local name
    for name in none.conf server.conf one; do
        run_zet commit-config one.conf "$name"
        assert_refusal 2 "$HOST/templates/targets.toml: has no template \"$name\" for the role client (name one that it has, or add it)"
        assert_equal "$(names_in out)" ""
    done
}

@test "a target that is a link is followed, and the link stays" {
    mkdir elsewhere
    echo old >elsewhere/real
    ln -s ../elsewhere/real out/one.conf
    ln -s "$HOST/elsewhere/new" out/two.conf
    run_zet commit-config
    assert_status 0
    assert_equal "$(cut -d, -f1 <<<"${output%?}")" "$HOST/elsewhere/real: changed
$HOST/elsewhere/new: created
1 created"
    assert_equal "$(readlink out/one.conf) $(readlink out/two.conf)" "../elsewhere/real $HOST/elsewhere/new"
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    assert_file elsewhere/real.before_zet $'old\n'
    assert_equal "$(names_in out)" "one.conf two.conf"
    run_zet commit-config
    assert_success "2 unchanged"
}

@test "the other names of a target with hard links are warned of" {
    original one.conf $'old\n'
    ln out/one.conf other
    run_zet commit-config one.conf
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/out/one.conf: has 2 names (hard links); the others keep the former text"
    assert_file other $'old\n'
}

@test "the services of what changed are named to be restarted, each once and no other" {
    sed -i '/out.one.conf"$/a restart = ["alpha", "beta"]' templates/targets.toml
    sed -i '/out.two.conf"$/a restart = ["beta", "gamma"]' templates/targets.toml
    add_target three.conf $'fixed\n' 'restart = ["delta"]'
    run_zet commit-config
    assert_equal "$(tail -n 2 <<<"${output%?}" | head -n 1)" "to be restarted: alpha, beta, gamma, delta"
    zet option set DOMAIN other.org
    zet option set REALM EXAMPLE.ORG
    run_zet --json commit-config
    assert_json 'd["restart"]' '["beta", "gamma"]'
    run_zet commit-config
    [[ $output != *restarted* ]]
}

@test "a template in a directory below the others is committed like them" {
    mkdir templates/sub etc/sub
    add_target sub/three.conf $'${ldap_dc}\n'
    mkdir out/sub
    run_zet commit-config sub/three.conf
    assert_status 0
    assert_made sub/three.conf $'example\n'
    cmp templates/sub/three.conf etc/sub/three.conf
}

@test "quiet and verbose" {
    run_zet -q commit-config
    assert_success "$HOST/out/one.conf: created, mode 0644, owner $EUID:$(id -g)
$HOST/out/two.conf: created, mode 0644, owner $EUID:$(id -g)"
    echo mine >>out/one.conf
    run_zet -q commit-config
    assert_success "$HOST/out/one.conf: changed"
    run_zet -q commit-config
    assert_success ""
    run_zet commit-config
    assert_success "2 unchanged"
    run_zet -v commit-config
    assert_status 0
    assert_output "$HOST/out/one.conf: unchanged
$HOST/out/two.conf: unchanged
2 unchanged"
    echo mine >>out/one.conf
    run_zet -v commit-config one.conf
    assert_status 0
    grep -q "Process config file template '$HOST/etc/one.conf' to '$HOST/out/one.conf'" <<<"$stderr"
}

@test "a first commit looks once whether the history may be read, however many targets there are" {
    # looks: how often a commit looks at the history by its name.
    looks() {
        strace -f -qq -o "$BASE/trace" -e trace=%file \
            "$ZET_BIN/zet-client" --config "$HOST/zet.conf" commit-config >/dev/null
        grep -c "state\.db\"" "$BASE/trace"
    }
    local one name
    one=$(looks)
    for name in a b c d e f; do
        add_target "$name.conf" "$name"
    done
    zet -q rollback-config
    rm state/state.db*
    assert_equal "$(looks)" "$one"
}
