# docs/first-domain.md, word for word, on two machines of their own: what it says to type is run, and it ends as it says.
# Its packages are those of this machine; "systemctl" there starts the real services.

load services
load hosts
load domain

GUIDE=$SOURCE_DIR/docs/first-domain.md
PASSWORD=secret

setup_file() {
    machines_are_possible || return 0
    need krb5kdc kadmind slapd sssd exportfs openssl ip update-ca-certificates
    stand_ins
    FURNISH=furnish_machine start_host server "$BATS_FILE_TMPDIR" server
    FURNISH=furnish_machine start_host client "$BATS_FILE_TMPDIR" client server
    on server ip address add 192.0.2.1/32 dev lo
    on server ip address add 192.0.2.2/32 dev lo
    for host in server client; do install_product "$host"; done
}

setup() {
    machines_are_possible || skip "only root can make machines inside this one, and only where name spaces and overlays are allowed"
}

teardown_file() {
    # The login's ticket is in a keyring of the kernel, which all hosts in here share.
    ! machines_are_possible || KRB5CCNAME=KEYRING:persistent:10001 setpriv --reuid 10001 kdestroy -q || true
    stop_hosts
}

machines_are_possible() {
    hosts_are_possible && unshare --mount sh -c 'mount -t tmpfs tmpfs /mnt && mkdir /mnt/up /mnt/work &&
        mount -t overlay -o lowerdir=/usr,upperdir=/mnt/up,workdir=/mnt/work overlay /usr' 2>/dev/null
}

# Runs inside of a new machine. $1: where the stand-ins are, $2: its name. What this machine and its packages have in
# their directories is there, as before anybody touched it.
furnish_machine() {
    local dir
    hostname "$2"
    ip link set lo up
    mount -t tmpfs -o mode=755 tmpfs /mnt
    for dir in /etc /home /root /srv /usr /var; do
        mkdir -p "/mnt$dir" "/mnt/work$dir"
        mount -t overlay -o "lowerdir=$dir,upperdir=/mnt$dir,workdir=/mnt/work$dir" overlay "$dir"
    done
    mount -t tmpfs -o mode=755 tmpfs /run
    cp "$1/systemctl" "$1/apt-get" /usr/local/sbin/

    rm -rf /etc/krb5.keytab /etc/krb5.conf /etc/krb5kdc/* /etc/zet /etc/sssd/sssd.conf /etc/ldap/slapd.d /etc/ldap/slapd.conf
    rm -rf /var/lib/krb5kdc/* /var/lib/ldap/* /var/lib/sss/db/* /var/lib/sss/mc/* /var/lib/zet
    pam-auth-update --disable krb5 sss ldap mkhomedir
    sed -i 's/ *sss$//; s/ *ldap$//' /etc/nsswitch.conf
    echo "127.0.0.1 localhost" >/etc/hosts
}

# install_product HOST: by the commands of the README, from what is built already.
install_product() {
    local command
    while read -r command; do
        [[ $command != script/build ]] || continue
        on "$1" bash -euc "${command/build\/release/$ZET_BIN/..}" >>"$BATS_FILE_TMPDIR/$1.installed" </dev/null
    done < <(installation || echo "echo 'the README does not say how to install' >&2; exit 1")
}

# The commands of the README's section on the installation that begin with a build: those that do without packages.
installation() {
    sed -n '/^## Installation$/,/^## /p' "$SOURCE_DIR/README.md" | awk -v RS= '/^    script\/build\n/' | sed 's/^    //' | grep .
}

stand_ins() {
    cat >"$BATS_FILE_TMPDIR/systemctl" <<-'END'
		#!/bin/bash
		# What the units of these services do, where there is no systemd.
		set -eu
		[[ $1 == restart ]]
		for name in "${@:2}"; do
		    case $name in
		        krb5-kdc | krb5-admin-server | slapd) service "$name" restart ;;
		        sssd)
		            if [[ -s /run/sssd.pid ]]; then kill "$(</run/sssd.pid)"; fi
		            sssd -D --logger=files
		            ;;
		        nfs-kernel-server)
		            exportfs -r
		            ! grep -qw nfsd /proc/filesystems || rpc.nfsd
		            ;;
		        rpc-gssd) rpc.gssd ;;
		        *) exit 1 ;;
		    esac
		done
	END
    cat >"$BATS_FILE_TMPDIR/apt-get" <<-'END'
		#!/bin/bash
		# What is to be installed is there, and known to be needed.
		set -eu
		[[ $1 == install && $2 == -y ]]
		for name in "${@:3}"; do
		    [[ $(dpkg-query -W -f '${db:Status-Status}' "$name") == installed ]]
		    grep -qx "$name" "$PACKAGES"
		done
	END
    chmod 755 "$BATS_FILE_TMPDIR"/{systemctl,apt-get}
}

sections() {
    sed -n 's/^## //p' "$GUIDE"
}

# commands SECTION: those of the guide, each ended with a NUL byte; a line without a prompt belongs to the one before.
commands() {
    awk -v section="## $1" '
        /^## / { inside = $0 == section }
        !inside { next }
        $0 == "" { blank = blank "\n"; next }
        !/^    / { blank = ""; belongs = 0; next }
        { line = substr($0, 5) }
        line ~ /^(server|client)# / { if (count++) printf "%c", 0; printf "%s", line; belongs = 1; blank = ""; next }
        !belongs { print "no command: " line >"/dev/stderr"; exit 1 }
        { printf "%s\n%s", blank, line; blank = "" }
        END { if (count) printf "%c", 0 }
    ' "$GUIDE"
}

# follow SECTION: every command of it, with the password for whoever asks for one. It ends with the first that fails.
follow() {
    local line
    while IFS= read -r -d '' line <&5; do
        echo "$line"
        on "${line%%#*}" env PACKAGES="$SOURCE_DIR/tests/services/packages.txt" bash -euc "${line#*# }" \
            < <(printf '%s\n' "$PASSWORD" "$PASSWORD") 5<&-
    done 5< <(commands "$1")
}

@test "EverySectionWithCommandsIsFollowedInItsOrder" {
    while read -r section; do
        [ "$(commands "$section" | tr -cd '\0' | wc -c)" -eq 0 ] || echo "$section"
    done < <(sections) >"$BATS_TEST_TMPDIR/guide"
    [ "$(wc -l <"$BATS_TEST_TMPDIR/guide")" -gt 5 ]
    diff "$BATS_TEST_TMPDIR/guide" <(sed -n 's/^    follow "\(.*\)"$/\1/p' "$BATS_TEST_FILENAME")
    # None stands in front of the first section or is lost between prompts.
    [ "$(while read -r section; do commands "$section"; done < <(sections) | tr -cd '\0' | wc -c)" -eq \
        "$(grep -cE '^    (server|client)# ' "$GUIDE")" ]
}

@test "InstallationIsThatOfTheReadme" {
    [ "$(installation)" = "script/build
cmake --install build/release --prefix /usr
install -d /etc/zet /var/lib/zet" ]
    [ "$(on client sh -c 'command -v zet-client')" = /usr/bin/zet-client ]
}

@test "HostsAreKnownByTheirNames" {
    follow "Before you begin"
}

@test "PackagesAreThoseThatTheTestsAreRunWith" {
    follow "Packages"
}

@test "SettingsAreTwoLines" {
    follow "Settings"
}

@test "ServerGetsACertificate" {
    follow "A certificate"
    on server openssl verify /etc/ldap/tls.crt
}

@test "FirstCommitPutsEveryFileInPlace" {
    follow "The first commit"
    run on server zet-init status
    [ "$status" -eq 0 ]
    run on server zet-init history
    [[ $output == *"# first server of the domain"* ]]
}

@test "RealmIsMade" {
    follow "The realm"
}

@test "KeytabsAreMade" {
    follow "Keytabs"
    run on server klist -k
    [[ $output == *host/server.example.org* && $output == *nfs/server.example.org* ]]
}

@test "DirectoryHasTheFirstUser" {
    follow "The directory"
    run on server getent passwd alice
    [ "$output" = "$(sed -n 's/^`getent` prints `\(.*\)`\.$/\1/p' "$GUIDE")" ]
    [ "$(on server stat -c %U:%G /srv/zet/alice)" = alice:people ]
}

@test "ClientJoins" {
    follow "The first client"
    run on client zet-client status
    [ "$status" -eq 0 ]
}

@test "UserLogsIn" {
    run follow_login
    echo "$output"
    [ "$status" -eq 0 ]
    [[ $output == *"$(sed -n 's/^`ldapwhoami` prints `\([^`]*\)`.*/\1/p' "$GUIDE")"* ]]
    [[ $output == *alice:\*:10001:10000:Alice:/home/alice:/bin/bash* ]]
    [[ $output == */home/alice$'\n'*"KEYRING:persistent:10001"*krbtgt/EXAMPLE.ORG@EXAMPLE.ORG* ]]
}

follow_login() {
    follow "The login"
}

@test "UserWritesToTheServersDirectory" {
    grep -qw nfsd /proc/filesystems && grep -qw nfs4 /proc/filesystems ||
        skip "the kernel has no network file system: neither mounted nor shared, though the table of exports is read"
    follow "The mount"
    on server test -e /srv/zet/alice/file
}

@test "BothHostsGoBack" {
    on client zet-client rollback-config
    on server zet-init rollback-config
    for host in server client; do
        run on "$host" find /etc -name '*_zet'
        [ -z "$output" ]
        on "$host" grep -qx 'passwd:  *files systemd' /etc/nsswitch.conf
    done
}
