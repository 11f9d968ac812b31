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
template <typename Answer, typename Open>
std::optional<Answer> answerOf(Open open) {
    QObject owner;
    std::optional<std::optional<Answer>> answer;
    open(&owner, [&](const std::optional<Answer>& chosen) { answer = chosen; });
    if (!QTest::qWaitFor([&] { return answer.has_value(); }, 20000))
        qWarning("The panel never answered");
    return answer.value_or(std::nullopt);
}
std::optional<QList<QUrl>> openAnswer(platform::Panels& panels, const platform::OpenPanelOptions& options) {
    return answerOf<QList<QUrl>>([&](auto... args) { panels.openPanel(options, args...); });
}
std::optional<QUrl> saveAnswer(platform::Panels& panels, const platform::SavePanelOptions& options) {
    return answerOf<QUrl>([&](auto... args) { panels.savePanel(options, args...); });
}

int inkedPixels(const QIcon& icon) {
    QImage image(24, 24, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    icon.paint(&painter, image.rect());
    painter.end();
    int inked = 0;
    for (int i = 0; i < 24 * 24; ++i)
        inked += qAlpha(image.pixel(i % 24, i / 24)) > 128;
    return inked;
}

} // namespace

class TestPlatformUi : public QObject {
    Q_OBJECT

private slots:
    // Files and folders in one pick: a folder chosen in the list is taken, not opened, and the
    // button says so.
    void addPanelTakesFilesAndFolders() {
        QTemporaryDir dir;
        QDir().mkpath(dir.filePath("Photos"));
        platform::Panels panels;
        whenDialogShows([&](QFileDialog* dialog) {
            QCOMPARE(dialog->fileMode(), QFileDialog::ExistingFiles);
            pick(dialog, dir.filePath("Photos"));
            auto* list = dialog->findChild<QListView*>("listView");
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                              list->visualRect(list->currentIndex()).center());
            QPushButton* accept = dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open);
            QTRY_COMPARE(accept->text(), "Add to Vault");
            QMetaObject::invokeMethod(dialog, "accept");
        });
        QCOMPARE(openAnswer(panels, {true, true, true, "Add to Vault", {}}),
                 QList<QUrl>({QUrl::fromLocalFile(dir.filePath("Photos"))}));
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
        QString proposed;
        QStringList filters;
        const platform::SavePanelOptions options{.title = "Back Up Vault",
                                                 .prompt = "Back Up",
                                                 .message = "Save an encrypted backup.",
                                                 .nameFieldStringValue = "MorvantaVault-Backup.7z",
                                                 .allowedContentTypes = {"application/x-7z-compressed"}};
        whenDialogShows([&](QFileDialog* dialog) {
            QCOMPARE(dialog->findChild<QLabel*>("panelMessage")->text(), options.message);
            filters = dialog->nameFilters();
            dialog->setDirectory(dir.path());
            proposed = dialog->selectedFiles().value(0);
            QMetaObject::invokeMethod(dialog, "accept");
        });
        QCOMPARE(saveAnswer(panels, options), QUrl::fromLocalFile(dir.filePath("MorvantaVault-Backup.7z")));
        QCOMPARE(proposed, dir.filePath("MorvantaVault-Backup.7z"));
        QCOMPARE(filters.size(), 1);
        QVERIFY2(filters.first().contains("*.7z"), qPrintable(filters.first()));

        whenDialogShows([](QFileDialog* dialog) { dialog->reject(); });
        QCOMPARE(saveAnswer(panels, options), std::nullopt);
    }

    // Icons come from the icon theme by type and draw something even without a desktop, also
    // where the platform names only hicolor, which has no icons for types or folders.
    void itemIconsComeFromTheIconTheme() {
        QIcon::setThemeName({});
        QIcon::setFallbackThemeName("hicolor");
        QTemporaryDir dir;
        testsupport::writeFile(dir.filePath("notes.txt"), "notes");
        testsupport::writeFile(dir.filePath("unknown.zzz9"), QByteArray(64, '\x01'));
        QDir().mkpath(dir.filePath("Photos"));
        QDir().mkpath(dir.filePath("Photos.album"));
        for (const char* name : {"notes.txt", "unknown.zzz9", "Photos"}) {
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
