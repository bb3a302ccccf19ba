# Nothing that this build took from the machine is there by luck: each file belongs to a package that
# scripts/install-packages installs for the build, or to one that such a package or every Debian brings.
#
#   packages_test.sh BUILD_FOLDER SET...
build=$1 sets=("${@:2}")
source "$(dirname "$0")/support.sh"
command -v dpkg apt-cache >/dev/null || exit 77 # not a Debian: skipped

# with_dependencies PACKAGE...: these, and the installed packages among those that they depend on.
with_dependencies() {
    apt-cache depends --recurse --installed --no-recommends --no-suggests --no-conflicts --no-breaks --no-replaces \
        --no-enhances "$@" | sed -nE 's/^([^ <:]+).*/\1/p'
}

# Headers and the libraries and programs that CMake found.
used_files() {
    # Qt and GTK are not installed for the build, but used where they are found.
    ninja -C "$build" -t deps |
        awk '/^[^ ]/ { toolkit = /(qt|gtk)_(viewer|widget)/ } /^ +\/usr\// && !toolkit { print $1 }'
    sed -nE '/^pkgcfg_lib_gtk3_/!s#^[^=]+:FILEPATH=(/usr/.*)#\1#p' "$build/CMakeCache.txt"
    module_files aravis-0.8 xcb xcb-xtest xcb-xfixes
}

# module_files MODULE...: pkg-config's files of these modules and of what they ask for.
module_files() {
    local todo=("$@") known=" " module folder
    while [ ${#todo[@]} -gt 0 ]; do
        module=${todo[0]} todo=("${todo[@]:1}")
        [[ $known != *" $module "* ]] || continue
        known+="$module "
        folder=$(pkg-config --variable=pcfiledir "$module" 2>/dev/null) || continue
        echo "$folder/$module.pc"
        mapfile -t -O ${#todo[@]} todo < <(pkg-config --print-requires --print-requires-private "$module" | sed 's/ .*//')
    done
}

# As dpkg may still know a file that has moved from /lib to /usr/lib.
in_usr() { sed -E 's#^/(bin|sbin|lib[^/]*)/#/usr/\1/#' | sort -u; }

mapfile -t listed < <("$project/scripts/install-packages" --list "${sets[@]}")
mapfile -t essential < <(dpkg-query -W -f '${Package} ${Essential} ${Priority}\n' | sed -nE 's/ (yes .*|no required)$//p')
with_dependencies "${listed[@]}" "${essential[@]}" apt | sort -u >packages
xargs dpkg -L <packages 2>/dev/null | in_usr >brought

# A name of a file may be a link that somebody else made: then what it leads to counts.
used_files | sort -u >used
[ "$(wc -l <used)" -gt 100 ] || fail "only $(wc -l <used) files found: is $build built?"
comm -23 <(in_usr <used) brought | xargs -r realpath -m | in_usr | comm -23 - brought >lucky
while read -r file; do
    fail "no package of the sets ${sets[*]} brings $file ($(dpkg -S "$file" 2>/dev/null || echo "which none has"))"
done < <(head -n 5 lucky)
finish
