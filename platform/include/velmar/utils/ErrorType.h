#pragma once

#include <ostream>
#include <string>

#include "velmar/Export.h"

namespace velmar {
namespace utils {

// Status of a platform or library call; 0 is success. The values are shared by
// the transport, the library and the cloud services and are never renumbered.
enum ErrorType : int {
    ERROR_NONE = 0,
    ERROR_GENERAL = 101,           // identity missing, object not built, element unreadable
    ERROR_HTTP_INIT = 600,         // the request could not be set up
    ERROR_HTTP_RESOLVE = 601,      // host name could not be resolved
    ERROR_HTTP_CONNECT = 602,      // no connection to the server
    ERROR_HTTP_TIMEOUT = 603,      // the exchange did not finish in time
    ERROR_HTTP_FAILED = 604,       // transport failure, bad status or unusable answer
    ERROR_HTTP_TLS = 605,          // TLS handshake or certificate verification failed
    ERROR_INVALID_ARGUMENT = 606,  // a caller's argument was refused
    ERROR_HTTP_TOO_LARGE = 607,    // the answer exceeded the transport's size cap
    ERROR_INVALID_RESPONSE = 610,  // answer with a bad result code or shape
    ERROR_DEVICE_UNBOUND = 612,    // the cloud no longer knows the device as bound
    ERROR_TOKEN_INVALID = 1001,    // voice-assistant token answer not understood
    ERROR_NO_SUPER_ADMIN = 1002,   // no administrator account to link
    ERROR_TOKEN_REFUSED = 1003,    // token upload refused by the service
};

class VELMAR_PORT_EXPORT ErrorCode {
  public:
    // Human-readable text of a status; unknown values get a generic text.
    static std::string getErrorMessage(ErrorType error);
};

// Prints "Error (code: N, message: TEXT)".
VELMAR_PORT_EXPORT std::ostream& operator<<(std::ostream& out, ErrorType error);

}  // namespace utils
}  // namespace velmar
