# The rendered slapd.conf and domain.ldif make a real directory server, and the rendered ldap.conf leads its
# clients there. Only the port and directories differ from what ships. This directory is not reached over a network,
# so it does without TLS.

load services

setup_file() {
    need slapd slapadd ldapsearch ldapmodify ldapwhoami
    export ROOT=$BATS_FILE_TMPDIR/root PORT
    PORT=$(free_port)

    example_root server "$ROOT"
    set_param "$ROOT" SERVER 127.0.0.1
    set_param "$ROOT" SERVER_ID 7
    set_param "$ROOT" LDAP_TLS no
    amend_template "$ROOT" ldap.conf "s/\${ldap_uris}/&:$PORT/"
    amend_template "$ROOT" slapd.conf "s,/run/slapd,$ROOT/run,; s,/var/lib/ldap,$ROOT&,; s,/etc/ldap/slapd-tls.conf,$ROOT&,"
    mkdir -p "$ROOT/run" "$ROOT/var/lib/ldap"
    commit zet-init "$ROOT"

    export LDAPCONF=$ROOT/etc/ldap/ldap.conf
    slapadd -f "$ROOT/etc/ldap/slapd.conf" -l "$ROOT/etc/ldap/domain.ldif"
    slapadd -f "$ROOT/etc/ldap/slapd.conf" <<-'END'
		dn: uid=alice,ou=people,dc=example,dc=org
		objectClass: inetOrgPerson
		uid: alice
		cn: Alice
		sn: Example
		userPassword: secret
	END
    start_server slapd "$PORT" slapd -d none -f "$ROOT/etc/ldap/slapd.conf" -h "ldap://127.0.0.1:$PORT"
}

teardown_file() {
    stop_servers
}

ALICE=uid=alice,ou=people,dc=example,dc=org

# as_alice COMMAND [ARGUMENT]...
as_alice() {
    "$1" -x -D "$ALICE" -w secret "${@:2}"
}

# change_password FORMER NEW: as she does it herself.
change_password() {
    ldapmodify -x -D "$ALICE" -w "$1" <<-END
		dn: $ALICE
		changetype: modify
		replace: userPassword
		userPassword: $2
	END
}

@test "StrangerSeesWhatIsServedAndNoEntry" {
    run ldapsearch -x -LLL -s base -b "" namingContexts
    [[ $output == *"namingContexts: dc=example,dc=org"* ]]
    run ldapsearch -x -LLL
    [ "$status" -eq 32 ]
    [[ $output != *dn:* ]]
}

# Where the database keeps the size of its map.
@test "DatabaseMayGrowBeyondTheLimitThatItHasByItself" {
    [ "$(od -An -td8 -j 32 -N 8 "$ROOT/var/lib/ldap/data.mdb" | tr -d ' ')" -eq 4294967296 ]
}

@test "SearchWithoutABaseFindsTheDomain" {
    run as_alice ldapsearch -LLL -s base
    [ "$status" -eq 0 ]
    [ "${lines[0]}" = "dn: dc=example,dc=org" ]
    [[ $output == *"dc: example"* ]]
    [[ $output == *"o: example.org"* ]]
}

@test "DomainStartsWithPlacesForPeopleAndGroups" {
    run as_alice ldapsearch -LLL -s one dn
    [ "$status" -eq 0 ]
    [[ $output == *"dn: ou=people,dc=example,dc=org"* ]]
    [[ $output == *"dn: ou=groups,dc=example,dc=org"* ]]
}

@test "PasswordsAreShownToNobody" {
    run as_alice ldapsearch -LLL uid=alice
    [ "$status" -eq 0 ]
    [[ $output == *"cn: Alice"* ]]
    [[ $output != *userPassword* ]]
}

@test "UserBindsWithTheOwnPassword" {
    run ldapwhoami -x -D "$ALICE" -w secret
    [ "$output" = "dn:$ALICE" ]
    run ldapwhoami -x -D "$ALICE" -w wrong
    [ "$status" -eq 49 ]
}

@test "UserChangesTheOwnPasswordAndNothingElse" {
    change_password secret other
    run ldapwhoami -x -D "$ALICE" -w secret
    [ "$status" -eq 49 ]
    run ldapwhoami -x -D "$ALICE" -w other
    [ "$output" = "dn:$ALICE" ]
    change_password other secret
    run ldapmodify -x -D "$ALICE" -w secret <<-END
		dn: $ALICE
		changetype: modify
		replace: cn
		cn: Mallory
	END
    [ "$status" -eq 50 ]
}

@test "StrangerCannotWrite" {
    run ldapdelete -x "$ALICE"
    [ "$status" -eq 8 ]
    run as_alice ldapsearch -LLL uid=alice cn
    [[ $output == *"cn: Alice"* ]]
}

@test "ChangesAreMarkedWithTheServersNumber" {
    run as_alice ldapsearch -LLL uid=alice entryCSN
    [[ $output == *"#007#"* ]]
}
