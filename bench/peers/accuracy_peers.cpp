// Prints the table of docs/accuracy-measuring.md that sets the fits for measuring beside those of other
// libraries, on equal scenes. What was not found when this was built is left out. Python's scikit-image takes
// part by files:
//     accuracy_peers --points points.txt
//     python3 bench/peers/accuracy_skimage.py points.txt > estimates.txt
//     accuracy_peers --estimates estimates.txt
// Options: --scenes N, --threads N.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <opencv2/imgproc.hpp>

#include "bench/peers/ellipse_peers.h"
#include "docs/tools/tool_support.h"
#ifdef ORX_PEERS_CERES
#include "bench/peers/ceres_circle.h"
#endif
#ifdef ORX_PEERS_PCL
#include <pcl/sample_consensus/ransac.h>
#include <pcl/sample_consensus/sac_model_circle.h>
#include <pcl/sample_consensus/sac_model_line.h>
#endif

namespace {

using namespace accuracy_peers;

struct Settings {
    int scenes = 1000;
    int threads = tool_support::allThreads();
    std::string points;
    std::string estimates;
};

orx::TMeasuredCircle circleOf(cv::Point2d center, double radius) {
    orx::TMeasuredCircle circle;
    circle.status = std::isfinite(center.x + center.y + radius) ? orx::fsOk : orx::fsNotConverged;
    circle.center = center;
    circle.radius = radius;
    return circle;
}

orx::TMeasuredLine lineOf(cv::Point2d point, cv::Point2d direction) {
    orx::TMeasuredLine line;
    const double length = cv::norm(direction);
    line.status = length > 0 && std::isfinite(length) ? orx::fsOk : orx::fsNotConverged;
    line.point = point;
    line.direction = direction / length;
    line.angle = std::atan2(direction.y, direction.x) * 180 / geometric_scenes::kPi;
    return line;
}

orx::TMeasuredLine lineByOpenCv(const Points& points, cv::DistanceTypes loss) {
    cv::Vec4f line;
    cv::fitLine(floats(points), line, loss, 0, 1e-6, 1e-6);
    return lineOf({line[2], line[3]}, {line[0], line[1]});
}

#ifdef ORX_PEERS_CERES
// Huber's loss that bends at 1.345 times the true noise, from this library's least squares.
orx::TMeasuredCircle circleByCeres(const Points& points) {
    const orx::TMeasuredCircle start = orx::fitCircleGeometric(points);
    double circle[3] = {start.center.x, start.center.y, std::max(1.0, start.radius)};
    ceres::Solver::Options options;
    options.max_num_iterations = 200;
    options.function_tolerance = 1e-14;
    ceres_circle::fit(points, 1.345 * kNoise, circle, options);
    return circleOf({circle[0], circle[1]}, circle[2]);
}
#endif

#ifdef ORX_PEERS_PCL
// The search, its inliers, and the model's own refinement on them.
template <class Model>
bool searchByPcl(const Points& points, bool circle, Eigen::VectorXf& refined) {
    typename pcl::PointCloud<pcl::PointXYZ>::Ptr cloud(new pcl::PointCloud<pcl::PointXYZ>);
    for (const cv::Point2d& p : points) {
        cloud->push_back({static_cast<float>(p.x), static_cast<float>(p.y), 0.0F});
    }
    const typename Model::Ptr model(new Model(cloud));
    if (circle) model->setRadiusLimits(5, 1e5);
    pcl::RandomSampleConsensus<pcl::PointXYZ> search(model, 3.5 * kNoise);
    search.setMaxIterations(20000);
    search.setProbability(0.999);
    if (!search.computeModel()) return false;
    Eigen::VectorXf found;
    pcl::Indices inliers;
    search.getModelCoefficients(found);
    search.getInliers(inliers);
    model->optimizeModelCoefficients(inliers, found, refined);
    return true;
}

orx::TMeasuredCircle circleByPcl(const Points& points) {
    Eigen::VectorXf c;
    if (!searchByPcl<pcl::SampleConsensusModelCircle2D<pcl::PointXYZ>>(points, true, c)) return {};
    return circleOf({c[0], c[1]}, c[2]);
}

orx::TMeasuredLine lineByPcl(const Points& points) {
    Eigen::VectorXf c;
    if (!searchByPcl<pcl::SampleConsensusModelLine<pcl::PointXYZ>>(points, false, c)) return {};
    return lineOf({c[0], c[1]}, {c[3], c[4]});
}
#endif

const std::vector<Peer<orx::TMeasuredCircle>> kCirclePeers = {
    {"this library, least squares", [](const Points& p) { return orx::fitCircleGeometric(p); }},
    {"this library, Tukey", [](const Points& p) { return orx::fitCircleGeometric(p, tukey()); }},
    {"this library, consensus", [](const Points& p) { return orx::findCircle(p, tolerating()); }},
    {"OpenCV, minEnclosingCircle",
     [](const Points& p) {
         cv::Point2f center;
         float radius = 0;
         cv::minEnclosingCircle(floats(p), center, radius);
         return circleOf(center, static_cast<double>(radius));
     }},
#ifdef ORX_PEERS_CERES
    {"Ceres, Huber (true noise given)", circleByCeres},
#endif
#ifdef ORX_PEERS_PCL
    {"PCL, RANSAC and refinement", circleByPcl},
#endif
};

const std::vector<Peer<orx::TMeasuredLine>> kLinePeers = {
    {"this library, least squares", [](const Points& p) { return orx::fitLineGeometric(p); }},
    {"this library, Tukey", [](const Points& p) { return orx::fitLineGeometric(p, tukey()); }},
    {"this library, consensus", [](const Points& p) { return orx::findLine(p, tolerating()); }},
    {"OpenCV, fitLine, L2", [](const Points& p) { return lineByOpenCv(p, cv::DIST_L2); }},
    {"OpenCV, fitLine, Huber", [](const Points& p) { return lineByOpenCv(p, cv::DIST_HUBER); }},
#ifdef ORX_PEERS_PCL
    {"PCL, RANSAC and refinement", lineByPcl},
#endif
};

const std::vector<Column<CircleTask>> kCircles = {
    {"full", 1, circleTask(360, kPoints, kNoise)},
    {"arc 90°", 2, circleTask(90, kPoints, kNoise)},
    {"arc 30°", 3, circleTask(30, kPoints, kNoise)},
    {"full, 40 % outliers", 4, circleTask(360, kPoints, kNoise, 0.4)},
    {"arc 90°, 40 % outliers", 5, circleTask(90, kPoints, kNoise, 0.4)},
};
const std::vector<Column<LineTask>> kLines = {
    {"line", 11, lineTask(kPoints, kNoise)},
    {"line, 40 % outliers", 12, lineTask(kPoints, kNoise, 0.4)},
};

// Estimates of a peer from a file: by row and scene.
using Estimates = std::map<std::string, std::map<std::pair<int, int>, std::vector<double>>>;

Estimates readEstimates(const std::string& path) {
    Estimates estimates;
    std::ifstream file(path);
    std::string line;
    // name; row scene value...
    while (std::getline(file, line)) {
        const std::size_t semicolon = line.find(';');
        if (semicolon == std::string::npos) continue;
        const char* at = line.c_str() + semicolon + 1;
        char* end = nullptr;
        std::vector<double> values;
        for (double v = std::strtod(at, &end); end != at; v = std::strtod(at, &end)) {
            values.push_back(v);
            at = end;
        }
        if (values.size() < 2) continue;
        const auto key = std::make_pair(static_cast<int>(values[0]), static_cast<int>(values[1]));
        estimates[line.substr(0, semicolon)][key].assign(values.begin() + 2, values.end());
    }
    return estimates;
}

orx::TMeasuredCircle shapeOf(const CircleTask& /*kind*/, const std::vector<double>& v) {
    return v.size() < 3 ? orx::TMeasuredCircle() : circleOf({v[0], v[1]}, v[2]);
}

orx::TMeasuredLine shapeOf(const LineTask& /*kind*/, const std::vector<double>& v) {
    return v.size() < 4 ? orx::TMeasuredLine() : lineOf({v[0], v[1]}, {v[2], v[3]});
}

orx::TMeasuredEllipse shapeOf(const EllipseTask& /*kind*/, const std::vector<double>& v) {
    if (v.size() < 5) return {};
    return ellipseOf({v[0], v[1]}, v[2], v[3], v[4] * 180 / geometric_scenes::kPi);
}

void printCell(const Result& result) {
    const int without = result.lost + result.astray;
    if (result.parameters.empty()) {
        std::printf(" none |");
        return;
    }
    std::printf(" %.3f, %.2f", result.spread(), result.bias());
    if (without > 0) std::printf(" (%.1f %% lost)", 100.0 * without / result.scenes);
    std::printf(" |");
    std::fflush(stdout);
}

// fit(scene, points) for the scenes of one column.
template <class Kind, class Fit>
void cell(const Settings& settings, const Column<Kind>& column, Fit fit) {
    const auto trials = tool_support::inParallel(settings.scenes, settings.threads, [&](int scene) {
        Random random(seedOf(column.row, scene));
        const Task task = column.kind.make(random);
        return Trial{column.kind.judge(fit(scene, task.points)), task.efficient};
    });
    printCell(resultOf(trials, column.kind.boundDeviation(), column.kind.parameters(), kAstray));
}

template <class Kind, class Shape>
void table(const Settings& settings, const char* title, const std::vector<Column<Kind>>& columns,
           const std::vector<Peer<Shape>>& peers, const Estimates& estimates) {
    std::printf("\n| %s |", title);
    for (const auto& column : columns) std::printf(" %s |", column.name);
    std::printf("\n|---|");
    for (std::size_t i = 0; i < columns.size(); ++i) std::printf("---|");
    std::printf("\n");
    for (const auto& peer : peers) {
        std::fprintf(stderr, "%s\n", peer.name);
        std::printf("| %s |", peer.name);
        for (const auto& column : columns) {
            cell(settings, column, [&](int, const Points& points) { return peer.fit(points); });
        }
        std::printf("\n");
    }
    for (const auto& [name, byScene] : estimates) {
        const auto knows = [&values = byScene](const Column<Kind>& column) {
            return values.lower_bound({column.row, 0}) != values.lower_bound({column.row + 1, 0});
        };
        if (std::none_of(columns.begin(), columns.end(), knows)) continue;
        std::printf("| %s |", name.c_str());
        for (const auto& column : columns) {
            if (!knows(column)) {
                std::printf(" |");
                continue;
            }
            cell(settings, column, [&, &values = byScene](int scene, const Points&) {
                const auto found = values.find({column.row, scene});
                return shapeOf(column.kind, found == values.end() ? std::vector<double>() : found->second);
            });
        }
        std::printf("\n");
    }
}

// A line for each scene: kind, row, scene, x and y of each point.
template <class Kind>
void writePoints(std::FILE* file, const char* name, const Settings& settings,
                 const std::vector<Column<Kind>>& columns) {
    for (const auto& column : columns) {
        for (int scene = 0; scene < settings.scenes; ++scene) {
            Random random(seedOf(column.row, scene));
            std::fprintf(file, "%s %d %d", name, column.row, scene);
            for (const cv::Point2d& p : column.kind.make(random).points) {
                std::fprintf(file, " %.17g %.17g", p.x, p.y);
            }
            std::fprintf(file, "\n");
        }
    }
}

void printIntroduction(const Settings& settings) {
    std::printf(
        "\n## Beside other libraries\n\n"
        "Made by `accuracy_peers` (bench/peers): %d scenes a cell, %d points, noise %g; `spread / bound, "
        "bias /\n"
        "spread` of the worst parameter, as above. Lost are scenes without a result or with one that is off "
        "by\n"
        "more than 100 bounds; they count in neither number. Consensus searches are told a tolerance of 3.5 "
        "times\n"
        "the noise and go on to a confidence of 0.999. scikit-image takes part through "
        "`accuracy_skimage.py`.\n",
        settings.scenes, kPoints, kNoise);
}

int usage() {
    std::fprintf(stderr,
                 "usage: accuracy_peers [--scenes N] [--threads N] [--points FILE | --estimates FILE]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    Settings settings;
    tool_support::Options options;
    options.add("--scenes", settings.scenes);
    options.add("--threads", settings.threads);
    options.add("--points", settings.points);
    options.add("--estimates", settings.estimates);
    if (!options.read(argc, argv)) return usage();
    if (settings.scenes < 10 || settings.threads < 1) return usage();
    if (!settings.points.empty()) {
        std::FILE* file = std::fopen(settings.points.c_str(), "w");
        if (file == nullptr) return usage();
        writePoints(file, "circle", settings, kCircles);
        writePoints(file, "line", settings, kLines);
        writePoints(file, "ellipse", settings, kEllipses);
        return std::fclose(file) == 0 ? 0 : 1;
    }
    const Estimates estimates = settings.estimates.empty() ? Estimates() : readEstimates(settings.estimates);
    printIntroduction(settings);
    table(settings, "circles", kCircles, kCirclePeers, estimates);
    table(settings, "lines", kLines, kLinePeers, estimates);
    table(settings, "ellipses", kEllipses, kEllipsePeers, estimates);
#ifndef ORX_PEERS_PCL
    std::printf(
        "\nPCL was not at hand when this table was made; where it is, `accuracy_peers` has its search.\n");
#endif
    return 0;
}
