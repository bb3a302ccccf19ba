// Runs the inputs in files and folders through a fuzz target, without libFuzzer: how scripts/test replays the
// seeds, with every compiler. A finding ends the process.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const fs::path& place) {
    if (!fs::is_directory(place)) return {place};
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(place)) files.push_back(entry.path());
    return files;
}

void replay(const std::string& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int argc, char** argv) {
    int count = 0;
    replay("");
    for (int i = 1; i < argc; ++i) {
        for (const fs::path& file : filesOf(argv[i])) {
            std::fprintf(stderr, "%s\n", file.filename().string().c_str());
            replay(test::bytesOf(file.string()));
            ++count;
        }
    }
    if (count == 0) {
        std::fprintf(stderr, "no seeds to replay\n");
        return 1;
    }
    std::fprintf(stderr, "%d seeds replayed\n", count);
    return 0;
}
