#pragma once

#include <memory>

typedef void CURLSH;

namespace wire {

// The cookies of one HTTP client, kept in memory for the jar's life and sent with every later
// request to the server that set them, as a browser does for one visitor. The gateway's session
// lives in such a cookie. Safe to use from several threads at once.
class CookieJar {
public:
    CookieJar();
    ~CookieJar();
    CookieJar(const CookieJar&) = delete;
    CookieJar& operator=(const CookieJar&) = delete;

    // The one jar of this process: what a program that acts for one person uses.
    static CookieJar& process();

    CURLSH* share() const;
    // Forgets every cookie (a new visitor).
    void clear();

    struct Impl;

private:
    std::unique_ptr<Impl> d;
};

} // namespace wire
