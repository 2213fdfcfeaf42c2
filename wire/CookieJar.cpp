#include "CookieJar.h"

#include <curl/curl.h>
#include <mutex>

namespace wire {

struct CookieJar::Impl {
    CURLSH* share = nullptr;
    std::mutex cookies; // libcurl asks for a lock per kind of shared data; only cookies are
    std::mutex other;   // shared, the other lock covers whatever else it asks for
};

namespace {

std::mutex& lockFor(void* user, curl_lock_data data) {
    auto* impl = static_cast<CookieJar::Impl*>(user);
    return data == CURL_LOCK_DATA_COOKIE ? impl->cookies : impl->other;
}

void lock(CURL*, curl_lock_data data, curl_lock_access, void* user) {
    lockFor(user, data).lock();
}

void unlock(CURL*, curl_lock_data data, void* user) {
    lockFor(user, data).unlock();
}

} // namespace

CookieJar::CookieJar() : d(std::make_unique<Impl>()) {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    d->share = curl_share_init();
    curl_share_setopt(d->share, CURLSHOPT_LOCKFUNC, lock);
    curl_share_setopt(d->share, CURLSHOPT_UNLOCKFUNC, unlock);
    curl_share_setopt(d->share, CURLSHOPT_USERDATA, d.get());
    curl_share_setopt(d->share, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
}

CookieJar::~CookieJar() {
    curl_share_cleanup(d->share);
}

CookieJar& CookieJar::process() {
    static CookieJar jar;
    return jar;
}

CURLSH* CookieJar::share() const {
    return d->share;
}

void CookieJar::clear() {
    CURL* easy = curl_easy_init();
    if (!easy)
        return;
    curl_easy_setopt(easy, CURLOPT_SHARE, d->share);
    curl_easy_setopt(easy, CURLOPT_COOKIELIST, "ALL");
    curl_easy_cleanup(easy);
}

} // namespace wire
