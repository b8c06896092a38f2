# What holds for every command that edits a file in place.

load helper

setup() {
    make_host
    printf 'a=1\nb=2\n' >conf
}

teardown() {
    remove_host
}

@test "a dry run of each edit tells what would change and changes nothing" {
    zet param set conf a new
    remember_host
    for edit in "param set conf b 3" "param restore conf a" "line set conf ^b b=3" "line restore conf ^a" \
        "file strip conf"; do
        run_zet $edit -n
        assert_status 3
        assert_output "conf: would be changed"
        assert_stderr ""
    done
    for edit in "param set conf a new" "param restore conf zz" "line set conf ^a=new a=new"; do
        run_zet $edit -n
        assert_status 0
        assert_host_unchanged
    done
    assert_host_unchanged
}

@test "the product's own records are nobody's file to edit" {
    zet -q param set conf a 2
    local edit name
    for name in state.db state.db-wal zet.lock; do
        for edit in "param set state/$name a b" "line set --no-markers state/$name ^a b" "file reserve state/$name"; do
            run_zet $edit
            assert_refusal 1 "state/$name: is a file of the status (name another file)"
        done
    done
    run_zet undo
    assert_status 0
    assert_file conf $'a=1\nb=2\n'
}

# apply_diff EDIT...: the diff of a dry run, applied to a copy of the file, gives what the edit gives.
apply_diff() {
    local file=$1
    shift
    rm -rf ../copy
    cp -a . ../copy
    zet "$@" -n --diff | tail -n +2 >../change.diff
    (cd ../copy && patch -s -p1 <../change.diff)
    zet "$@"
    cmp "$file" "../copy/$file"
    zet "$@" | grep -q unchanged
}

@test "the diff is fit for patch" {
    apply_diff conf param set conf a new
    apply_diff conf line set conf '^b' 'b = 2'
    printf 'a=1' >noend
    apply_diff noend param set noend a 2
    printf 'a=1' >noend
    apply_diff noend param set --no-markers noend b 2
    printf 'a=1\r\nb\377\n\001\n' >bytes
    apply_diff bytes param set --no-markers bytes a 2
    : >empty
    apply_diff empty param set empty a 2
}

@test "the diff of a file with an unusual name is fit for patch" {
    local name
    for name in 'two words' 'quote"d' 'back\slash' $'tab\there' 'naïve'; do
        cp conf "$name"
        apply_diff "$name" param set "$name" a new
    done
}

@test "the labels of a diff leave out the leading slash and what patch does not accept" {
    run_zet param set -n --diff "$HOST/conf" a new
    assert_equal "$(sed -n '2,3p' <<<"$output")" "--- a$HOST/conf
+++ b$HOST/conf"
    mkdir sub
    cd sub
    run_zet param set -n --diff ../conf a new
    assert_equal "$(sed -n '2,3p' <<<"$output")" "--- a$HOST/conf
+++ b$HOST/conf"
}

@test "the diff of a change that is made is that of the dry run" {
    run_zet param set -n --diff conf a new
    local planned=${output#*changed}
    run_zet param set --diff conf a new
    assert_status 0
    assert_equal "${output#*before_zet}" "$planned"
}

@test "a file that another program writes in the middle of an edit is left to it" {
    mkdir programs
    printf '#!/bin/sh\necho c=3 >>%s/conf\nexec %s "$@"\n' "$HOST" "$(command -v diff)" >programs/diff
    chmod +x programs/diff
    PATH=$HOST/programs:$PATH run_zet param set --diff conf a new
    assert_refusal 1 "conf: another program wrote it at the same time, and nothing was changed (look at it, and\
 run the command again)"
    assert_file conf $'a=1\nb=2\nc=3\n'
    assert_absent conf.before_zet
    assert_absent conf.tmp
}

@test "a file that another program writes while it is reserved is left to it, without that reserve" {
    strace -f -qq -o "$BASE/trace" -P "$HOST/conf" -e trace=copy_file_range \
        -e inject=copy_file_range:delay_exit=2000000:when=1 \
        "$ZET_BIN/zet-client" --config zet.conf param set conf a new 2>"$BASE/stderr" &
    local tries=0
    until compgen -G 'conf.before_zet.*.tmp' >"$BASE/copy" || [[ $((++tries)) -gt 400 ]]; do sleep 0.02; done
    echo c=3 >>conf
    status=0
    wait $! || status=$?
    assert_equal "$status" 1
    assert_file "$BASE/stderr" $'zet-client: error: conf: another program wrote it at the same time, and nothing was changed (look at it, and run the command again)\n'
    assert_file conf $'a=1\nb=2\nc=3\n'
    assert_absent conf.before_zet
    assert_equal "$(compgen -G '*.tmp')" ""
}

@test "colors are for a reader who wants them" {
    run_zet --color always param set -n --diff --no-markers conf a new
    assert_equal "$(sed -n 5p <<<"$output")" $'\033[31m-a=1\033[0m'
    run_zet --color never param set -n --diff --no-markers conf a new
    assert_equal "$(sed -n 5p <<<"$output")" "-a=1"
}

@test "the document has the same fields in a dry run as when the change is made" {
    local expression='[d["command"], d["files"]]'
    run_zet --json param set -n --diff conf a new
    assert_status 3
    assert_json 'd["dry_run"], d["exit_status"], d["entry"]' '[true, 3, null]'
    assert_json '[d["files"][0][x] for x in ("file", "path", "result", "reserve", "secret", "mode_after")]' \
        "[\"conf\", \"$HOST/conf\", \"changed\", \"conf.before_zet\", false, \"0644\"]"
    local planned
    planned=$(json "$expression")
    run_zet --json param set --diff conf a new
    assert_status 0
    assert_json 'd["dry_run"], d["exit_status"]' '[false, 0]'
    assert_json "$expression" "$planned"
    run_zet --json param set conf a new
    assert_json '{name: value for name, value in d["files"][0].items() if value is not None}' \
        "{\"file\": \"conf\", \"path\": \"$HOST/conf\", \"result\": \"unchanged\", \"reserve\": \"conf.before_zet\", \"merged\": false, \"secret\": false}"
}

@test "the path in the document is that of the real file, links followed, whatever way led to it" {
    mkdir real
    ln -s real by_link
    cp conf real/conf
    ln -s by_link/conf link
    local file
    for file in real/conf by_link/conf ./by_link/../link "$HOST/by_link/conf"; do
        run_zet --json param set -n "$file" a new
        assert_status 3
        assert_json 'd["files"][0]["file"], d["files"][0]["path"]' "[\"$file\", \"$HOST/real/conf\"]"
    done
    capture "$ZET_BIN/zet-client" --root "$HOST" --config /zet.conf --json param set -n /by_link/conf a new
    assert_json 'd["files"][0]["path"]' "$HOST/real/conf"
}

@test "the document of an edit that fails has its fields" {
    run_zet --json param set -n nofile a new
    assert_status 1
    assert_json 'd["dry_run"], d["files"], len(d["errors"])' '[true, [], 1]'
    run_zet --json template install nothing
    assert_status 1
    assert_json 'd["dry_run"], d["files"], len(d["errors"])' '[false, [], 1]'
    run_zet --json template process nothing out
    assert_status 1
    assert_json 'd["dry_run"], d["files"], len(d["problems"])' '[false, [], 1]'
}

@test "an error is in the document and on standard error" {
    run_zet --json param set nofile a new
    assert_status 1
    assert_stderr "zet-client: error: nofile: does not exist (create it, or correct the path)"
    assert_json 'd["errors"], d["exit_status"]' '[["nofile: does not exist (create it, or correct the path)"], 1]'
}

@test "quiet shows no more than changes, errors and what was asked for" {
    run_zet -q param set conf a new
    assert_success "conf: changed, the original is kept as conf.before_zet"
    run_zet -q param set conf a new
    assert_success ""
    run_zet -q param get conf a
    assert_success "new"
}

@test "what is no regular file that can be read is refused" {
    mkfifo fifo
    mkdir directory
    ln -s gone dangling
    ln -s loop loop
    remember_host
    run_zet param set directory a 1
    assert_refusal 1 "directory: is a directory (name a file in it)"
    run_zet param set fifo a 1
    assert_refusal 1 "fifo: is no regular file (name a regular file)"
    run_zet param set dangling a 1
    assert_refusal 1 "dangling: is a link that leads nowhere (remove it, or make what it names)"
    run_zet param get dangling a
    assert_refusal 1 "dangling: is a link that leads nowhere (remove it, or make what it names)"
    capture "$ZET_BIN/zet-client" --root "$HOST" param get dangling a
    assert_refusal 1 "$HOST/dangling: is a link that leads nowhere (remove it, or make what it names)"
    run_zet param set gone a 1
    assert_refusal 1 "gone: does not exist (create it, or correct the path)"
    run_zet param set loop a 1
    assert_refusal 1 "$HOST/loop: too many symbolic links, as when one leads back to itself (correct the links)"
    run_zet param set /dev/null a 1
    assert_refusal 1 "/dev/null: is no regular file (name a regular file)"
    run_zet param set '' a 1
    assert_refusal 2 "FILE is empty (name a file)"
    assert_host_unchanged
}

@test "a symbolic link is followed and stays" {
    mkdir sub
    mv conf sub/real
    ln -s sub/real conf
    run_zet param set conf a new
    assert_success "$HOST/sub/real: changed, the original is kept as $HOST/sub/real.before_zet"
    assert_equal "$(readlink conf)" sub/real
    assert_file sub/real.before_zet $'a=1\nb=2\n'
    assert_absent conf.before_zet
    run_zet file restore conf
    assert_status 0
    assert_equal "$(readlink conf)" sub/real
    assert_file sub/real $'a=1\nb=2\n'
}

@test "mode, owner, access list and attributes of the file are kept" {
    need_root
    setfattr -n user.note -v kept conf || skip "no user attributes here"
    setfacl -m u:12345:r conf || skip "no access lists here"
    chown 4321:8765 conf
    chmod 4750 conf
    local before
    before=$(stat -c '%a %u %g' conf && getfacl -cn conf && getfattr -d conf)
    zet param set conf a new
    assert_equal "$(stat -c '%a %u %g' conf && getfacl -cn conf && getfattr -d conf)" "$before"
    zet param set --no-backup conf a newer
    assert_equal "$(stat -c '%a %u %g' conf && getfacl -cn conf && getfattr -d conf)" "$before"
    zet file restore conf
    assert_equal "$(stat -c '%a %u %g' conf && getfacl -cn conf && getfattr -d conf)" "$before"
}

@test "the other names of a file with hard links are warned of" {
    ln conf other
    run_zet param set --no-markers conf a new
    assert_status 0
    assert_stderr "zet-client: warning: conf: has 2 names (hard links); the others keep the former text"
    assert_file other $'a=1\nb=2\n'
}

@test "a file of others by the name of the temporary one is never lost" {
    local kind
    for kind in plain link directory; do
        case $kind in
        plain) echo precious >conf.tmp ;;
        link) ln -s conf conf.tmp ;;
        directory) mkdir conf.tmp ;;
        esac
        remember_host
        run_zet param set conf a new
        assert_refusal 1 "conf.tmp: is in the way of writing conf, and not from here (move it away)"
        run_zet param set -n conf a new
        assert_refusal 1 "conf.tmp: is in the way of writing conf, and not from here (move it away)"
        assert_host_unchanged
        rm -r conf.tmp
    done
}

@test "what records that there was no file, and is none, is refused by whoever keeps the original" {
    local kind mark=conf.no_file_before_zet
    for kind in directory fifo link; do
        case $kind in
        directory) mkdir "$mark" ;;
        fifo) mkfifo "$mark" ;;
        link) ln -s nowhere "$mark" ;;
        esac
        remember_host
        for edit in "param set conf a new" "param set --no-markers conf a new" "line set conf ^a a=new" "file reserve conf" \
            "file restore conf" "param set -n conf a new"; do
            # shellcheck disable=SC2086 # words
            run_zet $edit
            assert_refusal 1 "conf.no_file_before_zet: is no regular file, so conf has no reserve (move it away)"
        done
        assert_host_unchanged
        rm -r "$mark"
    done
}

@test "a file of others by the name of the temporary one is not lost without a history either" {
    echo ZET_HISTORY=no >>zet.conf
    echo precious >conf.tmp
    run_zet param set conf a new
    assert_refusal 1 "conf.tmp: is in the way of writing conf, and not from here (move it away)"
    run_zet param set -n conf a new
    assert_status 1
    assert_file conf.tmp $'precious\n'
}

@test "a temporary file that a killed run left is cleared away" {
    kill_at_rename conf param set --no-markers conf b killed
    # It had not come to the end of its text.
    truncate -s 3 conf.tmp
    run_zet param set --no-markers conf a new
    assert_status 0
    assert_stderr "zet-client: removed $HOST/conf.tmp, which a run that was cut short left"
    assert_file conf $'a=new\nb=2\n'
    assert_absent conf.tmp
}

@test "what does not begin the text that a killed run was writing stays, and is told" {
    kill_at_rename conf param set --no-markers conf b killed
    echo theirs >conf.tmp
    cp conf other
    run_zet param set --no-markers other a new
    [[ $stderr == "zet-client: warning: $HOST/conf.tmp: stays, as it cannot be what the run that was cut short left (look at it, and move it away)"* ]]
    assert_file conf.tmp $'theirs\n'
    run_zet param set --no-markers conf a new
    assert_refusal 1 "conf.tmp: is in the way of writing conf, and not from here (move it away)"
}

@test "a directory of temporary files that a killed run left is cleared away" {
    mkdir -m 700 state/zet-staging.123456
    echo half >state/zet-staging.123456/conf
    run_zet param set conf a new
    assert_status 0
    assert_absent state/zet-staging.123456
}

@test "an edit looks for directories of killed runs where the run before it did not come to its end" {
    zet param set conf a first
    mkdir -m 700 state/zet-staging.123456
    zet param set conf a second
    [[ -d state/zet-staging.123456 ]]
    printf '4711 (zet-client commit-config)\n' >state/zet.lock
    zet param set conf a third
    assert_absent state/zet-staging.123456
    mkdir -m 700 state/zet-staging.123456
    : >state/zet.lock
    zet param set conf a fourth
    assert_absent state/zet-staging.123456
}

@test "a file that is too large to be written anew is left as it is" {
    head -c 100000 /dev/zero | tr '\0' x >big
    remember_host
    capture bash -c 'ulimit -f 16; exec "$@"' - "$ZET_BIN/zet-client" --config zet.conf param set big a 1
    assert_status 1
    assert_output ""
    [[ $stderr == "zet-client: error: $HOST/state/state.db: the history cannot be used: "* ]]
    assert_files_unchanged
    echo ZET_HISTORY=no >>zet.conf
    remember_host
    capture bash -c 'ulimit -f 64; exec "$@"' - "$ZET_BIN/zet-client" --config zet.conf param set big a 1
    assert_refusal 1 "Failed to save file 'big.tmp' (make room, or see to the rights of its directory; nothing was changed)"
    assert_files_unchanged
}

@test "what is written does not depend on the reader's language" {
    LC_ALL=de_DE.UTF-8 LANGUAGE=de zet param set conf a new
    zet param set --no-backup conf a newer
    assert_file conf "${NOTICE}# --PRE-ZET-- a=1
$(block a=newer)
b=2
"
}

@test "log records of an edit go where they are wanted" {
    echo ZET_SYNC=maybe >>zet.conf
    run_zet option set SERVER new
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/zet.conf:6: 'maybe' is no value for ZET_SYNC and counts as yes (write yes or no)"
    run_zet -q option set SERVER newer
    assert_success "$HOST/zet.conf: changed"
}

@test "what is kept of another file is not edited" {
    zet -q param set conf a 2
    touch gone.no_file_before_zet
    local command
    for command in "param set conf.before_zet a 3" "line set conf.before_zet ^a a=3" "file strip conf.before_zet" "doctor --fix conf.before_zet"; do
        # shellcheck disable=SC2086 # words
        run_zet $command
        assert_status 1
        [[ $stderr == "zet-client: error: conf.before_zet: is kept as the original of conf (name conf, or copy this one)"$'\n' ]] || differ "$command" refusal "$stderr"
    done
    run_zet param set gone.no_file_before_zet a 3
    assert_refusal 1 "gone.no_file_before_zet: records that there was no gone (name gone, or copy this one)"
    run_zet param get conf.before_zet a
    assert_success 1
}
