# What the scripts of the Debian packages know and leave of a host, whose root they get as dpkg hands it over.

load package

setup_file() {
    set_up_package
}

setup() {
    make_tree
    mkdir -p "$STATE" "$DPKG_ROOT/opt"
}

purge() {
    script prerm remove
    script postrm remove
    script postrm purge
}

# purge_mounted OPTIONS [COMMAND...]: with a file system of its own in the place of the state directory, in which the
# commands of the shell were run before. Its last line counts what is left in there.
purge_mounted() {
    unshare --mount true || skip "nothing can be mounted here"
    run unshare --mount bash -ec '
        mount -t tmpfs -o "$1" tmpfs "$STATE"
        eval "$2"
        for script in "prerm remove" "postrm remove" "postrm purge"; do
            sh "$SOURCE_DIR"/debian/zet-tools.$script
        done
        ls -A "$STATE" | wc -l' bash "$1" "${2:-}"
    echo "$output"
    [ "$status" -eq 0 ]
}

# edit NAME: a file with a reserve.
edit() {
    mkdir -p "$DPKG_ROOT/opt"
    echo A=1 >"$DPKG_ROOT/opt/$1"
    zet_init param set "/opt/$1" A 2
    [ -f "$DPKG_ROOT/opt/$1.before_zet" ]
}

@test "APurgeKeepsTheHistoryBesideAReserveOfAnyName" {
    local name
    for name in $'t\tab' $'line\nfeed' ' blank ' 'back\tslash' $'\xff' "it's: in sync"; do
        edit "$name"
        purge
        grep -F "${name//[$'\t\n']/?}.before_zet" <<<"$output"
        [ -f "$STATE/state.db" ]
        zet_init rollback-config
        rm -rf "$DPKG_ROOT/opt" "$STATE"/*
    done
}

@test "APurgeThatNobodyListedForFindsReservesOfAnyNameInTheHistory" {
    edit $'t\tab'
    edit $'line\nfeed'
    script prerm remove
    : >"$STATE/originals"
    script postrm purge
    grep -Fx "  $DPKG_ROOT/opt/t?ab.before_zet" <<<"$output"
    grep -Fx "  $DPKG_ROOT/opt/line?feed.before_zet" <<<"$output"
    [ -f "$STATE/state.db" ]
}

@test "APurgeKeepsTheHistoryBesideAReserveThatNoEntryTellsOfAnyMore" {
    echo ZET_HISTORY_KEEP=1 >>"$DPKG_ROOT/etc/zet/zet.conf"
    edit conf
    echo A=1 >"$DPKG_ROOT/opt/other"
    zet_init param set --no-backup /opt/other A 2
    zet_init param set --no-backup /opt/other A 3
    purge
    grep -Fx "  $DPKG_ROOT/opt/conf.before_zet" <<<"$output"
    [ -f "$STATE/state.db" ]
}

@test "APurgeKeepsWhatIsKnownWhereItCouldNotBeTold" {
    edit conf
    zet_init file restore /opt/conf
    echo broken >"$DPKG_ROOT/etc/zet/zet.conf"
    purge
    grep -F "$STATE stays: it could not be told" <<<"$output"
    [ -f "$STATE/state.db" ]
}

@test "APurgeOfAHostThatIsAsItWasLeavesNothing" {
    zet_init commit-config
    edit conf
    zet_init rollback-config
    rm -f "$DPKG_ROOT/etc/zet/zet.conf"
    purge
    [ -z "$output" ]
    [ ! -e "$STATE" ]
}

@test "APurgeOfAHostThatWasNeverSetUpLeavesNothing" {
    rm -rf "$DPKG_ROOT/etc/zet"
    purge
    [ -z "$output" ]
    [ ! -e "$STATE" ]
}

@test "ARemovalTellsTheOriginalsOfTargets" {
    zet_init commit-config
    script prerm remove
    script postrm remove
    grep -Fx "  $DPKG_ROOT/etc/krb5.conf.before_zet" <<<"$output" || grep -F "  $DPKG_ROOT/etc/krb5.conf.no_file_before_zet" <<<"$output"
    # Put back by hand, as was told.
    find "$DPKG_ROOT" -name '*before_zet' -delete
    script postrm purge
    [ ! -e "$STATE" ]
}

@test "APurgeTellsOfAStateDirectoryThatIsElsewhere" {
    mkdir -p "$DPKG_ROOT/srv/zet"
    echo ZET_VAR_LIB_DIR=/srv/zet >>"$DPKG_ROOT/etc/zet/zet.conf"
    edit conf
    purge
    grep -F '/srv/zet, which ZET_VAR_LIB_DIR names, stays' <<<"$output"
    grep -Fx "  $DPKG_ROOT/opt/conf.before_zet" <<<"$output"
    [ -f "$DPKG_ROOT/srv/zet/state.db" ]
}

@test "ARemovalTakesTheNumbersOfTheMonitorAway" {
    local metrics=$DPKG_ROOT/var/lib/prometheus/node-exporter
    mkdir -p "$metrics"
    touch "$metrics/zet-client.prom" "$metrics/zet-server.prom" "$metrics/apt.prom"
    script postrm remove
    [ "$(ls "$metrics")" = apt.prom ]
}

@test "APurgeGoesThroughALinkAndLeavesIt" {
    rmdir "$STATE"
    mkdir "$DPKG_ROOT/var/lib/elsewhere"
    ln -s elsewhere "$STATE"
    zet_init commit-config
    zet_init rollback-config
    purge
    [ -z "$output" ]
    [ "$(readlink "$STATE")" = elsewhere ]
    [ -z "$(ls -A "$DPKG_ROOT/var/lib/elsewhere")" ]
}

@test "APurgeFollowsALinkOfATreeInThatTree" {
    zet_init commit-config
    zet_init rollback-config
    lead_away
    purge
    [ -z "$output" ]
    [ -z "$(ls -A "$DPKG_ROOT/srv/state-of-a-tree")" ]
    zet_init commit-config
    purge
    grep -F "$DPKG_ROOT/srv/state-of-a-tree stays, too" <<<"$output"
    [ -f "$DPKG_ROOT/srv/state-of-a-tree/state.db" ]
}

@test "APurgeLeavesAMountPointEmpty" {
    purge_mounted mode=755 'for command in commit-config rollback-config; do zet-init --root "$DPKG_ROOT" -q $command >/dev/null; done'
    [ "$output" = 0 ]
}

@test "APurgeTellsOfAStateDirectoryThatIsElsewhereWhereTheUsualOneIsGone" {
    mkdir -p "$DPKG_ROOT/srv/zet"
    echo ZET_VAR_LIB_DIR=/srv/zet >>"$DPKG_ROOT/etc/zet/zet.conf"
    edit conf
    rmdir "$STATE"
    purge
    grep -F '/srv/zet, which ZET_VAR_LIB_DIR names, stays' <<<"$output"
    grep -Fx "  $DPKG_ROOT/opt/conf.before_zet" <<<"$output"
    [ -f "$DPKG_ROOT/srv/zet/state.db" ]
}

@test "APurgeNamesNoStateDirectoryThatIsNotThere" {
    touch "$DPKG_ROOT/etc/conf.before_zet"
    rm -r "$STATE"
    script postrm purge
    grep -Fx "  $DPKG_ROOT/etc/conf.before_zet" <<<"$output"
    run grep -F "$STATE stays" <<<"$output"
    [ "$status" -eq 1 ]
}

@test "APurgeWithoutTheHistoryKnowsTheOriginalsOfLinesAndOfTargetsThatHaveMoreToTell" {
    mkdir "$DPKG_ROOT/etc/zet/targets.d"
    printf '[[edits]]\nname = "ntp"\nfile = "/opt/conf"\nparam = "NTP"\nvalue = "yes"\nroles = "both"\n' >"$DPKG_ROOT/etc/zet/targets.d/own.toml"
    printf '[templates."exports"]\ntarget = "/opt/exports"\n' >>"$DPKG_ROOT/etc/zet/targets.d/own.toml"
    echo NTP=no | tee "$DPKG_ROOT/opt/conf" >"$DPKG_ROOT/opt/exports"
    zet_init commit-config
    rm "$STATE"/state.db*
    chmod 600 "$DPKG_ROOT/opt/exports"
    zet_init status || true
    purge
    grep -Fx "  $DPKG_ROOT/opt/conf.before_zet" <<<"$output"
    grep -Fx "  $DPKG_ROOT/opt/exports.before_zet" <<<"$output"
}

@test "ARemovalThatCanKeepNothingSaysSoAndGoesOn" {
    mkdir -p "$DPKG_ROOT/srv/zet"
    echo ZET_VAR_LIB_DIR=/srv/zet >>"$DPKG_ROOT/etc/zet/zet.conf"
    edit conf
    purge_mounted mode=755 'mount -o remount,ro "$STATE"; sh "$SOURCE_DIR/debian/zet-tools.prerm" remove; mount -o remount,rw "$STATE"'
    grep -F "zet-tools: nothing can be kept in $STATE" <<<"$output"
    purge_mounted nr_inodes=1
    grep -F "zet-tools: nothing can be kept in $STATE" <<<"$output"
    purge_mounted mode=755 'touch "$STATE/originals"; mount -o remount,ro "$STATE"; sh "$SOURCE_DIR/debian/zet-tools.prerm" remove; mount -o remount,rw "$STATE"'
    grep -F "zet-tools: nothing can be kept in $STATE" <<<"$output"
}

@test "APurgeTakesWhatKilledRunsLeftInTheStateDirectory" {
    zet_init commit-config
    zet_init rollback-config
    mkdir -m 700 "$STATE/zet-staging.abcdef"
    touch "$STATE/zet-staging.abcdef/rendered" "$STATE/zet-server.status.tmp"
    purge
    [ -z "$output" ]
    [ ! -e "$STATE" ]
}
