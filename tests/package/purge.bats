# What the scripts of the Debian packages know and leave of a host, whose root they get as dpkg hands it over.

load package

setup_file() {
    set_up_package
}

setup() {
    export DPKG_ROOT=$BATS_TEST_TMPDIR/root PATH=$ZET_BUILD/bin:$PATH
    "$SOURCE_DIR/script/example-root" server "$DPKG_ROOT"
    STATE=$DPKG_ROOT/var/lib/zet
    mkdir -p "$STATE" "$DPKG_ROOT/opt"
}

zet_init() {
    zet-init --root "$DPKG_ROOT" -q "$@"
}

# script NAME ARGUMENT...: one of the package's.
script() {
    local name=$1
    shift
    run sh "$SOURCE_DIR/debian/zet-tools.$name" "$@"
    echo "$name $*: $output"
    [ "$status" -eq 0 ]
}

purge() {
    script prerm remove
    script postrm remove
    script postrm purge
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
    for name in $'t\tab' $'line\nfeed' ' blank ' $'\xff' "it's: in sync"; do
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
