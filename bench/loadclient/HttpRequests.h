#pragma once

#include <string>
#include <string_view>

namespace load {

// The raw requests the tray client's libcurl sends, built once and sent many times.
namespace requests {

// The gateway's form body: "strSQL=" and the statement with every byte that is not an ASCII
// letter or digit written as %XX (upper-case hex), as the client's encoder does.
std::string gatewayBody(std::string_view sql);

// POST /XMLDemo.asp with the client's headers; cookie is the session value (may be empty).
std::string statement(std::string_view host, std::string_view cookie, std::string_view sql);

// A plain GET of path.
std::string get(std::string_view host, std::string_view path);

} // namespace requests

} // namespace load
