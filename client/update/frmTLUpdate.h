#pragma once

#include "base/Forms.h"
#include "ui_frmTLUpdate.h"
#include <QDialog>

// Offers the newer version before sign-in. Yes fetches the update file, starts it and ends the
// program; No goes on with this version (the offer comes again at the next start).
class frmTLUpdate : public QDialog, public Ui::frmTLUpdate {
    Q_OBJECT
public:
    frmTLUpdate();
    void Form_Load();

    void cmdYes_Click();
    void cmdNo_Click();

    // The update file after a transfer: where it lies, and whether it may be started (fetched
    // without failure, there, and matching the published digest when there is one).
    static QString UpdateFilePath();
    static bool FileMayStart();

protected:
    void reject() override { cmdNo_Click(); }
};
