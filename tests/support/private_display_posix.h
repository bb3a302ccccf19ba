// An X server of a test's own, without a screen (Xvfb), that programs find while it lives.
#ifndef ORX_TESTS_SUPPORT_PRIVATE_DISPLAY_POSIX_H
#define ORX_TESTS_SUPPORT_PRIVATE_DISPLAY_POSIX_H

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

extern char** environ;

namespace test {

class PrivateDisplay {
  public:
    // Starts the server and waits until it can be reached; DISPLAY names it then.
    PrivateDisplay() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) return;
        launch(ends[1]);
        close(ends[1]);
        const std::string number = process_ > 0 ? readLine(ends[0]) : "";
        close(ends[0]);
        if (number.empty()) {
            kill();
            return;
        }
        name_ = ":" + number;
        setenv("DISPLAY", name_.c_str(), 1);
    }
    ~PrivateDisplay() {
        kill();
        unsetenv("DISPLAY");
    }
    PrivateDisplay(const PrivateDisplay&) = delete;
    PrivateDisplay& operator=(const PrivateDisplay&) = delete;

    bool isRunning() const { return !name_.empty(); }
    const std::string& name() const { return name_; }

    // Leaves its clients without answers until it goes on.
    void stop() const { ::kill(process_, SIGSTOP); }
    void goOn() const { ::kill(process_, SIGCONT); }

    // Takes the server away from its clients.
    void kill() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
            if (!name_.empty()) unlink(("/tmp/.X" + name_.substr(1) + "-lock").c_str());
        }
        process_ = 0;
    }

  private:
    static constexpr int kReportTo = 3;
    static constexpr int kPatience = 20000;  // milliseconds

    void launch(int reportTo) {
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&files, reportTo, kReportTo);
        const char* const arguments[] = {"Xvfb",        "-displayfd", "3",   "-screen",  "0",
                                         "1024x768x24", "-nolisten",  "tcp", "-noreset", nullptr};
        if (posix_spawnp(&process_, "Xvfb", &files, nullptr, const_cast<char* const*>(arguments), environ) !=
            0)
            process_ = 0;
        posix_spawn_file_actions_destroy(&files);
    }

    // Up to the line's end; "" when the server ends or says nothing.
    static std::string readLine(int from) {
        std::string line;
        pollfd waiting{from, POLLIN, 0};
        char c = 0;
        while (poll(&waiting, 1, kPatience) == 1 && read(from, &c, 1) == 1) {
            if (c == '\n') return line;
            line += c;
        }
        return "";
    }

    pid_t process_ = 0;
    std::string name_;
};

}  // namespace test

#endif
