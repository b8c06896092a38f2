# Single lines of files that are no template's, as the lists ask for them.

load helper
load set

setup() {
    make_set
    mkdir etc/targets.d etc/defaults.d
    add_target one.conf $'one\n'
    echo NTP_SERVER=shipped >templates/values.conf
}

teardown() {
    remove_host
}

# edits TEXT: the host's own list, "FILE" in it being out/plain.
edits() {
    printf '%s\n' "${1//FILE/$HOST/out/plain}" >etc/targets.d/10.toml
}

TWO_EDITS='[[edits]]
file = "FILE"
param = "a"
value = "${ntp_server}"
[[edits]]
name = "b"
file = "FILE"
pattern = "^b ="
line = "b = 3"'

@test "the status of a role stays as long as lines are committed, whatever targets go back" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet -q commit-config
    run_zet rollback-config out/one.conf
    assert_status 0
    [[ -e state/zet-client.status && -e state/zet-client-fs.status ]]
    run_zet rollback-config
    assert_status 0
    assert_file out/plain $'a=1\nb = 2\n'
    [[ ! -e state/zet-client.status && ! -e state/zet-client-fs.status ]]
}

@test "the lines of the other role keep no status" {
    printf 'a=1\n' >out/plain
    edits $'[[edits]]\nfile = "FILE"\nparam = "a"\nvalue = "2"\nroles = "server"'
    server -q commit-config
    zet -q commit-config
    run_zet rollback-config out/one.conf
    assert_status 0
    [[ ! -e state/zet-client.status && -e state/zet-server.status ]]
}

@test "edits are set, watched and taken back" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    run_zet check-config
    assert_status 0
    run_zet status
    assert_status 3
    [[ $output == *"$HOST/out/plain: line a: not committed"* ]]
    [[ $output == *$'\n1 not committed; edits: 2 not committed\n' ]]
    run_zet commit-config -n --diff
    assert_status 3
    [[ $output == *"+a=shipped"$'\n'* ]]
    run_zet commit-config one.conf
    assert_file out/plain $'a=1\nb = 2\n'
    run_zet commit-config
    assert_success "$HOST/out/plain: changed, the original is kept as $HOST/out/plain.before_zet
1 changed, 1 unchanged"
    grep -Fx 'a=shipped' out/plain
    grep -Fx 'b = 3' out/plain
    grep -Fx '# --PRE-ZET-- b = 2' out/plain
    run_zet status
    assert_status 0
    [[ $output == *"$HOST/out/plain: line a: in sync"* ]]
    [[ $output == *$'\n1 in sync; edits: 2 in sync\n' ]]
    run_zet commit-config
    assert_success "2 unchanged"
    zet rollback-config
    assert_file out/plain $'a=1\nb = 2\n'
    assert_absent out/plain.before_zet
}

@test "several edits in one file are one rename of it" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    capture strace -f -qq -o "$BASE/trace" -e trace=/rename "$ZET_BIN/zet-client" --config "$HOST/zet.conf" commit-config
    assert_status 0
    grep -Fx 'a=shipped' out/plain
    grep -Fx 'b = 3' out/plain
    assert_equal "$(grep -c '"[^"]*/plain"[^"]*$' "$BASE/trace")" 1
}

@test "the state of an edit tells who has to do something" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet commit-config
    local committed
    committed=$(<out/plain)
    echo NTP_SERVER=fleet >etc/defaults.d/10.conf
    run_zet --json status
    assert_status 3
    assert_json '[e["state"] for e in d["listed_edits"]]' '["pending", "in sync"]'
    rm etc/defaults.d/10.conf
    sed -i 's/^b = 3/b = 4/' out/plain
    run_zet --json status
    assert_json '[e["state"] for e in d["listed_edits"]]' '["in sync", "edited"]'
    run_zet commit-config --on-edit=refuse
    assert_refusal 1 "$HOST/out/plain:14: a line that the last commit set was changed since (--on-edit=overwrite sets it again, and the history keeps the edit)
zet-client: nothing was changed"
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/out/plain:14: a line that the last commit set was changed since; it is set again
zet-client: \"history show 2 $HOST/out/plain\" shows what it held"
    assert_equal "$(<out/plain)" "$committed"
    zet undo
    grep -Fx 'b = 4' out/plain
    printf 'a=1\n' >out/plain
    run_zet --json status
    assert_json '[e["state"] for e in d["listed_edits"]]' '["missing", "missing"]'
    rm out/plain
    run_zet --json status
    assert_status 3
    assert_json '[e["state"] for e in d["listed_edits"]]' '["missing", "missing"]'
}

@test "an edit is not committed for a role that did not commit it, whoever else did" {
    printf 'a=1\n' >out/plain
    edits $'[[edits]]\nfile = "FILE"\nparam = "a"\nvalue = "2"\nroles = "both"'
    server -q commit-config one.conf
    zet -q commit-config
    local committed
    committed=$(<out/plain)
    zet status
    # One role has committed a target alone, then everything, then nothing.
    PROGRAM=$ZET_BIN/zet-init run_zet status --json
    assert_status 3
    assert_json '[e["state"] for e in d["listed_edits"]]' '["not committed"]'
    PROGRAM=$ZET_BIN/zet-init run_zet status --format=openmetrics
    assert_status 3
    [[ $output == *'zet_listed_edits{role="server",state="not committed"} 1'* ]]
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config -n
    assert_status 3
    server -q commit-config
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config -n
    assert_status 0
    server status
    server -q rollback-config
    PROGRAM=$ZET_BIN/zet-init run_zet status
    assert_status 3
    [[ $output == *"committed: never"*"$HOST/out/plain: line a: not committed"* ]]
    # What somebody edits then is an edit for the role that has committed the line.
    sed -i 's/^a=2/a=3/' out/plain
    PROGRAM=$ZET_BIN/zet-init run_zet status --json
    assert_json '[e["state"] for e in d["listed_edits"]]' '["not committed"]'
    run_zet status --json
    assert_json '[e["state"] for e in d["listed_edits"]]' '["edited"]'
    server -q commit-config
    assert_equal "$(<out/plain)" "$committed"
}

@test "an edit whose line would go on in the next one brings a warning" {
    printf 'a=1\n' >out/plain
    edits "[[edits]]
file = \"FILE\"
param = \"a\"
value = 'C:\\x\\'"
    run_zet check-config
    assert_status 0
    local warning="$HOST/etc/targets.d/10.toml:1: its line ends with \"\\\", and the line after it would be a part of it (take the \"\\\" out, unless it is text in this format)"
    [[ $output$stderr == *"$warning"* ]]
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $warning"
    grep -Fx 'a=C:\x\' out/plain
    run_zet commit-config
    assert_success "2 unchanged"
    assert_stderr ""
}

@test "an edit that would part a line from the next one is a problem" {
    printf 'a=1\nb = 2 \\\n  3\nc\n' >out/plain
    edits "$TWO_EDITS"
    run_zet check-config
    assert_status 1
    assert_output "$HOST/etc/targets.d/10.toml:5: would part line 2 of $HOST/out/plain, which ends with \"\\\", from the next one (make one line of the two, or disable the edit)"
    printf 'a=1\nx \\\nb = 2\nc\n' >out/plain
    run_zet check-config
    assert_status 1
    [[ $output == *"would part line 2 of $HOST/out/plain"* ]]
    printf 'a=1\n# x \\\nb = 2 \\\\\nc\n' >out/plain
    run_zet check-config
    assert_status 0
}

@test "a line behind one that only ends with a backslash is set" {
    local before
    for before in 'path = C:\data\' 'sep = \' '\'; do
        printf '%s\na=1\nb = 2\n' "$before" >out/plain
        edits "$TWO_EDITS"
        run_zet commit-config
        assert_status 0
        grep -x 'b = 3' out/plain
        zet -q rollback-config
    done
    printf '  b = C:\\data\\\n  a=1\n' >out/plain
    edits "${TWO_EDITS/'^b ='/'^ *b ='}"
    sed -i 's/^param = "a"/pattern = "^ *a="/; s/^value = .*/line = "a=5"/' etc/targets.d/10.toml
    run_zet commit-config
    assert_status 0
    grep -x 'b = 3' out/plain
}

@test "a merge leaves a line that a hand changed, and sets the others" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet commit-config
    sed -i 's/^b = 3/b = 4/' out/plain
    echo NTP_SERVER=fleet >etc/defaults.d/10.conf
    run_zet --json commit-config --on-edit=merge
    assert_status 0
    assert_stderr "zet-client: $HOST/out/plain:14: a line that the last commit set was changed since; it stays"
    assert_json '[[t["result"], t["edited"], t["merged"]] for t in d["targets"]]' \
        '[["unchanged", false, false], ["changed", false, true]]'
    grep -Fx 'a=fleet' out/plain
    grep -Fx 'b = 4' out/plain
    local merged
    merged=$(<out/plain)
    run_zet commit-config --on-edit=merge
    assert_status 0
    assert_equal "$(<out/plain)" "$merged"
    run_zet --json status
    assert_json '[e["state"] for e in d["listed_edits"]]' '["in sync", "edited"]'
    run_zet commit-config
    assert_status 0
    grep -Fx 'b = 3' out/plain
}

@test "a line that a hand took over, markers and all, is one that it changed" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet commit-config
    printf 'a=mine\nb = 3\n' >out/plain
    run_zet commit-config --on-edit=refuse
    assert_refusal 1 "$HOST/out/plain:1: a line that the last commit set was changed since (--on-edit=overwrite sets it again, and the history keeps the edit)
zet-client: nothing was changed"
    run_zet commit-config --on-edit=merge
    assert_status 0
    grep -Fx 'a=mine' out/plain
    grep -Fx 'b = 3' out/plain
    edits "${TWO_EDITS/\$\{ntp_server\}/other}"
    run_zet commit-config --on-edit=merge
    assert_status 1
    [[ $stderr == *"$HOST/out/plain:"*": was edited here, where the lists ask for another line, too"* ]]
    run_zet commit-config
    assert_status 0
    [[ $stderr == *"$HOST/out/plain:8: a line that the last commit set was changed since; it is set again"* ]]
    grep -Fx 'a=other' out/plain
    run_zet --json history
    assert_json '[f["edited"] for f in d["entries"][0]["files"] if f["path"].endswith("plain")]' '[true]'
}

@test "a line whose block alone was taken out is no edit" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet commit-config
    printf 'b = 3\n' >out/plain
    run_zet commit-config --on-edit=refuse
    assert_status 0
    assert_stderr ""
}

@test "lines of one role in a target of the other are a problem where both have committed" {
    printf 'a=1\n' >out/plain
    edits '[templates."plain"]
target = "FILE"
roles = "server"
[[edits]]
file = "FILE"
roles = "client"
param = "a"
value = "2"'
    echo a=3 >templates/plain
    local problem="$HOST/etc/targets.d/10.toml:4: $HOST/out/plain: is made from [plain] (put the line into the template)"
    # Hosts of either role alone can have the list.
    run_zet check-config
    assert_status 0
    server -q commit-config
    run_zet check-config
    assert_status 1
    [[ $output == *"$problem"* ]]
    run_zet commit-config
    assert_refusal 1 "$problem
zet-client: nothing was changed"
    zet -q commit-config one.conf
    local name
    for name in "" plain; do
        # shellcheck disable=SC2086  # none, or one
        PROGRAM=$ZET_BIN/zet-init run_zet commit-config $name
        assert_status 1
        assert_stderr "zet-init: error: $problem
zet-init: nothing was changed"
    done
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config one.conf
    assert_status 0
}

@test "a commit of a named template is refused where lines of its target are asked for" {
    edits '[[edits]]
file = "FILE"
param = "a"
value = "2"'
    list_target plain "$HOST/out/plain"
    echo a=3 >templates/plain
    run_zet commit-config plain
    assert_refusal 1 "$HOST/etc/targets.d/10.toml:1: $HOST/out/plain: is made from [plain] (put the line into the template)
zet-client: nothing was changed"
    assert_absent out/plain
}

@test "a line that a hand changed and the lists ask for otherwise, too, is a conflict of a merge" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet commit-config
    sed -i 's/^b = 3/b = 4/' out/plain
    edits "${TWO_EDITS/b = 3/b = 5}"
    remember_host
    run_zet commit-config --on-edit=merge
    assert_refusal 1 "$HOST/out/plain:$(grep -nFx 'b = 4' out/plain | cut -d: -f1): was edited here, where the lists ask for another line, too (take the edit out; --on-edit=overwrite sets the line again, and the history keeps the edit)
zet-client: nothing was changed"
    assert_host_unchanged
}

@test "an edit of a line that the history cannot keep is set again only when that is said" {
    echo ZET_HISTORY_MAX_FILE=100 >>zet.conf
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet commit-config
    sed -i 's/^b = 3/b = 4/' out/plain
    run_zet commit-config
    assert_refusal 1 "$HOST/out/plain:14: a line that the last commit set was changed since, and the history cannot keep the edit (--on-edit=overwrite sets it again all the same)
zet-client: nothing was changed"
    run_zet commit-config --on-edit=overwrite
    assert_status 0
    grep -Fx 'b = 3' out/plain
}

@test "an undo of the commit takes its edits back, too" {
    printf 'a=1\nb = 2' >out/plain
    edits "$TWO_EDITS"
    zet commit-config
    zet undo
    assert_file out/plain $'a=1\nb = 2'
    run_zet --json status
    assert_json '[e["state"] for e in d["listed_edits"]]' '["not committed", "not committed"]'
}

@test "an edit that is not in force any more is taken back, and the others stay" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet commit-config
    printf '[[edits]]\nname = "b"\nenabled = false\n' >etc/targets.d/20.toml
    run_zet status
    assert_status 3
    [[ $output == *"$HOST/out/plain: line ^b =: pending"* ]]
    run_zet commit-config
    assert_status 0
    grep -Fx 'a=shipped' out/plain
    grep -Fx 'b = 2' out/plain
    [[ $(<out/plain) != *'b = 3'* ]]
    run_zet status
    assert_status 0
    rm etc/targets.d/*.toml
    run_zet commit-config
    assert_status 0
    assert_file out/plain $'a=1\nb = 2\n'
}

@test "edits that cannot be made are problems, each with its place" {
    printf 'a=1\n' >out/plain
    edits '[[edits]]
file = "FILE.missing"
param = "a"
value = "1"
[[edits]]
file = "ONE"
param = "a"
value = "1"
[[edits]]
file = "FILE"
param = "a"
value = "2"
[[edits]]
file = "FILE"
pattern = "^a"
line = "a=3"
[[edits]]
file = "FILE"
pattern = "^b"
line = "c"
[[edits]]
file = "FILE.absent"
param = "a"
value = "1"
optional = true'
    sed -i "s#ONE#$HOST/out/one.conf#" etc/targets.d/10.toml
    touch out/one.conf
    run_zet check-config
    assert_status 1
    local list=$HOST/etc/targets.d/10.toml
    [[ $output == *"$list:1: $HOST/out/plain.missing: is missing (make it, or say optional = true)"* ]]
    [[ $output == *"$list:5: $HOST/out/one.conf: is made from [one.conf] (put the line into the template)"* ]]
    [[ $output == *"$list:13: selects $HOST/out/plain:1, as the edit of line 9 does"* ]]
    [[ $output == *"$list:17: the line that it sets is not one that it selects"* ]]
    [[ $output != *absent* ]]
    run_zet commit-config
    assert_status 1
    assert_absent out/plain.before_zet
}

@test "a pattern that does not reach over a carriage return is a problem" {
    printf 'a 1\r\nb\r\n' >out/plain
    printf 'b\na 1\r\n' >out/mixed
    local mixed edit=$'[[edits]]\nfile = "FILE"\npattern = \'^a \d$\'\nline = "a 2"'
    mixed=${edit/FILE/FILE.mixed}
    edits "$edit
${mixed/FILE.mixed/$HOST/out/mixed}"
    local list=$HOST/etc/targets.d/10.toml remedy='(write "\r?$" in place of "$")'
    run_zet check-config
    assert_status 1
    [[ $output == *"$list:1: selects the line that it sets only without the carriage return that this gets $remedy"* ]]
    [[ $output == *"$list:5: selects $HOST/out/mixed:2 only without the carriage return at its end $remedy"* ]]
    edits "${edit/d\$/d\\r?$}"
    zet -q commit-config
    run_zet status
    assert_status 0
    local committed
    committed=$(<out/plain)
    run_zet commit-config
    assert_success "2 unchanged"
    assert_equal "$(<out/plain)" "$committed"
    assert_equal "$(grep -c $'^a 2\r$' out/plain)" 1
}

@test "a line that ends with a carriage return is the list's own, whoever set it" {
    printf 'a=1\r\n' >out/plain
    zet -q param set out/plain a 2
    edits '[[edits]]
file = "FILE"
param = "a"
value = "2"'
    run_zet commit-config
    assert_status 0
}

@test "what param set refuses is a problem of a list, too" {
    printf '[one]\n  a = 1\n[two]\nx=1\n' >out/blanks
    printf '[one]\na=1\n[two]\na=2\n' >out/twice
    printf '[one]\nx=1\n[two]\ny=1\n' >out/new
    printf '\xef\xbb\xbfa=1\n' >out/mark
    local name
    for name in blanks twice new mark; do
        printf '[[edits]]\nfile = "%s"\nparam = "a"\nvalue = "3"\n' "$HOST/out/$name"
    done >etc/targets.d/10.toml
    run_zet check-config
    assert_status 1
    local list=$HOST/etc/targets.d/10.toml remedy='(choose the line with pattern and line, or make a template for the file)'
    [[ $output == *"$list:1: $HOST/out/blanks:2: sets \"a\" with blanks before the \"=\", which is no line \"name=value\" $remedy"* ]]
    [[ $output == *"$list:5: $HOST/out/twice: 2 sections have \"a\", in lines 2 and 4 $remedy"* ]]
    [[ $output == *"$list:9: $HOST/out/new: no section has \"a\", and a new line would come to stand in the last one, [two] $remedy"* ]]
    [[ $output == *"$list:13: $HOST/out/mark:1: begins with a byte order mark, behind which nothing is found (save the file without the mark)"* ]]
    run_zet commit-config
    assert_status 1
    assert_absent out/one.conf
    assert_file out/twice $'[one]\na=1\n[two]\na=2\n'
}

@test "a line that a commit has set in a way that is refused now keeps no commit from being made" {
    printf '[one]\nx=1\n[two]\na=1\n' >out/plain
    edits $'[[edits]]\nfile = "FILE"\nparam = "a"\nvalue = "3"'
    zet -q commit-config
    sed -i '1a a = 5' out/plain
    local words="$HOST/etc/targets.d/10.toml:1: $HOST/out/plain:2: sets \"a\" with blanks before the \"=\", which is no line \"name=value\""
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $words (choose the line with pattern and line, or make a template for the file)"
    run_zet --json status
    assert_status 0
    assert_json '[e["state"] for e in d["listed_edits"]]' '["in sync"]'
    run_zet check-config
    assert_status 0
    # Where something would be written it is refused, and told once.
    sed -i 's/value = "3"/value = "4"/' etc/targets.d/10.toml
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"$words"* ]]
    run_zet --json status
    assert_json '[e["state"] for e in d["listed_edits"]]' '["unknown"]'
}

@test "several lines that a parameter of a list takes are told, until they are set" {
    printf '# a=1 is good\n#a=2\n' >out/plain
    edits $'[[edits]]\nfile = "FILE"\nparam = "a"\nvalue = "3"'
    run_zet commit-config
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/out/plain: lines 1 and 2 are \"a\", commented out or not; all of them are set (a pattern and a line set one)"
    run_zet commit-config
    assert_success "2 unchanged"
    assert_stderr ""
}

@test "what a commit tells of lines is told by it and its preview alone" {
    printf '# a=1 is good\n#a=2\n' >out/plain
    edits $'[[edits]]\nfile = "FILE"\nparam = "a"\nvalue = "3"'
    local words="lines 1 and 2 are \"a\", commented out or not; all of them are set"
    local arguments
    for arguments in check-config 'status --diff' 'option set BAR a--b'; do
        # shellcheck disable=SC2086  # these are words
        run_zet $arguments
        [[ $output$stderr != *"$words"* ]]
    done
    run_zet commit-config -n
    [[ $stderr == *"$words"* ]]
    run_zet commit-config
    [[ $stderr == *"$words"* ]]
}

@test "edits of two roles for one line are a problem once the other role has committed" {
    printf 'hosts: files\n' >out/plain
    local server_edit=$'[[edits]]\nfile = "FILE"\nroles = "server"\npattern = "^hosts:"\nline = "hosts: s"'
    edits "$server_edit
${server_edit//server/client}"
    sed -i '$s/hosts: s/hosts: c/' etc/targets.d/10.toml
    run_zet check-config
    assert_status 0
    server -q commit-config
    local problem="$HOST/etc/targets.d/10.toml:6: selects the line that $HOST/etc/targets.d/10.toml:1 sets, which the server has committed (give each line to one edit)"
    run_zet check-config
    assert_status 1
    [[ $output == *"$problem"* ]]
    remember_host
    run_zet commit-config
    assert_refusal 1 "$problem
zet-client: nothing was changed"
    assert_host_unchanged
    # One line for both, or for nobody, is none that they fight for.
    sed -i 's/hosts: c/hosts: s/' etc/targets.d/10.toml
    run_zet check-config
    assert_status 0
    edits "${server_edit/server/both}"
    sed -i 's/hosts: s/hosts: both/' etc/targets.d/10.toml
    run_zet commit-config
    assert_status 0
    grep -qx 'hosts: both' out/plain
}

@test "edits of two roles for one line are no problem where both ask for the same" {
    printf 'a=1\n' >out/plain
    echo SITE=one >etc/defaults.d/10.conf
    edits $'[[edits]]\nfile = "FILE"\nroles = "server"\nparam = "a"\nvalue = "${site}"\n[[edits]]\nfile = "FILE"\nroles = "client"\nparam = "a"\nvalue = "${site}"'
    server -q commit-config
    zet -q commit-config
    echo SITE=two >etc/defaults.d/10.conf
    run_zet commit-config
    assert_status 0
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config
    assert_status 0
    grep -x 'a=two' out/plain
    zet check-config
}

@test "a line that lost its markers is set again, and what stood there before stays what goes back" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS
[[edits]]
file = \"FILE\"
param = \"new\"
value = \"1\""
    zet -q commit-config
    cp out/plain committed
    sed -i '/^#/d' out/plain
    run_zet commit-config --on-edit=refuse
    assert_status 0
    assert_equal "$(grep -v '^$' out/plain)" "$(grep -v '^$' committed)"
    zet -q rollback-config
    assert_equal "$(grep -v '^$' out/plain)" $'a=1\nb = 2'
}

@test "a line that lost its markers is named by a rollback, and stays on record" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet -q commit-config
    sed -i '/^#/d' out/plain
    cp out/plain stripped
    local words="$HOST/out/plain: was edited without markers, and may hold what others wrote, stays as it is (--force puts back what was there before)"
    run_zet rollback-config
    assert_status 1
    [[ $output == *"$HOST/out/plain: stays as it is"* ]]
    assert_stderr "zet-client: error: $words"
    cmp out/plain stripped
    run_zet rollback-config
    assert_status 1
    [[ $stderr == *"$words"* ]]
    run_zet rollback-config --force
    assert_status 0
    assert_file out/plain $'a=1\nb = 2\n'
}

@test "a line that lost its markers stays in its place, and is the original where others wrote, too" {
    printf 'Port 22\nAuth yes\n' >out/plain
    edits $'[[edits]]\nfile = "FILE"\npattern = "^#?Auth "\nline = "Auth no"\n[[edits]]\nfile = "FILE"\npattern = "^New "\nline = "New 1"'
    zet -q commit-config
    sed -i '/^#/d;/^$/d' out/plain
    printf 'Match User backup\n' >>out/plain
    run_zet commit-config
    assert_status 0
    assert_equal "$(sed '/^#/d;/^$/d' out/plain)" $'Port 22\nAuth no\nNew 1\nMatch User backup'
    run_zet rollback-config
    assert_status 0
    assert_equal "$(grep -v '^$' out/plain)" $'Port 22\nAuth no\nNew 1\nMatch User backup'
}

@test "a new line that lost its markers is not moved behind lines that were added after it" {
    printf 'x=1\n' >out/plain
    edits $'[[edits]]\nfile = "FILE"\npattern = "^New "\nline = "New 1"'
    zet -q commit-config
    printf 'Match User backup\nlast=0\n' >>out/plain
    edits $'[[edits]]\nfile = "FILE"\npattern = "^New "\nline = "New 1"\n[[edits]]\nfile = "FILE"\npattern = "^last="\nline = "last=1"'
    zet -q commit-config
    sed -i '/^#/d;/^$/d' out/plain
    run_zet commit-config
    assert_status 0
    assert_equal "$(sed '/^#/d;/^$/d' out/plain)" $'x=1\nNew 1\nMatch User backup\nlast=1'
}

@test "what others wrote is not taken for a line that lost its markers" {
    printf '# old\na=0\n' >out/plain
    edits $'[[edits]]\nfile = "FILE"\nparam = "a"\nvalue = "1"'
    zet -q commit-config
    printf '# new\na=1\n' >out/plain
    run_zet commit-config
    assert_status 0
    [[ $(<out/plain) != *a=0* ]]
    run_zet rollback-config
    assert_status 0
    assert_file out/plain $'# new\na=1\n'
}

@test "a rollback leaves a new file that has the value of an edit, and forgets it" {
    printf '# old\na=0\n' >out/plain
    zet -q param set out/plain a 1
    printf '# new\na=1\n' >out/plain
    run_zet rollback-config
    assert_status 0
    assert_file out/plain $'# new\na=1\n'
    [[ $output != *"without markers"* ]]
}

@test "a line of a hand stays beside one that lost its markers" {
    printf '[a]\nA=0\n[b]\nB=1\n' >out/plain
    edits $'[[edits]]\nfile = "FILE"\npattern = "^A="\nline = "A=1"'
    zet -q commit-config
    sed -i '/^#/d;/^$/d' out/plain
    printf 'A=1\n' >>out/plain
    run_zet commit-config
    assert_status 0
    zet rollback-config
    assert_equal "$(grep -v '^$' out/plain)" $'[a]\nA=1\n[b]\nB=1\nA=1'
}

@test "each of several lines that lost their markers gets back what stood there before" {
    printf 'x=1\ny\nx=2\n' >out/plain
    edits $'[[edits]]\nfile = "FILE"\npattern = "^x="\nline = "x=9"'
    zet -q commit-config
    sed -i '/^#/d' out/plain
    zet -q commit-config
    zet -q rollback-config
    assert_file out/plain $'x=1\ny\nx=2\n'
}

@test "a line in a block of something else is a problem" {
    printf 'a=1\n' >out/plain
    zet param set out/plain a 5
    edits '[[edits]]
file = "FILE"
param = "a"
value = "2"'
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"$HOST/etc/targets.d/10.toml:1: $HOST/out/plain:"*" stands in a managed block of something else"* ]]
    zet param set out/plain a 2
    run_zet commit-config
    assert_status 0
}

# assert_told TEXT: by the check and by the commit, of which nothing is written.
assert_told() {
    run_zet check-config
    assert_status 1
    [[ $output == *"$1"* ]]
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"$1"*"nothing was changed"* ]]
    assert_absent out/one.conf
    assert_absent out/plain.before_zet
}

@test "a file that cannot be replaced, or has no room beside it, is told before anything is written" {
    printf 'a=1\n' >out/plain
    edits "$TWO_EDITS"
    touch out/plain.tmp
    assert_told "$HOST/out/plain.tmp: is in the way of writing $HOST/out/plain (move it away)"
    rm out/plain.tmp
    mkdir out/plain.before_zet
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"$HOST/out/plain.before_zet: is no regular file (move it away)"* ]]
    assert_absent out/one.conf
    rmdir out/plain.before_zet
    ln -s nowhere out/plain.no_file_before_zet
    assert_told "$HOST/out/plain.no_file_before_zet: is no regular file (move it away)"
    rm out/plain.no_file_before_zet
    chmod o+w out
    assert_told "$HOST/out: others may write the directory of $HOST/out/plain (chmod o-w it)"
    chmod o-w out
    run_zet commit-config
    assert_status 0
}

@test "a file that is no file, or the product's own, is no file to edit" {
    mkdir out/plain
    edits "$TWO_EDITS"
    assert_told "$HOST/etc/targets.d/10.toml:1: $HOST/out/plain: is a directory (name a file in it)"
    rmdir out/plain
    mkfifo out/plain
    assert_told "$HOST/etc/targets.d/10.toml:1: $HOST/out/plain: is no regular file (name a regular file)"
    rm out/plain
    local each
    for each in zet.conf:"the configuration file of the commands" etc/one.conf:"the working copy of [one.conf]" \
        templates/one.conf:"the template [one.conf]" templates/targets.toml:"the list of targets"; do
        [[ -e ${each%%:*} ]] || echo a=1 >"${each%%:*}"
        printf '[[edits]]\nfile = "%s"\nparam = "a"\nvalue = "1"\n' "$HOST/${each%%:*}" >etc/targets.d/10.toml
        remember_files
        assert_told "$HOST/${each%%:*}: is ${each#*:}"
        assert_unchanged_but_staging
    done
}

@test "an edit of a file that is immutable, or only grows, is told before anything is written" {
    need_root
    printf 'a=1\n' >out/plain
    edits "$TWO_EDITS"
    local flag
    for flag in i a; do
        chattr "+$flag" out/plain 2>/dev/null || skip "this file system knows no such files"
        run_zet commit-config
        chattr "-$flag" out/plain
        assert_status 1
        [[ $stderr == *"$HOST/out/plain: "*", and cannot be replaced (chattr -$flag it)"$'\n'*"nothing was changed"* ]]
        assert_absent out/one.conf
        assert_absent out/plain.before_zet
    done
}

@test "an edit of a mount point is told before anything is written" {
    need_root
    printf 'a=1\n' >out/plain
    printf 'a=1\n' >mounted
    edits "$TWO_EDITS"
    mount --bind mounted out/plain 2>/dev/null || skip "nothing may be mounted here"
    run_zet commit-config
    umount out/plain
    assert_status 1
    [[ $stderr == *"$HOST/out/plain: is a mount point, and cannot be replaced ("*"nothing was changed"* ]]
    assert_absent out/one.conf
}

@test "a user in whose directory an edit is does not lead root to another file by a link" {
    need_root
    chmod 755 "$HOST" "$HOST/out"
    printf 'a=1\n' >out/plain
    chmod 600 out/plain
    mkdir theirs
    ln -s "$HOST/out/plain" theirs/conf
    chown -h 65534 theirs theirs/conf
    printf '[[edits]]\nfile = "%s"\nparam = "a"\nvalue = "2"\n' "$HOST/theirs/conf" >etc/targets.d/10.toml
    run_zet check-config
    assert_status 1
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"$HOST/theirs"*"nothing was changed"* ]]
    assert_file out/plain $'a=1\n'
    assert_equal "$(names_in out)" plain
}

@test "lines are changed and taken back without a history, too" {
    echo ZET_HISTORY=no >>zet.conf
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet commit-config
    # Another value is no line of somebody else's.
    echo NTP_SERVER=fleet >etc/defaults.d/10.conf
    run_zet commit-config
    assert_status 0
    grep -Fx 'a=fleet' out/plain
    # One leaves the lists, then all.
    printf '[[edits]]\nname = "b"\nenabled = false\n' >etc/targets.d/20.toml
    run_zet status
    assert_status 3
    [[ $output == *"$HOST/out/plain: line ^b =: pending"* ]]
    zet commit-config
    grep -Fx 'a=fleet' out/plain
    grep -Fx 'b = 2' out/plain
    [[ $(<out/plain) != *'b = 3'* ]]
    rm etc/targets.d/*.toml
    zet commit-config
    assert_file out/plain $'a=1\nb = 2\n'
    run_zet status
    assert_status 0
    run_zet history -q
    assert_success ""
}

@test "a line of the lists whose memory is lost is set again, as one that somebody edited" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet -q commit-config
    rm -f state/*.db* state/client*
    echo NTP_SERVER=fleet >etc/defaults.d/10.conf
    run_zet check-config
    assert_status 0
    run_zet commit-config --on-edit=refuse
    assert_status 1
    grep -Fx 'a=shipped' out/plain
    run_zet commit-config
    assert_status 0
    [[ $stderr == *"$HOST/out/plain:10: a line that the last commit set was changed since; it is set again"* ]]
    grep -Fx 'a=fleet' out/plain
    grep -Fx 'b = 3' out/plain
    run_zet status
    assert_status 0
    zet -q rollback-config
    assert_file out/plain $'a=1\nb = 2\n'
    assert_absent out/plain.before_zet
}

@test "a file that begins with a byte order mark gets no line of the lists" {
    edits "$TWO_EDITS"
    local mark
    for mark in '\xef\xbb\xbf' '\xff\xfe'; do
        printf "${mark}a=1\nb = 2\n" >out/plain
        cp out/plain before
        run_zet commit-config
        assert_status 1
        [[ $stderr == *"$HOST/out/plain:1: the programs that read the file need this line as its first, and a notice would come before it (take its edits from the lists)"* ]] ||
            differ "$mark" told "$stderr"
        cmp out/plain before
    done
}

@test "a file of the lists that cannot be read keeps nothing else from being told" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet -q commit-config
    rm out/plain
    mkdir out/plain
    echo edited >>out/one.conf
    run_zet status
    assert_status 1
    [[ $output == *"$HOST/out/one.conf: edited"*"$HOST/out/plain: line a: unknown"*$'\n1 edited; edits: 2 unknown\n' ]]
    run_zet status --format openmetrics
    assert_status 1
    [[ $output == *'zet_targets{role="client",state="edited"} 1'* ]]
    local told="$HOST/out/plain: its state cannot be told: $HOST/etc/targets.d/10.toml:1: $HOST/out/plain: is a directory (name a file in it)"
    [[ $stderr == *"error: $told"* ]]
    run_zet -q status --changed
    assert_status 1
    [[ $stderr == *"error: $told"* ]]
    run_zet status --json
    assert_json 'd["errors"][0], len(d["errors"]), d["warnings"]' "[\"$told\", 2, []]"
    echo '${oops' >templates/one.conf
    rm etc/one.conf
    run_zet check-config
    assert_status 1
    [[ $output == *"$HOST/etc/targets.d/10.toml:1: $HOST/out/plain: is a directory (name a file in it)"* ]]
    [[ $output == *"templates/one.conf"* ]]
}

@test "a file that the lists do not ask for any more, and that cannot be read, is a problem of its own" {
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet -q commit-config
    rm etc/targets.d/10.toml out/plain
    ln -s plain out/plain
    run_zet status
    assert_status 1
    [[ $output == *"$HOST/out/one.conf: in sync"*"$HOST/out/plain: line a: unknown"* ]]
    [[ $stderr == *"error: $HOST/out/plain: its state cannot be told: $HOST/out/plain: "* && $stderr != *warning* ]]
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"$HOST/out/plain: "*"nothing was changed"* ]]
}

@test "a line of which the history cannot be asked differs, whoever changed what" {
    need_root
    copy_programs
    printf 'a=1\nb = 2\n' >out/plain
    edits "$TWO_EDITS"
    zet -q commit-config
    sed -i 's/b = 3/b = 4/' etc/targets.d/10.toml
    sed -i 's/^a=.*/a=mine/' out/plain
    run_zet status --json
    assert_json '[e["state"] for e in d["listed_edits"]]' '["edited", "pending"]'
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status --json
    assert_status 3
    assert_json '[e["state"] for e in d["listed_edits"]]' '["differs", "differs"]'
    # What root's commit would do is no problem of anybody's.
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" commit-config -n
    assert_status 3
    cp out/plain.before_zet out/plain
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status --json
    assert_json '[e["state"] for e in d["listed_edits"]]' '["differs", "differs"]'
    # What was never committed is not.
    zet -q rollback-config --force
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" status --json
    assert_json '[e["state"] for e in d["listed_edits"]]' '["not committed", "not committed"]'
}
