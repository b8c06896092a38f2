# The history's own files, and what is told by content since there is one.

load helper
load set

setup() {
    make_set_of_one $'x\n'
    printf 'a=1\nb=2\n' >conf
}

teardown() {
    remove_host
}

assert_state() {
    run_zet status
    [[ $output == *"$ONE: $1"$'\n'* ]] || differ state "$1" "$output"
}

@test "a target is edited when its bytes are others, and never for its times or its inode" {
    zet -q commit-config
    touch out/one.conf
    assert_state "in sync"
    cp out/one.conf out/copy
    mv out/copy out/one.conf
    assert_state "in sync"
    run_zet commit-config
    assert_success "1 unchanged"
    # An edit of equal size, with its times put back.
    touch -r out/one.conf "$BASE/times"
    sed -i 's/^x$/y/' out/one.conf
    touch -r "$BASE/times" out/one.conf
    assert_state edited
    run_zet rollback-config
    assert_status 1
    assert_output "$ONE: edited, stays as it is"
}

@test "a host that is cloned or restored from a backup is in sync" {
    zet -q commit-config
    cp -a "$HOST" "$BASE/clone"
    sleep 0.01
    rm -rf "${HOST:?}"/*
    cp -r "$BASE/clone/." "$HOST"
    chmod 600 state/state.db*
    assert_state "in sync"
    run_zet commit-config
    assert_success "1 unchanged"
    run_zet rollback-config
    assert_status 0
    assert_file out/one.conf $'old\n'
}

@test "what others may read of the history is theirs no more once a command records" {
    zet -q commit-config
    chmod 644 state/state.db*
    run_zet status
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/state/state.db: others may read it, or what stands beside it (chmod go-rwx: it holds what files held, passwords too)"
    run_zet check-config
    assert_status 0
    [[ $stderr == *"others may read it"* ]]
    assert_equal "$(stat -c %a state/state.db)" 644
    run_zet param set conf a 2
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/state/state.db: others could read it, or what stands beside it, and cannot any more (change the passwords that the files in it held, if others use this host)"
    assert_equal "$(stat -c %a state/state.db* | sort -u)" 600
    run_zet param set conf a 3
    assert_stderr ""
}

@test "a history whose mode cannot be set is said, and records all the same" {
    zet -q commit-config
    chmod 644 state/state.db
    capture strace -f -qq -o "$BASE/trace" -e trace=fchmod -e inject=fchmod:error=EPERM -P "$HOST/state/state.db" \
        "$ZET_BIN/zet-client" --config zet.conf param set conf a 2
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/state/state.db: others may read it, or what stands beside it (chmod go-rwx: it holds what files held, passwords too)"
    run_zet history
    [[ $output == *"param set conf a 2"* ]]
}

@test "what holds none of the texts may be read by others" {
    zet -q commit-config
    chmod 644 state/state.db-last
    run_zet param set conf a 2
    assert_status 0
    assert_stderr ""
}

@test "an empty history that others may read is not for them once it is made" {
    : >state/state.db
    chmod 644 state/state.db
    run_zet commit-config
    assert_status 0
    [[ $stderr == *"$HOST/state/state.db: others could read it"* ]]
    assert_equal "$(stat -c %a state/state.db* | sort -u)" 600
}

@test "a history that others may write is not used, and what stands beside the files goes back" {
    zet -q commit-config
    zet -q param set conf a 2
    chmod 666 state/state.db
    local told words
    told="$HOST/state/state.db: others may write it, so it is not used (chmod 600 if what it holds can be trusted, or move it away; or set ZET_HISTORY=no to edit without the history)"
    for words in "param set conf b 3" "option set DOMAIN other.example" commit-config undo history check-config; do
        # shellcheck disable=SC2086
        run_zet $words
        assert_status 1
        [[ $output$stderr == *"$told"* ]] || differ "words of $words" "$told" "$output$stderr"
    done
    assert_equal "$(stat -c %a state/state.db)" 666
    grep -q '^b=2$' conf
    ! grep -q other.example zet.conf || return 1
    run_zet status
    assert_stderr "zet-client: warning: $told"
    run_zet rollback-config
    [[ $stderr == *"warning: $told"* ]]
    assert_file out/one.conf $'old\n'
}

# opened WORD...: what of the history the command opens.
opened() {
    strace -f -qq -e trace=openat,open -o "$BASE/trace" "$ZET_BIN/zet-client" --config zet.conf "$@" >"$BASE/output" || true
    grep -oE 'libsqlite3[.]so|libzstd[.]so|state[.]db' "$BASE/trace" | sort -u | paste -sd ' '
}

@test "a copy that SQLite makes while the history is in use can take its place" {
    zet commit-config
    local before
    before=$(zet history)
    python3 -c 'import sqlite3, sys
sqlite3.connect(sys.argv[1]).backup(sqlite3.connect(sys.argv[2]))' "$HOST/state/state.db" "$BASE/copy"
    zet param set conf a 2
    rm state/state.db-*
    cat "$BASE/copy" >state/state.db
    run_zet history
    assert_success "$before"
    zet param set conf a 3
    run_zet history show 2
    assert_status 0
    [[ $output == *"a 3"* ]]
}

@test "what neither records nor looks back opens nothing of the history" {
    zet -q commit-config
    assert_equal "$(opened param get conf a)$(opened values)$(opened help)$(opened line get conf ^a)" ""
    [[ $(opened param set conf a 2) == *libsqlite3.so*state.db* ]]
    zet file restore conf
    echo ZET_HISTORY=no >>zet.conf
    local command
    for command in "param set conf a 2" "param get conf a" "line get conf ^a" "doctor conf" "values"; do
        rm -f conf.*
        assert_equal "$command: $(opened $command)" "$command: "
    done
    grep -qx a=2 conf
}

# syncs WORD...: how often the command makes something durable.
syncs() {
    strace -f -qq -e trace=fsync,fdatasync -o "$BASE/trace" "$ZET_BIN/zet-client" --config zet.conf "$@" >"$BASE/output"
    wc -l <"$BASE/trace"
}

@test "an entry costs two syncs, and three where the journal is moved into the database and begun anew" {
    local number with=() without
    zet param set conf a 2
    for number in {1..25}; do
        with+=("$(syncs param set conf a "v$number")")
    done
    echo ZET_HISTORY=no >>zet.conf
    without=$(syncs param set conf a 4)
    assert_equal "$(printf '%s\n' "${with[@]}" | sort -n | uniq -c | xargs)" "23 $((without + 2)) 2 $((without + 3))"
}

# without_shared_memory WORD...: on a file system that refuses it.
without_shared_memory() {
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/state/state.db-shm" -e trace=mmap -e inject=mmap:error=ENODEV \
        "$ZET_BIN/zet-client" --config zet.conf "$@"
}

# journal_of_store: its kind, which the header tells.
journal_of_store() {
    [[ $(od -An -tu1 -j18 -N2 state/state.db) == *2*2* ]] && echo left || echo cut
}

@test "where no memory is shared, a history is kept all the same" {
    local value
    for value in 2 3; do
        without_shared_memory param set conf a "$value"
        assert_status 0
        assert_stderr ""
        assert_equal "$(journal_of_store)" cut
    done
    without_shared_memory commit-config
    assert_status 0
    without_shared_memory history
    assert_status 0
    [[ $output == *commit-config*"param set conf a 3"*"param set conf a 2"* ]] || differ history "three entries" "$output"
    without_shared_memory undo
    assert_status 0
    assert_file out/one.conf $'old\n'
    zet -q param set conf a 4
    assert_equal "$(journal_of_store)" left
}

@test "a history that comes to where no memory is shared is kept on, with what its journal has" {
    zet -q param set conf a 2
    [[ -s state/state.db-wal ]]
    without_shared_memory param set conf a 3
    assert_status 0
    assert_stderr ""
    assert_equal "$(journal_of_store)" cut
    [[ ! -s state/state.db-wal ]]
    run_zet history
    [[ $output == *"param set conf a 3"*"param set conf a 2"* ]] || differ history "both entries" "$output"
    without_shared_memory history erase conf
    assert_status 0
}

# on_network WORD...: as if the state were on a file system of the network (NFS).
on_network() {
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/state/state.db-shm" -e trace=fstatfs \
        -e inject=fstatfs:poke_exit=@arg2=6969000000000000 "$ZET_BIN/zet-client" --config zet.conf "$@"
    assert_status 0
}

@test "on a file system of the network, no memory is shared" {
    on_network param set conf a 2
    assert_equal "$(journal_of_store)" cut
    on_network param set conf a 3
    assert_equal "$(journal_of_store)" cut
}

@test "where no memory is shared, a look takes back what a killed run left half" {
    without_shared_memory param set conf a 2
    local before
    before=$(zet history)
    strace -f -qq -o "$BASE/trace" -P "$HOST/state/state.db-shm" -P "$HOST/state/state.db" -e trace=mmap,fdatasync \
        -e inject=mmap:error=ENODEV -e inject=fdatasync:signal=KILL \
        "$ZET_BIN/zet-client" --config zet.conf param set conf a 3 || true
    [[ -s state/state.db-journal ]]
    run_zet history
    assert_success "$before"
    [[ ! -s state/state.db-journal ]]
}

@test "without a history, a commit still knows what it wrote, and keeps no text" {
    echo ZET_HISTORY=no >>zet.conf
    zet -q commit-config
    assert_state "in sync"
    assert_equal "$(store 'SELECT count(*) FROM texts' 'SELECT count(*) FROM entries' 'SELECT count(*) FROM files')" $'0\n0\n0'
    echo mine >>out/one.conf
    assert_state edited
    run_zet commit-config --on-edit=overwrite
    assert_stderr "zet-client: warning: $ONE: was edited since the last commit; the edits are overwritten
zet-client: warning: what $ONE held is not kept, as ZET_HISTORY is no"
    run_zet rollback-config
    assert_status 0
    assert_file out/one.conf $'old\n'
}

# assert_refused_at_once WORD...: by what records, before the first byte.
assert_refused_at_once() {
    capture timeout -s KILL 5 "$ZET_BIN/zet-client" --config zet.conf "$@"
    assert_status 1
    [[ $stderr == *"$HOST/state/state.db"*"(move it away"* ]] || differ "$*" "a refusal" "$stderr"
}

@test "what is in the place of the history's files and is none of them is refused before it is opened" {
    local suffix kind command
    for suffix in "" -wal -shm -journal; do
        for kind in pipe link directory stranger name; do
            rm -rf state/state.db* "$BASE/away"
            case $kind in
                pipe) mkfifo "state/state.db$suffix" ;;
                link) ln -s "$BASE/away" "state/state.db$suffix" ;;
                directory) mkdir "state/state.db$suffix" ;;
                stranger) [[ $EUID -eq 0 ]] || continue; : >"state/state.db$suffix"; chown 12345 "state/state.db$suffix" ;;
                name) : >"$BASE/away"; ln "$BASE/away" "state/state.db$suffix" ;;
            esac
            for command in commit-config "param set conf a 2" "line set conf ^a a=2" "file strip conf" "option set REALM X"; do
                assert_refused_at_once $command
            done
            [[ $kind != link ]] || assert_absent "$BASE/away"
            assert_file conf $'a=1\nb=2\n'
            assert_file out/one.conf $'old\n'
        done
    done
}

@test "with ZET_HISTORY=no, a history that cannot be used stops nothing" {
    local command
    break_store
    echo ZET_HISTORY=no >>zet.conf
    for command in check-config commit-config "param set conf a 2" "option set REALM X" "template install one.conf" \
        "template process one.conf $HOST/made" "template upgrade" "commit-config --on-edit=overwrite" "file reserve conf" \
        "rollback-config --force"; do
        # shellcheck disable=SC2086  # several words
        run_zet $command
        assert_status 0
        [[ $stderr != *error* ]]
    done
    assert_file out/one.conf $'old\n'
    assert_equal "$(head -c 11 state/state.db)" "no database"
}

@test "with ZET_HISTORY=no and a history that cannot be used, edits are replaced only by word" {
    zet -q commit-config
    echo mine >>out/one.conf
    break_store
    echo ZET_HISTORY=no >>zet.conf
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"warning: $HOST/state/state.db: $BROKEN_STORE"*"$ONE: holds changes that are kept nowhere"* ]]
    run_zet commit-config --on-edit=overwrite
    assert_status 0
}

@test "a history of a newer version is refused by what records, and left alone by what looks" {
    zet -q commit-config
    /usr/bin/python3 -c 'import sqlite3, sys; sqlite3.connect(sys.argv[1]).execute("PRAGMA user_version = 99")' state/state.db
    local newer="$HOST/state/state.db: was written by a newer version of the product (use that one, or set ZET_HISTORY=no)"
    run_zet param set conf a 2
    assert_refusal 1 "$newer"
    run_zet status
    assert_status 0
    assert_stderr "zet-client: warning: $newer"
    assert_state "in sync"
    run_zet rollback-config --force
    assert_status 0
    assert_stderr "zet-client: warning: $newer"
    assert_file out/one.conf $'old\n'
}

@test "that no more files can be opened is no reason to install anything" {
    echo a=1 >conf
    zet param set conf a 2
    local count all=""
    with_descriptors() { (ulimit -n "$count" && zet "$@"); }
    for count in {5..30}; do
        capture with_descriptors param set conf a "$count"
        all+=$stderr
        capture with_descriptors history
        all+=$stderr
    done
    [[ $all == *"libsqlite3.so.0: cannot be loaded: Too many open files (let the command open more files)"* ]]
    [[ $all == *"$HOST/state/state.db: cannot be opened: Too many open files (let the command open more files)"* ]]
    [[ $all != *ZET_HISTORY* && $all != *"its journal needs"* ]] || differ "what is said" "more files" "$all"
}

@test "whoever may not read the history is told in sync or differs" {
    need_root
    copy_programs
    zet -q commit-config
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status
    assert_status 0
    [[ $output == *"$ONE: in sync"* ]]
    echo mine >>out/one.conf
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status
    assert_status 3
    [[ $output == *"$ONE: differs"* ]]
}

# with_failing CALL ERROR FILE WORD...: a command in which the call fails on the file; of no file, on all.
with_failing() {
    local place=()
    [[ -z $3 ]] || place=(-P "$3")
    capture strace -f -qq -o "$BASE/trace" "${place[@]}" -e "trace=$1" -e "inject=$1:error=$2" \
        "$ZET_BIN/zet-client" --config zet.conf "${@:4}"
    grep -q INJECTED "$BASE/trace"
}

@test "a quota that is used up is told as such, and takes nothing that the journal has" {
    echo ZET_SYNC=no >>zet.conf
    zet -q param set conf a 2
    # The file itself is written when the journal is taken over, which is put off.
    with_failing pwrite64 EDQUOT "$HOST/state/state.db" param set conf a 3
    assert_status 0
    assert_stderr ""
    grep -qx a=3 conf
    run_zet history show 2 conf --after
    [[ $output == *a=3* ]]
    with_failing pwrite64 EDQUOT "$HOST/state/state.db-wal" param set conf a 4
    assert_status 1
    [[ $stderr == *"state/state.db: the history cannot be used: database or disk is full: Disk quota exceeded (make room, or set ZET_HISTORY=no)"* ]] ||
        differ quota "told as such" "$stderr"
    grep -qx a=3 conf
}

@test "without random bytes, no store is made, and nothing is written" {
    local before=$(<conf)
    with_failing getrandom EIO "" param set conf a 2
    assert_status 1
    [[ $stderr == *"$HOST/state/state.db: cannot get random bytes for its key: "*"(run the command again, or set ZET_HISTORY=no)"* ]] ||
        differ getrandom "told" "$stderr"
    assert_file conf "$before"$'\n'
    zet -q param set conf a 2
}

@test "a key that was damaged is made anew, and told once" {
    zet -q param set conf a 2
    /usr/bin/python3 -c 'import sqlite3
with sqlite3.connect("state/state.db") as store:
    store.execute("DELETE FROM secret")'
    run_zet param set conf a 3
    assert_status 0
    [[ $stderr == *"warning: $HOST/state/state.db: its key was damaged; a new one is made, and nothing is lost"* ]] || differ key told "$stderr"
    run_zet param set conf a 4
    assert_status 0
    assert_stderr ""
}
