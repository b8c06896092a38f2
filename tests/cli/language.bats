# The language of what a command says is the reader's, that of what it writes into files the product's. Either
# comes with all its letters.

load helper

setup() {
    make_host
    unshare --user --map-root-user --mount true 2>/dev/null || skip "no directory can be mounted here"
    mkdir catalogue
}
teardown() { remove_host; }

# catalogue LANGUAGE DOMAIN: its messages, from standard input.
catalogue() {
    mkdir -p "catalogue/$1/LC_MESSAGES"
    { printf 'msgid ""\nmsgstr "Content-Type: text/plain; charset=UTF-8\\n"\n' && cat; } |
        msgfmt -o "catalogue/$1/LC_MESSAGES/$2.mo" -
}

# run_translated ARGUMENT...: run_zet with the catalogues in the place where the product has its own.
run_translated() {
    # shellcheck disable=SC2016  # expanded inside
    capture unshare --user --map-root-user --mount sh -c '
        place=$1 && shift
        parent=$place
        while [ ! -d "$parent" ]; do parent=$(dirname "$parent"); done
        mount -t tmpfs tmpfs "$parent" && mkdir -p "$place" && cp -r catalogue/. "$place" && exec "$@"
    ' sh "$ZET_BIN/../share/locale" "$ZET_BIN/zet-client" --config "$HOST/zet.conf" "$@"
}

edited_file() {
    catalogue C.utf8 libzet-config <<-'END'
		msgid ""
		"# This file is partially modified by zet(7).\n"
		"# Do not edit data between ZET_BEGIN and ZET_END labels manually\n"
		"# unless you know what you are doing.\n"
		"# These lines are updated automatically by zet-init(1) and zet-client(1).\n"
		msgstr "# Geändert.\n"
	END
    echo a=1 >f
}

@test "MessagesOfTheModuleAreInTheReadersLanguage" {
    catalogue de libzet-config <<-'END'
		msgid "Process config file '%s'..."
		msgstr "Bearbeite »%s« ..."
	END
    echo a=1 >f
    LC_ALL=C.UTF-8 LANGUAGE=de run_translated -v param set f b 1
    assert_status 0
    assert_stderr "zet-client: notice: Bearbeite »f« ..."
}

@test "MessagesOfTheCoreAreInTheReadersLanguage" {
    catalogue de libzet-core <<-'END'
		msgid "%s:%zu: the line holds a NUL byte (remove it)"
		msgstr "%s:%zu: ein Nullbyte (läßt sich löschen)"
	END
    printf 'A=\0\n' >zet.conf
    LC_ALL=C.UTF-8 LANGUAGE=de run_translated values
    assert_refusal 1 "$HOST/zet.conf:1: ein Nullbyte (läßt sich löschen)"
}

@test "NoticeIsInTheProductsLanguageWhoeverRunsTheCommand" {
    edited_file
    echo ZET_LANG=C.utf8 >>zet.conf
    LC_ALL=C run_translated param set f a 2
    assert_status 0
    grep -Fx '# Geändert.' f
}

@test "ReadersLanguageDoesNotGetIntoFiles" {
    edited_file
    mv catalogue/C.utf8 catalogue/de
    LC_ALL=C.UTF-8 LANGUAGE=de run_translated param set f a 2
    assert_status 0
    grep -Fx '# This file is partially modified by zet(7).' f
}
