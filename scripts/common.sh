# Shared by the scripts of this folder; sourced, not run. Sets $root and moves there.

set -euo pipefail

script_name=$(basename "$0")
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# Compilations are shared between checkouts of this project (ccache, where it is installed).
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1

say() { printf '\n== %s\n' "$*"; }

die() {
    printf '%s: %s\n' "$script_name" "$*" >&2
    exit 1
}

# Every unexpected failure names the command that failed.
trap 'status=$?; printf "%s: failed (exit code %d) at: %s\n" "$script_name" "$status" "$BASH_COMMAND" >&2' ERR

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "must install packages: run as root, or install sudo (needed: $*)"
    fi
}

# build_preset <preset> [target...]: configures when needed and builds.
build_preset() {
    local preset=$1
    shift
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "configuring ($preset)"
        rm -rf "build/$preset/CMakeCache.txt" "build/$preset/CMakeFiles"
        cmake --preset "$preset" || die "CMake can't configure the preset '$preset'; its message is above"
    fi
    say "building ($preset)"
    local targets=()
    if [ $# -gt 0 ]; then targets=(--target "$@"); fi
    cmake --build "build/$preset" "${targets[@]}" || die "the build of preset '$preset' failed; the compiler's message is above"
}
