#include "GatewayPost.h"

#include "CookieJar.h"
#include "Cp1252.h"
#include "FormEncoding.h"
#include <curl/curl.h>
#include <memory>
#include <mutex>

namespace wire {

namespace {

void initialiseOnce() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

size_t appendBody(char* data, size_t size, size_t count, void* target) {
    static_cast<QByteArray*>(target)->append(data, qsizetype(size * count));
    return size * count;
}

struct EasyDeleter {
    void operator()(CURL* h) const { curl_easy_cleanup(h); }
};
struct ListDeleter {
    void operator()(curl_slist* l) const { curl_slist_free_all(l); }
};

// Header values travel as single-byte text; line breaks would end the header early.
// Runs the prepared request; a transport failure leaves no body.
void perform(CURL* h, GatewayReply& reply, const char* errorText) {
    const CURLcode rc = curl_easy_perform(h);
    curl_easy_getinfo(h, CURLINFO_RESPONSE_CODE, &reply.httpStatus);
    if (rc != CURLE_OK) {
        reply.transportError = QString::fromUtf8(errorText[0] ? errorText : curl_easy_strerror(rc));
        reply.body.clear();
        return;
    }
    reply.transportOk = true;
}

QByteArray headerValue(const QString& text) {
    QByteArray value = cp1252::encode(text);
    value.replace('\r', ' ').replace('\n', ' ');
    return value;
}

} // namespace

QByteArray gatewayBody(const QString& sql) {
    return QByteArrayLiteral("strSQL=") + form::URLEncode(sql).toLatin1();
}

GatewayReply postStatement(const GatewayRequest& request) {
    initialiseOnce();
    GatewayReply reply;
    std::unique_ptr<CURL, EasyDeleter> easy(curl_easy_init());
    if (!easy) {
        reply.transportError = QStringLiteral("could not start an HTTP request");
        return reply;
    }
    CURL* h = easy.get();

    const QByteArray url = (request.baseUrl + QStringLiteral("/XMLDemo.asp")).toUtf8();
    const QByteArray body = gatewayBody(request.sql);
    curl_slist* list = nullptr;
    // Every caller stamps the request with the present moment, so the value is never empty.
    list = curl_slist_append(list, ("lastCached: " + headerValue(request.lastCached)).constData());
    list = curl_slist_append(list, "Content-Type: application/x-www-form-urlencoded");
    list = curl_slist_append(list, "Expect:"); // no 100-continue round trip
    std::unique_ptr<curl_slist, ListDeleter> headers(list);

    char errorText[CURL_ERROR_SIZE] = {};
    curl_easy_setopt(h, CURLOPT_URL, url.constData());
    curl_easy_setopt(h, CURLOPT_POST, 1L);
    curl_easy_setopt(h, CURLOPT_POSTFIELDS, body.constData());
    curl_easy_setopt(h, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(body.size()));
    curl_easy_setopt(h, CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, appendBody);
    curl_easy_setopt(h, CURLOPT_WRITEDATA, &reply.body);
    curl_easy_setopt(h, CURLOPT_ERRORBUFFER, errorText);
    curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);   // safe from any thread
    curl_easy_setopt(h, CURLOPT_COOKIEFILE, ""); // cookies on, kept in memory only
    curl_easy_setopt(h, CURLOPT_SHARE,
                     (request.cookies ? request.cookies : &CookieJar::process())->share());
    if (request.timeoutMs > 0)
        curl_easy_setopt(h, CURLOPT_TIMEOUT_MS, request.timeoutMs);
    if (request.connectTimeoutMs > 0)
        curl_easy_setopt(h, CURLOPT_CONNECTTIMEOUT_MS, request.connectTimeoutMs);

    perform(h, reply, errorText);
    return reply;
}

GatewayReply getUrl(const QString& url, long timeoutMs) {
    initialiseOnce();
    GatewayReply reply;
    std::unique_ptr<CURL, EasyDeleter> easy(curl_easy_init());
    if (!easy) {
        reply.transportError = QStringLiteral("could not start an HTTP request");
        return reply;
    }
    CURL* h = easy.get();
    const QByteArray address = url.toUtf8();
    char errorText[CURL_ERROR_SIZE] = {};
    curl_easy_setopt(h, CURLOPT_URL, address.constData());
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, appendBody);
    curl_easy_setopt(h, CURLOPT_WRITEDATA, &reply.body);
    curl_easy_setopt(h, CURLOPT_ERRORBUFFER, errorText);
    curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(h, CURLOPT_FOLLOWLOCATION, 1L);
    if (timeoutMs > 0)
        curl_easy_setopt(h, CURLOPT_TIMEOUT_MS, timeoutMs);
    perform(h, reply, errorText);
    return reply;
}

} // namespace wire
