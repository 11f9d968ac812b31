#include "Panels.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeDatabase>
#include <QWindow>

namespace platform {

namespace {

// Files and folders in one pick: no desktop's own chooser offers both at once, so Qt's own
// dialog is used, accepting a selected folder instead of opening it. Double-clicking a
// folder still opens it.
class FilesAndFoldersDialog : public QFileDialog {
public:
    using QFileDialog::QFileDialog;

    void accept() override {
        const QStringList chosen = selectedFiles();
        if (chosen.isEmpty())
            return;
        for (const QString& path : chosen) {
            if (!QFileInfo::exists(path))
                return;
        }
        QDialog::accept();
    }
};

QWidget* noParent() {
    // The dialogs are top-level windows over the Qt Quick window; they stay modal to the
    // whole application.
    return nullptr;
}

} // namespace

Panels::Panels(QObject* parent) : QObject(parent) {}

std::optional<QList<QUrl>> Panels::runOpenPanel(const OpenPanelOptions& options) {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return std::nullopt;
    const bool both = options.canChooseFiles && options.canChooseDirectories;
    std::unique_ptr<QFileDialog> dialog = both ? std::make_unique<FilesAndFoldersDialog>(noParent())
                                               : std::make_unique<QFileDialog>(noParent());
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
    dialog->setWindowModality(Qt::ApplicationModal);
    if (dialog->exec() != QDialog::Accepted)
        return std::nullopt;
    QList<QUrl> urls;
    for (const QString& path : dialog->selectedFiles())
        urls.append(QUrl::fromLocalFile(path));
    if (urls.isEmpty())
        return std::nullopt;
    return urls;
}

std::optional<QUrl> Panels::runSavePanel(const SavePanelOptions& options) {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return std::nullopt;
    QFileDialog dialog(noParent());
    dialog.setWindowTitle(options.title);
    dialog.setLabelText(QFileDialog::Accept, options.prompt);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setDirectory(QDir::homePath());
    if (!options.allowedContentTypes.isEmpty()) {
        dialog.setMimeTypeFilters(options.allowedContentTypes);
        const QMimeType type = QMimeDatabase().mimeTypeForName(options.allowedContentTypes.first());
        dialog.setDefaultSuffix(type.preferredSuffix());
    }
    dialog.selectFile(options.nameFieldStringValue);
    dialog.setWindowModality(Qt::ApplicationModal);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedUrls().isEmpty())
        return std::nullopt;
    return dialog.selectedUrls().first();
}

} // namespace platform
