#include "WorkerPool.h"

#include <signal.h>

namespace quilcloud {

void blockSigpipe() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

void WorkerPool::enqueue(std::function<void()> job) {
    std::lock_guard<std::mutex> lock(mMutex);
    mJobs.push_back(std::move(job));
    if (mJobs.size() > mIdle && mThreads.size() < kMaxThreads) {
        mThreads.emplace_back([this] { run(); });
    } else {
        mWake.notify_one();
    }
}

void WorkerPool::shutdown() {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mShutdown = true;
    }
    mWake.notify_all();
    for (auto& thread : mThreads)
        thread.join();
}

void WorkerPool::run() {
    blockSigpipe();
    for (;;) {
        std::function<void()> job;
        {
            std::unique_lock<std::mutex> lock(mMutex);
            ++mIdle;
            mWake.wait(lock, [this] { return mShutdown || !mJobs.empty(); });
            --mIdle;
            if (mJobs.empty()) return;
            job = std::move(mJobs.front());
            mJobs.pop_front();
        }
        job();
    }
}

}  // namespace quilcloud
