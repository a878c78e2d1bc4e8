// The host port when a system call fails: every failure is a status, a
// replaced file is either the old one or the new one with no temporary left,
// and an interrupted call is simply made again. The calls are made to fail by
// this program's own definitions of them, which the port's calls reach before
// the C library's; a failure is armed for the calling thread only, so the
// local cloud's threads never see it.
#undef _FORTIFY_SOURCE
#include <dlfcn.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>

#include "CloudFixture.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/Logging.h"

namespace {

struct Armed {
    const char* call = "";
    int error = 0;
    int times = 0;
};
thread_local Armed tArmed;

// True, with errno set, when `call` is to fail this time.
bool failing(const char* call) {
    if (tArmed.times <= 0 || std::strcmp(tArmed.call, call) != 0) return false;
    --tArmed.times;
    errno = tArmed.error;
    return true;
}

}  // namespace

// A close that fails still releases the descriptor, as Linux's does.
#define VELMAR_FAILING(ret, name, params, args, ...)                                       \
    extern "C" ret name params __VA_ARGS__ {                                               \
        static const auto real = reinterpret_cast<ret(*) params>(dlsym(RTLD_NEXT, #name)); \
        if (!failing(#name)) return real args;                                             \
        if (std::strcmp(#name, "close") == 0) real args;                                   \
        return -1;                                                                         \
    }
VELMAR_FAILING(ssize_t, read, (int fd, void* data, size_t size), (fd, data, size))
VELMAR_FAILING(ssize_t, write, (int fd, const void* data, size_t size), (fd, data, size))
VELMAR_FAILING(int, fsync, (int fd), (fd))
VELMAR_FAILING(int, close, (int fd), (fd))
VELMAR_FAILING(int, fchmod, (int fd, mode_t mode), (fd, mode), noexcept)
VELMAR_FAILING(int, rename, (const char* from, const char* to), (from, to), noexcept)
VELMAR_FAILING(int, unlink, (const char* path), (path), noexcept)
VELMAR_FAILING(int, pipe2, (int fds[2], int flags), (fds, flags), noexcept)
VELMAR_FAILING(pid_t, fork, (), (), noexcept)
VELMAR_FAILING(pid_t, waitpid, (pid_t pid, int* status, int options), (pid, status, options))
VELMAR_FAILING(int, poll, (pollfd * fds, nfds_t count, int ms), (fds, count, ms))

namespace {

namespace fs = std::filesystem;

struct HostFaultTest : velmar::testing::CloudFixture {
    int dnsPort() const override { return 0; }
};

TEST_F(HostFaultTest, AFailedSystemCallIsAStatusLosesNoFileAndAnInterruptedOneIsMadeAgain) {
    const auto store = [this] { return devicePath("/data/device"); };
    // The stored deviceid, the number of files beside it, and what the call gave.
    const auto state = [&](const std::string& gave) {
        char buf[32] = "";
        deviceid_get(buf, sizeof(buf));
        const auto files = std::distance(fs::directory_iterator(store()), {});
        return std::string(buf) + " " + std::to_string(files) + " " + gave;
    };
    const auto set = [&] { return state(std::to_string(deviceid_set("7301"))); };
    const auto get = [&] { return state(""); };
    const auto exec = [&] {
        std::string output;
        const int status = velmar::utils::ExecUtils::exec(output, "echo out; exit 3");
        return std::to_string(status) + (status == 3 ? " " + output : "");
    };
    const auto named = [&] {
        int status = 0;
        std::string body, text;
        velmar::utils::ErrorType error;
        velmar::http::HTTPRequest::httpRequest(
            status, body, error, text,
            "http://api.quil.test:" + std::to_string(cloud().port()) + "/t", "", "GET", {}, 5000,
            "", cloud().dnsServers());
        return std::to_string(status) + " " + std::to_string(error);
    };
    const auto log = [&] {
        const std::string line = logsOf([] { VLOG(2) << "kept"; });
        return line.substr(line.find(": ") + 2);
    };
    const auto clean = [&] { return std::to_string(uid_clean()); };
    const struct {
        const char* call;
        int error, times;
        std::function<std::string()> action;
        const char* gave;
    } rows[] = {
        {"read", EINTR, 1, get, "7300 1 "},     {"read", EIO, 1, get, " 1 "},
        {"write", EINTR, 1, set, "7301 1 0"},   {"write", ENOSPC, 1, set, "7300 1 -1"},
        {"fchmod", EPERM, 1, set, "7300 1 -1"}, {"fsync", EIO, 1, set, "7300 1 -1"},
        {"close", EIO, 1, set, "7300 1 -1"},    {"rename", EXDEV, 1, set, "7300 1 -1"},
        {"pipe2", EMFILE, 1, exec, "-1"},       {"fork", EAGAIN, 1, exec, "-1"},
        {"waitpid", EINTR, 1, exec, "3 out\n"}, {"read", EINTR, 1, exec, "3 out\n"},
        {"waitpid", ECHILD, 1, exec, "-1"},     {"poll", EINTR, 1, named, "404 0"},
        {"poll", ENOMEM, 1, named, "0 601"},    {"write", EINTR, 1, log, "kept\n"},
        {"unlink", EACCES, 1, clean, "-1"},
    };
    for (const auto& row : rows) {
        fs::remove_all(store());
        fs::create_directories(store());
        std::ofstream(store() / "deviceid") << "7300\n";
        tArmed = {row.call, row.error, row.times};
        EXPECT_EQ(row.action(), row.gave) << row.call << " failing with " << strerror(row.error);
        tArmed.times = 0;
    }
}

}  // namespace
