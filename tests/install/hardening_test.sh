# The libraries, modules and programs carry what makes faults in them harder to use.
#
#   hardening_test.sh SOFT FOLDER LIBRARY...      a program that is not hardened; the folder of those that are; libraries
soft=$1 libraries=("${@:3}")
files=("${libraries[@]}" "$2"/orx_*)
source "$(dirname "$0")/../scripts/support.sh"

# lacks FILE: what is missing there, a word each.
lacks_elf() {
    local headers dynamic
    headers=$(readelf -hlW "$1") dynamic=$(readelf -dW "$1")
    grep -q GNU_RELRO <<<"$headers" || echo relro
    grep -qE 'FLAGS.*\bNOW\b|BIND_NOW' <<<"$dynamic" || echo now
    grep -qE 'GNU_STACK .* RW ' <<<"$headers" || echo stack-without-code
    ! grep -q '(TEXTREL)' <<<"$dynamic" || echo text-without-relocations
    if grep -q INTERP <<<"$headers"; then
        grep -q 'FLAGS_1.*PIE' <<<"$dynamic" || echo pie
    fi
}
lacks_pe() {
    local headers=$("${OBJDUMP:-x86_64-w64-mingw32-objdump}" -p "$1")
    for wanted in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do grep -qw "$wanted" <<<"$headers" || echo "$wanted"; done
}
lacks() { case $1 in *.dll | *.exe) lacks_pe "$1" ;; *) lacks_elf "$1" ;; esac; }

checked() { readelf -W --dyn-syms "$@" 2>/dev/null | sed -nE 's/.* UND (__stack_chk_fail|__[a-z]+_chk)(@.*)?$/\1/p' | sort -u; }

[ ${#libraries[@]} -gt 0 ] && [ -e "${files[-1]}" ] || fail "no files: ${files[*]}"
for file in "${files[@]}"; do
    expect_equal "" "$(lacks "$file" | xargs)"
done
# The check sees what is missing.
[ -n "$(lacks "$soft")" ] || fail "$soft is not hardened, but nothing is found missing there"

if [[ ${libraries[0]} != *.dll ]]; then
    # Stack protectors and checked copies leave calls behind where there are arrays on the stack.
    expect_line __stack_chk_fail "$(checked "${libraries[0]}")"
    expect_line '__[a-z]+_chk' "$(checked "${files[@]}" | grep -v stack)"
fi
finish
