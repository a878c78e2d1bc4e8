#pragma once

namespace velmar {
namespace quil {

/// Kinds of notification the cloud lands on the user's phone. The numbers are
/// the service's and travel as decimal text ("type"); never renumber them.
enum VePushType : int {
    VE_PUSH_GENERAL = 0,        ///< a message of no particular kind
    VE_PUSH_ALARM = 1,          ///< about an alarm
    VE_PUSH_REMINDER = 2,       ///< about a reminder
    VE_PUSH_VOICE_MESSAGE = 3,  ///< a voice message
    VE_PUSH_UPGRADE = 4,        ///< about a firmware upgrade
    VE_PUSH_DEVICE_STATUS = 5,  ///< about the speaker's status
};

}  // namespace quil
}  // namespace velmar
