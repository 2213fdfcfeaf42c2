#include "directory/DirectoryLoaders.h"

#include "base/Forms.h"
#include "base/TLError.h"
#include "config/frmTLSettings.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "support/modTLErrorManagement.h"
#include <QComboBox>

namespace {

// The trap every loader ends with: report the failure under the loader's place.

// Runs a read; a missing answer raises 91 like any use of a missing recordset.
std::unique_ptr<wire::Recordset> read(const QString& sql) {
    auto rs = TLMain().DataAccess().LoadADOFromWeb(sql);
    if (!rs)
        Raise(err::NoObject);
    return rs;
}

} // namespace

void LoadAvailableStatuses() {
    try {
        modTLMain::ClearStatuses();
        auto& root = TLMain();
        const auto rs = read(QStringLiteral("EXECUTE tl_GetAvailableStatuses %1,%2,%3")
                                 .arg(root.ActiveOrganization().OrganizationSys)
                                 .arg(root.ActiveUser().UserSys())
                                 .arg(root.ActiveContact().ContactSys));
        if (rs->RecordCount() == 0)
            return;
        for (; !rs->Eof(); rs->MoveNext()) {
            auto status = std::make_shared<TLStatus>();
            status->FillObjectWithRecordSet(rs.get());
            modTLMain::colStatuses().Add(status, status->Key());
        }
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("LoadAvailableStatuses"));
    }
}

void LoadAvailableGroups(const QString& /*organizationKey: not part of the statement*/) {
    try {
        modTLMain::ClearGroups();
        const auto rs = read(QStringLiteral("EXECUTE tl_GetOrganizationGroups %1")
                                 .arg(TLMain().ActiveOrganization().OrganizationSys));
        if (rs->RecordCount() == 0)
            return;
        for (; !rs->Eof(); rs->MoveNext()) {
            auto group = std::make_shared<TLGroup>();
            group->FillObjectWithRecordSet(rs.get());
            modTLMain::colGroups().Add(group, group->Key());
        }
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("LoadAvailableGroups"));
    }
}

void LoadAvailableLocations(QComboBox* cboLocation) {
    try {
        cboLocation->clear();
        cboLocation->addItem(QStringLiteral("<All>"), 0);
        const auto rs = read(QStringLiteral("EXECUTE tl_GetOrganizationLocations %1")
                                 .arg(TLMain().ActiveOrganization().OrganizationSys));
        auto& data = TLMain().DataAccess();
        if (rs->RecordCount() != 0) {
            for (; !rs->Eof(); rs->MoveNext()) {
                cboLocation->addItem(
                    data.DBOStr(rs->Fields(QStringLiteral("LocationName")).Value()));
                cboLocation->setItemData(
                    cboLocation->count() - 1,
                    data.DBOLong(rs->Fields(QStringLiteral("OrganizationLocationSys")).Value()));
            }
        }
        LoadLocationSetting();
    } catch (...) {
        if (CurrentError().number == err::NoObject)
            return; // no answer: the gateway has said so already
        modTLErrorManagement::ReportTrapped(QStringLiteral("LoadAvailableLocations"));
    }
}

void LoadLocationSetting() {
    try {
        auto* combo = Form<frmTLSettings>().cboLocation;
        combo->setCurrentIndex(0);
        auto& settings = TLMain().Settings();
        const auto home = TLMain().ActiveUser().OrganizationLocationSys();
        if (settings.OrganizationLocationSys() == 0 && home >= 1)
            settings.SetOrganizationLocationSys(home);
        const auto chosen = settings.OrganizationLocationSys();
        if (chosen == 0 || chosen == -1)
            return;
        for (int i = 0; i < combo->count(); ++i) {
            if (combo->itemData(i).toInt() == chosen) {
                combo->setCurrentIndex(i);
                return;
            }
        }
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("LoadLocationSetting"));
    }
}
