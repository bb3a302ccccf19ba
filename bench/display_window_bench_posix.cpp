// The same into a window on an X server, pictures sent as fast as it takes them.
#include <benchmark/benchmark.h>
#include <xcb/xcb.h>

#include "bench/picture_show.h"
#include "tests/support/private_display_posix.h"

namespace {

void showImageInWindow(benchmark::State& state) {
    const test::PrivateDisplay display;
    if (!display.isRunning()) return state.SkipWithError("Xvfb can't be started");
    // The root window is a host that is always there.
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    {
        TPictureBox box;
        box.setHandle(reinterpret_cast<void*>(std::uintptr_t{root}));
        bench::showAgain(state, box, bench::noiseImage(state.range(0), CV_8UC3));
    }
    xcb_disconnect(connection);
}
BENCHMARK(showImageInWindow)->Arg(1280)->Arg(2592)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
