// Stream files: any bytes read, and what is written read again.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "orxFunctions/files/stream_file.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

namespace {

using fuzz::require;

// Up to a gibibyte is taken at a file's word, which is sound, but slow.
bool claimsMuch(const std::string& bytes) {
    std::int32_t sizes[2] = {0, 0};
    std::memcpy(sizes, bytes.data(), std::min(bytes.size(), sizeof sizes));
    const std::int64_t elements = std::int64_t{sizes[0]} * sizes[1];
    return elements > 1 << 20 && elements <= 1 << 27;
}

void checkBytes(const std::string& file, const std::string& bytes) {
    if (claimsMuch(bytes)) return;
    test::writeBytes(file, bytes);
    cv::Mat image;
    cv::Size size;
    std::string text;
    if (!orx::streamFile2Image(file, image, size, text)) {
        require(image.empty() && text.empty() && size == cv::Size(), "a refusal leaves the outputs");
        return;
    }
    require(image.empty() || image.type() == CV_64FC1, "numbers of one channel");
    if (image.empty()) return;
    require(orx::image2StreamFile(image, size, file, text), "what was read is written");
    cv::Mat again;
    cv::Size sizeAgain;
    std::string textAgain;
    require(orx::streamFile2Image(file, again, sizeAgain, textAgain), "and read");
    require(again.size() == image.size() && size == sizeAgain && text == textAgain,
            "the same sizes and text");
    require(std::memcmp(again.data, image.data, image.total() * sizeof(double)) == 0, "the same bits");
}

void checkMatrix(const std::string& file, fuzz::Input& input) {
    const cv::Size size{input.integer(), input.integer()};
    const std::string text = input.text(255);
    const cv::Mat any = input.matrix();
    cv::Mat numbers;
    if (any.dims <= 2 && !any.empty()) any.reshape(1).convertTo(numbers, CV_64F);
    const bool written = orx::image2StreamFile(any, size, file, text);
    require(written == (any.total() > 0), "matrices with elements are written");
    if (numbers.empty()) return;
    require(orx::image2StreamFile(numbers, size, file, text), "numbers are written");
    cv::Mat image;
    cv::Size sizeAgain;
    std::string textAgain;
    require(orx::streamFile2Image(file, image, sizeAgain, textAgain) && fuzz::same(image, numbers),
            "and read");
    require(sizeAgain == size && textAgain == std::string(text.c_str()),
            "the same size, the text up to a NUL");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    const std::string file = (fuzz::emptyFolder() / "a.stream").string();
    if (input.flag())
        checkMatrix(file, input);
    else
        checkBytes(file, input.rest());
    fuzz::forgetMessages();
    return 0;
}
