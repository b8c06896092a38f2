# What the tests of an installation share. ZET_BUILD names the directory of the build.

# Sets what the tests use: the sources, the build, and the tools by which it was built.
set_up_package() {
    export SOURCE_DIR ZET_BUILD CMAKE=${CMAKE:-cmake} CMAKE_GENERATOR=Ninja CXX=${CXX:-c++} LC_ALL=C
    SOURCE_DIR=$(cd "$BATS_TEST_DIRNAME/../.." && pwd)
    ZET_BUILD=${ZET_BUILD:-$SOURCE_DIR/build/test}
    export PREFIX=$BATS_FILE_TMPDIR/prefix
    umask 022
}

# A host whose templates are the installed ones, in the current directory.
make_host() {
    HOST=$BATS_TEST_TMPDIR
    cd "$HOST" || return
    mkdir working state
    (umask 077 && : >state/zet.lock)
    cat >zet.conf <<-END
		DOMAIN=example.org
		SERVER=server.example.org
		ZET_CFG_DIR=$HOST/working
		ZET_CFG_TEMPL_DIR=$PREFIX/share/zet/templates
		ZET_VAR_LIB_DIR=$HOST/state
	END
}

# holds_values FILE: the file is made from idmapd.conf with the values of the domain.
holds_values() {
    grep -Fx 'Domain = example.org' "$1"
    grep -Fx 'Local-Realms = EXAMPLE.ORG' "$1"
}

# product_version: the one that CMake gives the product.
product_version() {
    sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$ZET_BUILD/CMakeCache.txt"
}

# list_only DIRECTORY TEMPLATE TARGET: a list of targets with that one alone.
list_only() {
    cat >"$1/targets.toml" <<-END
		[templates."$2"]
		target = "$3"
		roles = "both"
	END
}
