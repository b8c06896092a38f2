# What a commit does with a target that somebody edited.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
    zet commit-config
    echo mine >>out/one.conf
}

teardown() {
    remove_host
}

@test "an edit is overwritten, and the remark says how to see it" {
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/out/one.conf: was edited since the last commit; the edits are overwritten
zet-client: \"history show 2 $HOST/out/one.conf\" shows what it held"
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
}

@test "an edit is refused where that is asked for, and nothing is written" {
    remember_host
    run_zet commit-config --on-edit=refuse
    assert_refusal 1 "$HOST/out/one.conf: was edited since the last commit (--on-edit=overwrite replaces it, and the history keeps it)
zet-client: nothing was changed"
    run_zet option set ZET_ON_EDIT refuse
    run_zet commit-config
    assert_status 1
    run_zet commit-config --on-edit=overwrite
    assert_status 0
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
}

@test "a target that was removed is refused as well" {
    rm out/one.conf
    run_zet commit-config --on-edit=refuse
    assert_refusal 1 "$HOST/out/one.conf: was removed since the last commit (--on-edit=overwrite replaces it, and the history keeps it)
zet-client: nothing was changed"
}

@test "an edit that cannot be kept is replaced only by word" {
    echo ZET_HISTORY=no >>zet.conf
    run_zet commit-config
    assert_refusal 1 "$HOST/out/one.conf: was edited since the last commit, and the history cannot keep the edit (--on-edit=overwrite replaces it all the same)
zet-client: nothing was changed"
    run_zet commit-config --on-edit=overwrite
    assert_status 0
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
}

@test "what is larger than the history keeps is replaced only by word" {
    echo ZET_HISTORY_MAX_FILE=10 >>zet.conf
    run_zet commit-config
    assert_status 1
}

@test "an unknown word is wrong use" {
    run_zet commit-config --on-edit=ask
    assert_status 2
}

@test "a dry run refuses alike" {
    run_zet commit-config -n --on-edit=refuse
    assert_status 1
}

@test "status tells the files that were edited in place, and whether they still are" {
    printf 'a=1\nb=2\n' >conf
    zet param set conf a 3
    run_zet status
    [[ $output == *"$HOST/conf: edit in place"* ]]
    echo c=4 >>conf
    run_zet status
    [[ $output == *"$HOST/conf: edit changed"* ]]
    printf 'a=1\n' >conf
    run_zet status
    [[ $output == *"$HOST/conf: edit gone"* ]]
    rm conf
    run_zet status
    [[ $output == *"$HOST/conf: edit missing"* ]]
}

@test "what was too large to be kept is not said to be shown" {
    echo ZET_HISTORY_MAX_FILE=600 >>zet.conf
    printf '%s\n' {1..1000} >>out/one.conf
    run_zet commit-config --on-edit=overwrite
    assert_status 0
    [[ $stderr == *"what $HOST/out/one.conf held is larger than ZET_HISTORY_MAX_FILE, and not kept"* && $stderr != *"shows what it held"* ]] || differ words "not kept" "$stderr"
}

# assert_stays_edited COMMAND...: the edited target is somebody else's work after the command, too.
assert_stays_edited() {
    run_zet "$@"
    assert_status 0
    run_zet status
    [[ $output == *"$HOST/out/one.conf: edited"* ]] || differ status "edited after $*" "$output"
    cp out/one.conf there
    run_zet commit-config --on-edit=refuse
    assert_status 1
    run_zet rollback-config -n
    [[ $output$stderr == *"out/one.conf: "*"--force"* ]] || differ words "--force after $*" "$output$stderr"
    cmp out/one.conf there
}

# assert_told_as_lost COMMAND...: it replaces what somebody wrote into conf, which nothing keeps.
assert_told_as_lost() {
    run_zet "$@"
    assert_status 0
    [[ $stderr == *"warning: what $HOST/conf held is larger than ZET_HISTORY_MAX_FILE, and not kept"* ]] || differ "words of $*" "not kept" "$stderr"
    assert_equal "$(grep -c "$HOST/conf.*MAX_FILE" <<<"$stderr")" 1
    ! grep hand conf || differ conf "as before" "$(cat conf)"
}

@test "what was too large to be kept is said to be lost where an undo or a rollback replaces it" {
    echo ZET_HISTORY_MAX_FILE=300 >>zet.conf
    printf '%s\n' {1..100} >conf
    printf 'a=1\n' >>conf
    run_zet param set conf a 2
    assert_stderr "zet-client: $HOST/conf: is larger than ZET_HISTORY_MAX_FILE, and recorded without its text"
    echo hand >>conf
    assert_told_as_lost rollback-config --force
    run_zet -q param set conf a 2
    assert_stderr ""
    echo hand >>conf
    assert_told_as_lost undo --force
}

@test "a forced rollback is told to have gone over an edit" {
    zet rollback-config --force
    run_zet history show 2
    [[ $output == *"out/one.conf: "*", over an edit of somebody else's"* ]] || differ words edited "$output"
}

@test "an edit of somebody else's stays one whatever the product sets in the file" {
    assert_stays_edited param set --force out/one.conf other value
    assert_stays_edited line set --force out/one.conf mine yours
    assert_stays_edited file strip --force out/one.conf
    run_zet history show 4
    [[ $output == *"out/one.conf: changed, over an edit of somebody else's"* ]] || differ words edited "$output"
    run_zet commit-config
    [[ $stderr == *"was edited since the last commit; the edits are overwritten"* ]] || differ words warning "$stderr"
    assert_stays_edited undo
    assert_stays_edited undo 4
}

@test "an edit of somebody else's stays one where the product repairs markers" {
    zet param set --force out/one.conf other value
    sed -i 's/^# ----ZET_END/  &/' out/one.conf
    assert_stays_edited doctor --fix out/one.conf
}

@test "an edit of somebody else's stays one where the command that edits the file is killed behind its work" {
    local words
    for words in "param set --force out/one.conf other value" "line set --force out/one.conf mine yours" \
        "file strip --force out/one.conf"; do
        kill_at_rename out/one.conf $words
        mv out/one.conf.tmp out/one.conf
        run_zet status
        [[ $output == *"out/one.conf: edited"* ]] || differ status edited "$output"
        run_zet commit-config -n --on-edit=refuse
        assert_status 1
        assert_stays_edited file reserve zet.conf
        zet file forget zet.conf
    done
    run_zet history
    [[ $output == *"cut short"* ]]
    run_zet commit-config
    [[ $stderr == *"was edited since the last commit; the edits are overwritten"* ]] || differ words warning "$stderr"
    kill_at_rename out/one.conf undo
    mv out/one.conf.tmp out/one.conf
    assert_stays_edited file reserve zet.conf
}

@test "an edit that a killed commit has written over is one no more" {
    kill_at_rename out/one.conf commit-config
    mv out/one.conf.tmp out/one.conf
    zet file reserve zet.conf
    run_zet commit-config --on-edit=refuse
    assert_status 0
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
}

@test "a mode of somebody else's stays his whatever the product sets in the file" {
    zet commit-config
    chmod 600 out/one.conf
    assert_stays_edited param set --force out/one.conf other value
}

@test "what the product alone has set in a target is pending" {
    zet commit-config
    zet param set --force out/one.conf other value
    zet line set --force out/one.conf other=v other=third
    run_zet status
    [[ $output == *"$HOST/out/one.conf: pending"* ]]
    zet undo
    run_zet status
    [[ $output == *"$HOST/out/one.conf: pending"* ]]
}
