# The example domain on hosts of their own: what an administrator does on the first day.

# lay_out HOST ROLE [NAME=VALUE]...: the host's tree, with these parameters more.
lay_out() {
    local tree=$BATS_FILE_TMPDIR/$1 role=$2 parameter
    shift 2
    example_root "$role" "$tree"
    for parameter in ZET_CFG_TEMPL_DIR=/srv/zet/templates ZET_VAR_LIB_DIR=/srv/zet/state "$@"; do
        set_param "$tree" "${parameter%%=*}" "${parameter#*=}"
    done
}

# An authority and what it says of the server, with which the directory offers TLS.
make_certificate() {
    on server openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=Example \
        -keyout /run/ca.key -out /run/ca.crt
    on server openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=server.example.org \
        -addext subjectAltName=DNS:server.example.org -keyout /etc/ldap/tls.key -out /run/server.csr
    on server openssl x509 -req -in /run/server.csr -CA /run/ca.crt -CAkey /run/ca.key -CAcreateserial -days 2 \
        -copy_extensions copy -out /etc/ldap/tls.crt
    on server chgrp openldap /etc/ldap/tls.key
    on server chmod 640 /etc/ldap/tls.key
} 2>/dev/null

# trust_authority HOST
trust_authority() {
    on server cat /run/ca.crt | on "$1" tee /etc/ssl/certs/ca-certificates.crt >/dev/null
}

# The keys of services and hosts: slapd's in a file of its own, which it can read.
make_keys() {
    on server kdb5_util create -s -P master
    on server kadmin.local addprinc -pw secret alice
    on server kadmin.local addprinc -pw secret root/admin
    on server kadmin.local addprinc -randkey ldap/server.example.org
    on server kadmin.local ktadd -k /etc/ldap/slapd.keytab ldap/server.example.org
    on server chgrp openldap /etc/ldap/slapd.keytab
    on server chmod 640 /etc/ldap/slapd.keytab
}

# give_key HOST NAME: with it the host proves who it is.
give_key() {
    on server kadmin.local addprinc -randkey "host/$2"
    on server kadmin.local ktadd -k "/run/$1.keytab" "host/$2"
    on server cat "/run/$1.keytab" | on "$1" install -m 600 /dev/stdin /etc/krb5.keytab
}

set_up_server() {
    make_certificate
    trust_authority server
    on server "$ZET_BIN/zet-init" commit-config
    make_keys
    on server service krb5-kdc start
    on server service krb5-admin-server start
    on server service slapd start
    on server ldapadd -Q -Y EXTERNAL -H ldapi:/// -f /etc/ldap/domain.ldif
}

# set_up_client HOST NAME SERVICE: that tells the host the domain's users.
set_up_client() {
    trust_authority "$1"
    give_key "$1" "$2"
    on "$1" "$ZET_BIN/zet-client" commit-config
    start_service "$1" "$3"
}

# start_service HOST NAME: as its unit does it; sssd's own script has an option that it does not know any more.
start_service() {
    if [[ $2 == sssd ]]; then on "$1" sssd -D --logger=files; else on "$1" service "$2" start; fi
}

# person NAME NUMBER: an entry of the directory.
person() {
    printf '%s\n' "dn: uid=$1,ou=people,dc=example,dc=org" "objectClass: inetOrgPerson" "objectClass: posixAccount" \
        "uid: $1" "cn: $1" "sn: Example" "uidNumber: $2" "gidNumber: 5000" "homeDirectory: /home/$1" "loginShell: /bin/sh" ""
}

add_entries() {
    on server ldapadd -Q -Y EXTERNAL -H ldapi:/// >/dev/null
}

# eventually COMMAND...: what a service knows a moment after its start.
eventually() {
    local tries
    for ((tries = 0; tries < 100; tries++)); do
        "$@" && return
        sleep 0.1
    done
    return 1
}
