# What stands where a file is to be read: a pipe, a device, a socket, a directory. Nobody waits for it.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
    echo 'NAME=value' >conf
    zet -q commit-config
    cp -a . "$BASE/before"
}

teardown() {
    remove_host
}

COMMANDS=('commit-config' 'commit-config -n --diff' 'check-config' 'rollback-config' 'rollback-config -n' 'status'
    'values' 'template install --force one.conf' 'template process one.conf out/other'
    'template process one.conf out/other -n --diff' 'param get conf NAME' 'param set conf NAME new'
    'param set conf NAME new -n --diff' 'param restore conf NAME' 'line get conf N' 'line set conf N= N=1'
    'file strip conf' 'file reserve conf' 'file restore conf' 'file forget conf' 'option get DOMAIN'
    'option set DOMAIN example.net' 'explain conf' 'explain out/one.conf' 'doctor conf' 'doctor out/one.conf')

# put KIND FILE: something that is no file takes its place.
put() {
    rm -rf "$2"
    case $1 in
        pipe) mkfifo "$2" ;;
        directory) mkdir "$2" ;;
        device) ln -s /dev/zero "$2" ;;
        socket) python3 -c 'import os, socket, sys
os.chdir(os.path.dirname(sys.argv[1]))
socket.socket(socket.AF_UNIX).bind(os.path.basename(sys.argv[1]))' "$HOST/$2" ;;
    esac
}

anew() {
    find . -mindepth 1 -delete
    cp -a "$BASE/before/." .
}

# all_answer FILE [KIND...]: no command waits for what is in the file's place, nor for ever for anything else.
all_answer() {
    local file=$1 kind command
    shift
    for kind in "${@:-pipe}"; do
        for command in "${COMMANDS[@]}"; do
            anew
            put "$kind" "$file"
            # shellcheck disable=SC2086  # the words of the command
            capture timeout -s KILL 5 "$ZET_BIN/zet-client" --config "$HOST/zet.conf" $command
            [[ $status -le 3 ]] || {
                echo "$command, with a $kind as $file: exit status $status" >&2
                return 1
            }
        done
    done
}

# refused KIND FILE COMMAND TEXT: the command fails at once, and what it prints names the file and has the text.
refused() {
    anew
    put "$1" "$2"
    # shellcheck disable=SC2086
    capture timeout -s KILL 5 "$ZET_BIN/zet-client" --config "$HOST/zet.conf" $3
    assert_status 1
    [[ $output$stderr == *"$HOST/$2: $4"* ]] || differ "$3, with a $1 as $2" "$2: $4" "$output$stderr"
}

@test "no command waits for a list of targets that is no file" {
    all_answer templates/targets.toml pipe
    local kind command
    for kind in pipe directory device; do
        for command in commit-config check-config status; do
            refused "$kind" templates/targets.toml "$command" "the list of targets is no regular file"
        done
    done
    refused socket templates/targets.toml status "the list of targets cannot be read"
}

@test "no command waits for a configuration file that is no file" {
    all_answer zet.conf pipe
    local kind
    for kind in pipe directory; do
        refused "$kind" zet.conf "option get DOMAIN" "cannot be read: not a regular file"
    done
    refused socket zet.conf values "cannot be read"
}

@test "no command waits for a template that is no file" {
    all_answer templates/one.conf pipe
    all_answer etc/one.conf pipe device
    local kind
    for kind in pipe device; do
        refused "$kind" etc/one.conf check-config "is no regular file"
        refused "$kind" etc/one.conf "template process one.conf out/other" "is no regular file"
    done
    refused directory etc/one.conf check-config "is a directory"
    refused socket etc/one.conf check-config "cannot be read"
}

@test "no command waits for a file of the status that is no file" {
    local file
    for file in zet-client.status zet-client-fs.status state.db state.db-wal state.db-shm state.db-journal state.db-last zet.lock; do
        all_answer "state/$file" pipe
    done
    refused pipe state/zet-client.status status "is no regular file"
    refused pipe state/zet-client-fs.status status "is no regular file"
    local suffix
    for suffix in "" -wal -shm -journal; do
        refused directory "state/state.db$suffix" "file strip conf" "is no regular file"
        refused directory "state/state.db$suffix" check-config "is no regular file"
        refused pipe "state/state.db$suffix" commit-config "is no regular file"
        refused pipe "state/state.db$suffix" "param set conf a 2" "is no regular file"
    done
    anew
}

@test "no command waits for a target or another file that is no file" {
    all_answer out/one.conf pipe device
    all_answer out/one.conf.before_zet pipe
    all_answer out/one.conf.no_file_before_zet pipe
    all_answer out/one.conf.tmp pipe
    all_answer conf pipe device
    all_answer conf.tmp pipe
    all_answer conf.before_zet pipe
    refused pipe out/one.conf commit-config "is no regular file"
}

@test "no command waits for a module that is no file" {
    need_module_file
    mkfifo module.so
    run_zet --module "$HOST/module.so" values
    assert_status 1
    [[ $stderr == *"'$HOST/module.so': it is not a regular file "* ]]
}

@test "a signal ends a command whose report nobody reads" {
    local i
    for ((i = 0; i < 300; ++i)); do add_target "much$i" $'x\n'; done
    mkfifo "$BASE/report"
    exec 4<>"$BASE/report"
    zet commit-config -n --diff >"$BASE/report" 2>"$BASE/stderr" 3>&- 4>&- &
    local shell=$! command
    # Until it waits for room.
    python3 -c 'import array, fcntl, termios, time
held = array.array("i", [0])
while held[0] < 60000:
    time.sleep(0.05)
    fcntl.ioctl(4, termios.FIONREAD, held)
time.sleep(0.5)'
    command=$(pgrep -P "$shell" zet-client || echo "$shell")
    kill -TERM "$command"
    timeout 10 tail --pid="$command" -f /dev/null
    status=0
    wait "$shell" || status=$?
    exec 4>&-
    assert_equal "$status" 1
    assert_file "$BASE/stderr" "zet-client: error: ended by a signal (Terminated) before all was done (run the command again)
zet-client: error: standard output cannot be written: the report is not complete
"
}
