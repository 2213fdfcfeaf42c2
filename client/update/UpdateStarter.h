#pragma once

#include <QString>

// Starts a fetched update file on its own, not waiting for it: made executable, told which
// folder to install into and which process to wait for, so that it can replace this program.
namespace UpdateStarter {

bool Start(const QString& path);

} // namespace UpdateStarter
