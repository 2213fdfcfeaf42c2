#pragma once

#include "base/Forms.h"
#include "ui_frmTLAbout.h"
#include <QDialog>

// The program's name and running version, with a beep as it opens.
class frmTLAbout : public QDialog, public Ui::frmTLAbout {
    Q_OBJECT
public:
    frmTLAbout();
    void Form_Load();

protected:
    void closeEvent(QCloseEvent* event) override;
    void reject() override { close(); }
};
