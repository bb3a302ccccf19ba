# Shared by the scripts of this folder; sourced, not run. Sets $root and moves there. A first argument --verbose is taken
# away: everything that packages, compilers and tests print is shown then. Without it a step is one line, and the rest is
# in a log file.

set -euo pipefail

script_name=$(basename "$0")
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

if [ "${1-}" = --verbose ]; then
    export ORX_VERBOSE=1
    shift
fi

# What takes long to make or to fetch, and serves every checkout of this project.
readonly cache=${ORX_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/orxFunctions}

# Compilations are shared between checkouts of this project (ccache, where it is installed). What a source includes is
# known from the compiler itself, which spares ccache a run of the preprocessor beside each compilation.
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1 CCACHE_DEPEND=1

say() { printf '\n== %s\n' "$*"; }

die() {
    printf '%s: %s\n' "$script_name" "$*" >&2
    exit 1
}

# Every unexpected failure names the command that failed; a script of ours has said why itself.
report_failure() {
    local status=$1 command=$2
    if [[ $command == scripts/* ]]; then return 0; fi
    printf '%s: failed (exit code %d) at: %s\n' "$script_name" "$status" "$command" >&2
}
trap 'report_failure $? "$BASH_COMMAND"' ERR

# Scripts call each other: the log of the first one serves all. It begins with the first step.
if [ -z "${ORX_LOG-}" ]; then
    export ORX_LOG=$root/build/logs/$script_name.log
    rm -f "$ORX_LOG"
fi

open_log() {
    if [ -e "$ORX_LOG" ]; then return 0; fi
    mkdir -p "$(dirname "$ORX_LOG")"
    : >"$ORX_LOG"
    printf '== %s: the whole output goes to %s\n' "$script_name" "${ORX_LOG#"$root/"}"
}

# follow [tests]: puts what comes in into the log. The user sees how far it is, in tenths, as ninja, apt and ctest tell it;
# with "tests" also every line but those of tests that begin, pass or are skipped.
follow() {
    local kind=${1-} line percent tenth shown=0 in_line=yes
    while IFS= read -r line || [ -n "$line" ]; do
        printf '%s\n' "$line" >>"$ORX_LOG"
        percent=""
        if [[ $line =~ ^\ *\[?([0-9]+)/([1-9][0-9]*)[]\ ] ]]; then
            percent=$((100 * BASH_REMATCH[1] / BASH_REMATCH[2]))
        elif [[ $line =~ ^(dl|pm)status:[^:]*:([0-9]+) ]]; then
            percent=${BASH_REMATCH[2]}
        fi
        tenth=$((${percent:-0} / 10))
        if [ "$tenth" -gt "$shown" ] && [ "$in_line" = yes ]; then
            printf ' %d%%' $((10 * tenth))
            shown=$tenth
        fi
        if [ "$kind" = tests ] && ! [[ $line =~ ^(Test\ project|\ *Start|\ *[0-9]+/[0-9]+\ Test.*(Passed|\*\*\*Skipped)\ ) ]] &&
            { [ -n "$line" ] || [ "$in_line" = no ]; }; then
            if [ "$in_line" = yes ]; then printf '\n\n'; fi
            in_line=no
            printf '%s\n' "$line"
        fi
    done
}

# run_step KIND TEXT COMMAND...: see step and test_step.
run_step() {
    local kind=$1 text=$2 start=$SECONDS status=0 before
    shift 2
    if [ -n "${ORX_VERBOSE-}" ]; then
        say "$text"
        "$@" || status=$?
        printf '== %s: %d s\n' "$text" $((SECONDS - start))
        return "$status"
    fi
    open_log
    before=$(wc -c <"$ORX_LOG")
    printf '\n== %s\n' "$text" >>"$ORX_LOG"
    printf '== %s ...' "$text"
    { "$@" 2>&1 || status=$?; exit "$status"; } | follow "$kind" || status=$?
    printf '  %d s\n' $((SECONDS - start))
    if [ "$status" -ne 0 ] && [ "$kind" != tests ]; then
        tail -c +$((before + 1)) "$ORX_LOG" | tail -n 40 >&2
    fi
    return "$status"
}

# step TEXT COMMAND...: one line for the user, with the time that it took and how far it is where the command tells it.
# What the command prints goes to the log; its end is shown when the command fails.
step() { run_step quiet "$@"; }

# test_step TEXT COMMAND...: the same for ctest, of which failing tests and the closing lines are shown.
test_step() { run_step tests "$@"; }

# may_be_root: whether commands can be run as root; sudo asks for the password here.
may_be_root() { [ "$(id -u)" -eq 0 ] || { command -v sudo >/dev/null && sudo true; }; }

as_root() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }

# apt_get ARGUMENT...: as root, without questions; tells how far it is.
apt_get() { as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -o APT::Status-Fd=1 "$@"; }

update_package_lists() {
    may_be_root || die "only root can bring the package lists up to date, and sudo is not to be had; ask for: apt-get update"
    step "bringing the package lists up to date" apt_get update || die "apt-get update failed: is the network there?"
}

# fetch_package PACKAGE FOLDER TEXT: a step TEXT that downloads it there, installing nothing.
fetch_package() {
    command -v apt-get >/dev/null || die "this needs Debian's apt-get"
    mkdir -p "$2"
    download_there() { (cd "$2" && apt-get download -q "$1"); }
    if ! apt-cache show "$1" >/dev/null 2>&1; then update_package_lists; fi
    if step "$3" download_there "$@"; then return 0; fi
    update_package_lists # they may be old
    step "$3" download_there "$@" || die "can't download the package $1: is the network there?"
}

first_archive() {
    apt-get indextargets --format '$(SITE)' 'Created-By: Packages' 'Component: main' 'Origin: Debian' | head -n 1
}

# debian_archive: the address of this machine's main archive. That of security updates may lack what it replaces.
debian_archive() {
    local site
    site=$(first_archive)
    if [ -z "$site" ]; then
        update_package_lists >&2
        site=$(first_archive)
    fi
    [ -n "$site" ] || die "apt knows no Debian archive on this machine"
    printf '%s\n' "$site"
}

# configure_preset PRESET [CMAKE ARGUMENT...]: quick when nothing has changed.
configure_preset() {
    local preset=$1 aravis=(-D ORX_REQUIRE_ARAVIS=ON)
    shift
    if [ "$preset" = windows ]; then aravis=(); fi
    if [ ! -f "build/$preset/build.ninja" ]; then rm -rf "build/$preset/CMakeCache.txt" "build/$preset/CMakeFiles"; fi
    step "configuring ($preset)" cmake --preset "$preset" "${aravis[@]}" "$@" ||
        die "CMake can't configure the preset '$preset'; its message is above"
}

# build_configured PRESET [TARGET...]
build_configured() {
    local preset=$1 targets=()
    shift
    if [ $# -gt 0 ]; then targets=(--target "$@"); fi
    step "building ($preset)" cmake --build "build/$preset" "${targets[@]}" ||
        die "the build of preset '$preset' failed; the compiler's message is above"
}

# build_preset PRESET [TARGET...]: configures and builds.
build_preset() {
    configure_preset "$1"
    build_configured "$@"
}

# How many tests run at once: one more than there are processors, since some only wait.
tests_at_once() { echo $(($(nproc) + 1)); }

# count_tests PRESET: what GoogleTest's programs reported in the last run, of which CTest may know only the programs: how
# many tests passed, and why some did not run.
count_tests() {
    [ -f "build/$1/Testing/Temporary/LastTest.log" ] || return 0
    tr -d '\r' <"build/$1/Testing/Temporary/LastTest.log" | awk '
        /^\[  PASSED  \] [0-9]+ test/ { passed += $4 }
        /^\[  SKIPPED \] [0-9]+ test/ { skipped += $4 }
        reason { reasons[$0]++; reason = 0 }
        /: Skipped$/ { reason = 1 }
        END {
            printf "\n== GoogleTest: %d tests passed, %d skipped\n", passed, skipped
            for (r in reasons) printf "   %d skipped: %s\n", reasons[r], r
        }'
}
