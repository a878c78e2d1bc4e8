#pragma once

#include <sstream>
#include <string>

#include "velmar/Export.h"

namespace velmar {
namespace utils {

// One log line, built as a stream. The destructor appends the end of line
// and hands the text to the port's sink (the host writes it to syslog with
// priority 3 whatever the level). Levels: 2 progress, 3 notable, 4 failure.
// The library writes its lines whole; a port that ships masks credential
// values and escapes control characters before a line leaves the process
// (the host does: at most four characters of a secret survive).
class VELMAR_PORT_EXPORT Logging {
  public:
    Logging(int level, const char* sourceFile, int line);
    ~Logging();

    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;

    std::ostream& stream() { return mStream; }

  private:
    int mLevel;
    const char* mSourceFile;
    int mLine;
    std::ostringstream mStream;
};

}  // namespace utils
}  // namespace velmar

// VLOG(4) << "text" << value; passes the caller's file and line.
#define VLOG(level) ::velmar::utils::Logging((level), __FILE__, __LINE__).stream()
