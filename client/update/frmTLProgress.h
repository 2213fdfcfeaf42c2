#pragma once

#include "base/Forms.h"
#include "ui_frmTLProgress.h"
#include <QDialog>

class QMovie;

// The transfer's progress: bytes, share, rate, and a way to cancel.
class frmTLProgress : public QDialog, public Ui::frmTLProgress {
    Q_OBJECT
public:
    frmTLProgress();

    void ResetTextBoxes();
    void cmdCancel_Click();

    // The program's folder + "/filecopy.gif": the clip that plays while files are copied.
    static QString ClipPath();

protected:
    bool event(QEvent* event) override; // activation resets the figures
    void reject() override { cmdCancel_Click(); }

private:
    QMovie* m_clip = nullptr;
};
