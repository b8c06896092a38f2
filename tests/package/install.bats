# What is installed can be used without the tree that it was built in. ZET_BUILD names the directory of the build.

load package

setup_file() {
    set_up_package
    export PACKAGE=$BATS_FILE_TMPDIR/package
    "$CMAKE" --install "$ZET_BUILD" --prefix "$PREFIX" >/dev/null
    DESTDIR=$PACKAGE "$CMAKE" --install "$ZET_BUILD" --prefix /opt/zet >/dev/null
}

# list DIRECTORY: what is in it, with modes, and where links lead.
list() {
    (cd "$1" && find . ! -type d \( -type l -printf '%P -> %l\n' -o -printf '%P %m\n' \) | sort)
}

expected_files() {
    local version name language
    (cd "$SOURCE_DIR" && find include/zet -name '*.h' -printf '%p 644\n')
    version=$(product_version)
    for name in zet-core zet-deploy; do
        printf '%s\n' "lib/lib$name.so -> lib$name.so.1" "lib/lib$name.so.1 -> lib$name.so.$version" \
            "lib/lib$name.so.$version 644" "lib/pkgconfig/$name.pc 644"
    done
    for language in de es fr; do
        for name in libzet-config libzet-core libzet-deploy zet-tools; do echo "share/locale/$language/LC_MESSAGES/$name.mo 644"; done
    done
    # The name of the kind of build is in the name of one file.
    basename -a "$PREFIX"/lib/cmake/zet/zet-config-*.cmake | grep -v version | sed 's|.*|lib/cmake/zet/& 644|'
    cat <<-'END'
		bin/zet-client -> zet-init
		bin/zet-init 755
		lib/cmake/zet/zet-config-version.cmake 644
		lib/cmake/zet/zet-config.cmake 644
		lib/systemd/system/zet-status.service 644
		lib/systemd/system/zet-status.timer 644
		lib/zet/libzet-config.so 644
		libexec/zet/write-metrics 755
		share/bash-completion/completions/zet-client -> zet-init
		share/bash-completion/completions/zet-init 644
		share/man/man1/zet-client.1 -> zet-init.1
		share/man/man1/zet-init.1 644
		share/fish/vendor_completions.d/zet-client.fish 644
		share/fish/vendor_completions.d/zet-init.fish 644
		share/man/man5/targets.toml.5 -> zet-targets.5
		share/man/man5/zet-state.5 644
		share/man/man5/zet-targets.5 644
		share/man/man5/zet-templates.5 644
		share/man/man5/zet.conf.5 644
		share/man/man7/zet.7 644
		share/zet/templates/domain.ldif 644
		share/zet/templates/exports 644
		share/zet/templates/idmapd.conf 644
		share/zet/templates/kadm5.acl 600
		share/zet/templates/kdc.conf 644
		share/zet/templates/krb5-srv.conf 644
		share/zet/templates/krb5.conf 644
		share/zet/templates/ldap.conf 644
		share/zet/templates/nslcd.conf 640
		share/zet/templates/slapd-no-tls.conf 644
		share/zet/templates/slapd-tls.conf 644
		share/zet/templates/slapd.conf 644
		share/zet/templates/sssd.conf 600
		share/zet/templates/targets.toml 644
		share/zet/templates/values.conf 644
		share/zsh/site-functions/_zet-init 644
	END
}

@test "EveryFileIsInstalledInItsPlaceWithItsMode" {
    diff -u <(expected_files | sort) <(list "$PREFIX")
}

@test "APackageHoldsTheSameFilesBelowItsOwnRoot" {
    # Two lists that fail are equal, too.
    [ "$(list "$PACKAGE/opt/zet" | wc -l)" -eq "$(expected_files | wc -l)" ]
    diff -u <(list "$PREFIX") <(list "$PACKAGE/opt/zet")
    [ "$(find "$PACKAGE" -mindepth 1 -maxdepth 2 -printf '%P ')" = "opt opt/zet " ]
}

@test "NothingInstalledSearchesTheBuildTree" {
    local file
    for file in bin/zet-init lib/libzet-core.so lib/libzet-deploy.so lib/zet/libzet-config.so; do
        run readelf -d "$PREFIX/$file"
        [ "$status" -eq 0 ]
        paths=$(sed -n 's/.*R.*PATH.*\[\(.*\)\]/\1/p' <<<"$output")
        case $file in
            bin/*) [ "$paths" = "\$ORIGIN/../lib" ] ;;
            lib/zet/*) [ "$paths" = "\$ORIGIN/.." ] ;;
            lib/libzet-deploy.so) [ "$paths" = "\$ORIGIN" ] ;;
            *) [ -z "$paths" ] ;;
        esac
    done
    run grep -rlF -e "$SOURCE_DIR" -e "$ZET_BUILD" \
        "$PREFIX"/lib/{cmake,pkgconfig} "$PREFIX/include" "$PREFIX/share"
    [ "$status" -eq 1 ]
}

@test "EachInstalledHeaderCompilesAlone" {
    local header
    cd "$PREFIX/include"
    for header in zet/*.h zet/deploy/*.h; do
        echo "#include \"$header\"" |
            "$CXX" -std=c++17 -pedantic-errors -Wall -Wextra -Werror -fsyntax-only -I. -x c++ -
    done
}

@test "InstalledProgramsFindTheirModule" {
    make_host
    local bin
    for bin in "$PREFIX/bin" "$PACKAGE/opt/zet/bin"; do
        "$bin/zet-client" --config zet.conf template process idmapd.conf "$HOST/idmapd.conf"
        holds_values idmapd.conf
        "$bin/zet-init" --config zet.conf file restore idmapd.conf
        rm -f idmapd.conf
    done
}

@test "TheModuleOfAnInstalledProgramIsThatOfItsOwnPrefix" {
    make_host
    cp -R "$PREFIX" moved
    moved/bin/zet-client --config zet.conf values
    rm moved/lib/zet/libzet-config.so
    run moved/bin/zet-client --config zet.conf values
    [ "$status" -eq 1 ]
    grep -F "$HOST/moved/" <<<"$output"
}

@test "TheTimersServiceStartsTheScriptOfItsOwnPrefix" {
    local prefix
    for prefix in "$PREFIX" "$PACKAGE/opt/zet"; do
        [ "$(sed -n 's/^ExecStart=//p' "$prefix/lib/systemd/system/zet-status.service")" = "${prefix#"$PACKAGE"}/libexec/zet/write-metrics" ]
        [ -x "$prefix/libexec/zet/write-metrics" ]
        run grep -F @ "$prefix/lib/systemd/system/zet-status.service"
        [ "$output" = "SystemCallFilter=@system-service
SystemCallFilter=~@privileged @resources @mount" ]
    done
}

@test "TheTimersScriptCallsTheCommandsOfItsOwnPrefix" {
    make_host
    run env PATH=/usr/bin:/bin ZET_CONFIG=zet.conf ZET_METRICS_DIR="$HOST/none" "$PACKAGE/opt/zet/libexec/zet/write-metrics"
    echo "$output"
    [ "$status" -eq 0 ]
    [ -z "$output" ]
}

@test "InstalledManualPagesAreWritten" {
    local page
    for page in "$PREFIX"/share/man/man*/*; do
        head -1 "$page" | grep -q '^\.\\" Generated'
        grep -q '^\.SH NAME' "$page"
    done
}
