# Every link and anchor of the guides leads somewhere in the installed tree, and each guide and picture is there.
#
#   links_test.sh BUILD_FOLDER
build=$(realpath "$1")
source "$(dirname "$0")/../scripts/support.sh"

# prose FILE: its lines without code, in which brackets mean something else.
prose() { awk '/^ *```/ { code = !code; next } !code { gsub(/`[^`]*`/, ""); print }' "$1"; }

links_of() { prose "$1" | grep -oE '\]\([^) ]+\)' | sed -E 's/^\]\((.*)\)$/\1/'; }

# anchors_of FILE: what its headings are called in links; the second of a name has -1 behind it.
anchors_of() {
    awk '/^ *```/ { code = !code; next }
        !code && /^#+ / {
            sub(/^#+ +/, "")
            name = tolower($0)
            gsub(/[^a-z0-9 _-]/, "", name)
            gsub(/ /, "-", name)
            print name (name in seen ? "-" seen[name] : "")
            seen[name]++
        }' "$1"
}

# is_made PAGE PICTURE: the program of that guide names the picture, perhaps in words or without the page's name. Guides'
# pictures are made while the site is built, and are there alone.
is_made() {
    local page words
    page=$(basename "$1" .md)
    words=${2#"$page"-}
    grep -qsE "\"($page-)?${words//-/[ -]}\"" "${1%/*}/${page//-/_}".{cpp,py}
}

# dead_links FOLDER: those of its texts that lead nowhere, or out of it.
dead_links() {
    local text link file
    find "$1" -name '*.md' | sort | while read -r text; do
        for link in $(links_of "$text"); do
            [[ ! $link =~ ^(https?|mailto): ]] || continue
            file=$text
            [ -z "${link%%#*}" ] || file=$(dirname "$text")/${link%%#*}
            if [[ $link == pictures/*.png ]] && is_made "$text" "$(basename "$link" .png)"; then continue; fi
            if [ ! -e "$file" ] || [[ $(realpath "$file") != "$(realpath "$1")"/* ]]; then
                echo "${text#"$1"/}: $link"
            elif [[ $link == *#* ]] && ! anchors_of "$file" | grep -qxF -- "${link#*#}"; then
                echo "${text#"$1"/}: $link"
            fi
        done
    done
}

# What the check itself sees.
mkdir -p tree/sub
cat >tree/a.md <<'END'
# One, two
[there](sub/b.md) [section](sub/b.md#a-b) [here](#one-two) [page](https://example.org/none) ![picture](sub/none.png)
[no section](sub/b.md#c) [not here](#two) [outside](../outside.md) `[code](none)`
```
[code](none)
```
END
printf '# A `b`\n![made](pictures/b-d.png) ![made](pictures/b-e-f.png) ![never made](pictures/b-c.png)\n' >tree/sub/b.md
printf 'guide::save("b-d", picture);  for (const char* name : {"e f"}) ...\n' >tree/sub/b.cpp
printf '# Outside\n' >outside.md
expect_equal "a.md: sub/none.png a.md: sub/b.md#c a.md: #two a.md: ../outside.md sub/b.md: pictures/b-c.png" "$(dead_links tree | xargs)"

cmake --install "$build" --component documentation --prefix prefix >install.log 2>&1 || fail "$(tail -n 5 install.log)"
installed=prefix/share/doc/orxFunctions
expect_equal "" "$(dead_links "$installed")"

# Nothing of it is forgotten: every text and picture of the guides, and every source of the examples.
(cd "$project" && find README.md CHANGELOG.md CONTRIBUTING.md LICENSE drivers/README.md examples docs python/examples -type f \
    ! -path 'docs/tools/*' ! -path 'docs/site/*' ! -path 'docs/conf.py' ! -path '*/__pycache__/*' \
    ! -name Doxyfile ! -name comments.sed ! -name names-without-example.txt) | sort >there
(cd "$installed" && find . -type f | sed 's#^\./##' |
    grep -vE '^(drivers/vision_driver\.h$|html/|docs/guides/pictures/)') | sort >brought
[ "$(wc -l <there)" -gt 100 ] || fail "only $(wc -l <there) files found in this tree"
expect_equal "" "$(diff there brought | head -n 5)"
finish
