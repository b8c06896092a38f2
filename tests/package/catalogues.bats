# The languages that are shipped: each catalogue is complete, is found, and is what readers and files get.

load package

setup_file() {
    set_up_package
    export PO=$SOURCE_DIR/po
    export LOCPATH=$BATS_FILE_TMPDIR/locales
    mkdir "$LOCPATH"
    localedef -i de_DE -f UTF-8 "$LOCPATH/de_DE.UTF-8" || true
    localedef -i fr_FR -f UTF-8 "$LOCPATH/fr_FR.UTF-8" || true
    localedef -i es_ES -f UTF-8 "$LOCPATH/es_ES.UTF-8" || true
}

# in_language LANGUAGE WORD...: a command as a reader of this language has it.
in_language() {
    local language=$1
    shift
    LC_ALL=C.UTF-8 LANGUAGE=$language "$ZET_BUILD/bin/zet-client" "$@"
}

languages() {
    cat "$PO/LINGUAS"
}

# locale_of LANGUAGE: one that was made for the tests.
locale_of() {
    (cd "$LOCPATH" && echo "$1"_*)
}

@test "EveryCatalogueIsComplete" {
    "$SOURCE_DIR/script/texts" --check
}

@test "ACatalogueThatLacksATextIsTold" {
    local copy=$BATS_TEST_TMPDIR/copy
    mkdir "$copy"
    cp -r "$SOURCE_DIR"/{po,src,include,script} "$copy"
    sed -i 's/^msgstr "keine Ziele"/msgstr ""/' "$copy/po/zet-tools/de.po"
    run "$copy/script/texts" --check
    [ "$status" -eq 1 ]
    grep -F 'po/zet-tools/de.po: not translated: no targets' <<<"$output"
}

@test "EveryCatalogueIsSound" {
    local language domain
    for language in $(languages); do
        for domain in libzet-config libzet-core zet-tools; do
            msgfmt --check -o /dev/null "$PO/$domain/$language.po"
            grep -F "Language: $language" "$PO/$domain/$language.po"
            # Each text has the gaps of the original, also where they are no format of the compiler's.
            msgfilter -i "$PO/$domain/$language.po" -o /dev/null sh -c '
                mine=$(grep -oE "%(zu|[sdum])|\\$\\{\\}" | sort | tr "\n" " ")
                wanted=$(printf %s "$MSGFILTER_MSGID" | grep -oE "%(zu|[sdum])|\\$\\{\\}" | sort | tr "\n" " ")
                [ -z "$MSGFILTER_MSGID" ] || [ "$mine" = "$wanted" ] || { echo "$MSGFILTER_MSGID" >&2; exit 1; }'
        done
    done
}

@test "PluralsAreThoseOfTheLanguage" {
    grep -F 'plural=(n != 1)' "$PO/zet-tools/de.po"
    grep -F 'plural=(n != 1)' "$PO/zet-tools/es.po"
    # To a Frenchman, none is one.
    grep -F 'plural=(n > 1)' "$PO/zet-tools/fr.po"
}

@test "EveryCommandHelpsInEveryLanguage" {
    local language command sentence commands
    commands=$("$ZET_BUILD/bin/zet-client" --help | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z-]*\).*/\1/p')
    [ "$(wc -l <<<"$commands")" -ge 16 ]
    for language in $(languages); do
        for command in $commands; do
            [ "$(in_language "$language" "$command" --help | head -1)" != "$(in_language C "$command" --help | head -1)" ]
            # No sentence of the options is left in English.
            while IFS= read -r sentence; do
                ! in_language "$language" "$command" --help | grep -F -e "$sentence" || return 1
            done < <(in_language C "$command" --help | sed -n 's/^  [^ ].*  \([A-Z][a-z].* .*\)$/\1/p')
        done
    done
}

@test "WhatCommandsSayIsInTheReadersLanguage" {
    local root=$BATS_TEST_TMPDIR/root
    "$SOURCE_DIR/script/example-root" client "$root"
    in_language de --root "$root" commit-config | grep -F ': geändert, das Original bleibt als '
    in_language fr --root "$root" status | grep -F 'rôle : client'
    in_language es --root "$root" status | grep -F ': al día'
    in_language de --root "$root" history | grep -F 'Client'
    in_language fr --root "$root" undo | grep -F "l'entrée 1 a été annulée"
    run in_language de --root "$root" frobnicate
    [ "$status" -eq 2 ]
    grep -F 'Fehler: unbekannter Befehl „frobnicate“' <<<"$output"
    printf 'A=\0\n' >>"$root/etc/zet/zet.conf"
    run in_language de --root "$root" values
    grep -F 'NUL-Byte' <<<"$output"
}

@test "WhatIsForProgramsIsTheSameInEveryLanguage" {
    local root=$BATS_TEST_TMPDIR/root language
    "$SOURCE_DIR/script/example-root" client "$root"
    in_language C --root "$root" commit-config -q
    for language in $(languages); do
        diff <(in_language C --root "$root" status --json) <(in_language "$language" --root "$root" status --json)
        diff <(in_language C --root "$root" status --format openmetrics) <(in_language "$language" --root "$root" status --format openmetrics)
        diff <(in_language C --root "$root" values) <(in_language "$language" --root "$root" values)
    done
}

@test "CataloguesAreFoundWhereverTheProductIsInstalled" {
    "$CMAKE" --install "$ZET_BUILD" --prefix "$BATS_TEST_TMPDIR/somewhere" >/dev/null
    mv "$BATS_TEST_TMPDIR/somewhere" "$BATS_TEST_TMPDIR/else"
    LC_ALL=C.UTF-8 LANGUAGE=de "$BATS_TEST_TMPDIR/else/bin/zet-client" status --help | grep -F 'Optionen aller Befehle'
    printf 'A=\0\n' >"$BATS_TEST_TMPDIR/zet.conf"
    run env LC_ALL=C.UTF-8 LANGUAGE=de "$BATS_TEST_TMPDIR/else/bin/zet-client" -c "$BATS_TEST_TMPDIR/zet.conf" values
    grep -F 'NUL-Byte' <<<"$output"
}

@test "NothingIsLookedForWhereTheReaderReadsEnglish" {
    run strace -f -e trace=open,openat,readlink,readlinkat "$ZET_BUILD/bin/zet-client" status --help
    run grep -E 'LC_MESSAGES/.*\.mo' <<<"$output"
    [ "$status" -eq 1 ]
}

@test "MarkersAreTheSameUnderAnyLocaleAndTheNoticeIsInTheProductsLanguage" {
    local language locale file=$BATS_TEST_TMPDIR/file
    for language in $(languages); do
        locale=$(locale_of "$language")
        [ -d "$LOCPATH/$locale" ] || skip "there are no locales here (the package locales has them)"
        echo A=1 >"$file"
        LC_ALL=$locale "$ZET_BUILD/bin/zet-client" -q param set "$file" A 2 --no-backup
        grep -Fx '# This file is partially modified by zet(7).' "$file"
        echo A=1 >"$file"
        printf 'ZET_LANG=%s\nZET_HISTORY=no\nZET_VAR_LIB_DIR=%s\n' "$locale" "$BATS_TEST_TMPDIR" >"$BATS_TEST_TMPDIR/zet.conf"
        LC_ALL=C "$ZET_BUILD/bin/zet-client" -q -c "$BATS_TEST_TMPDIR/zet.conf" param set "$file" A 2 --no-backup
        run grep -F 'This file is partially modified' "$file"
        [ "$status" -eq 1 ]
        for line in '# --ZET_CONFIG_COMMENT--' '# --ZET_COMMENT_END--' '# --PRE-ZET-- A=1' '# ---ZET_BEGIN---' A=2 '# ----ZET_END----'; do
            grep -Fx -e "$line" "$file"
        done
        # Whoever reads the file later, in another language and on a host without this one.
        env -u LOCPATH LC_ALL=C "$ZET_BUILD/bin/zet-client" doctor "$file"
        sed -i 's/ZET_BEGIN und\|ZET_BEGIN et\|ZET_BEGIN y/&&/' "$file"
        run env -u LOCPATH LC_ALL=C "$ZET_BUILD/bin/zet-client" doctor "$file"
        [ "$status" -eq 1 ]
        grep -F 'notice' <<<"$output"
    done
}

@test "TheNoticesOfEveryLanguageAreKnownToWhatReadsThem" {
    local language wanted
    for language in $(languages); do
        wanted=$(msgattrib --no-wrap --no-obsolete "$PO/libzet-config/$language.po" |
            sed -n '/^msgid ""$/,/^msgstr/d; /^"# /p' | sort)
        [ "$(wc -l <<<"$wanted")" -ge 10 ]
        while IFS= read -r line; do
            grep -qF -e "$line" "$SOURCE_DIR/src/text/NoticeTranslations.h" || {
                echo "src/text/NoticeTranslations.h lacks the line $line of $language (copy the notices of the catalogue)"
                return 1
            }
        done <<<"$wanted"
    done
}
