load helper

setup() {
    make_host
    printf 'first one\nsecond\n\nlast' >conf
}

teardown() {
    remove_host
}

@test "get prints the first line that matches" {
    run_zet line get conf 'st'
    assert_success "first one"
    run_zet line get conf '^s'
    assert_success "second"
}

@test "get finds an empty line" {
    run_zet line get conf '^$'
    assert_status 0
    assert_equal "$output" $'\n'
}

@test "get does not find an empty line where there is none" {
    printf 'a\nb\n' >conf
    run_zet line get conf '^$'
    assert_status 1
    assert_output ""
    assert_stderr ""
}

@test "get of a line that is not there says nothing and fails" {
    remember_host
    run_zet line get conf nope
    assert_status 1
    assert_output ""
    assert_stderr ""
    run_zet --json line get conf nope
    assert_status 1
    assert_json 'd["command"], d["pattern"], d["found"], d["line"]' '["line get", "nope", false, null]'
    assert_host_unchanged
}

@test "a pattern that is no regular expression is wrong use, in an empty file too" {
    : >conf
    for command in "get conf (" "set conf ( x" "restore conf ("; do
        run_zet line $command
        assert_status 2
        assert_output ""
        assert_equal "${stderr%% is not valid*}" "zet-client: error: PATTERN: Regular expression '('"
        [[ $stderr == *" (correct the expression)"$'\n' ]]
    done
}

@test "a pattern that is too much work on a line is told with a remedy, and changes nothing" {
    head -c 40000 /dev/zero | tr '\0' a >conf
    remember_host
    local command
    for command in "get conf (?:a|aa|aaa)+b(a)\\1" "set conf (?:a|aa|aaa)+b(a)\\1 x"; do
        run_zet line $command
        assert_status 1
        assert_output ""
        [[ $stderr == *"gives up on a text of 40000 bytes"*" (give a simpler expression)"$'\n' ]]
    done
    assert_files_unchanged
}

@test "an empty pattern is wrong use" {
    run_zet line get conf ''
    assert_refusal 2 "PATTERN is empty (give a regular expression)"
    run_zet line set conf '' x
    assert_refusal 2 "PATTERN is empty (give a regular expression)"
    run_zet line restore conf ''
    assert_refusal 2 "PATTERN is empty (give a regular expression)"
}

@test "set replaces every line that matches, each with a block of its own" {
    run_zet line set conf '^[fl]' new
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_file conf "$NOTICE# --PRE-ZET-- first one
$(block new)
second

# --PRE-ZET-- last
$(block new)"
}

@test "set appends a line that is not there" {
    run_zet line set --no-markers conf nope 'added line'
    assert_status 0
    assert_file conf $'first one\nsecond\n\nlast\nadded line\n'
}

@test "set adds a line once, though the pattern does not select it" {
    printf '#Port 22\n' >conf
    zet -q line set conf '^#Port ' 'Port 2222'
    remember_host
    run_zet line set conf '^#Port ' 'Port 2222'
    assert_success "conf: unchanged, LINE stands in line 10 already"
    run_zet line set --no-markers conf '^#Port ' 'Port 2222'
    assert_success "conf: unchanged, LINE stands in line 10 already"
    assert_host_unchanged
    run_zet line set --no-markers conf '^#Port ' 'Port 3333'
    assert_status 0
    assert_stderr "zet-client: warning: conf: PATTERN selects neither a line of the file nor LINE, which is added and not found again (give a PATTERN that selects both)"
    run_zet line set --no-markers conf '^Port 4' 'Port 4444'
    assert_status 0
    assert_stderr ""
}

@test "set knows the line that it would add with either line end" {
    printf '[a]\r\nx\r\n' >conf
    remember_host
    run_zet line set conf '^nope' x
    assert_success "conf: unchanged, LINE stands in line 2 already"
    run_zet line set --section a conf '^nope' x
    assert_success "conf: unchanged, LINE stands in line 2 already"
    assert_host_unchanged
}

@test "set parts no line from the one in which it goes on" {
    printf '# a \\\nADMINS = anna, \\\n    bert, \\\n    carl\nx=1\n' >sudoers
    remember_host
    local options
    for options in "" --no-markers "--no-section"; do
        run_zet line set $options sudoers '^ADMINS' 'ADMINS = anna'
        assert_refusal 1 'sudoers:2: ends with "\" and goes on in the next line, from which the edit would part it (edit the two by hand; --force parts them)'
    done
    run_zet line set sudoers carl '    dora'
    assert_refusal 1 'sudoers:3: ends with "\" and goes on in the next line, from which the edit would part it (edit the two by hand; --force parts them)'
    run_zet line set sudoers '^x' 'x=\'
    assert_refusal 2 'LINE ends with "\", and the line after it would be a part of it (--force sets it)'
    run_zet line set -n --force sudoers '^x' 'x=\'
    assert_stderr 'zet-client: warning: sudoers: LINE ends with "\", and the line after it becomes a part of it'
    assert_host_unchanged
    zet -q line set --no-markers --no-backup sudoers bert '    dora, \'
    zet -q line set --no-markers --no-backup sudoers carl '    emil'
    zet -q line set --no-markers --no-backup sudoers '^x' x=2
    assert_file sudoers $'# a \\\nADMINS = anna, \\\n    dora, \\\n    emil\nx=2\n'
    zet -q line set --no-markers --force sudoers '^ADMINS' 'ADMINS = anna'
}

@test "set that parts lines by force says so" {
    local parts='ends with "\" and goes on in the next line, from which the edit parts it (see that each of the two is right without the other)'
    printf 'ADMINS = anna, \\\n    bert, \\\n    carl\n' >sudoers
    run_zet line set -n --force sudoers bert '    dora'
    assert_stderr "zet-client: warning: sudoers:1: $parts
zet-client: warning: sudoers:2: $parts"
    run_zet line set --no-markers --no-backup --force sudoers bert '    dora'
    assert_status 0
    assert_stderr "zet-client: warning: sudoers:2: $parts"
    run_zet line set --no-markers --no-backup --force sudoers '^ADMINS' 'ADMINS = \'
    assert_success "sudoers: changed"
}

@test "set adds no line beside one that a byte order mark keeps from matching" {
    printf '\xef\xbb\xbfa=1\nb=2\n' >bom
    remember_host
    local options
    for options in "" --no-markers "--no-markers --no-section"; do
        run_zet line set $options bom '^a=' a=2
        assert_refusal 1 "bom:1: begins with a byte order mark, behind which nothing is found (save the file without the mark)"
    done
    for options in "" --no-section; do
        run_zet line get $options bom '^a='
        assert_refusal 1 "bom:1: begins with a byte order mark, behind which nothing is found (save the file without the mark)"
        run_zet line get $options bom '^c='
        assert_status 1
        assert_stderr ""
    done
    assert_host_unchanged
    zet -q line set --no-markers --no-backup bom '^[^a]*a=' a=2
    assert_file bom $'a=2\nb=2\n'
}

@test "set adds no line beside one that a carriage return keeps from matching" {
    printf 'a=1\r\nb=2\r\n' >returns
    printf 'b=2\na=1\r\n' >mixed
    remember_host
    local options remedy='(write "\r?$" in place of "$")'
    for options in "" --no-markers "--no-markers --no-section"; do
        run_zet line set $options returns '^a=\d$' a=2
        assert_refusal 1 "returns:1: is selected only without the carriage return at its end $remedy"
        run_zet line set $options mixed '^a=\d$' a=2
        assert_refusal 1 "mixed:2: is selected only without the carriage return at its end $remedy"
        run_zet line set $options returns '^c=\d$' c=2
        assert_refusal 1 "returns: PATTERN selects LINE only without the carriage return that this gets $remedy"
    done
    run_zet line restore returns '^b=\d$'
    assert_refusal 1 "returns:2: is selected only without the carriage return at its end $remedy"
    run_zet line get returns '^b=\d$'
    assert_refusal 1 "returns:2: is selected only without the carriage return at its end $remedy"
    assert_host_unchanged
    run_zet line get returns '^b=\d\r?$'
    assert_success b=2
    run_zet line get --no-section returns '^c'
    assert_status 1
    assert_stderr ""
    zet -q line set --no-markers --no-backup returns '^a=\d\r?$' a=2
    assert_file returns $'a=2\r\nb=2\r\n'
}

@test "set a second time changes the block, whether the pattern also fits the kept line or not" {
    zet line set conf one 'one 1'
    run_zet line set conf one 'one 2'
    assert_status 0
    assert_file conf "$NOTICE# --PRE-ZET-- first one
$(block 'one 2')
second

last"
}

@test "set with a pattern for every line spares the lines that keep order in the file" {
    zet line set conf second changed
    run_zet line set conf . all
    assert_status 0
    assert_file conf "$NOTICE# --PRE-ZET-- first one
$(block all)
# --PRE-ZET-- second
$(block all)

# --PRE-ZET-- last
$(block all)"
}

@test "set without markers spares the kept lines" {
    zet line set conf one 'one 1'
    run_zet line set --no-markers conf one 'one 2'
    assert_status 0
    assert_file conf "$NOTICE# --PRE-ZET-- first one
$(block 'one 2')
second

last"
}

@test "set refuses a line feed and a marker in the line" {
    remember_host
    run_zet line set conf second $'a\nb'
    assert_refusal 2 "LINE holds a line feed (a line cannot; give the text without it)"
    run_zet line set conf second '# ---ZET_BEGIN--- x'
    assert_refusal 2 'LINE begins with "# ---ZET_BEGIN---", which marks lines of the system itself (begin it with something else)'
    assert_host_unchanged
}

@test "restore brings back the lines whose text begins with a match" {
    zet line set conf '^second' new
    run_zet line restore conf '^second'
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_file conf "$NOTICE"$'first one\nsecond\n\nlast'
}

@test "restore without anything to restore leaves the file byte for byte" {
    zet line set conf '^second' new
    remember_host
    run_zet line restore conf '^first'
    assert_success 'conf: unchanged, nothing to restore for "^first"'
    assert_host_unchanged
}

@test "restore refuses to drop a block whose former line would not come back" {
    zet line set conf 'one' 'one 1'
    remember_host
    run_zet line restore conf 'one'
    assert_refusal 1 'conf: the restore would also drop managed blocks of others, in lines 9-11 (--all-blocks drops them too, "explain" tells what they are)'
    assert_host_unchanged
}

@test "restore refuses a pattern that would cut lines which keep no former one" {
    printf 'second\nprecious words\n' >conf
    zet line set conf '^second' new
    remember_host
    run_zet line restore conf '^second|precious'
    assert_refusal 2 '"^second|precious" also selects line 12 of conf, which keeps no former line (put alternatives in parentheses)'
    assert_host_unchanged
    run_zet line restore conf '^(second|precious)'
    assert_status 0
    assert_file conf "$NOTICE"$'second\nprecious words\n'
}

@test "restore brings back a kept line whose block was stripped" {
    zet line set conf '^second' new
    zet file strip conf
    run_zet line restore conf '^second'
    assert_status 0
    assert_file conf "$NOTICE"$'first one\nsecond\n\nlast'
}

@test "the library of expressions is opened for patterns that need it" {
    opened() {
        strace -f -qq -e trace=openat,open -o trace "$ZET_BIN/zet-client" --config zet.conf line get conf "$1" >/dev/null || true
        grep -cE 'libpcre2-8[.]so' trace || true
    }
    assert_equal "$(opened ^second)" 0
    [ "$(opened '^s.*d')" -gt 0 ]
}

@test "where that library cannot be opened, no pattern is blamed" {
    mkdir lib
    touch lib/libpcre2-8.so.0
    remember_host
    capture env LD_LIBRARY_PATH="$PWD/lib" "$ZET_BIN/zet-client" --config zet.conf line set conf '^s.*d' new
    assert_refusal 1 "Failed to load library 'libpcre2-8.so.0': $PWD/lib/libpcre2-8.so.0: file too short (install the package libpcre2-8-0)"
    assert_host_unchanged
}
