#include "data/TLDataAccess.h"

#include "base/Forms.h"
#include "base/MsgBox.h"
#include "base/Regional.h"
#include "base/Screen.h"
#include "base/TLError.h"
#include "base/Variants.h"
#include "config/frmTLSettings.h"
#include "data/GatewayCall.h"
#include "shell/TLMain.h"
#include "support/modTLErrorManagement.h"
#include "wire/RowsetReader.h"
#include <QHash>

namespace {

bool isReachabilityError(std::int32_t number) {
    return number == err::HostUnreachable || number == err::Unspecified;
}

// The settings dialog counts as showing only when it is the active form.
bool settingsDialogIsActive() {
    QWidget* active = FormRegistry::instance().activeForm();
    if (!active)
        return false;
    const QString activeName = active->objectName().toLower();
    for (const QString& name : FormRegistry::instance().loadedNames())
        if (name == QStringLiteral("frmtlsettings") && name == activeName)
            return true;
    return false;
}

// The table word of each key code.
QString sysTypeTable(std::int32_t sysType) {
    static const QHash<std::int32_t, QString> tables = {
        {2000, QStringLiteral("Contact")},       {2100, QStringLiteral("User")},
        {2200, QStringLiteral("Organization")},  {2300, QStringLiteral("Status")},
        {2400, QStringLiteral("Preference")},    {2500, QStringLiteral("StatusColor")},
        {2600, QStringLiteral("Note")},          {2700, QStringLiteral("OrganizationLocation")},
        {2800, QStringLiteral("Color")},         {2900, QStringLiteral("Download")},
        {3000, QStringLiteral("SecurityGroup")}, {3100, QStringLiteral("SecurityObject")},
        {3200, QStringLiteral("ContactGroup")},  {3300, QStringLiteral("OrganizationGroup")},
        {3400, QStringLiteral("UserContact")},   {3500, QStringLiteral("UserOrganization")},
        {3600, QStringLiteral("Image")},         {3700, QStringLiteral("Session")}};
    return tables.value(sysType);
}

void sysTypeMessage(const QString& problem, std::int32_t sysType) {
    MsgBox(problem + QStringLiteral(": SysType = ") + QString::number(sysType) +
               QStringLiteral(".  (DataAccess::NewSystemNumber)") + QStringLiteral("\r\n") +
               QStringLiteral("Please contact your System Administrator."),
           vb::vbCritical);
}

} // namespace

std::unique_ptr<wire::Recordset> TLDataAccess::LoadADOFromWeb(const QString& strSQL) {
    GatewayCall call(strSQL);
    try {
        call.Send();
        auto rs = std::make_unique<wire::Recordset>(wire::RowsetReader::read(call.Answer()));
        blnErrored = false;
        return rs;
    } catch (...) {
        const Trapped error = CurrentError();
        if (isReachabilityError(error.number)) {
            reachabilityFailure();
            return nullptr;
        }
        QString text = call.ReportText(error.description);
        modTLErrorManagement::ReportAnomaly(QStringLiteral("TLDataAccess:LoadADOFromWeb"), text,
                                            error.number);
        return nullptr;
    }
}

void TLDataAccess::reachabilityFailure() {
    if (!blnErrored)
        MsgBox(QStringLiteral("Tavlo is unable to contact the server.") + QStringLiteral("\r\r") +
                   QStringLiteral("Please check the connection settings."),
               vb::vbCritical);
    Screen::SetMousePointer(Screen::vbDefault);
    blnErrored = true;
    if (!settingsDialogIsActive())
        Form<frmTLSettings>().show();
    ConnectionEnabled = false;
}

void TLDataAccess::ExecuteSQLFromWeb(const QString& strSQL, bool ignoreErrors) {
    if (!ConnectDB())
        return;
    GatewayCall call(strSQL);
    try {
        call.Send();
    } catch (...) {
        const Trapped error = CurrentError();
        if (error.number == err::HostUnreachable || ignoreErrors) {
            ConnectionEnabled = false;
            return;
        }
        QString text = call.ReportText(error.description);
        modTLErrorManagement::ReportAnomaly(QStringLiteral("TLDataAccess:ExecuteSQLFromWeb"), text,
                                            error.number);
    }
}

bool TLDataAccess::ConnectDB() {
    OnceConnected = true;
    Screen::SetMousePointer(Screen::vbHourglass);
    Screen::SetMousePointer(Screen::vbDefault);
    return true;
}

std::int32_t TLDataAccess::NewSystemNumber(std::int32_t SysType) {
    const QString table = sysTypeTable(SysType);
    if (table.isEmpty()) {
        sysTypeMessage(QStringLiteral("Invalid SysType"), SysType);
        return 0;
    }
    try {
        m_lastSql = QStringLiteral("EXECUTE GetSysVB '") + table + QLatin1Char('\'');
        const auto rs = LoadADOFromWeb(m_lastSql);
        if (!rs)
            Raise(err::NoObject);
        if (rs->Eof()) {
            sysTypeMessage(QStringLiteral("SysType not available"), SysType);
            return 0;
        }
        const QVariant next = rs->Fields(QStringLiteral("NextAvailableSys")).Value();
        if (Variants::IsNull(next)) {
            sysTypeMessage(QStringLiteral("SysType not found"), SysType);
            return 0;
        }
        return Variants::CLng(next);
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("NewSystemNumber"));
        return 0;
    }
}

QString TLDataAccess::CheckLatestVersion() {
    try {
        const auto rs = LoadADOFromWeb(QStringLiteral("EXECUTE tl_VersionCheck"));
        // No recordset: the gateway has told the user already.
        if (!rs || rs->Eof())
            return QString();
        auto field = [&](const char* name) { return rs->Fields(QLatin1String(name)).Value(); };
        const QString version = DBOStr(field("VersionString"));
        auto& root = TLMain();
        root.LatestVersionMajor = static_cast<std::int16_t>(DBOLong(field("VersionMajor")));
        root.LatestVersionMinor = static_cast<std::int16_t>(DBOLong(field("VersionMinor")));
        root.LatestVersionRevision = static_cast<std::int16_t>(DBOLong(field("VersionRevision")));
        auto& ftp = root.FTP();
        ftp.strFTPSite = DBOStr(field("FTPSite"));
        ftp.strFTPDirectory = DBOStr(field("FTPDirectory"));
        ftp.strFTPUpdateFileName = DBOStr(field("FTPUpdateFileName"));
        ftp.strFTPUserName = DBOStr(field("FTPUserName"));
        ftp.strFTPPassword = DBOStr(field("FTPPassword"));
        // A server that publishes the file's digest lets the client check what it fetched.
        ftp.strUpdateSha256 = rs->HasField(QStringLiteral("UpdateSha256"))
                                  ? DBOStr(field("UpdateSha256")).toLower()
                                  : QString();
        return version;
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("frmTLMain:LoadLegendColors"));
        return QString();
    }
}

QString TLDataAccess::DBIn(const QString& text, bool nullWhenEmpty, bool appendWildcard) {
    const QString trimmed = Variants::Trim(text);
    if (trimmed.isEmpty())
        return nullWhenEmpty ? QStringLiteral("NULL") : QStringLiteral("''");
    QString quoted = trimmed;
    quoted.replace(QLatin1Char('\''), QStringLiteral("''"));
    return QLatin1Char('\'') + quoted +
           (appendWildcard ? QStringLiteral("%'") : QStringLiteral("'"));
}

QString TLDataAccess::DBOStr(const QVariant& value) {
    if (Variants::IsNull(value))
        return QString();
    try {
        return Variants::Trim(Variants::CStr(value));
    } catch (...) {
        return QString();
    }
}

std::int32_t TLDataAccess::DBOLong(const QVariant& value) {
    if (Variants::IsNull(value))
        return 0;
    // A whole number that fits reads as itself; going through its text gives the same, slower.
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::UChar:
    case QMetaType::SChar:
        return value.toInt();
    case QMetaType::LongLong:
    case QMetaType::UInt: {
        const qlonglong whole = value.toLongLong();
        if (whole >= INT32_MIN && whole <= INT32_MAX)
            return std::int32_t(whole);
        break;
    }
    default:
        break;
    }
    try {
        return Regional::CLng(Regional::Val(Variants::CStr(value)));
    } catch (...) {
        return 0;
    }
}
