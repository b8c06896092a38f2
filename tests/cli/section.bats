load helper

setup() {
    make_host
    printf 'top=0\n\n[a]\nx=1\n# [no]\n\n# about b\n[b]\nx=2\nz = 3\n' >conf
}

teardown() {
    remove_host
}

@test "get looks into one section" {
    run_zet param get --section b conf x
    assert_success "2"
    run_zet param get --no-section conf top
    assert_success "0"
    run_zet --json param get --section a conf x
    assert_status 0
    assert_json 'd["section"], d["value"]' '["a", "1"]'
    run_zet --json param get --no-section conf x
    assert_status 1
    assert_json 'd["section"], d["found"]' '["", false]'
    run_zet --json param get conf top
    assert_json 'd["section"]' null
}

@test "get tells what it cannot answer" {
    remember_host
    run_zet param get conf x
    assert_refusal 1 'conf: 2 sections have "x", in lines 4 and 9 (--section says which)'
    run_zet param get conf z
    assert_refusal 1 'conf:10: sets "z" with blanks before the "=", which is no line "name=value" ("line get" with the PATTERN "^\s*z\s*=" prints it)'
    run_zet line get conf '^\s*z\s*='
    assert_success "z = 3"
    assert_host_unchanged
}

@test "set changes one section" {
    run_zet param set --section a conf x 9
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_file conf "${NOTICE}top=0

[a]
# --PRE-ZET-- x=1
$(block x=9)
# [no]

# about b
[b]
x=2
z = 3
"
    run_zet param set --section a conf x 9
    assert_success "conf: unchanged"
}

@test "set adds a line to the section, before what introduces the next one" {
    zet -q param set --section=a --no-markers conf new 1
    assert_file conf $'top=0\n\n[a]\nx=1\n# [no]\n\nnew=1\n\n# about b\n[b]\nx=2\nz = 3\n'
}

@test "a dry run shows the change of a section and makes none" {
    remember_host
    run_zet -n --diff param set --section b conf x 9
    assert_status 3
    assert_output "conf: would be changed
--- a/conf
+++ b/conf
@@ -1,3 +1,10 @@
$(sed 's/^/+/' <<<"${NOTICE%$'\n'}")
 top=0
 
 [a]
@@ -6,5 +13,8 @@
 
 # about b
 [b]
-x=2
+# --PRE-ZET-- x=2
+# ---ZET_BEGIN---
+x=9
+# ----ZET_END----
 z = 3"
    assert_host_unchanged
}

@test "an edit of a section is in the history and is taken back" {
    cp conf before
    : >templates/targets.toml
    zet -q param set --section b conf x 9
    run_zet history show 1
    assert_status 0
    [[ $output == *"param set --section b conf x 9"*"conf: changed"* ]]
    run_zet undo
    assert_status 0
    cmp conf before
    zet -q param set --section b conf x 9
    zet -q param unset --section a conf x
    run_zet --json rollback-config
    assert_status 0
    cmp conf before
}

@test "the value in a section is hidden where the file is" {
    chmod 600 conf
    zet -q param set --section b conf x word
    run_zet history show 1
    [[ $output == *"param set --section b conf x ***"* ]]
}

@test "unset comments out, and restore brings the line back" {
    run_zet param unset --section b conf x
    assert_success "conf: changed, the original is kept as conf.before_zet"
    run_zet param get --section b conf x
    assert_status 1
    assert_output ""
    run_zet --json param unset --section b conf x
    assert_status 0
    assert_json 'd["files"][0]["result"], d["entry"]' '["unchanged", null]'
    run_zet param unset conf nothing
    assert_success 'conf: unchanged, no line sets "nothing"'
    zet -q param restore --section b conf x
    assert_file conf "$NOTICE"$'top=0\n\n[a]\nx=1\n# [no]\n\n# about b\n[b]\nx=2\nz = 3\n'
}

@test "unset tries, shows, and is an entry" {
    remember_host
    run_zet -n param unset --no-section conf top
    assert_status 3
    assert_host_unchanged
    zet -q param unset --no-section --no-markers --no-backup conf top
    assert_file conf $'#top=0\n\n[a]\nx=1\n# [no]\n\n# about b\n[b]\nx=2\nz = 3\n'
    run_zet undo
    assert_status 0
    run_zet param get --no-section conf top
    assert_success 0
}

@test "what is no section is refused" {
    remember_host
    run_zet param set --section no conf x 1
    assert_refusal 1 'conf: has no section [no] (the file has [a], [b]; a new one is a line that you write into the file yourself)'
    run_zet param set --section '[a]' conf x 1
    assert_refusal 2 'SECTION "[a]" holds brackets (give the name that stands in them)'
    run_zet param unset --section ' a' conf x
    assert_refusal 2 'SECTION " a" begins or ends with a blank (give the name without it)'
    run_zet param restore --section '' conf x
    assert_refusal 2 'SECTION is empty (--no-section is for the lines before the first one)'
    run_zet param get --section a --no-section conf x
    assert_refusal 2 '--section and --no-section are given (leave one of them out)'
    echo '[a]' >>conf
    remember_host
    run_zet param set --section a conf x 1
    assert_refusal 1 'conf:11: a second section [a] begins here, after the one in line 3 (join the two, or edit the line by hand)'
    assert_host_unchanged
}

@test "a line that would contradict another is not added" {
    remember_host
    run_zet param set conf x 9
    assert_refusal 1 'conf: 2 sections have "x", in lines 4 and 9 (--section says which)'
    run_zet param set --section b conf z 9
    assert_refusal 1 'conf:10: sets "z" with blanks before the "=", which is no line "name=value" ("line set" with the PATTERN "^\s*z\s*=" sets it)'
    run_zet param set conf new 9
    assert_refusal 1 'conf: no section has "new", and a new line would come to stand in the last one, [b] (--section says where, --no-section before all of them)'
    run_zet --json param set conf z 9
    assert_status 1
    assert_json 'd["failure"]["file"], d["failure"]["line"], d["files"]' '["conf", 10, []]'
    assert_host_unchanged
}

@test "a line that was commented out is told" {
    printf '#x=1\n' >other
    run_zet param set other x 2
    assert_status 0
    assert_stderr 'zet-client: other:1: "x" stands here commented out, and the new line takes its place'
    printf '#x=1\nx=2\n' >other
    run_zet param set other x 3
    assert_status 0
    assert_stderr 'zet-client: warning: other: lines 1 and 2 are "x", commented out or not; all of them are set ("line set" with a PATTERN sets one)'
}

@test "a committed target is refused to unset, too" {
    echo 'x=1' >templates/t.conf
    printf '[templates."t.conf"]\ntarget = "%s/out"\nroles = "both"\n' "$HOST" >templates/targets.toml
    zet -q commit-config
    run_zet param unset out x
    assert_status 1
    [[ $stderr == *"is made from [t.conf] and the next commit overwrites it"* ]]
}

@test "line looks into one section" {
    run_zet line get --section b conf '^x'
    assert_success "x=2"
    run_zet line get --no-section conf '='
    assert_success "top=0"
    run_zet line get --section a conf '^z'
    assert_status 1
    run_zet --json line get --section b conf '^z'
    assert_json 'd["section"], d["line"]' '["b", "z = 3"]'
    run_zet --json line get conf '^z'
    assert_json 'd["section"]' null
    run_zet line get --section no conf '^x'
    assert_refusal 1 'conf: has no section [no] (the file has [a], [b]; a new one is a line that you write into the file yourself)'
}

@test "line sets and restores in one section" {
    local former
    former=$(<conf)
    run_zet line set --section a conf '^x' x=9
    assert_success "conf: changed, the original is kept as conf.before_zet"
    run_zet line get --section a conf '^x'
    assert_success "x=9"
    run_zet line get --section b conf '^x'
    assert_success "x=2"
    zet -q line set --section=b conf '^z' 'z = 4'
    # A restore takes out no block of another section.
    zet -q line restore --section a conf '^x'
    run_zet line get --section b conf '^z'
    assert_success "z = 4"
    run_zet line restore --section a conf '^z'
    assert_success 'conf: unchanged, nothing to restore for "^z"'
    zet -q line restore --section b conf '^z'
    assert_equal "$(sed '/^# --ZET_CONFIG_COMMENT--$/,/^# --ZET_COMMENT_END--$/d' conf)" "$former"
}

@test "a line that is set in several sections is told" {
    printf 'x=0\n[a]\nx=1\n[b]\nx=2\n' >conf
    run_zet -n line set conf '^x=[12]' x=3
    assert_status 3
    assert_stderr 'zet-client: warning: conf: lines 3 and 5 stand in several sections, and all of them are set (--section says which)'
    run_zet -n line set conf '^x' x=3
    assert_stderr 'zet-client: warning: conf: lines 1, 3 and 5 stand in several sections, and all of them are set (--section or --no-section says which)'
    local options
    for options in "--no-section conf ^x" "--section a conf ^x" "conf ^x=1"; do
        run_zet -n line set $options x=3
        assert_status 3
        assert_stderr ""
    done
    zet -q line set conf '^x' x=3
    run_zet line set conf '^x' x=3
    assert_success "conf: unchanged"
}

@test "a line that is added to the last of several sections is told" {
    run_zet -n line set conf ^new new=1
    assert_status 3
    assert_stderr 'zet-client: warning: conf: no line matches, and the new one comes to stand in the last section, [b] (--section says where, --no-section before all of them)'
    local options
    for options in "--no-section conf" "--section a conf"; do
        run_zet -n line set $options ^new new=1
        assert_status 3
        assert_stderr ""
    done
    printf '# about\n[a]\nx=1\n' >one
    run_zet -n line set one ^new new=1
    assert_status 3
    assert_stderr ""
}

@test "the way to a parameter with blanks names the section where several have it" {
    printf '[a]\nz = 1\n[b]\nz = 2\n' >conf
    run_zet param set conf z 3
    assert_refusal 1 'conf:2: sets "z" with blanks before the "=", which is no line "name=value" ("line set" with --section and the PATTERN "^\s*z\s*=" sets it)'
    run_zet param set --section b conf z 3
    assert_refusal 1 'conf:4: sets "z" with blanks before the "=", which is no line "name=value" ("line set" with the PATTERN "^\s*z\s*=" sets it)'
}

@test "a pattern that selects every line of a section leaves the lines of the system alone" {
    zet -q line set --section b --no-markers --no-backup conf '.' y
    assert_file conf $'top=0\n\n[a]\nx=1\n# [no]\n\n# about b\n[b]\ny\ny\n'
    zet -q line set --section a conf '.' n
    run_zet doctor conf
    assert_status 0
    run_zet line get --section b conf '.'
    assert_success y
}

@test "line refuses a section as param does" {
    run_zet line set --section '[a]' conf x 1
    assert_status 2
    run_zet line restore --section '' conf x
    assert_refusal 2 'SECTION is empty (--no-section is for the lines before the first one)'
    run_zet line get --section a --no-section conf x
    assert_refusal 2 '--section and --no-section are given (leave one of them out)'
}
