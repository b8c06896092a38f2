# What commits wrote is not edited by mistake, whatever became of the lists since.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\nplain = 1\n'
    original one.conf $'old = 1\n'
    ONE=$HOST/out/one.conf
    LIST=$HOST/templates/targets.toml
    PLAIN=$HOST/out/plain
    printf 'a=1\nb=1\n# PLACE\n' >"$PLAIN"
}

teardown() {
    remove_host
}

# ask_for_lines: the lists ask for two lines of a file that is nobody's target.
ask_for_lines() {
    mkdir -p etc/targets.d
    cat >etc/targets.d/10.toml <<-END
		[[edits]]
		file = "$PLAIN"
		param = "a"
		value = "2"
		[[edits]]
		file = "$PLAIN"
		pattern = "^c ="
		line = "c = 3"
	END
}

# assert_guarded MESSAGE FILE EDIT...: the edits of the file are refused with the message, and change nothing.
assert_guarded() {
    local message=$1 file=$2 edit before
    shift 2
    before=$(as_now)
    for edit in "$@"; do
        run_zet ${edit/FILE/"$file"}
        assert_refusal 1 "$message"
    done
    assert_equal "$(as_now)" "$before"
}

# as_now: the files with all that a writer would change, and no other beside them.
as_now() {
    state_of out/* etc/*
}

EDITS=("param set FILE other 2" "line set FILE ^plain p=2" "file strip FILE" "file forget FILE" "param unset -n FILE plain")

@test "a committed target is one where the list is missing or broken, too" {
    zet -q commit-config
    mv "$LIST" list
    assert_guarded "$LIST: the list of targets cannot be read: No such file or directory (install the product's templates, or correct ZET_CFG_TEMPL_DIR); so nobody can tell whether the next commit overwrites $ONE (--force edits it all the same)" \
        "$ONE" "${EDITS[@]}"
    run_zet param set --force "$ONE" other 2
    assert_status 0
    sed 's/^target/tar get/' list >"$LIST"
    run_zet file forget "$ONE"
    assert_status 1
    [[ $stderr == *"$LIST:2:"*"; so nobody can tell whether the next commit overwrites $ONE (--force edits it all the same)"$'\n' ]]
    sed 's/^target.*//' list >"$LIST"
    run_zet file forget "$ONE"
    assert_status 1
    [[ $stderr == *"$LIST:"*"; so nobody can tell whether the next commit overwrites $ONE (--force edits it all the same)"$'\n' ]]
    mv list "$LIST"
    run_zet rollback-config --force
    assert_status 0
    assert_file "$ONE" $'old = 1\n'
}

@test "a committed target of which the list is missing is adopted by nobody, and is one all the same" {
    zet -q commit-config
    echo more >>"$ONE"
    mv "$LIST" list
    run_zet adopt "$ONE"
    assert_refusal 1 "$LIST: the list of targets cannot be read: No such file or directory (install the product's templates, or correct ZET_CFG_TEMPL_DIR)"
    : >"$LIST"
    run_zet adopt "$ONE"
    assert_refusal 1 "$ONE: was made from [one.conf], which no list has for it any more (put it into the lists again; \"rollback-config --force $ONE\" puts back what was there before)"
}

@test "what a commit wrote is known by the history where somebody took the reserve away, too" {
    ask_for_lines
    zet -q commit-config
    rm "$ONE.before_zet" "$PLAIN.before_zet"
    assert_guarded "$ONE: is made from [one.conf] and the next commit overwrites it (edit $HOST/etc/one.conf and commit, or use --force --no-markers and \"adopt\" the file)" \
        "$ONE" "param set FILE other 2" "line set FILE ^plain p=2"
    assert_guarded "$ONE: is made from [one.conf] and the next commit overwrites it (edit $HOST/etc/one.conf and commit, or use --force)" \
        "$ONE" "file strip FILE"
    assert_guarded "$PLAIN: its line a is set by the lists, and the next commit sets it again (edit $HOST/etc/targets.d/10.toml:1 and commit, or use --force)" \
        "$PLAIN" "param set FILE a 3"
    echo more >>"$ONE"
    run_zet adopt "$ONE"
    assert_status 0
}

@test "an edit that is made as the refusal names it can be adopted" {
    zet -q commit-config
    run_zet line set "$ONE" ^plain 'plain = 2'
    [[ $stderr == *" or use --force --no-markers and \"adopt\" the file)"* ]]
    zet -q line set --force --no-markers "$ONE" ^plain 'plain = 2'
    run_zet adopt "$ONE"
    assert_success "$HOST/etc/one.conf: changed, with the edit of $ONE"
}

@test "what no list has any more is taken back by the program of the role that committed it" {
    sed -i 's/^roles = .*/roles = "server"/' "$LIST"
    server -q commit-config
    : >"$LIST"
    assert_guarded "$ONE: was made by a commit, and no list has it any more (put it into the lists again, take it back with \"zet-init rollback-config $ONE\", or use --force)" \
        "$ONE" "${EDITS[@]}"
    run_zet rollback-config "$ONE"
    assert_status 2
    rm "$ONE.before_zet"
    assert_guarded "$ONE: was made by a commit, and no list has it any more (put it into the lists again, give up what was there before with \"zet-init rollback-config --force $ONE\", or use --force)" \
        "$ONE" "param set FILE other 2" "line set FILE ^plain p=2" "file strip FILE"
    server rollback-config --force "$ONE"
    run_zet param set "$ONE" other 2
    assert_status 0
}

@test "what no list has any more goes back by the command that the refusal names" {
    sed -i 's/^roles = .*/roles = "server"/' "$LIST"
    server -q commit-config
    : >"$LIST"
    server rollback-config "$ONE"
    assert_file "$ONE" $'old = 1\n'
}

@test "of a target that is not in force any more, the message is true" {
    zet -q commit-config
    echo 'enabled = false' >>"$LIST"
    assert_guarded "$ONE: was made from [one.conf], which is not in force any more: the next commit takes it back (commit first, or use --force)" \
        "$ONE" "${EDITS[@]}"
    run_zet commit-config
    assert_status 0
    assert_file "$ONE" $'old = 1\n'
    run_zet param set --no-markers "$ONE" other 2
    assert_status 0
}

@test "a line that a commit set is edited with --force only, and the others by anybody" {
    ask_for_lines
    zet -q commit-config
    assert_guarded "$PLAIN: its line a is set by the lists, and the next commit sets it again (edit $HOST/etc/targets.d/10.toml:1 and commit, or use --force)" "$PLAIN" \
        "param set FILE a 3" "param set -n FILE a 3" "param restore --all-blocks FILE a" "param unset FILE a" "line set FILE ^a=.*2 d=1" "param set --no-markers FILE a 3"
    run_zet line set "$PLAIN" '^c' 'c = 4'
    assert_refusal 1 "$PLAIN: its line ^c = is set by the lists, and the next commit sets it again (edit $HOST/etc/targets.d/10.toml:5 and commit, or use --force)"
    run_zet param set "$PLAIN" a 2
    assert_success "$PLAIN: unchanged"
    run_zet param set "$PLAIN" b 2
    assert_status 0
    run_zet param restore "$PLAIN" b --all-blocks
    assert_status 1
    run_zet status
    assert_status 0
    run_zet param set --force "$PLAIN" a 3
    assert_status 0
    run_zet param set "$PLAIN" a 4
    assert_status 1
    run_zet commit-config
    assert_status 0
    grep -Fx a=2 "$PLAIN"
}

@test "a file with lines that a commit set keeps its blocks and its reserve" {
    ask_for_lines
    zet -q commit-config
    assert_guarded "$PLAIN: has lines that the lists set, and the next commit sets them again (edit $HOST/etc/targets.d/10.toml:1 and commit, or use --force)" "$PLAIN" \
        "file strip FILE" "file forget FILE"
    run_zet file strip --force "$PLAIN"
    assert_status 0
    run_zet file forget --force "$PLAIN"
    assert_status 0
}

@test "of lines that the lists do not ask for any more, the message is true" {
    ask_for_lines
    zet -q commit-config
    rm etc/targets.d/10.toml
    assert_guarded "$PLAIN: its line a was set by a commit, and the next one takes it back (commit first, or use --force)" "$PLAIN" "param set FILE a 3"
    assert_guarded "$PLAIN: has lines that a commit set, and the next one takes them back (commit first, or use --force)" "$PLAIN" "file forget FILE" "file strip FILE"
    run_zet commit-config
    assert_status 0
    run_zet param set "$PLAIN" a 3
    assert_status 0
}

@test "lines of which the lists cannot be read are guarded, too" {
    ask_for_lines
    server -q commit-config
    echo nonsense >>"$LIST"
    run_zet param set "$PLAIN" a 3
    assert_status 1
    [[ $stderr == *"$LIST:"*"; so nobody can tell whether the next commit overwrites $PLAIN (--force edits it all the same)"$'\n' ]]
    run_zet param set "$PLAIN" b 3
    assert_status 0
}
