# Other programs find what is installed, and the module with it, as CMake and as pkg-config tell them.

load package

setup_file() {
    set_up_package
    "$CMAKE" --install "$ZET_BUILD" --prefix "$PREFIX" >/dev/null
    export PKG_CONFIG_PATH=$PREFIX/lib/pkgconfig WARNINGS="-Wall -Wextra -Werror"
}

# renders PROGRAM: the program of somebody else does its work with the installed module.
renders() {
    "$1" zet.conf idmapd.conf "$HOST/idmapd.conf"
    holds_values idmapd.conf
    [ -e idmapd.conf.no_file_before_zet ]
}

# configure LINE...: CMake's verdict on a program of somebody else whose CMakeLists.txt ends with these lines.
configure() {
    cd "$BATS_TEST_TMPDIR" || return
    mkdir source
    printf '%s\n' 'cmake_minimum_required(VERSION 3.16)' 'project(other LANGUAGES CXX)' "$@" >source/CMakeLists.txt
    "$CMAKE" -S source -B build -DCMAKE_PREFIX_PATH="$PREFIX" -DCMAKE_CXX_COMPILER="$CXX"
}

@test "AProgramInCpp17EmbedsTheCoreByCMake" {
    make_host
    "$CMAKE" -S "$BATS_TEST_DIRNAME/consumer" -B consumer -DCMAKE_PREFIX_PATH="$PREFIX" \
        -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="-std=c++17 $WARNINGS"
    "$CMAKE" --build consumer
    renders consumer/zet-consumer
}

@test "AProgramInCpp17EmbedsTheCoreByPkgConfig" {
    make_host
    local flags module
    read -ra flags <<<"$WARNINGS $(pkg-config --cflags zet-core)"
    read -ra libraries <<<"$(pkg-config --libs zet-core)"
    module=$(pkg-config --variable=moduledir zet-core)/libzet-config.so
    "$CXX" -std=c++17 "${flags[@]}" -DZET_MODULE="\"$module\"" "$BATS_TEST_DIRNAME/consumer/main.cpp" \
        "${libraries[@]}" -o zet-consumer
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir zet-core) renders ./zet-consumer
}

@test "ProgramsAndTheModuleNeedTheLibraryByItsVersion" {
    local file
    for file in "$PREFIX/bin/zet-init" "$PREFIX/lib/zet/libzet-config.so"; do
        readelf -d "$file" | grep -F 'NEEDED' | grep -F '[libzet-core.so.1]'
        readelf -V "$file" | grep -F 'ZET_CORE_1'
    done
}

@test "AnotherVersionIsNotTakenForThisOne" {
    run configure 'find_package(zet 2 REQUIRED)'
    [ "$status" -ne 0 ]
    grep -F "zet-config.cmake, version: $(product_version)" <<<"$output"
    run pkg-config --exists 'zet-core >= 2'
    [ "$status" -ne 0 ]
}

@test "TheExamplesEmbedTheInstalledLibrary" {
    make_host
    "$CMAKE" -S "$SOURCE_DIR/examples/embed" -B examples -DCMAKE_PREFIX_PATH="$PREFIX" \
        -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="-std=c++17 $WARNINGS"
    "$CMAKE" --build examples

    printf 'a=1\n' >file
    run examples/edit "$HOST/file" a 2
    [ "$status" -eq 0 ]
    [ "$output" = "$HOST/file: changed, the original is kept as $HOST/file.before_zet" ]
    grep -Fx a=2 file
    run env LC_ALL=C.UTF-8 LANGUAGE=de examples/edit "$HOST/missing" a 2
    [ "$status" -eq 1 ]
    [ "$output" = "$HOST/missing: existiert nicht (legen Sie es an, oder berichtigen Sie den Pfad)" ]

    cp -r "$PREFIX/share/zet/templates" templates
    list_only templates idmapd.conf "$HOST/idmapd.conf"
    sed -i "s|^ZET_CFG_TEMPL_DIR=.*|ZET_CFG_TEMPL_DIR=$HOST/templates|" zet.conf
    run examples/commit zet.conf
    [ "$status" -eq 0 ]
    [ "${lines[0]}" = "$HOST/idmapd.conf: to be created" ]
    holds_values idmapd.conf
    run examples/commit zet.conf
    [ "$output" = "$HOST/idmapd.conf: to be unchanged" ]

    run examples/commit missing.conf
    [ "$status" -eq 1 ]
    grep -F missing.conf <<<"$output"
}

@test "AProgramInCpp17EmbedsTheLibraryByPkgConfig" {
    make_host
    printf 'a=1\n' >file
    local flags
    read -ra flags <<<"$WARNINGS $(pkg-config --cflags zet-deploy)"
    read -ra libraries <<<"$(pkg-config --libs zet-deploy)"
    "$CXX" -std=c++17 "${flags[@]}" "$SOURCE_DIR/examples/embed/edit.cpp" "${libraries[@]}" -o edit
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir zet-deploy) ./edit "$HOST/file" a 2
    grep -Fx a=2 file
}
