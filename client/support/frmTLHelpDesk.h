#pragma once

#include "base/Forms.h"
#include "ui_frmTLHelpDesk.h"
#include <QDialog>
#include <array>

class QRadioButton;

// A request to the maker's support, sent as a mail by the server: a priority that prefixes the
// subject, the message, and who is asking.
class frmTLHelpDesk : public QDialog, public Ui::frmTLHelpDesk {
    Q_OBJECT
public:
    frmTLHelpDesk();

    std::array<QRadioButton*, 6> optPriority{};

    void cmdOK_Click();
    void cmdCancel_Click();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void reject() override { cmdCancel_Click(); }
};
