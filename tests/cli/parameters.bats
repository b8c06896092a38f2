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
    assert_problem "$((last + 1)):7: REALM is empty, so that \${realm} has no value (give it a value, or remove its line)"
    sed -i '$d' zet.conf
    echo 'MINIMUM_UID=' >>zet.conf
    assert_problem "$((last + 1)):13: MINIMUM_UID is empty, so that \${minimum_uid} has no value (give it a value, or remove its line)"
    run_zet commit-config -n --set MINIMUM_UID=5
    assert_status 3
    sed -i '$d' zet.conf
    run_zet commit-config -n --set REALM=
    assert_refusal 1 "--set: REALM is empty, so that \${realm} has no value (give it a value)
zet-client: nothing was changed"
    echo REALM=HERE.ORG >>zet.conf
    run_zet commit-config -n --set REALM=
    assert_refusal 1 "--set: REALM is empty, so that \${realm} has no value (give it a value)
zet-client: nothing was changed"
    sed -i '$d' zet.conf
    sed -i 's/^DOMAIN=.*/DOMAIN=/' zet.conf
    assert_problem "1:8: DOMAIN is empty, so that \${realm} has no value (give it a value)"
    sed -i 's/^DOMAIN=.*/DOMAIN=example.org/' zet.conf
    echo 'TICKET_MAX_LIFE=' >>zet.conf
    run_zet check-config
    assert_status 0
}

@test "a value with a carriage return, or with quotes and a comment, is a problem" {
    local last
    last=$(wc -l <zet.conf)
    echo 'REALM="X.ORG" # ours' >>zet.conf
    assert_problem "$((last + 1)):7: the value of REALM is in quotes with a comment behind, and has both as parts of it (write the bare value alone behind \"=\")"
    sed -i '$d' zet.conf
    printf 'REALM=X.ORG\r\n' >>zet.conf
    run_zet -q check-config
    assert_status 1
    assert_output "$HOST/zet.conf:$((last + 1)):7: the value of REALM ends with a carriage return (save the file with plain line feeds)"
    # The last of two lines counts.
    echo 'REALM=X.ORG' >>zet.conf
    run_zet -q check-config
    assert_status 0
}

@test "a value that is not of its kind is a problem, whether a template uses it or not" {
    printf '  TICKET_MAX_LIFE=foo\nVALID_USER_NAMES=[\nMINIMUM_UID=1\nMINIMUM_UID=abc\nZET_SYNC=maybe\n' >>zet.conf
    local problems="$HOST/zet.conf:6:19: 'foo' is no value for TICKET_MAX_LIFE, which has to be a duration (write it like 7d 12h 30m 0s, 12:30 or 3600, which is seconds)
$HOST/zet.conf:7:18: '[' is no value for VALID_USER_NAMES, which has to be a regular expression (close its brackets, put a backslash before what is meant as it stands, and write [/] for /)
$HOST/zet.conf:9:13: 'abc' is no value for MINIMUM_UID, which has to be a number (write decimal digits, up to 4294967295 and without zeros in front)
$HOST/zet.conf:10:10: 'maybe' is no value for ZET_SYNC and counts as yes (write yes or no)"
    run_zet check-config
    assert_status 1
    assert_output "$problems"
    run_zet -q commit-config
    assert_status 1
    assert_output ""
    assert_stderr "$(sed 's/^/zet-client: error: /' <<<"$problems")"
    assert_absent out/one.conf
}

@test "a value that is not of its kind stops nothing that could mend it" {
    zet commit-config
    printf 'TICKET_MAX_LIFE=foo\nMINIMUM_UID=abc\n' >>zet.conf
    run_zet status
    assert_status 3
    run_zet option get MINIMUM_UID
    assert_success abc
    run_zet option set SERVER other.example.org
    assert_success "$HOST/zet.conf: changed"
    run_zet option set MINIMUM_UID 5
    assert_success "$HOST/zet.conf: changed"
    run_zet rollback-config
    assert_status 0
    run_zet commit-config -n --set TICKET_MAX_LIFE=8h
    assert_status 3
    run_zet option set TICKET_MAX_LIFE 8h
    assert_success "$HOST/zet.conf: changed"
    run_zet -q check-config
    assert_success ""
}

@test "a value that is not of its kind is refused wherever it is given" {
    remember_host
    local problem="'10 h' is no value for TICKET_MAX_LIFE, which has to be a duration (write it like 7d 12h 30m 0s, 12:30 or 3600, which is seconds)"
    run_zet option set TICKET_MAX_LIFE '10 h'
    assert_refusal 1 "the option would break the configuration file: $problem"
    assert_files_unchanged
    run_zet commit-config -n --set TICKET_MAX_LIFE='10 h'
    assert_refusal 2 "--set: $problem"
    assert_files_unchanged
}

@test "a directory of the product that is none can be set right" {
    mkdir -p tree/etc/zet tree/var/lib/zet
    printf 'ZET_VAR_LIB_DIR=var\nZET_CFG_DIR=\n' >tree/etc/zet/zet.conf
    capture "$ZET_BIN/zet-client" --root tree status
    assert_refusal 1 "$HOST/tree/etc/zet/zet.conf:2:13: ZET_CFG_DIR is empty (give it an absolute path, or remove its line)"
    capture "$ZET_BIN/zet-client" --root tree option set ZET_VAR_LIB_DIR /var/lib/zet
    assert_success "$HOST/tree/etc/zet/zet.conf: changed"
    capture "$ZET_BIN/zet-client" --root tree option set ZET_CFG_DIR /etc/zet
    assert_success "$HOST/tree/etc/zet/zet.conf: changed"
    assert_file tree/etc/zet/zet.conf $'ZET_VAR_LIB_DIR=/var/lib/zet\nZET_CFG_DIR=/etc/zet\n'
}

@test "a name that nobody knows is a problem of a check and a commit where it is much like another, and else a warning" {
    local last
    last=$(wc -l <zet.conf)
    printf 'TICKET_MAX_LIVE=8h\nNTP_SERVER=x\n' >>zet.conf
    run_zet check-config
    assert_status 1
    assert_output "$HOST/zet.conf:$((last + 1)): nobody knows the parameter TICKET_MAX_LIVE, and nothing uses \${ticket_max_live} (did you mean TICKET_MAX_LIFE?)"
    assert_stderr "zet-client: warning: $HOST/zet.conf:$((last + 2)): nobody knows the parameter NTP_SERVER, and nothing uses \${ntp_server} (correct its name, or remove the line)"
    run_zet commit-config
    assert_refusal 1 "$HOST/zet.conf:$((last + 1)): nobody knows the parameter TICKET_MAX_LIVE, and nothing uses \${ticket_max_live} (did you mean TICKET_MAX_LIFE?)
zet-client: nothing was changed"
    run_zet check-config one.conf
    assert_status 0
    run_zet commit-config one.conf
    assert_status 0
    # A template of the other role alone uses it.
    printf 'life = ${ticket_max_live}\n' >templates/other.conf
    printf '[templates."other.conf"]\ntarget = "%s/out/other.conf"\nroles = "server"\n' "$HOST" >>templates/targets.toml
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
    [[ $output == *"/two.conf:1:1: the programs that read the file need this line as its first, and the notice comes before it (say notice = false in its entry of the list)"$'\n' ]]
}

@test "where the library of expressions cannot be opened, no parameter is blamed" {
    mkdir lib
    touch lib/libpcre2-8.so.0
    echo 'VALID_USER_NAMES=^[a-z]*$' >>zet.conf
    remember_host
    capture env LD_LIBRARY_PATH="$PWD/lib" "$ZET_BIN/zet-client" --config zet.conf commit-config
    assert_refusal 1 "Failed to load library 'libpcre2-8.so.0': $PWD/lib/libpcre2-8.so.0: file too short (install the package libpcre2-8-0)"
    assert_host_unchanged
}
