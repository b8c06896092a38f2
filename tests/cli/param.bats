load helper

setup() {
    make_host
    printf 'realms\nkdc=old\nempty=\n#off=1\n spaced=two words \n' >conf
}

teardown() {
    remove_host
}

@test "get prints the value and a line feed" {
    run_zet param get conf kdc
    assert_success "old"
}

@test "get prints the value with all its blanks" {
    run_zet param get conf spaced
    assert_success "two words "
}

@test "get prints what stands after the first equals sign" {
    echo 'kdc=a=b' >conf
    run_zet param get conf kdc
    assert_success "a=b"
}

@test "get finds a parameter with an empty value" {
    run_zet param get conf empty
    assert_status 0
    assert_equal "$output" $'\n'
    assert_stderr ""
}

@test "get of a missing parameter says nothing and fails" {
    remember_host
    run_zet param get conf nope
    assert_status 1
    assert_output ""
    assert_stderr ""
    assert_host_unchanged
}

@test "get of a missing parameter says so when asked to tell more" {
    run_zet -v param get conf nope
    assert_status 1
    assert_output ""
    assert_stderr "zet-client: conf: has no parameter \"nope\""
}

@test "get does not see a parameter that is commented out" {
    run_zet param get conf off
    assert_status 1
    assert_output ""
}

@test "get prints the first of several parameters of one name" {
    printf 'a=1\na=2\n' >conf
    run_zet param get conf a
    assert_success "1"
}

@test "get as a document tells found from missing" {
    run_zet --json param get conf empty
    assert_status 0
    assert_json 'd["found"], d["value"], d["exit_status"]' '[true, "", 0]'
    run_zet --json param get conf nope
    assert_status 1
    assert_json 'd["version"], d["command"], d["file"], d["name"], d["found"], d["value"], d["exit_status"]' \
        '[1, "param get", "conf", "nope", false, null, 1]'
}

@test "the warnings of the log are in the document, too" {
    echo ZET_SYNC=maybe >>zet.conf
    run_zet --json option set SERVER other.example.org
    assert_status 0
    local warning="$HOST/zet.conf:6: 'maybe' is no value for ZET_SYNC and counts as yes (write yes or no)"
    assert_json 'd["warnings"], d["errors"]' "[[\"$warning\"], []]"
    assert_stderr "zet-client: warning: $warning"
}

@test "get as a document flags bytes that are no UTF-8" {
    printf 'kdc=\xff\n' >conf
    run_zet --json param get conf kdc
    assert_status 0
    assert_json 'd["value"], d["value_lossy"]' '["\ufffd", true]'
}

@test "get as a document tells what could not be looked up from what is missing" {
    run_zet --json param get nofile a
    assert_status 1
    assert_json '[d[x] for x in ("file", "name", "found", "value")], len(d["errors"])' '[["nofile", "a", null, null], 1]'
    run_zet --json line get nofile a
    assert_status 1
    assert_json '[d[x] for x in ("file", "pattern", "found", "line")], len(d["errors"])' \
        '[["nofile", "a", null, null], 1]'
}

@test "get of a file that does not exist fails" {
    run_zet param get nofile kdc
    assert_refusal 1 "nofile: does not exist (create it, or correct the path)"
}

@test "set keeps the former line and puts the new one into a block" {
    run_zet param set conf kdc new
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_file conf "${NOTICE}realms
# --PRE-ZET-- kdc=old
$(block kdc=new)
empty=
#off=1
 spaced=two words 
"
    assert_file conf.before_zet $'realms\nkdc=old\nempty=\n#off=1\n spaced=two words \n'
    assert_absent conf.tmp
}

@test "set replaces a commented-out parameter" {
    printf '#off=1\n' >conf
    run_zet param set conf off 2
    assert_status 0
    assert_file conf "$NOTICE# --PRE-ZET-- #off=1
$(block off=2)
"
}

@test "set of a missing parameter appends a block after an empty line" {
    printf 'a=1\n' >conf
    run_zet param set conf b 2
    assert_status 0
    assert_file conf "${NOTICE}a=1

$(block b=2)
"
}

@test "set without markers replaces the line and nothing else" {
    printf 'a=1\nb=2' >conf
    run_zet param set --no-markers conf a 3
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_file conf $'a=3\nb=2'
}

@test "a line behind a byte order mark is not set twice, and the remedy works" {
    printf '\xef\xbb\xbfkdc=old\nb=2\n' >bom
    remember_host
    local told="bom:1: begins with a byte order mark, behind which nothing is found (save the file without the mark)" words
    for words in "get bom kdc" "set bom kdc new" "set --no-markers bom kdc new" "set --no-section bom kdc new" "unset --no-markers bom kdc"; do
        run_zet param $words
        assert_refusal 1 "$told"
    done
    assert_host_unchanged
    run_zet param set --no-markers --no-backup bom b 3
    assert_success "bom: changed"
    assert_file bom $'\xef\xbb\xbfkdc=old\nb=3\n'
    tail -c +4 bom >nobom
    zet -q param set --no-markers --no-backup nobom kdc new
    assert_file nobom $'kdc=new\nb=3\n'
}

@test "a file of UTF-16 gets no bytes of another coding" {
    printf 'kdc=old\n' | iconv -t UTF-16LE | { printf '\xff\xfe' && cat; } >wide
    remember_host
    local words
    for words in "param set wide kdc new" "param set --no-markers wide b 2" "line set --no-markers wide x x=1" "file strip wide"; do
        run_zet $words
        assert_refusal 1 "wide: is UTF-16, in which an edit finds no line and could write none (save the file as UTF-8, without a byte order mark)"
    done
    assert_host_unchanged
}

@test "unset leaves a commented-out line that belongs to another one" {
    printf 'a=1 \\\n#k=2\nk=3\n' >conf
    zet -q param unset --no-markers conf k
    assert_file conf $'a=1 \\\n#k=2\n#k=3\n'
    printf '# k=2\n#k=\\\nk=3\n' >conf
    zet -q param unset --no-markers conf k
    assert_file conf $'# k=2\n#k=\\\n#k=3\n'
}

@test "the last line has no next one in which it could go on" {
    local end
    for end in '' '\n'; do
        printf 'a=1\np=C:\\d\\'"$end" >conf
        zet -q param set --no-backup conf p 2
        zet -q line set --no-backup conf '^p=' p=3
        run_zet param get conf p
        assert_success 3
        printf 'a=1\np=C:\\d\\'"$end" >conf
        zet -q line set --no-backup conf '^p=' p=3
        printf '[a]\np=C:\\d\\'"$end" >conf
        zet -q param set --no-backup --section a conf p 2
    done
}

@test "a line that goes on in the next one is not parted from it" {
    printf 'OPTS="-a \\\n -b"\nx=1\n#y=\\\nz=a\\\\\n' >conf
    printf 'run x \\\n b=1\n' >other
    remember_host
    local command
    for command in "set conf OPTS 2" "set --no-markers conf OPTS 2" "unset conf OPTS"; do
        run_zet param $command
        assert_refusal 1 'conf:1: ends with "\" and goes on in the next line, from which the edit would part it (edit the two by hand; --force parts them)'
    done
    run_zet param set conf x 'a\'
    assert_refusal 2 'VALUE ends with "\", and the line after it would be a part of it (--force sets it)'
    run_zet param set other b 2
    assert_refusal 1 'other:1: ends with "\" and goes on in the next line, from which the edit would part it (edit the two by hand; --force parts them)'
    assert_host_unchanged
    zet -q param set --no-markers other b 2
    zet -q param set --force conf OPTS 2
    zet -q param set conf x 'a\\'
    zet -q param set conf y 2
    zet -q param set conf z 2
}

@test "an edit that parts a line from the next one by force says so" {
    local parts='ends with "\" and goes on in the next line, from which the edit parts it (see that each of the two is right without the other)'
    printf 'x=1\nOPTS="-a \\\n -b"\n' >conf
    local command
    for command in "set -n conf OPTS 2" "unset -n conf OPTS" "set --no-markers conf OPTS 2"; do
        run_zet param $command --force
        assert_stderr "zet-client: warning: conf:2: $parts"
    done
    printf 'run x \\\n b=1 \\\n c\n' >other
    run_zet param set --force -n other b 2
    assert_stderr "zet-client: warning: other:1: $parts
zet-client: warning: other:2: $parts"
    run_zet param set --force --no-markers --no-backup other b '2 \'
    assert_success "other: changed"
    assert_file other $'run x \\\nb=2 \\\n c\n'
    run_zet param set --force --no-backup -n other d '2 \'
    assert_stderr 'zet-client: warning: other: VALUE ends with "\", and the line after it becomes a part of it'
}

@test "set without a backup leaves no reserve" {
    run_zet param set --no-backup conf kdc new
    assert_success "conf: changed"
    assert_absent conf.before_zet
    assert_absent conf.no_file_before_zet
}

@test "set a second time changes the line in its block and keeps the first reserve" {
    zet param set conf kdc new
    run_zet param set conf kdc newer
    assert_success "conf: changed, the original is kept as conf.before_zet"
    run_zet param get conf kdc
    assert_success "newer"
    assert_equal "$(grep -c ZET_BEGIN--- conf)" 1
    assert_file conf.before_zet $'realms\nkdc=old\nempty=\n#off=1\n spaced=two words \n'
}

@test "set to the value that it has leaves the file untouched" {
    zet param set conf kdc new
    remember_host
    run_zet param set conf kdc new
    assert_success "conf: unchanged"
    assert_files_unchanged
}

@test "set takes an empty value" {
    printf 'kdc=old\n' >conf
    run_zet param set --no-markers conf kdc ''
    assert_status 0
    assert_file conf $'kdc=\n'
}

@test "set takes values of any form" {
    printf 'a=1\n' >conf
    local value
    for value in '[x]' '{}' '"q"' "'" '%s%n' '$HOME' '\1 &' '#c' ' ' 'x=y' $'\xff'; do
        zet param set --no-markers conf a "$value"
        assert_file conf "a=$value"$'\n'
    done
    zet param set --no-markers conf a -- -n
    assert_file conf $'a=-n\n'
}

@test "set refuses a line feed in the value" {
    remember_host
    run_zet param set conf kdc $'a\nb'
    assert_refusal 2 "VALUE holds a line feed (a line cannot; give the text without it)"
    assert_host_unchanged
}

@test "set refuses a name that is none" {
    remember_host
    run_zet param set conf '' new
    assert_refusal 2 "NAME is empty (give the name of a parameter)"
    run_zet param set conf 'a=b' new
    assert_refusal 2 'NAME "a=b" holds "=" (give name and value apart)'
    run_zet param set conf '#a' new
    assert_refusal 2 'NAME "#a" begins with "#" or a blank (give the name alone)'
    run_zet param set conf ' a' new
    assert_refusal 2 'NAME " a" begins with "#" or a blank (give the name alone)'
    run_zet param set conf $'a\nb' new
    assert_refusal 2 'NAME holds a line feed (a line cannot; give the text without it)'
    assert_host_unchanged
}

REMEDY='(NAME is part of a regular expression: use "line" with a PATTERN that says what is meant)'

@test "a name that ends with a blank is told" {
    run_zet param set --no-markers --no-backup conf 'k ' ' v'
    assert_status 0
    assert_stderr 'zet-client: warning: conf: NAME "k " ends with a blank, and no edit without that finds the line'
    [[ $(tail -n 1 conf) == "k = v" ]]
}

@test "a name that selects a line without holding it is refused" {
    printf 'a.c=1\nabc=2\n' >conf
    remember_host
    run_zet param set conf a.c 3
    assert_refusal 2 "NAME \"a.c\" also selects line 2 of conf, which does not hold it $REMEDY"
    run_zet param get conf a.c
    assert_refusal 2 "NAME \"a.c\" also selects line 2 of conf, which does not hold it $REMEDY"
    run_zet param set conf 'x|c' 3
    assert_refusal 2 "NAME \"x|c\" also selects line 1 of conf, which does not hold it $REMEDY"
    run_zet param set conf '[a-z]*' 3
    assert_refusal 2 "NAME \"[a-z]*\" does not select itself $REMEDY"
    run_zet param set conf 'a+' 3
    assert_refusal 2 "NAME \"a+\" does not select itself $REMEDY"
    assert_host_unchanged
}

@test "a name with a dot passes where it selects only itself" {
    printf 'net.ipv4.ip_forward=0\n' >conf
    run_zet param set --no-markers conf net.ipv4.ip_forward 1
    assert_status 0
    assert_file conf $'net.ipv4.ip_forward=1\n'
    run_zet param get conf net.ipv4.ip_forward
    assert_success "1"
}

@test "a name that is no regular expression is refused" {
    run_zet param set conf 'a(' 3
    assert_status 2
    assert_equal "${stderr%% is not valid*}" "zet-client: error: NAME \"a(\": Regular expression '^a(='"
}

@test "restore brings the former line back" {
    zet param set conf kdc new
    run_zet param restore conf kdc
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_file conf "$NOTICE"$'realms\nkdc=old\nempty=\n#off=1\n spaced=two words \n'
}

@test "restore of a parameter that was appended takes the block out" {
    printf 'a=1\n' >conf
    zet param set conf b 2
    run_zet param restore conf b
    assert_status 0
    assert_file conf "$NOTICE"$'a=1\n\n'
}

@test "restore with nothing to restore leaves the file byte for byte" {
    remember_host
    run_zet param restore conf kdc
    assert_success 'conf: unchanged, nothing to restore for "kdc"'
    assert_host_unchanged
}

@test "restore leaves alone what others wrote when it has nothing of its own" {
    zet param set conf empty full
    remember_host
    run_zet param restore conf kdc
    assert_success 'conf: unchanged, nothing to restore for "kdc"'
    assert_host_unchanged
}

@test "restore refuses to drop the blocks of others" {
    printf 'kdc=1\nrealm=2\n' >conf
    zet param set conf kdc new
    zet param set conf realm new
    zet param set conf added new
    remember_host
    run_zet param restore conf kdc
    assert_refusal 1 'conf: the restore would also drop managed blocks of others, in lines 13-15, 17-19 (--all-blocks drops them too, "explain" tells what they are)'
    assert_host_unchanged
}

@test "restore drops the blocks of others when it is told to" {
    printf 'kdc=1\nrealm=2\n' >conf
    zet param set conf kdc new
    zet param set conf realm new
    run_zet param restore --all-blocks conf kdc
    assert_status 0
    assert_file conf "$NOTICE"$'kdc=1\n# --PRE-ZET-- realm=2\n'
}

@test "restore refuses a file with a block that runs into the next one, whatever is asked for" {
    printf '# --PRE-ZET-- a=1\n# ---ZET_BEGIN---\na=5\nmine=4\n# ---ZET_BEGIN---\nnew=1\n# ----ZET_END----\n' >conf
    remember_host
    local arguments
    for arguments in 'param restore conf a' 'param restore --all-blocks conf a' 'line restore conf ^new='; do
        # shellcheck disable=SC2086  # several words
        run_zet $arguments
        assert_refusal 1 'conf:2: a begin marker has no end marker ("zet-client doctor conf" tells a repair)'
    done
    assert_host_unchanged
}

@test "restore refuses a file with a block that has no end" {
    printf '# --PRE-ZET-- kdc=1\n# ---ZET_BEGIN---\nkdc=2\nprecious\n' >conf
    remember_host
    run_zet param restore --all-blocks conf kdc
    assert_refusal 1 'conf:2: a begin marker has no end marker ("zet-client doctor conf" tells a repair)'
    assert_host_unchanged
}

@test "a command without its arguments is wrong use" {
    run_zet param set conf kdc
    assert_status 2
    run_zet param
    assert_status 2
    run_zet param frobnicate conf
    assert_status 2
}
