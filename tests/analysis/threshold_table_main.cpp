// Prints docs/threshold-degenerate.md.
#include <iostream>

#include "threshold_table.h"

int main() { std::cout << thresholdTable(); }
