# Hosts of their own inside this one: each is a process that holds a mount, a process and a host name space,
# with private copies of what the commands and the services write to. They share one network of their own, in
# which every address is loopback. A host ends, with all that runs on it, when its process does.

hosts_are_possible() {
    [[ $(id -u) -eq 0 ]] && unshare --mount --net --uts --pid --fork true 2>/dev/null
}

# Runs inside of a new host. $1: the tree that script/example-root laid out for it, $2: its name.
furnish_host() {
    local tree=$1 dir
    hostname "$2"
    ip link set lo up

    mount -t tmpfs -o mode=755 tmpfs /mnt
    cp -a /etc /mnt/etc
    mount --bind /mnt/etc /etc
    for dir in /srv /run /var/lib/krb5kdc /var/lib/ldap /var/lib/nfs; do
        mount -t tmpfs -o mode=755 tmpfs "$dir"
    done
    mount -t tmpfs -o mode=1777 tmpfs /var/tmp
    chown openldap: /var/lib/ldap

    cp -R "$tree/etc/." /etc/
    mkdir -p /srv/zet/state /srv/domain
    cp -a "$tree/usr/share/zet/templates" /srv/zet/
    cat >/etc/hosts <<-'END'
		127.0.0.1 localhost
		127.0.0.2 server.example.org server _kerberos_tcp _kadmin_tcp _ldap_tcp
		127.0.0.4 box1.example.org box1
		127.0.0.3 client.example.org client
	END
    echo "passwd: files
group: files
hosts: files" >/etc/nsswitch.conf
}

# start_host HOST TREE NAME [NEIGHBOUR]: with a neighbour, on that host's network.
start_host() {
    local host=$1 tree=$2 name=$3 join=() network=--net log=$BATS_FILE_TMPDIR/$1.host tries
    if [[ $# -eq 4 ]]; then
        join=(nsenter --target "$(<"$BATS_FILE_TMPDIR/$4.pid")" --net)
        network=
    fi
    "${join[@]}" unshare $network --mount --uts --pid --fork --kill-child --mount-proc \
        bash -euc "$(declare -f furnish_host); furnish_host '$tree' '$name.example.org'; echo ready; exec sleep 500" \
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
