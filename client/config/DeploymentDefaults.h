#pragma once

#include <QString>

// Where this deployment's services run when the user hasn't named others: the web gateway's
// base address (no trailing slash) and the chat server's host. The demo stack serves both on
// this machine.
namespace DeploymentDefaults {
inline const QString WebAddress = QStringLiteral("http://localhost:8080");
inline const QString ChatServer = QStringLiteral("localhost");
} // namespace DeploymentDefaults
