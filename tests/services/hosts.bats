# A server and a client of the example domain, with the shipped templates as they are, at the real paths and
# ports: what an administrator does on the first day, and the way back.

load services
load hosts
load domain

setup_file() {
    hosts_are_possible || return 0
    need krb5kdc kadmind slapd sssd exportfs nfsidmap kinit ldapsearch ip openssl

    lay_out server server
    lay_out client client SERVICE_DISCOVERY=yes CCACHE_NAME=FILE:/run/tickets_of_%{uid}
    # The server has a name of its own beside the one that the domain knows it by.
    start_host server "$BATS_FILE_TMPDIR/server" box1
    start_host client "$BATS_FILE_TMPDIR/client" client server

    set_up_server
    { person alice 5001 | sed 's/^cn: .*/cn: Alice/' && person bob 5002; } | add_entries
    set_password bob secret
    set_up_client client client.example.org sssd
}

setup() {
    hosts_are_possible || skip "only root can make hosts inside this one, and only where name spaces are allowed"
}

teardown_file() {
    stop_hosts
}

# set_password NAME PASSWORD: of the directory, beside that of Kerberos.
set_password() {
    on server ldappasswd -Q -Y EXTERNAL -H ldapi:/// -s "$2" "uid=$1,ou=people,dc=example,dc=org"
}

BOB=uid=bob,ou=people,dc=example,dc=org

@test "UserGetsATicketOnTheServer" {
    on server kinit alice <<<secret
    run on server klist
    [[ $output == *"Default principal: alice@EXAMPLE.ORG"* ]]
}

@test "UserGetsATicketOnAClientThatLooksForServiceNames" {
    run on client grep 'kdc = ' /etc/krb5.conf
    [ "$output" = "        kdc = _kerberos_tcp" ]
    on client kinit alice <<<secret
    run on client klist
    [[ $output == *"Default principal: alice@EXAMPLE.ORG"* ]]
}

@test "TicketIsEnoughForTheDirectory" {
    on client kinit alice <<<secret
    run on client ldapwhoami -Q
    [ "$output" = "dn:uid=alice,ou=people,dc=example,dc=org" ]
    run on client klist
    [[ $output == *"ldap/server.example.org@EXAMPLE.ORG"* ]]
}

@test "ClientFindsTheDirectoryByItsServiceName" {
    run on client grep URI /etc/ldap/ldap.conf
    [ "$output" = "URI ldap://_ldap_tcp " ]
    on client kinit alice <<<secret
    run on client ldapsearch -Q -LLL uid=alice cn
    [[ $output == *"cn: Alice"* ]]
}

@test "PasswordIsSentOverTlsOnly" {
    run on client ldapwhoami -x -H ldap://server.example.org -D "$BOB" -w secret
    [ "$status" -eq 13 ]
    [[ $output == *"onfidentiality required"* ]]
    run on client ldapwhoami -x -ZZ -H ldap://server.example.org -D "$BOB" -w secret
    [ "$output" = "dn:$BOB" ]
}

@test "ClientDoesNotSpeakToAServerOfAnotherAuthority" {
    run on client env LDAPTLS_CACERT=/dev/null ldapwhoami -x -ZZ -H ldap://server.example.org -D "$BOB" -w secret
    [ "$status" -ne 0 ]
    [[ $output == *ldap_start_tls* ]]
}

@test "ServerSpeaksNoOldTls" {
    run on client sh -c 'openssl s_client -starttls ldap -connect server.example.org:389 -cipher DEFAULT:@SECLEVEL=0 -tls1_1 </dev/null 2>&1'
    [ "$status" -ne 0 ]
    run on client sh -c 'openssl s_client -starttls ldap -connect server.example.org:389 -tls1_2 </dev/null 2>&1'
    [[ $output == *"Verify return code: 0 (ok)"* ]]
}

@test "AdministratorReachesTheRealmFromAClient" {
    run on client kadmin -p root/admin -w secret listprincs
    [ "$status" -eq 0 ]
    [[ $output == *"ldap/server.example.org@EXAMPLE.ORG"* ]]
}

@test "HostOfTheDomainBelongsToItsRealm" {
    on client kinit alice <<<secret
    run on client kvno -S ldap server.example.org
    [[ $output == "ldap/server.example.org@EXAMPLE.ORG: kvno = "* ]]
}

@test "TicketsAreWhereTheParameterSays" {
    on client env -u KRB5CCNAME kinit alice <<<secret
    on client test -s /run/tickets_of_0
    # Nothing is put into the keyrings of this machine.
    run on server env -u KRB5CCNAME setpriv --reuid 61234 klist
    [[ $output == *"keyring 'persistent:61234:61234' not found"* ]]
}

# Whether or not the kernel can serve files: the table of exports is written before it is asked.
@test "ServerSharesItsDirectoryWithTheDomainOverKerberosOnly" {
    run on server exportfs -ra
    [[ $output != *yntax* ]]
    run on server cat /var/lib/nfs/etab
    [ "${#lines[@]}" -eq 1 ]
    [[ $output == $'/srv/domain\t*.example.org(rw,sync,'* ]]
    [[ $output == *,root_squash,* ]]
    [[ $output == *,sec=krb5p,* ]]
}

@test "ServerAndClientAgreeOnTheNamesOfTheFileSystem" {
    for host in server client; do
        # Under a name from elsewhere, or the domain could also come from the host's own name.
        run on "$host" unshare --uts sh -c 'hostname host.example.net && nfsidmap -d'
        [ "$output" = example.org ]
    done
}

@test "SlapdHasAKeyOfItsOwnAndReadsNoKeyOfTheHost" {
    run on server setpriv --reuid openldap --regid openldap --clear-groups cat /etc/krb5.keytab
    [ "$status" -ne 0 ]
    run on server grep -x 'export KRB5_KTNAME=/etc/ldap/slapd.keytab' /etc/default/slapd
    [ "$status" -eq 0 ]
}

@test "CheckTellsOfACertificateThatSlapdMayNotRead" {
    on server chmod 600 /etc/ldap/tls.key
    run on server "$ZET_BIN/zet-init" check-config
    [ "$status" -eq 1 ]
    [[ $output == *"/etc/ldap/tls.key is missing, or the user openldap may not read it"* ]]
    on server chmod 640 /etc/ldap/tls.key
    run on server "$ZET_BIN/zet-init" check-config
    [ "$status" -eq 0 ]
}

@test "CheckTellsOfADirectoryThatIsToBeSharedAndIsNotThere" {
    on server mv /srv/domain /srv/away
    run on server "$ZET_BIN/zet-init" check-config
    [ "$status" -eq 1 ]
    [[ $output == *"there is no directory /srv/domain"* ]]
    on server mv /srv/away /srv/domain
}

@test "CheckTellsOfAnUnknownSecurityOfTheSharedDirectory" {
    on server cp /etc/zet/zet.conf /run/zet.conf
    on server "$ZET_BIN/zet-init" -q option set NFS_SECURITY krb5x >/dev/null
    run on server "$ZET_BIN/zet-init" check-config
    on server cp /run/zet.conf /etc/zet/zet.conf
    [ "$status" -eq 1 ]
    [[ $output == *"NFS_SECURITY is krb5p, krb5i, krb5 or sys"* ]]
}

@test "CheckTellsOfTheDirectoryWithoutWhichNoKerberosProgramStarts" {
    on client mv /etc/krb5.conf.d /etc/away
    run on client "$ZET_BIN/zet-client" check-config
    on client mv /etc/away /etc/krb5.conf.d
    [ "$status" -eq 1 ]
    [[ $output == *"Included profile directory could not be read"* ]]
}

@test "CheckDoesNotDisturbARunningDirectory" {
    on server "$ZET_BIN/zet-init" check-config
    on server test -s /run/slapd/slapd.pid
    run on server service slapd status
    [ "$status" -eq 0 ]
}

@test "CheckTellsOfAWordThatTheDirectoryServerDoesNotKnow" {
    on server cp /etc/zet/slapd.conf /run/slapd.conf
    on server sed -i 's/^maxsize/maxsise/' /etc/zet/slapd.conf
    run on server "$ZET_BIN/zet-init" check-config
    on server cp /run/slapd.conf /etc/zet/slapd.conf
    [ "$status" -eq 1 ]
    [[ $output == *'its check "sh" refuses what [slapd.conf] renders to'* ]]
}

@test "CommitNamesWhatToRestartWhatToReloadAndWhatToRunByRole" {
    run on client "$ZET_BIN/zet-client" commit-config -n --set DOMAIN=example.com --set SERVICE_DISCOVERY=no
    [ "$status" -eq 3 ]
    [[ $output == *"nfsidmap -c"* ]]
    [[ $output != *nfs-idmapd* ]]
    run on server "$ZET_BIN/zet-init" commit-config -n --set DOMAIN=example.com --set NFS_SECURITY=krb5i
    [ "$status" -eq 3 ]
    [[ $output == *"exportfs -ra"* ]]
    [[ $output == *nfs-idmapd* ]]
    [[ $output != *"nfsidmap -c"* && $output != *nfs-kernel-server* ]]
}

@test "RollBackPutsBackWhatWasThere" {
    on client "$ZET_BIN/zet-client" rollback-config
    on client cmp /etc/krb5.conf "$SOURCE_DIR/examples/client/etc/krb5.conf"
    on client cmp /etc/ldap/ldap.conf "$SOURCE_DIR/examples/client/etc/ldap/ldap.conf"
    on client cmp /etc/nsswitch.conf "$SOURCE_DIR/examples/client/etc/nsswitch.conf"
    run on client find /etc -name '*_zet'
    [ -z "$output" ]
}
