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
        for domain in libzet-config libzet-core libzet-deploy zet-tools; do
            msgfmt --check -o /dev/null "$PO/$domain/$language.po"
            grep -F "Language: $language" "$PO/$domain/$language.po"
            # Each text has the gaps of the original, also where they are no format of the compiler's.
            msgcat --no-wrap "$PO/$domain/$language.po" | /usr/bin/python3 -c '
import re, sys
gaps = lambda text: sorted(re.findall(r"%(?:zu|[sdum])|\$\{\}", text))
wrong = 0
for entry in sys.stdin.read().split("\n\n")[1:]:
    texts = dict.fromkeys(("msgid", "msgstr"), "")
    for field, rest in re.findall(r"^(msg\w+)(?:\[\d\])? ((?:\".*\"\n?)+)", entry, re.M):
        if field == "msgid_plural": texts["msgid"] = rest
        if field in texts: texts[field] = rest
    if gaps(texts["msgid"]) != gaps(texts["msgstr"]):
        wrong += 1
        print(texts)
sys.exit(wrong > 0)'
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
    local language command sentence english own
    [ "$(commands_of in_language C | wc -l)" -ge 30 ]
    # shellcheck disable=SC2086  # a command may have two words
    while read -r command; do
        english=$(in_language C $command --help)
        for language in $(languages); do
            own=$(in_language "$language" $command --help)
            [ "$(head -1 <<<"$own")" != "$(head -1 <<<"$english")" ]
            # No sentence of the options is left in English.
            while IFS= read -r sentence; do
                ! grep -F -e "$sentence" <<<"$own" || return 1
            done < <(sed -n 's/^  [^ ].*  \([A-Z][a-z].* .*\)$/\1/p' <<<"$english")
        done
    done < <(commands_of in_language C)
}

@test "WhatCommandsSayIsInTheReadersLanguage" {
    local root=$BATS_TEST_TMPDIR/root
    "$SOURCE_DIR/script/example-root" client "$root"
    in_language de --root "$root" commit-config | grep -F ': geändert, das Original bleibt als '
    in_language fr --root "$root" status | grep -F 'rôle : client'
    in_language es --root "$root" status | grep -F ': al día'
    in_language de --root "$root" history | grep -F 'Client'
    in_language fr --root "$root" undo | grep -F "la modification 1 a été annulée"
    run in_language es --root "$root" values
    grep -F 'del valor predeterminado del producto' <<<"$output"
    run in_language fr --root "$root" history show 1
    grep -F '(cible de [krb5.conf])' <<<"$output"
    in_language de -q --root "$root" commit-config
    run in_language de --root "$root" explain /etc/krb5.conf
    grep -E ': aus der Vorlage krb5.conf \(.*\) erzeugt; vorher: ' <<<"$output"
    run in_language de --root "$root" explain /etc/krb5.conf:999
    [ "$status" -eq 2 ]
    grep -E ': hat keine Zeile 999 \(sie hat [0-9]+ Zeilen\)' <<<"$output"
    run in_language fr --root "$root" param get /etc/krb5.conf rdns --section ''
    [ "$status" -eq 2 ]
    grep -F 'SECTION est vide' <<<"$output"
    run in_language de --root "$root" frobnicate
    [ "$status" -eq 2 ]
    grep -F 'Fehler: unbekannter Befehl „frobnicate“' <<<"$output"
    run in_language de param get
    grep -F 'Fehler: FILE ist erforderlich (' <<<"$output"
    run in_language fr status --color red
    grep -F -e '--color: « red » ne figure pas parmi auto, always, never (' <<<"$output"
    run in_language es status -q -v
    grep -F 'error: --quiet excluye --verbose (' <<<"$output"
    run in_language de --root "$root" option set MINIMUM_UID x
    grep -F 'erwartet wird eine Zahl (schreiben Sie Dezimalziffern, bis 4294967295 und ohne Nullen davor)' <<<"$output"
    printf 'A=\0\n' >>"$root/etc/zet/zet.conf"
    run in_language de --root "$root" values
    grep -F 'NUL-Byte' <<<"$output"
}

# fails LANGUAGE WORD...: a command that does not come to an end; what it says is in $output.
fails() {
    run in_language "$@"
    [ "$status" -eq 1 ]
}

@test "WhatFailsIsSaidInTheReadersLanguage" {
    local root=$BATS_TEST_TMPDIR/root
    "$SOURCE_DIR/script/example-root" client "$root"
    # A text and its remedy, as they are.
    fails de --root "$root" param get /nowhere A
    grep -F '/nowhere: existiert nicht (legen Sie es an, oder berichtigen Sie den Pfad)' <<<"$output"
    fails es --root "$root" param get /nowhere A
    grep -F '/nowhere: no existe (créelo, o corrija la ruta)' <<<"$output"
    fails fr --root "$root" param get /nowhere A
    grep -F "/nowhere: n'existe pas (créez-le, ou corrigez le chemin)" <<<"$output"
    # Texts that name something, be it like a text themselves, and the reason of the system behind one.
    printf '[is missing]\nA=1\n' >"$root/etc/some"
    fails de --root "$root" param get /etc/some A --section nope
    grep -F '/etc/some: hat keinen Abschnitt [nope] (die Datei hat [is missing]; einen neuen schreiben Sie selbst' <<<"$output"
    # Problems of a file, each in its line.
    sed -i '1i [templates.unquoted.name]\ntarget = "relative"\n[templates."other"]\nrolls = "both"\n' "$root/usr/share/zet/templates/targets.toml"
    fails fr --root "$root" check-config
    grep -E 'targets.toml:4:1: clé inconnue « rolls »' <<<"$output"
    fails es --root "$root" commit-config
    grep -E 'targets.toml:4:1: clave desconocida «rolls»' <<<"$output"
}

@test "WhatFailsIsEnglishForPrograms" {
    in_language de --json param get /nowhere A >"$BATS_TEST_TMPDIR/json" || true
    /usr/bin/python3 - "$BATS_TEST_TMPDIR/json" <<-'END'
		import json, sys
		document = json.load(open(sys.argv[1]))
		assert document["failure"]["problem"] == "does not exist", document
		assert document["failure"]["remedy"] == "create it, or correct the path", document
		assert document["errors"] == ["/nowhere: does not exist (create it, or correct the path)"], document
	END
}

@test "ATextOfTheLibraryThatIsNewIsTold" {
    local copy=$BATS_TEST_TMPDIR/copy
    mkdir "$copy"
    cp -r "$SOURCE_DIR"/{po,src,include,script} "$copy"
    sed -i 's/"is a directory"/"is a directory, which nobody translated"/' "$copy/src/deploy/host/FileBytes.cpp"
    run "$copy/script/texts" --check
    [ "$status" -eq 1 ]
    grep -F 'po/libzet-deploy/fr.po: not translated: is a directory, which nobody translated' <<<"$output"
}

@test "WhatIsForProgramsIsTheSameInEveryLanguage" {
    local root=$BATS_TEST_TMPDIR/root language
    "$SOURCE_DIR/script/example-root" client "$root"
    in_language C --root "$root" commit-config -q
    # A text that is gone is told in the export.
    in_language C --root "$root" history erase /etc/krb5.conf -q
    in_language C --root "$root" history export | grep -F ' not exported, since its text of '
    for language in $(languages); do
        diff <(in_language C --root "$root" history export) <(in_language "$language" --root "$root" history export)
        diff <(in_language C --json param get /nowhere A 2>&1) <(in_language "$language" --json param get /nowhere A 2>&1)
        diff <(in_language C --root "$root" status --json) <(in_language "$language" --root "$root" status --json)
        diff <(in_language C --root "$root" status --format openmetrics) <(in_language "$language" --root "$root" status --format openmetrics)
        diff <(in_language C --root "$root" values -q) <(in_language "$language" --root "$root" values -q)
        diff <(in_language C --root "$root" explain /etc/krb5.conf --json) <(in_language "$language" --root "$root" explain /etc/krb5.conf --json)
        diff <(in_language C --root "$root" history show 1 --json) <(in_language "$language" --root "$root" history show 1 --json)
    done
}

@test "CataloguesAreFoundWhereverTheProductIsInstalled" {
    "$CMAKE" --install "$ZET_BUILD" --prefix "$BATS_TEST_TMPDIR/somewhere" >/dev/null
    mv "$BATS_TEST_TMPDIR/somewhere" "$BATS_TEST_TMPDIR/else"
    LC_ALL=C.UTF-8 LANGUAGE=de "$BATS_TEST_TMPDIR/else/bin/zet-client" status --help | grep -F 'Optionen aller Befehle'
    printf 'A=\0\n' >"$BATS_TEST_TMPDIR/zet.conf"
    run env LC_ALL=C.UTF-8 LANGUAGE=de "$BATS_TEST_TMPDIR/else/bin/zet-client" -c "$BATS_TEST_TMPDIR/zet.conf" values
    grep -F 'NUL-Byte' <<<"$output"
    run env LC_ALL=C.UTF-8 LANGUAGE=de "$BATS_TEST_TMPDIR/else/bin/zet-client" param get /nowhere A
    grep -F '/nowhere: existiert nicht' <<<"$output"
}

# catalogues_of WORD...: those that the command looks for.
catalogues_of() {
    strace -f -e trace=open,openat "$ZET_BUILD/bin/zet-client" "$@" 2>&1 | grep -oE '[a-z-]+\.mo' | sort -u
}

@test "NothingIsLookedForWhereTheReaderReadsEnglish" {
    [ -z "$(catalogues_of status --help)" ]
    # The module is loaded, which asks for its own in any language but C.
    [ -z "$(LC_ALL=C catalogues_of param get /nowhere A)" ]
    [ "$(LC_ALL=C.UTF-8 catalogues_of param get /nowhere A | grep -v libzet-config)" = "" ]
    [ "$(LC_ALL=C.UTF-8 LANGUAGE=de catalogues_of --json param get /nowhere A)" = "" ]
    LC_ALL=C.UTF-8 LANGUAGE=de catalogues_of param get /nowhere A | grep -Fx libzet-deploy.mo
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

# translations LANGUAGE WORD: of the texts that have the word.
translations() {
    cat "$SOURCE_DIR"/po/*/"$1.po" | grep -A1 -E "^msgid .*\\b($2)\\b" | sed -n 's/^msgstr //p'
}

@test "AThingHasOneWordInEachLanguage" {
    ! cat "$SOURCE_DIR"/po/*/de.po | grep -F Zeilenumbr || return 1
    ! cat "$SOURCE_DIR"/po/*/es.po | grep -E 'funci(ón|ones)' || return 1
    ! translations de 'commit|committed' | grep -E '\b(Schreibens?|geschriebenes|schreiben Sie (dann )?neu)\b[^f]*$' || return 1
    ! translations es 'commit|committed' | grep -E '\bescritura' || return 1
    ! translations fr 'commit|committed' | grep -E "écriture" || return 1
    # Lists are what templates stand in.
    ! translations de array | grep -v Feld || return 1
    ! translations es array | grep -v matriz || return 1
    ! translations fr array | grep -v tableau || return 1
}

@test "AColonOfTheFrenchHelpHasItsBlank" {
    in_language fr param set --help | grep -F $'Utilisation\302\240: '
    ! in_language fr param set --help | grep -E '[^ {]:( |$)' | grep -v $'\302\240:' || return 1
}
