# An Aravis that can't be linked is left out in one line, which names the package that is missing.
source "$(dirname "$0")/support.sh"
cat >CMakeLists.txt <<END
cmake_minimum_required(VERSION 3.20)
project(probe LANGUAGES NONE)
include($project/cmake/OrxAravis.cmake)
orx_find_aravis(reason)
message(STATUS "reason: \${reason}.")
END
# Nothing but what is made here is found.
export PKG_CONFIG_LIBDIR=$work/modules PKG_CONFIG_PATH=""
mkdir modules

# aravis VERSION REQUIRED: its file for pkg-config.
aravis() {
    printf 'Name: Aravis\nDescription: cameras\nVersion: %s\nRequires.private: %s\nLibs: -laravis-0.8\n' "$1" "$2" \
        >modules/aravis-0.8.pc
}

# expect_reason PATTERN: it configures, and says this in one line.
expect_reason() {
    local output
    rm -rf build
    output=$(cmake -S . -B build 2>&1) || fail "CMake ended with $?: $output"
    expect_line "-- reason: $1\." "$output"
    expect_equal 1 "$(grep -ciE 'aravis|reason' <<<"$output")"
}

expect_reason 'Aravis 0\.8 was not found \(Debian: libaravis-dev\)'
aravis 0.8.20 ''
expect_reason 'Aravis 0\.8\.20 is older than 0\.8\.26'
aravis 0.8.30 ''
expect_reason ''
aravis 0.8.30 libusb-1.0
expect_reason "Aravis can't be linked without libusb-1\\.0 \\(Debian: libusb-1\\.0-0-dev\\)"
aravis 0.8.30 another-2.0
expect_reason "Aravis can't be linked without another-2\\.0 .*"
finish
