# Who can't install packages is told in one line which ones to ask for; who can by sudo, does.
source "$(dirname "$0")/support.sh"
make_tree scripts/common.sh scripts/install-packages

# A machine on which nothing is installed, seen by somebody who is not root.
mkdir bin
for program in bash basename cat dirname env mkdir rm tail true wc; do
    ln -s "$(type -P $program)" "bin/$program"
done
make_program bin id 'echo 1000'
make_program bin dpkg-query 'exit 1'
make_program bin apt-get 'echo "apt-get $*"'
install_packages() {
    output=$(PATH=$work/bin scripts/needy 2>&1)
    status=$?
}

# As the scripts call it that need packages.
make_program scripts needy 'source scripts/common.sh
scripts/install-packages demo'
request='install-packages: packages are missing, .*; ask for: apt-get install --no-install-recommends apt dpkg tar'
install_packages
expect_equal 1 "$status"
expect_line "$request" "$output"
expect_equal 1 "$(wc -l <<<"$output")"

make_program bin sudo 'exit 1' # he may not
install_packages
expect_equal 1 "$status"
expect_line "$request" "$output"

make_program bin sudo 'exec "$@"'
install_packages
expect_equal 0 "$status"
expect_line '.*apt-get .* install -y --no-install-recommends apt dpkg tar' "$(cat build/logs/needy.log)"
finish
