# Faults that scripts/mutate puts into sources: one line each, in code, the same ones again, and never in this tree.
source "$(dirname "$0")/support.sh"
for needed in python3 git; do command -v "$needed" >/dev/null || exit 77; done # skipped

make_tree scripts/mutate
mkdir -p ZULLib
cat >ZULLib/one.cpp <<'END'
#include <vector>
// a comment with 1 < 2 + 3
/* another == one
   a + b */
const char* const kText = "7 < 8 + 9";
int sum(const std::vector<int>& numbers) {
    int total = 0;
    for (int i = 0; i < int(numbers.size()) - 1; ++i) total += numbers[i];
    forget(total);
    return total;
}
END
cp ZULLib/one.cpp ZULLib/two_win32.cpp
echo /first >.gitignore
git init -q . && git add . && git -c user.name=n -c user.email=e commit -qm "A tree" || exit 1

scripts/mutate --list --count 100 --seed 3 >first || fail "exit code $?"
scripts/mutate --list --count 100 --seed 3 | cmp - first || fail "the same seed gives other faults"
! scripts/mutate --list --count 100 --seed 4 | cmp -s - first || fail "another seed gives the same faults"
expect_equal "" "$(git status --porcelain)"
expect_no_line '.*two_win32.*' "$(cat first)"

# By hand: line 7 one constant; line 8 three comparisons, signs and so on; line 9 is a call that can be left out.
expect_equal "comparison:1 constant:3 dropped line:1 off by one:1 sign:2" \
    "$(grep -xE 'comparison|constant|dropped line|off by one|sign' first | sort | uniq -c | awk '{ n = $1; sub(/^ *[0-9]+ /, ""); printf "%s:%d ", $0, n }' | sed 's/ $//')"
expect_line '\+    for \(int i = 0; i <= int\(numbers\.size\(\)\) - 1; \+\+i\) total \+= numbers\[i\];' "$(cat first)"
expect_line '\+    for \(int i = 0; i < int\(numbers\.size\(\)\); \+\+i\) total \+= numbers\[i\];' "$(cat first)"
expect_line '-    forget\(total\);' "$(cat first)"
expect_equal "0" "$(grep -cE '^[-+](//|/\*|   a|const char)' first)"

# Each fault of ten in a copy, by programs that stand in for CMake and for the tests: a quick one catches each sign, a
# slow one each constant. The program that is "built" tells with what it is called.
make_program bin cmake "if [ \$1 = --preset ]; then install -D '$work/bin/test_zullib' build/release/bin/test_zullib; fi"
make_program bin test_zullib 'without=""
for argument in "$@"; do
    case $argument in
        --gtest_output=json:*) cat >"${argument#*:}" <<<'"'"'{"testsuites": [
            {"name": "A", "testsuite": [{"name": "Quick", "time": "0.5s"}]},
            {"name": "B/C", "testsuite": [{"name": "Slow/1", "time": "2.5s"}]}]}'"'"' ;;
        --gtest_filter=*) without=$argument ;;
    esac
done
if grep -q " + numbers\|)) + 1\| -= " ZULLib/one.cpp; then exit 1; fi
if [ "$without" = "--gtest_filter=-B/C.Slow/1" ]; then exit 0; fi
test -z "$without" && ! grep -q "total = 1\|i = 1\|- 2;" ZULLib/one.cpp'
echo /bin >>.gitignore
echo /build >>.gitignore
git -c user.name=n -c user.email=e commit -qam "Leave out what is built"

all=$(PATH=$work/bin:$PATH scripts/mutate --count 100) || fail "exit code $?: $all"
expect_line 'ZULLib: 2 tests in 3 s; 0 of them are left out, .*' "$all"
expect_line 'ZULLib: 8 faults: 5 caught, 3 survived \(62 % caught\)' "$all"
expect_line '[1-8] caught: ZULLib/one\.cpp:8, sign' "$all"
expect_line '[1-8] survived: ZULLib/one\.cpp:9, dropped line' "$all"
expect_line '-    forget\(total\);' "$all"
quick=$(PATH=$work/bin:$PATH scripts/mutate --count 100 --quick 1) || fail "exit code $?: $quick"
expect_line 'ZULLib: 2 tests in 3 s; 1 of them are left out, .*' "$quick"
expect_line '8 faults: 2 caught, 6 survived \(25 % caught\)' "$quick"
expect_equal "$(grep -v "^ZULLib: 2 tests" <<<"$quick")" "$(cat build/mutation/results.txt)"
expect_equal "" "$(git status --porcelain)"

# What is not committed would not be tried.
echo '// more' >>ZULLib/one.cpp
said=$(scripts/mutate --list 2>&1) && fail "it starts on a tree that is not clean"
expect_line 'mutate: what is not committed would not be tried.*' "$said"
finish
