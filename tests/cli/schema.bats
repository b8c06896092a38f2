# The schema of the documents. That each document of the other tests is as it says, helper.bash sees to.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
}

teardown() {
    remove_host
}

# judge EXPRESSION: what the schema says of the document after the expression was done to it.
judge() {
    printf %s "$output" | python3 -c 'import json, sys
d = json.load(sys.stdin)
exec(sys.argv[1])
print(json.dumps(d))' "$1" >"$BASE/document"
    capture /usr/bin/python3 "$SOURCE_DIR/tests/cli/documents.py" "$SOURCE_DIR/docs/json-schema.json" "$BASE/document"
}

# assert_refused WORD EXPRESSION: one that is made wrong so is refused, and told with the word.
assert_refused() {
    local document=$output
    judge "$2"
    assert_status 1
    [[ $stderr == *"not as the schema has it"*"$1"* ]]
    output=$document
}

@test "a field that is missing, unknown, or not of its kind is refused" {
    run_zet commit-config --json
    judge pass
    assert_status 0
    run_zet commit-config --json
    assert_refused version 'd["version"] = 2'
    assert_refused entry 'del d["entry"]'
    assert_refused more 'd["more"] = 1'
    assert_refused result 'd["targets"][0]["result"] = "forgotten"'
    assert_refused reserve_result 'del d["targets"][0]["reserve_result"]'
    assert_refused change 'd["targets"][0]["change"] = "unchanged"'
    assert_refused command 'd["command"] = "commit"'
}

@test "a problem without a line has null, and not 0" {
    chmod 757 out
    run_zet check-config --json
    assert_json 'd["problems"][0]["line"]' null
    assert_refused line 'd["problems"][0]["line"] = 0'
    assert_refused column 'del d["problems"][0]["column"]'
    assert_refused problem 'd["problems"][0]["text"] = d["problems"][0].pop("problem")'
}

@test "a text that is no UTF-8 is flagged as the schema has it" {
    printf 'a=\xff\n' >conf
    run_zet param get conf a --json
    assert_json 'd["value_lossy"]' true
    assert_refused value_lossy 'd["value_lossy"] = False'
}

@test "the schema knows each command of the help, and no other" {
    local command name
    for command in $(commands); do
        local names
        names=$(commands "$command")
        # A family may be a command itself.
        [[ -n $names && $command != history ]] || echo "$command"
        for name in $names; do echo "$command $name"; done
    done | LC_ALL=C sort >"$BASE/commands"
    python3 -c 'import json, sys
print("\n".join(sorted(filter(None, json.load(open(sys.argv[1]))["properties"]["command"]["enum"]))))' \
        "$SOURCE_DIR/docs/json-schema.json" | diff -u "$BASE/commands" -
}

# commands [WORD]: what the help lists.
commands() {
    "$ZET_BIN/zet-client" "$@" --help | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z-]*\).*/\1/p'
}

@test "wrong use of a command leaves no field of its document out" {
    echo a=1 >conf
    local each words
    for each in "rollback-config --merge" "rollback-config --force --keep-edits" "rollback-config --to 1 x" "rollback-config --to x" \
        "param get conf |" "param get conf a --section |" "line get conf a --section |" "param get conf a --section x --no-section" \
        "line get conf a --section x --no-section" "param get conf a --section x|y" "line get conf a --section x|y"; do
        # A "|" at the end stands for an empty word, another one for a line feed.
        read -ra words <<<"$each"
        words=("${words[@]/%|/}")
        run_zet "${words[@]//|/$'\n'}" --json
        assert_status 2
        assert_json 'd["failure"]' null
        judge pass
        assert_status 0 || differ "$each" "as the schema has it" "$stderr"
    done
}
