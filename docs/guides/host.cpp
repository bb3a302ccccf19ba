// Guide "host and library": parameters, messages, traces, images, a registry, logs, files, paths and
// processes.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"

namespace {

void shareParameters() {
    // [parameters]
    orx::APPaddOrSetParamInt("line", 3);
    orx::APPaddOrSetParamDouble("mmPerPixel", 0.0215);
    orx::APPaddOrSetParamString("article", "4711-B");
    orx::APPaddOrSetParamBool("saveBad", true);

    // Anywhere else, in any library of the process:
    const int line = zul::APPgetParamInt("line");                    // 3
    const double scale = zul::APPgetParamDouble("mmPerPixel");       // 0.0215
    const std::string article = zul::APPgetParamString("article");   // "4711-B"
    const bool isSaving = zul::APPgetParamBool("saveBad");           // true
    const double neverSet = orx::APPgetParamDouble("line");          // 0: a name space for each type
    const std::string misspelt = orx::APPgetParamString("artikel");  // ""
    // [parameters end]
    guide::expect(line == 3 && scale == 0.0215 && article == "4711-B" && isSaving,
                  "one store, two namespaces");
    guide::expect(neverSet == 0 && misspelt.empty(), "what was never set reads as 0 or nothing");
    zul::APPaddOrSetParamInt("line", 4);
    zul::APPaddOrSetParamDouble("mmPerPixel", 0.02);
    zul::APPaddOrSetParamString("article", "4712");
    zul::APPaddOrSetParamBool("saveBad", false);
    guide::expect(orx::APPgetParamInt("line") == 4 && orx::APPgetParamDouble("mmPerPixel") == 0.02 &&
                      orx::APPgetParamString("article") == "4712" && !orx::APPgetParamBool("saveBad"),
                  "the last call counts");
}

// [messages]
// On a timer of the user interface. The texts are in code page 936, whatever the platform.
int showMessages() {
    int shown = 0;
    std::string text;
    int colour = 0;
    for (; zul::APPgetMessage(text, colour); ++shown)
        std::printf("%s: %s\n", colour == 1 ? "error" : "note", zul::toUtf8(text).c_str());
    return shown;
}
// [messages end]

void tellMessages() {
    showMessages();
    // [tell]
    zul::G_appshowMsg_defaultColor = 7;  // once, before threads start
    orx::APPshowMessage("line 3 is ready", zul::G_appshowMsg_defaultColor);
    orx::APPshowMessage(zul::toAnsi("lens at 23 °C: too warm"), 1);
    // [tell end]
    guide::expect(showMessages() == 2, "the host gets what was told");
    const std::uint64_t repeated = zul::repeatedMessageCount(), dropped = zul::droppedMessageCount();
    for (int i = 0; i < 20; ++i) orx::APPshowMessage("no part in the picture", 1);
    guide::expect(zul::repeatedMessageCount() - repeated == 4, "sixteen of twenty equal messages wait");
    for (int i = 0; i < 1000; ++i)
        orx::APPshowMessage("item " + zul::intToStr(i), orx::G_appshowMsg_defaultColor);
    guide::expect(zul::droppedMessageCount() - dropped == 16, "beyond 1,000 the oldest are dropped");
    std::string text;
    int colour = -1;
    guide::expect(orx::APPgetMessage(text, colour) && text == "item 0", "and the others wait in order");
    while (orx::APPgetMessage(text, colour)) {
    }
}

// [trace]
void keepLine(const char* utf8Line, void* lines) {  // on the thread that traces
    static_cast<std::vector<std::string>*>(lines)->emplace_back(utf8Line);
}

std::vector<std::string> traced() {
    std::vector<std::string> lines;
    zul::setTraceSink(keepLine, &lines);
    orx::outPutDebugString("exposure, us", 2000);
    orx::outPutDebugString("mm per pixel", 0.0215, 4);
    zul::outPutDebugString("triggered", true);
    zul::setTraceSink(nullptr, nullptr);  // the default again; `lines` is ours alone from here on
    return lines;
}
// [trace end]

cv::Mat numbered(int number) {
    cv::Mat tile(90, 90, CV_8UC1, cv::Scalar(255 - 20 * number));
    guide::write(tile, zul::intToStr(number), {30, 60}, cv::Scalar(0), 1.2);
    return tile;
}

void passImages() {
    // [images]
    for (int i = 1; i <= 7; ++i) {
        orx::APPshowImage(numbered(i));     // a queue of six: the first is dropped
        orx::APPshowOneImage(numbered(i));  // a slot: each takes the place of the one before
    }
    cv::Mat newest, latest;
    orx::APPgetImageRecent(newest);  // 7; the queue stays as it is
    orx::APPgetOneImage(latest);     // 7, as often as it is asked for
    std::vector<cv::Mat> taken;
    for (cv::Mat image; orx::APPgetImage(image);) taken.push_back(image.clone());  // 2 to 7
    // [images end]
    guide::expect(taken.size() == 6, "the queue holds six");
    guide::expect(!taken.empty() && cv::norm(taken.front(), numbered(2), cv::NORM_INF) == 0,
                  "from the second on");
    guide::expect(cv::norm(newest, numbered(7), cv::NORM_INF) == 0, "the newest can be looked at");
    guide::expect(cv::norm(latest, numbered(7), cv::NORM_INF) == 0, "the slot has the latest");
    std::vector<cv::Mat> panels;
    for (const cv::Mat& image : taken) panels.push_back(guide::captioned(image, "queue"));
    panels.push_back(guide::captioned(latest, "slot"));
    guide::save("host-images", guide::sheet(panels, 7));
}

void passPixels() {
    // [raw]
    std::vector<unsigned char> bytes(640 * 480, 17);  // the host's own buffer
    orx::TORXImage raw{640, 480, 1, bytes.data()};    // width, height, channels
    cv::Mat image;
    orx::ORXImage2Mat(&raw, image);  // nothing is copied: the buffer must outlive the picture
    image.at<unsigned char>(2, 5) = 200;
    orx::TORXImage back;
    orx::Mat2ORXImage(image, &back);
    // [raw end]
    guide::expect(bytes[2 * 640 + 5] == 200, "written through to the host's buffer");
    guide::expect(back.data == bytes.data() && back.width == 640 && back.height == 480 && back.channels == 1,
                  "and back");
}

// [registry]
struct Counter : orx::TClassBase {
    int parts = 0;
};

int sum(int a, int b) { return a + b; }
void greet(std::string name) { std::printf("hello, %s\n", name.c_str()); }

int countByName() {
    static Counter counter;
    orx::appSys.Register("counter", &counter);  // borrowed: never deleted
    orx::appSys.RegisterFunc("sum", sum);
    orx::appSys.RegisterFunc("greet", greet);

    // A module that knows no more than the names:
    auto* const found = static_cast<Counter*>(orx::appSys.suport("counter"));
    int result = 0;
    if (found != nullptr && orx::appSys.callFunc("sum", 2, 3, result)) found->parts += result;
    orx::appSys.callFunc("greet", "line 3");
    orx::appSys.UnRegister("counter");
    return counter.parts;
}
// [registry end]

void cutTexts() {
    // [texts]
    const std::string answer = "OK;lot=17;part=[4711-B];mm=44.0059";
    const std::string state = orx::getStartStr(answer, ";");        // "OK"
    const std::string fields = orx::getEndStr(answer, ";");         // "lot=17;part=..."
    const std::string part = orx::getMiddleStr(answer, "[", "]");   // "4711-B"
    const int lot = orx::strToInt(orx::getEndStr(fields, "lot="));  // 17: ends at the semicolon
    const double size = orx::strToDouble(orx::getEndStr(answer, "mm="));
    const std::string shown = orx::doubleToStr(size, 2) + " mm, lot " + orx::intToStr(lot);
    // [texts end]
    guide::expect(state == "OK" && part == "4711-B" && shown == "44.01 mm, lot 17", "an answer is cut");
    guide::expect(orx::getStartStr("no separator", ";").empty(), "no separator, no text");
    guide::expect(zul::strToInt("99999999999") == 2147483647 && zul::strToDouble("?") == 0 &&
                      zul::doubleToStr(0.125, 2) == "0.12",
                  "numbers out of range, none, and a tie");
}

// The folder of this run; removed at the end.
std::string runFolder() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    const auto path = std::filesystem::temp_directory_path() / ("orx-guide-host-" + std::to_string(now));
    return path.string() + "/";
}

void keepFiles() {
    const std::string folder = runFolder();
    // [files]
    FileOperator::createFolder(folder + "lot17");
    const std::string log = folder + "lot17/log.txt";
    orx::TORXTime watch;
    orx::save2Txt(log, "lot 17 begins", 0);  // "2026-11-23 06:00:00 lot 17 begins"
    orx::save2Txt(log, "no time before this one", 1);
    orx::save2Txt(log, "took " + orx::intToStr(watch.getTimeMs()) + " ms", 1);

    const bool wasHidden = FileOperator::hideFile(log);  // an attribute on Windows, ".log.txt" on POSIX
    const bool isHidden = FileOperator::isHidden(log);
    const bool isBack = FileOperator::unhideFile(log);
    const auto logs = FileOperator::listFiles(folder, ".txt", true);
    // [files end]
    guide::expect(FileOperator::folderExists(folder + "lot17"), "folders are made with those above them");
    guide::expect(wasHidden && isHidden && isBack && FileOperator::fileExists(log), "hidden and shown again");
    guide::expect(logs.size() == 1 && FileOperator::folderSize(folder) > 60,
                  "the log is listed and measured");

    // [delete]
    if (!FileOperator::deleteFolder(folder + "lot18")) std::printf("%s\n", orx::lastRefusal().text.c_str());
    FileOperator::deleteFolder(folder + "lot17");
    // [delete end]
    guide::expect(orx::lastRefusal().function == "deleteFolder", "a folder that is not there is refused");
    guide::expect(!FileOperator::folderExists(folder + "lot17"), "a folder goes with all that is in it");
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(folder), ignored);
}

void askTheProcess() {
    // [paths]
    const std::string program = zul::getExeFileName();
    const std::string folder = zul::extractFilePath(program);  // with its last separator
    const std::string name = zul::extractFileName(program);
    const std::string kind = zul::extractFileExt("pictures/part.17.png");  // ".png"
    // [paths end]
    guide::expect(folder + name == program && kind == ".png", "a path is cut without a loss");
    guide::expect(folder == zul::getDllPath(nullptr) && zul::dirExists(folder), "the program's folder");
    guide::expect(zul::processIsExist(name), "this program runs");
    guide::expect(zul::getFileVersion("no such file").empty(), "a version of no file");
    guide::expect(orx::getExeFileName() == program && orx::extractFilePath(program) == folder &&
                      orx::extractFileName(program) == name && orx::extractFileExt("a.png") == ".png" &&
                      orx::getDllPath(nullptr) == folder,
                  "the names of orx say the same");

    // [version]
    const std::string version = orx::getFileVersion("no such file");
    if (version.empty()) std::printf("%s\n", orx::lastRefusal().text.c_str());
    if (!orx::processIsExist("no-such-service")) std::printf("start the service first\n");
    // [version end]
    guide::expect(orx::lastRefusal().code == orx::rcFileMissing, "the names of orx say why");
    // [codes]
    const orx::TRefusalCode code = orx::lastRefusal().code;
    std::printf("%d: %s\n", code, orx::refusalCodeText(code));
    // [codes end]
}

void make() {
    shareParameters();
    tellMessages();
    const std::vector<std::string> lines = traced();
    guide::expect(
        lines == std::vector<std::string>{"exposure, us 2000", "mm per pixel 0.0215", "triggered true"},
        "the sink gets each line");
    passImages();
    passPixels();
    guide::expect(countByName() == 5, "found and called by name");
    guide::expect(orx::appSys.suport("counter") == nullptr, "and gone");
    cutTexts();
    keepFiles();
    askTheProcess();
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, make); }
