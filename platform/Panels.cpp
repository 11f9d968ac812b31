#include "Panels.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMimeDatabase>

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

// Qt's file dialogs are widgets; without a widgets application there is nobody to ask, which
// answers as a cancel would.
bool canShowDialogs() {
    return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
}

} // namespace

Panels::Panels(QObject* parent) : QObject(parent) {}

std::optional<QList<QUrl>> Panels::runOpenPanel(const OpenPanelOptions& options) {
    if (!canShowDialogs())
        return std::nullopt;
    const bool both = options.canChooseFiles && options.canChooseDirectories;
    std::unique_ptr<QFileDialog> dialog =
        both ? std::make_unique<FilesAndFoldersDialog>() : std::make_unique<QFileDialog>();
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
    // Top-level over the Qt Quick window, and modal to the whole application.
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
    if (!canShowDialogs())
        return std::nullopt;
    QFileDialog dialog;
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
