# Which files script/check looks at: those that a change touched, whatever branches a clone has.

# A project of headers, on the branch "main", and a tool that says what it is asked to look at.
setup() {
    export GIT_CONFIG_GLOBAL=/dev/null GIT_AUTHOR_NAME=a GIT_AUTHOR_EMAIL=a@b GIT_COMMITTER_NAME=a GIT_COMMITTER_EMAIL=a@b
    export PATH=$BATS_TEST_TMPDIR/tools:$PATH
    mkdir "$BATS_TEST_TMPDIR/tools" "$BATS_TEST_TMPDIR/project"
    printf '#!/bin/sh\nshift 2\necho "$@" >"%s/looked_at"\n' "$BATS_TEST_TMPDIR" >"$BATS_TEST_TMPDIR/tools/clang-format"
    chmod +x "$BATS_TEST_TMPDIR/tools/clang-format"
    cd "$BATS_TEST_TMPDIR/project" || return
    git init -q -b main
    mkdir script
    cp "$BATS_TEST_DIRNAME/../../script/check" script
    printf '#!/bin/sh\n' >script/setup
    chmod +x script/setup
    commit first.h
    commit second.h
}

commit() {
    echo "// $1" >"$1"
    git add .
    git commit -q -m "$1"
}

# looks_at FILES [CLONE]: these files are looked at, and nothing is said.
looks_at() {
    rm -f "$BATS_TEST_TMPDIR/looked_at"
    run "${2:-.}/script/check"
    echo "$output"
    [ "$status" -eq 0 ]
    [ -z "$output" ]
    [ "$(cat "$BATS_TEST_TMPDIR/looked_at")" = "$1" ]
}

@test "WhatABranchChangedIsLookedAtAndWhatIsNotCommittedYet" {
    git checkout -q -b branch
    commit third.h
    commit fourth.h
    echo >fifth.h
    looks_at "fourth.h third.h fifth.h"
}

@test "AtTheTipOfTheMainBranchTheLastCommitIsLookedAt" {
    looks_at second.h
    echo "// more" >>first.h
    looks_at "first.h second.h"
}

@test "WithoutAMainBranchTheLastCommitIsLookedAt" {
    git checkout -q --detach
    git branch -q -D main
    looks_at second.h
}

@test "TheBranchThatWasClonedCountsBeforeTheClonesOwn" {
    git checkout -q -b branch
    commit third.h
    git clone -q --branch branch . ../clone
    git -C ../clone branch -q main HEAD
    looks_at third.h ../clone
}

@test "WhereNobodyKnowsWhatWasChangedAllIsLookedAt" {
    mkdir src
    commit src/third.cpp
    git clone -q --depth 1 "file://$PWD" ../clone
    printf '#!/bin/sh\nexit 0\n' >"$BATS_TEST_TMPDIR/tools/cppcheck"
    printf '#!/bin/sh\nexit 1\n' | tee "$BATS_TEST_TMPDIR/tools/clang-tidy" >"$BATS_TEST_TMPDIR/tools/cmake"
    chmod +x "$BATS_TEST_TMPDIR"/tools/*
    run ../clone/script/check
    echo "$output"
    [ "$status" -eq 0 ]
    [[ $output == "left out: "* ]]
    [ "$(cat "$BATS_TEST_TMPDIR/looked_at")" = "first.h second.h src/third.cpp" ]
}

@test "OfAChangeOfCommentsAloneNobodyLooksForBugs" {
    printf '#!/bin/sh\necho "$@" >"%s/looked_at"\n' "$BATS_TEST_TMPDIR" >"$BATS_TEST_TMPDIR/tools/cppcheck"
    printf '#!/bin/sh\n' >"$BATS_TEST_TMPDIR/tools/cmake"
    chmod +x "$BATS_TEST_TMPDIR/tools"/*
    mkdir -p src build/check
    printf 'int one;  // first\n' >src/one.cpp
    printf 'int two;  // first\n' >src/two.cpp
    touch build/check/compile_commands.json
    git add . && git commit -q -m sources
    git checkout -q -b branch
    printf '// A comment of its own.\nint one;  // second\n' >src/one.cpp
    printf 'int second;  // first\n' >src/two.cpp
    git commit -q -a -m branch
    run script/check bugs
    [ "$status" -eq 0 ]
    [[ $(<"$BATS_TEST_TMPDIR/looked_at") == *" src/two.cpp" ]]
    [[ $(<"$BATS_TEST_TMPDIR/looked_at") != *one.cpp* ]]
}

@test "ANegatedCommandThatFailsNoTestIsShown" {
    mkdir tests
    printf '    %s\n' '! grep x file || return 1' '! grep x file' 'if ! grep x file; then' >tests/one.bats
    git add . && git commit -q -m tests
    run script/check tests
    echo "$output"
    [ "$status" -eq 1 ]
    [ "$output" = 'tests:
tests/one.bats:2: "!" keeps this from failing the test (add "|| return 1"): ! grep x file' ]
    sed -i 2d tests/one.bats
    run script/check
    echo "$output"
    [ "$status" -eq 0 ]
    [ -z "$output" ]
    [ ! -e "$BATS_TEST_TMPDIR/looked_at" ]
}

@test "WhatIsWrongIsShownAndFails" {
    printf '#!/bin/sh\necho "second.h:1: is ugly"\nexit 1\n' >"$BATS_TEST_TMPDIR/tools/clang-format"
    run script/check
    echo "$output"
    [ "$status" -eq 1 ]
    [ "$output" = $'format:\nsecond.h:1: is ugly' ]
}
