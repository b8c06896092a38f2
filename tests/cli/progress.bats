# How far the work is: shown to who waits at a terminal, and to nobody else.

load helper
load set

setup() {
    make_set
    mkdir "$BASE/bin"
    printf '#!/bin/sh\nsleep 0.7\n' >"$BASE/bin/slow"
    chmod 755 "$BASE/bin/slow"
    local name
    for name in one two three four; do add_target "$name" "$name"$'\n' "check = [\"$BASE/bin/slow\", \"{}\"]"; done
}

teardown() {
    remove_host
}

# errors_on_terminal WORD...: standard output goes to a file, standard error to the terminal; what that gets is in $output.
errors_on_terminal() {
    local words
    printf -v words '%q ' "$ZET_BIN/zet-client" --config "$HOST/zet.conf" "$@"
    capture env SHELL=/bin/bash script -qec "$words >$BASE/results" /dev/null
}

@test "work that lasts longer than a second shows how far it is, and takes that away again" {
    errors_on_terminal commit-config
    assert_status 0
    [[ $output != "0 of 4"* ]]
    # In front of each, and at the end, the last one is gone.
    [[ $output == *$'2 of 4\r      \r3 of 4\r      \r'* && $output == *$' of 4\r      \r' ]]
    assert_equal "$(tail -n 1 "$BASE/results")" "4 created"
}

@test "nobody is shown how far it is who reads a file or a document, or wants changes and errors only" {
    run_zet commit-config -n
    assert_status 3
    assert_stderr ""
    errors_on_terminal commit-config -n --json
    assert_status 3
    assert_output ""
    errors_on_terminal commit-config -n -q
    assert_status 3
    assert_output ""
}

@test "work that is done at once shows nothing" {
    : >templates/targets.toml
    add_target five $'five\n'
    errors_on_terminal commit-config
    assert_success ""
}
