// Makes docs/images/measured-scene.png: a rendered tray of parts with what the inspection program measured on
// it.
//
//   measured_scene FILE.png
#include <iostream>
#include <string>

#include "inspection/measure/measurement.h"
#include "inspection/measure/preparation.h"
#include "inspection/report/annotate.h"
#include "inspection/run/output_folder.h"
#include "support/synthetic_scene.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "measured_scene: give the name of the picture to write\n";
        return 2;
    }
    // No noise: it would take up most of the file.
    scenes::SceneSettings scene;
    scene.size = {750, 375};
    scene.seed = 12;
    scene.noiseSigma = 0.0;
    const cv::Mat picture = scenes::renderScene(scene).image;
    const inspection::Settings settings;
    std::string problem;
    const auto prepared = inspection::prepare(picture, settings, problem);
    if (!prepared) {
        std::cerr << "measured_scene: " << problem << "\n";
        return 1;
    }
    const auto features = inspection::measure(picture, *prepared, settings);
    if (!inspection::writePng(argv[1], inspection::annotate(picture, features, settings.tolerance))) {
        std::cerr << "measured_scene: can't write " << argv[1] << "\n";
        return 1;
    }
    return 0;
}
