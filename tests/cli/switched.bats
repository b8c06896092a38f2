# A file that changes from lines of the lists to a template, or back.

load helper
load set

setup() {
    make_set
    printf 'full=1\nNTP=full\n' >templates/e
    mkdir etc/targets.d
    echo PROFILE=lines >>zet.conf
    E=$HOST/out/e.conf
    LIST=$HOST/etc/targets.d/10.toml
    cat >"$LIST" <<-END
		[templates."e"]
		target = "$E"
		roles = "both"
		when = "PROFILE=full"
		[[edits]]
		file = "$E"
		when = "PROFILE=lines"
		param = "NTP"
		value = "1"
	END
    original e.conf $'orig=1\nNTP=old\n'
    LINES_TEXT=$'orig=1\n# --PRE-ZET-- NTP=old\n'$(block NTP=1)$'\n'
}

teardown() {
    remove_host
}

profile() {
    sed -i "s/^PROFILE=.*/PROFILE=$1/" zet.conf
}

# commit_as PROFILE: committed, and edited by hand since; $edited is a copy.
commit_as() {
    profile "$1"
    zet -q commit-config
    echo HAND=1 >>out/e.conf
    edited=$BASE/edited
    cp -p out/e.conf "$edited"
}

# assert_edit_back ENTRY: an undo of the entry brings what a hand had made, and what was known of it.
assert_edit_back() {
    run_zet history show "$1" "$E"
    assert_success "$(<"$edited")"
    run_zet undo "$1"
    assert_status 0
    cmp out/e.conf "$edited"
    assert_equal "$(stat -c %a out/e.conf)" "$(stat -c %a "$edited")"
}

@test "lines give way to a template in one run, and a hand's text is kept" {
    commit_as lines
    profile full
    run_zet check-config
    assert_status 0
    run_zet commit-config -n
    assert_status 3
    assert_output "$E: would be changed, mode 0640 -> 0644
1 would be changed"
    assert_stderr "zet-client: warning: $E: holds changes that are kept nowhere; they would be overwritten"
    run_zet commit-config --on-edit=refuse
    assert_refusal 1 "$E: holds changes that are kept nowhere (--on-edit=overwrite replaces it, and the history keeps it)
zet-client: nothing was changed"
    run_zet commit-config --on-edit=merge
    assert_status 1
    [[ $stderr == *"$E:"*": was edited here, where other lines are to come, too"* ]]
    cmp out/e.conf "$edited"
    run_zet commit-config
    assert_status 0
    assert_output "$E: changed, mode 0640 -> 0644, the original is kept as $E.before_zet
1 changed"
    assert_file out/e.conf "$(notice e)"$'\nfull=1\nNTP=full\n'
    run_zet status
    assert_status 0
    [[ $output == *"$E: in sync"* && $output != *"line NTP"* ]]
    run_zet commit-config
    assert_success "1 unchanged"
    assert_edit_back 2
    run_zet --json status
    assert_json '[t["state"] for t in d["targets"]]' '["not committed"]'
    profile lines
    run_zet status
    assert_status 0
    [[ $output == *"$E: line NTP: in sync"* ]]
    run_zet rollback-config
    assert_status 0
    assert_file out/e.conf $'orig=1\nNTP=old\nHAND=1\n'
}

@test "a template gives way to lines in one run, and a hand's text is kept" {
    commit_as full
    profile lines
    run_zet check-config
    assert_status 0
    run_zet commit-config -n
    assert_status 3
    assert_output "$E: would be changed, mode 0644 -> 0640
1 would be changed"
    assert_stderr "zet-client: warning: $E: was edited since the last commit; the edits would be overwritten"
    run_zet status
    assert_status 3
    assert_stderr ""
    [[ $output == *"$E: line NTP: not committed"* ]]
    run_zet commit-config --on-edit=refuse
    assert_refusal 1 "$E: was edited since the last commit (--on-edit=overwrite replaces it, and the history keeps it)
zet-client: nothing was changed"
    run_zet commit-config --on-edit=merge
    assert_refusal 1 "$E: was edited since the last commit, and cannot be merged with what was there before (take the edit out; --on-edit=overwrite replaces it, and the history keeps it)
zet-client: nothing was changed"
    cmp out/e.conf "$edited"
    run_zet commit-config
    assert_status 0
    assert_output "$E: changed, mode 0644 -> 0640, the original is kept as $E.before_zet
1 changed"
    assert_stderr "zet-client: warning: $E: was edited since the last commit; the edits are overwritten
zet-client: \"history show 2 $E\" shows what it held"
    assert_file out/e.conf "$NOTICE$LINES_TEXT"
    run_zet status
    assert_status 0
    run_zet commit-config
    assert_success "1 unchanged"
    run_zet rollback-config
    assert_success "$E: put back as it was"
    assert_equal "$(names_in out)" e.conf
    zet -q undo
    assert_edit_back 2
    profile full
    run_zet status
    assert_status 3
    [[ $output == *"$E: edited"* ]]
    run_zet rollback-config --force
    assert_status 0
    assert_file out/e.conf $'orig=1\nNTP=old\n'
}

@test "what no hand has edited is switched without a word, and a rollback puts the original back" {
    local name
    for name in lines full lines full; do
        profile "$name"
        run_zet commit-config
        assert_status 0
        assert_stderr ""
        run_zet commit-config
        assert_success "1 unchanged"
    done
    run_zet rollback-config
    assert_status 0
    assert_file out/e.conf $'orig=1\nNTP=old\n'
    assert_equal "$(names_in out)" e.conf
    profile lines
    zet -q commit-config
    run_zet rollback-config
    assert_success "$E: put back as it was"
    assert_file out/e.conf $'orig=1\nNTP=old\n'
    assert_equal "$(names_in out)" e.conf
}

@test "a list that is edited switches a file as a parameter does, and a way back leads over all" {
    sed -i '/^when/d' "$LIST"
    local both
    both=$(<"$LIST")
    sed -i '/edits/,$d' "$LIST"
    zet -q commit-config
    sed '1,/roles/d' <<<"$both" >"$LIST"
    run_zet commit-config
    assert_status 0
    assert_file out/e.conf "$NOTICE$LINES_TEXT"
    sed '/edits/,$d' <<<"$both" >"$LIST"
    run_zet commit-config
    assert_status 0
    run_zet rollback-config --to 2
    assert_status 0
    assert_file out/e.conf "$NOTICE$LINES_TEXT"
    run_zet rollback-config --to 1
    assert_status 0
    run_zet status
    assert_status 0
    run_zet rollback-config
    assert_success "$E: put back as it was, mode 0644 -> 0640"
}

@test "a template that both roles have committed gives way for both, and the services of either are named" {
    sed -i 's/^roles = "both"/&\nrestart = ["service"]/' "$LIST"
    profile full
    zet -q commit-config
    server -q commit-config
    profile lines
    run_zet commit-config
    assert_status 0
    [[ $output == *"to be restarted: service"* ]]
    assert_file out/e.conf "$NOTICE$LINES_TEXT"
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config
    assert_success "1 unchanged"
    run_zet undo
    run_zet undo 3
    assert_status 0
    profile full
    PROGRAM=$ZET_BIN/zet-init run_zet status
    assert_status 0
    run_zet status
    assert_status 0
}

@test "lines are set in no text of the template whose reserve is gone, until what was there is given up" {
    profile full
    zet -q commit-config
    rm "$E.before_zet"
    profile lines
    run_zet commit-config
    assert_refusal 1 "$LIST:5: $E: was made from a template, and has no reserve in which to set the line (put back $E.before_zet, or give up what was there before the template: \"rollback-config --force $E\")
zet-client: nothing was changed"
    printf 'orig=1\nNTP=old\n' >"$E.before_zet"
    run_zet commit-config -n
    assert_status 3
    rm "$E.before_zet"
    zet -q rollback-config --force "$E"
    run_zet commit-config
    assert_status 0
    grep -Fx NTP=1 "$E"
}

@test "a file that there was only for its template goes first, or with an edit that may do without" {
    rm out/e.conf
    profile full
    zet -q commit-config
    profile lines
    local problem="$LIST:5: $E: was made from a template, and has no reserve in which to set the line (\"rollback-config $E\" first)"
    run_zet check-config
    assert_status 1
    [[ $output == *"$problem"* ]]
    run_zet commit-config
    assert_refusal 1 "$problem
zet-client: nothing was changed"
    run_zet status
    [[ $output == *"$E: line NTP: unknown"* ]]
    echo 'optional = true' >>"$LIST"
    run_zet commit-config
    assert_success "$E: removed, as there was none before
1 removed"
    assert_absent out/e.conf
}

@test "a former target that has lost its reserve is not edited" {
    profile full
    zet -q commit-config
    rm out/e.conf.before_zet
    profile lines
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"$LIST:5: $E: was made from a template, and has no reserve"* ]]
}

@test "a former target that is gone comes back with its lines" {
    profile full
    zet -q commit-config
    rm out/e.conf
    profile lines
    run_zet commit-config
    assert_status 0
    [[ $output == *"$E: created, mode 0640"* ]]
    assert_file out/e.conf "$NOTICE$LINES_TEXT"
    run_zet rollback-config
    assert_status 0
    assert_file out/e.conf $'orig=1\nNTP=old\n'
}

@test "an edit of a target that the history cannot keep gives way to lines only when that is said" {
    echo ZET_HISTORY=no >>zet.conf
    commit_as full
    profile lines
    run_zet commit-config
    assert_refusal 1 "$E: was edited since the last commit, and the history cannot keep the edit (--on-edit=overwrite replaces it all the same)
zet-client: nothing was changed"
    run_zet commit-config --on-edit=overwrite
    assert_status 0
    assert_file out/e.conf "$NOTICE$LINES_TEXT"
}

@test "a template whose text was merged gives way to lines like one that was edited" {
    local merged="$E: holds edits that an earlier commit merged"
    commit_as full
    zet -q commit-config --on-edit=merge
    profile lines
    run_zet commit-config --on-edit=refuse
    assert_refusal 1 "$merged (--on-edit=overwrite replaces it, and the history keeps it)
zet-client: nothing was changed"
    run_zet commit-config --on-edit=merge
    assert_refusal 1 "$merged, and cannot be merged with what was there before (take the edit out; --on-edit=overwrite replaces it, and the history keeps it)
zet-client: nothing was changed"
    cmp out/e.conf "$edited"
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $merged; the edits are overwritten
zet-client: \"history show 2 $E\" shows what it held"
    assert_file out/e.conf "$NOTICE$LINES_TEXT"
}

@test "what a hand adds to a file that was a template's before is all that stays of it" {
    profile full
    zet -q commit-config
    profile lines
    zet -q commit-config
    echo HAND=1 >>out/e.conf
    run_zet rollback-config
    assert_success "$E: the managed blocks are taken out, all other lines stay; $E.before_zet keeps what was there before (\"file restore $E\" puts it back, \"file forget $E\" drops it)"
    run_zet rollback-config
    assert_status 0
}
