// Collects the trace lines while it lives.
#ifndef TESTS_FITTING_TRACE_CAPTURE_H
#define TESTS_FITTING_TRACE_CAPTURE_H

#include <string>
#include <vector>

#include "ZULLib/zullib.h"

class TraceCapture {
  public:
    TraceCapture() { zul::setTraceSink(&TraceCapture::take, this); }
    ~TraceCapture() { zul::setTraceSink(nullptr, nullptr); }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    using Lines = std::vector<std::string>;
    Lines lines;  // UTF-8

  private:
    static void take(const char* line, void* self) {
        static_cast<TraceCapture*>(self)->lines.emplace_back(line);
    }
};

#endif
