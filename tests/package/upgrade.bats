# What the Debian packages tell after an upgrade of a host, whose root they get as dpkg hands it over.

load package

setup_file() {
    set_up_package
}

setup() {
    make_tree
    SHIPPED=$DPKG_ROOT/usr/share/zet/templates
    [[ $BATS_TEST_NAME == *WithoutAHistory* ]] && echo ZET_HISTORY=no >>"$DPKG_ROOT/etc/zet/zet.conf"
    zet_init commit-config
}

# upgrade: the templates were.
upgrade() {
    script postinst triggered /usr/share/zet/templates
}

# newer NAME: another text of it is shipped.
newer() {
    echo '# newer' >>"$SHIPPED/$1"
}

# told HEADING WAY LINE...: that, and nothing else; the way comes last.
told() {
    diff <(printf '%s\n' "$1" "${@:3}" "zet-tools: ${2//COMMAND/zet-init --root $DPKG_ROOT}") - <<<"$output"
}

NEWER="zet-tools: newer templates are shipped than the working copies were made from:"
NEW="zet-tools: templates are shipped that have no working copy yet, which a commit makes:"
UNSURE="zet-tools: it cannot be told whether anything newer is shipped:"
UPGRADE='nothing was changed ("COMMAND template diff" shows what would, "COMMAND template upgrade" takes them over)'
INSTALL='"COMMAND template install NAME" makes one now (what was edited in a copy with a former name has to be taken over)'
ASK='"COMMAND template upgrade NAME" says what to do about each'

@test "NewerTemplatesAreToldAlone" {
    newer krb5.conf
    echo '# edited' | cat - "$DPKG_ROOT/etc/zet/exports" >"$BATS_TEST_TMPDIR/edited"
    cat "$BATS_TEST_TMPDIR/edited" >"$DPKG_ROOT/etc/zet/exports"
    newer exports
    upgrade
    told "$NEWER" "$UPGRADE" "  $DPKG_ROOT/etc/zet/krb5.conf: newer shipped" "  $DPKG_ROOT/etc/zet/exports: edited, newer shipped"
}

@test "NothingIsToldOfAHostThatHasAllThatIsShipped" {
    echo '# edited' >>"$DPKG_ROOT/etc/zet/exports"
    upgrade
    [ -z "$output" ]
    rm -r "$DPKG_ROOT/etc/zet"
    upgrade
    [ -z "$output" ]
}

@test "ATemplateThatIsMissingHidesNoNewerOne" {
    newer krb5.conf
    rm "$SHIPPED/exports" "$DPKG_ROOT/etc/zet/exports"
    upgrade
    grep -Fx "$NEWER" <<<"$output"
    grep -Fx "  $DPKG_ROOT/etc/zet/krb5.conf: newer shipped" <<<"$output"
    grep -Fx "$UNSURE" <<<"$output"
    grep -F "exports: its state cannot be told" <<<"$output"
}

@test "AWorkingCopyThatWasMadeWithoutAHistoryIsToldAsOneThatNobodyKnows" {
    newer krb5.conf
    upgrade
    told "$UNSURE" "$ASK" "  $DPKG_ROOT/etc/zet/krb5.conf: unknown"
}

@test "ATemplateWithAnotherNameIsToldAsNew" {
    mv "$SHIPPED/exports" "$SHIPPED/exports.conf"
    sed -i 's/^\[templates\."exports"\]/[templates."exports.conf"]/' "$SHIPPED/targets.toml"
    upgrade
    told "$NEW" "$INSTALL" "  $DPKG_ROOT/etc/zet/exports.conf: not installed"
}

@test "AListThatCannotBeReadIsTold" {
    echo 'broken' >>"$SHIPPED/targets.toml"
    upgrade
    grep -Fx "$UNSURE" <<<"$output"
    grep -F "$SHIPPED/targets.toml:" <<<"$output"
}

@test "TheLanguageOfWhoeverUpgradesHidesNothing" {
    newer krb5.conf
    LC_ALL=C.UTF-8 LANGUAGE=de upgrade
    told "$NEWER" "$UPGRADE" "  $DPKG_ROOT/etc/zet/krb5.conf: newer shipped"
}

@test "WhatARemovalKnewIsForgottenInTheTreeAlone" {
    touch "$STATE/originals" "$STATE/elsewhere"
    script postinst configure
    [ ! -e "$STATE/originals" ]
    [ ! -e "$STATE/elsewhere" ]
    lead_away
    touch "$DPKG_ROOT/srv/state-of-a-tree/originals"
    script postinst configure
    [ ! -e "$DPKG_ROOT/srv/state-of-a-tree/originals" ]
}
