#pragma once

#include <mutex>
#include <string>
#include <unordered_map>

// Open connections per peer address, so that one address cannot take every file handle.
class AddressCounts {
public:
    explicit AddressCounts(int cap) : m_cap(cap) {}

    // False (and nothing counted) when the address already has its share.
    bool Take(const std::string& address) {
        std::lock_guard lock(m_mutex);
        int& count = m_counts[address];
        if (count >= m_cap)
            return false;
        ++count;
        return true;
    }
    void Give(const std::string& address) {
        std::lock_guard lock(m_mutex);
        const auto found = m_counts.find(address);
        if (found != m_counts.end() && --found->second <= 0)
            m_counts.erase(found);
    }

private:
    std::mutex m_mutex;
    std::unordered_map<std::string, int> m_counts;
    int m_cap;
};
