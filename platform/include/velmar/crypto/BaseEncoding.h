#pragma once

#include <string>
#include <vector>

#include "velmar/Export.h"

namespace velmar {
namespace crypto {

class VELMAR_PORT_EXPORT BaseEncoding {
  public:
    // Standard Base64 ("+", "/", "=" padding, no line breaks).
    static bool encodeB64(std::string& out, const void* data, unsigned length);
    static std::string encodeB64(const std::vector<unsigned char>& data);

    // URL-safe Base64 ("-", "_"), without "=" padding.
    static std::string encodeB64URL(const void* data, unsigned length);
    static std::string encodeB64URL(const std::vector<unsigned char>& data);

    // Lower-case hexadecimal, two digits per byte.
    static std::string encodeHex(const std::vector<unsigned char>& data);
};

}  // namespace crypto
}  // namespace velmar
