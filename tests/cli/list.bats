# The list of targets, targets.toml.

load helper
load set

setup() {
    make_set
    add_target one.conf $'fine\n'
    LIST=$HOST/templates/targets.toml
    OF_SYNTAX="correct it: texts stand in quotes, each name and each key is there once"
}

teardown() {
    remove_host
}

# assert_list_problems TEXT: of a list that is standard input.
assert_list_problems() {
    cat >"$LIST"
    run_zet check-config
    assert_status 1
    assert_output "$1"
    remember_host
    run_zet commit-config
    assert_refusal 1 "${1//$'\n'/$'\n'zet-client: error: }
zet-client: nothing was changed"
    assert_host_unchanged
    run_zet status
    assert_status 1
    [[ $stderr == *"zet-client: error: the list of targets is broken:
  ${1//$'\n'/$'\n'  }
" ]]
}

@test "comments, blanks and empty lines of the list say nothing" {
    cat >"$LIST" <<-END

		# comment
		 [templates."one.conf"]
		target="$HOST/out/one.conf"
		   # comment
		  roles   =   "both"
		[ templates . "two.conf" ]   # comment
		target = '$HOST/out/two.conf'   # comment
		roles = "client"
	END
    echo two >templates/two.conf
    run_zet commit-config
    assert_status 0
    assert_made one.conf $'fine\n'
    assert_made two.conf $'two\n'
}

@test "all mistakes of a list are told with line and column" {
    echo two >templates/two.conf
    assert_list_problems "$LIST:3:9: roles is \"all\" (write \"server\", \"client\" or \"both\")
$LIST:4:10: secret is a text (write true or false, without quotes)
$LIST:5:1: unknown key \"targets\" (use target, roles, when, check, check_timeout, restart, reload, secret, notice, trust, mode, owner or enabled)
$LIST:6:12: template [two.conf] has no roles (add roles = \"server\", \"client\" or \"both\")
$LIST:7:10: target \"out/two.conf\" is no absolute path of a file (begin it with \"/\", and end it with the name of a file)
$LIST:8:18: the name of the template [three.conf] is not quoted (write [templates.\"three.conf\"])" <<-END
		[templates."one.conf"]
		target = "$HOST/out/one.conf"
		roles = "all"
		secret = "yes"
		targets = "/x"
		[templates."two.conf"]
		target = "out/two.conf"
		[templates.three.conf]
		target = "$HOST/out/three.conf"
	END
}

@test "of the mistakes of syntax the first is told" {
    assert_list_problems "$LIST:2:10: is no TOML: Error while parsing value: could not determine value type ($OF_SYNTAX)" <<-END
		[templates."one.conf"]
		target = $HOST/out/one.conf
		roles = both
	END
}

@test "a syntax mistake is told to whoever names a template, too" {
    printf '[templates."one.conf"\n' >"$LIST"
    run_zet check-config one.conf
    assert_status 1
    [[ $output == "$LIST:1:22: is no TOML: "*" ($OF_SYNTAX)"$'\n' ]]
    run_zet commit-config one.conf
    assert_status 1
    [[ $stderr == *"$LIST:1:22: is no TOML: "* ]]
}

@test "where the list is not understood, nobody takes a file for nobody's target" {
    zet commit-config
    echo nonsense >>"$LIST"
    remember_host
    run_zet template process one.conf "$HOST/out/one.conf.before_zet"
    assert_status 1
    [[ $stderr == *"$LIST:4:9: is no TOML: "* ]]
    assert_host_unchanged
    run_zet line set out/one.conf '^fine' fine=1
    [[ $stderr == *"$LIST:4:9: is no TOML: "*"; so nobody can tell whether the next commit overwrites out/one.conf"* ]]
}

@test "a key or a template that is there twice is told" {
    assert_list_problems "$LIST:4:9: is no TOML: Error while parsing key-value pair: cannot redefine existing string 'roles' ($OF_SYNTAX)" <<-END
		[templates."one.conf"]
		target = "$HOST/out/one.conf"
		roles = "both"
		roles = "client"
	END
    assert_list_problems "$LIST:4:1: [templates.\"one.conf\"] is there twice (see line 1, put both into one)" <<-END
		[templates."one.conf"]
		target = "$HOST/out/one.conf"
		roles = "both"
		[templates."one.conf"]
	END
}

@test "one file for two templates of a role is told" {
    echo two >templates/two.conf
    assert_list_problems "$LIST:5:10: target $HOST/out/one.conf is made from [one.conf] too (see line 2, give each file to one template)" <<-END
		[templates."one.conf"]
		target = "$HOST/out/one.conf"
		roles = "both"
		[templates."two.conf"]
		target = "$HOST/out/one.conf"
		roles = "server"
	END
}

@test "one file may be made from one template on a server and from another on a client" {
    cat >"$LIST" <<-END
		[templates."one.conf"]
		target = "$HOST/out/one.conf"
		roles = "client"
		[templates."two.conf"]
		target = "$HOST/out/one.conf"
		roles = "server"
	END
    echo two >templates/two.conf
    zet commit-config
    assert_made one.conf $'fine\n'
    # Not on one host, where each role would overwrite what the other wrote.
    remember_host
    PROGRAM=$ZET_BIN/zet-init run_zet check-config
    assert_status 1
    assert_output "$HOST/out/one.conf: is made from both [one.conf] and [two.conf] (give each file to one template)"
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config
    assert_status 1
    [[ $stderr == *"is made from both [one.conf] and [two.conf]"* ]]
    PROGRAM=$ZET_BIN/zet-init run_zet commit-config two.conf
    assert_status 1
    assert_files_unchanged
    run_zet check-config
    assert_status 0
    zet -q rollback-config
    server -q commit-config
    assert_file out/one.conf "$(notice two.conf zet-init)"$'\ntwo\n'
}

@test "each role names its own services" {
    echo 'restart = { server = ["a", "b"], client = ["c"] }' >>"$LIST"
    run_zet commit-config -n
    [[ $output == *$'\n'"would have to be restarted: c"$'\n'* ]]
    capture server commit-config -n
    [[ $output == *$'\n'"would have to be restarted: a, b"$'\n'* ]]
}

@test "names and paths are not cut at any length" {
    local name
    name=$(printf 'n%.0s' {1..200})
    : >"$LIST"
    add_target "$name" $'long\n' "check = [\"test\", \"-n\", \"$(printf 'w%.0s' {1..5000})\", \"-a\", \"-f\", \"{}\"]"
    zet commit-config
    assert_made "$name" $'long\n'
}

@test "a NUL byte is told, and cuts no line" {
    printf 'trust = "a\0b"\n' >>"$LIST"
    run_zet check-config
    assert_status 1
    assert_output "$LIST:4:11: holds a NUL byte (take it out)"
}

@test "a list that is missing, or is no file, is an error that says so" {
    rm "$LIST"
    local command
    for command in commit-config check-config status rollback-config; do
        run_zet "$command"
        assert_status 1
        [[ $stderr == "zet-client: error: $LIST: the list of targets cannot be read: No such file or directory (install the product's templates, or correct ZET_CFG_TEMPL_DIR)"$'\n' ]]
    done
    mkdir "$LIST"
    run_zet commit-config
    assert_status 1
    [[ $stderr == "zet-client: error: $LIST: "*"no regular file"* ]]
}

@test "root uses no list that others may write" {
    need_root
    remember_files
    local command
    for command in commit-config check-config status rollback-config; do
        chmod 664 "$LIST"
        run_zet "$command"
        assert_status 1
        assert_equal "${stderr##*error: }" "$LIST: others may write the list of targets, so root does not use it (chown root and chmod go-w)"$'\n'
    done
    chmod 644 "$LIST"
    chown 65534 "$LIST"
    run_zet commit-config
    assert_refusal 1 "$LIST: others may write the list of targets, so root does not use it (chown root and chmod go-w)"
    chown 0 "$LIST"
    assert_equal "$(names_in out)" ""
}

@test "the list that is shipped has no problem" {
    cp "$SOURCE_DIR"/templates/* templates/
    chmod 644 templates/*
    sed -i "s|= \"/etc|= \"$HOST/out|" "$LIST"
    mkdir out/ldap out/krb5kdc out/sssd out/default
    cp "$SOURCE_DIR/examples/server/etc/nsswitch.conf" out/
    cp "$SOURCE_DIR/examples/server/etc/default/slapd" out/default/
    # What its check commands look for on this host is no matter of the list.
    run_zet -q check-config --no-checks
    assert_success ""
    capture server -q check-config --no-checks
    assert_success ""
}

@test "a list of one's own that is none is to be moved away" {
    mkdir -p etc/targets.d/10.toml
    run_zet check-config
    assert_refusal 1 "$HOST/etc/targets.d/10.toml: the list of targets is no regular file (move it away)"
    rmdir etc/targets.d/10.toml
    ln -s gone etc/targets.d/10.toml
    run_zet check-config
    assert_refusal 1 "$HOST/etc/targets.d/10.toml: the list of targets cannot be read: No such file or directory (correct the link, or remove it)"
}

@test "keys of a template that no list before has any more are told, and stop nothing" {
    mkdir etc/targets.d
    local own=$HOST/etc/targets.d/10.toml
    printf '[templates."gone"]\nwhen = "DOMAN=example.org"\n[[edits]]\nname = "lost"\nvalue = "1"\n' >"$own"
    local told="zet-client: warning: $own:1: no list before this one has the template [gone], and it has no target (take its keys out, or add target = \"/PATH\")
zet-client: warning: $own:3: no list before this one has the edit \"lost\", and it has no file (take its keys out, or add file = \"/PATH\")"
    run_zet check-config
    assert_status 0
    assert_stderr "$told"$'\n'"zet-client: no problems found"
    run_zet commit-config
    assert_status 0
    assert_stderr "$told"
    run_zet status
    assert_status 0
    assert_stderr "$told"
    run_zet template list
    assert_status 0
    [[ $output == *"gone"*"no list before has it"* ]]
    run_zet rollback-config
    assert_status 0
    assert_stderr ""
}

@test "what a dropped template made goes back with the next commit, though a list changes its keys" {
    mkdir etc/targets.d
    add_target two.conf $'two\n'
    printf '[templates."two.conf"]\nmode = "0640"\n' >etc/targets.d/10.toml
    zet -q commit-config
    : >"$LIST"
    list_target one.conf "$HOST/out/one.conf"
    run_zet commit-config
    assert_status 0
    assert_absent out/two.conf
}
