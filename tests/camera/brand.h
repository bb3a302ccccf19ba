// What the tests of camera brands share.
#ifndef ORX_TESTS_CAMERA_BRAND_H
#define ORX_TESTS_CAMERA_BRAND_H

#include <string>
#include <utility>

#include "tests/camera/host.h"

namespace test {

inline const char* const kWrongBrand = "软件设置的相机品牌与主机上相机品牌不一致,请修改设置后重试!";
inline const char* const kMixedBrands = "检测到主机上连接了不同品牌的相机,请确保使用同一个品牌的相机!";

class CameraBrand : public CameraTest {
  protected:
    // The answer, and the text that it left.
    std::pair<bool, std::string> check(int type) {
        std::string text;
        const bool answer = cams_.CheckCameraDriverValid(type, &text);
        EXPECT_EQ(cams_.CheckCameraDriverValid(type, nullptr), answer);
        return {answer, zul::toUtf8(text)};
    }
};

}  // namespace test

#endif
