// What the programs that make tables share: their options, and work spread over threads.
#ifndef ORX_DOCS_TOOLS_TOOL_SUPPORT_H
#define ORX_DOCS_TOOLS_TOOL_SUPPORT_H

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tool_support {

// Options of the form --name VALUE.
class Options {
  public:
    void add(const char* name, std::string& target) {
        known_.push_back({name, [&target](const char* value) { target = value; }});
    }
    void add(const char* name, int& target) {
        known_.push_back({name, [&target](const char* value) { target = std::atoi(value); }});
    }
    void add(const char* name, bool& target) {
        known_.push_back({name, [&target](const char* value) { target = value[0] == '1'; }});
    }

    // False for an option that is not known, or that has no value.
    bool read(int argc, char** argv) const {
        for (int i = 1; i < argc; i += 2) {
            if (i + 1 >= argc || !set(argv[i], argv[i + 1])) return false;
        }
        return true;
    }

  private:
    struct Known {
        std::string name;
        std::function<void(const char*)> set;
    };

    bool set(const std::string& name, const char* value) const {
        for (const Known& option : known_) {
            if (option.name != name) continue;
            option.set(value);
            return true;
        }
        return false;
    }

    std::vector<Known> known_;
};

inline int allThreads() { return static_cast<int>(std::max(1U, std::thread::hardware_concurrency())); }

// one(i) for i = 0, 1, ... count - 1, in the order of i: `threads` of them share the work, which changes no
// number as long as one(i) depends on i alone.
template <class One>
auto inParallel(int count, int threads, One one) {
    std::vector<decltype(one(0))> results(static_cast<std::size_t>(count));
    std::atomic<int> next{0};
    const auto work = [&] {
        for (int i = next++; i < count; i = next++) results[static_cast<std::size_t>(i)] = one(i);
    };
    std::vector<std::thread> others;
    for (int i = 1; i < threads; ++i) others.emplace_back(work);
    work();
    for (std::thread& thread : others) thread.join();
    return results;
}

}  // namespace tool_support

#endif
