# check-config: every problem of templates, targets and directories at once, and nothing written.

load helper
load set

setup() {
    make_set
    add_target one.conf $'realm = ${realm}\n'
}

teardown() {
    remove_host
}

# assert_problems TEXT: check-config tells just these, and leaves everything as it was.
assert_problems() {
    remember_host
    run_zet check-config
    assert_status 1
    assert_output "$1"
    assert_stderr ""
    assert_host_unchanged
    run_zet -q check-config
    assert_status 1
    assert_output "$1"
}

@test "nothing wrong is said to be so" {
    remember_host
    run_zet check-config
    assert_status 0
    assert_output ""
    assert_stderr "zet-client: no problems found"
    assert_host_unchanged
    run_zet -q check-config
    assert_success ""
    zet commit-config
    run_zet -q check-config
    assert_success ""
}

@test "every kind of problem of a template is told with its place and a remedy" {
    cat >templates/one.conf <<-'END'
		fine ${realm}
		  two of them: ${nope} ${realm}${Realm}
		open ${realm
		# ---ZET_BEGIN---
		# ---ZET_BEGIN---
		# ----ZET_END----
		# ----ZET_END----
		# --ZET_TEMPLATE_COMMENT--
		of the template only: ${unknown}
		open there: ${
		# --ZET_CONFIG_COMMENT--
		# --ZET_COMMENT_END--
		# --ZET_TEMPLATE_COMMENT--
	END
    local file=$HOST/templates/one.conf
    assert_problems "$file:2:16: placeholder \"\${nope}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)
$file:2:32: placeholder \"\${Realm}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)
$file:3:6: \"\${\" has no \"}\" after it in its line (close the placeholder, take \"\${\" out, or begin the line with #)
$file:5:1: \"# ---ZET_BEGIN---\" inside a region that line 4 opened (end that region before this line)
$file:7:1: \"# ----ZET_END----\" ends no region (add its begin, or take the line out)
$file:10:13: \"\${\" has no \"}\" after it in its line (close the placeholder, take \"\${\" out, or begin the line with #)
$file:11:1: \"# --ZET_CONFIG_COMMENT--\" inside a region that line 8 opened (end that region before this line)
$file:13:1: \"# --ZET_TEMPLATE_COMMENT--\" has no end (add a line \"# --ZET_COMMENT_END--\")"
}

@test "a working copy that an edit gave a notice is told, and without it a commit writes its own" {
    zet -q template install one.conf
    run_zet param set etc/one.conf NAME value
    assert_status 0
    assert_stderr "zet-client: warning: etc/one.conf: is the working copy of [one.conf], which no commit takes with a notice in it (--no-markers edits without)"
    assert_problems "$HOST/etc/one.conf:1:1: \"# --ZET_CONFIG_COMMENT--\" in its first line keeps the notice out that names the template (take the notice out: a commit writes its own)"
    zet -q template install --force one.conf
    run_zet -q param set --no-markers etc/one.conf NAME value
    assert_success "etc/one.conf: changed, the original is kept as etc/one.conf.before_zet"
    run_zet -q check-config
    assert_success ""
    zet -q commit-config
    grep -qx "# Edit '$HOST/etc/one.conf'" out/one.conf
}

@test "a value that leads back to itself is told, soon" {
    local value
    echo 'two: ${server} ${realm}' >templates/one.conf
    for value in '${realm}' 'x${realm}' '${realm}${realm}' '${server}${ldap_domain}'; do
        sed -i '/^REALM\|^DOMAIN_DN/d' zet.conf
        printf '%s\n' "REALM=$value" 'DOMAIN_DN=${realm}' >>zet.conf
        run_zet check-config
        assert_status 1
        [[ $output == "$HOST/templates/one.conf:1:16: the expansion of "*' does not end within 100,000 replacements and 16 MiB (take the placeholder that leads back to it out of the values)'$'\n' ]]
    done
}

@test "the working copy is checked where there is one" {
    zet template install one.conf
    echo '${nope}' >etc/one.conf
    assert_problems "$HOST/etc/one.conf:1:1: placeholder \"\${nope}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)"
}

@test "problems of several templates and targets are told in one go" {
    printf '${a}\n' >templates/one.conf
    add_target two.conf $'${b}\n'
    mkdir out/two.conf
    list_target three.conf "$HOST/nowhere/three.conf"
    assert_problems "$HOST/templates/one.conf:1:1: placeholder \"\${a}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)
$HOST/templates/two.conf:1:1: placeholder \"\${b}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)
$HOST/out/two.conf: is no regular file (move it away, or correct the target)
$HOST/templates/three.conf: the template is missing (install it there, or correct its name in the list)
$HOST/nowhere: the directory of $HOST/nowhere/three.conf cannot be used: No such file or directory (create it, or correct the target in the list)"
}

@test "a template that is no regular file is told" {
    rm templates/one.conf
    mkdir templates/one.conf
    assert_problems "$HOST/templates/one.conf: is a directory (name a file in it)"
    rmdir templates/one.conf
    mkfifo templates/one.conf
    assert_problems "$HOST/templates/one.conf: is no regular file (name a regular file)"
    rm templates/one.conf
    ln -s nowhere templates/one.conf
    assert_problems "$HOST/templates/one.conf: is a link that leads nowhere (remove it, or make what it names)"
    rm templates/one.conf
    echo one >templates/one.conf
    ln -s nowhere etc/one.conf
    assert_problems "$HOST/etc/one.conf: is a link that leads nowhere (remove it, or make what it names)"
}

@test "a directory that its group may write is fine" {
    chmod 775 out etc state
    run_zet check-config
    assert_status 0
}

@test "a target in a directory that others may write, or that is none, is told" {
    chmod 757 out
    assert_problems "$HOST/out: others may write the directory of $HOST/out/one.conf (chmod o-w it)"
    rmdir out
    : >out
    run_zet check-config
    assert_status 1
    [[ $output == "$HOST/out: is no directory, but $HOST/out/one.conf is to be in it (correct the target in the list)"* ]]
}

@test "a target that is no regular file, at the end of a link too, is told" {
    mkfifo out/one.conf
    assert_problems "$HOST/out/one.conf: is no regular file (move it away, or correct the target)"
    rm out/one.conf
    mkdir real
    ln -s ../real out/one.conf
    assert_problems "$HOST/real: is no regular file (move it away, or correct the target)"
    ln -sfn one.conf out/one.conf
    run_zet check-config
    assert_status 1
    [[ $output == *"too many symbolic links, as when one leads back to itself (correct the links)"* ]]
}

@test "companions of a target that are in the way are told" {
    echo x >out/one.conf.tmp
    assert_problems "$HOST/out/one.conf.tmp: is in the way of writing $HOST/out/one.conf (move it away)"
    rm out/one.conf.tmp
    ln -s nowhere out/one.conf.tmp
    assert_problems "$HOST/out/one.conf.tmp: is in the way of writing $HOST/out/one.conf (move it away)"
    rm out/one.conf.tmp
    mkdir out/one.conf.before_zet out/one.conf.no_file_before_zet
    assert_problems "$HOST/out/one.conf.before_zet: is no regular file (move it away)
$HOST/out/one.conf.no_file_before_zet: is no regular file (move it away)"
    rmdir out/*
    echo x >etc/one.conf.tmp
    assert_problems "$HOST/etc/one.conf.tmp: is in the way of writing $HOST/etc/one.conf (move it away)"
}

@test "a temporary file of the product's own run that was cut short is no problem" {
    kill_at_rename out/one.conf commit-config
    [[ -e out/one.conf.tmp ]]
    run_zet -q check-config
    assert_success ""
    zet -q commit-config
}

@test "two templates for one file, by way of links, are told" {
    add_target two.conf $'x\n'
    mkdir real
    rmdir out
    ln -s real out
    list_target three.conf "$HOST/real/one.conf"
    echo x >templates/three.conf
    assert_problems "$HOST/real/one.conf: is made from both [one.conf] and [three.conf] (give each file to one template)"
}

# assert_no_second_use PATH TEXT: a target at the path is told to be what the text says, and not committed.
assert_no_second_use() {
    cp templates/targets.toml ../list
    list_target two.conf "$1"
    assert_problems "$1: is $2, and made from [two.conf] too (give the target another path)"
    run_zet commit-config two.conf
    assert_status 1
    assert_host_unchanged
    cp ../list templates/targets.toml
}

@test "a target that has another use already is told" {
    echo two >templates/two.conf
    assert_no_second_use "$HOST/out/one.conf.before_zet" "the reserve of $HOST/out/one.conf"
    assert_no_second_use "$HOST/out/one.conf.no_file_before_zet" "the mark that there was no $HOST/out/one.conf"
    assert_no_second_use "$HOST/out/one.conf.tmp" "the temporary file of $HOST/out/one.conf"
    assert_no_second_use "$HOST/out/one.conf.before_zet.tmp" "the temporary file of $HOST/out/one.conf.before_zet"
    assert_no_second_use "$HOST/etc/one.conf" "the working copy of [one.conf]"
    assert_no_second_use "$HOST/etc/two.conf" "the working copy of [two.conf]"
    assert_no_second_use "$HOST/templates/one.conf" "the template [one.conf]"
    assert_no_second_use "$HOST/templates/targets.toml" "the list of targets"
    assert_no_second_use "$HOST/zet.conf" "the configuration file of the commands"
    assert_no_second_use "$HOST/state/zet.lock" "a file of the status"
}

@test "a target whose companions have another use already is told, by way of links too" {
    echo two >templates/two.conf
    ln -s out link
    : >templates/targets.toml
    list_target two.conf "$HOST/link/one.conf.before_zet"
    list_target one.conf "$HOST/out/one.conf"
    assert_problems "$HOST/out/one.conf.before_zet: is made from [two.conf], and the reserve of $HOST/out/one.conf too (give the target another path)"
    local name
    for name in one.conf two.conf; do
        run_zet check-config "$name"
        assert_status 1
        [[ $output == "$HOST/out/one.conf.before_zet: is "* ]]
    done
}

@test "the files of another role's targets are free" {
    printf '[templates."two.conf"]\ntarget = "%s"\nroles = "server"\n' "$HOST/out/one.conf.before_zet" >>templates/targets.toml
    echo two >templates/two.conf
    run_zet -q check-config
    assert_success ""
}

@test "the product's own directories are checked" {
    chmod 757 etc state
    assert_problems "$HOST/etc: others may write the directory of the templates' working copies (chmod o-w it)
$HOST/state: others may write the directory of the status (chmod o-w it)"
    rmdir etc
    rm -r state
    run_zet check-config
    assert_status 1
    assert_output "$HOST/etc: the directory of the templates' working copies cannot be used: No such file or directory (create it, or correct ZET_CFG_DIR)
$HOST/state: the directory of the status cannot be used: No such file or directory (create it, or correct ZET_VAR_LIB_DIR)"
    mkdir state
}

@test "what is in the place of the product's own files is told" {
    mkdir state/zet-client.status
    ln -s /dev/null state/state.db
    run_zet check-config
    assert_status 1
    assert_output "$HOST/state/zet-client.status: is no regular file (move it away)
$HOST/state/state.db: is no regular file of one name that belongs to this user (move it away, or set ZET_HISTORY=no to edit without the history)"
    rm -r state/*
    ln -s gone state/zet-client-fs.status
    run_zet check-config
    assert_status 1
    assert_output "$HOST/state/zet-client-fs.status: is a link that leads nowhere (remove it, or make what it names)"
    rm -r state/*
    break_store
    run_zet check-config
    assert_status 1
    assert_output "$HOST/state/state.db: $BROKEN_STORE"
}

@test "what a user may not write is told to him, and keeps him from nothing when he only looks" {
    need_root
    copy_programs
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" -q check-config
    assert_success ""
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" commit-config -n
    assert_status 3
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" check-config
    assert_status 0
    assert_output ""
    assert_stderr "zet-client: warning: $HOST/etc: the directory of the templates' working copies cannot be written: Permission denied (run as a user who may, or on a file system that can be written)
zet-client: warning: $HOST/state: the directory of the status cannot be written: Permission denied (run as a user who may, or on a file system that can be written)
zet-client: warning: $HOST/out: the directory of $HOST/out/one.conf cannot be written: Permission denied (run as a user who may, or on a file system that can be written)
zet-client: no problems found"
}

@test "named templates are checked, and no others" {
    add_target two.conf $'${b}\n'
    run_zet check-config one.conf
    assert_status 0
    run_zet check-config two.conf
    assert_status 1
    run_zet check-config none.conf
    assert_refusal 2 "$HOST/templates/targets.toml: has no template \"none.conf\" for the role client (name one that it has, or add it)"
}

@test "the values that no template uses are told to whoever wants to know more" {
    echo '${ldap_uris} # ${domain}' >templates/one.conf
    printf '# ${ldap_dc}\n' >>templates/one.conf
    run_zet -v check-config
    assert_status 0
    assert_output ""
    local unused
    unused=$(sed -n 's/^zet-client: no template uses //p' <<<"$stderr")
    assert_equal "$unused" '${kadmin_server}
${kdc_server}
${ldap_dc}
${ldap_domain}
${max_life}
${max_renewable_life}
${minimum_uid}
${realm}
${server_export_dir}
${server_id}
${server}
${valid_group_names}
${valid_user_names}'
    run_zet --json check-config
    assert_json 'd["unused_values"]' "$(python3 -c 'import json, sys; print(json.dumps(sys.argv[1].split()))' "$(tr -d '${}' <<<"$unused")")"
    run_zet -v check-config one.conf
    [[ $stderr != *"no template uses"* ]]
    run_zet --json check-config one.conf
    assert_json 'd["unused_values"], d["problems"], d["exit_status"]' '[null, [], 0]'
    rm templates/targets.toml
    run_zet --json check-config
    assert_json 'd["unused_values"], d["problems"], d["exit_status"]' '[null, [], 1]'
}

@test "of a secret target that everybody may read, for want of a mode, a warning tells" {
    add_target three.conf $'fine\n' 'secret = true'
    run_zet check-config
    assert_status 0
    [[ $stderr == *"zet-client: warning: $HOST/templates/targets.toml:"*": [three.conf] is secret, but everybody may read $HOST/out/three.conf: it gets the mode of its template (give it a mode, such as mode = \"0600\")"$'\n'* ]]
    chmod 640 templates/three.conf
    run_zet check-config
    [[ $stderr != *"is secret"* ]]
    chmod 644 templates/three.conf
    echo 'mode = "0644"' >>templates/targets.toml
    run_zet check-config
    [[ $stderr != *"is secret"* ]]
}

@test "of a private value in a target that everybody may read, for want of a mode, a warning tells" {
    local warning
    mkdir etc/values.d
    (umask 077 && echo word >etc/values.d/pw)
    echo 'LOGIN=user:${pw}' >>zet.conf
    add_target three.conf $'${login}\n'
    warning="zet-client: warning: $HOST/templates/targets.toml:$(grep -n three templates/targets.toml | cut -d: -f1 | head -n 1): not everybody may read the value of \${pw}, but everybody may read $HOST/out/three.conf, into which [three.conf] brings it (give it mode = \"0600\" and secret = true)"
    run_zet check-config
    assert_status 0
    [[ $stderr == *"$warning"$'\n'* ]]
    chmod 644 etc/values.d/pw
    run_zet check-config
    [[ $stderr != *"not everybody"* ]]
    chmod 600 etc/values.d/pw
    echo 'mode = "0600"' >>templates/targets.toml
    run_zet check-config
    [[ $stderr != *"not everybody"* ]]
    sed -i '$d' templates/targets.toml
    chmod 640 templates/three.conf
    run_zet check-config
    [[ $stderr != *"not everybody"* ]]
}

@test "the document has the place, the problem and the remedy apart" {
    echo ' ${nope}' >templates/one.conf
    chmod 757 out
    run_zet --json check-config
    assert_status 1
    assert_stderr ""
    assert_json 'd["problems"][0]' "$(printf '{"file": "%s", "line": 1, "column": 2, "problem": "placeholder \\"${nope}\\" has no value", "remedy": "use one that \\"values\\" lists, correct its name, or write $NAME for another program", "output": null}' "$HOST/templates/one.conf")"
    assert_json '[d["problems"][1][x] for x in ("file", "line", "column", "remedy")], d["exit_status"], d["command"]' \
        "[[\"$HOST/out\", null, null, \"chmod o-w it\"], 1, \"check-config\"]"
    chmod 755 out
    echo fine >templates/one.conf
    run_zet --json check-config
    assert_json 'd["problems"], d["exit_status"]' '[[], 0]'
}
