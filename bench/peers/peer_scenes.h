// What the peers of the fits for measuring share: their scenes, and what they are told.
#ifndef BENCH_PEERS_PEER_SCENES_H
#define BENCH_PEERS_PEER_SCENES_H

#include "docs/tools/measuring_accuracy.h"

namespace accuracy_peers {

using namespace measuring_accuracy;
using Points = std::vector<cv::Point2d>;

inline constexpr int kPoints = 200;
inline constexpr double kNoise = 0.3;
// A result further off than this many bounds is another shape.
inline constexpr double kAstray = 100;

inline std::vector<cv::Point2f> floats(const Points& points) { return {points.begin(), points.end()}; }

inline orx::TFitOptions tukey() {
    orx::TFitOptions options;
    options.loss = orx::flTukey;
    return options;
}

inline orx::TConsensusOptions tolerating() {
    orx::TConsensusOptions options;
    options.tolerance = 3.5 * kNoise;
    return options;
}

template <class Shape>
struct Peer {
    const char* name;
    Shape (*fit)(const Points& points);
};

// A column: its scenes, and the number that seeds them and names them in the files.
template <class Kind>
struct Column {
    const char* name;
    int row;
    Kind kind;
};

}  // namespace accuracy_peers

#endif
