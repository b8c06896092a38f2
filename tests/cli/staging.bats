# The private directories of files on their way: where they are, and what becomes of those that stay.

load helper
load set

setup() {
    make_set
    script show <<-SCRIPT
		#!/bin/sh
		dirname "\$(dirname "\$(dirname "\$(dirname "\$1")")")" >>"$BASE/places"
		stat -c '%a %U' "\$(dirname "\$(dirname "\$(dirname "\$1")")")" >>"$BASE/places"
	SCRIPT
    add_target one.conf $'password\n' 'check = ["show", "{}"]'
}

teardown() {
    remove_host
}

# assert_staged_in DIRECTORY WORD...: that is where the command has its files, and nobody else may look at them.
assert_staged_in() {
    local directory=$1
    shift
    rm -f "$BASE/places" out/*
    run_zet -q "$@"
    [[ $status -eq 0 || $status -eq 3 ]]
    assert_file "$BASE/places" "$directory"$'\n'"700 $(id -un)"$'\n'
}

# leave_staging DIRECTORY: what a killed run leaves.
leave_staging() {
    (umask 077 && mkdir -p "$1/files/rendered" && : >"$1/lock")
}

# commit_with CALL ERROR: a commit whose calls of that kind all fail.
commit_with() {
    capture strace -f -qq -o "$BASE/trace" \
        -e "trace=$1" -e "inject=$1:error=$2" "$ZET_BIN/zet-client" --config zet.conf commit-config
}

@test "who writes has the files in the directory of the session, who looks where TMPDIR says" {
    assert_staged_in "$XDG_RUNTIME_DIR" commit-config
    assert_staged_in "$TMPDIR" commit-config -n
    assert_staged_in "$TMPDIR" check-config
    unset TMPDIR
    assert_staged_in "$XDG_RUNTIME_DIR" check-config
    export TMPDIR=$BASE/tmp
}

@test "a directory of the session that others may look into, or that is another's, is not used" {
    chmod 750 "$XDG_RUNTIME_DIR"
    run_zet -q commit-config
    assert_status 0
    ! grep -qF "$BASE/run" "$BASE/places" || return 1
    chmod 700 "$XDG_RUNTIME_DIR"
    if [[ $EUID -eq 0 ]]; then
        chown 65534 "$XDG_RUNTIME_DIR"
        rm out/* "$BASE/places"
        run_zet -q commit-config
        assert_status 0
        ! grep -qF "$BASE/run" "$BASE/places" || return 1
    fi
}

@test "root has no files where another user could change what is there" {
    need_root
    mkdir -p "$BASE/his/below" "$BASE/open" "$BASE/own"
    chown 65534 "$BASE/his"
    chmod 1777 "$BASE/his"
    chmod 777 "$BASE/open"
    ln -s "$BASE/own" "$BASE/his/link"
    local place
    for place in his his/below his/none open; do
        export TMPDIR=$BASE/$place
        assert_staged_in "$XDG_RUNTIME_DIR" check-config
        assert_stderr ""
        rm -f "$BASE/places"
        XDG_RUNTIME_DIR=$BASE/$place zet -q check-config
        ! grep -q "^$BASE" "$BASE/places" || return 1
    done
    # Where his link leads to now.
    export TMPDIR=$BASE/his/link
    assert_staged_in "$BASE/own" check-config
    export TMPDIR=$BASE/tmp
}

@test "what only looks like a left-over stays" {
    need_root
    mkdir "$BASE/his" "$TMPDIR/zet-staging.open"
    chown 65534 "$BASE/his"
    # Its name may be his work.
    leave_staging "$BASE/his/zet-staging.abcdef"
    TMPDIR=$BASE/his run_zet -q commit-config
    assert_status 0
    [[ -e $BASE/his/zet-staging.abcdef/lock ]]
    zet -q commit-config
    rmdir "$TMPDIR/zet-staging.open"
}

@test "without a place in memory, who writes has the files in the product's own directory" {
    [[ $EUID -eq 0 ]] || skip "needs root, to hide the places in memory"
    XDG_RUNTIME_DIR=$BASE/nowhere unshare -m bash -c '
        set -e
        mkdir "$BASE/full"
        mount -t tmpfs -o size=1m none /dev/shm
        mount -t tmpfs -o size=1m none /run
        "$ZET_BIN/zet-client" --config zet.conf -q commit-config' || skip "no name spaces here"
    assert_file "$BASE/places" "$HOST/state"$'\n'"700 $(id -un)"$'\n'
}

@test "in memory means in memory, where there is room for it" {
    [[ $EUID -eq 0 ]] || skip "needs root, to have a place in memory"
    XDG_RUNTIME_DIR=$BASE/nowhere unshare -m bash -c '
        set -e
        mount -t tmpfs -o size=1m none /run
        mount -t tmpfs -o size=200m,mode=1777 none /dev/shm
        "$ZET_BIN/zet-client" --config zet.conf -q commit-config >/dev/null
        mount -t tmpfs -o size=200m none /run
        rm out/*
        "$ZET_BIN/zet-client" --config zet.conf -q commit-config >/dev/null
        find /run /dev/shm -name "zet-staging.*"' >"$BASE/left" || skip "no name spaces here"
    assert_file "$BASE/left" ""
    assert_file "$BASE/places" "/dev/shm"$'\n'"700 $(id -un)"$'\n'"/run"$'\n'"700 $(id -un)"$'\n'
}

@test "rendered texts that cannot be removed are told, and the next run removes them" {
    commit_with unlinkat EIO
    assert_status 1
    local directory
    directory=$(find "$XDG_RUNTIME_DIR" -mindepth 1 -maxdepth 1)
    [[ -n $directory ]]
    assert_stderr "zet-client: error: $directory: holds rendered texts and could not be removed: Input/output error (remove it, or run the command again)"
    assert_made one.conf $'password\n'
    run_zet commit-config
    assert_success "1 unchanged"
    assert_equal "$(names_in "$XDG_RUNTIME_DIR")" ""
}

@test "a look whose texts cannot be removed fails, too, and says so in the document" {
    capture strace -f -qq -o "$BASE/trace" \
        -e trace=unlinkat -e inject=unlinkat:error=EIO "$ZET_BIN/zet-client" --config zet.conf --json commit-config -n
    assert_status 1
    assert_json 'd["exit_status"], len(d["errors"]), "could not be removed" in d["errors"][0]' '[1, 1, true]'
    run_zet -q commit-config -n
    assert_status 3
    assert_equal "$(names_in "$TMPDIR")" ""
}

@test "who looks for left-overs meanwhile does not keep a directory from being removed" {
    capture strace -f -qq -o "$BASE/trace" -e trace=unlinkat "$ZET_BIN/zet-client" --config zet.conf -q commit-config -n
    local last
    last=$(grep -c unlinkat "$BASE/trace")
    grep unlinkat "$BASE/trace" | tail -n 1 | grep -F AT_REMOVEDIR
    # He makes its lock anew.
    capture strace -f -qq -o "$BASE/trace" \
        -e trace=unlinkat -e inject=unlinkat:error=ENOTEMPTY:when="$last" "$ZET_BIN/zet-client" --config zet.conf -q commit-config -n
    assert_status 3
    assert_stderr ""
    grep -F INJECTED "$BASE/trace"
    assert_equal "$(names_in "$TMPDIR")" ""
}

@test "what killed runs left is removed from every place that they may have used" {
    local place
    for place in "$XDG_RUNTIME_DIR" "$TMPDIR" "$HOST/state"; do
        leave_staging "$place/zet-staging.abcdef"
        echo password >"$place/zet-staging.abcdef/files/rendered/one.conf"
    done
    ln -s "$HOST" "$TMPDIR/zet-staging.link"
    if [[ $EUID -eq 0 ]]; then
        mkdir -m 700 "$TMPDIR/zet-staging.foreign"
        chown 65534 "$TMPDIR/zet-staging.foreign"
    fi
    run_zet -q commit-config
    assert_status 0
    assert_stderr ""
    assert_equal "$(names_in "$XDG_RUNTIME_DIR")" ""
    [[ " $(names_in "$TMPDIR") " != *abcdef* && -L $TMPDIR/zet-staging.link ]]
    [[ $EUID -ne 0 || -d $TMPDIR/zet-staging.foreign ]]
    rm -r "$TMPDIR"/*
}

# opened WORD...: what a command opens.
opened() {
    strace -f -qq -o "$BASE/opened" -e trace=open,openat "$ZET_BIN/zet-client" -q --config zet.conf "$@"
    cat "$BASE/opened"
}

@test "after a run that came to its end, a place with very many names is not searched" {
    zet -q commit-config
    [[ $(opened commit-config) == *"\"$TMPDIR"* ]]
    # Each name takes 20 bytes or more of a directory.
    (cd "$TMPDIR" && seq 60000 | xargs touch)
    [[ $(stat -c %s "$TMPDIR") -gt 1048576 ]] || skip "this file system tells another size of directories"
    [[ $(opened commit-config) != *"\"$TMPDIR"* ]]
    [[ $(opened rollback-config) != *"\"$TMPDIR"* ]]
    zet -q commit-config
    : >state/zet.lock
    [[ $(opened commit-config) == *"\"$TMPDIR"* ]]
    find "$TMPDIR" -type f -delete
}

@test "what a killed look left is removed by the next commit" {
    zet -q commit-config
    leave_staging "$TMPDIR/zet-staging.abcdef"
    zet -q commit-config
    assert_absent "$TMPDIR/zet-staging.abcdef"
}

@test "a run that lives keeps its directory" {
    leave_staging "$XDG_RUNTIME_DIR/zet-staging.abcdef"
    mkfifo "$BASE/release"
    python3 -c 'import fcntl, sys
lock = open(sys.argv[1], "r+")
fcntl.lockf(lock, fcntl.LOCK_EX)
open(sys.argv[2], "w").close()
open(sys.argv[3]).read()' "$XDG_RUNTIME_DIR/zet-staging.abcdef/lock" "$BASE/held" "$BASE/release" 3>&- &
    while [[ ! -e $BASE/held ]]; do sleep 0.02; done
    run_zet -q commit-config
    assert_status 0
    assert_stderr ""
    [[ -d $XDG_RUNTIME_DIR/zet-staging.abcdef/files ]]
    : >"$BASE/release"
    wait
    run_zet -q commit-config
    assert_equal "$(names_in "$XDG_RUNTIME_DIR")" ""
}

@test "where nothing can be locked, no directory stays" {
    XDG_RUNTIME_DIR=$BASE/nowhere commit_with flock ENOLCK
    assert_status 0
    rm out/* state/state.db*
    # In a dry run, the first call after the looks at the three standard streams is the one that locks.
    capture strace -f -qq -o "$BASE/trace" \
        -e trace=fcntl -e inject=fcntl:error=ENOLCK:when=4 "$ZET_BIN/zet-client" --config zet.conf commit-config -n
    grep -q 'F_OFD_SETLK.*INJECTED' "$BASE/trace"
    assert_refusal 1 "$TMPDIR: no directory for temporary files can be made here: No locks available (make room, or name another directory with TMPDIR)"
    assert_equal "$(names_in "$TMPDIR")" ""
}

@test "what keeps a place from being used is told by its name" {
    capture strace -f -qq -o "$BASE/trace" -P "$TMPDIR" -e trace=openat -e inject=openat:error=EMFILE \
        "$ZET_BIN/zet-client" --config zet.conf commit-config -n
    assert_refusal 1 "$TMPDIR: no directory for temporary files can be made here: Too many open files (let the command open more files)"
    assert_equal "$(names_in "$TMPDIR")" ""
    # No parameter can name it.
    TMPDIR=$BASE/a$'\n'b run_zet -q commit-config -n
    assert_status 3
    assert_stderr ""
}

@test "nothing is staged before the lock, by which the next command knows that one was killed" {
    zet -q template install one.conf
    echo newer >>templates/one.conf
    capture strace -f -qq -o "$BASE/killed" -P "$HOST/state/zet.lock" -e trace=openat -e inject=openat:signal=KILL \
        "$ZET_BIN/zet-client" --config zet.conf template upgrade
    assert_status 137
    assert_equal "$(find "$TMPDIR" "$XDG_RUNTIME_DIR" -name 'zet-staging.*')" ""
}
