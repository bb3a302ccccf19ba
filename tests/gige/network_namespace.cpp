#include "tests/gige/network_namespace.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace gige {
namespace {

constexpr const char* kInside = "ORX_TEST_NETWORK_NAMESPACE";

std::string& reason() {
    static std::string text;
    return text;
}

ifreq requestFor(const std::string& name) {
    ifreq request{};
    std::strncpy(request.ifr_name, name.c_str(), IFNAMSIZ - 1);
    return request;
}

bool setAddress(int control, const std::string& name, const std::string& address, unsigned long what) {
    ifreq request = requestFor(name);
    sockaddr_in value{};
    value.sin_family = AF_INET;
    inet_pton(AF_INET, address.c_str(), &value.sin_addr);
    std::memcpy(&request.ifr_addr, &value, sizeof(value));
    return ioctl(control, what, &request) == 0;
}

bool bringUp(int control, const std::string& name) {
    ifreq request = requestFor(name);
    if (ioctl(control, SIOCGIFFLAGS, &request) != 0) return false;
    request.ifr_flags = static_cast<short>(request.ifr_flags | IFF_UP | IFF_RUNNING);
    return ioctl(control, SIOCSIFFLAGS, &request) == 0;
}

bool bringUpAddresses() {
    const int control = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    bool done = control >= 0 && bringUp(control, "lo");
    for (int i = 2; done && i <= 9; ++i) {
        const std::string alias = "lo:" + std::to_string(i);
        done = setAddress(control, alias, "127.0.0." + std::to_string(i), SIOCSIFADDR) &&
               setAddress(control, alias, "255.0.0.0", SIOCSIFNETMASK);
    }
    if (control >= 0) close(control);
    return done;
}

}  // namespace

void enterNetworkNamespace(char** argv) {
    if (std::getenv(kInside) != nullptr) {
        if (!bringUpAddresses()) reason() = "the loopback interface of the private network can't be set up";
        return;
    }
    if (std::system("unshare -Urn true 2>/dev/null") != 0) {
        reason() = "this system permits no private network (unshare -Urn)";
        return;
    }
    setenv(kInside, "1", 1);
    std::string program = "/proc/self/exe";
    char buffer[4096];
    const ssize_t length = readlink(program.c_str(), buffer, sizeof(buffer));
    if (length > 0) program.assign(buffer, static_cast<std::size_t>(length));
    std::string command = "unshare";
    std::string options = "-Urn";
    char* arguments[16] = {command.data(), options.data(), program.data()};
    for (int i = 1; i < 12 && argv[i] != nullptr; ++i) arguments[i + 2] = argv[i];
    execvp("unshare", arguments);
    reason() = "unshare can't be run";
}

const std::string& whyNoNetwork() { return reason(); }

}  // namespace gige
