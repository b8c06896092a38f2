# What the history has not, or cannot be told.

load helper
load set

setup() {
    make_set
    add_target one.conf $'one\n'
    original one.conf $'old\n'
    ONE=$HOST/out/one.conf
}

teardown() {
    remove_host
}

# on_read_only_state WORD...: a run while nothing can be written to the state directory.
on_read_only_state() {
    on_read_only "$HOST/state" "$@"
}

# on_read_only DIRECTORY WORD...: the same of another directory.
on_read_only() {
    unshare --user --map-root-user --mount true 2>/dev/null || skip "no directory can be mounted here"
    # shellcheck disable=SC2016  # expanded inside
    capture unshare --user --map-root-user --mount sh -c \
        'mount --bind "$1" "$1" && mount -o remount,bind,ro "$1" && shift && exec "$@"' \
        sh "$1" "$ZET_BIN/zet-client" --config "$HOST/zet.conf" "${@:2}"
}

@test "a rollback that cannot be recorded is none that is done" {
    zet -q commit-config
    on_read_only_state rollback-config
    assert_status 1
    assert_file "$ONE" $'old\n'
    [[ $stderr == *"the status stays: "* ]]
    [[ $stderr == *"zet-client: error: what was put back is still on record as committed (run the command again once ZET_VAR_LIB_DIR can be written)"$'\n'* ]]
    run_zet rollback-config
    assert_status 0
    run_zet status
    [[ $output == *"committed: never"*"$ONE: not committed"* ]]
}

@test "a rollback that finds no room in the history is none that is done" {
    add_target two.conf $'two\n'
    zet -q commit-config
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/state/state.db-wal" -e trace=pwrite64 -e inject=pwrite64:error=ENOSPC \
        "$ZET_BIN/zet-client" --config zet.conf rollback-config
    assert_status 1
    assert_file "$ONE" $'old\n'
    assert_absent out/two.conf
    [[ $stderr == *"the history cannot be used: database or disk is full"* ]]
    [[ $stderr == *"zet-client: error: what was put back is still on record as committed (run the command again once ZET_VAR_LIB_DIR can be written)"$'\n'* ]]
    run_zet rollback-config
    assert_status 0
    run_zet status
    [[ $output == *"committed: never"*"$ONE: not committed"*"out/two.conf: not committed"* && $output != *edited* ]]
    run_zet commit-config --on-edit=refuse
    assert_status 0
}

@test "a rollback that has nothing to record is done on a read-only directory, too" {
    on_read_only_state rollback-config
    assert_status 0
}

@test "a rollback that is no longer kept is none that nobody told of" {
    echo ZET_HISTORY_KEEP=2 >>zet.conf
    original one.conf $'old\n'
    zet -q commit-config
    echo hand >>out/one.conf
    zet -q commit-config
    zet -q rollback-config
    echo a=1 >plain
    zet -q param set plain a 2
    zet -q param set plain a 3
    # The second change is kept longer, for the edit in it; the rollback behind it is gone.
    zet -q commit-config
    run_zet history
    [[ $output != *rollback-config* ]]
    run_zet rollback-config --to 5
    assert_status 0
    assert_file out/one.conf $'old\n'
}

@test "entries that are no longer kept were there all the same" {
    echo ZET_HISTORY_KEEP=0 >>zet.conf
    echo a=1 >plain
    zet param set plain a 2
    zet param set plain a 3
    run_zet history
    assert_status 0
    assert_output ""
    assert_stderr "zet-client: no change is kept any more"
    run_zet history show 1
    assert_refusal 2 "change 1 is no longer kept (\"history\" tells those that are; ZET_HISTORY_KEEP says how many)"
    run_zet history show 3
    assert_refusal 2 "there is no change 3: the last one is 2 (\"history\" tells them)"
    # A kept edit that is older than others.
    zet -q commit-config
    echo mine >>out/one.conf
    zet -q commit-config
    zet -q param set plain a 4
    run_zet undo 5
    assert_refusal 2 "change 5 is no longer kept (\"history\" tells those that are; ZET_HISTORY_KEEP says how many)"
    run_zet undo 6
    assert_refusal 2 "there is no change 6: the last one is 5 (\"history\" tells them)"
}

# with_setting LINE WORD...: a run with one line more in the main file.
with_setting() {
    local line=$1
    shift
    echo "$line" >>zet.conf
    run_zet "$@"
    sed -i "/^$line\$/d" zet.conf
}

@test "over changes of which nothing was kept, no way leads back to one before them" {
    local change way text
    for change in commit-config rollback-config; do
        rm -rf state/* out/*
        (umask 077 && : >state/zet.lock)
        original one.conf $'old\n'
        echo one >etc/one.conf
        zet -q commit-config
        echo other >etc/one.conf
        with_setting ZET_HISTORY=no "$change"
        assert_status 0
        text=$(<"$ONE")
        for way in "" --force; do
            run_zet rollback-config --to 1 $way
            assert_refusal 1 "$ONE: was written after change 1 while ZET_HISTORY was no (\"rollback-config\" and \"file restore\" need no history)
zet-client: nothing was changed"
            assert_equal "$(<"$ONE")" "$text"
        done
        zet -q commit-config --on-edit=overwrite
        [[ $change == commit-config ]] && continue
        run_zet rollback-config --to 1 --force
        assert_status 1
        [[ $stderr == *"$ONE: was written after change 1 while ZET_HISTORY was no"* ]]
    done
}

@test "what was written while nothing was kept does not keep from going back to what came after it" {
    zet -q commit-config
    with_setting ZET_HISTORY=no rollback-config
    assert_status 0
    echo a=1 >plain
    zet -q param set plain a 2
    zet -q param set plain a 3
    run_zet rollback-config --to 3
    assert_status 0
    grep -qx a=2 plain
}

@test "with ZET_HISTORY=no, undo takes back only what is named" {
    zet -q commit-config
    local text
    text=$(<"$ONE")
    with_setting ZET_HISTORY=no undo
    assert_refusal 1 "$HOST/state/state.db: nobody knows whether it has the last change, as ZET_HISTORY is no (name one that \"history\" tells)"
    assert_equal "$(<"$ONE")" "$text"
    with_setting ZET_HISTORY=no undo 1
    assert_status 0
    assert_file "$ONE" $'old\n'
}

# edited SETTING WORD...: the command, where somebody edited the target since its commit.
edited() {
    zet -q commit-config --on-edit=overwrite
    echo "mine $((++edits))" >>"$ONE"
    with_setting "$@"
}

@test "what somebody wrote, and nothing keeps, goes with a warning, in a trial, too" {
    zet -q commit-config
    local setting held would way last edits=0
    for setting in ZET_HISTORY=no ZET_HISTORY_MAX_FILE=4; do
        held="what $ONE held is not kept, as ZET_HISTORY is no"
        would="what $ONE holds would not be kept, as ZET_HISTORY is no"
        if [[ $setting != ZET_HISTORY=no ]]; then
            held="what $ONE held is larger than ZET_HISTORY_MAX_FILE, and not kept"
            would="what $ONE holds is larger than ZET_HISTORY_MAX_FILE, and would not be kept"
        fi
        for way in "undo LAST --force" "rollback-config --to LAST --force" "rollback-config --force" "commit-config --on-edit=overwrite"; do
            zet -q commit-config --on-edit=overwrite
            last=$(store 'SELECT max(number) FROM entries')
            way=${way/LAST/$last}
            edited "$setting" $way -n
            [[ $stderr == *"$would"* ]] || differ "$setting $way -n" "$would" "$stderr"
            edited "$setting" $way
            [[ $stderr == *"$held"* ]] || differ "$setting $way" "$held" "$stderr"
        done
    done
}

@test "what nothing can keep is replaced with force alone, where the state directory is immutable, too" {
    need_root
    printf 'x=1\n' >conf
    zet -q param set conf x 2
    echo mine >>conf
    cp conf before
    chattr +i state || skip "no such attribute here"
    run_zet file restore conf
    chattr -i state
    assert_status 1
    [[ $stderr == *"holds changes that are kept nowhere"* ]] || differ words "kept nowhere" "$stderr"
    cmp conf before
}

@test "where entries with edits are not kept, edits count as kept nowhere" {
    zet -q commit-config
    printf 'a=1\nb=2\n' >conf
    zet -q param set conf a 3
    printf 'ZET_HISTORY_KEEP=0\nZET_HISTORY_KEEP_EDITS=0\n' >>zet.conf
    echo mine >>out/one.conf
    echo mine >>conf
    cp out/one.conf edited
    run_zet commit-config
    assert_refusal 1 "$ONE: was edited since the last commit, and the history cannot keep the edit (--on-edit=overwrite replaces it all the same)
zet-client: nothing was changed"
    run_zet commit-config --on-edit=merge
    assert_status 1
    cmp out/one.conf edited
    run_zet file restore conf
    assert_refusal 1 "conf: holds changes that are kept nowhere (--force replaces it all the same)"
    run_zet file restore --force -n conf
    assert_stderr "zet-client: warning: what $HOST/conf holds would not be kept, as ZET_HISTORY_KEEP_EDITS is 0"
    run_zet file restore --force conf
    assert_stderr "zet-client: warning: what $HOST/conf held is not kept, as ZET_HISTORY_KEEP_EDITS is 0"
    run_zet commit-config --on-edit=overwrite -n
    [[ $stderr == *"what $ONE holds would not be kept, as ZET_HISTORY_KEEP_EDITS is 0"* ]]
    run_zet commit-config --on-edit=overwrite
    assert_status 0
    [[ $stderr == *"what $ONE held is not kept, as ZET_HISTORY_KEEP_EDITS is 0"* && $stderr != *"history show"* ]]
}

@test "a trial fails on a state directory that nobody can write to" {
    zet -q commit-config
    on_read_only_state commit-config -n
    assert_status 1
    [[ $stderr == *"$HOST/state: the directory of the status cannot be written"* ]]
}

@test "a trial fails on a file that nobody can replace, as the run does" {
    zet -q commit-config
    echo a=1 >out/plain
    local words
    for words in "param set out/plain a 2" "file reserve out/plain" "rollback-config"; do
        # shellcheck disable=SC2086  # words
        on_read_only "$HOST/out" ${words%% *} -n ${words#"${words%% *}"}
        assert_status 1
        [[ $stderr == *"out: cannot be written"* ]] || differ "$words" "cannot be written" "$stderr"
    done
}

@test "without a history, a template rendered by force is not recorded, but the template's own target is" {
    echo ZET_HISTORY=no >>zet.conf
    printf 'old\n' >out/other
    local text
    for text in two three; do
        echo "$text" >etc/one.conf
        zet -q template process --force one.conf "$HOST/out/other"
        grep -qx "$text" out/other
    done
    [ ! -e state/state.db ]
    echo four >etc/one.conf
    run_zet template process one.conf "$HOST/out/other"
    assert_refusal 1 "$HOST/out/other: holds changes that are kept nowhere (--force replaces it all the same)"
    grep -qx three out/other
    zet -q template process --force one.conf "$ONE"
    zet -q commit-config
    echo five >etc/one.conf
    zet -q template process --force one.conf "$ONE"
    echo six >etc/one.conf
    zet -q commit-config
    grep -qx six out/one.conf
}
