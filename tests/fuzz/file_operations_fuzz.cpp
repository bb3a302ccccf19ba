// File operations in an empty folder, against what the standard library sees of it; logs of lines.
#include <algorithm>
#include <array>

#include "orxFunctions/files/file_operator.h"
#include "orxFunctions/files/text_log.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

namespace {

using fuzz::require;
namespace fs = std::filesystem;

std::int64_t sizeOf(const fs::path& folder) {
    std::int64_t sum = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) sum += static_cast<std::int64_t>(entry.file_size());
    }
    return sum;
}

std::size_t filesOf(const fs::path& folder) {
    std::size_t count = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        count += entry.is_regular_file() ? 1 : 0;
    return count;
}

// A name of few, so that operations meet; now and then one of the input's own letters, without separators.
std::string name(fuzz::Input& input) {
    static const std::array<const char*, 8> kNames = {"a",   "b",       "c.txt", "d.PNG",
                                                      "a/e", "b/f.png", "a/b",   ".g"};
    const unsigned kind = input.byte();
    if (kind < 224) return kNames[kind % kNames.size()];
    std::string own = input.text(12);
    for (char& c : own) {
        if (c == '/' || c == '\\' || c == '\0' || c == ':') c = '_';
    }
    return own == ".." || own == "." ? "_" : own;
}

void step(fuzz::Input& input, const fs::path& folder) {
    const unsigned kind = input.byte() % 10U;
    const std::string inner = name(input);
    const std::string a = (folder / inner).string();
    const std::string b = (folder / name(input)).string();
    const bool overwrite = input.flag();
    std::error_code ignored;
    const bool wasFile = fs::is_regular_file(a, ignored);
    const bool wasFolder = fs::is_directory(a, ignored);
    require(FileOperator::fileExists(a) == wasFile && FileOperator::folderExists(a) == wasFolder,
            "what is there");
    if (kind == 0) {
        require(FileOperator::createFolder(a) == fs::is_directory(a, ignored),
                "true when it exists afterwards");
    } else if (kind == 1 && inner != "" && !wasFolder) {
        orx::save2Txt(a, input.text(20), 1);
    } else if (kind == 2) {
        const std::string content = wasFile ? test::bytesOf(a) : std::string();
        const bool copied = FileOperator::copyFile(a, b, overwrite);
        require(!copied || (wasFile && fs::exists(a)), "files are copied, and stay");
        if (copied && !fs::is_directory(b)) require(test::bytesOf(b) == content, "the same bytes");
    } else if (kind == 3) {
        const std::size_t before = filesOf(folder);
        const bool moved = FileOperator::moveFile(a, b, overwrite);
        require(!moved || (wasFile && !fs::exists(a)), "moved files are gone");
        require(filesOf(folder) == before || (moved && overwrite), "none is lost");
    } else if (kind == 4) {
        const bool deletable = wasFolder && a != folder.string() && !inner.empty();
        require(!deletable || (FileOperator::deleteFolder(a) && !fs::exists(a)), "folders are deleted");
    } else if (kind == 5 && !inner.empty()) {
        if (FileOperator::hideFile(a)) require(FileOperator::isHidden(a), "hidden");
    } else if (kind == 6 && !inner.empty()) {
        if (FileOperator::unhideFile(a)) require(!FileOperator::isHidden(a), "shown");
    } else if (kind == 7) {
        require(wasFolder || FileOperator::listFiles(a).empty(), "only folders are listed");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    const fs::path folder = fuzz::emptyFolder();
    for (int i = 0; i < 40 && !input.atEnd(); ++i) {
        step(input, folder);
        require(FileOperator::folderSize(folder.string()) == sizeOf(folder), "the bytes of all files");
        const std::vector<std::string> all = FileOperator::listFiles(folder.string(), "", true);
        require(all.size() == filesOf(folder) && std::is_sorted(all.begin(), all.end()),
                "all files in order");
        for (const std::string& file : FileOperator::listFiles(folder.string(), "png", true)) {
            const std::string end = file.size() < 4 ? file : file.substr(file.size() - 4);
            require(end == ".png" || end == ".PNG" || end == ".Png", "the extension asked for");
        }
    }
    fuzz::forgetMessages();
    return 0;
}
