# check-config looks up the hosts that SERVICE_DISCOVERY puts into files.

load helper
load set

setup() {
    make_set
    add_target one.conf $'${kdc_server} ${ldap_uris}\n'
    echo SERVICE_DISCOVERY=yes >>zet.conf
    # This host's name service: what stands in the file "names" has an address.
    script getent <<-END
		#!/bin/sh
		echo "\$*" >>"$BASE/asked"
		grep -qx "\$2" "$BASE/names"
	END
    touch "$BASE/names" "$BASE/asked"
}

teardown() {
    remove_host
}

REMEDY="in the domain's name service and name the domain as \"search\" in /etc/resolv.conf, or set SERVICE_DISCOVERY=no"

# warning HOST PLACEHOLDER
warning() {
    echo "zet-client: warning: $HOST/zet.conf:6: SERVICE_DISCOVERY is yes, but this host finds no address of \"$1\", which $2 names (give $1.DOMAIN one $REMEDY)"
}

@test "a service name that this host finds no address of is told, and is no problem" {
    echo _ldap_tcp >"$BASE/names"
    run_zet check-config
    assert_status 0
    assert_output ""
    assert_stderr "$(warning _kerberos_tcp '${kdc_server}')
zet-client: no problems found"
    run_zet check-config --json
    assert_status 0
    [[ $output == *'"warnings"'*_kerberos_tcp* ]]
}

@test "only names that a template brings into a file are looked up" {
    run_zet check-config
    assert_stderr "$(warning _kerberos_tcp '${kdc_server}')
$(warning _ldap_tcp '${ldap_uris}')
zet-client: no problems found"
    [ "$(<"$BASE/asked")" = $'ahosts _kerberos_tcp\nahosts _ldap_tcp' ]
}

@test "without service discovery nothing is looked up" {
    echo SERVICE_DISCOVERY=no >>zet.conf
    run_zet check-config
    assert_stderr "zet-client: no problems found"
    [ ! -s "$BASE/asked" ]
}

@test "below another root nothing is looked up" {
    mkdir -p "$BASE/tree"
    (cd / && cp -a --parents "${HOST#/}" "$BASE/tree")
    capture "$ZET_BIN/zet-client" --root "$BASE/tree" --config "$HOST/zet.conf" check-config
    assert_status 0
    assert_stderr "zet-client: no problems found"
    [ ! -s "$BASE/asked" ]
}

@test "where names cannot be looked up a check goes on without" {
    script getent <<<"no program"
    run_zet check-config
    assert_status 0
    assert_stderr "zet-client: warning: getent: cannot be started: Exec format error (install it, or correct its name)
zet-client: no problems found"
}

@test "a name service that does not answer holds a check up for a few seconds only" {
    script getent <<-'END'
		#!/bin/sh
		exec sleep 60
	END
    SECONDS=0
    run_zet check-config
    assert_status 0
    [[ $stderr == *_kerberos_tcp*_ldap_tcp* ]]
    [ "$SECONDS" -lt 20 ]
}
