# Commands run by a user without any rights beyond his own files.

load helper

setup() {
    make_host
    printf 'a=1\nb=2\n' >conf
}

teardown() {
    remove_host
}

@test "an ordinary user edits files of his own" {
    need_root
    copy_programs
    chown -R 65534:65534 "$HOST"
    chmod 600 conf
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set conf a new
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_equal "$(stat -c '%a %u' conf conf.before_zet | paste -sd ' ')" "600 65534 600 65534"
}

@test "an ordinary user edits without a right on the product's directory" {
    need_root
    copy_programs
    chown 65534:65534 "$HOST" conf
    echo half >conf.tmp
    chown 65534:65534 conf.tmp
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set --no-markers conf a new
    assert_success "conf: changed, the original is kept as conf.before_zet"
    assert_file conf $'a=new\nb=2\n'
}

@test "an ordinary user is told what he may not do, and may still ask" {
    need_root
    copy_programs
    remember_host
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set conf a new
    assert_refusal 1 ".: cannot be written, so conf cannot be replaced: Permission denied (run the command as a user who may)"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set -n conf a new
    assert_status 3
    chmod 600 conf
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param get conf a
    assert_refusal 1 "conf: cannot be read: Permission denied (run the command as a user who may)"
    chmod 644 conf
    touch -d @0 conf
    assert_file conf $'a=1\nb=2\n'
}

@test "a dry run tells that the file would change hands" {
    need_root
    copy_programs
    chown 65534:65534 "$HOST"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set -n conf a new
    assert_status 3
    assert_output "conf: would be changed, owner 0:0 -> 65534:65534"
    capture as_nobody "$BASE/programs/bin/zet-client" --config "$HOST/zet.conf" param set conf a new
    assert_status 0
    assert_output "conf: changed, owner 0:0 -> 65534:65534, the original is kept as conf.before_zet"
}
