# The shipped templates themselves, read as files.

load services

setup() {
    cd "$SOURCE_DIR/templates" || return
    mapfile -t templates < <(sed -n 's/^\[templates\."\(.*\)"\]$/\1/p' targets.toml)
}

# Everything between "${" and the next "}" outside of comment lines.
placeholders() {
    grep -hv '^#' "${templates[@]}" values.conf | grep -o '\${[^}]*}' | sort -u
}

# The parameters that choose between entries of the list.
choices() {
    sed -n 's/^when = "\(.*\)=.*"$/\1/p' targets.toml | sort -u
}

own_values() {
    sed -n 's/^\([A-Z_]*\)=.*/\1/p' values.conf | sort
}

@test "EveryTemplateIsListedAndEveryListedTemplateIsThere" {
    diff <(printf '%s\n' "${templates[@]}" | sort) \
        <(find . -type f ! -name targets.toml ! -name values.conf ! -name CMakeLists.txt -printf '%P\n' | sort)
}

@test "TemplatesUseEveryValueThatIsOfferedAndNoOther" {
    diff <(placeholders) <(printf '${%s}\n' domain kadmin_server kdc_server ldap_dc ldap_domain ldap_uris \
        max_life max_renewable_life minimum_uid realm server server_export_dir server_id \
        valid_group_names valid_user_names $(comm -23 <(own_values) <(choices) | tr '[:upper:]' '[:lower:]') | sort)
}

@test "EveryParameterThatChoosesHasADefault" {
    [ -n "$(choices)" ]
    [ -z "$(comm -13 <(own_values) <(choices))" ]
}

@test "ManualKnowsEveryValueOfTheTemplates" {
    sed -n '/^# THE SHIPPED TEMPLATES$/,/^# FILES$/p' ../man/zet.7.scd | grep '^\*' | grep -o '[A-Z][A-Z_]*' | sort >"$BATS_TEST_TMPDIR/manual"
    diff "$BATS_TEST_TMPDIR/manual" <(own_values)
}

@test "EachFileIsMadeFromOneTemplateWhateverIsChosen" {
    # Of a file that two templates make, both say when, by the same parameter.
    mapfile -t twice < <(sed -n 's/^target = "\(.*\)"$/\1/p' targets.toml | sort | uniq -d)
    [ "${twice[*]}" = "/etc/krb5.conf /etc/ldap/slapd-tls.conf" ]
    for file in "${twice[@]}"; do
        grep -A 2 -Fx "target = \"$file\"" targets.toml | sed -n 's/^when = "\(.*\)=.*"$/\1/p' >"$BATS_TEST_TMPDIR/when"
        [ "$(wc -l <"$BATS_TEST_TMPDIR/when")" -eq 2 ]
        [ "$(sort -u "$BATS_TEST_TMPDIR/when" | wc -l)" -eq 1 ]
    done
}

@test "FileForRecordsDiffersInWhatTheRecordsTellOnly" {
    run diff <(sed '/^# --ZET_TEMPLATE/,/^# --ZET_COMMENT_END/d' krb5.conf) \
        <(sed '/^# --ZET_TEMPLATE/,/^# --ZET_COMMENT_END/d' krb5-srv.conf)
    [ "$(grep '^[<>]' <<<"$output")" = '<         kdc = ${kdc_server}
< ${more_kdcs}' ]
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
    [ "$(grep -l 'A password .* may be added' "${templates[@]}" | sort | xargs)" = "nslcd.conf sssd.conf" ]
    for identity in sssd nslcd; do
        local root=$BATS_TEST_TMPDIR/$identity
        example_root client "$root"
        set_param "$root" IDENTITY "$identity"
        echo 'password only_the_service_may_know' >>"$root/usr/share/zet/templates/$identity.conf"
        run "$ZET_BIN/zet-client" --root "$root" commit-config -n --diff
        [ "$status" -eq 3 ]
        [[ $output == *"/$identity.conf: would be "* && $output == *"+++ b/"*"/etc/krb5.conf"* ]]
        [[ $output != *only_the_service_may_know* ]]
    done
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
