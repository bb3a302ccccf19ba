// orx_inspection: measures round and elongated objects in pictures. See --help.
#include <exception>
#include <iostream>

#include "inspection/run/run.h"
#include "support/command_line.h"

int main(int argc, char** argv) {
    try {
        const host::CommandLine arguments(argc, argv);
        int exitCode = 0;
        const auto options = inspection::parseOptions(arguments.count(), arguments.texts(), exitCode);
        return options ? inspection::run(*options, std::cout, std::cerr) : exitCode;
    } catch (const std::exception& error) {
        std::cerr << "orx_inspection: " << error.what() << "\n";
        return 1;
    }
}
