# Runs that are cut short: by a signal between two targets, or killed at any instant.

load helper
load set

TARGETS=50

setup() {
    make_set
    # Syncing has no part in what is tested here, and takes long for so many files.
    echo ZET_SYNC=no >>zet.conf
}

teardown() {
    remove_host
}

# fill COUNT: so many targets, t01 and so on; every second one was there before.
fill() {
    local i
    for ((i = 1; i <= $1; ++i)); do
        name=$(printf t%02d "$i")
        add_target "$name" "$i "$'${realm}\n' "restart = [\"service-$name\"]"
        ((i % 2)) || original "$name" "old $i"$'\n'
    done
    cp -a out "$BASE/out.before"
}

begin_anew() {
    rm -rf out etc state
    cp -a "$BASE/out.before" out
    mkdir etc state
    (umask 077 && : >state/zet.lock)
}

# The bytes, modes and names of all that a commit makes of the targets.
made() {
    find out etc -printf '%p %y %m %U:%G\n' | sort
    find out etc -type f -exec sha256sum {} + | sort
}

# assert_same_end: the set is what a run that nothing disturbed makes of it, and all is in order.
assert_same_end() {
    local now
    now=$(made)
    [[ $now == "$END" ]] || {
        diff <(echo "$END") <(echo "$now") >&2
        return 1
    }
    assert_equal "$(names_in state)" "zet-client-fs.status zet-client.status zet.lock"
    assert_equal "$(names_in "$TMPDIR")" ""
    run_zet status
    assert_status 0
}

# assert_nothing_lost: every target is its former self or the new one, and every reserve the first original.
assert_nothing_lost() {
    local file name before
    for file in "$BASE/out.before"/* "$BASE/out.after"/*; do
        name=${file##*/}
        before=$BASE/out.before/$name
        if [[ -e $before ]]; then
            cmp -s "out/$name" "$before" || cmp "out/$name" "$BASE/out.after/$name"
            [[ ! -e out/$name.before_zet ]] || cmp "out/$name.before_zet" "$before"
            cmp -s "out/$name" "$before" || cmp "out/$name.before_zet" "$before"
        else
            [[ ! -e out/$name ]] || cmp "out/$name" "$BASE/out.after/$name"
            assert_absent "out/$name.before_zet"
            [[ ! -e out/$name || -e out/$name.no_file_before_zet ]]
        fi
    done
}

learn_the_end() {
    zet -q commit-config
    END=$(made)
    mkdir "$BASE/out.after"
    cp out/t?? "$BASE/out.after"
}

# names FIRST LAST: the paths of the targets, as a report lists them.
names() {
    local i list=
    for ((i = $1; i <= $2; ++i)); do
        list+=${list:+, }$HOST/out/$(printf t%02d "$i")
    done
    echo "${list:-none}"
}

@test "a signal ends a commit between two targets, with a report, and a second run completes it" {
    fill $TARGETS
    learn_the_end
    local signal count last
    for signal in INT/Interrupt/2 TERM/Terminated/26 HUP/Hangup/50 INT/Interrupt/1; do
        count=${signal##*/}
        begin_anew
        last=(openat ././t01.no_file_before_zet)  # before any target
        ((count == 1)) || last=(/rename "././$(printf t%02d.tmp $((count - 1)))")
        stop_commit "${signal%%/*}" "${last[@]}"
        assert_status 1
        signal=${signal#*/}
        assert_stderr "zet-client: error: the commit did not come to its end, its status is not recorded (run it again to complete it). Written: $(names 1 $((count - 1))). Not written: $(names "$count" $TARGETS)
zet-client: error: ended by a signal (${signal%/*}) before all was done (run the command again)"
        if ((count > 1)); then
            assert_equal "$(tail -n 1 <<<"${output%?}")" \
                "to be restarted: $(names 1 $((count - 1)) | sed "s|$HOST/out/|service-|g")"
        fi
        assert_nothing_lost
        [[ " zet.lock" == *" $(names_in state)" ]]
        assert_equal "$(find . -name '*.tmp')" ""
        run_zet commit-config
        assert_status 0
        assert_stderr ""
        assert_equal "$(grep -oE '[0-9]+ unchanged$' <<<"$output" || echo "0 unchanged")" "$((count - 1)) unchanged"
        assert_same_end
    done
}

@test "a commit that is killed between two targets leaves nothing behind that the next one does not clear away" {
    fill $TARGETS
    learn_the_end
    local count
    for count in 1 20; do
        begin_anew
        stop_commit KILL openat "././$(printf t%02d.tmp "$count")"
        assert_status 137
        assert_nothing_lost
        assert_equal "$(find "$XDG_RUNTIME_DIR" -name 'zet-staging.*' | wc -l)" 1
        run_zet commit-config
        assert_status 0
        # The killed run could not name what it had written.
        assert_equal "$(tail -n 2 <<<"${output%?}" | head -n 1)" \
            "to be restarted: $(names 1 $TARGETS | sed "s|$HOST/out/|service-|g")"
        assert_same_end
    done
}

@test "a commit that is killed at any change of a name is completed by the next one" {
    fill 4
    learn_the_end
    local count killed=0
    for ((count = 1; ; ++count)); do
        begin_anew
        capture strace -f -qq -o "$BASE/trace" -e trace=/rename -e "inject=/rename:signal=KILL:when=$count" \
            "$ZET_BIN/zet-client" --config zet.conf commit-config
        [[ $status -ne 0 ]] || break
        assert_status 137
        killed=$count
        assert_nothing_lost
        zet -q commit-config
        assert_same_end
    done
    # Each target and each reserve has an instant of its own.
    [[ $killed -ge 6 ]]
}

@test "a commit that is killed goes back as well" {
    fill 4
    local before count
    before=$(find out -printf '%p %y %m\n' | sort && cat out/*)
    for ((count = 1; ; ++count)); do
        begin_anew
        capture strace -f -qq -o "$BASE/trace" -e trace=/rename,/unlink -e "inject=/rename,/unlink:signal=KILL:when=$count" \
            "$ZET_BIN/zet-client" --config zet.conf commit-config
        [[ $status -ne 0 ]] || break
        run_zet rollback-config
        assert_status 0
        assert_equal "$(find out -printf '%p %y %m\n' | sort && cat out/*)" "$before"
        assert_equal "$(names_in state)" zet.lock
    done
    [[ $count -gt 6 ]]
}

@test "a signal ends a commit that still looks, before anything is written, and its check command with it" {
    script slow <<-SCRIPT
		#!/bin/sh
		sleep 600 &
		trap "kill \$!; echo ended >$BASE/slow; exit 1" TERM
		kill -TERM \$PPID
		wait
	SCRIPT
    fill 3
    add_target last $'x\n' 'check = ["slow", "{}"]'
    remember_files
    local begin=$SECONDS
    run_zet commit-config
    [[ $((SECONDS - begin)) -lt 60 ]]
    assert_refusal 1 "ended by a signal (Terminated) before all was done (run the command again)"
    assert_file "$BASE/slow" $'ended\n'
    assert_unchanged_but_staging
}

@test "a target that is being written when the signal comes is finished, and what is written is known" {
    fill 4
    learn_the_end
    begin_anew
    capture strace -f -qq -o "$BASE/trace" -P ././t02.tmp -e trace=/rename -e inject=/rename:signal=TERM \
        "$ZET_BIN/zet-client" --config zet.conf commit-config
    assert_status 1
    [[ $stderr == *"Written: $(names 1 2). Not written: $(names 3 4)"$'\n'* ]]
    run_zet --json status
    assert_json '[t["state"] for t in d["targets"]]' '["in sync", "in sync", "not committed", "not committed"]'
    zet -q commit-config
    assert_same_end
}

@test "a signal that the caller ignores ends nothing" {
    fill 3
    (trap '' HUP && stop_commit HUP /rename ././t01.tmp && assert_status 0)
    grep -q "SIGHUP" "$BASE/trace"
    assert_file out/t03 "$(notice t03)"$'\n3 EXAMPLE.ORG\n'
}

@test "a signal ends a dry run without a trace" {
    fill 3
    script diff <<-SCRIPT
		#!/bin/sh
		kill -INT \$PPID
		exec $DIFF "\$@"
	SCRIPT
    remember_host
    run_zet commit-config -n --diff
    assert_status 1
    assert_stderr "zet-client: error: ended by a signal (Interrupt) before all was done (run the command again)"
    assert_host_unchanged
    assert_equal "$(names_in "$TMPDIR")" ""
}

@test "a signal ends a rollback between two targets, and a second one completes it" {
    fill 6
    local signal
    for signal in INT TERM; do
        begin_anew
        zet -q commit-config
        capture strace -f -qq -o "$BASE/trace" -P ././t03 -e trace=/unlink -e "inject=/unlink:signal=$signal" \
            env --default-signal=INT "$ZET_BIN/zet-client" --config zet.conf rollback-config
        assert_status 1
        assert_equal "$(grep -c 'put back\|removed' <<<"$output")" 3
        [[ $stderr == "zet-client: error: ended by a signal "*" before all was done (run the command again)"$'\n' ]]
        assert_equal "$(store 'SELECT count(*) FROM known WHERE kind = 0')" 3
        [[ -e state/zet-client.status ]]
        run_zet rollback-config
        assert_status 0
        diff -r out "$BASE/out.before"
        assert_equal "$(names_in state)" zet.lock
    done
}

@test "a rollback that is killed at any change of a name is completed by the next one" {
    fill 4
    local count
    for ((count = 1; ; ++count)); do
        begin_anew
        zet -q commit-config
        capture strace -f -qq -o "$BASE/trace" -e trace=/rename,/unlink -e "inject=/rename,/unlink:signal=KILL:when=$count" \
            "$ZET_BIN/zet-client" --config zet.conf rollback-config
        [[ $status -ne 0 ]] || break
        assert_status 137
        run_zet rollback-config
        assert_status 0
        diff -r out "$BASE/out.before"
        assert_equal "$(names_in state)" zet.lock
    done
    [[ $count -gt 6 ]]
}
