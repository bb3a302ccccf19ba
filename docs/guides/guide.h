// What the programs of the guides share: pictures that go to a page, and what the page says, checked.
#ifndef ORX_DOCS_GUIDES_GUIDE_H
#define ORX_DOCS_GUIDES_GUIDE_H

#include <functional>
#include <opencv2/core.hpp>
#include <string>

namespace guide {

// A program of a page: `make` does what the page shows. The result is main's own: 0, or 1 where something
// that the page says is not so, or a picture can't be written.
int run(int argc, char** argv, const std::function<void()>& make);

// As PNG into the folder of pictures that the program was given.
void save(const std::string& name, const cv::Mat& picture);

// Something that the page says. Where it is not so, the program tells it and fails.
void expect(bool holds, const std::string& what);

}  // namespace guide

#endif
