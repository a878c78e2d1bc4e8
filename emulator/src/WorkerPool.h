// The threads of the local cloud's server.
#pragma once

#include <httplib.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quilcloud {

// Writes to a connection the client already closed must fail with EPIPE, not
// kill the process: OpenSSL writes to the socket without MSG_NOSIGNAL. A
// blocked SIGPIPE stays pending on the thread and is dropped with it. Called
// first by every thread of the server.
void blockSigpipe();

// Connection workers for the server. A worker stays with its connection while
// the client keeps it alive, so a fixed pool would leave the next client
// waiting for an idle one to time out; this one grows instead.
class WorkerPool : public httplib::TaskQueue {
  public:
    void enqueue(std::function<void()> job) override;
    void shutdown() override;

  private:
    static constexpr size_t kMaxThreads = 256;

    void run();

    std::mutex mMutex;
    std::condition_variable mWake;
    std::deque<std::function<void()>> mJobs;
    std::vector<std::thread> mThreads;
    size_t mIdle = 0;
    bool mShutdown = false;
};

}  // namespace quilcloud
