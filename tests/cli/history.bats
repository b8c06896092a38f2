# Looking back at what was done on the host.

load helper
load set

setup() {
    make_set
    printf 'x=1\ny=2\n' >conf
    # Numbers, times and words are looked at; who runs the tests is not known.
    WHO=$(id -un)
}

teardown() {
    remove_host
}

# plain: what was printed, with the times and the main file taken out.
plain() {
    output=$(sed -E "s/[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}/TIME/g; s| --config $HOST/zet.conf||" <<<"$output")$'\n'
    output=${output//"--config $HOST/zet.conf "/}
    [[ $output != $'\n' ]] || output=''
}

# history WORD...: the entries and files that are told.
history() {
    run_zet history "$@"
    plain
}

# numbers: of the changes that were told, and words: theirs.
numbers() {
    grep -o '^[0-9][0-9]*' <<<"$output" | paste -sd' '
}
words() {
    sed -n 's/^[0-9].*  client  //p' <<<"$output"
}

# two_changes: of one file, with an edit by hand between them.
two_changes() {
    zet -q param set --no-markers --no-backup conf x 5 -m 'it was too small'
    echo 'hand=1' >>conf
    zet -q param set --no-markers --no-backup conf y 'a b'
}

# The name of who logged in, if anybody did.
login_of_this_process() {
    local uid
    uid=$(cat /proc/self/loginuid 2>/dev/null) || return 0
    [[ $uid == 4294967295 || -z $uid ]] || id -un "$uid"
}

@test "nothing was recorded yet" {
    remember_host
    run_zet history
    assert_status 0
    assert_output ""
    assert_stderr "zet-client: nothing was recorded yet"
    run_zet history conf
    assert_refusal 2 "$HOST/conf: nothing was recorded yet on this host"
    run_zet history show 1
    assert_refusal 2 "there is no change 1: nothing was recorded yet on this host"
    run_zet history diff 1
    assert_refusal 2 "there is no change 1: nothing was recorded yet on this host"
    run_zet history export
    assert_status 0
    run_zet history erase conf
    assert_refusal 2 "$HOST/conf: nothing was recorded yet on this host"
    run_zet --json history
    assert_json 'd["entries"]' '[]'
    assert_host_unchanged
}

@test "what was done is told with who, words, reason and files, the newest first" {
    [[ -z $(login_of_this_process) ]] || skip "somebody is logged in"
    unset SUDO_USER
    two_changes
    add_target one.conf $'text\n'
    server -q commit-config
    history
    assert_status 0
    assert_output "3  TIME  $WHO  server  -q commit-config
    $HOST/out/one.conf: created
    $HOST/out/one.conf.no_file_before_zet: created
    $HOST/etc/one.conf: created
    $HOST/state/zet-server.status: created
2  TIME  $WHO  client  -q param set --no-markers --no-backup conf y 'a b'
    $HOST/conf: changed
1  TIME  $WHO  client  -q param set --no-markers --no-backup conf x 5  # it was too small
    $HOST/conf: changed"
}

@test "the user who asked sudo is told beside the one whose rights he had" {
    [[ -z $(login_of_this_process) ]] || skip "somebody is logged in"
    SUDO_USER=anna zet -q param set conf x 5
    history
    [[ $output == "1  TIME  anna as $WHO  client  -q param set conf x 5"$'\n'* ]]
    run_zet history show 1
    grep -Fx "user: $WHO, by sudo of anna" <<<"$output"
    run_zet --json history
    assert_json 'd["entries"][0]["sudo_user"]' anna
    assert_json 'd["entries"][0]["user"]' "$WHO"
}

@test "the user who logged in is told beside the one whose rights he got" {
    local as_logged_in=(bash -c 'echo 54321 >/proc/self/loginuid && exec "$@"' as_logged_in)
    "${as_logged_in[@]}" true 2>/dev/null || skip "the login of a process cannot be set here"
    capture "${as_logged_in[@]}" "$ZET_BIN/zet-client" --config "$HOST/zet.conf" param set conf x 5
    assert_status 0
    run_zet history show 1
    grep -Fx "user: $WHO, logged in as 54321" <<<"$output"
    run_zet --json history
    assert_json 'd["entries"][0]["login_user"]' 54321
}

@test "a count takes the newest, and quiet leaves out the files" {
    two_changes
    run_zet -q history
    assert_equal "$(numbers)" "2 1"
    run_zet -q history -N 1
    assert_equal "$(numbers)" 2
    run_zet -q history --count 1 conf
    assert_equal "$(numbers)" 2
    local wrong
    for wrong in 0 x -1 1x 99999999999999999999999; do
        run_zet history -N "$wrong"
        assert_refusal 2 "--count: \"$wrong\" is no number from 1 (see \"zet-client history --help\")"
    done
}

@test "of a file, only its changes and what stands beside it are told, whatever way leads to it" {
    two_changes
    mkdir sub
    printf 'z=1\n' >other
    zet -q param set other z 2
    ln -s ../conf sub/link
    ln -s "$HOST" "$BASE/way"
    local name
    for name in conf ./conf sub/link sub/../conf "$HOST/conf" "$BASE/way/conf"; do
        run_zet -q history "$name"
        assert_equal "$(numbers)" "2 1"
    done
    history other
    [[ $output == *"$HOST/other.before_zet: created"* ]]
    [[ $output != *"$HOST/conf"* ]]
    rm conf
    run_zet -q history conf
    assert_equal "$(numbers)" "2 1"
}

@test "under a root, the files are those inside" {
    mkdir -p tree/etc tree/state tree/usr
    printf 'ZET_VAR_LIB_DIR=/state\nZET_CFG_DIR=/etc\nZET_CFG_TEMPL_DIR=/usr\nDOMAIN=example.org\n' >tree/etc/zet.conf
    printf 'x=1\n' >tree/etc/conf
    ln -s /etc/conf tree/link
    local zet=("$ZET_BIN/zet-client" --root "$HOST/tree" --config /etc/zet.conf)
    "${zet[@]}" -q param set /etc/conf x 2
    local name
    for name in /etc/conf etc/conf /link ../../etc/conf; do
        capture "${zet[@]}" history show 1 "$name"
        assert_success "x=1"
    done
    capture "${zet[@]}" history
    [[ $output == *"    $HOST/tree/etc/conf: changed"* ]]
    capture "${zet[@]}" history export
    grep -Fx 'M 100644 inline etc/conf' <<<"$output"
    rm tree/etc/conf
    capture "${zet[@]}" history show 1 /etc/conf
    assert_success "x=1"
}

@test "one change is told with all that is known of it" {
    two_changes
    add_target one.conf $'text\n'
    zet -q commit-config
    chmod 600 out/one.conf
    echo edited >>out/one.conf
    zet -q commit-config 2>"$BASE/warnings"
    run_zet history show 4
    plain
    grep -Fx 'change: 4' <<<"$output"
    grep -Fx 'time: TIME' <<<"$output"
    grep -Fx 'role: client' <<<"$output"
    grep -Fx 'command: -q commit-config' <<<"$output"
    grep -Fx 'outcome: done' <<<"$output"
    grep -Fx "$HOST/out/one.conf: changed, mode 0600 -> 0644, over an edit of somebody else's (target of [one.conf])" <<<"$output"
    run_zet history show 1
    grep -Fx 'why: it was too small' <<<"$output"
    run_zet --json history show 4
    assert_json '[f["mode_before"] + " " + f["mode_after"] for f in d["entries"][0]["files"] if f["kind"] == "target"]' \
        '["0600 0644"]'
    assert_json 'd["text"]' null
}

@test "the text before and after a change comes byte for byte" {
    printf 'x=1\r\n\377\0tail without end' >bytes
    cp bytes before
    zet -q line set --no-markers --no-backup bytes '^x=' x=2
    cp bytes after
    zet history show 1 bytes >"$BASE/got"
    cmp "$BASE/got" before
    zet history show 1 bytes --after >"$BASE/got"
    cmp "$BASE/got" after
    run_zet --json history show 1 bytes
    assert_json 'd["text_lossy"]' true
    run_zet history show 1 --after
    assert_refusal 2 '--after is about the text of a file (name the file behind the number)'
}

@test "a number that is no change, and a file that was not in it, are wrong use" {
    two_changes
    local words
    for words in 'show 9' 'diff 9' 'diff 1 9' 'show 0'; do
        # shellcheck disable=SC2086
        run_zet history $words
        assert_refusal 2 "there is no change ${words##* }: the last one is 2 (\"history\" tells them)"
    done
    run_zet history show one
    assert_refusal 2 '"one" is no number of a change ("history" tells them)'
    run_zet history diff 1 two conf
    assert_refusal 2 '"two" is no number of a change ("history" tells them)'
    run_zet history show 99999999999999999999999
    assert_status 2
    touch other
    run_zet history other
    assert_refusal 2 "$HOST/other: is not in the history (\"history\" tells the files that are)"
    run_zet history show 1 other
    assert_refusal 2 "$HOST/other: is not in the history (\"history\" tells the files that are)"
    zet -q file reserve other
    run_zet history show 1 other.before_zet
    assert_refusal 2 "$HOST/other.before_zet: change 1 did not write it (those that did: 3)"
    run_zet history show 1 conf more
    assert_status 2
}

@test "what is not kept is told with the reason" {
    echo ZET_HISTORY_MAX_FILE=10 >>zet.conf
    zet -q param set --no-markers --no-backup conf x 12345678
    run_zet history show 1 conf --after
    assert_refusal 1 "$HOST/conf: after change 1, its text of 15 bytes is not kept: it is larger than ZET_HISTORY_MAX_FILE (look for it in a backup of the host)"
    run_zet history show 1
    [[ $output == *"$HOST/conf: changed (edit); not kept: its text after"* ]]
    run_zet history diff 1
    assert_status 1
    assert_stderr "zet-client: error: $HOST/conf: its text of 15 bytes is not kept: it is larger than ZET_HISTORY_MAX_FILE (look into a backup)"
    add_target one.conf $'text\n'
    sed -i /MAX_FILE/d zet.conf
    zet -q commit-config
    run_zet history show 2 out/one.conf
    assert_refusal 1 "$HOST/out/one.conf: there was no such file before change 2 (\"history\" with its name tells when it was written)"
    echo ZET_HISTORY_KEEP=1 >>zet.conf
    zet -q param set --no-markers --no-backup conf x 3
    run_zet history show 1 conf
    assert_refusal 2 'change 1 is no longer kept ("history" tells those that are; ZET_HISTORY_KEEP says how many)'
}

@test "a number that no change has is wrong use, whichever command gets it" {
    zet -q param set conf x 2
    zet -q param set conf x 2
    zet -q param set conf x 3
    local words
    for words in 'history show 2' 'history diff 2' 'undo 2' 'rollback-config --to 2'; do
        run_zet $words
        assert_refusal 2 'change 2 changed nothing after all ("history" tells those that did)'
    done
}

@test "a number of changes that is too large empties no history" {
    zet -q param set conf x 2
    local number
    for number in 18446744073709551615 9223372036854775808 4294967296; do
        sed -i /ZET_HISTORY_KEEP/d zet.conf
        printf '%s\n' "ZET_HISTORY_KEEP=$number" "ZET_HISTORY_KEEP_EDITS=$number" >>zet.conf
        zet -q param set conf x "$number"
    done
    assert_equal "$(store 'SELECT count(*) FROM entries')" 4
}

@test "an export is of one moment, whatever is recorded meanwhile" {
    echo ZET_HISTORY_KEEP=3 >>zet.conf
    echo >other
    head -c 300000 /dev/zero | tr '\0' x >large
    zet -q line set large ^y y
    zet -q param set conf PASS S3CRET
    chmod 600 conf
    zet history export >"$BASE/expected"
    run grep -c S3CRET "$BASE/expected"
    assert_equal "$output" 0
    # It is stopped at its first bytes, with the rest to come.
    strace -f -qq -P "$BASE/stream" -e trace=write,writev -e inject=write,writev:signal=STOP:when=1 -o "$BASE/trace" \
        "$ZET_BIN/zet-client" --config zet.conf history export >"$BASE/stream" 3>&- &
    local strace=$!
    await_stop
    local change
    for change in 1 2 3 4 5; do zet -q param set other a "$change"; done
    # Nobody waits for the reader, and what is erased or pruned meanwhile is gone for him, too.
    timeout 20 "$ZET_BIN/zet-client" --config zet.conf -q history erase other
    go_on
    wait "$strace"
    assert_equal "$(grep '^commit ' "$BASE/stream")" "$(grep '^commit ' "$BASE/expected")"
    run grep -c S3CRET "$BASE/stream"
    assert_equal "$output" 0
}

@test "a difference is what patch takes, of one change or from one to another" {
    cp conf before
    two_changes
    run_zet history diff 1
    assert_success "--- a$HOST/conf
+++ b$HOST/conf
@@ -1,2 +1,2 @@
-x=1
+x=5
 y=2"
    run_zet history diff 1 2
    assert_success "--- a$HOST/conf
+++ b$HOST/conf
@@ -1,2 +1,3 @@
 x=5
-y=2
+y=a b
+hand=1"
    printf %s "$output" >"$BASE/patch"
    zet history diff 2 1 conf >"$BASE/back"
    patch -s -d / -p1 <"$BASE/back"
    assert_file conf $'x=5\ny=2\n'
    patch -s -d / -p1 <"$BASE/patch"
    assert_file conf $'x=5\ny=a b\nhand=1\n'
    run_zet history diff 1 1
    assert_success ""
    run_zet --json history diff 1 2 conf
    assert_json '[d["entry"], d["to_entry"], len(d["files"])]' '[1, 2, 1]'
}

@test "the difference of a created and of a removed file is told, and a change of its mode" {
    zet -q param set conf x 9
    chmod 600 conf
    zet -q file restore conf
    run_zet --show-secrets history diff 2 conf
    [[ $output == "$HOST/conf: changed, mode 0600 -> 0644"$'\n'"--- a$HOST/conf"* ]]
    add_target one.conf $'text\n'
    zet -q commit-config
    run_zet history diff 3 out/one.conf
    [[ $output == "--- /dev/null"$'\n'"+++ b$HOST/out/one.conf"* ]]
    zet -q rollback-config
    run_zet history diff 4 out/one.conf
    [[ $output == "--- a$HOST/out/one.conf"$'\n'"+++ /dev/null"* ]]
}

# import: what is exported becomes a repository.
import() {
    git init -q -b trunk "$BASE/repository"
    zet "$@" history export | git -C "$BASE/repository" fast-import --quiet
    git -C "$BASE/repository" log -p --reverse --format='%an %cn %s%n%b' >"$BASE/log"
}

@test "an export becomes a repository with each change, who did it and why" {
    printf 'x=1\n' >$'odd "name"\n \\ \377'
    chmod 755 conf
    two_changes
    zet -q param set --no-backup --no-markers $'odd "name"\n \\ \377' x 2
    SUDO_USER=anna zet -q param set --no-markers --no-backup conf y 3
    import
    local log
    log=$(<"$BASE/log")
    grep -F "hand=1" <<<"$log" >/dev/null
    grep -Fx 'it was too small' <<<"$log"
    grep -Fx 'Change: 2' <<<"$log"
    grep -Fx 'others others As it was found before change 2' <<<"$log"
    [[ $(grep -c '^+x=5$' <<<"$log") -eq 1 ]]
    [[ $(grep -c '^-x=1$' <<<"$log") -eq 2 ]]
    [[ -n $(login_of_this_process) ]] || grep -F "anna $WHO " <<<"$log"
    local tree=${HOST#/}
    git -C "$BASE/repository" show "HEAD:$tree/conf" | cmp - conf
    git -C "$BASE/repository" show "HEAD:$tree/"$'odd "name"\n \\ \377' | cmp - $'odd "name"\n \\ \377'
    assert_equal "$(git -C "$BASE/repository" ls-tree HEAD "$tree/conf" | cut -d' ' -f1)" 100755
    git -C "$BASE/repository" fsck --strict
}

@test "an export tells deletions, and a stream that was cut short is refused" {
    add_target one.conf $'text\n'
    zet -q commit-config
    zet -q rollback-config
    import
    [[ -z $(git -C "$BASE/repository" ls-tree HEAD "${HOST#/}/out/one.conf") ]]
    git -C "$BASE/repository" log --diff-filter=D --name-only --format= | grep -Fx "${HOST#/}/out/one.conf"
    git init -q "$BASE/short"
    zet history export | head -n -1 >"$BASE/stream"
    ! git -C "$BASE/short" fast-import --quiet <"$BASE/stream" 2>"$BASE/complaint" || return 1
}

# changes_on BRANCH: the numbers of the changes that it has.
changes_on() {
    git -C "$BASE/repository" log --format=%b "$1" | sed -n 's/^Change: //p' | paste -sd ' '
}

@test "an export goes on where the last one ended, and after changes left the history beside a branch with them" {
    local repository=$BASE/repository
    two_changes
    import
    zet -q param set conf y 3
    zet history export | git -C "$repository" fast-import --quiet
    assert_equal "$(changes_on trunk)" "3 2 1"
    echo ZET_HISTORY_KEEP=1 >>zet.conf
    zet -q param set conf y 4
    zet history export >"$BASE/stream"
    ! git -C "$repository" fast-import --quiet <"$BASE/stream" 2>"$BASE/complaint" || return 1
    grep -F 'Not updating' "$BASE/complaint"
    git -C "$repository" branch earlier
    git -C "$repository" fast-import --quiet --force <"$BASE/stream"
    assert_equal "$(changes_on trunk)" 4
    assert_equal "$(changes_on earlier)" "3 2 1"
}

@test "an export leaves out what is not for everybody, and says so" {
    printf 'password=hunter1\n' >private
    chmod 600 private
    zet -q param set --no-backup --no-markers private password hunter2
    add_target secret.conf $'password=hunter3\n' 'secret = true'
    zet -q commit-config
    run_zet history export
    [[ $output != *hunter* ]]
    grep -Fx "$HOST/private: not exported, since it is not for everybody" <<<"$output"
    grep -Fx "$HOST/out/secret.conf: not exported, since it is not for everybody" <<<"$output"
    import --show-secrets
    grep -Fx '+password=hunter3' "$BASE/log"
    grep -Fx '+password=hunter2' "$BASE/log"
}

@test "a secret text comes with --show-secrets alone, a private one for who asks for it" {
    printf 'password=hunter1\n' >private
    chmod 600 private
    zet -q param set --no-backup --no-markers private password hunter2
    add_target secret.conf $'password=hunter3\n' 'secret = true'
    zet -q commit-config
    run_zet history show 1 private
    assert_success "password=hunter1"
    run_zet history show 2 out/secret.conf --after
    assert_refusal 1 "$HOST/out/secret.conf: its text is not shown: the list of targets calls it secret (--show-secrets shows it)"
    run_zet --show-secrets history show 2 out/secret.conf --after
    assert_success "$(notice secret.conf)"$'\n'"password=hunter3"
    run_zet history diff 1
    assert_success "$HOST/private: line 1 changed (text not shown: the file is not for everybody; --show-secrets shows it)"
    run_zet --json history diff 1
    assert_json '[d["files"][0]["diff"], d["files"][0]["secret"], len(d["files"][0]["changed_lines"])]' '[null, true, 1]'
    run_zet history diff 2
    [[ $output != *hunter* ]]
    run_zet --show-secrets history diff 1
    [[ $output == *"+password=hunter2"* ]]
    # It was private then, whoever may read the file now.
    chmod 644 private
    run_zet history diff 1
    [[ $output != *hunter* ]]
    printf '' >templates/targets.toml
    run_zet history show 2 out/secret.conf --after
    assert_status 1
    [[ $stderr == *"it was committed, and is in no list any more (--show-secrets shows it)"* ]]
}

@test "of a private file, no value stands in the words" {
    printf 'password=1\n' >private
    chmod 600 private
    zet -q param set private password hunter2
    zet -q line set private '^password' --no-markers -- 'password=hunter3'
    zet -q param set conf x shown
    printf 'password=${pw}${REALM}\n' >templates/own
    chmod 600 templates/own
    zet -q template process own made --value pw=hunter4 --value=REALM=hunter5
    zet -q option set REALM PUBLIC.EXAMPLE
    history -q
    plain
    [[ $output != *hunter* ]]
    assert_equal "$(words)" "-q option set REALM PUBLIC.EXAMPLE
-q template process own made --value pw=*** --value=REALM=***
-q param set conf x shown
-q line set private *** --no-markers -- ***
-q param set private password ***"
    # Its texts are there, which only the owner of the store may read.
    run /usr/bin/python3 -c 'import sqlite3; print(*sqlite3.connect("state/state.db").execute("SELECT * FROM entries"))'
    assert_status 0
    [[ $output == *PUBLIC.EXAMPLE* && $output != *hunter* ]]
}

@test "the words that tell where something was done are shown, whatever a secret text holds" {
    make_set
    add_target secret.conf $'# made for ${realm}\npassword=hunter3\n' 'secret = true'
    mkdir tree
    mv etc out state templates zet.conf tree
    printf 'DOMAIN=example.org\nSERVER=srv.example.org\nZET_CFG_DIR=/etc\nZET_CFG_TEMPL_DIR=/templates\nZET_VAR_LIB_DIR=/state\n' >tree/zet.conf
    printf '[templates."secret.conf"]\ntarget = "/out/secret.conf"\nroles = "both"\nsecret = true\n' >tree/templates/targets.toml
    printf '%s\n' "$HOST/tree /zet.conf" >>tree/templates/secret.conf
    capture "$ZET_BIN/zet-client" --root "$HOST/tree" -c /zet.conf -q commit-config
    assert_status 0
    capture "$ZET_BIN/zet-client" --root "$HOST/tree" -c /zet.conf -q param set --force --no-markers /out/secret.conf password hunter4
    capture "$ZET_BIN/zet-client" --root "$HOST/tree" -c /zet.conf history
    [[ $output == *"--root $HOST/tree -c /zet.conf -q commit-config"* ]]
    [[ $output == *"param set --force --no-markers /out/secret.conf "*"***"* ]]
    [[ $output != *hunter* ]]
}

# holds TEXT: which of the store's files hold the text.
holds() {
    grep -alF -e "$1" state/* || true
}

# frame_of FILE: whether one of the store's files holds the compressed text of the file.
frame_is_kept() {
    python3 - "$1" state/* <<-'END'
		import ctypes, ctypes.util, sys
		zstd = ctypes.CDLL("libzstd.so.1")
		zstd.ZSTD_createCCtx.restype = ctypes.c_void_p
		zstd.ZSTD_compressBound.restype = zstd.ZSTD_compress2.restype = ctypes.c_size_t
		context = ctypes.c_void_p(zstd.ZSTD_createCCtx())
		zstd.ZSTD_CCtx_setParameter(context, 100, 1)
		zstd.ZSTD_CCtx_setParameter(context, 201, 1)
		text = open(sys.argv[1], "rb").read()
		room = ctypes.create_string_buffer(2 * len(text) + 1000)
		size = zstd.ZSTD_compress2(context, room, ctypes.c_size_t(len(room)), text, ctypes.c_size_t(len(text)))
		frame = room.raw[:size]
		sys.exit(0 if any(frame in open(name, "rb").read() for name in sys.argv[2:]) else 1)
	END
}

@test "erased texts are in none of the store's files, packed or not, nor in the words" {
    local i
    for ((i = 0; i < 200; i++)); do echo "line $i of the file $((i * i))"; done >long
    cp long "$BASE/before"
    printf 'password=hunter1\n' >>conf
    zet -q line set --no-markers long '^line 7 ' 'something else'
    cp long "$BASE/after"
    zet -q param set conf password hunter2
    zet -q template process -q none made 2>"$BASE/refused" || true
    frame_is_kept "$BASE/before"
    [[ -n $(holds ZETD) && -n $(holds hunter2) ]]  # the one after is what was changed of the one before
    run_zet history erase -n long
    assert_status 3
    assert_output "$HOST/long: 2 texts would be erased from the history"
    frame_is_kept "$BASE/before"
    run_zet history erase long
    assert_success "$HOST/long: 2 texts were erased from the history"
    ! frame_is_kept "$BASE/before" || return 1
    ! frame_is_kept "$BASE/after" || return 1
    [[ -z $(holds ZETD) && -z $(holds 'something else') ]]
    run_zet --json history erase conf
    assert_json '[d["erased"], d["also_in"], d["dry_run"]]' '[2, [], false]'
    [[ -z $(holds hunter) ]]
    run_zet history show 1 long
    assert_refusal 1 "$HOST/long: before change 1, its text of $(stat -c %s "$BASE/before") bytes is not kept: it was erased, or was larger than ZET_HISTORY_MAX_FILE then (look for it in a backup of the host)"
    history -q
    assert_equal "$(words)" "-q param set conf *** ***
-q line set --no-markers long *** ***"
    # What is erased is gone, and what comes then is kept again.
    zet -q line set --no-markers long '^line 9 ' new
    run_zet history show 3 long --after
    assert_status 0
}

@test "an erasure takes along what was left where older changes were dropped" {
    local i
    for ((i = 0; i < 200; i++)); do echo "line $i of the file $((i * i))"; done >long
    cp long "$BASE/before"
    echo ZET_HISTORY_KEEP=1 >>zet.conf
    zet -q line set --no-markers --no-backup long '^line 7 ' 'something else'
    zet -q line set --no-markers --no-backup long '^line 8 ' 'something else'
    run_zet -q history
    assert_equal "$(numbers)" 2
    frame_is_kept "$BASE/before"
    run_zet history erase long
    assert_status 0
    ! frame_is_kept "$BASE/before" || return 1
}

@test "an erasure leaves the message, and takes a pattern that is more than the text" {
    zet -q line set --no-markers --no-backup conf '^x=1|HUNTER2' x=2 -m 'as anna asked'
    run_zet history erase conf
    assert_status 0
    [[ -z $(holds HUNTER2) ]]
    run_zet -q history
    [[ $output == *"line set --no-markers --no-backup conf '^x=***' x=***  # as anna asked"* ]]
}

@test "which entry was taken back is told, whatever a secret text holds" {
    printf 'x=12345\n' >private
    chmod 600 private
    zet -q param set private x 6
    zet -q undo 1
    zet -q rollback-config --to 1 --force
    run_zet -q history
    [[ $output == *"-q rollback-config --to 1 --force"*"-q undo 1"* ]]
}

@test "an empty text is nobody's secret" {
    : >empty
    : >other
    zet -q line set --no-markers --no-backup conf '^x=1' x=2
    zet -q template process own empty 2>/dev/null || true
    printf 'text\n' >templates/plain
    zet -q template process plain empty
    zet -q template process plain other
    printf 'another\n' >templates/plain
    zet -q template process plain other
    run_zet history erase other
    assert_status 0
    [[ $stderr != *"$HOST/other"* ]]
    assert_stderr "zet-client: warning: $HOST/empty: the history has one of these texts of this file, too (erase it as well)"
}

@test "that another file has an erased text, too, is told" {
    cp conf other
    zet -q param set --no-markers --no-backup conf x 5
    zet -q param set --no-markers --no-backup other x 6
    run_zet history erase conf
    assert_status 0
    assert_output "$HOST/conf: 2 texts were erased from the history"
    assert_stderr "zet-client: warning: $HOST/other: the history has one of these texts of this file, too (erase it as well)"
    run_zet history show 2 other
    assert_success $'x=1\ny=2'
}

@test "erasing waits for who writes" {
    two_changes
    hold_lock
    zet history erase conf >"$BASE/erased" 2>"$BASE/waits" 3>&- &
    local erasing=$!
    until grep -q 'zet-init commit-config' "$BASE/waits"; do sleep 0.05; done
    run_zet history show 1 conf
    assert_success $'x=1\ny=2'
    release_lock
    wait "$erasing"
    grep -F '4 texts were erased' "$BASE/erased"
}

# In one of the store's files, readers only note that they read.
state_but_locks() {
    state_of_host | grep -v 'state\.db-shm'
}
remember_but_locks() {
    REMEMBERED=$(state_but_locks)
}

@test "who looks writes nothing" {
    two_changes
    add_target one.conf $'text\n'
    zet -q commit-config
    remember_but_locks
    local words
    for words in history 'history conf' 'history show 1' 'history show 1 conf' 'history diff 1 3' 'history export' \
        'history erase -n conf' 'explain conf'; do
        # shellcheck disable=SC2086
        run_zet $words
        [[ $status -eq 0 || $status -eq 3 ]]
        assert_equal "$(state_but_locks)" "$REMEMBERED"
    done
}

@test "a history that cannot be used is an error with its remedy" {
    two_changes
    printf 'this is no database, but long enough to be one%.0s' {1..100} >state/state.db
    rm -f state/state.db-*
    local words
    for words in history 'history show 1' 'history diff 1' 'history export' 'history erase conf'; do
        # shellcheck disable=SC2086
        run_zet $words
        assert_status 1
        [[ $stderr == *"$HOST/state/state.db: "*"(move it away"* ]] || differ message "move it away" "$stderr"
    done
    run_zet explain conf:1
    assert_status 0
    [[ $stderr == *"$HOST/state/state.db"* ]]
}

@test "a history that this user may not read is an error that says so" {
    need_root
    two_changes
    copy_programs
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" history
    assert_refusal 1 "$HOST/state/state.db: the history may not be read by this user (run the command as root)"
}

@test "a pager shows what is for a terminal, and nothing else" {
    two_changes
    export PAGER="sed 's/^/paged: /'"
    on_terminal -q history
    assert_equal "$(cut -d' ' -f1,2 <<<"$output")" $'paged: 2\npaged: 1'
    on_terminal --color never history diff 1
    [[ $output == "paged: --- a$HOST/conf"* ]]
    on_terminal history show 1 conf
    assert_output $'paged: x=1\npaged: y=2'
    run_zet -q history
    assert_equal "$(numbers)" '2 1'
    on_terminal --json history
    [[ $output == "{"* ]]
    for PAGER in '' cat ' '; do
        on_terminal -q history
        assert_equal "$(numbers)" '2 1'
    done
}

@test "without PAGER, less shows it, and leaves what fits on the screen" {
    two_changes
    unset PAGER LESS
    script less <<<$'#!/bin/sh\necho "less with $LESS"\ncat'
    on_terminal -q history -N 1
    [[ $output == $'less with FRX\n2 '* ]]
    LESS=R on_terminal -q history -N 1
    [[ $output == $'less with R\n2 '* ]]
}

@test "a pager that cannot be run is told, and the text comes without it" {
    two_changes
    export PAGER=no-such-pager
    on_terminal -q history
    [[ $output == *$'\n2  '* ]]
    on_terminal history
    [[ $output == *'warning: the pager "no-such-pager" cannot be run (correct PAGER, or set it to "cat")'*$'\n2  '* ]]
    assert_status 0
    PAGER='; x'
    on_terminal history
    [[ $output == *'warning: the pager "; x" cannot be run (correct PAGER, or set it to "cat")'*$'\n2  '* ]]
    assert_status 0
}

@test "a reader who leaves the pager early ends nothing badly" {
    two_changes
    export PAGER=true
    on_terminal history
    assert_status 0
    assert_output ""
}

@test "an order to the terminal in a text or a message is shown as its letters" {
    printf 'x=1\e[31m\n' >conf
    PAGER=cat
    export PAGER
    zet -q param set --no-markers --no-backup conf x 5 -m $'red \e[31m'
    on_terminal history
    [[ $output == *'red \x1b[31m'* ]]
    [[ $output != *$'\e'* ]]
    on_terminal history show 1 conf
    assert_output 'x=1\x1b[31m'
}

@test "explain names the change that a line came with" {
    printf 'keep\nx=1\ny=2\n' >conf
    two_changes
    run_zet explain conf:2
    plain
    assert_output "conf:2: the administrator's own; since change 1, TIME, by $WHO: -q param set --no-markers --no-backup conf x 5"
    run_zet explain conf:1
    assert_output "conf:1: the administrator's own"
    run_zet explain conf:4
    assert_output "conf:4: the administrator's own; since an edit of somebody else's after change 1"
    echo 'last=1' >>conf
    run_zet explain conf:5
    assert_output "conf:5: the administrator's own; since an edit of somebody else's after change 2"
    run_zet explain conf
    plain
    assert_output "conf: not made from a template
conf:1: lines 1 to 5: the administrator's own; in parts since an edit of somebody else's after change 2"
    run_zet --json explain conf:2
    assert_json 'd["regions"][0]["since"]["entry"]' 1
    assert_json 'd["regions"][0]["since"]["message"]' 'it was too small'
    run_zet --json explain conf:1
    assert_json 'd["regions"][0]["since"]' null
    run_zet --json explain conf:5
    assert_json 'd["regions"][0]["since"]' '{"entry": null, "after_entry": 2}'
}

@test "explain follows a line that moved, and not one that only reads the same" {
    printf 'a\nb\n' >conf
    zet -q line set --no-markers --no-backup conf '^a$' new
    printf 'first\nnew\nnew\nb\n' >conf
    zet -q line set --no-markers --no-backup conf '^b$' c
    run_zet --json explain conf:4
    assert_json 'd["regions"][0]["since"]["entry"]' 2
    local since=() line
    for line in 2 3; do
        run_zet --json explain "conf:$line"
        since+=("$(json 'str(d["regions"][0]["since"]["entry"])')")
    done
    # One of the two equal lines came with the first change, the other one by hand.
    assert_equal "$(printf '%s\n' "${since[@]}" | sort | paste -sd' ')" "1 None"
}

@test "a message goes with every command that writes" {
    printf 'x=1\n' >other
    add_target one.conf $'text\n'
    local expected='' words
    local -a all=('commit-config' 'param set conf x 4' 'line set conf ^y= y=3' 'file reserve other' 'file forget other'
        'file strip conf' 'param set conf x 6' 'param restore conf x' 'option set REALM A.EXAMPLE' 'rollback-config')
    for words in "${all[@]}"; do
        # shellcheck disable=SC2086
        zet -q $words -m "for $words"
    done
    run_zet -q history -N 10
    assert_equal "$(sed 's/.*  # //' <<<"$output")" "$(printf 'for %s\n' "${all[@]}" | tac)"
    zet -q --message='another form' param set conf x 9
    run_zet -q history -N 1
    [[ $output == *"-q param set conf x 9  # another form"* ]]
    zet -q '-mshort' param set conf x 8
    run_zet -q history -N 1
    [[ $output == *"-q param set conf x 8  # short"* ]]
}

@test "the words of what was public when they were recorded are hidden once the file is private" {
    zet -q param set --no-backup --no-markers conf x hunter2
    zet -q option set REALM HUNTER.ORG
    run_zet history
    [[ $output == *"param set --no-backup --no-markers conf x hunter2"* ]]
    chmod 600 conf
    run_zet history
    [[ $output != *hunter2* ]]
    [[ $output == *"param set --no-backup --no-markers conf "*"***"*"option set REALM HUNTER.ORG"* || $output == *"HUNTER.ORG"*"param set --no-backup --no-markers conf "*"***"* ]]
    run_zet history show 1
    [[ $output != *hunter2* ]]
    run_zet --json history
    [[ $output != *hunter2* ]]
    run_zet history export
    [[ $output != *hunter2* ]]
    run_zet --show-secrets history
    [[ $output == *hunter2* ]]
}

@test "the same of what the list calls secret since, and where the text is not kept" {
    echo ZET_HISTORY_MAX_FILE=3 >>zet.conf
    zet -q param set --no-backup --no-markers conf x hunter2
    chmod 600 conf
    run_zet history
    [[ $output != *hunter2* ]]
    chmod 644 conf
    run_zet history
    [[ $output == *hunter2* ]]
    list_target conf "$HOST/conf" 'secret = true'
    echo x >templates/conf
    run_zet history
    [[ $output != *hunter2* ]]
}

@test "an empty FILE is wrong use, and not all files" {
    zet -q param set conf x 2
    local command
    for command in "history" "history show 1"; do
        # shellcheck disable=SC2086 # words
        run_zet $command ""
        assert_status 2
        [[ $stderr == *"is empty (name one, or leave it out)"* ]] || differ "$command" "wrong use" "$stderr"
    done
}

@test "of a file that was not written yet when a run was killed, no mode is told that it never had" {
    capture strace -f -qq -o "$BASE/trace" -e trace=fchmod -e inject=fchmod:signal=KILL "$ZET_BIN/zet-client" \
        --config zet.conf param set conf x 2
    assert_status 137
    run_zet history show 1
    assert_status 0
    [[ $output == *"outcome: not ended"* && $output == *"$HOST/conf: changed, not ended (edit)"* && $output != *0000* ]] ||
        differ conf "nothing invented" "$output"
    run_zet --json history show 1
    assert_json '[f["mode_after"] for f in d["entries"][0]["files"] if f["mode_after"]]' '[]'
}

@test "a file that an undo was about to remove when it was killed is not told as changed" {
    add_target one.conf $'x\n'
    zet -q commit-config
    capture strace -f -qq -o "$BASE/trace" -P ././one.conf -e trace=/unlink -e inject=/unlink:signal=KILL \
        "$ZET_BIN/zet-client" --config zet.conf undo
    assert_status 137
    [[ -e out/one.conf ]]
    run_zet history show 2
    [[ $output == *"$HOST/out/one.conf: removed, not ended (original"* ]] || differ show "not ended" "$output"
}

@test "of a change that has not ended, what it has not written yet is no change" {
    add_target one.conf $'realm = ${realm}\n'
    add_target two.conf $'realm = ${realm}\n'
    zet -q commit-config
    zet -q option set REALM NEXT.ORG
    local count=0 number
    until grep -q NEXT.ORG out/one.conf; do
        capture strace -f -qq -o "$BASE/trace" -e trace=/rename -e "inject=/rename:signal=KILL:when=$((++count))" \
            "$ZET_BIN/zet-client" --config zet.conf commit-config
        assert_status 137
    done
    number=$(store 'SELECT max(number) FROM entries')
    run_zet history show "$number"
    [[ $output == *"$HOST/out/one.conf: changed (target"* && $output == *"$HOST/out/two.conf: changed, not ended (target"* ]] ||
        differ files "one done, one not ended" "$output"
    run_zet history diff "$number" out/one.conf
    assert_status 0
    [[ $output == *"+realm = NEXT.ORG"* ]]
    run_zet history diff "$number" out/two.conf
    assert_success ""
    run_zet history show "$number" out/two.conf --after
    assert_refusal 1 "$HOST/out/two.conf: change $number has not written it (wait for its command; one that was killed is ended by the next one that writes)"
    run_zet history export
    assert_status 0
    [[ $output != *"out/two.conf: not exported"* ]]
    run_zet explain out/two.conf
    [[ $output != *"somebody else"* && $output == *"since change 1"* ]] || differ explain "since change 1" "$output"
    zet -q commit-config
}

@test "what came between two entries is told where all of it is kept" {
    echo ZET_HISTORY_KEEP=2 >>zet.conf
    add_target one.conf $'realm = ${realm}\n'
    zet -q commit-config
    echo mine >>out/one.conf
    zet -q commit-config
    echo x=0 >f
    local i
    for i in 1 2 3; do zet -q param set f x "$i"; done
    run_zet history diff 2 5
    assert_refusal 1 "$HOST/state/state.db: not all changes after 2 are kept any more, so nobody knows what was there then (compare with one from 4 on)"
    run_zet history diff 5 2
    assert_status 1
    run_zet history diff 4 5
    assert_status 0
    [[ $output == *"+x=3"* ]]
    run_zet history diff 5
    assert_status 0
}
