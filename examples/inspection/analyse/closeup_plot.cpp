#include "inspection/analyse/closeup_plot.h"

#include <opencv2/imgproc.hpp>
#include <sstream>

#include "inspection/report/data_uri.h"
#include "inspection/report/table.h"

namespace inspection {
namespace {

constexpr int kMagnification = 22;
constexpr int kDecimals = 3;

// Nearest neighbour: a viewer that smooths what it enlarges would hide the pixels.
cv::Mat magnified(const cv::Mat& pixels) {
    double darkest = 0.0;
    double brightest = 0.0;
    cv::minMaxLoc(pixels, &darkest, &brightest);
    cv::Mat stretched;
    const double scale = brightest > darkest ? 255.0 / (brightest - darkest) : 1.0;
    pixels.convertTo(stretched, CV_8U, scale, -darkest * scale);
    cv::resize(stretched, stretched, cv::Size(), kMagnification, kMagnification, cv::INTER_NEAREST);
    return stretched;
}

void writePoint(std::ostream& svg, cv::Point2f p) {
    svg << fixedText(static_cast<double>(p.x), kDecimals) << ","
        << fixedText(static_cast<double>(p.y), kDecimals) << " ";
}

// The runs of a chain near the crop; what sticks out is cut off by the view.
void writeChain(std::ostream& svg, const ORXEdge::TMetricContour& chain, const cv::Rect2f& view) {
    const std::size_t count = chain.points.size() + (chain.closed ? 1 : 0);
    bool inRun = false;
    for (std::size_t i = 0; i < count; ++i) {
        const cv::Point2f p = chain.points[i % chain.points.size()];
        const bool isNear = view.contains(p);
        if (isNear && !inRun) svg << "<polyline points='";
        if (isNear) writePoint(svg, p);
        if (!isNear && inRun) svg << "'/>";
        inRun = isNear;
    }
    if (inRun) svg << "'/>";
    for (const cv::Point2f& p : chain.points)
        if (view.contains(p))
            svg << "<circle r='0.13' cx='" << fixedText(static_cast<double>(p.x), kDecimals) << "' cy='"
                << fixedText(static_cast<double>(p.y), kDecimals) << "'/>";
}

}  // namespace

std::string closeupSvg(const cv::Mat& grey, const EdgeChains& edges) {
    const cv::Rect& crop = edges.crop;
    // The centre of a pixel has whole coordinates, its edges lie half a pixel away.
    const std::string left = fixedText(crop.x - 0.5, 1);
    const std::string top = fixedText(crop.y - 0.5, 1);
    const cv::Rect2f view(cv::Point2f(crop.tl()) - cv::Point2f(2.0F, 2.0F),
                          cv::Size2f(crop.size()) + cv::Size2f(4.0F, 4.0F));
    std::ostringstream svg;
    svg.imbue(std::locale::classic());
    svg << "<svg class='closeup' viewBox='" << left << " " << top << " " << crop.width << " " << crop.height
        << "' role='img' aria-label='Edge points over enlarged pixels'><image x='" << left << "' y='" << top
        << "' width='" << crop.width << "' height='" << crop.height << "' href='"
        << pngDataUri(magnified(grey(crop))) << "'/>";
    for (const ORXEdge::TMetricContour& chain : edges.chains)
        if (!chain.points.empty()) writeChain(svg, chain, view);
    svg << "</svg>";
    return svg.str();
}

}  // namespace inspection
