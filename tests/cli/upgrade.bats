# Working copies and the shipped templates that they were made from.

load helper
load set

setup() {
    make_set
    add_target one.conf $'first\nrealm = ${realm}\nmiddle\nmore\nlast\n'
    add_target two.conf $'two\n'
    zet template install one.conf two.conf
}

teardown() {
    remove_host
}

# ship NAME TEXT: a newer version of the template.
ship() {
    printf %s "$2" >"templates/$1"
}

edit_and_ship() {
    printf 'mine\nrealm = ${realm}\nmiddle\nmore\nlast\n' >etc/one.conf
    ship one.conf $'first\nrealm = ${realm}\nmiddle\nmore\nnewer\n'
}

conflict() {
    printf 'first\nrealm = mine\nmiddle\nmore\nlast\n' >etc/one.conf
    ship one.conf $'first\nrealm = theirs\nmiddle\nmore\nlast\n'
}

INSTALL="\"zet-client template install --force one.conf\" installs that one; take the edits over from"

@test "list tells names, targets, roles and which working copies are there" {
    rm etc/two.conf
    printf '[templates."three.conf"]\ntarget = "/three"\nroles = "server"\n' >>templates/targets.toml
    run_zet template list
    local list=$HOST/templates/targets.toml
    assert_success "one.conf: $HOST/out/one.conf (server, client), installed, in $list:1
two.conf: $HOST/out/two.conf (server, client), not installed, in $list:4
three.conf: /three (server), not installed, in $list:7"
    run_zet template list --json
    assert_json 'd["templates"][2]' '{"template": "three.conf", "target": "/three", "roles": ["server"], "working_copy": "'"$HOST"'/etc/three.conf", "installed": false, "in_force": true, "reason": null, "list": "'"$list"'", "line": 7, "changed_by": []}'
}

@test "status tells each state, and is 3 only when something newer is shipped" {
    run_zet template status
    assert_success "$HOST/etc/one.conf: current
$HOST/etc/two.conf: current"
    echo mine >>etc/two.conf
    rm etc/one.conf
    run_zet template status
    assert_success "$HOST/etc/one.conf: not installed
$HOST/etc/two.conf: edited"
    ship two.conf $'newer\n'
    run_zet template status two.conf
    assert_status 3
    assert_output "$HOST/etc/two.conf: edited, newer shipped"
    printf 'two\n' >etc/two.conf
    run_zet template status two.conf --json
    assert_status 3
    assert_json 'd["templates"][0]["state"]' 'newer shipped'
}

@test "a working copy that nobody knows is unknown when it differs, and current when it is the same" {
    printf 'three\n' >templates/three.conf
    cp templates/three.conf etc/three.conf
    run_zet template status three.conf
    assert_success "$HOST/etc/three.conf: current"
    echo other >etc/three.conf
    run_zet template status three.conf
    assert_success "$HOST/etc/three.conf: unknown"
}

@test "a copy that was the same at a commit or an install was made from that" {
    rm -r state && mkdir state
    zet commit-config
    ship two.conf $'newer\n'
    run_zet template status two.conf
    assert_output "$HOST/etc/two.conf: newer shipped"
    printf 'three\n' >templates/three.conf
    cp templates/three.conf etc/three.conf
    zet template install three.conf
    echo mine >>etc/three.conf
    run_zet template status three.conf
    assert_output "$HOST/etc/three.conf: edited"
}

@test "a commit that installs a working copy remembers what it is made from" {
    rm -r etc state && mkdir etc state
    zet commit-config
    ship two.conf $'newer\n'
    run_zet template status two.conf
    assert_output "$HOST/etc/two.conf: newer shipped"
}

@test "an install by force remembers the new text" {
    echo mine >etc/two.conf
    ship two.conf $'newer\n'
    zet template install --force two.conf
    echo mine >>etc/two.conf
    run_zet template status two.conf
    assert_success "$HOST/etc/two.conf: edited"
}

@test "looking writes nothing" {
    edit_and_ship
    remember_host
    zet template status || true
    zet template diff
    zet template list
    zet template upgrade -n || true
    assert_host_unchanged
}

@test "who may not read the history is told so, and of no edits" {
    need_root
    copy_programs
    ship one.conf $'newer\n'
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" template upgrade -n one.conf
    assert_status 1
    [[ $stderr == *"error: $HOST/state/state.db: the history may not be read by this user, so that nobody can tell what $HOST/etc/one.conf was made from (run the command as root)"* ]]
    [[ $stderr != *"nobody knows"* && $stderr != *"edits"* ]]
}

@test "a template that is missing, and a name that leaves the directory" {
    run_zet template status none.conf
    assert_status 1
    assert_output "$HOST/etc/none.conf: unknown"
    [[ $stderr == *"$HOST/templates/none.conf: the template is missing"* ]]
    run_zet template status ../none.conf
    assert_status 2
    run_zet template upgrade none.conf
    assert_refusal 1 "$HOST/templates/none.conf: the template is missing (correct its name, or ZET_CFG_TEMPL_DIR)"
}

@test "a working copy that is not there is made by the command that is told" {
    rm etc/one.conf
    run_zet template upgrade one.conf
    assert_refusal 1 "$HOST/etc/one.conf: there is no such working copy (\"zet-client template install one.conf\" makes it)"
    zet -q template install one.conf
    zet -q template upgrade one.conf
    mkdir templates/sub
    run_zet template upgrade sub
    assert_refusal 1 "$HOST/templates/sub: is a directory (name a file in it)"
}

@test "diff shows how the shipped one differs, fit for patch" {
    edit_and_ship
    run_zet template diff
    assert_status 0
    assert_stderr ""
    printf %s "$output" | (cd / && patch -s -p1)
    cmp etc/one.conf templates/one.conf
    run_zet template diff one.conf
    assert_success ""
}

@test "diff tells another mode, with another text or alone" {
    chmod 755 templates/one.conf
    run_zet template diff one.conf
    assert_success "$HOST/etc/one.conf: mode 0644 -> 0755"
    run_zet template diff one.conf --json
    [[ $output == *'"mode_before": "0644"'*'"mode_after": "0755"'* ]] || differ modes "" "$output"
    ship one.conf $'newer\n'
    run_zet template diff one.conf
    [[ $output == "$HOST/etc/one.conf: mode 0644 -> 0755"$'\n'"--- a"* ]] || differ "mode and text" "" "$output"
}

@test "diff hides what is not for everybody" {
    printf 'secret = true\n' >>templates/targets.toml
    echo geheim >>etc/two.conf
    run_zet template diff two.conf
    assert_success "$HOST/etc/two.conf: line 2 of the old text removed (text not shown: the list of targets calls it secret; --show-secrets shows it)"
    run_zet template diff two.conf --json
    [[ $output != *geheim* ]]
    assert_json 'd["templates"][0]["secret"]' true
    run_zet template diff two.conf --show-secrets
    [[ $output == *geheim* ]]
}

@test "upgrade replaces what nobody edited, as one entry" {
    ship one.conf $'newer\n'
    ship two.conf $'newer too\n'
    local before
    before=$(zet template status --json | python3 -c 'import json, sys; print(len(json.load(sys.stdin)["templates"]))')
    assert_equal "$before" 2
    run_zet template upgrade --json
    assert_status 0
    assert_json 'd["entry"]' 2
    assert_json '[f["result"] for f in d["files"]]' '["changed", "changed"]'
    assert_file etc/one.conf $'newer\n'
    assert_file etc/two.conf $'newer too\n'
    run_zet template status
    assert_success "$HOST/etc/one.conf: current
$HOST/etc/two.conf: current"
    remember_host
    run_zet template upgrade
    assert_success "$HOST/etc/one.conf: unchanged
$HOST/etc/two.conf: unchanged"
    assert_host_unchanged
}

@test "upgrade keeps the edits, mode and owner of an edited copy" {
    edit_and_ship
    chmod 600 etc/one.conf
    run_zet template upgrade one.conf
    assert_success "$HOST/etc/one.conf: changed, its edits are kept"
    assert_file etc/one.conf $'mine\nrealm = ${realm}\nmiddle\nmore\nnewer\n'
    assert_equal "$(stat -c %a etc/one.conf)" 600
    run_zet template status one.conf
    assert_success "$HOST/etc/one.conf: edited"
    ship one.conf $'first\nrealm = ${realm}\nmiddle\nmore\nnewest\n'
    zet template upgrade one.conf
    assert_file etc/one.conf $'mine\nrealm = ${realm}\nmiddle\nmore\nnewest\n'
}

@test "the mode follows the shipped one unless somebody changed it" {
    ship one.conf $'newer\n'
    ship two.conf $'newer\n'
    chmod 640 templates/one.conf templates/two.conf
    chmod 600 etc/two.conf
    run_zet template upgrade
    assert_success "$HOST/etc/one.conf: changed, mode 0644 -> 0640
$HOST/etc/two.conf: changed"
    assert_equal "$(stat -c %a etc/one.conf etc/two.conf | paste -sd ' ')" "640 600"
}

@test "a mode that somebody changed stays, however often newer templates come" {
    local version
    chmod 600 etc/one.conf etc/two.conf
    echo mine >>etc/one.conf
    for version in 1 2 3; do
        ship one.conf "$version"$'\nfirst\nrealm = ${realm}\nmiddle\nmore\nlast\n'
        ship two.conf "$version"$'\n'
        zet template upgrade
        assert_file etc/two.conf "$version"$'\n'
        assert_equal "$(stat -c %a etc/one.conf etc/two.conf | paste -sd ' ')" "600 600"
    done
    sed -i '$d' etc/one.conf
    ship one.conf $'newest\n'
    zet template upgrade one.conf
    assert_equal "$(stat -c %a etc/one.conf)" 600
    chmod 644 etc/one.conf
    chmod 640 templates/one.conf
    ship one.conf $'the very newest\n'
    zet template upgrade one.conf
    assert_equal "$(stat -c %a etc/one.conf)" 640
}

@test "a mode that somebody gave a copy which holds what is newer already stays" {
    chmod 600 etc/one.conf etc/two.conf
    printf 'mine\nfirst\nrealm = ${realm}\nmiddle\nmore\nnewer\n' >etc/one.conf
    ship one.conf $'first\nrealm = ${realm}\nmiddle\nmore\nnewer\n'
    echo newer >etc/two.conf
    ship two.conf $'newer\n'
    run_zet template upgrade
    assert_success "$HOST/etc/one.conf: unchanged
$HOST/etc/two.conf: unchanged"
    sed -i 1d etc/one.conf
    ship one.conf $'newest\n'
    ship two.conf $'newest\n'
    zet template upgrade
    assert_equal "$(cat etc/one.conf etc/two.conf | paste -sd ' ')" "newest newest"
    assert_equal "$(stat -c %a etc/one.conf etc/two.conf | paste -sd ' ')" "600 600"
}

@test "a mode that somebody gave a copy before anything was known of it stays" {
    rm -r state/state.db*
    chmod 600 etc/two.conf
    zet -q commit-config
    ship two.conf $'newer\n'
    zet template upgrade
    assert_file etc/two.conf $'newer\n'
    assert_equal "$(stat -c %a etc/two.conf)" 600
}

@test "a newer mode alone is told, and arrives" {
    chmod 600 templates/one.conf
    run_zet template status
    assert_status 3
    assert_output "$HOST/etc/one.conf: newer shipped
$HOST/etc/two.conf: current"
    run_zet status
    [[ $output == *"newer shipped templates: one.conf"* ]]
    run_zet template upgrade -n
    assert_status 3
    assert_output "$HOST/etc/one.conf: would be changed, mode 0644 -> 0600
$HOST/etc/two.conf: unchanged"
    run_zet template upgrade
    assert_success "$HOST/etc/one.conf: changed, mode 0644 -> 0600
$HOST/etc/two.conf: unchanged"
    assert_equal "$(stat -c %a etc/one.conf)" 600
    run_zet template status one.conf
    assert_success "$HOST/etc/one.conf: current"
    zet undo
    assert_equal "$(stat -c %a etc/one.conf)" 644
    echo mine >>etc/one.conf
    run_zet template status one.conf
    assert_status 3
    assert_output "$HOST/etc/one.conf: edited, newer shipped"
    run_zet template upgrade one.conf
    assert_success "$HOST/etc/one.conf: changed, mode 0644 -> 0600, its edits are kept"
    assert_equal "$(tail -n 1 etc/one.conf)" mine
}

@test "a newer mode arrives in a copy that a command edited since" {
    zet -q param set --no-markers etc/one.conf added 1 2>/dev/null
    zet -q param set --no-markers etc/one.conf added 2 2>/dev/null
    chmod 600 templates/one.conf
    run_zet template status one.conf
    assert_status 3
    assert_output "$HOST/etc/one.conf: edited, newer shipped"
    run_zet template upgrade one.conf
    assert_success "$HOST/etc/one.conf: changed, mode 0644 -> 0600, its edits are kept"
    grep -qx added=2 etc/one.conf
}

@test "a mode that somebody gave a copy is no older one" {
    chmod 600 etc/one.conf etc/two.conf
    chmod 640 templates/two.conf
    zet -q param set --no-markers etc/one.conf added 1 2>/dev/null
    run_zet template status
    assert_success "$HOST/etc/one.conf: edited
$HOST/etc/two.conf: current"
    ship one.conf $'newer\nrealm = ${realm}\nmiddle\nmore\nlast\n'
    run_zet template upgrade
    assert_success "$HOST/etc/one.conf: changed, its edits are kept
$HOST/etc/two.conf: unchanged"
    run_zet template status
    assert_success "$HOST/etc/one.conf: edited
$HOST/etc/two.conf: current"
    assert_equal "$(stat -c %a etc/one.conf etc/two.conf | paste -sd ' ')" "600 600"
}

@test "a trial shows the merge and is 3" {
    edit_and_ship
    remember_host
    run_zet template upgrade -n --diff one.conf
    assert_status 3
    [[ $output == "$HOST/etc/one.conf: would be changed, its edits are kept"*-last*+newer* ]]
    [[ $output != *-mine* ]]
    assert_host_unchanged
}

@test "a conflict is told by file and line, and nothing at all is written" {
    conflict
    ship two.conf $'newer\n'
    remember_host
    run_zet template upgrade
    assert_refusal 1 "$HOST/etc/one.conf:2: was edited here, where the newer $HOST/templates/one.conf has other lines ($INSTALL $HOST/etc/one.conf.old)
zet-client: nothing was changed"
    assert_host_unchanged
    run_zet template upgrade --json
    assert_json 'd["problems"][0]["line"]' 2
    assert_json 'd["entry"]' null
}

@test "a copy of which nobody knows what it was made from is refused when it differs" {
    rm -r state && mkdir state
    echo mine >etc/one.conf
    ship two.conf $'two\n'
    run_zet template upgrade
    assert_refusal 1 "$HOST/etc/one.conf: differs from $HOST/templates/one.conf, and nobody knows what it was made from ($INSTALL $HOST/etc/one.conf.old)
zet-client: nothing was changed"
}

@test "NUL bytes and mixed line ends are refused where edits would be merged" {
    edit_and_ship
    printf 'mine\0\nrealm\n' >etc/one.conf
    run_zet template upgrade one.conf
    assert_refusal 1 "$HOST/etc/one.conf: holds a NUL byte, so that the edits cannot be merged ($INSTALL $HOST/etc/one.conf.old)
zet-client: nothing was changed"
    printf 'mine\nrealm\r\n' >etc/one.conf
    run_zet template upgrade one.conf
    assert_refusal 1 "$HOST/etc/one.conf:2: ends otherwise than the lines before it, so that the edits cannot be merged (give all lines the same end)
zet-client: nothing was changed"
}

@test "edits are merged only where the history keeps what they were" {
    edit_and_ship
    echo ZET_HISTORY=no >>zet.conf
    run_zet template upgrade one.conf
    assert_refusal 1 "$HOST/etc/one.conf: was edited, and the history cannot keep what would be merged ($INSTALL $HOST/etc/one.conf.old)
zet-client: nothing was changed"
    printf 'first\nrealm = ${realm}\nmiddle\nmore\nlast\n' >etc/one.conf
    run_zet template upgrade one.conf
    assert_success "$HOST/etc/one.conf: changed"
}

@test "an edited copy that has all that is newer already is up to date afterwards" {
    printf 'mine\nrealm = ${realm}\nmiddle\nmore\nnewer\n' >etc/one.conf
    ship one.conf $'first\nrealm = ${realm}\nmiddle\nmore\nnewer\n'
    run_zet template upgrade one.conf
    assert_success "$HOST/etc/one.conf: unchanged"
    run_zet template status one.conf
    assert_success "$HOST/etc/one.conf: edited"
}

@test "a template too large to be kept is not taken for one made from nothing" {
    echo ZET_HISTORY_MAX_FILE=2 >>zet.conf
    rm -r etc state && mkdir etc state
    zet template install two.conf
    ship two.conf $'newer\n'
    run_zet template status two.conf
    assert_success "$HOST/etc/two.conf: unknown"
}

@test "a file of somebody else in the way is left, and nothing is written" {
    ship one.conf $'newer\n'
    echo theirs >etc/one.conf.tmp
    remember_host
    run_zet template upgrade
    assert_refusal 1 "$HOST/etc/one.conf.tmp: is in the way of writing $HOST/etc/one.conf, and not from here (move it away)"
    assert_host_unchanged
}

@test "names of one file are wrong use" {
    run_zet template upgrade one.conf one.conf
    assert_refusal 2 "NAME \"one.conf\" is installed into the files of \"one.conf\" too (name each file once)"
}

@test "quiet tells changes only" {
    ship two.conf $'newer\n'
    run_zet template upgrade -q
    assert_success "$HOST/etc/two.conf: changed"
}

@test "status tells what is newer in a line of its own, and keeps its exit status" {
    zet -q commit-config
    ship two.conf $'newer\n'
    run_zet status
    assert_status 0
    [[ $output == *$'\nnewer shipped templates: two.conf ("zet-client template upgrade" takes them over)\n2 in sync\n' ]]
    run_zet status --json
    assert_json 'd["newer_templates"]' '["two.conf"]'
    zet -q template upgrade
    run_zet status
    assert_status 3
    [[ $output == *"two.conf: pending"* && $output != *newer* ]]
}

@test "a working copy whose shipped template is gone is not told as current" {
    zet -q template install one.conf
    rm templates/one.conf
    run_zet template status one.conf
    assert_success "$HOST/etc/one.conf: not shipped"
}

@test "where one directory holds both, a template is its own working copy, and none is kept beside it" {
    sed -i "s|^ZET_CFG_DIR=.*|ZET_CFG_DIR=$HOST/templates|" zet.conf
    zet -q commit-config
    run /usr/bin/python3 -c 'import sqlite3
print(*sqlite3.connect("state/state.db").execute("SELECT path FROM known WHERE path LIKE ?", ("%/templates/%",)))'
    assert_equal "$output" ""
    edit_and_ship
    run_zet template status
    assert_status 0
    [[ $output != *"newer"* ]]
}

@test "a renamed template tells of edits that do not come with it" {
    zet -q commit-config
    echo mine >>etc/one.conf
    zet -q commit-config
    mv templates/one.conf templates/new.conf
    sed -i 's/^\[templates."one.conf"\]/[templates."new.conf"]/' templates/targets.toml
    mkdir etc/targets.d
    printf '[templates."one.conf"]\nenabled = false\n' >etc/targets.d/10.toml
    local told="zet-client: warning: $HOST/out/one.conf: is made from the template [new.conf] now, without the edits of $HOST/etc/one.conf (take them over into $HOST/etc/new.conf)"
    run_zet commit-config -n
    assert_status 3
    assert_stderr "$told"
    run_zet commit-config
    assert_status 0
    assert_stderr "$told"
    run_zet commit-config
    assert_status 0
    assert_stderr ""
}

@test "a renamed template without edits is committed without a word" {
    zet -q commit-config
    mv templates/one.conf templates/new.conf
    sed -i 's/^\[templates."one.conf"\]/[templates."new.conf"]/' templates/targets.toml
    run_zet commit-config
    assert_status 0
    assert_stderr ""
    grep -F "Edit '$HOST/etc/new.conf'" out/one.conf
}
