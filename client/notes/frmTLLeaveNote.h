#pragma once

#include "base/Forms.h"
#include "directory/TLContact.h"
#include "ui_frmTLLeaveNote.h"
#include <QDialog>

// Writes one note to one person, and can ask the server to alert the person by mail. Stays on
// top until it says the note was sent.
class frmTLLeaveNote : public QDialog, public Ui::frmTLLeaveNote {
    Q_OBJECT
public:
    frmTLLeaveNote();

    TLContact Contact; // the receiver; set before the form shows

    void cmdOK_Click();
    void cmdCancel_Click();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void reject() override { cmdCancel_Click(); }

private:
    void sendAlert(const QString& text);
};
