// What a host and the library hand each other: images in order, names and what they stand for, traces, times,
// rectangles, files with and without a version; against plain containers and loops.
#include <array>
#include <deque>
#include <filesystem>
#include <map>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

namespace {

using fuzz::require;

// The queue keeps the last six.
void checkImages(fuzz::Input& input) {
    cv::Mat out;
    while (orx::APPgetImage(out)) continue;
    std::deque<cv::Mat> model;
    for (int i = 0; i < 30 && !input.atEnd(); ++i) {
        const unsigned kind = input.byte() % 5U;
        const cv::Mat untouched(1, 1, CV_8UC1, cv::Scalar(7));
        out = untouched;
        if (kind <= 1) {
            cv::Mat image = input.matrix();
            model.push_back(image.clone());
            if (model.size() > 6) model.pop_front();
            orx::APPshowImage(image);
        } else if (kind == 2) {
            require(orx::APPgetImage(out) == !model.empty(), "the oldest, where there is one");
            require(fuzz::same(out, model.empty() ? untouched : model.front()), "the oldest");
            if (!model.empty()) model.pop_front();
        } else if (kind == 3) {
            require(orx::APPgetImageRecent(out) == !model.empty(), "the newest, where there is one");
            require(fuzz::same(out, model.empty() ? untouched : model.back()), "the newest");
        } else {
            const cv::Mat image = input.matrix();
            orx::APPshowOneImage(image);
            require(orx::APPgetOneImage(out) == !image.empty(), "the slot's image, where there is one");
            require(fuzz::same(out, image.empty() ? untouched : image), "the slot's image");
        }
    }
}

std::string lastText;
int calls = 0;

int sum(int a, int b) { return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b)); }
int first(int a, int) { return a; }
void takeText(std::string text) { lastText = std::move(text); }
void count() { ++calls; }

// The first registration of a name wins until it is removed; functions stay.
void checkNames(fuzz::Input& input) {
    orx::TAppSys names;
    std::array<orx::TClassBase, 3> objects;
    std::map<std::string, orx::TClassBase*> objectModel;
    std::map<std::string, orx::TAppSys::TIntFunc> functionModel;
    for (int i = 0; i < 30 && !input.atEnd(); ++i) {
        const unsigned kind = input.byte() % 8U;
        const std::string name = input.text(2);
        if (kind == 0) {
            const unsigned which = input.byte() % 4U;
            orx::TClassBase* const object = which == 3 ? nullptr : &objects[which];
            names.Register(name, object);
            if (object == nullptr)
                objectModel.erase(name);
            else
                objectModel.emplace(name, object);
        } else if (kind == 1) {
            names.UnRegister(name);
            objectModel.erase(name);
        } else if (kind == 2) {
            const auto found = objectModel.find(name);
            require(names.suport(name) == (found == objectModel.end() ? nullptr : found->second),
                    "the object of that name");
        } else if (kind == 3) {
            const orx::TAppSys::TIntFunc f = input.flag() ? sum : first;
            names.RegisterFunc(name, f);
            functionModel.emplace(name, f);
        } else if (kind == 4) {
            const int a = input.integer();
            const int b = input.integer();
            int result = 77;
            const auto found = functionModel.find(name);
            const bool isThere = found != functionModel.end();
            require(names.callFunc(name, a, b, result) == isThere, "a function of that name, or none");
            require(result == (isThere ? found->second(a, b) : 77), "its answer");
        } else if (kind == 5) {
            names.RegisterFunc(name, takeText);
            names.callFunc(name, std::string("told"));
            require(lastText == "told", "texts reach their function");
            lastText.clear();
        } else if (kind == 6) {
            const int before = calls;
            names.RegisterFunc(name, count);
            names.callFunc(name);
            require(calls == before + 1, "called once");
        } else {
            orx::TAppSys copy(names);
            names = copy;
        }
    }
}

std::vector<std::string> lines;

// A label, a blank and the value; read as code page 936, told as UTF-8.
void checkTraces(fuzz::Input& input) {
    lines.clear();
    zul::setTraceSink([](const char* line, void*) { lines.push_back(line); }, nullptr);
    const std::string label = "l" + input.text(20);
    const int value = input.integer();
    const bool flag = input.flag();
    orx::outPutDebugString(label);
    orx::outPutDebugString(label, value);
    orx::outPutDebugString(label, flag);
    orx::outPutDebugString(label, std::string("text"));
    orx::outPutDebugString(label, "text");
    const double number = input.number();
    orx::outPutDebugString(label, number, input.between(-2, 12));
    zul::setTraceSink(nullptr, nullptr);
    require(lines.size() == 6 && lines[3] == lines[4], "a line each");
    if (label.find('\0') != std::string::npos) return;
    require(lines[0] == zul::toUtf8(label), "as UTF-8");
    require(lines[1] == zul::toUtf8(label + " " + std::to_string(value)), "the number");
    require(lines[2] == zul::toUtf8(label + (flag ? " true" : " false")), "the truth");
}

void checkRectangles(fuzz::Input& input) {
    const orx::TORXRect any{input.integer(), input.integer(), input.integer(), input.integer()};
    orx::TORXRect outer{input.between(-9, 9), input.between(-9, 9), input.between(1, 20),
                        input.between(1, 20)};
    orx::TORXRect inner{input.between(-9, 20), input.between(-9, 20), input.between(0, 20),
                        input.between(0, 20)};
    outer.isContainRect(any);
    require(outer.toCVRect() == cv::Rect(outer.x, outer.y, outer.width, outer.height), "the same rectangle");
    require(outer.isContainRect(inner) ==
                (inner.x > outer.x && inner.y > outer.y && inner.x + inner.width < outer.x + outer.width &&
                 inner.y + inner.height < outer.y + outer.height),
            "strictly inside");
    const cv::Mat image = input.matrix();
    const cv::Rect whole(0, 0, image.cols, image.rows);
    const bool isInside = outer.x >= 0 && outer.y >= 0 && (outer.toCVRect() & whole) == outer.toCVRect();
    require(outer.checkROI(image) == isInside, "a part of the image");
    orx::TORXRect wild = any;
    if (wild.checkROI(image)) require(wild.x < image.cols && wild.y < image.rows, "begins in the image");
}

// Records of an image and back share its pixels.
void checkRecords(fuzz::Input& input) {
    cv::Mat image = input.grey();
    orx::TORXImage record;
    orx::Mat2ORXImage(image, &record);
    cv::Mat back;
    orx::ORXImage2Mat(&record, back);
    require(back.data == image.data && fuzz::same(back, image), "the same pixels");
    for (const int channels : {3, 4, input.integer()}) {
        std::vector<unsigned char> pixels(4 * 5 * 6, 9);
        orx::TORXImage own{5, 6, channels, pixels.data()};
        orx::ORXImage2Mat(&own, back);
        require(back.size() == cv::Size(5, 6) &&
                    back.channels() == (channels == 3 || channels == 4 ? channels : 1),
                "of the record's kind");
    }
}

// Any bytes may be asked for their version, and any name for its process; times have one length each.
void checkSystem(fuzz::Input& input) {
    static const std::array<std::size_t, 5> kLengths = {20, 10, 8, 14, 19};
    const int format = input.between(-1, 6);
    const std::string time = zul::getCurrentTime(format);
    require(time.size() == kLengths[format < 0 || format > 4 ? 0 : static_cast<std::size_t>(format)],
            "a time of that format");
    orx::TORXTime watch;
    require(watch.getTimeMs() >= 0, "time goes on");
    const std::string name = input.text(30);
    const bool isRunning = orx::processIsExist(name);
    if (name.find_first_of("abcdefghijklmnopqrstuvwxyz0123456789") == std::string::npos)
        require(!isRunning, "no such process");
    const std::string own = orx::getExeFileName();
    require(orx::processIsExist(zul::extractFileName(own)), "this process runs");
    require(zul::getDllPath(nullptr) == zul::extractFilePath(own), "the program's folder");
    static int noModule = 0;
    require(orx::getDllPath(reinterpret_cast<zul::TModuleHandle>(&noModule)).empty(), "no module");
    const std::filesystem::path file = fuzz::emptyFolder() / "libx.so.1.2";
    test::writeBytes(file.string(), input.rest());
    require(orx::getFileVersion(file.string() + "x").empty(), "no version of no file");
    orx::getFileVersion(file.string());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::runOneOf({checkImages, checkNames, checkTraces, checkRectangles, checkRecords, checkSystem}, bytes,
                   size);
    return 0;
}
