// Reading a device file without trusting its size. Compiled into the library
// too, whose connection rules read the CA bundle with it.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "FileRead.h"

namespace velmar {
namespace host {

bool readFile(const std::string& path, size_t limit, std::string& out) {
    out.clear();
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) return false;
    struct stat info;
    bool ok = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
    if (ok) {
        // Sized from the file, so that a small value costs one read and no
        // zero-filling of the whole limit; one byte more tells a file that
        // grew since.
        const size_t expected = static_cast<size_t>(std::max<off_t>(info.st_size, 0));
        out.resize(std::min(limit, expected + 1));
        size_t filled = 0;
        while (filled < limit) {
            if (filled == out.size()) out.resize(std::min(limit, out.size() * 2));
            ssize_t n = ::read(fd, &out[filled], out.size() - filled);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) ok = false;
            if (n <= 0) break;
            filled += static_cast<size_t>(n);
            // A regular file read to its known size is whole.
            if (filled == expected && expected < out.size()) break;
        }
        out.resize(ok ? filled : 0);
    }
    ::close(fd);
    return ok;
}

}  // namespace host
}  // namespace velmar
