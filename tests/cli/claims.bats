# Templates and targets whose files have another use already.

load helper
load set

setup() {
    make_set
}

teardown() {
    remove_host
}

# assert_clash FILE USE NAME: the template of that name is refused, and nothing is written.
assert_clash() {
    : >templates/targets.toml
    echo DOMAIN=other.org >"templates/$3"
    list_target "$3" "$HOST/out/$3"
    remember_host
    run_zet check-config
    assert_status 1
    [[ $output == *"$1: is $2, and the "*"[$3] too (give the template another name)"* ]] || differ "problems" "$1: is $2" "$output"
    run_zet commit-config
    assert_status 1
    run_zet template process "$3" out/x
    assert_status 1
    [[ $stderr == *"$1: is $2, and "* ]]
    run_zet template install --force "$3"
    assert_status 2
    [[ $stderr == *"NAME \"$3\" is installed as $1, which is $2 (give the template another name)"* ]]
    assert_files_unchanged
}

@test "a template whose working copy is the configuration file is refused" {
    sed -i "s,^ZET_CFG_DIR=.*,ZET_CFG_DIR=$HOST," zet.conf
    assert_clash "$HOST/zet.conf" "the configuration file of the commands" zet.conf
    assert_clash "$HOST/zet.conf.tmp" "the temporary file of $HOST/zet.conf" zet.conf.tmp
}

@test "a template whose working copy is a file of the status is refused, temporary ones too" {
    sed -i "s,^ZET_CFG_DIR=.*,ZET_CFG_DIR=$HOST/state," zet.conf
    local name
    for name in zet.lock state.db state.db-wal state.db-shm state.db-journal state.db-last zet-client.status zet-client-fs.status; do
        assert_clash "$HOST/state/$name" "a file of the status" "$name"
    done
    for name in zet-server.status zet-client.status; do
        assert_clash "$HOST/state/$name.tmp" "the temporary file of $HOST/state/$name" "$name.tmp"
    done
}

@test "a target that is the temporary file of one of the product's own is refused" {
    echo text >templates/one.conf
    local path
    for path in "$HOST/zet.conf.tmp" "$HOST"/state/zet-server.status.tmp "$HOST"/state/zet-client{,-fs}.status.tmp \
        "$HOST/zet.conf.before_zet"; do
        : >templates/targets.toml
        list_target one.conf "$path"
        remember_host
        run_zet commit-config
        assert_status 1
        [[ $stderr == "zet-client: error: $path: is the "*" of ${path%.*}, and made from [one.conf] too (give the target another path)"$'\n'* ]]
        run_zet template process one.conf "$path"
        assert_status 1
        [[ $stderr == *"$path: is the "*" of ${path%.*} (name another file)"* ]]
        assert_files_unchanged
    done
}

@test "a target that the product would read as its own is refused" {
    mkdir etc/{values,defaults,targets}.d
    echo DOMAIN=other.org >templates/one.conf
    list_target a.conf "$HOST/out/a"
    echo a >templates/a.conf
    local list path use
    list=$(cat templates/targets.toml)
    while read -r path use; do
        printf '%s\n' "$list" >templates/targets.toml
        list_target one.conf "$HOST/$path"
        remember_host
        run_zet check-config
        assert_status 1
        [[ $output == *"$HOST/$path: is $use, and made from [one.conf] too (give the target another path)"* ]] ||
            differ problems "$path: is $use" "$output"
        run_zet commit-config
        assert_status 1
        assert_files_unchanged
    done <<-END
		etc/values.d/x a file of values
		etc/defaults.d/x.conf a file of values
		etc/targets.d/x.toml a list of targets
		templates/values.conf a file of values
		templates/x the template [x]
		etc/a.conf.old the kept working copy of [a.conf]
	END
}

@test "a template that is the list of targets is refused" {
    list_target targets.toml "$HOST/out/x"
    run_zet check-config
    assert_status 1
    assert_output "$HOST/templates/targets.toml: is the list of targets, and the template [targets.toml] too (give the template another name)"
}

@test "a working copy that is another template's temporary file is refused" {
    add_target one.conf $'one\n'
    add_target one.conf.tmp $'two\n'
    run_zet check-config
    assert_status 1
    [[ $output == *"$HOST/etc/one.conf.tmp: is the temporary file of the working copy of [one.conf], and the working copy of [one.conf.tmp] too"* ]]
}

@test "working copies may stand beside the pristine templates" {
    sed -i "s,^ZET_CFG_DIR=.*,ZET_CFG_DIR=$HOST/templates," zet.conf
    add_target one.conf $'one\n'
    run_zet check-config
    assert_status 0
}

@test "what stands beside the product's own files is not listed to claim them" {
    strace -f -qq -y -e trace=getdents64 -o "$BASE/trace" "$ZET_BIN/zet-client" --config zet.conf commit-config >"$BASE/output"
    # Whoever looks for what a killed run left lists it once, unless it is crowded: two calls.
    assert_equal "$(grep -cF "<$HOST/state>" "$BASE/trace")" 2
    assert_equal "$(grep -cF "<$HOST>" "$BASE/trace")" 0
}
