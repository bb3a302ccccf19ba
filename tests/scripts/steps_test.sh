# A step is one line; what its command printed is in the log, and is shown when it fails.
source "$(dirname "$0")/support.sh"
make_tree scripts/common.sh

# run_script NAME TEXT: what a script of that text prints, in $output, and its exit code.
run_script() {
    make_program "$work/scripts" "$1" "source scripts/common.sh
$2"
    output=$("scripts/$1" "${@:3}" 2>&1)
    status=$?
}

run_script passes 'step "doing it" seq -f "[%g/40] part" 40'
expect_equal 0 "$status"
expect_line '== passes: the whole output goes to build/logs/passes\.log' "$output"
expect_line '== doing it \.\.\. 10% 20% 30% 40% 50% 60% 70% 80% 90% 100%  [0-9]+ s' "$output"
expect_equal 2 "$(wc -l <<<"$output")"
expect_line '\[40/40\] part' "$(cat build/logs/passes.log)"

run_script fails 'fail_late() { seq -f "line %g" 100; echo "the reason" >&2; return 7; }
step "doing it" fail_late || die "it was $?"'
expect_equal 1 "$status"
expect_line 'the reason' "$output"
expect_line 'line 100' "$output"
expect_no_line 'line 1' "$output"
expect_line 'fails: it was 7' "$output"
expect_line 'line 1' "$(cat build/logs/fails.log)"

run_script says_all 'step "doing it" echo "every word"; echo "left: $*"' --verbose other
expect_line 'every word' "$output"
expect_line 'left: other' "$output"

# One log for scripts that call each other.
make_program scripts inner 'source scripts/common.sh
step "inside" echo "from within"'
run_script outer 'scripts/inner; step "outside" echo "from without"'
expect_equal 1 "$(grep -c 'goes to' <<<"$output")"
for place in within without; do expect_line "from $place" "$(cat build/logs/outer.log)"; done

# Of ctest: what fails, and the closing lines.
run_script tests 'fake_ctest() {
    printf "Test project /somewhere\n      Start  1: a/Good\n1/3 Test  #1: a/Good ....   Passed    0.01 sec\n"
    printf "2/3 Test  #2: a/Bad .....***Failed    0.02 sec\nit broke\n\n"
    printf "3/3 Test  #3: a/Left ....***Skipped   0.00 sec\n\n67%% tests passed, 1 tests failed out of 3\n"
    return 8
}
test_step "testing" fake_ctest || echo "ended with $?"'
expect_line 'ended with 8' "$output"
expect_line '2/3 Test  #2: a/Bad .*' "$output"
expect_line 'it broke' "$output"
expect_line '67% tests passed, 1 tests failed out of 3' "$output"
expect_no_line '.*(a/Good|a/Left).*' "$output"
expect_equal 1 "$(grep -c 'it broke' <<<"$output")"
finish
