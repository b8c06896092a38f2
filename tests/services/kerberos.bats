# The rendered krb5.conf, kdc.conf and kadm5.acl configure a real key distribution centre, its administration
# server and their clients. Only the ports and directories differ from what ships.

load services

setup_file() {
    need krb5kdc kadmind kdb5_util kadmin.local kinit klist
    export ROOT=$BATS_FILE_TMPDIR/root
    local kdcPort adminPort passwordPort
    kdcPort=$(free_port)
    adminPort=$(free_port)
    passwordPort=$(free_port)

    example_root server "$ROOT"
    set_param "$ROOT" SERVER 127.0.0.1
    set_param "$ROOT" TICKET_MAX_LIFE "4h 0m 0s"
    set_param "$ROOT" TICKET_MAX_RENEWABLE_LIFE "3d 0h 0m 0s"
    amend_template "$ROOT" krb5.conf \
        "s/\${kdc_server}/&:$kdcPort/; s/\${kadmin_server}/&:$adminPort/"
    amend_template "$ROOT" kdc.conf "s,= /,= $ROOT/,; s/listen = 88/listen = 127.0.0.1:$kdcPort/
        s,SYSLOG:INFO:AUTH,FILE:$ROOT/kerberos.log,
        /acl_file/a kadmind_listen = 127.0.0.1:$adminPort\nkpasswd_listen = 127.0.0.1:$passwordPort"
    mkdir -p "$ROOT/var/lib/krb5kdc"
    commit zet-init "$ROOT"

    export CLIENT_ROOT=$BATS_FILE_TMPDIR/client
    example_root client "$CLIENT_ROOT"
    set_param "$CLIENT_ROOT" SERVER 127.0.0.1
    set_param "$CLIENT_ROOT" TICKET_MAX_LIFE "1h 0m 0s"
    set_param "$CLIENT_ROOT" TICKET_MAX_RENEWABLE_LIFE 1d
    amend_template "$CLIENT_ROOT" krb5.conf "s/\${kdc_server}/&:$kdcPort/"
    commit zet-client "$CLIENT_ROOT"

    export KRB5_CONFIG=$ROOT/etc/krb5.conf KRB5_KDC_PROFILE=$ROOT/etc/krb5kdc/kdc.conf
    export KRB5CCNAME=FILE:$BATS_FILE_TMPDIR/tickets KRB5RCACHETYPE=none
    kdb5_util create -s -P master
    kadmin.local addprinc -pw secret alice
    kadmin.local addprinc -pw secret root/admin
    start_server krb5kdc "$kdcPort" krb5kdc -n
    start_server kadmind "$adminPort" kadmind -nofork
}

teardown_file() {
    stop_servers
}

teardown() {
    kdestroy -q || true
}

ticket() {
    kinit "$@" <<<secret
}

# What klist says of the first ticket, in seconds.
life() {
    local fromDate fromTime toDate toTime
    read -r fromDate fromTime toDate toTime _ < <(klist | grep krbtgt/)
    echo $(($(date -d "$toDate $toTime" +%s) - $(date -d "$fromDate $fromTime" +%s)))
}

renewable_life() {
    local fromDate fromTime toDate toTime
    read -r fromDate fromTime _ < <(klist | grep krbtgt/)
    read -r _ _ toDate toTime < <(klist | grep 'renew until')
    echo $(($(date -d "$toDate $toTime" +%s) - $(date -d "$fromDate $fromTime" +%s)))
}

# about SECONDS LIMIT: between the request and the ticket the clock may have gone on.
about() {
    [ "$1" -le "$2" ] && [ "$1" -ge $(($2 - 20)) ]
}

@test "RealmOfTheDomainIsTheDefaultRealm" {
    ticket alice
    run klist
    [[ $output == *"Default principal: alice@EXAMPLE.ORG"* ]]
    [[ $output == *"krbtgt/EXAMPLE.ORG@EXAMPLE.ORG"* ]]
}

@test "WrongPasswordIsRefused" {
    run kinit alice <<<wrong
    [ "$status" -ne 0 ]
    [[ $output == *"Password incorrect"* ]]
}

@test "TicketLastsNoLongerThanItsParameterSays" {
    ticket -l 30h alice
    about "$(life)" $((4 * 3600))
}

@test "TicketIsRenewableNoLongerThanItsParameterSays" {
    ticket -r 30d alice
    about "$(renewable_life)" $((3 * 86400))
}

@test "ClientAsksForNoMoreThanItsOwnParametersSay" {
    KRB5_CONFIG=$CLIENT_ROOT/etc/krb5.conf ticket alice
    about "$(life)" 3600
    about "$(renewable_life)" 86400
}

@test "TicketMayBeForwarded" {
    ticket alice
    run klist -f
    [[ $output =~ Flags:\ [A-Za-z]*F ]]
}

@test "PasswordIsProvenBeforeATicketIsGiven" {
    KRB5_TRACE=$BATS_TEST_TMPDIR/trace ticket alice
    grep -q 'Additional pre-authentication required' "$BATS_TEST_TMPDIR/trace"
}

@test "PasswordCannotBeGuessedFromWhatGoesOverTheNetwork" {
    KRB5_TRACE=$BATS_TEST_TMPDIR/trace ticket alice
    grep -q 'Sending SPAKE response' "$BATS_TEST_TMPDIR/trace"
    run grep -i 'encrypted timestamp' "$BATS_TEST_TMPDIR/trace"
    [ "$status" -eq 1 ]
}

@test "TicketsAndKeysAreOfSha2" {
    ticket alice
    run klist -e
    [[ $output == *"Etype (skey, tkt): aes256-cts-hmac-sha384-192, aes256-cts-hmac-sha384-192"* ]]
    run kadmin.local getprinc alice
    [[ $output == *"Number of keys: 4"*"aes256-cts-hmac-sha384-192"*"aes128-cts-hmac-sha256-128"*"aes256-cts-hmac-sha1-96"*"aes128-cts-hmac-sha1-96"* ]]
    run kadmin.local getprinc K/M
    [[ $output == *"aes256-cts-hmac-sha384-192"* ]]
}

@test "WeakKeysAreNotAskedForThoughAKeyTableHasThem" {
    printf '%s\n' "add_entry -password -p alice -k 1 -e arcfour-hmac" secret "wkt $BATS_TEST_TMPDIR/weak" | ktutil
    run kinit -k -t "$BATS_TEST_TMPDIR/weak" alice
    [ "$status" -ne 0 ]
}

@test "WhatTheCentreDoesIsLogged" {
    ticket alice
    grep -q 'AS_REQ .* ISSUE: .* alice@EXAMPLE.ORG' "$ROOT/kerberos.log"
    grep -q 'kadmind.*starting' "$ROOT/kerberos.log"
}

@test "RealmThatIsOlderThanTheTemplateKeepsItsMasterKey" {
    local profile=$BATS_TEST_TMPDIR/kdc.conf
    sed "s,$ROOT/var/lib/krb5kdc,$BATS_TEST_TMPDIR,; s,key_stash_file = .*,key_stash_file = $BATS_TEST_TMPDIR/stash," \
        "$ROOT/etc/krb5kdc/kdc.conf" >"$profile"
    sed 's/master_key_type = .*/master_key_type = aes256-cts-hmac-sha1-96/' "$profile" >"$profile.former"
    KRB5_KDC_PROFILE=$profile.former kdb5_util create -s -P master
    KRB5_KDC_PROFILE=$profile kadmin.local addprinc -pw secret bob
    run env KRB5_KDC_PROFILE="$profile" kadmin.local getprinc K/M
    [[ $output == *"aes256-cts-hmac-sha1-96"* ]]
}

@test "AdministratorMayManageTheRealmOverTheNetwork" {
    run kadmin -p root/admin -w secret listprincs
    [ "$status" -eq 0 ]
    [[ $output == *"alice@EXAMPLE.ORG"* ]]
}

@test "NobodyElseMayManageTheRealm" {
    run kadmin -p alice -w secret listprincs
    [[ $output == *"Operation requires \`\`list'' privilege"* ]]
    [[ $output != *"krbtgt/"* ]]
}

@test "AdministrationRightsAreHiddenFromOthers" {
    [ "$(stat -c %a "$ROOT/etc/krb5kdc/kadm5.acl")" = 600 ]
}
