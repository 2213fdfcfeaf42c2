#include "notes/frmTLContactDetails.h"

#include "base/Twips.h"
#include "shell/TLMain.h"
#include "wire/GatewayPost.h"
#include <QCloseEvent>
#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>
#include <QStyle>

namespace {
constexpr int kPictureTimeoutMs = 5000;
constexpr int kHomeHeightTwips = 8205;
constexpr int kHomeCloseTopTwips = 7020;
} // namespace

frmTLContactDetails::frmTLContactDetails() {
    setupUi(this);
    setObjectName(QStringLiteral("frmTLContactDetails"));
    TLMain().Functions().ShowOnTop(this, true);
    connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);
}

void frmTLContactDetails::showEvent(QShowEvent* event) {
    if (!m_loaded) {
        m_loaded = true;
        LoadUserInfo();
    }
    QDialog::showEvent(event);
}

// The extension shows only with the home details: hiding one hides the other.
void frmTLContactDetails::LoadUserInfo() {
    Contact.LoadContactDetails(-1);
    lblName->setText(Contact.FullName());
    lblTitle->setText(Contact.Position);
    lblPhone->setText(Contact.PhoneNumber);
    lblFax->setText(Contact.Fax);
    lblCell->setText(Contact.Cell);
    lblPager->setText(Contact.Pager);
    lblEmail->setText(Contact.EmailAddress);
    lblExtensionReturned->setText(Contact.Extension);
    cmdClose->move(width() / 2 - cmdClose->width() / 2, cmdClose->y());
    if (Contact.ShowHomeInfo != 1) {
        const int box = shpHomeInfoBox->height();
        setFixedHeight(height() - box);
        cmdClose->move(cmdClose->x(), cmdClose->y() - box);
    } else {
        for (QWidget* part :
             {static_cast<QWidget*>(lblHomeInformation),
              static_cast<QWidget*>(lblHomeAddressHeader),
              static_cast<QWidget*>(lblHomePhoneHeader), static_cast<QWidget*>(lblHomeFaxHeader),
              static_cast<QWidget*>(lblHomeEmailHeader), static_cast<QWidget*>(shpHomeInfoBox),
              static_cast<QWidget*>(lblHomeAddress), static_cast<QWidget*>(lblHomeCity),
              static_cast<QWidget*>(lblHomePhone), static_cast<QWidget*>(lblHomeFax),
              static_cast<QWidget*>(lblHomeEmail), static_cast<QWidget*>(lblExtension),
              static_cast<QWidget*>(lblExtensionReturned)})
            part->setVisible(true);
        lblHomeAddress->setText(Contact.HomeAddress);
        lblHomeCity->setText(Contact.HomeCity + QStringLiteral(", ") + Contact.HomeState +
                             QLatin1Char(' ') + Contact.HomeZip);
        lblHomePhone->setText(Contact.HomePhoneNumber);
        lblHomeFax->setText(Contact.HomeFax);
        lblHomeEmail->setText(Contact.HomeEMailAddress);
        setFixedHeight(Twips::ToPixelsY(kHomeHeightTwips, this));
        cmdClose->move(cmdClose->x(), Twips::ToPixelsY(kHomeCloseTopTwips, this));
    }
    LoadContactPicture();
}

QString frmTLContactDetails::PicturePagePath() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/picture.html");
}

// One page names the picture, written anew for every card.
void frmTLContactDetails::LoadContactPicture() {
    const QString url =
        TLMain().Settings().WebAddress() + QLatin1Char('/') + Contact.PictureLocation;
    const QString path = PicturePagePath();
    QFile::remove(path);
    QFile page(path);
    if (page.open(QIODevice::WriteOnly)) {
        page.write(Contact.PictureLocation.isEmpty() ? QByteArray("<dd>No Picture Available")
                                                     : (QStringLiteral("<img src=\"") + url +
                                                        QStringLiteral("\" HEIGHT=235 WIDTH=180>"))
                                                           .toUtf8());
        page.write("\r\n");
        page.close();
    }
    showPicturePage();
}

// What the page names: a picture fetched over HTTP at 180 by 235, whatever its proportions,
// or the page's text.
void frmTLContactDetails::showPicturePage() {
    QFile page(PicturePagePath());
    const QString html =
        page.open(QIODevice::ReadOnly) ? QString::fromUtf8(page.readAll()) : QString();
    static const QRegularExpression image(QStringLiteral("<img src=\"([^\"]*)\""),
                                          QRegularExpression::CaseInsensitiveOption);
    const auto match = image.match(html);
    if (!match.hasMatch()) {
        webContactPicture->setText(
            QString(html).remove(QRegularExpression(QStringLiteral("<[^>]*>"))).trimmed());
        return;
    }
    const auto reply = wire::getUrl(match.captured(1), kPictureTimeoutMs);
    QPixmap picture;
    if (reply.transportOk && reply.httpStatus == 200 && picture.loadFromData(reply.body))
        webContactPicture->setPixmap(picture.scaled(180, 235));
    else
        webContactPicture->setPixmap(style()->standardPixmap(QStyle::SP_MessageBoxWarning));
}

void frmTLContactDetails::closeEvent(QCloseEvent* event) {
    event->accept();
    Unload<frmTLContactDetails>();
}
