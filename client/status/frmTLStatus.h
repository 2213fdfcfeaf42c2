#pragma once

#include "base/Forms.h"
#include "ui_frmTLStatus.h"
#include <QDialog>
#include <QRadioButton>
#include <cstdint>
#include <memory>
#include <vector>

class TLStatusRow;

// "Update Status": a person's status, returning date and time and comment set in full, for
// oneself or, with the right, for someone else. It stays on top and doesn't block the board.
class frmTLStatus : public QDialog, public Ui::frmTLStatus, public UnloadAware {
    Q_OBJECT
public:
    frmTLStatus();

    // The person; the opener sets it before ShowDialog. Made empty if nobody was set.
    std::shared_ptr<TLStatusRow> StatusRow;
    // One option button a status of the organisation, in the list's order.
    std::vector<QRadioButton*> cboStatus;

    // Loads the dialog for StatusRow at its first showing, then shows it without blocking.
    void ShowDialog();
    void LoadStatuses();
    void LoadHeaderInfo();
    // Sends the chosen status (by its position among the buttons) with the returning moment
    // and comment.
    void ChangeStatus(std::int16_t index);
    // The caption a status button stands for.
    static QString Caption(const QRadioButton* button);

    void cboStatus_Click();
    void chkUnknownDateTime_Click();
    void QuickReturn(int hours); // 0: tomorrow at eight
    void cmdOK_Click();
    void cmdCancel_Click();

    void Form_Unload() override {}

protected:
    void reject() override; // Escape and the close box: as Cancel

private:
    void loadForm();
    QRadioButton* addStatusButton(std::size_t index);
    void setPickerTime(const QString& text);
    void setPickerDate(const QString& text);

    bool m_loaded = false;
};
