#include "WorkQueue.h"

WorkQueue::WorkQueue(int workers, std::size_t capacity, std::function<void()> onStart)
    : m_capacity(capacity) {
    m_threads.reserve(std::size_t(workers));
    for (int i = 0; i < workers; ++i)
        m_threads.emplace_back([this, onStart] { work(onStart); });
}

WorkQueue::~WorkQueue() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_ready.notify_all();
    for (auto& thread : m_threads)
        thread.join();
}

bool WorkQueue::TryPost(std::function<void()> job) {
    {
        std::lock_guard lock(m_mutex);
        if (m_stopping || m_jobs.size() >= m_capacity)
            return false;
        m_jobs.push_back(std::move(job));
    }
    m_ready.notify_one();
    return true;
}

std::size_t WorkQueue::Waiting() const {
    std::lock_guard lock(m_mutex);
    return m_jobs.size();
}

void WorkQueue::work(const std::function<void()>& onStart) {
    if (onStart)
        onStart();
    for (;;) {
        std::function<void()> job;
        {
            std::unique_lock lock(m_mutex);
            m_ready.wait(lock, [this] { return m_stopping || !m_jobs.empty(); });
            if (m_jobs.empty())
                return;
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        job();
    }
}
