#include <cstdlib>

#include "tests/display/picture_box_fixture.h"

void test::hideDisplay() { unsetenv("DISPLAY"); }
