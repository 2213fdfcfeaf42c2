#include "update/UpdateStarter.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>

namespace UpdateStarter {

bool Start(const QString& path) {
    QFile::setPermissions(path,
                          QFile::permissions(path) | QFileDevice::ExeOwner | QFileDevice::ExeUser);
    QProcess update;
    update.setProgram(path);
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TAVLO_INSTALL_DIR"), QCoreApplication::applicationDirPath());
    environment.insert(QStringLiteral("TAVLO_UPDATE_WAIT_PID"),
                       QString::number(QCoreApplication::applicationPid()));
    update.setProcessEnvironment(environment);
    return update.startDetached();
}

} // namespace UpdateStarter
