#include "notes/frmTLContactSelection.h"

#include "base/MsgBox.h"
#include "base/TLError.h"
#include "board/frmTLView.h"
#include "directory/DirectoryLoaders.h"
#include "notes/frmTLLeaveNote.h"
#include "shell/TLMain.h"
#include <QCloseEvent>
#include <QStyle>

namespace {
constexpr int kKeyRole = Qt::UserRole;
}

frmTLContactSelection::frmTLContactSelection() {
    setupUi(this);
    setObjectName(QStringLiteral("frmTLContactSelection"));
    TLMain().Functions().ShowOnTop(this, true);
    connect(trvOrganizations, &QTreeWidget::itemClicked, this,
            &frmTLContactSelection::trvOrganizations_NodeClick);
    connect(lsvContactNames, &QListWidget::itemDoubleClicked, this,
            &frmTLContactSelection::cmdOK_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmTLContactSelection::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmTLContactSelection::cmdCancel_Click);
}

bool frmTLContactSelection::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) {
        Cancel = false;
        LoadOrganizationList();
    }
    return QDialog::event(event);
}

void frmTLContactSelection::ClearOrganizations() {
    for (long n = Organizations.Count(); n > 0; --n)
        Organizations.Remove(1);
}

void frmTLContactSelection::ClearContacts() {
    for (long n = Contacts.Count(); n > 0; --n)
        Contacts.Remove(1);
}

// Every company comes back; only the user's own is kept.
void frmTLContactSelection::LoadOrganizationList() {
    ClearOrganizations();
    const auto rs =
        TLMain().DataAccess().LoadADOFromWeb(QStringLiteral("EXECUTE tl_GetCompanyList"));
    if (rs && rs->RecordCount() != 0) { // no answer: the gateway has told the user
        for (; !rs->Eof(); rs->MoveNext()) {
            auto organization = std::make_shared<TLOrganization>();
            organization->FillObjectWithRecordSet(rs.get());
            if (organization->OrganizationSys == TLMain().ActiveOrganization().OrganizationSys)
                Organizations.Add(organization, organization->Key());
        }
    }
    FillOrganizationTree();
}

void frmTLContactSelection::FillOrganizationTree() {
    const QIcon closed = style()->standardIcon(QStyle::SP_DirClosedIcon);
    trvOrganizations->clear();
    auto* all = new QTreeWidgetItem(trvOrganizations, {QStringLiteral("All")});
    all->setData(0, kKeyRole, QStringLiteral("ALL"));
    all->setIcon(0, closed);
    all->setExpanded(true);
    for (const auto& entry : Organizations) {
        auto* node = new QTreeWidgetItem(all, {entry.item->OrganizationName}); // owned by the tree
        node->setData(0, kKeyRole, entry.item->Key());
        node->setIcon(0, closed);
        if (entry.item->OrganizationSys == TLMain().ActiveOrganization().OrganizationSys) {
            trvOrganizations->setCurrentItem(node);
            LoadContacts(*entry.item);
        }
    }
    all->setExpanded(true);
}

void frmTLContactSelection::LoadContacts(const TLOrganization& objOrganization) {
    ClearContacts();
    const auto rs =
        TLMain().DataAccess().LoadADOFromWeb(QStringLiteral("EXECUTE tl_GetContactList ") +
                                             QString::number(objOrganization.OrganizationSys));
    if (rs && rs->RecordCount() != 0) {
        for (; !rs->Eof(); rs->MoveNext()) {
            auto contact = std::make_shared<TLContact>();
            contact->FillObjectWithRecordSet(rs.get());
            Contacts.Add(contact, contact->Key());
        }
    }
    FillContactList();
}

// Each statement passes over its own failure.
void frmTLContactSelection::FillContactList() {
    Guard([&] { lsvContactNames->clear(); });
    for (const auto& entry : Contacts)
        Guard([&] {
            auto* item = new QListWidgetItem(entry.item->FullName(), lsvContactNames);
            item->setData(kKeyRole, entry.item->Key());
        });
}

// The root "All" is no organisation: a click on it leaves the list as it was.
void frmTLContactSelection::trvOrganizations_NodeClick(QTreeWidgetItem* node) {
    if (!node)
        return;
    const auto organization =
        GetObjectFromCollection(Organizations, node->data(0, kKeyRole).toString());
    if (organization)
        LoadContacts(*organization);
}

void frmTLContactSelection::cmdOK_Click() {
    const auto picked = lsvContactNames->selectedItems();
    if (picked.isEmpty()) {
        MsgBox(QStringLiteral("Sorry, you must select a contact name from the right panel to "
                              "continue"),
               vb::vbInformation);
    } else {
        ContactSelected = Contacts[picked.first()->data(kKeyRole).toString()];
        if (ContactFunction == kChat) {
            Form<frmTLView>().Chat(ContactSelected->UserName);
        } else if (ContactFunction == kNote) {
            auto& note = Form<frmTLLeaveNote>();
            note.Contact = *ContactSelected;
            note.show();
        }
    }
    Cancel = false;
    Unload<frmTLContactSelection>();
}

void frmTLContactSelection::cmdCancel_Click() {
    Cancel = true;
    Unload<frmTLContactSelection>();
}

void frmTLContactSelection::closeEvent(QCloseEvent* event) {
    event->accept();
    cmdCancel_Click();
}
