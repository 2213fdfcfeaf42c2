#include "shell/frmTLSplash.h"

#include "base/Forms.h"
#include "shell/AppVersion.h"
#include "shell/SplashPicture.h"

frmTLSplash::frmTLSplash() : tmrDelay(new QTimer(this)) {
    setupUi(this);
    setWindowFlag(Qt::FramelessWindowHint);
    setWindowFlag(Qt::WindowStaysOnTopHint);
    tmrDelay->setObjectName(QStringLiteral("tmrDelay"));
    tmrDelay->setInterval(1500);
    connect(tmrDelay, &QTimer::timeout, this, &frmTLSplash::tmrDelay_Timer);
    Image1->setPixmap(SplashPicture(Image1->size()));
}

void frmTLSplash::Form_Load() {
    tmrDelay->start();
    lblVersionNumber->setText(AppVersion::Text());
}

void frmTLSplash::tmrDelay_Timer() {
    tmrDelay->stop();
    Unload<frmTLSplash>();
}
