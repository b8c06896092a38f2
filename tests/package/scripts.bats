# The scripts of the tree. Asked for help, they say how they are used, and do nothing else. ZET_BUILD names the directory of
# the build.

# A copy of what the scripts read, and programs that note when one goes to work.
setup() {
    SOURCE_DIR=$(cd "$BATS_TEST_DIRNAME/../.." && pwd)
    COPY=$BATS_TEST_TMPDIR/copy
    mkdir "$COPY" "$BATS_TEST_TMPDIR/tools"
    cp -r "$SOURCE_DIR"/{script,benchmarks,CMakePresets.json} "$COPY"
    local tool
    for tool in cmake ctest doxygen dpkg-buildpackage setpriv xgettext setup; do
        # shellcheck disable=SC2016  # expanded by the program
        printf '#!/bin/sh\necho "${0##*/} $*" >>"%s/work"\nexit 1\n' "$BATS_TEST_TMPDIR" >"$BATS_TEST_TMPDIR/tools/$tool"
    done
    chmod 755 "$BATS_TEST_TMPDIR"/tools/*
    mv "$BATS_TEST_TMPDIR/tools/setup" "$COPY/script"
    cd "$COPY/script" || return
}

# says_how SCRIPT STATUS: asked for help, the script ends with that status.
says_how() {
    PATH=$BATS_TEST_TMPDIR/tools:$PATH run "$1" --help
    echo "$1: exit status $status, $output"
    [ "$status" -eq "$2" ]
    grep -E "script/${1##*/}|usage: ${1##*/}" <<<"$output"
    [ ! -e "$BATS_TEST_TMPDIR/work" ]
}

@test "EveryScriptThatIsAskedForHelpSaysHowItIsUsedAndDoesNothingElse" {
    unset ZET_BIN
    local script
    find "$COPY" | sort >"$BATS_TEST_TMPDIR/before"
    for script in *; do
        [ -x "$script" ] || continue
        case $script in
            setup) says_how "$SOURCE_DIR/script/setup" 2 ;;
            bench) says_how ./bench 0 ;;
            pictures) says_how ./pictures 1 ;;
            *) says_how "./$script" 2 ;;
        esac
    done
    find "$COPY" | sort | diff "$BATS_TEST_TMPDIR/before" -
}

@test "TheDemoRunsWhereRootsTemporaryFilesAreForRootAlone" {
    [ "$EUID" -eq 0 ] || skip "needs root"
    mkdir -m 700 "$BATS_TEST_TMPDIR/private"
    TMPDIR=$BATS_TEST_TMPDIR/private ZET_BIN=${ZET_BUILD:-$SOURCE_DIR/build/test}/bin run "$SOURCE_DIR/script/demo"
    echo "$output"
    [ "$status" -eq 0 ]
}
