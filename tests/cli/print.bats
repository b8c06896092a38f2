# template process NAME -: the rendering on standard output.

load helper

setup() {
    umask 022
    make_host
    printf 'realm = ${realm}\nextra = ${extra}\n' >templates/one.conf
}

teardown() {
    remove_host
}

@test "a rendering is printed, to the byte what the file would hold, and nothing is written" {
    printf 'realm = ${realm}\n${extra} without line feed' >templates/two.conf
    local made
    for name in one.conf two.conf; do
        remember_host
        run_zet template process "$name" - --value extra=more
        assert_status 0
        assert_stderr ""
        assert_host_unchanged
        assert_absent ./-
        assert_equal "$(names_in "$TMPDIR")" ""
        made=$output
        zet -q template process "$name" made --value extra=more
        assert_file made "$made"
        rm -r made* etc/*
    done
}

# names_in DIRECTORY: all that is below it.
names_in() {
    find "$1" -mindepth 1
}

@test "a file called - has a directory before its name" {
    run_zet template process one.conf ./- --value extra=more
    assert_status 0
    [[ -f ./- ]]
}

@test "the document has the rendering" {
    run_zet --json template process one.conf - --value extra=more
    assert_status 0
    assert_json 'd["text"].splitlines()[-2:], d["secret"], d["files"]' '[["realm = EXAMPLE.ORG", "extra = more"], false, []]'
    printf 'caf\xe9\n' >templates/bytes.conf
    run_zet --json template process bytes.conf -
    assert_json 'd["text"].splitlines()[-1], d["text_lossy"]' '["caf\ufffd", true]'
}

@test "a template that would be refused is not printed" {
    remember_host
    run_zet template process one.conf -
    assert_refusal 1 "$HOST/templates/one.conf:2:9: placeholder \"\${extra}\" has no value (use one that \"values\" lists, correct its name, or write \$NAME for another program)"
    run_zet --json template process one.conf -
    assert_json 'd["text"], len(d["problems"])' '[null, 1]'
    run_zet template process missing -
    assert_refusal 1 "$HOST/templates/missing: the template is missing (correct its name, or ZET_CFG_TEMPL_DIR)"
    run_zet template process one.conf - --value '${extra}=x'
    assert_status 2
    assert_host_unchanged
}

@test "a rendering is printed where nothing can be written" {
    need_root
    copy_programs
    remember_host
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" template process one.conf - --value extra=x
    assert_status 0
    assert_equal "${output##*$'\n'e}" $'xtra = x\n'
    assert_host_unchanged
}

@test "a dry run prints the rendering, too" {
    run_zet template process -n one.conf - --value extra=more
    assert_status 0
    [[ $output == *"extra = more"* ]]
}

@test "what the list calls secret is printed to whoever asks for secrets" {
    printf '[templates."one.conf"]\ntarget = "%s"\nroles = "both"\nsecret = true\n' "$HOST/made" >templates/targets.toml
    run_zet template process one.conf - --value extra=word
    assert_refusal 1 "$HOST/templates/one.conf: its text is not shown: the list of targets calls it secret (--show-secrets shows it)"
    run_zet --json template process one.conf - --value extra=word
    assert_status 1
    assert_json 'd["secret"], d["text"]' '[true, null]'
    [[ $output$stderr != *word* ]]
    run_zet --show-secrets template process one.conf - --value extra=word
    assert_status 0
    [[ $output == *word* ]]
}

@test "what others may not read is printed to whoever may" {
    chmod 640 templates/one.conf
    run_zet --json template process one.conf - --value extra=word
    assert_status 0
    assert_json 'd["secret"], d["text"].splitlines()[-1]' '[true, "extra = word"]'
}
