# adopt: an edit of a target becomes one of its template.

load helper
load set

setup() {
    make_set
    add_target one.conf $'# --ZET_TEMPLATE_COMMENT--\n# why\n# --ZET_COMMENT_END--\n[main]\nrealm = ${realm}\nlast\n'
    zet commit-config
}

teardown() {
    remove_host
}

adopted() {
    sed "$1" out/one.conf >new && cat new >out/one.conf && rm new
    cp out/one.conf edited
    run_zet adopt out/one.conf
}

assert_adopted() {
    assert_status 0
    assert_file etc/one.conf "$1"
    cmp out/one.conf edited
    run_zet status
    assert_status 0
    run_zet commit-config
    cmp out/one.conf edited
}

@test "lines without placeholders are taken over, and a changed line keeps its placeholder" {
    adopted 's/^last$/first of the last\nlast/; s/^realm = /default_realm=/'
    assert_output "$HOST/etc/one.conf: changed, with the edit of $HOST/out/one.conf"
    assert_adopted $'# --ZET_TEMPLATE_COMMENT--\n# why\n# --ZET_COMMENT_END--\n[main]\ndefault_realm=${realm}\nfirst of the last\nlast\n'
}

@test "a line that was taken out is taken out of the template" {
    adopted '/^realm/d'
    assert_adopted $'# --ZET_TEMPLATE_COMMENT--\n# why\n# --ZET_COMMENT_END--\n[main]\nlast\n'
}

@test "a line that was moved takes its placeholder along" {
    adopted '/^realm/{h;d}; $G'
    assert_adopted $'# --ZET_TEMPLATE_COMMENT--\n# why\n# --ZET_COMMENT_END--\n[main]\nlast\nrealm = ${realm}\n'
}

@test "a changed value is refused with its line, and nothing is written" {
    sed -i 's/EXAMPLE.ORG/OTHER.ORG/' out/one.conf
    remember_host
    run_zet adopt out/one.conf
    local line
    line=$(grep -n OTHER.ORG out/one.conf | cut -d: -f1)
    assert_refusal 1 "$HOST/out/one.conf:$line: the value of \${realm} does not stand in it, or in more than one way (change the parameter, or edit $HOST/etc/one.conf by hand)"
    assert_host_unchanged
}

@test "a dry run shows the change of the template and writes nothing" {
    echo more >>out/one.conf
    remember_host
    run_zet adopt -n --diff out/one.conf
    assert_status 3
    [[ $output == *"+more"* ]]
    assert_host_unchanged
}

@test "without an edit there is nothing to adopt" {
    run_zet adopt out/one.conf
    assert_success "$HOST/etc/one.conf: unchanged, $HOST/out/one.conf is as it was committed"
}

@test "a file that is no committed target is wrong use" {
    echo x >conf
    run_zet adopt conf
    assert_refusal 2 "conf: is no committed target (\"status\" lists them)"
}

@test "after a parameter changed nobody can tell what was edited" {
    echo more >>out/one.conf
    sed -i 's/^DOMAIN=.*/DOMAIN=example.net/' zet.conf
    run_zet adopt out/one.conf
    assert_status 1
    [[ $stderr == *"its template or a parameter changed since the last commit"* ]]
}

@test "a notice that was changed is not of the template" {
    sed -i '2s/.*/# mine/' out/one.conf
    run_zet adopt out/one.conf
    assert_status 1
    [[ $stderr == *"its notice was changed, too"* ]]
}

@test "text that would be a placeholder is not adopted" {
    echo 'x ${realm}' >>out/one.conf
    run_zet adopt out/one.conf
    assert_status 1
    [[ $stderr == *"no template can be told from which it would be made"* ]]
}

@test "the entry has the change of the template" {
    echo more >>out/one.conf
    run_zet --json adopt out/one.conf
    assert_json '[d["entry"], d["files"][0]["result"]]' '[2, "changed"]'
}

@test "who may not read the history is told that, and not that there is no such target" {
    need_root
    copy_programs
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" adopt -n out/one.conf
    assert_refusal 1 "$HOST/state/state.db: the history may not be read by this user, so that nobody can tell what out/one.conf was made from (run the command as root)"
}

@test "a user who is not root adopts into a template that nobody may write" {
    need_root
    copy_programs
    chmod 0444 etc/one.conf
    chown -R 65534:65534 "$HOST"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" commit-config
    assert_status 0
    chmod u+w out/one.conf
    echo more >>out/one.conf
    chmod u-w out/one.conf
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" adopt out/one.conf
    assert_status 0
    [ "$(tail -n 1 etc/one.conf)" = more ]
}

@test "an edit that makes no template is refused, and not tried for ever" {
    local line
    for line in 'open ${realm' '# ----ZET_END----' '# ---ZET_BEGIN---'; do
        zet -q commit-config --on-edit overwrite
        echo "$line" >>out/one.conf
        capture timeout -s KILL 20 "$ZET_BIN/zet-client" --config "$HOST/zet.conf" adopt out/one.conf
        assert_status 1
        [[ $stderr == *"out/one.conf: its edit makes no template that can be committed: "* ]]
    done
    run_zet check-config
    assert_status 0
}

@test "an adopted edit is the product's own: it is followed by another, goes back, and is edited again after an undo" {
    echo more >>out/one.conf
    zet -q adopt out/one.conf
    zet commit-config --on-edit refuse
    echo again >>out/one.conf
    run_zet adopt out/one.conf
    assert_success "$HOST/etc/one.conf: changed, with the edit of $HOST/out/one.conf"
    zet undo
    run_zet status
    [[ $output == *"$HOST/out/one.conf: edited"* ]]
    zet adopt out/one.conf
    sed -i 's/^DOMAIN=.*/DOMAIN=example.net/' zet.conf
    run_zet commit-config --on-edit refuse
    assert_success "$HOST/out/one.conf: changed
1 changed"
}

@test "a working copy that cannot be replaced stays, with nothing beside it" {
    need_root
    echo more >>out/one.conf
    chattr +i etc/one.conf 2>/dev/null || skip "this file system knows no such files"
    run_zet adopt out/one.conf
    chattr -i etc/one.conf
    assert_status 1
    [[ $stderr == *"$HOST/etc/one.conf: "* ]]
    assert_equal "$(names_in etc)" one.conf
    cp out/one.conf edited
    run_zet adopt out/one.conf
    assert_adopted $'# --ZET_TEMPLATE_COMMENT--\n# why\n# --ZET_COMMENT_END--\n[main]\nrealm = ${realm}\nlast\nmore\n'
}

@test "without a history that can be written nothing is adopted" {
    need_root
    echo more >>out/one.conf
    cp -r etc before
    mount --bind -o ro state state 2>/dev/null && mount -o remount,bind,ro state || skip "nothing may be mounted here"
    run_zet adopt out/one.conf
    umount state
    assert_status 1
    diff -r before etc
}

@test "nothing is adopted into a template from which the file was taken back meanwhile" {
    echo more >>out/one.conf
    cp -r etc before
    run_beside "$HOST/state/zet.lock" openat "adopt out/one.conf" \
        eval 'zet rollback-config --force; echo theirs >out/one.conf'
    assert_status 2
    assert_equal "$stderr" "zet-client: error: $HOST/out/one.conf: is no committed target (\"status\" lists them)"
    diff -r before etc
}

@test "without a history that can be read nothing is adopted" {
    echo a=1 >f
    zet -q param set f a 2
    echo more >>out/one.conf
    cp -r etc before
    change_store "UPDATE known SET kind = 7 WHERE path LIKE '%/f'"
    echo ZET_HISTORY=no >>zet.conf
    local words
    for words in 'adopt' 'adopt -n'; do
        run_zet $words out/one.conf
        assert_status 1
        [[ $stderr == *"error: $HOST/state/state.db: cannot be used, so that nobody can tell what $HOST/out/one.conf was made from (edit its working copy by hand, and commit)"* ]]
    done
    diff -r before etc
}

@test "a value that the domain does not give stays a placeholder" {
    echo NTP_SERVER=fleet >templates/values.conf
    add_target own.conf $'server ${ntp_server}\n'
    zet commit-config
    echo last >>out/own.conf
    run_zet adopt out/own.conf
    assert_status 0
    assert_file etc/own.conf $'server ${ntp_server}\nlast\n'
}

@test "a mode that somebody gave the file is its template's from then on" {
    echo more >>out/one.conf
    chmod 600 out/one.conf
    adopted ''
    assert_adopted $'# --ZET_TEMPLATE_COMMENT--\n# why\n# --ZET_COMMENT_END--\n[main]\nrealm = ${realm}\nlast\nmore\n'
    assert_equal "$(stat -c %a etc/one.conf out/one.conf)" $'600\n600'
    zet undo
    assert_equal "$(stat -c %a etc/one.conf out/one.conf)" $'644\n600'
    run_zet status
    [[ $output == *"$HOST/out/one.conf: edited"* ]]
}

@test "a mode alone is adopted, and an upgrade of the template leaves it" {
    chmod 600 out/one.conf
    run_zet adopt -n --diff out/one.conf
    assert_status 3
    [[ $output == *"would be changed"*600* ]] || differ output 600 "$output"
    run_zet adopt out/one.conf
    assert_success "$HOST/etc/one.conf: changed, mode 0644 -> 0600, with the edit of $HOST/out/one.conf"
    run_zet status
    assert_status 0
    printf 'newer = ${realm}\n' >templates/one.conf
    run_zet template upgrade one.conf
    assert_status 0
    run_zet commit-config --on-edit=refuse
    assert_status 0
    grep -qx 'newer = EXAMPLE.ORG' out/one.conf
    assert_equal "$(stat -c %a etc/one.conf out/one.conf)" $'600\n600'
}

@test "a mode that somebody gave the working copy stays his where a text is adopted" {
    chmod 600 etc/one.conf
    zet commit-config
    echo more >>out/one.conf
    zet adopt out/one.conf
    cp etc/one.conf templates/one.conf
    chmod 644 templates/one.conf
    zet template upgrade one.conf
    echo newer >>templates/one.conf
    zet template upgrade one.conf
    grep -qx newer etc/one.conf
    assert_equal "$(stat -c %a etc/one.conf)" 600
}

@test "a mode that the list gives is not adopted" {
    sed -i '$a mode = "0640"' templates/targets.toml
    zet commit-config
    echo more >>out/one.conf
    chmod 600 out/one.conf
    remember_host
    run_zet adopt out/one.conf
    assert_refusal 1 "$HOST/out/one.conf: has another mode (0600) than the list gives it (change the mode in the list, or that of the file to 0640)"
    assert_host_unchanged
}

@test "a working copy that is a link stays one, and what it was made from is known" {
    mkdir elsewhere
    mv etc/one.conf elsewhere/one.conf
    ln -s ../elsewhere/one.conf etc/one.conf
    zet commit-config
    cp templates/one.conf newer
    sed -i 's/main/newer/' newer
    cp newer templates/one.conf
    run_zet template status one.conf
    [[ $output == *"newer shipped"* ]] || differ status newer "$output"
    echo more >>out/one.conf
    zet adopt out/one.conf
    run_zet template status one.conf
    [[ $output == *"edited, newer shipped"* ]] || differ status newer "$output"
    run_zet template upgrade one.conf
    assert_status 0
    zet -q commit-config
    echo most >>out/one.conf
    run_zet adopt out/one.conf
    assert_success "$HOST/elsewhere/one.conf: changed, with the edit of $HOST/out/one.conf"
    assert_equal "$(readlink etc/one.conf)" ../elsewhere/one.conf
    assert_equal "$(tail -n 2 etc/one.conf)" $'more\nmost'
    run_zet status
    assert_status 0
    run_zet template status one.conf
    [[ $output == *edited* && $output != *newer* ]] || differ status edited "$output"
}

@test "a file without a notice keeps the line that has to stay its first" {
    local first
    for first in '#!/bin/sh' '<?xml version="1.0"?>' '{'; do
        : >templates/targets.toml
        rm -f etc/script
        add_target script "$first"$'\necho ${realm}\nX=1\n' 'notice = false'
        zet -q commit-config
        sed -i 's/^X=1/X=2/' out/script
        run_zet adopt out/script
        assert_status 0
        assert_file etc/script "$first"$'\necho ${realm}\nX=2\n'
        run_zet status
        assert_status 0
    done
}

@test "a value of several lines stays a placeholder, and is refused where it was changed" {
    mkdir etc/values.d
    printf 'one\ntwo\n' >etc/values.d/more
    add_target more.conf $'head\n${more} of ${realm}\nlast\n'
    zet -q commit-config
    sed -i 's/^head/first/; $a tail' out/more.conf
    run_zet adopt out/more.conf
    assert_status 0
    assert_file etc/more.conf $'first\n${more} of ${realm}\nlast\ntail\n'
    run_zet status
    assert_status 0
    local edit line
    for edit in 's/^one/1/' 's/^two/2/' '/^two/d' '/^one/a between' '/^one/{N;s/\(.*\)\n\(.*\)/\2\n\1/}'; do
        zet -q commit-config --on-edit=overwrite
        sed -i "$edit" out/more.conf
        remember_host
        run_zet adopt out/more.conf
        assert_status 1
        [[ $stderr == *"$HOST/out/more.conf:1"[2-4]": the value of \${more}, \${realm} does not stand in it, or in more than one way (change the parameter, or edit $HOST/etc/more.conf by hand)"* ]] || differ stderr value "$stderr"
        assert_host_unchanged
    done
    zet -q commit-config --on-edit=overwrite
    sed -i '/^one/,/^two/d' out/more.conf
    run_zet adopt out/more.conf
    assert_status 0
    assert_file etc/more.conf $'first\nlast\ntail\n'
    run_zet status
    assert_status 0
}

@test "a mode by which others may write is not adopted by root, who would not use the template" {
    need_root
    chmod 666 out/one.conf
    remember_host
    run_zet adopt out/one.conf
    assert_refusal 1 "$HOST/out/one.conf: others may write it (mode 0666), and root uses no template that others may write (chmod go-w it, or give the mode in the list)"
    assert_host_unchanged
    # The group of root is no other.
    chmod 664 out/one.conf
    zet -q adopt out/one.conf
    run_zet check-config
    assert_status 0
}

@test "an edit with --force can be adopted, also with a hand's behind it" {
    zet -q line set --force --no-markers out/one.conf '^last' 'last of all'
    run_zet adopt out/one.conf
    assert_success "$HOST/etc/one.conf: changed, with the edit of $HOST/out/one.conf"
    run_zet status
    assert_status 0
    zet -q line set --force --no-markers out/one.conf '^last' 'last'
    echo more >>out/one.conf
    zet -q line set --force --no-markers out/one.conf '^more' 'more of it'
    cp out/one.conf edited
    run_zet adopt out/one.conf
    assert_adopted $'# --ZET_TEMPLATE_COMMENT--\n# why\n# --ZET_COMMENT_END--\n[main]\nrealm = ${realm}\nlast\nmore of it\n'
    # Nobody can tell the edit from a change of the template.
    zet -q line set --force --no-markers out/one.conf '^last' 'first'
    echo other >>etc/one.conf
    run_zet adopt out/one.conf
    assert_status 1
    [[ $stderr == *"its template or a parameter changed since the last commit"* ]]
}

@test "managed blocks are not of the template" {
    local words="holds markers of an edit, which are not of the template (make the edit with --no-markers, or take the markers and the kept former lines out)"
    echo 'opt=1' >>etc/one.conf
    zet -q commit-config
    zet -q param set --force out/one.conf opt 3
    local line
    line=$(grep -n PRE-ZET out/one.conf | cut -d: -f1)
    remember_host
    run_zet adopt out/one.conf
    assert_refusal 1 "$HOST/out/one.conf:$line: $words"
    run_zet adopt -n out/one.conf
    assert_refusal 1 "$HOST/out/one.conf:$line: $words"
    assert_host_unchanged
    sed -i -e '/PRE-ZET/d' -e '/^# -*ZET_BEGIN/d' -e '/^# -*ZET_END/d' out/one.conf
    cp out/one.conf edited
    run_zet adopt out/one.conf
    assert_adopted $'# --ZET_TEMPLATE_COMMENT--\n# why\n# --ZET_COMMENT_END--\n[main]\nrealm = ${realm}\nlast\nopt=3\n'
    zet -q param set --force --no-markers out/one.conf opt 5
    cp out/one.conf edited
    run_zet adopt out/one.conf
    assert_adopted $'# --ZET_TEMPLATE_COMMENT--\n# why\n# --ZET_COMMENT_END--\n[main]\nrealm = ${realm}\nlast\nopt=5\n'
}

@test "a template that cannot be rendered is told before anything is asked of it" {
    echo more >>out/one.conf
    ln -sf gone etc/one.conf
    run_zet adopt out/one.conf
    assert_refusal 1 "$HOST/etc/one.conf: is a link that leads nowhere (remove it, or make what it names)"
}
