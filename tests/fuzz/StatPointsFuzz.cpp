// The statistics log: the fuzzer's bytes are the file, repeated when the
// first byte is 0xf0 or above (2^(byte - 0xf0) times, to at most 320 KiB) so
// that the byte budget and long lines are reached. Both layouts of the report
// must parse and agree.
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "Harness.h"
#include "velmar/quil/StatPointsUtils.h"

using velmar::quil::StatPointsUtils;

namespace {

// In memory where there is a tmpfs: a disk write per input is most of the time.
std::string logPath() {
    static std::string path = access("/dev/shm", W_OK) == 0 ? "/dev/shm/velmar-statfuzz-XXXXXX"
                                                            : "/tmp/velmar-statfuzz-XXXXXX";
    const int fd = mkstemp(&path[0]);
    fuzz::require(fd >= 0, "no temporary file", path);
    close(fd);
    std::atexit([] { unlink(path.c_str()); });
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = logPath();
    fuzz::freshDevice();
    size_t length = size;
    if (size > 0 && data[0] >= 0xf0) length = std::min<size_t>(size << (data[0] - 0xf0), 320 << 10);
    {
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        for (size_t done = 0; done < length; done += size)
            file.write(reinterpret_cast<const char*>(data),
                       static_cast<std::streamsize>(std::min(size, length - done)));
    }
    const std::string compact = StatPointsUtils::collectStatPoints(path, false);
    const std::string pretty = StatPointsUtils::collectStatPoints(path, true);
    rapidjson::Document compactDocument, prettyDocument;
    fuzz::require(fuzz::parse(compactDocument, compact), "compact report is no JSON", compact);
    fuzz::require(fuzz::parse(prettyDocument, pretty), "pretty report is no JSON", pretty);
    fuzz::require(compactDocument == prettyDocument, "the two layouts differ", compact);
    return 0;
}
