#include "drivers/devices/brands.h"

#include <algorithm>
#include <array>

#include "drivers/vision_driver.h"

namespace vision {
namespace {

struct BrandWord {
    const char* word;  // lower case
    int brand;
};

constexpr std::array kBrandWords = {
    BrandWord{"basler", VD_TYPE_BASLER},
    BrandWord{"daheng", VD_TYPE_DAHENG},
    BrandWord{"dahua", VD_TYPE_DAHUA},
    BrandWord{"hikrobot", VD_TYPE_HIKVISION},
    BrandWord{"hikvision", VD_TYPE_HIKVISION},
    BrandWord{"huaray", VD_TYPE_DAHUA},
    BrandWord{"microvision", VD_TYPE_MICROVISION},
    BrandWord{"the imaging source", VD_TYPE_IMAGING_SOURCE},
};

}  // namespace

int brandOf(const std::string& vendor) {
    std::string name = vendor;
    for (char& c : name) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    const auto* const found =
        std::find_if(kBrandWords.begin(), kBrandWords.end(),
                     [&](const BrandWord& brand) { return name.find(brand.word) != std::string::npos; });
    return found == kBrandWords.end() ? static_cast<int>(VD_TYPE_ANY) : found->brand;
}

bool isBrand(int type) {
    return std::any_of(kBrandWords.begin(), kBrandWords.end(),
                       [type](const BrandWord& brand) { return brand.brand == type; });
}

int commonBrand(const std::vector<std::string>& vendors) {
    if (vendors.empty()) return VD_TYPE_NONE;
    const int first = brandOf(vendors.front());
    const bool same = std::all_of(vendors.begin(), vendors.end(),
                                  [first](const std::string& vendor) { return brandOf(vendor) == first; });
    return same ? first : static_cast<int>(VD_TYPE_MIXED);
}

}  // namespace vision
