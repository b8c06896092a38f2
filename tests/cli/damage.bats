# Edits in place of files that are not as the system left them: damaged markers, other line ends, a first line
# that no notice may come before.

load helper

setup() {
    make_host
}

teardown() {
    remove_host
}

@test "every edit in place refuses a lost end marker with file, line and the way to a repair" {
    printf 'a=1\n# --PRE-ZET-- P=1\n# ---ZET_BEGIN---\nP=2\nP=mine\n' >conf
    remember_host
    local arguments
    for arguments in 'param set conf P 3' 'param set --no-markers conf P 3' 'param set -n conf P 3' \
        'line set conf ^P= P=3' 'param restore conf P' 'param restore --all-blocks conf P' \
        'line restore conf ^P=' 'file strip conf'; do
        # shellcheck disable=SC2086  # several words
        run_zet $arguments
        assert_refusal 1 'conf:3: a begin marker has no end marker ("zet-client doctor conf" tells a repair)'
    done
    assert_host_unchanged
    PROGRAM=$ZET_BIN/zet-init run_zet --json param set conf P 3
    assert_status 1
    assert_json 'd["errors"]' '["conf:3: a begin marker has no end marker (\"zet-init doctor conf\" tells a repair)"]'
}

@test "a file is edited again once it is repaired" {
    printf '# --PRE-ZET-- P=1\n# ---ZET_BEGIN---\nP=2\n\n# ---ZET_BEGIN---\nQ=2\n# ----ZET_END----\n' >conf
    run_zet param set conf P 3
    assert_status 1
    zet doctor conf | patch -s -p1
    run_zet param set conf P 3
    assert_status 0
    assert_file conf "${NOTICE}# --PRE-ZET-- P=1
$(block P=3)

$(block Q=2)
"
}

@test "a commit and a restore of the whole file are not stopped by damage" {
    echo 'a=${domain}' >templates/t
    printf '[templates."t"]\ntarget = "%s/conf"\nroles = "both"\n' "$HOST" >templates/targets.toml
    echo own >conf
    zet -q commit-config
    printf '# ---ZET_BEGIN---\nlost\n' >>conf
    zet -q commit-config 2>/dev/null
    run_zet doctor conf
    assert_success "conf: no damage"
    printf '# ---ZET_BEGIN---\nlost\n' >>conf
    zet -q file restore conf
    assert_file conf $'own\n'
}

@test "a former line that a strip left is no damage" {
    printf 'a=1\n' >conf
    zet -q param set conf a 2
    zet -q file strip conf
    run_zet param set conf b 1
    assert_status 0
    run_zet param restore --all-blocks conf a
    assert_status 0
    assert_file conf "${NOTICE}a=1

"
}

@test "where all lines end with CR LF, so does the line that is set, and no marker" {
    printf 'a=1\r\nb=2\r\n' >conf
    zet -q param set conf a new
    zet -q line set conf ^c= c=3
    assert_file conf "${NOTICE}# --PRE-ZET-- a=1"$'\r\n# ---ZET_BEGIN---\na=new\r\n# ----ZET_END----\nb=2\r\n
# ---ZET_BEGIN---\nc=3\r\n# ----ZET_END----\n'
    run_zet param set conf a new
    assert_success "conf: unchanged"
    zet -q param set --no-markers conf b 5
    assert_equal "$(grep -c $'^b=5\r$' conf)" 1
    zet -q param restore --all-blocks conf a
    assert_equal "$(grep -c $'^a=1\r$' conf)" 1
}

@test "lookups print no carriage return" {
    printf 'a=1\r\n\r\n' >conf
    run_zet param get conf a
    assert_success 1
    run_zet line get conf ^a
    assert_success a=1
    run_zet --json param get conf a
    assert_json 'd["value"]' 1
}

@test "mixed line ends are told with the first line of the other kind" {
    printf 'a=1\r\nb=2\nc=3\r\n' >conf
    run_zet param set conf a 2
    assert_status 0
    assert_stderr "zet-client: warning: conf:2: ends with a line feed alone, other lines with a carriage return before it; the line that is set has none (give all lines the same end)"
    assert_equal "$(grep -c $'^a=2$' conf)" 1
    printf 'a=1\nb=2\r\n' >conf
    run_zet -n line set conf ^a= a=2
    assert_status 3
    assert_stderr "zet-client: warning: conf:2: ends with a carriage return and a line feed, other lines with a line feed alone; the line that is set has none (give all lines the same end)"
}

@test "no notice goes in front of a line that has to stay the first" {
    local first
    for first in '#!/bin/sh' '<?xml version="1.0"?>' '{'; do
        printf '%s\na=1\n' "$first" >conf
        for command in 'param set conf a 2' 'line set conf ^a= a=2'; do
            # shellcheck disable=SC2086  # several words
            run_zet $command
            assert_refusal 1 "conf:1: the programs that read the file need this line as its first, and a notice would come before it (--no-markers edits without notice and markers)"
        done
        assert_file conf "$first"$'\na=1\n'
        run_zet param restore conf a
        assert_success 'conf: unchanged, nothing to restore for "a"'
        run_zet param set --no-markers --no-backup conf a 2
        assert_success "conf: changed"
        assert_file conf "$first"$'\na=2\n'
    done
}

@test "a restore puts no notice in front of such a line either" {
    printf '#!/bin/sh\n# --PRE-ZET-- a=1\n%s\n' "$(block a=2)" >conf
    run_zet param restore conf a
    assert_status 1
    [[ $stderr == "zet-client: error: conf:1: the programs that read the file "* ]]
    run_zet param restore --no-markers --no-backup conf a
    assert_success "conf: changed"
    assert_file conf $'#!/bin/sh\na=1\n'
}

@test "a strip puts no notice in front of such a line, and a notice that is there stays" {
    printf '#!/bin/sh\n%s\n' "$(block a=2)" >conf
    zet -q file strip conf
    assert_file conf $'#!/bin/sh\n'
    printf '%s#!/bin/sh\na=1\n' "$NOTICE" >conf
    run_zet param set conf a 2
    assert_status 0
}

@test "the lines below a notice without an end can still be set" {
    printf '# --ZET_CONFIG_COMMENT--\n# text\na=1\n' >conf
    run_zet line set --no-backup conf a= a=2
    assert_status 0
    assert_file conf "# --ZET_CONFIG_COMMENT--
# text
# --PRE-ZET-- a=1
$(block a=2)
"
}

@test "a former line is not set, were it the last line" {
    printf 'a=1\n# --PRE-ZET-- kdc=1\n' >conf
    zet -q line set --no-backup conf 'kdc' kdc=2
    assert_file conf "${NOTICE}a=1
# --PRE-ZET-- kdc=1

$(block kdc=2)
"
}

# peak_of COMMAND...: the most memory that it took, in KB.
peak_of() {
    capture /usr/bin/time -f %M -o "$BASE/peak" "$ZET_BIN/zet-client" --config "$HOST/zet.conf" "$@"
    tail -n 1 "$BASE/peak"
}

@test "a long file with many blocks is looked through within a few times its size" {
    ! grep -q __asan_init "$ZET_BIN/zet-client" || skip "the sanitizer needs memory of its own"
    awk 'BEGIN { for (i = 0; i < 200000; ++i) printf "# --PRE-ZET-- name%d=old\n%s\nname%d=new\n%s\n",
        i, "# ---ZET_BEGIN---", i, "# ----ZET_END----" }' >"$HOST/long"
    local kilobytes=$(($(stat -c %s "$HOST/long") / 1024)) peak command
    for command in doctor explain; do
        peak=$(peak_of "$command" "$HOST/long")
        ((peak < 10 * 1024 + 8 * kilobytes)) || differ "$command" "8 times $kilobytes KB" "$peak KB"
    done
}
