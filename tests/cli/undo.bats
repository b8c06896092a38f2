# undo: whatever a command changed can be taken back.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n' 'restart = ["daemon"]'
    add_target two.conf $'domain = ${domain}\n'
    original one.conf $'old\n'
    ONE=$HOST/out/one.conf
    TWO=$HOST/out/two.conf
    PLAIN=$HOST/plain.conf
    printf 'size=3\ncolor=red\n' >plain.conf
    chmod 640 plain.conf
    edit() { zet param set --no-markers "$PLAIN" "$@"; }
}

teardown() {
    remove_host
}

# entries: how many there are.
entries() {
    /usr/bin/python3 - "$HOST/state/state.db" <<-'END'
		import sqlite3, sys
		print(sqlite3.connect(sys.argv[1]).execute("SELECT count(*) FROM entries").fetchone()[0])
	END
}

# as_now: everything that a managed file carries, but the time of the commit.
as_now() {
    local file
    for file in out/* plain.conf* zet.conf etc/*; do
        [[ -e $file ]] || continue
        stat -c '%n %a %u:%g' "$file"
        getfattr -d -m - "$file" 2>/dev/null || true
        cat "$file"
    done
}

@test "the first commit is taken back as if it had never been" {
    local before
    before=$(as_now)
    zet commit-config
    run_zet undo
    assert_status 0
    assert_output "$ONE: restored, mode 0644 -> 0640
$HOST/etc/one.conf: removed
$TWO: removed
$HOST/etc/two.conf: removed
$HOST/state/zet-client.status: removed
$HOST/state/zet-client-fs.status: removed
to be restarted: daemon
took back change 1"
    assert_equal "$(as_now)" "$before"
    assert_absent state/zet-client.status
    run_zet status
    [[ $output == *"not committed"* ]]
}

@test "undone twice is as if nothing had been done" {
    local committed
    zet commit-config
    committed=$(as_now)
    zet undo
    run_zet undo
    assert_status 0
    assert_equal "$(as_now)" "$committed"
    [[ -e state/zet-client.status ]]
    run_zet status
    assert_status 0
}

@test "the report names the number with which to go further back" {
    edit size 4
    edit size 5
    edit size 6
    run_zet undo
    assert_success "$PLAIN: changed
took back change 3 (\"undo 2\" goes further back)"
    run_zet undo 2
    assert_success "$PLAIN: changed
took back change 2 (\"undo 1\" goes further back)"
    assert_file plain.conf $'size=4\ncolor=red\n'
    run_zet undo 1
    assert_success "$PLAIN: restored
took back change 1"
    assert_absent plain.conf.before_zet
    assert_file plain.conf $'size=3\ncolor=red\n'
}

@test "owner, mode, access list and the user's attributes come back" {
    local before
    setfattr -n user.note -v kept plain.conf
    setfacl -m u:4321:r plain.conf
    chmod 4755 plain.conf
    before=$(as_now; getfacl -n plain.conf)
    edit size 4
    chmod 4755 plain.conf
    run_zet undo
    assert_status 0
    assert_equal "$(as_now; getfacl -n plain.conf)" "$before"
}

@test "a file that is not as the entry left it refuses all, and each is named" {
    zet commit-config
    echo more >>out/one.conf
    chmod 600 out/two.conf
    REMEMBERED=$(as_now)
    run_zet undo
    assert_status 1
    assert_stderr "zet-client: error: $ONE: holds another text: it is not as change 1 left it (--force puts back what was there before all the same)
zet-client: error: $TWO: has another mode 0644 -> 0600: it is not as change 1 left it (--force puts back what was there before all the same)
zet-client: nothing was changed"
    assert_equal "$(as_now)" "$REMEMBERED"
}

@test "with --force an edit goes, and comes back by another undo" {
    edit size 4
    echo more >>plain.conf
    run_zet undo --force
    assert_status 0
    assert_file plain.conf $'size=3\ncolor=red\n'
    run_zet undo
    assert_status 0
    assert_file plain.conf $'size=4\ncolor=red\nmore\n'
}

@test "with --merge an edit stays in the file that goes back" {
    printf 'size=3\n1\n2\n3\n4\ncolor=red\n' >plain.conf
    edit size 4
    echo more >>plain.conf
    run_zet undo --merge
    assert_status 0
    assert_file plain.conf $'size=3\n1\n2\n3\n4\ncolor=red\nmore\n'
}

@test "what both changed, each in its own way, is a conflict with its line, and changes nothing" {
    edit size 4
    printf 'size=5\ncolor=red\n' >plain.conf
    REMEMBERED=$(as_now)
    run_zet undo --merge
    assert_status 1
    assert_stderr "zet-client: error: $PLAIN:1: was edited here, where other lines are to come, too (take the edit out; --force puts back what was there before all the same)
zet-client: nothing was changed"
    assert_equal "$(as_now)" "$REMEMBERED"
}

@test "what both changed alike is no conflict" {
    printf 'size=3\n1\n2\n3\n4\ncolor=red\n' >plain.conf
    edit size 4
    printf 'size=3\n1\n2\n3\n4\ncolor=blue\n' >plain.conf
    run_zet undo --merge
    assert_status 0
    assert_file plain.conf $'size=3\n1\n2\n3\n4\ncolor=blue\n'
}

@test "a text with a NUL byte, or with mixed line ends, is not merged" {
    edit size 4
    printf 'size=4\ncolor=\0red\n' >plain.conf
    run_zet undo --merge
    assert_status 1
    [[ $stderr == *"$PLAIN: holds a NUL byte, so it cannot be merged"* ]]
    printf 'size=4\r\ncolor=red\nmore\n' >plain.conf
    run_zet undo --merge
    assert_status 1
    [[ $stderr == *"$PLAIN: its lines do not all end alike, so it cannot be merged"* ]]
}

@test "a number that is no entry, and a word that is none, are wrong use" {
    edit size 4
    run_zet undo 7
    assert_refusal 2 'there is no change 7: the last one is 1 ("history" tells them)'
    run_zet undo last
    assert_refusal 2 '"last" is no number of a change ("history" tells them)'
    run_zet undo 1 1
    assert_refusal 2 "more than one change (undo them one after the other)"
    run_zet undo --force --merge
    assert_refusal 2 "--force and --merge exclude each other (leave one of them out)"
}

@test "where nothing was recorded, nothing can be undone" {
    run_zet undo
    assert_refusal 1 "$HOST/state/state.db: is not there: nothing was recorded on this host that could be put back (\"rollback-config\" and \"file restore\" need no history)"
}

@test "a text that is not kept refuses the whole" {
    echo ZET_HISTORY_MAX_FILE=4 >>zet.conf
    edit size 4
    edit size 5
    REMEMBERED=$(as_now)
    run_zet undo
    assert_status 1
    assert_stderr "zet-client: error: $PLAIN: the text that it held before is no longer kept (put it back by hand, from a backup)
zet-client: nothing was changed"
    assert_equal "$(as_now)" "$REMEMBERED"
    # The original is beside the file.
    run_zet undo 1 --force
    assert_status 0
    assert_file plain.conf $'size=3\ncolor=red\n'
}

@test "a dry run changes nothing, and shows what would" {
    chmod 644 plain.conf
    edit size 4
    REMEMBERED=$(as_now)
    run_zet undo -n --diff
    assert_status 3
    assert_output "$PLAIN: would be restored
--- a${PLAIN}
+++ b${PLAIN}
@@ -1,2 +1,2 @@
-size=4
+size=3
 color=red
would take back change 1"
    assert_equal "$(as_now)" "$REMEMBERED"
}

@test "the document has the entries, the files and what keeps them" {
    chmod 644 plain.conf
    edit size 4
    edit size 5
    run_zet undo --json
    assert_status 0
    [[ $output == *'"undone": 2'* && $output == *'"entry": 3'* && $output == *'"further": 1'* ]]
    echo more >>plain.conf
    run_zet undo --json
    assert_status 1
    [[ $output == *'"problems": ['*'holds another text'* && $output == *'"entry": null'* ]]
}

@test "a reserve that was dropped, put back or made is as it was" {
    local before
    zet param set "$PLAIN" size 4
    for word in forget restore; do
        before=$(as_now)
        zet file "$word" "$PLAIN"
        run_zet undo
        assert_status 0
        assert_equal "$(as_now)" "$before"
    done
    zet file reserve "$HOST/none.conf"
    [[ -e none.conf.no_file_before_zet ]]
    zet undo
    assert_absent none.conf.no_file_before_zet
}

@test "a rollback is taken back, with the status" {
    local committed
    zet commit-config
    committed=$(as_now)
    zet rollback-config
    run_zet undo
    assert_status 0
    assert_equal "$(as_now)" "$committed"
    [[ -e state/zet-client.status ]]
    run_zet rollback-config
    assert_status 0
    assert_file out/one.conf $'old\n'
}

@test "an option that was set is as it was" {
    local before
    before=$(cat zet.conf)
    zet option set REALM OTHER.ORG
    run_zet undo
    assert_success "$HOST/zet.conf: changed
took back change 1"
    assert_equal "$(cat zet.conf)" "$before"
}

@test "the status stays as long as the role has a target" {
    zet commit-config one.conf
    zet commit-config two.conf
    zet undo 1
    [[ -e state/zet-client.status ]]
    assert_absent out/one.conf.before_zet
    zet undo 2
    assert_absent state/zet-client.status
}

@test "a status that the first commit of a role left, as it was killed, belongs to no one and goes" {
    local file
    for file in zet-client.status zet-client-fs.status; do
        "$ZET_BIN/zet-init" --config "$HOST/zet.conf" -q commit-config
        capture strace -f -qq -o "$BASE/killed" -P "$HOST/state/$file" -e trace=openat \
            -e inject=openat:signal=KILL "$ZET_BIN/zet-client" --config "$HOST/zet.conf" commit-config
        assert_status 137
        zet -q rollback-config
        assert_equal "$(names_in state)" "zet-server.status zet.lock"
        zet -q commit-config
        assert_equal "$(store "SELECT group_concat(roles, '; ') FROM known, states WHERE state = id AND kind = 0")" \
            "6:server6:client; 6:server6:client"
        zet -q rollback-config
        "$ZET_BIN/zet-init" --config "$HOST/zet.conf" -q rollback-config
        rm -rf state/*
    done
}

@test "what an undo that was killed, or goes on, has put back is nobody's edit for those who only look, too" {
    zet commit-config
    zet option set DOMAIN other.org
    zet commit-config
    kill_at_rename out/two.conf undo
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    assert_made two.conf $'domain = other.org\n'
    run_zet status
    assert_status 3
    [[ $output == *"$ONE: pending"* && $output == *"$TWO: in sync"* ]]
    run_zet commit-config -n --on-edit=refuse
    assert_status 3
    [[ $stderr != *edited* ]]
    run_zet rollback-config -n
    assert_status 3
    [[ $output == *"$ONE: would be put back as it was"* ]]
    assert_stderr ""
    echo hand >>out/one.conf
    run_zet status
    [[ $output == *"$ONE: edited"* ]]
    sed -i '$d' out/one.conf
    run_zet rollback-config
    assert_status 0
    assert_file out/one.conf $'old\n'
}

@test "a status that a rollback left, as it was killed, goes with the next way back" {
    zet commit-config
    cp -a state/zet-client.status state/zet-client-fs.status "$BATS_TEST_TMPDIR"
    zet rollback-config
    cp -a "$BATS_TEST_TMPDIR"/zet-client.status "$BATS_TEST_TMPDIR"/zet-client-fs.status state
    edit size 4
    run_zet rollback-config --to 2 --force
    assert_status 0
    [[ ! -e state/zet-client.status && ! -e state/zet-client-fs.status ]]
}

@test "a commit that changes nothing makes no entry, and does not keep one from being undone" {
    zet commit-config
    zet commit-config
    assert_equal "$(entries)" 1
    run_zet undo
    assert_status 0
    assert_file out/one.conf $'old\n'
}

@test "an edit that is back already stays one, whatever newer entries know of the file" {
    zet -q commit-config
    echo mine >>out/one.conf
    zet option set REALM OTHER.ORG
    zet -q commit-config
    local replaced
    replaced=$(store 'SELECT max(number) FROM entries')
    zet undo
    zet -q commit-config
    zet undo
    run_zet status
    [[ $output == *"$ONE: edited"* ]]
    zet undo "$replaced" --force
    run_zet status
    [[ $output == *"$ONE: edited"* ]]
    grep -qx mine out/one.conf
}

@test "what a hand made of a file of which only the knowledge comes back is no work of the product" {
    "$ZET_BIN/zet-init" --config "$HOST/zet.conf" -q commit-config
    zet -q commit-config
    zet rollback-config
    "$ZET_BIN/zet-init" --config "$HOST/zet.conf" rollback-config
    zet undo 3
    zet undo
    echo mine >out/two.conf
    zet undo --force
    assert_file out/two.conf $'mine\n'
    run_zet status
    [[ $output == *"$TWO: edited"* ]]
}

@test "a rollback goes back to an entry, and is one" {
    local before
    zet commit-config
    edit size 4
    before=$(as_now)
    edit size 5
    zet option set REALM OTHER.ORG
    "$ZET_BIN/zet-init" --config "$HOST/zet.conf" commit-config
    run_zet rollback-config --to 2
    assert_status 0
    assert_equal "$(as_now)" "$before"
    run_zet undo
    assert_status 0
    assert_file plain.conf $'size=5\ncolor=red\n'
}

@test "a rollback to an entry is refused as a whole when a file was edited since" {
    edit size 4
    edit size 5
    zet option set REALM OTHER.ORG
    echo more >>plain.conf
    REMEMBERED=$(as_now)
    run_zet rollback-config --to 1
    assert_status 1
    assert_stderr "zet-client: error: $PLAIN: holds another text: it is not as change 2 left it (--force puts back what was there before all the same)
zet-client: nothing was changed"
    assert_equal "$(as_now)" "$REMEMBERED"
    run_zet rollback-config --to 1 --keep-edits
    assert_status 0
    assert_file plain.conf $'size=5\ncolor=red\nmore\n'
    run_zet undo
    run_zet rollback-config --to 1 --force
    assert_status 0
    assert_file plain.conf $'size=4\ncolor=red\n'
}

@test "a rollback to the last entry is refused where somebody wrote since" {
    zet -q commit-config
    local last
    last=$(store 'SELECT max(number) FROM entries')
    echo mine >>out/one.conf
    REMEMBERED=$(as_now)
    run_zet rollback-config --to "$last"
    assert_status 1
    assert_stderr "zet-client: error: $ONE: holds another text: it is not as change $last left it (--force puts back what was there before all the same)
zet-client: nothing was changed"
    assert_equal "$(as_now)" "$REMEMBERED"
    run_zet rollback-config --to "$last" --keep-edits
    assert_success "$ONE: kept, edited, stays as it is"
    run_zet rollback-config --to "$last" --merge
    assert_success "$ONE: kept, edited, stays as it is"
    assert_equal "$(as_now)" "$REMEMBERED"
    run_zet rollback-config --to "$last" --force
    assert_success "$ONE: changed
to be restarted: daemon"
    ! grep -qx mine out/one.conf || return 1
    run_zet status
    assert_status 0
    run_zet undo
    assert_equal "$(as_now)" "$REMEMBERED"
    rm out/one.conf
    run_zet rollback-config --to "$last"
    assert_status 1
    [[ $stderr == *"$ONE: is not there any more: it is not as change"* ]]
}

@test "a target that a commit found as it would have written it is gone back to as well" {
    zet -q commit-config
    cp -p out/one.conf saved
    zet file forget --force "$ONE"
    mv state/state.db* ..
    zet -q commit-config
    edit size 4
    local last
    last=$(store 'SELECT max(number) FROM entries')
    echo mine >>out/one.conf
    run_zet rollback-config --to "$last"
    assert_status 1
    assert_stderr "zet-client: error: $ONE: holds another text: it is not as change 1 left it (--force puts back what was there before all the same)
zet-client: nothing was changed"
    run_zet rollback-config --to "$last" --force
    assert_status 0
    cmp out/one.conf saved
}

@test "a file whose lines a commit found as it would have set them is gone back to as well" {
    zet -q commit-config
    printf 'b=1\n' >out/lines
    echo ZET_HISTORY=no >>zet.conf
    zet -q param set out/lines b 2
    sed -i /ZET_HISTORY/d zet.conf
    cp -p out/lines saved
    mkdir -p etc/targets.d
    printf '[[edits]]\nfile = "%s"\nparam = "b"\nvalue = "2"\n' "$HOST/out/lines" >etc/targets.d/10.toml
    zet -q commit-config
    edit size 4
    local last
    last=$(store 'SELECT max(number) FROM entries')
    echo mine >>out/lines
    run_zet rollback-config --to "$last"
    assert_status 1
    assert_stderr "zet-client: error: $HOST/out/lines: holds another text: it is not as change 2 left it (--force puts back what was there before all the same)
zet-client: nothing was changed"
    run_zet rollback-config --to "$last" --force
    assert_status 0
    cmp out/lines saved
}

@test "a reserve that was given up since does not hide that somebody wrote the file" {
    zet -q commit-config
    local last
    last=$(store 'SELECT max(number) FROM entries')
    zet file forget --force "$ONE"
    echo mine >>out/one.conf
    run_zet rollback-config --to "$last"
    assert_status 1
    [[ $stderr == *"$ONE: holds another text"* ]]
    assert_absent out/one.conf.before_zet
    run_zet rollback-config --to "$last" --force
    assert_status 0
    assert_file out/one.conf.before_zet $'old\n'
    ! grep -qx mine out/one.conf || return 1
}

@test "working copies and the main file are anybody's to edit, and keep nothing from going back" {
    zet template install one.conf
    zet option set REALM OTHER.ORG
    zet -q commit-config
    local last
    last=$(store 'SELECT max(number) FROM entries')
    echo '# mine' >>etc/one.conf
    echo '# mine' >>zet.conf
    edit size 4
    run_zet rollback-config --to "$last"
    assert_success "$PLAIN: restored"
    grep -qx '# mine' etc/one.conf
    grep -qx '# mine' zet.conf
}

@test "a rollback to an entry merges what was edited since with what goes back" {
    printf 'size=3\na\nb\nc\ncolor=red\n' >plain.conf
    edit size 4
    edit size 5
    echo more >>plain.conf
    run_zet rollback-config --to 1 --merge
    assert_success "$PLAIN: changed, merged with what was edited since"
    assert_file plain.conf $'size=4\na\nb\nc\ncolor=red\nmore\n'
    run_zet rollback-config --to 1 --merge --force
    assert_refusal 2 "--merge excludes --force and --keep-edits (leave it out, or them)"
    run_zet rollback-config --merge
    assert_refusal 2 "--merge goes with --to alone (--keep-edits leaves what was edited)"
}

@test "what is no longer kept refuses a way back over it" {
    echo ZET_HISTORY_KEEP=2 >>zet.conf
    edit size 4
    edit size 5
    edit size 6
    edit size 7
    run_zet undo 1
    assert_refusal 2 'change 1 is no longer kept ("history" tells those that are; ZET_HISTORY_KEEP says how many)'
    run_zet rollback-config --to 1
    assert_refusal 2 'change 1 is no longer kept ("history" tells those that are; ZET_HISTORY_KEEP says how many)'
    run_zet rollback-config --to 3 --to 4
    assert_refusal 2 "--to takes one change, and goes back to it as a whole (leave TARGET out)"
}

@test "edits stay with --keep-edits, and that is no failure" {
    zet commit-config
    echo more >>out/one.conf
    run_zet rollback-config --keep-edits
    assert_success "$ONE: edited, stays as it is
$TWO: removed, as there was none before"
    run_zet rollback-config --keep-edits --force
    assert_refusal 2 "--force and --keep-edits exclude each other (leave one of them out)"
}

@test "the change that an undo names as the next one is kept" {
    printf 'ZET_HISTORY_KEEP=2\n' >>zet.conf
    printf 'a=1\n' >out/plain
    local value number
    for value in 2 3 4 5; do
        zet -q param set "$HOST/out/plain" a "$value"
    done
    run_zet undo
    assert_status 0
    number=$(sed -n 's/.*"undo \([0-9]*\)".*/\1/p' <<<"$output")
    assert_equal "$number" ""
    run_zet --json undo
    assert_json "d['undone'], d['further'], d['entry']" '[5, null, 6]'
}

@test "where a role has committed, a history that is gone is said to be so, whatever change is asked for" {
    zet -q commit-config
    rm -f state/state.db*
    local words
    for words in "undo 1" "rollback-config --to 1" "history show 1" "history diff 1" "undo -n 1"; do
        # shellcheck disable=SC2086
        run_zet $words
        assert_refusal 1 "$HOST/state/state.db: is not there: nothing was recorded on this host that could be put back (\"rollback-config\" and \"file restore\" need no history)"
    done
}

@test "where nothing was recorded, the number of a change is wrong use of every command" {
    rm -f state/state.db*
    local words
    for words in "undo 7" "rollback-config --to 7" "history show 7" "history diff 7" "undo -n 7"; do
        # shellcheck disable=SC2086
        run_zet $words
        assert_refusal 2 "there is no change 7: nothing was recorded yet on this host"
    done
}
