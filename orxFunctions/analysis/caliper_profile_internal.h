// Grey profiles of calipers, and the edges in a profile.
#ifndef ORXFUNCTIONS_ANALYSIS_CALIPER_PROFILE_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_CALIPER_PROFILE_INTERNAL_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/caliper.h"

namespace orx {

// A line of sampling points: start + i * step. A profile is the mean over several.
struct Ray {
    cv::Point2d start;
    cv::Point2d step;
};

// Means of the grey levels at the points i = -lead .. count - 1 + lead of all rays, as 8-bit levels.
// `grey` has one channel of 8 or 16 bits; points outside of it take the nearest level inside.
std::vector<double> sampleProfile(const cv::Mat& grey, const std::vector<Ray>& rays, int lead, int count);

struct ProfileEdge {
    double place = 0.0;     // in samples, 0 at the first that is no lead
    double contrast = 0.0;  // grey levels, signed
    double blur = 0.0;      // samples
};

// The blur from which on an edge is too wide to show it, in the unit of sigma.
double widestBlur(double sigma);

// How many samples the filter needs before and behind the profile.
int leadOf(double sigma);

// The edges of a profile that has leadOf(sigma) samples before and behind, with sigma in samples (at least
// about 1), filtered and selected.
std::vector<ProfileEdge> edgesOfProfile(const std::vector<double>& profile, double sigma,
                                        const TCaliperOptions& options);

}  // namespace orx

#endif
