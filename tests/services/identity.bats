# Who tells a host the domain's users and checks their passwords is one parameter: sssd or nslcd, over the real
# servers, with more users than the directory shows at a time.

load services
load hosts
load domain

USERS=1200

setup_file() {
    hosts_are_possible || return 0
    need krb5kdc slapd sssd nslcd k5start getent ip openssl

    lay_out server server
    lay_out client client
    lay_out second client IDENTITY=nslcd
    start_host server "$BATS_FILE_TMPDIR/server" server
    start_host client "$BATS_FILE_TMPDIR/client" client server
    start_host second "$BATS_FILE_TMPDIR/second" second server

    set_up_server
    {
        for ((i = 1; i <= USERS; i++)); do person "user$i" "$((6000 + i))"; done
        person Mallory 5002
        person daemon2 4999
        crew
    } | add_entries
    on server kadmin.local addprinc -pw secret user777
    set_up_client client client.example.org sssd
    set_up_client second second.example.org nslcd
    eventually finds client user1
    eventually finds second user1
}

setup() {
    hosts_are_possible || skip "only root can make hosts inside this one, and only where name spaces are allowed"
}

teardown_file() {
    stop_hosts
}

crew() {
    printf '%s\n' "dn: cn=crew,ou=groups,dc=example,dc=org" "objectClass: posixGroup" "cn: crew" "gidNumber: 5000" \
        "memberUid: user777" ""
}

# finds HOST NAME
finds() {
    on "$1" getent passwd "$2" >/dev/null
}

# assert_found_with_group HOST: a user by name, another by number, and the group of the first.
assert_found_with_group() {
    run on "$1" getent passwd user777
    [ "$output" = "user777:*:6777:5000:user777:/home/user777:/bin/sh" ]
    run on "$1" getent passwd 6778
    [[ $output == user778:* ]]
    run on "$1" getent group crew
    [ "$output" = "crew:*:5000:user777" ]
}

@test "LoginNameIsFoundWithSssd" {
    assert_found_with_group client
}

@test "LoginNameIsFoundWithNslcd" {
    assert_found_with_group second
}

@test "EveryUserIsFoundThoughTheDirectoryShowsFewerAtATime" {
    [ "$(on second getent passwd | grep -c '^user[0-9]*:')" -eq "$USERS" ]
    on client kinit user777 <<<secret
    run on client ldapsearch -Q -LLL '(uid=user*)' dn
    [ "$status" -eq 4 ]
    [ "$(grep -c ^dn: <<<"$output")" -eq 500 ]
    run on client ldapsearch -Q -LLL -E pr=500/noprompt '(uid=user*)' dn
    [ "$status" -eq 0 ]
    [ "$(grep -c ^dn: <<<"$output")" -eq "$USERS" ]
}

@test "UsersAreNotShownToWhoeverReachesThePort" {
    run on client ldapsearch -x -LLL '(uid=user1)' dn
    [[ $output != *dn:* ]]
    run on client ldapsearch -x -LLL -s base -b "" namingContexts
    [[ $output == *"namingContexts: dc=example,dc=org"* ]]
}

@test "UserBelowTheLowestNumberDoesNotReachTheHost" {
    for host in client second; do
        run on "$host" getent passwd daemon2
        [ "$status" -eq 2 ]
        run on "$host" getent passwd 4999
        [ "$status" -eq 2 ]
    done
}

@test "UserWithAnInvalidNameDoesNotReachAHostWithNslcd" {
    run on second getent passwd Mallory
    [ "$status" -eq 2 ]
    run on second getent passwd 5002
    [ "$status" -eq 2 ]
}

@test "FilesOfTheOtherStackAreNotMade" {
    on client test ! -e /etc/nslcd.conf.no_file_before_zet
    on client test ! -e /etc/nslcd.conf.before_zet
    on second test ! -e /etc/sssd/sssd.conf
    run on client grep -E '^(passwd|group|shadow):' /etc/nsswitch.conf
    [ "$output" = "passwd:         files systemd sss
group:          files systemd sss
shadow:         files sss" ]
    run on second grep -E '^(passwd|group|shadow):' /etc/nsswitch.conf
    [ "$output" = "passwd:         files systemd ldap
group:          files systemd ldap
shadow:         files ldap" ]
}

@test "NobodyElseReadsWhatSssdKnows" {
    [ "$(on client stat -c %a /etc/sssd/sssd.conf)" = 600 ]
    [ "$(on second stat -c %a /etc/nslcd.conf)" = 640 ]
}

# log_in HOST PASSWORD: as somebody whom PAM asks for one.
log_in() {
    on "$1" runuser -u nobody -- su - user777 -c 'id -un; pwd' <<<"$2"
}

@test "UserLogsInWithSssd" {
    on client pam-auth-update --enable sss mkhomedir
    run log_in client wrong
    [ "$status" -ne 0 ]
    run log_in client secret
    [ "$status" -eq 0 ]
    [[ $output == *$'user777\n/home/user777' ]]
}

@test "UserLogsInWithNslcd" {
    on second pam-auth-update --enable krb5 mkhomedir
    run log_in second wrong
    [ "$status" -ne 0 ]
    run log_in second secret
    [ "$status" -eq 0 ]
    [[ $output == *$'user777\n/home/user777' ]]
}

@test "OneParameterChoosesTheOther" {
    on client sed -i '$aIDENTITY=nslcd' /etc/zet/zet.conf
    on client sh -c 'kill "$(cat /run/sssd.pid)"'
    on client "$ZET_BIN/zet-client" commit-config
    on client test ! -e /etc/sssd/sssd.conf
    run on client grep -E '^(passwd|group|shadow):' /etc/nsswitch.conf
    [ "$output" = "passwd:         files systemd ldap
group:          files systemd ldap
shadow:         files ldap" ]
    on client service nslcd start
    eventually finds client user778
    on client service nslcd stop
}
