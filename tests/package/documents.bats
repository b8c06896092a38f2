# The documents: what they link is there, what they show is what happens.

load package

setup_file() {
    set_up_package
}

documents() {
    (cd "$SOURCE_DIR" && git ls-files '*.md' 2>/dev/null | grep . || find . -name '*.md' ! -path './build/*' -printf '%P\n')
}

# links FILE: where its links and pictures lead, those to the outside and within it left out.
links() {
    grep -oE '\]\([^)]+\)' "$1" | sed 's/^](//; s/)$//; s/#.*//' | grep -vE '^(https?:|mailto:|$)'
}

# broken_links DIRECTORY: reads names of documents below it, and prints those of their links that lead nowhere.
broken_links() {
    local document link
    while read -r document; do
        while read -r link; do
            [ -e "$(dirname "$1/$document")/$link" ] || echo "$document: $link leads nowhere"
        done < <(links "$1/$document")
    done
}

@test "EveryLinkLeadsSomewhere" {
    [ -z "$(documents | broken_links "$SOURCE_DIR" | tee /dev/stderr)" ]
}

@test "EveryLinkOfAPackagedDocumentLeadsToAnother" {
    local file
    mkdir "$BATS_TEST_TMPDIR/documents"
    while read -r file; do cp -r "$SOURCE_DIR/$file" "$BATS_TEST_TMPDIR/documents/"; done <"$SOURCE_DIR/debian/zet-tools.docs"
    cd "$BATS_TEST_TMPDIR/documents"
    [ -z "$(find . -name '*.md' | broken_links . | tee /dev/stderr)" ]
}

@test "EveryDocumentIsInTheIndex" {
    local file
    for file in "$SOURCE_DIR"/docs/*.md; do
        [[ $file == */README.md ]] || grep -F "](${file##*/})" "$SOURCE_DIR/docs/README.md"
    done
}

@test "EveryScriptThatIsNamedIsThere" {
    local name
    while read -r name; do
        [ -x "$SOURCE_DIR/$name" ] || {
            echo "there is no $name"
            return 1
        }
    done < <(cd "$SOURCE_DIR" && documents | xargs grep -ohE '\bscript/[a-z-]+' | sort -u)
}

@test "EveryOptionThatIsNamedIsOneOfTheHelp" {
    local option known
    known=$("$ZET_BUILD/bin/zet-init" --help | grep -oE '\-\-[a-z-]+'
        for command in commit-config check-config rollback-config status undo template\ install template\ process param\ set file\ strip history history\ show doctor; do
            # shellcheck disable=SC2086
            "$ZET_BUILD/bin/zet-init" $command --help | grep -oE '\-\-[a-z-]+'
        done)
    while read -r option; do
        grep -qFx -e "$option" <<<"$known" || {
            echo "there is no $option"
            return 1
        }
    done < <(cd "$SOURCE_DIR" && grep -ohE '(zet-(init|client) [^`|]*|`)--[a-z-]+' README.md docs/templates.md docs/security.md docs/reliability.md docs/embedding.md | grep -oE '\-\-[a-z-]+' | sort -u)
}

# shown DOCUMENT: its sessions, those lines that are set in, from the first command on.
shown() {
    awk '/^    \$ / { on = 1 } !/^    / { on = 0 } on { sub(/^    /, ""); print }' "$SOURCE_DIR/$1"
}

# play DOCUMENT ROOT: runs its commands there, in order; what it shows of each has to come in that order, "..." being anything.
play() {
    /usr/bin/python3 -B "$BATS_TEST_DIRNAME/sessions.py" <(shown "$1") "$ZET_BUILD/bin" "$2"
}

@test "TheSessionOfTheReadmeIsWhatHappens" {
    local root=$BATS_TEST_TMPDIR/root
    "$SOURCE_DIR/script/example-root" server "$root"
    mkdir -p "$root/etc/default"
    printf '# for the daemons\nNEED_GSSD=\n' >"$root/etc/default/nfs-common"
    printf 'DOMAIN=example.org\nSERVER=server.example.org\n' >"$root/etc/zet/zet.conf"
    play README.md "$root"
}

@test "TheSessionsAboutTemplatesAreWhatHappens" {
    local root=$BATS_TEST_TMPDIR/root
    "$SOURCE_DIR/script/example-root" server "$root"
    # shellcheck disable=SC2016
    printf 'Welcome to ${domain}.\nHelp: ldapsearch -x -H ${ldap_uris}\n' |
        cat >"$root/etc/zet/motd"
    mkdir -p "$root/etc/zet/targets.d"
    printf '[templates."motd"]\ntarget = "/etc/motd"\nroles = "both"\n' >"$root/etc/zet/targets.d/motd.toml"
    play docs/templates.md "$root"
}

# The sizes of the rooms, in steps of 500 lines. A few lines more or less may make one step.
sizes() {
    sed -n 's/.*>about \([0-9,]*\) lines<.*/\1/p' "$1" | tr -d ,
}

without_sizes() {
    sed 's/>about [0-9,]* lines</></; s/\(class="bar".*width="\)[0-9]*"/\1"/' "$1"
}

out_of_date() {
    echo "docs/pictures/$1.svg is out of date (script/pictures draws it anew)"
    return 1
}

@test "ThePicturesAreDrawnFromRuns" {
    ln -s "$ZET_BUILD/bin" "$BATS_TEST_TMPDIR/the programs"
    ZET_BIN="$BATS_TEST_TMPDIR/the programs" "$SOURCE_DIR/script/pictures" "$BATS_TEST_TMPDIR/pictures"
    local name
    for name in session rooms speed; do
        /usr/bin/python3 -c 'import sys, xml.dom.minidom; xml.dom.minidom.parse(sys.argv[1])' "$BATS_TEST_TMPDIR/pictures/$name.svg"
        grep -F 'prefers-color-scheme: dark' "$BATS_TEST_TMPDIR/pictures/$name.svg"
        [ -f "$SOURCE_DIR/docs/pictures/$name.svg" ]
        grep -F "](docs/pictures/$name.svg)" "$SOURCE_DIR/README.md"
    done
    grep -F 'would be changed' "$BATS_TEST_TMPDIR/pictures/session.svg"
    # The figures are those of the table, as often as it has them, and the rooms are about as large as they are drawn.
    cmp "$SOURCE_DIR/docs/pictures/speed.svg" "$BATS_TEST_TMPDIR/pictures/speed.svg" ||
        out_of_date speed
    cmp <(without_sizes "$SOURCE_DIR/docs/pictures/rooms.svg") <(without_sizes "$BATS_TEST_TMPDIR/pictures/rooms.svg") ||
        out_of_date rooms
    paste -d - <(sizes "$BATS_TEST_TMPDIR/pictures/rooms.svg") <(sizes "$SOURCE_DIR/docs/pictures/rooms.svg") >"$BATS_TEST_TMPDIR/differences"
    local difference
    while read -r difference; do
        ((difference >= -500 && difference <= 500)) || out_of_date rooms
    done <"$BATS_TEST_TMPDIR/differences"
}

@test "TheReferenceIsMadeWithoutAWarning" {
    command -v doxygen >/dev/null || skip "doxygen is missing (script/setup docs installs it)"
    "$SOURCE_DIR/script/docs" "$BATS_TEST_TMPDIR/reference"
    [ -f "$BATS_TEST_TMPDIR/reference/html/index.html" ]
}

@test "TheQuestionOfTheLicenceStandsInTwoPlacesAlone" {
    grep -F '## Licence' "$SOURCE_DIR/README.md"
    grep -F 'not-chosen-yet' "$SOURCE_DIR/debian/copyright"
}
