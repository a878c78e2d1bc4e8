#include "velmar/utils/StringUtils.h"

#include <algorithm>

namespace velmar {
namespace utils {

std::string StringUtils::removeAll(const std::string& text, char c) {
    std::string out = text;
    out.erase(std::remove(out.begin(), out.end(), c), out.end());
    return out;
}

}  // namespace utils
}  // namespace velmar
