#pragma once

#include "base/Forms.h"
#include "base/KeyedCollection.h"
#include "directory/TLContact.h"
#include "directory/TLOrganization.h"
#include "ui_frmTLContactSelection.h"
#include <QDialog>
#include <memory>

// Picks a colleague when the board isn't at hand: the user's organisation in a tree, its
// people in a list; the pick goes on to a chat or a note, as the opener asked.
class frmTLContactSelection : public QDialog, public Ui::frmTLContactSelection {
    Q_OBJECT
public:
    static constexpr int kChat = 0;
    static constexpr int kNote = 1;

    frmTLContactSelection();

    bool Cancel = false;
    std::shared_ptr<TLContact> ContactSelected;
    int ContactFunction = kChat;

    void ClearOrganizations();
    void ClearContacts();
    void LoadOrganizationList();
    void LoadContacts(const TLOrganization& objOrganization);
    void FillOrganizationTree();
    void FillContactList();

    void trvOrganizations_NodeClick(QTreeWidgetItem* node);
    void cmdOK_Click();
    void cmdCancel_Click();

    KeyedCollection<TLOrganization> Organizations;
    KeyedCollection<TLContact> Contacts;

protected:
    // Every activation reloads the lists.
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void reject() override { cmdCancel_Click(); }
};
