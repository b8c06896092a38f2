# What a replaced file had beside its text and mode: owner, access list, attributes.

load helper
load set

setup() {
    make_set_of_one $'realm = ${realm}\n'
}

teardown() {
    remove_host
}

# need_attributes: whether the file system of the test's directory keeps them.
need_attributes() {
    : >probe
    if ! setfacl -m u:1:r probe || ! setfattr -n user.probe -v x probe; then
        skip "this file system keeps no access lists or attributes"
    fi
    rm probe
}

# access FILE: its entries but the mode's own, and its attributes.
access() {
    getfacl -cnpE "$1" | grep '^user:[0-9]\|^group:[0-9]\|^default'
    getfattr -d -m '^user' --absolute-names "$1" | sed 1d
}

dress() {
    setfacl -m u:1:r,g:2:rw "$1"
    setfattr -n user.comment -v 'keep this' "$1"
    setfattr -n user.empty "$1"
    setfattr -n user.bytes -v 0x00ff0a "$1"
}

@test "owner and group of a file stay through all commits, and come back" {
    need_root
    chown 65534:65533 out/one.conf
    zet commit-config
    assert_equal "$(stat -c '%u:%g %a' out/one.conf out/one.conf.before_zet | paste -sd ' ')" \
        "65534:65533 644 65534:65533 640"
    zet option set REALM A
    zet commit-config
    assert_equal "$(stat -c '%u:%g %a' out/one.conf)" "65534:65533 644"
    zet rollback-config
    assert_equal "$(stat -c '%u:%g %a' out/one.conf)" "65534:65533 640"
}

@test "an owner that changed since is the owner of the next text, and the old one comes back" {
    need_root
    zet commit-config
    chown 65534:65533 out/one.conf
    zet option set REALM A
    zet commit-config
    assert_equal "$(stat -c '%u:%g' out/one.conf)" 65534:65533
    zet rollback-config
    assert_equal "$(stat -c '%u:%g %a' out/one.conf)" "0:0 640"
}

@test "access list and attributes of a file stay through all commits, and come back" {
    need_attributes
    dress out/one.conf
    local before
    before=$(access out/one.conf)
    [[ $before == *user:1* && $before == *'user.comment="keep this"'* && $before == *user.bytes* ]]
    zet commit-config
    assert_equal "$(access out/one.conf)" "$before"
    assert_equal "$(access out/one.conf.before_zet)" "$before"
    zet option set REALM A
    zet commit-config
    assert_equal "$(access out/one.conf)" "$before"
    zet rollback-config
    assert_file out/one.conf $'old\n'
    assert_equal "$(access out/one.conf)" "$before"
}

@test "attributes that were set since the first commit stay, and are not those of the original" {
    need_attributes
    zet commit-config
    setfattr -n user.since -v yes out/one.conf
    zet option set REALM A
    zet commit-config
    assert_equal "$(access out/one.conf)" 'user.since="yes"'
    zet rollback-config
    assert_equal "$(access out/one.conf)" ""
}

@test "the mode is the template's, whatever the file had" {
    need_attributes
    dress out/one.conf
    local mode
    for mode in 600 644 640 755 444; do
        chmod "$mode" templates/one.conf
        rm -f etc/one.conf
        zet commit-config
        assert_equal "$(stat -c %a out/one.conf)" "$mode"
        assert_equal "$(stat -c %a etc/one.conf)" "$mode"
    done
    zet rollback-config
    assert_equal "$(getfacl -cnp out/one.conf | grep '^user:1')" user:1:r--
}

@test "a file without a right for its owner to write is replaced like any other" {
    chmod 444 out/one.conf
    zet commit-config
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    zet rollback-config
    assert_equal "$(stat -c %a out/one.conf)" 444
}

@test "bits beyond the permissions do not come over from the former file" {
    chmod 6755 out/one.conf
    zet commit-config
    assert_equal "$(stat -c %a out/one.conf)" 644
    zet rollback-config
    assert_equal "$(stat -c %a out/one.conf)" 6755
}

@test "the umask of the caller has no say" {
    local umask
    for umask in 000 077 777; do
        zet rollback-config
        rm -f etc/one.conf
        (umask "$umask" && zet commit-config)
        assert_equal "$(stat -c %a out/one.conf etc/one.conf out/one.conf.before_zet | paste -sd ' ')" "644 644 640"
    done
}

@test "what tells of a commit is everybody's to read and root's alone to write, whatever the umask is" {
    local umask files="state/zet-client.status state/zet-client-fs.status out/new.conf.no_file_before_zet"
    add_target new.conf $'x\n'
    for umask in 000 077; do
        zet rollback-config
        (umask "$umask" && zet commit-config)
        # shellcheck disable=SC2086 # names
        assert_equal "$(stat -c %a $files | paste -sd ' ')" "644 644 644"
    done
    chmod 666 state/zet-client.status
    chmod 600 state/zet-client-fs.status
    zet commit-config
    # shellcheck disable=SC2086 # names
    assert_equal "$(stat -c %a $files | paste -sd ' ')" "644 644 644"
}

@test "what the product remembers is root's alone, whatever the umask is" {
    rm state/zet.lock
    (umask 777 && zet commit-config)
    assert_equal "$(stat -c %a state/zet.lock state/state.db* | sort -u)" 600
}

@test "at the end of a link, attributes stay and the link is the same" {
    need_attributes
    mv out/one.conf real
    dress real
    ln -s ../real out/one.conf
    local before
    before="$(access real) $(stat -c %i out/one.conf)"
    zet commit-config
    assert_equal "$(access real) $(stat -c %i out/one.conf)" "$before"
    zet rollback-config
    assert_equal "$(access real) $(stat -c %i out/one.conf)" "$before"
}

@test "the security label of a file is one of the attributes that an undo watches, and brings back" {
    need_root
    setfattr -n security.selinux -v former out/one.conf 2>/dev/null || skip "this system sets no labels"
    zet -q param set --no-backup out/one.conf a 2
    setfattr -n security.selinux -v latter out/one.conf
    run_zet undo
    assert_status 1
    [[ $stderr == *"$HOST/out/one.conf: has other attributes: it is not as change 1 left it"* ]]
    zet -q undo --force
    assert_equal "$(getfattr -n security.selinux --only-values out/one.conf | tr -d '\0')" former
}

@test "integrity attributes and capabilities do not come over" {
    need_root
    setcap cap_net_raw+ep out/one.conf 2>/dev/null || skip "this file system keeps no capabilities"
    zet commit-config
    assert_equal "$(getcap out/one.conf)" ""
}

@test "an ordinary user is warned of an owner that he cannot keep, and still gets the text" {
    need_root
    need_attributes
    copy_programs
    chown -R 65534:65534 "$HOST"
    chown 1:1 out/one.conf
    setfattr -n user.comment -v kept out/one.conf
    chmod 644 out/one.conf
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" commit-config -n
    assert_status 3
    assert_output "$HOST/out/one.conf: would be changed, owner 1:1 -> 65534:65534
1 would be changed"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" commit-config
    assert_status 0
    assert_output "$HOST/out/one.conf: changed, owner 1:1 -> 65534:65534, the original is kept as $HOST/out/one.conf.before_zet
1 changed"
    [[ $stderr == *warning*"$HOST/out/one.conf"* ]]
    assert_made one.conf $'realm = EXAMPLE.ORG\n'
    assert_equal "$(stat -c '%u:%g %a' out/one.conf)" "65534:65534 644"
    assert_equal "$(access out/one.conf)" 'user.comment="kept"'
}

@test "a dry run says nothing of an owner that stays" {
    need_root
    chown 65534:65533 out/one.conf
    chmod 644 out/one.conf
    run_zet commit-config -n
    assert_status 3
    assert_output "$HOST/out/one.conf: would be changed
1 would be changed"
}

# assert_foreseen PATH OWNER COMMAND...: the dry run, the report and the file agree on the owner.
assert_foreseen() {
    local path=$1 owner=$2 list
    shift 2
    [[ $1 == commit-config ]] && list=targets || list=files
    run_zet --json "$@" -n
    assert_status 3
    assert_json "d['$list'][0]['owner_after']" "$owner"
    run_zet --json "$@"
    assert_status 0
    assert_json "d['$list'][0]['owner_after']" "$owner"
    assert_equal "$(stat -c '%u:%g' "$path")" "$owner"
}

@test "a file that was removed gets the owner of its reserve, as the dry run says" {
    need_root
    chown 65534:65533 out/one.conf
    zet -q commit-config
    rm out/one.conf
    assert_foreseen out/one.conf 65534:65533 commit-config
    zet -q template process one.conf made
    cp -p out/one.conf.before_zet made.before_zet
    rm made
    assert_foreseen made 65534:65533 template process one.conf made
}

@test "a new file in a set-group-id directory gets the directory's group, as the dry run says" {
    need_root
    mkdir real
    chown 0:65533 real
    chmod 2755 real
    ln -s real way
    add_target two.conf $'x\n'
    list_target three.conf "$HOST/way/three.conf"
    echo x >templates/three.conf
    assert_foreseen real/three.conf 0:65533 commit-config three.conf
    assert_foreseen real/made 0:65533 template process three.conf way/made
    chown 65534:65532 real/made
    echo more >>real/made
    assert_foreseen real/made 65534:65532 template process three.conf way/made
}

@test "an ordinary user is told beforehand whose the file of a removed one will be" {
    need_root
    copy_programs
    zet -q commit-config
    rm out/one.conf
    chown -R 65534:65534 "$HOST"
    chown 1:1 out/one.conf.before_zet
    chmod 644 out/one.conf.before_zet
    for option in -n ""; do
        # shellcheck disable=SC2086
        capture as_nobody "$BASE/programs/bin/zet-client" --json --config "$HOST/zet.conf" commit-config $option
        assert_json 'd["targets"][0]["owner_after"]' 65534:65534
    done
    assert_equal "$(stat -c '%u:%g' out/one.conf)" 65534:65534
}
