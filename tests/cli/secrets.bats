# Text that is not for everybody: what the list of targets calls secret, and what others may not read.

load helper

setup() {
    umask 022
    make_host
    printf 'a=1\nb=2\n' >conf
}

teardown() {
    remove_host
}

# make_secret: the template "a" is listed with a secret target, and committed over a former text.
make_secret() {
    mkdir t
    echo 'pass=earlier' >t/a
    echo 'pass=word' >templates/a
    printf '[templates."a"]\ntarget = "%s"\nroles = "both"\nsecret = true\n' "$HOST/t/a" >templates/targets.toml
    zet -q commit-config
}

# assert_nothing_shown COMMAND...: a change, but neither its text nor that of the file, in no form of the report.
# An edit of a reserve is refused.
assert_nothing_shown() {
    local form expected=${WANTED:-3}
    [[ $* != "param "*.before_zet\ * && $* != "line "*.before_zet\ * && $* != "file strip "*.before_zet ]] || expected=1
    for form in "" --json; do
        run_zet $form -n --diff "$@"
        assert_status "$expected"
        [[ $output$stderr != *earlier* && $output$stderr != *word* && $output$stderr != *hidden* ]] || {
            differ "$*" "nothing secret" "$output$stderr"
            return 1
        }
    done
}

@test "the text of a secret target is not shown of the files that hold a copy of it either" {
    make_secret
    zet template install --force a
    cp etc/a etc/a.old
    cp t/a.before_zet t/a.before_zet.before_zet
    local file
    for file in t/a t/a.before_zet t/a.before_zet.before_zet etc/a etc/a.old templates/a t/../etc//a.old; do
        assert_nothing_shown param set --force "$file" new hidden
    done
    assert_nothing_shown file restore t/a
    assert_nothing_shown file reserve templates/a
    assert_nothing_shown file reserve etc/a.old
    ln -s t/a.before_zet link
    WANTED=1 assert_nothing_shown param set link new hidden
}

@test "a file beside a secret one is shown" {
    make_secret
    for file in t/b t/a.d conf; do
        echo 'pass=open' >"$file"
        run_zet param set --no-markers -n --diff "$file" pass free
        assert_status 3
        [[ $output == *-pass=open*+pass=free* ]]
        assert_stderr ""
    done
}

@test "the text of a secret template is not shown of a file that was made of it elsewhere" {
    make_secret
    echo 'open=1' >templates/b
    zet -q template process a elsewhere
    zet -q template process b plain
    cp elsewhere elsewhere.old
    local file
    for file in elsewhere elsewhere.old elsewhere.before_zet; do
        [[ -e $file ]] || cp elsewhere "$file"
        assert_nothing_shown param set "$file" new hidden
        assert_nothing_shown line set "$file" ^new 'new = hidden'
        assert_nothing_shown file strip "$file"
        run_zet --json line get "$file" word
        assert_status 1
        assert_json 'd["found"], d["secret"], d["line"]' '[null, true, null]'
        run_zet --json explain "$file"
        assert_json 'd["secret"]' true
        [[ $output != *word[!s]* ]]
    done
    assert_nothing_shown template process b elsewhere
    run_zet --json explain plain
    assert_json 'd["secret"]' false
    run_zet param set -n --diff plain new open
    [[ $output == *+new=open* ]]
    run_zet file strip --diff elsewhere
    assert_success "elsewhere: changed, the original is kept as elsewhere.before_zet
elsewhere: lines 2-6 changed (text not shown: the list of targets calls it secret; --show-secrets shows it)"
}

@test "a lookup shows what the list calls secret only to a reader who asks for secrets" {
    make_secret
    echo pw=hunter2 >t/a
    local get
    for get in "param get t/a pw" "line get t/a ^pw"; do
        run_zet $get
        assert_refusal 1 "t/a: its text is not shown: the list of targets calls it secret (--show-secrets shows it)"
        run_zet --json $get
        assert_status 1
        [[ $output$stderr != *hunter2* ]]
        assert_json 'd["found"], d["secret"], d.get("value", d.get("line"))' '[null, true, null]'
    done
    run_zet --show-secrets param get t/a pw
    assert_success hunter2
    run_zet --show-secrets line get t/a ^pw
    assert_success pw=hunter2
    run_zet --json --show-secrets param get t/a pw
    assert_status 0
    assert_json 'd["found"], d["secret"], d["value"]' '[true, true, "hunter2"]'
    run_zet --json param get conf a
    assert_json 'd["secret"], d["value"]' '[false, "1"]'
}

@test "a lookup shows what others may not read to whoever asks for it and may" {
    chmod 640 conf
    run_zet param get conf a
    assert_success 1
    run_zet --json line get conf ^b
    assert_status 0
    assert_json 'd["found"], d["secret"], d["line"]' '[true, true, "b=2"]'
}

@test "the diff of what others may not read tells only where the lines are" {
    chmod 640 conf
    run_zet param set -n --diff conf a word
    assert_status 3
    assert_output "conf: would be changed
conf: lines 1-11 changed (text not shown: the file is not for everybody; --show-secrets shows it)"
    assert_stderr ""
    run_zet --json param set -n --diff conf a word
    assert_json 'd["files"][0]["secret"], d["files"][0]["diff"], d["files"][0]["changed_lines"]' \
        '[true, null, ["conf: lines 1-11 changed"]]'
    [[ $output != *word* ]]
    run_zet --show-secrets param set -n --diff conf a word
    [[ $output == *+a=word* ]]
    run_zet --json --show-secrets param set -n --diff conf a word
    assert_json 'd["files"][0]["secret"], "+a=word" in d["files"][0]["diff"], d["files"][0]["changed_lines"]' '[true, true, null]'
    chmod 644 conf
    run_zet --json param set -n --diff conf a word
    assert_json 'd["files"][0]["secret"], "+a=word" in d["files"][0]["diff"], d["files"][0]["changed_lines"]' '[false, true, null]'
}

@test "the copies of what others may not read are as private, whatever their mode" {
    chmod 600 conf
    local file
    for file in conf.before_zet conf.old; do
        echo 'a=earlier' >"$file"
        chmod 644 "$file"
        assert_nothing_shown param set "$file" a word
    done
    ln -s conf link
    assert_nothing_shown param set link a word
    ln conf other
    assert_nothing_shown param set other a word
}

@test "the diff of a restore shows nothing when either text is one that others may not read" {
    zet -q param set conf a word
    assert_diff_of_restore '+a=1'
    chmod 600 conf.before_zet
    assert_diff_of_restore ''
    chmod 644 conf.before_zet
    chmod 600 conf
    assert_diff_of_restore ''
}

# assert_diff_of_restore LINE: it is shown; empty: no line is.
assert_diff_of_restore() {
    run_zet file restore -n --diff conf
    assert_status 3
    if [[ -n $1 ]]; then
        grep -qxF -- "$1" <<<"$output"
    else
        [[ $output != *'@@'* && $output != *word* && $output != *a=1* ]]
        [[ $output == *"conf: line 1 changed (text not shown: the file is not for everybody"* ]]
    fi
}

@test "explain and doctor show no text of a file that others may not read" {
    zet -q param set conf a word
    printf '# ---ZET_BEGIN---\nhidden\n' >>conf
    chmod 640 conf
    local command
    for command in explain doctor; do
        for form in "" --json; do
            run_zet $form "$command" conf
            [[ $output$stderr != *word[!s]* && $output$stderr != *hidden* && $output$stderr != *a=1* ]]
            [[ $stderr == *"text not shown: the file is not for everybody; --show-secrets shows it"* ]]
        done
        assert_json 'd["secret"]' true
        run_zet --show-secrets "$command" conf
        [[ $output == *hidden* ]]
        assert_stderr ""
    done
    run_zet --json explain conf
    assert_json '{r["content"] for r in d["regions"]} == {r["former_text"] for r in d["regions"]} == {None}' true
    run_zet --json doctor conf
    assert_json 'd["repair"]' null
}

@test "the numbers of the lines that a repair changes are told" {
    printf '# ---ZET_BEGIN---\nhidden\n' >>conf
    chmod 640 conf
    run_zet doctor conf
    assert_status 1
    assert_stderr "zet-client: conf: the repair: line 5 changed (text not shown: the file is not for everybody; --show-secrets shows it)"
}

@test "a commit and its rollback show no text of a target that others may not read" {
    mkdir t
    echo 'pass=earlier' >t/a
    echo 'pass=word' >templates/a
    printf '[templates."a"]\ntarget = "%s"\nroles = "both"\n' "$HOST/t/a" >templates/targets.toml
    local closed form
    for closed in t/a templates/a; do
        chmod 640 "$closed"
        for form in "" --json; do
            run_zet $form commit-config -n --diff
            assert_status 3
            [[ $output$stderr != *earlier* && $output$stderr != *word* ]]
        done
        assert_json 'd["targets"][0]["secret"], d["targets"][0]["diff"]' '[true, null]'
        zet -q commit-config
        for form in "" --json; do
            run_zet $form rollback-config -n --diff
            assert_status 3
            [[ $output$stderr != *earlier* && $output$stderr != *word* ]]
        done
        assert_json 'd["targets"][0]["secret"], d["targets"][0]["diff"]' '[true, null]'
        run_zet --show-secrets rollback-config --diff
        [[ $output == *+pass=earlier* ]]
        chmod 644 "$closed"
        rm -r etc/*
    done
}

@test "what a check command says of a rendering that others may not read is left out" {
    mkdir t
    echo 'pass=word' >templates/a
    chmod 640 templates/a
    printf '[templates."a"]\ntarget = "%s"\nroles = "both"\ncheck = ["grep", "-c", "nothing", "{}", "/dev/null", "{}"]\n' "$HOST/t/a" >templates/targets.toml
    sed -i 's/^check.*/check = ["cat", "{}", "missing-file"]/' templates/targets.toml
    run_zet commit-config
    assert_status 1
    [[ $stderr == *"with status 1 (correct the template)"*"(text not shown: the file is not for everybody; --show-secrets shows it)"* ]]
    [[ $stderr != *word* ]]
    run_zet --show-secrets commit-config
    [[ $stderr == *word* ]]
}

@test "a problem quotes nothing of a template that is not for everybody" {
    mkdir t
    printf '${word}\n' >templates/a
    printf '[templates."a"]\ntarget = "%s"\nroles = "both"\nsecret = true\n' "$HOST/t/a" >templates/targets.toml
    run_zet check-config
    assert_status 1
    assert_output "$HOST/templates/a:1:1: placeholder \"...\" has no value, text not shown: the list of targets calls it secret; --show-secrets shows it (use one that \"values\" lists, correct its name, or write \$NAME for another program)"
    local command
    for command in check-config commit-config 'template process a x'; do
        run_zet --json $command
        [[ $output$stderr != *word* ]]
    done
    run_zet --show-secrets check-config
    [[ $output == *'"${word}"'* ]]
    sed -i /secret/d templates/targets.toml
    chmod 640 templates/a
    run_zet check-config
    [[ $output != *word* && $output == *'"..." has no value, text not shown: the file is not for everybody'* ]]
}

@test "a problem quotes no value of a configuration file that others may not read" {
    mkdir t
    printf '${domain} ${other}\n' >templates/a
    printf '[templates."a"]\ntarget = "%s"\nroles = "both"\n' "$HOST/t/a" >templates/targets.toml
    sed -i 's/^DOMAIN=.*/DOMAIN=${word}/' zet.conf
    run_zet check-config
    [[ $output == *'"${word}"'* && $output == *'"${other}"'* ]]
    chmod 640 zet.conf
    run_zet check-config
    [[ $output != *word* && $output == *'"${other}"'* ]]
}

@test "the log does not name what a secret template holds" {
    mkdir t
    printf '# --ZET_TEMPLATE_COMMENT--\n${word}\n# --ZET_COMMENT_END--\npass\n' >templates/a
    printf '[templates."a"]\ntarget = "%s"\nroles = "both"\n' "$HOST/t/a" >templates/targets.toml
    run_zet --json commit-config
    assert_status 0
    [[ $output == *'${word}'* && $stderr == *'${word}'* ]]
    zet -q rollback-config
    echo 'secret = true' >>templates/targets.toml
    local command
    for command in commit-config 'template process a x' 'template process -n a y' 'status'; do
        run_zet --json $command
        [[ $output$stderr != *word* ]]
    done
}

@test "a hard link and a copy of a secret file are as secret as the file" {
    make_secret
    ln t/a link
    cp templates/a copy
    cp t/a.before_zet elsewhere
    echo other >plain
    local file
    for file in link copy elsewhere; do
        assert_nothing_shown param set "$file" new hidden
    done
    run_zet param get copy pass
    assert_refusal 1 "copy: its text is not shown: the list of targets calls it secret (--show-secrets shows it)"
    run_zet param set -n --diff plain new open
    [[ $output == *+new=open* ]]
}

@test "a private text that a link leads to is not shown" {
    echo word >"$BASE/closed"
    chmod 640 "$BASE/closed"
    ln -s "$BASE/closed" templates/linked
    run_zet template install -n --diff linked
    assert_status 3
    assert_output "$HOST/etc/linked: would be created
$HOST/etc/linked: line 1 changed (text not shown: the file is not for everybody; --show-secrets shows it)"
}

@test "a diff that breaks off shows nothing of what it had printed" {
    mkdir "$BASE/bin"
    printf '#!/bin/sh\necho "+word"\necho "diff: out of memory" >&2\nexit 2\n' >"$BASE/bin/diff"
    chmod +x "$BASE/bin/diff"
    chmod 640 conf
    PATH=$BASE/bin:$PATH
    run_zet param set -n --diff conf a word
    assert_refusal 1 "conf: no diff can be made, as diff ends with status 2 (run the command again)
  diff: out of memory"
}

@test "the values are printed to whoever may read the configuration file" {
    chmod 600 zet.conf
    run_zet values
    assert_status 0
    [[ $output == *domain=example.org* ]]
    run_zet --json option get DOMAIN
    assert_json 'd["secret"], d["value"]' '[true, "example.org"]'
    run_zet option set -n --diff DOMAIN word.org
    assert_status 3
    [[ $output == *"line 1 changed"* && $output != *word* ]]
}

@test "as long as the list of targets is broken, no text is shown" {
    make_secret
    sed -i s/secret/secert/ templates/targets.toml
    assert_nothing_shown param set --force t/a new hidden
    assert_nothing_shown param set etc/a new hidden
    assert_nothing_shown template process a t/q
    run_zet param set -n --diff conf new hidden
    assert_output "conf: would be changed
conf: lines 1-7, 10-13 changed (text not shown: nobody can tell whether it is secret; --show-secrets shows it)"
    assert_stderr "zet-client: warning: $HOST/templates/targets.toml: the list of targets is broken (see check-config);\
 so no text is shown"
    zet -q param set --force t/a new hidden
    run_zet explain t/a
    [[ $output$stderr != *word* && $output$stderr != *hidden* ]]
    [[ $stderr == "zet-client: warning: $HOST/templates/targets.toml: the list of targets is broken (see check-config);\
 so no text is shown"$'\n'* ]]
    run_zet param get conf a
    assert_success 1
}

@test "a committed file that left the list of targets is as secret as it may have been, for both roles" {
    make_secret
    rm templates/targets.toml
    PROGRAM=$ZET_BIN/zet-init
    for role in server client; do
        assert_nothing_shown param set --force t/a new hidden
        assert_nothing_shown param set t/a.before_zet new hidden
        run_zet param set --no-markers -n --diff conf new open
        [[ $output == *+new=open* ]]
        assert_stderr ""
        PROGRAM=$ZET_BIN/zet-client
    done
    : >templates/targets.toml
    assert_nothing_shown param set --force t/a new hidden
    printf '[templates."a"]\ntarget = "%s"\nroles = "both"\n' "$HOST/t/a" >templates/targets.toml
    run_zet param set --force -n --diff t/a new open
    [[ $output == *+new=open* ]]
}

@test "a history that cannot be read keeps every text from being shown" {
    make_secret
    echo ZET_HISTORY=no >>zet.conf
    break_store
    : >conf.before_zet
    assert_nothing_shown param set conf new hidden
    [[ $stderr == *"/state/state.db: "*"; so no text is shown"$'\n' ]]
}

@test "the working copy of a secret template is not shown when no list has the template any more" {
    local target
    make_secret
    for target in listed "taken back"; do
        zet -q line set etc/a ^pass pass=hidden
        : >templates/targets.toml
        [[ $target == listed ]] || zet -q commit-config
        assert_nothing_shown undo
        run_zet history show 2 etc/a
        [[ $output$stderr != *word* ]] || differ "history show" "nothing secret" "$output$stderr"
        run_zet -n --diff --show-secrets undo
        [[ $output == *pass=word* ]] || differ undo "the text" "$output"
    done
}

# make_targets COUNT SECRET: a set of so many targets of one size, of which so many are secret, instead of the former one.
make_targets() {
    local i
    rm -rf t etc/* templates/* state/state.db* state/*.status
    mkdir t
    for ((i = 101; i <= 100 + $1; ++i)); do
        echo "key=$i" >"templates/$i"
        printf '[templates."%s"]\ntarget = "%s"\nroles = "both"\n' "$i" "$HOST/t/$i"
        ((i > 100 + $2)) || echo 'secret = true'
    done >templates/targets.toml
}

# calls_of WORD...: how many system calls the command takes.
calls_of() {
    strace -f -qq -c -U calls,name -o "$BASE/calls" "$ZET_BIN/zet-client" --config zet.conf "$@" >"$BASE/output"
    awk '$2 == "total" { print $1 }' "$BASE/calls"
}

@test "to tell the log of a commit, nobody looks whose eyes its files are for" {
    local count secret quiet logged
    for secret in 0 12; do
        make_targets 24 $secret
        quiet=$(calls_of -m why commit-config)
        make_targets 24 $secret
        logged=$(calls_of -m why --log=syslog commit-config)
        ((logged < quiet + 100)) || differ "calls with $secret secret targets" "$quiet and less than 100" "$logged"
    done
}

@test "to judge twice the files beside twice the secret ones takes no more than twice the looks" {
    local words count
    local -a calls
    for words in "--json commit-config" "--json history show 1" "--json --diff commit-config -n" "-q commit-config"; do
        calls=()
        for count in 12 24 48; do
            make_targets $count $((count / 2))
            [[ $words != *history* ]] || zet -q commit-config
            # shellcheck disable=SC2086  # several words
            calls+=("$(calls_of $words || true)")
        done
        (((calls[2] - calls[1]) * 2 < (calls[1] - calls[0]) * 5)) || differ "calls of $words" "linear" "${calls[*]}"
    done
}

@test "a commit that makes a secret target tells a copy of it by its text" {
    make_targets 3 0
    # What it is made of is no copy of the other: only what comes out is the same.
    echo 'realm=${realm}' >templates/a
    echo 'realm=EXAMPLE.ORG' >templates/b
    echo 'realm=EXAMPLE.COM' >templates/c
    local name
    for name in first a b c; do
        [[ $name != first ]] || cp templates/c templates/first
        printf '[templates."%s"]\ntarget = "%s"\nroles = "both"\nnotice = false\n' "$name" "$HOST/t/$name"
        [[ $name != a ]] || echo 'secret = true'
    done >templates/targets.toml
    run_zet --json commit-config
    assert_status 0
    assert_json '[(f["path"][-1], f["secret"]) for f in d["targets"]]' '[["t", false], ["a", true], ["b", true], ["c", false]]'
}
