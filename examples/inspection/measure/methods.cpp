#include "inspection/measure/methods.h"

namespace inspection {
namespace {

struct NamedMethod {
    const char* name;
    orx::TThresholdMethod method;
};

constexpr NamedMethod kMethods[] = {
    {"otsu", orx::tmOtsu},
    {"triangle", orx::tmTriangle},
    {"minimum", orx::tmMinimum},
    {"intermodes", orx::tmIntermodes},
    {"huang", orx::tmHuang},
    {"iterative", orx::tmIterative},
    {"max-entropy", orx::tmMaxEntropy},
    {"isodata", orx::tmIsoData},
    {"moments", orx::tmMoments},
    {"min-error", orx::tmMinError},
    {"shanbhag", orx::tmShanbhag},
};

}  // namespace

std::vector<std::string> methodNames() {
    std::vector<std::string> names;
    for (const NamedMethod& entry : kMethods) names.emplace_back(entry.name);
    return names;
}

orx::TThresholdMethod methodByName(const std::string& name) {
    for (const NamedMethod& entry : kMethods)
        if (name == entry.name) return entry.method;
    return orx::tmOtsu;
}

}  // namespace inspection
