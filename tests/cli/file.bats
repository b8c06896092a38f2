load helper

setup() {
    make_host
    printf 'a=1\nb=2\n' >conf
}

teardown() {
    remove_host
}

@test "strip takes the blocks out and leaves notice and kept lines" {
    zet param set conf a new
    run_zet file strip conf
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_file conf "$NOTICE"$'# --PRE-ZET-- a=1\nb=2\n'
}

@test "strip a second time changes nothing" {
    zet param set conf a new
    zet file strip conf
    remember_host
    run_zet file strip conf
    assert_success "conf: unchanged"
    assert_files_unchanged
}

@test "strip of a file without blocks and notice leaves it untouched" {
    remember_host
    run_zet file strip conf
    assert_success "conf: unchanged, no managed block and no notice in it"
    assert_host_unchanged
}

@test "strip with nothing kept before keeps the file first" {
    block a=new >conf
    run_zet file strip conf
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_file conf.before_zet "$(block a=new)"$'\n'
}

@test "strip without a backup leaves no reserve" {
    block a=new >conf
    echo b=2 >>conf
    run_zet file strip --no-backup conf
    assert_success "conf: changed"
    assert_file conf "$NOTICE"$'b=2\n'
    assert_absent conf.before_zet
}

@test "a document has its lists when nothing could be done" {
    mkdir dir
    local work
    for work in strip reserve; do
        run_zet --json file "$work" dir
        assert_status 1
        assert_json 'd["files"], d["dry_run"], len(d["errors"])' '[[], false, 1]'
    done
}

@test "strip refuses a block that runs into the next one" {
    printf '# ---ZET_BEGIN---\na=5\nmine=4\n# ---ZET_BEGIN---\nnew=1\n# ----ZET_END----\n' >conf
    remember_host
    run_zet file strip conf
    assert_refusal 1 'conf:1: a begin marker has no end marker ("zet-client doctor conf" tells a repair)'
    assert_host_unchanged
}

@test "strip refuses a block and a notice that have no end" {
    printf 'a=1\n# ---ZET_BEGIN---\nb=2\nprecious\n' >conf
    remember_host
    run_zet file strip conf
    assert_refusal 1 'conf:2: a begin marker has no end marker ("zet-client doctor conf" tells a repair)'
    assert_host_unchanged
    printf '# --ZET_CONFIG_COMMENT--\nprecious\n' >conf
    run_zet file strip conf
    assert_refusal 1 'conf:1: a notice has no end marker, and takes all lines after it with it ("zet-client doctor conf" tells a repair)'
}

@test "the command that tells a repair can be pasted, whatever the file is called" {
    local name
    for name in "d d" -dd "it's" 's*' "d'd *"; do
        printf '# ---ZET_BEGIN---\na=1\n' >"./$name"
        run_zet file strip -- "$name"
        assert_status 1
        [[ $stderr == *'("zet-client doctor '*'" tells a repair)'* ]] || differ "$name" told "$stderr"
        stderr=${stderr#*\(\"zet-client }
        eval "run_zet ${stderr%%\" tells*}"
        assert_status 1
        [[ $output == *"$name:1: a begin marker has no end marker"* ]] || differ "$name" repair "$output$stderr"
    done
}

@test "strip of a file that does not exist fails" {
    run_zet file strip nofile
    assert_refusal 1 "nofile: does not exist (create it, or correct the path)"
}

@test "reserve keeps the file with its mode, once" {
    chmod 640 conf
    run_zet file reserve conf
    assert_success "conf: reserved, kept as conf.before_zet"
    assert_file conf.before_zet $'a=1\nb=2\n'
    assert_equal "$(stat -c %a conf.before_zet)" 640
    echo c=3 >>conf
    remember_host
    run_zet file reserve conf
    assert_success "conf: unchanged, it is kept already, as conf.before_zet"
    assert_host_unchanged
}

@test "reserve of a file that is not there records that" {
    run_zet file reserve nofile
    assert_success "nofile: reserved, there is no such file, recorded as nofile.no_file_before_zet"
    assert_file nofile.no_file_before_zet ""
    remember_host
    run_zet file reserve nofile
    assert_success "nofile: unchanged, that there is no such file is recorded already, as nofile.no_file_before_zet"
    assert_host_unchanged
    echo made >nofile
    run_zet file reserve nofile
    assert_success "nofile: unchanged, there was no such file before, as nofile.no_file_before_zet records"
    assert_absent nofile.before_zet
}

@test "reserve of a directory fails" {
    run_zet file reserve etc
    assert_refusal 1 "etc: is a directory (name a file in it)"
    run_zet file reserve nodir/file
    assert_refusal 1 "nodir: is no directory that nodir/file can be in (create it, or correct the path)"
    run_zet file reserve conf/file
    assert_refusal 1 "conf: is no directory that conf/file can be in (correct the path)"
}

@test "restore puts the reserve back, mode and all" {
    chmod 600 conf
    zet file reserve conf
    echo c=3 >conf
    chmod 644 conf
    run_zet file restore conf
    assert_success "conf: restored, mode 0644 -> 0600, from conf.before_zet"
    assert_file conf $'a=1\nb=2\n'
    assert_equal "$(stat -c %a conf)" 600
    assert_absent conf.before_zet
}

@test "restore puts the reserve of a file back that is gone" {
    zet file reserve conf
    rm conf
    run_zet file restore conf
    assert_success "conf: restored, from conf.before_zet"
    assert_file conf $'a=1\nb=2\n'
}

@test "restore without a reserve says so" {
    remember_host
    run_zet file restore conf
    assert_success "conf: unchanged, nothing to put back"
    assert_host_unchanged
}

@test "restore and forget of what can have no reserve fail, and what stands in the way of one is told" {
    mkfifo pipe
    ln -s gone link
    remember_host
    local words
    for words in restore forget "restore -n" "forget -n"; do
        run_zet file $words etc
        assert_refusal 1 "etc: is a directory (name a file in it)"
        run_zet file $words /
        assert_refusal 1 "/: is a directory (name a file in it)"
        run_zet file $words pipe
        assert_refusal 1 "pipe: is no regular file (name a regular file)"
        run_zet file $words /dev/null
        assert_refusal 1 "/dev/null: is no regular file (name a regular file)"
        run_zet file $words nofile
        assert_status 0
        run_zet file $words link
        assert_status 0
    done
    assert_host_unchanged
    zet file reserve conf
    rm conf
    mkdir conf
    run_zet file restore conf
    assert_refusal 1 "conf: is a directory (name a file in it)"
}

@test "restore of a file that was not there before leaves it and says so" {
    zet file reserve new
    echo made >new
    run_zet file restore new
    assert_success "new: forgotten, there was no such file before; this one stays (remove it by hand if it is not wanted)"
    assert_file new $'made\n'
    assert_absent new.no_file_before_zet
}

@test "forget drops the reserve and leaves the file" {
    zet param set conf a new
    cp conf before
    run_zet file forget conf
    assert_success "conf: forgotten, its reserve is dropped"
    cmp conf before
    assert_absent conf.before_zet
    run_zet file forget conf
    assert_success "conf: unchanged, it has no reserve"
}

@test "forget drops the record that there was no file" {
    zet file reserve nofile
    run_zet file forget nofile
    assert_success "nofile: forgotten, its reserve is dropped"
    assert_absent nofile.no_file_before_zet
}

@test "a dry run of each tells what would be done and does nothing" {
    zet param set conf a new
    zet file reserve new
    echo c=3 >other
    remember_host
    run_zet file strip -n conf
    assert_status 3
    assert_output "conf: would be changed"
    run_zet file reserve -n other
    assert_status 3
    assert_output "other: would be reserved, kept as other.before_zet"
    run_zet file reserve -n nofile
    assert_status 3
    assert_output "nofile: would be reserved, there is no such file, recorded as nofile.no_file_before_zet"
    run_zet file restore -n conf
    assert_status 3
    assert_output "conf: would be restored, from conf.before_zet"
    run_zet file forget -n new
    assert_status 3
    assert_output "new: would be forgotten, its reserve is dropped"
    run_zet file restore -n other
    assert_status 0
    assert_output "other: unchanged, nothing to put back"
    assert_host_unchanged
}

@test "the diff of reserve, restore and forget is fit for patch" {
    zet param set conf a new
    cp -a . ../copy
    zet file restore --diff conf | grep -v '^conf: ' >../restore.diff
    (cd ../copy && patch -s -p1 <../restore.diff)
    diff -r -x zet.lock -x 'state.db*' . ../copy
    zet file reserve --diff conf | grep -v '^conf: ' >../reserve.diff
    (cd ../copy && patch -s -p1 <../reserve.diff)
    diff -r -x zet.lock -x 'state.db*' . ../copy
    zet file forget --diff conf | grep -v '^conf: ' >../forget.diff
    (cd ../copy && patch -s -p1 <../forget.diff)
    diff -r -x zet.lock -x 'state.db*' . ../copy
}

@test "a reserve that is no regular file is refused" {
    ln -s /etc/passwd conf.before_zet
    remember_host
    run_zet file restore conf
    assert_refusal 1 "conf.before_zet: is no regular file, so conf has no reserve (move it away)"
    run_zet param set conf a new
    assert_refusal 1 "conf.before_zet: is no regular file, so conf has no reserve (move it away)"
    assert_host_unchanged
}

@test "the document tells what was done to the file and where its reserve is" {
    run_zet --json file reserve conf
    assert_status 0
    local fields='[d["files"][0][x] for x in ("file", "result", "reserve", "reserve_result")]'
    assert_json "$fields" '["conf", "unchanged", "conf.before_zet", "created"]'
    run_zet --json file forget -n conf
    assert_status 3
    assert_json "$fields" '["conf", "unchanged", null, "removed"]'
    run_zet --json file restore -n conf
    assert_status 3
    assert_json 'd["dry_run"], d["files"][0]["result"], d["files"][0]["reserve"], d["exit_status"]' \
        '[true, "restored", null, 3]'
}

@test "list tells what is kept beside the files that the history knows, of both roles" {
    echo 'realm = ${realm}' >templates/new
    mkdir own
    printf '[templates."new"]\ntarget = "%s/own/new"\nroles = "server"\n' "$HOST" >templates/targets.toml
    run_zet file list
    assert_success ""
    zet param set conf a new
    PROGRAM=$ZET_BIN/zet-init zet commit-config -q
    : >kept
    zet file reserve kept
    : >others.before_zet
    run_zet file list
    assert_success "$HOST/conf.before_zet
$HOST/kept.before_zet
$HOST/own/new.no_file_before_zet"
    run_zet file list --json
    assert_json '[(o["reserve"].split("/")[-1], o["path"].split("/")[-1], o["existed"]) for o in d["originals"]][2]' \
        '["new.no_file_before_zet", "new", false]'
    PROGRAM=$ZET_BIN/zet-init zet rollback-config -q
    zet file forget kept
    run_zet file list
    assert_success ""
}

@test "list with NUL bytes prints names as they are" {
    local name=$'t\tab\nline \xff'
    cp conf "$name"
    zet param set "$name" a new
    run_zet file list --null
    assert_status 0
    printf '%s/%s.before_zet\0' "$HOST" "$name" | cmp - "$BATS_TEST_TMPDIR/output"
}

@test "list with NUL bytes is no document" {
    run_zet file list --null --json
    assert_status 2
    assert_json 'd["errors"]' '["--json and --null exclude each other (leave one of them out)"]'
}

@test "list knows a reserve whose entry is kept no longer" {
    echo ZET_HISTORY_KEEP=1 >>zet.conf
    zet param set conf a new
    printf 'a=1\n' >other
    zet param set other a 2
    zet param set other a 3
    run_zet file list
    assert_success "$HOST/conf.before_zet
$HOST/other.before_zet"
}

@test "list fails where the history cannot be read" {
    zet param set conf a new
    break_store
    run_zet file list
    assert_refusal 1 "$HOST/state/state.db: $BROKEN_STORE"
    run_zet --set ZET_HISTORY=no file list
    [ "$status" -ne 0 ]
}

# assert_replaced_by_word COMMAND...: what a hand made of conf, which nothing keeps, is replaced with --force alone.
assert_replaced_by_word() {
    cp conf held
    for dry in "" -n; do
        run_zet "$@" $dry
        assert_refusal 1 "$HOST/conf: holds changes that are kept nowhere (--force replaces it all the same)"
        cmp conf held
    done
    run_zet "$@" --force
    assert_status 0
    ! grep hand conf || differ conf "without the hand's" "$(cat conf)"
}

@test "a restore drops edits that nothing keeps only by word" {
    for setting in ZET_HISTORY=no ZET_HISTORY_MAX_FILE=5; do
        echo "$setting" >>zet.conf
        printf 'a=1\nb=2\n' >conf
        zet -q param set conf a 3
        run_zet file restore "$HOST/conf"
        assert_status 0
        assert_file conf $'a=1\nb=2\n'
        zet -q param set conf a 3
        echo hand >>conf
        assert_replaced_by_word file restore "$HOST/conf"
        assert_file conf $'a=1\nb=2\n'
        sed -i '$d' zet.conf
    done
    zet -q param set conf a 3
    echo hand >>conf
    run_zet file restore conf
    assert_status 0
}

@test "a template is rendered over edits that nothing keeps only by word" {
    local setting
    printf 'x ${v}\n' >templates/made.conf
    for setting in ZET_HISTORY=no ZET_HISTORY_MAX_FILE=5; do
        echo "$setting" >>zet.conf
        echo before >conf
        run_zet template process made.conf "$HOST/conf" --value v=1
        assert_status 0
        run_zet template process made.conf "$HOST/conf" --value v=2
        assert_status 0
        echo hand >>conf
        assert_replaced_by_word template process made.conf "$HOST/conf" --value v=3
        run_zet template process made.conf "$HOST/conf" --value v=4
        assert_status 0
        rm -f conf*
        sed -i '$d' zet.conf
    done
    zet -q template process made.conf "$HOST/conf" --value v=1
    zet -q template process made.conf "$HOST/conf" --value v=2
    echo hand >>conf
    run_zet template process made.conf "$HOST/conf" --value v=3
    assert_status 0
}

# assert_kept_as_edit ENTRY: however many changes follow, what the hand wrote into conf stays in the history.
assert_kept_as_edit() {
    run_zet history show "$1"
    [[ $output == *"over an edit of somebody else's"* ]]
    printf 'a=1\n' >other
    for value in 2 3 4; do
        zet -q param set other a "$value"
    done
    run_zet history show "$1" conf
    assert_status 0
    [[ $output == *hand* ]]
}

@test "a restore over somebody's edit is kept as long as a commit over one" {
    echo ZET_HISTORY_KEEP=2 >>zet.conf
    zet -q param set conf a 3
    zet -q file restore conf
    run_zet history show 2
    [[ $output != *"over an edit"* ]]
    zet -q param set conf a 3
    echo hand >>conf
    run_zet file restore conf
    assert_status 0
    assert_kept_as_edit 4
}

@test "a template over somebody's edit is kept as long as a commit over one" {
    echo ZET_HISTORY_KEEP=2 >>zet.conf
    printf 'x ${v}\n' >templates/made.conf
    zet -q template process made.conf "$HOST/conf" --value v=1
    zet -q template process made.conf "$HOST/conf" --value v=2
    run_zet history show 2
    [[ $output != *"over an edit"* ]]
    echo hand >>conf
    run_zet template process made.conf "$HOST/conf" --value v=3
    assert_status 0
    assert_kept_as_edit 3
}
