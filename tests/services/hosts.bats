# A server and a client of the example domain, with the shipped templates as they are, at the real paths and
# ports: what an administrator does on the first day, and the way back.

load services
load hosts

setup_file() {
    hosts_are_possible || return 0
    need krb5kdc kadmind slapd nslcd exportfs nfsidmap kinit ldapsearch ip

    local host
    for host in server client; do
        example_root "$host" "$BATS_FILE_TMPDIR/$host"
        set_param "$BATS_FILE_TMPDIR/$host" ZET_CFG_TEMPL_DIR /srv/zet/templates
        set_param "$BATS_FILE_TMPDIR/$host" ZET_VAR_LIB_DIR /srv/zet/state
    done
    set_param "$BATS_FILE_TMPDIR/client" SERVICE_DISCOVERY yes
    # The server has a name of its own beside the one that the domain knows it by.
    start_host server "$BATS_FILE_TMPDIR/server" box1
    start_host client "$BATS_FILE_TMPDIR/client" client server

    set_up_server
    on client "$ZET_BIN/zet-client" commit-config
    on client service nslcd start
}

setup() {
    hosts_are_possible || skip "only root can make hosts inside this one, and only where name spaces are allowed"
}

teardown_file() {
    stop_hosts
}

set_up_server() {
    on server "$ZET_BIN/zet-init" commit-config
    on server kdb5_util create -s -P master
    on server kadmin.local addprinc -pw secret alice
    on server kadmin.local addprinc -pw secret root/admin
    on server kadmin.local addprinc -randkey ldap/server.example.org
    on server kadmin.local ktadd -k /etc/krb5.keytab ldap/server.example.org
    on server chgrp openldap /etc/krb5.keytab
    on server chmod 640 /etc/krb5.keytab
    on server service krb5-kdc start
    on server service krb5-admin-server start

    on server "$ZET_BIN/zet-init" param set /etc/default/slapd SLAPD_CONF /etc/ldap/slapd.conf
    on server service slapd start
    on server ldapadd -Q -Y EXTERNAL -H ldapi:/// -f /etc/ldap/domain.ldif
    on server ldapadd -Q -Y EXTERNAL -H ldapi:/// <<-'END'
		dn: uid=alice,ou=people,dc=example,dc=org
		objectClass: inetOrgPerson
		objectClass: posixAccount
		uid: alice
		cn: Alice
		sn: Example
		uidNumber: 5001
		gidNumber: 5000
		homeDirectory: /srv/domain/alice

		dn: uid=Mallory,ou=people,dc=example,dc=org
		objectClass: account
		objectClass: posixAccount
		uid: Mallory
		cn: Mallory
		uidNumber: 5002
		gidNumber: 5000
		homeDirectory: /srv/domain/mallory

		dn: uid=daemon2,ou=people,dc=example,dc=org
		objectClass: account
		objectClass: posixAccount
		uid: daemon2
		cn: daemon2
		uidNumber: 4999
		gidNumber: 5000
		homeDirectory: /srv/domain/daemon2

		dn: cn=staff,ou=groups,dc=example,dc=org
		objectClass: posixGroup
		cn: staff
		gidNumber: 5000
		memberUid: alice
	END
}

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
    run on client ldapsearch -x -LLL uid=alice cn
    [[ $output == *"cn: Alice"* ]]
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

@test "ClientKnowsTheUsersAndGroupsOfTheDomain" {
    run on client getent -s ldap passwd alice
    [ "$output" = "alice:*:5001:5000:Alice:/srv/domain/alice:" ]
    run on client getent -s ldap passwd 5001
    [[ $output == alice:* ]]
    run on client getent -s ldap group staff
    [ "$output" = "staff:*:5000:alice" ]
}

@test "UserWithAnInvalidNameDoesNotReachTheClient" {
    run on client ldapsearch -x -LLL uid=Mallory dn
    [[ $output == *uid=Mallory* ]]
    run on client getent -s ldap passwd Mallory
    [ "$status" -eq 2 ]
    run on client getent -s ldap passwd 5002
    [ "$status" -eq 2 ]
}

@test "UserBelowTheLowestNumberDoesNotReachTheClient" {
    run on client ldapsearch -x -LLL uid=daemon2 dn
    [[ $output == *uid=daemon2* ]]
    run on client getent -s ldap passwd daemon2
    [ "$status" -eq 2 ]
    run on client getent -s ldap passwd 4999
    [ "$status" -eq 2 ]
}

# Whether or not the kernel can serve files: the table of exports is written before it is asked.
@test "ServerSharesItsDirectoryWithTheDomainOverKerberosOnly" {
    run on server exportfs -a
    [[ $output != *yntax* ]]
    run on server cat /var/lib/nfs/etab
    [ "${#lines[@]}" -eq 1 ]
    [[ $output == $'/srv/domain\t*.example.org(rw,sync,'* ]]
    [[ $output == *,root_squash,* ]]
    [[ $output == *,sec=krb5p:krb5i:krb5,* ]]
    [[ $output != *sec=sys* ]]
}

@test "ServerAndClientAgreeOnTheNamesOfTheFileSystem" {
    for host in server client; do
        # Under a name from elsewhere, or the domain could also come from the host's own name.
        run on "$host" unshare --uts sh -c 'hostname host.example.net && nfsidmap -d'
        [ "$output" = example.org ]
    done
}

@test "RollBackPutsBackWhatWasThere" {
    on client "$ZET_BIN/zet-client" rollback-config
    on client cmp /etc/krb5.conf "$SOURCE_DIR/examples/client/etc/krb5.conf"
    on client cmp /etc/ldap/ldap.conf "$SOURCE_DIR/examples/client/etc/ldap/ldap.conf"
    run on client find /etc -name '*_zet'
    [ -z "$output" ]
}
