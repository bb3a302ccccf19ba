#include "vector_math.h"

#include "vector_math_body.h"

namespace vector_math {

const Functions kAvx2 = orx::ORX_SIMD::kFunctions;

}  // namespace vector_math
