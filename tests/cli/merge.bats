# --on-edit=merge: what others edited in a target stays when its template, or a value, makes another text of it.

load helper
load set

setup() {
    make_set
    add_target one.conf $'first\nrealm = ${realm}\nmiddle\nmore\nlast\n'
    add_target two.conf $'domain = ${domain}\n'
    original one.conf $'old\n'
    ONE=$HOST/out/one.conf
    zet commit-config
    BODY=$'first\nrealm = OTHER.ORG\nmiddle\nmore\nlast\nmine\n'
}

teardown() {
    remove_host
}

# body: the target without its notice.
body() {
    /usr/bin/python3 - "$ONE" <<-'END'
		import sys
		text = open(sys.argv[1]).read()
		print(text[text.index("first"):], end="")
	END
}

# edit_and_pend: a hand edit at the end, and a value of which the template makes another text.
edit_and_pend() {
    echo mine >>"$ONE"
    zet option set REALM OTHER.ORG
}

@test "the target gets the new rendering with the edit, and is in sync" {
    edit_and_pend
    run_zet commit-config --on-edit=merge
    assert_status 0
    assert_stderr "zet-client: $ONE: was edited since the last commit; the edits are merged
zet-client: \"history show 3 $ONE\" shows what it held"
    assert_equal "$(body)" "$(printf '%s' "$BODY")"
    run_zet status --changed
    assert_status 0
    run_zet --json status
    assert_json '[[t["state"], t["merged"]] for t in d["targets"]]' '[["in sync", true], ["in sync", false]]'
    run_zet --json commit-config
    assert_json '[[t["result"], t["edited"], t["merged"]] for t in d["targets"]]' \
        '[["unchanged", false, true], ["unchanged", false, false]]'
    remember_host
    run_zet commit-config
    assert_success "2 unchanged"
    assert_equal "$(body)" "$(printf '%s' "$BODY")"
}

@test "the report as JSON tells that a commit, or an undo, merges" {
    edit_and_pend
    run_zet --json commit-config --on-edit=merge -n
    assert_json '[[t["result"], t["edited"], t["merged"]] for t in d["targets"]]' \
        '[["changed", true, true], ["unchanged", false, false]]'
    zet commit-config
    sed -i 's/^more$/more of mine/' "$ONE"
    run_zet --json undo --merge
    assert_status 0
    assert_json '[t["merged"] for t in d["files"] if t["path"].endswith("one.conf")]' '[true]'
}

@test "the parameter asks for it as well, and the next merge takes the rendering as its base" {
    zet option set ZET_ON_EDIT merge
    edit_and_pend
    zet commit-config
    zet option set REALM THIRD.ORG
    run_zet status
    [[ $output == *"$ONE: pending"* ]]
    run_zet commit-config
    assert_status 0
    assert_equal "$(body)" $'first\nrealm = THIRD.ORG\nmiddle\nmore\nlast\nmine'
    run_zet status
    assert_status 0
}

@test "a merged target that is edited anew is edited, and both edits stay" {
    edit_and_pend
    zet commit-config --on-edit=merge
    sed -i 's/^more$/more of mine/' "$ONE"
    run_zet status
    [[ $output == *"$ONE: edited"* ]]
    zet option set REALM THIRD.ORG
    run_zet commit-config --on-edit=merge
    assert_status 0
    assert_equal "$(body)" $'first\nrealm = THIRD.ORG\nmiddle\nmore of mine\nlast\nmine'
}

@test "an edit whose rendering is as it was stays, and the file is in sync" {
    echo mine >>"$ONE"
    run_zet commit-config --on-edit=merge
    assert_status 0
    assert_equal "$(body)" $'first\nrealm = EXAMPLE.ORG\nmiddle\nmore\nlast\nmine'
    run_zet status
    assert_status 0
    zet option set REALM OTHER.ORG
    run_zet commit-config --on-edit=merge
    assert_status 0
    assert_equal "$(body)" "$(printf '%s' "$BODY")"
}

@test "the same where another target changes, and an undo of that brings back what was known" {
    echo mine >>"$ONE"
    zet option set DOMAIN other.org
    sed -i 's/.{realm}/EXAMPLE.ORG/' templates/one.conf etc/one.conf
    run_zet commit-config --on-edit=merge
    assert_status 0
    assert_equal "$(tail -1 out/two.conf)" "domain = other.org"
    run_zet status
    assert_status 0
    run_zet undo
    assert_status 0
    run_zet status
    [[ $output == *"$ONE: edited"* ]]
}

@test "a merge that changes no byte is known again when its undo is undone" {
    echo mine >>"$ONE"
    zet option set DOMAIN other.org
    sed -i 's/.{realm}/EXAMPLE.ORG/' templates/one.conf etc/one.conf
    zet commit-config --on-edit=merge
    zet undo
    run_zet --json status
    assert_json '[[t["state"], t["merged"]] for t in d["targets"]]' '[["edited", false], ["pending", false]]'
    zet undo
    run_zet --json status
    assert_json '[[t["state"], t["merged"]] for t in d["targets"]]' '[["in sync", true], ["in sync", false]]'
}

@test "what was merged is not dropped unseen" {
    edit_and_pend
    zet commit-config --on-edit=merge
    zet option set REALM THIRD.ORG
    run_zet commit-config --on-edit=refuse
    assert_refusal 1 "$ONE: holds edits that an earlier commit merged (--on-edit=overwrite replaces it, and the history keeps it)
zet-client: nothing was changed"
    run_zet commit-config
    assert_status 0
    [[ $stderr == *"warning: $ONE: holds edits that an earlier commit merged; they are overwritten"* ]]
    assert_equal "$(body)" $'first\nrealm = THIRD.ORG\nmiddle\nmore\nlast'
    zet undo
    assert_equal "$(body)" "$(printf '%s' "$BODY")"
}

@test "lines that both changed are a conflict, told by file and line, and nothing is written" {
    sed -i 's/^realm = .*/realm = MINE.ORG/' "$ONE"
    local line
    line=$(grep -n MINE.ORG "$ONE" | cut -d: -f1)
    zet option set REALM OTHER.ORG
    zet option set DOMAIN other.org
    remember_host
    run_zet commit-config --on-edit=merge
    assert_refusal 1 "$ONE:$line: was edited here, where other lines are to come, too (take the edit out; --on-edit=overwrite replaces it, and the history keeps it)
zet-client: nothing was changed"
}

@test "NUL bytes, mixed line ends and another mode are refused" {
    zet option set REALM OTHER.ORG
    printf 'x\0y\n' >>"$ONE"
    run_zet commit-config --on-edit=merge
    assert_status 1
    [[ $stderr == *"$ONE: holds a NUL byte"* ]]
    zet commit-config --on-edit=overwrite
    printf 'mine\r\n' >>"$ONE"
    run_zet commit-config --on-edit=merge
    assert_status 1
    [[ $stderr == *"$ONE: its lines do not all end alike"* ]]
    zet commit-config --on-edit=overwrite
    chmod 600 "$ONE"
    run_zet commit-config --on-edit=merge
    assert_status 1
    [[ $stderr == *"$ONE: has another mode (0600)"* ]]
    [[ $(stat -c %a "$ONE") == 600 ]]
}

@test "a merge whose texts were erased is told, cannot go on, and is not dropped unseen" {
    local erased="holds edits that cannot be merged again, as the text that they were merged with was erased from the history (put them into its template; --on-edit=overwrite takes them out, and the history keeps them)"
    edit_and_pend
    zet commit-config --on-edit=merge
    run_zet history erase "$ONE"
    assert_status 0
    [[ $stderr == *"warning: $ONE: holds edits that a commit merged, and none can merge them again without its texts (put them into its template)"* ]]
    remember_host
    run_zet commit-config --on-edit=merge
    assert_refusal 1 "$ONE: $erased
zet-client: nothing was changed"
    run_zet commit-config --on-edit=refuse
    assert_refusal 1 "$ONE: holds edits that an earlier commit merged (--on-edit=overwrite replaces it, and the history keeps it)
zet-client: nothing was changed"
    run_zet status
    [[ $output == *"$ONE: pending"* ]]
    assert_host_unchanged
    run_zet commit-config
    assert_status 0
    [[ $stderr == *"warning: $ONE: holds edits that an earlier commit merged; they are overwritten"* ]]
    zet undo
    assert_equal "$(body)" "$(printf '%s' "$BODY")"
    run_zet commit-config --on-edit=merge
    assert_refusal 1 "$ONE: $erased
zet-client: nothing was changed"
}

@test "a merge whose texts were erased and whose edits the template has is none any more" {
    edit_and_pend
    zet commit-config --on-edit=merge
    zet history erase "$ONE"
    echo mine >>etc/one.conf
    run_zet commit-config --on-edit=merge
    assert_success "2 unchanged"
    zet option set REALM THIRD.ORG
    run_zet commit-config --on-edit=refuse
    assert_status 0
    assert_equal "$(body)" $'first\nrealm = THIRD.ORG\nmiddle\nmore\nlast\nmine'
}

@test "a target that was removed cannot be merged" {
    rm "$ONE"
    run_zet commit-config --on-edit=merge
    assert_status 1
    [[ $stderr == *"$ONE: was removed since the last commit, which cannot be merged"* ]]
}

@test "where the edit cannot be kept, it is refused" {
    edit_and_pend
    echo ZET_HISTORY=no >>zet.conf
    run_zet commit-config --on-edit=merge
    assert_refusal 1 "$ONE: was edited since the last commit, and the history cannot keep the edit (--on-edit=overwrite replaces it all the same)
zet-client: nothing was changed"
    sed -i 's/ZET_HISTORY=no/ZET_HISTORY_MAX_FILE=10/' zet.conf
    run_zet commit-config --on-edit=merge
    assert_status 1
    run_zet commit-config --on-edit=overwrite
    assert_status 0
}

@test "a dry run and its diff show the merged text" {
    edit_and_pend
    run_zet commit-config --on-edit=merge -n --diff
    assert_status 3
    [[ $output == *"-realm = EXAMPLE.ORG"*"+realm = OTHER.ORG"* ]]
    [[ $output != *"-mine"* ]]
    [[ $stderr == *"the edits would be merged"* ]]
}

@test "the target's own check command looks at the merged text" {
    add_target three.conf $'a = ${realm}\nb\nc\n' 'check = ["grep", "-q", "mine", "{}"]'
    zet commit-config --on-edit=overwrite one.conf
    printf 'mine\n' >"$HOST/out/three.conf.wanted"
    run_zet commit-config three.conf
    assert_status 1
    sed -i 's/"mine"/"a"/' templates/targets.toml
    zet commit-config three.conf
    echo mine >>out/three.conf
    sed -i 's/"a"/"mine"/' templates/targets.toml
    zet option set REALM OTHER.ORG
    run_zet commit-config --on-edit=merge
    assert_status 0
    [[ $(tail -1 out/three.conf) == mine ]]
}

@test "undo brings back the edited file, byte for byte, and undone twice the merged one" {
    edit_and_pend
    cp -a "$ONE" "$BATS_TEST_TMPDIR/edited"
    zet commit-config --on-edit=merge
    cp -a "$ONE" "$BATS_TEST_TMPDIR/merged"
    zet undo
    cmp "$ONE" "$BATS_TEST_TMPDIR/edited"
    run_zet status
    [[ $output == *"$ONE: edited"* ]]
    zet undo
    cmp "$ONE" "$BATS_TEST_TMPDIR/merged"
    run_zet status
    assert_status 0
}

@test "rollback-config --force brings back the original of a merged file, for both roles" {
    "$ZET_BIN/zet-init" --config "$HOST/zet.conf" commit-config
    edit_and_pend
    zet commit-config --on-edit=merge
    run "$ZET_BIN/zet-init" --config "$HOST/zet.conf" status
    assert_status 0
    run_zet rollback-config
    assert_status 0
    assert_equal "$(body)" "$(printf '%s' "$BODY")"
    run "$ZET_BIN/zet-init" --config "$HOST/zet.conf" rollback-config
    assert_status 1
    assert_equal "$(body)" "$(printf '%s' "$BODY")"
    run "$ZET_BIN/zet-init" --config "$HOST/zet.conf" rollback-config --force
    assert_status 0
    assert_file out/one.conf $'old\n'
}

@test "rollback-config --to goes back to a merged file, with what is known of it" {
    edit_and_pend
    zet commit-config --on-edit=merge
    cp -a "$ONE" "$BATS_TEST_TMPDIR/merged"
    zet option set REALM THIRD.ORG
    zet commit-config --on-edit=overwrite
    zet rollback-config --to 3
    cmp "$ONE" "$BATS_TEST_TMPDIR/merged"
    run_zet status
    assert_status 0
    zet option set REALM THIRD.ORG
    run_zet commit-config --on-edit=merge
    assert_status 0
    [[ $(tail -1 "$ONE") == mine ]]
}

@test "adopt takes over what was merged" {
    edit_and_pend
    zet commit-config --on-edit=merge
    run_zet adopt "$ONE"
    assert_status 0
    [[ $(tail -1 etc/one.conf) == mine ]]
    run_zet status
    assert_status 0
    zet option set REALM THIRD.ORG
    run_zet commit-config --on-edit=refuse
    assert_status 0
    assert_equal "$(body)" $'first\nrealm = THIRD.ORG\nmiddle\nmore\nlast\nmine'
}

@test "the notice is that of the new rendering" {
    edit_and_pend
    zet commit-config --on-edit=merge
    local made
    made=$(head -3 "$ONE")
    zet commit-config --on-edit=overwrite
    zet option set REALM OTHER.ORG
    assert_equal "$(head -3 "$ONE")" "$made"
}

@test "what a commit merged goes back like any edit: only when that is said" {
    local setting
    edit_and_pend
    zet commit-config --on-edit=merge
    for setting in ZET_HISTORY=yes ZET_HISTORY=no; do
        echo "$setting" >>zet.conf
        run_zet rollback-config "$ONE"
        assert_status 1
        assert_output "$ONE: edited, stays as it is"
        assert_stderr "zet-client: error: $ONE: holds edits that a commit merged, and stays (--force puts back what was there before)"
        assert_equal "$(body)" "$(printf '%s' "$BODY")"
        run_zet rollback-config --keep-edits "$ONE"
        assert_success "$ONE: edited, stays as it is"
        sed -i '$d' zet.conf
    done
    run_zet rollback-config --force "$ONE"
    assert_status 0
    assert_file "$ONE" $'old\n'
    zet undo
    run_zet --json status
    assert_json '[[t["state"], t["merged"]] for t in d["targets"]]' '[["in sync", true], ["in sync", false]]'
}

@test "what a commit merged stays when it leaves the list" {
    edit_and_pend
    zet commit-config --on-edit=merge
    sed -i 's/^target = .*one.conf"/&\nenabled = false/' templates/targets.toml
    run_zet status
    assert_status 0
    [[ $output == *"$ONE: kept"$'\n'* ]] || differ status kept "$output"
    assert_stderr "zet-client: warning: $ONE: was committed and is not in force any more (it was edited since, and stays until \"rollback-config --force $ONE\")"
    run_zet commit-config
    assert_status 0
    [[ $output == *"$ONE: edited, stays as it is"$'\n'* ]] || differ commit kept "$output"
    assert_equal "$(body)" "$(printf '%s' "$BODY")"
    zet rollback-config --force "$ONE"
    assert_file "$ONE" $'old\n'
}

@test "a merge that the other role has committed, too, is left to it" {
    edit_and_pend
    zet commit-config --on-edit=merge
    server -q commit-config --on-edit=merge
    run_zet rollback-config "$ONE"
    assert_success "$ONE: stays for the role server, which has committed it"
    assert_equal "$(body)" "$(printf '%s' "$BODY")"
}

@test "a merge whose edit the template has by now goes back without a word" {
    edit_and_pend
    zet commit-config --on-edit=merge
    run_zet adopt "$ONE"
    assert_status 0
    run_zet rollback-config
    assert_status 0
    assert_file "$ONE" $'old\n'
}
