// Internal to the Linux port: what the log writer does to a line before it
// leaves the process.
#pragma once

#include <string>

namespace velmar {
namespace host {

// The text with the value of every credential field masked, in name=value
// form (queries, forms, cookies) and in JSON "name":"value" form: at most its
// first four characters survive, followed by "***".
std::string maskCredentials(const std::string& text);

// The text with every control character written as an escape ("\n", "\r",
// "\t", "\xHH"), so that it cannot end the line or forge another.
std::string escapeControls(const std::string& text);

}  // namespace host
}  // namespace velmar
