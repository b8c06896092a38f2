#!/usr/bin/env bats
# What stands in the main configuration file must make files that a program can use.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\nuid = ${minimum_uid}\n'
}

teardown() {
    remove_host
}

# assert_problem PLACE_AND_TEXT: "check-config" and a commit tell just this of the main file.
assert_problem() {
    run_zet check-config
    assert_status 1
    assert_output "$HOST/zet.conf:$1"
    run_zet commit-config
    assert_refusal 1 "$HOST/zet.conf:$1
zet-client: nothing was changed"
}

@test "an empty value of a placeholder that a template uses is a problem" {
    local last
    last=$(wc -l <zet.conf)
    echo 'REALM=' >>zet.conf
    assert_problem "$((last + 1)): REALM is empty, so that \${realm} has no value (give it a value, or remove its line)"
    sed -i '$d' zet.conf
    echo 'MINIMUM_UID=' >>zet.conf
    assert_problem "$((last + 1)): MINIMUM_UID is empty, so that \${minimum_uid} has no value (give it a value, or remove its line)"
    run_zet commit-config -n --set MINIMUM_UID=5
    assert_status 3
    sed -i '$d' zet.conf
    run_zet commit-config -n --set REALM=
    assert_status 1
    echo 'TICKET_MAX_LIFE=' >>zet.conf
    run_zet check-config
    assert_status 0
}

@test "a value with a carriage return, or with quotes and a comment, is a problem" {
    local last
    last=$(wc -l <zet.conf)
    echo 'REALM="X.ORG" # ours' >>zet.conf
    assert_problem "$((last + 1)): the value of REALM is in quotes with a comment behind, and has both as parts of it (write the bare value alone behind \"=\")"
    sed -i '$d' zet.conf
    printf 'REALM=X.ORG\r\n' >>zet.conf
    run_zet -q check-config
    assert_status 1
    assert_output "$HOST/zet.conf:$((last + 1)): the value of REALM ends with a carriage return (save the file with plain line feeds)"
    # The last of two lines counts.
    echo 'REALM=X.ORG' >>zet.conf
    run_zet -q check-config
    assert_status 0
}

@test "a name that nobody knows is a problem of a check" {
    local last
    last=$(wc -l <zet.conf)
    printf 'TICKET_MAX_LIVE=8h\nNTP_SERVER=x\n' >>zet.conf
    run_zet check-config
    assert_status 1
    assert_output "$HOST/zet.conf:$((last + 1)): nobody knows the parameter TICKET_MAX_LIVE, and no template uses \${ticket_max_live} (did you mean TICKET_MAX_LIFE?)
$HOST/zet.conf:$((last + 2)): nobody knows the parameter NTP_SERVER, and no template uses \${ntp_server} (correct its name, or remove the line)"
    run_zet check-config one.conf
    assert_status 0
    run_zet commit-config
    assert_status 0
}

@test "a value that becomes a marker line is a problem, and nothing is cut off" {
    add_target two.conf $'a\n${realm}\nb\n'
    echo 'REALM=# --ZET_TEMPLATE_COMMENT--' >>zet.conf
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"/two.conf:2:1: a value makes this line begin with \"# --ZET_TEMPLATE_COMMENT--\", which marks lines of the system itself (give the placeholder another value)"* ]]
    assert_absent out/two.conf
}

@test "a template whose first line no notice may come before is a problem" {
    add_target two.conf $'#!/bin/sh\n'
    run_zet check-config
    assert_status 1
    [[ $output == *"/two.conf:1:1: the programs that read the file need this line as its first, and the notice comes before it (take the template from the list, and edit the file with --no-markers)"$'\n' ]]
}
