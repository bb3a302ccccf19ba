// Memory that is 0.
#ifndef ORXFUNCTIONS_MATCHING_SEARCH_ZEROS_H
#define ORXFUNCTIONS_MATCHING_SEARCH_ZEROS_H

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

namespace orx::matching {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

template <typename Element>
using Zeros = std::unique_ptr<Element[], FreeMemory>;

// Unlike a vector's, large memory is taken from the system only where it is written: a field of which few
// parts are made costs these parts.
template <typename Element>
Zeros<Element> makeZeros(std::size_t count) {
    static_assert(std::is_arithmetic_v<Element>);
    void* memory = std::calloc(count, sizeof(Element));
    if (memory == nullptr) throw std::bad_alloc();
    return Zeros<Element>(static_cast<Element*>(memory));
}

}  // namespace orx::matching

#endif
