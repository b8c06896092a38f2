# What a host has of its own: values and lists beside the shipped ones.

load helper
load set

setup() {
    NEW=", mode 0644, owner $(id -u):$(id -g)"
    make_set
    mkdir etc/targets.d etc/values.d etc/defaults.d
    add_target one.conf $'realm = ${realm}\nntp = ${ntp_server}\n${extra}\n'
    printf 'NTP_SERVER=shipped\nEXTRA=\n' >templates/values.conf
}

teardown() {
    remove_host
}

# own_list TEXT: the host's own list of targets.
own_list() {
    printf '%s\n' "$1" >etc/targets.d/10.toml
}

@test "values of one's own are rendered, from the source that wins" {
    run_zet commit-config
    assert_success "$HOST/out/one.conf: created$NEW
1 created"
    assert_made one.conf $'realm = EXAMPLE.ORG\nntp = shipped\n\n'
    echo NTP_SERVER=fleet >etc/defaults.d/10.conf
    printf 'a\n\nb\n' >etc/values.d/extra
    zet commit-config
    assert_made one.conf $'realm = EXAMPLE.ORG\nntp = fleet\na\n\nb\n'
    run_zet option set NTP_SERVER main
    assert_status 0
    [[ $stderr == *"NTP_SERVER of $HOST/etc/defaults.d/10.conf:1 does not count any more"* ]]
    run_zet status
    assert_status 3
    zet commit-config
    assert_made one.conf $'realm = EXAMPLE.ORG\nntp = main\na\n\nb\n'
    run_zet status
    assert_status 0
    assert_equal "$(grep -rl NTP_SERVER --include='*.status' . || true)" ''
}

@test "a dry run takes an own value that it is given" {
    run_zet commit-config -n --diff --set NTP_SERVER=assumed
    assert_status 3
    [[ $output == *"+ntp = assumed"$'\n'* ]]
    [[ $stderr != *unknown* ]]
}

@test "what is assumed and cannot be is wrong use, and what somebody uses is told to nobody" {
    printf 'x\ny\n' >etc/values.d/ntp_server
    remember_host
    run_zet commit-config -n --set NTP_SERVER=assumed
    assert_refusal 2 "--set: NTP_SERVER is the file $HOST/etc/values.d/ntp_server, too (keep one of the two)"
    run_zet commit-config -n --set ZET_HISTROY=no
    assert_refusal 2 "--set: the product has no parameter ZET_HISTROY (did you mean ZET_HISTORY?)"
    assert_host_unchanged
    rm etc/values.d/ntp_server templates/values.conf
    echo x >etc/values.d/extra
    run_zet commit-config -n --diff --set NTP_SERVER=assumed
    assert_status 3
    assert_stderr ""
    [[ $output == *"+ntp = assumed"$'\n'* ]]
    run_zet commit-config -n --set NTP_SERVER=x --set NTP_SREVER=assumed
    assert_stderr "zet-client: warning: --set: nobody knows the parameter NTP_SREVER, and nothing uses \${ntp_srever} (correct its name)"
}

@test "a value that clashes is a problem of a check and of a commit, and of nothing else" {
    echo x >etc/values.d/realm
    echo MAX_LIFE=1 >etc/defaults.d/10.conf
    run_zet check-config
    assert_status 1
    assert_output "$HOST/etc/defaults.d/10.conf:1: MAX_LIFE would be \${max_life}, which the product makes of TICKET_MAX_LIFE (set TICKET_MAX_LIFE, or give it another name)
$HOST/etc/values.d/realm: \${realm} is made of the product's parameter REALM (give the value another name)"
    run_zet commit-config
    assert_status 1
    assert_absent out/one.conf
    run_zet status
    assert_status 3
    run_zet -q values
    assert_status 0
}

@test "a value that nothing uses is a warning" {
    echo x >etc/values.d/nobody
    run_zet check-config
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/etc/values.d/nobody: nothing uses \${nobody} (correct its name, or remove the file)
zet-client: no problems found"
}

@test "a value that ends with a carriage return is a problem, wherever it stands" {
    printf 'one\r\ntwo\r\n' >etc/values.d/extra
    printf 'NTP_SERVER=x\r\n' >templates/values.conf
    run_zet check-config
    assert_status 1
    assert_output "$HOST/etc/values.d/extra: the value of \${extra} ends with a carriage return (save the file with plain line feeds)
$HOST/templates/values.conf:1: the value of \${ntp_server} ends with a carriage return (save the file with plain line feeds)"
    run_zet commit-config
    assert_status 1
    assert_absent out/one.conf
    # The line of the main file counts, and the text is for a file whose lines end so.
    echo NTP_SERVER=y >>zet.conf
    printf 'one\r\ntwo' >etc/values.d/extra
    zet -q commit-config
}

@test "a value that nothing asks for may end with a carriage return" {
    printf 'one\r\ntwo\r\n' >etc/values.d/nobody
    printf 'OTHER=x\r\n' >templates/values.conf
    printf 'NTP_SERVER=ntp\nEXTRA=\n' >>templates/values.conf
    run_zet check-config
    assert_status 0
    [[ $stderr == *"$HOST/etc/values.d/nobody: nothing uses"* ]]
    zet -q commit-config
    # asked NAME VALUE: the file of values is a problem from now on, be it for a value of another.
    asked() {
        run_zet commit-config
        assert_refusal 1 "$HOST/etc/values.d/nobody: the value of \${nobody} ends with a carriage return (save the file with plain line feeds)
zet-client: nothing was changed"
    }
    echo 'EXTRA=${nobody}' >>zet.conf
    asked
    sed -i '$d' zet.conf
    zet -q commit-config
    own_list $'[[edits]]\nfile = "/x"\nparam = "a"\nvalue = "b"\nwhen = "NOBODY=yes"\noptional = true'
    printf 'x\ny\r\n' >etc/values.d/nobody
    run_zet check-config
    assert_status 1
    [[ $output == "$HOST/etc/values.d/nobody: the value of \${nobody} ends with a carriage return ("* ]]
}

@test "a list of one's own adds, changes and disables" {
    add_target two.conf $'two\n'
    printf 'own\n' >etc/own.conf
    own_list "[templates.\"own.conf\"]
target = \"$HOST/out/own.conf\"
roles = \"both\"
mode = \"0600\"
[templates.\"two.conf\"]
enabled = false
[templates.\"one.conf\"]
restart = [\"one\"]"
    run_zet commit-config
    assert_success "$HOST/out/one.conf: created$NEW
$HOST/out/own.conf: created, mode 0600, owner $(id -u):$(id -g)
to be restarted: one
2 created"
    assert_equal "$(stat -c %a out/own.conf out/one.conf | paste -sd ' ')" "600 644"
    assert_absent out/two.conf
    run_zet template list
    assert_success "one.conf: $HOST/out/one.conf (server, client), installed, in $HOST/templates/targets.toml:1, changed by $HOST/etc/targets.d/10.toml
two.conf: $HOST/out/two.conf (server, client), not installed, in $HOST/templates/targets.toml:4, changed by $HOST/etc/targets.d/10.toml, not in force: it is disabled
own.conf: $HOST/out/own.conf (server, client), installed, in $HOST/etc/targets.d/10.toml:1"
    run_zet commit-config two.conf
    assert_refusal 2 "$HOST/templates/targets.toml: the template \"two.conf\" is not in force: it is disabled (name one that is)"
    run_zet status
    assert_status 0
}

@test "what is not in force any more is taken back by the next commit, and an edited one stays" {
    original two.conf $'before\n'
    add_target two.conf $'two\n' 'restart = ["two"]'
    add_target three.conf $'three\n'
    zet commit-config
    own_list $'[templates."two.conf"]\nenabled = false\n[templates."three.conf"]\nwhen = "SITE=berlin"'
    echo mine >>out/three.conf
    run_zet status
    assert_status 3
    run_zet commit-config one.conf
    assert_status 0
    [[ $(<out/two.conf) == *two* ]]
    run_zet commit-config -n
    assert_status 3
    [[ $output == *"$HOST/out/two.conf: would be put back as it was"* ]]
    run_zet commit-config
    assert_status 0
    [[ $output == *"$HOST/out/two.conf: put back as it was"* ]]
    [[ $output == *"$HOST/out/three.conf: edited, stays as it is"* ]]
    [[ $output == *"to be restarted: two"* ]]
    [[ $stderr == *"$HOST/out/three.conf: was edited since it was committed and stays (\"rollback-config --force $HOST/out/three.conf\" puts back what was there before)"* ]]
    assert_file out/two.conf $'before\n'
    assert_absent out/two.conf.before_zet
    run_zet commit-config -n --set SITE=berlin
    assert_status 3
    zet undo
    [[ $(<out/two.conf) == *two* ]]
}

@test "when follows a parameter" {
    printf 'own\n' >etc/own.conf
    own_list "[templates.\"own.conf\"]
target = \"$HOST/out/own.conf\"
roles = \"both\"
when = \"SITE=berlin\""
    run_zet commit-config
    assert_success "$HOST/out/one.conf: created$NEW
1 created"
    run_zet commit-config -n --set SITE=berlin
    assert_status 3
    [[ $output == *"$HOST/out/own.conf: would be created"* ]]
    echo SITE=berlin >etc/defaults.d/10.conf
    run_zet commit-config
    assert_success "$HOST/out/own.conf: created$NEW
1 created, 1 unchanged"
    run_zet check-config
    assert_status 0
    assert_stderr "zet-client: no problems found"
}

@test "when follows a file of values, which is used then" {
    printf 'own\n' >etc/own.conf
    own_list "[templates.\"own.conf\"]
target = \"$HOST/out/own.conf\"
roles = \"both\"
when = \"SITE=berlin\""
    echo paris >etc/values.d/site
    zet commit-config
    assert_absent out/own.conf
    echo berlin >etc/values.d/site
    run_zet check-config
    assert_status 0
    assert_stderr "zet-client: no problems found"
    run_zet commit-config
    assert_success "$HOST/out/own.conf: created$NEW
1 created, 1 unchanged"
    echo paris >etc/values.d/site
    run_zet status
    assert_status 3
    [[ $output == *"$HOST/out/own.conf: left over"* ]]
}

@test "when compares what is yes or no by its meaning" {
    local value
    echo own >etc/own.conf
    own_list "[templates.\"own.conf\"]
target = \"$HOST/out/own.conf\"
roles = \"both\"
when = \"SERVICE_DISCOVERY=no\""
    zet -q commit-config
    for value in no false 0; do
        sed -i /SERVICE_DISCOVERY/d zet.conf
        echo "SERVICE_DISCOVERY=$value" >>zet.conf
        run_zet commit-config -n
        assert_success "2 unchanged"
    done
    for value in yes true 1; do
        run_zet commit-config -n --set "SERVICE_DISCOVERY=$value"
        assert_status 3
        [[ $output == *"own.conf: would be"* ]]
    done
    sed -i 's/=no"/=off"/' etc/targets.d/10.toml
    run_zet check-config
    assert_status 1
    assert_output "$HOST/etc/targets.d/10.toml:4:8: 'off' is no value for SERVICE_DISCOVERY and counts as no (write yes or no)"
}

# own_choice CONDITION LINE: own.conf is made under the condition, and the main file has the line, as its sixth.
own_choice() {
    echo own >etc/own.conf
    own_list "[templates.\"own.conf\"]
target = \"$HOST/out/own.conf\"
roles = \"both\"
when = \"$1\""
    echo "$2" >>zet.conf
    zet -q commit-config || true
}

# choose VALUE: what the sixth line gives from now on.
choose() {
    sed -i "6s/=.*/=$1/" zet.conf
}

@test "when compares a yes or no of one's own by its meaning, and another word is a problem" {
    local value problem="$HOST/zet.conf:6: when asks whether BACKUP is yes or no, and its value is neither (write yes or no)"
    own_choice BACKUP=yes BACKUP=yes
    for value in true 1; do
        choose "$value"
        run_zet commit-config -n
        assert_success "2 unchanged"
    done
    for value in no false 0 ''; do
        choose "$value"
        run_zet check-config
        assert_status 0
        assert_stderr "zet-client: no problems found"
        run_zet commit-config -n
        assert_status 3
        assert_stderr ""
        [[ $output == *"own.conf: would be removed"* ]]
    done
    for value in yse on Yes 'yes '; do
        choose "$value"
        run_zet check-config
        assert_status 1
        assert_output "$problem"
        run_zet commit-config
        assert_refusal 1 "$problem
zet-client: nothing was changed"
        run_zet status
        assert_status 3
        assert_stderr "zet-client: warning: $HOST/out/own.conf: was committed and is not in force any more (every commit is refused until what \"check-config\" says of the conditions is corrected)"
    done
    run_zet commit-config -n --set BACKUP=on
    assert_refusal 1 "--set: when asks whether BACKUP is yes or no, and its value is neither (write yes or no)
zet-client: nothing was changed"
    run_zet commit-config one.conf
    assert_status 0
    test -e out/own.conf
}

@test "a value that is far from a yes or no is a problem only where the conditions ask for both" {
    local value
    own_choice PROXY=no PROXY=no
    for value in proxy.example.org:3128 weekly es de 2; do
        choose "$value"
        run_zet check-config
        assert_status 0
        [[ $stderr == *"warning: $HOST/zet.conf:6: the value of PROXY is none that when asks for: no (correct it; or, "* ]]
        run_zet commit-config -n
        assert_status 3
        [[ $output == *"own.conf: would be removed"* ]]
    done
    zet -q option set PROXY proxy.example.org
    zet -q commit-config
    zet -q option set PROXY no
    printf '[[edits]]\nfile = "/x"\nparam = "a"\nvalue = "b"\nwhen = "PROXY=yes"\noptional = true\n' >>etc/targets.d/10.toml
    run_zet option set PROXY proxy.example.org
    assert_refusal 1 "the option would break the configuration file: when asks whether PROXY is yes or no, and its value is neither (write yes or no)"
    choose 2
    run_zet commit-config
    assert_refusal 1 "$HOST/zet.conf:6: when asks whether PROXY is yes or no, and its value is neither (write yes or no)
zet-client: nothing was changed"
}

@test "a value that no condition names is told, and one that is likely mistyped is a problem" {
    local value warning
    own_choice IDENTITY=sssd IDENTITY=sssd
    printf '[[edits]]\nfile = "/x"\nparam = "a"\nvalue = "b"\nwhen = "IDENTITY=nslcd"\noptional = true\n' >>etc/targets.d/10.toml
    for value in SSSD 'sssd '; do
        choose "$value"
        run_zet check-config
        assert_status 1
        assert_output "$HOST/zet.conf:6: the value of IDENTITY is none that when asks for: nslcd, sssd (did you mean sssd?)"
        run_zet commit-config
        assert_status 1
        test -e out/own.conf
    done
    choose ldap
    warning="zet-client: warning: $HOST/zet.conf:6: the value of IDENTITY is none that when asks for: nslcd, sssd (correct it; or, if nothing is to be in force for it, name it in the when of an entry with enabled = false)"
    run_zet check-config
    assert_status 0
    assert_stderr "$warning
zet-client: no problems found"
    run_zet commit-config
    assert_status 0
    assert_stderr "$warning"
    assert_absent out/own.conf
    run_zet commit-config
    assert_status 0
    assert_stderr ""
    printf '[templates."none"]\nwhen = "IDENTITY=ldap"\nenabled = false\n' >>etc/targets.d/10.toml
    run_zet check-config
    assert_status 0
    assert_stderr "zet-client: no problems found"
    run_zet commit-config
    assert_success "1 unchanged"
}

@test "a value of several lines that no condition names is told with its file" {
    own_choice MODE=on OTHER=
    printf 'on\n\n' >etc/values.d/mode
    run_zet check-config
    assert_status 1
    assert_output "$HOST/etc/values.d/mode: the value of MODE is none that when asks for: on (did you mean on?)"
}

@test "a condition for no value, or for a number, asks for no yes or no" {
    own_choice PROXY= PROXY=http://proxy
    run_zet check-config
    assert_stderr "zet-client: no problems found"
    sed -i 's/^when.*/when = "PROXY=1"/' etc/targets.d/10.toml
    choose 3
    run_zet check-config
    assert_status 0
    [[ $stderr == *"warning: $HOST/zet.conf:6: the value of PROXY is none that when asks for: 1 ("* ]]
    choose true
    run_zet check-config
    assert_stderr "zet-client: no problems found"
}

@test "a commit that takes something back tells of a parameter that nobody gives" {
    own_choice SITE=berlin SITE=berlin
    sed -i '6d' zet.conf
    run_zet commit-config -n
    assert_status 3
    assert_stderr "zet-client: warning: $HOST/etc/targets.d/10.toml:4: when asks for the parameter SITE, which nobody gives (correct its name, or give it a value, which may be empty)"
    run_zet -q commit-config
    assert_absent out/own.conf
    run_zet commit-config
    assert_success "1 unchanged"
}

@test "when asks for the value that templates get, placeholders replaced" {
    own_choice 'BACKUP=yes' 'BACKUP=${site_backup}'
    test ! -e out/own.conf
    run_zet check-config
    assert_status 1
    assert_output "$HOST/zet.conf:6: when asks for the value of BACKUP, in which a placeholder has no value or no end (correct it)"
    echo SITE_BACKUP=yes >>zet.conf
    run_zet check-config
    assert_status 0
    assert_stderr "zet-client: no problems found"
    zet -q commit-config
    test -e out/own.conf
    echo '${site_backup}' >etc/values.d/backup
    sed -i 6d zet.conf
    run_zet commit-config -n
    assert_success "2 unchanged"
    run_zet commit-config -n --set SITE_BACKUP=no
    assert_status 3
    [[ $output == *"own.conf: would be removed"* ]]
    echo '${site_backup' >etc/values.d/backup
    run_zet commit-config
    assert_refusal 1 "$HOST/etc/values.d/backup: when asks for the value of BACKUP, in which a placeholder has no value or no end (correct it)
zet-client: nothing was changed"
    sed -i 's/^when.*/when = "REALM=EXAMPLE.ORG"/' etc/targets.d/10.toml
    rm etc/values.d/backup
    run_zet commit-config -n --set 'REALM=${capitals}' --set CAPITALS=EXAMPLE.ORG
    assert_status 0
    assert_output "2 unchanged"
}

@test "a parameter that only a condition knows is a problem where it is much like another, and else a warning" {
    echo IDENTITY=sssd >>templates/values.conf
    own_list $'[templates."one.conf"]\nwhen = "IDENTTY=sssd"\n[[edits]]\nfile = "/x"\nparam = "a"\nvalue = "b"\nwhen = "SITE=berlin"\noptional = true'
    run_zet check-config
    assert_status 1
    assert_output "$HOST/etc/targets.d/10.toml:2: when asks for the parameter IDENTTY, which nobody gives (did you mean IDENTITY?)"
    [[ $stderr == *"warning: $HOST/etc/targets.d/10.toml:7: when asks for the parameter SITE, which nobody gives (correct its name, or give it a value, which may be empty)"* ]]
    run_zet commit-config
    assert_refusal 1 "$HOST/etc/targets.d/10.toml:2: when asks for the parameter IDENTTY, which nobody gives (did you mean IDENTITY?)
zet-client: nothing was changed"
    printf 'IDENTTY=x\nSITE=\n' >etc/defaults.d/10.conf
    run_zet -q check-config
    assert_success ""
}

@test "a name that another when or a placeholder uses is no typing mistake, and entries of the other role are not judged" {
    local warning="nobody gives (correct its name, or give it a value, which may be empty)"
    printf 'RACK_A=yes\nBACKUP_HOSTS=b\n' >>zet.conf
    own_list $'[[edits]]\nfile = "/x"\nparam = "a"\nvalue = "${backup_hosts}"\nwhen = "RACK_A=no"
[[edits]]\nfile = "/x"\nparam = "b"\nvalue = "b"\nwhen = "RACK_B=yes"
[[edits]]\nfile = "/x"\nparam = "c"\nvalue = "c"\nwhen = "BACKUP_HOST=b"'
    run_zet check-config
    assert_status 0
    [[ $stderr == *"when asks for the parameter RACK_B, which $warning"* &&
        $stderr == *"when asks for the parameter BACKUP_HOST, which $warning"* ]]
    zet -q option set RACK_A yes
    run_zet commit-config -n --set RACK_A=true
    assert_status 3
    zet -q commit-config
    own_list $'[[edits]]\nfile = "/x"\nparam = "c"\nvalue = "c"\nwhen = "BACKUP_HOST=b"'
    run_zet check-config
    assert_status 1
    assert_output "$HOST/etc/targets.d/10.toml:5: when asks for the parameter BACKUP_HOST, which nobody gives (did you mean BACKUP_HOSTS?)"
    sed -i '$a roles = "server"' etc/targets.d/10.toml
    run_zet check-config
    assert_status 0
    zet -q commit-config
}

@test "a target can be made without a notice" {
    printf '#!/bin/sh\necho ${realm}\n# --ZET_TEMPLATE_COMMENT--\n# for its editor\n# --ZET_COMMENT_END--\n' >etc/script
    own_list "[templates.\"script\"]
target = \"$HOST/out/script\"
roles = \"both\"
mode = \"0755\""
    run_zet check-config script
    assert_status 1
    assert_output "$HOST/etc/script:1:1: the programs that read the file need this line as its first, and the notice comes before it (say notice = false in its entry of the list)"
    echo 'notice = false' >>etc/targets.d/10.toml
    run_zet commit-config script
    assert_success "$HOST/out/script: created, mode 0755, owner $(id -u):$(id -g)
1 created"
    assert_file out/script $'#!/bin/sh\necho EXAMPLE.ORG\n'
    assert_equal "$(stat -c %a out/script)" 755
    run_zet status
    assert_status 3
    [[ $output == *"$HOST/out/script: in sync"* ]]
}

@test "a new file gets the owner that the list names" {
    [[ $EUID -eq 0 ]] || skip "only root gives files away"
    printf 'own\n' >etc/own.conf
    own_list "[templates.\"own.conf\"]
target = \"$HOST/out/own.conf\"
roles = \"both\"
owner = \"nobody:nogroup\""
    zet commit-config
    assert_equal "$(stat -c %U:%G out/own.conf)" nobody:nogroup
    run_zet status
    assert_status 0
    sed -i 's/nobody:/no-such-user:/' etc/targets.d/10.toml
    run_zet check-config
    assert_status 1
    assert_output "$HOST/etc/targets.d/10.toml:1: this host has no user \"no-such-user\", to whom the file is to belong (correct owner, or make the user)"
}

@test "mistakes of every list are told at once" {
    printf 'wrong = 1\n' >>templates/targets.toml
    own_list $'[templates.krb5.conf]\ntarget = "/x"\nroles = "both"'
    printf '[[\n' >etc/targets.d/20.toml
    run_zet check-config
    assert_status 1
    [[ $output == *"$HOST/templates/targets.toml:4:1: unknown key \"wrong\""* ]]
    [[ $output == *"$HOST/etc/targets.d/10.toml:1:17: the name of the template [krb5.conf] is not quoted"* ]]
    [[ $output == *"$HOST/etc/targets.d/20.toml:1:"*"is no TOML"* ]]
}

@test "root uses no value, default or list that others may write" {
    need_root
    echo x >etc/values.d/extra
    echo NTP_SERVER=x >etc/defaults.d/10.conf
    own_list '# nothing'
    local file
    for file in etc/values.d/extra etc/defaults.d/10.conf etc/targets.d/10.toml templates/values.conf etc/values.d; do
        chmod o+w $file
        run_zet commit-config
        assert_status 1
        [[ $stderr == *"$HOST/$file: others may write"*"so root does not use it"* ]]
        run_zet check-config
        assert_status 1
        chmod o-w $file
    done
    assert_absent out/one.conf
    zet commit-config
}

@test "root uses no directory of values, defaults or lists that others may write, be it empty" {
    need_root
    rm -r etc/values.d etc/defaults.d etc/targets.d
    mkdir etc/values.d etc/defaults.d etc/targets.d "$BASE/his"
    chown 65534 "$BASE/his"
    local directory command
    for directory in values.d defaults.d targets.d; do
        chmod 777 "etc/$directory"
        for command in commit-config check-config; do
            run_zet "$command"
            assert_status 1
            [[ $output$stderr == *"$HOST/etc/$directory: others may write it, so root does not use it (chown root and chmod go-w)"* ]]
        done
        rmdir "etc/$directory"
        ln -s "$BASE/his" "etc/$directory"
        run_zet commit-config
        assert_status 1
        [[ $stderr == *"$BASE/his: others may write it, so root does not use it (chown root and chmod go-w)"* ]]
        rm "etc/$directory"
    done
    assert_absent out/one.conf
    zet commit-config
}

@test "a directory of values, defaults or lists that is a link which leads nowhere is refused" {
    own_list '[templates."two.conf"]'$'\n'"target = \"$HOST/out/two.conf\""$'\n''roles = "both"'
    echo two >templates/two.conf
    echo x >etc/values.d/extra
    echo 'REALM=FLEET.ORG' >etc/defaults.d/10.conf
    zet commit-config
    local directory command
    for directory in values.d defaults.d targets.d; do
        mv "etc/$directory" fleet
        ln -s "$HOST/gone" "etc/$directory"
        remember_files
        for command in commit-config check-config; do
            run_zet "$command"
            assert_status 1
            [[ $output$stderr == *"$HOST/etc/$directory: is a link to $HOST/gone, which is not there (correct the link, or remove it)"* ]]
        done
        assert_unchanged_but_staging
        rm "etc/$directory"
        mv fleet "etc/$directory"
    done
    run_zet commit-config
    assert_status 0
}

@test "where the directory of all these is behind a link that leads nowhere, nothing is told without them" {
    own_list '[templates."two.conf"]'$'\n'"target = \"$HOST/out/two.conf\""$'\n''roles = "both"'
    echo two >templates/two.conf
    echo x >etc/values.d/extra
    echo 'REALM=FLEET.ORG' >etc/defaults.d/10.conf
    mkdir share
    mv etc share/etc
    ln -s share etc-of-fleet
    ln -s etc-of-fleet/etc etc
    zet commit-config
    run_zet option get REALM
    assert_success FLEET.ORG
    local lost command
    cp zet.conf before
    mv share gone
    for lost in "etc: is a link to $HOST/share/etc" "etc-of-fleet: is a link to $HOST/share"; do
        remember_files
        for command in commit-config check-config "commit-config -n" status "template status" values \
            "option get REALM" "param set $HOST/out/one.conf a 1" "file forget $HOST/out/two.conf"; do
            run_zet $command
            [[ $status == 1 && $output$stderr == *"$HOST/$lost, which is not there (correct the link, or remove it)"* ]] ||
                differ "$command: 1 and" "$lost" "$status $output$stderr"
        done
        assert_unchanged_but_staging
        sed -i "s,^ZET_CFG_DIR=.*,ZET_CFG_DIR=$HOST/etc-of-fleet/etc," zet.conf
    done
    mv gone share
    mv before zet.conf
    run_zet status
    assert_status 0
}
