// The stat points report in its two layouts, written while the log is read:
// the identity first, then each record as it is made.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace velmar {
namespace quil {
namespace detail {

class StatReport {
  public:
    virtual ~StatReport() = default;
    // One {"t","c","v"} record of the "data" array.
    virtual void add(std::string_view name, long long count, std::string_view value) = 0;
    // The whole text; call once, after the last record.
    virtual std::string finish() = 0;
};

// Compact, or indented by four spaces per level as RapidJSON's pretty writer
// lays it out. `logBytes`, the size of the log about to be read, lets the
// compact text be allocated once.
std::unique_ptr<StatReport> makeStatReport(bool pretty, const std::string& hardware,
                                           const std::string& version,
                                           const std::string& serialNumber, size_t logBytes);

}  // namespace detail
}  // namespace quil
}  // namespace velmar
