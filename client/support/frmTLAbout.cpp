#include "support/frmTLAbout.h"

#include "shell/AppVersion.h"
#include <QApplication>
#include <QCloseEvent>

frmTLAbout::frmTLAbout() {
    setupUi(this);
    setObjectName(QStringLiteral("frmTLAbout"));
    picLogo->setPixmap(windowIcon().pixmap(48, 48));
    connect(cmdOK, &QPushButton::clicked, this, &QWidget::close);
}

void frmTLAbout::Form_Load() {
    QApplication::beep();
    lblVersionNumber->setText(AppVersion::Text());
}

void frmTLAbout::closeEvent(QCloseEvent* event) {
    event->accept();
    Unload<frmTLAbout>();
}
