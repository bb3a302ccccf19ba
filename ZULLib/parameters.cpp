// The parameter store: one ordered map for each type of value.
#include "ZULLib/zullib.h"

#include <map>
#include <string>
#include <utility>

#include "ZULLib/sync_internal.h"

namespace zul {
namespace {

template <typename Value>
class ParameterMap {
  public:
    void set(std::string name, Value value) {
        const LockGuard lock(mutex_);
        values_.insert_or_assign(std::move(name), std::move(value));
    }

    // The value, or Value() for a parameter that was never set.
    Value get(const std::string& name) const {
        const LockGuard lock(mutex_);
        const auto found = values_.find(name);
        return found == values_.end() ? Value() : found->second;
    }

  private:
    mutable Mutex mutex_;
    std::map<std::string, Value> values_ ZUL_GUARDED_BY(mutex_);
};

// Never destroyed: a thread of a library that outlives main() may still read a parameter.
template <typename Value>
ParameterMap<Value>& parameters() {
    static auto* const map = new ParameterMap<Value>;
    return *map;
}

}  // namespace

void APPaddOrSetParamBool(std::string name, bool value) { parameters<bool>().set(std::move(name), value); }
void APPaddOrSetParamInt(std::string name, int value) { parameters<int>().set(std::move(name), value); }
void APPaddOrSetParamDouble(std::string name, double value) {
    parameters<double>().set(std::move(name), value);
}
void APPaddOrSetParamString(std::string name, std::string value) {
    parameters<std::string>().set(std::move(name), std::move(value));
}

bool APPgetParamBool(std::string name) { return parameters<bool>().get(name); }
int APPgetParamInt(std::string name) { return parameters<int>().get(name); }
double APPgetParamDouble(std::string name) { return parameters<double>().get(name); }
std::string APPgetParamString(std::string name) { return parameters<std::string>().get(name); }

}  // namespace zul
