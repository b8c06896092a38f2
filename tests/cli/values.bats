load helper

setup() {
    make_host
}

teardown() {
    remove_host
}

@test "each value is a line, its name without the braces, in the order of the placeholders" {
    run_zet -q values
    assert_success "domain=example.org
kadmin_server=srv.example.org
kdc_server=srv.example.org
ldap_dc=example
ldap_domain=dc=example,dc=org
ldap_uris=ldap://srv.example.org
max_life=10h 0m 0s
max_renewable_life=7d 0h 0m 0s
minimum_uid=10000
realm=EXAMPLE.ORG
server_export_dir=/srv/zet
server_id=1
server=srv.example.org
valid_group_names=^[a-z_][a-z0-9_-]*\$
valid_user_names=^[a-z_][a-z0-9_-]*\$"
}

@test "the document has them as one object" {
    run_zet --json values
    assert_status 0
    assert_stderr ""
    assert_json 'd["command"], len(d["values"]), d["values"]["realm"], d["exit_status"]' '["values", 15, "EXAMPLE.ORG", 0]'
}

@test "each value is told with the file and line that give it" {
    mkdir etc/defaults.d
    printf 'REALM=FLEET.ORG\nNTP_SERVER=ntp\n' >etc/defaults.d/10.conf
    run_zet values
    assert_status 0
    [[ $output == *"domain=example.org"$'\n'"    from $HOST/zet.conf:1"$'\n'* ]]
    [[ $output == *"minimum_uid=10000"$'\n'"    from the product's default"$'\n'* ]]
    [[ $output == *"ntp_server=ntp"$'\n'"    from $HOST/etc/defaults.d/10.conf:2"$'\n'* ]]
    [[ $output == *"realm=FLEET.ORG"$'\n'"    from $HOST/etc/defaults.d/10.conf:1"$'\n'* ]]
    run_zet --json values
    assert_json '[s for s in d["sources"] if s["name"] == "ntp_server"][0]' '{"name": "ntp_server", "file": "'"$HOST"'/etc/defaults.d/10.conf", "line": 2}'
    run_zet option list
    assert_status 0
    [[ $output == *"NTP_SERVER=ntp"$'\n'"    from $HOST/etc/defaults.d/10.conf:2"$'\n'* ]]
    [[ $output == *"MINIMUM_UID=10000"$'\n'"    from the product's default"$'\n'* ]]
    run_zet --json option list
    assert_json 'd["options"]["NTP_SERVER"]' ntp
}
