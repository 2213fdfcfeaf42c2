#pragma once

#include "ui_frmTLSplash.h"
#include <QDialog>
#include <QTimer>

// The start-up picture: shown modally for a moment while nothing else happens behind it.
class frmTLSplash : public QDialog, public Ui::frmTLSplash {
    Q_OBJECT
public:
    frmTLSplash();
    void Form_Load();

    QTimer* tmrDelay; // child of the form

private:
    void tmrDelay_Timer();
};
