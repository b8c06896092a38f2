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
    assert_json '[s for s in d["sources"] if s["name"] == "ntp_server"][0]' '{"name": "ntp_server", "file": "'"$HOST"'/etc/defaults.d/10.conf", "line": 2, "lossy": false}'
    run_zet option list
    assert_status 0
    [[ $output == *"NTP_SERVER=ntp"$'\n'"    from $HOST/etc/defaults.d/10.conf:2"$'\n'* ]]
    [[ $output == *"MINIMUM_UID=10000"$'\n'"    from the product's default"$'\n'* ]]
    run_zet --json option list
    assert_json 'd["options"]["NTP_SERVER"]' ntp
}

# assert_unread WORD...: the command tells its error, $UNREAD, and does not succeed.
assert_unread() {
    run_zet -q "$@"
    assert_status 1
    assert_stderr "zet-client: error: $UNREAD"
}

@test "values that could not be read are told" {
    mkdir etc/values.d etc/defaults.d
    echo EXTRA=shipped >templates/values.conf
    ln -s "$HOST/gone" etc/values.d/extra
    UNREAD="$HOST/etc/values.d/extra: $HOST/gone: does not exist (create it, or correct the path)"
    assert_unread values
    [[ $output == *"realm=EXAMPLE.ORG"* && $output != *extra=* ]]
    # It is none of the parameters.
    run_zet -q option list
    assert_status 0
    assert_stderr ""
    rm etc/values.d/extra
    ln -s "$HOST/gone" etc/defaults.d/a.conf
    UNREAD="$HOST/etc/defaults.d/a.conf: $HOST/gone: does not exist (create it, or correct the path)"
    assert_unread values
    assert_unread option list
    [[ $output == *"DOMAIN=example.org"* ]]
    local name
    for name in REALM NTP_SERVER; do
        assert_unread option get "$name"
        assert_output ""
    done
    run_zet --json option get REALM
    assert_json 'd["found"], d["value"], d["exit_status"]' '[null, null, 1]'
    # What the main file says counts, whatever the fleet's says.
    run_zet option get DOMAIN
    assert_success example.org
    rm etc/defaults.d/a.conf templates/values.conf
    ln -s "$HOST/gone" templates/values.conf
    UNREAD="$HOST/templates/values.conf: $HOST/gone: does not exist (create it, or correct the path)"
    assert_unread values
}

@test "the flag of a value that is no text takes the place of no other value" {
    printf 'FOO=\xff\nFOO_LOSSY=abc\nBAR=\xff\n' >>zet.conf
    run_zet values --json
    assert_status 0
    assert_json '[d["values"][name] for name in ("foo", "foo_lossy", "bar", "bar_lossy")]' '["\ufffd", "abc", "\ufffd", true]'
    assert_json '[s["name"] for s in d["sources"] if s["lossy"]]' '["bar", "foo"]'
}
