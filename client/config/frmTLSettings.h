#pragma once

#include "ui_frmTLSettings.h"
#include <QDialog>

// The settings dialog, "Tavlo Settings". Hidden, its controls are the working copy of the
// settings (see modTLRegistry); shown, it edits them. A single instance made by Form<>().
class frmTLSettings : public QDialog, public Ui::frmTLSettings {
    Q_OBJECT
public:
    explicit frmTLSettings(QWidget* parent = nullptr);

    void Form_Load();

    // 2 when the mini view is chosen, else 1.
    int ViewChoice() const { return optMiniView->isChecked() ? 2 : 1; }

    // Whether the board's close button ends the program rather than hiding it to the tray.
    bool ExitShutdown() const { return optExitShutdown->isChecked(); }
    void SetExitShutdown(bool value);

    void cmdOK_Click();
    void cmdCancel_Click();
    void cmdDefaultColumns_Click() { txtMaxColumns->setText(QStringLiteral("5")); }
    void cmdDefaultRefresh_Click() { txtRefreshInterval->setText(QStringLiteral("180")); }
    void chkAutoLogin_Click();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void reject() override; // Escape: as Cancel
    void closeEvent(QCloseEvent* event) override;

private:
    void showDefaults();
    void loadLocationList();
    bool entriesAreValid();
};
