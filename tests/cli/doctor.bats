load helper

# The lines of the file: 1 to 7 the notice, 9 the kept former line, 10 to 12 its block, 15 to 17 a block that
# was appended.
setup() {
    make_host
    printf 'realms\nkdc=old\nmore\n' >conf
    zet -q param set conf kdc new
    zet -q param set conf fresh 1
    assert_file conf "${NOTICE}realms
# --PRE-ZET-- kdc=old
$(block kdc=new)
more

$(block fresh=1)
"
    cp conf whole
}

teardown() {
    remove_host
}

# kinds: "LINE kind" of each problem, "?" behind those that are ambiguous.
kinds() {
    run_zet --json doctor "$1"
    json '", ".join(str(p["line"]) + " " + p["kind"] + ("?" if p["ambiguous"] else "") for p in d["problems"])'
}

# assert_damage KINDS: the file has this damage; the problems are told in both forms, and nothing is written.
assert_damage() {
    remember_host
    assert_equal "$(kinds conf)" "$1" || return
    run_zet doctor conf
    assert_status 1 && assert_stderr "" && assert_host_unchanged
}

# The module's own operations do to both files the same.
assert_equally_good() {
    local operation
    for operation in "file strip FILE" "param restore FILE kdc --all-blocks" \
        "line restore FILE nothing --all-blocks" "param set FILE kdc newer" "param set FILE fresh 2"; do
        rm -rf one other
        mkdir one other
        cp "$1" one/file
        cp "$2" other/file
        (cd one && zet -q ${operation/FILE/file})
        (cd other && zet -q ${operation/FILE/file})
        cmp one/file other/file
    done
}

apply_repair() {
    zet doctor conf | patch -s -p1
}

# assert_repaired KINDS: the damage is just this, and the repair gives back a file as good as the whole one.
assert_repaired() {
    assert_damage "$1"
    apply_repair
    run_zet doctor conf
    assert_success "conf: no damage"
    assert_equally_good conf whole
}

# assert_ambiguous KINDS: the damage is just this, each with its choices, and there is no diff.
assert_ambiguous() {
    run_zet --json doctor conf
    assert_json 'd["repair"]' null || return
    assert_json 'all(len(p["choices"]) > 1 for p in d["problems"])' true || return
    assert_damage "$1" || return
    [[ $output == *"(ambiguous: either "*"; or "* && $output != *+++* ]]
}

@test "an empty name of a file is wrong use" {
    run_zet doctor ''
    assert_refusal 2 "FILE is empty (name a file)"
}

@test "FileWithoutMarkersHasNoDamage" {
    printf 'a\nb' >plain
    remember_host
    run_zet doctor plain
    assert_success "plain: no damage"
    assert_host_unchanged
}

@test "FileThatTheSystemWroteHasNoDamage" {
    run_zet doctor conf
    assert_success "conf: no damage"
}

@test "FilesThatTheSystemWroteInAnyWayHaveNoDamage" {
    printf 'kdc=old' >unended
    zet -q param set unended kdc new
    : >empty
    zet -q param set empty kdc new
    printf 'kdc=1\nkdc=2\n' >twice
    zet -q line set twice '^kdc=' 'kdc=3'
    printf 'a\r\nkdc=old\r\n' >returns
    zet -q param set returns kdc new
    for file in unended empty twice returns; do
        run_zet doctor "$file"
        assert_success "$file: no damage"
    done
}

@test "FileWithoutDamageIsReportedAsADocument" {
    run_zet --json doctor conf
    assert_status 0
    assert_json 'd["version"]' 1
    assert_json 'd["command"]' doctor
    assert_json 'd["file"]' conf
    assert_json 'd["problems"]' '[]'
    assert_json 'd["repair"]' null
}

@test "FileThatCannotBeReadIsAFailure" {
    local file
    for file in nope etc; do
        run_zet doctor "$file"
        assert_status 1
        assert_output ""
        [[ $stderr == "zet-client: error: $file: "* ]]
    done
}

@test "DamageIsToldWithItsLineAndRemedyAndARepair" {
    sed -i 17d conf
    run_zet doctor conf
    assert_status 1
    assert_output 'conf:15: a begin marker has no end marker (put one after line 16)
--- a/conf
+++ b/conf
@@ -14,3 +14,4 @@
 
 # ---ZET_BEGIN---
 fresh=1
+# ----ZET_END----'
}

@test "RepairIsInTheDocumentToo" {
    sed -i 17d conf
    run_zet --json doctor conf
    assert_status 1
    assert_json 'd["exit_status"]' 1
    assert_json 'd["problems"][0]["remedy"]' "put one after line 16"
    json 'd["repair"]' | patch -s -p1
    cmp conf whole
}

@test "RepairOfAnAbsolutePathFitsTheRootDirectory" {
    sed -i 17d conf
    zet doctor "$HOST/conf" | patch -s -p1 -d /
    cmp conf whole
}

@test "LostEndOfTheLastBlockIsRepaired" {
    sed -i 17d conf
    assert_repaired "15 begin-without-end"
    cmp conf whole
}

@test "LostEndBeforeAKeptFormerLineIsRepaired" {
    printf 'kdc=1\nkdc=2\n' >conf
    zet -q line set conf '^kdc=' 'kdc=3'
    cp conf whole
    sed -i '0,/ZET_END--/{/ZET_END--/d}' conf
    assert_repaired "9 begin-without-end"
    cmp conf whole
}

@test "LostEndBeforeOrdinaryLinesIsAmbiguous" {
    sed -i 12d conf
    assert_ambiguous "10 begin-without-end?"
    [[ $output == "conf:10: a begin marker has no end marker (ambiguous: either put one after line 11, the "* ]]
}

@test "CertainDamageIsRepairedBesideAmbiguousDamage" {
    sed -i -e 17d -e 12d conf
    assert_damage "10 begin-without-end?, 14 begin-without-end"
    apply_repair
    assert_ambiguous "10 begin-without-end?"
    sed '12d' whole | cmp - conf
}

@test "LostBeginAfterAKeptFormerLineIsRepaired" {
    sed -i 10d conf
    assert_repaired "11 stray-end"
    cmp conf whole
}

@test "LostBeginOfAnAppendedBlockIsAmbiguous" {
    sed -i 15d conf
    assert_ambiguous "16 stray-end?"
}

@test "LostBeginAndLineOfABlockAreRepairedAsFarAsTheMarkersGo" {
    sed -i 10,11d conf
    assert_damage "9 empty-block?, 10 stray-end"
    apply_repair
    assert_ambiguous "10 empty-block?"
    sed -i "10a\\$(sed -n 11p whole)" conf
    cmp conf whole
}

# assert_change_repaired SED MESSAGE: the whole file so changed has just this damage, and the repair is the
# whole file.
assert_change_repaired() {
    sed "$1" whole >conf
    run_zet doctor conf
    [[ $status == 1 && $output == "conf:$2"$'\n--- '* ]] || differ "sed $1" "conf:$2" "$output" || return
    patch -s -p1 <<<"$output" && cmp conf whole
}

@test "DoubledMarkersAreRepaired" {
    local line
    for line in 1 10 15; do
        assert_change_repaired "${line}p" \
            "$((line + 1)): a second begin marker follows right after the first (take it out)"
    done
    for line in 7 12 17; do
        assert_change_repaired "${line}p" \
            "$((line + 1)): a second end marker follows right after the first (take it out)"
    done
}

@test "BlockInsideABlockEndsThatBeforeIt" {
    sed -i '16r whole' conf
    sed -i '17,25d' conf
    sed -i '19a z' conf
    sed -i '20,$d' conf
    printf 'z\n# ----ZET_END----\n' >>conf
    assert_damage "15 begin-without-end, 21 stray-end?"
}

# assert_nearly LINE SED...: each change leaves a line that is nearly a marker.
assert_nearly() {
    local line=$1 marker change
    marker=$(sed -n "${line}s/\(.*-\).*/\1/p" whole)
    for change in "${@:2}"; do
        assert_change_repaired "$line$change" \
            "$line: this is nearly \"$marker\", but no marker (write the marker as it was)" || return
    done
}

@test "HandEditedMarkersAreRepaired" {
    local line
    for line in 7 10 12; do
        assert_nearly "$line" 's/^/  /' 's/^/\t/' 's/^# //' 's/^# /#/' 's/--/-/' 's/.*/\L&/' 's/--/—/g' 's/--/–/g' \
            's/ET_/ET/' 's/^#/;/'
    done
    assert_nearly 1 's/^/  /' 's/NFIG/NFG/'
    assert_nearly 17 's/^/  /' 's/END/EMD/'
}

@test "HandEditedPrefixOfAKeptFormerLineIsRepaired" {
    assert_change_repaired '9s/^/ /' \
        '9: this is nearly "# --PRE-ZET--", but no marker (write the marker as it was)'
    local change
    for change in 's/^# /#/' 's/ZET-- /ZET--/' 's/PRE-ZET/pre-zet/' 's/--PRE/-PRE/' 's/--/—/g'; do
        assert_change_repaired "9$change" \
            '9: this is nearly "# --PRE-ZET--", but no marker (write the marker as it was)'
    done
}

@test "WhatWasAddedBehindAMarkerIsTakenOut" {
    local line marker
    for line in 7 10 17; do
        marker=$(sed -n "${line}p" whole)
        assert_change_repaired "${line}s/\$/ \t/" "$line: white space stands behind \"$marker\" (take it out)"
        assert_change_repaired "${line}s/\$/\r/" "$line: a carriage return stands behind \"$marker\" (take it out)"
        assert_change_repaired "${line}s/\$/--/" "$line: a needless \"--\" stands behind \"$marker\" (take it out)"
    done
}

@test "SeveralHandEditedMarkersAreRepairedTogether" {
    sed -i '1,17s/^# -/ # -/' conf
    assert_damage "1 hand-edited-marker, 7 hand-edited-marker, 9 hand-edited-marker, 10 hand-edited-marker, \
12 hand-edited-marker, 15 hand-edited-marker, 17 hand-edited-marker"
    apply_repair
    cmp conf whole
}

@test "HandEditedMarkerThatBelongsToNothingIsAmbiguous" {
    printf 'a\n # ----ZET_END----\nb\n' >conf
    assert_ambiguous "2 hand-edited-marker?"
}

@test "LinesThatLostTheLineFeedBetweenThemAreRepaired" {
    local line marker
    for line in 8 9 11 16; do
        marker=$(sed -n "$((line + 1))s/\(.*-\).*/\1/p" whole)
        assert_change_repaired "$line{N;s/\n//}" \
            "$line: \"$marker\" stands behind other text, where it is no marker (begin a line with it)"
    done
}

@test "TextAppendedToAnUnendedEndMarkerIsAmbiguous" {
    printf 'kdc=old' >conf
    zet -q param set conf kdc new
    printf 'other=1\n' >>conf
    assert_ambiguous "11 text-after-marker?"
}

@test "KeptFormerLineThatAStripLeftIsAmbiguous" {
    zet -q file strip conf
    assert_ambiguous "9 former-line-without-block?"
    [[ $output == *'"param restore" or "line restore"'* ]]
}

@test "KeptFormerLinesInARowAreAmbiguous" {
    sed -i 9p conf
    assert_ambiguous "9 former-line-without-block?"
}

@test "LostEndOfANoticeIsRepaired" {
    sed -i 7d conf
    assert_repaired "1 notice-without-end"
    cmp conf whole
}

@test "LostBeginOfANoticeIsRepaired" {
    sed -i 1d conf
    assert_repaired "6 stray-comment-end"
    cmp conf whole
}

@test "LostMarkersOfAGeneratedNoticeAreRepaired" {
    printf 'realm = ${realm}\n' >templates/a.conf
    zet -q template process a.conf "$HOST/made"
    cp made whole
    sed 1d whole >made
    zet doctor made | patch -s -p1
    cmp made whole
    sed '/COMMENT_END/d' whole >made
    zet doctor made | patch -s -p1
    cmp made whole
}

@test "SecondNoticeIsRepaired" {
    # The system writes it when it finds other lines at the top.
    (echo top && cat whole) >conf
    zet -q param set conf kdc newer
    zet -q param set whole kdc newer
    assert_damage "9 doubled-notice"
    apply_repair
    run_zet doctor conf
    assert_success "conf: no damage"
    sed '/^top$/d' conf | cmp - whole
}

@test "NoticeBelowOtherLinesIsAmbiguous" {
    sed -i '1i top' conf
    assert_ambiguous "2 misplaced-notice?"
}

@test "TemplateCommentWithoutEndIsAmbiguous" {
    printf 'realm = ${realm}\n' >templates/a.conf
    zet -q template process a.conf "$HOST/conf"
    printf '# --ZET_TEMPLATE_COMMENT--\n# about\nmore\n' >>conf
    local first
    first=$(grep -n TEMPLATE_COMMENT conf | cut -d: -f1)
    assert_ambiguous "$first template-comment-without-end?"
}

@test "FileWithCarriageReturnsIsRepairedWhenItsReserveHasNone" {
    sed -i 's/$/\r/' conf
    assert_repaired "1 carriage-returns"
    cmp conf whole
}

@test "MadeFileWithCarriageReturnsIsRepairedWhenItsTemplateHasNone" {
    printf 'realm = ${realm}\n' >templates/a.conf
    zet -q template process a.conf "$HOST/made"
    cp made whole
    sed -i 's/$/\r/' made
    zet doctor made | patch -s --binary -p1
    cmp made whole
}

@test "FileWithCarriageReturnsIsAmbiguousWithoutAReserve" {
    sed -i 's/$/\r/' conf
    rm conf.before_zet
    assert_ambiguous "1 carriage-returns?"
}

@test "CarriageReturnsThatWereThereBeforeStay" {
    printf 'a\r\nkdc=old\r\n' >conf
    zet -q param set conf kdc new
    rm conf.before_zet
    printf 'a\r\nkdc=old\r\n' >conf.before_zet
    cp conf whole
    sed -i 's/\r*$/\r/' conf
    assert_damage "1 hand-edited-marker, 7 hand-edited-marker, 10 hand-edited-marker, 12 hand-edited-marker"
    zet doctor conf | patch -s --binary -p1
    run_zet doctor conf
    assert_success "conf: no damage"
    zet -q param restore conf kdc
    zet -q param restore whole kdc
    diff <(tail -n 2 whole) <(tail -n 2 conf)
    assert_equal "$(tail -n 2 conf)" $'a\r\nkdc=old\r'
}

@test "BytesThatAreNoTextAreKept" {
    printf 'a\0\377\nkdc=old\n' >conf
    zet -q param set conf kdc new
    cp conf whole
    sed -i '$d' conf
    zet doctor conf | patch -s -p1
    cmp conf whole
}

@test "TextOfASecretTargetIsNotShown" {
    printf 'password=${realm}\n' >templates/a.conf
    printf '[templates."a.conf"]\ntarget = "%s"\nroles = "both"\nsecret = true\n' "$HOST/conf" >templates/targets.toml
    zet -q commit-config
    printf '# ---ZET_BEGIN---\nhidden\n' >>conf
    run_zet doctor conf
    assert_status 1
    assert_output "conf:12: a begin marker has no end marker (put one after line 13)"
    assert_stderr "zet-client: conf: the repair: line 14 changed (text not shown: the list of targets calls it secret; --show-secrets shows it)"
    run_zet --json doctor conf
    [[ $output != *hidden* ]]
    assert_json 'd["secret"]' true
    assert_json 'd["repair"]' null
}

@test "ReaderWithoutRightsIsToldWhatIsMissing" {
    need_root
    copy_programs
    chmod 600 conf
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" doctor conf
    assert_refusal 1 "conf: cannot be read: Permission denied (run the command as a user who may)"
}

@test "LinkIsFollowed" {
    sed -i 17d conf
    ln -s conf link
    run_zet doctor link
    assert_status 1
    [[ $output == *"+++ b/"* ]]
}

# damage: one thing that is certain.
damage_one_way() {
    sed -i '12s/^/  /' conf
}

@test "FixWritesTheCertainRepairAndKeepsAReserve" {
    rm conf.before_zet
    damage_one_way
    cp conf damaged
    run_zet doctor conf --fix
    assert_status 0
    [[ $output == *$'\n'"conf: changed, the original is kept as conf.before_zet"$'\n' ]]
    cmp conf whole
    cmp conf.before_zet damaged
    run_zet doctor conf --fix
    assert_success "conf: unchanged, no damage"
}

@test "FixIsAnEntryOfTheHistory" {
    damage_one_way
    chmod 600 conf
    run_zet doctor conf --fix --no-backup --json
    assert_status 0
    assert_json 'd["entry"]' 3
    assert_json 'd["files"][0]["result"]' changed
    assert_equal "$(stat -c %a conf)" 600
}

@test "FixWithoutABackupMakesNone" {
    rm conf.before_zet
    damage_one_way
    run_zet doctor conf --fix --no-backup
    assert_status 0
    assert_absent conf.before_zet
    cmp conf whole
}

@test "FixInTrialWritesNothing" {
    damage_one_way
    remember_host
    run_zet doctor conf --fix -n --diff
    assert_status 3
    [[ $output == *"conf: would be changed"*"+# ----ZET_END----"* ]]
    assert_host_unchanged
}

@test "FixTellsWhatStaysAmbiguousAndWritesTheRest" {
    damage_one_way
    printf '# ---ZET_BEGIN---\nlonely\nmore\n' >>conf
    run_zet doctor conf --json
    assert_json 'sorted({p["ambiguous"] for p in d["problems"]})' '[false, true]'
    run_zet doctor conf --fix
    assert_status 1
    [[ $output == *"(ambiguous: either "*"conf: changed"* ]]
    run_zet doctor conf --json
    assert_json '{p["ambiguous"] for p in d["problems"]} == {True}' true
}

@test "FixRefusesWhereNothingIsCertain" {
    printf '# ---ZET_BEGIN---\nlonely\nmore\n' >conf
    remember_host
    run_zet doctor conf --fix
    assert_status 1
    assert_stderr "zet-client: error: conf: has no damage that can be repaired in one way only, and was not changed (choose a repair, and make it by hand)"
    assert_host_unchanged
}

@test "NoBackupWithoutFixIsWrongUse" {
    run_zet doctor conf --no-backup
    assert_refusal 2 "--no-backup is for --fix (say both)"
}

@test "FixInTheDirectoryOfAnotherUserIsDoneWithHisRights" {
    need_root
    damage_one_way
    mkdir his
    mv conf his/conf
    chown -R 65534:65534 his
    run_zet doctor his/conf --fix
    assert_status 0
    cmp his/conf whole
    assert_equal "$(stat -c '%u:%g %a' his/conf his/conf.before_zet | sort -u)" "65534:65534 644"
}

@test "FixOfALinkRepairsTheFileThatItLeadsTo" {
    damage_one_way
    mv conf real
    ln -s real conf
    run_zet doctor conf --fix
    assert_status 0
    assert_equal "$(readlink conf)" real
    cmp real whole
}
