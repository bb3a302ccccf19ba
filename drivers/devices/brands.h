// Camera brands by the vendor names that cameras report.
#ifndef DRIVERS_DEVICES_BRANDS_H
#define DRIVERS_DEVICES_BRANDS_H

#include <string>
#include <vector>

namespace vision {

// The brand (enum VDCameraType) whose word is in the vendor's name, whatever its case: "Basler", "Basler AG".
// VD_TYPE_ANY for a vendor that is none of them. Reentrant.
int brandOf(const std::string& vendor);

// Whether the number is that of a brand. Reentrant.
bool isBrand(int type);

// The one brand of several cameras: VD_TYPE_NONE without cameras, VD_TYPE_MIXED when they differ. All vendors
// that are none of the brands count as one. Reentrant.
int commonBrand(const std::vector<std::string>& vendors);

}  // namespace vision

#endif
