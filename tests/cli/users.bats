# Commands run by a user without any rights beyond his own files.

load helper

setup() {
    make_host
    printf 'a=1\nb=2\n' >conf
}

teardown() {
    remove_host
}

@test "an ordinary user edits files of his own" {
    need_root
    copy_programs
    chown -R 65534:65534 "$HOST"
    chmod 600 conf
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set conf a new
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_equal "$(stat -c '%a %u' conf conf.before_zet | paste -sd ' ')" "600 65534 600 65534"
}

@test "an ordinary user edits without a right on the product's directory" {
    need_root
    copy_programs
    chown 65534:65534 "$HOST" conf
    echo half >conf.tmp
    chown 65534:65534 conf.tmp
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set --no-markers conf a new
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_file conf $'a=new\nb=2\n'
}

@test "an ordinary user is told what he may not do, and may still ask" {
    need_root
    copy_programs
    remember_host
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set conf a new
    assert_refusal 1 ".: cannot be written, so conf cannot be replaced: Permission denied (run the command as a user who may)"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set -n conf a new
    assert_status 3
    chmod 600 conf
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param get conf a
    assert_refusal 1 "conf: cannot be read: Permission denied (run the command as a user who may)"
    chmod 644 conf
    touch -d @0 conf
    assert_file conf $'a=1\nb=2\n'
}

@test "a dry run tells that the file would change hands" {
    need_root
    copy_programs
    chown 65534:65534 "$HOST"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set -n conf a new
    assert_status 3
    assert_output "conf: would be changed, owner 0:0 -> 65534:65534"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set conf a new
    assert_status 0
    assert_output "conf: changed, owner 0:0 -> 65534:65534, the original is kept as conf.before_zet"
}

@test "a dry run tells that the edit would not be recorded" {
    need_root
    copy_programs
    local unrecorded="what is changed is not recorded: ZET_VAR_LIB_DIR cannot be written"
    mv state "$BASE/kept"
    local words
    for words in "param set conf a new" "file reserve conf"; do
        # shellcheck disable=SC2086  # each word is an argument
        run_zet -n $words
        assert_status 3
        assert_stderr "zet-client: warning: $unrecorded (create it, or make it writable)"
    done
    run_zet -n param restore conf a
    assert_success 'conf: unchanged, nothing to restore for "a"'
    cp zet.conf "$BASE/zet.conf"
    echo ZET_HISTORY=no >>zet.conf
    run_zet -n param set conf a new
    assert_status 3
    assert_stderr ""
    cp "$BASE/zet.conf" zet.conf
    mv "$BASE/kept" state
    chown 65534:65534 "$HOST" conf
    nobody_told -v param set -n conf a new
    assert_status 3
    assert_stderr "zet-client: $unrecorded"
    nobody_told param set -n conf a new
    assert_status 3
    assert_stderr ""
}

@test "an ordinary user renders a template without a right on the product's directory" {
    need_root
    copy_programs
    printf 'plain ${v}\n' >etc/one.conf
    mkdir own
    chown 65534:65534 own
    capture as_nobody "$BASE/programs/bin/zet-client" -v --config "$HOST/zet.conf" template process one.conf own/conf --value v=1
    assert_status 0
    assert_output "own/conf: created"
    [[ $stderr == "zet-client: what is changed is not recorded: ZET_VAR_LIB_DIR cannot be written"$'\n'* ]]
    assert_equal "$(tail -n 1 own/conf) $(stat -c %u own/conf)" "plain 1 65534"
    # It is his word whether what nothing keeps is replaced.
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" template process one.conf own/conf --value v=2
    assert_refusal 1 "own/conf: holds changes that are kept nowhere (--force replaces it all the same)"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" template process --force one.conf own/conf --value v=2
    assert_success "own/conf: changed"
    # A working copy is the product's.
    printf 'plain\n' >templates/two.conf
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" template process two.conf own/two
    assert_refusal 1 "$HOST/state/zet.lock: cannot be opened: Permission denied (create the directory ZET_VAR_LIB_DIR, or run as a user who may write there)"
    assert_absent own/two
}

@test "root renders a template without a directory of the product, and is warned" {
    need_root
    printf 'plain\n' >etc/one.conf
    rm -r state
    run_zet template process one.conf conf
    mkdir state
    assert_status 0
    assert_output "conf: changed, the original is kept as conf.before_zet"
    assert_stderr "zet-client: warning: what is changed is not recorded: ZET_VAR_LIB_DIR cannot be written (create it, or make it writable)"
}

# nobody_told WORD...: what nobody is told of this host, whose history only root may read.
nobody_told() {
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" "$@"
}

@test "whoever may not read the history is told so, and of no edit that nobody made" {
    need_root
    copy_programs
    mkdir out
    printf '[templates."s"]\ntarget = "%s"\nroles = "both"\n' "$HOST/out/s" >templates/targets.toml
    echo one >templates/s
    echo old >out/s
    zet -q commit-config
    zet -q param set conf a 2
    echo two >>etc/s
    local denied="$HOST/state/state.db: may not be read, so that what it knows is not told (run the command as a user who may)"
    local mode
    for mode in overwrite refuse; do
        nobody_told commit-config -n --on-edit=$mode
        assert_status 3
        [[ $stderr == *"$denied"* && $stderr != *"kept nowhere"* ]] || differ "$mode" "$denied" "$stderr"
        [[ $output == *"$HOST/out/s: would be changed"* ]]
    done
    nobody_told commit-config -n --json
    assert_status 3
    assert_json '[t["edited"] for t in d["targets"]]' '[null]'
    nobody_told rollback-config -n
    [[ $stderr == *"$denied"*"$HOST/out/s: may have been edited since it was committed, and stays (--force puts back what was there before)"* ]]
    [[ $output == *"$HOST/out/s: may be edited, stays as it is"* ]]
    nobody_told rollback-config -n conf
    [[ $stderr == *"$denied"* ]]
    nobody_told template status
    assert_status 0
    assert_stderr "zet-client: warning: $denied"
    nobody_told explain --json conf
    assert_json 'd["warnings"], {r["since"] for r in d["regions"]}.pop()' "[[\"$denied\"], null]"
    # Who has no history, and who may read it, is told nothing of it.
    run_zet template status
    assert_stderr ""
    zet -q rollback-config --force
    rm -f state/*.db*
    nobody_told template status
    assert_stderr ""
}
