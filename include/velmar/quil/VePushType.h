#pragma once

namespace velmar {
namespace quil {

// Kinds of notification the cloud lands on the user's phone. The numbers are
// the service's and travel as decimal text; never renumber them.
enum VePushType : int {
    VE_PUSH_GENERAL = 0,
    VE_PUSH_ALARM = 1,
    VE_PUSH_REMINDER = 2,
    VE_PUSH_VOICE_MESSAGE = 3,
    VE_PUSH_UPGRADE = 4,
    VE_PUSH_DEVICE_STATUS = 5,
};

}  // namespace quil
}  // namespace velmar
