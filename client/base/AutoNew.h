#pragma once

#include <memory>
#include <utility>

// A member that makes its object at the first read and may be replaced or released at any
// time; the next read after a release makes a fresh one. Readers therefore never see it empty.
template <class T> class AutoNew {
public:
    T& get() {
        if (!m_object)
            m_object = std::make_unique<T>();
        return *m_object;
    }
    void set(std::unique_ptr<T> object) { m_object = std::move(object); }
    void release() { m_object.reset(); }
    bool made() const { return m_object != nullptr; }

private:
    std::unique_ptr<T> m_object;
};
