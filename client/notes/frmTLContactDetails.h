#pragma once

#include "base/Forms.h"
#include "directory/TLContact.h"
#include "ui_frmTLContactDetails.h"
#include <QDialog>

// One colleague's card: the work details, the picture from the web site and, only where the
// colleague allows it, the home details with the extension. Stays on top.
class frmTLContactDetails : public QDialog, public Ui::frmTLContactDetails {
    Q_OBJECT
public:
    frmTLContactDetails();

    TLContact Contact; // whose card; set before the form shows

    void LoadUserInfo();
    void LoadContactPicture();

    // The program's folder + "/picture.html": the page that names the picture to show.
    static QString PicturePagePath();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void reject() override { close(); }

private:
    void showPicturePage();
    bool m_loaded = false;
};
