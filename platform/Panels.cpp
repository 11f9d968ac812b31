#include "Panels.h"

#include <QApplication>
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

// Qt's file dialogs are widgets; without a widgets application there is nobody to ask, which
// answers as a cancel would.
bool canShowDialogs() {
    return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
}

// Shown without blocking; finished and answered once, or closed with its owner unanswered.
void showPanel(QFileDialog* dialog, QObject* owner, std::function<void(QFileDialog*)> accepted,
               std::function<void()> cancelled) {
    // Top-level over the Qt Quick window, and modal to the whole application. A desktop's own
    // dialog learns which window it belongs to from the transient parent.
    dialog->setWindowModality(Qt::ApplicationModal);
    if (QWindow* over = QGuiApplication::focusWindow()) {
        dialog->winId();
        dialog->windowHandle()->setTransientParent(over);
    }
    QObject::connect(owner, &QObject::destroyed, dialog, [dialog, owner] {
        // The owner is on its way out but still connected: cut the answer off first.
        QObject::disconnect(dialog, &QDialog::finished, owner, nullptr);
        dialog->close();
        dialog->deleteLater();
    });
    QObject::connect(dialog, &QDialog::finished, owner, [dialog, accepted, cancelled](int result) {
        if (result == QDialog::Accepted)
            accepted(dialog);
        else
            cancelled();
    });
    QObject::connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
    dialog->open();
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

bool preferPortalFileDialogs() {
    // The portal is started on demand by the session bus, so its service file tells whether
    // it is there.
    const QString service =
        QStringLiteral("dbus-1/services/org.freedesktop.portal.Desktop.service");
    const bool installed =
        !QStandardPaths::locate(QStandardPaths::GenericDataLocation, service).isEmpty();
    if (!portalFileDialogsWanted(qgetenv("XDG_CURRENT_DESKTOP"), qgetenv("QT_QPA_PLATFORMTHEME"),
                                 installed))
        return false;
    qputenv("QT_QPA_PLATFORMTHEME", "xdgdesktopportal");
    return true;
}

Panels::Panels(QObject* parent) : QObject(parent) {}

void Panels::openPanel(const OpenPanelOptions& options, QObject* owner, OpenAnswer answered) {
    if (!canShowDialogs()) {
        answered(std::nullopt);
        return;
    }
    const bool both = options.canChooseFiles && options.canChooseDirectories;
    auto* filesAndFolders = both ? new FilesAndFoldersDialog : nullptr;
    QFileDialog* dialog = both ? filesAndFolders : new QFileDialog;
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
    showPanel(
        dialog, owner,
        [answered](QFileDialog* done) {
            QList<QUrl> urls;
            for (const QString& path : done->selectedFiles())
                urls.append(QUrl::fromLocalFile(path));
            answered(urls.isEmpty() ? std::nullopt : std::optional(urls));
        },
        [answered] { answered(std::nullopt); });
    if (filesAndFolders)
        filesAndFolders->keepAcceptLabel();
}

void Panels::savePanel(const SavePanelOptions& options, QObject* owner, SaveAnswer answered) {
    if (!canShowDialogs()) {
        answered(std::nullopt);
        return;
    }
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
    showPanel(
        dialog, owner,
        [answered](QFileDialog* done) {
            const QList<QUrl> urls = done->selectedUrls();
            answered(urls.isEmpty() ? std::nullopt : std::optional(urls.first()));
        },
        [answered] { answered(std::nullopt); });
    addMessage(dialog, options.message);
}

} // namespace platform
