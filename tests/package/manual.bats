# The manual's pages: sound, found where they are installed, complete, and with examples that work.

load package

setup_file() {
    set_up_package
    export MANUAL=$SOURCE_DIR/man
}

# example_host: a host of the example domain in $ROOT, on which the commands work by their own names. The client's
# settings are the server's.
example_host() {
    export ROOT=$BATS_TEST_TMPDIR/root HOME=$BATS_TEST_TMPDIR/home
    mkdir -p "$BATS_TEST_TMPDIR/bin" "$HOME"
    "$SOURCE_DIR/script/example-root" server "$ROOT"
    local program
    for program in zet-init zet-client; do
        printf '#!/bin/sh\nexec "%s/bin/%s" --root "%s" "$@"\n' "$ZET_BUILD" "$program" "$ROOT" >"$BATS_TEST_TMPDIR/bin/$program"
    done
    # The machine's own are not looked at.
    printf "#!/bin/sh\n" >"$BATS_TEST_TMPDIR/bin/journalctl"
    chmod 755 "$BATS_TEST_TMPDIR"/bin/*
    export PATH=$BATS_TEST_TMPDIR/bin:$PATH
}

pages() {
    (cd "$MANUAL" && printf '%s\n' ./*.scd | sed 's|^\./||; s|\.scd$||')
}

@test "EveryPageIsWhatTheCheckersOfManualsAccept" {
    local page
    [ "$(pages | wc -l)" -ge 6 ]
    while read -r page; do
        run mandoc -T lint -W warning "$ZET_BUILD/man/$page"
        echo "$output"
        [ -z "$output" ]
        run man --warnings -E UTF-8 -l -Tutf8 -Z "$ZET_BUILD/man/$page" 2>&1 >/dev/null
        [ "$status" -eq 0 ]
        [ -z "$(man --warnings -E UTF-8 -l -Tutf8 -Z "$ZET_BUILD/man/$page" 2>&1 >/dev/null)" ]
    done < <(pages)
}

@test "EveryPageIsFoundWhereItIsInstalled" {
    cmake --install "$ZET_BUILD" --prefix "$PREFIX" >/dev/null
    local page
    for page in $(pages) zet-client.1 targets.toml.5; do
        run env -u MANPATH MANPATH="$PREFIX/share/man" man -w "${page##*.}" "${page%.*}"
        [ "$status" -eq 0 ]
        [ -s "$output" ]
    done
}

@test "EveryPageHasWhatItsSectionPromises" {
    local page heading
    while read -r page; do
        for heading in NAME DESCRIPTION "SEE ALSO"; do grep -Fx "# $heading" "$MANUAL/$page.scd"; done
        grep -Fx '# EXAMPLES' "$MANUAL/$page.scd"
        # One is about nothing but files.
        [[ $page == zet-state.5 ]] || grep -Fx '# FILES' "$MANUAL/$page.scd"
    done < <(pages)
    for heading in values.conf defaults.d values.d zet.conf; do
        sed -n '/^# FILES/,/^# EXAMPLES/p' "$MANUAL/zet.conf.5.scd" | grep -E "^\*/.*$heading"
    done
    for heading in SYNOPSIS OPTIONS ENVIRONMENT "EXIT STATUS" FILES SECRETS MONITORING JOURNAL; do
        grep -Fx "# $heading" "$MANUAL/zet-init.1.scd"
    done
    grep -Fx '# SECURITY' "$MANUAL/zet.7.scd"
}

@test "EveryPageThatIsReferredToIsThereOrOfTheSystem" {
    local reference
    grep -ohE '\*[a-z][a-z.-]*\*\([0-9]\)' "$MANUAL"/*.scd | tr -d '*' | sort -u | while read -r reference; do
        case $reference in
            'patch(1)' | 'systemd.timer(5)' | 'zet-client(1)') continue ;;
        esac
        [ -f "$MANUAL/${reference%(*}.$(sed 's/.*(\(.\))/\1/' <<<"$reference").scd" ] || {
            echo "there is no $reference"
            return 1
        }
    done
}

@test "EveryVariableOfTheEnvironmentIsDescribed" {
    local name names
    names=$(grep -rhoE 'getenv\("[A-Z_]+"\)' "$SOURCE_DIR/src" "$SOURCE_DIR/include" | sed 's/.*"\(.*\)".*/\1/' | sort -u)
    [ -n "$names" ]
    # The system's library reads that one.
    grep -rqw localtime_r "$SOURCE_DIR/src" && names+=" TZ"
    for name in $names; do
        sed -n '/^# ENVIRONMENT/,/^# EXIT STATUS/p' "$MANUAL/zet-init.1.scd" | sed 's/\\_/_/g' | grep -E "^\*(.*\*, \*)?$name\*"
    done
}

@test "EveryExitStatusIsDescribed" {
    diff <(sed -n 's/.* = \([0-9]\),\{0,1\}.*/\1/p; s/.*constexpr int k[A-Za-z]* = \([0-9]\);.*/\1/p' "$SOURCE_DIR/src/cli/ExitStatus.h" | sort -u) \
        <(sed -n '/^# EXIT STATUS/,/^# FILES/s/^\*\([0-9]\)\*.*/\1/p' "$MANUAL/zet-init.1.scd")
}

@test "EveryFileOfTheStateDirectoryIsDescribed" {
    example_host
    local name
    zet-init commit-config -q
    zet-client commit-config -q
    for name in "$ROOT"/var/lib/zet/*; do
        sed 's/\\//g' "$MANUAL/zet-state.5.scd" | grep -F "*/var/lib/zet/${name##*/}*"
    done
}

@test "EveryFileOfTheStateDirectoryGoesWithAPurgeOfThePackages" {
    example_host
    local name
    zet-init commit-config -q
    for name in "$ROOT"/var/lib/zet/*; do
        sed -n '/^forget() {/,/^}/p' "$SOURCE_DIR/debian/zet-tools.postrm" | grep -oE '[^ /]+' | grep -Fx "${name##*/}"
    done
    # So do those that the removal leaves for it.
    for name in $(grep -oE '>"\$STATE/[a-z]+"|mv .*' "$SOURCE_DIR/debian/zet-tools.prerm" | grep -oE '[a-z]+"$' | tr -d '"'); do
        sed 's/\\//g' "$MANUAL/zet-state.5.scd" | grep -F "*/var/lib/zet/$name*"
        sed -n '/^forget() {/,/^}/p' "$SOURCE_DIR/debian/zet-tools.postrm" | grep -oE '[^ /]+' | grep -Fx "$name"
    done
}

# examples PAGE: the commands of its examples, one a line.
examples() {
    sed -n '/^# EXAMPLES/,/^# SEE ALSO/p' "$MANUAL/$1.scd" | sed -n '/^\t/,/^$/{/^$/!p}' | sed 's/^\t//; s/++$//; s/\\\([_*#]\)/\1/g'
}

@test "TheExamplesWork" {
    example_host
    zet-init commit-config -q
    zet-init option set TICKET_MAX_LIFE 9h
    zet-init commit-config -q
    zet-init undo -q
    zet-init undo -q
    local page command count=0
    cd "$BATS_TEST_TMPDIR"
    for page in zet-init.1 zet-templates.5 zet.conf.5 zet-state.5 zet.7; do
        while IFS= read -r command; do
            command=${command//find \/etc/find $ROOT/etc}
            command=${command// \/var\/lib\/zet/ $ROOT/var/lib/zet}
            # A dry run says by 3 that something would change; the numbers are those of an older host.
            command=${command/history show 7/history show 1}
            echo "$page: $command"
            count=$((count + 1))
            status=0
            bash -o pipefail -c "$command" </dev/null || status=$?
            case $command in
                *' -n '* | *'template diff'*) [[ $status -eq 3 || $status -eq 0 ]] ;;
                *) [ "$status" -eq 0 ] ;;
            esac
        done < <(examples "$page")
    done
    [ "$count" -ge 12 ]
}

@test "TheLinesForMonitoringPlugInsSayWhatTheyShould" {
    example_host
    sed -n '/^# MONITORING/,/^# JOURNAL/p' "$MANUAL/zet-init.1.scd" | awk '/^```$/ { ++fences; next } fences == 1' >"$BATS_TEST_TMPDIR/plug-in"
    [ "$(wc -l <"$BATS_TEST_TMPDIR/plug-in")" -eq 4 ]
    zet-init commit-config -q
    sh "$BATS_TEST_TMPDIR/plug-in"
    echo more >>"$ROOT/etc/exports"
    run sh "$BATS_TEST_TMPDIR/plug-in"
    [ "$status" -eq 1 ]
    grep -F '/etc/exports: edited' <<<"$output"
    zet-init commit-config -q
    sh "$BATS_TEST_TMPDIR/plug-in"
    # A history that is damaged or may not be read leaves something out, which only a warning says.
    (umask 077 && echo "no database, but so many bytes that it could be one" >"$ROOT/var/lib/zet/state.db")
    rm -f "$ROOT"/var/lib/zet/state.db-*
    run sh "$BATS_TEST_TMPDIR/plug-in"
    [ "$status" -eq 1 ]
    grep -F 'the history is damaged' <<<"$output"
    echo broken >"$ROOT/etc/zet/zet.conf"
    run sh "$BATS_TEST_TMPDIR/plug-in"
    [ "$status" -eq 2 ]
}

# examples_of_lists: those of the page about them; each begins with a line "# example NUMBER".
examples_of_lists() {
    awk '/^# EXAMPLES/ { on = 1 } on && /^```$/ { inside = !inside; if (inside) print "# example " ++count; next } inside' "$MANUAL/zet-targets.5.scd"
}

@test "TheExamplesOfTheListAreOne" {
    example_host
    examples_of_lists | sed '/^# example 4$/,$d' >"$ROOT/usr/share/zet/templates/targets.toml"
    grep -F 'trust = "freerad"' "$ROOT/usr/share/zet/templates/targets.toml"
    [ "$(zet-init -q template list | wc -l)" -eq 3 ]
}

@test "TheExampleOfAHostsOwnListStandsBesideTheShippedOne" {
    example_host
    mkdir "$ROOT/etc/zet/targets.d"
    examples_of_lists | sed '1,/^# example 4$/{/^# example 4$/!d}' >"$ROOT/etc/zet/targets.d/own.toml"
    grep -F 'name = "ntp"' "$ROOT/etc/zet/targets.d/own.toml"
    zet-init -q template list >"$BATS_TEST_TMPDIR/listed"
    grep -F 'motd: /etc/motd (' "$BATS_TEST_TMPDIR/listed"
    grep -F 'not in force' "$BATS_TEST_TMPDIR/listed" | grep '^exports: '
    grep -F 'changed by ' "$BATS_TEST_TMPDIR/listed" | grep '^krb5.conf: '
}

@test "HelpForACommandBeginsAtItsHeadingOnEveryTerminal" {
    command -v less >/dev/null || skip "there is no less here"
    "$CMAKE" --install "$ZET_BUILD" --prefix "$PREFIX" >/dev/null
    local width command commands=()
    while read -r command; do commands+=("$command"); done < <(
        "$PREFIX/bin/zet-init" --help | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z-]*\).*/\1/p'
        for command in template param line file option history; do
            "$PREFIX/bin/zet-init" "$command" --help | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z-]*\).*/'"$command"' \1/p'
        done
    )
    [ "${#commands[@]}" -ge 35 ]
    for width in 60 80 100; do
        env -u LESS MANPATH="$PREFIX/share/man" /usr/bin/python3 -B "$BATS_TEST_DIRNAME/pages.py" "$width" \
            "$PREFIX/bin/zet-init" "${commands[@]}" >"$BATS_TEST_TMPDIR/shown"
        for command in "${commands[@]}"; do
            # shellcheck disable=SC2086  # a command may have two words
            set -- $command
            grep -E "^$command:        $1${2:+ ([a-z]+[|])*$2}([ |]|\$)" "$BATS_TEST_TMPDIR/shown"
        done
    done
}
