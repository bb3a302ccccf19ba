# CI's stages: the table tells what each took, also when one fails, and nothing runs after that.
source "$(dirname "$0")/support.sh"
make_tree .ci/run
make_program bin id 'echo 0'
export PATH=$work/bin:$PATH CCACHE_DIR=$work/compilations
for script in check-format check-headers check-kernels test-windows docs check-site; do make_program scripts "$script" 'exit 0'; done
make_program scripts test 'echo "tested $*"'
make_program scripts try-fresh 'echo "tried $*"'

output=$(.ci/run 2>&1)
expect_equal 0 $?
expect_line "tried --carry $work/compilations:/root/.cache/ccache scripts/demo scripts/test" "$output"
expect_line 'tested asan' "$output"
expect_line '####  +[0-9]+  +[0-9]+  scripts/check-headers windows' "$output"
expect_line '#### all checks passed' "$output"

make_program scripts test 'exit 3'
output=$(.ci/run 2>&1)
expect_equal 3 $?
expect_line '####  +[0-9]+  +[0-9]+  readme_commands' "$output"
expect_line '####  +[0-9]+  +[0-9]+  FAILED  scripts/test asan' "$output"
expect_line '####  +-  +-  scripts/test-windows' "$output"
expect_no_line '#### all checks passed' "$output"

# A bare machine that fails is a failure; only without root the commands run here.
make_program scripts try-fresh 'exit 5'
make_program scripts test 'echo "tested here"'
make_program scripts demo 'echo "shown here"'
output=$(.ci/run 2>&1)
expect_equal 5 $?
expect_no_line 'tested here' "$output"
make_program bin id 'echo 1000'
output=$(.ci/run 2>&1)
expect_equal 0 $?
expect_line '#### not in a bare Debian, .*' "$output"
expect_line 'shown here' "$output"
finish
