# What status says beside the bare state: of what makes the exit status, and of what a commit would do.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
    add_target two.conf $'two\n'
    ONE=$HOST/out/one.conf
    TWO=$HOST/out/two.conf
    LIST=$HOST/templates/targets.toml
    PLAIN=$HOST/out/plain
}

teardown() {
    remove_host
}

# edits TEXT: the host's own list, "FILE" in it being the plain file.
edits() {
    mkdir -p etc/targets.d
    printf '%s\n' "${1//FILE/$PLAIN}" >etc/targets.d/10.toml
}

@test "what was committed and is not in force any more is among the targets" {
    zet -q commit-config
    sed -i 's/^target = .*one.conf"/&\nenabled = false/' "$LIST"
    run_zet status
    assert_status 3
    [[ $output == *$'\n'"$TWO: in sync"$'\n'"$ONE: left over"$'\n'"1 in sync, 1 left over"$'\n' ]]
    run_zet -q status --changed
    assert_status 3
    assert_output "$ONE: left over"
    assert_stderr ""
    run_zet --json status --changed
    assert_json '[(t["template"], t["file"], t["path"], t["state"], t["merged"], t["diff"]) for t in d["targets"]]' \
        "[[\"one.conf\", \"$ONE\", \"$ONE\", \"left over\", false, null]]"
    echo mine >>out/one.conf
    run_zet -q status --changed
    assert_status 0
    assert_output "$ONE: kept"
    run_zet status
    assert_status 0
    [[ $output == *$'\n'"1 in sync, 1 kept"$'\n' ]]
}

# assert_kept REASON: what left the list is kept, and the next commit does keep it.
assert_kept() {
    run_zet status
    assert_status 0
    [[ $output == *$'\n'"$ONE: kept"$'\n'* ]] || differ status kept "$output"
    assert_stderr "zet-client: warning: $ONE: was committed and is not in force any more ($1)"
    run_zet commit-config
    assert_status 0
    run_zet status
    [[ $output == *$'\n'"$ONE: kept"$'\n'* ]] || differ status "kept after the commit" "$output"
    run_zet rollback-config --force "$ONE"
    assert_status 0
    run_zet status
    [[ $output != *"$ONE"* ]] || differ status forgotten "$output"
}

@test "what left the list without its reserve is kept, as the next commit does" {
    original one.conf $'old\n'
    zet -q commit-config
    sed -i 's/^target = .*one.conf"/&\nenabled = false/' "$LIST"
    rm "$ONE.before_zet"
    assert_kept "it has no reserve, and stays; \"rollback-config --force $ONE\" forgets it"
}

@test "what left the list with its directory is kept, as the next commit does" {
    mkdir out/mounted
    ONE=$HOST/out/mounted/one.conf
    sed -i "s|^target = .*one.conf\"|target = \"$ONE\"|" "$LIST"
    zet -q commit-config
    sed -i 's/^target = .*one.conf"/&\nenabled = false/' "$LIST"
    mv out/mounted away
    assert_kept "its directory is not there; \"rollback-config --force $ONE\" forgets it"
}

@test "of a target that a commit would refuse, status says so" {
    zet -q commit-config
    echo '${nothing}' >>etc/one.conf
    run_zet status --diff
    assert_status 3
    [[ $output == *"$ONE: pending, template refused"$'\n'* ]]
    run_zet --json status --diff
    assert_json '[t["reason"] for t in d["targets"]]' '["template refused", null]'
}

@test "a diff shows what a commit would make of the lines of the lists" {
    printf 'a=1\nb=1\n' >out/plain
    edits '[[edits]]
file = "FILE"
param = "a"
value = "2"
[[edits]]
file = "FILE"
param = "b"
value = "2"'
    zet -q commit-config
    sed -i 's/^a=2/a=3/' out/plain
    sed -i '0,/value = "2"/! s/value = "2"/value = "4"/' etc/targets.d/10.toml
    run_zet status --diff
    assert_status 3
    [[ $output == *"$PLAIN: line a: edited"$'\n'"$PLAIN: line b: pending"$'\n--- a/'*$'\n-a=3\n+a=2\n'*$'\n-b=2\n+b=4\n'* ]]
    run_zet --json status --diff
    assert_json '[e["diff"] is None for e in d["listed_edits"]]' "[true, false]"
    run_zet --json status
    assert_json '[e["diff"] for e in d["listed_edits"]]' "[null, null]"
    sed -i 's/^a=3/a=2/' out/plain
    rm etc/targets.d/10.toml
    run_zet status --diff
    assert_status 3
    [[ $output == *"$PLAIN: line b: pending"$'\n--- a/'*$'\n-a=2\n'* ]]
}

@test "where there is no diff, the difference cannot be told" {
    zet -q commit-config
    echo more >>etc/one.conf
    printf 'a=1\n' >out/plain
    edits '[[edits]]
file = "FILE"
param = "a"
value = "2"'
    mkdir bin
    run_zet status
    assert_status 3
    run_zet_in "$HOST/bin" status --diff
    assert_status 1
    [[ $output == *"$ONE: pending"$'\n'*"$PLAIN: line a: not committed"$'\n'* ]]
    [[ $stderr == *"$ONE: its difference cannot be told: "*"diff"* ]]
    [[ $stderr == *"$PLAIN: its difference cannot be told: "*"diff"* ]]
}

# run_zet_in PATH WORD...: with another search path.
run_zet_in() {
    local path=$1
    shift
    capture /usr/bin/env PATH="$path" "$ZET_BIN/zet-client" --config "$HOST/zet.conf" "$@"
}
