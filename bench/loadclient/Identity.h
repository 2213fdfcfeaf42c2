#pragma once

#include <string>

namespace load {

// A signed-in user: the session the server gave and the keys its statements name.
struct Identity {
    std::string user;
    std::string cookie;
    long contactSys = 0;
    long userSys = 0;
};

} // namespace load
