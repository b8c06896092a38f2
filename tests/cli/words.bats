# How the words of a command line are read: only what they may name is made known first.

load helper

setup() {
    make_host
    printf 'a=1\n' >conf
}

teardown() {
    remove_host
}

# The words, without an option that the helper gives.
words() {
    capture "$ZET_BIN/zet-client" "$@"
}

@test "an option of all commands is known however it is written, and wherever" {
    local file=$HOST/zet.conf
    words -c "$file" option get DOMAIN && assert_success example.org
    words -c"$file" option get DOMAIN && assert_success example.org
    words -qc "$file" option get DOMAIN && assert_success example.org
    words -qc"$file" option get DOMAIN && assert_success example.org
    words --config="$file" option get DOMAIN && assert_success example.org
    words option --config "$file" get DOMAIN && assert_success example.org
    words option get -c "$file" DOMAIN && assert_success example.org
    words option get DOMAIN -vc"$file" && assert_success example.org
}

@test "letters in a group mean what they mean alone" {
    run_zet -nq param set conf a 2
    assert_status 3
    assert_file conf $'a=1\n'
    run_zet param set conf a 2 -qn
    assert_status 3
    assert_file conf $'a=1\n'
    run_zet -qv status
    assert_status 2
    [[ $stderr == *"--quiet excludes --verbose"* ]]
}

@test "a value that is the name of a command or of an option is a value" {
    run_zet param set --no-markers conf a -- --diff
    assert_status 0
    assert_file conf $'a=--diff\n'
    run_zet -m status param set --no-markers --force conf a undo
    assert_status 0
    run_zet param get conf a
    assert_success undo
}

@test "a digit behind an option's letter makes no word that nobody wrote" {
    remember_host
    # refused GROUP COMMAND WORD...
    refused() {
        # shellcheck disable=SC2086
        run_zet $2 "${@:3}"
        assert_refusal 2 "The following argument was not expected: $1 (put \"--\" before a value that begins with \"-\", or see \"zet-client $2 --help\")"
        assert_host_unchanged
    }
    refused -q10 'param set' conf a -q10
    refused -v1 'param set' conf a -v1
    refused -qn1 'param set' conf a -qn1
    refused -q3 'line set' conf '^a' -q3
    refused -q1 'template process' one.conf -q1 -n
    refused -q1 'file reserve' -q1
    refused -n1 history -n1
    refused -n1 undo -n1
    refused -q1 'history show' -q1 conf
    run_zet param set --no-markers conf a -10
    assert_status 0
    run_zet param set --no-markers conf b -- -q10
    assert_status 0
    run_zet -m -q10 param set --no-markers conf c 3
    assert_status 0
    assert_file conf $'a=-10\n\nb=-q10\n\nc=3\n'
}

@test "a group of letters that says more than options is told as it was typed" {
    # refused WORDS COMMAND WORD...
    refused() {
        local are="argument was"
        [[ $1 != *" "* ]] || are="arguments were"
        # shellcheck disable=SC2086
        run_zet "${@:3}"
        assert_refusal 2 "The following $are not expected: $1 (see \"zet-client $2 --help\")"
    }
    refused -q5 status -q5 status
    refused -q5 status status -q5
    refused -q5 values values -q5
    refused -n=1 status -n=1 status
    refused -n=1 'param get' param get conf a -n=1
    refused -q.5 'param get' param -q.5 get conf a
    refused "-q=5 -n=1" status -q=5 -n=1 status
    refused "-5 -q5" status status -q5 -5
    refused "-q5 -nq5" values -q5 -nq5 values
    refused -q5 values values -- -q5
    # The letter that is unknown says more than its group.
    refused -z status status -qz
    refused -z5 status status -qz5
    run_zet --json status -q5
    assert_json 'd["errors"]' '["The following argument was not expected: -q5 (see \"zet-client status --help\")"]'
}

@test "what stands behind -- is no option" {
    local before='put it before "--", or '
    remember_host
    # refused WORD REMEDY COMMAND WORD...
    refused() {
        # shellcheck disable=SC2086
        words -c zet.conf $3 "${@:4}"
        assert_refusal 2 "The following argument was not expected: $1 ($2see \"zet-client $3 --help\")"
        assert_host_unchanged
    }
    refused --diff "$before" status -- --diff
    refused -v "$before" 'template list' -- -v
    refused -q "$before" values -- -q
    refused --null "$before" 'file list' -- --null
    refused --nope "" values -- --nope
    refused --force "$before" 'param set' -n -- conf a 3 --force
    refused b "" values -- b
    words param -- set conf a 2
    assert_refusal 2 'a command is missing (put "--" behind the command, or see "zet-client param --help")'
    words -- param get conf a
    assert_refusal 2 'a command is missing (put "--" behind the command, or see "zet-client --help")'
    words -c zet.conf status -- --json
    assert_json 'd["command"], d["errors"]' '[null, ["The following argument was not expected: --json (put it before \"--\", or see \"zet-client status --help\")"]]'
    assert_host_unchanged
    run_zet -m -- param set --no-markers conf a 2 --no-backup
    assert_status 0
    run_zet param set --no-markers -- conf b --
    assert_status 0
    assert_file conf $'a=2\n\nb=--\n'
}

@test "an option is sent before -- only if it is right there" {
    remember_host
    # told TEXT REMEDY COMMAND WORD...
    told() {
        # shellcheck disable=SC2086
        words $3 "${@:4}"
        assert_refusal 2 "$1 ($2see \"zet-client $3 --help\")"
        assert_host_unchanged
    }
    local was="The following argument was not expected:" were="The following arguments were not expected:"
    local before='put it before "--", or '
    told "$were --section x" "$before" 'param set' -- conf a 3 --section x
    told "$were --count 3" "$before" history -- conf --count 3
    told "$was -qn" "$before" status -- -qn
    told "$was --null=1" "" 'file list' -- --null=1
    told "$was -m" "" history -- conf -m
    told "$were --force 4" "" 'param set' -- conf a 3 --force 4
    told "$were 4 --force" "" 'param set' -- conf a 3 4 --force
    told "$were show --after" "" history -- conf show --after
    told "--dry-run takes no value" "" status -- --dry-run=1
    told "--color: its value is missing" "" status -- --color
    told '--color: "foo" is none of auto, always, never' "" status -- --color=foo
    told "--quiet excludes --verbose" "" status -q -- -v
    told "--config can be given once only" "" status -c a -- -c b
    words -- status --diff
    assert_refusal 2 'a command is missing (put "--" behind the command, or see "zet-client --help")'
    words param -- --force
    assert_refusal 2 'a command is missing (put "--" behind the command, or see "zet-client param --help")'
    printf '[x]\na=1\n' >conf
    run_zet param set --no-markers --section x -- conf a 3
    assert_status 0
    assert_file conf $'[x]\na=3\n'
}

@test "a mistake is told by all that is known" {
    run_zet template proces one.conf out
    assert_status 2
    [[ $stderr == *'did you mean "process"?'* ]]
    run_zet --dif status
    assert_status 2
    [[ $stderr == *'did you mean "--diff"?'* ]]
}

@test "an option of a command that stands before it is told where it belongs" {
    run_zet param --no-markers set conf a 2
    assert_refusal 2 'The following argument was not expected: --no-markers (put it behind its command, or see "zet-client param set --help")'
}

@test "a name that is too long is told to be that" {
    local name
    name=$(printf 'n%.0s' {1..250})
    run_zet file reserve "$name"
    assert_status 1
    [[ $stderr == *"(choose a shorter name)"* && $stderr != *"search its directory"* ]] || differ words shorter "$stderr"
}
