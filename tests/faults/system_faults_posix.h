// System calls that fail where a test says: the n-th of a thread that has to do with files.
//
// The kernel hands the calls of such a thread, and of all threads that it makes, to this process (a filter of
// seccomp), which makes them itself or answers for the system. So it does not matter who calls: the library,
// the C library's buffers, or those of zlib and OpenCV.
#ifndef ORX_TESTS_FAULTS_SYSTEM_FAULTS_POSIX_H
#define ORX_TESTS_FAULTS_SYSTEM_FAULTS_POSIX_H

#include <functional>

namespace test::system {

// Kinds of calls; several are added.
enum Calls : unsigned {
    kOpen = 1,     // open files
    kRead = 2,     // read, other than a folder
    kWrite = 4,    // write
    kClose = 8,    // close; what is closed is closed all the same
    kNames = 16,   // rename, remove, make folders and links
    kFolder = 32,  // read what is in a folder
    kAsk = 64,     // ask about a file
    kThread = 128  // make a thread
};

struct Fault {
    unsigned calls = 0;
    int error = 0;       // errno; 0: reads and writes take half of what they are asked to, one byte at least
    long n = 0;          // the first that fails, from 1; 0: none
    bool lasts = false;  // and all that follow
};

// Whether this system lets threads be watched like that. Not under ThreadSanitizer, which makes calls of its
// own.
bool canFail();

// Runs `work` on a thread of its own whose calls fail.
void runWith(const Fault& fault, const std::function<void()>& work);

// Of the last fault: how many calls of its kinds there were, and how many failed.
long callsSeen();
long callsFailed();

// Whether the fault counts, from here on: work makes ready before, and looks at what was given after.
class Armed {
  public:
    Armed();
    ~Armed();
    Armed(const Armed&) = delete;
    Armed& operator=(const Armed&) = delete;
};

}  // namespace test::system

#endif
