# The check commands of the targets: what they may do, and what becomes of those that do not end.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n' 'check = ["own-check", "{}"]'
}

teardown() {
    remove_host
}

# own_check: the command that is standard input.
own_check() {
    script own-check
}

# assert_refused TEXT REMEDY [OUTPUT]: for that reason nothing is written.
assert_refused() {
    remember_files
    run_zet commit-config
    assert_refusal 1 "$HOST/out/one.conf: its check \"own-check\" $1 ($2)${3:+$'\n'$3}
zet-client: nothing was changed"
    assert_unchanged_but_staging
}

# assert_gone FILE: the process whose number is in the file has ended.
assert_gone() {
    local tries
    for ((tries = 0; tries < 50; ++tries)); do
        kill -0 "$(<"$1")" 2>/dev/null || return 0
        sleep 0.1
    done
    echo "process $(<"$1") still runs" >&2
    return 1
}

LATE="took longer over what [one.conf] renders to than 1 s and was ended"
LATE_REMEDY="see why, or give it more seconds with check_timeout"

@test "a check that does not end is ended, and what it started with it" {
    own_check <<-SCRIPT
		#!/bin/sh
		echo hanging
		sleep 1000 &
		echo \$! >"$BASE/sleeper"
		wait
	SCRIPT
    echo 'check_timeout = 1' >>templates/targets.toml
    SECONDS=0
    assert_refused "$LATE" "$LATE_REMEDY" "  hanging"
    [[ $SECONDS -lt 10 ]]
    assert_gone "$BASE/sleeper"
}

@test "a check that does not want to end is killed" {
    own_check <<-SCRIPT
		#!/bin/sh
		trap '' TERM INT HUP
		echo \$\$ >"$BASE/check"
		while :; do sleep 1; done
	SCRIPT
    echo 'check_timeout = 1' >>templates/targets.toml
    SECONDS=0
    assert_refused "$LATE" "$LATE_REMEDY"
    [[ $SECONDS -lt 10 ]]
    assert_gone "$BASE/check"
}

@test "a check that closes its output and stays is ended all the same" {
    own_check <<-'SCRIPT'
		#!/bin/sh
		exec >/dev/null 2>&1
		sleep 1000
	SCRIPT
    echo 'check_timeout = 1' >>templates/targets.toml
    assert_refused "$LATE" "$LATE_REMEDY"
}

@test "on a system that does not tell when a program ends, the same holds" {
    own_check <<-'SCRIPT'
		#!/bin/sh
		echo refused
		exit 1
	SCRIPT
    capture strace -qq -o "$BASE/trace" -e trace=pidfd_open \
        -e inject=pidfd_open:error=ENOSYS "$ZET_BIN/zet-client" --config zet.conf commit-config
    assert_refusal 1 "$HOST/out/one.conf: its check \"own-check\" refuses what [one.conf] renders to, with status 1 (correct the template)
  refused
zet-client: nothing was changed"
    grep -q INJECTED "$BASE/trace"
}

@test "a check that is stopped is ended all the same" {
    own_check <<-'SCRIPT'
		#!/bin/sh
		kill -STOP $$
	SCRIPT
    echo 'check_timeout = 1' >>templates/targets.toml
    assert_refused "$LATE" "$LATE_REMEDY"
}

@test "what a check leaves running with its output open is not waited for" {
    own_check <<-SCRIPT
		#!/bin/sh
		setsid sh -c 'echo \$\$ >"$BASE/daemon"; while :; do echo still here; sleep 0.01; done' &
		while [ ! -s "$BASE/daemon" ]; do sleep 0.01; done
	SCRIPT
    SECONDS=0
    run_zet commit-config
    kill "$(<"$BASE/daemon")"
    assert_status 0
    [[ $SECONDS -lt 20 ]]
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
}

@test "of a check that prints without end, the begin and the end are kept, and memory stays small" {
    own_check <<-'SCRIPT'
		#!/bin/sh
		echo first line
		timeout 2 yes
		echo last line
		exit 1
	SCRIPT
    capture /usr/bin/time -f %M -o "$BASE/peak" "$ZET_BIN/zet-client" --config "$HOST/zet.conf" commit-config
    assert_status 1
    [[ $(tail -n 1 "$BASE/peak") -lt 100000 ]]
    [[ ${#stderr} -lt 20000 ]]
    [[ $stderr == *$'with status 1 (correct the template)\n  first line\n  y\n'*$'\n  last line\nzet-client: nothing was changed\n' ]]
    grep -qx '  \.\.\. [0-9]* bytes are left out here \.\.\.' <<<"$stderr"
}

@test "a check that a signal ends is told with its signal" {
    own_check <<-'SCRIPT'
		#!/bin/sh
		echo before
		kill -SEGV $$
	SCRIPT
    assert_refused "was ended by SIGSEGV when it looked at what [one.conf] renders to" "run it by hand to see why" "  before"
}

@test "a check starts in the root directory, without input, without files of the command and with all signals" {
    own_check <<-SCRIPT
		#!/usr/bin/python3
		import os, signal, sys
		with open("$BASE/seen", "w") as seen:
		    files = sorted(int(n) for n in os.listdir("/proc/self/fd"))
		    ignored = [n for n in (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP) if signal.getsignal(n) == signal.SIG_IGN]
		    with open("/proc/self/status") as status:
		        masks = [line.split()[1] for line in status if line.startswith("SigBlk")]
		    print(os.getcwd(), [n for n in files if n > 2 and n != seen.fileno() and os.path.exists("/proc/self/fd/%d" % n)],
		          ignored, masks, os.getpgid(0) == os.getpid(), repr(sys.stdin.read()), file=seen)
	SCRIPT
    (
        trap '' INT QUIT HUP
        exec 7<zet.conf
        "$ZET_BIN/zet-client" --config "$HOST/zet.conf" -q commit-config
    )
    assert_file "$BASE/seen" $'/ [] [] [\'0000000000000000\'] True \'\'\n'
}

@test "a relative directory for temporary files does not keep a check from its file" {
    own_check <<-'SCRIPT'
		#!/bin/sh
		grep -q 'realm = EXAMPLE.ORG' "$1"
	SCRIPT
    mkdir here
    TMPDIR=here run_zet commit-config -n
    assert_status 3
    rmdir here
}

@test "a signal ends a command that looks, and the group of its check" {
    own_check <<-SCRIPT
		#!/bin/sh
		sleep 1000 &
		echo \$! >"$BASE/sleeper.new"
		mv "$BASE/sleeper.new" "$BASE/sleeper"
		wait
	SCRIPT
    local signal command words
    for words in INT/check-config TERM/check-config INT/commit-config HUP/commit-config; do
        rm -f "$BASE/sleeper"
        env --default-signal=INT "$ZET_BIN/zet-client" --config "$HOST/zet.conf" "${words#*/}" 2>"$BASE/stderr" 3>&- &
        command=$!
        while [[ ! -e $BASE/sleeper ]]; do sleep 0.02; done
        kill -"${words%/*}" "$command"
        status=0
        wait "$command" || status=$?
        assert_equal "$status" 1
        [[ $(<"$BASE/stderr") == "zet-client: error: ended by a signal ("*") before all was done (run the command again)" ]]
        assert_gone "$BASE/sleeper"
    done
}

@test "a limit that is no number of seconds is a problem of the list" {
    local value
    own_check <<<$'#!/bin/sh\nexit 0'
    cp templates/targets.toml "$BASE/list"
    for value in 0 -1 86401 99999999999 1.5 '"60"'; do
        cp "$BASE/list" templates/targets.toml
        echo "check_timeout = $value" >>templates/targets.toml
        run_zet check-config
        assert_status 1
        [[ $output == "$HOST/templates/targets.toml:5:17: check_timeout is "*" (write a number of seconds from 1 to 86400)"$'\n' ]]
    done
    cp "$BASE/list" templates/targets.toml
    echo 'check_timeout = 86400' >>templates/targets.toml
    run_zet -q check-config
    assert_success ""
}

@test "check-config tells what the check commands refuse, beside all other problems" {
    own_check <<-'SCRIPT'
		#!/bin/sh
		grep -n realm "$1"
		exit 3
	SCRIPT
    add_target two.conf $'${nope}\n' 'check = ["own-check", "{}"]'
    add_target three.conf $'fine\n' 'check = ["missing-program"]'
    add_target four.conf $'fine\n' 'check = ["true"]'
    mkfifo out/four.conf
    remember_host
    run_zet check-config
    assert_status 1
    assert_stderr ""
    assert_output "$HOST/templates/two.conf:1:1: placeholder \"\${nope}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)
$HOST/out/four.conf: is no regular file (move it away, or correct the target)
$HOST/out/one.conf: its check \"own-check\" refuses what [one.conf] renders to, with status 3 (correct the template)
  11:realm = EXAMPLE.ORG
$HOST/out/three.conf: what [three.conf] renders to cannot be checked: missing-program: cannot be started: No such file or directory (install it, or correct its name)"
    assert_host_unchanged
    run_zet --json check-config
    assert_json '[p.get("output") for p in d["problems"]], d["checks_not_run"]' '[[null, null, "11:realm = EXAMPLE.ORG\n", null], 0]'
    run_zet check-config --no-checks one.conf three.conf
    assert_status 0
    assert_stderr "zet-client: no problems found"
    run_zet --json check-config --no-checks one.conf three.conf
    assert_json 'd["checks_not_run"]' 2
}

@test "check-config is told either to run checks or not to" {
    local order
    for order in '--run-checks --no-checks' '--no-checks --run-checks'; do
        # shellcheck disable=SC2086
        run_zet check-config $order
        assert_refusal 2 "--run-checks and --no-checks exclude each other (leave one of them out)"
    done
}

@test "check-config runs only the checks of the templates that are named" {
    own_check <<<$'#!/bin/sh\nexit 1'
    add_target two.conf $'fine\n' 'check = ["false"]'
    run_zet check-config two.conf
    assert_status 1
    assert_output "$HOST/out/two.conf: its check \"false\" refuses what [two.conf] renders to, with status 1 (correct the template)"
}

@test "the check commands of a tree are run only when that is asked for" {
    local tree=$BASE/tree words
    mkdir -p "$tree"/{etc/zet,usr/share/zet/templates,var/lib/zet}
    echo DOMAIN=example.org >"$tree/etc/zet/zet.conf"
    echo 'x' >"$tree/usr/share/zet/templates/one.conf"
    printf '[templates."one.conf"]\ntarget = "/etc/one.conf"\nroles = "both"\ncheck = ["own-check"]\n' >"$tree/usr/share/zet/templates/targets.toml"
    own_check <<<$'#!/bin/sh\necho run >>'"$BASE"$'/ran\nexit 1'
    for words in check-config 'commit-config -n' commit-config; do
        # shellcheck disable=SC2086
        capture "$ZET_BIN/zet-client" --root "$tree" $words
        [[ $status -eq 0 || $status -eq 3 ]]
        [[ $stderr == *"zet-client: 1 check command of the tree was not run (--run-checks runs them, on this host)"* ]]
        assert_absent "$BASE/ran"
    done
    # shellcheck disable=SC2086
    capture "$ZET_BIN/zet-client" --root "$tree" --json commit-config -n
    assert_json 'd["checks_not_run"]' 1
    for words in check-config 'commit-config -n' commit-config; do
        rm -f "$BASE/ran"
        # shellcheck disable=SC2086
        capture "$ZET_BIN/zet-client" --root "$tree" $words --run-checks
        assert_status 1
        [[ $output$stderr == *"$tree/etc/one.conf: its check \"own-check\" refuses"* ]]
        assert_file "$BASE/ran" $'run\n'
    done
}
