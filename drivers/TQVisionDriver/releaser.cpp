#include "drivers/TQVisionDriver/releaser.h"

#include <atomic>
#include <list>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include "ZULLib/sync_internal.h"

namespace vision {
namespace {

struct Release {
    std::thread thread;
    std::atomic<bool> done{false};
};

class Releases {
  public:
    void begin(const std::function<void()>& work) {
        joinFinished();
        if (!beginThread(work)) work();  // not under the lock: it may take long, and come back here
    }

    void finish() {
        for (List leaving = take(false); !leaving.empty(); leaving = take(false)) join(leaving);
    }

  private:
    using List = std::list<std::unique_ptr<Release>>;

    // False when there is no thread to be had.
    bool beginThread(const std::function<void()>& work) {
        auto release = std::make_unique<Release>();
        Release* const begun = release.get();
        const zul::LockGuard lock(mutex_);
        try {
            begun->thread = std::thread([begun, work]() {
                work();
                begun->done = true;
            });
        } catch (const std::system_error&) {
            return false;
        }
        releases_.push_back(std::move(release));
        return true;
    }

    void joinFinished() {
        List leaving = take(true);
        join(leaving);
    }

    List take(bool finishedOnly) {
        List taken;
        const zul::LockGuard lock(mutex_);
        for (auto at = releases_.begin(); at != releases_.end();) {
            const auto next = std::next(at);
            if (!finishedOnly || (*at)->done) taken.splice(taken.end(), releases_, at);
            at = next;
        }
        return taken;
    }

    static void join(List& releases) {
        for (const std::unique_ptr<Release>& release : releases) release->thread.join();
    }

    zul::Mutex mutex_;
    List releases_ ZUL_GUARDED_BY(mutex_);
};

// Never destroyed: a thread may still run when the process ends.
Releases& releases() {
    static auto* const only = new Releases;
    return *only;
}

}  // namespace

void releaseLater(const std::function<void()>& work) { releases().begin(work); }

void finishReleases() { releases().finish(); }

}  // namespace vision
