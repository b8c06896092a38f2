# The Debian packages: they are built, installed into a bare system, live there, and go. The tests follow one another.
# ZET_DEBS names a directory that script/package has made already, ZET_TREE a bare system.

load package

setup_file() {
    set_up_package
    [ "$EUID" -eq 0 ] || skip "needs root"
    local tool
    for tool in dpkg-buildpackage lintian mmdebstrap; do
        command -v "$tool" >/dev/null || skip "$tool is missing (script/setup test installs it)"
    done
    unshare --mount true || skip "nothing can be mounted here"
    export DEBS=${ZET_DEBS:-$BATS_FILE_TMPDIR/debs} OLD=$BATS_FILE_TMPDIR/old TREE=$BATS_FILE_TMPDIR/tree
    export WHAT_LINTIAN_SAID=$BATS_FILE_TMPDIR/lintian
    export DEBIAN_FRONTEND=noninteractive
    make_bare_system || skip "no mirror of Debian can be reached: $(tail -1 "$BATS_FILE_TMPDIR/mmdebstrap")"
    if [ -z "${ZET_DEBS:-}" ]; then
        "$SOURCE_DIR/script/package" "$DEBS" >"$WHAT_LINTIAN_SAID" 2>&1 || echo "exit status $?" >>"$WHAT_LINTIAN_SAID"
    fi
    make_old
}

# make_bare_system: with what the packages depend on.
make_bare_system() {
    if [ -n "${ZET_TREE:-}" ]; then
        cp -a "$ZET_TREE" "$TREE"
        return
    fi
    mmdebstrap --variant=minbase --include=diffutils,libpcre2-8-0,libsqlite3-0,libzstd1,man-db \
        "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$TREE" >"$BATS_FILE_TMPDIR/mmdebstrap" 2>&1
}

# The same packages as an older revision, with an older template.
make_old() {
    local package version
    version=$(product_version)
    mkdir "$OLD"
    for package in "$DEBS"/*.deb; do
        [[ $package != *-dbgsym_* ]] || continue
        rm -rf "$OLD/tree"
        dpkg-deb -R "$package" "$OLD/tree"
        sed -i -E '/^(Version|Depends|Breaks|Recommends):/s/'"$version"'(-1)?/0.9-1/g' "$OLD/tree/DEBIAN/control"
        if [ -e "$OLD/tree/usr/share/zet/templates/krb5.conf" ]; then
            sed -i '/^\[realms\]/i # An older text.' "$OLD/tree/usr/share/zet/templates/krb5.conf"
        fi
        dpkg-deb -Znone -b "$OLD/tree" "$OLD/$(basename "$package" | sed "s/$version/0.9/")" >/dev/null
    done
    rm -rf "$OLD/tree"
}

# inside COMMAND...: in the tree.
inside() {
    # shellcheck disable=SC2016  # expanded inside
    unshare --mount sh -c 'mount -t proc proc "$1/proc" && mount -t tmpfs tmpfs "$1/tmp" && shift && exec chroot "$@"' \
        sh "$TREE" "$TREE" env PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root DEBIAN_FRONTEND=noninteractive "$@"
}

# install_from DIRECTORY
install_from() {
    rm -rf "$TREE/debs"
    cp -r "$1" "$TREE/debs"
    inside sh -c 'dpkg --auto-deconfigure -i /debs/libzet-config_*.deb /debs/libzet-core1_*.deb /debs/libzet-deploy1_*.deb /debs/libzet-dev_*.deb /debs/zet-templates_*.deb /debs/zet-tools_*.deb' 2>&1
    rm -rf "$TREE/debs"
}

# put_manager: the tree's systemctl notes how it is called, and answers what the file run/systemd/timer says of the timer.
put_manager() {
    mkdir -p "$TREE/run/systemd/system"
    cat >"$TREE/usr/bin/systemctl" <<-'END'
		#!/bin/sh
		echo "$*" >>/run/systemd/calls
		case $* in
		    *is-enabled*zet-status.timer*) cat /run/systemd/timer ;;
		    *is-enabled*) echo static ;;
		    *is-active*) exit 3 ;;
		esac
	END
    chmod 755 "$TREE/usr/bin/systemctl"
}

# what_manager_did COMMAND...: what the tree's systemctl was asked to start, restart or stop meanwhile.
what_manager_did() {
    : >"$TREE/run/systemd/calls"
    "$@" >/dev/null
    { grep -oE '\b(start|restart|stop) .*' "$TREE/run/systemd/calls" || true; } | paste -sd ';'
}

# fingerprint: every file of the tree but those of the package system, of its helper for services, and caches, with mode, owner and bytes.
fingerprint() {
    (cd "$TREE" && find . \( -path ./var/lib/dpkg -o -path ./var/log -o -path ./var/cache -o -path ./var/lib/systemd -o -path ./proc -o -path ./tmp \
        -o -path ./etc/ld.so.cache \) -prune -o \( -type f -printf '%p %m %U:%G ' -exec sha256sum {} \; -o -printf '%p %y %m %U:%G %l\n' \)) |
        sed 's/ [^ ]*$//; t' | sort
}

# files_of_packages: what ours have, one a line.
files_of_packages() {
    # shellcheck disable=SC2016
    inside sh -c 'dpkg -L $(dpkg-query -W -f "\${Package} " "libzet*" "zet-*")' | sed 's|^/lib/|/usr/lib/|' | sort -u
}

@test "LintianHasNothingToSay" {
    [ -z "${ZET_DEBS:-}" ] || skip "the packages were built already"
    cat "$WHAT_LINTIAN_SAID"
    [ ! -s "$WHAT_LINTIAN_SAID" ]
    [ "$(cd "$DEBS" && ls -- *.deb | grep -vc dbgsym)" -eq 6 ]
}

@test "EveryOverrideOfLintianHasItsReason" {
    local file
    for file in "$SOURCE_DIR"/debian/*.lintian-overrides; do head -1 "$file" | grep '^# '; done
}

@test "TwiceBuiltTheyAreTheSameBytes" {
    "$SOURCE_DIR/script/package" --again "$DEBS"
}

@test "AnInstallationTouchesNoFileOfOthers" {
    fingerprint >"$BATS_FILE_TMPDIR/before"
    install_from "$OLD"
    fingerprint >"$BATS_FILE_TMPDIR/after"
    files_of_packages >"$BATS_FILE_TMPDIR/files"
    # What is new or another is a file of ours, and nothing is gone.
    comm -13 "$BATS_FILE_TMPDIR/before" "$BATS_FILE_TMPDIR/after" | sed 's|^\.\(/[^ ]*\) .*|\1|' | sort -u |
        comm -23 - "$BATS_FILE_TMPDIR/files" >"$BATS_FILE_TMPDIR/others"
    cat "$BATS_FILE_TMPDIR/others"
    [ ! -s "$BATS_FILE_TMPDIR/others" ]
    [ "$(inside stat -c '%a %U' /var/lib/zet)" = "755 root" ]
}

@test "TheTemplatesHaveTheModesOfEveryOtherInstallation" {
    "$CMAKE" --install "$ZET_BUILD" --prefix "$PREFIX" --component templates >/dev/null
    diff <(cd "$PREFIX/share/zet/templates" && stat -c '%a %n' -- *) <(cd "$TREE/usr/share/zet/templates" && stat -c '%a %n' -- *)
}

@test "TheManualIsFound" {
    local page
    for page in zet.7 zet-init.1 zet-client.1 zet.conf.5 targets.toml.5 zet-targets.5 zet-templates.5 zet-state.5; do
        # Documents are left out of bare systems by many, and the index of the manual with them.
        inside dpkg -L zet-tools | grep -F "/usr/share/man/man${page##*.}/$page.gz"
    done
}

@test "TheDocumentsAreWhereTheManualSaysTheyAre" {
    local file
    for file in first-domain.md json.md json-schema.json pictures/session.svg; do
        inside dpkg -L zet-tools | grep -Fx "/usr/share/doc/zet-tools/docs/$file"
    done
    inside dpkg -L libzet-dev | grep -Fx /usr/share/doc/libzet-dev/examples/embed/commit.cpp
}

@test "TheCompletionsAreWhereTheShellsOfDebianLook" {
    local file
    for file in bash-completion/completions/zet-init bash-completion/completions/zet-client zsh/vendor-completions/_zet-init \
        fish/vendor_completions.d/zet-init.fish fish/vendor_completions.d/zet-client.fish; do
        inside dpkg -L zet-tools | grep -Fx "/usr/share/$file"
    done
}

@test "TheInstalledProductLivesAHostsLife" {
    cp "$SOURCE_DIR/debian/tests/life" "$TREE/life"
    inside /life
    rm "$TREE/life"
    [ -f "$TREE/etc/krb5.conf.before_zet" ]
}

@test "AnUpgradeTellsNewerTemplatesAndChangesNothing" {
    find "$TREE"/etc/krb5.conf "$TREE"/etc/zet "$TREE"/var/lib/zet/zet-server.status -type f -exec sha256sum {} + >"$BATS_FILE_TMPDIR/sums"
    run install_from "$DEBS"
    echo "$output"
    [ "$status" -eq 0 ]
    grep -F 'zet-tools: newer templates are shipped' <<<"$output"
    grep -F 'krb5.conf: newer shipped' <<<"$output"
    sha256sum -c --quiet "$BATS_FILE_TMPDIR/sums"
    inside zet-init history | grep -F "the host becomes the domain's server"
    inside zet-init template upgrade
    inside zet-init template status -q
    # Nothing newer: nothing is told.
    run install_from "$DEBS"
    [ "$status" -eq 0 ]
    run grep -F 'newer templates' <<<"$output"
    [ "$status" -eq 1 ]
}

@test "ARemovalTellsWhereTheOriginalsAre" {
    mkdir -p "$TREE/opt/elsewhere"
    printf 'A=1\n' >"$TREE/opt/elsewhere/edited"
    inside zet-init param set /opt/elsewhere/edited A 2
    run inside dpkg -r zet-tools
    echo "$output"
    [ "$status" -eq 0 ]
    for file in /etc/krb5.conf.before_zet /opt/elsewhere/edited.before_zet /etc/exports.no_file_before_zet; do
        grep -Fx "  $file" <<<"$output"
    done
    grep -F 'install zet-tools again' <<<"$output"
    grep -F 'EXAMPLE.ORG' "$TREE/etc/krb5.conf"
}

@test "APurgeKeepsOriginalsAndTheHistoryBesideThem" {
    run inside dpkg -P zet-tools
    echo "$output"
    [ "$status" -eq 0 ]
    grep -Fx '  /opt/elsewhere/edited.before_zet' <<<"$output"
    grep -F '/var/lib/zet stays' <<<"$output"
    [ -f "$TREE/var/lib/zet/state.db" ]
    [ -f "$TREE/etc/krb5.conf.before_zet" ]
    # Whoever purges once more, with what knows less: only the history's own text tells of it.
    rm "$TREE/var/lib/zet/originals"
    install_from "$DEBS" >/dev/null
    inside zet-init rollback-config /etc/krb5.conf /etc/exports
    inside zet-init file restore /etc/nsswitch.conf
    rm -f "$TREE"/etc/*_zet "$TREE"/etc/*/*_zet
    printf '#!/bin/sh\n' >"$TREE/usr/bin/zet-init"
    run inside dpkg -P zet-tools
    echo "$output"
    grep -Fx '  /opt/elsewhere/edited.before_zet' <<<"$output"
    [ -f "$TREE/var/lib/zet/state.db" ]
}

@test "WhatWasPurgedTooEarlyIsTakenBackAfterAnotherInstallation" {
    install_from "$DEBS"
    [ ! -e "$TREE/var/lib/zet/originals" ]
    inside zet-init rollback-config || true
    [ "$(cat "$TREE/opt/elsewhere/edited")" = A=1 ]
}

@test "TheTimerRunsOnlyWhereItIsEnabledAndNoLongerThanItsPackageIsThere" {
    put_manager
    echo disabled >"$TREE/run/systemd/timer"
    [ -z "$(what_manager_did install_from "$DEBS")" ]
    [ "$(what_manager_did inside dpkg -P zet-tools)" = "stop zet-status.service zet-status.timer" ]
    [ -z "$(what_manager_did install_from "$DEBS")" ]
    [ -z "$(find "$TREE/etc" -name 'zet-status*')" ]
    echo enabled >"$TREE/run/systemd/timer"
    [ "$(what_manager_did install_from "$DEBS")" = "restart zet-status.timer" ]
    rm -r "$TREE/run/systemd" "$TREE/usr/bin/systemctl"
}

@test "APurgeOfAHostThatIsAsItWasLeavesNothingBehind" {
    [ -z "$(find "$TREE/etc" "$TREE/opt" -name '*_zet')" ]
    run inside dpkg -P zet-tools zet-templates libzet-dev libzet-deploy1 libzet-config libzet-core1
    echo "$output"
    [ "$status" -eq 0 ]
    [ ! -e "$TREE/var/lib/zet" ]
    rm -rf "$TREE"/etc/zet "$TREE"/etc/krb5* "$TREE"/etc/ldap "$TREE"/etc/zet-life.conf "$TREE"/etc/idmapd.conf "$TREE"/etc/nslcd.conf \
        "$TREE"/opt/elsewhere "$TREE"/usr/share/zet "$TREE"/srv/zet
    fingerprint | diff "$BATS_FILE_TMPDIR/before" -
}
