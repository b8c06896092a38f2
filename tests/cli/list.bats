# The list of targets, targets.ini.

load helper
load set

setup() {
    make_set
    add_target one.conf $'fine\n'
    LIST=$HOST/templates/targets.ini
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
		; comment
		 [one.conf]
		target=$HOST/out/one.conf
		   # comment
		roles   =   both
		[two.conf]   ; comment
		target :   $HOST/out/two.conf   ; comment
		roles = client
	END
    echo two >templates/two.conf
    run_zet commit-config
    assert_status 0
    assert_made one.conf $'fine\n'
    assert_made two.conf $'two\n'
}

@test "a semicolon after a blank begins a comment in a value too" {
    cat >"$LIST" <<-END
		[one.conf]
		target = $HOST/out/one.conf;x
		roles = both
		restart = one;two ;three
	END
    run_zet commit-config
    assert_success "$HOST/out/one.conf;x: created, mode 0644, owner $(id -u):$(id -g)
to be restarted: one;two
1 created"
}

@test "an unknown key is told with its line" {
    assert_list_problems "$LIST:4: unknown key \"targets\" (use target, roles, check, check_timeout, restart, secret or trust)
$LIST:5: unknown key \"Target\" (use target, roles, check, check_timeout, restart, secret or trust)" <<-END
		[one.conf]
		target = $HOST/out/one.conf
		roles = both
		targets = /x
		Target = /y
	END
}

@test "a key or a section that is there twice is told" {
    assert_list_problems "$LIST:4: key \"roles\" is there twice in [one.conf] (keep one of them)
$LIST:5: section [one.conf] is there twice (see line 1, put both into one)" <<-END
		[one.conf]
		target = $HOST/out/one.conf
		roles = both
		roles = client
		[one.conf]
		target = $HOST/out/two.conf
	END
}

@test "one file for two templates of a role is told" {
    echo two >templates/two.conf
    assert_list_problems "$LIST:5: target $HOST/out/one.conf is made from [one.conf] too (see line 2, give each file to one template)" <<-END
		[one.conf]
		target = $HOST/out/one.conf
		roles = both
		[two.conf]
		target = $HOST/out/one.conf
		roles = server
	END
}

@test "one file may be made from one template on a server and from another on a client" {
    cat >"$LIST" <<-END
		[one.conf]
		target = $HOST/out/one.conf
		roles = client
		[two.conf]
		target = $HOST/out/one.conf
		roles = server
	END
    echo two >templates/two.conf
    zet commit-config
    assert_made one.conf $'fine\n'
}

@test "a section without a target or roles is told" {
    assert_list_problems "$LIST:1: section [one.conf] has no target (add target = /PATH)
$LIST:3: section [two.conf] has no roles (add roles = server, client or both)
$LIST:5: section [three.conf] has no target (add target = /PATH)
$LIST:5: section [three.conf] has no roles (add roles = server, client or both)" <<-END
		[one.conf]
		roles = both
		[two.conf]
		target = $HOST/out/two.conf
		[three.conf]
	END
}

@test "a target that is no absolute path of a file is told" {
    assert_list_problems "$LIST:2: target \"out/one.conf\" is no absolute path of a file (begin it with \"/\", and end it with the name of a file)
$LIST:5: target \"/out/\" is no absolute path of a file (begin it with \"/\", and end it with the name of a file)
$LIST:8: target \"\" is no absolute path of a file (begin it with \"/\", and end it with the name of a file)" <<-END
		[one.conf]
		target = out/one.conf
		roles = server
		[two.conf]
		target = /out/
		roles = server
		[three.conf]
		target =
		roles = server
	END
}

@test "roles and secret have the values that they can have" {
    assert_list_problems "$LIST:3: roles is \"all\" (write server, client or both)
$LIST:4: secret is \"yes\" (write true or false)" <<-END
		[one.conf]
		target = $HOST/out/one.conf
		roles = all
		secret = yes
	END
}

@test "a line that is neither section nor key is told" {
    assert_list_problems "$LIST:1: is neither a section nor KEY = VALUE (correct the line)
$LIST:3: is neither a section nor KEY = VALUE (correct the line)
$LIST:6: is neither a section nor KEY = VALUE (correct the line)" <<-END
		nonsense
		[one.conf]
		secret
		target = $HOST/out/one.conf
		roles = server
		[two.conf
	END
}

@test "a key before the first section is told" {
    assert_list_problems "$LIST:1: key \"target\" stands before the first section (put it below the [TEMPLATE] it belongs to)" <<-END
		target = $HOST/out/one.conf
	END
}

@test "a line that begins with a blank is told, since it would go on with the one before" {
    assert_list_problems "$LIST:4: begins with a blank, which would make it part of the line before (begin the line with its key)" <<-END
		[one.conf]
		target = $HOST/out/one.conf
		roles = both
		  check = true
	END
}

@test "a section that leaves the directory of the templates is told" {
    assert_list_problems "$LIST:1: section [/etc/passwd] leaves the directory of the templates (name a template below it)
$LIST:2: section [../one.conf] leaves the directory of the templates (name a template below it)
$LIST:3: section [a/../../b] leaves the directory of the templates (name a template below it)
$LIST:4: section [] leaves the directory of the templates (name a template below it)" <<-END
		[/etc/passwd]
		[../one.conf]
		[a/../../b]
		[]
	END
}

@test "a name or a line that is too long is told, and not cut off" {
    local name line
    name=$(printf 'n%.0s' {1..50})
    line=$(printf 'l%.0s' {1..100000})
    assert_list_problems "$LIST:1: the name of the section is longer than 49 bytes (give the template a shorter name)
$LIST:3: is longer than 198 bytes (shorten the line)" <<-END
		[$name]
		[one.conf]
		target = /$line
		roles = both
	END
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
    sed -i "s|= /etc|= $HOST/out|" "$LIST"
    mkdir out/ldap out/krb5kdc
    run_zet -q check-config
    assert_success ""
    capture server -q check-config
    assert_success ""
}
