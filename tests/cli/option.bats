load helper

setup() {
    make_host
    printf 'DOMAIN=example.org\nSERVER=srv.example.org\nZET_VAR_LIB_DIR=%s/state\n' "$HOST" >zet.conf
}

teardown() {
    remove_host
}

@test "get prints the value in effect: of the file, by default, derived" {
    run_zet option get DOMAIN
    assert_success "example.org"
    run_zet option get ZET_SYNC
    assert_success "yes"
    run_zet option get REALM
    assert_success "EXAMPLE.ORG"
}

@test "get prints an empty value" {
    echo 'NOTE=' >>zet.conf
    run_zet option get NOTE
    assert_status 0
    assert_equal "$output" $'\n'
    assert_stderr ""
}

@test "get of an unknown parameter says nothing and fails" {
    run_zet option get NOPE
    assert_status 1
    assert_output ""
    assert_stderr ""
    run_zet -v option get COMMIT_TIME
    assert_status 1
    assert_output ""
    assert_equal "$(tail -n 1 <<<"${stderr%?}")" 'zet-client: there is no parameter "COMMIT_TIME"'
    run_zet --json option get NOPE
    assert_status 1
    assert_json 'd["name"], d["found"], d["value"]' '["NOPE", false, null]'
}

@test "set changes the line in place, without notice, markers and reserve" {
    run_zet option set SERVER other.example.org
    assert_success "$HOST/zet.conf: changed"
    assert_file zet.conf $'DOMAIN=example.org\nSERVER=other.example.org\nZET_VAR_LIB_DIR='"$HOST"$'/state\n'
    assert_absent zet.conf.before_zet
    assert_absent zet.conf.no_file_before_zet
    run_zet option get SERVER
    assert_success "other.example.org"
}

@test "set appends a parameter that is not there" {
    run_zet option set REALM OTHER.ORG
    assert_status 0
    assert_file zet.conf $'DOMAIN=example.org\nSERVER=srv.example.org\nZET_VAR_LIB_DIR='"$HOST"$'/state\n\nREALM=OTHER.ORG\n'
    run_zet option get REALM
    assert_success "OTHER.ORG"
}

@test "set changes every line of the name, also one that is commented out, and no other" {
    printf '%s\n' '#REALM=A' '# REALM=B' '  REALM=C' 'REALM=D' ' # REALM=E' '# text REALM=F' ' SUBREALM=G' >>zet.conf
    local others
    others=$(head -n -7 zet.conf)
    zet option set REALM NEW
    assert_file zet.conf "$others
REALM=NEW
REALM=NEW
REALM=NEW
REALM=NEW
 # REALM=E
# text REALM=F
 SUBREALM=G
"
}

@test "set to the value that it has leaves the file untouched" {
    remember_host
    run_zet option set SERVER srv.example.org
    assert_success "$HOST/zet.conf: unchanged"
    assert_files_unchanged
}

@test "set refuses a name that is none" {
    remember_host
    local name
    for name in '' 1A 'A B' 'A=B' A.B; do
        run_zet option set "$name" x
        assert_refusal 2 "NAME \"$name\" is no name of a parameter (use letters, digits and \"_\", no digit first)"
    done
    run_zet option set ZET_CFG /etc/other
    assert_refusal 2 "ZET_CFG is always the file that is read (name another one with --config)"
    assert_host_unchanged
}

@test "set refuses a value that would break the file" {
    remember_host
    run_zet option set REALM $'A\nB'
    assert_refusal 2 "VALUE holds a line feed (a line cannot; give the text without it)"
    run_zet option set ZET_SYNC maybe
    assert_refusal 1 "the option would break the configuration file: 'maybe' is no value for ZET_SYNC and counts as yes (write yes or no)"
    assert_files_unchanged
}

@test "set refuses a value that templates can make nothing of, and takes it where none asks for it" {
    mkdir -p etc templates
    printf '%s\n' "ZET_CFG_DIR=$HOST/etc" "ZET_CFG_TEMPL_DIR=$HOST/templates" >>zet.conf
    printf '[templates."a"]\ntarget = "%s/a"\nroles = "client"\n' "$HOST" >templates/targets.toml
    printf 'a = ${domain}\nb = ${realm}\nc = ${site}\n' >templates/a
    zet -q option set SITE berlin
    remember_host
    local broken="the option would break the configuration file:"
    run_zet option set DOMAIN ''
    assert_refusal 1 "$broken DOMAIN is empty, so that \${domain} has no value (give it a value)"
    run_zet option set -n REALM ''
    assert_refusal 1 "$broken REALM is empty, so that \${realm} has no value (give it a value)"
    run_zet option set REALM '${x}'
    assert_refusal 1 "$broken $HOST/templates/a:2:5: placeholder \"\${x}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)"
    run_zet option set SITE '${x}'
    assert_refusal 1 "$broken $HOST/templates/a:3:5: placeholder \"\${x}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)"
    run_zet option set REALM '${realm}'
    assert_status 1
    assert_host_unchanged
    zet -q option set REALM '${site}.ORG'
    zet -q option set SITE ''
    zet -q option set SERVER ''
    zet -q check-config
    PROGRAM=$ZET_BIN/zet-init zet -q option set DOMAIN ''
    # What was wrong before is no fault of the value.
    printf 'd = ${missing}\n' >>templates/a
    zet -q option set BANNER 'see ${missing}'
}

@test "set refuses a value after which no commit works" {
    local broken="the option would break the configuration file:"
    mkdir -p etc templates
    printf '%s\n' "ZET_CFG_DIR=$HOST/etc" "ZET_CFG_TEMPL_DIR=$HOST/templates" PW=first PLAIN=x >>zet.conf
    printf '[templates."a"]\ntarget = "%s/a"\nroles = "both"\nwhen = "BACKUP=yes"\n' "$HOST" >templates/targets.toml
    printf '[templates."b"]\ntarget = "%s/b"\nroles = "both"\n' "$HOST" >>templates/targets.toml
    printf '[[edits]]\nfile = "%s/c"\nparam = "a"\nvalue = "1${plain}"\n' "$HOST" >>templates/targets.toml
    printf 'k=${pw}\n' >templates/a
    printf '${pw}\n' >templates/b
    echo a=1 >c
    zet -q option set BACKUP yes
    remember_host
    # refused NAME VALUE MESSAGE
    refused() {
        run_zet option set "$1" "$2"
        assert_refusal 1 "$broken $3"
    }
    refused PW 'x${realm' "$HOST/templates/a:1:3: \"\${\" has no \"}\" after it in its line (close the placeholder, take \"\${\" out, or begin the line with #)"
    refused PW '# ---ZET_BEGIN---' "$HOST/templates/b:1:1: a value makes this line begin with \"# ---ZET_BEGIN---\", which marks lines of the system itself (give the placeholder another value)"
    refused PW '#!/bin/sh' "$HOST/templates/b:1:1: the programs that read the file need this line as its first, and the notice comes before it (say notice = false in its entry of the list)"
    refused PW $'a\r' "the value of PW ends with a carriage return (give it without)"
    refused REALM $'A\r' "the value of REALM ends with a carriage return (give it without)"
    refused PW '"a" # b' "the value of PW is in quotes with a comment behind, and has both as parts of it (write the bare value alone behind \"=\")"
    refused BACKUP yse "when asks whether BACKUP is yes or no, and its value is neither (write yes or no)"
    refused BACKUP '${nope}' "when asks for the value of BACKUP, in which a placeholder has no value or no end (correct it)"
    run_zet option set PLAIN '${nope'
    assert_status 1
    [[ $stderr == *"$HOST/templates/targets.toml"*"\"\${\" has no \"}\""* ]]
    assert_files_unchanged
    zet -q option set PW 'x--y'
    zet -q option set BACKUP false
    zet -q check-config
}

@test "set warns of a value that no condition names, as a commit does" {
    mkdir -p etc templates
    printf '%s\n' "ZET_CFG_DIR=$HOST/etc" "ZET_CFG_TEMPL_DIR=$HOST/templates" >>zet.conf
    printf '[templates."a"]\ntarget = "%s/a"\nroles = "both"\nwhen = "IDENTITY=sssd"\n' "$HOST" >templates/targets.toml
    echo a >templates/a
    local none="is none that when asks for: sssd (correct it; or, if nothing is to be in force for it, name it in the when of an entry with enabled = false)"
    zet -q option set IDENTITY sssd
    local value
    for value in winbind ''; do
        run_zet option set IDENTITY "$value"
        assert_status 0
        assert_stderr "${value:+zet-client: warning: the value of IDENTITY $none}"
    done
    echo 'OTHER=${other_value}' >>zet.conf
    sed -i 's/IDENTITY=sssd/OTHER=sssd/' templates/targets.toml
    run_zet option set OTHER_VALUE winbind
    assert_status 0
    assert_stderr "zet-client: warning: $HOST/zet.conf:$(grep -n ^OTHER= zet.conf | cut -d: -f1): the value of OTHER $none"
    run_zet option set OTHER_VALUE ldap
    assert_success "$HOST/zet.conf: changed"
}

@test "set warns once of what it finds with each value that it tries" {
    mkdir -p etc/targets.d templates
    printf '%s\n' "ZET_CFG_DIR=$HOST/etc" "ZET_CFG_TEMPL_DIR=$HOST/templates" >>zet.conf
    : >templates/targets.toml
    printf '[templates."gone"]\nnotice = false\n' >etc/targets.d/10.toml
    local value
    for value in '' '${realm}' a--b; do
        run_zet option set FOO "$value"
        assert_status 0
        assert_stderr "zet-client: warning: $HOST/etc/targets.d/10.toml:1: no list before this one has the template [gone], and it has no target (take its keys out, or add target = \"/PATH\")"
    done
}

@test "set counts no problem that any other value would bring to light, too" {
    mkdir -p etc templates
    printf '%s\n' "ZET_CFG_DIR=$HOST/etc" "ZET_CFG_TEMPL_DIR=$HOST/templates" >>zet.conf
    printf '[[edits]]\nfile = "%s/c"\nparam = "a"\nvalue = "1${foo}"\n' "$HOST" >templates/targets.toml
    printf '[[edits]]\nfile = "%s/missing"\nparam = "a"\nvalue = "1"\n' "$HOST" >>templates/targets.toml
    echo a=1 >c
    local value
    for value in a--b '${realm}' ''; do
        run_zet option set FOO "$value"
        assert_success "$HOST/zet.conf: changed"
        assert_equal "$(tail -n 1 zet.conf)" "FOO=$value"
        sed -i '$d' zet.conf
    done
    run_zet option set FOO '${nope}'
    assert_status 1
    [[ $stderr == *"the option would break the configuration file: $HOST/templates/targets.toml:"*'"${nope}" has no value'* ]]
}

@test "set refuses a language that the host does not have, and takes an empty one for C" {
    remember_host
    local language
    for language in xx_YY C/../C; do
        run_zet option set ZET_LANG "$language"
        assert_refusal 1 "the option would break the configuration file: '$language' is no value for ZET_LANG, which has to be a locale of this host (generate it, or take one that \"locale -a\" lists)"
    done
    assert_files_unchanged
    for language in C.UTF-8 ''; do
        run_zet option set ZET_LANG "$language"
        assert_success "$HOST/zet.conf: changed"
        assert_equal "$(tail -n 1 zet.conf)" "ZET_LANG=$language"
    done
}

@test "set takes back a language that the host does not have, and sets others beside it" {
    echo 'ZET_LANG=xx_YY' >>zet.conf
    run_zet option set SERVER other
    assert_success "$HOST/zet.conf: changed"
    run_zet option set ZET_LANG C
    assert_success "$HOST/zet.conf: changed"
    assert_file zet.conf $'DOMAIN=example.org\nSERVER=other\nZET_VAR_LIB_DIR='"$HOST"$'/state\nZET_LANG=C\n'
}

@test "an empty language does not let the caller's stand in for it" {
    echo 'ZET_LANG=' >>zet.conf
    echo 'a=1' >conf
    LC_ALL=xx_YY run_zet param set conf a 2
    assert_status 0
    assert_stderr ""
}

@test "a directory with an empty name is refused, and so is making it empty" {
    remember_host
    local key
    for key in ZET_CFG_DIR ZET_CFG_TEMPL_DIR ZET_VAR_LIB_DIR; do
        run_zet option set "$key" ''
        assert_refusal 1 "the option would break the configuration file: $key is empty (give it an absolute path, or remove its line)"
    done
    assert_files_unchanged
    echo 'a=1' >conf
    for key in ZET_CFG_DIR ZET_CFG_TEMPL_DIR ZET_VAR_LIB_DIR; do
        echo "$key=" >>zet.conf
        run_zet param set conf a 2
        assert_refusal 1 "$HOST/zet.conf:4:$((${#key} + 2)): $key is empty (give it an absolute path, or remove its line)"
        run_zet --root "$HOST" status
        assert_status 1
        sed -i '$d' zet.conf
    done
    assert_file conf $'a=1\n'
    assert_absent /zet.lock
}

@test "set refuses a name that a check would refuse, and tells the one that is meant" {
    mkdir -p etc/values.d templates
    echo ZET_CFG_DIR="$HOST/etc" >>zet.conf
    echo ZET_CFG_TEMPL_DIR="$HOST/templates" >>zet.conf
    : >templates/targets.toml
    echo text >etc/values.d/multi
    remember_host
    # refused NAME MESSAGE
    refused() {
        run_zet option set "$1" 1
        assert_refusal 1 "the option would break the configuration file: $2"
    }
    refused ZET_FOO "the product has no parameter ZET_FOO (names of your own must not begin with ZET_)"
    refused ZET_SYNK "the product has no parameter ZET_SYNK (did you mean ZET_SYNC?)"
    refused MULTI "MULTI is the file $HOST/etc/values.d/multi, too (keep one of the two)"
    refused realm "realm would be \${realm}, which the product makes of REALM (set REALM, or give it another name)"
    refused TICKET_MAX_LIVE "nobody knows the parameter TICKET_MAX_LIVE, and nothing uses \${ticket_max_live} (did you mean TICKET_MAX_LIFE?)"
    assert_files_unchanged
    printf '[templates."a"]\ntarget = "%s/a"\nroles = "both"\n' "$HOST" >templates/targets.toml
    echo 'life = ${ticket_max_live}' >templates/a
    run_zet option set TICKET_MAX_LIVE 8h
    assert_success "$HOST/zet.conf: changed"
    run_zet option set SITE berlin
    assert_success "$HOST/zet.conf: changed"
}

@test "a history that cannot be used is switched off all the same, and nothing else is set" {
    break_store
    local off
    for off in no false 0; do
        cp zet.conf before
        run_zet option set REALM X
        assert_refusal 1 "$HOST/state/state.db: $BROKEN_STORE"
        run_zet option set ZET_HISTORY yes
        assert_refusal 1 "$HOST/state/state.db: $BROKEN_STORE"
        cmp zet.conf before
        run_zet option set ZET_HISTORY "$off"
        assert_status 0
        assert_output "$HOST/zet.conf: changed"
        assert_stderr "zet-client: warning: what is changed is not recorded: $HOST/state/state.db: $BROKEN_STORE"
        assert_equal "$(tail -n 1 zet.conf)" "ZET_HISTORY=$off"
        run_zet option set SERVER_ID 7
        assert_status 0
        cp before zet.conf
    done
    assert_equal "$(head -c 11 state/state.db)" "no database"
    rm state/state.db
    mkdir lib
    : >lib/libsqlite3.so.0
    capture env LD_LIBRARY_PATH="$PWD/lib" "$ZET_BIN/zet-client" --config "$HOST/zet.conf" option set ZET_HISTORY no
    assert_status 0
    assert_output "$HOST/zet.conf: changed"
    [[ $stderr == *"warning: what is changed is not recorded: libsqlite3.so.0: cannot be loaded: "* ]]
}

@test "a history that is full is switched off all the same" {
    zet -q option set REALM X
    capture strace -f -qq -o "$BASE/trace" -P "$HOST/state/state.db-wal" -e trace=pwrite64 -e inject=pwrite64:error=ENOSPC \
        "$ZET_BIN/zet-client" --config "$HOST/zet.conf" option set ZET_HISTORY no
    grep -q INJECTED "$BASE/trace"
    assert_status 0
    assert_output "$HOST/zet.conf: changed"
    [[ $stderr == *"warning: what is changed is not recorded: $HOST/state/state.db: the history cannot be used: database or disk is full"* ]]
    run_zet option get ZET_HISTORY
    assert_success no
}

@test "unset removes the lines of the main file, and what else gives the parameter counts" {
    mkdir -p etc/defaults.d
    printf '# REALM=OLD\n  REALM=A\nSERVER_ID=7\nREALM=B' >>zet.conf
    echo ZET_CFG_DIR="$HOST/etc" | cat - zet.conf >new
    mv new zet.conf
    run_zet option unset -n --diff REALM
    assert_status 3
    [[ $output == *$'\n-  REALM=A\n'* && $output == *$'\n-REALM=B\n'* ]]
    run_zet option unset REALM
    assert_success "$HOST/zet.conf: changed"
    assert_file zet.conf "ZET_CFG_DIR=$HOST/etc
DOMAIN=example.org
SERVER=srv.example.org
ZET_VAR_LIB_DIR=$HOST/state
# REALM=OLD
SERVER_ID=7
"
    run_zet option get REALM
    assert_success EXAMPLE.ORG
    run_zet option unset REALM
    assert_success "$HOST/zet.conf: unchanged"
    echo SERVER_ID=9 >etc/defaults.d/10.conf
    run_zet option unset SERVER_ID
    assert_status 0
    assert_output "$HOST/zet.conf: changed"
    assert_stderr "zet-client: SERVER_ID of $HOST/etc/defaults.d/10.conf:1 counts now"
    run_zet undo
    assert_status 0
    run_zet option get SERVER_ID
    assert_success 7
}

@test "unset mends what keeps commands from starting, and refuses what is none" {
    echo ZET_CFG_DIR= >>zet.conf
    run_zet status
    assert_status 1
    run_zet option unset ZET_CFG_DIR
    assert_success "$HOST/zet.conf: changed"
    run_zet option unset 'A B'
    assert_refusal 2 "NAME \"A B\" is no name of a parameter (use letters, digits and \"_\", no digit first)"
    run_zet option unset ZET_CFG
    assert_refusal 2 "ZET_CFG is always the file that is read (name another one with --config)"
}

@test "set refuses a directory that a check would refuse" {
    mkdir -p etc templates open
    chmod 777 open
    printf "%s\n" "ZET_CFG_DIR=$HOST/etc" "ZET_CFG_TEMPL_DIR=$HOST/templates" >>zet.conf
    remember_host
    local name purpose
    # refused DIRECTORY MESSAGE
    refused() {
        run_zet option set "$name" "$1"
        assert_refusal 1 "the option would break the configuration file: $2"
    }
    for name in ZET_CFG_DIR ZET_CFG_TEMPL_DIR ZET_VAR_LIB_DIR; do
        case $name in
            ZET_CFG_DIR) purpose="the templates' working copies" ;;
            ZET_CFG_TEMPL_DIR) purpose="the templates" ;;
            *) purpose="the status" ;;
        esac
        refused "$HOST/none" "$HOST/none: the directory of $purpose cannot be used: No such file or directory (create it, or correct $name)"
        refused "$HOST/zet.conf" "$HOST/zet.conf: is no directory, but $purpose is to be in it (correct $name)"
        refused "$HOST/open" "$HOST/open: others may write the directory of $purpose (chmod o-w it)"
        refused "$TMPDIR" "$TMPDIR: others may write the directory of $purpose (use a directory of root's own)"
    done
    assert_files_unchanged
    need_root
    mkdir "$TMPDIR/own" his
    chown 65534 his
    remember_host
    for name in ZET_CFG_DIR ZET_CFG_TEMPL_DIR ZET_VAR_LIB_DIR; do
        refused "$TMPDIR/own" "$TMPDIR: others may write the directory of $TMPDIR/own (use a directory of root's own)"
        refused "$HOST/his" "$HOST/his: others may write it, so root does not use it (chown root and chmod go-w)"
    done
    assert_files_unchanged
}

@test "a directory that root does not use is left by set and unset, and keeps everything else from being written" {
    need_root
    mkdir -p etc/defaults.d etc2 templates2 state2 templates open his
    chmod 775 open
    chgrp 65534 open
    chown 65534 his
    printf '[templates."one"]\ntarget = "%s/one"\nroles = "both"\n' "$HOST" | tee templates/targets.toml >templates2/targets.toml
    echo x | tee templates/one >templates2/one
    printf '%s\n' DOMAIN=example.org SERVER=srv.example.org "ZET_CFG_DIR=$HOST/etc" "ZET_CFG_TEMPL_DIR=$HOST/templates" "ZET_VAR_LIB_DIR=$HOST/state" >good.conf
    ln -s "$HOST/state2" his/link
    chown -h 65534 his/link
    mkdir "$TMPDIR/etc"
    local name good bad
    for name in ZET_CFG_DIR ZET_CFG_TEMPL_DIR ZET_VAR_LIB_DIR; do
        good=$(sed -n "s/^$name=//p" good.conf)2
        for bad in "$TMPDIR/etc" "$TMPDIR/none" "$HOST/open" "$HOST/his" "$HOST/his/link"; do
            sed "s,^$name=.*,$name=$bad," good.conf >zet.conf
            echo "$name=$good" >etc/defaults.d/10.conf
            remember_host
            run_zet option set REALM X
            assert_status 1
            [[ $stderr != *"chmod o-w"* ]]
            run_zet option set -n "$name" "$good"
            assert_status 3
            assert_host_unchanged
            run_zet option set "$name" "$good"
            assert_status 0
            assert_output "$HOST/zet.conf: changed"
            assert_equal "$(grep "^$name" zet.conf)" "$name=$good"
            [[ $name == ZET_CFG_DIR ]] || {
                sed "s,^$name=.*,$name=$bad," good.conf >zet.conf
                run_zet option unset "$name"
                assert_status 0
                assert_output "$HOST/zet.conf: changed"
            }
            run_zet option set REALM X
            assert_status 0
            [[ $name != ZET_VAR_LIB_DIR ]] || test -s state2/state.db
            run_zet check-config
            assert_status 0
        done
        rm etc/defaults.d/10.conf
    done
    assert_equal "$(ls -A open his "$TMPDIR/etc")" "$(printf '%s\n' "$TMPDIR/etc:" "" his: link "" open:)"
}

@test "a directory that the fleet names is not uncovered below what is committed" {
    mkdir -p etc/defaults.d fleet templates
    printf "%s\n" "ZET_CFG_DIR=$HOST/etc" "ZET_CFG_TEMPL_DIR=$HOST/templates" >>zet.conf
    echo "ZET_CFG_TEMPL_DIR=$HOST/fleet" >etc/defaults.d/10.conf
    printf '[templates."one"]\ntarget = "%s/one"\nroles = "both"\n' "$HOST" >templates/targets.toml
    echo x >templates/one
    zet -q commit-config
    run_zet option unset ZET_CFG_TEMPL_DIR
    assert_refusal 1 "$HOST/zet.conf: ZET_CFG_TEMPL_DIR cannot be changed while something is committed, which is known there (\"rollback-config\" of both roles first, and commit again afterwards)"
}

@test "set in a dry run shows the change and makes none" {
    remember_host
    run_zet option set -n --diff SERVER other
    assert_status 3
    assert_output "$HOST/zet.conf: would be changed
--- a${HOST}/zet.conf
+++ b${HOST}/zet.conf
@@ -1,3 +1,3 @@
 DOMAIN=example.org
-SERVER=srv.example.org
+SERVER=other
 ZET_VAR_LIB_DIR=$HOST/state"
    assert_host_unchanged
}

@test "set writes into the real file when the configuration file is a link" {
    mv zet.conf real.conf
    ln -s real.conf zet.conf
    run_zet option set SERVER other
    assert_success "$HOST/real.conf: changed"
    assert_equal "$(readlink zet.conf)" real.conf
    assert_equal "$(grep SERVER real.conf)" "SERVER=other"
}

@test "a configuration file that is missing or broken is an error that names it" {
    capture "$ZET_BIN/zet-client" --config "$HOST/none" option get REALM
    assert_status 1
    assert_output ""
    assert_equal "${stderr:0:$((25 + ${#HOST}))}" "zet-client: error: $HOST/none:"
    echo nonsense >>zet.conf
    run_zet option get REALM
    assert_status 1
    assert_output ""
    assert_equal "${stderr%: no \"=\"*}" "zet-client: error: $HOST/zet.conf:4"
}

@test "a main file with a lost marker is refused, as any other file" {
    run_zet param set zet.conf REALM ONE
    assert_status 0
    assert_stderr "zet-client: warning: zet.conf: is the main file, in which \"option set\" and \"option unset\" check what they change"
    run_zet param set zet.conf REALM ONE
    assert_success "zet.conf: unchanged"
    sed -i '/ZET_END/d' zet.conf
    cp zet.conf before
    local words
    for words in "option set" "option set -n"; do
        run_zet $words REALM TWO
        assert_status 1
        [[ $stderr == *"$HOST/zet.conf:"*"doctor $HOST/zet.conf\" tells a repair"* ]]
        assert_equal "$(grep -c . <<<"$stderr")" 1
        cmp zet.conf before
    done
}
