# What a monitor sees of a host: its state in numbers, and a record of each change in the journal.

load helper

setup() {
    make_host
    echo 'realm = ${realm}' >templates/a
    echo 'domain = ${domain}' >templates/b
    cat >templates/targets.toml <<-END
		[templates."a"]
		target = "$HOST/a"
		roles = "both"
		[templates."b"]
		target = "$HOST/b"
		roles = "both"
	END
}

teardown() {
    remove_host
}

# samples: what a strict parser reads in the output.
samples() {
    printf '%s' "$output" >"$BATS_TEST_TMPDIR/exposition"
    /usr/bin/python3 -B "$SOURCE_DIR/tests/cli/openmetrics.py" "$BATS_TEST_TMPDIR/exposition"
}

# in_journal COMMAND...: the fields that the journal gets meanwhile, where one can be put into its place.
in_journal() {
    unshare --user --map-root-user --mount true 2>/dev/null || skip "no directory can be mounted here"
    # shellcheck disable=SC2016  # expanded inside
    capture unshare --user --map-root-user --mount sh -c '
        mount -t tmpfs tmpfs /run && mkdir -p /run/systemd/journal && exec /usr/bin/python3 -B "$@"
    ' sh "$SOURCE_DIR/tests/cli/journal.py" /run/systemd/journal/socket "$@"
}

@test "before the first commit the numbers say so, and every state has one" {
    run_zet status --format openmetrics
    assert_status 3
    assert_equal "$(samples)" "zet_in_sync role=client 0
zet_targets role=client,state=in sync 0
zet_targets role=client,state=pending 0
zet_targets role=client,state=edited 0
zet_targets role=client,state=missing 0
zet_targets role=client,state=not committed 2
zet_targets role=client,state=differs 0
zet_targets role=client,state=unknown 0
zet_edits role=client,state=in place 0
zet_edits role=client,state=changed 0
zet_edits role=client,state=gone 0
zet_edits role=client,state=missing 0
zet_listed_edits role=client,state=in sync 0
zet_listed_edits role=client,state=pending 0
zet_listed_edits role=client,state=edited 0
zet_listed_edits role=client,state=missing 0
zet_listed_edits role=client,state=not committed 0
zet_listed_edits role=client,state=unknown 0
zet_newer_templates role=client 0
zet_left_over_targets role=client 0"
}

@test "the numbers follow what becomes of the host" {
    echo x=1 >edited
    run_zet param set edited x 2
    run_zet commit-config
    run_zet status --format=openmetrics
    assert_status 0
    samples | grep -Fx 'zet_in_sync role=client 1'
    samples | grep -Fx 'zet_targets role=client,state=in sync 2'
    samples | grep -Fx 'zet_edits role=client,state=in place 1'
    committed=$(sed -n 's/^COMMIT_TIME=//p' state/zet-client.status)
    samples | grep -Fx "zet_last_commit_timestamp_seconds role=client $(date -d "$committed" +%s)"
    rm a
    echo more >>b
    echo x=1 >edited
    echo newer >>templates/a
    run_zet status --format=openmetrics
    assert_status 3
    samples | grep -Fx 'zet_targets role=client,state=missing 1'
    samples | grep -Fx 'zet_targets role=client,state=edited 1'
    samples | grep -Fx 'zet_edits role=client,state=gone 1'
    samples | grep -Fx 'zet_newer_templates role=client 1'
}

@test "what the words tell of a target that cannot be told is a number, too" {
    run_zet commit-config
    rm a
    ln -s a a
    run_zet status --format openmetrics
    assert_status 1
    grep -F "$HOST/a: its state cannot be told" <<<"$stderr"
    samples | grep -Fx 'zet_in_sync role=client 0'
    samples | grep -Fx 'zet_targets role=client,state=unknown 1'
}

@test "numbers and a document are not printed at once" {
    run_zet status --json --format openmetrics
    assert_status 2
    assert_json 'd["role"], d["targets"]' '["client", []]'
    assert_json 'd["errors"]' '["--json and --format=openmetrics ask for two different documents (leave one out)"]'
}

@test "each target is in one of the states, whoever asks" {
    need_root
    copy_programs
    run_zet commit-config
    echo more >>a
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status --format openmetrics
    assert_status 3
    samples | grep -Fx 'zet_targets role=client,state=in sync 1'
    samples | grep -Fx 'zet_targets role=client,state=differs 1'
}

@test "each number and each state is in the manual" {
    run_zet commit-config
    run_zet status --format openmetrics
    local manual name
    manual=$(sed 's/\\//g' "$SOURCE_DIR/man/zet-init.1.scd")
    while read -r name; do
        sed -n '/^# MONITORING/,/^# JOURNAL/p' <<<"$manual" | grep -F "*$name*"
    done < <(sed -n 's/^# TYPE \([a-z_]*\) .*/\1/p' <<<"$output")
    while read -r name; do
        sed -n '/^# COMMANDS/,/^# OPTIONS/p' <<<"$manual" | sed -n '/^\*status\*/,/^\*values\*/p' | tr '\n' ' ' | grep -E "\b${name// /[[:blank:]]+}\b"
    done < <(grep -o 'state="[a-z ]*"' <<<"$output" | sed 's/state="//; s/"//' | sort -u)
    while read -r name; do
        grep -F "*$name*" <<<"$manual"
    done < <(grep -oE 'ZET_[A-Z_]+:-' "$SOURCE_DIR/contrib/systemd/write-metrics" | sed 's/:-//')
}

@test "the numbers name no file" {
    run_zet commit-config
    run_zet status --format openmetrics
    run grep -F "$HOST" <<<"$output"
    [ "$status" -eq 1 ]
}

@test "a change is one record of the journal, with who, which and what" {
    in_journal "$ZET_BIN/zet-client" --config "$HOST/zet.conf" -m $'for\nthe domain' commit-config
    assert_status 0
    assert_stderr ""
    grep -Fx "MESSAGE='change 1 by root: --config $HOST/zet.conf commit-config: $HOST/a, $HOST/etc/a, $HOST/b, $HOST/etc/b'" <<<"$output" ||
        grep -E "^MESSAGE='change 1 by root: .*commit-config: .*$HOST/a" <<<"$output"
    for field in "PRIORITY='5'" "SYSLOG_IDENTIFIER='zet-client'" "ZET_CHANGE='1'" "ZET_OUTCOME='done'" \
        "ZET_ROLE='client'" "ZET_USER='root'" "ZET_MESSAGE='for\\nthe domain'" "ZET_FILE='$HOST/a'" "ZET_FILE='$HOST/b'"; do
        grep -Fx "$field" <<<"$output"
    done
    [ "$(grep -c '^--' <<<"$output")" -eq 1 ]
}

@test "an edit, an undo and a rollback are told, a look and a dry run are not" {
    echo x=1 >edited
    in_journal sh -c '
        zet="$1/zet-client --config $2"
        $zet param set edited x 2 && $zet undo && $zet commit-config && $zet rollback-config' sh "$ZET_BIN" zet.conf
    assert_status 0
    assert_equal "$(grep -c '^ZET_CHANGE=' <<<"$output")" 4
    in_journal sh -c '
        zet="$1/zet-client --config $2"
        $zet status; $zet commit-config -n; $zet param get edited x' sh "$ZET_BIN" zet.conf
    assert_output ""
}

@test "a secret value is in no record" {
    echo x=1 >edited
    chmod 600 edited
    in_journal "$ZET_BIN/zet-client" --config zet.conf param set edited x hush
    assert_status 0
    grep -F "param set edited x" <<<"$output"
    run grep -F hush <<<"$output"
    [ "$status" -eq 1 ]
}

@test "a journal that does not take the record keeps no change from being made" {
    in_journal sh -c 'rm /run/systemd/journal/socket && mkdir /run/systemd/journal/socket &&
        "$1/zet-client" --config zet.conf commit-config' sh "$ZET_BIN"
    assert_status 0
    assert_output ""
    assert_stderr ""
    grep -Fx 'realm = EXAMPLE.ORG' a
}

@test "a tree is not the host that has the journal" {
    mkdir -p tree/etc
    echo x=1 >tree/etc/edited
    in_journal "$ZET_BIN/zet-client" --root tree param set /etc/edited x 2
    assert_status 0
    assert_output ""
}

# write_metrics: what the timer runs, for this host.
write_metrics() {
    mkdir -p "$BASE/bin"
    ln -sf "$ZET_BIN/zet-client" "$BASE/bin/zet-client"
    # The shell's number is that of the script.
    capture env PATH="$BASE/bin:$PATH" ZET_METRICS_DIR="$BASE/metrics" ZET_CONFIG="$HOST/zet.conf" \
        sh -c "${BEFORE:-:}"'; exec "$1"' sh "$SOURCE_DIR/contrib/systemd/write-metrics"
}

@test "the timer writes the numbers of a committed role for the node exporter" {
    mkdir "$BASE/metrics"
    write_metrics
    assert_success ""
    assert_equal "$(ls "$BASE/metrics")" ""
    run_zet commit-config
    write_metrics
    assert_success ""
    assert_equal "$(ls "$BASE/metrics")" zet-client.prom
    grep -Fx 'zet_in_sync{role="client"} 1' "$BASE/metrics/zet-client.prom"
    /usr/bin/python3 -B "$SOURCE_DIR/tests/cli/openmetrics.py" "$BASE/metrics/zet-client.prom"
}

@test "the timer says what is not in sync, and keeps no old number where nothing can be told" {
    mkdir "$BASE/metrics"
    run_zet commit-config
    rm a
    write_metrics
    assert_status 0
    grep -Fx "$HOST/a: missing" <<<"$stderr"
    grep -Fx 'zet_in_sync{role="client"} 0' "$BASE/metrics/zet-client.prom"
    echo broken >zet.conf
    write_metrics
    assert_status 1
    grep -F "zet.conf:1" <<<"$stderr"
    assert_equal "$(ls "$BASE/metrics")" ""
}

@test "the timer writes the numbers of the others where one target cannot be told, and fails" {
    mkdir "$BASE/metrics"
    run_zet commit-config
    rm a b
    ln -s a a
    write_metrics
    assert_status 1
    assert_equal "$(grep -Fc "$HOST/a: its state cannot be told" <<<"$stderr")" 1
    grep -Fx "$HOST/b: missing" <<<"$stderr"
    grep -Fx 'zet_in_sync{role="client"} 0' "$BASE/metrics/zet-client.prom"
    grep -Fx 'zet_targets{role="client",state="unknown"} 1' "$BASE/metrics/zet-client.prom"
    grep -Fx 'zet_targets{role="client",state="missing"} 1' "$BASE/metrics/zet-client.prom"
    grep -Fx '# EOF' "$BASE/metrics/zet-client.prom"
}

@test "the timer takes the numbers of a role away that was rolled back, and of a host without settings" {
    mkdir "$BASE/metrics"
    run_zet commit-config
    write_metrics
    run_zet rollback-config
    write_metrics
    assert_success ""
    assert_equal "$(ls "$BASE/metrics")" ""
    run_zet commit-config
    write_metrics
    rm zet.conf
    write_metrics
    assert_success ""
    assert_equal "$(ls "$BASE/metrics")" ""
}

@test "the timer writes through no link, and into no directory that others may write to" {
    mkdir "$BASE/metrics"
    run_zet commit-config
    echo mine >"$BASE/victim"
    ln -s "$BASE/victim" "$BASE/metrics/zet-client.prom"
    BEFORE="ln -s '$BASE/victim' '$BASE/metrics/zet-client.prom.'\$\$" write_metrics
    assert_success ""
    assert_file "$BASE/victim" $'mine\n'
    [ ! -L "$BASE/metrics/zet-client.prom" ]
    assert_equal "$(stat -c %a "$BASE/metrics/zet-client.prom")" 644
    rm "$BASE"/metrics/*
    for mode in 777 775; do
        chmod "$mode" "$BASE/metrics"
        write_metrics
        assert_status 1
        assert_stderr "write-metrics: $BASE/metrics: others may write there, so that no numbers are written (chown root it, and chmod 755)"
        assert_equal "$(ls "$BASE/metrics")" ""
    done
}

@test "the timer writes into no directory of somebody else" {
    need_root
    mkdir "$BASE/metrics"
    run_zet commit-config
    chown 65534 "$BASE/metrics"
    write_metrics
    assert_status 1
    grep -F 'others may write there' <<<"$stderr"
    assert_equal "$(ls "$BASE/metrics")" ""
}

@test "a directory that is put into the place of the one that was judged is not written to" {
    mkdir "$BASE/metrics" "$BASE/others" "$BASE/bin"
    chmod 777 "$BASE/others"
    run_zet commit-config
    # shellcheck disable=SC2016  # expanded by the script
    printf '#!/bin/sh\n/usr/bin/stat "$@"; cd "%s" && [ -d away ] || { mv metrics away && ln -s others metrics; }\n' \
        "$BASE" >"$BASE/bin/stat"
    chmod 755 "$BASE/bin/stat"
    write_metrics
    assert_equal "$(ls "$BASE/others")" ""
    assert_equal "$(ls "$BASE/away")" zet-client.prom
}

@test "the timer asks the product where it keeps what it knows" {
    mkdir "$BASE/metrics"
    run_zet commit-config
    run_zet rollback-config
    sed -i '/^ZET_VAR_LIB_DIR=/d' zet.conf
    mkdir elsewhere
    echo "ZET_VAR_LIB_DIR=$HOST/elsewhere" >>zet.conf
    run_zet commit-config
    write_metrics
    assert_success ""
    assert_equal "$(ls "$BASE/metrics")" zet-client.prom
}

@test "targets in a home are seen by the timer's service" {
    grep -Fx 'ProtectHome=read-only' "$SOURCE_DIR/contrib/systemd/zet-status.service.in"
}

@test "the timer's service is closed to nearly everything" {
    command -v systemd-analyze >/dev/null || skip "there is no systemd-analyze here"
    sed 's|@writeMetrics@|/bin/true|' "$SOURCE_DIR/contrib/systemd/zet-status.service.in" >"$BASE/zet-status.service"
    cp "$SOURCE_DIR/contrib/systemd/zet-status.timer" "$BASE/"
    exposure=$(systemd-analyze security --offline=true --no-pager "$BASE/zet-status.service" 2>/dev/null |
        sed -n 's/.*Overall exposure level for zet-status.service: \([0-9.]*\).*/\1/p')
    # The manual has the figure.
    grep -F "systemd-analyze security* gives it an exposure of $exposure" "$SOURCE_DIR/man/zet-init.1.scd"
    systemd-analyze verify --man=no "$BASE/zet-status.service" "$BASE/zet-status.timer"
}
