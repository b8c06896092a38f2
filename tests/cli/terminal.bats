# What a terminal gets: no byte that somebody else chose tells it what to do, and no line pretends to be another's.

load helper
load set

ESC=$'\e'
ODD=$'odd\e[31m\nzet-client: error: forged\xc2\x9b2Jend'
ODD_SHOWN='odd\x1b[31m\nzet-client: error: forged\xc2\x9b2Jend'

setup() {
    make_set
}

teardown() {
    remove_host
}

# assert_harmless: nothing but line feeds and tabs controls the terminal.
assert_harmless() {
    local text=$output$stderr
    [[ -n $text ]]
    ! LC_ALL=C grep -n $'[\001-\010\013-\037\177]' <<<"$text" || return 1
    ! LC_ALL=C grep -n $'\302[\200-\237]' <<<"$text" || return 1
}

@test "a file name that is an order to the terminal is shown as its letters, wherever it goes" {
    run_zet param get "$HOST/$ODD" x
    assert_refusal 1 "$HOST/$ODD_SHOWN: does not exist (create it, or correct the path)"
    printf 'x=1\n' >"$ODD"
    run_zet param set "$ODD" x 2
    assert_status 0
    assert_output "$ODD_SHOWN: changed, the original is kept as $ODD_SHOWN.before_zet"
    local words
    for words in 'param get' 'param set -n' 'doctor' 'explain' 'file reserve' 'file strip -n' 'file restore' 'file forget'; do
        # shellcheck disable=SC2086
        run_zet -v $words "$ODD" x y
        assert_harmless
        # shellcheck disable=SC2086
        run_zet -v $words "$ODD"
        assert_harmless
    done
    run_zet "$ODD"
    assert_status 2
    assert_stderr "zet-client: error: unknown command \"$ODD_SHOWN\" (see \"zet-client --help\")"
    run_zet --color "$ODD" status
    assert_status 2
    assert_harmless
    capture "$ZET_BIN/zet-client" --config "$ODD" status
    assert_status 1
    assert_harmless
    run_zet --root "$HOST/$ODD" status
    assert_status 1
    assert_harmless
    run_zet --module "$HOST/$ODD" values
    if is_built_in; then assert_status 2; else assert_status 1; fi
    assert_harmless
}

@test "what a set of targets reports has no order to the terminal" {
    mkdir "$HOST/$ODD"
    mv templates "$HOST/$ODD/"
    mkdir templates
    sed -i 's/^ZET_CFG_TEMPL_DIR=.*//' zet.conf
    cp zet.conf "$BASE/zet.conf"
    printf 'x\n' >templates/$'te\em.conf'
    printf '%s\n' '[templates."te\u001bm.conf"]' "target = \"$HOST/out/a\\u001b[1mb\"" 'roles = "both"' \
        '"unknown\u001b" = 1' >templates/targets.toml
    echo "ZET_CFG_TEMPL_DIR=$HOST/templates" >>zet.conf
    local words
    for words in check-config status commit-config; do
        run_zet $words
        assert_status 1
        assert_harmless
    done
    sed -i '/^"unknown/d' templates/targets.toml
    for words in check-config 'commit-config -n' commit-config status rollback-config; do
        # shellcheck disable=SC2086
        run_zet -v $words
        [[ $status -ne 1 ]]
        assert_harmless
    done
    run_zet commit-config
    assert_output "$HOST/out/a\\x1b[1mb: created, mode 0644, owner $(id -u):$(id -g)
1 created"
}

@test "what a check command prints cannot pass for a message, and is no order to the terminal" {
    script speak <<-'SCRIPT'
		#!/bin/sh
		printf 'a\tb\033[2J\nzet-client: error: forged\r\nno end'
		exit 1
	SCRIPT
    add_target one.conf $'x\n' 'check = ["speak", "{}"]'
    run_zet commit-config
    assert_refusal 1 "$HOST/out/one.conf: its check \"speak\" refuses what [one.conf] renders to, with status 1 (correct the template)
  a	b\\x1b[2J
  zet-client: error: forged\\r
  no end
zet-client: nothing was changed"
    run_zet check-config
    assert_output "$HOST/out/one.conf: its check \"speak\" refuses what [one.conf] renders to, with status 1 (correct the template)
  a	b\\x1b[2J
  zet-client: error: forged\\r
  no end"
    run_zet --json check-config
    assert_json 'd["problems"][0]["output"]' $'a\tb\e[2J\nzet-client: error: forged\r\nno end'
}

@test "a value is for a pipe as it is, and for a terminal as its letters" {
    printf 'x=a\tb\e[31mc\n' >conf
    run_zet param get conf x
    assert_success $'a\tb\e[31mc'
    on_terminal param get conf x
    assert_status 0
    assert_output 'a	b\x1b[31mc'
    run_zet line get conf '^x='
    assert_success $'x=a\tb\e[31mc'
    on_terminal line get conf '^x='
    assert_output 'x=a	b\x1b[31mc'
    printf 'REALM=R\e[0m\n' >>zet.conf
    run_zet option get REALM
    assert_success $'R\e[0m'
    on_terminal option get REALM
    assert_output 'R\x1b[0m'
    on_terminal values
    assert_harmless
}

@test "a diff is for a pipe as it is, and for a terminal in color and as its letters" {
    printf 'x=1\nodd\t\e[31m\n' >conf
    run_zet param set --no-markers conf x 2 -n --diff
    assert_output "conf: would be changed
--- a/conf
+++ b/conf
@@ -1,2 +1,2 @@
-x=1
+x=2
 odd	$ESC[31m"
    on_terminal param set --no-markers conf x 2 -n --diff
    assert_output "conf: would be changed
$ESC[1m--- a/conf$ESC[0m
$ESC[1m+++ b/conf$ESC[0m
$ESC[36m@@ -1,2 +1,2 @@$ESC[0m
$ESC[31m-x=1$ESC[0m
$ESC[32m+x=2$ESC[0m
 odd	\\x1b[31m"
    on_terminal --color never param set --no-markers conf x 2 -n --diff
    assert_harmless
    NO_COLOR=1 on_terminal param set --no-markers conf x 2 -n --diff
    assert_harmless
    run_zet --color always param set --no-markers conf x 2 -n --diff
    [[ $output == *"$ESC[32m+x=2$ESC[0m"$'\n'" odd	$ESC[31m"$'\n' ]]
}

@test "no file that is opened takes the place of a standard stream that was closed" {
    add_target one.conf $'x\n'
    local closed expected
    for closed in '<&-' '>&-' '2>&-' '<&- >&- 2>&-'; do
        rm -f out/*
        script closing <<<$'#!/bin/sh\nexec '"'$ZET_BIN/zet-client' --config '$HOST/zet.conf' -v commit-config $closed"
        capture strace -qq -o "$BASE/trace" -e trace=openat closing
        # What the report cannot be written to, the work can be done without.
        expected=0
        [[ $closed != *'>&-'* || $closed == '2>&-' ]] || expected=1
        assert_status "$expected"
        assert_made one.conf $'x\n'
        # The last lines are those of the command; the dynamic linker's come before it has its streams.
        sed -n '/zet.conf"/,$p' "$BASE/trace" >"$BASE/opened"
        grep -q 'one.conf' "$BASE/opened"
        ! grep -E '= [012]$' "$BASE/opened" || return 1
        grep -qE '"/dev/null", O_RD(WR|ONLY)\) *= [0-9]' "$BASE/trace"
    done
}

@test "a terminal gets the lines of a report and the messages in their order" {
    add_target one.conf $'x\n'
    add_target two.conf $'x\n'
    zet -q commit-config
    echo edited >>out/two.conf
    on_terminal commit-config
    assert_output "zet-client: warning: $HOST/out/two.conf: was edited since the last commit; the edits are overwritten
zet-client: \"history show 2 $HOST/out/two.conf\" shows what it held
$HOST/out/two.conf: changed, the original is kept as $HOST/out/two.conf.before_zet
1 changed, 1 unchanged" ||
        assert_output "zet-client: warning: $HOST/out/two.conf: was edited since the last commit; the edits are overwritten
zet-client: \"history show 2 $HOST/out/two.conf\" shows what it held
$HOST/out/two.conf: changed
1 changed, 1 unchanged"
}
