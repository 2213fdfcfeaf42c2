// The search pane: a person by name or extension, or whether any organisation matches a name.
#include "base/MsgBox.h"
#include "base/Variants.h"
#include "board/frmTLView.h"
#include "shell/TLMain.h"
#include <QKeyEvent>
#include <QVBoxLayout>

namespace {

QLineEdit* searchBox(const char* name, QWidget* parent) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->hide();
    return box;
}

} // namespace

void frmTLView::buildSearchControls() {
    txtName = searchBox("txtName", barSearch);
    txtExtension = searchBox("txtExtension", barSearch);
    txtOrganization = searchBox("txtOrganization", barSearch);
    for (QLineEdit* box : {txtName, txtExtension, txtOrganization})
        box->installEventFilter(this);
    pnlAdvanced = new QWidget(barSearch);
    pnlAdvanced->setObjectName(QStringLiteral("pnlAdvanced"));
    auto* advanced = new QVBoxLayout(pnlAdvanced);
    auto* note = new QLabel(QStringLiteral("Names match from any part: \"ann\" finds Ann and "
                                           "Joanne. Wildcards are not needed."),
                            pnlAdvanced);
    note->setWordWrap(true);
    advanced->addWidget(note);
    pnlAdvanced->hide();
    pnlAction = new QWidget(barSearch);
    pnlAction->setObjectName(QStringLiteral("pnlAction"));
    auto* buttons = new QHBoxLayout(pnlAction);
    buttons->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < 2; ++i) {
        auto* button = new QPushButton(pnlAction);
        button->setObjectName(QStringLiteral("cmdAction"));
        button->setProperty("Index", i);
        buttons->addWidget(button);
        cmdAction[static_cast<size_t>(i)] = button;
    }
    pnlAction->hide();
}

void frmTLView::BuildSearchPanel() {
    SearchPanelPrevious = SearchPanelMode;
    SearchPanelMode = QStringLiteral("Search");
    const QString title = QStringLiteral("TITLE");
    barSearch->SetRedraw(false);
    barSearch->Clear();
    barSearch->AddBar(title, QStringLiteral("Search"), false);
    barSearch->SetBarColors(title, palette().color(QPalette::Window),
                            palette().color(QPalette::WindowText));
    barSearch->AddTextItem(title, QStringLiteral("Description"),
                           QStringLiteral("By any of the criteria below."), true);
    barSearch->AddTextItem(title, QStringLiteral("USERNAME"),
                           QStringLiteral("First or last of a contact's name:"));
    barSearch->AddControlItem(title, QStringLiteral("USERCONTROL"), txtName);
    barSearch->AddTextItem(title, QStringLiteral("EXTENSIONCAPTION"),
                           QStringLiteral("All or part of an extension:"));
    barSearch->AddControlItem(title, QStringLiteral("EXTENSIONCONTROL"), txtExtension);
    barSearch->AddTextItem(title, QStringLiteral("ORGANIZATIONCAPTION"),
                           QStringLiteral("All or part of an organization name:"));
    barSearch->AddControlItem(title, QStringLiteral("ORGANIZATIONCONTROL"), txtOrganization);
    barSearch->AddBar(QStringLiteral("ADVANCED"), QStringLiteral("More advanced options"), true,
                      true);
    barSearch->AddControlItem(QStringLiteral("ADVANCED"), QStringLiteral("ADVANCEDPANEL"),
                              pnlAdvanced);
    barSearch->AddBar(QStringLiteral("LINKS"), QString(), false);
    cmdAction[1]->setText(QStringLiteral("&Close"));
    cmdAction[0]->setText(QStringLiteral("&Search"));
    cmdAction[0]->show();
    cmdAction[1]->show();
    barSearch->AddControlItem(QStringLiteral("LINKS"), QStringLiteral("SEARCHBUTTONPANEL"),
                              pnlAction);
    barSearch->SetRedraw(true);
}

QString frmTLView::CleanSearchText(const QString& text) {
    return Variants::Trim(QString(text).remove(QLatin1Char('%'))).remove(QLatin1Char('*'));
}

void frmTLView::cmdAction_Click(int index) {
    if (index == 1) {
        ToolbarButton(3)->setChecked(false);
        SearchVisible = false;
        FormatFormSize();
        return;
    }
    if (index != 0)
        return;
    if (SearchPanelMode == QStringLiteral("OTHERSEARCH") ||
        SearchPanelMode == QStringLiteral("PREFERENCES")) {
        if (SearchPanelPrevious == QStringLiteral("Search"))
            BuildSearchPanel();
        return;
    }
    if (SearchPanelMode != QStringLiteral("Search"))
        return;
    auto text = [this](const char* key) {
        auto* box = qobject_cast<QLineEdit*>(barSearch->ItemControl(QString::fromLatin1(key)));
        return CleanSearchText(box ? box->text() : QString());
    };
    const QString organization = text("ORGANIZATIONCONTROL");
    const QString name = text("USERCONTROL");
    const QString extension = text("EXTENSIONCONTROL");
    if (!organization.isEmpty() || !name.isEmpty() || !extension.isEmpty()) {
        if (!organization.isEmpty())
            searchCompanies(organization);
        if (!name.isEmpty() || !extension.isEmpty()) {
            auto& root = TLMain();
            auto& data = root.DataAccess();
            const QString sql = QStringLiteral("tl_SearchContacts ") + data.DBIn(name) +
                                QLatin1Char(',') +
                                QString::number(root.ActiveOrganization().OrganizationSys) +
                                QLatin1Char(',') + data.DBIn(extension) + QLatin1Char(',') +
                                QString::number(root.ActiveUser().UserSys());
            LoadGrid(root.ActiveUser().UserSys(), root.ActiveGroup().GroupSys,
                     root.ActiveOrganization().OrganizationSys, 0, sql);
        }
    }
    txtName->setFocus();
}

// Tells only whether any organisation matches; the board doesn't change.
void frmTLView::searchCompanies(const QString& organization) {
    auto& data = TLMain().DataAccess();
    auto rs =
        data.LoadADOFromWeb(QStringLiteral("EXECUTE tl_SearchCompany ") + data.DBIn(organization));
    if (!rs)
        return;
    if (rs->Eof()) {
        MsgBox(QStringLiteral("Sorry, no entries were found."));
        return;
    }
    for (; !rs->Eof(); rs->MoveNext()) {
        // The matches are read through and left: the answer is only whether there are any.
        const QString nameOf = data.DBOStr(rs->Fields(QStringLiteral("Name")).Value());
        const QString description = data.DBOStr(rs->Fields(QStringLiteral("Description")).Value());
        const std::int32_t sys =
            data.DBOLong(rs->Fields(QStringLiteral("OrganizationSys")).Value());
        Q_UNUSED(nameOf)
        Q_UNUSED(description)
        Q_UNUSED(sys)
    }
}

// Enter in any of the search boxes searches.
bool frmTLView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress &&
        (watched == txtName || watched == txtExtension || watched == txtOrganization)) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            cmdAction_Click(0);
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}
