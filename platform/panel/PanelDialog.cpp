#include "PanelDialog.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMimeDatabase>
#include <QPointer>
#include <QPushButton>
#include <QStandardPaths>
#include <QWindow>

namespace platform {

namespace {

// Files and folders in one pick: no desktop's own chooser offers both at once, so Qt's own
// dialog is used, accepting the selected files and folders as they are. Double-clicking a
// folder, or Return on it in the list or with its name typed, still opens it: only the
// button takes a folder in.
class FilesAndFoldersDialog : public QFileDialog {
public:
    using QFileDialog::QFileDialog;

    void accept() override {
        const QStringList chosen = selectedFiles();
        if (chosen.isEmpty())
            return;
        auto* typed = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        if (typed && typed->hasFocus() && chosen.size() == 1 && QFileInfo(chosen.first()).isDir()) {
            setDirectory(chosen.first());
            typed->clear();
            return;
        }
        for (const QString& path : chosen) {
            if (!QFileInfo::exists(path))
                return;
        }
        QDialog::accept();
    }

    // Qt's dialog renames its button "Open" while a folder is selected, as its own accept
    // would go into the folder; this one takes it, so the button keeps saying what it does.
    void keepAcceptLabel() {
        auto* buttons = findChild<QDialogButtonBox*>();
        m_accept = buttons ? buttons->button(QDialogButtonBox::Open) : nullptr;
        m_label = labelText(QFileDialog::Accept);
        if (m_accept)
            m_accept->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == m_accept && event->type() == QEvent::Paint) {
            if (m_accept->text() != m_label)
                m_accept->setText(m_label);
        }
        return QFileDialog::eventFilter(watched, event);
    }

private:
    QPointer<QPushButton> m_accept;
    QString m_label;
};

// Qt's own dialog has no line for a message; it gets one above everything else. The
// desktop's own dialogs have no room for one.
void addMessage(QFileDialog* dialog, const QString& message) {
    auto* grid = qobject_cast<QGridLayout*>(dialog->layout());
    if (message.isEmpty() || !grid)
        return;
    struct Placed {
        QLayoutItem* item;
        int row, column, rowSpan, columnSpan;
    };
    QList<Placed> placed;
    const int columns = grid->columnCount();
    while (grid->count() > 0) {
        Placed p{};
        grid->getItemPosition(0, &p.row, &p.column, &p.rowSpan, &p.columnSpan);
        p.item = grid->takeAt(0);
        placed.append(p);
    }
    auto* label = new QLabel(message, dialog);
    label->setObjectName(QStringLiteral("panelMessage"));
    label->setWordWrap(true);
    grid->addWidget(label, 0, 0, 1, columns);
    for (const Placed& p : placed)
        grid->addItem(p.item, p.row + 1, p.column, p.rowSpan, p.columnSpan);
}

QFileDialog* createDialog(const OpenPanelOptions& options) {
    const bool both = options.canChooseFiles && options.canChooseDirectories;
    QFileDialog* dialog = both ? new FilesAndFoldersDialog : new QFileDialog;
    dialog->setWindowTitle(options.message.isEmpty() ? options.prompt : options.message);
    dialog->setLabelText(QFileDialog::Accept, options.prompt);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setDirectory(QDir::homePath());
    if (both) {
        dialog->setOption(QFileDialog::DontUseNativeDialog);
        dialog->setFileMode(options.allowsMultipleSelection ? QFileDialog::ExistingFiles
                                                            : QFileDialog::ExistingFile);
    } else if (options.canChooseDirectories) {
        dialog->setFileMode(QFileDialog::Directory);
        dialog->setOption(QFileDialog::ShowDirsOnly);
    } else {
        dialog->setFileMode(options.allowsMultipleSelection ? QFileDialog::ExistingFiles
                                                            : QFileDialog::ExistingFile);
    }
    return dialog;
}

QFileDialog* createDialog(const SavePanelOptions& options) {
    auto* dialog = new QFileDialog;
    dialog->setWindowTitle(options.title);
    dialog->setLabelText(QFileDialog::Accept, options.prompt);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setDirectory(QDir::homePath());
    if (!options.allowedContentTypes.isEmpty()) {
        dialog->setMimeTypeFilters(options.allowedContentTypes);
        const QMimeType type = QMimeDatabase().mimeTypeForName(options.allowedContentTypes.first());
        dialog->setDefaultSuffix(type.preferredSuffix());
    }
    dialog->selectFile(options.nameFieldStringValue);
    return dialog;
}

} // namespace

bool portalFileDialogsWanted(const QByteArray& currentDesktop, const QByteArray& chosenTheme,
                             bool portalInstalled) {
    if (!chosenTheme.isEmpty() || !portalInstalled)
        return false;
    // A list such as "ubuntu:GNOME" or "KDE".
    for (const QByteArray& desktop : currentDesktop.split(':')) {
        if (desktop.compare("GNOME", Qt::CaseInsensitive) == 0 ||
            desktop.compare("KDE", Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

void preferPortalFileDialogs() {
    // The portal is started on demand by the session bus, so its service file tells whether
    // it is there.
    const QString service =
        QStringLiteral("dbus-1/services/org.freedesktop.portal.Desktop.service");
    const bool installed =
        !QStandardPaths::locate(QStandardPaths::GenericDataLocation, service).isEmpty();
    if (portalFileDialogsWanted(qgetenv("XDG_CURRENT_DESKTOP"), qgetenv("QT_QPA_PLATFORMTHEME"),
                                installed))
        qputenv("QT_QPA_PLATFORMTHEME", "xdgdesktopportal");
}

QFileDialog* showPanelDialog(const PanelRequest& request,
                             std::function<void(const QStringList& chosen)> finished) {
    QFileDialog* dialog =
        std::visit([](const auto& options) { return createDialog(options); }, request.options);
    // Modal, so that the window manager keeps it over its parent. A desktop's own dialog
    // learns which window it belongs to from the transient parent.
    dialog->setWindowModality(Qt::ApplicationModal);
    if (request.parentWindow != 0) {
        if (QWindow* parent = QWindow::fromWinId(WId(request.parentWindow))) {
            dialog->winId();
            dialog->windowHandle()->setTransientParent(parent);
            QObject::connect(dialog, &QObject::destroyed, parent, &QObject::deleteLater);
        }
    }
    QObject::connect(dialog, &QDialog::finished, dialog, [dialog, finished](int result) {
        finished(result == QDialog::Accepted ? dialog->selectedFiles() : QStringList());
    });
    QObject::connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    dialog->open();
    if (auto* both = dynamic_cast<FilesAndFoldersDialog*>(dialog))
        both->keepAcceptLabel();
    if (const auto* save = std::get_if<SavePanelOptions>(&request.options))
        addMessage(dialog, save->message);
    return dialog;
}

} // namespace platform
