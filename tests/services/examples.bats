# The example domain, as somebody who tries the product meets it.

load services

setup() {
    ROOT=$BATS_TEST_TMPDIR/root
}

# All but the one of the other identity.
targets() {
    sed -n 's/^target = "\(.*\)"$/\1/p' "$ROOT/usr/share/zet/templates/targets.toml" | grep -vx /etc/nslcd.conf | sort -u
}

@test "ExampleKeepsOutOfADirectoryThatIsInUse" {
    mkdir "$ROOT"
    touch "$ROOT/mine"
    run "$SOURCE_DIR/script/example-root" server "$ROOT"
    [ "$status" -eq 1 ]
    [ "$(ls "$ROOT")" = mine ]
}

@test "ExampleIsForAServerOrAClient" {
    run "$SOURCE_DIR/script/example-root" printer "$ROOT"
    [ "$status" -eq 2 ]
    [ ! -e "$ROOT" ]
}

@test "ServerGetsEveryFileWithoutAQuestionLeftOpen" {
    example_root server "$ROOT"
    commit zet-init "$ROOT"
    for target in $(targets); do
        [ "$(head -n 1 "$ROOT$target")" = "# --ZET_CONFIG_COMMENT--" ]
        run grep -F -e '${' -e '!{' -e ZET_TEMPLATE_COMMENT "$ROOT$target"
        [ "$status" -eq 1 ]
    done
}

@test "FileHasTheModeOfItsTemplate" {
    example_root server "$ROOT"
    commit zet-init "$ROOT"
    [ "$(stat -c %a "$ROOT/etc/krb5.conf")" = 644 ]
    [ "$(stat -c %a "$ROOT/etc/sssd/sssd.conf")" = 600 ]
    [ "$(stat -c %a "$ROOT/etc/krb5kdc/kadm5.acl")" = 600 ]
}

@test "OtherIdentityIsOneParameterAway" {
    example_root client "$ROOT"
    set_param "$ROOT" IDENTITY nslcd
    commit zet-client "$ROOT"
    [ "$(stat -c %a "$ROOT/etc/nslcd.conf")" = 640 ]
    [ ! -e "$ROOT/etc/sssd/sssd.conf" ]
    grep -qx 'passwd:         files systemd ldap' "$ROOT/etc/nsswitch.conf"
}

@test "ClientGetsNoFileOfTheServer" {
    example_root client "$ROOT"
    commit zet-client "$ROOT"
    [ "$(head -n 1 "$ROOT/etc/sssd/sssd.conf")" = "# --ZET_CONFIG_COMMENT--" ]
    [ ! -e "$ROOT/etc/exports" ]
    [ ! -e "$ROOT/etc/ldap/slapd.conf" ]
    [ ! -e "$ROOT/etc/krb5kdc" ]
}

@test "WhatWasThereBeforeIsKept" {
    example_root server "$ROOT"
    commit zet-init "$ROOT"
    for name in krb5.conf exports; do
        cmp "$ROOT/etc/$name.before_zet" "$SOURCE_DIR/examples/server/etc/$name"
    done
    [ -e "$ROOT/etc/idmapd.conf.no_file_before_zet" ]
    [ ! -e "$ROOT/etc/idmapd.conf.before_zet" ]
}

@test "SecondRunChangesNothing" {
    example_root server "$ROOT"
    commit zet-init "$ROOT"
    before=$(find "$ROOT/etc" -type f -printf '%P %i %T@\n' | sort)
    run commit zet-init "$ROOT"
    [ "$status" -eq 0 ]
    [[ $output == *unchanged* ]]
    [ "$before" = "$(find "$ROOT/etc" -type f -printf '%P %i %T@\n' | sort)" ]
}

@test "DemoShowsFilesBackupsAndASecondRun" {
    run "$SOURCE_DIR/script/demo"
    [ "$status" -eq 0 ]
    [[ $output == *"default_realm = EXAMPLE.ORG"* ]]
    [[ $output == *"krb5.conf.before_zet"* ]]
    [[ $output == *unchanged* ]]
    [[ $output == *"alice@EXAMPLE.ORG"* ]]
}
