// A network of the test's own, in which software cameras have the addresses 127.0.0.1 to 127.0.0.9.
#ifndef ORX_TESTS_GIGE_NETWORK_NAMESPACE_H
#define ORX_TESTS_GIGE_NETWORK_NAMESPACE_H

#include <string>

namespace gige {

// Called first in main: starts the program again inside a private user and network namespace. Returns inside
// of it, and where this system does not permit one.
void enterNetworkNamespace(char** argv);

// Empty inside the namespace, else why there is none.
const std::string& whyNoNetwork();

}  // namespace gige

#endif
