# Directories of the product that a dry run assumes.

load helper
load set

setup() {
    make_set
    mkdir etc/values.d etc/defaults.d
    add_target one.conf $'realm = ${realm}\nntp = ${ntp_server}\n${extra}\n'
    printf 'NTP_SERVER=shipped\nEXTRA=\n' >templates/values.conf
}

teardown() {
    remove_host
}

# other_directories: beside the directories of the host, others with templates, values and lists.
other_directories() {
    zet commit-config
    mkdir -p other/{etc,templates,state,etc/values.d,etc/defaults.d,etc/targets.d}
    cp templates/targets.toml other/templates
    printf 'NTP_SERVER=shipped elsewhere\nEXTRA=\n' >other/templates/values.conf
    printf 'other ${ntp_server} ${extra} ${domain}\n' | tee other/templates/one.conf >other/etc/one.conf
    remember_host
}

@test "assumed directories of working copies and templates have their own values" {
    echo NTP_SERVER=fleet >etc/defaults.d/10.conf
    other_directories
    echo ZET_VAR_LIB_DIR=/nowhere >other/etc/defaults.d/10.conf
    echo DOMAIN=other.example >>other/etc/defaults.d/10.conf
    echo text >other/etc/values.d/extra
    sed -i '/^DOMAIN=/d; /^ZET_VAR_LIB_DIR=/d' zet.conf
    remember_host
    run_zet commit-config -n --diff --set ZET_CFG_DIR="$HOST/other/etc"
    assert_status 1
    [[ $stderr == *"/nowhere: "* ]]
    run_zet commit-config -n --diff --set ZET_CFG_DIR="$HOST/other/etc" --set ZET_VAR_LIB_DIR="$HOST/state"
    assert_status 3
    [[ $output == *$'\n+other shipped text other.example\n'* ]]
    run_zet commit-config -n --diff --set ZET_CFG_DIR="$HOST/other/etc" --set ZET_VAR_LIB_DIR="$HOST/state" \
        --set ZET_CFG_TEMPL_DIR="$HOST/other/templates" --set DOMAIN=assumed.example
    assert_status 3
    [[ $output == *$'\n+other shipped elsewhere text assumed.example\n'* ]]
    assert_host_unchanged
}

@test "an assumed directory of templates has its lists and values" {
    other_directories
    run_zet commit-config -n --diff --set ZET_CFG_TEMPL_DIR="$HOST/other/templates"
    assert_status 3
    [[ $output == *$'\n-ntp = shipped\n+ntp = shipped elsewhere\n'* ]]
    printf '[templates."one.conf"]\ntarget = "%s/out/moved"\n' "$HOST" >other/etc/targets.d/10.toml
    remember_host
    run_zet commit-config -n --set ZET_CFG_DIR="$HOST/other/etc"
    assert_status 3
    [[ $output == *"$HOST/out/moved: would be created"* ]]
    assert_host_unchanged
}

@test "an assumed directory of the status has its own history, and stays as it is" {
    other_directories
    echo edited >>out/one.conf
    remember_host
    run_zet commit-config -n --on-edit=refuse
    assert_status 1
    run_zet commit-config -n --set ZET_VAR_LIB_DIR="$HOST/other/state"
    assert_status 3
    [[ $stderr != *"edited since the last commit"* ]]
    assert_host_unchanged
    assert_equal "$(ls -A other/state)" ""
}

@test "assumed directories are those of a tree" {
    other_directories
    sed -i "s,=$HOST,=,; s,target = \"$HOST,target = \"," zet.conf templates/targets.toml other/templates/targets.toml
    remember_host
    capture "$ZET_BIN/zet-client" --root "$HOST" --config /zet.conf commit-config -n --diff --set ZET_CFG_TEMPL_DIR=/other/templates --set ZET_CFG_DIR=/other/etc
    assert_status 3
    [[ $output == *$'\n+other shipped elsewhere  example.org\n'* ]]
    assert_host_unchanged
}

@test "an assumed directory that cannot be used is told, and nothing else is done" {
    other_directories
    run_zet commit-config -n --set ZET_CFG_DIR=relative
    assert_refusal 2 "--set: 'relative' is no value for ZET_CFG_DIR, which has to be an absolute path (begin it with \"/\")"
    run_zet commit-config --set ZET_CFG_DIR="$HOST/other/etc"
    assert_refusal 2 '--set only asks what would change: use it with -n ("option set" sets a parameter)'
    run_zet commit-config -n --set ZET_VAR_LIB_DIR="$HOST/none"
    assert_status 1
    [[ $stderr == *"$HOST/none: the directory of the status cannot be used: No such file or directory (create it, or correct ZET_VAR_LIB_DIR)"* ]]
    run_zet commit-config -n --set ZET_CFG_TEMPL_DIR="$HOST/none"
    assert_status 1
    [[ $stderr == *"$HOST/none/targets.toml: the list of targets cannot be read: No such file or directory"* ]]
    assert_host_unchanged
}
