#include "shell/TLMainObject.h"

#include "platform/HostInfo.h"
#include "shell/AppVersion.h"
#include <QCoreApplication>
#include <QFileInfo>

QString TLMainObject::VersionCheck() const {
    const QString exe = QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName();
    return exe + QStringLiteral(" v") + AppVersion::Text();
}

QString TLMainObject::ComputerName() const {
    return HostInfo::LocalHostName();
}

QString TLMainObject::IPAddress() const {
    return HostInfo::LocalIP();
}

TLMainObject& TLMain() {
    static TLMainObject root;
    return root;
}
