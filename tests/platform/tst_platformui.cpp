// The desktop's file pickers and file icons for real: Qt's own file dialogs run offscreen and
// are answered from a timer, as a person would answer them.

#include "platform/Panels.h"
#include "platform/Workspace.h"
#include "support/Trees.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

namespace {

// Runs `answer` on the file dialog once it is up; a dialog still open after it is cancelled.
void whenDialogShows(const std::function<void(QFileDialog*)>& answer) {
    auto* poll = new QTimer;
    QObject::connect(poll, &QTimer::timeout, poll, [poll, answer] {
        if (auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            poll->stop();
            poll->deleteLater();
            answer(dialog);
            // An answer the dialog did not take ends it, so that the test fails instead of
            // waiting forever.
            if (dialog->isVisible())
                dialog->reject();
        }
    });
    poll->start(20);
}

// Selects an entry as a click in the dialog would, once its folder has been read.
// (The file name field ignores a selection made while it has the focus.)
void pick(QFileDialog* dialog, const QString& path) {
    dialog->setDirectory(QFileInfo(path).path());
    if (QWidget* focused = dialog->focusWidget())
        focused->clearFocus();
    const bool picked = QTest::qWaitFor([&] {
        dialog->selectFile(path);
        return dialog->selectedFiles() == QStringList(path);
    });
    if (!picked)
        qWarning("Could not pick %s", qPrintable(path));
}

// A panel's answer, waited for while the event loop runs (as the window's would).
template <typename Answer, typename Options, typename Open>
std::optional<Answer> answerOf(const Options& options, Open open) {
    QObject owner;
    bool answered = false;
    std::optional<Answer> answer;
    open(options, &owner, [&](const std::optional<Answer>& chosen) {
        answer = chosen;
        answered = true;
    });
    if (!QTest::qWaitFor([&] { return answered; }, 20000))
        qWarning("The panel never answered");
    return answer;
}

std::optional<QList<QUrl>> openAnswer(platform::Panels& panels, const platform::OpenPanelOptions& options) {
    return answerOf<QList<QUrl>>(options, [&](auto... args) { panels.openPanel(args...); });
}

std::optional<QUrl> saveAnswer(platform::Panels& panels, const platform::SavePanelOptions& options) {
    return answerOf<QUrl>(options, [&](auto... args) { panels.savePanel(args...); });
}

int inkedPixels(const QIcon& icon) {
    QImage image(24, 24, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    icon.paint(&painter, image.rect());
    painter.end();
    int inked = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            inked += qAlpha(image.pixel(x, y)) > 128;
    return inked;
}

} // namespace

class TestPlatformUi : public QObject {
    Q_OBJECT

private slots:
    // Files and folders in one pick: a selected folder is taken, not opened, and the button
    // says so.
    void addPanelTakesFilesAndFolders() {
        QTemporaryDir dir;
        QDir().mkpath(dir.filePath("Photos"));
        testsupport::writeFile(dir.filePath("a.txt"), "a");
        platform::Panels panels;
        QString acceptLabel;
        QFileDialog::FileMode mode = QFileDialog::AnyFile;
        whenDialogShows([&](QFileDialog* dialog) {
            mode = dialog->fileMode();
            pick(dialog, dir.filePath("Photos"));
            // Chosen in the list as a click chooses it, which Qt's dialog answers with "Open".
            auto* list = dialog->findChild<QListView*>("listView");
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                              list->visualRect(list->currentIndex()).center());
            QPushButton* accept =
                dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open);
            QTest::qWaitFor([&] { return accept->text() == "Add to Vault"; }, 500);
            acceptLabel = accept->text();
            QMetaObject::invokeMethod(dialog, "accept");
        });
        const auto chosen = openAnswer(panels, {.canChooseFiles = true,
                                                 .canChooseDirectories = true,
                                                 .allowsMultipleSelection = true,
                                                 .prompt = "Add to Vault",
                                                 .message = {}});
        QCOMPARE(acceptLabel, "Add to Vault");
        QCOMPARE(mode, QFileDialog::ExistingFiles);
        QVERIFY(chosen.has_value());
        QCOMPARE(*chosen, QList<QUrl>({QUrl::fromLocalFile(dir.filePath("Photos"))}));

        whenDialogShows([&](QFileDialog* dialog) {
            pick(dialog, dir.filePath("a.txt"));
            QMetaObject::invokeMethod(dialog, "accept");
        });
        QCOMPARE(openAnswer(panels, {true, true, true, "Add to Vault", {}}),
                 QList<QUrl>({QUrl::fromLocalFile(dir.filePath("a.txt"))}));
    }

    // The desktop's own dialogs where the portal can show them, never over a platform theme
    // the user chose.
    void portalDialogsOnGnomeAndKde() {
        QVERIFY(platform::portalFileDialogsWanted("ubuntu:GNOME", {}, true));
        QVERIFY(platform::portalFileDialogsWanted("KDE", {}, true));
        QVERIFY(!platform::portalFileDialogsWanted("KDE", "kde", true));
        QVERIFY(!platform::portalFileDialogsWanted("GNOME", {}, false));
        QVERIFY(!platform::portalFileDialogsWanted("XFCE", {}, true));
    }

    void cancelledPanelsAnswerNothing() {
        platform::Panels panels;
        QString title;
        whenDialogShows([&](QFileDialog* dialog) {
            title = dialog->windowTitle();
            dialog->reject();
        });
        QCOMPARE(openAnswer(panels, 
                     {false, true, false, "Move Here", "Choose destination outside the vault."}),
                 std::nullopt);
        QCOMPARE(title, "Choose destination outside the vault.");
        whenDialogShows([](QFileDialog* dialog) { dialog->reject(); });
        QCOMPARE(saveAnswer(panels, {"Back Up Vault", "Back Up", {}, "x.7z", {}}), std::nullopt);
    }

    // A lock replaces the screen that asked: its panel closes, and nothing chosen arrives.
    void aPanelGoesWithItsOwner() {
        platform::Panels panels;
        auto owner = std::make_unique<QObject>();
        bool answered = false;
        panels.savePanel({"Back Up Vault", "Back Up", {}, "x.7z", {}}, owner.get(),
                         [&](const std::optional<QUrl>&) { answered = true; });
        QTRY_VERIFY(qobject_cast<QFileDialog*>(QApplication::activeModalWidget()));
        owner.reset();
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QTest::qWait(50);
        QVERIFY(!answered);
    }

    void savePanelProposesTheNameAndType() {
        QTemporaryDir dir;
        platform::Panels panels;
        QString title;
        QString message;
        QString proposed;
        QStringList filters;
        whenDialogShows([&](QFileDialog* dialog) {
            title = dialog->windowTitle();
            filters = dialog->nameFilters();
            message = dialog->findChild<QLabel*>("panelMessage")->text();
            dialog->setDirectory(dir.path());
            proposed = dialog->selectedFiles().value(0);
            QMetaObject::invokeMethod(dialog, "accept");
        });
        const auto destination =
            saveAnswer(panels, {.title = "Back Up Vault",
                                 .prompt = "Back Up",
                                 .message = "Save an encrypted backup of your vault.",
                                 .nameFieldStringValue = "MorvantaVault-Backup.7z",
                                 .allowedContentTypes = {"application/x-7z-compressed"}});
        QCOMPARE(title, "Back Up Vault");
        QCOMPARE(message, "Save an encrypted backup of your vault.");
        QVERIFY2(proposed.endsWith("/MorvantaVault-Backup.7z"), qPrintable(proposed));
        QCOMPARE(filters.size(), 1);
        QVERIFY2(filters.first().contains("*.7z"), qPrintable(filters.first()));
        QVERIFY(destination.has_value());
        QCOMPARE(destination->fileName(), "MorvantaVault-Backup.7z");
    }

    // Icons come from the icon theme by type and draw something even without a desktop, also
    // where the platform names only hicolor, which has no icons for types or folders.
    void itemIconsComeFromTheIconTheme() {
        QIcon::setThemeName({});
        QIcon::setFallbackThemeName("hicolor");
        QTemporaryDir dir;
        testsupport::writeFile(dir.filePath("Taxes.pdf"), "%PDF-1.4\n");
        testsupport::writeFile(dir.filePath("notes.txt"), "notes");
        testsupport::writeFile(dir.filePath("unknown.zzz9"), QByteArray(64, '\x01'));
        QDir().mkpath(dir.filePath("Photos"));
        QDir().mkpath(dir.filePath("Photos.album"));
        for (const char* name : {"Taxes.pdf", "notes.txt", "unknown.zzz9", "Photos"}) {
            const QIcon icon = platform::Workspace::iconFor(dir.filePath(name));
            QVERIFY2(!icon.isNull(), qPrintable(name));
            QVERIFY2(inkedPixels(icon) > 100, qPrintable(name));
        }
        const QString folder = platform::Workspace::iconFor(dir.filePath("Photos")).name();
        QVERIFY(folder != platform::Workspace::iconFor(dir.filePath("notes.txt")).name());
        QCOMPARE(platform::Workspace::iconFor(dir.filePath("Photos.album")).name(), folder);
    }
};

QTEST_MAIN(TestPlatformUi)
#include "tst_platformui.moc"
