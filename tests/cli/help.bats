# What shows a command's words: "--help", "help", and the manual where there is one.

load helper

setup() {
    make_host
    unset LESS
}

teardown() {
    remove_host
}

# make_manual STATUS: a manual that says what it is asked for; looking for a page has this exit status.
make_manual() {
    mkdir -p "$BASE/bin"
    cat >"$BASE/bin/man" <<-END
		#!/bin/sh
		[ "\$1" != -w ] || exit $1
		echo "the page of \$*, LESS=\$LESS"
	END
    chmod 755 "$BASE/bin/man"
    export PATH=$BASE/bin:$PATH
}

# without_man: a PATH with what the tests need themselves, and no manual.
without_man() {
    local name
    for name in bash cat env script; do ln -s "$(command -v "$name")" "$BASE/bin/"; done
    echo "$BASE/bin"
}

@test "the help of a command is that of its option, and needs no configuration" {
    local command
    rm zet.conf
    for command in '' commit-config param 'param set'; do
        # shellcheck disable=SC2086
        run_zet $command --help
        local expected=$output
        # shellcheck disable=SC2086
        run_zet help $command
        assert_success "${expected%$'\n'}"
    done
}

@test "the help is in the document" {
    run_zet help status
    local expected=$output
    run_zet help status --json
    assert_status 0
    assert_json 'd["command"], d["exit_status"]' '["help", 0]'
    assert_json 'd["text"].rstrip()' "${expected%%$'\n\n'}"
}

@test "help for a command that does not exist is wrong use" {
    run_zet help frobnicate
    assert_refusal 2 'unknown command "frobnicate" (see "zet-client --help")'
    run_zet help parm
    assert_refusal 2 'unknown command "parm" (did you mean "param"? see "zet-client --help")'
    run_zet help param gte
    assert_refusal 2 'unknown command "gte" (did you mean "get"? see "zet-client --help")'
    run_zet help status get
    assert_refusal 2 'unknown command "get" (see "zet-client --help")'
}

@test "on a terminal, help is the manual's page, at the command" {
    make_manual 0
    on_terminal help
    assert_success "the page of zet-client, LESS="
    on_terminal help param set
    assert_success "the page of zet-client, LESS=+/^COMMANDS
/^ {7}param ([a-z]+[|])*set"
}

@test "without a terminal, or for a document, help asks no manual" {
    make_manual 0
    run_zet help
    [[ $output == "Write, edit and take back"* ]]
    on_terminal help --json
    [[ $output == "{"* ]]
}

@test "on a terminal without the page, or without a manual, help prints the text" {
    make_manual 16
    on_terminal help status
    [[ $output == "Tell the role and the state of each target"$'\n'* ]]
    rm "$BASE/bin/man"
    PATH=$(without_man) on_terminal help status
    [[ $output == "Tell the role and the state of each target"$'\n'* ]]
}
