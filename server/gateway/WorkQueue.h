#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

// A fixed set of worker threads and a bounded queue of jobs in front of them. A job that finds
// the queue full is refused at once, so a burst is answered "busy" instead of piling up work
// that would be answered too late to matter.
class WorkQueue {
public:
    // onStart runs first on each worker thread (to open what every job there will need).
    WorkQueue(int workers, std::size_t capacity, std::function<void()> onStart = {});
    ~WorkQueue(); // runs what is queued, then joins the workers
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    // False when the queue is full or stopping; the job is not run then.
    bool TryPost(std::function<void()> job);
    std::size_t Waiting() const;

private:
    void work(const std::function<void()>& onStart);

    mutable std::mutex m_mutex;
    std::condition_variable m_ready;
    std::deque<std::function<void()>> m_jobs;
    std::size_t m_capacity;
    bool m_stopping = false;
    std::vector<std::thread> m_threads;
};
