# Shared by the tests of the shipped templates with real services. ZET_BIN names the directory of the commands.

SOURCE_DIR=$(cd "$BATS_TEST_DIRNAME/../.." && pwd)
export ZET_BIN=${ZET_BIN:-$SOURCE_DIR/build/test/bin}
export LC_ALL=C TZ=UTC
export PATH=$PATH:/usr/sbin:/sbin

need() {
    local tool
    for tool in "$@"; do
        command -v "$tool" >/dev/null || {
            echo "$tool is missing: install the packages of tests/services/packages.txt" >&2
            return 1
        }
    done
}

# example_root ROLE DIRECTORY
example_root() {
    "$SOURCE_DIR/script/example-root" "$@"
}

# set_param ROOT NAME VALUE: the last of two lines wins.
set_param() {
    printf '%s=%s\n' "$2" "$3" >>"$1/etc/zet/zet.conf"
}

# amend_template ROOT NAME SED-SCRIPT: a test that changes nothing in the template would prove nothing.
amend_template() {
    local file=$1/usr/share/zet/templates/$2
    cp "$file" "$file.shipped"
    sed -i "$3" "$file"
    ! cmp -s "$file" "$file.shipped" || {
        echo "the amendment does not fit the template $2: $3" >&2
        return 1
    }
    rm "$file.shipped"
}

commit() {
    "$ZET_BIN/$1" --root "$2" commit-config
}

# A port of 127.0.0.1 that nobody listens on, below those that the kernel hands out by itself.
free_port() {
    local port
    while port=$((RANDOM % 12000 + 20000)); do
        (exec 9<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null || break
    done
    echo "$port"
}

# start_server NAME PORT COMMAND...: in the background, until the port answers. Its pid goes to a file, so
# that stop_servers finds it whatever happens in between.
start_server() {
    local name=$1 port=$2
    shift 2
    timeout 300 "$@" >"$BATS_FILE_TMPDIR/$name.log" 2>&1 3>&- 4>&- &
    echo $! >"$BATS_FILE_TMPDIR/$name.pid"
    wait_for_port "$port" && return
    echo "$name does not answer on port $port:" >&2
    cat "$BATS_FILE_TMPDIR/$name.log" >&2
    return 1
}

wait_for_port() {
    local tries
    for ((tries = 0; tries < 100; tries++)); do
        (exec 9<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null && return
        sleep 0.1
    done
    return 1
}

stop_servers() {
    local file pid
    for file in "$BATS_FILE_TMPDIR"/*.pid; do
        [[ -e $file ]] || continue
        pid=$(<"$file")
        kill "$pid" 2>/dev/null || continue
        while kill -0 "$pid" 2>/dev/null; do sleep 0.05; done
    done
}
