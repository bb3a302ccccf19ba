#include "tests/gige/camera_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

extern char** environ;

namespace gige {

SoftwareCamera::SoftwareCamera(const CameraOptions& options) : options_(options) { start(); }

void SoftwareCamera::start() {
    int input[2];
    int output[2];
    problem_ = "there are no pipes";
    if (pipe2(input, O_CLOEXEC) != 0) return;
    if (pipe2(output, O_CLOEXEC) != 0) {
        ::close(input[0]);
        ::close(input[1]);
        return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    std::vector<std::string> words = {ORX_SOFTWARE_CAMERA,
                                      "--address",
                                      options_.address,
                                      "--serial",
                                      options_.serial,
                                      "--vendor",
                                      options_.vendor,
                                      "--width",
                                      std::to_string(options_.width),
                                      "--height",
                                      std::to_string(options_.height),
                                      "--format",
                                      std::to_string(options_.format),
                                      "--rate",
                                      std::to_string(options_.rate),
                                      "--loss",
                                      std::to_string(options_.loss)};
    if (options_.isEven) words.emplace_back("--even");
    for (const std::string& change : options_.changes) words.insert(words.end(), {"--change", change});
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const int failed =
        posix_spawn(&process_, ORX_SOFTWARE_CAMERA, &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    input_ = input[1];
    std::string answer;
    char byte = 0;
    while (failed == 0 && answer != "ready") {
        const ssize_t count = read(output[0], &byte, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        answer += byte;
    }
    ::close(output[0]);
    problem_.clear();
    if (answer == "ready") return;
    int status = 0;
    if (failed == 0) waitpid(process_, &status, 0);
    process_ = 0;
    ::close(input_);
    problem_ = "the software camera at " + options_.address + " did not start: error " +
               std::to_string(failed) + ", status " + std::to_string(status) + ", it said '" + answer + "'";
}

void SoftwareCamera::pause() const { ::kill(process_, SIGSTOP); }

void SoftwareCamera::resume() const { ::kill(process_, SIGCONT); }

void SoftwareCamera::kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    ::close(input_);
    process_ = 0;
}

}  // namespace gige
