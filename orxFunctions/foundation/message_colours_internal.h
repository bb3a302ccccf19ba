// The colours of messages to the user, as hosts know them.
#ifndef ORXFUNCTIONS_FOUNDATION_MESSAGE_COLOURS_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_MESSAGE_COLOURS_INTERNAL_H

namespace orx {

constexpr int kErrorColor = 1;
constexpr int kReconnectColor = 4;  // a camera that must be reconnected

}  // namespace orx

#endif
