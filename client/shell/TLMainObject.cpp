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

void TLMainObject::Destroy() {
    m_Settings.release();
    m_Constants.release();
    m_DataAccess.release();
    m_ActiveStatus.release();
    m_ActiveContact.release();
    m_ActiveUser.release();
    m_ActiveGroup.release();
    m_ActiveStatusRow.release();
    m_SelectedStatus.release();
    m_SelectedContact.release();
    m_SelectedUser.release();
    m_SelectedGroup.release();
    m_SelectedStatusRow.release();
    m_Functions.release();
    m_SpreadColumns.release();
    m_SpreadColumnNotes.release();
}

TLMainObject& TLMain() {
    static TLMainObject root;
    return root;
}
