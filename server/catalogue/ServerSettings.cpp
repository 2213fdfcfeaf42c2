#include "ServerSettings.h"

namespace {

ServerSettings& current() {
    static ServerSettings settings;
    return settings;
}

} // namespace

const ServerSettings& ServerSettings::Current() {
    return current();
}

void ServerSettings::Set(ServerSettings settings) {
    current() = std::move(settings);
}
