#include "TLSettings.h"

#include "DeploymentDefaults.h"
#include "platform/CommandLine.h"
#include "platform/NetworkState.h"

QString TLSettings::WebAddress() const {
    return m_webAddress.isEmpty() ? DeploymentDefaults::WebAddress : m_webAddress;
}

QString TLSettings::ChatServer() const {
    return m_chatServer.isEmpty() ? DeploymentDefaults::ChatServer : m_chatServer;
}

bool TLSettings::NetworkConnected() const {
    return NetworkState::IsNetworkAlive() && !CommandLine::HasIgnoreNetwork();
}
