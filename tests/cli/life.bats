# The whole life of a host in its domain: in the end, every file is what it was before the first command.

load helper
load set

setup() {
    umask 022
    make_host
}

teardown() {
    remove_host
}

# The example's host in tree/, with files of its administrator's, some at the end of a link and some of others.
make_life() {
    "$SOURCE_DIR/script/example-root" "$1" tree
    TREE=$HOST/tree
    mkdir -p tree/etc/real tree/etc/default
    echo IDENTITY=nslcd >>tree/etc/zet/zet.conf
    printf '[General]\r\nVerbosity = 0\r\n# no line feed' >tree/etc/real/idmapd
    ln -s /etc/real/idmapd tree/etc/idmapd.conf
    printf 'uid nslcd\nbytes \xff\xfe\n' >tree/etc/nslcd.conf
    chmod 600 tree/etc/nslcd.conf
    : >tree/etc/ldap/ldap.conf
    chmod 664 tree/etc/ldap/ldap.conf
    printf 'NEED_IDMAPD=no\nNEED_GSSD=\n' >tree/etc/default/nfs
    printf 'passwd: files\ngroup: files\n' | tee tree/etc/nsswitch.conf >tree/etc/names.conf
    if [[ $EUID -eq 0 ]]; then
        chown 65534:65533 tree/etc/nslcd.conf
        chgrp 65533 tree/etc/nsswitch.conf
    fi
    BEFORE=$(files_of_host)
}

# Kind, mode, owner, link target and bytes of all that is in the tree's etc but the product's own directory.
files_of_host() {
    find tree/etc -path tree/etc/zet -prune -o -printf '%p %y %m %U:%G -> %l\n' | sort
    find tree/etc -path tree/etc/zet -prune -o -type f -exec sha256sum {} + | sort
}

assert_as_before() {
    local now
    now=$(files_of_host)
    [[ $now == "$BEFORE" ]] || {
        diff <(echo "$BEFORE") <(echo "$now") >&2
        return 1
    }
    assert_equal "$(names_in tree/var/lib/zet)" zet.lock
}

# on COMMAND...: on the host in the tree.
on() {
    capture "$ZET_BIN/$PROGRAM" --root tree "$@"
}

state_of_target() {
    on --json status
    json "[t['state'] for t in d['targets'] if t['path'] == '$TREE$1'][0]"
}

# The part that server and client have in common.
live_together() {
    on check-config
    assert_status 0
    on status
    assert_status 3
    on commit-config -n --diff
    assert_status 3
    on commit-config
    assert_status 0
    on status
    assert_status 0

    # A parameter changes.
    on option set TICKET_MAX_LIFE 8h
    assert_status 0
    assert_equal "$(state_of_target /etc/krb5.conf)" pending
    on commit-config --diff
    assert_status 0
    assert_equal "$(grep '^[-+][^-+]' <<<"$output" | sort -u | grep ticket)" "+    ticket_lifetime = 8h
-    ticket_lifetime = 10h"
    on status
    assert_status 0

    # Somebody edits a file by hand.
    sed -i 's/^uri.*/uri ldap:\/\/elsewhere/' tree/etc/nslcd.conf
    assert_equal "$(state_of_target /etc/nslcd.conf)" edited
    on commit-config -n --diff nslcd.conf
    assert_status 3
    [[ $output == *"$TREE/etc/nslcd.conf: would be changed"* && $output != *elsewhere* ]]
    on commit-config
    assert_status 0
    [[ $stderr == *"$TREE/etc/nslcd.conf: was edited since the last commit; the edits are overwritten"* ]]
    assert_equal "$(state_of_target /etc/nslcd.conf)" "in sync"

    # And the template, as the notice says.
    echo '# of this host' >>tree/etc/zet/nslcd.conf
    assert_equal "$(state_of_target /etc/nslcd.conf)" pending
    on commit-config
    assert_equal "$(tail -n 1 tree/etc/nslcd.conf)" "# of this host"

    # Files that the product does not make are edited in place.
    on param set /etc/default/nfs NEED_IDMAPD yes
    assert_status 0
    on param set /etc/default/nfs NEED_GSSD yes
    on param get /etc/default/nfs NEED_IDMAPD
    assert_success yes
    on line set /etc/names.conf '^passwd:' 'passwd: files ldap'
    assert_status 0
    on explain /etc/names.conf:10
    assert_status 0

    # One of them is damaged, and repaired.
    sed -i '0,/^# ----ZET_END/{/^# ----ZET_END/d}' tree/etc/default/nfs
    on doctor /etc/default/nfs
    assert_status 1
    on param restore /etc/default/nfs NEED_GSSD
    assert_status 1
    on doctor /etc/default/nfs
    patch -s -d / -p1 <<<"$output"
    on doctor /etc/default/nfs
    assert_status 0
    on line restore /etc/names.conf '^passwd:'
    assert_status 0
    on param get /etc/default/nfs NEED_IDMAPD
    assert_success yes
}

# The host leaves the domain.
leave() {
    on rollback-config -n
    assert_status 3
    on rollback-config
    assert_status 0
    for file in default/nfs names.conf; do
        on file restore "/etc/$file"
        assert_status 0
    done
    assert_as_before
    on status
    assert_status 3
    [[ $output == *$'\ncommitted: never\n'* ]]
    on rollback-config
    assert_status 0
    assert_as_before
}

@test "the life of a server" {
    PROGRAM=zet-init
    make_life server
    live_together
    # What its templates have beside the client's.
    on option set SERVER_EXPORT_DIR /srv/other
    on status
    assert_status 3
    assert_equal "$(state_of_target /etc/exports)" pending
    on commit-config exports
    assert_status 0
    assert_equal "$(tail -n 2 <<<"${output%?}" | head -n 1)" "to be run: exportfs -ra"
    assert_equal "$(stat -c %a tree/etc/krb5kdc/kadm5.acl)" 600
    on status
    assert_status 0
    leave
}

@test "the life of a client" {
    PROGRAM=zet-client
    make_life client
    live_together
    # Its domain gets another server.
    on option set SERVER new.example.org
    on commit-config
    assert_status 0
    assert_equal "$(grep -rl new.example.org tree/etc --exclude-dir=zet | wc -l)" "$(grep -l '{kdc_server}\|{ldap_uris}\|{nslcd_uri}\|{server}' \
        tree/etc/zet/*.conf | wc -l)"
    leave
}

@test "a host that was both leaves the domain as a server first and then as a client" {
    PROGRAM=zet-init
    make_life server
    on commit-config
    assert_status 0
    PROGRAM=zet-client
    on commit-config
    assert_status 0
    on rollback-config
    assert_status 0
    PROGRAM=zet-init
    on rollback-config
    assert_status 0
    assert_as_before
}

@test "a commit after the rollback begins a new life" {
    PROGRAM=zet-client
    make_life client
    on commit-config
    on rollback-config
    assert_as_before
    # What the administrator does between is what the next rollback comes back to.
    echo 'between' >>tree/etc/nslcd.conf
    BEFORE=$(files_of_host)
    on commit-config
    assert_status 0
    assert_stderr "zet-client: 1 check command of the tree was not run (--run-checks runs them, on this host)"
    on rollback-config
    assert_status 0
    assert_as_before
}

@test "a target that is edited in place between two commits goes back whole" {
    PROGRAM=zet-client
    make_life client
    on commit-config
    on line set --force /etc/nslcd.conf '^uid' 'uid other'
    assert_status 0
    assert_equal "$(state_of_target /etc/nslcd.conf)" pending
    on commit-config
    assert_status 0
    on rollback-config
    assert_status 0
    assert_as_before
}

@test "a target that was edited in place before the first commit goes back to what it was before that" {
    PROGRAM=zet-client
    make_life client
    on line set /etc/nslcd.conf '^uid' 'uid other'
    on commit-config
    on rollback-config
    assert_status 0
    assert_as_before
}
