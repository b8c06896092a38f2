# Hosts of their own inside this one: each is a process that holds a mount, a process and a host name space,
# with private copies of what the commands and the services write to. They share one network of their own, in
# which every address is loopback. A host ends, with all that runs on it, when its process does.

hosts_are_possible() {
    [[ $(id -u) -eq 0 ]] && unshare --mount --net --uts --pid --fork true 2>/dev/null
}

# Runs inside of a new host. $1: the tree that script/example-root laid out for it, $2: its name. What the packages of
# this machine left in the private directories stays, but for what makes a host one of a domain.
furnish_host() {
    local tree=$1 dir
    hostname "$2"
    ip link set lo up

    mount -t tmpfs -o mode=755 tmpfs /mnt
    for dir in /etc /var/lib/sss /var/lib/pam /var/cache/debconf; do
        mkdir -p "/mnt$dir"
        cp -aT "$dir" "/mnt$dir"
        mount --bind "/mnt$dir" "$dir"
    done
    for dir in /home /srv /run /var/lib/krb5kdc /var/lib/ldap /var/lib/nfs /var/log; do
        mount -t tmpfs -o mode=755 tmpfs "$dir"
    done
    mount -t tmpfs -o mode=1777 tmpfs /var/tmp
    chown openldap: /var/lib/ldap
    mkdir /var/log/sssd
    pam-auth-update --disable krb5 sss ldap mkhomedir

    rm -f /etc/krb5.keytab /etc/sssd/sssd.conf
    cp -R "$tree/etc/." /etc/
    mkdir -p /srv/zet/state /srv/domain
    [ ! -d "$tree/usr/share/zet/templates" ] || cp -a "$tree/usr/share/zet/templates" /srv/zet/
    cat >/etc/hosts <<-'END'
		127.0.0.1 localhost
		127.0.0.2 server.example.org server _kerberos_tcp _kadmin_tcp _ldap_tcp
		127.0.0.4 box1.example.org box1
		127.0.0.3 client.example.org client
		127.0.0.5 second.example.org second
	END
}

# keep_source SOURCE COMMAND...: what the command puts a private directory over is there again where the tests are below it.
keep_source() {
    local source=$1 held
    shift
    exec {held}<"$source"
    "$@"
    if [ ! -e "$source/CMakeLists.txt" ]; then
        mkdir -p "$source"
        mount --no-canonicalize --bind "/proc/self/fd/$held" "$source"
    fi
    exec {held}<&-
}

# start_host HOST TREE NAME [NEIGHBOUR]: with a neighbour, on that host's network. $FURNISH furnishes it, in its own way.
start_host() {
    local host=$1 tree=$2 name=$3 join=() network=--net log=$BATS_FILE_TMPDIR/$1.host furnish=${FURNISH:-furnish_host} tries
    if [[ $# -eq 4 ]]; then
        join=(nsenter --target "$(<"$BATS_FILE_TMPDIR/$4.pid")" --net)
        network=
    fi
    "${join[@]}" unshare $network --mount --uts --pid --fork --kill-child --mount-proc \
        bash -euc "$(declare -f keep_source "$furnish"); keep_source '$SOURCE_DIR' $furnish '$tree' '$name.example.org'
            echo ready; exec sleep 500" \
        >"$log" 2>&1 3>&- 4>&- &
    local outer=$!
    for ((tries = 0; tries < 100; tries++)); do
        # The first process of the host is the one that can be entered, and that takes all others with it.
        pgrep --parent "$outer" >"$BATS_FILE_TMPDIR/$host.pid" && grep -qx ready "$log" && return
        sleep 0.1
    done
    cat "$log" >&2
    return 1
}

# on HOST COMMAND...
on() {
    local pid
    pid=$(<"$BATS_FILE_TMPDIR/$1.pid")
    shift
    nsenter --target "$pid" --mount --net --uts --pid --wd=/ \
        env KRB5CCNAME=FILE:/run/tickets "$@" 3>&- 4>&-
}

stop_hosts() {
    local file pid
    for file in "$BATS_FILE_TMPDIR"/*.pid; do
        [[ -s $file ]] || continue
        pid=$(<"$file")
        kill -KILL "$pid" 2>/dev/null || continue
        while kill -0 "$pid" 2>/dev/null; do sleep 0.05; done
    done
}
