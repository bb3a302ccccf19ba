#include "inspection/analyse/analyses_sections.h"

#include "inspection/analyse/analyses_pictures.h"
#include "inspection/analyse/closeup_plot.h"
#include "inspection/analyse/profile_plot.h"
#include "inspection/parts/part_sections.h"
#include "inspection/report/table.h"
#include "support/angles.h"

namespace inspection {
namespace {

using scenes::kDegree;

using Rows = std::vector<std::vector<std::string>>;

void addPieces(Rows& rows, const SplitContour& contour) {
    const std::string number = std::to_string(contour.feature + 1);
    for (const StraightPiece& line : contour.lines)
        rows.push_back({number, "line", fixedText(line.from.x, 2), fixedText(line.from.y, 2),
                        fixedText(line.to.x, 2), fixedText(line.to.y, 2), "", fixedText(line.angle(), 1), "",
                        fixedText(line.length(), 1), fixedText(line.deviation, 2)});
    for (const ArcPiece& arc : contour.arcs) {
        const cv::Point2d center = arc.circle.center;
        const double turn = arc.endAngle - arc.startAngle;
        rows.push_back({number, "arc", fixedText(center.x, 2), fixedText(center.y, 2), "", "",
                        fixedText(arc.circle.radius, 2), fixedText(arc.startAngle, 1),
                        fixedText(arc.endAngle, 1), fixedText(arc.circle.radius * turn * kDegree, 1),
                        fixedText(arc.deviation, 2)});
    }
}

Section contourSection(const cv::Mat& grey, const std::vector<SplitContour>& contours) {
    Section section;
    section.title = "Lines and arcs";
    section.rows.push_back(
        {"#", "piece", "x", "y", "to x", "to y", "radius", "angle", "to angle", "length", "deviation"});
    std::size_t lines = 0;
    std::size_t arcs = 0;
    for (const SplitContour& contour : contours) {
        addPieces(section.rows, contour);
        lines += contour.lines.size();
        arcs += contour.arcs.size();
    }
    section.note = std::to_string(lines) + " lines and " + std::to_string(arcs) + " arcs in " +
                   std::to_string(contours.size()) +
                   " contours, through the pixels' centres; x and y of an arc are its centre's";
    section.suffix = "-segments";
    section.picture = drawPieces(grey, contours);
    return section;
}

Section edgeSection(const cv::Mat& grey, const EdgeChains& edges) {
    Section section;
    section.title = "Sub-pixel edges";
    section.rows = {
        {"chains", "points", "length", "mean contrast", "median deviation"},
        {std::to_string(edges.chains.size()), std::to_string(edges.pointCount), fixedText(edges.length, 0),
         fixedText(edges.meanContrast, 1), fixedText(edges.medianDeviation, 3)}};
    section.suffix = "-edges";
    section.picture = drawEdges(grey, edges);
    if (!edges.crop.empty())
        section.figures.push_back(
            {closeupSvg(grey, edges), "Magnified: " + std::to_string(edges.crop.width) + " x " +
                                          std::to_string(edges.crop.height) + " pixels from (" +
                                          std::to_string(edges.crop.x) + ", " + std::to_string(edges.crop.y) +
                                          ") on, around the middle of the longest edge. Each square is a "
                                          "pixel, each dot an edge point "
                                          "between pixels."});
    return section;
}

ProfilePlot boxPlot(const BoxCaliper& caliper) {
    ProfilePlot plot;
    plot.label = "Grey profile along the caliper";
    for (std::size_t i = 0; i < caliper.profile.size(); ++i)
        plot.points.emplace_back(static_cast<double>(i), caliper.profile[i]);
    for (const orx::TContrastEdge& edge : caliper.edges) plot.marks.push_back(edge.distance);
    return plot;
}

Section boxSection(const cv::Mat& grey, const BoxCaliper& caliper) {
    const cv::Rect& box = caliper.box;
    Section section;
    section.title = "Caliper " + std::to_string(box.x) + "," + std::to_string(box.y) + "," +
                    std::to_string(box.width) + "," + std::to_string(box.height);
    section.note = caliper.profile.empty() ? "not within reach of the picture"
                                           : std::to_string(caliper.edges.size()) + " edges, searched " +
                                                 (caliper.downwards ? "downwards" : "to the right");
    section.rows.push_back({"#", "edge", "x", "y", "distance", "contrast", "blur"});
    for (std::size_t i = 0; i < caliper.edges.size(); ++i) {
        const orx::TContrastEdge& edge = caliper.edges[i];
        section.rows.push_back(
            {std::to_string(i + 1), edge.contrast > 0.0 ? "dark to bright" : "bright to dark",
             fixedText(edge.position.x, 3), fixedText(edge.position.y, 3), fixedText(edge.distance, 3),
             fixedText(edge.contrast, 1), fixedText(edge.blur, 2)});
    }
    if (caliper.profile.empty()) return section;
    section.suffix = "-caliper";
    section.picture = drawCaliper(grey, caliper);
    section.figures.push_back({profileSvg(boxPlot(caliper)),
                               "Mean grey level across the caliper at each distance from its start (pixels), "
                               "with the edges found"});
    return section;
}

ProfilePlot circlePlot(const CircleCaliper& caliper) {
    const cv::Point2d center = caliper.fitted.center;
    ProfilePlot plot;
    plot.label = "Distance of the edges from the centre by angle";
    plot.asDots = true;
    plot.level = caliper.fitted.radius;
    for (const orx::TContrastEdge& edge : caliper.edges) {
        const cv::Point2d ray = edge.position - center;
        const double angle = std::atan2(ray.y, ray.x) / kDegree;
        plot.points.emplace_back(angle < 0.0 ? angle + 360.0 : angle, std::hypot(ray.x, ray.y));
    }
    return plot;
}

Section circleSection(const cv::Mat& grey, const CircleCaliper& caliper) {
    const Circle& nominal = caliper.nominal;
    Section section;
    section.title = "Circle caliper " + fixedText(nominal.center.x, 2) + "," +
                    fixedText(nominal.center.y, 2) + "," + fixedText(nominal.radius, 2);
    section.note = std::to_string(caliper.edges.size()) + " edges from " + std::to_string(caliper.calipers) +
                   " calipers";
    section.rows.push_back({"#", "circle", "x", "y", "radius", "edges used", "mean residual"});
    if (caliper.fitted.valid())
        section.rows.push_back(
            {"1", "fitted", uncertainText(caliper.fitted.center.x, caliper.fitted.xDeviation, 3),
             uncertainText(caliper.fitted.center.y, caliper.fitted.yDeviation, 3),
             uncertainText(caliper.fitted.radius, caliper.fitted.radiusDeviation, 3),
             std::to_string(caliper.fitted.usedPoints), fixedText(caliper.meanResidual, 3)});
    section.suffix = "-circle-caliper";
    section.picture = drawCaliper(grey, caliper);
    if (caliper.fitted.valid())
        section.figures.push_back({profileSvg(circlePlot(caliper)),
                                   "Distance of each edge from the fitted centre (pixels) over its angle "
                                   "(degrees), with the fitted radius"});
    return section;
}

Section focusSection(const FocusValues& focus) {
    Section section;
    section.title = "Focus";
    section.note = "larger is sharper, for pictures of the same scene";
    section.rows = {{"grey difference", "Brenner", "Tenengrad", "Laplacian variance"},
                    {fixedText(focus.greyDifference, 3), fixedText(focus.brenner, 2),
                     fixedText(focus.tenengrad, 1), fixedText(focus.laplacianVariance, 2)}};
    return section;
}

}  // namespace

std::vector<Section> sectionsOf(const cv::Mat& grey, const Analyses& analyses) {
    std::vector<Section> sections;
    if (analyses.taught) sections.push_back(taughtSection(grey, *analyses.taught));
    if (analyses.parts) {
        sections.push_back(foundSection(grey, *analyses.parts));
        if (!analyses.parts->truth.empty()) sections.push_back(truthSection(*analyses.parts));
    }
    if (analyses.contours) sections.push_back(contourSection(grey, *analyses.contours));
    if (analyses.edges) sections.push_back(edgeSection(grey, *analyses.edges));
    for (const BoxCaliper& caliper : analyses.boxCalipers) sections.push_back(boxSection(grey, caliper));
    for (const CircleCaliper& caliper : analyses.circleCalipers)
        sections.push_back(circleSection(grey, caliper));
    if (analyses.focus) sections.push_back(focusSection(*analyses.focus));
    return sections;
}

}  // namespace inspection
