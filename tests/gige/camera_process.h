// A software camera as a program of its own.
#ifndef ORX_TESTS_GIGE_CAMERA_PROCESS_H
#define ORX_TESTS_GIGE_CAMERA_PROCESS_H

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace gige {

struct CameraOptions {
    std::string address = "127.0.0.2";
    std::string serial = "S1";
    std::string vendor = "Hikrobot";
    int width = 64;
    int height = 48;
    std::uint32_t format = 0x01080001;
    double rate = 50.0;
    double loss = 0.0;
    bool isEven = false;  // each picture is of one level: its number modulo 251
    // OLD=>NEW, each: the first OLD in the camera's description of itself is NEW.
    std::vector<std::string> changes;
};

// A program that is a camera until it is killed or this object goes.
class SoftwareCamera {
  public:
    explicit SoftwareCamera(const CameraOptions& options);
    ~SoftwareCamera() { kill(); }
    SoftwareCamera(const SoftwareCamera&) = delete;
    SoftwareCamera& operator=(const SoftwareCamera&) = delete;

    // Why it does not run; "" while it does.
    const std::string& problem() const { return problem_; }

    void pause() const;
    void resume() const;
    void kill();
    void start();

  private:
    const CameraOptions options_;
    std::string problem_;
    pid_t process_ = 0;
    int input_ = -1;  // the camera's; it ends when this is closed
};

}  // namespace gige

#endif
