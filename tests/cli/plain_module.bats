# The commands with a module that has nothing beyond the contract: what they make is the same.

load helper
load set

PLAIN=$ZET_BIN/../tests/module/libzet-plain-module.so

setup() {
    need_module_file
    make_set
    add_target plain.conf $'realm = ${realm}\n${unknown}\n'
    add_target noted.conf $'# --ZET_TEMPLATE_COMMENT--\nnot for the target\n# --ZET_COMMENT_END--\n\n\nserver = ${server}' 'mode = "0600"'
    add_target bare.conf $'domain = ${domain}\n' 'notice = false'
    original plain.conf $'old\n'
}

teardown() {
    [[ -z ${BASE:-} ]] || remove_host
}

# life MODULE...: what the commands say and leave in a host's life, all with these options.
life() {
    rm -rf out state etc
    mkdir out state etc
    original plain.conf $'old\n'
    local words
    for words in "commit-config -n --diff" commit-config commit-config "status --diff" "check-config" \
        "template process --stdout plain.conf"; do
        echo "== $words"
        # shellcheck disable=SC2086  # words
        zet "$@" $words 2>&1 || echo "status $?"
    done
    printf 'realm = by hand\n' >etc/plain.conf
    printf 'edited\n' >>out/bare.conf
    zet "$@" status --diff 2>&1 || echo "status $?"
    zet "$@" commit-config --on-edit=merge 2>&1 || echo "status $?"
    (cd out && stat -c '%n %a' -- * && tail -n +1 -- *)
}

@test "what is made of templates, and told of them, is the same" {
    [[ -e $PLAIN ]]
    life >"$BASE/shipped"
    life --module "$PLAIN" >"$BASE/plain"
    grep -q 'realm = ' "$BASE/shipped"
    diff "$BASE/shipped" "$BASE/plain"
}
