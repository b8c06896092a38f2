# commit-config is whole or harmless: what comes before the first write, and what a failure leaves.

load helper
load set

setup() {
    make_set
}

teardown() {
    remove_host
}

@test "all problems of all templates are told before anything is written" {
    add_target one.conf $'fine\n'
    add_target two.conf $'${nope}\n${realm\n'
    add_target three.conf $'${neither}\n'
    original one.conf $'old\n'
    remember_host
    run_zet commit-config
    assert_refusal 1 "$HOST/templates/two.conf:1:1: placeholder \"\${nope}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)
zet-client: error: $HOST/templates/two.conf:2:1: \"\${\" has no \"}\" after it in its line (close the placeholder, take \"\${\" out, or begin the line with #)
zet-client: error: $HOST/templates/three.conf:1:1: placeholder \"\${neither}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)
zet-client: nothing was changed"
    assert_host_unchanged
}

@test "the problems are in the document as check-config has them" {
    add_target two.conf $'${nope}\n'
    run_zet --json check-config
    local problems
    problems=$(json 'd["problems"]')
    run_zet --json commit-config
    assert_status 1
    assert_json 'd["problems"]' "$problems"
    assert_json 'd["targets"], d["exit_status"], len(d["errors"])' '[[], 1, 1]'
}

@test "problems of templates that are not asked for do not keep the others from being made" {
    add_target one.conf $'fine\n'
    add_target two.conf $'${nope}\n'
    run_zet commit-config one.conf
    assert_status 0
    assert_made one.conf $'fine\n'
}

@test "everything is rendered in a directory that nobody else may look into, before any target is written" {
    script note <<-SCRIPT
		#!/bin/sh
		stat -c %a "\$(dirname "\$(dirname "\$(dirname "\$1")")")" >>"$BASE/note"
		cat "\$1" >>"$BASE/note"
		ls "$HOST/out" "$HOST/etc" >>"$BASE/note"
	SCRIPT
    add_target one.conf $'${realm}\n' 'check = ["note", "{}"]'
    add_target two.conf $'${domain}\n' 'check = ["note", "{}"]'
    run_zet commit-config
    assert_status 0
    local empty="$HOST/etc:

$HOST/out:
"
    assert_file "$BASE/note" "700
$(notice one.conf)
EXAMPLE.ORG
${empty}700
$(notice two.conf)
example.org
$empty"
    assert_equal "$(names_in state)" "zet-client-fs.status zet-client.status zet.lock"
}

@test "a check command gets its arguments as they stand, without a shell" {
    script note <<-SCRIPT
		#!/bin/sh
		printf '<%s>' "\$@" >"$BASE/note"
	SCRIPT
    add_target one.conf $'fine\n' 'check = ["note", "-f={}", "{}", "$HOME", "`id`", "\"a b\"", "a;rm;{}{}", ""]'
    run_zet commit-config
    assert_status 0
    local staged
    staged=$(sed 's/<-f=\([^>]*\)>.*/\1/' "$BASE/note")
    assert_file "$BASE/note" "<-f=$staged><$staged><\$HOME><\`id\`><\"a b\"><a;rm;$staged$staged><>"
}

@test "what the check command of any target refuses keeps all of them from being written" {
    script refuse <<-'SCRIPT'
		#!/bin/sh
		echo "line 11 of $1 is no good"
		echo "and this is standard error" >&2
		exit 7
	SCRIPT
    add_target one.conf $'fine\n'
    add_target two.conf $'${realm}\n' 'check = ["refuse", "the_file"]'
    original one.conf $'old\n'
    remember_files
    run_zet commit-config
    assert_refusal 1 "$HOST/out/two.conf: its check \"refuse\" refuses what [two.conf] renders to, with status 7 (correct the template)
  line 11 of the_file is no good
  and this is standard error
zet-client: nothing was changed"
    assert_unchanged_but_staging
    run_zet commit-config -n
    assert_status 1
    assert_unchanged_but_staging
    assert_equal "$(names_in "$TMPDIR")" ""
}

@test "what all check commands refuse comes at once, as what check-config finds" {
    script refuse <<-'SCRIPT'
		#!/bin/sh
		echo "$2: no good"
		exit 7
	SCRIPT
    add_target one.conf $'fine\n' 'check = ["refuse", "{}", "1"]'
    add_target two.conf $'fine\n'
    add_target three.conf $'fine\n' 'check = ["refuse", "{}", "3"]'
    local words
    for words in commit-config "commit-config -n" check-config; do
        # shellcheck disable=SC2086
        run_zet $words --json
        assert_status 1
        assert_json '[p["output"] for p in d["problems"]], d["failure"]' '[["1: no good\n", "3: no good\n"], null]'
        assert_json '[p["file"].split("/")[-1] for p in d["problems"]]' '["one.conf", "three.conf"]'
    done
    run_zet commit-config
    [[ $stderr == *$'\n  1: no good\n'*$'\n  3: no good\n''zet-client: nothing was changed'$'\n' ]]
}

@test "a check command of a secret target may say what it likes, nobody reads it" {
    script refuse <<-'SCRIPT'
		#!/bin/sh
		cat "$1"
		exit 1
	SCRIPT
    add_target one.conf $'password\n' 'check = ["refuse", "{}"]' "secret = true"
    run_zet -v commit-config --diff
    assert_status 1
    [[ $output$stderr != *password* ]]
}

@test "a check command that a signal ends, or that cannot be started, is a refusal" {
    script dies <<-'SCRIPT'
		#!/bin/sh
		kill -KILL $$
	SCRIPT
    add_target one.conf $'fine\n' 'check = ["dies", "{}"]'
    remember_files
    run_zet commit-config
    assert_refusal 1 "$HOST/out/one.conf: its check \"dies\" was ended by SIGKILL when it looked at what [one.conf] renders to (run it by hand to see why)
zet-client: nothing was changed"
    assert_unchanged_but_staging
    sed -i 's/"dies"/"missing-program"/' templates/targets.toml
    remember_files
    run_zet commit-config
    assert_refusal 1 "$HOST/out/one.conf: what [one.conf] renders to cannot be checked: missing-program: cannot be started: No such file or directory (install it, or correct its name)"
    assert_unchanged_but_staging
}

@test "a check command runs for targets that would not change, too, and on the mode that they get" {
    script note <<-SCRIPT
		#!/bin/sh
		stat -c %a "\$1" >>"$BASE/note"
	SCRIPT
    add_target one.conf $'fine\n' 'check = ["note", "{}"]'
    chmod 600 templates/one.conf
    zet commit-config
    run_zet commit-config
    assert_success "1 unchanged"
    assert_file "$BASE/note" $'600\n600\n'
}

@test "a check command that changes the file it is given keeps all of them from being written" {
    script change <<-'SCRIPT'
		#!/bin/sh
		case $CHANGE in
		    bytes) echo added >>"$1" ;;
		    turned) tr a-z A-Z <"$1" >"$1.new" && cat "$1.new" >"$1" && rm "$1.new" ;;
		    mode) chmod 600 "$1" ;;
		    gone) rm "$1" ;;
		    kind) rm "$1" && mkdir "$1" ;;
		esac
	SCRIPT
    add_target one.conf $'fine\n'
    add_target two.conf $'fine\n' 'check = ["change", "{}"]'
    original one.conf $'old\n'
    remember_files
    local dry
    for CHANGE in bytes turned mode gone kind; do
        export CHANGE
        for dry in "" -n; do
            run_zet commit-config $dry
            assert_refusal 1 "$HOST/out/two.conf: its check \"change\" changed the file it was given (let it only read)
zet-client: nothing was changed"
            assert_files_unchanged
        done
    done
    CHANGE=none
    run_zet commit-config
    assert_status 0
    assert_made two.conf $'fine\n'
}

@test "the original is reserved before the target is written" {
    add_target one.conf $'fine\n'
    original one.conf $'old\n'
    strace -f -qq -e trace=/rename -o "$BASE/trace" \
        "$ZET_BIN/zet-client" --config zet.conf commit-config
    assert_equal "$(grep -o '"[^"]*", [^"]*"[^"]*"' "$BASE/trace" | grep -v zet-staging | sed "s|$HOST/||g; s/, AT_FDCWD//; s/, [0-9]*, /, /; s/[.][[:alnum:]]\{6\}[.]tmp/.COPY.tmp/")" \
        '"one.conf.before_zet.COPY.tmp", "one.conf.before_zet"
"one.conf.COPY.tmp", "one.conf"
"././one.conf.tmp", "././one.conf"'
}

# fail_at NAME: a commit --diff cannot write the target of that name.
fail_at() {
    script diff <<-SCRIPT
		#!/bin/sh
		mkdir "$HOST/out/$1.tmp"
		exec $DIFF "\$@"
	SCRIPT
}

@test "a failure in the middle tells what was written and what was not, and a second run completes it" {
    local name
    for name in a b c d; do
        add_target "$name" $'${realm}\n' "restart = [\"service-$name\"]"
        original "$name" "old $name"$'\n'
    done
    fail_at c
    run_zet commit-config --diff
    assert_status 1
    assert_equal "$(tail -n 1 <<<"${output%?}")" "to be restarted: service-a, service-b"
    assert_equal "$(head -n 1 <<<"$stderr")" "zet-client: error: the commit did not come to its end, its status is not recorded (run it again to complete it). Written: $HOST/out/a, $HOST/out/b. Not written: $HOST/out/c, $HOST/out/d"
    [[ $stderr == *"$HOST/out/c"*$'\n' ]]
    assert_absent state/zet-client.status
    assert_made b $'EXAMPLE.ORG\n'
    assert_file out/c $'old c\n'
    assert_file out/d $'old d\n'
    assert_equal "$(names_in state)" zet.lock
    rmdir out/c.tmp
    run_zet commit-config
    assert_status 0
    assert_equal "$(cut -d, -f1 <<<"${output%?}")" "$HOST/out/c: changed
$HOST/out/d: changed
to be restarted: service-c
2 changed"
    for name in a b c d; do
        assert_made "$name" $'EXAMPLE.ORG\n'
        assert_file "out/$name.before_zet" "old $name"$'\n'
    done
    assert_equal "$(find . -name '*.tmp')" ""
    run_zet status
    assert_status 0
}

@test "a failure in the middle is in the document as well" {
    add_target a $'${realm}\n' 'restart = ["service-a"]'
    add_target b $'${realm}\n'
    original a $'old\n'
    original b $'old\n'
    fail_at b
    run_zet --json commit-config --diff
    assert_status 1
    assert_json '[t["template"] for t in d["targets"]], d["restart"], len(d["errors"]), d["exit_status"]' \
        '[["a"], ["service-a"], 2, 1]'
    rmdir out/b.tmp
}

@test "the services of what no commit recorded are named, whatever ran in between" {
    add_target one.conf $'${realm}\n' 'restart = ["service-one"]'
    run_zet commit-config
    assert_status 0
    echo REALM=OTHER >>zet.conf
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/state/zet-client.status" -e trace=/write -e inject=/write:signal=KILL \
        "$ZET_BIN/zet-client" --config zet.conf commit-config
    assert_status 137
    echo a=1 >other
    run_zet param set other a 2
    assert_status 0
    run_zet commit-config
    assert_success "to be restarted: service-one
1 unchanged"
    run_zet commit-config
    assert_success "1 unchanged"
}

@test "the services of what a killed first commit wrote are named, though another command cleared up after it" {
    add_target a $'${realm}\n' 'restart = ["service-a"]'
    add_target b $'${realm}\n' 'restart = ["service-b"]'
    original a $'old\n'
    original b "$(notice b)"$'\nEXAMPLE.ORG\n'
    chmod 644 out/b
    add_target c $'${realm}\n' 'restart = ["service-c"]'
    stop_commit KILL openat ././c.tmp
    assert_status 137
    assert_made a $'EXAMPLE.ORG\n'
    echo a=1 >other
    zet param set other a 2
    run_zet --json commit-config -n
    assert_json 'd["restart"]' '["service-a", "service-c"]'
    run_zet --json commit-config
    assert_json '[t["result"] for t in d["targets"]], d["restart"]' \
        '[["unchanged", "unchanged", "created"], ["service-a", "service-c"]]'
    run_zet --json commit-config
    assert_json 'd["restart"]' '[]'
}

@test "the services of what the other role committed are not named again" {
    add_target a $'${realm}\n' 'restart = ["service-a"]'
    capture server commit-config
    assert_status 0
    run_zet commit-config
    assert_success "1 unchanged"
}

@test "a status that cannot be recorded is a failure, and the next run records it" {
    add_target one.conf $'fine\n'
    # What the check before it finds as it should be changes meanwhile.
    script diff <<-SCRIPT
		#!/bin/sh
		mkdir -p "$HOST/state/zet-client.status"
		exec $DIFF "\$@"
	SCRIPT
    run_zet commit-config --diff
    assert_status 1
    [[ $stderr == *"$HOST/state/zet-client.status: cannot be written: "*" (make room, or allow it; then commit again)"* ]]
    [[ $stderr == *"Written: $HOST/out/one.conf. Not written: none"* ]]
    rmdir state/zet-client.status
    run_zet commit-config
    assert_success "1 unchanged"
    run_zet status
    assert_status 0
}

@test "temporary files that a run that was cut short left are cleared away" {
    add_target one.conf $'fine\n'
    kill_at_rename out/one.conf commit-config
    truncate -s 30 out/one.conf.tmp
    head -c 20 out/one.conf.tmp >out/one.conf.a1B2c3.tmp
    echo another >out/one.conf.before_zet.d4E5f6.tmp
    mkdir -m 700 state/zet-staging.abcdef
    echo half >state/zet-staging.abcdef/rendered
    run_zet commit-config
    assert_status 0
    assert_output "$HOST/out/one.conf: created, mode 0644, owner 0:0
1 created"
    [[ $stderr == *"zet-client: removed $HOST/out/one.conf.tmp, which a run that was cut short left"$'\n'* ]]
    [[ $stderr == *"zet-client: removed $HOST/out/one.conf.a1B2c3.tmp, which a run that was cut short left"$'\n'* ]]
    [[ $stderr == *"warning: $HOST/out/one.conf.before_zet.d4E5f6.tmp: stays, "* ]]
    rm out/one.conf.before_zet.d4E5f6.tmp
    assert_equal "$(names_in state)" "zet-client-fs.status zet-client.status zet.lock"
    assert_equal "$(names_in out)" "one.conf one.conf.no_file_before_zet"
}

@test "a run that goes on does not lose its directory to another" {
    script other <<-SCRIPT
		#!/bin/sh
		[ -z "\$INSIDE" ] || exit 0
		INSIDE=yes "$ZET_BIN/zet-client" --config "$HOST/zet.conf" commit-config >"$BASE/other" || exit
		cmp "\$1" "$HOST/out/one.conf"
	SCRIPT
    add_target one.conf $'fine\n' 'check = ["other", "{}"]'
    run_zet commit-config -n
    assert_status 3
    assert_output "$HOST/out/one.conf: would be created, mode 0644, owner 0:0
1 would be created"
    assert_stderr ""
    assert_made one.conf $'fine\n'
}
