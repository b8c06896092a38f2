# The commands as they are when the module is built into them.

load helper

setup() {
    is_built_in || skip "the module is a file of its own"
    make_host
}

teardown() {
    ! is_built_in || remove_host
}

@test "a program with the module built in takes no other, and says so" {
    printf 'a=1\n' >conf
    local file
    for file in "$HOST/none.so" ""; do
        run_zet --module "$file" param get conf a
        assert_refusal 2 "--module: the module is built into this program (leave the option out) (see \"zet-client param get --help\")"
    done
}

@test "the help of a program with the module built in does not name the option" {
    capture "$ZET_BIN/zet-client" --help
    assert_status 0
    [[ $output == *--config* ]]
    [[ $output != *--module* ]]
}

@test "a program with the module built in needs no library of the product, and no C++ library" {
    local needed
    needed=$(readelf -d "$ZET_BIN/zet-init" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    [[ $needed == *libc.so* ]]
    [[ $needed != *libzet* && $needed != *libstdc++* && $needed != *libgcc_s* ]]
}

@test "a program with the module built in works alone" {
    copy_programs
    rm -r "$BASE/programs/lib"
    printf 'a=1\n' >conf
    capture "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set conf a 2
    assert_status 0
    assert_file conf "$NOTICE# --PRE-ZET-- a=1"$'\n'"$(block a=2)"$'\n'
}

@test "the build that has the module built in installs no library beside the programs" {
    cmake --install "$ZET_BIN/.." --prefix "$BASE/installed" >/dev/null
    [[ -x $BASE/installed/bin/zet-init ]]
    local found
    found=$(find "$BASE/installed" -name '*.so*' -o -name '*.pc' -o -name '*.h' -o -name '*.a')
    assert_equal "$found" ""
}
