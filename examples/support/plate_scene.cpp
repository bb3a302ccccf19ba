#include "support/plate_scene.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "support/angles.h"
#include "support/random_source_internal.h"

namespace scenes {
namespace {

constexpr double kUsedShare = 0.25;  // of a tolerance, by a standard deviation of good parts
// Of the edges and centres that two of make a distance.
constexpr double kPlaceDeviation = kUsedShare * 0.06 / 1.4142135623730951;
constexpr double kDiameterDeviation = kUsedShare * 0.04;

const cv::Point2d kTargetMiddle((kPlateTargetColumns - 1) * kPlateTargetPitch / 2,
                                (kPlateTargetRows - 1) * kPlateTargetPitch / 2);

bool isGood(const Plate& plate) {
    const std::vector<PlateValue> drawn = plateValues(Plate());
    const std::vector<PlateValue> made = plateValues(plate);
    for (std::size_t i = 0; i < made.size(); ++i) {
        if (std::abs(made[i].value - drawn[i].value) > made[i].tolerance) return false;
    }
    return true;
}

Plate varied(RandomSource& random) {
    Plate plate;
    const auto vary = [&](double& length, double deviation) { length += deviation * random.normal(); };
    for (double* edge : {&plate.left, &plate.right, &plate.top, &plate.bottom}) vary(*edge, kPlaceDeviation);
    for (PlateHole& hole : plate.holes) {
        vary(hole.center.x, kPlaceDeviation);
        vary(hole.center.y, kPlaceDeviation);
        vary(hole.diameter, kDiameterDeviation);
    }
    for (cv::Point2d& end : plate.slotEnds) vary(end.x, kPlaceDeviation);
    vary(plate.slotWidth, kDiameterDeviation);
    return plate;
}

Plate goodPlate(RandomSource& random) {
    for (;;) {
        const Plate plate = varied(random);
        if (isGood(plate)) return plate;
    }
}

// With the middle of the plate there, so that all of it is seen.
PlatePose posed(cv::Point2d middle, double angle) {
    const Plate plate;
    const cv::Point2d own((plate.left + plate.right) / 2, (plate.top + plate.bottom) / 2);
    const double c = std::cos(angle * kDegree);
    const double s = std::sin(angle * kDegree);
    return {middle - cv::Point2d(c * own.x - s * own.y, s * own.x + c * own.y), angle};
}

// `kind` counts on from fault to fault, so that a lot has some of each.
std::string spoil(Plate& plate, int kind, RandomSource& random) {
    const double share = random.uniform(1.05, 3.0);
    const std::size_t which = static_cast<std::size_t>(random.uniform(0, 4)) % 4;
    const std::string hole = "hole " + std::to_string(which + 1);
    switch (kind % 5) {
        case 0:
            plate.holes[which].diameter = Plate().holes[which].diameter + 0.04 * share;
            return hole + " too wide";
        case 1: {
            // Away from those that it is dimensioned from.
            const bool isLeft = which % 2 == 0;
            plate.holes[which].center = Plate().holes[which].center;
            plate.holes[which].center.x += (isLeft ? -0.06 : 0.06) * share;
            plate.holes[which].center.y += (which < 2 ? -0.06 : 0.06) * share;
            return hole + " off its place";
        }
        case 2:
            plate.slotEnds = Plate().slotEnds;
            plate.slotEnds[1].x += 0.06 * share;
            return "slot too long";
        case 3:
            plate.slotWidth = Plate().slotWidth - 0.04 * share;
            return "slot too narrow";
        default:
            plate.right = plate.left + 72 - 0.06 * share;
            return "plate too short";
    }
}

// How far outside of a circle or of a slot's end.
double outside(cv::Point2d p, cv::Point2d center, double diameter) {
    return std::hypot(p.x - center.x, p.y - center.y) - diameter / 2;
}

double outsideSlot(cv::Point2d p, const Plate& plate) {
    const auto& [first, second] = plate.slotEnds;
    const double x = std::clamp(p.x, std::min(first.x, second.x), std::max(first.x, second.x));
    return outside(p, {x, first.y}, plate.slotWidth);
}

double outsidePlate(cv::Point2d p, const Plate& plate) {
    double distance = std::max({plate.left - p.x, p.x - plate.right, plate.top - p.y, p.y - plate.bottom});
    for (const PlateHole& hole : plate.holes)
        distance = std::max(distance, -outside(p, hole.center, hole.diameter));
    return std::max(distance, -outsideSlot(p, plate));
}

double apart(cv::Point2d a, cv::Point2d b) { return std::hypot(b.x - a.x, b.y - a.y); }

}  // namespace

std::vector<PlateValue> plateValues(const Plate& plate) {
    const auto& holes = plate.holes;
    return {{"hole 1", 0.04, holes[0].diameter},
            {"hole 2", 0.04, holes[1].diameter},
            {"hole 3", 0.04, holes[2].diameter},
            {"hole 4", 0.04, holes[3].diameter},
            {"hole 1 to hole 2", 0.06, apart(holes[0].center, holes[1].center)},
            {"hole 1 to hole 3", 0.06, apart(holes[0].center, holes[2].center)},
            {"hole 2 to hole 4", 0.06, apart(holes[1].center, holes[3].center)},
            {"hole 4 to right edge", 0.06, plate.right - holes[3].center.x},
            {"slot width", 0.04, plate.slotWidth},
            {"slot centres", 0.06, apart(plate.slotEnds[0], plate.slotEnds[1])},
            {"plate length", 0.06, plate.right - plate.left},
            {"plate height", 0.06, plate.bottom - plate.top}};
}

std::vector<PlatePart> plateLot(const PlateLotSettings& settings) {
    const int count = std::max(0, settings.count);
    const int bad = std::clamp(static_cast<int>(std::lround(settings.badShare * count)), 0, count);
    RandomSource random(settings.seed);
    std::vector<int> order(static_cast<std::size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    // The first `bad` of them, by the steps of Fisher and Yates' shuffle that choose them.
    for (int i = 0; i < bad; ++i) {
        const int other = std::min(count - 1, static_cast<int>(random.uniform(i, count)));
        std::swap(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(other)]);
    }
    std::vector<PlatePart> lot(static_cast<std::size_t>(count));
    for (PlatePart& part : lot) {
        part.plate = goodPlate(random);
        part.pose = posed(kTargetMiddle + cv::Point2d(random.uniform(-9, 9), random.uniform(-3, 3)),
                          random.uniform(-180, 180));
    }
    for (int i = 0; i < bad; ++i) {
        PlatePart& part = lot[static_cast<std::size_t>(order[static_cast<std::size_t>(i)])];
        const Plate good = part.plate;
        while (isGood(part.plate)) {  // what is off may make up for what another one is
            part.plate = good;
            part.fault = spoil(part.plate, i, random);
        }
    }
    return lot;
}

PlaneShape plateShape(const Plate& plate, const PlatePose& pose) {
    const double c = std::cos(pose.angle * kDegree);
    const double s = std::sin(pose.angle * kDegree);
    return [=](cv::Point2d p) {
        const cv::Point2d d = p - pose.origin;
        return outsidePlate({c * d.x + s * d.y, c * d.y - s * d.x}, plate);
    };
}

PlaneCamera plateCamera() { return plateTargetCameras().front(); }

PlatePose plateToTeach() {
    const PlaneCamera camera = plateCamera();
    const cv::Point2d origin(kPlateRegion.x + kPlateRegion.width / 2.0,
                             kPlateRegion.y + kPlateRegion.height / 2.0);
    const cv::Point2d along = camera.place(origin + cv::Point2d(1, 0)) - camera.place(origin);
    return {camera.place(origin), std::atan2(along.y, along.x) / kDegree};
}

std::vector<PlaneCamera> plateTargetCameras() {
    PlaneCamera camera;
    camera.size = {640, 480};
    camera.fx = 1500;
    camera.fy = 1498;
    camera.cx = 322;
    camera.cy = 237;
    camera.k1 = -0.25;
    camera.k2 = 0.1;
    camera.p1 = 4e-4;
    camera.p2 = -3e-4;
    std::vector<PlaneCamera> cameras{tilted(camera, kTargetMiddle, 300, 10, 30, 4)};
    for (int i = 0; i < 9; ++i) {
        // Towards the corners, too.
        const cv::Point2d shift(12 * std::cos(0.7 * i), 9 * std::sin(0.7 * i));
        cameras.push_back(tilted(camera, kTargetMiddle + shift, 360 + 3 * i, 18 + 2 * i, 40 * i, 4 * i - 15));
    }
    return cameras;
}

}  // namespace scenes
