# commit-config in a dry run, and its diffs and documents.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
    add_target two.conf $'domain = ${domain}\n'
}

teardown() {
    remove_host
}

# assert_patch_makes_it COMMAND...: the diff of the dry run, put on a copy of the targets with patch -p1, makes of
# them what the command makes of the targets themselves.
assert_patch_makes_it() {
    run_zet commit-config -n --diff --show-secrets
    assert_status 3
    cp -a out "$BASE/copy"
    mkdir -p "$BASE/tree$HOST"
    mv "$BASE/copy" "$BASE/tree$HOST/out"
    patch -s -d "$BASE/tree" -p1 <<<"$output"
    zet commit-config
    local file
    for file in out/*.conf; do
        cmp "$file" "$BASE/tree$HOST/$file"
    done
}

@test "a dry run says what would be and writes nothing" {
    original one.conf $'old\n'
    rm state/zet.lock
    remember_host
    run_zet commit-config -n
    assert_status 3
    assert_output "$HOST/out/one.conf: would be changed, mode 0640 -> 0644
$HOST/out/two.conf: would be created, mode 0644, owner $EUID:$(id -g)
1 would be created, 1 would be changed"
    assert_stderr ""
    assert_host_unchanged
    assert_equal "$(names_in "$TMPDIR")" ""
}

@test "a dry run of what is in sync exits with 0" {
    zet commit-config
    remember_host
    run_zet commit-config -n --diff
    assert_success "2 unchanged"
    assert_host_unchanged
}

@test "a dry run exits with 3 where the commit changes no target, and yet is an entry of the history" {
    local told="zet-client: no target would change, but a working copy or what is on record would"
    zet commit-config
    rm etc/one.conf
    run_zet commit-config -n
    assert_status 3
    assert_output "2 unchanged"
    assert_stderr "$told"
    assert_absent etc/one.conf
    zet -q commit-config
    run_zet commit-config -n
    assert_success "2 unchanged"
    # The first one of a role.
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config -n
    assert_status 3
    assert_output "2 unchanged"
    assert_stderr "${told/client/init}"
    server -q commit-config
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config -n
    assert_success "2 unchanged"
    # What is left to the other role.
    sed -i '/two.conf/,$ s/"both"/"client"/' templates/targets.toml
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config -n
    assert_status 3
    assert_stderr "${told/client/init}"
    server -q commit-config
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config -n
    assert_status 0
}

@test "a dry run warns of an edit that would be overwritten, and keeps it" {
    zet commit-config
    echo mine >>out/one.conf
    rm out/two.conf
    remember_host
    run_zet commit-config -n
    assert_status 3
    assert_stderr "zet-client: warning: $HOST/out/one.conf: was edited since the last commit; the edits would be overwritten
zet-client: warning: $HOST/out/two.conf: was removed since the last commit"
    assert_host_unchanged
}

@test "a dry run does not wait for the lock" {
    hold_lock
    remember_host
    run_zet commit-config -n
    release_lock
    assert_status 3
    assert_host_unchanged
}

@test "the diff shows each change and makes none in a dry run" {
    original one.conf $'old\nkept'
    remember_host
    run_zet commit-config -n --diff --show-secrets
    assert_status 3
    assert_output "$HOST/out/one.conf: would be changed, mode 0640 -> 0644
--- a$HOST/out/one.conf
+++ b$HOST/out/one.conf
@@ -1,2 +1,11 @@
-old
-kept
\\ No newline at end of file
$(notice one.conf | sed 's/^/+/')
+realm = EXAMPLE.ORG
$HOST/out/two.conf: would be created, mode 0644, owner $EUID:$(id -g)
--- /dev/null
+++ b$HOST/out/two.conf
@@ -0,0 +1,11 @@
$(notice two.conf | sed 's/^/+/')
+domain = example.org
1 would be created, 1 would be changed"
    assert_host_unchanged
}

@test "the diff of the commit itself is that of the dry run" {
    original one.conf $'old\n'
    run_zet commit-config -n --diff
    local planned
    planned=$(grep '^[-+@ ]' <<<"$output")
    run_zet commit-config --diff
    assert_status 0
    assert_equal "$(grep '^[-+@ ]' <<<"$output")" "$planned"
}

@test "the diff is fit for patch, whatever the texts are" {
    original one.conf $'old\nsame\nno line feed at the end'
    printf 'same\n${realm} no line feed either' >templates/one.conf
    add_target empty.conf ''
    original empty.conf ''
    add_target bytes.conf $'\xff\xfe\r\n\x01 ${domain}\n--- a/x\n+++ b/x\n@@ -1 +1 @@\n'
    original bytes.conf $'\xff\xff\r\n'
    assert_patch_makes_it
}

@test "a second diff, between two commits, is fit for patch too" {
    printf '%s\n' a b c d e f g h '${realm}' i j k l m n o p q r '${realm}' s >templates/one.conf
    zet commit-config
    zet option set REALM OTHER.ORG
    assert_patch_makes_it
}

@test "one process makes the diffs of a set" {
    zet commit-config
    echo REALM=OTHER >>zet.conf
    echo DOMAIN=other.example >>zet.conf
    script diff <<-SCRIPT
		#!/bin/sh
		echo >>"$BASE/diffs"
		exec $DIFF "\$@"
	SCRIPT
    run_zet commit-config -n --diff
    assert_status 3
    [[ $output == *"+realm = OTHER"*"+domain = other.example"* ]]
    assert_file "$BASE/diffs" $'\n'
    run_zet status --diff
    assert_status 3
    [[ $output == *"+realm = OTHER"*"+domain = other.example"* ]]
    assert_file "$BASE/diffs" $'\n\n'
    run_zet commit-config --diff
    assert_status 0
    [[ $output == *"+realm = OTHER"*"+domain = other.example"* ]]
    assert_file "$BASE/diffs" $'\n\n\n'
}

@test "a change of the mode alone is shown, with an empty diff" {
    zet commit-config
    chmod 600 out/two.conf
    run_zet commit-config -n --diff
    assert_status 3
    assert_output "$HOST/out/two.conf: would be changed, mode 0600 -> 0644
1 would be changed, 1 unchanged"
    assert_stderr "zet-client: warning: $HOST/out/two.conf: was edited since the last commit; the edits would be overwritten"
}

@test "a target that cannot be compared keeps no other from being shown, nor from being written" {
    zet -q commit-config
    script diff <<-SCRIPT
		#!/bin/sh
		case "\$*" in *-r*) exit 2 ;; *one.conf*) exit 2 ;; esac
		exec $DIFF "\$@"
	SCRIPT
    echo "DOMAIN=other.example" >>zet.conf
    local status option
    while read -r status option; do
        run_zet commit-config --diff $option
        assert_status "$status"
        assert_stderr "zet-client: warning: $HOST/out/one.conf: no diff can be made, as diff ends with status 2 (run the command again)"
        [[ $output == *"$HOST/out/one.conf: "*"changed"*"$HOST/out/two.conf: "*"changed"*"+domain = other.example"*$'\n2 '* ]]
    done <<<$'3 -n\n0'
}

@test "a foreign owner is not said to change" {
    need_root
    original one.conf $'old\n'
    chown 65534:65533 out/one.conf
    run_zet --json commit-config -n one.conf
    assert_json '[d["targets"][0]["owner_" + x] for x in ("before", "after")]' '["65534:65533", "65534:65533"]'
    run_zet commit-config one.conf
    assert_equal "${output%%, the*}" "$HOST/out/one.conf: changed, mode 0640 -> 0644"
    assert_equal "$(stat -c %u:%g out/one.conf)" 65534:65533
}

@test "the text of a secret target is shown nowhere" {
    sed -i '/out.one.conf"$/a secret = true' templates/targets.toml
    original one.conf $'old password\n'
    echo 'new password' >templates/one.conf
    for option in -n -q -v --json; do
        run_zet "$option" commit-config --diff one.conf
        [[ $output$stderr != *password* ]]
        [[ $output$stderr != *"$(printf 'new password' | base64)"* ]]
    done
    zet commit-config
    run_zet --json rollback-config -n --diff
    [[ $output$stderr != *password* ]]
}

@test "the value that --set assumes is what the dry run shows and nothing that stays" {
    zet commit-config
    remember_host
    run_zet commit-config -n --diff --set REALM=TEST.ORG
    assert_status 3
    assert_output "$HOST/out/one.conf: would be changed
--- a$HOST/out/one.conf
+++ b$HOST/out/one.conf
@@ -8,4 +8,4 @@
 # \$ zet-client commit-config
 #
 # --ZET_COMMENT_END--
-realm = EXAMPLE.ORG
+realm = TEST.ORG
1 would be changed, 1 unchanged"
    assert_host_unchanged
    run_zet commit-config -n --set REALM=EXAMPLE.ORG
    assert_status 0
}

@test "several values can be assumed, and derived ones follow" {
    zet commit-config
    run_zet commit-config -n --diff --set DOMAIN=a.test --set REALM=B=C
    assert_status 3
    assert_equal "$(grep '^+[^+]' <<<"$output")" $'+realm = B=C\n+domain = a.test'
    run_zet commit-config -n --diff --set DOMAIN=a.test
    assert_equal "$(grep '^+[^+]' <<<"$output")" $'+realm = A.TEST\n+domain = a.test'
    run_zet commit-config -n --diff --set REALM=A --set REALM=B
    assert_equal "$(grep '^+[^+]' <<<"$output")" "+realm = B"
}

@test "an assumed value may lead to problems, which are told" {
    run_zet commit-config -n --set 'REALM=${domain} ${nope}'
    assert_status 1
    assert_stderr "zet-client: error: $HOST/templates/one.conf:1:9: placeholder \"\${nope}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)
zet-client: nothing was changed"
    run_zet commit-config -n --set 'REALM=${realm}'
    assert_status 1
    [[ $stderr == *'the expansion of "${realm}" does not end within 100,000 replacements and 16 MiB'* ]]
}

@test "an assumption without a dry run, or without a value, is wrong use" {
    remember_host
    run_zet commit-config --set REALM=X
    assert_refusal 2 '--set only asks what would change: use it with -n ("option set" sets a parameter)'
    run_zet commit-config -n --set REALM
    assert_refusal 2 '--set: "REALM" is not NAME=VALUE (write a name, "=" and a value)'
    run_zet commit-config -n --set =X
    assert_refusal 2 '--set: "=X" is not NAME=VALUE (write a name, "=" and a value)'
    local name
    for name in 'a b' 1A A.B; do
        run_zet commit-config -n --set "$name=1"
        assert_refusal 2 "--set: \"$name\" is no name of a parameter (use letters, digits and \"_\", no digit first)"
    done
    run_zet commit-config -n --set $'REALM=X\nY'
    assert_refusal 2 '--set: "REALM" has a line feed in its value (give one without)'
    assert_host_unchanged
}

@test "an assumption that no host could have is wrong use, and told with a way out" {
    remember_host
    local name
    for name in ZET_CFG_DIR ZET_CFG_TEMPL_DIR ZET_VAR_LIB_DIR; do
        run_zet commit-config -n --set "$name="
        assert_refusal 2 "--set: $name is empty (give it an absolute path, or remove its line)"
        capture "$ZET_BIN/zet-client" --root "$HOST" --config /zet.conf commit-config -n --set "$name="
        assert_refusal 2 "--set: $name is empty (give it an absolute path, or remove its line)"
    done
    run_zet commit-config -n --set ZET_SYNC=x
    assert_refusal 2 "--set: 'x' is no value for ZET_SYNC and counts as yes (write yes or no)"
    run_zet commit-config -n --set ZET_CFG=/x
    assert_refusal 2 "--set: Parameter 'ZET_CFG' cannot be changed (name another file with --config)"
    assert_host_unchanged
}

@test "a parameter that no host has is assumed with a warning" {
    run_zet commit-config -n --set RAELM=X
    assert_status 3
    [[ $stderr == *RAELM* ]]
}

@test "the document is the same in a dry run, but for the tense" {
    original one.conf $'old\n'
    add_target three.conf $'fixed\n' 'restart = ["three"]' "secret = true"
    run_zet --json commit-config -n --diff
    assert_status 3
    local planned=${output%?}
    run_zet --json commit-config --diff
    assert_status 0
    assert_json 'd["dry_run"], d["exit_status"], d["version"], d["command"], d["role"], d["restart"]' \
        '[false, 0, 1, "commit-config", "client", ["three"]]'
    assert_json '[(t["template"], t["path"].split("/")[-2:], t["result"], t["edited"], t["secret"], t["mode_before"], t["mode_after"]) for t in d["targets"]]' \
        '[["one.conf", ["out", "one.conf"], "changed", false, true, "0640", "0644"], ["two.conf", ["out", "two.conf"], "created", false, false, null, "0644"], ["three.conf", ["out", "three.conf"], "created", false, true, null, "0644"]]'
    assert_equal "$(sed 's/"dry_run": true/"dry_run": false/; s/"exit_status": 3/"exit_status": 0/' <<<"$planned")" "$(sed 's/"entry": [0-9]*/"entry": null/' <<<"${output%?}")"
}

@test "text that is no UTF-8 is flagged in the document" {
    printf 'caf\xe9\n' >templates/one.conf
    run_zet --json commit-config -n --diff
    assert_json '"caf\ufffd" in d["targets"][0]["diff"], d["targets"][0]["diff_lossy"], "diff_lossy" in d["targets"][1]' \
        '[true, true, false]'
}

@test "the path in the document is that of the real file, links among its directories followed" {
    mkdir real
    ln -s real by_link
    list_target three.conf "$HOST/by_link/three.conf"
    echo three >templates/three.conf
    run_zet --json commit-config -n three.conf
    assert_status 3
    assert_json '[t["path"] for t in d["targets"]]' "[\"$HOST/real/three.conf\"]"
    run_zet --json commit-config three.conf
    assert_status 0
    assert_json '[t["path"] for t in d["targets"]]' "[\"$HOST/real/three.conf\"]"
}
