load helper

setup() {
    make_host
    # That a line came with a change is told, and looked at, where the history is.
    echo ZET_HISTORY=no >>zet.conf
    printf 'realms\nkdc=old\nmore\n' >conf
}

teardown() {
    remove_host
}

# A file that is made from a template, in the list of targets.
make_file() {
    cat >templates/a.conf <<-'END'

		# --ZET_TEMPLATE_COMMENT--
		# about
		# --ZET_COMMENT_END--
		[one]
		# ${realm} is not replaced in a comment
		realm = ${realm}
		both = ${domain} ${realm} ${domain}
		[two]
	END
    printf '[templates."a.conf"]\ntarget = "%s"\nroles = "both"\n' "$HOST/made" >templates/targets.toml
    zet -q commit-config
}

@test "an empty name of a file is wrong use" {
    local file
    for file in '' :1; do
        run_zet explain "$file"
        assert_refusal 2 "FILE is empty (name a file)"
    done
}

@test "FileThatTheSystemNeverTouchedIsTheAdministrators" {
    remember_host
    run_zet explain conf
    assert_success "conf: not made from a template
conf:1: lines 1 to 3: the administrator's own"
    assert_host_unchanged
}

@test "EmptyFileHasNothingToExplain" {
    : >empty
    run_zet explain empty
    assert_success "empty: not made from a template"
    run_zet explain empty:1
    assert_refusal 2 "empty: has no line 1 (it has 0 lines)"
}

@test "EditedFileIsExplainedRegionByRegion" {
    zet -q param set conf kdc new
    zet -q param set conf fresh 1
    run_zet explain conf
    assert_success "conf: not made from a template; before: conf.before_zet
conf:1: lines 1 to 7: the notice
conf:8: the administrator's own
conf:9: kept former line of the managed block that begins in line 10: \"kdc=old\"
conf:10: lines 10 to 12: managed block: \"kdc=new\"; before: \"kdc=old\", kept in line 9
conf:13: the administrator's own
conf:14: empty line, put there before the managed block that was appended after it
conf:15: lines 15 to 17: managed block: \"fresh=1\"; appended, nothing stood there before"
}

@test "OneLineIsExplained" {
    zet -q param set conf kdc new
    local line
    for line in 10 11 12; do
        run_zet explain "conf:$line"
        assert_success "conf:$line: lines 10 to 12: managed block: \"kdc=new\"; before: \"kdc=old\", kept in line 9"
    done
    run_zet explain conf:8
    assert_success "conf:8: the administrator's own; before: conf.before_zet"
    run_zet explain conf:3
    assert_success "conf:3: lines 1 to 7: the notice"
}

@test "BlockOfSeveralLinesIsToldWithTheirNumber" {
    printf '# ---ZET_BEGIN---\na\nb\nc\n# ----ZET_END----\n' >conf
    run_zet explain conf:2
    assert_success 'conf:2: lines 1 to 5: managed block: "a" and 2 more lines; appended, nothing stood there before'
    run_zet --json explain conf
    assert_json 'd["regions"][0]["content"]' '["a", "b", "c"]'
}

@test "BlockWithoutEndSendsTheReaderToTheDoctor" {
    printf '# ---ZET_BEGIN---\na\n' >conf
    run_zet explain conf:2
    assert_success 'conf:2: lines 1 to 2: managed block, without an end marker (see doctor): "a"; appended, nothing stood there before'
}

@test "LineOutOfRangeIsWrongUse" {
    run_zet explain conf:4
    assert_refusal 2 "conf: has no line 4 (it has 3 lines)"
    run_zet explain conf:0
    assert_refusal 2 "conf: has no line 0 (it has 3 lines)"
    run_zet explain conf:99999999999999999999999
    assert_refusal 2 "conf: has no line 99999999999999999999999 (it has 3 lines)"
    echo one >one
    run_zet explain one:2
    assert_refusal 2 "one: has no line 2 (it has 1 line)"
}

@test "NameThatEndsLikeALineWinsWhenTheFileIsThere" {
    echo text >conf:1
    run_zet explain conf:1
    assert_success "conf:1: not made from a template
conf:1:1: the administrator's own"
    run_zet explain conf:1:1
    assert_success "conf:1:1: the administrator's own"
    run_zet explain conf:2
    assert_success "conf:2: the administrator's own"
}

@test "NameWithoutALineNumberIsAName" {
    run_zet explain conf:
    assert_status 1
    [[ $stderr == "zet-client: error: conf:: "* ]]
    run_zet explain conf:x
    assert_status 1
    [[ $stderr == "zet-client: error: conf:x: "* ]]
}

@test "FileThatCannotBeReadIsAFailure" {
    run_zet explain nope:3
    assert_status 1
    assert_output ""
    [[ $stderr == "zet-client: error: nope: "* ]]
}

@test "KeptFormerLineWithoutABlockIsToldWithTheWayBack" {
    zet -q param set conf kdc new
    zet -q file strip conf
    run_zet explain conf:9
    assert_success 'conf:9: kept former line: "kdc=old"; its block was taken out or lost; "zet-client param restore conf kdc" brings it back'
    zet -q param restore conf kdc
    [[ $(tail -n 2 conf) == $'kdc=old\nmore' ]]
    printf '# --PRE-ZET-- no param\n' >other
    run_zet explain other:1
    assert_success 'other:1: kept former line: "no param"; its block was taken out or lost; "zet-client line restore other PATTERN" brings it back'
}

@test "MadeFileIsExplainedLineByLine" {
    make_file
    remember_host
    run_zet explain made
    assert_success "made: made from the template a.conf ($HOST/etc/a.conf); before: there was no such file
made:1: lines 1 to 10: the notice
made:11: lines 11 to 12: from lines 5 to 6 of the template a.conf
made:13: from line 7 of the template a.conf with \${realm}
made:14: from line 8 of the template a.conf with \${domain}, \${realm}
made:15: from line 9 of the template a.conf"
    assert_host_unchanged
}

@test "LineOfAMadeFileNamesItsTemplateLineAndWhatStoodThere" {
    echo before >made
    make_file
    run_zet explain made:12
    assert_success "made:12: from line 6 of the template a.conf; before: made.before_zet"
    run_zet explain made:13
    assert_success "made:13: from line 7 of the template a.conf with \${realm}; before: made.before_zet"
}

@test "MadeFileIsExplainedWithoutAListOfTargets" {
    make_file
    rm templates/targets.toml
    run_zet explain made:13
    assert_success "made:13: from line 7 of the template a.conf with \${realm}; before: there was no such file"
}

@test "PristineTemplateStandsInForAMissingWorkingCopy" {
    make_file
    rm etc/a.conf
    run_zet explain made
    assert_status 0
    assert_equal "${output%%$'\n'*}" \
        "made: made from the template a.conf ($HOST/templates/a.conf); before: there was no such file"
    run_zet explain made:13
    assert_success "made:13: from line 7 of the template a.conf with \${realm}; before: there was no such file"
}

@test "MadeFileWhoseTemplateIsGoneCannotBeTraced" {
    make_file
    rm etc/a.conf templates/a.conf
    run_zet explain made
    assert_success "made: made from the template a.conf: it is gone; before: there was no such file
made:1: lines 1 to 10: the notice
made:11: lines 11 to 15: cannot be traced to the template a.conf: it is gone"
}

@test "ChangedLineIsToldFromTheOthers" {
    make_file
    sed -i '13s/.*/other/' made
    run_zet explain made:13
    assert_success "made:13: in the place of line 7 of the template a.conf, but not made from it: the file was edited since, or the template changed; before: there was no such file"
    run_zet explain made:14
    assert_success "made:14: from line 8 of the template a.conf with \${domain}, \${realm}; before: there was no such file"
}

@test "OnlyWhatIsCertainIsTracedWhenTheNumbersOfLinesDiffer" {
    make_file
    sed -i '12a mine' made
    run_zet explain made
    assert_success "made: made from the template a.conf ($HOST/etc/a.conf): the file was edited since, or the template changed; before: there was no such file
made:1: lines 1 to 10: the notice
made:11: lines 11 to 12: from lines 5 to 6 of the template a.conf
made:13: cannot be traced to the template a.conf ($HOST/etc/a.conf): the file was edited since, or the template changed
made:14: from line 7 of the template a.conf with \${realm}
made:15: from line 8 of the template a.conf with \${domain}, \${realm}
made:16: from line 9 of the template a.conf"
}

@test "BlockInAMadeFileNamesTheLineThatItReplaced" {
    make_file
    zet -q line set --force made '^realm' 'realm = OTHER'
    run_zet explain made:15
    assert_success "made:15: lines 14 to 16: managed block: \"realm = OTHER\"; before: \"realm = EXAMPLE.ORG\", kept in line 13, from line 7 of the template a.conf with \${realm}"
    run_zet explain made:17
    assert_success "made:17: from line 8 of the template a.conf with \${domain}, \${realm}; before: there was no such file"
}

@test "AppendedBlockDoesNotMoveTheLinesOfAMadeFile" {
    make_file
    zet -q line set --force made '^fresh=' fresh=1
    run_zet explain made:15
    assert_success "made:15: from line 9 of the template a.conf; before: there was no such file"
    run_zet explain made:16
    assert_success "made:16: empty line, put there before the managed block that was appended after it"
}

@test "TargetThatWasNotMadeYetSaysSo" {
    make_file
    echo mine >made
    run_zet explain made
    assert_success "made: no notice says that it was made from the template a.conf, whose target it is; before: there was no such file
made:1: the administrator's own"
}

@test "LinesOfAValueOfSeveralLinesComeFromTheLineOfItsPlaceholder" {
    mkdir etc/values.d
    printf 'one\n\nthree\n' >etc/values.d/more
    printf 'head\nlist = ${more};\nlast ${realm}\n' >templates/a.conf
    printf '[templates."a.conf"]\ntarget = "%s"\nroles = "both"\n' "$HOST/made" >templates/targets.toml
    zet -q commit-config
    run_zet explain made
    assert_success "made: made from the template a.conf ($HOST/etc/a.conf); before: there was no such file
made:1: lines 1 to 10: the notice
made:11: from line 1 of the template a.conf
made:12: from line 2 of the template a.conf with \${more}
made:13: from line 2 of the template a.conf with \${more}
made:14: from line 2 of the template a.conf with \${more}
made:15: from line 3 of the template a.conf with \${realm}"
    sed -i '13s/.*/other/' made
    run_zet explain made:13
    assert_success "made:13: in the place of line 2 of the template a.conf, but not made from it: the file was edited since, or the template changed; before: there was no such file"
}

@test "ValueThatMayNotBeReadIsToldWhereItsLinesCannotBeTraced" {
    need_root
    copy_programs
    mkdir etc/values.d
    printf 'one\ntwo\n' >etc/values.d/more
    echo other >etc/values.d/unused
    printf 'head\nlist = ${more};\nlast ${realm}\n' >templates/a.conf
    printf '[templates."a.conf"]\ntarget = "%s"\nroles = "both"\n' "$HOST/made" >templates/targets.toml
    zet -q commit-config
    chmod 600 etc/values.d/more etc/values.d/unused
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" explain made:12
    assert_status 0
    [[ $stderr == *"zet-client: warning: $HOST/etc/values.d/more: cannot be read: Permission denied (run the command as a user who may); so lines that are reported as changed may come from a value that is not known"$'\n'* ]]
    [[ $stderr != *unused* ]]
    chmod 700 etc/values.d
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" explain made:12
    assert_status 0
    [[ $stderr == *"zet-client: warning: $HOST/etc/values.d: "*"; so lines that are reported as changed may come from a value that is not known"$'\n'* ]]
    # A value of one line needs not be known.
    chmod 755 etc/values.d
    echo one >etc/values.d/more
    zet -q commit-config
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" explain made:12
    assert_output "made:12: from line 2 of the template a.conf with \${more}; before: there was no such file"
    [[ $stderr != *values.d* ]]
}

@test "FileWithoutANoticeIsMadeAsTheHistorySays" {
    sed -i '/^ZET_HISTORY/d' zet.conf
    printf '#!/bin/sh\necho ${realm}\n' >templates/script
    printf '[templates."script"]\ntarget = "%s"\nroles = "both"\nnotice = false\n' "$HOST/made" >templates/targets.toml
    echo mine >made
    run_zet explain made
    assert_output "made: no notice says that it was made from the template script, whose target it is
made:1: the administrator's own"
    zet -q commit-config
    run_zet explain made
    [[ $output == "made: made from the template script ($HOST/etc/script); before: made.before_zet
made:1: from line 1 of the template script; since change 1, "*"
made:2: from line 2 of the template script with \${realm}; since change 1, "* ]] || differ output made "$output"
    run_zet --json explain made
    assert_json 'd["made_from"], d["template_file"]' "[\"script\", \"$HOST/etc/script\"]"
    zet -q rollback-config
    run_zet explain made
    [[ $output == "made: no notice says that it was made from the template script, whose target it is
made:1: the administrator's own; since change 2, "* ]] || differ output own "$output"
}

@test "TargetIsFoundThroughALink" {
    make_file
    ln -s made link
    run_zet explain "$HOST/link"
    [[ $output == "$HOST/made: made from the template a.conf ("* ]]
}

@test "ExplanationIsADocumentToo" {
    make_file
    zet -q line set --force made '^realm' 'realm = OTHER'
    run_zet --json explain made
    assert_status 0
    assert_json 'd["made_from"]' a.conf
    assert_json 'd["template_file"]' "$HOST/etc/a.conf"
    assert_json 'd["no_file_before"]' true
    assert_json 'd["reserve"]' null
    assert_json '[r["kind"] for r in d["regions"]]' \
        '["notice", "template", "former-line", "block", "template", "template"]'
    assert_json '[[r["first_line"], r["last_line"], r["template_line"]] for r in d["regions"]]' \
        '[[1, 10, null], [11, 12, 5], [13, 13, 7], [14, 16, 7], [17, 17, 8], [18, 18, 9]]'
    assert_json 'd["regions"][3]["former_line"]' 13
    assert_json 'd["regions"][3]["former_text"]' "realm = EXAMPLE.ORG"
    assert_json 'd["regions"][3]["content"]' '["realm = OTHER"]'
    assert_json 'd["regions"][4]["placeholders"]' '["domain", "realm"]'
    assert_json 'd["regions"][2]["block_line"]' 14
}

@test "DocumentNamesTheReserveOfTheFileAndOfEachRegion" {
    zet -q param set conf kdc new
    run_zet --json explain conf
    assert_json 'd["reserve"], d["no_file_before"]' '["conf.before_zet", false]'
    assert_json '{r["reserve"] for r in d["regions"]} == {"conf.before_zet"}' true
}

@test "DocumentOfOneLineHasOneRegion" {
    make_file
    run_zet --json explain made:12
    assert_json 'len(d["regions"])' 1
    assert_json 'd["regions"][0]["first_line"]' 12
    assert_json 'd["regions"][0]["template_line"]' 6
}

@test "TextOfASecretTargetIsNotShown" {
    make_file
    echo 'secret = true' >>templates/targets.toml
    zet -q line set --force made '^realm' 'realm = OTHER'
    run_zet explain made
    assert_status 0
    [[ $output == *'managed block: (secret); before: (secret), kept in line 13'* ]]
    [[ $output != *OTHER* && $output != *EXAMPLE* ]]
    run_zet --json explain made
    [[ $output != *OTHER* && $output != *EXAMPLE* ]]
    assert_json 'd["secret"]' true
}

@test "ListThatCannotBeReliedOnKeepsTextFromBeingShown" {
    need_root
    make_file
    chmod 666 templates/targets.toml
    zet -q param set conf kdc new
    run_zet explain conf:11
    assert_status 0
    assert_output "conf:11: lines 10 to 12: managed block: (secret); before: (secret), kept in line 9"
    [[ $stderr == *"others may write the list of targets"*"so no text is shown"$'\n'* ]]
    [[ $stderr == *"conf: text not shown: nobody can tell whether it is secret; --show-secrets shows it"$'\n' ]]
}

@test "FileInAHostTreeIsExplained" {
    "$SOURCE_DIR/script/example-root" server tree
    "$ZET_BIN/zet-init" --root tree -q commit-config
    capture "$ZET_BIN/zet-init" --root tree explain /etc/krb5.conf:14
    assert_status 0
    [[ $output == *"etc/krb5.conf:14: from line 26 of the template krb5.conf with \${realm}; before: "*"/etc/krb5.conf.before_zet; since change 1, "*": --root tree -q commit-config"$'\n' ]]
}
