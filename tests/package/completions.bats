# The completions in the shells themselves, found where the product is installed, on a host of the command line.

load package

setup_file() {
    set_up_package
    "$CMAKE" --install "$ZET_BUILD" --prefix "$PREFIX" >/dev/null
    export ROOT=$BATS_FILE_TMPDIR/root PATH=$PREFIX/bin:$PATH HOME=$BATS_FILE_TMPDIR/home TERM=dumb
    mkdir "$HOME"
    "$SOURCE_DIR/script/example-root" server "$ROOT"
    printf 'VERBOSE=no\nVERBATIM=no\n' >"$ROOT/etc/edited"
    zet-init --root "$ROOT" commit-config -q
    zet-init --root "$ROOT" param set /etc/edited VERBOSE yes -q
    # It is put into the commands' names by a root of their own, as the main file of a host is.
    sed "s|^ZET_.*||; \$aZET_CFG_DIR=$ROOT/etc/zet\nZET_CFG_TEMPL_DIR=$ROOT/usr/share/zet/templates\nZET_VAR_LIB_DIR=$ROOT/var/lib/zet" \
        "$ROOT/etc/zet/zet.conf" >"$BATS_FILE_TMPDIR/host.conf"
    printf '[templates."only.conf"]\ntarget = "/etc/only.conf"\nroles = "both"\n' >"$BATS_FILE_TMPDIR/targets.toml"
    mkdir "$BATS_FILE_TMPDIR/shipped"
    mv "$BATS_FILE_TMPDIR/targets.toml" "$BATS_FILE_TMPDIR/shipped/"
    sed -i "s|^ZET_CFG_TEMPL_DIR=.*|ZET_CFG_TEMPL_DIR=$BATS_FILE_TMPDIR/shipped|" "$BATS_FILE_TMPDIR/host.conf"
    cat >"$HOME/bashrc" <<-'END'
		. /usr/share/bash-completion/bash_completion
		PS1='@ready@ '
		bind 'set show-all-if-ambiguous on'
		bind 'set bell-style none'
		bind 'set page-completions off'
		bind 'set completion-query-items 0'
		bind 'set enable-bracketed-paste off'
	END
    cat >"$HOME/.zshrc" <<-'END'
		fpath=($PREFIX/share/zsh/site-functions $fpath)
		autoload -U compinit && compinit -u -D
		setopt NO_LIST_AMBIGUOUS AUTO_LIST NO_BEEP
		unsetopt AUTO_MENU PROMPT_SP PROMPT_CR ZLE_BRACKETED_PASTE 2>/dev/null
		LISTMAX=0
		PS1='@ready@ '
	END
}

at_bash() {
    XDG_DATA_DIRS=$PREFIX/share:/usr/share /usr/bin/python3 -B "$BATS_TEST_DIRNAME/shell.py" "$1" \
        bash --noprofile --rcfile "$HOME/bashrc" -i
}

at_zsh() {
    ZDOTDIR=$HOME /usr/bin/python3 -B "$BATS_TEST_DIRNAME/shell.py" "$1" zsh -d -i
}

at_fish() {
    # The shell's own way to press the key.
    # shellcheck disable=SC2016
    XDG_DATA_DIRS=$PREFIX/share:/usr/share XDG_CONFIG_HOME=$HOME/config XDG_DATA_HOME=$HOME/data \
        fish -c 'complete -C $argv[1] | string replace -r "\t.*" ""; true' "$1"
}

# shows LINE WORD...: all three shells show these words when the key is pressed behind the line.
shows() {
    local line=$1 shell word shown
    shift
    for shell in at_bash at_zsh at_fish; do
        shown=$("$shell" "$line")
        for word in "$@"; do
            grep -qF -e "$word" <<<"$shown" || {
                printf '%s: %s\nwanted: %s\nshown: %s\n' "$shell" "$line" "$word" "$shown"
                return 1
            }
        done
    done
}

# shows_not LINE WORD...: none of them does.
shows_not() {
    local line=$1 shell word
    shift
    for shell in at_bash at_zsh at_fish; do
        for word in "$@"; do
            ! "$shell" "$line" | grep -F -e "$word" || {
                printf '%s: %s\nshown: %s\n' "$shell" "$line" "$word"
                return 1
            }
        done
    done
}

@test "CommandsAreOfferedAndCompleted" {
    shows "zet-init " commit-config rollback-config doctor history
    shows "zet-client roll" rollback-config
    shows "zet-client template " upgrade process
}

@test "OptionsOfTheCommandAreOffered" {
    shows "zet-init status --" --changed --format --dry-run
    shows "zet-init commit-config --on-edit " overwrite refuse
}

@test "TemplatesAreThoseOfTheHostOfTheCommandLine" {
    shows "zet-init --root $ROOT commit-config k" krb5.conf kdc.conf kadm5.acl
    shows "zet-init --root=$ROOT template install k" krb5.conf kdc.conf kadm5.acl
    shows "zet-init -c $BATS_FILE_TMPDIR/host.conf commit-config o" only.conf
}

@test "TargetsAreThoseOfTheHostOfTheCommandLine" {
    shows "zet-init --root $ROOT rollback-config " /etc/krb5.conf /etc/exports /etc/krb5kdc/kdc.conf
    shows_not "zet-init -c $BATS_FILE_TMPDIR/host.conf rollback-config " krb5kdc
}

@test "ParametersOfTheProductAndOfTheFileAreOffered" {
    shows "zet-init option set ZET_HISTORY_" ZET_HISTORY_KEEP ZET_HISTORY_MAX_FILE
    shows "zet-init option set ZET_SYNC " yes no
    shows "zet-init --root $ROOT param get /etc/edited VERB" VERBOSE VERBATIM
    shows "zet-init --root $ROOT param get --section global /etc/edited VERB" VERBOSE VERBATIM
}

@test "EveryParameterThatTheHostListsIsOffered" {
    local names
    mapfile -t names < <(zet-init --root "$ROOT" -q option list | sed 's/=.*//')
    grep -Fx IDENTITY <<<"$(printf '%s\n' "${names[@]}")"
    shows "zet-init --root $ROOT option get " "${names[@]}"
    shows "zet-init option get ZET_HIST" ZET_HISTORY_KEEP
}

@test "FilesAreThoseBelowTheRootOfTheCommandLine" {
    mkdir -p "$ROOT/etc/krb-here/sub"
    touch "$ROOT/etc/krb-here/file"
    shows "zet-init --root $ROOT explain /etc/kr" krb-here krb5.conf
    shows "zet-init --root=$ROOT/ doctor /etc/krb-here/" file sub/
    shows "zet-init --root $ROOT param get etc/krb-here/" file sub/
    shows "zet-init --root $ROOT -c /etc/zet/ze" zet.conf
    touch "$BATS_TEST_TMPDIR/zet-of-this-host"
    shows_not "zet-init --root $ROOT explain $BATS_TEST_TMPDIR/zet-of" this-host
    shows "zet-init explain $BATS_TEST_TMPDIR/zet-of" this-host
    # The only one: a directory gets no blank behind it.
    shows "zet-init --root $ROOT explain /etc/krb-he" /etc/krb-here/
}

@test "AValueBehindAnEqualsSignIsOffered" {
    shows "zet-init status --format=" words openmetrics
    shows "zet-init --root $ROOT rollback-config --to=" 1 2
}

@test "NumbersOfChangesAreThoseOfTheHistoryOfTheHost" {
    zet-init --root "$ROOT" param set /etc/edited VERBATIM yes -q
    shows "zet-init --root $ROOT history show " 1 2 3
    shows "zet-init --root $ROOT undo " 1 2 3
    shows "zet-init --root $ROOT rollback-config --to " 1 2 3
}
