# status: the role, the last commit and the state of each target.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
    add_target two.conf $'domain = ${domain}\n'
    ONE=$HOST/out/one.conf
    TWO=$HOST/out/two.conf
}

teardown() {
    remove_host
}

# assert_states STATE STATE: of the two targets, in text and document, and nothing is written.
assert_states() {
    remember_host
    run_zet status
    assert_equal "$(head -n -1 <<<"${output%?}" | tail -n 2)" "$ONE: $1
$TWO: $2"
    if [[ "$1, $2" == "in sync, in sync" ]]; then assert_status 0; else assert_status 3; fi
    assert_host_unchanged
    run_zet --json status
    assert_json '[t["state"] for t in d["targets"]]' "[\"$1\", \"$2\"]"
    assert_json 'd["exit_status"]' "$status"
    assert_equal "$(names_in "$TMPDIR")" ""
}

commit_time() {
    sed -n s/^COMMIT_TIME=//p "state/zet-client.status"
}

@test "before the first commit nothing is committed" {
    original one.conf $'old\n'
    run_zet status
    assert_status 3
    assert_stderr ""
    assert_output "role: client
committed: never
file server: none recorded
$ONE: not committed
$TWO: not committed
2 not committed"
    assert_states "not committed" "not committed"
    assert_json '[d[x] for x in ("role", "commit_time", "file_server")]' '["client", null, null]'
}

@test "after a commit all is in sync" {
    echo 'NETWORK_FS_TYPE=smb3' >>zet.conf
    zet commit-config
    run_zet status
    assert_success "role: client
committed: $(commit_time)
file server: smb3
$ONE: in sync
$TWO: in sync
2 in sync"
    assert_states "in sync" "in sync"
    assert_json '[d[x] for x in ("role", "file_server", "commit_time")]' "[\"client\", \"smb3\", \"$(commit_time)\"]"
    assert_json 'd["targets"][0]' "{\"template\": \"one.conf\", \"file\": \"$ONE\", \"path\": \"$ONE\", \"state\": \"in sync\", \"reason\": null, \"merged\": false, \"diff\": null, \"changed_lines\": null}"
}

@test "only what is not in sync is listed where that is wanted, and all is counted" {
    zet commit-config
    run_zet status --changed
    assert_status 0
    assert_equal "$(tail -n +4 <<<"${output%?}")" "2 in sync"
    rm out/two.conf
    run_zet status --changed
    assert_status 3
    assert_equal "$(tail -n +4 <<<"${output%?}")" "$TWO: missing
1 in sync, 1 missing"
    run_zet status --changed --json
    assert_status 3
    assert_json '[t["state"] for t in d["targets"]]' '["missing"]'
    : >templates/targets.toml
    run_zet status
    assert_equal "$(tail -n 1 <<<"${output%?}")" "2 left over"
    zet commit-config
    run_zet status
    assert_equal "$(tail -n 1 <<<"${output%?}")" "no targets"
}

@test "the server has a role of its own and no file server" {
    server commit-config
    capture server status
    assert_success "role: server
committed: $(sed -n s/^COMMIT_TIME=//p state/zet-server.status)
$ONE: in sync
$TWO: in sync
2 in sync"
    capture server --json status
    assert_json 'd["file_server"], d["role"]' '[null, "server"]'
    assert_states "not committed" "not committed"
}

@test "another parameter or template makes the targets pending that it changes" {
    zet commit-config
    zet option set REALM OTHER.ORG
    assert_states pending "in sync"
    zet option set REALM EXAMPLE.ORG
    assert_states "in sync" "in sync"
    echo more >>etc/two.conf
    assert_states "in sync" pending
    zet commit-config
    chmod 600 etc/two.conf
    assert_states "in sync" pending
    zet commit-config
    assert_states "in sync" "in sync"
}

@test "a template that has become broken or is gone leaves its target pending" {
    zet commit-config
    echo '${nope}' >etc/one.conf
    rm etc/two.conf templates/two.conf
    assert_states pending pending
    echo mine >>out/one.conf
    assert_states edited pending
}

@test "a template that is a link which leads nowhere keeps its target's state from being told" {
    zet commit-config
    local template
    for template in etc/one.conf templates/one.conf; do
        rm -f etc/one.conf
        ln -sf gone "$template"
        run_zet status
        assert_status 1
        assert_stderr "zet-client: error: $ONE: its state cannot be told: $HOST/$template: is a link that leads nowhere (remove it, or make what it names)"
    done
}

# assert_emptied FILE COMMITTED SERVER: the role's words, and a warning of that status.
assert_emptied() {
    run_zet status
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/state/$1: is empty: a commit is writing it, or was killed before that (look again; if it stays so, commit again)"
    assert_equal "$(sed -n 2,3p <<<"$output")" "committed: $2
file server: $3"
    run_zet --json status
    assert_json 'd["exit_status"], len(d["warnings"])' '[0, 1]'
}

@test "a status that a commit is writing, or was killed at, is unknown" {
    zet commit-config
    local former
    former=$(commit_time)
    cp state/zet-client.status "$BASE/former"
    : >state/zet-client.status
    assert_emptied zet-client.status unknown nfs4
    assert_json 'd["commit_time"], d["file_server"]' '[null, "nfs4"]'
    cp "$BASE/former" state/zet-client.status
    : >state/zet-client-fs.status
    assert_emptied zet-client-fs.status "$former" unknown
    assert_json 'd["commit_time"], d["file_server"]' "[\"$former\", null]"
    # One of no kind is none.
    echo NETWORK_FS_TYPE= >state/zet-client-fs.status
    run_zet status
    assert_stderr ""
    [[ $output == *"file server: none recorded"* ]]
    # The next commit writes both, though nothing else changes.
    : >state/zet-client.status
    : >state/zet-client-fs.status
    zet commit-config
    run_zet status
    assert_stderr ""
    [[ $output == *"committed: 2"*"file server: nfs4"* ]]
}

@test "whoever comes between two steps of a write looks once more" {
    zet commit-config
    local former
    former=$(commit_time)
    cp state/zet-client.status "$BASE/former"
    : >state/zet-client.status
    strace -f -qq -e trace=/nanosleep -e inject=/nanosleep:signal=STOP:when=1 -o "$BASE/trace" \
        "$ZET_BIN/zet-client" --config zet.conf status >"$BASE/output" 2>"$BASE/stderr" 3>&- &
    local strace=$!
    await_stop
    cp "$BASE/former" state/zet-client.status
    go_on
    wait "$strace"
    grep -qx "committed: $former" "$BASE/output"
    assert_file "$BASE/stderr" ""
}

@test "a shipped template that is newer than the working copy changes nothing" {
    zet commit-config
    echo more >>templates/one.conf
    run_zet status
    assert_status 0
    [[ $output == *"$ONE: in sync
$TWO: in sync
"*"newer shipped templates: one.conf"* ]]
    rm etc/one.conf
    assert_states pending "in sync"
}

@test "a file that was edited since, or got another mode, is edited" {
    zet commit-config
    echo mine >>out/one.conf
    assert_states edited "in sync"
    zet commit-config
    chmod 600 out/two.conf
    assert_states "in sync" edited
    zet option set REALM OTHER.ORG
    assert_states pending edited
    echo mine >>out/one.conf
    assert_states edited edited
}

@test "an edit that keeps size and time is seen" {
    zet commit-config
    local time
    time=$(stat -c %y out/one.conf)
    sed 's/EXAMPLE/ELPMAXE/' out/one.conf >"$BASE/new"
    cat "$BASE/new" >out/one.conf
    touch -d "$time" out/one.conf
    run_zet status
    assert_status 3
    [[ $output == *"$ONE: pending"* || $output == *"$ONE: edited"* ]]
    cp -p "$BASE/new" out/new
    touch -d "$time" out/new
    mv out/new out/one.conf
    assert_states edited "in sync"
}

@test "a file that is gone is missing" {
    zet commit-config
    rm out/one.conf out/two.conf
    ln -s nowhere out/two.conf
    run_zet status
    assert_status 3
    [[ $output == *"$ONE: missing"$'\n'* ]]
    rm out/two.conf
    assert_states missing missing
}

@test "a target that is new in the list is not committed, and one that left it is told" {
    zet commit-config
    : >templates/targets.toml
    list_target two.conf "$TWO"
    add_target three.conf $'x\n'
    run_zet status
    assert_status 3
    assert_equal "$(tail -n 4 <<<"${output%?}")" "$TWO: in sync
$HOST/out/three.conf: not committed
$ONE: left over
1 in sync, 1 not committed, 1 left over"
    assert_stderr "zet-client: warning: $ONE: was committed and is not in force any more (the next commit takes it back)"
    run_zet --json status
    assert_json 'len(d["warnings"])' 1
}

@test "a link as a target has the state of its file" {
    mkdir real
    ln -s ../real/one out/one.conf
    zet commit-config
    ONE=$HOST/real/one
    assert_states "in sync" "in sync"
    echo mine >>real/one
    assert_states edited "in sync"
}

@test "after a rollback nothing is committed" {
    zet commit-config
    zet rollback-config
    assert_states "not committed" "not committed"
    run_zet status
    [[ $output == *$'\ncommitted: never\nfile server: none recorded\n'* ]]
}

@test "a user without rights may ask for the status" {
    need_root
    copy_programs
    zet commit-config
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status
    assert_status 0
}

@test "whoever may not read the history is told what is missing, and gets no numbers of it" {
    need_root
    copy_programs
    echo a=1 >conf
    printf '[[edits]]\nfile = "%s"\nparam = "a"\nvalue = "2"\nroles = "both"\n' "$HOST/conf" >>templates/targets.toml
    zet commit-config
    printf '[templates."one.conf"]\ntarget = "%s"\nroles = "both"\n' "$ONE" >templates/targets.toml
    local warning="zet-client: warning: $HOST/state/state.db: may not be read, so that files edited in place, and what is left over, are not told (run the command as a user who may)"
    run_zet status
    assert_status 3
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status
    assert_status 0
    assert_stderr "$warning"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status --format openmetrics
    assert_status 0
    assert_stderr "$warning"
    assert_equal "$(grep -o '^# TYPE [^ ]*' <<<"$output")" "# TYPE zet_targets
# TYPE zet_newer_templates
# TYPE zet_last_commit_timestamp_seconds"
    # That it is not in sync is certain, whatever else there is.
    echo mine >>out/one.conf
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status --format openmetrics
    assert_status 3
    grep -qx 'zet_in_sync{role="client"} 0' <<<"$output"
}

@test "whoever may not read the history does not take a target for one that was committed" {
    need_root
    copy_programs
    zet commit-config
    add_target three.conf $'x\n'
    run_zet status
    [[ $output == *"three.conf: not committed"* ]]
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status
    assert_status 3
    [[ $output == *"three.conf: differs"* ]]
}

@test "a history that is broken is told, and the status goes on without" {
    zet commit-config
    break_store
    run_zet status
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/state/state.db: $BROKEN_STORE"
    assert_output "$(grep -v ': in sync' <<<"${output%?}" | head -n 3)
$ONE: in sync
$TWO: in sync
2 in sync"
    echo precious >>out/one.conf
    run_zet status
    assert_status 3
    grep -qx "$ONE: differs" <<<"$output"
}

@test "a target whose state cannot be told keeps that of the others from nobody" {
    zet commit-config
    rm out/one.conf
    ln -s one.conf out/one.conf
    remember_host
    run_zet status
    assert_status 1
    assert_equal "$(head -n -1 <<<"${output%?}" | tail -n 2)" "$ONE: unknown
$TWO: in sync"
    assert_stderr "zet-client: error: $ONE: its state cannot be told: $ONE: too many symbolic links, as when one leads back\
 to itself (correct the links)"
    assert_host_unchanged
    run_zet --json status
    assert_json '[t["state"] for t in d["targets"]], len(d["errors"]), d["warnings"]' '[["unknown", "in sync"], 1, []]'
}

# assert_unknown_to_nobody STATE: of the second target; the first one's cannot be told for its template.
assert_unknown_to_nobody() {
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status
    assert_status 1
    assert_equal "$(head -n -1 <<<"${output%?}" | tail -n 2)" "$ONE: unknown
$TWO: $1"
    [[ $stderr == *"zet-client: error: $ONE: its state cannot be told: "*"$HOST/etc/one.conf"*": Permission denied (run the command as a user who may)"* ]]
    run_zet status
    assert_status 0
}

@test "whoever cannot read a template is told that its target's state is unknown, and why" {
    need_root
    copy_programs
    chmod 600 templates/one.conf
    zet commit-config
    assert_unknown_to_nobody "in sync"
    chmod 700 etc
    assert_unknown_to_nobody unknown
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status
    [[ $stderr == "zet-client: warning: $HOST/etc/targets.d: cannot be looked at"*"Permission denied"* ]]
}

@test "of a target that is made of values which cannot be read, nobody tells the state" {
    need_root
    copy_programs
    mkdir etc/values.d etc/defaults.d
    echo hello >etc/values.d/greeting
    echo '${greeting}' >templates/one.conf
    chmod 600 etc/values.d/greeting
    zet commit-config
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status
    assert_status 1
    assert_equal "$(head -n -1 <<<"${output%?}" | tail -n 2)" "$ONE: unknown
$TWO: in sync"
    assert_stderr "zet-client: warning: $HOST/state/state.db: may not be read, so that files edited in place, and what is left over, are not told (run the command as a user who may)
zet-client: error: $ONE: its state cannot be told: $HOST/etc/values.d/greeting: cannot be read: Permission denied (run the command as a user who may)"
    run_zet status
    assert_status 0
    rm etc/values.d/greeting
    ln -s "$HOST/gone" etc/values.d/greeting
    run_zet status
    assert_status 1
    assert_stderr "zet-client: error: $ONE: its state cannot be told: $HOST/etc/values.d/greeting: $HOST/gone: does not exist (create it, or correct the path)"
    rm etc/values.d/greeting
    ln -s "$HOST/gone" etc/defaults.d/a.conf
    run_zet status
    assert_status 1
    assert_stderr "zet-client: error: $ONE: its state cannot be told: $HOST/etc/defaults.d/a.conf: $HOST/gone: does not exist (create it, or correct the path)"
}

@test "what is no regular file is no file of the product's own" {
    zet commit-config
    local file
    for file in zet-client.status zet-client-fs.status; do
        mv "state/$file" "$BASE/state"
        ln -s "$BASE/state" "state/$file"
        run_zet status
        assert_status 1
        [[ $stderr == "zet-client: error: $HOST/state/$file: is no regular file"*"(move it away)"$'\n' ]]
        ln -sf gone "state/$file"
        run_zet status
        assert_status 1
        assert_stderr "zet-client: error: $HOST/state/$file: is a link that leads nowhere (remove it, or make what it names)"
        rm "state/$file"
        mv "$BASE/state" "state/$file"
    done
    run_zet status
    assert_status 0
}

@test "the path in the document is that of the real file, links among its directories followed" {
    mkdir real
    ln -s real by_link
    list_target three.conf "$HOST/by_link/three.conf"
    echo three >templates/three.conf
    zet commit-config
    run_zet --json status
    assert_status 0
    assert_json 'd["targets"][2]' \
        "{\"template\": \"three.conf\", \"file\": \"$HOST/by_link/three.conf\", \"path\": \"$HOST/real/three.conf\", \"state\": \"in sync\", \"reason\": null, \"merged\": false, \"diff\": null, \"changed_lines\": null}"
}

@test "a file that the list names by a link among its directories is known by its real name" {
    ln -s out by_link
    sed -i "s|$HOST/out/one.conf|$HOST/by_link/one.conf|" templates/targets.toml
    zet -q commit-config
    assert_equal "$(store 'SELECT path FROM known WHERE kind = 0 AND path LIKE "%/one.conf"')" "$HOST/out/one.conf"
    local way
    for way in by_link out; do
        sed -i "s|$HOST/[a-z_]*/one.conf|$HOST/$way/one.conf|" templates/targets.toml
        run_zet status
        assert_status 0
        assert_stderr ""
        grep -qx "$HOST/out/one.conf: in sync" <<<"$output"
    done
    echo precious >>out/one.conf
    run_zet status
    assert_status 3
    grep -qx "$HOST/out/one.conf: edited" <<<"$output"
    assert_stderr ""
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/out/one.conf: was edited since the last commit; the edits are overwritten
zet-client: \"history show 2 $HOST/out/one.conf\" shows what it held"
    assert_equal "$(store 'SELECT count(*) FROM known WHERE kind = 0 AND path LIKE "%/one.conf"')" 1
    sed -i "s|$HOST/out/one.conf|$HOST/by_link/one.conf|" templates/targets.toml
    run_zet rollback-config
    assert_status 0
    grep -q "^$HOST/out/one.conf: removed" <<<"$output"
    assert_equal "$(names_in state)" zet.lock
}

@test "a status that cannot be told has its fields in the document all the same" {
    mkdir state/zet-client.status
    run_zet --json status
    assert_status 1
    assert_json '[d[x] for x in ("role", "commit_time", "file_server", "targets")]' '["client", null, null, []]'
    capture server --json status
    assert_json 'd["role"], d["file_server"]' '["server", null]'
}

@test "--diff shows what a commit would change in what is pending or edited, and nothing else" {
    zet commit-config
    echo mine >>"$ONE"
    zet option set DOMAIN other.org
    remember_host
    run_zet status --diff --changed
    assert_status 3
    assert_host_unchanged
    [[ $output == *"$ONE: edited"*"--- a$ONE"*"-mine"*"$TWO: pending"*"-domain = example.org"*"+domain = other.org"* ]]
    run_zet --json status --diff
    assert_json '[("-mine" in t["diff"], t["changed_lines"]) for t in d["targets"]]' '[[true, null], [false, null]]'
    run_zet --json status
    assert_json '[(t["diff"], t["changed_lines"]) for t in d["targets"]]' '[[null, null], [null, null]]'
}

@test "--diff shows a mode that a commit would change" {
    zet commit-config
    chmod 600 "$ONE"
    run_zet status --diff --changed
    [[ $output == *"$ONE: edited, mode 0600 -> 0644"* ]]
}

@test "--diff hides what is secret, and tells the changed lines" {
    add_target three.conf $'password = ${realm}\n' 'secret = true'
    zet commit-config
    zet option set REALM HIDDEN.ORG
    run_zet status --diff
    assert_status 3
    [[ $output == *"$HOST/out/three.conf: pending"*"$HOST/out/three.conf: line 11 changed (text not shown: the list of targets calls it secret; --show-secrets shows it)"* ]]
    [[ $output != *"password = HIDDEN"* ]]
    run_zet --json status --diff
    assert_json '[t["diff"] for t in d["targets"]][2]' null
    assert_json '[t["changed_lines"] for t in d["targets"]][2]' "[\"$HOST/out/three.conf: line 11 changed\"]"
}

@test "--diff shows the merged text where edits are merged" {
    zet option set ZET_ON_EDIT merge
    printf '%s\n' 'realm = ${realm}' middle last >etc/one.conf
    zet commit-config
    echo mine >>"$ONE"
    zet option set REALM OTHER.ORG
    run_zet status --diff
    [[ $output == *"+realm = OTHER.ORG"* ]]
    [[ $output != *"-mine"* ]]
}

@test "with -q, only what is not in sync is told" {
    zet -q commit-config
    run_zet status -q
    assert_success ""
    echo mine >>out/two.conf
    run_zet status -q
    assert_status 3
    assert_output "$TWO: edited"
    run_zet status -q --json
    assert_json 'd["commit_time"] is not None' true
}

@test "what is no regular file any more is not opened for its diff" {
    zet commit-config
    rm "$ONE" "$TWO"
    mkfifo "$ONE"
    mkdir "$TWO"
    capture timeout 20 "$ZET_BIN/zet-client" --config zet.conf status --diff
    assert_status 3
    [[ $output == *"$ONE: edited, no regular file"$'\n'"$TWO: edited, no regular file"$'\n'* ]]
    assert_stderr ""
}
