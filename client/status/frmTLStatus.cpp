#include "status/frmTLStatus.h"

#include "base/Clock.h"
#include "base/Regional.h"
#include "base/TLError.h"
#include "base/Twips.h"
#include "board/frmTLView.h"
#include "directory/StatusNumbers.h"
#include "directory/TLStatusRow.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"

namespace {

constexpr int kFirstLeftTwips = 150;
constexpr int kFirstTopTwips = 330;
constexpr int kRowStepTwips = 250;
constexpr int kColumnStepTwips = 1800;
constexpr std::size_t kSecondColumnAt = 11;
constexpr int kButtonWidthTwips = 1750;
constexpr int kButtonHeightTwips = 250;

QString displayCaption(const QString& caption) {
    return QString(caption).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

frmTLStatus::frmTLStatus() {
    setupUi(this);
    setWindowFlag(Qt::WindowStaysOnTopHint, true);
    setModal(false);
    connect(chkUnknownDateTime, &QCheckBox::clicked, this, &frmTLStatus::chkUnknownDateTime_Click);
    connect(cmdOneHour, &QPushButton::clicked, this, [this] { QuickReturn(1); });
    connect(cmdTwoHour, &QPushButton::clicked, this, [this] { QuickReturn(2); });
    connect(cmdFourHour, &QPushButton::clicked, this, [this] { QuickReturn(4); });
    connect(cmdTomorrow, &QPushButton::clicked, this, [this] { QuickReturn(0); });
    connect(cmdOK, &QPushButton::clicked, this, &frmTLStatus::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmTLStatus::cmdCancel_Click);
}

void frmTLStatus::ShowDialog() {
    if (!m_loaded)
        loadForm();
    show();
    raise();
    activateWindow();
}

// The comment is written last: choosing the row's button runs the click rule, which empties
// the comment for "In".
void frmTLStatus::loadForm() {
    m_loaded = true;
    if (!StatusRow)
        StatusRow = std::make_shared<TLStatusRow>();
    LoadStatuses();
    LoadHeaderInfo();
    const QString time = StatusRow->ReturningTime();
    setPickerTime(!time.isEmpty()
                      ? time
                      : Regional::Format(Clock::Now().addSecs(3600), QStringLiteral("hh:mm AMPM")));
    const QString returning = StatusRow->ReturningText();
    setPickerDate(Regional::IsDate(returning)
                      ? returning
                      : Regional::Format(Clock::Now(), QStringLiteral("mm/dd/yyyy")));
    for (QRadioButton* button : cboStatus)
        if (Caption(button) == StatusRow->Status().StatusText) {
            button->setChecked(true);
            break;
        }
    txtComment->setText(StatusRow->Comment);
}

void frmTLStatus::setPickerTime(const QString& text) {
    Guard([&] { cboTime->setTime(Regional::CDate(text).time()); });
}

void frmTLStatus::setPickerDate(const QString& text) {
    Guard([&] { dateReturning->setDate(Regional::CDate(text).date()); });
}

QString frmTLStatus::Caption(const QRadioButton* button) {
    return button->property("Caption").toString();
}

QRadioButton* frmTLStatus::addStatusButton(std::size_t index) {
    auto* button = new QRadioButton(fmeStatusOptions);
    button->setObjectName(QStringLiteral("cboStatus"));
    button->setProperty("Index", static_cast<int>(index));
    auto px = [this](int twips) { return Twips::ToPixelsX(twips, this); };
    auto py = [this](int twips) { return Twips::ToPixelsY(twips, this); };
    QPoint at(px(kFirstLeftTwips), py(kFirstTopTwips));
    if (index == kSecondColumnAt)
        at = cboStatus[0]->pos() + QPoint(px(kColumnStepTwips), 0);
    else if (index > 0)
        at = cboStatus[index - 1]->pos() + QPoint(0, py(kRowStepTwips));
    button->setGeometry(at.x(), at.y(), px(kButtonWidthTwips), py(kButtonHeightTwips));
    connect(button, &QRadioButton::toggled, this, [this](bool on) {
        if (on)
            cboStatus_Click();
    });
    button->show();
    cboStatus.push_back(button);
    return button;
}

// One button a status; the twelfth starts a second column, and that column runs on downward.
void frmTLStatus::LoadStatuses() {
    auto& statuses = modTLMain::colStatuses();
    for (long i = 0; i < statuses.Count(); ++i) {
        const auto& status = statuses[i + 1];
        QRadioButton* button = addStatusButton(static_cast<std::size_t>(i));
        button->setProperty("Caption", status->StatusText);
        button->setText(displayCaption(status->StatusText));
        button->setProperty("Tag", status->Key());
    }
    int bottom = 0;
    for (const QRadioButton* button : cboStatus)
        bottom = std::max(bottom, button->geometry().bottom());
    fmeStatusOptions->setMinimumHeight(std::max(fmeStatusOptions->minimumHeight(), bottom + 10));
}

void frmTLStatus::LoadHeaderInfo() {
    lblComment->setText(StatusRow->Comment);
    lblCurrentStatus->setText(StatusRow->Status().StatusText);
    lblName->setText(StatusRow->Contact().FullName());
    lblReturningDate->setText(StatusRow->ReturningText());
}

// Goes by the caption "In", whereas the change sent goes by the number: an organisation that
// renames In keeps the pickers enabled.
void frmTLStatus::cboStatus_Click() {
    for (QWidget* picker : {static_cast<QWidget*>(dateReturning), static_cast<QWidget*>(cboTime),
                            static_cast<QWidget*>(chkUnknownDateTime)})
        picker->setEnabled(true);
    for (QRadioButton* button : cboStatus)
        if (button->isChecked() && Caption(button) == QStringLiteral("In")) {
            dateReturning->setEnabled(false);
            cboTime->setEnabled(false);
            chkUnknownDateTime->setEnabled(false);
            txtComment->clear();
            break;
        }
}

void frmTLStatus::chkUnknownDateTime_Click() {
    const bool known = !chkUnknownDateTime->isChecked();
    dateReturning->setEnabled(known);
    cboTime->setEnabled(known);
}

// No rounding, and the status, comment and check box stay as they are.
void frmTLStatus::QuickReturn(int hours) {
    const QDateTime now = Clock::Now();
    const QDateTime at = hours == 0 ? now.addDays(1) : now.addSecs(3600LL * hours);
    setPickerTime(hours == 0 ? QStringLiteral("8:00 AM")
                             : Regional::Format(at, QStringLiteral("hh:mm AMPM")));
    setPickerDate(Regional::Format(at, QStringLiteral("mm/dd/yyyy")));
}

void frmTLStatus::ChangeStatus(std::int16_t index) {
    auto& root = TLMain();
    const auto status = modTLMain::colStatuses()[index + 1];
    root.SetSelectedStatus(std::make_unique<TLStatus>(*status));
    const std::int32_t contactSys = StatusRow->Contact().ContactSys;
    const std::int32_t statusSys = status->StatusSys;
    const QString comment = txtComment->text();
    QString date;
    QString time;
    if (statusSys != kStatusIn && !chkUnknownDateTime->isChecked()) {
        date = Regional::DateText(dateReturning->date());
        time = Regional::Format(QDateTime(Clock::Today(), cboTime->time()),
                                QStringLiteral("h:mm AMPM"));
    }
    root.SelectedContact().UpdateContactStatus(contactSys, statusSys, date, time, comment);
    modTLMain::BuildMenuItems();
}

// Without a chosen status the change can't be made, and the dialog stays for a choice.
void frmTLStatus::cmdOK_Click() {
    std::size_t index = 0;
    while (index < cboStatus.size() && !cboStatus[index]->isChecked())
        ++index;
    if (Guard([&] { ChangeStatus(static_cast<std::int16_t>(index)); }))
        return;
    if (auto* board = LoadedForm<frmTLView>())
        board->ReloadGrid();
    FormRegistry::instance().unload(this);
}

void frmTLStatus::cmdCancel_Click() {
    FormRegistry::instance().unload(this);
}

void frmTLStatus::reject() {
    cmdCancel_Click();
}
