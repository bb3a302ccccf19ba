// A stranger's program: finds a grey level and the circle through three points, and says which version it
// met.
#include <cstdio>

#include "orxFunctions/orxfunctions.h"

int main() {
    orx::APPaddOrSetParamInt("level", 50);
    cv::Point3d circle;
    if (!orx::threePoints2circle2({140, 80}, {100, 120}, {60, 80}, circle)) return 1;
    std::printf("orxFunctions %d.%d.%d: level %d, circle %.1f %.1f %.1f\n", ORX_VERSION_MAJOR,
                ORX_VERSION_MINOR, ORX_VERSION_PATCH, orx::APPgetParamInt("level"), circle.x, circle.y,
                circle.z);
    return 0;
}
