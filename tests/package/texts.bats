# What a translator gets: all that the catalogues are asked for.

setup() {
    cd "$BATS_TEST_DIRNAME/../.." || return
    TEXTS=$BATS_TEST_TMPDIR
    script/texts "$TEXTS"
}

# has DOMAIN TEXT: the template of its catalogue has the text, however it breaks it into lines.
has() {
    msgcat --no-wrap "$TEXTS/$1.pot" | grep -qF -- "\"$2\""
}

lacks() {
    if has "$@"; then
        echo "$1.pot has \"$2\""
        return 1
    fi
}

@test "the lines of both notices are for the translators of the module" {
    # shellcheck disable=SC2016  # as the files have it
    for line in '# This file is partially modified by zet(7).\n' '# $ %s commit-config\n'; do
        has libzet-config "$line"
    done
}

@test "each text is for the catalogue that is asked for it" {
    has libzet-config "Invalid config object '%s'."
    has libzet-config "ZET config interface"
    has libzet-core "Argument is empty for '%s'."
    has libzet-core "Failed to sync file '%s': %m."
    has libzet-core "it has no entry point '%s'"
    has libzet-deploy "is made from [%s]"
    has libzet-deploy "run the command as a user who may"
    has zet-tools "no targets"
    lacks zet-tools "is made from [%s]"
    lacks libzet-config "Argument is empty for '%s'."
    lacks libzet-core "Invalid config object '%s'."
}

@test "no text that the module has translated is left out" {
    wanted=$(cat src/interfaces/zet-config/*.{cpp,h} | tr '\n' ' ' |
        grep -oE '(Translated|dgettext)\((ZET::)?k(Module|Core)Domain, *"[^"]*"' | sed 's/.*, *"//; s/"$//' | sort -u)
    [ "$(wc -l <<<"$wanted")" -gt 10 ]
    while IFS= read -r text; do
        has libzet-config "$text" || has libzet-core "$text"
    done <<<"$wanted"
}

@test "no text of a failure is left out" {
    wanted=$(cat src/deploy/*/*.{cpp,h} src/deploy/state/store/*.{cpp,h} src/text/{,repair/}*.{cpp,h} | tr '\n' ' ' |
        grep -oE '((\.text|\.remedy) = |(UsageError|Warning|Remark|Detail|Fail|Error)\()"[^"]*[a-z]{2,} [a-z][^"]*"' || true)
    [ -z "$wanted" ] || {
        echo "is not in _() or Words(): $wanted"
        return 1
    }
}

@test "a template of a catalogue can be made into one" {
    for domain in libzet-config libzet-core libzet-deploy; do
        msgen "$TEXTS/$domain.pot" | sed 's/CHARSET/UTF-8/' | msgfmt --check-format -o /dev/null -
    done
}
