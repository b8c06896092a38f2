# rollback-config: what was there before comes back, and edits since stay.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
    add_target two.conf $'domain = ${domain}\n'
    original one.conf $'old\n'
    ONE=$HOST/out/one.conf
    TWO=$HOST/out/two.conf
}

teardown() {
    remove_host
}

assert_as_before() {
    assert_file out/one.conf $'old\n'
    assert_equal "$(stat -c %a out/one.conf)" 640
    assert_equal "$(names_in out)" one.conf
    assert_equal "$(names_in state)" zet.lock
}

@test "what was there comes back, what was not there goes, and the status with it" {
    zet commit-config
    run_zet rollback-config
    assert_success "$ONE: put back as it was, mode 0644 -> 0640
$TWO: removed, as there was none before"
    assert_as_before
}

@test "with nothing committed there is nothing to do" {
    remember_host
    run_zet rollback-config
    assert_success "$ONE: has no reserve, stays as it is
$TWO: is not there"
    assert_host_unchanged
}

@test "a second rollback changes nothing" {
    zet commit-config
    zet rollback-config
    remember_host
    run_zet rollback-config
    assert_status 0
    assert_host_unchanged
}

@test "a rollback goes back to the first commit, over all that came since" {
    zet commit-config
    zet option set DOMAIN other.org
    zet commit-config
    run_zet rollback-config
    assert_status 0
    assert_as_before
}

@test "a parameter or template that changed since is no edit" {
    zet commit-config
    zet option set DOMAIN other.org
    echo '${nope}' >etc/one.conf
    rm etc/two.conf templates/two.conf
    run_zet rollback-config
    assert_status 0
    assert_as_before
}

@test "what was edited since stays, is told, and the rest goes back" {
    zet commit-config
    echo mine >>out/one.conf
    run_zet rollback-config
    assert_status 1
    assert_output "$ONE: edited, stays as it is
$TWO: removed, as there was none before"
    assert_stderr "zet-client: error: $ONE: was edited since it was committed and stays (--force puts back what was there before)"
    assert_made one.conf $'realm = EXAMPLE.ORG\nmine\n'
    assert_file out/one.conf.before_zet $'old\n'
    assert_absent out/two.conf
    # As long as something is left to be taken back, there is a status.
    assert_equal "$(names_in state)" "zet-client-fs.status zet-client.status zet.lock"
    run_zet rollback-config --force
    assert_success "$ONE: put back as it was, mode 0644 -> 0640
$TWO: is not there"
    assert_as_before
}

@test "what keeps a rollback from being done is an error, which the quietest run and the document tell" {
    zet -q commit-config
    echo a=1 >out/conf
    zet -q param set --no-backup --no-markers out/conf a 2
    rm "$ONE.before_zet"
    echo mine >>out/two.conf
    local told=("$TWO: was edited since it was committed and stays (--force puts back what was there before)"
        "$ONE: has no reserve, stays as it is and on record (\"history $ONE\" tells what is kept of it; --force forgets it)"
        "$HOST/out/conf: was edited without markers and has no reserve, stays as it is (--force forgets it)")
    local i=0 name
    for name in "$TWO" "$ONE" out/conf; do
        run_zet -q rollback-config -n "$name"
        assert_status 1
        assert_stderr "zet-client: error: ${told[i]}"
        run_zet rollback-config -n --json "$name"
        assert_status 1
        assert_json 'd["errors"], d["warnings"]' "[$(python3 -c 'import json, sys; print(json.dumps(sys.argv[1:]))' "${told[i]}"), []]"
        ((++i))
    done
    run_zet -q rollback-config
    assert_status 1
    assert_equal "$(grep -c 'error: ' <<<"$stderr")" 3
    # Who says that edits are to stay is told of none.
    run_zet -q rollback-config --keep-edits "$TWO"
    assert_success ""
}

@test "a new file that was edited since stays unless forced" {
    zet commit-config
    echo mine >>out/two.conf
    chmod 600 out/one.conf
    run_zet rollback-config
    assert_status 1
    assert_output "$ONE: edited, stays as it is
$TWO: edited, stays as it is"
    assert_file out/two.conf.no_file_before_zet ""
    run_zet rollback-config --force
    assert_status 0
    assert_as_before
}

@test "a file that was removed since comes back, and one that was new stays away" {
    zet commit-config
    rm out/one.conf out/two.conf
    run_zet rollback-config
    assert_success "$ONE: put back as it was
$TWO: is not there, as before"
    assert_as_before
}

@test "a file that is by hand what it was before is no edit" {
    zet commit-config
    cp -p out/one.conf.before_zet "$BASE/old"
    rm out/one.conf
    cp -p "$BASE/old" out/one.conf
    run_zet rollback-config
    assert_status 0
    assert_as_before
}

@test "files that were reserved and not yet written go back, too" {
    zet commit-config
    # As a run leaves it that was killed before it recorded anything.
    rm state/zet-client.*
    run_zet rollback-config
    assert_status 0
    assert_as_before
    : >out/two.conf.no_file_before_zet
    cp -p out/one.conf out/one.conf.before_zet
    run_zet rollback-config
    assert_status 0
    assert_as_before
}

@test "named targets go back, and no others" {
    zet commit-config
    run_zet rollback-config "$TWO"
    assert_success "$TWO: removed, as there was none before"
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    run_zet status
    assert_equal "$(head -n -1 <<<"${output%?}" | tail -n 2)" "$ONE: in sync
$TWO: not committed"
    run_zet rollback-config out/../out/one.conf
    assert_status 0
    assert_as_before
}

@test "a file that is no target is wrong use" {
    zet commit-config
    echo x >out/other
    remember_files
    local name
    for name in out/other one.conf /nowhere; do
        run_zet rollback-config "$ONE" "$name"
        assert_refusal 2 "$name: is no target of the role client (\"status\" lists them; \"file restore\" puts any other file back)"
    done
    run_zet rollback-config "$ONE" ""
    assert_refusal 2 "FILE is empty (name a file)"
    assert_unchanged_but_staging
}

@test "a target that left the list goes back, too" {
    zet commit-config
    : >templates/targets.toml
    run_zet rollback-config
    assert_success "$ONE: put back as it was, mode 0644 -> 0640
$TWO: removed, as there was none before"
    assert_as_before
}

@test "an edited target that left the list stays, and goes back by name and force" {
    zet commit-config
    : >templates/targets.toml
    echo mine >>out/two.conf
    run_zet rollback-config
    assert_status 1
    [[ $output == *"$TWO: edited, stays as it is"* ]]
    run_zet rollback-config --force "$TWO"
    assert_status 0
    assert_as_before
}

@test "a target that is a link goes back at its end, and the link stays" {
    mkdir real
    mv out/one.conf real/
    ln -s ../real/one.conf out/one.conf
    ln -s "$HOST/real/two.conf" out/two.conf
    zet commit-config
    run_zet rollback-config "$ONE"
    assert_success "$HOST/real/one.conf: put back as it was, mode 0644 -> 0640"
    run_zet rollback-config
    assert_status 0
    assert_file real/one.conf $'old\n'
    assert_equal "$(readlink out/one.conf)" ../real/one.conf
    assert_equal "$(names_in real)" one.conf
}

@test "roles go back apart" {
    server commit-config one.conf
    zet commit-config two.conf
    zet rollback-config "$TWO"
    assert_file out/one.conf "$(notice one.conf zet-init)"$'\nrealm = EXAMPLE.ORG\n'
    capture server rollback-config
    assert_status 0
    assert_file out/one.conf $'old\n'
}

@test "a dry run tells what would go back and does nothing" {
    zet commit-config
    remember_host
    run_zet rollback-config -n --diff --show-secrets
    assert_status 3
    assert_output "$ONE: would be put back as it was, mode 0644 -> 0640
--- a$ONE
+++ b$ONE
@@ -1,11 +1 @@
$(notice one.conf | sed 's/^/-/')
-realm = EXAMPLE.ORG
+old
$TWO: would be removed, as there was none before
--- a$TWO
+++ /dev/null
@@ -1,11 +0,0 @@
$(notice two.conf | sed 's/^/-/')
-domain = example.org"
    assert_host_unchanged
    assert_equal "$(names_in "$TMPDIR")" ""
    echo mine >>out/one.conf
    echo mine >>out/two.conf
    remember_host
    run_zet rollback-config -n
    assert_status 1
    assert_host_unchanged
    run_zet rollback-config -n --force
    assert_status 3
    zet rollback-config --force
    run_zet rollback-config -n
    assert_status 0
}

@test "the diff of a rollback is fit for patch" {
    zet commit-config
    zet rollback-config -n --diff --show-secrets >"$BASE/diff" || true
    mkdir -p "$BASE/tree$HOST"
    cp -r out "$BASE/tree$HOST/out"
    patch -s -d "$BASE/tree" -p1 <"$BASE/diff"
    assert_file "$BASE/tree$HOST/out/one.conf" $'old\n'
    assert_absent "$BASE/tree$HOST/out/two.conf"
}

@test "the diff of a rollback shows a file that comes back, and none that stays away" {
    zet commit-config
    rm out/one.conf out/two.conf
    run_zet rollback-config -n --diff --show-secrets
    assert_status 3
    assert_output "$ONE: would be put back as it was
--- /dev/null
+++ b$ONE
@@ -0,0 +1 @@
+old
$TWO: is not there, as before"
    local diff
    diff=$(tail -n +2 <<<"$output" | head -n 4)
    run_zet rollback-config --diff --show-secrets
    assert_success "$ONE: put back as it was
$diff
$TWO: is not there, as before"
    assert_as_before
}

@test "the document is the same in a dry run, but for the tense" {
    zet commit-config
    run_zet --json rollback-config -n --diff --show-secrets
    assert_status 3
    local planned=${output%?}
    run_zet --json rollback-config --diff --show-secrets
    assert_status 0
    assert_json '[d[x] for x in ("version", "command", "role", "dry_run", "exit_status")]' \
        '[1, "rollback-config", "client", false, 0]'
    assert_json '[(t["template"], t["path"], t["result"], "+old" in t["diff"]) for t in d["targets"]]' \
        "[[\"one.conf\", \"$ONE\", \"restored\", true], [\"two.conf\", \"$TWO\", \"removed\", false]]"
    assert_equal "$(sed 's/"dry_run": true/"dry_run": false/; s/"exit_status": 3/"exit_status": 0/' <<<"$planned")" "$(sed 's/"entry": [0-9]*/"entry": null/' <<<"${output%?}")"
}

@test "a file that only a broken template could tell from an edit stays" {
    zet commit-config
    rm state/state.db*
    echo '${unknown}' >>etc/one.conf
    remember_host
    run_zet rollback-config "$ONE"
    assert_status 1
    assert_output "$ONE: edited, stays as it is"
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
}

@test "a kept target is kept in the document as well" {
    zet commit-config
    echo mine >>out/one.conf
    run_zet --json rollback-config
    assert_status 1
    assert_json '[t["result"] for t in d["targets"]], len(d["errors"])' '[["kept", "removed"], 1]'
}

@test "what cannot be put back is told and does not keep the others from it" {
    zet commit-config
    rm out/one.conf.before_zet
    mkdir out/one.conf.before_zet
    run_zet rollback-config
    assert_status 1
    assert_stderr "zet-client: error: $ONE: could not be put back: $ONE.before_zet: is no regular file (move it away)"
    assert_output "$ONE: could not be put back
$TWO: removed, as there was none before"
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    assert_absent out/two.conf
}

@test "what records that there was no file, and is none, is refused before anything is removed" {
    zet commit-config
    for path in "$ONE" "$TWO"; do
        rm -f "$path.no_file_before_zet"
        mkdir "$path.no_file_before_zet"
    done
    cp "$ONE" one
    for force in "" --force; do
        run_zet rollback-config $force
        assert_status 1
        assert_stderr "zet-client: error: $ONE: could not be put back: $ONE.no_file_before_zet: is no regular file (move it away)
zet-client: error: $TWO: could not be put back: $TWO.no_file_before_zet: is no regular file (move it away)"
        cmp "$ONE" one
        assert_made two.conf $'domain = example.org\n'
    done
}

@test "a target whose directory is not there stays on record until that is back, or by word" {
    zet commit-config
    mv out away
    local kept="its directory is not there, so that it stays on record (--force forgets it)"
    for dry in "" -n; do
        run_zet rollback-config $dry
        assert_status 1
        assert_output "$ONE: stays on record
$TWO: stays on record"
        assert_stderr "zet-client: error: $ONE: $kept
zet-client: error: $TWO: $kept"
    done
    run_zet status
    [[ $output != *"committed: never"* && $output == *"$TWO: missing"* ]]
    ln -s nowhere out
    run_zet rollback-config
    assert_status 1
    [[ $stderr == *"$ONE: $kept"* && $stderr == *"$TWO: $kept"* ]]
    rm out
    mv away out
    run_zet rollback-config
    assert_status 0
    assert_as_before
    zet commit-config
    rm -r out
    run_zet rollback-config --force
    assert_status 0
    assert_equal "$(names_in state)" zet.lock
}

@test "what is no file gives way to force with a warning, and no undo makes a file of it" {
    zet -q commit-config
    local form
    for form in link dangling; do
        mv out/one.conf "$HOST/site"
        ln -s "$HOST/site" out/one.conf
        [[ $form == link ]] || rm "$HOST/site"
        # Where the list has it, the link is followed.
        sed -i 's/^roles.*/&\nenabled = false/' templates/targets.toml
        run_zet rollback-config --force
        assert_status 0
        assert_stderr "zet-client: warning: $ONE: is no regular file, and the history does not keep it"
        assert_file out/one.conf $'old\n'
        run_zet undo
        assert_status 1
        [[ $stderr == *"$ONE: the text that it held before is no longer kept"* ]]
        assert_file out/one.conf $'old\n'
        assert_equal "$(stat -c %a out/one.conf)" 640
        sed -i '/^enabled/d' templates/targets.toml
        zet -q commit-config
    done
}

@test "a directory in the place of a target is told by a trial, too" {
    zet -q commit-config
    rm out/one.conf
    mkdir out/one.conf
    local option
    for option in -n -q; do
        run_zet rollback-config --force "$option"
        assert_status 1
        [[ $stderr == *"zet-client: error: $ONE: could not be put back: $ONE: is a directory (move it away)"* ]]
    done
}

@test "a listed target that was edited before its first commit goes back once, as an edited file does" {
    local edited
    edited() {
        zet -q param set "$ONE" NTP 1
        run_zet rollback-config -n
        assert_status 3
        run_zet rollback-config
        assert_success "$ONE: put back as it was
$TWO: is not there"
        assert_file out/one.conf $'old\n'
        assert_equal "$(names_in out)" one.conf
    }
    edited
    zet -q commit-config
    zet -q rollback-config "$ONE" "$TWO"
    edited
    zet -q param set "$ONE" NTP 1
    echo HAND=1 >>out/one.conf
    run_zet rollback-config
    assert_status 0
    assert_output "$ONE: the managed blocks are taken out, all other lines stay; $ONE.before_zet keeps what was there before (\"file restore $ONE\" puts it back, \"file forget $ONE\" drops it)
$TWO: is not there"
    assert_file out/one.conf $'old\n\nHAND=1\n'
}

@test "a target that has become a link to itself keeps no other from going back" {
    zet commit-config
    rm out/one.conf
    ln -s one.conf out/one.conf
    run_zet rollback-config -n
    assert_status 1
    run_zet rollback-config "$TWO"
    assert_success "$TWO: removed, as there was none before"
    zet commit-config two.conf
    run_zet rollback-config
    assert_status 1
    assert_output "$ONE: could not be put back
$TWO: removed, as there was none before"
    assert_stderr "zet-client: error: $ONE: could not be put back: $ONE: too many symbolic links, as when one leads back\
 to itself (correct the links)"
    assert_absent out/two.conf
    assert_file out/one.conf.before_zet $'old\n'
    run_zet rollback-config "$ONE"
    assert_refusal 1 "$ONE: too many symbolic links, as when one leads back to itself (correct the links)"
    rm out/one.conf
    run_zet rollback-config
    assert_status 0
    assert_as_before
}

@test "a directory on the way to a target that has become a link to itself keeps no other from going back" {
    list_target three.conf "$HOST/way/three.conf"
    echo x >templates/three.conf
    mkdir way
    zet commit-config
    mv way was
    ln -s way way
    run_zet rollback-config
    assert_status 1
    assert_stderr "zet-client: error: $HOST/way/three.conf: could not be put back: $HOST/way/three.conf: cannot\
 be looked at: Too many levels of symbolic links (correct the links)"
    assert_file out/one.conf $'old\n'
    assert_absent out/two.conf
    rm way
    mv was way
    run_zet rollback-config
    assert_status 0
    assert_equal "$(names_in way)" ""
    assert_as_before
}

@test "without a list that can be used, what was recorded goes back, and the exit status tells" {
    local error
    for breaker in 'rm templates/targets.toml' 'sed -i s/roles/rolls/ templates/targets.toml'; do
        cp templates/targets.toml "$BASE/list"
        zet -q commit-config
        $breaker
        remember_host
        run_zet rollback-config -n
        assert_status 1
        assert_host_unchanged
        run_zet rollback-config
        assert_status 1
        assert_output "$ONE: put back as it was, mode 0644 -> 0640
$TWO: removed, as there was none before"
        [[ $stderr == *"error: "*"list of targets "*"only the files that are on record are put back"$'\n' ]]
        assert_as_before
        run_zet rollback-config
        assert_status 1
        [[ $stderr != *recorded* ]]
        cp "$BASE/list" templates/targets.toml
    done
}

@test "without a list, what was edited stays, and goes back by name and force" {
    zet commit-config
    rm templates/targets.toml out/one.conf
    ln -s one.conf out/one.conf
    echo mine >>out/two.conf
    run_zet rollback-config --diff
    assert_status 1
    assert_output "$ONE: edited, stays as it is
$TWO: edited, stays as it is"
    run_zet rollback-config --force "$TWO"
    assert_status 1
    assert_output "$TWO: removed, as there was none before"
    run_zet rollback-config --force --diff
    assert_status 1
    [[ $output == "$ONE: put back as it was"* ]]
    assert_as_before
}

@test "the path in the document is that of the real file, links among its directories followed" {
    mkdir real
    ln -s real by_link
    list_target three.conf "$HOST/by_link/three.conf"
    echo three >templates/three.conf
    zet commit-config
    run_zet --json rollback-config
    assert_status 0
    assert_json '[(t["path"], t["result"]) for t in d["targets"]][2]' "[\"$HOST/real/three.conf\", \"removed\"]"
}

@test "a rollback needs no directory for temporary files" {
    original one.conf $'old\n'
    zet -q commit-config
    export TMPDIR=$BASE/nowhere
    run_zet rollback-config
    assert_status 0
    assert_file out/one.conf $'old\n'
    export TMPDIR=$BASE/tmp
}

@test "what this user cannot read is not told as edited" {
    need_root
    copy_programs
    zet -q commit-config
    chmod 600 "$ONE"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" rollback-config -n "$ONE"
    assert_status 1
    [[ $stderr == *"$ONE: could not be put back: $ONE: "*"Permission denied"* && $stderr != *edited* ]] || differ words "" "$stderr"
}

@test "a trial foretells no success for a file that cannot be replaced" {
    need_root
    zet -q commit-config
    chattr +i "$ONE" || skip "no such attribute here"
    run_zet rollback-config -n "$ONE"
    chattr -i "$ONE"
    assert_status 1
    [[ $stderr == *"$ONE: could not be put back: $ONE: is immutable, and cannot be replaced (chattr -i it)"* ]] || differ words immutable "$stderr"
}

@test "a target whose reserve was removed stays on record, and is told as what it is" {
    zet -q commit-config
    rm "$ONE.before_zet"
    local text
    text=$(<"$ONE")
    run_zet rollback-config "$ONE"
    assert_status 1
    assert_output "$ONE: stays as it is"
    [[ $stderr == *"$ONE: has no reserve, stays as it is and on record (\"history $ONE\" tells what is kept of it; --force forgets it)"* ]] ||
        differ rollback "no reserve" "$stderr"
    assert_equal "$(<"$ONE")" "$text"
    run_zet status
    [[ $output == *"$ONE: in sync"* ]]
    zet -q undo 1
    assert_file "$ONE" $'old\n'
    assert_absent "$ONE.before_zet"
}

@test "a target that was removed with its reserve is forgotten, and told where its original is kept" {
    zet -q commit-config
    rm "$ONE" "$ONE.before_zet" "$TWO"
    local words
    for words in "rollback-config -n" rollback-config; do
        run_zet $words
        [[ $output == *"$ONE: is not there (\"history $ONE\" tells what is kept of it)"$'\n'*"$TWO: is not there, as before"$'\n'* ]] ||
            differ "$words" told "$output"
    done
    assert_status 0
    run_zet history show 1 "$ONE"
    assert_success old
}

@test "a target whose reserve was removed is forgotten by force alone" {
    zet -q commit-config
    rm "$ONE.before_zet"
    run_zet rollback-config --force
    assert_status 0
    [[ $output == *"$ONE: has no reserve, stays as it is"* ]]
    run_zet status
    [[ $output == *"$ONE: not committed"* ]]
}

@test "a target that the first commit found as it makes it has no reserve, and is its own original" {
    zet -q commit-config
    rm "$ONE.before_zet" state/state.db*
    zet -q commit-config
    run_zet rollback-config
    assert_status 0
    [[ $output == *"$ONE: has no reserve, stays as it is"* ]]
}

@test "a commit keeps no text of the product's as the original" {
    zet -q commit-config
    rm "$ONE.before_zet"
    zet -q option set REALM OTHER.ORG
    local told="zet-client: warning: $ONE: has no reserve, and gets none, as the product's own work is no original (\"history $ONE\" tells where that is kept)"
    run_zet commit-config -n
    assert_status 3
    [[ $stderr == *"$told"* ]]
    run_zet commit-config
    assert_status 0
    [[ $stderr == *"$told"* ]]
    assert_absent "$ONE.before_zet"
    grep -q OTHER.ORG "$ONE"
    run_zet rollback-config
    assert_status 1
    grep -q OTHER.ORG "$ONE"
    zet -q undo 3
    zet -q undo 1
    assert_file "$ONE" $'old\n'
}

@test "the document names a file that left the list as a list would" {
    zet -q commit-config
    : >templates/targets.toml
    local command
    for command in commit-config rollback-config; do
        run_zet --json "$command" -n
        assert_status 3
        assert_json 'all(each["file"] == each["path"] for each in d["targets"])' true
    done
}
