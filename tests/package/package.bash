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

# listed_commands PROGRAM... [WORD]: what the program's help lists as commands behind this word.
listed_commands() {
    "$@" --help | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z-]*\).*/\1/p'
}

# commands_of PROGRAM...: all of the program's commands and families of commands, and the commands of these, one a line.
commands_of() {
    local command
    for command in $(listed_commands "$@"); do
        echo "$command"
        listed_commands "$@" "$command" | sed "s/^/$command /"
    done
}

# list_only DIRECTORY TEMPLATE TARGET: a list of targets with that one alone.
list_only() {
    cat >"$1/targets.toml" <<-END
		[templates."$2"]
		target = "$3"
		roles = "both"
	END
}

# make_tree: the example's server below $DPKG_ROOT, as dpkg hands it to the scripts of the packages.
make_tree() {
    export DPKG_ROOT=$BATS_TEST_TMPDIR/root PATH=$ZET_BUILD/bin:$PATH
    "$SOURCE_DIR/script/example-root" server "$DPKG_ROOT"
    export STATE=$DPKG_ROOT/var/lib/zet
}

# zet_init WORD...: in that tree.
zet_init() {
    zet-init --root "$DPKG_ROOT" -q "$@"
}

# script NAME ARGUMENT...: one of the package's.
script() {
    local name=$1
    shift
    run sh "$SOURCE_DIR/debian/zet-tools.$name" "$@"
    echo "$name $*: $output"
    [ "$status" -eq 0 ]
}

# lead_away: the state directory is a link that leads elsewhere in its tree, and names what is not there outside of it.
lead_away() {
    mkdir -p "$DPKG_ROOT/srv"
    mv "$STATE" "$DPKG_ROOT/srv/state-of-a-tree"
    ln -s /srv/state-of-a-tree "$STATE"
}
