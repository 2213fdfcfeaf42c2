#include "directory/TLContact.h"

#include "base/Forms.h"
#include "base/Regional.h"
#include "base/TLError.h"
#include "board/frmTLView.h"
#include "directory/DirectoryLoaders.h"
#include "directory/OptionalColumns.h"
#include "directory/SignedKey.h"
#include "directory/TLStatus.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "support/modTLErrorManagement.h"

QString TLContact::Key() const {
    return SignedKey(ContactSys);
}

void TLContact::FillObjectWithRecordSet(const wire::Recordset* rs) {
    OptionalColumns c(rs);
    c.Text(QStringLiteral("FirstName"), QStringLiteral(",FirstName"), FirstName);
    c.Text(QStringLiteral("LastName"), QStringLiteral(",LastName"), LastName);
    c.Long(QStringLiteral("ContactSys"), QStringLiteral(",ContactSys"), ContactSys);
    c.Long(QStringLiteral("UserSys"), QStringLiteral(",UserSys"), UserSys);
    c.UntrimmedText(QStringLiteral("UserName"), QStringLiteral(",UserName"), UserName);
    c.Long(QStringLiteral("OrganizationSys"), QStringLiteral(",OrganizationSys"), OrganizationSys);
    c.Text(QStringLiteral("Phone"), QStringLiteral(",Phone"), PhoneNumber);
    c.Text(QStringLiteral("Fax"), QStringLiteral(",Fax"), Fax);
    c.Text(QStringLiteral("Ext"), QStringLiteral(",Extension"), Extension);
    c.Text(QStringLiteral("Position"), QStringLiteral(",Position"), Position);
    c.Text(QStringLiteral("EmailAddress"), QStringLiteral(",EMailAddress"), EmailAddress);
    c.Text(QStringLiteral("ContactPictureLocation"), QStringLiteral(",ContactPictureLocation"),
           PictureLocation);
    c.Text(QStringLiteral("Pager"), QStringLiteral(",Pager"), Pager);
    c.Text(QStringLiteral("Cell"), QStringLiteral(",Cell"), Cell);
    c.Text(QStringLiteral("HomePhone"), QStringLiteral(",HomePhone"), HomePhoneNumber);
    c.Text(QStringLiteral("HomeAddress"), QStringLiteral(",HomeAddress"), HomeAddress);
    c.Text(QStringLiteral("HomeCity"), QStringLiteral(",HomeCity"), HomeCity);
    c.Text(QStringLiteral("HomeState"), QStringLiteral(",HomeState"), HomeState);
    c.Text(QStringLiteral("HomeZip"), QStringLiteral(",HomeZip"), HomeZip);
    c.Text(QStringLiteral("HomeFax"), QStringLiteral(",HomeFax"), HomeFax);
    c.Text(QStringLiteral("HomeEMail"), QStringLiteral(",HomeEMail"), HomeEMailAddress);
    c.Text(QStringLiteral("HireDate"), QStringLiteral(",HireDate"), HireDate);
    c.Text(QStringLiteral("DateAdded"), QStringLiteral(",DateAdded"), DateAdded);
    c.Text(QStringLiteral("ToolTip"), QStringLiteral(",ToolTip"), ToolTip);
    c.TrimmedLong(QStringLiteral("ShowHomeInfo"), QStringLiteral(",ShowHomeInfo"), ShowHomeInfo);
}

namespace {

// The trap of the two methods that talk to the server: a missing answer ends them quietly.
void reportUnlessNoObject(const QString& place) {
    if (CurrentError().number != err::NoObject)
        modTLErrorManagement::ReportTrapped(place);
}

} // namespace

std::unique_ptr<TLStatus> TLContact::GetContactStatus(std::int32_t contactSys) const {
    const auto rs = TLMain().DataAccess().LoadADOFromWeb(
        QStringLiteral("EXEC tl_GetUserStatuses ") + QStringLiteral("NULL") + QLatin1Char(',') +
        QString::number(contactSys) + QLatin1Char(',') + QString::number(OrganizationSys) +
        QStringLiteral(",NULL"));
    auto status = std::make_unique<TLStatus>();
    status->FillObjectWithRecordSet(rs.get());
    return status;
}

void TLContact::UpdateContactStatus(std::int32_t contactSys, std::int32_t statusSys,
                                    const QString& returningDate, const QString& returningTime,
                                    const QString& comment) {
    try {
        auto& root = TLMain();
        auto& data = root.DataAccess();
        ContactSys = contactSys;
        QString sql = QStringLiteral("EXEC tl_SetStatus ") + QString::number(contactSys) +
                      QLatin1Char(',') + QString::number(statusSys);
        if (!returningDate.isEmpty() && Regional::IsDate(returningDate))
            sql += QLatin1Char(',') + data.DBIn(Regional::Format(Regional::CDate(returningDate),
                                                                 QStringLiteral("mm/dd/yyyy")) +
                                                    QLatin1Char(' ') + returningTime,
                                                false, false);
        else
            sql += QStringLiteral(",NULL");
        if (!returningTime.isEmpty() && Regional::IsDate(returningTime))
            sql += QLatin1Char(',') + data.DBIn(returningTime, false, false);
        else
            sql += QStringLiteral(",NULL");
        if (!comment.isEmpty())
            sql += QLatin1Char(',') + data.DBIn(comment, false, false);
        else
            sql += QStringLiteral(",NULL");
        sql += QLatin1Char(',') + QString::number(root.ActiveUser().UserSys());
        data.ExecuteSQLFromWeb(sql, false);
        modTLMain::BuildMenuItems();

        // A status the list doesn't hold fails here, after the server has it.
        const auto status = modTLMain::colStatuses()[QString::number(statusSys)];
        if (!root.ActiveUser().ValidUser() || root.ActiveUser().ContactSys() != ContactSys)
            return;
        root.ActiveStatus().CopyStatusObject(*status);
        root.ActiveStatusRow().Comment = comment;
        Form<frmTLView>()
            .StatusBarBottom->Panel(QStringLiteral("status"))
            ->setText(QStringLiteral("Status: ") + root.ActiveStatus().StatusText);
    } catch (...) {
        reportUnlessNoObject(QStringLiteral("TLContact:UpdateContactStatus"));
    }
}

void TLContact::LoadContactDetails(std::int32_t contactSys) {
    try {
        if (contactSys != -1)
            ContactSys = contactSys;
        const auto rs = TLMain().DataAccess().LoadADOFromWeb(
            QStringLiteral("tl_GetContactInformation ") + QString::number(ContactSys));
        if (!rs)
            Raise(err::NoObject);
        if (!rs->Eof())
            FillObjectWithRecordSet(rs.get());
    } catch (...) {
        reportUnlessNoObject(QStringLiteral("TLContact:LoadContactDetails"));
    }
}
