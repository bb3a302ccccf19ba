#include "orxFunctions/camera/camera_messages_internal.h"

#include "orxFunctions/foundation/host_bridge.h"

namespace orx {
namespace {

constexpr std::array<const char*, static_cast<std::size_t>(CameraMessage::kCount)> kTexts = {
    "未连接到上位机服务器",
    "请检查相机%d 的IP是否设置正确以及相机是否被占用!",
    "检测到主机上连接了不同品牌的相机,请确保使用同一个品牌的相机!",
    "软件设置的相机品牌与主机上相机品牌不一致,请修改设置后重试!",
    "load相机dll失败",
    "相机idx大于相机个数",
    "相机idx小于0",
    "最多支持%d个相机",
    "InitCamera失败,请检查相机是否正常连接到了主机或软件设置的相机品牌与主机上的相机品牌是否一致！",
    "设置相机%d 暂停刷图",
    "设置相机%d 恢复刷图",
    "取到的图像为空，请重连相机",
    "相机%d 的图像回调函数出错: ",
    "线程已经关闭",
    "相机%d 取图失败,请重连该相机,其他相机继续工作",
    "相机%d 取图失败,正在自动重连,其他相机继续工作",
    "相机%d 已恢复取图",
    "相机%d 的状态回调函数出错: ",
};

}  // namespace

void LoadORXdriverLanguageStr() {
    for (std::size_t i = 0; i < kTexts.size(); ++i) {
        // What is there is not written again: other threads may be reading it.
        if (cameraMessages[i].empty()) cameraMessages[i] = zul::toAnsi(kTexts[i]);
    }
}

std::string withNumber(const std::string& text, long long number) {
    const std::size_t place = text.find("%d");
    if (place == std::string::npos) return text;
    return text.substr(0, place) + std::to_string(number) + text.substr(place + 2);
}

void showError(CameraMessage message) { zul::APPshowMessage(textOf(message), kErrorColor); }

void showError(CameraMessage message, long long number) {
    zul::APPshowMessage(withNumber(textOf(message), number), kErrorColor);
}

void showPlain(const std::string& text) { zul::APPshowMessage(text, zul::G_appshowMsg_defaultColor); }

}  // namespace orx
