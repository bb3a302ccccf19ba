// Student's t-distribution.
#ifndef ORXFUNCTIONS_FITTING_STUDENTS_T_INTERNAL_H
#define ORXFUNCTIONS_FITTING_STUDENTS_T_INTERNAL_H

namespace orx {

// The probability that Student's t with so many degrees of freedom (above 0, infinite for the normal
// distribution) lies within -t .. t; t is 0 or more.
double probabilityWithin(double t, double degreesOfFreedom);

}  // namespace orx

#endif
