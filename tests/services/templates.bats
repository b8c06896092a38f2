# The shipped templates themselves, read as files.

load services

setup() {
    cd "$SOURCE_DIR/templates" || return
    mapfile -t templates < <(sed -n 's/^\[templates\."\(.*\)"\]$/\1/p' targets.toml)
}

# Everything between "${" and the next "}" outside of comment lines.
placeholders() {
    grep -hv '^#' "${templates[@]}" | grep -o '\${[^}]*}' | sort -u
}

@test "EveryTemplateIsListedAndEveryListedTemplateIsThere" {
    diff <(printf '%s\n' "${templates[@]}" | sort) \
        <(find . -type f ! -name targets.toml ! -name CMakeLists.txt -printf '%P\n' | sort)
}

@test "TemplatesUseEveryValueThatIsOfferedAndNoOther" {
    diff <(placeholders) <(printf '${%s}\n' domain kadmin_server kdc_server ldap_dc ldap_domain ldap_uris \
        max_life max_renewable_life minimum_uid realm server server_export_dir server_id \
        valid_group_names valid_user_names | sort)
}

@test "EveryPlaceholderIsClosed" {
    run grep -hv '^#' "${templates[@]}"
    [ "$status" -eq 0 ]
    without=$(sed 's/\${[^}]*}//g' <<<"$output")
    [[ $without != *'${'* ]]
}

@test "EveryTemplateBeginsWithOneExplanation" {
    for name in "${templates[@]}"; do
        [ "$(head -n 1 "$name")" = "# --ZET_TEMPLATE_COMMENT--" ]
        [ "$(grep -c -- '^# --ZET' "$name")" -eq 2 ]
        [ "$(grep -c -- '^# --ZET_COMMENT_END--$' "$name")" -eq 1 ]
        # All of it in comment lines, so that nothing in it is ever taken for a placeholder.
        run grep -v '^#' <(sed '/^# --ZET_COMMENT_END--$/,$d' "$name")
        [ "$status" -eq 1 ]
    done
}

@test "TemplateThatInvitesAPasswordIsSecret" {
    [ "$(grep -l 'A password .* may be added' "${templates[@]}")" = nslcd.conf ]
    example_root client "$BATS_TEST_TMPDIR/root"
    echo 'bindpw only_nslcd_may_know' >>"$BATS_TEST_TMPDIR/root/usr/share/zet/templates/nslcd.conf"
    run "$ZET_BIN/zet-client" --root "$BATS_TEST_TMPDIR/root" commit-config -n --diff
    [ "$status" -eq 3 ]
    [[ $output == *"/etc/nslcd.conf: would be "* && $output == *"+++ b/"*"/etc/krb5.conf"* ]]
    [[ $output != *only_nslcd_may_know* ]]
}

@test "EveryTemplateEndsItsLastLine" {
    for name in "${templates[@]}"; do
        [ "$(tail -c 1 "$name" | od -An -tx1)" = " 0a" ]
    done
}

@test "InstallationGivesTemplatesTheModesThatTheExampleHas" {
    example_root server "$BATS_TEST_TMPDIR/root"
    mkdir "$BATS_TEST_TMPDIR/project"
    cat >"$BATS_TEST_TMPDIR/project/CMakeLists.txt" <<-END
		cmake_minimum_required(VERSION 3.25)
		project(templates LANGUAGES NONE)
		set(CMAKE_INSTALL_DATADIR share)
		add_subdirectory("$SOURCE_DIR/templates" templates)
	END
    cmake -G Ninja -S "$BATS_TEST_TMPDIR/project" -B "$BATS_TEST_TMPDIR/build"
    cmake --install "$BATS_TEST_TMPDIR/build" --component templates --prefix "$BATS_TEST_TMPDIR/installed"
    diff <(cd "$BATS_TEST_TMPDIR/root/usr/share/zet/templates" && stat -c '%a %n' -- *) \
        <(cd "$BATS_TEST_TMPDIR/installed/share/zet/templates" && stat -c '%a %n' -- *)
}
