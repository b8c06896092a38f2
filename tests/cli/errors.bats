# What stands in the way of a command is told with its place and a remedy, and the exit status fits.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
}

teardown() {
    remove_host
}

# assert_all_refuse STATUS MESSAGE: each command on the whole set, and none changes a thing.
assert_all_refuse() {
    local command
    remember_host
    for command in commit-config check-config rollback-config status values; do
        run_zet "$command"
        assert_refusal "$1" "$2"
        run_zet --json "$command"
        assert_status "$1"
        assert_json 'd["command"], d["exit_status"], len(d["errors"])' "[\"$command\", $1, 1]"
    done
    assert_host_unchanged
}

# assert_wrong_use MESSAGE ARGUMENT...: as text and as a document. $BELOW are the commands whose help is named.
assert_wrong_use() {
    local message="$1 (see \"zet-client ${BELOW:+$BELOW }--help\")"
    shift
    remember_host
    capture "$ZET_BIN/zet-client" "$@"
    assert_refusal 2 "$message"
    capture "$ZET_BIN/zet-client" "$@" --json
    assert_status 2
    assert_stderr "zet-client: error: $message"
    assert_json 'd["version"], d["command"], d["exit_status"], len(d["errors"])' '[1, null, 2, 1]'
    assert_json 'd["errors"][0]' "$message"
    assert_host_unchanged
}

@test "a configuration file that cannot be read is told" {
    mv zet.conf elsewhere
    assert_all_refuse 1 "$HOST/zet.conf: cannot be read: No such file or directory (name a configuration file that exists and is readable)"
    mkdir zet.conf
    assert_all_refuse 1 "$HOST/zet.conf: cannot be read: not a regular file (name a configuration file)"
}

@test "a line of the configuration file that is no parameter is told with its number" {
    local line
    for line in 'nonsense' 'A B=1' 'REALM = spaced' '=value' '[section]'; do
        echo "$line" >>zet.conf
        run_zet commit-config
        assert_status 1
        assert_output ""
        [[ $stderr == "zet-client: error: $HOST/zet.conf:6: "*")"$'\n' ]]
        sed -i '$d' zet.conf
    done
    printf '\n# comment\n \t# comment\n  REALM=first\nREALM=last\n' >>zet.conf
    run_zet option get REALM
    assert_success last
}

@test "a module that is missing or none is told with a way out" {
    need_module_file
    echo text >text.so
    mkdir directory.so
    local module
    remember_host
    for module in missing.so text.so directory.so; do
        run_zet --module "$HOST/$module" commit-config
        assert_status 1
        assert_output ""
        [[ $stderr == "zet-client: error: "*"$HOST/$module"*" (install the product again, or name its module with --module)"$'\n' ]]
    done
    assert_host_unchanged
}

@test "a program without its module is told so" {
    need_module_file
    copy_programs
    rm "$BASE/programs/lib/zet/libzet-config.so"
    capture "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" commit-config
    assert_status 1
    [[ $stderr == "zet-client: error: "*"/lib/zet/libzet-config.so"*": No such file or directory (install the product again, or name its module with --module)"$'\n' ]]
}

@test "root loads no module that others may write" {
    need_module_file
    need_root
    copy_programs
    chmod 666 "$BASE/programs/lib/zet/libzet-config.so"
    capture "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" commit-config
    assert_status 1
    [[ $stderr == "zet-client: error: "*"/lib/zet/libzet-config.so"*" (install the product again, or name its module with --module)"$'\n' ]]
    assert_equal "$(names_in out)" ""
}

@test "a state directory that is missing, or whose lock is none, keeps writers away" {
    mv state/zet.lock "$BASE/lock"
    rmdir state
    run_zet commit-config
    assert_refusal 1 "$HOST/state/zet.lock: cannot be opened: No such file or directory (create the directory ZET_VAR_LIB_DIR, or run as a user who may write there)"
    mkdir state
    mkdir state/zet.lock
    run_zet commit-config
    assert_refusal 1 "$HOST/state/zet.lock: cannot be opened: Is a directory (move it away)"
    rmdir state/zet.lock
    python3 -c 'import socket, sys; socket.socket(socket.AF_UNIX).bind(sys.argv[1])' state/zet.lock
    run_zet param set zet.conf a b
    assert_refusal 1 "$HOST/state/zet.lock: cannot be opened: No such device or address (move it away)"
    rm state/zet.lock
    ln -s "$HOST/elsewhere" state/zet.lock
    run_zet commit-config
    assert_status 1
    [[ $stderr == "zet-client: error: $HOST/state/zet.lock: cannot be opened: "* ]]
    assert_absent elsewhere
    run_zet commit-config -n
    assert_status 1
    assert_stderr "zet-client: error: $HOST/state/zet.lock: is a link that leads nowhere (remove it, or make what it names)
zet-client: nothing was changed"
}

@test "no state directory keeps a file from going back" {
    rm -f out/*
    printf 'old\n' >out/one.conf
    local kind lock="$HOST/state/zet.lock: cannot be opened: "
    for kind in missing file directory link; do
        zet -q commit-config one.conf
        rm -r state
        case $kind in
            file) : >state ;;
            directory) mkdir -p state/zet.lock ;;
            link) mkdir state && ln -s nowhere state/zet.lock ;;
        esac
        run_zet rollback-config out/one.conf
        assert_status 0
        assert_file out/one.conf $'old\n'
        assert_absent out/one.conf.before_zet
        [[ $stderr == "zet-client: warning: $lock"*"; the files go back all the same, and other commands are not kept away"* ]] || differ "$kind" warning "$stderr"
        rm -rf state
        mkdir state
    done
}

@test "a user who may not write is told so" {
    need_root
    copy_programs
    remember_host
    local command
    for command in commit-config rollback-config; do
        capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" "$command"
        assert_refusal 1 "$HOST/state/zet.lock: cannot be opened: Permission denied (create the directory ZET_VAR_LIB_DIR, or run as a user who may write there)"
    done
    assert_host_unchanged
    chown 65534 state state/zet.lock etc
    remember_files
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" commit-config
    assert_refusal 1 "$HOST/out: the directory of $HOST/out/one.conf cannot be written: Permission denied (run as a user who may, or on a file system that can be written)
zet-client: nothing was changed"
    assert_unchanged_but_staging
}

@test "a target that a user cannot look at is told" {
    need_root
    copy_programs
    zet commit-config
    chmod 700 out
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status
    assert_status 1
    assert_stderr "zet-client: warning: $HOST/state/state.db: may not be read, so that files edited in place, and what is left over, are not told (run the command as a user who may)
zet-client: error: $HOST/out/one.conf: its state cannot be told: $HOST/out/one.conf: cannot be looked at: Permission denied (run the command as a user who may)"
}

@test "several problems of several kinds come together, and nothing is written" {
    mkdir out/one.conf
    add_target two.conf $'${nope}\n'
    rm -r etc
    echo 'unknown = 1' >>templates/targets.toml
    remember_files
    run_zet commit-config
    assert_refusal 1 "$HOST/templates/targets.toml:7:1: unknown key \"unknown\" (use target, roles, when, check, check_timeout, restart, reload, secret, notice, trust, mode, owner or enabled)
zet-client: error: $HOST/etc: the directory of the templates' working copies cannot be used: No such file or directory (create it, or correct ZET_CFG_DIR)
zet-client: error: $HOST/out/one.conf: is no regular file (move it away, or correct the target)
zet-client: error: $HOST/templates/two.conf:1:1: placeholder \"\${nope}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)
zet-client: nothing was changed"
    assert_unchanged_but_staging
}

@test "a place for temporary files that is none is told" {
    mkdir out/keep
    export TMPDIR=$BASE/nowhere
    local command
    for command in commit-config status; do
        run_zet "$command" -n
        assert_status 1
        assert_stderr "zet-client: error: $BASE/nowhere: no directory for temporary files can be made here: No such file or directory (make room, or name another directory with TMPDIR)"
    done
    # A commit has a place of its own.
    run_zet commit-config
    assert_status 0
    mkdir "$TMPDIR"
}

@test "a language of the files that the host does not have is told" {
    echo 'ZET_LANG=xx_YY.UTF-8' >>zet.conf
    echo 'a=1' >conf
    remember_files
    local problem="'xx_YY.UTF-8' is no value for ZET_LANG, which has to be a locale of this host (generate it, or take one that \"locale -a\" lists)"
    run_zet commit-config
    assert_refusal 1 "$HOST/zet.conf:6:10: $problem
zet-client: nothing was changed"
    run_zet check-config
    assert_status 1
    assert_output "$HOST/zet.conf:6:10: $problem"
    run_zet param set conf a 2
    assert_refusal 1 "$HOST/zet.conf: $problem"
    assert_unchanged_but_staging
}

@test "a diff that cannot be made is told, and nothing is written" {
    remember_host
    mkdir "$BASE/empty"
    capture env PATH="$BASE/empty" "$ZET_BIN/zet-client" --config zet.conf commit-config -n --diff
    assert_status 1
    assert_stderr "zet-client: error: diff: cannot be started: No such file or directory (install it, or correct its name)"
    assert_host_unchanged
}

@test "a report that nobody can read is a failure, though the work is done" {
    local status=0
    zet commit-config >/dev/full 2>"$BASE/stderr" || status=$?
    assert_equal "$status" 1
    assert_file "$BASE/stderr" $'zet-client: error: standard output cannot be written: No space left on device (the report is not complete)\n'
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    [[ -e state/zet-client.status ]]
}

@test "a report for which no output was opened is a failure, and a command without one is none" {
    local words
    for words in 'history export' 'template process one.conf -' 'commit-config' '--help'; do
        status=0
        # shellcheck disable=SC2086
        zet $words >&- 2>"$BASE/stderr" || status=$?
        assert_equal "$status" 1
        assert_file "$BASE/stderr" $'zet-client: error: standard output cannot be written: Bad file descriptor (the report is not complete)\n'
    done
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    zet -q commit-config >&-
}

@test "help and version that nobody can read are failures" {
    local option
    for option in --help --version; do
        status=0
        "$ZET_BIN/zet-client" "$option" >/dev/full 2>"$BASE/stderr" || status=$?
        assert_equal "$status" 1
        assert_file "$BASE/stderr" $'zet-client: error: standard output cannot be written: No space left on device (the report is not complete)\n'
    done
}

@test "an error or a warning that is no UTF-8 is flagged in the document" {
    run_zet param get $'g\xff' A --json
    assert_status 1
    assert_json 'd["errors_lossy"], "\ufffd" in d["errors"][0]' '[true, true]'
    run_zet param get gone A --json
    assert_status 1
    assert_json '"errors_lossy" in d' false
}

@test "an error of the core has a remedy by its cause" {
    mkdir full
    echo 'a=1' >full/conf
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/full/conf" -e trace=copy_file_range \
        -e inject=copy_file_range:error=ENOSPC "$ZET_BIN/zet-client" --config zet.conf param set full/conf a 2
    assert_status 1
    [[ $stderr == *": No space left on device (make room, then run the command again)"$'\n' ]]
    assert_file full/conf $'a=1\n'
}

@test "a rendering that cannot be saved has a remedy, though the module knows no cause" {
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/out/new.tmp" -e trace=/write -e inject=/write:error=ENOSPC \
        "$ZET_BIN/zet-client" --config zet.conf template process one.conf "$HOST/out/new"
    assert_refusal 1 "Failed to save file '$HOST/out/new.tmp' (make room, or see to the rights of its directory)"
    assert_absent out/new
}

@test "a file that cannot be opened has a remedy, though the module tells the cause in words only" {
    echo 'a=1' >conf
    local get=("$ZET_BIN/zet-client" --config zet.conf line get "$HOST/conf" '^a=') last
    strace -f -qq -o "$BASE/trace" -P "$HOST/conf" -e trace=/fstat "${get[@]}"
    last=$(grep -c . "$BASE/trace")
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/conf" -e trace=/fstat -e "inject=/fstat:error=EIO:when=$last" "${get[@]}"
    assert_refusal 1 "Error stat '$HOST/conf':Input/output error (repair or replace the file or its file system)"
}

@test "a file system that cannot be written is told so, and not laid to the user" {
    mkdir sub
    echo 'a=1' >sub/conf
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/sub" -e trace=/access -e inject=/access:error=EROFS \
        "$ZET_BIN/zet-client" --config zet.conf param set "$HOST/sub/conf" a 2
    assert_refusal 1 "$HOST/sub: cannot be written, so $HOST/sub/conf cannot be replaced: Read-only file system (let the file system be writable)"
    assert_file sub/conf $'a=1\n'
}

@test "a reader that goes away keeps nothing from being written" {
    local i
    for i in {1..30}; do add_target "t$i" "$i"$'\n'; done
    zet commit-config --diff | true
    for i in {1..30}; do assert_made "t$i" "$i"$'\n'; done
}

@test "without a directory to be in, a root by a relative name is told" {
    mkdir gone
    capture sh -c 'cd gone && rmdir ../gone && exec "$@"' sh "$ZET_BIN/zet-client" --config "$HOST/zet.conf" --root . status
    assert_refusal 1 "the current directory cannot be found (change to one that exists)"
}

@test "a command that is missing or unknown is wrong use" {
    assert_wrong_use "a command is missing"
    assert_wrong_use 'unknown command "frobnicate"' frobnicate
    BELOW=param assert_wrong_use "a command is missing" param
}

# assert_mistyped WHAT NAME ARGUMENT...: the name that was meant is told; none when it is empty. $BELOW as above.
assert_mistyped() {
    local what=$1 meant=${2:+"did you mean \"$2\"? "}
    shift 2
    capture "$ZET_BIN/zet-client" "$@"
    assert_refusal 2 "$what (${meant}see \"zet-client ${BELOW:+$BELOW }--help\")"
}

@test "a command or an option that is mistyped is told with the one that was meant" {
    assert_mistyped 'unknown command "comit-config"' commit-config comit-config
    assert_mistyped 'unknown command "comit-config"' commit-config comit-config param
    assert_mistyped 'unknown command "commit"' commit-config commit
    BELOW=param assert_mistyped 'unknown command "gte"' get param gte conf a
    BELOW=option assert_mistyped 'unknown command "lsit"' list option lsit
    local unexpected="The following argument was not expected:"
    BELOW=commit-config assert_mistyped "$unexpected --dryrun" --dry-run commit-config --dryrun
    BELOW="param set" assert_mistyped "$unexpected --no-marker" --no-markers param set conf a b --no-marker
    BELOW=commit-config assert_mistyped "$unexpected --sett=A=B" --set commit-config --sett=A=B
    BELOW=rollback-config assert_mistyped "$unexpected --ot" --to rollback-config --ot 1
}

@test "a command that is unknown below another is not laid to one that stands elsewhere" {
    BELOW=param assert_mistyped 'unknown command "status"' "" param status
    BELOW=option assert_mistyped 'unknown command "history"' "" option history
    BELOW=param assert_mistyped 'unknown command "list"' "" param list
    assert_mistyped 'unknown command "get"' "" get param conf a
    assert_mistyped 'unknown command "list"' "" list
    BELOW=undo assert_mistyped "The following argument was not expected: --to" "" undo --to 1
}

@test "an option without a command is told to be one" {
    assert_mistyped "The following argument was not expected: --jsno" --json --jsno
    assert_mistyped "The following argument was not expected: --dryrun" --dry-run --dryrun
    assert_mistyped "The following argument was not expected: -x" "" -x
    BELOW=param assert_mistyped "The following arguments were not expected: --secton x" --section param --secton x
    capture "$ZET_BIN/zet-client" param --section x
    assert_refusal 2 'The following arguments were not expected: --section x (put it behind its command, or see "zet-client param --help")'
}

@test "what history does not expect is told by its name" {
    BELOW=history assert_mistyped 'unknown command "shwo"' show history shwo 1
    BELOW=history assert_mistyped 'The following argument was not expected: 1' "" history conf 1
    BELOW="history show" assert_mistyped 'The following argument was not expected: --count' "" history show 1 -N 1
    BELOW="history show" assert_mistyped 'The following argument was not expected: --count' "" history -N 1 show 1
    BELOW="history show" assert_mistyped 'The following argument was not expected: conf' "" history conf show 1
}

@test "an option that is unknown, misses its value or contradicts another is wrong use" {
    BELOW=status assert_wrong_use "The following argument was not expected: --nope" status --nope
    BELOW=commit-config assert_wrong_use "The following argument was not expected: --force" commit-config --force
    BELOW=check-config assert_wrong_use "The following argument was not expected: --set=A=B" check-config --set=A=B
    BELOW=status assert_wrong_use "The following argument was not expected: now" status now
    BELOW=status assert_wrong_use "--quiet excludes --verbose" status -q -v
    BELOW=status assert_wrong_use "--color: \"red\" is none of auto, always, never" status --color red
    BELOW=status assert_wrong_use "--log: \"file\" is none of stderr, syslog" status --log file
    capture "$ZET_BIN/zet-client" status --config
    assert_refusal 2 '--config: its value is missing (see "zet-client status --help")'
    BELOW=status assert_wrong_use "--root can be given once only" --root a --root b status
    BELOW=status assert_wrong_use "--dry-run takes no value" status --dry-run=often
}

@test "a flag with a value is wrong use, whatever the value" {
    printf 'A=1\n' >f
    local value
    for value in -1 0 2 off no false yes on; do
        BELOW="param set" assert_wrong_use "--dry-run takes no value" param set f A 4 "--dry-run=$value"
        assert_wrong_use "--dry-run takes no value" -n "--dry-run=$value" param set f A 4
        BELOW="param set" assert_wrong_use "--no-markers takes no value" param set f A 4 "--no-markers=$value"
        assert_wrong_use "--json takes no value" "--json=$value" status
        BELOW=param assert_wrong_use "--help takes no value" param "--help=$value"
        assert_wrong_use "--version takes no value" "--version=$value"
    done
    assert_file f $'A=1\n'
}

@test "a value that was taken for an option is told with what makes it one" {
    printf 'a=1\n' >conf
    local remedy='(put "--" before a value that begins with "-", or see "zet-client param set --help")'
    run_zet param set conf a -x
    assert_refusal 2 "VALUE is required $remedy"
    run_zet param set conf a --debug=1
    assert_refusal 2 "VALUE is required $remedy"
    run_zet param set conf a -n
    assert_refusal 2 "VALUE is required $remedy"
    run_zet line get conf -x
    assert_refusal 2 "PATTERN is required ${remedy/param set/line get}"
    run_zet -n param set conf a
    assert_refusal 2 'VALUE is required (see "zet-client param set --help")'
    run_zet --json param set conf a -x
    assert_json 'd["errors"]' "$(python3 -c 'import json, sys; print(json.dumps(sys.argv[1:]))' "VALUE is required $remedy")"
    zet param set --no-markers conf a -- -x
    assert_file conf $'a=-x\n'
    zet param set --no-markers conf a -5
    assert_file conf $'a=-5\n'
}

@test "an empty name does not stand for the host itself" {
    local option options=(--root --config)
    is_built_in || options+=(--module)
    for option in "${options[@]}"; do
        capture "$ZET_BIN/zet-client" "$option" "" status
        assert_refusal 2 "$option: its name is empty (see \"zet-client status --help\")"
    done
}

@test "the description says what the program does" {
    capture "$ZET_BIN/zet-init" --help
    [[ $output == "Write, edit and take back the configuration files of this host, a server of a network domain"$'\n'* ]]
    capture "$ZET_BIN/zet-client" --help
    [[ $output == *", a client of a network domain"$'\n'* ]]
}

@test "help and version are no errors" {
    capture "$ZET_BIN/zet-client" --help
    assert_status 0
    assert_stderr ""
    local command
    for command in commit-config check-config rollback-config status; do
        [[ $output == *$'\n'"  $command "* ]]
        capture "$ZET_BIN/zet-client" "$command" --help
        assert_status 0
        capture "$ZET_BIN/zet-client" --help
    done
    capture "$ZET_BIN/zet-init" -V
    assert_status 0
    [[ $output =~ ^zet-init\ [0-9]+\.[0-9]+\.[0-9]+$'\n'$ ]]
}

@test "the log goes to the standard error stream with its level, or elsewhere" {
    run_zet -v commit-config
    assert_status 0
    [[ $stderr == *notice*"Process config file template"* ]]
    run_zet -v --log syslog commit-config
    assert_status 0
    [[ $stderr != *Process* ]]
}

@test "a check that refuses is heard by a command whose parent does not want to hear of ended programs" {
    add_target checked.conf $'text\n' 'check = ["false", "{}"]'
    capture python3 -c 'import os, signal, sys
signal.signal(signal.SIGCHLD, signal.SIG_IGN)
os.execv(sys.argv[1], sys.argv[1:])' "$ZET_BIN/zet-client" --config "$HOST/zet.conf" commit-config
    assert_status 1
    [[ $stderr == *'its check "false" refuses'* ]]
    assert_absent out/checked.conf
}

@test "templates that use a setting of the domain that is not there are refused" {
    add_target three.conf $'${server} ${realm}\n'
    sed -i '/^DOMAIN=/d; s/^SERVER=.*/SERVER=/' zet.conf
    remember_files
    run_zet commit-config three.conf
    assert_refusal 1 "$HOST/zet.conf: DOMAIN is not set, so that \${realm} has no value (add a line DOMAIN=VALUE, or use \"option set\")
zet-client: error: $HOST/zet.conf:1:8: SERVER is empty, so that \${server} has no value (give it a value)
zet-client: nothing was changed"
    assert_files_unchanged
    echo REALM=OTHER >>zet.conf
    echo SERVICE_DISCOVERY=yes >>zet.conf
    echo '${realm} ${kdc_server}' >templates/three.conf
    run_zet commit-config three.conf
    assert_status 0
}

@test "a directory of the product that is not absolute is refused" {
    local key
    for key in ZET_CFG_DIR ZET_CFG_TEMPL_DIR ZET_VAR_LIB_DIR; do
        cp zet.conf relative.conf
        echo "$key=etc" >>relative.conf
        capture "$ZET_BIN/zet-client" --config relative.conf status
        assert_refusal 1 "relative.conf:$(wc -l <relative.conf):$((${#key} + 2)): 'etc' is no value for $key, which has to be an absolute path (begin it with \"/\")"
    done
}

@test "what ended a command is in its document in parts" {
    run_zet --json param set gone a 2
    assert_status 1
    assert_json '[d["failure"][name] for name in ("file", "line", "problem", "remedy", "errno")]' \
        '["gone", null, "does not exist", "create it, or correct the path", "ENOENT"]'
    assert_json 'd["errors"]' '["gone: does not exist (create it, or correct the path)"]'
    printf '%s\n' '# ----ZET_END----' >conf
    run_zet --json param set conf a 2
    assert_json '[d["failure"][name] for name in ("file", "line", "column", "errno")]' '["conf", 1, null, null]'
    echo broken >>zet.conf
    run_zet --json values
    assert_json '[d["failure"][name] for name in ("file", "problem", "remedy")]' \
        '["'"$HOST"'/zet.conf", "no \"=\" in the line", "write NAME=value, or \"#\" before a comment"]'
}

@test "a command that was not ended too early has no failure in its document" {
    run_zet --json values
    assert_status 0
    assert_json 'd["failure"]' null
    run_zet --json param get
    assert_status 2
    assert_json 'd["failure"]' null
}

@test "root, to whom an attribute forbids it, is told of that" {
    need_root
    zet -q commit-config
    echo x >>etc/one.conf
    local flag checked committed remedy="take the attribute away that forbids it; lsattr shows those of a file and of its directory"
    for flag in i a; do
        chattr "+$flag" out 2>/dev/null || skip "this file system knows no such files"
        run_zet check-config
        checked="$status $output"
        run_zet commit-config
        committed="$status $stderr"
        run_zet rollback-config
        chattr "-$flag" out
        [[ $stderr == *"Operation not permitted ($remedy)"* ]]
        assert_equal "$checked" "1 $HOST/out: the directory of $HOST/out/one.conf has an attribute that keeps its files from being replaced (chattr -$flag it)"$'\n'
        [[ $committed == "1 "*"(chattr -$flag it)"$'\n'*"nothing was changed"* ]]
        assert_equal "$(names_in out)" "one.conf one.conf.no_file_before_zet"
    done
    chattr +i state/zet.lock
    run_zet commit-config
    chattr -i state/zet.lock
    assert_refusal 1 "$HOST/state/zet.lock: cannot be opened: Operation not permitted ($remedy)"
}

@test "who goes back without the lock is told why that is not recorded" {
    zet -q commit-config
    rm state/zet.lock
    mkdir state/zet.lock
    run_zet rollback-config
    [[ $EUID -ne 0 ]] || assert_stderr "zet-client: warning: $HOST/state/zet.lock: cannot be opened: Is a directory (move it away); the files go back all the same, and other commands are not kept away
zet-client: warning: what is changed is not recorded: $HOST/state/zet.lock cannot be locked (let it be a regular file that can be written)
zet-client: error: what was put back is still on record as committed (run the command again once $HOST/state/zet.lock can be locked)"
}

# with_little_memory WORD...: the command, which can start with it and no more.
with_little_memory() {
    (ulimit -v 200000 && zet "$@")
}

@test "a command that runs out of memory prints its document all the same" {
    with_little_memory --version >/dev/null 2>&1 || skip "the programs of this build need more to start"
    truncate -s 400M huge
    local told="zet-client: error: out of memory (free some, then run the command again)"
    capture with_little_memory explain huge
    assert_status 1
    assert_output ""
    assert_stderr "$told"
    capture with_little_memory explain huge --json
    assert_status 1
    assert_stderr "$told"
    assert_json 'd["errors"], d["failure"]["errno"], d["exit_status"]' '[["out of memory (free some, then run the command again)"], "ENOMEM", 1]'
}

@test "the failure of a broken list names the first place that is wrong" {
    printf '[templates."one.conf"]\ntarget = 1\n[templates."two.conf"]\ntarget = 2\n' >templates/targets.toml
    run_zet check-config --json
    local first
    first=$(json '[d["problems"][0][name] for name in ("file", "line", "column", "problem", "remedy")]')
    local words
    for words in status "template list"; do
        # shellcheck disable=SC2086
        run_zet $words --json
        assert_status 1
        assert_json '[d["failure"][name] for name in ("file", "line", "column", "problem", "remedy")]' "$first"
        assert_json 'd["failure"]["line"], len(d["failure"]["output"].splitlines()) > 1' '[1, true]'
        assert_json 'd["errors"][0].splitlines()[0]' "the list of targets is broken:"
    done
}
