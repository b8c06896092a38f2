# A build for other places, and of another release: libraries where a host of several architectures has them. What moves
# with the places and the release does, and nothing else.

load package

LIBDIR=lib/x86_64-linux-gnu
RELEASE=9.8.7

setup_file() {
    set_up_package
    export OTHER=$BATS_FILE_TMPDIR/build
    echo "set(PROJECT_VERSION $RELEASE)" >"$BATS_FILE_TMPDIR/release.cmake"
    # Without tests and optimisation, each library at once: a sixth of the time.
    "$CMAKE" -S "$SOURCE_DIR" -B "$OTHER" -G Ninja -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS=-O0 \
        -DZET_BUILD_TESTS=OFF -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0 \
        -DCMAKE_INSTALL_LIBDIR="$LIBDIR" -DCMAKE_PROJECT_INCLUDE="$BATS_FILE_TMPDIR/release.cmake" >/dev/null
    "$CMAKE" --build "$OTHER" >/dev/null
    "$CMAKE" --install "$OTHER" --prefix "$PREFIX" >/dev/null
}

@test "LibrariesAndModuleAreWhereTheBuildWasToldTo" {
    # The units are where the system's manager looks for them on every machine.
    [ "$(cd "$PREFIX/lib" && echo ./*)" = "./systemd ./x86_64-linux-gnu" ]
    [ -f "$PREFIX/$LIBDIR/zet/libzet-config.so" ]
    [ -f "$PREFIX/$LIBDIR/cmake/zet/zet-config.cmake" ]
}

@test "ACommandFindsLibraryAndModuleThere" {
    make_host
    "$PREFIX/bin/zet-client" --config zet.conf template process idmapd.conf "$HOST/idmapd.conf"
    holds_values idmapd.conf
}

@test "ACommandRunsFromTheBuildTreeToo" {
    make_host
    "$OTHER/bin/zet-client" --config zet.conf template process idmapd.conf "$HOST/idmapd.conf"
    holds_values idmapd.conf
}

@test "PkgConfigAndCMakeLeadThere" {
    make_host
    export PKG_CONFIG_PATH=$PREFIX/$LIBDIR/pkgconfig
    [ "$(realpath "$(pkg-config --variable=moduledir zet-core)")" = "$(realpath "$PREFIX/$LIBDIR/zet")" ]
    [ "$(realpath "$(pkg-config --variable=includedir zet-core)")" = "$(realpath "$PREFIX/include")" ]
    "$CMAKE" -S "$BATS_TEST_DIRNAME/consumer" -B consumer -DCMAKE_PREFIX_PATH="$PREFIX" -DCMAKE_CXX_COMPILER="$CXX"
    "$CMAKE" --build consumer
    consumer/zet-consumer zet.conf idmapd.conf "$HOST/idmapd.conf"
    holds_values idmapd.conf
}

@test "TheReleaseIsSaidByOneNumberEverywhere" {
    [ "$("$PREFIX/bin/zet-init" --version)" = "zet-init $RELEASE" ]
    [ "$("$PREFIX/bin/zet-client" -V)" = "zet-client $RELEASE" ]
    [ "$(PKG_CONFIG_PATH=$PREFIX/$LIBDIR/pkgconfig pkg-config --modversion zet-core)" = "$RELEASE" ]
    grep -F "set(PACKAGE_VERSION \"$RELEASE\")" "$PREFIX/$LIBDIR/cmake/zet/zet-config-version.cmake"
    [ "$(readlink "$PREFIX/$LIBDIR/libzet-core.so.1")" = "libzet-core.so.$RELEASE" ]
}

@test "TheRecordOfTheModuleDoesNotFollowTheRelease" {
    strings "$PREFIX/$LIBDIR/zet/libzet-config.so" | grep -Fx 1.7.37
    run grep -qF "$RELEASE" "$PREFIX/$LIBDIR/zet/libzet-config.so"
    [ "$status" -eq 1 ]
}

@test "NoVersionOfTheProductStandsBesideThatOfTheBuild" {
    # The record's number may be the same; it has its own place, beside the product's.
    cd "$SOURCE_DIR"
    run grep -rnF "$(product_version)" src include man completions templates cmake script docs README.md
    echo "$output"
    [ "$status" -eq 1 ]
    [ "$(sed -n 's/^## //p' CHANGELOG.md | grep -v '^Unreleased$' | head -1)" = "$(product_version)" ]
}

@test "APlaceOutsideThePrefixIsRefused" {
    local place
    for place in /elsewhere/lib ../lib; do
        run "$CMAKE" -S "$SOURCE_DIR" -B "$BATS_TEST_TMPDIR/refused" -DCMAKE_CXX_COMPILER="$CXX" -DZET_BUILD_TESTS=OFF \
            -DCMAKE_INSTALL_LIBDIR:STRING="$place"
        [ "$status" -ne 0 ]
        grep -F "CMAKE_INSTALL_LIBDIR is \"$place\"" <<<"$output"
    done
}
