#include "bench/growth/growth.h"

int main(int argc, char** argv) {
    growth::addPictureOperators();
    growth::addListOperators();
    growth::addFits();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
