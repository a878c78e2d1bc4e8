#include "velmar/quil/StatPointsUtils.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "StatReport.h"
#include "velmar/quil/QuilConfigUtils.h"

namespace velmar {
namespace quil {

namespace {

// A runaway log costs at most this much line text (newlines not counted).
constexpr long long kMaxTotalBytes = 262144;
// Shorter lines cannot hold a stat; longer ones are only counted.
constexpr size_t kMaxBadLine = 19;
constexpr size_t kMaxSplitLine = 4096;
// The marker word and the one space after it.
constexpr std::string_view kMarker = "stat_points_none ";
// Reads stop near the budget rather than a whole chunk past it; the floor
// keeps a tail of empty lines from being read a few bytes at a time.
constexpr size_t kChunk = 16384;
constexpr size_t kMinRead = 4096;

// Cuts `text` at every `separator`; true when that gives exactly two fields.
// A text without the separator gives no fields at all, so it never matches.
bool splitInTwo(std::string_view text, char separator, std::string_view& first,
                std::string_view& second) {
    size_t at = std::string_view::npos;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != separator) continue;
        if (at != std::string_view::npos) return false;  // a third field
        at = i;
    }
    if (at == std::string_view::npos) return false;
    first = text.substr(0, at);
    second = text.substr(at + 1);
    return true;
}

// A stat line cut at every space gives exactly two fields, the marker word
// and the stat; the stat cut at every "=" exactly two, its name and value.
bool parseStat(std::string_view line, std::string_view& name, std::string_view& value) {
    if (line.substr(0, kMarker.size()) != kMarker) return false;
    const std::string_view stat = line.substr(kMarker.size());
    return stat.find(' ') == std::string_view::npos && splitInTwo(stat, '=', name, value);
}

// "%d" of the low 32 bits, as the collector has always written these counts.
std::string low32Decimal(long long count) {
    char text[16];
    std::snprintf(text, sizeof(text), "%d", static_cast<int>(static_cast<uint32_t>(count)));
    return text;
}

// Reads the stat lines of one file into the report, within the byte budget.
class StatLog {
  public:
    explicit StatLog(detail::StatReport& report) : mReport(report) {}

    void read(int fd) {
        char chunk[kChunk];
        for (;;) {
            const size_t left = static_cast<size_t>(kMaxTotalBytes - mTotal) - mLineLength;
            const ssize_t n = ::read(fd, chunk, std::min(kChunk, std::max(left + 1, kMinRead)));
            // A signal while reading: the non-blocking open leaves no read that
            // waits for one, but a network file system may still report it.
            if (n < 0 && errno == EINTR) continue;  // GCOVR_EXCL_BR_LINE: a signal mid-read
            // End of file, or an error that ends the reading all the same
            // (a directory, a pipe with nothing to give yet).
            if (n <= 0) break;
            if (!take(chunk, chunk + n)) return;
        }
        // The last line may lack its newline.
        if (mLineLength > 0) endLine(mLine);
        finish();
    }

  private:
    // False once the budget is spent and reading must stop.
    bool take(const char* begin, const char* end) {
        while (begin < end) {
            const char* newline = static_cast<const char*>(std::memchr(begin, '\n', end - begin));
            const char* stop = newline != nullptr ? newline : end;
            const size_t length = static_cast<size_t>(stop - begin);
            // A line wholly inside the chunk is classified where it lies.
            const bool inPlace = newline != nullptr && mLineLength == 0;
            if (!inPlace && mLineLength + length <= kMaxSplitLine) mLine.append(begin, length);
            mLineLength += length;
            // Whatever the rest of the line, it takes the total past the budget.
            if (mTotal + static_cast<long long>(mLineLength) > kMaxTotalBytes) {
                mReport.add("quillog_big_log_file", 1, "1");
                finish();
                return false;
            }
            if (newline == nullptr) break;
            endLine(inPlace ? std::string_view(begin, length) : std::string_view(mLine));
            begin = newline + 1;
        }
        return true;
    }

    void endLine(std::string_view line) {
        mTotal += static_cast<long long>(mLineLength);
        std::string_view name, value;
        if (mLineLength > kMaxSplitLine) {
            ++mLongLines;
        } else if (mLineLength <= kMaxBadLine) {
            ++mBadLines;
        } else if (parseStat(line, name, value)) {
            mReport.add(name, 1, value);
        } else {
            ++mBadLines;
        }
        mLine.clear();
        mLineLength = 0;
    }

    void finish() {
        if (mLongLines != 0) {
            mReport.add("quillog_long_line_count", mLongLines, low32Decimal(mLongLines));
        }
        if (mBadLines != 0) {
            mReport.add("quillog_bad_line_count", mBadLines, low32Decimal(mBadLines));
        }
    }

    detail::StatReport& mReport;
    std::string mLine;  // the current line's text while it may still be split
    size_t mLineLength = 0;
    long long mTotal = 0;
    long long mLongLines = 0;
    long long mBadLines = 0;
};

// How much of the open log will be read, at most (0 when not a regular file).
size_t readableBytes(int fd) {
    // An open descriptor always has a status; were it refused, the zeroed
    // `info` would read as no regular file.
    struct stat info {};
    ::fstat(fd, &info);
    if (!S_ISREG(info.st_mode) || info.st_size <= 0) return 0;
    // A log past the budget is read to just beyond it; its newlines do not count.
    return static_cast<size_t>(std::min<off_t>(info.st_size, kMaxTotalBytes + kChunk));
}

}  // namespace

std::string StatPointsUtils::collectStatPoints(const std::string& path, bool pretty) {
    std::string hardware, version, serialNumber;
    QuilConfigUtils::getHardware(hardware);
    QuilConfigUtils::getROMVersion(version);
    QuilConfigUtils::getSN(serialNumber);

    // Non-blocking, so that a FIFO or a device named by mistake cannot stall
    // the caller; a regular file reads the same either way.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    // A file that cannot be opened reads as empty, silently: the report is
    // the only thing the collector hands back.
    auto report = detail::makeStatReport(pretty, hardware, version, serialNumber,
                                         fd < 0 ? 0 : readableBytes(fd));
    if (fd >= 0) {
        StatLog(*report).read(fd);
        ::close(fd);
    }
    return report->finish();
}

}  // namespace quil
}  // namespace velmar
