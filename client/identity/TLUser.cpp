#include "identity/TLUser.h"

#include "base/Forms.h"
#include "base/MsgBox.h"
#include "base/TLError.h"
#include "base/Variants.h"
#include "board/frmTLView.h"
#include "config/MakerAddresses.h"
#include "config/frmTLSettings.h"
#include "config/modTLRegistry.h"
#include "directory/DirectoryLoaders.h"
#include "directory/OptionalColumns.h"
#include "directory/StatusNumbers.h"
#include "shell/TLMain.h"
#include "shell/frmTLMain.h"
#include "shell/modTLMain.h"
#include "support/modTLErrorManagement.h"

namespace {

constexpr std::int32_t kSessionKeys = 3700;

// A column that holds the number 0; Null is no number and so never equals it.
bool holdsZero(const wire::Recordset& rs, const QString& column) {
    const QVariant value = rs.Fields(column).Value();
    return !Variants::IsNull(value) && Variants::CLng(value) == 0;
}

// The windows that belong to a signed-in user; the board stays, its callers decide.
const QStringList& userWindows() {
    static const QStringList names = {QStringLiteral("frmtlchat"),
                                      QStringLiteral("frmtlleavenote"),
                                      QStringLiteral("frmtlreadnotes"),
                                      QStringLiteral("frmtlhelpdesk"),
                                      QStringLiteral("frmtlcontactselection"),
                                      QStringLiteral("frmtlupdate")};
    return names;
}

} // namespace

void TLUser::FillObjectWithRecordSet(const wire::Recordset* rs) {
    OptionalColumns c(rs);
    c.Long(QStringLiteral("UserSys"), QStringLiteral(",UserSys"), m_userSys);
    c.UntrimmedText(QStringLiteral("UserName"), QStringLiteral(",UserName"), m_userName);
    c.Long(QStringLiteral("ChatStatus"), QStringLiteral(",ChatStatus"), m_chatStatus);
}

bool TLUser::Login(const QVariant& userName, const QVariant& password) {
    try {
        return loginSteps(Variants::CStr(userName), Variants::CStr(password));
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("errLogin"));
        return false;
    }
}

bool TLUser::loginSteps(const QString& userName, const QString& password) {
    auto& root = TLMain();
    auto& data = root.DataAccess();
    if (!root.Settings().ConnectedNorvaneServer) {
        Logout();
        MsgBox(QStringLiteral("To Login, you must be connected to the Norvane Server .") +
                   QStringLiteral("\r\r") + QStringLiteral("Please connect and try again!"),
               vb::vbCritical);
        return false;
    }
    const auto rs =
        data.LoadADOFromWeb(QStringLiteral("EXEC LoginCheck ") + data.DBIn(userName, false, false) +
                            QLatin1Char(',') + data.DBIn(password, false, false));
    if (!rs)
        return false;
    if (rs->Eof()) {
        Logout();
        Unload<frmTLView>();
        MsgBox(QStringLiteral("Invalid Login, please try again!"), vb::vbCritical);
        return false;
    }
    if (accountRefused(*rs))
        return false;
    applyChatDisabled(*rs);

    m_userName = userName;
    m_password = password;
    m_contactSys = data.DBOLong(rs->Fields(QStringLiteral("ContactSys")).Value());
    root.ActiveOrganization().FillObjectWithRecordSet(rs.get());
    root.ActiveContact().FillObjectWithRecordSet(rs.get());
    root.SetActiveStatus(root.ActiveContact().GetContactStatus(m_contactSys));
    m_userSys = Variants::CLng(data.DBOStr(rs->Fields(QStringLiteral("UserSys")).Value()));
    LoadAvailableStatuses();
    LoadAvailableGroups(root.ActiveOrganization().Key());
    m_organizationLocationSys =
        data.DBOLong(rs->Fields(QStringLiteral("OrganizationLocationSys")).Value());
    LoadAvailableLocations(Form<frmTLSettings>().cboLocation);
    LoadLocationSetting();
    m_validUser = true;

    if (root.Settings().AutoStatusIn)
        root.ActiveContact().UpdateContactStatus(m_contactSys, kStatusIn, QString(), QString(),
                                                 QString());
    modTLMain::ChatConnect(false);
    SetSecurity();
    modTLMain::ManageApplicationSecurity();
    Form<frmTLMain>().UpdateNoteCountFromDatabase();
    modTLMain::BuildMenuItems();
    Form<frmTLView>().LoadLegendColors();
    Form<frmTLView>().UpdateStatusBar();
    Form<frmTLMain>().ShowApplicationView(root.Settings().ViewChoice);
    SetSession(true);
    return true;
}

bool TLUser::accountRefused(const wire::Recordset& rs) {
    if (holdsZero(rs, QStringLiteral("ActiveUser"))) {
        MsgBox(QStringLiteral("Your account has been removed.  Please contact Norvane support at "
                              "(877)-NORVANE or ") +
                   MakerAddresses::SupportMail + QStringLiteral(" for assistance."),
               vb::vbCritical);
        return true;
    }
    if (holdsZero(rs, QStringLiteral("ActiveOrganization"))) {
        MsgBox(QStringLiteral("Your organization has been disabled.  Please see your administrator "
                              "or contact Norvane support at (877)-NORVANE or ") +
                   MakerAddresses::SupportMail + QStringLiteral(" for assistance."),
               vb::vbCritical);
        return true;
    }
    return false;
}

// An older server may lack the column; then chat stays as the user set it.
void TLUser::applyChatDisabled(const wire::Recordset& rs) {
    Guard([&] {
        const QVariant value = rs.Fields(QStringLiteral("ChatDisabled")).Value();
        if (Variants::IsNull(value) || Variants::CLng(value) != 1)
            return;
        TLMain().Settings().EnableChat = false;
        Form<frmTLSettings>().chkEnableChat->setChecked(false);
        modTLRegistry::SaveSettings();
        TLMain().ActiveOrganization().ChatDisabled = true;
    });
}

void TLUser::Logout() {
    auto& root = TLMain();
    if (auto* board = LoadedForm<frmTLView>(); m_validUser && board && board->Socket)
        modTLMain::ChatDisConnect();
    if (m_validUser && root.Settings().AutoStatusIn && root.ActiveStatus().StatusSys == kStatusIn)
        root.ActiveContact().UpdateContactStatus(m_contactSys, kStatusOut, QStringLiteral("NULL"),
                                                 QStringLiteral("NULL"),
                                                 QStringLiteral("Tavlo Shut Down"));
    auto& forms = FormRegistry::instance();
    for (const QString& name : forms.loadedNames())
        if (userWindows().contains(name))
            forms.unload(forms.findByName(name));

    m_rights.clear();
    m_userName.clear();
    m_userSys = 0;
    m_contactSys = 0;
    m_firstName.clear();
    m_lastName.clear();
    m_password.clear();
    m_validUser = false;
    modTLMain::BuildMenuItems();
    modTLMain::ManageApplicationSecurity();
    SetSession(false);
}

void TLUser::SetSession(bool opening) {
    try {
        auto& root = TLMain();
        QString sql;
        if (opening) {
            m_sessionSys = root.DataAccess().NewSystemNumber(kSessionKeys);
            sql = QStringLiteral("INSERT INTO Sessions ") +
                  QStringLiteral("(SessionSys, SalesmanSys, SessionDetails, LoginDate, "
                                 "ComputerName,IPAddress,UserSys) VALUES (") +
                  QString::number(m_sessionSys) + QLatin1Char(',') + QString::number(m_contactSys) +
                  QLatin1Char(',') + QLatin1Char('\'') + root.VersionCheck() +
                  QStringLiteral("',") + QStringLiteral("getdate()") + QLatin1Char(',') +
                  QLatin1Char('\'') + root.ComputerName() + QStringLiteral("',") +
                  QLatin1Char('\'') + root.IPAddress() + QStringLiteral("',") +
                  QString::number(m_userSys) + QLatin1Char(')');
        } else {
            sql = QStringLiteral("UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = ") +
                  QString::number(m_sessionSys);
        }
        root.DataAccess().ExecuteSQLFromWeb(sql, false);
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("SetSession"));
    }
}

void TLUser::SetSecurity() {
    try {
        m_rights.clear();
        auto& data = TLMain().DataAccess();
        const auto rs = data.LoadADOFromWeb(QStringLiteral("EXECUTE tl_GetUserSecurity ") +
                                            QString::number(m_userSys));
        if (!rs)
            Raise(err::NoObject);
        if (rs->RecordCount() == 0)
            return;
        for (; !rs->Eof(); rs->MoveNext()) {
            const QVariant value = rs->Fields(QStringLiteral("SecurityObjectSys")).Value();
            if (!Variants::IsNull(value))
                m_rights += QLatin1Char('|') + Variants::CStr(value) + QLatin1Char('|');
        }
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("SetSecurity"));
    }
}

bool TLUser::CheckSecurity(std::int32_t securityObjectSys, const QString& action) {
    if (m_rights.contains(QLatin1Char('|') + QString::number(securityObjectSys) + QLatin1Char('|')))
        return true;
    if (!action.isEmpty())
        MsgBox(QStringLiteral("Sorry!  You do not have permission to ") + action + QLatin1Char('.'),
               vb::vbCritical);
    return false;
}
