#include "HttpRequests.h"

namespace load::requests {

namespace {

bool isAsciiAlnum(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

} // namespace

std::string gatewayBody(std::string_view sql) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string body = "strSQL=";
    body.reserve(body.size() + sql.size() * 3);
    for (const char ch : sql) {
        const auto c = static_cast<unsigned char>(ch);
        if (isAsciiAlnum(c)) {
            body += ch;
        } else {
            body += '%';
            body += kHex[c >> 4];
            body += kHex[c & 0xF];
        }
    }
    return body;
}

std::string statement(std::string_view host, std::string_view cookie, std::string_view sql) {
    const std::string body = gatewayBody(sql);
    std::string text = "POST /XMLDemo.asp HTTP/1.1\r\nHost: ";
    text.append(host).append("\r\nAccept: */*\r\n");
    if (!cookie.empty())
        text.append("Cookie: TavloSession=").append(cookie).append("\r\n");
    text.append("lastCached:\r\nContent-Type: application/x-www-form-urlencoded\r\n");
    text.append("Content-Length: ").append(std::to_string(body.size())).append("\r\n\r\n");
    return text.append(body);
}

std::string get(std::string_view host, std::string_view path) {
    std::string text = "GET ";
    text.append(path).append(" HTTP/1.1\r\nHost: ").append(host).append("\r\nAccept: */*\r\n\r\n");
    return text;
}

} // namespace load::requests
