// The driver module whose every answer comes from the fuzz input.
#ifndef ORXFUNCTIONS_TESTS_FUZZ_DRIVER_ANSWERS_H
#define ORXFUNCTIONS_TESTS_FUZZ_DRIVER_ANSWERS_H

#include <cstddef>

#include "drivers/vision_driver.h"

// The module answers from these bytes on, one after another; with 0 once they are used up. They are copied.
extern "C" VD_EXPORT void giveDriverAnswers(const unsigned char* bytes, std::size_t size);

#endif
