# Servers are found by the records of a name service: by SRV records with SRV_RECORDS=yes, by host names with
# SERVICE_DISCOVERY=yes.

load services
load hosts
load domain

setup_file() {
    hosts_are_possible || return 0
    need krb5kdc slapd sssd nslcd dnsmasq kinit ldapsearch ip openssl

    lay_out server server
    lay_out client client SRV_RECORDS=yes SSSD_LDAP_URI=_srv_ SSSD_KDC=_srv_
    lay_out second client SRV_RECORDS=yes IDENTITY=nslcd 'NSLCD_URI=DNS:${domain}'
    lay_out names client SERVICE_DISCOVERY=yes
    start_host server "$BATS_FILE_TMPDIR/server" server
    start_host client "$BATS_FILE_TMPDIR/client" client server
    start_host second "$BATS_FILE_TMPDIR/second" second server
    start_host names "$BATS_FILE_TMPDIR/names" names server

    set_up_server
    person alice 5001 | add_entries
    start_name_service
    for host in client second names; do ask_name_service "$host"; done
    set_up_client client client.example.org sssd
    set_up_client second second.example.org nslcd
    set_up_client names names.example.org sssd
}

setup() {
    hosts_are_possible || skip "only root can make hosts inside this one, and only where name spaces are allowed"
}

teardown_file() {
    stop_hosts
}

# What the administrator of the domain's zone enters, once for either way.
start_name_service() {
    on server tee /run/dns.conf >/dev/null <<-'END'
		no-hosts
		no-resolv
		user=root
		listen-address=127.0.0.1
		bind-interfaces
		log-queries
		log-facility=/run/dns.log
		pid-file=/run/dns.pid
		auth-ttl=60
		local=/org/
		local=/in-addr.arpa/
		host-record=server.example.org,127.0.0.2
		host-record=client.example.org,127.0.0.3
		host-record=second.example.org,127.0.0.5
		host-record=names.example.org,127.0.0.6
		srv-host=_kerberos._udp.example.org,server.example.org,88
		srv-host=_kerberos._tcp.example.org,server.example.org,88
		srv-host=_kpasswd._udp.example.org,server.example.org,464
		srv-host=_ldap._tcp.example.org,server.example.org,389
		cname=_kerberos_tcp.example.org,server.example.org
		cname=_kadmin_tcp.example.org,server.example.org
		cname=_ldap_tcp.example.org,server.example.org
	END
    on server dnsmasq --conf-file=/run/dns.conf
}

# ask_name_service HOST: nothing but its own name is known to it otherwise.
ask_name_service() {
    on "$1" sh -c 'echo "127.0.0.1 localhost" >/etc/hosts
        printf "%s\n" "nameserver 127.0.0.1" "search example.org" >/etc/resolv.conf'
}

# With sssd a plug-in of it would name the server to kinit, too.
@test "TicketComesFromTheServerOfTheRecords" {
    run on second grep -c '^ *kdc =' /etc/krb5.conf
    [ "$output" = 0 ]
    on server sh -c ': >/run/dns.log'
    on second kinit alice <<<secret
    on server grep -q 'query\[SRV\] _kerberos._udp.EXAMPLE.ORG' /run/dns.log
    on client kinit alice <<<secret
}

# kadmin asks for no records.
@test "AdministrationServerIsKnownAllTheSame" {
    run on client kadmin -p root/admin -w secret listprincs
    [ "$status" -eq 0 ]
    [[ $output == *"alice@EXAMPLE.ORG"* ]]
}

@test "DirectoryIsFoundByItsRecord" {
    on client kinit alice <<<secret
    on server sh -c ': >/run/dns.log'
    run on client ldapsearch -Q -LLL -H ldap:///dc%3Dexample%2Cdc%3Dorg uid=alice cn
    [[ $output == *"cn: alice"* ]]
    on server grep -q 'query\[SRV\] _ldap._tcp.example.org' /run/dns.log
}

@test "LoginNameIsFoundThroughRecords" {
    for host in client second; do
        eventually on "$host" getent passwd alice
    done
    [ "$(on client sed -n 's/^ldap_uri = //p' /etc/sssd/sssd.conf)" = _srv_ ]
    [ "$(on second sed -n 's/^uri //p' /etc/nslcd.conf)" = DNS:example.org ]
}

@test "NothingIsFoundWithoutTheRecords" {
    on server sh -c 'kill "$(cat /run/dns.pid)" && sed "/^srv-host/d" /run/dns.conf >/run/dns_without.conf'
    on server dnsmasq --conf-file=/run/dns_without.conf
    run on second kinit alice <<<secret
    on server sh -c 'kill "$(cat /run/dns.pid)"'
    on server dnsmasq --conf-file=/run/dns.conf
    [ "$status" -ne 0 ]
    [[ $output == *"Cannot find KDC for realm"* ]]
}

@test "HostNamesOfServicesLeadToTheServer" {
    run on names "$ZET_BIN/zet-client" check-config
    [ "$status" -eq 0 ]
    [[ $output != *SERVICE_DISCOVERY* ]]
    on names kinit alice <<<secret
    run on names ldapsearch -Q -LLL uid=alice cn
    [[ $output == *"cn: alice"* ]]
    run on names klist
    [[ $output == *"ldap/server.example.org@EXAMPLE.ORG"* ]]
    eventually on names getent passwd alice
}

@test "CheckWarnsOfHostNamesThatNobodyKnows" {
    on names sed -i 's/^search .*/search example.net/' /etc/resolv.conf
    run on names "$ZET_BIN/zet-client" check-config
    [ "$status" -eq 0 ]
    [[ $output == *"/etc/zet/zet.conf:"*"finds no address of \"_kerberos_tcp\""* ]]
    [[ $output == *"finds no address of \"_ldap_tcp\""* ]]
}

@test "SecondDistributionCentreIsAskedWhenTheFirstIsAway" {
    on second sh -c 'mkdir /etc/zet/values.d; printf "%s\n" SRV_RECORDS=no SERVER=away.example.org >>/etc/zet/zet.conf'
    on second "$ZET_BIN/zet-client" commit-config
    run on second kinit alice <<<secret
    [ "$status" -ne 0 ]
    on second sh -c 'printf "%s\n" "        kdc = gone.example.org" "        kdc = server.example.org" >/etc/zet/values.d/more_kdcs'
    on second "$ZET_BIN/zet-client" commit-config
    on second kinit alice <<<secret
}
