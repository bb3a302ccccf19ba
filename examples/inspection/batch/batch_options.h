// Options of a batch: a recipe on many pictures.
#ifndef EXAMPLES_INSPECTION_BATCH_OPTIONS_H
#define EXAMPLES_INSPECTION_BATCH_OPTIONS_H

#include <string>

namespace inspection {

enum class Annotate { kNone, kFailed, kAll };  // kFailed: what did not pass

struct BatchOptions {
    std::string recipe;  // its file; empty: no batch
    bool recursive = false;
    int jobs = 1;
    Annotate annotate = Annotate::kFailed;
    bool jpeg = false;
    std::string sqlite;  // file; empty: none
    std::string truth;   // CSV file; empty: none
    int gauge = 0;       // pictures of each part, one after another; 0: no study
    bool again = false;
    bool quiet = false;
    int keep = 1000;      // annotated pictures of cameras at the most: the newest
    int lines = 1000000;  // results of cameras in a file at the most; what is older makes room for the next
};

}  // namespace inspection

#endif
