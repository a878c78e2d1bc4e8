// Device files of the Linux port: where they lie (under $VELMAR_ROOT when it
// is set), how they are replaced without a power cut leaving half a file, and
// the configuration file on top of that.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "FileRead.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/FileUtils.h"

namespace velmar {

namespace host {

namespace {

bool writeAll(int fd, const std::string& content) {
    const char* data = content.data();
    size_t left = content.size();
    while (left > 0) {
        ssize_t n = ::write(fd, data, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        data += n;
        left -= static_cast<size_t>(n);
    }
    return true;
}

}  // namespace

bool writeAtomically(const std::string& target, const std::string& content, mode_t newFileMode,
                     mode_t keptBits) {
    if (target.empty() || target.back() == '/') return false;
    // The replacement keeps the permissions of the file it replaces. The
    // temporary file is 0600 from the start, so a private value is never
    // readable by others, not even for a moment.
    mode_t mode = newFileMode & 07777;
    struct stat old;
    if (::stat(target.c_str(), &old) == 0) {
        if (!S_ISREG(old.st_mode)) return false;
        mode = old.st_mode & keptBits;
    }
    std::string temp = target + ".tmp-XXXXXX";
    int fd = ::mkostemp(&temp[0], O_CLOEXEC);
    if (fd < 0) return false;
    bool ok = writeAll(fd, content) && ::fchmod(fd, mode) == 0 && ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    ok = ok && ::rename(temp.c_str(), target.c_str()) == 0;
    if (!ok) {
        ::unlink(temp.c_str());
        return false;
    }
    // The rename itself survives a power cut only once the directory is flushed.
    const size_t slash = target.find_last_of('/');
    const std::string dir = slash == std::string::npos ? "." : target.substr(0, slash + 1);
    int dirFd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd >= 0) {
        ::fsync(dirFd);
        ::close(dirFd);
    }
    return true;
}

}  // namespace host

namespace utils {

namespace {

// No configuration file is anywhere near this; a larger one is cut here.
constexpr size_t kMaxConfigBytes = 1024 * 1024;

std::string trim(const std::string& text) {
    size_t begin = text.find_first_not_of(" \t\r");
    if (begin == std::string::npos) return std::string();
    size_t end = text.find_last_not_of(" \t\r");
    return text.substr(begin, end - begin + 1);
}

}  // namespace

std::string FileUtils::devicePath(const std::string& path) {
    const char* root = std::getenv("VELMAR_ROOT");
    if (root == nullptr || root[0] == '\0' || path.empty() || path[0] != '/') return path;
    std::string base = root;
    while (!base.empty() && base.back() == '/')
        base.pop_back();
    return base + path;
}

bool FileUtils::writeAtomically(const std::string& path, const std::string& content) {
    return host::writeAtomically(devicePath(path), content, 0644, 07777);
}

ConfigFile::ConfigFile(const std::string& path) {
    std::string text;
    if (!host::readFile(FileUtils::devicePath(path), kMaxConfigBytes, text)) return;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = trim(text.substr(start, end - start));
        start = end + 1;
        if (line.empty() || line[0] == '#') continue;
        const size_t eq = line.find('=');
        if (eq == std::string::npos) continue;
        const std::string key = trim(line.substr(0, eq));
        if (!key.empty()) mValues[key] = trim(line.substr(eq + 1));
    }
}

std::string ConfigFile::get(const std::string& key) const {
    auto it = mValues.find(key);
    return it == mValues.end() ? std::string() : it->second;
}

}  // namespace utils
}  // namespace velmar
