// What the programs ask of the numbers in their arguments, and how they end on bad ones.
#ifndef EXAMPLES_SUPPORT_ARGUMENT_CHECKS_H
#define EXAMPLES_SUPPORT_ARGUMENT_CHECKS_H

#include <CLI/CLI.hpp>
#include <sstream>
#include <string>

namespace host {

constexpr int kBadArguments = 2;

// CLI::Range would let "nan" pass.
inline CLI::Validator between(double low, double high) {
    const auto check = [low, high](const std::string& text) {
        double value = 0.0;
        const bool isInside = CLI::detail::lexical_cast(text, value) && value >= low && value <= high;
        std::ostringstream reason;
        if (!isInside) reason << "'" << text << "' is not a number between " << low << " and " << high;
        return reason.str();
    };
    return CLI::Validator(check, "");
}

// Prints the help that was asked for, or what is wrong with the arguments; the exit code.
inline int endAt(const CLI::ParseError& error, const CLI::App& app) {
    return app.exit(error) == 0 ? 0 : kBadArguments;
}

}  // namespace host

#endif
