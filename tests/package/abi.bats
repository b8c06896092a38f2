# What the libraries export is what was promised, and script/abi tells what is not.

load package

setup_file() {
    set_up_package
    export LISTS=$BATS_FILE_TMPDIR/lists LIBRARIES=${ZET_LIBRARIES:-$ZET_BUILD/lib}
}

# What the script tells is tried on the smallest library, since a library is looked at for seconds.
setup() {
    mkdir "$BATS_TEST_TMPDIR/lists" "$BATS_TEST_TMPDIR/libraries"
    cp "$BATS_TEST_DIRNAME"/libzet-core.* "$BATS_TEST_TMPDIR/lists"
    ln -s "$LIBRARIES/libzet-core.so" "$BATS_TEST_TMPDIR/libraries"
    LISTS=$BATS_TEST_TMPDIR/lists ALL_LIBRARIES=$LIBRARIES
    LIBRARIES=$BATS_TEST_TMPDIR/libraries
}

# copy_debian: for a script that may write there, and a version that may change.
copy_debian() {
    DEBIAN=$BATS_TEST_TMPDIR/debian
    cp -r "$SOURCE_DIR/debian" "$DEBIAN"
}

# fails_with TEXT...: the comparison with the changed lists fails and says so, in one line that holds all texts.
fails_with() {
    local lines text
    run "$SOURCE_DIR/script/abi" --libraries "$LIBRARIES" --lists "$LISTS" --debian "${DEBIAN:-$SOURCE_DIR/debian}"
    echo "$output"
    [ "$status" -eq 1 ]
    lines=$output
    for text in "$@"; do lines=$(grep -F -- "$text" <<<"$lines"); done
    [ -n "$lines" ]
}

@test "TheLibrariesExportWhatWasPromised" {
    "$SOURCE_DIR/script/abi" --libraries "$ALL_LIBRARIES" --lists "$BATS_TEST_DIRNAME"
}

@test "WhatThePublicHeadersDeclareIsPromised" {
    run /usr/bin/python3 -B "$BATS_TEST_DIRNAME/declared.py" "$SOURCE_DIR/include" \
        < <(cat "$BATS_TEST_DIRNAME"/lib*.symbols | c++filt)
    echo "$output"
    [ "$status" -eq 0 ]
    [ "${#lines[@]}" -eq 1 ]
    [[ ${lines[0]} =~ ^of\ 1[0-9][0-9]\ names ]]
}

@test "NothingOfTheImplementationIsPromised" {
    local name node
    for name in core deploy; do
        node=ZET_${name^^}_1
        run c++filt <"$BATS_TEST_DIRNAME/libzet-$name.symbols"
        [ "$status" -eq 0 ]
        [ "${#lines[@]}" -gt 50 ]
        for line in "${lines[@]}"; do
            [[ $line =~ ^($node|((vtable|typeinfo|typeinfo name) for )?ZET::.*@@$node)$ ]]
            [[ $line != *Implementation* && $line != *"ZET::Core::"* && $line != *Deployment* ]]
        done
    done
}

@test "ANameThatIsNewIsToldWithTheRemedy" {
    sed -i /CountLoggedErrors/d "$LISTS/libzet-core.symbols"
    fails_with "libzet-core.so: is new: ZET::CountLoggedErrors()" "script/abi --renew"
}

@test "ANameThatIsGoneIsToldWithTheRemedy" {
    sed -i 's/17CountLoggedErrors/17CountLoggedHorror/' "$LISTS/libzet-core.symbols"
    fails_with "libzet-core.so: is gone: ZET::CountLoggedHorror()" "SOVERSION"
}

@test "ATypeOfAnotherSizeIsToldWithTheRemedy" {
    sed -i '/name="EZETError"/s/size-in-bits="[0-9]*"/size-in-bits="64"/' "$LISTS/libzet-core.abi"
    fails_with "type size changed from 64 to"
    fails_with "libzet-core.so: the types above are others" "script/abi --renew"
}

@test "AnOperationInAnotherSlotIsTold" {
    sed -i 's/vtable-offset="3"/vtable-offset="30"/; s/vtable-offset="4"/vtable-offset="3"/' "$LISTS/libzet-core.abi"
    fails_with "the vtable offset of method" "GetServerName"
}

@test "ALibraryWithoutAListIsTold" {
    rm "$LISTS/libzet-core.symbols"
    fails_with "libzet-core.so: has no list" "script/abi --renew"
}

@test "AListWithoutALibraryIsTold" {
    cp "$LISTS/libzet-core.symbols" "$LISTS/libzet-other.symbols"
    fails_with "libzet-other.so: is gone"
}

@test "TheListsAreMadeAnewAsTheyWere" {
    rm "$LISTS"/lib*
    copy_debian
    rm "$DEBIAN/libzet-core1.symbols"
    "$SOURCE_DIR/script/abi" --renew --libraries "$LIBRARIES" --lists "$LISTS" --debian "$DEBIAN"
    cmp "$DEBIAN/libzet-core1.symbols" "$SOURCE_DIR/debian/libzet-core1.symbols"
    cmp "$LISTS/libzet-core.symbols" "$BATS_TEST_DIRNAME/libzet-core.symbols"
    "$SOURCE_DIR/script/abi" --libraries "$LIBRARIES" --lists "$LISTS"
}

@test "ALibraryWithoutDebugInformationIsNotTakenForAGoodOne" {
    mkdir "$BATS_TEST_TMPDIR/stripped"
    strip -o "$BATS_TEST_TMPDIR/stripped/libzet-core.so" "$LIBRARIES/libzet-core.so"
    LIBRARIES=$BATS_TEST_TMPDIR/stripped
    fails_with "has no debug information" "--libraries"
    run "$SOURCE_DIR/script/abi" --libraries "$BATS_TEST_TMPDIR" --lists "$LISTS"
    [ "$status" -eq 1 ]
    grep -F "holds no library" <<<"$output"
}

# The version of the packages is raised, and then the library has a name more.
@test "WhoUsesANewNameOfALibraryWantsTheVersionThatBringsIt" {
    local name=_ZN3ZET10CreateFileERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE
    copy_debian
    sed -i '1s/(.*)/(9.8.7-1)/' "$DEBIAN/changelog"
    sed -i "/$name/d" "$DEBIAN/libzet-core1.symbols"
    fails_with "debian/libzet-core1.symbols lists other names" "script/abi --renew"
    "$SOURCE_DIR/script/abi" --renew --libraries "$LIBRARIES" --lists "$LISTS" --debian "$DEBIAN"
    grep -Fx " (arch-bits=64)$name@ZET_CORE_1 9.8.7" "$DEBIAN/libzet-core1.symbols"
    sed -i "s/\($name.*\) 9.8.7/\1 1.7.37/" "$DEBIAN/libzet-core1.symbols"
    cmp "$DEBIAN/libzet-core1.symbols" "$SOURCE_DIR/debian/libzet-core1.symbols"
}

@test "PackagesOfOneSourceWhoseVersionsMayNotDifferSaySo" {
    # field PACKAGE FIELD
    field() { sed -n "/^Package: $1\$/,/^\$/p" "$SOURCE_DIR/debian/control" | sed -n "/^$2:/,/^[A-Z]/p"; }
    field zet-tools Depends | grep -F 'libzet-core1 (= ${binary:Version})'
    field libzet-deploy1 Depends | grep -F 'libzet-core1 (= ${binary:Version})'
    # Old tools take a new key of a list for a mistake.
    field zet-templates Breaks | grep -F 'zet-tools (<< ${source:Version})'
}
