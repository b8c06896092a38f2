# Shared by the tests of the commands. ZET_BIN names the directory of the commands.

SOURCE_DIR=$(cd "$BATS_TEST_DIRNAME/../.." && pwd)
export ZET_BIN=${ZET_BIN:-$SOURCE_DIR/build/test/bin}
export LC_ALL=C TZ=UTC
unset LANGUAGE NO_COLOR

# shellcheck disable=SC2034  # used by the tests
NOTICE='# --ZET_CONFIG_COMMENT--
# This file is partially modified by zet(7).
# Do not edit data between ZET_BEGIN and ZET_END labels manually
# unless you know what you are doing.
# These lines are updated automatically by zet-init(1) and zet-client(1).

# --ZET_COMMENT_END--
'

# block LINE: the managed block that holds the line.
block() {
    printf '# ---ZET_BEGIN---\n%s\n# ----ZET_END----\n' "$1"
}

# A small host in $HOST, which is the current directory; every user may look at it. Temporary files have
# directories of their own: of looks in $TMPDIR, of writers in $XDG_RUNTIME_DIR.
make_host() {
    BASE=$(mktemp -d "${TMPDIR:-/tmp}/zet-tools.XXXXXX")
    HOST=$BASE/host
    export TMPDIR=$BASE/tmp XDG_RUNTIME_DIR=$BASE/run
    mkdir -p "$HOST" "$TMPDIR"
    mkdir -m 700 "$XDG_RUNTIME_DIR"
    chmod 755 "$BASE"
    chmod 1777 "$TMPDIR"
    cd "$HOST" || return
    mkdir etc templates state
    (umask 077 && : >state/zet.lock)
    cat >zet.conf <<-END
		DOMAIN=example.org
		SERVER=srv.example.org
		ZET_CFG_DIR=$HOST/etc
		ZET_CFG_TEMPL_DIR=$HOST/templates
		ZET_VAR_LIB_DIR=$HOST/state
	END
}

# Nothing that a command puts away for itself may stay.
remove_host() {
    local left
    left=$(find "$TMPDIR" "$XDG_RUNTIME_DIR" "$HOST/state" -name 'zet-staging.*' -o -name '*.pending')
    cd / || return
    [[ $BASE != */zet-tools.* ]] || rm -rf "$BASE"
    assert_documents
    [[ -z $left ]] || differ "left behind" "" "$left"
}

# What runs in the background of a shell ignores two signals; a command is started without that.
zet() {
    env --default-signal=INT,QUIT "${PROGRAM:-$ZET_BIN/zet-client}" --config "$HOST/zet.conf" "$@"
}

# Below strace, which uses what it needs itself, the sanitizers cannot look for leaks.
export WITHOUT_LEAK_SEARCH=detect_leaks=0:${ASAN_OPTIONS:-}

strace() {
    ASAN_OPTIONS=$WITHOUT_LEAK_SEARCH command strace "$@"
}

# await_stop: returns when strace has stopped the command whose calls it writes into $BASE/trace; go_on lets it go on.
await_stop() {
    local tries=0
    until grep -qs "stopped by SIGSTOP" "$BASE/trace"; do
        [[ $((++tries)) -le 400 ]] || return 1
        sleep 0.05
    done
}

go_on() {
    kill -CONT "$(awk '{ print $1; exit }' "$BASE/trace")"
}

# with_end FILE: its text, whatever line feeds are at the end, with a "." added.
with_end() {
    cat "$1" && printf .
}

# capture COMMAND...: its standard output in $output, its standard error in $stderr, its exit status in
# $status; line feeds at the end are kept.
capture() {
    status=0
    "$@" >"$BATS_TEST_TMPDIR/output" 2>"$BATS_TEST_TMPDIR/stderr" || status=$?
    output=$(with_end "$BATS_TEST_TMPDIR/output")
    output=${output%.}
    stderr=$(with_end "$BATS_TEST_TMPDIR/stderr")
    stderr=${stderr%.}
    [[ " $* " != *" --json "* ]] || keep_document
}

# What was printed is looked at when the test ends.
keep_document() {
    mkdir -p "$BATS_TEST_TMPDIR/documents"
    cp "$BATS_TEST_TMPDIR/output" "$(mktemp "$BATS_TEST_TMPDIR/documents/XXXXXX")"
}

# assert_documents: every document that the test saw is as the schema has it.
assert_documents() {
    [[ ! -d $BATS_TEST_TMPDIR/documents ]] ||
        /usr/bin/python3 "$SOURCE_DIR/tests/cli/documents.py" "$SOURCE_DIR/docs/json-schema.json" "$BATS_TEST_TMPDIR"/documents/*
}

run_zet() {
    capture zet "$@"
}

# on_terminal WORD...: the command runs on a terminal; what that gets is in $output, without its carriage returns.
on_terminal() {
    local words
    printf -v words '%q ' "$ZET_BIN/zet-client" --config "$HOST/zet.conf" "$@"
    capture env SHELL=/bin/bash script -qec "$words" /dev/null
    output=${output//$'\r'/}
}

differ() {
    printf '%s\nexpected: %q\nactual:   %q\n' "$1" "$2" "$3" >&2
    return 1
}

assert_status() {
    [[ $status == "$1" ]] || {
        printf 'exit status %s instead of %s\n%s\n%s\n' "$status" "$1" "$output" "$stderr" >&2
        return 1
    }
}

# assert_output TEXT: standard output is the text and a line feed, or empty.
assert_output() {
    local expected=${1:+$1$'\n'}
    [[ $output == "$expected" ]] || differ "standard output" "$expected" "$output"
}

assert_stderr() {
    local expected=${1:+$1$'\n'}
    [[ $stderr == "$expected" ]] || differ "standard error" "$expected" "$stderr"
}

# assert_success OUTPUT: status 0, just this output, and nothing on standard error.
assert_success() {
    assert_status 0 && assert_output "$1" && assert_stderr ""
}

# assert_refusal STATUS MESSAGE: nothing on standard output, just this error on standard error.
assert_refusal() {
    assert_status "$1" && assert_output "" && assert_stderr "zet-client: error: $2"
}

# assert_file FILE TEXT: byte for byte.
assert_file() {
    local actual
    actual=$(with_end "$1") || return
    [[ $actual == "$2." ]] || differ "$1" "$2" "${actual%.}"
}

assert_absent() {
    [[ ! -e $1 && ! -L $1 ]] || {
        echo "$1 is there" >&2
        return 1
    }
}

assert_equal() {
    [[ $1 == "$2" ]] || differ "values" "$2" "$1"
}

# Of the store, whose files change when it is looked at: names for find.
STORE_FILES=(-name state.db -o -name state.db-wal -o -name state.db-shm -o -name state.db-last)

# Everything in the host's directory but the store: kind, mode, owner, times, link targets, bytes. Whoever writes
# leaves his name in the file that he locks, and may make the store beside it.
state_of_host() {
    local beside=("(" -name zet.lock -o "${STORE_FILES[@]}" ")")
    find "$HOST" ! "${beside[@]}" ! -path "$HOST/state" -printf '%y %m %U:%G %i %T@ %p -> %l\n' | LC_ALL=C sort
    find "$HOST" \( -name zet.lock -o -path "$HOST/state" \) -printf '%y %m %U:%G %p\n'
    find "$HOST" -type f ! "${beside[@]}" -exec sha256sum {} + | LC_ALL=C sort
}

# kill_at_rename FILE WORD...: a command that is killed when all but the name of FILE's new text is there; it stays
# as FILE.tmp.
kill_at_rename() {
    local name=${1##*/}
    shift
    capture strace -f -qq -o "$BASE/killed" -P "././$name.tmp" -e trace=/rename -e inject=/rename:signal=KILL \
        "$ZET_BIN/zet-client" --config "$HOST/zet.conf" "$@"
    assert_status 137
}

# store SQL...: what the history's tables say.
store() {
    /usr/bin/python3 -c 'import sqlite3, sys
for statement in sys.argv[2:]:
    for row in sqlite3.connect("file:" + sys.argv[1] + "?mode=ro", uri=True).execute(statement):
        print(*row, sep="|")' "$HOST/state/state.db" "$@"
}

# change_store SQL: as damage, or somebody's hand, would.
change_store() {
    /usr/bin/python3 -c 'import sqlite3, sys
with sqlite3.connect(sys.argv[1]) as database:
    database.execute(sys.argv[2])' "$HOST/state/state.db" "$1"
}

# break_store: its first page is none.
break_store() {
    rm -f state/state.db-wal state/state.db-shm
    (umask 077 && echo "no database, but so many bytes that it could be one" >state/state.db)
}

# shellcheck disable=SC2034  # used by the tests
BROKEN_STORE="the history is damaged: file is not a database (move it away: what was there before the product is kept beside the files; or set ZET_HISTORY=no to edit without it)"

remember_host() {
    REMEMBERED=$(state_of_host)
}

assert_host_unchanged() {
    local now
    now=$(state_of_host)
    [[ $now == "$REMEMBERED" ]] || {
        diff <(echo "$REMEMBERED") <(echo "$now") >&2
        return 1
    }
}

# The same, but for the times of directories: something may have come and gone in them.
assert_files_unchanged() {
    local before now
    before=$(grep -v '^d ' <<<"$REMEMBERED")
    now=$(state_of_host | grep -v '^d ')
    [[ $now == "$before" ]] || {
        diff <(echo "$before") <(echo "$now") >&2
        return 1
    }
}

# json EXPRESSION: of the document "d" that the command printed.
json() {
    python3 -c 'import json, sys
d = json.loads(sys.argv[1])
value = eval(sys.argv[2])
print(value if isinstance(value, str) else json.dumps(value))' "$output" "$1"
}

assert_json() {
    assert_equal "$(json "$1")" "$2"
}

need_root() {
    [[ $EUID -eq 0 ]] || skip "needs root"
}

# as_nobody COMMAND...: as a user without any rights.
as_nobody() {
    setpriv --reuid=65534 --regid=65534 --clear-groups "$@"
}

# A copy of the programs in $BASE/programs, which every user can reach.
copy_programs() {
    mkdir -p "$BASE/programs/bin" "$BASE/programs/lib"
    cp "$ZET_BIN/zet-init" "$BASE/programs/bin/"
    ln -s zet-init "$BASE/programs/bin/zet-client"
    is_built_in || cp -r "$ZET_BIN/../lib/." "$BASE/programs/lib/"
    chmod -R a+rX "$BASE/programs"
}

# Whether the module is a part of the programs; the build says so.
is_built_in() {
    [[ ${ZET_BUILT_IN_MODULE:-OFF} == ON ]]
}

need_module_file() {
    ! is_built_in || skip "the module is built into the programs"
}
