# The list of dependencies names the package of every library that ours ask for, and holds together as SPDX.
#
#   dependencies_test.sh FILE...      a library first, then other binaries
binaries=("$@")
source "$(dirname "$0")/../scripts/support.sh"
command -v dpkg-query readelf >/dev/null || exit 77 # not a Debian: skipped

export SOURCE_DATE_EPOCH=86400
list() { "$project/scripts/list-dependencies" ours 1.2.3 "$@"; }
list "${binaries[@]}" /usr/include/stdio.h >list || fail "exit code $?"
expect_line 'SPDXVersion: SPDX-2\.3' "$(cat list)"
expect_line 'Created: 1970-01-02T00:00:00Z' "$(cat list)"
expect_line 'Relationship: SPDXRef-Package-ours STATIC_LINK SPDXRef-Package-libc6-dev' "$(cat list)"

# From the other end: the packages of the list hold a file of each name that the binaries ask for.
mapfile -t packages < <(sed -nE 's/^PackageName: //p' list | grep -vx ours)
[ ${#packages[@]} -ge 5 ] || fail "only these packages: ${packages[*]}"
dpkg -L "${packages[@]}" | sed 's#.*/##' | sort -u >held
readelf -d "${binaries[@]}" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p' | grep -vE '^lib(orxFunctions|ZULLib)\.' | sort -u >asked
[ -s asked ] || fail "the binaries ask for nothing"
expect_equal "" "$(comm -23 asked held | xargs)"
for package in "${packages[@]}"; do
    version=$(dpkg-query -W -f '${Version}' "$package")
    grep -A 2 -xF "PackageName: $package" list | grep -qxF "PackageVersion: $version" || fail "not the version of $package"
done

# What is referred to is defined, once; every package has a licence, or says that none is known.
defined=$(sed -nE 's/^(SPDXID|LicenseID): //p' list | sort)
expect_equal "" "$(uniq -d <<<"$defined")"
for used in $(grep -E '^(Relationship|PackageLicenseDeclared):' list | grep -oE '(SPDX|License)Ref-[^ ]+' | sort -u); do
    expect_line "$(sed 's/[.+]/\\&/g' <<<"$used")" "$defined"
done
expect_equal "$(grep -c ^PackageName: list)" "$(grep -cE '^PackageLicenseDeclared: [^ ]' list)"
grep -A 7 -E '^PackageName: libopencv-core' list | grep -qE '^PackageLicenseDeclared: .*Apache-2\.0' ||
    fail "OpenCV's licence is not told"

# Equal files, equal lists; and none for a file that is not there.
list "${binaries[@]}" /usr/include/stdio.h | cmp - list || fail "the same list twice differs"
! list "$work/not-there" >said 2>&1 || fail "a file that is not there was passed over"
finish
