# What the tests of the scripts share; sourced. $project is this tree, $work a folder that goes at the end.
set -uo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
unset ORX_LOG ORX_VERBOSE

failures=0
fail() {
    printf 'FAILED: %s\n' "$*"
    failures=$((failures + 1))
}
finish() { exit $((failures > 0)); }

# expect_line PATTERN TEXT: some line of TEXT is PATTERN, an extended regular expression. expect_no_line: none is.
expect_line() { grep -qxE -- "$1" <<<"$2" || fail "no line is '$1' in: $2"; }
expect_no_line() { ! grep -qxE -- "$1" <<<"$2" || fail "a line is '$1' in: $2"; }
expect_equal() { [ "$1" = "$2" ] || fail "expected '$1', not '$2'"; }

# make_tree SCRIPT...: a tree of its own in $work with copies of these files.
make_tree() {
    local file
    for file in "$@"; do install -D "$project/$file" "$work/$file"; done
}

# make_program FOLDER NAME TEXT: a program that stands in for another one.
make_program() {
    mkdir -p "$1"
    printf '#!/bin/bash\n%s\n' "$3" >"$1/$2"
    chmod +x "$1/$2"
}
