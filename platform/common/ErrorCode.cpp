#include "velmar/utils/ErrorType.h"

namespace velmar {
namespace utils {

std::string ErrorCode::getErrorMessage(ErrorType error) {
    switch (error) {
        case ERROR_NONE:
            return "success";
        case ERROR_GENERAL:
            return "general error";
        case ERROR_HTTP_INIT:
            return "request could not be set up";
        case ERROR_HTTP_RESOLVE:
            return "host name could not be resolved";
        case ERROR_HTTP_CONNECT:
            return "could not connect to server";
        case ERROR_HTTP_TIMEOUT:
            return "request timed out";
        case ERROR_HTTP_FAILED:
            return "network request failed";
        case ERROR_HTTP_TLS:
            return "TLS handshake or certificate verification failed";
        case ERROR_INVALID_ARGUMENT:
            return "invalid argument";
        case ERROR_HTTP_TOO_LARGE:
            return "answer too large";
        case ERROR_INVALID_RESPONSE:
            return "invalid response";
        case ERROR_DEVICE_UNBOUND:
            return "device not bound";
        case ERROR_TOKEN_INVALID:
            return "invalid token response";
        case ERROR_NO_SUPER_ADMIN:
            return "no super admin";
        case ERROR_TOKEN_REFUSED:
            return "token refused";
    }
    return "unknown error";
}

std::ostream& operator<<(std::ostream& out, ErrorType error) {
    return out << "Error ("
               << "code: " << static_cast<int>(error) << ", "
               << "message: " << ErrorCode::getErrorMessage(error) << ")";
}

}  // namespace utils
}  // namespace velmar
